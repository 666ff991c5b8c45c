// Scans that hold several sub-scans of the same mass range one behind the other.
#pragma once

#include <optional>

#include "spectrum/peak_sum.h"

namespace zrml::masslynx {

/// When every point that is not above its predecessor has exactly the mass of the first point, and there is
/// such a point, the sum of the sub-scans that start there, peaks within 0.01 becoming one. Otherwise no
/// value.
std::optional<PeakSum> SumSubScans(PeakSum::Values masses, PeakSum::Values intensities);

}  // namespace zrml::masslynx
