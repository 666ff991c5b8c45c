// Adding profiles up on one grid.
#pragma once

#include "spectrum/mass_spectrum.h"

namespace zrml::source {

/// Adds a profile, which may be changed, to a sum; both have two points or more, with ascending masses. Where
/// no point of one lies between the points of the other, both are samples of one grid, and the sum has the
/// points of both. Otherwise the profile is distributed over the grid of the sum, by ResampleOnto(), which a
/// sum of three or four points does not have: then the sum is distributed over the profile, and two such
/// profiles have the points of both. What would be lost at m/z 0 keeps its place. Only negative intensities
/// are lost, where they are distributed.
void AddProfile(CZRMassSpectrum& profile, CZRMassSpectrum& sum);

}  // namespace zrml::source
