// The peak of a known ion over time, as it was measured: nothing is corrected.
#pragma once

#include <limits>
#include <vector>

#include "source/source.h"

namespace zrml::source {

struct ReferencePeak {
  double minutes = 0;
  double mz = std::numeric_limits<double>::quiet_NaN();  ///< NaN without a peak
  double intensity = 0;  ///< 0 without a peak; NaN when all points of the scan are lost
};

/// For each scan the most intense peak in the window, both ends included. The peaks of a profile are its
/// centroids (FindCentroids), their intensity the height; of a centroided scan they are its points above 0.
std::vector<ReferencePeak> FollowPeak(Source& source, int sample, int function, Range window,
                                      const Cancel& cancel = {});

}  // namespace zrml::source
