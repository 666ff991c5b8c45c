#include "spectrum/add_spectrum.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "spectrum/point_merge.h"
#include "tests/spectrum/failing_allocation.h"
#include "tests/spectrum/synthetic_spectra.h"

namespace zrml {
namespace {

// Statistics from before the change of points would differ.
void ExpectCurrentStatistics(CZRMassSpectrum& spectrum) {
  const Doubles intensities = Intensities(spectrum);
  EXPECT_EQ(spectrum.GetTotalIntensity(), std::accumulate(intensities.begin(), intensities.end(), 0.0));
  const auto largest = std::max_element(intensities.begin(), intensities.end());
  EXPECT_EQ(spectrum.GetBasePeakIntensity(), largest == intensities.end() ? 0 : *largest);
}

CZRMassSpectrum Sum(bool absolute, double tolerance, const CZRMassSpectrum& source, CZRMassSpectrum target) {
  target.UpdateStatistics();
  const int count = AddSpectrum(absolute, tolerance, source, target);
  EXPECT_EQ(count, target.GetCount());
  ExpectCurrentStatistics(target);
  return target;
}

void ExpectPoints(const CZRMassSpectrum& spectrum, const Doubles& masses, const Doubles& intensities) {
  EXPECT_EQ(Masses(spectrum), masses);
  EXPECT_EQ(Intensities(spectrum), intensities);
  EXPECT_EQ(spectrum.GetCount(), static_cast<int>(masses.size()));
}

// Sets everything that a sum may keep or reset.
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

// Every optional array of a spectrum; entries identify spectrum and point.
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

// Data of one spectrum, to be destroyed after it; each counts its releases.
class Ledger {
 public:
  explicit Ledger(std::size_t count) : releases_(count) {}

  void GiveTo(CZRMassSpectrum& spectrum, bool owned) {
    spectrum.EnablePointData(true);
    for (int i = 0; i < spectrum.GetCount(); ++i)
      spectrum.GetPointData()[i] = At(static_cast<std::size_t>(i));
    if (owned) spectrum.SetPointDataRelease(Release, nullptr);
  }
  void* At(std::size_t i) { return &releases_[i]; }
  const std::vector<int>& Releases() const { return releases_; }

 private:
  static void Release(void* datum, void*) {
    if (datum != nullptr) ++*static_cast<int*>(datum);
  }

  std::vector<int> releases_;
};

std::vector<void*> Data(const CZRMassSpectrum& spectrum) {
  void* const* const data = spectrum.GetPointData();
  return {data, data + spectrum.GetCount()};
}

TEST(AddSpectrum, EveryDatumIsReleasedOnceByItsOwner) {
  const Doubles six(6, 1);
  const struct {
    const char* name;
    CZRMassSpectrum source;
    CZRMassSpectrum target;
    double tolerance;
  } cases[] = {
      {"one grid", MakeProfile({103, 104, 105, 106, 107, 108}, Doubles(6, 2)),
       MakeProfile({100, 101, 102, 103, 104, 105}, six), 0.01},
      {"two grids", MakeProfile({100.5, 101.5, 102.5, 103.5, 104.5, 110.5}, six),
       MakeProfile({100, 101, 102, 103, 104, 105}, six), 0.01},
      {"a short profile takes all", MakeProfile({100, 101, 102, 103, 104, 105}, six),
       MakeProfile({5, 6}, {1, 1}), 0.01},
      {"too short a source", MakeProfile({5, 6}, {1, 1}), MakeProfile({100, 101, 102}, {1, 1, 1}), 0.01},
      {"equal masses", MakeCentroids({200, 300}, {9, 1}), MakeCentroids({100, 200}, {1, 1}), 0},
      {"merged peaks", MakeCentroids({200, 300}, {9, 1}), MakeCentroids({100, 200.001}, {1, 1}), 0.01},
      {"no peaks to merge", CZRMassSpectrum(), MakeCentroids({100}, {1}), 0.01},
      {"mixed kinds", MakeCentroids({200, 300}, {9, 1}), MakeProfile({100, 101, 102}, {1, 1, 1}), 0.01},
  };
  for (const auto& test : cases) {
    for (const bool sourceOwns : {false, true}) {
      for (const bool targetOwns : {false, true}) {
        SCOPED_TRACE(testing::Message() << test.name << ' ' << sourceOwns << targetOwns);
        Ledger sources(static_cast<std::size_t>(test.source.GetCount()));
        Ledger targets(static_cast<std::size_t>(test.target.GetCount()));
        {
          CZRMassSpectrum source = test.source;
          CZRMassSpectrum target = test.target;
          sources.GiveTo(source, sourceOwns);
          targets.GiveTo(target, targetOwns);
          AddSpectrum(true, test.tolerance, source, target);
          EXPECT_EQ(sources.Releases(), std::vector<int>(sources.Releases().size(), 0));
        }
        EXPECT_EQ(sources.Releases(), std::vector<int>(sources.Releases().size(), sourceOwns ? 1 : 0));
        EXPECT_EQ(targets.Releases(), std::vector<int>(targets.Releases().size(), targetOwns ? 1 : 0));
      }
    }
  }
}

TEST(AddSpectrum, ATargetThatOwnsItsDataKeepsThemAndTakesNone) {
  for (const bool centroided : {false, true}) {
    SCOPED_TRACE(centroided);
    Ledger sources(4);
    Ledger targets(4);
    CZRMassSpectrum source = MakeSpectrum(centroided, {101, 102, 103, 104}, {1, 9, 1, 1});
    CZRMassSpectrum target = MakeSpectrum(centroided, {100, 101, 102, 103}, {1, 1, 1, 1});
    sources.GiveTo(source, true);
    targets.GiveTo(target, true);
    EXPECT_EQ(AddSpectrum(true, 0, source, target), 5);
    EXPECT_EQ(Data(target),
              (std::vector<void*>{targets.At(0), targets.At(1), targets.At(2), targets.At(3), nullptr}));
    EXPECT_EQ(targets.Releases(), std::vector<int>(4, 0));
  }
}

TEST(AddSpectrum, DataThatTargetDoesNotOwnFollowTheStrongerPoint) {
  for (const bool centroided : {false, true}) {
    SCOPED_TRACE(centroided);
    Ledger sources(4);
    Ledger targets(4);
    CZRMassSpectrum source = MakeSpectrum(centroided, {101, 102, 103, 104}, {1, 9, 1, 1});
    CZRMassSpectrum target = MakeSpectrum(centroided, {100, 101, 102, 103}, {1, 2, 2, 1});
    sources.GiveTo(source, true);
    targets.GiveTo(target, false);
    EXPECT_EQ(AddSpectrum(true, 0, source, target), 5);
    EXPECT_EQ(Data(target), (std::vector<void*>{targets.At(0), targets.At(1), sources.At(1), sources.At(2),
                                                sources.At(3)}));
    EXPECT_FALSE(target.OwnsPointData());
  }
}

TEST(AddSpectrum, ASpectrumAddedToItselfKeepsItsData) {
  for (const bool centroided : {false, true}) {
    Ledger ledger(3);
    {
      CZRMassSpectrum spectrum = MakeSpectrum(centroided, {100, 101, 102}, {1, 2, 1});
      ledger.GiveTo(spectrum, true);
      EXPECT_EQ(AddSpectrum(true, 0, spectrum, spectrum), 3);
      EXPECT_EQ(Data(spectrum), (std::vector<void*>{ledger.At(0), ledger.At(1), ledger.At(2)}));
      EXPECT_EQ(ledger.Releases(), std::vector<int>(3, 0));
    }
    EXPECT_EQ(ledger.Releases(), std::vector<int>(3, 1));
  }
}

// The last point has lost its intensity and takes no part in a sum.
TEST(AddSpectrum, DataOfPointsThatOnlyOneArrayHasAreReleased) {
  for (const bool centroided : {false, true}) {
    Ledger ledger(4);
    CZRMassSpectrum target = MakeSpectrum(centroided, {100, 101, 102, 103}, {1, 2, 1, 1});
    ledger.GiveTo(target, true);
    target.IntensityVector().pop_back();
    AddSpectrum(true, 0, MakeSpectrum(centroided, {104, 105, 106}, {1, 2, 1}), target);
    EXPECT_EQ(target.GetCount(), 6);
    EXPECT_EQ(ledger.Releases(), (std::vector<int>{0, 0, 0, 1}));
  }
}

TEST(AddCentroidSpectra, TheReleaseFunctionStaysAsLongAsThereAreData) {
  Ledger ledger(2);
  CZRMassSpectrum target = MakeCentroids({100, 200}, {5, 5});
  ledger.GiveTo(target, true);
  AddCentroidSpectra(true, 0, MakeCentroids({150}, {5}), target, true);
  EXPECT_TRUE(target.OwnsPointData());
  AddCentroidSpectra(true, 0.01, MakeCentroids({150}, {5}), target, true);
  EXPECT_FALSE(target.HasPointData());
  EXPECT_FALSE(target.OwnsPointData());
  EXPECT_EQ(ledger.Releases(), std::vector<int>(2, 1));
}

TEST(AddSpectrum, FailedAllocationReleasesNothing) {
  for (const bool centroided : {false, true}) {
    Ledger ledger(4);
    CZRMassSpectrum target = MakeSpectrum(centroided, {100, 101, 102, 103}, {1, 1, 1, 1});
    ledger.GiveTo(target, true);
    const CZRMassSpectrum source = MakeSpectrum(centroided, {102, 103, 104, 105}, {1, 1, 1, 1});
    const auto check = [&] {
      EXPECT_EQ(ledger.Releases(), std::vector<int>(4, 0));
      EXPECT_TRUE(target.OwnsPointData());
      EXPECT_EQ(Data(target), (std::vector<void*>{ledger.At(0), ledger.At(1), ledger.At(2), ledger.At(3)}));
    };
    // On Windows spectra are on the host's heap, which cannot be made to fail: fewer failures, or none.
    constexpr int kLeast = std::is_same_v<HostVector<double>, std::vector<double>> ? 4 : 0;
    EXPECT_GE(FailEveryAllocation([&] { AddSpectrum(true, 0.01, source, target); }, check), kLeast);
  }
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

// Within a width it does, as docs/spectrum-arithmetic.md explains: the first peak that 100.004 absorbs moves
// it away from the other.
TEST(AddCentroidSpectra, TheOrderOfAdditionMattersWithAWidth) {
  const CZRMassSpectrum a = MakeCentroids({100.000}, {10});
  const CZRMassSpectrum b = MakeCentroids({100.004}, {30});
  const CZRMassSpectrum c = MakeCentroids({100.0085}, {20});
  const CZRMassSpectrum abThenC = Sum(true, 0.01, c, Sum(true, 0.01, b, a));
  const CZRMassSpectrum bcThenA = Sum(true, 0.01, a, Sum(true, 0.01, c, b));
  EXPECT_EQ(Intensities(abThenC), (Doubles{40, 20}));
  EXPECT_EQ(Intensities(bcThenA), (Doubles{10, 50}));
}

// Adds with more and more memory until it is enough; target has SetAttributes and FillArrays.
void ExpectUnchangedByFailures(const CZRMassSpectrum& source, CZRMassSpectrum& target) {
  const CZRMassSpectrum before = target;
  const auto check = [&] {
    ExpectPoints(target, Masses(before), Intensities(before));
    ExpectAttributesKept(target);
    EXPECT_EQ(Values(target), Values(before));
  };
  // On Windows spectra are on the host's heap, which cannot be made to fail: fewer failures, or none.
  constexpr int kLeast = std::is_same_v<HostVector<double>, std::vector<double>> ? 4 : 0;
  EXPECT_GE(FailEveryAllocation([&] { AddSpectrum(true, 0.01, source, target); }, check), kLeast);
}

TEST(AddCentroidSpectra, FailedAllocationLeavesTheTargetAsItWas) {
  CZRMassSpectrum target = MakeCentroids({100, 200}, {1, 2});
  SetAttributes(target);
  FillArrays(target, 3);
  const CZRMassSpectrum source = MakeCentroids({100.001, 300}, {5, 6});
  ExpectUnchangedByFailures(source, target);
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
  target.UpdateStatistics();
  const CZRMassSpectrum source = MakeProfile({103, 104, 105, 106, 107, 108}, {1, 1, 4, 5, 1, 0});
  EXPECT_EQ(AddProfileSpectra(source, target), 9);
  ExpectCurrentStatistics(target);
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

// From `low` on in steps of 1.
Doubles Steps(double low, std::size_t count) {
  Doubles masses(count);
  std::iota(masses.begin(), masses.end(), low);
  return masses;
}

// The combined points have a law of the target's step: only the source's own law shows the difference.
TEST(AddProfileSpectra, ASourceOfAnotherLawIsResampledThoughTheSumHasTheTargets) {
  const CZRMassSpectrum target = MakeProfile(Steps(100, 20), Doubles(20, 1));
  Doubles expected(20, 1);
  expected[5] = expected[6] = 8;  // 1 + 1 + 4 * (3/4 + 1/2 + 1/4)
  ExpectPoints(Sum(true, 0.01, MakeProfile({105, 105.25, 105.5, 105.75, 106}, {1, 4, 4, 4, 1}), target),
               Masses(target), expected);
}

// Both have steps of 1 with an offset, together they have steps of 1/2: only the law of the sum shows it.
TEST(AddProfileSpectra, ASumOfAnotherLawIsResampled) {
  const CZRMassSpectrum target = MakeProfile(Steps(100, 11), Doubles(11, 1));
  ExpectPoints(Sum(true, 0.01, MakeProfile(Steps(101.5, 9), Doubles(9, 2)), target), Masses(target),
               {1, 2, 3, 3, 3, 3, 3, 3, 3, 3, 2});
}

// A few points of the source among many of the target do not change the law of the sum: only the first steps
// show it.
TEST(AddProfileSpectra, FirstStepsThatAreBothWiderThanTheSumsShowInterleavedGrids) {
  const CZRMassSpectrum target = MakeProfile(Steps(100, 21), Doubles(21, 1));
  Doubles expected(21, 1);
  expected[0] = expected[3] = 2;
  expected[1] = expected[2] = 3;
  ExpectPoints(Sum(true, 0.01, MakeProfile({100.5, 101.5, 102.5}, {2, 2, 2}), target), Masses(target),
               expected);
}

// One of the two lacks the second point of their grid. The negative intensity shows that points were merged:
// a resampler would leave it out.
TEST(AddProfileSpectra, AFirstStepThatIsWiderInOneOfTheTwoIsAGap) {
  const CZRMassSpectrum whole = MakeProfile(Steps(100, 7), {1, -1, 1, 1, 1, 1, 1});
  const CZRMassSpectrum lacking =
      MakeProfile({100, 102, 103, 104, 105, 106, 107, 108, 109, 110}, Doubles(10, 1));
  const Doubles expected = {2, -1, 2, 2, 2, 2, 2, 1, 1, 1, 1};
  ExpectPoints(Sum(true, 0.01, whole, lacking), Steps(100, 11), expected);
  ExpectPoints(Sum(true, 0.01, lacking, whole), Steps(100, 11), expected);
}

// The same law and step, but half a step apart: together they have steps of 1/2, so the source is
// distributed.
TEST(AddProfileSpectra, InterleavedGridsAreResampled) {
  CZRMassSpectrum target = MakeProfile({100, 101, 102, 103, 104, 105, 106}, {0, 1, 2, 3, 1, 1, 0});
  const CZRMassSpectrum source = MakeProfile({100.5, 101.5, 102.5, 103.5, 104.5}, {2, 4, 6, 2, 2});
  EXPECT_EQ(AddProfileSpectra(source, target), 7);
  ExpectPoints(target, {100, 101, 102, 103, 104, 105, 106}, {1, 4, 7, 7, 3, 2, 0});
}

// Only the first steps decide: a source that starts later is merged, half a step apart or not.
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
    ExpectUnchangedByFailures(source, target);
    EXPECT_GT(target.GetTotalIntensity(), 41);
  }
  CZRMassSpectrum two = MakeProfile({5, 6}, {1, 1});
  SetAttributes(two);
  FillArrays(two, 3);
  ExpectUnchangedByFailures(before, two);
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
