// CZRAbsorbanceSpectrum: one absorbance (photodiode-array) spectrum. A plain value, owned by its creator. Its
// memory layout is part of the contract with hosts and pinned in absorbance_spectrum.cpp.
#pragma once

#include <cstdint>

#include "common/host_types.h"

namespace zrml {

class CZRAbsorbanceSpectrum {
 public:
  /// New entries are 0.0; a negative count means 0.
  void SetSize(int count);

  /// Ignored when `i` is outside the current size. Wavelengths in nm.
  void SetWavelength(int i, double nanometres);
  void SetAbsorbance(int i, double absorbance);

  /// The first entries, for bulk filling.
  double* GetWavelengths() { return wavelengths_.data(); }
  double* GetAbsorbances() { return absorbances_.data(); }

  /// Start and end time, minutes.
  void SetTime(double minutes) { startTime_ = endTime_ = minutes; }
  /// First and last scan.
  void SetScan(int scan) { firstScan_ = lastScan_ = scan; }

  const HostVector<double>& Wavelengths() const { return wavelengths_; }
  const HostVector<double>& Absorbances() const { return absorbances_; }
  double StartTime() const { return startTime_; }
  double EndTime() const { return endTime_; }
  int FirstScan() const { return firstScan_; }
  int LastScan() const { return lastScan_; }

 private:
  friend struct AbsorbanceSpectrumLayout;

  HostVector<double> wavelengths_;
  HostVector<double> absorbances_;
  double startTime_ = 0;
  double endTime_ = 0;
  std::int32_t firstScan_ = 0;
  std::int32_t lastScan_ = 0;
};

}  // namespace zrml
