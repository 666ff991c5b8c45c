// Centroids worked by hand. Masses are 64ths, so that the arithmetic on them is exact.
#include "spectrum/centroiding.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>
#include <vector>

#include <gtest/gtest.h>

#include "tests/spectrum/synthetic_spectra.h"

namespace zrml {
namespace {

constexpr double kStep = 1.0 / 64;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Centroids {
  Doubles mz{1, 2, 3};  // what was there is replaced
  Doubles intensities{4};
};

Centroids Find(const Doubles& mz, const Doubles& intensities, const CentroidOptions& options = {}) {
  Centroids found;
  FindCentroids(mz, intensities, options, found.mz, found.intensities);
  return found;
}

Doubles Axis(std::size_t count) {
  Doubles mz(count);
  for (std::size_t i = 0; i < count; ++i) mz[i] = 100 + kStep * static_cast<double>(i);
  return mz;
}

Centroids OnAxis(const Doubles& intensities, const CentroidOptions& options = {}) {
  return Find(Axis(intensities.size()), intensities, options);
}

const CentroidOptions kAreas{.isArea = true};
const CentroidOptions kNoNoise{.ionIntensity = 0.0};
const CentroidOptions kAreasNoNoise{.isArea = true, .ionIntensity = 0.0};
const CentroidOptions kOneCountAnIon{.isArea = true, .ionIntensity = 1.0};

struct ShapeCase {
  const char* name;
  Doubles intensities;
  double at;  // in steps from the first sample
  double height;
  double area;
};

void PrintTo(const ShapeCase& shape, std::ostream* out) { *out << shape.name; }

class CentroidShapes : public testing::TestWithParam<ShapeCase> {};

TEST_P(CentroidShapes, OneCentroid) {
  const ShapeCase& shape = GetParam();
  const Centroids heights = OnAxis(shape.intensities);
  const Centroids areas = OnAxis(shape.intensities, kAreas);
  ASSERT_EQ(heights.mz.size(), 1u);
  ASSERT_EQ(heights.intensities.size(), 1u);
  EXPECT_NEAR(heights.mz[0], 100 + kStep * shape.at, 1e-11);
  EXPECT_NEAR(heights.intensities[0], shape.height, 1e-11 * shape.height);
  EXPECT_EQ(areas.mz, heights.mz);
  EXPECT_EQ(areas.intensities, Doubles{shape.area});
}

// 4, 16, 8 are 2^2, 2^4 and 2^3: the parabola 4 + x/2 - 3/2 x^2 through the exponents has its top at 1/6,
// where it is 4 + 1/24. 2, 5, 5, 2: with x from the middle, ln 5 - ln 2.5 (x^2 - 1/4) / 2 is ln 5 + ln 2.5 /
// 8 at 0.
INSTANTIATE_TEST_SUITE_P(
    Centroiding, CentroidShapes,
    testing::Values(
        ShapeCase{"two samples: their mean", {2, 6}, 0.75, 6, 8},
        ShapeCase{"flat top of two", {0, 5, 5, 0}, 1.5, 5, 10},
        ShapeCase{"flat top of four: no curve through it", {0, 5, 5, 5, 5, 0}, 2.5, 5, 20},
        ShapeCase{"flat top with flanks", {0, 2, 5, 5, 2, 0}, 2.5, 5 * std::pow(2.5, 0.125), 14},
        ShapeCase{"triangle", {0, 1, 2, 1, 0}, 2, 2, 4},
        ShapeCase{"triangle at the start", {1, 2, 1, 0}, 1, 2, 4},
        ShapeCase{"triangle at the end", {0, 0, 0, 1, 2, 1}, 4, 2, 4},
        ShapeCase{"cut at its start: the mean", {8, 2}, 0.2, 8, 10},
        ShapeCase{"parabola of logarithms", {0, 4, 16, 8, 0}, 2 + 1.0 / 6, 16 * std::exp2(1.0 / 24), 28}));

// The exponent 8 + (9x - 10.5x^2 + 2x^3) / 24 rises until x = 1/2 and falls from there to 3: its derivative
// is (x - 1/2) (x - 3) / 4.
TEST(Centroiding, CubicOfTheLogarithmsForATail) {
  const auto exponent = [](double x) { return 8 + (9 * x - 10.5 * x * x + 2 * x * x * x) / 24; };
  Doubles intensities{0};
  for (const double x : {-1.0, 0.0, 1.0, 2.0, 3.0}) intensities.push_back(std::exp2(exponent(x)));
  const Centroids found = OnAxis(intensities);
  ASSERT_EQ(found.mz.size(), 1u);
  EXPECT_NEAR(found.mz[0], 100 + kStep * 2.5, 1e-9);
  EXPECT_NEAR(found.intensities[0], std::exp2(exponent(0.5)), 1e-8);
}

TEST(Centroiding, ShoulderBelongsToItsPeak) {
  const Centroids found = OnAxis({0, 1, 8, 32, 8, 7, 1, 0}, kAreas);
  ASSERT_EQ(found.mz.size(), 1u);
  EXPECT_NEAR(found.mz[0], 100 + 3 * kStep, 0.5 * kStep);
}

// The sample between two peaks counts half for each.
TEST(Centroiding, NeighboursShareTheirValley) {
  EXPECT_EQ(OnAxis({0, 2, 8, 4, 8, 2, 0}, kAreasNoNoise).intensities, (Doubles{12, 12}));
  EXPECT_EQ(OnAxis({0, 2, 8, 0, 6, 2, 0}, kAreasNoNoise).intensities, (Doubles{10, 8}));
}

TEST(Centroiding, TwoZerosEndAPeak) {
  const Centroids found = OnAxis({0, 1, 2, 1, 0, 0, 1, 2, 1});
  ASSERT_EQ(found.mz.size(), 2u);
  EXPECT_NEAR(found.mz[0], 100 + 2 * kStep, 1e-11);
  EXPECT_NEAR(found.mz[1], 100 + 7 * kStep, 1e-11);
}

// No noise is so great that it would join them; one zero may be noise.
TEST(Centroiding, TwoZerosEndAPeakInNoiseToo) {
  const CentroidOptions options{.isArea = true, .minSignalToNoise = 0, .ionIntensity = 1.0};
  EXPECT_EQ(OnAxis({0, 1, 2, 1, 0, 0, 1, 2, 1, 0}, options).intensities, (Doubles{4, 4}));
  EXPECT_EQ(OnAxis({0, 1, 2, 0, 2, 1, 0}, options).intensities, Doubles{6});
}

// The means of 4 64 4, 64 4 1, 4 1 1 with the middle one counted twice are 34, 18.25, 1.75: half of 34 is
// reached 1.08 steps to the right, and three times that far are three samples. To the left there is but one.
TEST(Centroiding, AreaEndsThreeHalfWidthsFromTheApex) {
  const Doubles intensities{0, 4, 64, 4, 1, 1, 1, 1, 1, 1, 1, 0};
  EXPECT_EQ(OnAxis(intensities, kAreasNoNoise).intensities, Doubles{74});
  // Under three samples and half of the apex lie 3.5, with a variance of 3.5^2: 70.5^2 / 86.25 is 57.6.
  CentroidOptions options = kOneCountAnIon;
  options.minSignalToNoise = 7.5;
  EXPECT_EQ(OnAxis(intensities, options).intensities, Doubles{74});
  options.minSignalToNoise = 8;
  EXPECT_EQ(OnAxis(intensities, options).intensities, Doubles{});
}

// The means fall from 94 over 80 to 62.5, and half of the way from 94 to the valley of 36 is 65: 1.86 steps,
// five samples in three times that. The second peak has the half of the valley.
TEST(Centroiding, HalfWidthsAreThoseAboveTheValley) {
  const Doubles intensities{0, 96, 100, 80, 60, 50, 40, 39, 38, 37, 36, 100, 0};
  EXPECT_EQ(OnAxis(intensities, kAreasNoNoise).intensities, (Doubles{465, 118}));
}

// What is below a twentieth of the apex is not of the top: the parabola is that of 4, 16, 8.
TEST(Centroiding, FlanksAreNoPartOfTheTop) {
  const Centroids found = OnAxis({0, 0.75, 4, 16, 8, 0.75, 0});
  ASSERT_EQ(found.mz.size(), 1u);
  EXPECT_NEAR(found.mz[0], 100 + (3 + 1.0 / 6) * kStep, 1e-11);
}

// The cubic of these rises to more than twice the highest sample.
TEST(Centroiding, MeanWhereTheCurveIsFarAboveTheSamples) {
  const CentroidOptions options{.minSignalToNoise = 0, .ionIntensity = 1000.0};
  const Centroids found = OnAxis({20, 1, 20, 5, 20}, options);
  ASSERT_EQ(found.mz.size(), 1u);
  EXPECT_NEAR(found.mz[0], 100 + (1 + 40 + 15 + 80) / 66.0 * kStep, 1e-11);
  EXPECT_EQ(found.intensities, Doubles{20});
}

// 9 4 9 could be one peak of nine ions or so, 9 3 9 are two: (9 - 4)^2 / (9 + 4) is less than 1.5 squared,
// and (9 - 3)^2 / (9 + 3) more.
TEST(Centroiding, ValleysMustStandOutOfTheNoise) {
  EXPECT_EQ(OnAxis({0, 3, 11, 5, 11, 3, 0}, kOneCountAnIon).intensities, Doubles{33});
  EXPECT_EQ(OnAxis({0, 3, 21, 12, 21, 3, 0}, kOneCountAnIon).intensities, (Doubles{30, 30}));
}

// Two and a half deviations are those of 6.25 ions.
TEST(Centroiding, PeaksMustStandOutOfTheNoise) {
  EXPECT_EQ(OnAxis({0, 1, 4, 1, 0}, kOneCountAnIon).intensities, Doubles{});
  EXPECT_EQ(OnAxis({0, 1, 5, 1, 0}, kOneCountAnIon).intensities, Doubles{7});
  CentroidOptions options = kOneCountAnIon;
  options.minSignalToNoise = 0;
  EXPECT_EQ(OnAxis({0, 1, 0}, options).intensities, Doubles{1});
  options.minSignalToNoise = 3;
  EXPECT_EQ(OnAxis({0, 1, 5, 1, 0}, options).intensities, Doubles{});
  options.ionIntensity = 0.25;
  EXPECT_EQ(OnAxis({0, 1, 5, 1, 0}, options).intensities, Doubles{7});
}

// 34 between two valleys of 20 at high peaks. With half of each valley that is 54, of which 40 lie under it:
// the square of the other 14 is not 6.25 times the variance, 54 and 20 for each valley, but more than once.
TEST(Centroiding, WhatLiesUnderAPeakIsNotSignal) {
  const Doubles intensities{0, 30, 90, 20, 34, 20, 90, 30, 0};
  EXPECT_EQ(OnAxis(intensities, kOneCountAnIon).intensities, (Doubles{130, 130}));
  CentroidOptions options = kOneCountAnIon;
  options.minSignalToNoise = 1.5;
  EXPECT_EQ(OnAxis(intensities, options).intensities, (Doubles{130, 130}));
  options.minSignalToNoise = 1.4;
  EXPECT_EQ(OnAxis(intensities, options).intensities, (Doubles{130, 54, 130}));
}

TEST(Centroiding, IonIntensityFromSamplesThatGoUpAndDown) {
  const auto estimate = [](const Doubles& intensities) {
    return EstimateIonIntensity(Axis(intensities.size()), intensities);
  };
  EXPECT_EQ(estimate({0, 2, 5, 9, 5, 2, 0}), 0);      // a peak
  EXPECT_EQ(estimate({0, 5, 9, 7, 8, 10, 5, 0}), 0);  // two that are three samples apart
  EXPECT_EQ(estimate({0, 0, 7, 0, 0}), 7);            // 7^2 / 7 on both sides
  // Only at 5: (7 - 5)^2 / 12 and (9 - 5)^2 / 14. The upper one stands in for the median of two.
  EXPECT_EQ(estimate({0, 4, 7, 5, 9, 3, 0}), 4.0 / 14 * 4);
}

// Ions that stand alone, each with two zeros behind it: those of 7 at the beginning of each 2048 samples,
// where blocks of 256 are looked at, and those of 5 elsewhere. Each says twice what it is.
TEST(Centroiding, IonIntensityOfALongProfileIsThatOfItsBlocks) {
  const auto estimate = [](std::size_t count, std::size_t apart) {
    Doubles intensities(count);
    for (std::size_t i = 1; i + 1 < count; i += apart) intensities[i] = i % 2048 < 256 ? 7 : 5;
    return EstimateIonIntensity(Axis(count), intensities);
  };
  EXPECT_EQ(estimate(32768, 3), 7);
  EXPECT_EQ(estimate(8192, 3), 5);    // not long
  EXPECT_EQ(estimate(32768, 32), 5);  // 8 in each block: 256 times, which is not enough
}

TEST(Centroiding, ASampleAloneIsNoiseUnlessThereIsNone) {
  EXPECT_EQ(OnAxis({0, 5, 0}).mz, Doubles{});
  EXPECT_EQ(OnAxis({0, 5, 0}, kNoNoise).mz, Doubles{100 + kStep});
  EXPECT_EQ(OnAxis({0, 5, 0}, kNoNoise).intensities, Doubles{5});
  EXPECT_EQ(OnAxis({5}, kNoNoise).mz, Doubles{100});
}

// A step of half as long again is still one.
TEST(Centroiding, AGapEndsAPeak) {
  const Doubles intensities{2, 5, 5, 2};
  const double wide = 101.5;
  EXPECT_EQ(Find({100, 101, wide + 1, wide + 2}, intensities).mz.size(), 1u);
  const Centroids found = Find({100, 101, wide + 1.125, wide + 2.125}, intensities, kAreas);
  EXPECT_EQ(found.intensities, (Doubles{7, 7}));
  EXPECT_NEAR(found.mz[0], 100 + 5.0 / 7, 1e-12);
  EXPECT_NEAR(found.mz[1], wide + 1.125 + 2.0 / 7, 1e-12);
}

// Three gaps in a row, with a step of 1 four steps before and behind the middle one.
TEST(Centroiding, GapsBetweenSamplesThatStandAlone) {
  const Centroids found = Find({1, 2, 3, 13, 23, 33, 34, 35}, {0, 0, 0, 5, 5, 0, 0, 0}, kNoNoise);
  EXPECT_EQ(found.mz, (Doubles{13, 23}));
}

// The same profile with its zeros and without, the way acquisitions leave them out.
TEST(Centroiding, ZerosThatAreLeftOutChangeNothing) {
  const Doubles axis = kAnalysers[1].Axis(100, 2000, 90000);
  Profile whole{axis, Doubles(axis.size())};
  Profile sparse;
  for (std::size_t at = 10; at + 10 < axis.size(); at += 97) {
    const double shape[] = {0, 1, 4, 9, 11, 8, 3, 1, 0};
    for (std::size_t i = 0; i < 9; ++i) {
      whole.intensities[at + i] = shape[i];
      sparse.masses.push_back(axis[at + i]);
      sparse.intensities.push_back(shape[i]);
    }
  }
  const Centroids expected = Find(whole.masses, whole.intensities);
  const Centroids found = Find(sparse.masses, sparse.intensities);
  EXPECT_EQ(found.mz.size(), (axis.size() - 20 + 96) / 97);
  EXPECT_EQ(found.mz, expected.mz);
  EXPECT_EQ(found.intensities, expected.intensities);
}

// 220 of 33 an ion are more than 6.25 ions. The means of the flank are 77.5 at the apex and 37.5 beside it,
// so three half widths are 2.9 steps: a zero three steps away, which ends the run, is no ground.
TEST(Centroiding, ZeroAtTheEndOfARunIsNoGround) {
  CentroidOptions options = kAreas;
  options.ionIntensity = 33;
  for (Doubles flanks : {Doubles{90, 100, 20, 10}, {90, 100, 20, 10, 0}, {0, 0, 90, 100, 20, 10, 0, 0}}) {
    EXPECT_EQ(OnAxis(flanks, options).intensities, Doubles{220});
    std::reverse(flanks.begin(), flanks.end());
    EXPECT_EQ(OnAxis(flanks, options).intensities, Doubles{220});
  }
  options.ionIntensity = 36;
  EXPECT_EQ(OnAxis({90, 100, 20, 10}, options).intensities, Doubles{});
}

// Single ions, three samples apart, around a peak: it is where it is, wherever that is in the arrays.
TEST(Centroiding, SingleIonsBeforeAndBehindChangeNothing) {
  const Doubles peak{4, 16, 8};
  const CentroidOptions options{.ionIntensity = 1.0};
  for (std::size_t before = 0; before < 150; ++before) {
    for (const std::size_t behind : {0, 1, 2, 5, 7, 8, 9, 140}) {
      Doubles intensities(before + peak.size() + behind);
      for (std::size_t i = 0; i < before; ++i) intensities[i] = (before - i) % 3 == 0 ? 1 : 0;
      for (std::size_t i = 0; i < behind; ++i) intensities[before + 3 + i] = i % 3 == 2 ? 1 : 0;
      std::copy(peak.begin(), peak.end(), intensities.begin() + static_cast<std::ptrdiff_t>(before));
      Doubles mz = Axis(intensities.size());
      for (double& mass : mz) mass -= kStep * static_cast<double>(before);
      const Centroids found = Find(mz, intensities, options);
      ASSERT_EQ(found.mz.size(), 1U) << before << " " << behind;
      EXPECT_NEAR(found.mz[0], 100 + kStep * (1 + 1.0 / 6), 1e-9) << before << " " << behind;
      EXPECT_NEAR(found.intensities[0], std::exp2(4 + 1.0 / 24), 1e-8);
      EXPECT_EQ(found.mz, Find(Axis(3), peak, options).mz);
    }
  }
}

// Samples that count as 0 do so beside a peak as well as in it.
TEST(Centroiding, WhatIsNoIntensityIsZeroBesideAPeak) {
  const double other[] = {0, -1, kNaN, kInfinity, 1e-101};
  const Doubles plain{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 16, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  const Centroids expected = OnAxis(plain, kOneCountAnIon);
  ASSERT_EQ(expected.mz.size(), 1U);
  for (std::size_t i = 0; i < plain.size(); ++i) {
    if (plain[i] > 0) continue;
    for (const double value : other) {
      Doubles intensities = plain;
      intensities[i] = value;
      const Centroids found = OnAxis(intensities, kOneCountAnIon);
      EXPECT_EQ(found.mz, expected.mz) << i << " " << value;
      EXPECT_EQ(found.intensities, expected.intensities) << i << " " << value;
    }
  }
}

// An ion may add any number: the noise is found from the profile alone.
TEST(Centroiding, AnyUnitOfIntensity) {
  RandomNumbers random(11);
  Doubles counts(2000);
  for (double& count : counts) count = random.Below(3) + random.Below(random.Below(40) + 1);
  Doubles scaled = counts;
  for (double& value : scaled) value /= 64;
  const Centroids expected = OnAxis(counts);
  const Centroids found = OnAxis(scaled);
  ASSERT_GT(found.mz.size(), 10u);
  EXPECT_EQ(found.mz, expected.mz);
  for (std::size_t i = 0; i < found.mz.size(); ++i)
    EXPECT_EQ(64 * found.intensities[i], expected.intensities[i]);
}

TEST(Centroiding, NoPointsNoCentroids) {
  EXPECT_EQ(OnAxis({}).mz, Doubles{});
  EXPECT_EQ(OnAxis({}).intensities, Doubles{});
  EXPECT_EQ(OnAxis({0}).mz, Doubles{});
  EXPECT_EQ(OnAxis({0, 0, 0}).mz, Doubles{});
  EXPECT_EQ(EstimateIonIntensity({}, {}), 0);
}

TEST(Centroiding, WhatIsNoIntensityIsZero) {
  const Centroids expected = OnAxis({0, 2, 8, 4, 0, 4, 8, 2, 0}, kNoNoise);
  ASSERT_EQ(expected.mz.size(), 2u);
  for (const double value : {-3.0, -kInfinity, kInfinity, kNaN, 1e101, 1e-101}) {
    const Centroids found = OnAxis({value, 2, 8, 4, value, 4, 8, 2, value}, kNoNoise);
    EXPECT_EQ(found.mz, expected.mz) << value;
    EXPECT_EQ(found.intensities, expected.intensities) << value;
  }
}

TEST(Centroiding, MassesThatDoNotAscendEndAPeak) {
  EXPECT_EQ(Find({100, 101, 101, 102}, {2, 5, 5, 2}, kAreas).intensities, (Doubles{7, 7}));
  const Centroids found = Find({200, 201, 202, 100, 101, 102}, {1, 2, 1, 1, 4, 1});
  ASSERT_EQ(found.mz.size(), 2u);
  EXPECT_NEAR(found.mz[0], 201, 1e-11);
  EXPECT_NEAR(found.mz[1], 101, 1e-11);
}

TEST(Centroiding, PointsWithoutAMassAreLeftOut) {
  for (const double mass : {kNaN, -1.0, kInfinity, 1e101}) {
    const Centroids found = Find({100, 101, mass, 103, 104}, {2, 5, 9, 5, 2}, kAreas);
    EXPECT_EQ(found.intensities, (Doubles{7, 7})) << mass;
  }
}

// Gaussians with `width` samples at half height.
Doubles Gaussian(std::size_t count, double centre, double width, double height) {
  Doubles intensities(count);
  for (std::size_t i = 0; i < count; ++i) {
    const double x = (static_cast<double>(i) - centre) / width;
    intensities[i] = height * std::exp2(-4 * x * x);
  }
  return intensities;
}

Doubles Sum(Doubles one, const Doubles& other) {
  for (std::size_t i = 0; i < one.size(); ++i) one[i] += other[i];
  return one;
}

double AreaOfGaussian(double width, double height) {
  return height * width * std::sqrt(std::atan(1.0) / std::log(2.0));
}

TEST(Centroiding, ManySamplesAtHalfHeight) {
  const Doubles intensities = Gaussian(240, 120.3, 40, 1000);
  const Centroids found = OnAxis(intensities, kAreasNoNoise);
  ASSERT_EQ(found.mz.size(), 1u);
  EXPECT_NEAR(found.mz[0], 100 + 120.3 * kStep, 1e-6 * kStep);
  EXPECT_NEAR(found.intensities[0] / AreaOfGaussian(40, 1000), 1, 0.001);
}

// Samples beside each other differ by 2.4 of their deviations, which would be a valley; the means of six
// hardly differ.
TEST(Centroiding, ManySamplesAtHalfHeightInNoise) {
  Doubles intensities = Gaussian(240, 120.3, 40, 1000);
  for (std::size_t i = 0; i < intensities.size(); ++i) {
    const double noise = std::min(1.2 * std::sqrt(intensities[i]), intensities[i] / 2);
    intensities[i] += i % 2 == 0 ? noise : -noise;
  }
  const Centroids found = OnAxis(intensities, kOneCountAnIon);
  ASSERT_EQ(found.mz.size(), 1u);
  EXPECT_NEAR(found.mz[0], 100 + 120.3 * kStep, 0.5 * kStep);
  EXPECT_NEAR(found.intensities[0] / AreaOfGaussian(40, 1000), 1, 0.005);
}

// 10 and the valley of 6.8 differ by less than a deviation of each, but not of the mean of several.
TEST(Centroiding, ValleysOfManySamples) {
  const Doubles intensities = Sum(Gaussian(240, 80, 40, 10), Gaussian(240, 130, 40, 10));
  const Centroids found = OnAxis(intensities, kOneCountAnIon);
  ASSERT_EQ(found.mz.size(), 2u);
  EXPECT_NEAR(found.mz[0], 100 + 80 * kStep, 5 * kStep);
  EXPECT_NEAR(found.mz[1], 100 + 130 * kStep, 5 * kStep);
}

// Thirty ions are five deviations, in however many samples they are.
TEST(Centroiding, FewIonsInManySamples) {
  const Centroids found = OnAxis(Gaussian(120, 60, 40, 30 / AreaOfGaussian(40, 1)), kOneCountAnIon);
  ASSERT_EQ(found.mz.size(), 1u);
  EXPECT_NEAR(found.intensities[0], 30, 1);
}

// Twenty samples are seven bins of three, of which the last has two.
TEST(Centroiding, TheLastSamplesAreNotAWholeBin) {
  const Centroids found = OnAxis(Doubles(20, 5), kOneCountAnIon);
  ASSERT_EQ(found.mz.size(), 1u);
  EXPECT_NEAR(found.mz[0], 100 + 9.5 * kStep, 3 * kStep);
  EXPECT_NEAR(found.intensities[0], 100, 1e-9);
}

// The pair is too close for means of several samples; a valley that is clear parts it from the wide peak.
TEST(Centroiding, WideAndNarrowPeaksInOneRun) {
  const Doubles pair = Sum(Gaussian(160, 110.2, 4, 1000), Gaussian(160, 116.2, 4, 1000));
  const Centroids found = OnAxis(Sum(Gaussian(160, 60, 40, 1000), pair), kOneCountAnIon);
  ASSERT_EQ(found.mz.size(), 3u);
  EXPECT_NEAR(found.mz[0], 100 + 60 * kStep, kStep);
  EXPECT_NEAR(found.mz[1], 100 + 110.2 * kStep, 0.2 * kStep);
  EXPECT_NEAR(found.mz[2], 100 + 116.2 * kStep, 0.2 * kStep);
}

}  // namespace
}  // namespace zrml
