#include <algorithm>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "spectrum/mass_spectrum.h"
#include "tests/spectrum/random_numbers.h"

namespace zrml {
namespace {

using Doubles = HostVector<double>;

CZRMassSpectrum MakeSpectrum(const Doubles& masses, const Doubles& intensities) {
  CZRMassSpectrum spectrum;
  spectrum.AssignMasses(masses);
  spectrum.AssignIntensities(intensities);
  spectrum.SetSize(static_cast<int>(masses.size()));
  return spectrum;
}

/// Flags of SortSpectrum.
struct Merge {
  bool sum = false;
  bool max = false;
  bool drop = false;
};

constexpr Merge kSortOnly = {};
constexpr Merge kSum = {true, false, false};
constexpr Merge kMax = {false, true, false};
constexpr Merge kSumAndMax = {true, true, false};
constexpr Merge kDrop = {false, false, true};
constexpr Merge kDropSum = {true, false, true};
constexpr Merge kDropMax = {false, true, true};

TEST(SortSpectrum, SortsMergesAndDropsAsOrderAndFlagsSay) {
  const struct {
    const char* name;
    int order;
    Merge merge;
    Doubles masses;
    Doubles intensities;
    Doubles expectedMasses;
    Doubles expectedIntensities;
  } cases[] = {
      {"masses ascending", kMassAscending, kSortOnly, {5, 1, 3}, {7, 9, 8}, {1, 3, 5}, {9, 8, 7}},
      {"masses descending", kMassDescending, kSortOnly, {5, 1, 3}, {7, 9, 8}, {5, 3, 1}, {7, 8, 9}},
      {"intensities ascending", kIntensityAscending, kSortOnly, {5, 1, 3}, {7, 9, 8}, {5, 3, 1}, {7, 8, 9}},
      {"intensities descending", kIntensityDescending, kSortOnly, {5, 1, 3}, {7, 9, 8}, {1, 3, 5}, {9, 8, 7}},
      {"sorting alone keeps duplicates and zeroes",
       kMassAscending,
       kSortOnly,
       {5, 0, 5},
       {1, 2, 1},
       {0, 5, 5},
       {2, 1, 1}},

      {"sum of duplicates", kMassAscending, kSum, {5, 7, 5, 5}, {1, 2, 4, 8}, {5, 7}, {13, 2}},
      {"largest of duplicates", kMassAscending, kMax, {5, 7, 5, 5}, {1, 2, 8, 4}, {5, 7}, {8, 2}},
      {"the sum when both are requested", kMassAscending, kSumAndMax, {5, 5}, {1, 2}, {5}, {3}},
      {"masses a hair apart are not duplicates",
       kMassAscending,
       kMax,
       {5, 0x1.4000000000001p2},
       {1, 2},
       {5, 0x1.4000000000001p2},
       {1, 2}},
      {"merging keeps zeroes, merged too",
       kMassAscending,
       kMax,
       {0, 5, 0, -1},
       {1, 2, 3, 4},
       {-1, 0, 5},
       {4, 3, 2}},
      {"descending duplicates merge", kMassDescending, kSum, {5, 7, 5}, {1, 2, 4}, {7, 5}, {2, 5}},
      {"by intensity only neighbours merge",
       kIntensityAscending,
       kSum,
       {5, 7, 5, 5},
       {1, 2, 3, 4},
       {5, 7, 5},
       {1, 2, 7}},
      {"one point", kMassAscending, kMax, {5}, {1}, {5}, {1}},

      {"drop and largest", kMassAscending, kDropMax, {0, 0, 5, 5, 7}, {1, 2, 3, 4, 5}, {5, 7}, {4, 5}},
      {"drop and sum", kMassAscending, kDropSum, {0, 0, 5, 5, 7}, {1, 2, 3, 4, 5}, {5, 7}, {7, 5}},
      {"negative masses are dropped", kMassAscending, kDropMax, {7, -3, 0}, {1, 2, 3}, {7}, {1}},
      {"nothing to drop", kMassAscending, kDropMax, {7, 5}, {1, 2}, {5, 7}, {2, 1}},
      {"nothing but points to drop leaves one", kMassAscending, kDropMax, {0, -1, 0}, {1, 2, 3}, {-1}, {2}},
      {"nothing but one point to drop", kMassAscending, kDropSum, {0}, {3}, {0}, {3}},
      {"only leading points are dropped",
       kMassDescending,
       kDropMax,
       {0, 7, 5},
       {1, 2, 3},
       {7, 5, 0},
       {2, 3, 1}},
      {"by intensity only leading points are dropped",
       kIntensityAscending,
       kDropMax,
       {0, 7, 0, 5},
       {1, 2, 3, 4},
       {7, 0, 5},
       {2, 3, 4}},

      // Deliberate: dropping without merging leaves the first point of the order, positive or not.
      {"drop without merging leaves one point", kMassAscending, kDrop, {5, 0, 7}, {1, 2, 3}, {0}, {2}},
      {"drop without merging leaves one positive point", kMassAscending, kDrop, {9, 7}, {1, 2}, {7}, {2}},
      {"drop without merging by intensity", kIntensityDescending, kDrop, {9, 7}, {1, 2}, {7}, {2}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    CZRMassSpectrum s = MakeSpectrum(test.masses, test.intensities);
    EXPECT_TRUE(SortSpectrum(test.order, test.merge.sum, test.merge.max, test.merge.drop, s));
    EXPECT_EQ(s.GetCount(), static_cast<int>(test.expectedMasses.size()));
    EXPECT_EQ(s.MassVector(), test.expectedMasses);
    EXPECT_EQ(s.IntensityVector(), test.expectedIntensities);
  }
}

// Each combination of the flags, on points in order, on the same points out of order, and on sorted points
// some of which are equal or not positive.
TEST(SortSpectrum, GivesTheSameOfPointsThatWereInOrder) {
  struct Points {
    Doubles masses;
    Doubles intensities;
  };
  const Points distinct = {{1, 3, 5, 7}, {4, 9, 2, 6}};
  const Points shuffled = {{5, 7, 1, 3}, {2, 6, 4, 9}};
  const Points mixed = {{-1, 0, 5, 5, 7}, {8, 4, 2, 6, 3}};
  const Points oneLeft = {{1}, {4}};  // deliberate, see above
  const struct {
    const char* name;
    Merge merge;
    Points fromDistinct;
    Points fromMixed;
  } cases[] = {
      {"none", kSortOnly, distinct, mixed},
      {"sum", kSum, distinct, {{-1, 0, 5, 7}, {8, 4, 8, 3}}},
      {"max", kMax, distinct, {{-1, 0, 5, 7}, {8, 4, 6, 3}}},
      {"sum and max", kSumAndMax, distinct, {{-1, 0, 5, 7}, {8, 4, 8, 3}}},
      {"drop", kDrop, oneLeft, {{-1}, {8}}},
      {"drop and sum", kDropSum, distinct, {{5, 7}, {8, 3}}},
      {"drop and max", kDropMax, distinct, {{5, 7}, {6, 3}}},
      {"all", {true, true, true}, distinct, {{5, 7}, {8, 3}}},
  };
  const auto expect = [](const Points& points, const Merge& merge, const Points& expected) {
    CZRMassSpectrum s = MakeSpectrum(points.masses, points.intensities);
    s.UpdateStatistics();
    EXPECT_TRUE(SortSpectrum(kMassAscending, merge.sum, merge.max, merge.drop, s));
    EXPECT_EQ(s.GetCount(), static_cast<int>(expected.masses.size()));
    EXPECT_EQ(s.MassVector(), expected.masses);
    EXPECT_EQ(s.IntensityVector(), expected.intensities);
    EXPECT_TRUE(s.AreStatisticsStale());
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    expect(distinct, test.merge, test.fromDistinct);
    expect(shuffled, test.merge, test.fromDistinct);
    expect(mixed, test.merge, test.fromMixed);
    expect({{7, 5, 0, 5, -1}, {3, 2, 4, 6, 8}}, test.merge, test.fromMixed);
    // Ascending, without equal masses.
    expect({{-1, 0}, {8, 4}}, test.merge, test.merge.drop ? Points{{-1}, {8}} : Points{{-1, 0}, {8, 4}});
    const bool merges = test.merge.sum || test.merge.max;
    const Points positive = merges ? Points{{5, 7}, {2, 3}} : Points{{0}, {4}};
    expect({{0, 5, 7}, {4, 2, 3}}, test.merge, test.merge.drop ? positive : Points{{0, 5, 7}, {4, 2, 3}});
  }
}

TEST(SortSpectrum, AnUnknownOrderFailsAndMovesNothing) {
  for (const int order : {-1, 4, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    CZRMassSpectrum s = MakeSpectrum({5, 1}, {7, 9});
    EXPECT_FALSE(SortSpectrum(order, true, true, true, s)) << order;
    EXPECT_EQ(s.MassVector(), (Doubles{5, 1})) << order;
    EXPECT_EQ(s.IntensityVector(), (Doubles{7, 9})) << order;
  }
}

TEST(SortSpectrum, AnEmptySpectrumIsSortedWhateverTheOrder) {
  for (const int order : {0, 3, 4, -1}) {
    CZRMassSpectrum s;
    EXPECT_TRUE(SortSpectrum(order, true, true, true, s)) << order;
    EXPECT_EQ(s.GetCount(), 0);
  }
}

TEST(SortSpectrum, MissingMassesOrIntensitiesFail) {
  CZRMassSpectrum masses = MakeSpectrum({5, 1}, {7, 9});
  masses.AssignMasses({});
  EXPECT_FALSE(SortSpectrum(kMassAscending, false, false, false, masses));
  CZRMassSpectrum intensities = MakeSpectrum({5, 1}, {7, 9});
  intensities.AssignIntensities({});
  EXPECT_FALSE(SortSpectrum(kMassAscending, false, false, false, intensities));
}

TEST(SortSpectrum, ArraysOfOtherLengthsAreSortedWithinTheirBounds) {
  for (const std::size_t masses : {1U, 2U, 3U, 5U}) {
    for (const std::size_t intensities : {1U, 2U, 3U, 5U}) {
      CZRMassSpectrum s = MakeSpectrum({3, 2, 1}, {1, 2, 3});
      s.EnablePointFlags(true);
      s.AssignMasses(Doubles(masses, 4.0));
      s.AssignIntensities(Doubles(intensities, 4.0));
      SortSpectrum(kIntensityDescending, false, true, true, s);
      EXPECT_TRUE(s.SetSize(3));
      EXPECT_EQ(s.MassVector().size(), 3U);
      EXPECT_EQ(s.IntensityVector().size(), 3U);
    }
  }
}

CZRMassSpectrum WithAllArrays(const Doubles& masses, const Doubles& intensities) {
  CZRMassSpectrum s = MakeSpectrum(masses, intensities);
  s.Resize(s.GetCount(), true, true, true, true);
  for (int i = 0; i < s.GetCount(); ++i) {
    s.GetPointFlags()[i] = static_cast<std::uint8_t>('a' + i);
    s.GetPointData()[i] = s.GetPointFlags() + i;
    s.GetPointValues()[i] = -1000 * i;
    s.GetPointMarks()[i] = static_cast<std::uint8_t>('A' + i);
  }
  return s;
}

/// The points' flags; every other optional array must agree with them.
std::string Flags(CZRMassSpectrum& s, const std::uint8_t* originalFlags, const std::string& original) {
  std::string flags;
  for (int i = 0; i < s.GetCount(); ++i) {
    const auto flag = static_cast<char>(s.GetPointFlags()[i]);
    const auto at = static_cast<int>(original.find(flag));
    EXPECT_EQ(s.GetPointData()[i], originalFlags + at);
    EXPECT_EQ(s.GetPointValues()[i], -1000 * at);
    EXPECT_EQ(s.GetPointMarks()[i], 'A' + at);
    flags += flag;
  }
  return flags;
}

TEST(SortSpectrum, OptionalArraysMoveWithTheirPoints) {
  const struct {
    int order;
    std::string flags;
  } cases[] = {{kMassAscending, "bdca"},
               {kMassDescending, "acdb"},
               {kIntensityAscending, "cbad"},
               {kIntensityDescending, "dabc"}};
  for (const auto& expected : cases) {
    CZRMassSpectrum s = WithAllArrays({9, 1, 5, 3}, {7, 6, 2, 8});
    const std::uint8_t* const originalFlags = s.GetPointFlags();
    EXPECT_TRUE(SortSpectrum(expected.order, false, false, false, s));
    EXPECT_EQ(Flags(s, originalFlags, "abcd"), expected.flags);
  }
}

TEST(SortSpectrum, MergingDeliberatelyLeavesTheOptionalArraysWhereSortingPutThem) {
  // Sorted: masses 0 5 5 7, flags d b c a. Two points remain, with the flags of the first two places.
  CZRMassSpectrum s = WithAllArrays({7, 5, 5, 0}, {1, 2, 3, 4});
  const std::uint8_t* const originalFlags = s.GetPointFlags();
  EXPECT_TRUE(SortSpectrum(kMassAscending, false, true, true, s));
  EXPECT_EQ(s.MassVector(), (Doubles{5, 7}));
  EXPECT_EQ(Flags(s, originalFlags, "abcd"), "db");
}

TEST(SortSpectrum, MakesTheStatisticsStaleWhenPointsGo) {
  CZRMassSpectrum s = MakeSpectrum({5, 5}, {1, 2});
  s.UpdateStatistics();
  EXPECT_TRUE(SortSpectrum(kMassAscending, true, false, false, s));
  EXPECT_EQ(s.GetBasePeakIntensity(), 3.0);
}

TEST(SortSpectrum, NanMassesStandLastAndAreNeverMergedOrDropped) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  CZRMassSpectrum s = MakeSpectrum({nan, 5, nan, 0}, {1, 2, 3, 4});
  EXPECT_TRUE(SortByMass(true, s));
  EXPECT_EQ(s.GetCount(), 3);
  EXPECT_EQ(s.GetMass(0), 5.0);
  EXPECT_EQ(s.IntensityVector(), (Doubles{2, 1, 3}));
}

TEST(SortByMass, SortsAndKeepsTheLargestOfEqualMasses) {
  CZRMassSpectrum dropped = MakeSpectrum({0, 0, 5, 5, 7}, {1, 2, 3, 4, 5});
  EXPECT_TRUE(SortByMass(true, dropped));
  EXPECT_EQ(dropped.MassVector(), (Doubles{5, 7}));
  EXPECT_EQ(dropped.IntensityVector(), (Doubles{4, 5}));

  CZRMassSpectrum kept = MakeSpectrum({7, 0, 5, 0, 5}, {5, 1, 4, 2, 3});
  EXPECT_TRUE(SortByMass(false, kept));
  EXPECT_EQ(kept.MassVector(), (Doubles{0, 5, 7}));
  EXPECT_EQ(kept.IntensityVector(), (Doubles{2, 4, 5}));
}

TEST(SortByMass, RandomPointsAgreeWithAMapOfTheLargest) {
  RandomNumbers random(11);
  for (int round = 0; round < 300; ++round) {
    const bool drop = random.Below(2) == 0;
    Doubles masses;
    Doubles intensities;
    std::map<double, double> largest;
    for (int i = random.Below(40); i >= 0; --i) {
      const double mass = random.Below(20) - 4.0;
      const double intensity = random.Below(1000);
      masses.push_back(mass);
      intensities.push_back(intensity);
      if (drop && mass <= 0) continue;
      const auto place = largest.emplace(mass, intensity).first;
      place->second = std::max(place->second, intensity);
    }
    CZRMassSpectrum s = MakeSpectrum(masses, intensities);
    EXPECT_TRUE(SortByMass(drop, s));
    if (largest.empty()) {  // if all points are dropped, one remains
      EXPECT_EQ(s.GetCount(), 1);
      continue;
    }
    ASSERT_EQ(s.GetCount(), static_cast<int>(largest.size()));
    int i = 0;
    for (const auto& [mass, intensity] : largest) {
      EXPECT_EQ(s.GetMass(i), mass);
      EXPECT_EQ(s.IntensityVector()[static_cast<std::size_t>(i)], intensity);
      ++i;
    }
  }
}

}  // namespace
}  // namespace zrml
