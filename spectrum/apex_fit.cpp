#include "spectrum/apex_fit.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <emmintrin.h>

namespace zrml {
namespace {

constexpr std::size_t kFewestSamples = 3;
constexpr std::size_t kSamplesOfCubic = 5;
constexpr double kHighestCurve = 0x1.62e42fefa39efp-1;  // the logarithm of 2: twice the highest sample
constexpr double kLowestCurve = -100;                   // far below any sample of a top

// Two numbers, for processors to compute both at once. Each has the bits that it would have alone.
using Pair = double __attribute__((vector_size(16)));
using PairOfBits = std::uint64_t __attribute__((vector_size(16)));

// The sum of each.
Pair SumsOf(Pair one, Pair other) { return Pair{one[0], other[0]} + Pair{one[1], other[1]}; }

// Natural logarithms of positive normal numbers within 2e-11: the series of 2 atanh(s) with s = f / (2 + f)
// for the mantissa 1 + f from sqrt(1/2) to sqrt(2).
Pair QuickLogs(Pair numbers) {
  constexpr std::uint64_t kSqrtHalf = 0x3FE6A09E667F3BCD;
  constexpr std::uint64_t kOne = 0x3FF0000000000000;
  constexpr std::uint64_t kExponent = 0xFFF0000000000000;
  constexpr std::uint64_t kInteger = 0x4330000000000000;  // 2^52, whose last bits count ones
  constexpr double kZeroExponent = 0x1p52 + 1023;
  constexpr double kLn2 = 0x1.62e42fefa39efp-1;
  const auto bits = std::bit_cast<PairOfBits>(numbers);
  const PairOfBits shifted = bits + (kOne - kSqrtHalf);
  const Pair exponent = std::bit_cast<Pair>((shifted >> 52) | kInteger) - kZeroExponent;
  const Pair f = std::bit_cast<Pair>(bits - (shifted & kExponent) + kOne) - 1.0;
  const Pair s = f / (2.0 + f);
  const Pair z = s * s;
  const Pair rest = z * (2.0 / 3 + z * (2.0 / 5 + z * (2.0 / 7 + z * (2.0 / 9 + z * (2.0 / 11)))));
  return exponent * kLn2 + s * (2.0 + rest);
}

// e to the power x within 1e-11 of it, for x from -500 to 500.
double QuickExp(double x) {
  constexpr double kLog2OfE = 0x1.71547652b82fep0;
  constexpr double kLn2 = 0x1.62e42fefa39efp-1;
  constexpr int kOffset = 1023;
  const int exponent = static_cast<int>(x * kLog2OfE + (kOffset + 0.5));
  const double r = x - (exponent - kOffset) * kLn2;
  const double low = 1 + r * (1 + r * (1.0 / 2 + r * (1.0 / 6 + r * (1.0 / 24))));
  const double high = 1.0 / 120 + r * (1.0 / 720 + r * (1.0 / 5040 + r * (1.0 / 40320 + r * (1.0 / 362880))));
  const double r2 = r * r;
  const double series = low + r2 * r2 * r * high;
  return series * std::bit_cast<double>(static_cast<std::uint64_t>(exponent) << 52);
}

// c0 + c1 x + c2 x^2 + c3 x^3, of two tops.
struct Cubics {
  Pair c0, c1, c2, c3;

  Pair At(Pair x) const { return c0 + x * (c1 + x * (c2 + x * c3)); }

  // Where they are highest: the root of the derivative a x^2 + b x + c at which that falls, in the form that
  // also holds for a = 0. Not a number where there is none.
  Pair Tops() const {
    const Pair a = 3 * c3;
    const Pair b = 2 * c2;
    return 2 * c1 / (Pair(_mm_sqrt_pd(b * b - 4 * a * c1)) - b);
  }
};

// The normal equations of a cubic: sums of w x^(row + column), and of w x^row y. Those of every other sample
// first, then those of two tops.
class NormalEquations {
 public:
  NormalEquations() = default;
  NormalEquations(const NormalEquations& one, const NormalEquations& other)
      : m0_(SumsOf(one.m0_, other.m0_)),
        m1_(SumsOf(one.m1_, other.m1_)),
        m2_(SumsOf(one.m2_, other.m2_)),
        m3_(SumsOf(one.m3_, other.m3_)),
        m4_(SumsOf(one.m4_, other.m4_)),
        m5_(SumsOf(one.m5_, other.m5_)),
        m6_(SumsOf(one.m6_, other.m6_)),
        r0_(SumsOf(one.r0_, other.r0_)),
        r1_(SumsOf(one.r1_, other.r1_)),
        r2_(SumsOf(one.r2_, other.r2_)),
        r3_(SumsOf(one.r3_, other.r3_)) {}

  void Add(Pair x, Pair y, Pair weight) {
    const Pair x2 = x * x;
    const Pair w1 = weight * x;
    const Pair w2 = weight * x2;
    const Pair w3 = w1 * x2;
    m0_ += weight;
    m1_ += w1;
    m2_ += w2;
    m3_ += w3;
    m4_ += w2 * x2;
    m5_ += w3 * x2;
    m6_ += w2 * x2 * x2;
    r0_ += weight * y;
    r1_ += w1 * y;
    r2_ += w2 * y;
    r3_ += w3 * y;
  }

  // By elimination; no pivots, as the matrix is positive definite. A parabola has no c3.
  Cubics Solve(bool isParabola, bool isOtherParabola) const {
    const Pair l1 = m1_ / m0_;
    const Pair l2 = m2_ / m0_;
    const Pair l3 = m3_ / m0_;
    const Pair a11 = m2_ - l1 * m1_;
    const Pair a12 = m3_ - l1 * m2_;
    const Pair a13 = m4_ - l1 * m3_;
    const Pair b1 = r1_ - l1 * r0_;
    const Pair k2 = a12 / a11;
    const Pair k3 = a13 / a11;
    const Pair p22 = m4_ - l2 * m2_ - k2 * a12;
    const Pair p23 = m5_ - l2 * m3_ - k2 * a13;
    const Pair p33 = m6_ - l3 * m3_ - k3 * a13;
    const Pair q2 = r2_ - l2 * r0_ - k2 * b1;
    const Pair q3 = r3_ - l3 * r0_ - k3 * b1;
    const Pair h = p23 / p22;
    Cubics curves{};
    const Pair c3 = (q3 - h * q2) / (p33 - h * p23);
    curves.c3 = Pair{isParabola ? 0 : c3[0], isOtherParabola ? 0 : c3[1]};
    curves.c2 = (q2 - p23 * curves.c3) / p22;
    curves.c1 = (b1 - a12 * curves.c2 - a13 * curves.c3) / a11;
    curves.c0 = (r0_ - m1_ * curves.c1 - m2_ * curves.c2 - m3_ * curves.c3) / m0_;
    return curves;
  }

 private:
  Pair m0_ = {}, m1_ = {}, m2_ = {}, m3_ = {}, m4_ = {}, m5_ = {}, m6_ = {};
  Pair r0_ = {}, r1_ = {}, r2_ = {}, r3_ = {};
};

// The samples of a top at -1 to 1.
class Scaled {
 public:
  explicit Scaled(const PeakTop& top) : top_(top) {
    if (top.mz.empty()) return;
    halfWidth_ = 0.5 * (top.mz.back() - top.mz.front());
    middle_ = top.mz.front() + halfWidth_;
  }

  NormalEquations Sums() const {
    const std::span<const double> mz = top_.mz;
    const std::span<const double> intensities = top_.intensities;
    const double highest = top_.highest;
    const double scale = 1 / halfWidth_;
    NormalEquations equations;
    const auto add = [&](Pair mass, Pair intensity, Pair counts) {
      const Pair relative = intensity / highest;
      equations.Add((mass - middle_) * scale, QuickLogs(relative), counts * relative * relative);
    };
    const std::size_t count = mz.size();
    for (std::size_t i = 0; i + 1 < count; i += 2)
      add(Pair{mz[i], mz[i + 1]}, Pair{intensities[i], intensities[i + 1]}, Pair{1, 1});
    if (count % 2 != 0) add(Pair{mz.back(), middle_}, Pair{intensities.back(), highest}, Pair{1, 0});
    return equations;
  }

  bool IsParabola() const { return top_.mz.size() < kSamplesOfCubic; }

  std::optional<Apex> ApexAt(double place, double height) const {
    if (!(top_.mz.size() >= kFewestSamples && place >= -1 && place <= 1)) return std::nullopt;
    if (!(height >= kLowestCurve && height <= kHighestCurve)) return std::nullopt;
    return Apex{middle_ + place * halfWidth_, top_.highest * QuickExp(height)};
  }

 private:
  const PeakTop& top_;
  double halfWidth_ = 0;
  double middle_ = 0;
};

}  // namespace

std::array<std::optional<Apex>, 2> FitApexes(const PeakTop& one, const PeakTop& other) {
  const Scaled first(one);
  const Scaled second(other);
  const NormalEquations equations(first.Sums(), second.Sums());
  const Cubics curves = equations.Solve(first.IsParabola(), second.IsParabola());
  const Pair places = curves.Tops();
  const Pair heights = curves.At(places);
  return {first.ApexAt(places[0], heights[0]), second.ApexAt(places[1], heights[1])};
}

}  // namespace zrml
