// The mean spectrum of the scans between two times, less that of a background.
#pragma once

#include <optional>

#include "source/source.h"
#include "tools/zrml/view/answers.h"

namespace zrml::view {

/// Centroids of several scans are one peak within this, in parts per million.
inline constexpr double kAveragePeakWidth = 20;

struct Average {
  Curve curve;
  int first = 0;  ///< scan
  int scans = 0;
  int backgroundScans = 0;
};

/// Both ends belong to the range. Where the background is larger, nothing is left: profiles keep a 0 there,
/// centroids go. Throws a source::Error when there is no scan in a range.
Average AverageScans(source::Source& source, int sample, int function, source::Range minutes,
                     std::optional<source::Range> background, const Work& work);

/// What `curve`, a profile or centroids, has more than `background`: at a point of a profile that is
/// interpolated, for a centroid it is the sum within half of kAveragePeakWidth.
Curve Difference(const Curve& curve, const Curve& background, bool isCentroided);

}  // namespace zrml::view
