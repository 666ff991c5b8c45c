#include "plugin/chromatogram.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>

namespace zrml {

struct ChromatogramLayout {
  using C = CZRChromatogram;
  static_assert(std::is_standard_layout_v<C> && sizeof(C) == 136);
  static_assert(offsetof(C, times_) == 0 && offsetof(C, intensities_) == 24);
  static_assert(offsetof(C, pointFlags_) == 48 && offsetof(C, pointCodes_) == 72);
  static_assert(offsetof(C, hasPointFlags_) == 96 && offsetof(C, hasPointCodes_) == 97);
  static_assert(offsetof(C, name_) == 104);
};

namespace {

bool Store(HostVector<double>& values, int i, double value) {
  if (i < 0 || static_cast<std::size_t>(i) >= values.size()) return false;
  values[static_cast<std::size_t>(i)] = value;
  return true;
}

}  // namespace

void CZRChromatogram::SetSize(int count) {
  if (count <= 0) {
    HostVector<double>().swap(times_);
    HostVector<double>().swap(intensities_);
    HostVector<std::uint8_t>().swap(pointFlags_);
    HostVector<std::uint16_t>().swap(pointCodes_);
    return;
  }
  const auto size = static_cast<std::size_t>(count);
  times_.resize(size);
  intensities_.resize(size);
  if (hasPointFlags_) pointFlags_.resize(size);
  if (hasPointCodes_) pointCodes_.resize(size);
}

bool CZRChromatogram::SetTime(int i, double minutes) { return Store(times_, i, minutes); }
bool CZRChromatogram::SetIntensity(int i, double intensity) { return Store(intensities_, i, intensity); }

}  // namespace zrml
