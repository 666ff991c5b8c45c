#include "qc/statistics.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace zrml::qc {
namespace {

using Values = std::vector<double>;

constexpr double kNoTime = std::numeric_limits<double>::quiet_NaN();

SpectrumList ListOf(const std::vector<std::pair<double, double>>& spectra) {
  SpectrumList list;
  for (const auto& [minutes, total] : spectra) list.Add({.minutes = minutes, .total = total});
  list.Sort();
  return list;
}

// Places 0.75, 1.5 and 2.25 of four values.
TEST(Statistics, QuartilesAreBetweenValues) {
  EXPECT_EQ(Quartiles({40, 10, 30, 20}), (Values{17.5, 25, 32.5}));
  EXPECT_EQ(Quartiles({7}), (Values{7, 7, 7}));
}

TEST(Statistics, NumbersThatAreNotFiniteHaveNoQuartiles) {
  EXPECT_EQ(Quartiles({}), Values());
  EXPECT_EQ(Quartiles({1, kNoTime, 3}), Values());
  EXPECT_EQ(QuartileRatios({1, std::numeric_limits<double>::infinity(), 2}), Values());
}

// Of five values at least 1.25, 2.5 and 3.75 must not be above.
TEST(Statistics, QuartilesOfCountsAreValues) {
  EXPECT_EQ(QuartilesOfCounts({9, 1, 7, 3, 5}), (Values{3, 5, 7}));
  EXPECT_EQ(QuartilesOfCounts({1, 2, 3, 4}), (Values{1, 2, 3}));
  EXPECT_EQ(QuartilesOfCounts({6}), (Values{6, 6, 6}));
}

// The quartiles of 1, 4, 8, 16 and 64 are 4, 8 and 16.
TEST(Statistics, RatiosAreLogarithms) {
  EXPECT_EQ(QuartileRatios({64, 1, 4, 16, 8}), (Values{1, 1, 2}));
  EXPECT_EQ(QuartileRatios({}), Values());
  EXPECT_EQ(QuartileRatios({0, 0, 0, 5}), Values()) << "nothing exceeds 0 by a factor";
}

// From 1 min, 10, to 3 min, 30: the middle is 20.
TEST(Statistics, AreaIsThatOfTheLine) {
  const SpectrumList list = ListOf({{1, 10}, {3, 30}});
  EXPECT_EQ(Area(list.All(), {1, 3}), 2 * 20 * 60);
  EXPECT_EQ(Area(list.All(), {2, 3}), 25 * 60);
  EXPECT_EQ(Area(list.All(), {0, 2}), 15 * 60);
  EXPECT_EQ(Area(list.All(), {4, 5}), 0);
  EXPECT_EQ(Area(ListOf({{1, 10}, {1, 30}}).All(), {1, 1}), 0);
}

TEST(Statistics, TotalsAccumulate) {
  EXPECT_EQ(AccumulationTimes(ListOf({{1, 10}, {2, 20}, {3, 5}, {4, 5}, {5, 0}}).All()),
            (Values{1, 2, 2, 4}));
  EXPECT_EQ(AccumulationTimes(ListOf({{1, 0}, {2, 0}}).All()), Values());
  EXPECT_EQ(AccumulationTimes({}), Values());
}

TEST(Statistics, SpectraWithoutATimeComeLast) {
  const SpectrumList list = ListOf({{kNoTime, 1}, {2, 2}, {1, 3}, {kNoTime, 4}, {1, 5}});
  Values totals;
  for (const Spectrum& spectrum : list.All()) totals.push_back(spectrum.total);
  EXPECT_EQ(totals, (Values{3, 5, 2, 1, 4}));
  EXPECT_EQ(list.Timed().size(), 3U);
  EXPECT_EQ(TimeRange(list.Timed())->high, 2);
}

TEST(Statistics, QuartersMeet) {
  const source::Range range = {1, 3};
  EXPECT_EQ(Quarter(range, 0).low, 1);
  EXPECT_EQ(Quarter(range, 0).high, 1.5);
  EXPECT_EQ(Quarter(range, 3).low, 2.5);
  EXPECT_EQ(Quarter(range, 3).high, 3);
}

}  // namespace
}  // namespace zrml::qc
