// Scans of formats 12 and 13 that consist of sub-scans one after the other.
#include <cmath>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "masslynx/scandata/sub_scans.h"
#include "tests/masslynx/scandata/decoded_scan.h"

namespace zrml::masslynx {
namespace {

struct Point {
  double mass;    // a multiple of 2^-8 below 1024
  int intensity;  // -2^21 to 2^21
};
using Points = std::vector<Point>;

// Exponent 10: 27 bits of mass * 2^17. Exponent 21: the magnitude is the intensity; bit 21 is its sign.
FileBytes Pack(const Points& points, int dataFormat) {
  ByteWriter writer;
  for (const Point& point : points) {
    const bool negative = point.intensity < 0;
    const auto magnitude = static_cast<std::uint32_t>(negative ? -point.intensity : point.intensity);
    writer.U32(magnitude | (negative ? 1U << 21 : 0U) | 21U << 22);
    writer.U32(static_cast<std::uint32_t>(point.mass * 0x1p17) | 10U << 27);
    if (dataFormat == 13) writer.Unused(4);
  }
  return writer.Take();
}

Decoded Decode(const Points& points, int dataFormat = 12, const CZRMassSpectrum& container = {}) {
  return Decode(Pack(points, dataFormat), FunctionOf(dataFormat, static_cast<std::uint32_t>(points.size())),
                0, container);
}

void ExpectPoints(const Decoded& decoded, const Points& expected) {
  EXPECT_TRUE(decoded.ok);
  EXPECT_EQ(decoded.spectrum.GetCount(), static_cast<int>(expected.size()));
  Values masses;
  Values intensities;
  for (const Point& point : expected) {
    masses.push_back(point.mass);
    intensities.push_back(point.intensity);
  }
  EXPECT_EQ(decoded.Masses(), masses);
  EXPECT_EQ(decoded.Intensities(), intensities);
}

class RepeatedScans : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Formats, RepeatedScans, testing::Values(12, 13));

TEST_P(RepeatedScans, TwoIdenticalSubScansOfAHundredPointsGiveAHundredWithSummedIntensities) {
  Points points;
  Points expected;
  for (int sub = 0; sub < 2; ++sub) {
    for (int i = 0; i < 100; ++i) points.push_back({200 + 0.5 * i, i + 1});
  }
  for (int i = 0; i < 100; ++i) expected.push_back({200 + 0.5 * i, 2 * (i + 1)});
  const Decoded decoded = Decode(points, GetParam());
  ExpectPoints(decoded, expected);
  EXPECT_TRUE(decoded.unsorted);
}

TEST_P(RepeatedScans, OneSubScanIsNoRepetition) {
  const Points points = {{100, 1}, {100.00390625, 2}, {200, 3}};
  const Decoded decoded = Decode(points, GetParam());
  ExpectPoints(decoded, points);  // peaks that would merge stay
  EXPECT_FALSE(decoded.unsorted);
}

TEST_P(RepeatedScans, SubScansOfDifferentLengthsAndMasses) {
  const Decoded decoded = Decode(
      {{100, 1}, {200, 2}, {300, 3}, {100, 10}, {250, 20}, {100, 100}, {300, 200}, {400, 300}}, GetParam());
  ExpectPoints(decoded, {{100, 111}, {200, 2}, {250, 20}, {300, 203}, {400, 300}});
}

TEST_P(RepeatedScans, ASubScanThatStartsAtAnotherMassLeavesThePointsAsDecoded) {
  const Points restart = {{100, 1}, {200, 2}, {100, 3}, {200, 4}};
  ExpectPoints(Decode(restart, GetParam()), {{100, 4}, {200, 6}});
  Points elsewhere = restart;
  elsewhere[2].mass = 100.00390625;
  const Decoded decoded = Decode(elsewhere, GetParam());
  ExpectPoints(decoded, elsewhere);
  EXPECT_TRUE(decoded.unsorted);
}

TEST_P(RepeatedScans, OneOfThreeThatStartsAtAnotherMassIsEnough) {
  const Points points = {{100, 1}, {200, 2}, {100, 3}, {200, 4}, {99, 5}, {200, 6}};
  ExpectPoints(Decode(points, GetParam()), points);
}

TEST_P(RepeatedScans, SubScansOfOnePoint) {
  ExpectPoints(Decode({{100, 1}, {100, 2}, {100, 4}}, GetParam()), {{100, 7}});
  ExpectPoints(Decode({{100, 1}, {100, 2}, {200, 4}}, GetParam()), {{100, 3}, {200, 4}});
  ExpectPoints(Decode({{100, 1}, {200, 2}, {100, 4}}, GetParam()), {{100, 5}, {200, 2}});
}

TEST_P(RepeatedScans, PeaksWithinFiveThousandthsBecomeOne) {
  // (1 * 200 + 3 * 200.00390625) / 4; 0.0078125 apart is too far.
  ExpectPoints(
      Decode({{100, 1}, {200, 1}, {300, 1}, {100, 1}, {200.00390625, 3}, {300.0078125, 1}}, GetParam()),
      {{100, 2}, {200.0029296875, 4}, {300, 1}, {300.0078125, 1}});
}

TEST_P(RepeatedScans, NegativeIntensitiesAreSummedToo) {
  ExpectPoints(Decode({{100, 5}, {200, 5}, {100, -2}, {200, -2}}, GetParam()), {{100, 3}, {200, 3}});
}

TEST_P(RepeatedScans, TheMassesAfterCalibrationDecide) {
  // m/z = 1024 - mass: falling, so every point starts a sub-scan, at different masses; with both coefficients
  // 0 all masses are equal.
  const Points points = {{100, 1}, {200, 2}};
  FunctionRecord function = FunctionOf(GetParam(), 2);
  function.functionCal.coefficients = {1024, -1};
  const Decoded falling = Decode(Pack(points, GetParam()), function);
  ExpectPoints(falling, {{924, 1}, {824, 2}});
  EXPECT_TRUE(falling.unsorted);
  function.functionCal.coefficients = {500, 0};
  ExpectPoints(Decode(Pack(points, GetParam()), function), {{500, 3}});
}

TEST_P(RepeatedScans, EarlierContentOfTheContainerDoesNotMatter) {
  const Points points = {{100, 1}, {200, 2}, {100, 3}, {200, 4}};
  CZRMassSpectrum used;
  used.SetSize(7);
  for (int i = 0; i < 7; ++i) {
    used.SetMass(i, 1000 + i);
    used.SetIntensity(i, -5);
  }
  used.SetCentroided(false);
  used.SetPolarity(2);
  used.EnablePointFlags(true);
  used.EnablePointMarks(true);
  used.EnablePointValues(true);
  used.SetTitle(HostString(L"title"));
  const Decoded decoded = Decode(points, GetParam(), used);
  ExpectPoints(decoded, {{100, 4}, {200, 6}});
  EXPECT_TRUE(decoded.spectrum.IsCentroided());
  EXPECT_EQ(decoded.spectrum.GetPolarity(), 2);
  EXPECT_FALSE(decoded.spectrum.HasPointFlags());
  EXPECT_FALSE(decoded.spectrum.HasPointMarks());
  EXPECT_FALSE(decoded.spectrum.HasPointValues());
  EXPECT_EQ(decoded.spectrum.GetTitle(), HostString());
  EXPECT_TRUE(decoded.spectrum.AreStatisticsStale());
}

// Bytes that the file lacks are zeros: every point then restarts at the first mass, 0.
TEST_P(RepeatedScans, AScanOfNothingButZerosIsOnePoint) {
  const Decoded decoded = Decode(FileBytes(), FunctionOf(GetParam(), 3));
  ExpectPoints(decoded, {{0, 0}});
}

TEST_P(RepeatedScans, ATruncatedSecondSubScanLeavesThePointsAsDecoded) {
  const Points points = {{100, 1}, {200, 2}, {100, 3}, {200, 4}};
  FileBytes bytes = Pack(points, GetParam());
  bytes.resize(bytes.size() * 3 / 4);
  ExpectPoints(Decode(bytes, FunctionOf(GetParam(), 4)), {{100, 1}, {200, 2}, {100, 3}, {0, 0}});
}

TEST(RepeatedScans, VeryManyTinySubScansOverALongOneAreSummed) {
  Points points;
  for (int i = 0; i < 20000; ++i) points.push_back({100 + i / 64.0, 1});
  Points expected = points;
  expected[0].intensity += 20000;
  for (int i = 0; i < 20000; ++i) points.push_back({100, 1});
  ExpectPoints(Decode(points), expected);
}

// All masses but the first differ by more than the merge width: the sum grows by 999 points each time, to
// 99,901.
TEST(RepeatedScans, AHundredSubScansOfDifferentMassesAreSummed) {
  Points points;
  Points expected = {{100, 100}};
  for (int sub = 0; sub < 100; ++sub) {
    points.push_back({100, 1});
    for (int i = 1; i < 1000; ++i) points.push_back({100 + 0.875 * i + sub / 128.0, 1});
  }
  for (int i = 1; i < 1000; ++i) {
    for (int sub = 0; sub < 100; ++sub) expected.push_back({100 + 0.875 * i + sub / 128.0, 1});
  }
  ExpectPoints(Decode(points), expected);
}

TEST_P(RepeatedScans, ThreeHundredSubScansOfAThousandPointsAreSummed) {
  Points points;
  Points expected;
  for (int sub = 0; sub < 300; ++sub) {
    for (int i = 0; i < 1000; ++i) points.push_back({100 + i / 16.0, 2});
  }
  for (int i = 0; i < 1000; ++i) expected.push_back({100 + i / 16.0, 600});
  ExpectPoints(Decode(points, GetParam()), expected);
}

TEST(RepeatedScans, OtherFormatsAreNotSummed) {
  // Format 8: mantissa 1, raw masses 16, 32, 16, 32 of exponent 0.
  const FileBytes bytes =
      HexToBytes("01 00 00 80 00 00  01 00 00 00 01 00  01 00 00 80 00 00  01 00 00 00 01 00");
  const Decoded decoded = Decode(bytes, FunctionOf(8, 4));
  ExpectPoints(decoded, {{16, 1}, {32, 1}, {16, 1}, {32, 1}});
}

CZRMassSpectrum MakeScan(const Values& masses) {
  CZRMassSpectrum scan;
  scan.SetSize(static_cast<int>(masses.size()));
  scan.CopyMasses(masses.data());
  scan.CopyIntensities(Values(masses.size(), 1).data());
  return scan;
}

// As in a file that ends after its second sub-scan.
TEST(SumSubScans, SubScansOfOnePointWithoutIntensityChangeNothing) {
  Values masses(10004, 100);
  masses[1] = masses[3] = 200;
  CZRMassSpectrum spectrum = MakeScan(masses);
  for (int i = 4; i < 10004; ++i) spectrum.SetIntensity(i, 0);
  EXPECT_TRUE(plugin::SumSubScans(spectrum));
  EXPECT_EQ(spectrum.MassVector(), MakeScan({100, 200}).MassVector());
  EXPECT_EQ(spectrum.IntensityVector(), (HostVector<double>{2, 2}));
}

TEST(SumSubScans, SubScansOfOnePointAreAllAdded) {
  const struct {
    Values masses;
    Values intensities;
    Values sumMasses;
    Values sum;
  } cases[] = {
      {{100, 100}, {3, 3}, {100}, {6}},
      {{100, 100, 100}, {1, 0, 5}, {100}, {6}},
      {{100, 100, 100, 200}, {1, 0, 0, 7}, {100, 200}, {1, 7}},
      {{100, 200, 100, 100}, {1, 2, 0, 4}, {100, 200}, {5, 2}},
  };
  for (const auto& oneCase : cases) {
    CZRMassSpectrum spectrum = MakeScan(oneCase.masses);
    spectrum.CopyIntensities(oneCase.intensities.data());
    EXPECT_TRUE(plugin::SumSubScans(spectrum));
    EXPECT_EQ(spectrum.MassVector(), MakeScan(oneCase.sumMasses).MassVector());
    const Values intensities(spectrum.IntensityVector().begin(), spectrum.IntensityVector().end());
    EXPECT_EQ(intensities, oneCase.sum);
  }
}

// 1/256 apart: each absorbs its neighbours. A sum with far fewer points than a sub-scan shows that peaks were
// merged; the sums of two test which ones.
TEST(SumSubScans, TwoHundredDenseSubScansAreSummed) {
  Values masses;
  for (int sub = 0; sub < 200; ++sub) {
    for (int i = 0; i < 3000; ++i) masses.push_back(100 + i / 256.0);
  }
  CZRMassSpectrum spectrum = MakeScan(masses);
  EXPECT_TRUE(plugin::SumSubScans(spectrum));
  EXPECT_LT(spectrum.GetCount(), 2000);
  const HostVector<double>& intensities = spectrum.IntensityVector();
  EXPECT_EQ(std::accumulate(intensities.begin(), intensities.end(), 0.0), 600000);
}

// Masses `step` apart, all intensities 100 except one of -1 in the first sub-scan.
void ExpectWholeSum(int subScans, int points, double step) {
  Values masses;
  for (int sub = 0; sub < subScans; ++sub) {
    for (int i = 0; i < points; ++i) masses.push_back(100 + i * step);
  }
  CZRMassSpectrum spectrum = MakeScan(masses);
  spectrum.CopyIntensities(Values(masses.size(), 100).data());
  spectrum.SetIntensity(5, -1);
  EXPECT_TRUE(plugin::SumSubScans(spectrum));
  ASSERT_EQ(spectrum.GetCount(), points);
  const Values first(masses.begin(), masses.begin() + points);
  EXPECT_EQ(Values(spectrum.MassVector().begin(), spectrum.MassVector().end()), first);
  Values intensities(static_cast<std::size_t>(points), 100.0 * subScans);
  intensities[5] -= 101;
  EXPECT_EQ(Values(spectrum.IntensityVector().begin(), spectrum.IntensityVector().end()), intensities);
}

TEST(SumSubScans, OneNegativeIntensityDoesNotKeepTheOthersFromBeingSummed) {
  ExpectWholeSum(60, 1000, 0.0625);
  ExpectWholeSum(15, 7447, 0.0625);
  ExpectWholeSum(20, 32768, 0.03125);
}

// Plain addition would take minutes: 60,000 peaks, and as many sub-scans of two points, one of them with a
// negative intensity.
TEST(SumSubScans, AsManySubScansAsPeaksAreSummedWithANegativeIntensity) {
  constexpr int kPeaks = 60000;
  Values masses;
  for (int i = 0; i < kPeaks; ++i) masses.push_back(100 + i * 0.03125);
  for (int i = 1; i < kPeaks; ++i) {
    masses.push_back(100);
    masses.push_back(100 + i * 0.03125);
  }
  CZRMassSpectrum spectrum = MakeScan(masses);
  spectrum.SetIntensity(5, -3);
  EXPECT_TRUE(plugin::SumSubScans(spectrum));
  ASSERT_EQ(spectrum.GetCount(), kPeaks);
  Values intensities(kPeaks, 2);
  intensities[0] = kPeaks;
  intensities[5] = -2;
  EXPECT_EQ(Values(spectrum.IntensityVector().begin(), spectrum.IntensityVector().end()), intensities);
}

TEST(SumSubScans, NothingToSum) {
  CZRMassSpectrum empty;
  EXPECT_FALSE(plugin::SumSubScans(empty));
  CZRMassSpectrum one = MakeScan({100});
  EXPECT_FALSE(plugin::SumSubScans(one));
  CZRMassSpectrum nan = MakeScan({std::nan(""), std::nan("")});
  EXPECT_FALSE(plugin::SumSubScans(nan));
  EXPECT_EQ(nan.GetCount(), 2);
}

}  // namespace
}  // namespace zrml::masslynx
