#include "tools/zrml/view/average.h"

#include <gtest/gtest.h>

#include "tests/zrml/small_acquisition.h"
#include "tests/zrml/view/opened_source.h"

namespace zrml::view {
namespace {

using Doubles = std::vector<double>;

TEST(Average, OfAProfileLosesWhatTheBackgroundHasThere) {
  const Curve profile = {{10, 11, 12, 13}, {5, 5, 5, 5}, {}};
  const Curve background = {{10, 12}, {2, 8}, {}};  // 5 at 11, nothing beyond 12
  const Curve difference = Difference(profile, background, false);
  EXPECT_EQ(difference.x, (Doubles{10, 11, 12, 13}));
  EXPECT_EQ(difference.y, (Doubles{3, 0, 0, 5}));
}

TEST(Average, CentroidsWithinHalfAPeakWidthOfOneAreItsBackground) {
  const Curve centroids = {{500, 600}, {10, 3}, {}};
  // 20 ppm of 500 are 0.01: half of that to either side. 500.006 is beyond it.
  const Curve background = {{499.996, 500.004, 500.006, 600}, {1, 2, 50, 4}, {}};
  const Curve difference = Difference(centroids, background, true);
  EXPECT_EQ(difference.x, (Doubles{500}));
  EXPECT_EQ(difference.y, (Doubles{7}));
}

TEST(AverageOfScans, TakesThoseBetweenTwoTimesAndBothEnds) {
  // Function 2: 0.125 min: (50.5, 7), 1.125 min: (50.5, 8)
  const OpenedSource source(test::SmallAcquisition());
  const Average both = AverageScans(*source, 0, 1, {0.125, 1.125}, {}, {});
  EXPECT_EQ(both.scans, 2);
  EXPECT_EQ(both.curve.x, (Doubles{50.5}));
  EXPECT_EQ(both.curve.y, (Doubles{7.5}));
  const Average later = AverageScans(*source, 0, 1, {1, 2}, source::Range{0, 1}, {});
  EXPECT_EQ(later.first, 1);
  EXPECT_EQ(later.scans, 1);
  EXPECT_EQ(later.backgroundScans, 1);
  EXPECT_EQ(later.curve.y, (Doubles{1}));
}

TEST(AverageOfScans, OfNoScanIsAnError) {
  const OpenedSource source(test::SmallAcquisition());
  EXPECT_THROW(AverageScans(*source, 0, 1, {5, 6}, {}, {}), source::Error);
}

}  // namespace
}  // namespace zrml::view
