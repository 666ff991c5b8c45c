// Linear axes, and formats 3 and 6.
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "tests/masslynx/scandata/decoded_scan.h"

namespace zrml::masslynx {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// Linear axes: formats 4, 5, 7 and the last scan of format 6.

class LinearFormats : public testing::TestWithParam<int> {
 protected:
  static Decoded DecodeAxis(std::uint32_t pointCount, float start, float end) {
    return Decode("", FunctionOf(GetParam(), pointCount, {start}, {end}));
  }
};

INSTANTIATE_TEST_SUITE_P(ScanDecoder, LinearFormats, testing::Values(4, 5, 6, 7));

TEST_P(LinearFormats, AxisIsSummedStepByStep) {
  // Ten additions of 0.1 to -1 leave -5 x 2^-55; -1 + 10 x 0.1 would be 0.
  const Decoded decoded = DecodeAxis(11, -1, 0);
  ASSERT_EQ(decoded.Masses().size(), 11U);
  EXPECT_EQ(decoded.Masses()[0], -1.0);
  EXPECT_EQ(decoded.Masses()[1], -0x1.ccccccp-1);  // -0.9, rounded to single precision
  EXPECT_EQ(decoded.Masses()[10], -0x1.4p-53);
  EXPECT_FALSE(decoded.unsorted);
}

TEST_P(LinearFormats, RangeIsTakenInSinglePrecision) {
  // 2^24 - (-1) as a float is 2^24: the step is 2^23 and the last mass 2^24 - 1. In double precision it would
  // be 2^24.
  EXPECT_EQ(DecodeAxis(3, -1, 16777216).Masses(), (Values{-1, 8388607, 16777215}));
}

TEST_P(LinearFormats, OnePointStandsAtTheStartWithStepZero) {
  const Decoded decoded = DecodeAxis(1, 100, 200);
  EXPECT_TRUE(decoded.ok);
  EXPECT_TRUE(decoded.unsorted);  // the step is not positive
  EXPECT_EQ(decoded.Masses(), Values{100});
}

TEST_P(LinearFormats, StepThatIsNotPositiveIsUnsorted) {
  const Decoded falling = DecodeAxis(3, 200, 100);
  EXPECT_TRUE(falling.ok);
  EXPECT_TRUE(falling.unsorted);
  EXPECT_EQ(falling.Masses(), (Values{200, 150, 100}));

  const Decoded level = DecodeAxis(3, 200, 200);
  EXPECT_TRUE(level.unsorted);
  EXPECT_EQ(level.Masses(), (Values{200, 200, 200}));

  EXPECT_TRUE(DecodeAxis(3, 100, kNaN).unsorted);
  EXPECT_FALSE(DecodeAxis(3, 100, 200).unsorted);  // the control
}

TEST_P(LinearFormats, EqualMassesOfAPositiveStepAreNotUnsorted) {
  // Neighbouring floats, 2^-4 apart: the second mass rounds to the first, the fourth to the last.
  const Decoded decoded = DecodeAxis(5, 1000000, 1000000.0625F);
  EXPECT_FALSE(decoded.unsorted);
  EXPECT_EQ(decoded.Masses(), (Values{1000000, 1000000, 1000000, 1000000.0625, 1000000.0625}));
}

TEST_P(LinearFormats, EmptyMassListsFailAndTouchNothing) {
  FunctionRecord function = FunctionOf(GetParam(), 2);
  const FileBytes bytes(20, std::byte{0x11});
  ExpectUntouched(Decode(bytes, function, 0, Used(3)));
  function.startMasses = {100};
  ExpectUntouched(Decode(bytes, function, 0, Used(3)));
  function.startMasses.clear();
  function.endMasses = {200};
  ExpectUntouched(Decode(bytes, function, 0, Used(3)));
  function.startMasses = {100};
  EXPECT_TRUE(Decode(bytes, function, 0, Used(3)).ok);  // the control
}

TEST_P(LinearFormats, EveryCountOfPaddingPoints) {
  const std::string bytes =
      ("01 00 02 00 03 00 04 00 00 00  05 00 06 00 07 00 08 00 00 00  09 00 0A 00 0B 00 0C 00 00 00"
       "0D 00 0E 00 0F 00 10 00 00 00");
  const bool byFour = GetParam() == 4 || GetParam() == 6;
  const Values stored = byFour ? Values{1, 2, 3, 4, 5, 6, 7, 8} : Values{1, 2, 5, 6, 9, 10, 13, 14};
  for (std::uint32_t count = 1; count <= 8; ++count) {
    const Decoded decoded = Decode(bytes, FunctionOf(GetParam(), count, {100}, {200}), 0, Used(9));
    EXPECT_EQ(decoded.Intensities(), Values(stored.begin(), stored.begin() + count)) << count;
  }
}

TEST_P(LinearFormats, ExponentOfEveryPoint) {
  const Values expected =
      GetParam() == 4 || GetParam() == 6 ? Values{-16, -64, -256, -1024} : Values{-16, -64};
  const auto count = static_cast<std::uint32_t>(expected.size());
  EXPECT_EQ(Decode("FF FF FF FF FF FF FF FF 32 54", FunctionOf(GetParam(), count, {1}, {2})).Intensities(),
            expected);
}

// Deliberate: format 6 reads its last scan in another layout.

TEST(ScanDecoderFormat6, OnlyTheLastScanIsDeliberatelyReadAsFormat4) {
  FunctionRecord function = FunctionOf(6, 4, {100}, {103});
  const std::string bytes = ("08 00 10 00 18 00 20 00 10 32");
  function.scanIndex.push_back(function.scanIndex[0]);
  function.scanIndex.push_back(function.scanIndex[0]);
  for (const int scan : {0, 1}) {  // words: mantissas 1 to 4, e 0
    const Decoded decoded = Decode(bytes, function, scan);
    EXPECT_EQ(decoded.Masses(), (Values{1, 2, 3, 4})) << scan;
    EXPECT_EQ(decoded.Intensities(), (Values{1, 2, 3, 4})) << scan;
    EXPECT_FALSE(decoded.unsorted) << scan;
  }
  const Decoded last = Decode(bytes, function, 2);  // mantissas 8, 16, 24, 32, e 0 to 3
  EXPECT_EQ(last.Masses(), (Values{100, 101, 102, 103}));
  EXPECT_EQ(last.Intensities(), (Values{8, 64, 384, 2048}));
}

TEST(ScanDecoderFormat6, ScansBeforeTheLastNeedNoMassList) {
  FunctionRecord function = FunctionOf(6, 2);
  function.scanIndex.push_back(function.scanIndex[0]);
  EXPECT_EQ(Decode("08 00 10 00", function, 0).Masses(), (Values{1, 2}));
  ExpectUntouched(Decode("08 00 10 00", function, 1, Used(3)));
}

TEST(ScanDecoderFormat3, PointNumbersGoBeyondTheChannels) {
  const Decoded decoded = Decode(FileBytes(80, std::byte{0x08}), FunctionOf(3, 40, AscendingMasses(32)));
  ASSERT_EQ(decoded.Masses().size(), 40U);
  EXPECT_EQ(decoded.Masses()[0], 1.0);
  EXPECT_EQ(decoded.Masses()[39], 40.0);
  EXPECT_FALSE(decoded.unsorted);
}

}  // namespace
}  // namespace zrml::masslynx
