#include "masslynx/scandata/packed_point.h"

#include <array>
#include <cmath>

#include <gtest/gtest.h>

namespace zrml::masslynx {
namespace {

/// A point whose bytes are zero except for the little-endian word at `offset`.
template <std::size_t Size>
std::array<std::byte, Size> WordAt(std::size_t offset, std::uint32_t word) {
  std::array<std::byte, Size> bytes{};
  for (std::size_t i = 0; i < 4; ++i) bytes[offset + i] = static_cast<std::byte>(word >> (8 * i));
  return bytes;
}

template <std::size_t Size>
std::array<std::byte, Size> BytesOf(const std::array<int, Size>& values) {
  std::array<std::byte, Size> bytes{};
  for (std::size_t i = 0; i < Size; ++i) bytes[i] = static_cast<std::byte>(values[i]);
  return bytes;
}

TEST(PowerOfTwo, EveryExponent) {
  for (unsigned exponent = 0; exponent < 127; ++exponent) {
    EXPECT_EQ(PowerOfTwo(exponent), std::ldexp(1.0F, static_cast<int>(exponent))) << exponent;
  }
}

TEST(PackedIntensity, MantissaTimesPowerOfFour) {
  EXPECT_EQ(PackedIntensity(0, 15), 0.0);
  EXPECT_EQ(PackedIntensity(1, 0), 1.0);
  EXPECT_EQ(PackedIntensity(3, 1), 12.0);
  EXPECT_EQ(PackedIntensity(-5, 2), -80.0);
  EXPECT_EQ(PackedIntensity(1, 15), 0x1p30);
  EXPECT_EQ(PackedIntensity(-32768, 15), -0x1p45);          // -2^15 x 2^30
  EXPECT_EQ(PackedIntensity(32767, 15), 35183298347008.0);  // (2^15 - 1) x 2^30
  for (unsigned e = 0; e <= 15; ++e) EXPECT_EQ(PackedIntensity(1, e), std::pow(4.0, e)) << e;
}

TEST(IntensityWord, MantissaAndExponentFillSixteenBits) {
  EXPECT_EQ(IntensityWord(0x0000), 0.0);
  EXPECT_EQ(IntensityWord(0x0007), 0.0);          // an exponent without mantissa
  EXPECT_EQ(IntensityWord(0x0008), 1.0);          // the mantissa's lowest bit
  EXPECT_EQ(IntensityWord(0x0019), 12.0);         // 0b11'001: 3 x 4
  EXPECT_EQ(IntensityWord(0x8000), 4096.0);       // the mantissa has no sign: bit 15 is 2^12
  EXPECT_EQ(IntensityWord(0xFFFF), 134201344.0);  // 8191 x 4^7
}

TEST(FloatWord, WorkedExamples) {
  EXPECT_EQ(FloatWord(4194305), 0x1p-20);   // 0x400001: magnitude 1, exponent 1
  EXPECT_EQ(FloatWord(2097153), -0x1p-21);  // 0x200001: magnitude 1, sign
  EXPECT_EQ(FloatWord(0), 0.0);
  EXPECT_EQ(FloatWord(0x0FC00000), 0.0);             // exponent 63 without magnitude
  EXPECT_EQ(FloatWord(0x00100000), 0.5);             // bit 20
  EXPECT_EQ(FloatWord(0x0FDFFFFF), 0x1.fffffp+62);   // (2^21 - 1) x 2^-21 x 2^63
  EXPECT_EQ(FloatWord(0x0FFFFFFF), -0x1.fffffp+62);  // the same, negative
}

TEST(FloatWord, EveryMagnitudeBitAndEveryExponent) {
  for (int bit = 0; bit <= 20; ++bit) {
    EXPECT_EQ(FloatWord(1U << bit), std::ldexp(1.0, bit - 21)) << bit;
  }
  for (unsigned exponent = 0; exponent <= 63; ++exponent) {
    EXPECT_EQ(FloatWord(exponent << 22 | 1), std::ldexp(1.0, static_cast<int>(exponent) - 21)) << exponent;
  }
}

TEST(FloatWord, TopFourBitsAreIgnored) {
  for (unsigned top = 0; top <= 15; ++top) {
    EXPECT_EQ(FloatWord(top << 28 | 0x600001), -0x1p-20) << top;
  }
}

TEST(UnpackPoint0, WorkedExample) {
  // 2073 = 0b1'00000011'001: raw mass 1, mantissa 3, exponent 1.
  const PackedPoint point = UnpackPoint0(BytesOf<4>({0x19, 0x08, 0x00, 0x00}).data());
  EXPECT_EQ(point.mass, 0.0078125F);
  EXPECT_EQ(point.intensity, 12.0);
}

TEST(UnpackPoint0, FieldsAtTheirLimitsDoNotTouchEachOther) {
  const auto unpack = [](std::uint32_t word) { return UnpackPoint0(WordAt<4>(0, word).data()); };
  EXPECT_EQ(unpack(0xFFFFF800).mass, 16383.9921875F);  // (2^21 - 1) / 128
  EXPECT_EQ(unpack(0xFFFFF800).intensity, 0.0);
  EXPECT_EQ(unpack(0x000007F8).mass, 0.0F);
  EXPECT_EQ(unpack(0x000007F8).intensity, 255.0);
  EXPECT_EQ(unpack(0xFFFFFFFF).intensity, 4177920.0);  // 255 x 4^7
  for (int bit = 11; bit <= 31; ++bit) {
    EXPECT_EQ(unpack(1U << bit).mass, std::ldexp(1.0F, bit - 11 - 7)) << bit;
  }
}

TEST(UnpackPoint8, WorkedExampleWithNegativeMantissa) {
  // Mantissa 0xFFFB = -5; word 0x00006402: exponent 2, raw mass 0x640 = 1600.
  const PackedPoint point = UnpackPoint8(BytesOf<6>({0xFB, 0xFF, 0x02, 0x64, 0x00, 0x00}).data());
  EXPECT_EQ(point.mass, 12.5F);
  EXPECT_EQ(point.intensity, -80.0);
}

TEST(UnpackPoint8, MassIsRoundedToSinglePrecision) {
  const auto mass = [](std::uint32_t raw) { return UnpackPoint8(WordAt<6>(2, raw << 4).data()).mass; };
  EXPECT_EQ(mass(0x1000000), 131072.0F);      // 2^24 / 128
  EXPECT_EQ(mass(0x1000001), 131072.0F);      // 2^24 + 1: halfway, to the even neighbour below
  EXPECT_EQ(mass(0x1000003), 131072.03125F);  // 2^24 + 3: halfway, to the even neighbour 2^24 + 4
  EXPECT_EQ(mass(0xFFFFFFF), 2097152.0F);     // 2^28 - 1 becomes 2^28
}

TEST(UnpackPoint9, MassHasItsOwnExponent) {
  const auto unpack = [](std::uint32_t word) { return UnpackPoint9(WordAt<6>(2, word).data()); };
  // 0x80000095: e = 5, mass exponent 9, mass mantissa 0x400000 = 2^22: 2^9 x 0.5.
  EXPECT_EQ(unpack(0x80000095).mass, 256.0F);
  EXPECT_EQ(unpack(0xFFFFFFF0).mass, 2147483392.0F);  // 2^31 x (2^23 - 1) / 2^23 = 2^31 - 2^8
  EXPECT_EQ(unpack(0x00000200).mass, 0x1p-23F);       // the lowest bit
  EXPECT_EQ(unpack(0x000001FF).mass, 0.0F);           // exponents alone
  for (unsigned exponent = 0; exponent <= 31; ++exponent) {
    EXPECT_EQ(unpack(0x80000000U | exponent << 4).mass, std::ldexp(0.5F, static_cast<int>(exponent)));
  }
}

TEST(UnpackPoint9, IntensityIsSigned) {
  // Mantissa 0x8000 = -32768 and e = 15.
  const PackedPoint point = UnpackPoint9(BytesOf<6>({0x00, 0x80, 0x0F, 0x00, 0x00, 0x00}).data());
  EXPECT_EQ(point.intensity, -0x1p45);
  EXPECT_EQ(point.mass, 0.0F);
}

TEST(UnpackPoint12, IntensityFirstThenMass) {
  // 0x00D00000: magnitude 2^20, exponent 3: 4. 0x54000000: exponent 10, mantissa 2^26: 2^10 x 0.5.
  const PackedPoint point =
      UnpackPoint12(BytesOf<8>({0x00, 0x00, 0xD0, 0x00, 0x00, 0x00, 0x00, 0x54}).data());
  EXPECT_EQ(point.mass, 512.0F);
  EXPECT_EQ(point.intensity, 4.0);
}

TEST(UnpackPoint12, MassIsRoundedToSinglePrecision) {
  const auto mass = [](std::uint32_t word) { return UnpackPoint12(WordAt<8>(4, word).data()).mass; };
  EXPECT_EQ(mass(20U << 27 | 0x1000000), 131072.0F);      // 2^20 x 2^24 x 2^-27
  EXPECT_EQ(mass(20U << 27 | 0x1000001), 131072.0F);      // 2^24 + 1: halfway, to even
  EXPECT_EQ(mass(20U << 27 | 0x1000003), 131072.03125F);  // 2^24 + 3: halfway, to even
  EXPECT_EQ(mass(0x07FFFFFF), 1.0F);                      // 2^27 - 1 becomes 2^27
  EXPECT_EQ(mass(0xFFFFFFFF), 2147483648.0F);             // 2^31
  EXPECT_EQ(mass(0x00000001), 0x1p-27F);
  EXPECT_EQ(mass(0xF8000000), 0.0F);  // an exponent alone
}

TEST(UnpackPair, SecondMassSpansTwoFields) {
  // u16 0x1234, u16 0x5678, u32 0xAB030201, u16 0xEFCD.
  const PackedPair pair =
      UnpackPair(BytesOf<10>({0x34, 0x12, 0x78, 0x56, 0x01, 0x02, 0x03, 0xAB, 0xCD, 0xEF}).data());
  EXPECT_EQ(pair.intensityWord[0], 0x1234);
  EXPECT_EQ(pair.intensityWord[1], 0x5678);
  EXPECT_EQ(pair.rawMass[0], 0x030201U);
  EXPECT_EQ(pair.rawMass[1], 0xEFCDABU);
}

}  // namespace
}  // namespace zrml::masslynx
