#include "spectrum/step_model.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/spectrum/synthetic_spectra.h"

namespace zrml {
namespace {

Doubles ConstantAxis(double low, double step, std::size_t count) {
  Doubles axis(count);
  for (std::size_t i = 0; i < count; ++i) axis[i] = low + step * static_cast<double>(i);
  return axis;
}

TEST(StepModel, WithoutPointsTheSmallestHalfStepIsAMillionth) {
  SamplingStepModel model;
  EXPECT_EQ(StepBelow(model, 100), 1e-6);
  EXPECT_EQ(StepAbove(model, 100), 1e-6);
  BuildStepModel(model, MakeProfile({100, 101, 102, 103, 104}, {1, 1, 1, 1, 1}));
  EXPECT_TRUE(model.below.has_value());
  BuildStepModel(model, CZRMassSpectrum());
  EXPECT_FALSE(model.below.has_value());
  EXPECT_FALSE(model.above.has_value());
  EXPECT_EQ(model.minHalfStep, 1e-6);
  EXPECT_EQ(StepAbove(model, 100), 1e-6);
}

TEST(StepModel, ConstantStepsWithAndWithoutRuns) {
  for (const double intensity : {0.0, 1.0}) {
    SamplingStepModel model;
    BuildStepModel(model, MakeProfile(ConstantAxis(100, 0.5, 50), Doubles(50, intensity)));
    EXPECT_EQ(model.minHalfStep, 0.25);
    EXPECT_NEAR(StepBelow(model, 110), 0.5, 1e-12);
    EXPECT_NEAR(StepAbove(model, 110), 0.5, 1e-12);
  }
}

// Five points without runs are sampled at three steps, 1, 2 and 3, and fitted with degree 1: lines through
// the lower masses 100, 101, 103 and through the upper ones 101, 103, 106.
TEST(StepModel, TheCurvesAreAgainstTheLowerAndTheUpperMass) {
  SamplingStepModel model;
  BuildStepModel(model, MakeProfile({100, 101, 103, 106, 110}, {0, 0, 0, 0, 0}));
  // x: 0, 1, 3, mean 4/3; y: 1, 2, 3, mean 2; slope = sum(x y) - 3 mean mean over sum(x x) - 3 mean^2
  // = (11 - 8) / (10 - 16/3) = 9/14; at x = 4/3 the line has 2.
  EXPECT_NEAR(StepBelow(model, 100 + 4 / 3.0), 2, 1e-12);
  EXPECT_NEAR(StepBelow(model, 100 + 4 / 3.0 + 14), 11, 1e-11);
  // x: 0, 2, 5, mean 7/3: slope (19 - 14) / (29 - 49/3) = 15/38.
  EXPECT_NEAR(StepAbove(model, 101 + 7 / 3.0), 2, 1e-12);
  EXPECT_NEAR(StepAbove(model, 101 + 7 / 3.0 + 38), 17, 1e-11);
  // Mean step 10/4; 1 is smaller, and below the next step only: an isolated one. 2 is not smaller than 1.
  EXPECT_EQ(model.minHalfStep, 1);
  EXPECT_EQ(model.lowMass, 100);
  EXPECT_EQ(model.highMass, 106);
}

TEST(StepModel, AnIsolatedNarrowStepIsIgnored) {
  SamplingStepModel model;
  // Steps 1, 1, 0.25, 1, 1, 1, mean 0.875: neither 0.25, which is narrower than both neighbours, nor 1.
  BuildStepModel(model, MakeProfile({100, 101, 102, 102.25, 103.25, 104.25, 105.25}, Doubles(7)));
  EXPECT_EQ(model.minHalfStep, 0.4375);
  // Two narrow steps side by side are not an accident.
  BuildStepModel(model, MakeProfile({100, 101, 102, 102.25, 102.5, 103.5, 104.5}, Doubles(7)));
  EXPECT_EQ(model.minHalfStep, 0.125);
}

TEST(StepModel, QueriesNeverGoBelowTheSmallestHalfStep) {
  SamplingStepModel model;
  // Steps fall with the mass: the line reaches 0 and below soon after the last point.
  BuildStepModel(model, MakeProfile({100, 104, 107, 109, 110, 110.5}, Doubles(6)));
  EXPECT_EQ(StepAbove(model, 500), model.minHalfStep);
  EXPECT_EQ(StepBelow(model, 500), model.minHalfStep);
  EXPECT_GT(model.minHalfStep, 0);
}

TEST(StepModel, AHalfStepIsAtLeastAMillionth) {
  SamplingStepModel model;
  BuildStepModel(model, MakeProfile(ConstantAxis(0, 0x1p-30, 20), Doubles(20)));
  EXPECT_EQ(model.minHalfStep, 1e-6);
}

// A hundred thousand points are sampled at a thousand places at most, runs or not.
TEST(StepModel, LongSpectraAreSampled) {
  for (const double intensity : {0.0, 1.0}) {
    SamplingStepModel model;
    BuildStepModel(model, MakeProfile(ConstantAxis(100, 0.125, 100000), Doubles(100000, intensity)));
    ASSERT_TRUE(model.below.has_value());
    EXPECT_EQ(model.below->GetPointCount(), 1000);  // every hundredth
    EXPECT_EQ(model.above->GetPointCount(), model.below->GetPointCount());
    EXPECT_NEAR(StepAbove(model, 5000), 0.125, 1e-9);
  }
}

// A run begins one point before its first intensity and ends at the first of two zeros, or at the last point
// but one.
TEST(StepModel, RunsReachFromZeroToZero) {
  SamplingStepModel model;
  BuildStepModel(model, MakeProfile(ConstantAxis(100, 1, 8), {0, 0, 1, 2, 1, 0, 0, 0}));
  EXPECT_EQ(model.lowMass, 101);
  EXPECT_EQ(model.highMass, 105);
  BuildStepModel(model, MakeProfile(ConstantAxis(100, 1, 5), {0, 1, 1, 1, 1}));
  EXPECT_EQ(model.lowMass, 100);
  EXPECT_EQ(model.highMass, 103);
}

// Zeros are left out between runs, just before them and inside them: those steps are not sampling steps.
TEST(StepModel, StepsAcrossGapsAreLeftOut) {
  Doubles masses;
  Doubles intensities;
  for (int run = 0; run < 20; ++run) {
    const double start = 100 + 40 * run;
    const double offsets[] = {0, 10, 11, 12, 17, 18, 19, 20};
    const double shape[] = {0, 2, 5, 3, 1, 2, 0, 0};
    for (int i = 0; i < 8; ++i) {
      masses.push_back(start + offsets[i]);
      intensities.push_back(shape[i]);
    }
  }
  SamplingStepModel model;
  BuildStepModel(model, MakeProfile(masses, intensities));
  for (int mass = 110; mass < 880; mass += 7) {
    ASSERT_NEAR(StepAbove(model, mass), 1, 1e-9);
    ASSERT_NEAR(StepBelow(model, mass), 1, 1e-9);
  }
  EXPECT_EQ(model.minHalfStep, 0.5);
}

// The steps are powers of the mass that degree 5 follows exactly, except the square root of a time of flight:
// through Chebyshev's points of this range its error is 1.2 %, through others, by least squares, a few times
// that.
TEST(StepModel, FollowsEachAnalyser) {
  for (const Analyser& analyser : kAnalysers) {
    const Doubles axis = analyser.Axis(100, 2000, 20000);
    SamplingStepModel model;
    BuildStepModel(model, MakeProfile(axis, Doubles(axis.size(), 1)));
    for (std::size_t i = 100; i + 100 < axis.size(); i += 50) {
      const double step = axis[i + 1] - axis[i];
      ASSERT_NEAR(StepBelow(model, axis[i]), step, 0.05 * step) << analyser << " at " << axis[i];
      ASSERT_NEAR(StepAbove(model, axis[i + 1]), step, 0.05 * step) << analyser << " at " << axis[i];
    }
  }
}

TEST(StepModel, NonsenseMassesGiveAFloorButNoHarm) {
  const double nan = std::nan("");
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double intensity : {0.0, 1.0}) {
    SamplingStepModel model;
    BuildStepModel(model, MakeProfile({nan, 1, infinity, 3, nan, 5, 4, 3}, Doubles(8, intensity)));
    EXPECT_GE(model.minHalfStep, 1e-6);
    EXPECT_GE(StepAbove(model, 100), 1e-6);
    EXPECT_GE(StepBelow(model, nan), 1e-6);
  }
}

}  // namespace
}  // namespace zrml
