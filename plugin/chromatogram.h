// CZRChromatogram: retention times and intensities of a chromatogram or trace. A plain value, owned by its
// creator. Its memory layout is part of the contract with hosts and pinned in chromatogram.cpp.
#pragma once

#include <cstdint>
#include <string>

#include "common/host_types.h"

namespace zrml {

class CZRChromatogram {
 public:
  /// 0 frees everything; otherwise times, intensities and the optional arrays in use get `count` entries, new
  /// ones 0. A negative count means 0.
  void SetSize(int count);
  void SetName(const std::wstring& name) { name_ = HostString(std::wstring_view(name)); }

  /// False and no change when `i` is outside the current size. Minutes.
  bool SetTime(int i, double minutes);
  bool SetIntensity(int i, double intensity);

  void AssignTimes(const HostVector<double>& times) { times_ = times; }
  void AssignIntensities(const HostVector<double>& intensities) { intensities_ = intensities; }

  /// The first entry; null when there are no times.
  double* GetTimes() { return times_.empty() ? nullptr : times_.data(); }
  double* GetIntensities() { return times_.empty() ? nullptr : intensities_.data(); }

  const HostVector<double>& Times() const { return times_; }
  const HostVector<double>& Intensities() const { return intensities_; }
  const HostString& Name() const { return name_; }

 private:
  friend struct ChromatogramLayout;

  HostVector<double> times_;
  HostVector<double> intensities_;
  HostVector<std::uint8_t> pointFlags_;   // in use while hasPointFlags_
  HostVector<std::uint16_t> pointCodes_;  // in use while hasPointCodes_
  bool hasPointFlags_ = false;
  bool hasPointCodes_ = false;
  HostString name_;
};

}  // namespace zrml
