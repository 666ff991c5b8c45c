// The largest peaks of a chromatogram.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace zrml::view {

/// Positions of the apexes of at most `count` peaks, the largest first. Two peaks have a valley between them
/// that is lower than half of either; none is below a hundredth of the largest.
std::vector<std::size_t> LargestPeaks(std::span<const double> intensities, std::size_t count);

}  // namespace zrml::view
