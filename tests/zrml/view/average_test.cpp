#include "tools/zrml/view/average.h"

#include <gtest/gtest.h>

#include "tests/zrml/small_acquisition.h"
#include "tests/zrml/view/opened_source.h"

namespace zrml::view {
namespace {

using Doubles = std::vector<double>;

TEST(AverageOfScans, TakesThoseBetweenTwoTimesAndBothEnds) {
  // Function 2: 0.125 min: (50.5, 7), 1.125 min: (50.5, 8)
  const OpenedSource source(test::SmallAcquisition());
  const Average both = AverageScans(*source, 0, 1, {0.125, 1.125}, {}, {});
  EXPECT_EQ(both.mean.added, (std::vector<int>{0, 1}));
  EXPECT_EQ(both.mean.mz, (Doubles{50.5}));
  EXPECT_EQ(both.mean.intensities, (Doubles{7.5}));
  EXPECT_EQ(both.backgroundScans, 0);
}

TEST(AverageOfScans, IsNegativeWhereTheBackgroundHasMore) {
  const OpenedSource source(test::SmallAcquisition());
  const Average later = AverageScans(*source, 0, 1, {1, 2}, source::Range{0, 1}, {});
  EXPECT_EQ(later.mean.added, (std::vector<int>{1}));
  EXPECT_EQ(later.backgroundScans, 1);
  EXPECT_EQ(later.mean.intensities, (Doubles{1}));
  const Average earlier = AverageScans(*source, 0, 1, {0, 1}, source::Range{1, 2}, {});
  EXPECT_EQ(earlier.mean.mz, (Doubles{50.5}));
  EXPECT_EQ(earlier.mean.intensities, (Doubles{-1}));
}

// A function of centroids with one profile.
RawDirectoryBuilder Mixed() {
  const std::vector<WantedPoint> profile = {{100, 3}, {100.25, 9}, {100.5, 3}};
  RawDirectoryBuilder raw;
  raw.functions = {test::SmallFunction(18, 8,
                                       {test::SmallScan(1, CentroidState::kCentroid, {{50, 6}}),
                                        test::SmallScan(2, CentroidState::kProfile, profile),
                                        test::SmallScan(3, CentroidState::kCentroid, {{50, 8}}),
                                        test::SmallScan(4, CentroidState::kCentroid, {{50, 100}})})};
  return raw;
}

TEST(AverageOfScans, LeavesOutThoseOfTheOtherKindAndDividesByTheRest) {
  const OpenedSource source(Mixed());
  const Average average = AverageScans(*source, 0, 0, {1, 3}, {}, {});
  EXPECT_EQ(average.mean.added, (std::vector<int>{0, 2}));
  EXPECT_EQ(average.mean.leftOut, 1);
  EXPECT_EQ(average.mean.intensities, (Doubles{7}));
}

TEST(AverageOfScans, OfNoScanIsAnError) {
  const OpenedSource source(test::SmallAcquisition());
  EXPECT_THROW(AverageScans(*source, 0, 1, {5, 6}, {}, {}), source::Error);
  EXPECT_THROW(AverageScans(*source, 0, 1, {0, 6}, source::Range{5, 6}, {}), source::Error);
}

}  // namespace
}  // namespace zrml::view
