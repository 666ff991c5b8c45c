#include "qc/lock_mass.h"

#include <cmath>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

namespace zrml::qc {
namespace {

using Values = std::vector<double>;

// 0.0005 of 500 is 1 ppm. What is further away than 0.5 does not count, however high it is.
TEST(LockMass, ACentroidIsItsMass) {
  const std::optional<double> error =
      LockMassError(Values{499.25, 499.75, 500.0005, 500.75}, Values{90, 2, 5, 80}, true, 500);
  ASSERT_TRUE(error);
  EXPECT_NEAR(*error, 1, 1e-9);
  EXPECT_EQ(LockMassError(Values{499.5}, Values{1}, true, 500), -1000);
}

TEST(LockMass, NoPeakNoError) {
  EXPECT_FALSE(LockMassError(Values{499.25, 500.75}, Values{90, 80}, true, 500));
  EXPECT_FALSE(LockMassError(Values{500}, Values{0}, true, 500));
  EXPECT_FALSE(LockMassError(Values{}, Values{}, true, 500));
  EXPECT_FALSE(LockMassError(Values{}, Values{}, false, 500));
}

// Samples of a Gaussian around 500.001, 2 ppm off, none of them there; a lower one stands beside it.
TEST(LockMass, AProfileHasCentroids) {
  Values mz;
  Values intensities;
  for (int i = -30; i <= 60; ++i) {
    mz.push_back(500 + i * 0.004);
    const auto gaussian = [&](double height, double center) {
      return height * std::exp(-std::pow((mz.back() - center) / 0.01, 2));
    };
    intensities.push_back(gaussian(100000, 500.001) + gaussian(50000, 500.14));
  }
  const std::optional<double> error = LockMassError(mz, intensities, false, 500);
  ASSERT_TRUE(error);
  EXPECT_NEAR(*error, 2, 0.01);
}

}  // namespace
}  // namespace zrml::qc
