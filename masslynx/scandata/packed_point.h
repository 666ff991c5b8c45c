// The packed numbers that scan data are made of. docs/data-layouts.md
#pragma once

#include <bit>
#include <cstdint>

#include "common/bytes.h"

namespace zrml::masslynx {

/// 2^exponent; 0 <= exponent < 127.
inline float PowerOfTwo(unsigned exponent) { return std::bit_cast<float>((127U + exponent) << 23); }

/// mantissa x 4^exponent; 0 <= exponent <= 15.
inline double PackedIntensity(std::int32_t mantissa, unsigned exponent) {
  return static_cast<double>(1U << (2 * exponent)) * static_cast<double>(mantissa);
}

/// A 16-bit intensity word: mantissa in bits 3-15, exponent of four in bits 0-2.
inline double IntensityWord(std::uint32_t word) {
  return PackedIntensity(static_cast<std::int32_t>(word >> 3), word & 7);
}

/// A 32-bit float word: 21-bit magnitude, sign in bit 21, 6-bit exponent of two; bits 28-31 are ignored.
inline double FloatWord(std::uint32_t word) {
  const double scale = std::bit_cast<double>(std::uint64_t{1023 - 21 + (word >> 22 & 0x3F)} << 52);
  const double magnitude = static_cast<double>(word & 0x1FFFFF) * scale;
  return (word & 0x200000) != 0 ? -magnitude : magnitude;
}

/// A point with a raw mass, not yet calibrated.
struct PackedPoint {
  float mass;
  double intensity;
};

/// Data format 0, 4 bytes.
inline PackedPoint UnpackPoint0(const std::byte* p) {
  const std::uint32_t word = LoadU32(p);
  return {static_cast<float>(word >> 11) / 128,
          PackedIntensity(static_cast<std::int32_t>(word >> 3 & 0xFF), word & 7)};
}

/// Data format 8, 6 bytes. The mass is rounded to single precision before it is scaled.
inline PackedPoint UnpackPoint8(const std::byte* p) {
  const std::uint32_t word = LoadU32(p + 2);
  return {static_cast<float>(word >> 4) / 128, PackedIntensity(LoadI16(p), word & 0xF)};
}

/// Data format 9, 6 bytes.
inline PackedPoint UnpackPoint9(const std::byte* p) {
  const std::uint32_t word = LoadU32(p + 2);
  return {static_cast<float>(word >> 9) * 0x1p-23F * PowerOfTwo(word >> 4 & 0x1F),
          PackedIntensity(LoadI16(p), word & 0xF)};
}

/// Data formats 12 and 13, 8 bytes. The mass is rounded to single precision before it is scaled.
inline PackedPoint UnpackPoint12(const std::byte* p) {
  const std::uint32_t word = LoadU32(p + 4);
  return {static_cast<float>(word & 0x7FFFFFF) * 0x1p-27F * PowerOfTwo(word >> 27), FloatWord(LoadU32(p))};
}

/// Data format 1, 10 bytes: two points with 24-bit raw masses. An odd count ends with a padding point.
struct PackedPair {
  std::uint32_t rawMass[2];  ///< x 1024
  std::uint16_t intensityWord[2];
};

inline constexpr std::size_t kPairSize = 10;
inline constexpr float kPairMassScale = 1024;

inline PackedPair UnpackPair(const std::byte* p) {
  const std::uint32_t word = LoadU32(p + 4);
  return {{word & 0xFFFFFF, word >> 24 | std::uint32_t{LoadU16(p + 8)} << 8}, {LoadU16(p), LoadU16(p + 2)}};
}

}  // namespace zrml::masslynx
