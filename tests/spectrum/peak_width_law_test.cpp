#include "spectrum/peak_width_law.h"

#include <gtest/gtest.h>

namespace zrml {
namespace {

using Holder = std::shared_ptr<CZRMSPeakWidthLaw::Law>;

TEST(PeakWidthLaw, ConstantWidthIsTheSameEverywhere) {
  Holder law;
  ASSERT_TRUE(SetConstantWidth(law, 0.25));
  EXPECT_EQ(law->Width(0), 0.25);
  EXPECT_EQ(law->Width(5000), 0.25);
  EXPECT_EQ(law->Width(-1), 0.25);
}

TEST(PeakWidthLaw, PPMWidthIsInProportionToTheMass) {
  Holder law;
  ASSERT_TRUE(SetPPMWidth(law, 10));
  EXPECT_EQ(law->Width(500), 0.005);  // 500 * 10 / 10^6
  EXPECT_EQ(law->Width(1000), 0.01);
  EXPECT_EQ(law->Width(0), 0);
}

TEST(PeakWidthLaw, ParametersAreKindWidthAndZero) {
  Holder constant;
  Holder ppm;
  SetConstantWidth(constant, 0.5);
  SetPPMWidth(ppm, 10);
  double width = -1;
  double second = -1;
  EXPECT_EQ(constant->GetParameters(width, second), 1);
  EXPECT_EQ(width, 0.5);
  EXPECT_EQ(second, 0.0);
  width = second = -1;
  EXPECT_EQ(ppm->GetParameters(width, second), 3);
  EXPECT_EQ(width, 10);
  EXPECT_EQ(second, 0.0);
}

TEST(PeakWidthLaw, MaxWidthIsAThousandForEveryLaw) {
  Holder law;
  SetConstantWidth(law, 5);
  EXPECT_EQ(law->MaxWidth(), 1000.0);
  SetPPMWidth(law, 5);
  EXPECT_EQ(law->MaxWidth(), 1000.0);
}

TEST(PeakWidthLaw, NegativeWidthLeavesTheHolderAsItWas) {
  Holder law;
  EXPECT_FALSE(SetConstantWidth(law, -0.1));
  EXPECT_FALSE(SetPPMWidth(law, -0.1));
  EXPECT_EQ(law, nullptr);
  ASSERT_TRUE(SetConstantWidth(law, 2));
  const Holder before = law;
  EXPECT_FALSE(SetConstantWidth(law, -0.1));
  EXPECT_FALSE(SetPPMWidth(law, -1));
  EXPECT_EQ(law, before);
}

TEST(PeakWidthLaw, ZeroWidthIsAWidth) {
  Holder law;
  ASSERT_TRUE(SetConstantWidth(law, 0));
  EXPECT_EQ(law->Width(100), 0);
  ASSERT_TRUE(SetPPMWidth(law, 0));
  EXPECT_EQ(law->Width(100), 0);
}

TEST(PeakWidthLaw, ANewLawReleasesThePreviousOne) {
  Holder law;
  SetConstantWidth(law, 1);
  const std::weak_ptr<CZRMSPeakWidthLaw::Law> first = law;
  SetPPMWidth(law, 1);
  EXPECT_TRUE(first.expired());
}

}  // namespace
}  // namespace zrml
