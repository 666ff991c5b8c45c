// Adding up the scans of a function by the spectrum arithmetic.
#pragma once

#include <vector>

#include "source/source.h"

namespace zrml::source {

struct ScanSum {
  std::vector<double> mz;
  std::vector<double> intensities;
};

/// Weaker peaks within half of it on either side of a peak become part of that peak; 0 for equal m/z only.
/// Profiles use a grid instead.
struct PeakWidth {
  double width = 0;    ///< not negative
  bool isPpm = false;  ///< parts per million, else m/z
};

/// The scans from `first` up to, not including, `end`, added up in order, as by AddSpectrum().
/// Throws Error (kWrongArgument) when there are none or when some are centroided and others are not.
ScanSum SumScans(Source& source, int sample, int function, int first, int end, PeakWidth width,
                 const Cancel& cancel = {});

}  // namespace zrml::source
