// The model behind the sample acquisition.
#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/sample/chemistry.h"
#include "tests/support/sample/functions.h"
#include "tests/support/sample/instrument.h"
#include "tests/support/sample/portable_math.h"

namespace zrml::sample {
namespace {

TEST(PortableMathTest, ExpMatchesKnownValues) {
  EXPECT_EQ(Exp(0), 1.0);
  EXPECT_NEAR(Exp(1), 2.718281828459045, 1e-14);
  EXPECT_NEAR(Exp(-10) / 4.5399929762484854e-5, 1, 1e-14);
  EXPECT_NEAR(Exp(20) / 485165195.40979027, 1, 1e-14);
}

TEST(PortableMathTest, NoiseHasTheMomentsItClaims) {
  Noise noise(1);
  constexpr int kCount = 100000;
  double sum = 0;
  double squares = 0;
  for (int i = 0; i < kCount; ++i) {
    const double value = noise.Normal();
    sum += value;
    squares += value * value;
  }
  // Standard errors: 1 / sqrt(100000) = 0.003 of the mean, 0.0045 of the variance.
  EXPECT_NEAR(sum / kCount, 0, 0.016);
  EXPECT_NEAR(squares / kCount, 1, 0.023);
}

TEST(ChemistryTest, ProtonatedLeucineEnkephalinIsAt556) {
  const std::vector<MassPeak> peaks = IsotopePattern(LockMassCompound().formula, 1);
  // 28 x 12 + 37 x 1.00782503 + 5 x 14.00307400 + 7 x 15.99491462 + 1.00727647
  EXPECT_NEAR(peaks[0].mass, 556.27658, 1e-5);
  EXPECT_NEAR(peaks[1].mass - peaks[0].mass, 1.0030, 5e-4);
}

TEST(ChemistryTest, SharesFollowTheBinomialLaw) {
  const std::vector<MassPeak> peaks = IsotopePattern({.c = 10}, 1);
  EXPECT_NEAR(peaks[1].intensity / peaks[0].intensity, 10 * 0.0107 / 0.9893, 1e-12);
  EXPECT_NEAR(peaks[1].mass - peaks[0].mass, 1.0033548378, 1e-9);
  EXPECT_EQ(peaks.size(), 3U);  // 0.898, 0.097, 0.005; the next is 0.00013
}

TEST(ChemistryTest, ChargeDividesTheSpacing) {
  const std::vector<MassPeak> peaks = IsotopePattern({.c = 50}, 2);
  EXPECT_NEAR(peaks[0].mass, 300 + 1.00727646688, 1e-9);
  EXPECT_NEAR(peaks[1].mass - peaks[0].mass, 1.0033548378 / 2, 1e-9);
  EXPECT_NEAR(IsotopePattern({.c = 50}, -1)[0].mass, 600 - 1.00727646688, 1e-9);
}

TEST(ChemistryTest, PeaksTail) {
  const Elution elution = {.apex = 2, .width = 0.1};
  EXPECT_EQ(elution.At(2), 1.0);
  EXPECT_NEAR(elution.At(1.9), std::exp(-0.5), 1e-12);
  EXPECT_NEAR(elution.At(2.15), std::exp(-0.5), 1e-12);
  EXPECT_EQ(elution.At(9), 0.0);
  EXPECT_EQ(Elution().At(9), 1.0);
}

TEST(InstrumentTest, RawMassesAreTheInverseOfTheCalibration) {
  for (const double mass : {50.0, 100.0, 556.2766, 1000.0}) {
    EXPECT_NEAR(CalibratedMass(RawMass(mass)) / mass, 1, 1e-14);
    EXPECT_GT(std::abs(RawMass(mass) / mass - 1), 1e-5);  // not the identity
  }
}

TEST(InstrumentTest, CountsStandBetweenTwoZeros) {
  TofDetector detector;
  Noise noise(7);
  detector.Add(400, 1000);
  const std::vector<StoredPoint9> points = detector.ReadOut(noise);
  ASSERT_GT(points.size(), 5U);
  EXPECT_EQ(points.front().mantissa, 0);
  EXPECT_EQ(points.back().mantissa, 0);
  double sum = 0;
  double moment = 0;
  for (const StoredPoint9& point : points) {
    const double raw = std::ldexp(point.massMantissa, static_cast<int>(point.massExponent) - 23);
    sum += IntensityOf(point);
    moment += IntensityOf(point) * CalibratedMass(raw);
  }
  EXPECT_NEAR(moment / sum, 400, 0.002);  // 5 ppm: the counting error of some 5000 ions is 0.6 ppm
  EXPECT_TRUE(detector.ReadOut(noise).empty());
}

TEST(FunctionsTest, FragmentScansSayTheirPrecursorWhereACompoundElutes) {
  const FunctionFiles function = FragmentSpectra();
  ASSERT_EQ(function.scans.size(), 600U);
  // Caffeine, C8H10N4O2, at 1.85 min: 8 x 12 + 10 x 1.00782503 + 4 x 14.00307400 + 2 x 15.99491462
  // + 1.00727647
  const ScanStatisticsRecord& caffeine = function.scans[110].statistics;
  EXPECT_EQ(caffeine.precursorFlags, 1);
  EXPECT_NEAR(caffeine.precursorMass, 195.08765, 2e-5);
  EXPECT_EQ(function.scans[0].statistics.precursorFlags, 0);
}

}  // namespace
}  // namespace zrml::sample
