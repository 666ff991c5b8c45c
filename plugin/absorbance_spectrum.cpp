#include "plugin/absorbance_spectrum.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>

namespace zrml {

struct AbsorbanceSpectrumLayout {
  using A = CZRAbsorbanceSpectrum;
  static_assert(std::is_standard_layout_v<A> && sizeof(A) == 72);
  static_assert(offsetof(A, wavelengths_) == 0 && offsetof(A, absorbances_) == 24);
  static_assert(offsetof(A, startTime_) == 48 && offsetof(A, endTime_) == 56);
  static_assert(offsetof(A, firstScan_) == 64 && offsetof(A, lastScan_) == 68);
};

namespace {

void Store(HostVector<double>& values, int i, double value) {
  if (i >= 0 && static_cast<std::size_t>(i) < values.size()) values[static_cast<std::size_t>(i)] = value;
}

}  // namespace

void CZRAbsorbanceSpectrum::SetSize(int count) {
  const auto size = static_cast<std::size_t>(std::max(count, 0));
  wavelengths_.resize(size);
  absorbances_.resize(size);
}

void CZRAbsorbanceSpectrum::SetWavelength(int i, double nanometres) { Store(wavelengths_, i, nanometres); }
void CZRAbsorbanceSpectrum::SetAbsorbance(int i, double absorbance) { Store(absorbances_, i, absorbance); }

}  // namespace zrml
