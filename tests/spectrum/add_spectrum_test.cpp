#include "spectrum/add_spectrum.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "spectrum/point_merge.h"
#include "tests/spectrum/failing_allocation.h"
#include "tests/spectrum/synthetic_spectra.h"

namespace zrml {
namespace {

CZRMassSpectrum Sum(bool absolute, double tolerance, const CZRMassSpectrum& source, CZRMassSpectrum target) {
  const int count = AddSpectrum(absolute, tolerance, source, target);
  EXPECT_EQ(count, target.GetCount());
  EXPECT_TRUE(target.AreStatisticsStale());
  return target;
}

void ExpectPoints(const CZRMassSpectrum& spectrum, const Doubles& masses, const Doubles& intensities) {
  EXPECT_EQ(Masses(spectrum), masses);
  EXPECT_EQ(Intensities(spectrum), intensities);
  EXPECT_EQ(spectrum.GetCount(), static_cast<int>(masses.size()));
}

// Sets what a sum may keep or reset.
void SetAttributes(CZRMassSpectrum& spectrum) {
  spectrum.SetTitle(HostString(L"title"));
  spectrum.SetLabel(HostString(L"label"));
  spectrum.SetMSLevel(2);
  spectrum.SetPrecursorMass(500.5);
  spectrum.SetPolarity(2);
  spectrum.SetScanType(4);
  spectrum.SetStartTime(1);
  spectrum.SetEndTime(2);
  spectrum.SetFirstScan(3);
  spectrum.SetLastScan(4);
  spectrum.SetFirstDriftBin(5);
  spectrum.SetFirstDriftValue(6);
  spectrum.SetScanAuxValue(7);
}

void ExpectAttributesKept(const CZRMassSpectrum& spectrum) {
  EXPECT_EQ(spectrum.GetTitle(), HostString(L"title"));
  EXPECT_EQ(spectrum.GetLabel(), HostString(L"label"));
  EXPECT_EQ(spectrum.GetMSLevel(), 2);
  EXPECT_EQ(spectrum.GetPrecursorMass(), 500.5);
  EXPECT_EQ(spectrum.GetPolarity(), 2);
  EXPECT_EQ(spectrum.GetScanType(), 4);
  EXPECT_EQ(spectrum.GetStartTime(), 1);
  EXPECT_EQ(spectrum.GetEndTime(), 2);
  EXPECT_EQ(spectrum.GetFirstScan(), 3);
  EXPECT_EQ(spectrum.GetLastScan(), 4);
  EXPECT_EQ(spectrum.GetLastDriftBin(), 5);
  EXPECT_EQ(spectrum.GetLastDriftValue(), 6);
  EXPECT_EQ(spectrum.GetScanAuxValue(), 7);
}

TEST(AddSpectrum, MixedKindsEmptyTheTargetDeliberately) {
  const CZRMassSpectrum centroids = MakeCentroids({100, 200}, {1, 2});
  const CZRMassSpectrum profile = MakeProfile({100, 101, 102}, {1, 2, 1});
  ExpectPoints(Sum(true, 0.01, centroids, profile), {}, {});
  ExpectPoints(Sum(true, 0.01, profile, centroids), {}, {});
  CZRMassSpectrum target = profile;
  SetAttributes(target);
  EXPECT_EQ(AddSpectrum(true, 0.01, centroids, target), 0);
  ExpectAttributesKept(target);
  EXPECT_FALSE(target.IsCentroided());
}

TEST(AddSpectrum, CentroidListsMergeWithTheirEqualMassesSummed) {
  ExpectPoints(Sum(true, 0, MakeCentroids({100, 150}, {3, 4}), MakeCentroids({100, 200}, {1, 2})),
               {100, 150, 200}, {4, 4, 2});
}

TEST(AddSpectrum, PeaksWithinTheWidthBecomeOne) {
  const CZRMassSpectrum sum = Sum(true, 0.01, MakeCentroids({100.004}, {30}), MakeCentroids({100.000}, {10}));
  ASSERT_EQ(sum.GetCount(), 1);
  EXPECT_EQ(sum.GetMass(0), (30 * 100.004 + 10 * 100.0) / 40);
  EXPECT_NEAR(sum.GetMass(0), 100.003, 1e-12);
  EXPECT_EQ(Intensities(sum), (Doubles{40}));
}

TEST(AddSpectrum, WidthsAreCappedAtOneUnit) {
  EXPECT_EQ(Sum(true, 5, MakeCentroids({100.6}, {3}), MakeCentroids({100}, {1})).GetCount(), 2);
  EXPECT_EQ(Sum(true, 5, MakeCentroids({100.4}, {3}), MakeCentroids({100}, {1})).GetCount(), 1);
}

TEST(AddSpectrum, ARelativeWidthIsInPartsPerMillion) {
  const CZRMassSpectrum target = MakeCentroids({100, 1000}, {4, 4});
  const CZRMassSpectrum source = MakeCentroids({100.125, 1000.125}, {4, 4});
  ExpectPoints(Sum(false, 500, source, target), {100, 100.125, 1000.0625}, {4, 4, 8});
}

TEST(AddSpectrum, EmptySpectraAddNothing) {
  const CZRMassSpectrum some = MakeCentroids({100, 200}, {1, 2});
  ExpectPoints(Sum(true, 0.01, CZRMassSpectrum(), some), {100, 200}, {1, 2});
  ExpectPoints(Sum(true, 0.01, some, CZRMassSpectrum()), {100, 200}, {1, 2});
  ExpectPoints(Sum(true, 0.01, CZRMassSpectrum(), CZRMassSpectrum()), {}, {});
}

TEST(AddSpectrum, ASpectrumCanBeAddedToItself) {
  CZRMassSpectrum centroids = MakeCentroids({100, 200}, {1, 2});
  EXPECT_EQ(AddSpectrum(true, 0.01, centroids, centroids), 2);
  ExpectPoints(centroids, {100, 200}, {2, 4});
  CZRMassSpectrum profile = MakeProfile({100, 101, 102, 103, 104, 105}, {0, 1, 5, 2, 1, 0});
  EXPECT_EQ(AddSpectrum(true, 0.01, profile, profile), 6);
  ExpectPoints(profile, {100, 101, 102, 103, 104, 105}, {0, 2, 10, 4, 2, 0});
}

TEST(AddCentroidSpectra, AttributesButKindAndPolarityAreResetDeliberately) {
  CZRMassSpectrum target = MakeCentroids({100}, {1});
  SetAttributes(target);
  AddCentroidSpectra(true, 0.01, MakeCentroids({200}, {1}), target, true);
  EXPECT_EQ(target.GetPolarity(), 2);
  EXPECT_TRUE(target.IsCentroided());
  const CZRMassSpectrum fresh;
  EXPECT_EQ(target.GetTitle(), fresh.GetTitle());
  EXPECT_EQ(target.GetLabel(), fresh.GetLabel());
  EXPECT_EQ(target.GetMSLevel(), 1);
  EXPECT_EQ(target.GetPrecursorMass(), 0);
  EXPECT_EQ(target.GetScanType(), 1);
  EXPECT_EQ(target.GetStartTime(), 0);
  EXPECT_EQ(target.GetEndTime(), 0);
  EXPECT_EQ(target.GetFirstScan(), 0);
  EXPECT_EQ(target.GetLastScan(), 0);
  EXPECT_EQ(target.GetFirstDriftBin(), 0);
  EXPECT_EQ(target.GetLastDriftBin(), 0);
  EXPECT_EQ(target.GetFirstDriftValue(), 0);
  EXPECT_EQ(target.GetLastDriftValue(), 0);
  EXPECT_EQ(target.GetScanAuxValue(), 0);

  CZRMassSpectrum profile = MakeProfile({100}, {1});
  AddCentroidSpectra(true, 0.01, MakeCentroids({200}, {1}), profile, true);
  EXPECT_FALSE(profile.IsCentroided());
}

TEST(AddCentroidSpectra, WithoutSummingEqualMassesStayApartTargetFirst) {
  CZRMassSpectrum target = MakeCentroids({100, 200}, {1, 2});
  EXPECT_EQ(AddCentroidSpectra(true, 0, MakeCentroids({100}, {7}), target, false), 3);
  ExpectPoints(target, {100, 100, 200}, {1, 7, 2});
}

// Every optional array of a spectrum; entries tell spectrum and point.
void FillArrays(CZRMassSpectrum& spectrum, int base) {
  spectrum.EnablePointFlags(true);
  spectrum.EnablePointValues(true);
  spectrum.EnablePointMarks(true);
  for (int i = 0; i < spectrum.GetCount(); ++i) {
    spectrum.GetPointFlags()[i] = static_cast<std::uint8_t>(base + i);
    spectrum.GetPointValues()[i] = 1000 * base + i;
    spectrum.GetPointMarks()[i] = static_cast<std::uint8_t>(base + 100 + i);
  }
}

std::vector<int> Values(const CZRMassSpectrum& spectrum) {
  const std::int32_t* const values = spectrum.GetPointValues();
  return {values, values + spectrum.GetCount()};
}

TEST(AddCentroidSpectra, OptionalEntriesFollowTheirPointsAndTheStrongerOfEquals) {
  CZRMassSpectrum target = MakeCentroids({100, 200, 300, 400}, {5, 5, 5, 5});
  CZRMassSpectrum source = MakeCentroids({150, 200, 300, 400}, {5, 4, 5, 6});
  FillArrays(target, 1);
  FillArrays(source, 2);
  AddCentroidSpectra(true, 0, source, target, true);
  // 200: target is stronger; 300: equally strong, source's; 400: source is stronger.
  EXPECT_EQ(Values(target), (std::vector<int>{1000, 2000, 1001, 2002, 2003}));
  EXPECT_EQ(target.GetPointFlags()[1], 2);
  EXPECT_EQ(target.GetPointFlags()[2], 2);
  EXPECT_EQ(target.GetPointMarks()[0], 101);
  EXPECT_EQ(target.GetPointMarks()[4], 105);
  EXPECT_FALSE(target.HasPointData());
}

TEST(AddCentroidSpectra, ArraysThatTheTargetLacksAreNotTakenAndOnesThatTheSourceLacksAreZero) {
  CZRMassSpectrum target = MakeCentroids({100}, {5});
  CZRMassSpectrum source = MakeCentroids({150}, {5});
  FillArrays(source, 2);
  target.EnablePointData(true);
  AddCentroidSpectra(true, 0, source, target, true);
  EXPECT_FALSE(target.HasPointFlags());
  EXPECT_FALSE(target.HasPointValues());
  EXPECT_FALSE(target.HasPointMarks());
  ASSERT_TRUE(target.HasPointData());
  EXPECT_EQ(target.GetPointData()[1], nullptr);
}

int released = 0;
void CountRelease(void* datum, void*) {
  if (datum != nullptr) ++released;
}

TEST(AddCentroidSpectra, PointDataAreNeitherReleasedTwiceNorWhileTheyStay) {
  int datum = 0;
  released = 0;
  {
    CZRMassSpectrum target = MakeCentroids({100}, {5});
    target.EnablePointData(true);
    target.GetPointData()[0] = &datum;
    target.SetPointDataRelease(CountRelease, nullptr);
    AddCentroidSpectra(true, 0, MakeCentroids({150}, {5}), target, true);
    ASSERT_EQ(target.GetPointData()[0], &datum);
    EXPECT_EQ(released, 0);
  }
  EXPECT_EQ(released, 0);  // the caller's since the sum
  CZRMassSpectrum target = MakeCentroids({100}, {5});
  target.EnablePointData(true);
  target.GetPointData()[0] = &datum;
  target.SetPointDataRelease(CountRelease, nullptr);
  AddCentroidSpectra(true, 0.01, MakeCentroids({150}, {5}), target, true);
  EXPECT_FALSE(target.HasPointData());
  EXPECT_EQ(released, 1);
}

// Sums of whole numbers are exact: without a width, any order gives the same.
TEST(AddCentroidSpectra, TheOrderOfAdditionDoesNotMatterWithoutAWidth) {
  RandomNumbers random(5);
  for (int round = 0; round < 300; ++round) {
    std::vector<CZRMassSpectrum> lists;
    std::map<double, double> expected;
    for (int k = 0; k < 4; ++k) {
      std::map<double, double> list;
      for (int i = random.Below(20); i > 0; --i) list[100 + 0.25 * random.Below(40)] = 1 + random.Below(1000);
      Doubles masses;
      Doubles intensities;
      for (const auto& [mass, intensity] : list) {
        masses.push_back(mass);
        intensities.push_back(intensity);
        expected[mass] += intensity;
      }
      lists.push_back(MakeCentroids(masses, intensities));
    }
    std::vector<std::size_t> order = {0, 1, 2, 3};
    do {
      CZRMassSpectrum sum;
      for (const std::size_t k : order) AddSpectrum(true, 0, lists[k], sum);
      ASSERT_EQ(static_cast<std::size_t>(sum.GetCount()), expected.size());
      int i = 0;
      for (const auto& [mass, intensity] : expected) {
        ASSERT_EQ(sum.GetMass(i), mass);
        ASSERT_EQ(Intensities(sum)[static_cast<std::size_t>(i)], intensity);
        ++i;
      }
    } while (std::next_permutation(order.begin(), order.end()));
  }
}

// Within a width it does, as docs/spectrum-arithmetic.md tells: what 100.004 takes in first moves it away
// from the other.
TEST(AddCentroidSpectra, TheOrderOfAdditionMattersWithAWidth) {
  const CZRMassSpectrum a = MakeCentroids({100.000}, {10});
  const CZRMassSpectrum b = MakeCentroids({100.004}, {30});
  const CZRMassSpectrum c = MakeCentroids({100.0085}, {20});
  const CZRMassSpectrum abThenC = Sum(true, 0.01, c, Sum(true, 0.01, b, a));
  const CZRMassSpectrum bcThenA = Sum(true, 0.01, a, Sum(true, 0.01, c, b));
  EXPECT_EQ(Intensities(abThenC), (Doubles{40, 20}));
  EXPECT_EQ(Intensities(bcThenA), (Doubles{10, 50}));
}

TEST(AddCentroidSpectra, FailedAllocationLeavesTheTargetAsItWas) {
  CZRMassSpectrum before = MakeCentroids({100, 200}, {1, 2});
  SetAttributes(before);
  FillArrays(before, 3);
  const CZRMassSpectrum source = MakeCentroids({100.001, 300}, {5, 6});
  CZRMassSpectrum target = before;
  const auto check = [&] {
    ExpectPoints(target, Masses(before), Intensities(before));
    ExpectAttributesKept(target);
    EXPECT_EQ(Values(target), Values(before));
  };
  EXPECT_GT(FailEveryAllocation([&] { AddSpectrum(true, 0.01, source, target); }, check), 3);
  EXPECT_EQ(target.GetCount(), 3);
}

TEST(AddProfileSpectra, ASourceOfTwoPointsAddsNothing) {
  const CZRMassSpectrum target = MakeProfile({100, 101, 102, 103, 104}, {1, 2, 3, 2, 1});
  ExpectPoints(Sum(true, 0.01, MakeProfile({100, 101}, {7, 7}), target), Masses(target), Intensities(target));
  const CZRMassSpectrum two = MakeProfile({5, 6}, {1, 1});
  ExpectPoints(Sum(true, 0.01, two, two), {5, 6}, {1, 1});
}

TEST(AddProfileSpectra, ATargetOfTwoPointsTakesTheSourcesPointsAndKeepsItsAttributes) {
  CZRMassSpectrum target = MakeProfile({5, 6}, {1, 1});
  SetAttributes(target);
  target.UpdateStatistics();
  const CZRMassSpectrum source = MakeProfile({100, 101, 102}, {1, 9, 1});
  EXPECT_EQ(AddProfileSpectra(source, target), 3);
  ExpectPoints(target, {100, 101, 102}, {1, 9, 1});
  ExpectAttributesKept(target);
  EXPECT_TRUE(target.AreStatisticsStale());
  EXPECT_EQ(target.GetBasePeakMass(), 101);
}

TEST(AddProfileSpectra, ATargetWithoutPointsTakesTheSourcesPoints) {
  CZRMassSpectrum target;
  target.SetCentroided(false);
  EXPECT_EQ(AddProfileSpectra(MakeProfile({100, 101, 102}, {1, 9, 1}), target), 3);
  ExpectPoints(target, {100, 101, 102}, {1, 9, 1});
}

// Two stretches of one grid of step 1.
TEST(AddProfileSpectra, OneGridMergesPointByPoint) {
  CZRMassSpectrum target = MakeProfile({100, 101, 102, 103, 104, 105}, {0, 1, 2, 3, 1, 1});
  SetAttributes(target);
  const CZRMassSpectrum source = MakeProfile({103, 104, 105, 106, 107, 108}, {1, 1, 4, 5, 1, 0});
  EXPECT_EQ(AddProfileSpectra(source, target), 9);
  ExpectPoints(target, {100, 101, 102, 103, 104, 105, 106, 107, 108}, {0, 1, 2, 4, 2, 5, 5, 1, 0});
  ExpectAttributesKept(target);
  EXPECT_FALSE(target.IsCentroided());
}

TEST(AddProfileSpectra, OneGridAddedInAnyOrderGivesTheSame) {
  RandomNumbers random(8);
  const Doubles axis = kAnalysers[1].Axis(200, 300, 400);
  std::vector<CZRMassSpectrum> scans;
  Doubles expected(axis.size());
  for (int k = 0; k < 3; ++k) {
    Doubles intensities(axis.size());
    for (double& intensity : intensities) intensity = 1 + random.Below(100);
    for (std::size_t i = 0; i < axis.size(); ++i) expected[i] += intensities[i];
    scans.push_back(MakeProfile(axis, intensities));
  }
  std::vector<std::size_t> order = {0, 1, 2};
  do {
    CZRMassSpectrum sum = scans[order[0]];
    AddProfileSpectra(scans[order[1]], sum);
    AddProfileSpectra(scans[order[2]], sum);
    ExpectPoints(sum, axis, expected);
  } while (std::next_permutation(order.begin(), order.end()));
}

// The same law and step, but half a step apart: a merge would double the points, so the source is
// distributed.
TEST(AddProfileSpectra, InterleavedGridsAreResampled) {
  CZRMassSpectrum target = MakeProfile({100, 101, 102, 103, 104, 105, 106}, {0, 1, 2, 3, 1, 1, 0});
  const CZRMassSpectrum source = MakeProfile({100.5, 101.5, 102.5, 103.5, 104.5}, {2, 4, 6, 2, 2});
  EXPECT_EQ(AddProfileSpectra(source, target), 7);
  ExpectPoints(target, {100, 101, 102, 103, 104, 105, 106}, {1, 4, 7, 7, 3, 2, 0});
}

// The first steps alone tell: a source that starts later is merged, half a step apart or not.
TEST(AddProfileSpectra, GridsThatInterleaveOnlyLaterAreMergedDeliberately) {
  CZRMassSpectrum target =
      MakeProfile({100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110}, Doubles(11, 1));
  const CZRMassSpectrum source = MakeProfile({109.5, 110.5, 111.5, 112.5, 113.5}, Doubles(5, 2));
  EXPECT_EQ(AddProfileSpectra(source, target), 16);
  EXPECT_EQ(target.GetMass(10), 109.5);
  EXPECT_EQ(target.GetMass(11), 110);
  EXPECT_EQ(target.GetTotalIntensity(), 21);
}

TEST(AddProfileSpectra, AnotherLawIsResampled) {
  const CZRMassSpectrum target = MakeProfile({100, 101, 102, 103, 104, 105, 106}, {0, 1, 2, 3, 1, 1, 0});
  const CZRMassSpectrum source = MakeProfile({101, 101.25, 101.5, 101.75, 102}, {1, 4, 4, 4, 1});
  // 4 * (3/4 + 1/2 + 1/4) = 6 to each side.
  ExpectPoints(Sum(true, 0.01, source, target), Masses(target), {0, 8, 9, 3, 1, 1, 0});
}

TEST(AddProfileSpectra, ATargetOfThreeOrFourPointsIsNotResampledOnto) {
  const CZRMassSpectrum target = MakeProfile({100, 101, 102, 103}, {1, 2, 2, 1});
  const CZRMassSpectrum source = MakeProfile({100.5, 101.5, 102.5}, {1, 1, 1});
  ExpectPoints(Sum(true, 0.01, source, target), Masses(target), Intensities(target));
}

TEST(AddProfileSpectra, FailedAllocationLeavesTheTargetAsItWas) {
  const Doubles axis = kAnalysers[1].Axis(200, 300, 40);
  CZRMassSpectrum before = MakeProfile(axis, Doubles(axis.size(), 1));
  SetAttributes(before);
  FillArrays(before, 3);
  const CZRMassSpectrum sources[] = {
      MakeProfile(axis, Doubles(axis.size(), 2)),                       // merges
      MakeProfile(kAnalysers[0].Axis(150, 400, 100), Doubles(100, 2)),  // is resampled
      MakeProfile(kAnalysers[1].Axis(200.3, 300.3, 40), Doubles(axis.size(), 1))};
  for (const CZRMassSpectrum& source : sources) {
    CZRMassSpectrum target = before;
    const auto check = [&] {
      ExpectPoints(target, Masses(before), Intensities(before));
      ExpectAttributesKept(target);
      EXPECT_EQ(Values(target), Values(before));
    };
    EXPECT_GT(FailEveryAllocation([&] { AddSpectrum(true, 0.01, source, target); }, check), 3);
    EXPECT_GT(target.GetTotalIntensity(), 41);
  }
  CZRMassSpectrum two = MakeProfile({5, 6}, {1, 1});
  SetAttributes(two);
  const auto check = [&] {
    ExpectPoints(two, {5, 6}, {1, 1});
    ExpectAttributesKept(two);
  };
  FailEveryAllocation([&] { AddSpectrum(true, 0.01, before, two); }, check);
  EXPECT_EQ(two.GetCount(), 40);
}

TEST(AddSpectrum, ANegativeCountAddsNothingAndIsReplaced) {
  CZRMassSpectrum broken = MakeCentroids({100}, {1});
  broken.SetSize(-1);
  ExpectPoints(Sum(true, 0.01, broken, MakeCentroids({200}, {2})), {200}, {2});
  ExpectPoints(Sum(true, 0.01, MakeCentroids({200}, {2}), broken), {200}, {2});
}

TEST(MergePoints, UnsortedAndNaNMassesAreAllKept) {
  const double nan = std::nan("");
  const CZRMassSpectrum merged =
      MergePoints(MakeCentroids({nan, 5, 3}, {1, 2, 3}), MakeCentroids({7, nan, 2}, {4, 5, 6}), true);
  EXPECT_EQ(merged.GetCount(), 6);
  const Doubles intensities = Intensities(merged);
  EXPECT_EQ(std::accumulate(intensities.begin(), intensities.end(), 0.0), 21);
}

}  // namespace
}  // namespace zrml
