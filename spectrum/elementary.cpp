#include "spectrum/elementary.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace zrml {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kSmallestNormal = std::numeric_limits<double>::min();

// ln 2 in two parts; the first has 32 bits, so its product with an exponent is exact.
constexpr double kLn2High = 0x1.62e42fee00000p-1;
constexpr double kLn2Low = 0x1.a39ef35793c76p-33;
constexpr double kSqrtHalf = 0x1.6a09e667f3bcdp-1;

// Of the series of 2 atanh, without its first.
constexpr double kParts[] = {2.0 / 23, 2.0 / 21, 2.0 / 19, 2.0 / 17, 2.0 / 15, 2.0 / 13,
                             2.0 / 11, 2.0 / 9,  2.0 / 7,  2.0 / 5,  2.0 / 3};

constexpr int kMantissaBits = 52;
constexpr int kExponentBias = 1023;

double PowerOfTwo(int exponent) {
  return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + kExponentBias) << kMantissaBits);
}

// x = mantissa * 2^exponent, the mantissa from sqrt(1/2) to sqrt(2), for a positive finite x.
double SplitExponent(double x, int& exponent) {
  exponent = 0;
  if (x < kSmallestNormal) {
    x *= 0x1p54;
    exponent = -54;
  }
  const auto bits = std::bit_cast<std::uint64_t>(x);
  const int stored = static_cast<int>(bits >> kMantissaBits);
  exponent += stored - (kExponentBias - 1);
  const double mantissa = std::bit_cast<double>(
      bits - (static_cast<std::uint64_t>(stored - (kExponentBias - 1)) << kMantissaBits));
  if (mantissa >= kSqrtHalf) return mantissa;
  --exponent;
  return 2 * mantissa;
}

}  // namespace

// ln(1 + f) = 2 atanh(s) with s = f / (2 + f), whose series in s^2 is 2s + s R; 2s is computed as f - f^2/2 +
// s f^2/2 to keep the leading terms exact.
double PortableLog(double x) {
  if (std::isnan(x)) return x;
  if (x < 0) return kNaN;
  if (x == 0) return -kInfinity;
  if (x == kInfinity) return x;
  int exponent = 0;
  const double f = SplitExponent(x, exponent) - 1;
  const double s = f / (2 + f);
  const double z = s * s;
  double rest = 0;
  for (const double part : kParts) rest = z * (rest + part);
  const double half = 0.5 * f * f;
  const double e = exponent;
  return e * kLn2High - ((half - (s * (half + rest) + e * kLn2Low)) - f);
}

// x = k ln 2 + r, |r| <= ln 2 / 2; e^r by its series.
double PortableExp(double x) {
  constexpr double kOverflow = 709.79;
  constexpr double kUnderflow = -708.3964185322641;  // the logarithm of the smallest normal number
  if (std::isnan(x)) return x;
  if (x > kOverflow) return kInfinity;
  if (x < kUnderflow) return 0;
  constexpr double kLog2OfE = 0x1.71547652b82fep0;
  const double k = std::floor(x * kLog2OfE + 0.5);
  const double r = (x - k * kLn2High) - k * kLn2Low;
  double series = 0;
  for (int n = 14; n >= 2; --n) series = (series + 1) * r / n;
  const double power = 1 + (r + r * series);
  const int exponent = static_cast<int>(k);
  const int firstHalf = exponent / 2;
  return power * PowerOfTwo(firstHalf) * PowerOfTwo(exponent - firstHalf);
}

}  // namespace zrml
