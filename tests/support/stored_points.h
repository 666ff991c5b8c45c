// The points of a scan's data as raw fields, one type per layout: StoredPoint9 is a point of data format 9. A
// field's value is cut to its bits. docs/data-layouts.md
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "tests/support/byte_writer.h"

namespace zrml {

struct StoredPoint0 {
  std::uint32_t mass = 0;      ///< 21 bits, x 128
  std::uint32_t mantissa = 0;  ///< 8 bits
  std::uint32_t exponent = 0;  ///< 3 bits, of four
};

struct StoredPoint1 {
  std::uint32_t mass = 0;      ///< 24 bits, x 1024
  std::uint32_t mantissa = 0;  ///< 13 bits
  std::uint32_t exponent = 0;  ///< 3 bits, of four
};

/// Of format 3 as well; masses come from elsewhere.
struct StoredPoint2 {
  std::uint32_t mantissa = 0;  ///< 13 bits
  std::uint32_t exponent = 0;  ///< 3 bits, of four
};
using StoredPoint3 = StoredPoint2;

/// A point on a linear axis; `kGroup` of them share a group of 10 bytes.
template <std::size_t kGroup>
struct StoredGroupPoint {
  std::int16_t mantissa = 0;
  std::uint32_t exponent = 0;  ///< 4 bits, of four
};
using StoredPoint4 = StoredGroupPoint<4>;
using StoredPoint5 = StoredGroupPoint<2>;
using StoredPoint7 = StoredPoint5;

struct StoredPoint8 {
  std::uint32_t mass = 0;  ///< 28 bits, x 128
  std::int16_t mantissa = 0;
  std::uint32_t exponent = 0;  ///< 4 bits, of four
};

struct StoredPoint9 {
  std::uint32_t massExponent = 0;  ///< 5 bits
  std::uint32_t massMantissa = 0;  ///< 23 bits, x 2^23
  std::int16_t mantissa = 0;
  std::uint32_t exponent = 0;  ///< 4 bits, of four
};

/// The intensity of formats 11 to 14: plus or minus magnitude x 2^-21 x 2^exponent.
struct StoredFloat {
  std::uint32_t magnitude = 0;  ///< 21 bits
  std::uint32_t exponent = 0;   ///< 6 bits
  bool negative = false;
  std::uint32_t topBits = 0;  ///< 4 bits without meaning
};

/// `kUnused` bytes follow the intensity; masses come from elsewhere.
template <std::size_t kUnused>
struct StoredListPoint {
  StoredFloat intensity = {};
};
using StoredPoint11 = StoredListPoint<0>;
using StoredPoint14 = StoredListPoint<8>;

template <std::size_t kUnused>
struct StoredMassPoint {
  std::uint32_t massExponent = 0;  ///< 5 bits
  std::uint32_t massMantissa = 0;  ///< 27 bits, x 2^27
  StoredFloat intensity = {};
};
using StoredPoint12 = StoredMassPoint<0>;
using StoredPoint13 = StoredMassPoint<4>;

/// Intensity word of formats 1, 2, 3 and of analog traces: mantissa in bits 3-15, exponent in bits 0-2.
std::uint16_t PackIntensityWord(std::uint32_t mantissa, std::uint32_t exponent);
std::uint32_t PackFloatWord(const StoredFloat& value);

double IntensityOf(const StoredPoint0& point);
double IntensityOf(const StoredPoint1& point);
double IntensityOf(const StoredPoint2& point);
double IntensityOf(const StoredPoint8& point);
double IntensityOf(const StoredPoint9& point);
double IntensityOf(const StoredFloat& value);
double IntensityOf(std::int32_t mantissa, std::uint32_t exponent);  ///< mantissa x 4^exponent

template <std::size_t kGroup>
double IntensityOf(const StoredGroupPoint<kGroup>& point) {
  return IntensityOf(point.mantissa, point.exponent);
}
template <std::size_t kUnused>
double IntensityOf(const StoredListPoint<kUnused>& point) {
  return IntensityOf(point.intensity);
}
template <std::size_t kUnused>
double IntensityOf(const StoredMassPoint<kUnused>& point) {
  return IntensityOf(point.intensity);
}

FileBytes EncodePoints(const std::vector<StoredPoint0>& points);
/// An odd count is padded with a point of zeros.
FileBytes EncodePoints(const std::vector<StoredPoint1>& points);
FileBytes EncodePoints(const std::vector<StoredPoint2>& points);
/// Words and exponents of a group that no point uses hold kUnusedByte.
FileBytes EncodePoints(const std::vector<StoredPoint4>& points);
FileBytes EncodePoints(const std::vector<StoredPoint5>& points);
FileBytes EncodePoints(const std::vector<StoredPoint8>& points);
FileBytes EncodePoints(const std::vector<StoredPoint9>& points);
FileBytes EncodePoints(const std::vector<StoredPoint11>& points);
FileBytes EncodePoints(const std::vector<StoredPoint12>& points);
FileBytes EncodePoints(const std::vector<StoredPoint13>& points);
FileBytes EncodePoints(const std::vector<StoredPoint14>& points);

}  // namespace zrml
