// The mean spectrum of the scans between two times, less that of a background.
#pragma once

#include <optional>

#include "source/source.h"
#include "source/sum_scans.h"
#include "tools/zrml/view/answers.h"

namespace zrml::view {

struct Average {
  source::ScanSum mean;
  int backgroundScans = 0;
};

/// As `zrml spectrum --mean --minus` has it: both ends belong to a range, centroids within 10 ppm of a
/// stronger one become part of it, and what the background has more is negative. Throws a source::Error when
/// there is no scan in a range.
Average AverageScans(source::Source& source, int sample, int function, source::Range minutes,
                     std::optional<source::Range> background, const Work& work);

}  // namespace zrml::view
