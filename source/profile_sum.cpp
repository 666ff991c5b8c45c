#include "source/profile_sum.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "spectrum/point_merge.h"
#include "spectrum/profile_resampling.h"

namespace zrml::source {
namespace {

using Masses = std::span<const double>;

constexpr int kFewestWithGrid = 5;

// Neighbours on one grid may be a little closer to each other than those beside them: its steps grow, and
// masses are rounded.
constexpr double kLeastStep = 0.75;

double StepFrom(Masses masses, std::size_t i) {
  return i + 1 < masses.size() ? masses[i + 1] - masses[i] : std::numeric_limits<double>::infinity();
}

double ShorterStepAt(Masses masses, std::size_t i) {
  return i > 0 ? std::min(StepFrom(masses, i - 1), StepFrom(masses, i)) : StepFrom(masses, i);
}

// Whether a mass that is not among `masses`, and is below that of point `above`, is too close to one of them
// for a grid that has it, too. Zeros are left out, so the shortest step counts.
bool IsBetweenPoints(double mass, double step, Masses masses, std::size_t above) {
  double nearest = std::numeric_limits<double>::infinity();
  double shortest = nearest;
  for (std::size_t i = above > 0 ? above - 1 : 0; i <= above && i < masses.size(); ++i) {
    nearest = std::min(nearest, std::abs(masses[i] - mass));
    shortest = std::min(shortest, ShorterStepAt(masses, i));
  }
  return nearest < kLeastStep * std::max(step, shortest);
}

bool AreOnOneGrid(Masses profile, Masses sum) {
  std::size_t at = 0;
  for (std::size_t i = 0; i < profile.size(); ++i) {
    while (at < sum.size() && sum[at] < profile[i]) ++at;
    const bool isShared = at < sum.size() && sum[at] == profile[i];
    if (!isShared && IsBetweenPoints(profile[i], ShorterStepAt(profile, i), sum, at)) return false;
  }
  return true;
}

// The points from `first` up to, not including, `end`.
CZRMassSpectrum PartOf(const CZRMassSpectrum& spectrum, int first, int end) {
  CZRMassSpectrum part;
  part.SetSize(end - first);
  part.CopyMasses(spectrum.GetMasses() + first);
  part.CopyIntensities(spectrum.GetIntensities() + first);
  return part;
}

// How many points of a profile would lose intensity on a grid. Its point at 0 carries none of its own, nor of
// what is between it and the next, and it has none below 0.
int CountBelow(const CZRMassSpectrum& grid, const CZRMassSpectrum& profile) {
  const double first = grid.GetMass(grid.GetMass(0) == 0 ? 1 : 0);
  int end = 0;
  for (int i = 0; i < profile.GetCount() && profile.GetMass(i) < first; ++i) {
    if (profile.GetIntensities()[i] > 0) end = i + 1;
  }
  return end;
}

void Distribute(const CZRMassSpectrum& profile, CZRMassSpectrum& sum) {
  const double atZero = sum.GetMass(0) == 0 ? *sum.GetIntensities() : 0;
  CZRMassSpectrum grid = sum;
  ResampleOnto(profile, grid);
  const int below = CountBelow(grid, profile);
  if (below > 0) {
    grid = sum;
    ResampleOnto(PartOf(profile, below, profile.GetCount()), grid);
  }
  if (grid.GetMass(0) == 0) grid.SetIntensity(0, atZero);
  sum = MergePoints(PartOf(profile, 0, below), grid, true);
}

}  // namespace

void AddProfile(CZRMassSpectrum& profile, CZRMassSpectrum& sum) {
  const bool areFew = profile.GetCount() < kFewestWithGrid && sum.GetCount() < kFewestWithGrid;
  if (areFew || AreOnOneGrid(profile.MassVector(), sum.MassVector())) {
    sum = MergePoints(profile, sum, true);
    return;
  }
  if (sum.GetCount() < kFewestWithGrid) sum.Swap(profile);
  Distribute(profile, sum);
}

}  // namespace zrml::source
