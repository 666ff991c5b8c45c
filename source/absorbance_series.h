// The absorbance at a wavelength, or in a band of them, over time.
#pragma once

#include <optional>

#include "source/source.h"

namespace zrml::source {

struct Wavelengths {
  Range range;          ///< nm
  bool isBand = false;  ///< else the ends are equal, and the recorded wavelength that is nearest counts
};

/// Of one wavelength the nearest recorded one counts when it is no farther away, in nm: half of the coarsest
/// steps in which diode arrays are recorded.
inline constexpr double kFarthestWavelength = 2.5;

struct AbsorbanceSeries {
  Chromatogram points;            ///< the mean of the values of each scan; NaN where it has none
  std::optional<Range> used;      ///< the recorded wavelengths that the values are of
  std::optional<Range> recorded;  ///< of all scans
};

/// Of the absorbance spectra of a raw directory or, with `function`, of a function whose m/z are wavelengths.
AbsorbanceSeries ReadAbsorbanceSeries(Source& source, int sample, std::optional<int> function,
                                      const Wavelengths& wavelengths, const Cancel& cancel = {});

}  // namespace zrml::source
