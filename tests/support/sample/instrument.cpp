#include "tests/support/sample/instrument.h"

#include <algorithm>
#include <cmath>

namespace zrml::sample {
namespace {

constexpr double kRootStep = 0.0002;  // of sqrt(m/z), between two samples

double Polynomial(double x) {
  double y = 0;
  for (std::size_t i = kCalibration.size(); i-- > 0;) y = y * x + kCalibration[i];
  return y;
}

double Slope(double x) {
  double y = 0;
  for (std::size_t i = kCalibration.size(); i-- > 1;) y = y * x + static_cast<double>(i) * kCalibration[i];
  return y;
}

double MassOfSample(std::size_t sample) {
  const double root = std::sqrt(TofDetector::kLowMass) + static_cast<double>(sample) * kRootStep;
  return root * root;
}

// The first sample at or above a mass.
std::size_t SampleOfMass(double mass) {
  const double samples = (std::sqrt(mass) - std::sqrt(TofDetector::kLowMass)) / kRootStep;
  return samples > 0 ? static_cast<std::size_t>(std::ceil(samples)) : 0;
}

}  // namespace

double CalibratedMass(double raw) {
  const double root = Polynomial(std::sqrt(raw));
  return root * root;
}

double RawMass(double mass) {
  const double wanted = std::sqrt(mass);
  double x = wanted;
  for (int i = 0; i < 6; ++i) x -= (Polynomial(x) - wanted) / Slope(x);
  return x * x;
}

TofDetector::TofDetector() : rawMasses_(SampleOfMass(kHighMass)), expected_(rawMasses_.size()) {
  for (std::size_t i = 0; i < rawMasses_.size(); ++i) rawMasses_[i] = RawMass(MassOfSample(i));
}

void TofDetector::Add(double mass, double height) {
  constexpr double kWidthsPerDeviation = 2.3548200450309493;  // 2 sqrt(2 log 2)
  constexpr double kReach = 4.5;                              // standard deviations
  const double deviation = mass / kResolution / kWidthsPerDeviation;
  const std::size_t end = std::min(SampleOfMass(mass + kReach * deviation), expected_.size());
  for (std::size_t i = SampleOfMass(mass - kReach * deviation); i < end; ++i) {
    const double distance = (MassOfSample(i) - mass) / deviation;
    expected_[i] += height * Exp(-distance * distance / 2);
  }
}

void TofDetector::AddChemicalNoise(int ions, Noise& noise) {
  constexpr double kMassPerNucleon = 1.00048;
  for (int i = 0; i < ions; ++i) {
    const double position = noise.Uniform();  // more of them at low masses
    const double nucleons = std::floor(kLowMass + position * position * (kHighMass - kLowMass));
    const double rarity = noise.Uniform();
    Add(nucleons * kMassPerNucleon + 0.04 * noise.Normal(), 3 + 40 * rarity * rarity * rarity * rarity);
  }
}

std::vector<StoredPoint9> TofDetector::ReadOut(Noise& noise) {
  std::vector<StoredPoint9> points;
  const std::size_t size = expected_.size();
  for (double& sample : expected_) sample = sample > 0 ? Counted(sample, noise) : 0;
  for (std::size_t i = 0; i < size; ++i) {
    const bool besideCounts = (i > 0 && expected_[i - 1] > 0) || (i + 1 < size && expected_[i + 1] > 0);
    if (expected_[i] > 0 || besideCounts) {
      points.push_back(NearestPoint<StoredPoint9>({rawMasses_[i], expected_[i]}));
    }
  }
  std::fill(expected_.begin(), expected_.end(), 0.0);
  return points;
}

}  // namespace zrml::sample
