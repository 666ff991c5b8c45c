#include "tools/zrml/view/peaks.h"

#include <limits>

#include <gtest/gtest.h>

namespace zrml::view {
namespace {

using Positions = std::vector<std::size_t>;

TEST(Peaks, AreTheHighestWithAValleyBetween) {
  const std::vector<double> signal = {1, 50, 10, 100, 20, 30, 1, 40};
  // 30 at 5 is on the slope of 100: the valley before it, 20, is not below half of it.
  EXPECT_EQ(LargestPeaks(signal, 6), (Positions{3, 1, 7}));
}

TEST(Peaks, AreAtMostSoMany) {
  const std::vector<double> signal = {1, 50, 10, 100, 1, 40};
  EXPECT_EQ(LargestPeaks(signal, 2), (Positions{3, 1}));
}

TEST(Peaks, BelowAHundredthOfTheLargestAreNone) {
  const std::vector<double> signal = {0, 1000, 0, 10, 0, 9.9, 0};
  EXPECT_EQ(LargestPeaks(signal, 6), (Positions{1, 3}));
}

TEST(Peaks, GapsAndZerosAreNone) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(LargestPeaks(std::vector<double>{kNaN, 0, kNaN}, 6), Positions());
  EXPECT_EQ(LargestPeaks(std::vector<double>{kNaN, 3, kNaN, 2.9, kNaN}, 6), (Positions{1}));
  EXPECT_EQ(LargestPeaks({}, 6), Positions());
}

TEST(Peaks, AnEvenSignalIsOne) { EXPECT_EQ(LargestPeaks(std::vector<double>{4, 4, 4}, 6), (Positions{0})); }

}  // namespace
}  // namespace zrml::view
