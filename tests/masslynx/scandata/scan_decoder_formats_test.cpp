// Special cases of single layouts: pairs, mass lists, the order and the rounding of masses.
#include <algorithm>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "tests/masslynx/scandata/decoded_scan.h"

namespace zrml::masslynx {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// Format 1.

/// One pair at masses 100 and 200: words 0x0008 (1) and `second`.
std::string PairOf100And200(const std::string& second) { return "08 00" + second + "00 90 01 00 20 03"; }

TEST(ScanDecoderFormat1, PaddingPointIsNeverWrittenWhateverItsMantissa) {
  // Three points; the fourth has mantissa 3 at mass 400 (raw 0x064000).
  const std::string bytes = PairOf100And200("10 00") + "18 00 18 00 00 B0 04 00 40 06";
  const Decoded decoded = Decode(bytes, FunctionOf(1, 3), 0, Used(4));
  EXPECT_EQ(decoded.Masses(), (Values{100, 200, 300}));
  EXPECT_EQ(decoded.Intensities(), (Values{1, 2, 3}));
  EXPECT_EQ(Decode(bytes, FunctionOf(1, 4)).Masses(), (Values{100, 200, 300, 400}));  // the control

  // The same with the padding point at mass 100 (raw 0x019000): it does not affect the order either.
  const std::string falling = PairOf100And200("10 00") + "18 00 18 00 00 B0 04 00 90 01";
  EXPECT_FALSE(Decode(falling, FunctionOf(1, 3)).unsorted);
  EXPECT_TRUE(Decode(falling, FunctionOf(1, 4)).unsorted);  // the control
}

TEST(ScanDecoderFormat1, SecondPointWithoutMantissaIsDeliberatelyNotWritten) {
  const std::string written = PairOf100And200("0F 00");                       // 1 x 4^7
  const std::string notWritten = PairOf100And200("07 00");                    // 0 x 4^7
  EXPECT_EQ(Decode(written, FunctionOf(1, 2)).Masses(), (Values{100, 200}));  // the control
  EXPECT_EQ(Decode(written, FunctionOf(1, 2)).Intensities(), (Values{1, 16384}));

  const Decoded fresh = Decode(notWritten, FunctionOf(1, 2));
  EXPECT_TRUE(fresh.ok);
  EXPECT_EQ(fresh.Masses(), (Values{100, 0}));
  EXPECT_EQ(fresh.Intensities(), (Values{1, 0}));
}

TEST(ScanDecoderFormat1, NotWrittenPointKeepsWhatTheContainerHeld) {
  const std::string bytes = PairOf100And200("00 00") + PairOf100And200("00 00");
  const FunctionRecord function = FunctionOf(1, 4);
  // Of the same size, shrunk, and grown by two new points.
  for (const int used : {4, 9}) {
    const Decoded decoded = Decode(bytes, function, 0, Used(used));
    EXPECT_EQ(decoded.Masses(), (Values{100, 1002, 100, 1004})) << used;
    EXPECT_EQ(decoded.Intensities(), (Values{1, -2, 1, -4})) << used;
  }
  const Decoded grown = Decode(bytes, function, 0, Used(2));
  EXPECT_EQ(grown.Masses(), (Values{100, 1002, 100, 0}));
  EXPECT_EQ(grown.Intensities(), (Values{1, -2, 1, 0}));
}

TEST(ScanDecoderFormat1, FirstPointWithoutMantissaIsWritten) {
  const Decoded decoded = Decode("07 00 08 00 00 90 01 00 20 03", FunctionOf(1, 2), 0, Used(2));
  EXPECT_EQ(decoded.Masses(), (Values{100, 200}));
  EXPECT_EQ(decoded.Intensities(), (Values{0, 1}));
}

TEST(ScanDecoderFormat1, NotWrittenPointsDoNotCountForTheOrder) {
  // 100, then 300: the slot between them holds 0 in a fresh container and 1002 in a used one.
  const std::string ascending = PairOf100And200("00 00") + "18 00 00 00 00 B0 04 00 40 06";
  EXPECT_FALSE(Decode(ascending, FunctionOf(1, 4)).unsorted);
  EXPECT_FALSE(Decode(ascending, FunctionOf(1, 4), 0, Used(4)).unsorted);
  // 100, then 100 again.
  const std::string equal = PairOf100And200("00 00") + PairOf100And200("00 00");
  EXPECT_TRUE(Decode(equal, FunctionOf(1, 4)).unsorted);
}

// Mass lists: formats 2, 11 and 14.

TEST(ScanDecoderFormat2, ThirtyTwoChannelsServe) {
  const Decoded decoded = Decode(FileBytes(64, std::byte{0x08}), FunctionOf(2, 32, AscendingMasses(32)));
  EXPECT_TRUE(decoded.ok);
  EXPECT_FALSE(decoded.unsorted);
  ASSERT_EQ(decoded.Masses().size(), 32U);
  EXPECT_EQ(decoded.Masses().back(), 320.0);
  EXPECT_EQ(decoded.Intensities().back(), 257.0);  // word 0x0808: mantissa 0x101
}

TEST(ScanDecoderFormat2, ThirtyThirdPointFailsAndTouchesNothing) {
  const FileBytes bytes(128, std::byte{0x08});
  for (const std::uint32_t pointCount : {33U, 34U, 64U, 0x3FFFFFU}) {
    ExpectUntouched(Decode(bytes, FunctionOf(2, pointCount, AscendingMasses(32)), 0, Used(3)));
  }
}

TEST(ScanDecoderFormat2, MassThatIsNotPositiveFailsAndTouchesNothing) {
  const FileBytes bytes(8, std::byte{0x08});
  for (const float mass : {0.0F, -0.0F, -1.0F, -kInfinity, kNaN}) {
    for (std::size_t place = 0; place < 4; ++place) {
      SCOPED_TRACE(testing::Message() << mass << " at " << place);
      Floats masses = AscendingMasses(32);
      masses[place] = mass;
      ExpectUntouched(Decode(bytes, FunctionOf(2, 4, masses), 0, Used(3)));
      // Channels without points in the scan do not matter.
      EXPECT_TRUE(Decode(bytes, FunctionOf(2, static_cast<std::uint32_t>(place), masses)).ok);
    }
  }
  EXPECT_TRUE(Decode(bytes, FunctionOf(2, 4, {1e-30F, 1, 2, 3})).ok);
}

TEST(ScanDecoderFormat2, EmptyMassListServesNoPoints) {
  ExpectUntouched(Decode("08 00", FunctionOf(2, 1), 0, Used(3)));
  const Decoded empty = Decode("08 00", FunctionOf(2, 0), 0, Used(3));
  EXPECT_TRUE(empty.ok);
  EXPECT_EQ(empty.spectrum.GetCount(), 0);
}

class MassListFormats : public testing::TestWithParam<int> {
 protected:
  /// The float word 0x00700000 (2^20 x 2^-21 x 2^1 = -1) in every point.
  static std::string Points(std::size_t count) {
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i) {
      bytes += GetParam() == 11 ? "00 00 70 00" : "00 00 70 00 FF FF FF FF FF FF FF FF";
    }
    return bytes;
  }
};

INSTANTIATE_TEST_SUITE_P(ScanDecoder, MassListFormats, testing::Values(11, 14));

TEST_P(MassListFormats, PointsBeyondThirtyTwoAreLeftOut) {
  for (const std::uint32_t pointCount : {31U, 32U, 33U, 40U, 0x3FFFFFU}) {
    SCOPED_TRACE(pointCount);
    const Decoded decoded = Decode(Points(40), FunctionOf(GetParam(), pointCount, AscendingMasses(32)));
    const std::size_t expected = std::min(pointCount, 32U);
    EXPECT_TRUE(decoded.ok);
    EXPECT_FALSE(decoded.unsorted);
    EXPECT_EQ(decoded.spectrum.GetCount(), static_cast<int>(expected));
    EXPECT_EQ(decoded.Intensities(), Values(expected, -1.0));
    ASSERT_EQ(decoded.Masses().size(), expected);
    EXPECT_EQ(decoded.Masses().back(), 10.0 * static_cast<double>(expected));
  }
}

TEST_P(MassListFormats, EmptyMassListLeavesAllPointsOut) {
  const Decoded decoded = Decode(Points(4), FunctionOf(GetParam(), 4), 0, Used(3));
  EXPECT_TRUE(decoded.ok);
  EXPECT_FALSE(decoded.unsorted);
  EXPECT_EQ(decoded.spectrum.GetCount(), 0);
  EXPECT_TRUE(decoded.Masses().empty());
}

TEST_P(MassListFormats, MassesAreNotGuarded) {
  const Decoded decoded = Decode(Points(3), FunctionOf(GetParam(), 3, {-2, -1, 0}));
  EXPECT_TRUE(decoded.ok);
  EXPECT_EQ(decoded.Masses(), (Values{-2, -1, 0}));
  EXPECT_FALSE(decoded.unsorted);
}

// The order of masses.

TEST_P(MassListFormats, UnsortedWhenAMassIsNotAboveThePrevious) {
  struct Case {
    Floats masses;
    bool unsorted;
  };
  const Case cases[] = {
      {{10, 20, 30}, false},        {{10, 20, 20}, true},  // equal counts
      {{10, 10, 30}, true},         {{10, 30, 20}, true},
      {{20, 10, 30}, true},         {{10, 20, 15, 40}, true},  // even when the last is the largest
      {{-0x1.fffffep+127F}, false},  // the first is compared with the most negative double
      {{-kInfinity, 1, 2}, true},    // which alone is below it
      {{10, kNaN, 5}, false},        // nothing is above or below NaN
      {{kNaN, 10, 20}, false},      {{10, kNaN, 5, 4}, true},
  };
  for (const Case& c : cases) {
    const auto count = static_cast<std::uint32_t>(c.masses.size());
    const Decoded decoded = Decode(Points(count), FunctionOf(GetParam(), count, c.masses));
    EXPECT_TRUE(decoded.ok);
    EXPECT_EQ(decoded.unsorted, c.unsorted) << testing::PrintToString(c.masses);
  }
}

TEST(ScanDecoderOrder, StoredMassesAreComparedAfterRounding) {
  // Raw 1/128, 2/128, 3/128 become 1 + k x 2^-27: ascending, but all 1 in single precision.
  FunctionRecord function = FunctionOf(0, 3);
  const std::string bytes = ("08 08 00 00  08 10 00 00  08 18 00 00");
  EXPECT_FALSE(Decode(bytes, function).unsorted);  // the control
  function.functionCal.coefficients = {1, 0x1p-20};
  const Decoded decoded = Decode(bytes, function);
  EXPECT_TRUE(decoded.unsorted);
  EXPECT_EQ(decoded.Masses(), (Values{1, 1, 1}));
}

TEST(ScanDecoderOrder, CalibratedMassesCountNotRawOnes) {
  FunctionRecord function = FunctionOf(0, 2);
  function.functionCal.coefficients = {100, -1};
  EXPECT_TRUE(Decode("08 08 00 00  08 10 00 00", function).unsorted);
  EXPECT_FALSE(Decode("08 10 00 00  08 08 00 00", function).unsorted);
}

TEST(ScanDecoderOrder, EveryRawMassFormatTellsDescendingMasses) {
  struct Case {
    int dataFormat;
    const char* ascending;
    const char* descending;
  };
  const Case cases[] = {
      {0, "08 08 00 00 08 10 00 00", "08 10 00 00 08 08 00 00"},
      {1, "08 00 08 00 00 90 01 00 20 03", "08 00 08 00 00 20 03 00 90 01"},
      {8, "01 00 00 01 00 00 01 00 00 02 00 00", "01 00 00 02 00 00 01 00 00 01 00 00"},
      {9, "01 00 00 02 00 00 01 00 00 04 00 00", "01 00 00 04 00 00 01 00 00 02 00 00"},
      {12, "00 00 10 00 01 00 00 00 00 00 10 00 02 00 00 00",
       "00 00 10 00 02 00 00 00 00 00 10 00 01 00 00 00"},
  };
  for (const Case& c : cases) {
    EXPECT_FALSE(Decode(c.ascending, FunctionOf(c.dataFormat, 2)).unsorted) << c.dataFormat;
    EXPECT_TRUE(Decode(c.descending, FunctionOf(c.dataFormat, 2)).unsorted) << c.dataFormat;
  }
}

TEST(ScanDecoderOrder, Format12MassesThatRestartElsewhereStayAsDecoded) {
  // Masses 2^-27 x 5, 7, 6: the third goes back, but not to the first.
  const Decoded decoded =
      Decode("00 00 10 00 05 00 00 00  00 00 10 00 07 00 00 00  00 00 10 00 06 00 00 00", FunctionOf(12, 3));
  EXPECT_TRUE(decoded.unsorted);
  EXPECT_EQ(decoded.Masses(), (Values{5 * 0x1p-27, 7 * 0x1p-27, 6 * 0x1p-27}));
  EXPECT_EQ(decoded.Intensities(), (Values{0.5, 0.5, 0.5}));
}

// Rounding of raw masses.

TEST(ScanDecoderRounding, Format8RawMassesAreSingleBeforeTheyAreCalibrated) {
  // 2^24 + 1 and 2^24 + 3 over 128 become 131072 and 131072 + 2^-5 as floats; in double precision 2^-7 and 3
  // x 2^-7 would be left.
  FunctionRecord function = FunctionOf(8, 2);
  function.functionCal.coefficients = {-131072, 1};
  EXPECT_EQ(Decode("01 00 10 00 00 10  01 00 30 00 00 10", function).Masses(), (Values{0, 0x1p-5}));
}

TEST(ScanDecoderRounding, Format12RawMassesAreSingleBeforeTheyAreCalibrated) {
  // (2^24 + 1) x 2^-27 x 2^20: as above. Word 20 << 27 | 0x1000001 = 0xA1000001.
  for (const int dataFormat : {12, 13}) {
    FunctionRecord function = FunctionOf(dataFormat, 1);
    function.functionCal.coefficients = {-131072, 1};
    EXPECT_EQ(Decode("00 00 10 00 01 00 00 A1 00 00 00 00", function).Masses(), Values{0}) << dataFormat;
    EXPECT_EQ(Decode("00 00 10 00 03 00 00 A1 00 00 00 00", function).Masses(), Values{0x1p-5}) << dataFormat;
  }
}

}  // namespace
}  // namespace zrml::masslynx
