// Summing of spectra. Each operation adds `source` into `target`, gives the number of points that target then
// has, and leaves target as it was when memory runs out. Source and target may be the same object.
//
// Point data have one owner, the spectrum with the release function. Source keeps those that it owns. A
// target that owns its data keeps them and takes none of source's: points that only source has get null, and
// at equal masses target's datum stays. Any other target takes source's as plain pointers that it does not
// own and that become invalid when their owner releases them.
#pragma once

#include "spectrum/mass_spectrum.h"

namespace zrml {

/// Deliberate: when one spectrum is centroided and the other is not, target is emptied and the result is 0.
/// `tolerance` is the peak width of AddCentroidSpectra.
int AddSpectrum(bool absoluteWidth, double tolerance, const CZRMassSpectrum& source, CZRMassSpectrum& target);

/// Merges two peak lists of ascending masses. Peaks of equal mass are summed when `sumEqualMasses` is set;
/// with a positive tolerance (mass units, or parts per million when `absoluteWidth` is false) peaks within
/// half of it on either side of a stronger one merge into that one; all optional arrays except the point
/// marks are dropped, and target's own data released. Deliberate: target's attributes are reset to those of a
/// new spectrum, except the centroid flag and the polarity; the release function stays as long as there are
/// point data.
int AddCentroidSpectra(bool absoluteWidth, double tolerance, const CZRMassSpectrum& source,
                       CZRMassSpectrum& target, bool sumEqualMasses);

/// Adds a profile onto target's sampling grid: point by point where both share a grid, else by splitting each
/// sample between the two grid points around it (profile_resampling.h). A source of fewer than three points
/// adds nothing; a target of fewer than three releases its own data and takes source's points, data included.
/// Target keeps its attributes.
int AddProfileSpectra(const CZRMassSpectrum& source, CZRMassSpectrum& target);

}  // namespace zrml
