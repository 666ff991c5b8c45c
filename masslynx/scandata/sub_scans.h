// Scans that hold several sub-scans of the same mass range one behind the other.
#pragma once

#include <optional>

#include "spectrum/peak_sum.h"

namespace zrml::masslynx {

/// Whether every point that is not above its predecessor has exactly the mass of the first point, and there is
/// such a point: a sub-scan starts there.
bool HasSubScans(PeakSum::Values masses);

/// The sum of the sub-scans as peak lists, peaks within 0.01 becoming one. No value where there are none.
std::optional<PeakSum> SumSubScans(PeakSum::Values masses, PeakSum::Values intensities);

}  // namespace zrml::masslynx
