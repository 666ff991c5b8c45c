#include "masslynx/scandata/scan_decoder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/masslynx/scandata/scan_files.h"
#include "tests/support/byte_writer.h"

namespace zrml {
namespace {

using Values = HostVector<double>;
using Floats = std::vector<float>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// A function of one scan at offset 0 of its data file.
FunctionRecord FunctionOf(int dataFormat, std::uint32_t pointCount) {
  FunctionRecord function;
  function.number = 1;
  function.typeCode = 0;
  function.dataFormat = dataFormat;
  function.scanIndex.resize(1);
  function.scanIndex[0].pointCount = pointCount;
  return function;
}

/// The same with 32 channels whose masses start with the given ones; the others are 0.
FunctionRecord FunctionOf(int dataFormat, std::uint32_t pointCount, Floats startMasses,
                          Floats endMasses = {}) {
  FunctionRecord function = FunctionOf(dataFormat, pointCount);
  startMasses.resize(32);
  endMasses.resize(32);
  function.startMasses = std::move(startMasses);
  function.endMasses = std::move(endMasses);
  return function;
}

struct Decoded {
  bool ok = false;
  bool unsorted = false;
  CZRMassSpectrum spectrum;

  Values Masses() const { return spectrum.MassVector(); }
  Values Intensities() const { return spectrum.IntensityVector(); }
};

Decoded DecodeFile(const platform::File& file, const FunctionRecord& function, int scan = 0,
                   const CZRMassSpectrum& container = {}) {
  Decoded decoded;
  decoded.spectrum = container;
  decoded.ok = DecodeScan(file, function, scan, decoded.spectrum, decoded.unsorted);
  return decoded;
}

/// Decodes from a data file of the given bytes.
Decoded Decode(const FileBytes& bytes, const FunctionRecord& function, int scan = 0,
               const CZRMassSpectrum& container = {}) {
  return DecodeFile(OpenDataFile(bytes), function, scan, container);
}

Decoded Decode(const std::string& hex, const FunctionRecord& function, int scan = 0,
               const CZRMassSpectrum& container = {}) {
  return Decode(HexToBytes(hex), function, scan, container);
}

/// A container that has been used before: masses 1001, 1002, ... and intensities -1, -2, ...
CZRMassSpectrum Used(int count) {
  CZRMassSpectrum spectrum;
  spectrum.SetSize(count);
  for (int i = 0; i < count; ++i) {
    spectrum.SetMass(i, 1001 + i);
    spectrum.SetIntensity(i, -1 - i);
  }
  return spectrum;
}

void ExpectUntouched(const Decoded& decoded) {
  EXPECT_FALSE(decoded.ok);
  EXPECT_FALSE(decoded.unsorted);
  EXPECT_EQ(decoded.spectrum.GetCount(), 3);
  EXPECT_EQ(decoded.Masses(), (Values{1001, 1002, 1003}));
  EXPECT_EQ(decoded.Intensities(), (Values{-1, -2, -3}));
}

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

FunctionRecord FunctionOf(const Layout& layout) {
  return FunctionOf(layout.dataFormat, static_cast<std::uint32_t>(layout.masses.size()), layout.startMasses,
                    layout.endMasses);
}

class EveryLayout : public testing::TestWithParam<Layout> {};

INSTANTIATE_TEST_SUITE_P(ScanDecoder, EveryLayout, testing::ValuesIn(kLayouts),
                         [](const auto& layout) { return std::string(layout.param.name); });

TEST_P(EveryLayout, DecodesTheWorkedScan) {
  const Decoded decoded = Decode(GetParam().bytes, FunctionOf(GetParam()));
  EXPECT_TRUE(decoded.ok);
  EXPECT_FALSE(decoded.unsorted);
  EXPECT_EQ(decoded.Masses(), GetParam().masses);
  EXPECT_EQ(decoded.Intensities(), GetParam().intensities);
}

TEST_P(EveryLayout, StartsAtTheDataOffsetAndIgnoresWhatFollows) {
  FunctionRecord function = FunctionOf(GetParam());
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
    const Decoded decoded = Decode(GetParam().bytes, FunctionOf(GetParam()), 0, Used(used));
    EXPECT_EQ(decoded.spectrum.GetCount(), static_cast<int>(GetParam().masses.size()));
    EXPECT_EQ(decoded.Masses(), GetParam().masses);
    EXPECT_EQ(decoded.Intensities(), GetParam().intensities);
  }
}

TEST_P(EveryLayout, ScanOfNoPointsIsAnEmptySpectrum) {
  FunctionRecord function = FunctionOf(GetParam());
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

// A short read counts as zero bytes: units before the cut are as in the whole file, units behind it as a file
// of zeros gives them, and the unit that is cut as a file filled up with zeros.
TEST_P(EveryLayout, FileCutAtEveryLengthReadsAsZeroBytes) {
  const FileBytes whole = HexToBytes(GetParam().bytes);
  const FunctionRecord function = FunctionOf(GetParam());
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

TEST_P(EveryLayout, DataOffsetBehindTheEndReadsAsZeroBytes) {
  for (const std::uint32_t offset : {1000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    FunctionRecord function = FunctionOf(GetParam());
    function.scanIndex[0].dataOffset = offset;
    const Decoded decoded = Decode(GetParam().bytes, function);
    EXPECT_TRUE(decoded.ok) << offset;
    EXPECT_EQ(decoded.Intensities(), Values(HasSubScans(GetParam()) ? 1 : GetParam().masses.size()))
        << offset;
  }
}

TEST_P(EveryLayout, OnlyRawMassesAreCalibrated) {
  FunctionRecord function = FunctionOf(GetParam());
  function.functionCal.coefficients = {1, 0.5};
  function.scanIndex[0].segment = 3;  // without coefficients: the function's polynomial serves
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
  FunctionRecord function = FunctionOf(GetParam());
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

#ifndef _WIN32  // where such a file would take its full size on disk
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

  // The same with the padding point at mass 100 (raw 0x019000): it does not count for the order either.
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

Floats AscendingMasses(std::size_t count) {
  Floats masses;
  while (masses.size() < count) masses.push_back(10.0F * static_cast<float>(masses.size() + 1));
  return masses;
}

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
      // Channels that the scan has no points for do not matter.
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
      {{20, 10, 30}, true},         {{10, 20, 15, 40}, true},  // also when the last is the largest
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
  // Masses 2^-27 x 5, 7, 6: the third falls back, but not to the first.
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
}  // namespace zrml
