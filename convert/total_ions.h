// The total ion chromatogram of a sample: that of its survey functions together.
#pragma once

#include <optional>

#include "source/source.h"

namespace zrml::convert {

/// Chooses its functions, one call for each: those with MS1 spectra that have the polarity of the first of
/// them with scans and are, like it, acquired or processed.
class TotalIonFunctions {
 public:
  bool Take(const source::Function& function, bool hasScans);

 private:
  std::optional<source::Function> first_;
};

/// Appends the points of one function.
void Append(source::Chromatogram& chromatogram, const source::Chromatogram& function);

/// Points without a time come last; points of equal time stay in order.
void SortByTime(source::Chromatogram& chromatogram);

}  // namespace zrml::convert
