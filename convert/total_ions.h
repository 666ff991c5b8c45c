// The total ion chromatogram of a sample: that of its survey functions together.
#pragma once

#include <optional>

#include "source/source.h"

namespace zrml::convert {

/// Chooses the functions of it, asked for one after the other: those with MS1 spectra, of the polarity of the
/// first of them, and acquired or processed as that one is.
class TotalIonFunctions {
 public:
  bool Take(const source::Function& function);

 private:
  std::optional<source::Function> first_;
};

/// Adds the points of one function behind those of others.
void Append(source::Chromatogram& chromatogram, const source::Chromatogram& function);

/// Those without a time last; points of one time stay as they come.
void SortByTime(source::Chromatogram& chromatogram);

}  // namespace zrml::convert
