// Adding profiles up on one grid.
#pragma once

#include "source/grid_steps.h"
#include "spectrum/mass_spectrum.h"

namespace zrml::source {

/// Adds a profile to a sum point by point when the two alone show that both are samples of one grid, or when
/// both have too few points for one; otherwise the result is false. Both have two points or more, with
/// ascending masses, here and below.
bool AddOnOneGrid(const CZRMassSpectrum& profile, CZRMassSpectrum& sum);

/// Adds a profile, which may be changed, to a sum. Where no point of one is closer to a point of the other
/// than the grid's steps allow, both are samples of one grid, and the sum has the points of both. Otherwise
/// stretches of the profile that are far from all points of the sum keep their points, and the rest is
/// distributed over the grid of the sum, by ResampleOnto(), which a sum of three or four points does not
/// have: then the sum is distributed over the profile, and two such profiles have the points of both. What
/// would be lost at m/z 0 keeps its place. Only negative intensities are lost, where they are distributed.
void AddProfile(CZRMassSpectrum& profile, const GridSteps& steps, CZRMassSpectrum& sum);

/// The same with the steps that the two have.
void AddProfile(CZRMassSpectrum& profile, CZRMassSpectrum& sum);

}  // namespace zrml::source
