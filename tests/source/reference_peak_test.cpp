#include "source/reference_peak.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace zrml::source {
namespace {

using Values = std::vector<double>;

constexpr Range kWindow = {499.5, 500.5};

// What is outside does not count, however high it is.
TEST(LargestPeakTest, ACentroidIsItsPoint) {
  const ReferencePeak peak =
      LargestPeak(true, Values{499.25, 499.75, 500.0005, 500.75}, Values{90, 2, 5, 80}, kWindow);
  EXPECT_EQ(peak.mz, 500.0005);
  EXPECT_EQ(peak.intensity, 5);
  EXPECT_EQ(LargestPeak(true, Values{499.5}, Values{1}, kWindow).mz, 499.5) << "the ends are inside";
  EXPECT_EQ(LargestPeak(true, Values{500.5}, Values{1}, kWindow).mz, 500.5);
}

TEST(LargestPeakTest, NoPeakIsNaN) {
  for (const bool isCentroided : {true, false}) {
    const ReferencePeak none = LargestPeak(isCentroided, Values{}, Values{}, kWindow);
    EXPECT_TRUE(std::isnan(none.mz));
    EXPECT_EQ(none.intensity, 0);
  }
  EXPECT_TRUE(std::isnan(LargestPeak(true, Values{499.25, 500.75}, Values{90, 80}, kWindow).mz));
  EXPECT_TRUE(std::isnan(LargestPeak(true, Values{500}, Values{0}, kWindow).mz));
}

// Samples of a Gaussian around 500.001, none of them there; a lower one stands beside it.
TEST(LargestPeakTest, AProfileHasCentroids) {
  Values mz;
  Values intensities;
  for (int i = -30; i <= 60; ++i) {
    mz.push_back(500 + i * 0.004);
    const auto gaussian = [&](double height, double center) {
      return height * std::exp(-std::pow((mz.back() - center) / 0.01, 2));
    };
    intensities.push_back(gaussian(100000, 500.001) + gaussian(50000, 500.14));
  }
  const ReferencePeak peak = LargestPeak(false, mz, intensities, kWindow);
  EXPECT_NEAR(peak.mz, 500.001, 5e-6);
  EXPECT_NEAR(peak.intensity, 100000, 100);
}

}  // namespace
}  // namespace zrml::source
