// Numbers that are the same to the bit on every platform, unlike those of std::exp and
// std::normal_distribution.
#pragma once

#include <cstdint>

namespace zrml::sample {

/// e^x to about 15 digits, for x from -700 to 700.
double Exp(double x);

/// Pseudo-random numbers (xorshift64*) from a fixed seed.
class Noise {
 public:
  explicit Noise(std::uint64_t seed) : state_(seed) {}  // not 0

  double Uniform();  ///< 0 <= value < 1
  double Normal();   ///< mean 0, standard deviation 1, cut at 6

 private:
  std::uint64_t state_;
};

/// A detector's count for an expected intensity: shot noise on whole counts, 0 or more.
double Counted(double expected, Noise& noise);

}  // namespace zrml::sample
