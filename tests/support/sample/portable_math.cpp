#include "tests/support/sample/portable_math.h"

#include <algorithm>
#include <cmath>

namespace zrml::sample {

double Exp(double x) {
  constexpr double kLog2 = 0.693147180559945309;
  constexpr int kTerms = 14;  // |rest| <= log(2) / 2
  const double power = std::floor(x / kLog2 + 0.5);
  const double rest = x - power * kLog2;
  double sum = 1;
  for (int n = kTerms; n > 0; --n) sum = 1 + sum * rest / n;
  return std::ldexp(sum, static_cast<int>(power));
}

double Noise::Uniform() {
  state_ ^= state_ >> 12;
  state_ ^= state_ << 25;
  state_ ^= state_ >> 27;
  return std::ldexp(static_cast<double>((state_ * 0x2545F4914F6CDD1DULL) >> 11), -53);
}

double Noise::Normal() {
  double sum = -6;
  for (int i = 0; i < 12; ++i) sum += Uniform();
  return sum;
}

double Counted(double expected, Noise& noise) {
  return std::max(0.0, std::round(expected + std::sqrt(std::max(0.0, expected)) * noise.Normal()));
}

}  // namespace zrml::sample
