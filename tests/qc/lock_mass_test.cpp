#include "qc/lock_mass.h"

#include <cmath>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

namespace zrml::qc {
namespace {

using Values = std::vector<double>;

// 0.0005 of 500 is 1 ppm. What is outside 100 ppm, 0.05, does not count, however high it is.
TEST(LockMass, ACentroidIsItsMass) {
  const std::optional<double> error =
      LockMassError(Values{499.9, 499.99, 500.0005, 500.06}, Values{90, 2, 5, 80}, true, 500);
  ASSERT_TRUE(error);
  EXPECT_NEAR(*error, 1, 1e-9);
}

TEST(LockMass, NoPeakNoError) {
  EXPECT_FALSE(LockMassError(Values{499.9, 500.06}, Values{90, 80}, true, 500));
  EXPECT_FALSE(LockMassError(Values{500}, Values{0}, true, 500));
  EXPECT_FALSE(LockMassError(Values{}, Values{}, true, 500));
}

// Samples of a Gaussian around 500.001, 2 ppm off, none of them there.
TEST(LockMass, AProfileHasAnApex) {
  Values mz;
  Values intensities;
  for (int i = -10; i <= 10; ++i) {
    mz.push_back(500 + i * 0.004);
    intensities.push_back(1000 * std::exp(-std::pow((mz.back() - 500.001) / 0.01, 2)));
  }
  const std::optional<double> error = LockMassError(mz, intensities, false, 500);
  ASSERT_TRUE(error);
  EXPECT_NEAR(*error, 2, 1e-6);
}

// A neighbour behind a valley does not pull.
TEST(LockMass, OnlyTheHighestPeak) {
  const Values mz = {499.996, 500, 500.004, 500.008, 500.012, 500.016};
  const Values intensities = {60, 100, 60, 55, 58, 90};
  const std::optional<double> error = LockMassError(mz, intensities, false, 500);
  ASSERT_TRUE(error);
  const std::optional<double> alone =
      LockMassError(Values{499.996, 500, 500.004, 500.008}, Values{60, 100, 60, 55}, false, 500);
  ASSERT_TRUE(alone);
  EXPECT_EQ(*error, *alone);
}

// A single sample above half of the height has no curve.
TEST(LockMass, ASpikeIsWhereItIs) {
  const std::optional<double> error =
      LockMassError(Values{499.99, 500.001, 500.01}, Values{1, 100, 1}, false, 500);
  ASSERT_TRUE(error);
  EXPECT_NEAR(*error, 2, 1e-9);
}

}  // namespace
}  // namespace zrml::qc
