// Scans that consist of several sub-scans over the same mass range, one after the other.
#pragma once

#include <optional>

#include "spectrum/peak_sum.h"

namespace zrml::masslynx {

/// Whether some points are not above their predecessor and all of these have exactly the mass of the first
/// point: each starts a sub-scan.
bool HasSubScans(PeakSum::Values masses);

/// The sum of the sub-scans as peak lists; peaks within 0.01 merge. No value where there are no sub-scans.
std::optional<PeakSum> SumSubScans(PeakSum::Values masses, PeakSum::Values intensities);

}  // namespace zrml::masslynx
