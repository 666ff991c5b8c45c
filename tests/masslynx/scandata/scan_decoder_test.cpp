// Rules for every layout, and where a scan is read from.
#include <fstream>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/masslynx/scandata/decoded_scan.h"

namespace zrml::masslynx {
namespace {

/// One scan of each layout, worked by hand.
struct Layout {
  const char* name;
  int dataFormat;
  const char* bytes;
  std::size_t unitSize;       ///< bytes per point, pair or group
  std::size_t pointsPerUnit;  ///< stored in a unit
  Floats startMasses;
  Floats endMasses;
  Values masses;
  Values intensities;
  bool calibrated = false;
};

std::ostream& operator<<(std::ostream& out, const Layout& layout) { return out << layout.name; }

const std::vector<Layout> kLayouts = {
    // 2073 = raw 1, mantissa 3, e 1. 0x00064019: raw 200, mantissa 3, e 1. 0xFFFFFFFF: all fields full,
    // raw 2^21 - 1 over 128, 255 x 4^7.
    {"Format0",
     0,
     "19 08 00 00  19 40 06 00  FF FF FF FF",
     4,
     1,
     {},
     {},
     {0.0078125, 1.5625, 16383.9921875},
     {12, 12, 4177920},
     true},
    // Words 0x0019 (3 x 4), 0x0010 (2), 0xFFFF (8191 x 4^7). Raw 0x019000 = 100 x 1024, 0x032000 = 200 x
    // 1024,
    // 0xFFFFFF over 1024. The fourth, a padding point, has mantissa 0.
    {"Format1OddCount",
     1,
     "19 00 10 00 00 90 01 00 20 03  FF FF 00 00 FF FF FF 00 00 00",
     10,
     2,
     {},
     {},
     {100, 200, 16383.9990234375},
     {12, 2, 134201344},
     true},
    // Words 0x0019 (3 x 4), 0xFFFF (8191 x 4^7), 0x8000 (mantissa 2^12, not a sign).
    {"Format2",
     2,
     "19 00  FF FF  00 80",
     2,
     1,
     {100.5F, 200.25F, 0x1.99999ap+8F},
     {},
     {100.5, 200.25, 0x1.99999ap+8},
     {12, 134201344, 4096}},
    {"Format3", 3, "19 00  FF FF  00 80", 2, 1, {}, {}, {1, 2, 3}, {12, 134201344, 4096}},
    // Mantissas 1, -2, 32767, -32768 with e 0, 1, 2, 15 (word 0xF210); then 7 with e 3 (word 0xFFF3) and
    // padding.
    // Axis from 100 to 104.
    {"Format4OddCount",
     4,
     "01 00 FE FF FF 7F 00 80 10 F2  07 00 FF 7F FF 7F FF 7F F3 FF",
     10,
     4,
     {100},
     {104},
     {100, 101, 102, 103, 104},
     {1, -8, 524272, -0x1p45, 448}},
    // Mantissas -3 and 5 with e 1, 2, two words that do not count (word 0xFF21); then 9 with e 15 and
    // padding.
    {"Format5OddCount",
     5,
     "FD FF 05 00 FF 7F FF 7F 21 FF  09 00 FF 7F FF 7F FF 7F FF FF",
     10,
     2,
     {50},
     {51},
     {50, 50.5, 51},
     {-12, 80, 9 * 0x1p30}},
    // As format 4, because the scan is the last.
    {"Format6LastScan",
     6,
     "01 00 FE FF FF 7F 00 80 10 F2",
     10,
     4,
     {100},
     {103},
     {100, 101, 102, 103},
     {1, -8, 524272, -0x1p45}},
    {"Format7", 7, "00 80 FF 7F 11 11 22 22 EF 00", 10, 2, {50}, {51}, {50, 51}, {-0x1p45, 32767 * 0x1p28}},
    // -5 x 4^2 at 0x640 / 128; -32768 x 4^15 at 2^28 - 1, which rounds to 2^28, over 128.
    {"Format8",
     8,
     "FB FF 02 64 00 00  00 80 FF FF FF FF",
     6,
     1,
     {},
     {},
     {12.5, 2097152},
     {-80, -0x1p45},
     true},
    // -32768 x 4^5 at 2^9 x 0.5 (word 0x80000095); 1 x 4^15 at 2^31 (1 - 2^-23).
    {"Format9",
     9,
     "00 80 95 00 00 80  01 00 FF FF FF FF",
     6,
     1,
     {},
     {},
     {256, 2147483392.0},
     {-33554432, 0x1p30},
     true},
    // 2^-21 x 2^1; -2^-21; all bits: -(1 - 2^-21) x 2^63.
    {"Format11",
     11,
     "01 00 40 00  01 00 20 00  FF FF FF FF",
     4,
     1,
     {10, 20.5F, 30},
     {},
     {10, 20.5, 30},
     {0x1p-20, -0x1p-21, -0x1.fffffp+62}},
    // 4 at 2^10 x 0.5; -2^-21 at 2^31 (1 - 2^-27), which rounds to 2^31.
    {"Format12",
     12,
     "00 00 D0 00 00 00 00 54  01 00 20 00 FF FF FF FF",
     8,
     1,
     {},
     {},
     {512, 2147483648.0},
     {4, -0x1p-21},
     true},
    {"Format13",
     13,
     "00 00 D0 00 00 00 00 54 FF FF FF FF  01 00 20 F0 FF FF FF FF 12 34 56 78",
     12,
     1,
     {},
     {},
     {512, 2147483648.0},
     {4, -0x1p-21},
     true},
    {"Format14",
     14,
     "01 00 40 00 FF FF FF FF FF FF FF FF  01 00 20 00 12 34 56 78 9A BC DE F0",
     12,
     1,
     {10, 20.5F},
     {},
     {10, 20.5},
     {0x1p-20, -0x1p-21}},
};

FunctionRecord FunctionOfLayout(const Layout& layout) {
  return FunctionOf(layout.dataFormat, static_cast<std::uint32_t>(layout.masses.size()), layout.startMasses,
                    layout.endMasses);
}

class EveryLayout : public testing::TestWithParam<Layout> {};

INSTANTIATE_TEST_SUITE_P(ScanDecoder, EveryLayout, testing::ValuesIn(kLayouts),
                         [](const auto& layout) { return std::string(layout.param.name); });

TEST_P(EveryLayout, DecodesTheWorkedScan) {
  const Decoded decoded = Decode(GetParam().bytes, FunctionOfLayout(GetParam()));
  EXPECT_TRUE(decoded.ok);
  EXPECT_FALSE(decoded.unsorted);
  EXPECT_EQ(decoded.Masses(), GetParam().masses);
  EXPECT_EQ(decoded.Intensities(), GetParam().intensities);
}

TEST_P(EveryLayout, StartsAtTheDataOffsetAndIgnoresWhatFollows) {
  FunctionRecord function = FunctionOfLayout(GetParam());
  function.scanIndex[0].dataOffset = 5;
  const std::string before = "A1 B2 C3 D4 E5";
  const std::string after = "FF FF FF FF FF FF FF FF FF FF";
  const Decoded decoded = Decode(before + GetParam().bytes + after, function);
  EXPECT_TRUE(decoded.ok);
  EXPECT_EQ(decoded.Masses(), GetParam().masses);
  EXPECT_EQ(decoded.Intensities(), GetParam().intensities);
}

TEST_P(EveryLayout, ReplacesThePointsOfAUsedContainer) {
  for (const int used : {1, 2, 5, 40}) {
    const Decoded decoded = Decode(GetParam().bytes, FunctionOfLayout(GetParam()), 0, Used(used));
    EXPECT_EQ(decoded.spectrum.GetCount(), static_cast<int>(GetParam().masses.size()));
    EXPECT_EQ(decoded.Masses(), GetParam().masses);
    EXPECT_EQ(decoded.Intensities(), GetParam().intensities);
  }
}

TEST_P(EveryLayout, ScanOfNoPointsIsAnEmptySpectrum) {
  FunctionRecord function = FunctionOfLayout(GetParam());
  function.scanIndex[0].pointCount = 0;
  const Decoded decoded = Decode(GetParam().bytes, function, 0, Used(3));
  EXPECT_TRUE(decoded.ok);
  EXPECT_EQ(decoded.spectrum.GetCount(), 0);
  EXPECT_TRUE(decoded.Masses().empty());
  EXPECT_TRUE(decoded.Intensities().empty());
}

// In formats 12 and 13 points that are all zeros restart at the first mass, 0: they are sub-scans, and sum to
// one point.
bool HasSubScans(const Layout& layout) { return layout.dataFormat == 12 || layout.dataFormat == 13; }

// A short read counts as zero bytes: units before the cut are as in the whole file, units after it as in a
// file of zeros, and the cut unit as in a file padded with zeros.
TEST_P(EveryLayout, FileCutAtEveryLengthReadsAsZeroBytes) {
  const FileBytes whole = HexToBytes(GetParam().bytes);
  const FunctionRecord function = FunctionOfLayout(GetParam());
  const Decoded zeros = Decode(FileBytes(whole.size()), function);
  for (const double intensity : zeros.Intensities()) EXPECT_EQ(intensity, 0.0);

  for (std::size_t length = 0; length <= whole.size(); ++length) {
    SCOPED_TRACE(length);
    FileBytes bytes = whole;
    bytes.resize(length);
    const Decoded cut = Decode(bytes, function);
    bytes.resize(whole.size());
    const Decoded filledUp = Decode(bytes, function);
    EXPECT_TRUE(cut.ok);
    EXPECT_EQ(cut.Masses(), filledUp.Masses());
    EXPECT_EQ(cut.Intensities(), filledUp.Intensities());
    EXPECT_EQ(cut.unsorted, filledUp.unsorted);
    if (HasSubScans(GetParam()) && cut.Masses().size() == 1) {
      EXPECT_LT(length, GetParam().unitSize);
      EXPECT_EQ(cut.Masses(), Values{0});
      continue;
    }
    ASSERT_EQ(cut.Masses().size(), GetParam().masses.size());
    for (std::size_t i = 0; i < GetParam().masses.size(); ++i) {
      const std::size_t unit = i / GetParam().pointsPerUnit;
      if ((unit + 1) * GetParam().unitSize <= length) {
        EXPECT_EQ(cut.Masses()[i], GetParam().masses[i]) << i;
        EXPECT_EQ(cut.Intensities()[i], GetParam().intensities[i]) << i;
      } else if (unit * GetParam().unitSize >= length) {
        EXPECT_EQ(cut.Masses()[i], HasSubScans(GetParam()) ? 0 : zeros.Masses()[i]) << i;
        EXPECT_EQ(cut.Intensities()[i], 0.0) << i;
      }
    }
  }
}

TEST_P(EveryLayout, DataOffsetBeyondTheEndReadsAsZeroBytes) {
  for (const std::uint32_t offset : {1000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    FunctionRecord function = FunctionOfLayout(GetParam());
    function.scanIndex[0].dataOffset = offset;
    const Decoded decoded = Decode(GetParam().bytes, function);
    EXPECT_TRUE(decoded.ok) << offset;
    EXPECT_EQ(decoded.Intensities(), Values(HasSubScans(GetParam()) ? 1 : GetParam().masses.size()))
        << offset;
  }
}

TEST_P(EveryLayout, OnlyRawMassesAreCalibrated) {
  FunctionRecord function = FunctionOfLayout(GetParam());
  function.functionCal.coefficients = {1, 0.5};
  function.scanIndex[0].segment = 3;  // without coefficients: the function's polynomial applies
  Values expected = GetParam().masses;
  if (GetParam().calibrated) {
    for (double& mass : expected) mass = static_cast<float>(1 + 0.5 * mass);
  }
  EXPECT_EQ(Decode(GetParam().bytes, function).Masses(), expected);

  function.segmentCals.resize(3);
  function.segmentCals[2].coefficients = {0, 2};
  expected = GetParam().masses;
  if (GetParam().calibrated) {
    for (double& mass : expected) mass *= 2;
  }
  EXPECT_EQ(Decode(GetParam().bytes, function).Masses(), expected);

  function.scanIndex[0].preCalibrated = true;
  EXPECT_EQ(Decode(GetParam().bytes, function).Masses(), GetParam().masses);
}

TEST_P(EveryLayout, OnlyRawMassesAreCorrectedForTemperature) {
  FunctionRecord function = FunctionOfLayout(GetParam());
  function.staticCal.coefficients = {0, 1};
  function.calTemperature = 100;
  function.scanIndex[0].temperatureValid = true;
  function.scanIndex[0].temperature = 500100;
  function.scanIndex[0].temperatureCoefficient = 1;  // factor 1 - 0.5
  Values expected = GetParam().masses;
  if (GetParam().calibrated) {
    for (double& mass : expected) mass *= 0.5;
  }
  EXPECT_EQ(Decode(GetParam().bytes, function).Masses(), expected);
}

// Data formats as a whole.

TEST(ScanDecoder, UnknownFormatsFailAndTouchNothing) {
  const FileBytes bytes(64, std::byte{0x55});
  for (const int dataFormat :
       {std::numeric_limits<int>::min(), -2, -1, 10, 15, 16, 100, 65536, std::numeric_limits<int>::max()}) {
    SCOPED_TRACE(dataFormat);
    ExpectUntouched(Decode(bytes, FunctionOf(dataFormat, 4, {1, 2, 3, 4}, {5}), 0, Used(3)));
    ExpectUntouched(Decode(bytes, FunctionOf(dataFormat, 0, {1}, {5}), 0, Used(3)));
  }
}

TEST(ScanDecoder, ScanIsTakenFromItsPlaceInTheIndex) {
  FunctionRecord function = FunctionOf(3, 1);
  function.scanIndex.resize(3);
  function.scanIndex[1].dataOffset = 2;
  function.scanIndex[1].pointCount = 2;
  function.scanIndex[2].dataOffset = 6;
  function.scanIndex[2].pointCount = 1;
  const std::string bytes = ("08 00  10 00 18 00  20 00");
  EXPECT_EQ(Decode(bytes, function, 0).Intensities(), Values{1});
  EXPECT_EQ(Decode(bytes, function, 1).Intensities(), (Values{2, 3}));
  EXPECT_EQ(Decode(bytes, function, 2).Intensities(), Values{4});
}

TEST(ScanDecoder, ScanOutsideTheIndexFailsAndTouchesNothing) {
  FunctionRecord function = FunctionOf(3, 1);
  for (const int scan : {-1, 1, 2, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    ExpectUntouched(Decode("08 00", function, scan, Used(3)));
  }
  EXPECT_TRUE(Decode("08 00", function, 0, Used(3)).ok);  // the control
  function.scanIndex.clear();
  ExpectUntouched(Decode("08 00", function, 0, Used(3)));
}

TEST(ScanDecoder, LargestPointCountThatAnIndexCanHold) {
  constexpr int kPoints = 0x3FFFFF;
  const Decoded decoded = Decode("08 00", FunctionOf(3, kPoints));
  EXPECT_TRUE(decoded.ok);
  EXPECT_FALSE(decoded.unsorted);
  ASSERT_EQ(decoded.spectrum.GetCount(), kPoints);
  ASSERT_EQ(decoded.spectrum.IntensityVector().size(), static_cast<std::size_t>(kPoints));
  EXPECT_EQ(decoded.spectrum.IntensityVector().front(), 1.0);
  EXPECT_EQ(decoded.spectrum.GetMass(kPoints - 1), 4194303.0);
  EXPECT_EQ(decoded.spectrum.IntensityVector().back(), 0.0);
}

#ifndef _WIN32  // where such a file would occupy its full size on disk
TEST(ScanDecoder, DataBehindTwoAndFourGigabytes) {
  const TempDirectory directory;
  for (const std::uint64_t offset : {0x7FFFFFFCULL, 0xFFFFFFFCULL}) {
    directory.Write("_FUNC001.DAT", HexToBytes("FF FF FF FF FF FF FF FF"));  // read if the offset is cut
    directory.Truncate("_FUNC001.DAT", offset);
    std::ofstream(directory.Path() / "_FUNC001.DAT", std::ios::binary | std::ios::app)
        << BytesToText(HexToBytes("19 08 00 00 19 40 06 00"));
    const platform::File file = platform::File::Open(directory.WidePath("_FUNC001.DAT"));
    FunctionRecord function = FunctionOf(0, 2);
    function.scanIndex[0].dataOffset = static_cast<std::uint32_t>(offset);
    const Decoded decoded = DecodeFile(file, function);
    EXPECT_EQ(decoded.Masses(), (Values{0.0078125, 1.5625})) << offset;
    EXPECT_EQ(decoded.Intensities(), (Values{12, 12})) << offset;
  }
}
#endif

}  // namespace
}  // namespace zrml::masslynx
