// Scans that hold several sub-scans of the same mass range one behind the other.
#pragma once

#include <cstddef>
#include <optional>

#include "spectrum/mass_spectrum.h"

namespace zrml {

/// Adding a sub-scan visits its own points and those of the sum so far, and costs eight visits besides: in
/// all about twice the points of a scan whose sub-scans are alike, and more where their masses differ and the
/// sum grows. A scan that would need more visits than this, and more than 16 for each of its points, stays as
/// decoded: 2^24 of up to 512 sub-scans, and 2^23, or about a tenth of a second, of more, so that very many
/// short ones after a long one do not hang.
std::size_t MostSubScanVisits(std::size_t points, std::size_t subScans);

/// When every point that is not above its predecessor has exactly the mass of the first point, and there is
/// such a point, sums the sub-scans that start there into the first one, peaks within 0.01 becoming one, and
/// gives true; the spectrum is then centroided and has no other attributes but its polarity, whatever it
/// held. Otherwise false, with the spectrum as it was; also when that takes more than `limit` visits, which
/// is MostSubScanVisits() unless given.
bool SumSubScans(CZRMassSpectrum& spectrum, std::optional<std::size_t> limit = std::nullopt);

}  // namespace zrml
