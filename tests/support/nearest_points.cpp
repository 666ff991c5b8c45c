#include "tests/support/nearest_points.h"

#include <algorithm>
#include <cmath>

namespace zrml {
namespace {

std::uint32_t Fixed(double value, double scale, unsigned bits) {
  const double largest = std::ldexp(1, static_cast<int>(bits)) - 1;
  return static_cast<std::uint32_t>(std::clamp(std::round(value * scale), 0.0, largest));
}

struct PowerOfFour {
  std::int32_t mantissa;
  std::uint32_t exponent;
};

// The smallest exponent of four for which the rounded mantissa fits.
PowerOfFour NearestPowerOfFour(double value, double lowest, double largest, std::uint32_t maxExponent) {
  std::uint32_t exponent = 0;
  const auto mantissa = [&] { return std::round(std::ldexp(value, -2 * static_cast<int>(exponent))); };
  while (exponent < maxExponent && (mantissa() > largest || mantissa() < lowest)) ++exponent;
  return {static_cast<std::int32_t>(std::clamp(mantissa(), lowest, largest)), exponent};
}

PowerOfFour Unsigned(double value, unsigned bits) {
  return NearestPowerOfFour(std::max(value, 0.0), 0, std::ldexp(1, static_cast<int>(bits)) - 1, 7);
}

PowerOfFour Signed16(double value) { return NearestPowerOfFour(value, -32768, 32767, 15); }

struct PowerOfTwo {
  std::uint32_t mantissa;
  std::uint32_t exponent;
};

// value = mantissa x 2^-bits x 2^exponent, with as many bits of mantissa in use as the exponent allows.
PowerOfTwo NearestPowerOfTwo(double value, int bits, int maxExponent) {
  int exponent = 0;
  std::frexp(value, &exponent);
  const auto mantissa = [&] { return std::round(std::ldexp(value, bits - exponent)); };
  exponent = std::clamp(exponent, 0, maxExponent);
  if (mantissa() >= std::ldexp(1, bits) && exponent < maxExponent) ++exponent;
  return {Fixed(std::ldexp(value, -exponent), std::ldexp(1, bits), static_cast<unsigned>(bits)),
          static_cast<std::uint32_t>(exponent)};
}

StoredFloat NearestFloat(double value) {
  const PowerOfTwo magnitude = NearestPowerOfTwo(std::abs(value), 21, 63);
  return {.magnitude = magnitude.mantissa, .exponent = magnitude.exponent, .negative = value < 0};
}

}  // namespace

template <>
StoredPoint0 NearestPoint(const WantedPoint& wanted) {
  const PowerOfFour intensity = Unsigned(wanted.intensity, 8);
  return {Fixed(wanted.mass, 128, 21), static_cast<std::uint32_t>(intensity.mantissa), intensity.exponent};
}

template <>
StoredPoint1 NearestPoint(const WantedPoint& wanted) {
  const PowerOfFour intensity = Unsigned(wanted.intensity, 13);
  return {Fixed(wanted.mass, 1024, 24), static_cast<std::uint32_t>(intensity.mantissa), intensity.exponent};
}

template <>
StoredPoint8 NearestPoint(const WantedPoint& wanted) {
  const PowerOfFour intensity = Signed16(wanted.intensity);
  return {Fixed(wanted.mass, 128, 28), static_cast<std::int16_t>(intensity.mantissa), intensity.exponent};
}

template <>
StoredPoint9 NearestPoint(const WantedPoint& wanted) {
  const PowerOfTwo mass = NearestPowerOfTwo(wanted.mass, 23, 31);
  const PowerOfFour intensity = Signed16(wanted.intensity);
  return {mass.exponent, mass.mantissa, static_cast<std::int16_t>(intensity.mantissa), intensity.exponent};
}

template <>
StoredPoint12 NearestPoint(const WantedPoint& wanted) {
  const PowerOfTwo mass = NearestPowerOfTwo(wanted.mass, 27, 31);
  return {mass.exponent, mass.mantissa, NearestFloat(wanted.intensity)};
}

std::uint16_t NearestIntensityWord(double intensity) {
  const PowerOfFour word = Unsigned(intensity, 13);
  return PackIntensityWord(static_cast<std::uint32_t>(word.mantissa), word.exponent);
}

}  // namespace zrml
