// Centroids of simulated peaks whose places and areas are known: resolving power 20,000, four samples at half
// height, sampled evenly in the square root of the mass at a random phase, zeros left out.
#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "spectrum/centroiding.h"
#include "tests/spectrum/synthetic_spectra.h"

namespace zrml {
namespace {

constexpr std::size_t kPeaks = 1000;
constexpr double kResolvingPower = 20000;
constexpr double kSamplesAtHalfHeight = 4;
const double kPi = 4 * std::atan(1.0);
const double kDeviation = kSamplesAtHalfHeight / std::sqrt(8 * std::log(2.0));  // in samples

// A Gaussian of deviation 1 and height 1 at 0; with a tail, folded with an exponential of that length, which
// leaves its area as it is.
double Shape(double x, double tail) {
  if (tail == 0) return std::exp(-x * x / 2);
  return std::sqrt(kPi / 2) / tail * std::exp(1 / (2 * tail * tail) - x / tail) *
         std::erfc((1 / tail - x) / std::sqrt(2.0));
}

// Where it is highest: between the places from which it rises to the middle and falls from there.
double ApexOf(double tail) {
  double rising = -1;
  double falling = 3;
  while (falling - rising > 1e-7) {
    const double middle = (rising + falling) / 2;
    (Shape(middle + 1e-8, tail) > Shape(middle - 1e-8, tail) ? rising : falling) = middle;
  }
  return rising;
}

struct Simulated {
  Profile profile;
  std::vector<std::size_t> peakOfSample;
  Doubles apexes;  // their masses
  Doubles heights;
  Doubles areas;  // sums of all samples of a curve that goes on for ever
};

// Peaks with heights over five orders of magnitude; `tails` are their least and greatest tail.
Simulated Simulate(double leastTail, double greatestTail) {
  RandomNumbers random(20);
  Simulated simulated;
  for (std::size_t i = 0; i < kPeaks; ++i) {
    const double centre = 100 + static_cast<double>(i) + UnitNumber(random) / 2;
    const double step = centre / kResolvingPower / kSamplesAtHalfHeight;
    const double rootStep = step / (2 * std::sqrt(centre));
    const double phase = UnitNumber(random);
    const double height = std::pow(10, 5 * UnitNumber(random));
    const double tail = leastTail + (greatestTail - leastTail) * UnitNumber(random);
    for (int k = -9; k <= 30; ++k) {
      const double root = std::sqrt(centre) + (k + phase) * rootStep;
      const double mass = root * root;
      const double intensity = height * Shape((mass - centre) / (step * kDeviation), tail);
      const bool isNoise = intensity < 1e-5 * height;
      if (isNoise && k > 0 && simulated.profile.intensities.back() == 0) break;
      simulated.peakOfSample.push_back(i);
      simulated.profile.masses.push_back(mass);
      simulated.profile.intensities.push_back(isNoise ? 0 : intensity);
    }
    simulated.apexes.push_back(centre + ApexOf(tail) * step * kDeviation);
    simulated.heights.push_back(height);
    simulated.areas.push_back(height * kDeviation * std::sqrt(2 * kPi));
  }
  return simulated;
}

// Parts per million, by size, of the centroids in order; each peak must have just one.
Doubles ErrorsOf(const Simulated& simulated, const Doubles& mz) {
  EXPECT_EQ(mz.size(), simulated.apexes.size());
  if (mz.size() != simulated.apexes.size()) return {kResolvingPower};
  Doubles errors(mz.size());
  for (std::size_t i = 0; i < mz.size(); ++i) errors[i] = std::fabs(mz[i] / simulated.apexes[i] - 1) * 1e6;
  std::sort(errors.begin(), errors.end());
  return errors;
}

Doubles RelativeErrors(const Doubles& values, const Doubles& expected) {
  Doubles errors(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) errors[i] = std::fabs(values[i] / expected[i] - 1);
  return errors;
}

double Greatest(const Doubles& values) { return *std::max_element(values.begin(), values.end()); }

// Of the places, in parts per million.
void ExpectErrors(const Simulated& simulated, double worst, double median, Doubles& intensities) {
  Doubles mz;
  FindCentroids(simulated.profile.masses, simulated.profile.intensities, {}, mz, intensities);
  const Doubles errors = ErrorsOf(simulated, mz);
  EXPECT_LE(errors.back(), worst);
  EXPECT_LE(errors[errors.size() / 2], median);
}

TEST(CentroidAccuracy, Gaussians) {
  const Simulated simulated = Simulate(0, 0);
  Doubles intensities;
  ExpectErrors(simulated, 0.5, 0.1, intensities);
  EXPECT_LE(Greatest(RelativeErrors(intensities, simulated.heights)), 0.01);
  Doubles mz;
  FindCentroids(simulated.profile.masses, simulated.profile.intensities, {.isArea = true}, mz, intensities);
  EXPECT_LE(Greatest(RelativeErrors(intensities, simulated.areas)), 0.01);
}

// The true place is the apex. Tails of up to a deviation make the upper half of a peak at a tenth of its
// height up to half as wide again as the lower.
TEST(CentroidAccuracy, Tails) {
  Doubles intensities;
  ExpectErrors(Simulate(0.1, 1), 3, 1, intensities);
}

// Events of a mean number by multiplying equal numbers until they are less than e^-mean (Knuth), hundreds at
// a time.
double Count(RandomNumbers& random, double mean) {
  double count = 0;
  for (; mean > 0; mean -= 100) {
    const double limit = std::exp(-std::min(mean, 100.0));
    for (double product = UnitNumber(random); product > limit; product *= UnitNumber(random)) ++count;
  }
  return count;
}

Simulated Counted(double ions) {
  RandomNumbers random(4);
  Simulated simulated = Simulate(0, 0);
  for (std::size_t i = 0; i < simulated.profile.masses.size(); ++i) {
    const double part = simulated.profile.intensities[i] / simulated.areas[simulated.peakOfSample[i]];
    simulated.profile.intensities[i] = Count(random, ions * part);
  }
  return simulated;
}

// No estimate from counts is better than the deviation over the root of the ions.
TEST(CentroidAccuracy, CountingNoise) {
  for (const double ions : {100.0, 1000.0}) {
    const Simulated simulated = Counted(ions);
    EXPECT_NEAR(EstimateIonIntensity(simulated.profile.masses, simulated.profile.intensities), 1, 0.25);
    Doubles mz;
    Doubles intensities;
    FindCentroids(simulated.profile.masses, simulated.profile.intensities, {.isArea = true}, mz, intensities);
    EXPECT_NEAR(static_cast<double>(mz.size()), kPeaks, 0.01 * kPeaks) << ions;
    double squares = 0;
    for (const double apex : simulated.apexes) {
      const auto above = std::lower_bound(mz.begin(), mz.end(), apex);
      double error = above == mz.end() ? kResolvingPower : *above - apex;
      if (above != mz.begin()) error = std::min(error, apex - above[-1]);
      squares += std::pow(error / apex * kResolvingPower * kSamplesAtHalfHeight / kDeviation, 2);
    }
    const double error = std::sqrt(squares / kPeaks);
    EXPECT_LE(error, 2.5 / std::sqrt(ions)) << ions;
    double sum = 0;
    for (const double area : intensities) sum += area;
    EXPECT_NEAR(sum / (ions * kPeaks), 1, 0.02) << ions;
  }
}

// A hundred ions every hundred samples, on fifty ions in each sample: the deviation of what lies under a peak
// is a fifth of it. The noise is not taken for a peak of many samples, in which the true ones would be lost.
TEST(CentroidAccuracy, PeaksOnAGround) {
  constexpr std::size_t kSpacing = 100;
  constexpr std::size_t kCount = 200;
  RandomNumbers random(5);
  Profile profile;
  for (std::size_t i = 0; i < kSpacing * kCount; ++i) {
    const double x = (static_cast<double>(i % kSpacing) - 50) / kDeviation;
    profile.masses.push_back(500 + 0.01 * static_cast<double>(i));
    profile.intensities.push_back(Count(random, 50 + 100 / (kDeviation * std::sqrt(2 * kPi)) * Shape(x, 0)));
  }
  Doubles mz;
  Doubles intensities;
  FindCentroids(profile.masses, profile.intensities, {}, mz, intensities);
  std::size_t found = 0;
  for (std::size_t peak = 0; peak < kCount; ++peak) {
    const double centre = 500 + 0.01 * static_cast<double>(kSpacing * peak + 50);
    const auto above = std::lower_bound(mz.begin(), mz.end(), centre - 0.02);
    found += above != mz.end() && *above < centre + 0.02 ? 1 : 0;
  }
  EXPECT_GE(found, kCount / 2);
}

}  // namespace
}  // namespace zrml
