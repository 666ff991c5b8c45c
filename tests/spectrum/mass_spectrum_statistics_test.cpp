// Statistics and ranges of a mass spectrum.
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "tests/spectrum/mass_spectrum_fixture.h"

namespace zrml {
namespace {

// --- Statistics

struct Statistics {
  double total;
  double baseMass;
  double baseIntensity;
  int baseIndex;
  double min;
};

/// Reads the cached values without updating them.
void ExpectStatistics(CZRMassSpectrum& s, const Statistics& expected) {
  EXPECT_EQ(ContractMember<double>(s, 200), expected.total);
  EXPECT_EQ(ContractMember<double>(s, 208), expected.baseMass);
  EXPECT_EQ(ContractMember<double>(s, 216), expected.baseIntensity);
  EXPECT_EQ(ContractMember<std::int32_t>(s, 232), expected.baseIndex);
  EXPECT_EQ(ContractMember<double>(s, 224), expected.min);
}

TEST(MassSpectrumStatistics, DescribeTheIntensities) {
  const struct {
    const char* name;
    HostDoubles intensities;  // of masses 100, 101, ...
    Statistics expected;
  } cases[] = {
      {"one point", {5}, {5, 100, 5, 0, 5}},
      {"several", {2, 8, 1, 4}, {15, 101, 8, 1, 1}},
      {"the first of equal highest", {2, 8, 8, 1}, {19, 101, 8, 1, 1}},
      {"all equal", {3, 3, 3}, {9, 100, 3, 0, 3}},
      {"all zero", {0, 0}, {0, 100, 0, 0, 0}},
      {"all negative", {-2, -1, -3}, {-6, 101, -1, 1, -3}},
      {"infinite", {1, kInfinity, 2}, {kInfinity, 101, kInfinity, 1, 1}},
      // No value is above the start of the search, the lowest finite number.
      {"lowest", {-kLargest}, {-kLargest, 0, -kLargest, 0, -kLargest}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    HostDoubles masses;
    for (std::size_t i = 0; i < test.intensities.size(); ++i)
      masses.push_back(100.0 + static_cast<double>(i));
    CZRMassSpectrum s = MakeSpectrum(masses, test.intensities);
    s.UpdateStatistics();
    ExpectStatistics(s, test.expected);
    EXPECT_FALSE(s.AreStatisticsStale());
  }
}

TEST(MassSpectrumStatistics, NanIsNeitherHighestNorLowest) {
  CZRMassSpectrum s = MakeSpectrum({1, 2, 3, 4}, {kNan, 7, kNan, 5});
  EXPECT_EQ(s.GetBasePeakIntensity(), 7.0);
  EXPECT_EQ(s.GetBasePeakMass(), 2.0);
  EXPECT_EQ(s.GetBasePeakIndex(), 1);
  EXPECT_EQ(s.GetMinIntensity(), 5.0);
  EXPECT_TRUE(std::isnan(s.GetTotalIntensity()));
}

TEST(MassSpectrumStatistics, OfNanAloneAreTheStartsOfTheSearch) {
  CZRMassSpectrum s = MakeSpectrum({1, 2}, {kNan, kNan});
  EXPECT_EQ(s.GetBasePeakIntensity(), -kLargest);
  EXPECT_EQ(s.GetMinIntensity(), kLargest);
  EXPECT_EQ(s.GetBasePeakMass(), 0.0);
  EXPECT_EQ(s.GetBasePeakIndex(), 0);
}

TEST(MassSpectrumStatistics, OfAnEmptySpectrumAreZeroAndCurrent) {
  CZRMassSpectrum s = MakeSpectrum({1, 2}, {3, 4});
  s.UpdateStatistics();
  s.Clear();
  s.UpdateStatistics();
  ExpectStatistics(s, {0, 0, 0, 0, 0});
  EXPECT_FALSE(s.AreStatisticsStale());
}

TEST(MassSpectrumStatistics, StayCachedUntilInvalidated) {
  CZRMassSpectrum s = MakeSpectrum({1, 2}, {3, 4});
  EXPECT_EQ(s.GetBasePeakIntensity(), 4.0);
  s.GetIntensities()[0] = 10;  // bypasses the spectrum
  EXPECT_EQ(s.GetBasePeakIntensity(), 4.0);
  EXPECT_EQ(s.GetMinIntensity(), 3.0);
  s.InvalidateStatistics();
  EXPECT_EQ(s.GetBasePeakIntensity(), 10.0);
  EXPECT_EQ(s.GetMinIntensity(), 4.0);
}

TEST(MassSpectrumStatistics, CountOnlyThePointsWithinTheCount) {
  CZRMassSpectrum longer = MakeSpectrum({1, 2}, {3, 4});
  longer.AssignMasses({1, 2, 3});
  longer.AssignIntensities({3, 4, 99});
  longer.UpdateStatistics();
  ExpectStatistics(longer, {7, 2, 4, 1, 3});

  CZRMassSpectrum shorter = MakeSpectrum({1, 2, 3}, {3, 4, 99});
  shorter.AssignMasses({1, 2});
  shorter.AssignIntensities({3, 4});
  shorter.UpdateStatistics();
  ExpectStatistics(shorter, {7, 2, 4, 1, 3});
}

TEST(MassSpectrumStatistics, OfAnEmptiedArrayAreZero) {
  CZRMassSpectrum masses = MakeSpectrum({1, 2}, {3, 4});
  masses.AssignMasses({});
  CZRMassSpectrum intensities = MakeSpectrum({1, 2}, {3, 4});
  intensities.AssignIntensities({});
  for (CZRMassSpectrum* s : {&masses, &intensities}) {
    s->UpdateStatistics();
    ExpectStatistics(*s, {0, 0, 0, 0, 0});
  }
}

// --- Ranges

TEST(MassSpectrumRange, MassRangeIsTheFirstAndLastMass) {
  double low = 7;
  double high = 8;
  EXPECT_FALSE(CZRMassSpectrum().GetMassRange(low, high));
  EXPECT_EQ(low, 7.0);
  EXPECT_EQ(high, 8.0);
  EXPECT_TRUE(MakeSpectrum({5}, {1}).GetMassRange(low, high));
  EXPECT_EQ(low, 5.0);
  EXPECT_EQ(high, 5.0);
  EXPECT_TRUE(MakeSpectrum({9, 1, 4}, {1, 1, 1}).GetMassRange(low, high));
  EXPECT_EQ(low, 9.0);
  EXPECT_EQ(high, 4.0);
}

struct RangeCase {
  const char* name;
  double low;
  double high;
  bool found;
  int first;
  int last;
};

// Of masses 10, 20, 20, 30, 40.
const RangeCase kRanges[] = {
    {"all", 0, 99, true, 0, 4},
    {"all finite numbers", -kLargest, kLargest, true, 0, 4},
    {"all numbers", -kInfinity, kInfinity, true, 0, 4},
    {"exactly the edges", 10, 40, true, 0, 4},
    {"just inside the edges", 10.001, 39.999, true, 1, 3},
    {"one mass", 30, 30, true, 3, 3},
    {"first mass", 10, 10, true, 0, 0},
    {"last mass", 40, 40, true, 4, 4},
    {"below first mass to it", 0, 10, true, 0, 0},
    {"last mass to above", 40, 99, true, 4, 4},
    {"equal masses", 20, 20, true, 1, 2},
    {"around one", 25, 35, true, 3, 3},
    {"from between to the end", 25, 99, true, 3, 4},
    {"from the start to between", 0, 25, true, 0, 2},
    {"between two adjacent masses", 31, 39, false, 0, 0},
    {"a point between two masses", 35, 35, false, 0, 0},
    {"below", 0, 9.999, false, 0, 0},
    {"above", 40.001, 99, false, 0, 0},
    {"reversed", 35, 15, false, 0, 0},
    {"reversed beyond both ends", 99, 0, false, 0, 0},
};

TEST(MassSpectrumRange, IndexRangeHoldsTheMassesFromLowToHigh) {
  const CZRMassSpectrum s = MakeSpectrum({10, 20, 20, 30, 40}, {1, 2, 3, 4, 5});
  for (const RangeCase& range : kRanges) {
    int first = -7;
    int last = -8;
    ASSERT_EQ(s.FindIndexRange(range.low, range.high, first, last), range.found) << range.name;
    if (!range.found) continue;
    EXPECT_EQ(first, range.first) << range.name;
    EXPECT_EQ(last, range.last) << range.name;
  }
}

TEST(MassSpectrumRange, LargestAndSummedIntensityAreOfTheIndexRange) {
  const HostDoubles intensities = {8, 2, 64, 4, 16};
  const CZRMassSpectrum s = MakeSpectrum({10, 20, 20, 30, 40}, intensities);
  for (const RangeCase& range : kRanges) {
    double max = 0;
    double sum = 0;
    for (int i = range.first; range.found && i <= range.last; ++i) {
      const double intensity = intensities[static_cast<std::size_t>(i)];
      max = std::max(max, intensity);
      sum += intensity;
    }
    EXPECT_EQ(s.GetMaxIntensityInRange(range.low, range.high), max) << range.name;
    EXPECT_EQ(s.GetIntensitySumInRange(range.low, range.high), sum) << range.name;
  }
}

TEST(MassSpectrumRange, OfAnEmptySpectrumIsNothing) {
  const CZRMassSpectrum s;
  int first = 0;
  int last = 0;
  EXPECT_FALSE(s.FindIndexRange(-kLargest, kLargest, first, last));
  EXPECT_EQ(s.GetMaxIntensityInRange(-kLargest, kLargest), 0.0);
  EXPECT_EQ(s.GetIntensitySumInRange(-kLargest, kLargest), 0.0);
}

TEST(MassSpectrumRange, LargestIntensityMayBeNegativeAndIsZeroWithoutAny) {
  EXPECT_EQ(MakeSpectrum({1, 2}, {-5, -3}).GetMaxIntensityInRange(1, 2), -3.0);
  EXPECT_EQ(MakeSpectrum({1, 2}, {kNan, -3}).GetMaxIntensityInRange(1, 2), -3.0);
  EXPECT_EQ(MakeSpectrum({1, 2}, {kNan, kNan}).GetMaxIntensityInRange(1, 2), 0.0);
  EXPECT_EQ(MakeSpectrum({1}, {-kLargest}).GetMaxIntensityInRange(1, 2), 0.0);
  EXPECT_TRUE(std::isnan(MakeSpectrum({1, 2}, {kNan, -3}).GetIntensitySumInRange(1, 2)));
}

TEST(MassSpectrumRange, QueriesDoNotDependOnTheStatistics) {
  CZRMassSpectrum s = MakeSpectrum({1, 2}, {3, 4});
  EXPECT_EQ(s.GetMaxIntensityInRange(1, 1), 3.0);
  EXPECT_TRUE(s.AreStatisticsStale());
}

/// A returned index range is within the points.
void ExpectIndexesWithin(const CZRMassSpectrum& s, double low, double high, int points) {
  int first = 0;
  int last = 0;
  if (!s.FindIndexRange(low, high, first, last)) return;
  EXPECT_LE(0, first);
  EXPECT_LE(first, last);
  EXPECT_LT(last, points);
}

TEST(MassSpectrumRange, NanAndUnsortedMassesGiveIndexesWithinThePoints) {
  const HostDoubles limits = {-kInfinity, 0, 15, 20, 35, 99, kInfinity, kNan};
  const HostDoubles masses[] = {{10, 20, 30},   {30, 20, 10},   {20, 10, 30},       {kNan, 20, 30},
                                {10, kNan, 30}, {10, 20, kNan}, {kNan, kNan, kNan}, {30, 30, 10}};
  for (const HostDoubles& values : masses) {
    const CZRMassSpectrum s = MakeSpectrum(values, {1, 1, 1});
    for (const double low : limits) {
      for (const double high : limits) {
        SCOPED_TRACE(testing::Message() << low << " to " << high << " of " << testing::PrintToString(values));
        ExpectIndexesWithin(s, low, high, 3);
        EXPECT_LE(s.GetMaxIntensityInRange(low, high), 1.0);
        EXPECT_LE(s.GetIntensitySumInRange(low, high), 3.0);
      }
    }
  }
}

TEST(MassSpectrumRange, ReplacedArraysAreReadWithinTheirLengthAndTheCount) {
  for (const std::size_t masses : {0U, 1U, 2U, 3U, 6U}) {
    for (const std::size_t intensities : {0U, 1U, 2U, 3U, 6U}) {
      SCOPED_TRACE(testing::Message() << masses << " masses, " << intensities << " intensities");
      CZRMassSpectrum s = MakeSpectrum({1, 2, 3}, {1, 1, 1});
      HostDoubles ascending;
      while (ascending.size() < masses) ascending.push_back(1.0 + static_cast<double>(ascending.size()));
      s.AssignMasses(ascending);
      s.AssignIntensities(HostDoubles(intensities, 1.0));
      const auto points = std::min({masses, intensities, std::size_t{3}});

      double low = 0;
      double high = 0;
      if (s.GetMassRange(low, high)) {
        EXPECT_GE(masses, 1U);
        EXPECT_LE(high, 3.0);
      }
      ExpectIndexesWithin(s, 0, 99, 3);
      EXPECT_EQ(s.GetIntensitySumInRange(0, 99), static_cast<double>(points));
      EXPECT_EQ(s.GetMaxIntensityInRange(0, 99), points > 0 ? 1.0 : 0.0);
      for (const int i : {0, 1, 2, 3, 5}) {
        EXPECT_EQ(s.GetMass(i), i < 3 && static_cast<std::size_t>(i) < masses ? i + 1.0 : 0.0);
        EXPECT_EQ(s.SetMass(i, i + 1.0), i < 3 && static_cast<std::size_t>(i) < masses);
        EXPECT_EQ(s.SetIntensity(i, 1.0), i < 3 && static_cast<std::size_t>(i) < intensities);
      }
    }
  }
}

}  // namespace
}  // namespace zrml
