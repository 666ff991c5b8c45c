// Scans that hold several sub-scans of the same mass range one behind the other.
#pragma once

#include <cstddef>
#include <optional>

#include "spectrum/mass_spectrum.h"

namespace zrml {

/// The work of a sum (PeakSum::Work()) beyond which a scan of so many points stays as decoded: 2^23, about a
/// tenth of a second, or 64 for each point if that is more, so that many thousands of short sub-scans behind
/// a long one do not hang. Points at its end that are all alike do not count: a cut file lacks them. Ordinary
/// sub-scans take one to six for each point, up to twenty where their points are closer than 0.005; one for
/// every 16 peaks of the sum so far for each sub-scan; eight for each sub-scan.
std::size_t MostSubScanWork(std::size_t points);

/// When every point that is not above its predecessor has exactly the mass of the first point, and there is
/// such a point, sums the sub-scans that start there into the first one, peaks within 0.01 becoming one, and
/// gives true; the spectrum is then centroided and has no other attributes but its polarity, whatever it
/// held. Otherwise false, with the spectrum as it was; also when that takes more work than `limit`, which is
/// MostSubScanWork() unless given.
bool SumSubScans(CZRMassSpectrum& spectrum, std::optional<std::size_t> limit = std::nullopt);

}  // namespace zrml
