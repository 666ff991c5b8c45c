// The peak of a known ion over time, as it was measured: nothing is corrected.
#pragma once

#include <limits>
#include <span>
#include <vector>

#include "source/source.h"

namespace zrml::source {

struct ReferencePeak {
  double minutes = 0;
  double mz = std::numeric_limits<double>::quiet_NaN();  ///< NaN without a peak
  double intensity = 0;  ///< 0 without a peak; NaN when all points of the scan are lost
};

/// The most intense peak of a spectrum in the window, both ends included, without its time. The peaks of a
/// profile are its centroids (FindCentroids), their intensity the height; of a centroided scan, and of one
/// that may be one or the other, they are its points above 0.
ReferencePeak LargestPeak(bool isCentroided, std::span<const double> mz, std::span<const double> intensities,
                          Range window);

/// That of each scan.
std::vector<ReferencePeak> FollowPeak(Source& source, int sample, int function, Range window,
                                      const Cancel& cancel = {});

}  // namespace zrml::source
