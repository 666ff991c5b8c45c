#include "spectrum/profile_grid.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <new>

#include <gtest/gtest.h>

#include "spectrum/profile_resampling.h"
#include "tests/spectrum/synthetic_spectra.h"

namespace zrml {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

ProfileView View(const Profile& profile) { return {profile.masses, profile.intensities}; }

// The grid of a target for a source, with the law and the model of the target.
struct Learned {
  explicit Learned(const Profile& target) {
    DetectScanLaw(law, target.Spectrum());
    BuildStepModel(model, target.Spectrum());
  }
  ProfileGrid Grid(const Profile& target, const Profile& source,
                   std::size_t mostPoints = kMostGridPoints) const {
    return BuildProfileGrid(View(target), View(source), law, model, mostPoints);
  }

  ScanLawHolder law;
  SamplingStepModel model;
};

ProfileGrid GridOf(const Profile& target, const Profile& source) {
  return Learned(target).Grid(target, source);
}

void ExpectNear(const Doubles& masses, Doubles::const_iterator begin, Doubles::const_iterator end,
                double tolerance) {
  ASSERT_EQ(masses.size(), static_cast<std::size_t>(end - begin));
  for (std::size_t i = 0; i < masses.size(); ++i, ++begin) ASSERT_NEAR(masses[i], *begin, tolerance) << i;
}

// The axis up to its last remaining sample.
void ExpectRefilled(const Profile& profile, const ProfileGrid& grid, const Doubles& axis, double tolerance) {
  const auto last = std::lower_bound(axis.begin(), axis.end(), profile.masses.back() - 1e-3);
  ExpectNear(grid.masses, axis.begin(), std::min(last + 1, axis.end()), tolerance);
}

TEST(ProfileGrid, RefillsGapsToTheTrueAxis) {
  for (const Analyser& analyser : kAnalysers) {
    for (const std::size_t gap : {1U, 5U, 100U, 3000U}) {
      SCOPED_TRACE(testing::Message() << analyser << ' ' << gap);
      const Doubles axis = analyser.Axis(50, 5000, 60000);
      const Profile profile = WithGaps(axis, gap);
      ASSERT_LT(profile.masses.size(), axis.size());
      ExpectRefilled(profile, GridOf(profile, profile), axis, 1e-6);
    }
  }
}

TEST(ProfileGrid, NoiseInTheLastBitsDoesNotDisturbTheRefill) {
  RandomNumbers random(4);
  for (const Analyser& analyser : kAnalysers) {
    for (const std::size_t gap : {1U, 100U, 3000U}) {
      SCOPED_TRACE(testing::Message() << analyser << ' ' << gap);
      const Doubles axis = analyser.Axis(50, 5000, 60000);
      Profile profile = WithGaps(axis, gap);
      for (double& mass : profile.masses) mass *= 1 + 0x1p-50 * (UnitNumber(random) - 0.5);
      ExpectRefilled(profile, GridOf(profile, profile), axis, 1e-6);
    }
  }
}

// Masses in files have 24 bits: two steps off by rounding must not make a long gap a point longer or shorter.
TEST(ProfileGrid, RefillsGapsBetweenMassesOfSinglePrecision) {
  for (const Analyser& analyser : kAnalysers) {
    for (const std::size_t gap : {1U, 100U, 1000U}) {
      SCOPED_TRACE(testing::Message() << analyser << ' ' << gap);
      const Doubles axis = analyser.Axis(100, 2000, 50000);
      Profile profile = WithGaps(axis, gap);
      for (double& mass : profile.masses) mass = static_cast<float>(mass);
      ExpectRefilled(profile, GridOf(profile, profile), axis, 2e-4);
    }
  }
}

TEST(ProfileGrid, OwnSamplesStayExactlyAndMassesAscend) {
  for (const Analyser& analyser : kAnalysers) {
    const Profile profile = WithGaps(analyser.Axis(50, 5000, 20000), 37);
    const Profile source = {{40, 51, 333, 6000}, {1, 1, 1, 1}};
    const ProfileGrid grid = GridOf(profile, source);
    ASSERT_EQ(grid.masses.size(), grid.intensities.size());
    EXPECT_EQ(std::adjacent_find(grid.masses.begin(), grid.masses.end(), std::greater_equal<>()),
              grid.masses.end());
    std::size_t at = 0;
    for (std::size_t i = 0; i < profile.masses.size(); ++i) {
      while (at < grid.masses.size() && grid.masses[at] < profile.masses[i]) {
        ASSERT_EQ(grid.intensities[at], 0);
        ++at;
      }
      ASSERT_LT(at, grid.masses.size());
      ASSERT_EQ(grid.masses[at], profile.masses[i]) << analyser;
      ASSERT_EQ(grid.intensities[at], profile.intensities[i]);
      ++at;
    }
  }
}

// Only the model's steps. The finest, of FT at 400, are 0.011: the number of points is right, and their
// positions to a fifth of that.
TEST(ProfileGrid, WithoutALawTheModelRefills) {
  for (const Analyser& analyser : kAnalysers) {
    SCOPED_TRACE(analyser.name);
    const Doubles axis = analyser.Axis(400, 900, 20000);
    const Profile profile = WithGaps(axis, 20);
    Learned learned(profile);
    learned.law.reset();
    const ProfileGrid grid = learned.Grid(profile, profile);
    ExpectRefilled(profile, grid, axis, 0.002);
  }
}

TEST(ProfileGrid, ALawMoreThanAFactorOfTwoOffIsNotUsed) {
  const Doubles axis = kAnalysers[0].Axis(100, 200, 1001);  // steps of 0.1
  const Profile profile = WithGaps(axis, 10);
  Learned learned(profile);
  learned.law = std::make_shared<CZRMSScanLaw::ConstantDelta>(0.25);
  ExpectRefilled(profile, learned.Grid(profile, profile), axis, 1e-6);
  learned.law = std::make_shared<CZRMSScanLaw::ConstantDelta>(0.025);
  ExpectRefilled(profile, learned.Grid(profile, profile), axis, 1e-6);
}

// A model whose two curves are the same straight line.
SamplingStepModel LineModel(double low, double stepAtLow, double high, double stepAtHigh) {
  PolynomialFit line(2);
  line.AddPoint(low, stepAtLow);
  line.AddPoint(high, stepAtHigh);
  EXPECT_TRUE(line.Fit(1));
  SamplingStepModel model;
  model.below = model.above = line;
  model.lowMass = low;
  model.highMass = high;
  return model;
}

// The axis between two samples.
Doubles Refill(double a, double b, const SamplingStepModel& model, const ScanLawHolder& law = {}) {
  const Profile target = {{a, b}, {1, 1}};
  return BuildProfileGrid(View(target), View(target), law, model).masses;
}

ScanLawHolder ConstantLaw(double step) { return std::make_shared<CZRMSScanLaw::ConstantDelta>(step); }

// Steps of 1 at 100 and of 3 at 108: n = 8 / 2, r = 1/2, and u + r u (u - 1) is 5/32, 3/8, 21/32 at the
// quarters.
TEST(ProfileGrid, WithoutALawStepsChangeEvenlyFromEndToEnd) {
  EXPECT_EQ(Refill(100, 108, LineModel(100, 1, 108, 3)), (Doubles{100, 101.25, 103, 105.25, 108}));
}

// Steps of 1 at 100 and of 3 at 164: n = 32 and r = 1/2. 124 is the middle of the steps, not of the masses:
// step 16 ends there, where even steps would end the twelfth. Step 17: 64 * (17/32 - 17/32 * 15/32 / 2) above
// 100.
TEST(ProfileGrid, WithoutALawPointsAroundASampleAreFoundAmongChangingSteps) {
  const Profile target = {{100, 164}, {1, 1}};
  const Profile source = {{124.5}, {1}};
  const ProfileGrid grid = BuildProfileGrid(View(target), View(source), {}, LineModel(100, 1, 164, 3), 2);
  EXPECT_EQ(grid.masses, (Doubles{100, 124, 126.03125, 164}));
}

TEST(ProfileGrid, ALawHoldsUpToAFactorOfTwoEitherWay) {
  const SamplingStepModel model = LineModel(100, 1, 200, 1);
  const Doubles byModel = {100, 101, 102, 103, 104};
  EXPECT_EQ(Refill(100, 104, model, ConstantLaw(2)), (Doubles{100, 102, 104}));
  EXPECT_EQ(Refill(100, 104, model, ConstantLaw(2.1)), byModel);
  EXPECT_EQ(Refill(100, 104, model, ConstantLaw(0.5)),
            (Doubles{100, 100.5, 101, 101.5, 102, 102.5, 103, 103.5, 104}));
  EXPECT_EQ(Refill(100, 104, model, ConstantLaw(0.48)), byModel);
}

TEST(ProfileGrid, ALawHasToHoldAtBothEndsOfAGap) {
  const SamplingStepModel model = LineModel(100, 1, 108, 3);
  const Doubles byModel = {100, 101.25, 103, 105.25, 108};
  EXPECT_EQ(Refill(100, 108, model, ConstantLaw(1)), byModel);  // not at 108
  EXPECT_EQ(Refill(100, 108, model, ConstantLaw(4)), byModel);  // not at 100
}

// The line continues to 5 at 116 and 6.5 at 122; the step stays at 3, that of the last fitted mass.
TEST(ProfileGrid, OutsideItsMassesTheModelHasTheStepOfItsEnd) {
  EXPECT_EQ(Refill(116, 122, LineModel(100, 1, 108, 3)), (Doubles{116, 119, 122}));
  EXPECT_EQ(Refill(116, 122, LineModel(100, 1, 108, 3), ConstantLaw(2)), (Doubles{116, 118, 120, 122}));
}

TEST(ProfileGrid, AModelAtItsFloorStandsForTheSmallestStepAndLeavesTheLawAlone) {
  SamplingStepModel model;
  model.minHalfStep = 0.5;
  EXPECT_EQ(Refill(100, 104, model), (Doubles{100, 101, 102, 103, 104}));
  EXPECT_EQ(Refill(100, 108, model, ConstantLaw(4)), (Doubles{100, 104, 108}));
}

// Just below each point of the axis, where a division may round to the point itself.
TEST(ProfileGrid, ExtensionsEncloseTheSourceDespiteRounding) {
  const SamplingStepModel model = LineModel(900, 0.1, 1000, 0.1);
  const Profile target = {{1000, 1000.1}, {1, 1}};
  const Doubles axis = BuildProfileGrid(View(target), {Doubles{100}, Doubles{1}}, {}, model).masses;
  ASSERT_EQ(axis.size(), 9002U);
  for (std::size_t i = 1; i < 9000; i += 7) {
    const double low = std::nextafter(axis[i], 0);
    const ProfileGrid grid = BuildProfileGrid(View(target), {Doubles{low}, Doubles{1}}, {}, model);
    ASSERT_LE(grid.masses.front(), low) << i;
    ASSERT_GT(grid.masses[1], low) << i;
  }
}

TEST(ProfileGrid, ExtensionsFollowTheAxis) {
  for (const Analyser& analyser : kAnalysers) {
    SCOPED_TRACE(analyser.name);
    const Doubles axis = analyser.Axis(50, 5000, 5000);
    Profile target;
    target.masses.assign(axis.begin() + 2000, axis.begin() + 3000);
    target.intensities.assign(1000, 1);
    // From between samples 9 and 10 to between 4000 and 4001.
    const Profile source = {{0.5 * (axis[9] + axis[10]), 0.5 * (axis[4000] + axis[4001])}, {1, 1}};
    const ProfileGrid grid = GridOf(target, source);
    EXPECT_TRUE(grid.firstIsProvisional);
    ExpectNear(grid.masses, axis.begin() + 9, axis.begin() + 4002, 1e-6);
  }
}

TEST(ProfileGrid, ExtensionsWithoutALawHaveTheStepsOfTheEnds) {
  const Doubles axis = kAnalysers[1].Axis(400, 900, 2000);
  const Profile target = {axis, Doubles(axis.size(), 1)};
  Learned learned(target);
  learned.law.reset();
  const Profile source = {{380, 1000}, {1, 1}};
  const ProfileGrid grid = learned.Grid(target, source);
  EXPECT_LE(grid.masses.front(), 380);
  EXPECT_GT(grid.masses[1], 380);
  EXPECT_GE(grid.masses.back(), 1000);
  EXPECT_LT(grid.masses[grid.masses.size() - 2], 1000);
  const double low = axis[1] - axis[0];
  const double high = axis[1999] - axis[1998];
  // A degree of 5 follows a square root over this range to 4e-6; the two curves, whose mean is taken, differ
  // by the change from one step to the next, 2.5e-4 of a step of 0.2 in sqrt(400).
  EXPECT_NEAR(grid.masses[1] - grid.masses[0], low, 0.0005 * low);
  EXPECT_NEAR(grid.masses.back() - grid.masses[grid.masses.size() - 2], high, 0.0005 * high);
}

TEST(ProfileGrid, AnEndThatIsMetExactlyIsNotProvisional) {
  const Profile target = {{100, 101, 102, 103, 104}, {1, 1, 1, 1, 1}};
  const ProfileGrid exact = GridOf(target, {{98, 106}, {1, 1}});
  EXPECT_EQ(exact.masses, (Doubles{98, 99, 100, 101, 102, 103, 104, 105, 106}));
  EXPECT_FALSE(exact.firstIsProvisional);
  const ProfileGrid between = GridOf(target, {{98.5, 105.5}, {1, 1}});
  EXPECT_EQ(between.masses, exact.masses);
  EXPECT_TRUE(between.firstIsProvisional);
  const ProfileGrid inside = GridOf(target, {{100, 104}, {1, 1}});
  EXPECT_EQ(inside.masses, target.masses);
  EXPECT_FALSE(inside.firstIsProvisional);
}

TEST(ProfileGrid, DownwardExtensionEndsAtZero) {
  // Steps of 1 in sqrt(m): 25, 16, 9, 4, 1, 0.
  const Profile target = {{25, 36, 49, 64, 81, 100}, {1, 1, 1, 1, 1, 1}};
  const ProfileGrid grid = GridOf(target, {{0.5, 30}, {1, 1}});
  EXPECT_EQ(grid.masses, (Doubles{0, 1, 4, 9, 16, 25, 36, 49, 64, 81, 100}));
  EXPECT_TRUE(grid.firstIsProvisional);
  // Constant steps: 3, 1, 0.
  const Profile constant = {{5, 7, 9, 11, 13}, {1, 1, 1, 1, 1}};
  EXPECT_EQ(GridOf(constant, {{0.5, 6}, {1, 1}}).masses, (Doubles{0, 1, 3, 5, 7, 9, 11, 13}));
  // Masses of 0 and below cannot be covered.
  EXPECT_EQ(GridOf(constant, {{-4, 0, 4, 6}, {1, 1, 1, 1}}).masses, (Doubles{3, 5, 7, 9, 11, 13}));
}

// Even steps of 0.001 in 1/m from 1/100: 1/0.009 ... 1/0.001 = 1000 are masses, and none follows.
TEST(ProfileGrid, BeyondTheLastMassOfALawTheSourcesEndIsThePoint) {
  Profile target;
  for (int i = 20; i >= 10; --i) target.masses.push_back(1 / (0.001 * i));
  target.intensities.assign(target.masses.size(), 1);
  const ProfileGrid grid = GridOf(target, {{70, 1500}, {1, 1}});
  ASSERT_EQ(grid.masses.size(), 11U + 9U + 1U);
  EXPECT_NEAR(grid.masses[19], 1000, 1e-6);
  EXPECT_EQ(grid.masses[20], 1500);
}

// Only points without intensity are left out beyond the limit.
void ExpectSparseGridAsDense(const Learned& learned, const Profile& target, const Profile& source) {
  ProfileGrid dense = learned.Grid(target, source);
  ProfileGrid sparse = learned.Grid(target, source, target.masses.size());
  EXPECT_LE(sparse.masses.size(), target.masses.size() + 2 * source.masses.size() + 2);
  ASSERT_LT(sparse.masses.size(), dense.masses.size());
  const int count = static_cast<int>(source.masses.size());
  for (ProfileGrid* const grid : {&dense, &sparse}) {
    DistributeOntoGrid(source.masses.data(), source.intensities.data(), count, grid->masses.data(),
                       grid->intensities.data(), static_cast<int>(grid->masses.size()));
  }
  std::size_t at = 0;
  for (std::size_t i = 0; i < dense.masses.size(); ++i) {
    if (at < sparse.masses.size() && sparse.masses[at] == dense.masses[i]) {
      ASSERT_EQ(sparse.intensities[at], dense.intensities[i]);
      ++at;
    } else {
      ASSERT_EQ(dense.intensities[i], 0) << dense.masses[i];
    }
  }
  EXPECT_EQ(at, sparse.masses.size());
}

// Anywhere, and next to points of the grid, where a division may be off by a step.
Profile SourceAcross(const Doubles& grid, RandomNumbers& random) {
  Profile source;
  double mass = 60;
  while (mass < 1200) {
    const auto next = std::lower_bound(grid.begin(), grid.end(), mass);
    if (next != grid.end() && random.Below(2) == 0) mass = std::nextafter(*next, 2000.0 * random.Below(2));
    source.masses.push_back(mass);
    source.intensities.push_back(random.Below(3));
    mass += 0.01 + 3 * UnitNumber(random);
  }
  return source;
}

TEST(ProfileGrid, PastTheLimitOnlyPointsAroundSourceSamplesAreMade) {
  RandomNumbers random(6);
  for (const Analyser& analyser : kAnalysers) {
    const Profile target = WithGaps(analyser.Axis(100, 900, 5000), 50);
    Learned learned(target);
    for (const bool withLaw : {true, false}) {
      SCOPED_TRACE(testing::Message() << analyser << ' ' << withLaw);
      if (!withLaw) learned.law.reset();
      const Doubles grid = learned.Grid(target, {{60, 1200}, {1, 1}}).masses;
      ExpectSparseGridAsDense(learned, target, SourceAcross(grid, random));
    }
  }
}

TEST(ProfileGrid, AbsurdSourceMassesDoNotMakeItGrow) {
  const Profile sources[] = {
      {{1e-300, 200, 1e300}, {1, 1, 1}},
      {{200, 1e12}, {1, 1}},
      {{1e-12, 5e-12, 200}, {1, 1, 1}},
      {{std::nan(""), 200, kInfinity}, {1, 1, 1}},
      {{-kInfinity, -5, 0, 300, std::nan("")}, {1, 1, 1, 1, 1}},
      {{kInfinity, 500, 3, std::nan(""), -1, 2000}, {1, 1, 1, 1, 1, 1}},
  };
  for (const Analyser& analyser : kAnalysers) {
    SCOPED_TRACE(analyser.name);
    const Profile target = WithGaps(analyser.Axis(100, 900, 5000), 50);
    Learned learned(target);
    for (int round = 0; round < 2; ++round) {
      for (const Profile& source : sources) {
        const ProfileGrid grid = learned.Grid(target, source, 1 << 16);
        EXPECT_LE(grid.masses.size(), std::size_t{1} << 16);
        EXPECT_EQ(std::adjacent_find(grid.masses.begin(), grid.masses.end(), std::greater_equal<>()),
                  grid.masses.end());
        EXPECT_TRUE(std::isfinite(grid.masses.back()));
        EXPECT_GE(grid.masses.front(), 0);
      }
      learned.law.reset();
    }
  }
}

TEST(ProfileGrid, NonsenseTargetsDoNoHarm) {
  const double nan = std::nan("");
  const Profile source = {{50, 100, 5000}, {1, 1, 1}};
  const Profile targets[] = {
      {{nan, nan, nan, nan, nan}, {1, 1, 1, 1, 1}},
      {{5, 4, 3, 2, 1}, {1, 1, 1, 1, 1}},
      {{7, 7, 7, 7, 7}, {1, 1, 1, 1, 1}},
      {{-3, -2, -1, 0, 1, 20}, {1, 1, 1, 1, 1, 1}},
      {{1, 2, 3, kInfinity, kInfinity}, {1, 1, 1, 1, 1}},
      {{100, 101, nan, 103, 110}, {nan, 1, nan, 1, 1}},
  };
  for (const Profile& target : targets) {
    testing::internal::CaptureStdout();
    const ProfileGrid grid = Learned(target).Grid(target, source, 1 << 16);
    testing::internal::GetCapturedStdout();
    EXPECT_LE(grid.masses.size(), std::size_t{1} << 17);
    EXPECT_GE(grid.masses.size(), target.masses.size());
  }
}

}  // namespace
}  // namespace zrml
