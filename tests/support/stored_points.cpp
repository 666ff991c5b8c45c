#include "tests/support/stored_points.h"

#include <algorithm>
#include <cmath>

namespace zrml {
namespace {

// The lowest `width` bits of `value`, moved up to bit `shift`.
constexpr std::uint32_t Bits(std::uint32_t value, unsigned width, unsigned shift) {
  return (value & ((1u << width) - 1)) << shift;
}

void Append(const StoredPoint0& point, ByteWriter& writer) {
  writer.U32(Bits(point.mass, 21, 11) | Bits(point.mantissa, 8, 3) | Bits(point.exponent, 3, 0));
}

void Append(const StoredPoint2& point, ByteWriter& writer) {
  writer.U16(PackIntensityWord(point.mantissa, point.exponent));
}

void Append(const StoredPoint8& point, ByteWriter& writer) {
  writer.I16(point.mantissa).U32(Bits(point.mass, 28, 4) | Bits(point.exponent, 4, 0));
}

void Append(const StoredPoint9& point, ByteWriter& writer) {
  writer.I16(point.mantissa);
  writer.U32(Bits(point.massMantissa, 23, 9) | Bits(point.massExponent, 5, 4) | Bits(point.exponent, 4, 0));
}

template <std::size_t kUnused>
void Append(const StoredListPoint<kUnused>& point, ByteWriter& writer) {
  writer.U32(PackFloatWord(point.intensity)).Unused(kUnused);
}

template <std::size_t kUnused>
void Append(const StoredMassPoint<kUnused>& point, ByteWriter& writer) {
  writer.U32(PackFloatWord(point.intensity));
  writer.U32(Bits(point.massExponent, 5, 27) | Bits(point.massMantissa, 27, 0)).Unused(kUnused);
}

void AppendPair(const StoredPoint1& first, const StoredPoint1& second, ByteWriter& writer) {
  writer.U16(PackIntensityWord(first.mantissa, first.exponent));
  writer.U16(PackIntensityWord(second.mantissa, second.exponent));
  writer.U32(Bits(first.mass, 24, 0) | Bits(second.mass, 8, 24));
  writer.U16(static_cast<std::uint16_t>(second.mass >> 8 & 0xFFFF));
}

constexpr std::size_t kGroupWords = 4;

template <std::size_t kGroup>
void AppendGroup(std::span<const StoredGroupPoint<kGroup>> points, ByteWriter& writer) {
  constexpr std::uint16_t kUnusedWord = kUnusedByte << 8 | kUnusedByte;
  std::uint32_t exponents = kUnusedWord;
  for (std::size_t place = 0; place < kGroupWords; ++place) {
    if (place >= points.size()) {
      writer.U16(kUnusedWord);
      continue;
    }
    const auto shift = static_cast<unsigned>(4 * place);
    exponents = (exponents & ~Bits(0xF, 4, shift)) | Bits(points[place].exponent, 4, shift);
    writer.I16(points[place].mantissa);
  }
  writer.U16(static_cast<std::uint16_t>(exponents));
}

template <std::size_t kGroup>
FileBytes EncodeGroups(const std::vector<StoredGroupPoint<kGroup>>& points) {
  ByteWriter writer;
  const std::span<const StoredGroupPoint<kGroup>> all(points);
  for (std::size_t i = 0; i < all.size(); i += kGroup) {
    AppendGroup(all.subspan(i, std::min(kGroup, all.size() - i)), writer);
  }
  return writer.Take();
}

template <class Point>
FileBytes EncodeEach(const std::vector<Point>& points) {
  ByteWriter writer;
  for (const Point& point : points) Append(point, writer);
  return writer.Take();
}

}  // namespace

std::uint16_t PackIntensityWord(std::uint32_t mantissa, std::uint32_t exponent) {
  return static_cast<std::uint16_t>(Bits(mantissa, 13, 3) | Bits(exponent, 3, 0));
}

std::uint32_t PackFloatWord(const StoredFloat& value) {
  return Bits(value.topBits, 4, 28) | Bits(value.exponent, 6, 22) | Bits(value.negative ? 1 : 0, 1, 21) |
         Bits(value.magnitude, 21, 0);
}

double IntensityOf(std::int32_t mantissa, std::uint32_t exponent) {
  return std::ldexp(mantissa, static_cast<int>(2 * exponent));
}
double IntensityOf(const StoredPoint0& point) {
  return IntensityOf(static_cast<std::int32_t>(point.mantissa), point.exponent);
}
double IntensityOf(const StoredPoint1& point) {
  return IntensityOf(static_cast<std::int32_t>(point.mantissa), point.exponent);
}
double IntensityOf(const StoredPoint2& point) {
  return IntensityOf(static_cast<std::int32_t>(point.mantissa), point.exponent);
}
double IntensityOf(const StoredPoint8& point) { return IntensityOf(point.mantissa, point.exponent); }
double IntensityOf(const StoredPoint9& point) { return IntensityOf(point.mantissa, point.exponent); }
double IntensityOf(const StoredFloat& value) {
  const double magnitude = std::ldexp(value.magnitude, static_cast<int>(value.exponent) - 21);
  return value.negative ? -magnitude : magnitude;
}

FileBytes EncodePoints(const std::vector<StoredPoint1>& points) {
  ByteWriter writer;
  for (std::size_t i = 0; i < points.size(); i += 2) {
    AppendPair(points[i], i + 1 < points.size() ? points[i + 1] : StoredPoint1(), writer);
  }
  return writer.Take();
}

FileBytes EncodePoints(const std::vector<StoredPoint0>& points) { return EncodeEach(points); }
FileBytes EncodePoints(const std::vector<StoredPoint2>& points) { return EncodeEach(points); }
FileBytes EncodePoints(const std::vector<StoredPoint4>& points) { return EncodeGroups(points); }
FileBytes EncodePoints(const std::vector<StoredPoint5>& points) { return EncodeGroups(points); }
FileBytes EncodePoints(const std::vector<StoredPoint8>& points) { return EncodeEach(points); }
FileBytes EncodePoints(const std::vector<StoredPoint9>& points) { return EncodeEach(points); }
FileBytes EncodePoints(const std::vector<StoredPoint11>& points) { return EncodeEach(points); }
FileBytes EncodePoints(const std::vector<StoredPoint12>& points) { return EncodeEach(points); }
FileBytes EncodePoints(const std::vector<StoredPoint13>& points) { return EncodeEach(points); }
FileBytes EncodePoints(const std::vector<StoredPoint14>& points) { return EncodeEach(points); }

}  // namespace zrml
