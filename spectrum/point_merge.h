// Merging two point lists of ascending masses into one.
#pragma once

#include "spectrum/mass_spectrum.h"

namespace zrml {

/// The points of both spectra in the order of their masses, target's before source's where neither is lower,
/// with the optional arrays that `target` has (zero for points whose spectrum lacks them). With
/// `sumEqualMasses`, points of exactly the same mass become one of their summed intensity and the optional
/// entries of the stronger one, source's when they are equally strong. The attributes are those of a new
/// spectrum. Point data are copied as pointers, and the result does not own them; of a target that owns its
/// data all of them go in, whichever point is stronger, and none of source's.
CZRMassSpectrum MergePoints(const CZRMassSpectrum& source, const CZRMassSpectrum& target,
                            bool sumEqualMasses);

}  // namespace zrml
