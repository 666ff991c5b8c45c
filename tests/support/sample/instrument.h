// The simulated time-of-flight instrument: its calibration, its time axis and its resolution.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "tests/support/sample/chemistry.h"
#include "tests/support/sample/portable_math.h"
#include "tests/support/stored_points.h"

namespace zrml::sample {

/// The mass calibration that a reader applies: sqrt(m/z) = c0 + c1 x + ... + c4 x^4 with x = sqrt(raw mass).
inline constexpr std::array<double, 5> kCalibration = {0.00135, 0.99988, 7.5e-6, -1.6e-7, 1.2e-9};

double CalibratedMass(double raw);

/// The inverse: the stored value for an m/z.
double RawMass(double mass);

/// One detector read-out: evenly spaced in flight time, so m/z steps that grow as sqrt(m/z).
class TofDetector {
 public:
  static constexpr double kLowMass = 100;
  static constexpr double kHighMass = 1000;
  static constexpr double kResolution = 10000;  // m/z over full width at half height

  TofDetector();

  /// Adds ions of one m/z; `height` is the expected count of the highest sample.
  void Add(double mass, double height);

  /// Ions of unknown origin, at masses typical of organic ions.
  void AddChemicalNoise(int ions, Noise& noise);

  /// The counts as continuum points with raw masses: runs of zeros are dropped except for the samples next to
  /// counts. The detector is empty afterwards.
  std::vector<StoredPoint9> ReadOut(Noise& noise);

 private:
  std::vector<double> rawMasses_;
  std::vector<double> expected_;
};

}  // namespace zrml::sample
