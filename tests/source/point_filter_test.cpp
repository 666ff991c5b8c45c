#include "source/point_filter.h"

#include <limits>

#include <gtest/gtest.h>

namespace zrml::source {
namespace {

using Doubles = std::vector<double>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Points {
  Doubles mz;
  Doubles intensities;
};

Points Filtered(const PointFilter& filter, Points points) {
  Filter(filter, points.mz, points.intensities);
  return points;
}

void ExpectPoints(const PointFilter& filter, const Points& points, const Points& expected) {
  const Points left = Filtered(filter, points);
  EXPECT_EQ(left.mz, expected.mz);
  EXPECT_EQ(left.intensities, expected.intensities);
}

const Points kPoints = {{100, 200, 300, 400, 500}, {5, 0, 7, 5, -1}};

TEST(PointFilter, EachChoosesAlone) {
  EXPECT_TRUE(PointFilter().TakesAll());
  ExpectPoints({}, kPoints, kPoints);
  ExpectPoints({.mz = Range{200, 400}}, kPoints, {{200, 300, 400}, {0, 7, 5}});
  ExpectPoints({.dropsZeros = true}, kPoints, {{100, 300, 400, 500}, {5, 7, 5, -1}});
  ExpectPoints({.minIntensity = 5}, kPoints, {{100, 300, 400}, {5, 7, 5}});
  ExpectPoints({.top = 3}, kPoints, {{100, 300, 400}, {5, 7, 5}});
}

TEST(PointFilter, OfEqualIntensitiesTheFirstStays) {
  ExpectPoints({.top = 2}, kPoints, {{100, 300}, {5, 7}});
  ExpectPoints({.top = 9}, kPoints, kPoints);
  ExpectPoints({.top = 5}, kPoints, kPoints);
  ExpectPoints({.top = 4}, kPoints, {{100, 200, 300, 400}, {5, 0, 7, 5}});
}

// The most intense one is outside of the range; of those in it the top one is counted.
TEST(PointFilter, TheRangeComesBeforeTheTop) {
  ExpectPoints({.mz = Range{350, 500}, .top = 1}, kPoints, {{400}, {5}});
  ExpectPoints({.mz = Range{150, 250}, .minIntensity = 1}, kPoints, {{}, {}});
}

TEST(PointFilter, NotANumberIsLeast) {
  const Points points = {{100, kNan, 300, 400}, {1, 9, kNan, 2}};
  ExpectPoints({.mz = Range{0, 1000}, .minIntensity = 0}, points, {{100, 400}, {1, 2}});
  const Points left = Filtered({.top = 3}, points);
  EXPECT_EQ(left.intensities, (Doubles{1, 9, 2}));
}

TEST(PointFilter, OtherValuesGoWithTheirPoints) {
  Points points = kPoints;
  Doubles bins = {1, 2, 3, 4, 5};
  Filter({.dropsZeros = true, .top = 2}, points.mz, points.intensities, &bins);
  EXPECT_EQ(bins, (Doubles{1, 3}));
}

// docs/centroids.md has this one by hand: 100.02 + 0.01/6, and 2 to the power of 4 + 1/24.
TEST(TakeCentroids, ReplacesAProfile) {
  Points points = {{100, 100.01, 100.02, 100.03, 100.04}, {0, 4, 16, 8, 0}};
  const Points profile = points;
  TakeCentroids({}, points.mz, points.intensities);
  ASSERT_EQ(points.mz.size(), 1U);
  EXPECT_NEAR(points.mz[0], 100.021667, 1e-6);
  EXPECT_NEAR(points.intensities[0], 16.469, 1e-3);
  points = profile;
  TakeCentroids({.isArea = true}, points.mz, points.intensities);
  EXPECT_EQ(points.intensities, (Doubles{28}));
}

TEST(IsProfile, PeaksChosenIonsAndAbsorbanceAreNone) {
  Function function;
  Scan scan;
  EXPECT_TRUE(IsProfile(function, scan));
  scan.representation = Representation::kCentroid;
  EXPECT_FALSE(IsProfile(function, scan));
  scan.representation = Representation::kUnknown;
  EXPECT_FALSE(IsProfile(function, scan));
  scan.representation = Representation::kProfile;
  function.monitoring = Monitoring::kIons;
  EXPECT_FALSE(IsProfile(function, scan));
  function.monitoring = Monitoring::kNone;
  function.kind = FunctionKind::kAbsorbance;
  EXPECT_FALSE(IsProfile(function, scan));
}

}  // namespace
}  // namespace zrml::source
