#include "spectrum/apex_fit.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace zrml {
namespace {

constexpr std::size_t kSamplesOfCubic = 5;
constexpr double kHighestCurve = 0x1.62e42fefa39efp-1;  // the logarithm of 2: twice the highest sample
constexpr double kLowestCurve = -100;                   // far below any sample of a top

// Two numbers, for processors to compute both at once. Each has the bits that it would have alone.
using Pair = double __attribute__((vector_size(16)));
using PairOfBits = std::uint64_t __attribute__((vector_size(16)));

double SumOf(Pair pair) { return pair[0] + pair[1]; }

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

// c0 + c1 x + c2 x^2 + c3 x^3.
struct Cubic {
  double c0, c1, c2, c3;

  double At(double x) const { return c0 + x * (c1 + x * (c2 + x * c3)); }

  // Where it is highest: the root of its derivative a x^2 + b x + c at which that falls, in the form that
  // also holds for a = 0. Not a number when there is none.
  double Top() const {
    const double a = 3 * c3;
    const double b = 2 * c2;
    return 2 * c1 / (std::sqrt(b * b - 4 * a * c1) - b);
  }
};

// The normal equations of a cubic: sums of w x^(row + column), and of w x^row y.
class NormalEquations {
 public:
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
  Cubic Solve(bool isParabola) const {
    const double m0 = SumOf(m0_);
    const double m1 = SumOf(m1_);
    const double m2 = SumOf(m2_);
    const double m3 = SumOf(m3_);
    const double m4 = SumOf(m4_);
    const double m5 = SumOf(m5_);
    const double m6 = SumOf(m6_);
    const double r0 = SumOf(r0_);
    const double r1 = SumOf(r1_);
    const double r2 = SumOf(r2_);
    const double r3 = SumOf(r3_);
    const double l1 = m1 / m0;
    const double l2 = m2 / m0;
    const double l3 = m3 / m0;
    const double a11 = m2 - l1 * m1;
    const double a12 = m3 - l1 * m2;
    const double a13 = m4 - l1 * m3;
    const double b1 = r1 - l1 * r0;
    const double k2 = a12 / a11;
    const double k3 = a13 / a11;
    const double p22 = m4 - l2 * m2 - k2 * a12;
    const double p23 = m5 - l2 * m3 - k2 * a13;
    const double p33 = m6 - l3 * m3 - k3 * a13;
    const double q2 = r2 - l2 * r0 - k2 * b1;
    const double q3 = r3 - l3 * r0 - k3 * b1;
    const double h = p23 / p22;
    Cubic curve{};
    curve.c3 = isParabola ? 0 : (q3 - h * q2) / (p33 - h * p23);
    curve.c2 = (q2 - p23 * curve.c3) / p22;
    curve.c1 = (b1 - a12 * curve.c2 - a13 * curve.c3) / a11;
    curve.c0 = (r0 - m1 * curve.c1 - m2 * curve.c2 - m3 * curve.c3) / m0;
    return curve;
  }

 private:
  Pair m0_ = {}, m1_ = {}, m2_ = {}, m3_ = {}, m4_ = {}, m5_ = {}, m6_ = {};
  Pair r0_ = {}, r1_ = {}, r2_ = {}, r3_ = {};
};

}  // namespace

std::optional<Apex> FitApex(std::span<const double> mz, std::span<const double> intensities, double highest) {
  const std::size_t count = mz.size();
  if (count < 3) return std::nullopt;
  const double halfWidth = 0.5 * (mz.back() - mz.front());
  const double middle = mz.front() + halfWidth;
  const double scale = 1 / halfWidth;
  NormalEquations equations;
  const auto add = [&](Pair mass, Pair intensity, Pair counts) {
    const Pair relative = intensity / highest;
    equations.Add((mass - middle) * scale, QuickLogs(relative), counts * relative * relative);
  };
  for (std::size_t i = 0; i + 1 < count; i += 2)
    add(Pair{mz[i], mz[i + 1]}, Pair{intensities[i], intensities[i + 1]}, Pair{1, 1});
  if (count % 2 != 0) add(Pair{mz.back(), middle}, Pair{intensities.back(), highest}, Pair{1, 0});
  const Cubic curve = equations.Solve(count < kSamplesOfCubic);
  const double top = curve.Top();
  if (!(top >= -1 && top <= 1)) return std::nullopt;
  const double height = curve.At(top);
  if (!(height >= kLowestCurve && height <= kHighestCurve)) return std::nullopt;
  return Apex{middle + top * halfWidth, highest * QuickExp(height)};
}

}  // namespace zrml
