// Merging two point lists of ascending masses into one.
#pragma once

#include "spectrum/mass_spectrum.h"

namespace zrml {

/// The points of both spectra by mass, target's first where neither mass is lower, with the optional arrays
/// that `target` has (zero for points whose spectrum lacks them). With `sumEqualMasses`, points of exactly
/// the same mass become one with their summed intensity and the optional entries of the stronger one, or
/// source's when both are equally strong. The attributes are those of a new spectrum. Point data are copied
/// as pointers that the result does not own; when target owns its data, all of target's are taken, whichever
/// point is stronger, and none of source's.
CZRMassSpectrum MergePoints(const CZRMassSpectrum& source, const CZRMassSpectrum& target,
                            bool sumEqualMasses);

}  // namespace zrml
