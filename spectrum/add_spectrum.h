// Summing of spectra. Each operation adds `source` into `target`, gives the number of points that target then
// has, and leaves target as it was when memory runs out. Source and target may be the same object.
#pragma once

#include "spectrum/mass_spectrum.h"

namespace zrml {

/// Deliberate: when one spectrum is centroided and the other is not, target is emptied and the result is 0.
/// `tolerance` is the peak width of AddCentroidSpectra.
int AddSpectrum(bool absoluteWidth, double tolerance, const CZRMassSpectrum& source, CZRMassSpectrum& target);

/// Merges two peak lists of ascending masses. Peaks of equal mass are summed when `sumEqualMasses` is set;
/// with a positive tolerance (mass units, or parts per million when `absoluteWidth` is false) peaks within it
/// become one, and all optional arrays but the point marks are dropped. Deliberate: target's attributes,
/// release function included, return to those of a new spectrum, except the centroid flag and the polarity.
int AddCentroidSpectra(bool absoluteWidth, double tolerance, const CZRMassSpectrum& source,
                       CZRMassSpectrum& target, bool sumEqualMasses);

/// Adds a profile onto target's sampling grid: point by point where both share one, else by distributing each
/// sample over the two grid points around it (profile_resampling.h). A source of fewer than three points adds
/// nothing; a target of fewer than three takes source's points. Target keeps its attributes.
int AddProfileSpectra(const CZRMassSpectrum& source, CZRMassSpectrum& target);

}  // namespace zrml
