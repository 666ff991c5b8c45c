// Steps of a grid from profiles that lack most of its points, by hand.
#include "source/grid_steps.h"

#include <vector>

#include <gtest/gtest.h>

namespace zrml::source {
namespace {

GridSteps StepsOf(const std::vector<std::vector<double>>& profiles) {
  GridSteps steps;
  for (const auto& profile : profiles) steps.Learn(profile);
  steps.Settle();
  return steps;
}

TEST(GridSteps, TheShortestAroundAMassCounts) {
  const GridSteps steps = StepsOf({{100, 101, 102}, {100, 100.25, 100.5, 102}});
  EXPECT_EQ(steps.At(100), 0.25);
  EXPECT_EQ(steps.At(102), 0.25);
  EXPECT_EQ(steps.At(300), 0);
}

// From 100 to 200 a step grows to its fourfold at most: 4 may be the step at 200, and 5 is a gap.
TEST(GridSteps, StepsGrowByTheSquareAtMost) {
  EXPECT_EQ(StepsOf({{100, 101}, {200, 203.5}}).At(200), 3.5);
  EXPECT_EQ(StepsOf({{100, 101}, {200, 205}}).At(200), 1);
}

// Steps do not become shorter: 8 at 100 is a gap when the step at 200 is 4, which may be 1 at 100.
TEST(GridSteps, StepsNeverShrink) {
  EXPECT_EQ(StepsOf({{100, 108}, {200, 204}}).At(200), 4);
  EXPECT_NEAR(StepsOf({{100, 108}, {200, 204}}).At(100), 1, 1e-12);
  EXPECT_EQ(StepsOf({{2, 4}, {3, 6}, {4, 6}}).At(3), 2);
}

TEST(GridSteps, EvenStepsAreThoseOfPeaks) {
  EXPECT_EQ(CountEvenSteps(std::vector{1.0, 2.0, 3.0, 4.25, 8.0, 10.0}), 2u);
  EXPECT_EQ(CountEvenSteps(std::vector{1.0, 2.0}), 0u);
}

}  // namespace
}  // namespace zrml::source
