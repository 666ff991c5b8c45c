// Scans that hold several sub-scans of the same mass range one behind the other.
#pragma once

#include <cstddef>

#include "spectrum/mass_spectrum.h"

namespace zrml {

/// Adding a sub-scan visits its own points and those of the sum so far: in all about twice the points of a
/// scan whose sub-scans are alike. A scan that would need more visits than this stays as decoded, so that a
/// damaged one of very many short sub-scans does not hang.
std::size_t MostSubScanVisits(std::size_t points);

/// When every point that is not above its predecessor has exactly the mass of the first point, and there is
/// such a point, sums the sub-scans that start there into the first one, peaks within 0.01 becoming one, and
/// gives true; the spectrum is then centroided and has no other attributes but its polarity, whatever it
/// held. Otherwise false, with the spectrum as it was.
bool SumSubScans(CZRMassSpectrum& spectrum, std::size_t mostVisits);

}  // namespace zrml
