#include "spectrum/scan_law.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "tests/spectrum/synthetic_spectra.h"

namespace zrml {
namespace {

using Constant = CZRMSScanLaw::ConstantDelta;
using TOF = CZRMSScanLaw::TOFDelta;
using FT = CZRMSScanLaw::FTDelta;
using FT2 = CZRMSScanLaw::FT2Delta;
using Sector = CZRMSScanLaw::SectorDelta;

TEST(ScanLaw, TypeCodes) {
  EXPECT_EQ(Constant(1).Type(), 1);
  EXPECT_EQ(TOF(1).Type(), 2);
  EXPECT_EQ(FT(1).Type(), 3);
  EXPECT_EQ(FT2(1).Type(), 4);
  EXPECT_EQ(Sector(1).Type(), 5);
}

TEST(ScanLaw, StepsWorkedByHand) {
  EXPECT_EQ(Constant(0.5).Next(100), 100.5);
  EXPECT_EQ(Constant(0.5).Previous(100), 99.5);
  EXPECT_EQ(TOF(0.5).Next(100), 110.25);     // (10 + 1/2)^2
  EXPECT_EQ(TOF(0.5).Previous(100), 90.25);  // (10 - 1/2)^2
  EXPECT_EQ(FT(0x1p-9).Next(256), 512);      // 1/256 - 1/512 = 1/512
  EXPECT_EQ(FT(0x1p-9).Previous(512), 256);
  EXPECT_EQ(FT2(0x1p-5).Next(256), 1024);  // 1/16 - 1/32 = 1/32
  EXPECT_EQ(FT2(0x1p-5).Previous(1024), 256);
  const double ln2 = 0.69314718055994531;
  EXPECT_NEAR(Sector(ln2).Next(100), 200, 2e-13);
  EXPECT_NEAR(Sector(ln2).Previous(100), 50, 5e-14);
}

TEST(ScanLaw, PreviousOfConstantAndTOFEndsAtZero) {
  EXPECT_EQ(Constant(0.5).Previous(0.5), 0);
  EXPECT_EQ(Constant(0.5).Previous(0.25), 0);
  EXPECT_EQ(TOF(0.5).Previous(0.25), 0);
  EXPECT_EQ(TOF(0.5).Previous(0.125), 0);
  EXPECT_EQ(TOF(0.5).Previous(1), 0.25);
}

template <class Law>
ScanLawHolder Make(double step) {
  return std::make_shared<Law>(step);
}

const struct {
  const char* name;
  ScanLawHolder (*make)(double step);
  double fineStep;  // as in real acquisitions: a few thousandths of a mass unit in the middle of the range
  double coarseStep;
} kLaws[] = {
    {"constant", Make<Constant>, 0.05, 0.05}, {"TOF", Make<TOF>, 1.5e-4, 0.05},
    {"FT", Make<FT>, 4e-9, 0.0001},           {"FT2", Make<FT2>, 1e-7, 0.001},
    {"sector", Make<Sector>, 1e-5, 0.05},
};

TEST(ScanLaw, NextAndPreviousAreInversesFrom50To5000) {
  for (const auto& kind : kLaws) {
    const ScanLawHolder law = kind.make(kind.fineStep);
    for (int tenths = 500; tenths <= 50000; tenths += 7) {
      const double mass = 0.1 * tenths;
      const double next = law->Next(mass);
      const double previous = law->Previous(mass);
      ASSERT_GT(next, mass) << kind.name;
      ASSERT_LT(previous, mass) << kind.name;
      ASSERT_NEAR(law->Previous(next), mass, 1e-14 * mass) << kind.name << " at " << mass;
      ASSERT_NEAR(law->Next(previous), mass, 1e-14 * mass) << kind.name << " at " << mass;
    }
  }
}

TEST(ScanLaw, CoordinatesRiseByTheStepFromPointToPointAndBack) {
  for (const auto& kind : kLaws) {
    const ScanLawHolder law = kind.make(kind.coarseStep);
    const ScanLawCoordinate* const coordinate = CoordinateOfScanLaw(law->Type());
    ASSERT_NE(coordinate, nullptr);
    for (int mass = 50; mass < 5000; mass += 33) {
      const double here = coordinate->fromMass(mass);
      const double next = coordinate->fromMass(law->Next(mass));
      EXPECT_NEAR(next - here, kind.coarseStep, 1e-9 * kind.coarseStep) << kind.name << " at " << mass;
      EXPECT_NEAR(coordinate->toMass(here), mass, 1e-14 * mass) << kind.name;
    }
  }
  EXPECT_EQ(CoordinateOfScanLaw(0), nullptr);
  EXPECT_EQ(CoordinateOfScanLaw(6), nullptr);
}

TEST(ScanLaw, SameWithinTwoPercentExclusiveBelowInclusiveAboveDeliberately) {
  EXPECT_TRUE(Constant(1.0).IsSame(Constant(1.02)));  // 0.98039...
  EXPECT_FALSE(Constant(0.98).IsSame(Constant(1.0)));
  EXPECT_TRUE(Constant(1.02).IsSame(Constant(1.0)));
  EXPECT_FALSE(Constant(1.03).IsSame(Constant(1.0)));
  EXPECT_FALSE(Constant(0.97).IsSame(Constant(1.0)));
  EXPECT_TRUE(TOF(1).IsSame(TOF(1)));
  EXPECT_TRUE(FT(1).IsSame(FT(1)));
  EXPECT_TRUE(FT2(1).IsSame(FT2(1)));
  EXPECT_TRUE(Sector(1).IsSame(Sector(1)));
  EXPECT_FALSE(Sector(1).IsSame(Sector(2)));
}

TEST(ScanLaw, LawsOfDifferentClassesAreNeverTheSame) {
  EXPECT_FALSE(Constant(1).IsSame(TOF(1)));
  EXPECT_FALSE(FT(1).IsSame(FT2(1)));
  EXPECT_FALSE(Sector(1).IsSame(Constant(1)));
}

TEST(ScanLaw, ZeroStepsAreNeverTheSame) {
  EXPECT_FALSE(Constant(0).IsSame(Constant(0)));  // 0 / 0
}

TEST(SameScanLaw, NeedsTwoLaws) {
  const ScanLawHolder none;
  const ScanLawHolder law = std::make_shared<TOF>(0.5);
  const ScanLawHolder other = std::make_shared<TOF>(0.6);
  EXPECT_EQ(SameScanLaw(none, none), 0);
  EXPECT_EQ(SameScanLaw(none, law), 0);
  EXPECT_EQ(SameScanLaw(law, none), 0);
  EXPECT_EQ(SameScanLaw(law, law), 1);
  EXPECT_EQ(SameScanLaw(law, other), 0);
}

TEST(NextMass, OneHigherWhenThereIsNoLawOrItDoesNotAdvance) {
  EXPECT_EQ(NextMass({}, 100), 101.0);
  EXPECT_EQ(NextMass(std::make_shared<Constant>(0), 100), 101.0);
  EXPECT_EQ(NextMass(std::make_shared<Constant>(-1), 100), 101.0);
  EXPECT_EQ(NextMass(std::make_shared<FT>(0x1p-7), 256), 257.0);  // beyond the pole at 128
  EXPECT_EQ(NextMass(std::make_shared<Constant>(0.5), 100), 100.5);
}

TEST(PreviousMass, TheMassItselfWithoutLawOrAtZero) {
  EXPECT_EQ(PreviousMass({}, 100), 100);
  EXPECT_EQ(PreviousMass(std::make_shared<Constant>(0.5), 0.0), 0.0);
  EXPECT_EQ(PreviousMass(std::make_shared<Constant>(0.5), -3), -3);
  EXPECT_EQ(PreviousMass(std::make_shared<Constant>(0.5), 100), 99.5);
}

TEST(PreviousMass, ZeroWhenATenthOrLess) {
  const ScanLawHolder tof = std::make_shared<TOF>(20);
  EXPECT_EQ(PreviousMass(tof, 100), 0.0);  // the root of 100 is below the step
  const ScanLawHolder constant = std::make_shared<Constant>(9);
  EXPECT_EQ(PreviousMass(constant, 10), 0.0);  // 1 is not above 10 / 10
  EXPECT_EQ(PreviousMass(constant, 10.5), 1.5);
}

TEST(EstimateModeValue, FirstOfTheValuesWithMostNeighboursWithinOnePercent) {
  const struct {
    const char* name;
    Doubles values;
    double value;
    int count;
  } cases[] = {
      {"none", {}, 0, 0},
      {"one", {3}, 3, 1},
      {"all apart: the first", {3, 2, 1}, 3, 1},
      {"two of three", {5, 1, 1.005}, 1, 2},
      {"the first of equal counts", {2, 1, 1, 2}, 2, 2},
      {"the one in the middle sees both sides", {1, 1.009, 1.018}, 1.009, 3},
      {"negative values have not even themselves", {-1, -1, 3}, 3, 1},
      {"only negative values", {-1, -1}, 0, 0},
      {"zeros count as equal", {0, 0, 3}, 0, 2},
      {"NaN counts for nothing", {std::nan(""), 3, std::nan("")}, 3, 1},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    double value = -1;
    EXPECT_EQ(EstimateModeValue(test.values.data(), static_cast<int>(test.values.size()), value), test.count);
    EXPECT_EQ(value, test.value);
  }
}

// Intensities without a 0.
Doubles Signal(std::size_t count) {
  Doubles intensities(count);
  for (std::size_t i = 0; i < count; ++i) intensities[i] = 1 + static_cast<double>(i % 7);
  return intensities;
}

double StepOf(const Analyser& analyser, const ScanLawHolder& law) {
  return std::fabs(analyser.coordinate(law->Next(500)) - analyser.coordinate(500));
}

double StepOf(const Analyser& analyser, const Doubles& axis) {
  return std::fabs(analyser.coordinate(axis[1]) - analyser.coordinate(axis[0]));
}

TEST(DetectScanLaw, FindsTheLawOfEachAnalyserWhateverTheNumberOfPoints) {
  for (const Analyser& analyser : kAnalysers) {
    for (const std::size_t count : {5U, 6U, 100U, 100000U}) {
      SCOPED_TRACE(testing::Message() << analyser << ' ' << count);
      const Doubles axis = analyser.Axis(50, 5000, count);
      ScanLawHolder law;
      ASSERT_EQ(DetectScanLaw(law, MakeProfile(axis, Signal(count))), analyser.type);
      ASSERT_NE(law, nullptr);
      EXPECT_EQ(law->Type(), analyser.type);
      const double step = StepOf(analyser, axis);
      EXPECT_NEAR(StepOf(analyser, law), step, 1e-6 * step);
    }
  }
}

TEST(DetectScanLaw, TwoPointsFitEveryLawAndTheConstantOneIsPreferred) {
  for (const Analyser& analyser : kAnalysers) {
    ScanLawHolder law;
    ASSERT_EQ(DetectScanLaw(law, MakeProfile(analyser.Axis(50, 60, 2), {1, 1})), 1);
    EXPECT_NEAR(law->Next(50), 60, 1e-12);
  }
}

TEST(DetectScanLaw, ConstantStepOfATenth) {
  Doubles axis(50);
  for (std::size_t i = 0; i < axis.size(); ++i) axis[i] = 100 + 0.1 * static_cast<double>(i);
  ScanLawHolder law;
  ASSERT_EQ(DetectScanLaw(law, MakeProfile(axis, Signal(50))), 1);
  EXPECT_NEAR(law->Next(200) - 200, 0.1, 1e-12);
}

TEST(DetectScanLaw, GapsOfZeroSamplesDoNotDisturb) {
  for (const Analyser& analyser : kAnalysers) {
    for (const std::size_t gap : {1U, 5U, 100U, 2000U}) {
      SCOPED_TRACE(testing::Message() << analyser << ' ' << gap);
      const Doubles axis = analyser.Axis(50, 5000, 100000);
      ScanLawHolder law;
      ASSERT_EQ(DetectScanLaw(law, WithGaps(axis, gap).Spectrum()), analyser.type);
      const double step = StepOf(analyser, axis);
      EXPECT_NEAR(StepOf(analyser, law), step, 1e-6 * step);
    }
  }
}

TEST(DetectScanLaw, NoiseInTheLastBitsDoesNotDisturb) {
  RandomNumbers random(11);
  for (const Analyser& analyser : kAnalysers) {
    for (const std::size_t count : {5U, 6U, 100U, 100000U}) {
      SCOPED_TRACE(testing::Message() << analyser << ' ' << count);
      const Doubles axis = analyser.Axis(50, 5000, count);
      Doubles noisy = axis;
      for (double& mass : noisy) mass *= 1 + 0x1p-50 * (UnitNumber(random) - 0.5);
      ScanLawHolder law;
      ASSERT_EQ(DetectScanLaw(law, MakeProfile(noisy, Signal(count))), analyser.type);
      const double step = StepOf(analyser, axis);
      EXPECT_NEAR(StepOf(analyser, law), step, 1e-5 * step);
    }
  }
}

// Files hold masses in single precision.
TEST(DetectScanLaw, MassesRoundedToSinglePrecisionSuffice) {
  for (const Analyser& analyser : kAnalysers) {
    SCOPED_TRACE(analyser.name);
    const Doubles axis = analyser.Axis(50, 5000, 50000);
    Doubles rounded = axis;
    for (double& mass : rounded) mass = static_cast<float>(mass);
    ScanLawHolder law;
    ASSERT_EQ(DetectScanLaw(law, MakeProfile(rounded, Signal(rounded.size()))), analyser.type);
    const double step = StepOf(analyser, axis);
    EXPECT_NEAR(StepOf(analyser, law), step, 0.011 * step);
  }
}

TEST(DetectScanLaw, NothingForSpectraWithoutALaw) {
  ScanLawHolder law = std::make_shared<TOF>(1);
  EXPECT_EQ(DetectScanLaw(law, CZRMassSpectrum()), 0);
  EXPECT_EQ(law, nullptr);
  const Doubles axis = kAnalysers[1].Axis(50, 60, 20);
  law = std::make_shared<TOF>(1);
  EXPECT_EQ(DetectScanLaw(law, MakeCentroids(axis, Signal(20))), 0);
  EXPECT_EQ(law, nullptr);
  law = std::make_shared<TOF>(1);
  EXPECT_EQ(DetectScanLaw(law, MakeProfile({100}, {5})), 0);
  EXPECT_EQ(law, nullptr);
  law = std::make_shared<TOF>(1);
  EXPECT_EQ(DetectScanLaw(law, MakeProfile(axis, Doubles(20))), 0);
  EXPECT_EQ(law, nullptr);
}

TEST(DetectScanLaw, AMassListOfAnotherCountIsReadAsFarAsItGoes) {
  CZRMassSpectrum spectrum = MakeProfile({100, 101, 102}, {1, 1, 1});
  spectrum.SetSize(-1);
  ScanLawHolder law;
  EXPECT_EQ(DetectScanLaw(law, spectrum), 0);
}

// Blocks of one pair, each beginning or ending with a zero: no law among all points. The three with intensity
// are 2 apart.
TEST(DetectScanLaw, FallsBackToThePointsWithIntensity) {
  const CZRMassSpectrum spectrum = MakeProfile({100, 101, 102, 103, 104, 105}, {1, 0, 1, 0, 1, 0});
  ScanLawHolder law;
  EXPECT_EQ(FindScanLaw(law, spectrum), 0);
  EXPECT_EQ(law, nullptr);
  ASSERT_EQ(DetectScanLaw(law, spectrum), 1);
  EXPECT_EQ(law->Next(10), 12);
}

// Steps 2, 1, 2, 4 of five points: 2 is the most frequent. With a sixth point only 1, 2, 4 are considered,
// and the first of them is taken.
TEST(FindScanLaw, TheOutermostOfMoreThanFivePointsAreLeftOut) {
  ScanLawHolder law;
  ASSERT_EQ(FindScanLaw(law, MakeProfile({100, 102, 103, 105, 109}, Doubles(5, 1))), 1);
  EXPECT_EQ(law->Next(0), 2);
  ASSERT_EQ(FindScanLaw(law, MakeProfile({100, 102, 103, 105, 109, 111}, Doubles(6, 1))), 1);
  EXPECT_EQ(law->Next(0), 1);
}

// 203 points make 200 pairs in 100 blocks of two, from point 1 on; steps alternate between 1 (a block's first
// pair) and 3 (its second).
TEST(FindScanLaw, ABlockThatStartsAtAZeroGivesItsSecondPair) {
  Doubles masses = {0};
  for (int block = 0; block < 101; ++block) {
    masses.push_back(100 + 4 * block);
    masses.push_back(101 + 4 * block);
  }
  ASSERT_EQ(masses.size(), 203U);
  ScanLawHolder law;
  ASSERT_EQ(FindScanLaw(law, MakeProfile(masses, Doubles(203, 1))), 1);
  EXPECT_EQ(law->Next(0), 1);

  // Every other block starts at a zero, the first one among them: as many steps of 3 as of 1, 3 first.
  Doubles intensities(203, 1);
  for (std::size_t i = 1; i < intensities.size(); i += 4) intensities[i] = 0;
  ASSERT_EQ(FindScanLaw(law, MakeProfile(masses, intensities)), 1);
  EXPECT_EQ(law->Next(0), 3);

  // All blocks start at a zero, and no second pair has intensity at its end either.
  for (std::size_t i = 1; i < intensities.size(); i += 2) intensities[i] = 0;
  EXPECT_EQ(FindScanLaw(law, MakeProfile(masses, intensities)), 0);
}

TEST(FindScanLaw, ATieBetweenLawsGoesInTheOrderOfPreference) {
  // Two pairs that are equal under no law: every law counts 1.
  ScanLawHolder law;
  EXPECT_EQ(FindScanLaw(law, MakeProfile({100, 101, 150}, {1, 1, 1})), 1);
  // Descending masses: no step is positive, every law counts 0; a constant law of step 0 results.
  ASSERT_EQ(FindScanLaw(law, MakeProfile({300, 200, 100}, {1, 1, 1})), 1);
  EXPECT_EQ(law->Next(5), 5);
}

// Two pairs with steps within 1 % under two neighbouring laws of the order: by -0.5 and 0.8 % in sqrt(m) and
// ln m, by 0.5 and -0.8 % in ln m and 1/sqrt(m), by 0.7 and -0.6 % in 1/sqrt(m) and 1/m.
TEST(FindScanLaw, ATieBetweenTwoLawsGoesToTheFirstOfTheOrder) {
  ScanLawHolder law;
  EXPECT_EQ(FindScanLaw(law, MakeProfile({1000, 1025, 1050.5}, {1, 1, 1})), CZRMSScanLaw::kTOF);
  EXPECT_EQ(FindScanLaw(law, MakeProfile({1000, 1025, 1050.75}, {1, 1, 1})), CZRMSScanLaw::kSector);
  EXPECT_EQ(FindScanLaw(law, MakeProfile({1000, 1025, 1051.125}, {1, 1, 1})), CZRMSScanLaw::kFT);
}

// 302 points make 299 pairs from point 1 on, in 150 blocks of two. Every third step is 3, the others are 1:
// blocks of two find 100 of these and 50 of those. Blocks of three would find none but steps of 3.
TEST(FindScanLaw, BlocksHaveAHundredthOfThePairsRoundedDown) {
  Doubles masses = {99};
  for (int i = 1; i < 302; ++i) masses.push_back(masses.back() + (i % 3 == 2 ? 3 : 1));
  ScanLawHolder law;
  ASSERT_EQ(FindScanLaw(law, MakeProfile(masses, Doubles(302, 1))), 1);
  EXPECT_EQ(law->Next(0), 1);
}

// The last of the 150 blocks begins with pair 299, the last but one of the spectrum, and has two pairs like
// all others.
TEST(FindScanLaw, TheLastBlockIsFullAsFarAsTheSpectrumGoes) {
  Doubles masses(302);
  for (std::size_t i = 0; i < masses.size(); ++i) masses[i] = 100 + static_cast<double>(i);
  masses[301] = 403;
  Doubles intensities(302);
  intensities[301] = 1;
  ScanLawHolder law;
  ASSERT_EQ(FindScanLaw(law, MakeProfile(masses, intensities)), 1);
  EXPECT_EQ(law->Next(0), 3);

  // 404 points: 101 blocks of four pairs, the last one from 401 to 404, of which the spectrum has two.
  EXPECT_EQ(FindScanLaw(law, MakeProfile(Doubles(404, 100), Doubles(404))), 0);
}

// The difference of the first two masses is rounded to 8, so the step ends at 9, not at the second mass: 3 -
// (1 + 2^-51) in sqrt(m). The square root of the second mass is 3 + 2^-51.
TEST(FindScanLaw, StepsAreTakenOverTheDifferenceAsItIsStored) {
  ScanLawHolder law;
  ASSERT_EQ(FindScanLaw(law, MakeProfile({1 + 0x1p-50, 9 + 0x1p-49, 25}, {1, 1, 1})), CZRMSScanLaw::kTOF);
  EXPECT_EQ(law->Next(0), 4 - 0x1p-49);  // the step's square
}

TEST(FindScanLaw, NonsenseMassesGiveALawOrNoneButNoHarm) {
  const double nan = std::nan("");
  const double infinity = std::numeric_limits<double>::infinity();
  ScanLawHolder law;
  ASSERT_EQ(FindScanLaw(law, MakeProfile({nan, nan, nan}, {1, 1, 1})), 1);
  EXPECT_EQ(NextMass(law, 10), 11);
  ASSERT_EQ(FindScanLaw(law, MakeProfile({-2, -1, 0, 1, infinity}, {1, 1, 1, 1, 1})), 1);
  EXPECT_EQ(law->Next(10), 11);
}

}  // namespace
}  // namespace zrml
