#include "spectrum/centroid_merge.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "spectrum/add_spectrum.h"
#include "tests/spectrum/failing_allocation.h"
#include "tests/spectrum/synthetic_spectra.h"

namespace zrml {
namespace {

PeakMergeContext WidthOf(double width) {
  PeakMergeContext context;
  SetConstantWidth(context.widthLaw, width);
  return context;
}

TEST(PeakWidthAt, WidthOfTheLawCappedAtOneDeliberately) {
  EXPECT_EQ(PeakWidthAt(WidthOf(0.25), 500), 0.25);
  EXPECT_EQ(PeakWidthAt(WidthOf(5), 500), 1.0);
  PeakMergeContext ppm;
  SetPPMWidth(ppm.widthLaw, 10);
  EXPECT_EQ(PeakWidthAt(ppm, 500), 0.005);
  EXPECT_EQ(PeakWidthAt(ppm, 200000), 1.0);
}

TEST(PeakWidthAt, OneWithoutAWidthLaw) { EXPECT_EQ(PeakWidthAt({}, 500), 1.0); }

TEST(PeakWidthAt, HalfAStepOfTheScanLawComesOnTop) {
  PeakMergeContext context = WidthOf(0.25);
  context.scanLaw = std::make_shared<CZRMSScanLaw::ConstantDelta>(0.5);
  EXPECT_EQ(PeakWidthAt(context, 500), 0.5);  // 0.5 * 0.5 + 0.25
  context.scanLaw = std::make_shared<CZRMSScanLaw::ConstantDelta>(4);
  EXPECT_EQ(PeakWidthAt(context, 500), 1.0);
}

// Weighted means are exact when intensities are whole numbers and masses and results are multiples of 1/1024.
TEST(MergePeaks, CasesByHand) {
  const struct {
    const char* name;
    double width;
    Doubles masses;
    Doubles intensities;
    Doubles expectedMasses;
    Doubles expectedIntensities;
  } cases[] = {
      {"the width is both halves", 0.5, {100, 100.25}, {1, 3}, {100.1875}, {4}},
      {"beyond half the width", 0.5, {100, 100.2509765625}, {1, 3}, {100, 100.2509765625}, {1, 3}},
      {"capped: 0.6 apart", 5, {100, 100.625}, {1, 3}, {100, 100.625}, {1, 3}},
      {"capped: 0.4 apart", 5, {100, 100.375}, {1, 3}, {100.28125}, {4}},
      {"both sides", 1, {99.5, 100, 100.5}, {1, 2, 1}, {100}, {4}},
      {"the strongest decides", 1, {99.25, 99.75, 100.25}, {2, 1, 4}, {99.25, 100.15}, {2, 5}},
      // 100 absorbs 100.25 and moves to 100.125, within reach of 100.4375, but 100.25 is in between.
      {"a walk ends at an absorbed point",
       0.75,
       {100, 100.25, 100.4375},
       {8, 8, 4},
       {100.125, 100.4375},
       {16, 4}},
      {"masses of 0 are dropped", 0.5, {0, 100, 200}, {9, 1, 1}, {100, 200}, {1, 1}},
      {"negative masses are dropped", 0.5, {-1, 100, 200}, {9, 1, 1}, {100, 200}, {1, 1}},
      {"zero intensities merge into their neighbour", 0.5, {100, 100.125}, {0, 2}, {100.125}, {2}},
      {"without intensity the mass stays and neighbours go", 0.5, {100, 100.125}, {0, 0}, {100}, {0}},
      {"a sum of 0 keeps the point as it was", 0.5, {100, 100.125}, {2, -2}, {100}, {2}},
      // 32 * 100 - 31 * 100.125 = 96.125. The stronger 98 was visited before and stays; a weaker one, visited
      // after, finds it within its window.
      {"negative intensities move a peak past another: deliberate",
       0.5,
       {98, 100, 100.125},
       {40, 32, -31},
       {98, 96.125},
       {40, 1}},
      {"and the moved peak is above a lower neighbour",
       0.5,
       {98, 100, 100.125},
       {1, 32, -31},
       {97.0625},
       {2}},
      {"zero width merges equal masses alone", 0, {100, 100, 100.5}, {1, 2, 4}, {100, 100.5}, {3, 4}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    CZRMassSpectrum spectrum = MakeCentroids(test.masses, test.intensities);
    EXPECT_EQ(MergePeaks(WidthOf(test.width), 1.0, spectrum), static_cast<int>(test.expectedMasses.size()));
    EXPECT_EQ(Masses(spectrum), test.expectedMasses);
    EXPECT_EQ(Intensities(spectrum), test.expectedIntensities);
    EXPECT_EQ(spectrum.GetCount(), static_cast<int>(test.expectedMasses.size()));
    EXPECT_TRUE(spectrum.AreStatisticsStale());
  }
}

TEST(MergePeaks, TheFactorNarrowsTheWindow) {
  CZRMassSpectrum spectrum = MakeCentroids({100, 100.25}, {1, 3});
  EXPECT_EQ(MergePeaks(WidthOf(0.5), 2.0, spectrum), 2);
  EXPECT_EQ(MergePeaks(WidthOf(0.5), 0.5, spectrum), 1);
}

TEST(MergePeaks, NothingHappensWithoutAFactorOrWithFewerThanTwoPoints) {
  CZRMassSpectrum spectrum = MakeCentroids({100, 100}, {1, 3});
  spectrum.EnablePointFlags(true);
  EXPECT_EQ(MergePeaks(WidthOf(0.5), 0, spectrum), 0);
  EXPECT_EQ(MergePeaks(WidthOf(0.5), -1, spectrum), 0);
  EXPECT_EQ(spectrum.GetCount(), 2);
  EXPECT_TRUE(spectrum.HasPointFlags());
  CZRMassSpectrum one = MakeCentroids({-5}, {1});
  EXPECT_EQ(MergePeaks(WidthOf(0.5), 1, one), 1);
  EXPECT_EQ(one.GetMass(0), -5);
  CZRMassSpectrum none;
  EXPECT_EQ(MergePeaks(WidthOf(0.5), 1, none), 0);
}

TEST(MergePeaks, OptionalArraysAreDroppedButMarksAreCutToSize) {
  CZRMassSpectrum spectrum = MakeCentroids({100, 100.125, 200}, {1, 1, 1});
  spectrum.EnablePointFlags(true);
  spectrum.EnablePointData(true);
  spectrum.EnablePointValues(true);
  spectrum.EnablePointMarks(true);
  for (int i = 0; i < 3; ++i) spectrum.GetPointMarks()[i] = static_cast<std::uint8_t>(i + 1);
  EXPECT_EQ(MergePeaks(WidthOf(0.5), 1, spectrum), 2);
  EXPECT_FALSE(spectrum.HasPointFlags());
  EXPECT_FALSE(spectrum.HasPointData());
  EXPECT_FALSE(spectrum.HasPointValues());
  ASSERT_TRUE(spectrum.HasPointMarks());
  EXPECT_EQ(spectrum.GetPointMarks()[0], 1);
  EXPECT_EQ(spectrum.GetPointMarks()[1], 2);  // not moved along with its point: deliberate
}

TEST(MergePeaks, ReportsWhichPointsWentIntoEachPeak) {
  CZRMassSpectrum spectrum = MakeCentroids({99.75, 100, 100.25, 200, 300, 300.125}, {1, 9, 1, 5, 2, 3});
  std::vector<MergedPeak> merged = {{7, 7, 7}};
  EXPECT_EQ(MergePeaks(WidthOf(0.5), 1, spectrum, &merged), 3);
  ASSERT_EQ(merged.size(), 3U);
  const int expected[3][3] = {{1, 0, 2}, {3, 3, 3}, {5, 4, 5}};
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_EQ(merged[k].peak, expected[k][0]);
    EXPECT_EQ(merged[k].lowest, expected[k][1]);
    EXPECT_EQ(merged[k].highest, expected[k][2]);
  }
}

TEST(MergeCentroidPeaks, PPMWidthsGrowWithTheMass) {
  CZRMassSpectrum spectrum = MakeCentroids({100, 100.25, 1000, 1000.25}, {1, 1, 1, 1});
  // 500 ppm: 0.05 at 100, 0.5 at 1000.
  EXPECT_EQ(MergeCentroidPeaks(false, 500, spectrum), 3);
  EXPECT_EQ(Masses(spectrum), (Doubles{100, 100.25, 1000.125}));
}

// At 1999 ppm half the width is 0.09995 at 100 and 0.10005 at 100.1: the stronger peak, visited first, does
// not reach the weaker one, which then reaches back and absorbs it.
TEST(MergeCentroidPeaks, AWeakerPeakOfHigherMassCanAbsorbAStrongerOne) {
  CZRMassSpectrum spectrum = MakeCentroids({100, 100.1}, {30, 10});
  EXPECT_EQ(MergeCentroidPeaks(false, 1999, spectrum), 1);
  EXPECT_EQ(Intensities(spectrum), (Doubles{40}));
  EXPECT_EQ(spectrum.GetMass(0), (10 * 100.1 + 30 * 100.0) / 40);
}

TEST(MergeCentroidPeaks, ANegativeWidthCountsAsOne) {
  CZRMassSpectrum spectrum = MakeCentroids({100, 100.5, 101.25}, {1, 1, 1});
  EXPECT_EQ(MergeCentroidPeaks(true, -1, spectrum), 2);
  EXPECT_EQ(Masses(spectrum), (Doubles{100.25, 101.25}));
}

TEST(MergePeaks, NaNsNeitherHangNorSpread) {
  const double nan = std::nan("");
  CZRMassSpectrum spectrum = MakeCentroids({100, nan, 100.125, 300}, {nan, 5, nan, 7});
  EXPECT_EQ(MergePeaks(WidthOf(0.5), 1, spectrum), 3);  // NaN is not a mass
  EXPECT_EQ(Masses(spectrum)[2], 300);
  EXPECT_EQ(Intensities(spectrum)[2], 7);
  // A neighbour with a NaN intensity makes no sum: it is removed, and the peak is unchanged.
  spectrum = MakeCentroids({100, 100.125}, {nan, 5});
  EXPECT_EQ(MergePeaks(WidthOf(0.5), 1, spectrum), 1);
  EXPECT_EQ(Masses(spectrum), (Doubles{100.125}));
  EXPECT_EQ(Intensities(spectrum), (Doubles{5}));
}

// The same rules in another way: the next peak is searched among all that remain, and a window is a scan over
// the whole list for the stretch of points without an absorbed point.
struct BrutePeak {
  double mass;
  double intensity;
  double firstIntensity;
  bool visited = false;
};

std::vector<BrutePeak> BruteForce(const Doubles& masses, const Doubles& intensities, bool absolute,
                                  double width) {
  std::vector<BrutePeak> peaks;
  for (std::size_t i = 0; i < masses.size(); ++i)
    peaks.push_back({masses[i], intensities[i], intensities[i]});
  for (std::size_t round = 0; round < peaks.size(); ++round) {
    int best = -1;
    for (int i = 0; i < static_cast<int>(peaks.size()); ++i) {
      const auto at = static_cast<std::size_t>(i);
      if (peaks[at].visited) continue;
      if (best < 0 || peaks[at].firstIntensity > peaks[static_cast<std::size_t>(best)].firstIntensity)
        best = i;
    }
    BrutePeak& peak = peaks[static_cast<std::size_t>(best)];
    peak.visited = true;
    if (peak.mass <= 0) continue;
    const double half = std::min(absolute ? width : peak.mass * width / 1000000, 1.0) * 0.5;
    const double low = peak.mass - half;
    const double high = peak.mass + half;
    double moment = peak.intensity * peak.mass;
    double sum = peak.intensity;
    for (const int direction : {-1, 1}) {
      for (int i = best + direction; i >= 0 && i < static_cast<int>(peaks.size()); i += direction) {
        BrutePeak& other = peaks[static_cast<std::size_t>(i)];
        // When masses no longer ascend only the far bound counts.
        if (other.mass <= 0 || (direction < 0 ? other.mass < low : other.mass > high)) break;
        moment += other.intensity * other.mass;
        sum += other.intensity;
        other.mass = 0;
      }
    }
    if (sum <= 0) continue;
    peak.mass = moment / sum;
    peak.intensity = sum;
  }
  std::erase_if(peaks, [](const BrutePeak& peak) { return peak.mass <= 0; });
  return peaks;
}

TEST(MergeCentroidPeaks, AgreesWithBruteForceOnRandomLists) {
  RandomNumbers random(2026);
  std::size_t merged = 0;
  for (int round = 0; round < 5000; ++round) {
    const int count = 2 + random.Below(60);
    Doubles masses;
    Doubles intensities;
    double mass = 50 + 1000 * UnitNumber(random);
    for (int i = 0; i < count; ++i) {
      mass += random.Below(4) == 0 ? 2 * UnitNumber(random) : 0.02 * UnitNumber(random);
      masses.push_back(mass);
      // Either few values, so many are equal, or all different.
      intensities.push_back(round % 2 == 0 ? random.Below(5) : 1 + 1e6 * UnitNumber(random));
    }
    const bool absolute = random.Below(2) == 0;
    const double width = absolute ? 0.1 * UnitNumber(random) : 200 * UnitNumber(random);
    const std::vector<BrutePeak> expected = BruteForce(masses, intensities, absolute, width);
    CZRMassSpectrum spectrum = MakeCentroids(masses, intensities);
    ASSERT_EQ(MergeCentroidPeaks(absolute, width, spectrum), static_cast<int>(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
      ASSERT_EQ(Masses(spectrum)[i], expected[i].mass) << "round " << round;
      ASSERT_EQ(Intensities(spectrum)[i], expected[i].intensity) << "round " << round;
    }
    const double before = std::accumulate(intensities.begin(), intensities.end(), 0.0);
    ASSERT_NEAR(spectrum.GetTotalIntensity(), before, 1e-12 * before);
    ASSERT_TRUE(std::is_sorted(spectrum.MassVector().begin(), spectrum.MassVector().end()));
    merged += masses.size() - expected.size();
  }
  EXPECT_GT(merged, 10000U);
}

// Intensities from -3 to 4, most of them above 0; masses from below 0 on. Some are in both lists. Sums of
// whole intensities are exact.
TEST(AddCentroidSpectra, AgreesWithBruteForceOnTwoListsOfAnySigns) {
  RandomNumbers random(415);
  int withoutSum = 0;
  int descending = 0;
  for (int round = 0; round < 5000; ++round) {
    std::map<double, double> lists[2];
    std::map<double, double> both;
    double mass = -2;
    for (int i = 2 + random.Below(60); i > 0; --i) {
      mass += random.Below(4) == 0 ? 2 * UnitNumber(random) : 0.02 * UnitNumber(random);
      const int where = random.Below(4);  // both lists when it is above 1
      for (int k = 0; k < 2; ++k) {
        if (where < 2 && where != k) continue;
        const double intensity = std::max(random.Below(12) - 7, -3);
        lists[k][mass] = intensity;
        both[mass] += intensity;
      }
    }
    Doubles masses[3];
    Doubles intensities[3];
    for (int k = 0; k < 3; ++k) {
      for (const auto& [at, intensity] : k < 2 ? lists[k] : both) {
        masses[k].push_back(at);
        intensities[k].push_back(intensity);
      }
    }
    const bool absolute = random.Below(2) == 0;
    const double width = absolute ? 0.1 * UnitNumber(random) : 20000 * UnitNumber(random);
    std::vector<BrutePeak> expected = BruteForce(masses[2], intensities[2], absolute, width);
    CZRMassSpectrum target = MakeCentroids(masses[0], intensities[0]);
    AddCentroidSpectra(absolute, width, MakeCentroids(masses[1], intensities[1]), target, true);
    if (both.size() < 2) continue;  // stays unchanged
    ASSERT_EQ(target.GetCount(), static_cast<int>(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
      ASSERT_EQ(Masses(target)[i], expected[i].mass) << "round " << round;
      ASSERT_EQ(Intensities(target)[i], expected[i].intensity) << "round " << round;
      withoutSum += expected[i].intensity <= 0 ? 1 : 0;
    }
    descending += std::is_sorted(target.MassVector().begin(), target.MassVector().end()) ? 0 : 1;
  }
  EXPECT_GT(withoutSum, 10000);
  EXPECT_GT(descending, 100);
}

TEST(MergePeaks, FailedAllocationLeavesTheSpectrumAsItWas) {
  const CZRMassSpectrum before = MakeCentroids({100, 100.125, 200}, {1, 2, 1});
  CZRMassSpectrum spectrum = before;
  const PeakMergeContext constant = WidthOf(0.5);
  PeakMergeContext inProportion;
  SetPPMWidth(inProportion.widthLaw, 5000);
  for (const PeakMergeContext& context : {constant, inProportion}) {
    spectrum = before;
    std::vector<MergedPeak> merged;
    const auto attempt = [&] { MergePeaks(context, 1, spectrum, &merged); };
    const auto check = [&] {
      EXPECT_EQ(Masses(spectrum), Masses(before));
      EXPECT_EQ(Intensities(spectrum), Intensities(before));
    };
    EXPECT_GE(FailEveryAllocation(attempt, check), 2);
    EXPECT_EQ(spectrum.GetCount(), 2);
  }
}

}  // namespace
}  // namespace zrml
