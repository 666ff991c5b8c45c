#include "source/profile_sum.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

#include "spectrum/point_merge.h"
#include "spectrum/profile_resampling.h"

namespace zrml::source {
namespace {

using Masses = std::span<const double>;

constexpr std::size_t kFewestWithGrid = 5;

// Neighbours on one grid may be a little closer to each other than those beside them: its steps grow, and
// masses are rounded.
constexpr double kLeastStep = 0.75;

// Points farther from each other than so many steps are no neighbours.
constexpr double kFarthestNeighbour = 2;

// The points of a grid are restored up to so many, or so many times those that are there: few points far from
// each other would have millions of zeros between them.
constexpr std::size_t kMostRestored = std::size_t{1} << 18;
constexpr std::size_t kMostTimesRestored = 16;

double StepFrom(Masses masses, std::size_t i) {
  return i + 1 < masses.size() ? masses[i + 1] - masses[i] : std::numeric_limits<double>::infinity();
}

double ShorterStepAt(Masses masses, std::size_t i) {
  return i > 0 ? std::min(StepFrom(masses, i - 1), StepFrom(masses, i)) : StepFrom(masses, i);
}

// The shortest step around a point, in either profile: zeros are left out. Point `above` of the other one is
// the first above it.
double StepAround(Masses profile, std::size_t i, Masses other, std::size_t above) {
  double shortest = std::numeric_limits<double>::infinity();
  for (std::size_t k = above > 0 ? above - 1 : 0; k <= above && k < other.size(); ++k)
    shortest = std::min(shortest, ShorterStepAt(other, k));
  return std::max(ShorterStepAt(profile, i), shortest);
}

double DistanceFrom(double mass, Masses masses, std::size_t above) {
  double nearest = std::numeric_limits<double>::infinity();
  if (above > 0) nearest = mass - masses[above - 1];
  if (above < masses.size()) nearest = std::min(nearest, masses[above] - mass);
  return nearest;
}

// Whether no point of the profile is too close to one of the sum for a grid that has both. stepAt(i, above)
// is the step of such a grid.
template <class StepAt>
bool AreOnOneGrid(Masses profile, Masses sum, StepAt stepAt) {
  std::size_t at = 0;
  for (std::size_t i = 0; i < profile.size(); ++i) {
    while (at < sum.size() && sum[at] < profile[i]) ++at;
    const bool isShared = at < sum.size() && sum[at] == profile[i];
    if (!isShared && DistanceFrom(profile[i], sum, at) < kLeastStep * stepAt(i, at)) return false;
  }
  return true;
}

CZRMassSpectrum ProfileOf(Masses masses, std::span<const double> intensities) {
  CZRMassSpectrum profile;
  profile.SetSize(static_cast<int>(masses.size()));
  profile.CopyMasses(masses.data());
  profile.CopyIntensities(intensities.data());
  return profile;
}

// The points from `first` up to, not including, `end`.
CZRMassSpectrum PartOf(const CZRMassSpectrum& spectrum, int first, int end) {
  const auto begin = static_cast<std::size_t>(first);
  const auto count = static_cast<std::size_t>(end - first);
  return ProfileOf(Masses(spectrum.MassVector()).subspan(begin, count),
                   std::span(spectrum.IntensityVector()).subspan(begin, count));
}

// Whether no point of the sum is near the points from `first` up to, not including, `end`.
bool AreAlone(Masses masses, std::size_t first, std::size_t end, Masses sum, const GridSteps& steps) {
  const double low = masses[first] - kFarthestNeighbour * steps.At(masses[first]);
  const double high = masses[end - 1] + kFarthestNeighbour * steps.At(masses[end - 1]);
  const auto above = std::ranges::lower_bound(sum, low);
  return above == sum.end() || *above > high;
}

struct Parts {
  CZRMassSpectrum alone;
  CZRMassSpectrum others;
};

// The stretches of neighbours in a profile that are alone in the sum, and all others.
Parts PartsOf(const CZRMassSpectrum& profile, Masses sum, const GridSteps& steps) {
  const Masses masses = profile.MassVector();
  std::array<std::vector<double>, 2> x;
  std::array<std::vector<double>, 2> y;
  for (std::size_t first = 0, end = 0; first < masses.size(); first = end) {
    end = first + 1;
    while (end < masses.size() && StepFrom(masses, end - 1) <= kFarthestNeighbour * steps.At(masses[end]))
      ++end;
    const std::size_t part = AreAlone(masses, first, end, sum, steps) ? 0 : 1;
    x[part].insert(x[part].end(), masses.begin() + first, masses.begin() + end);
    y[part].insert(y[part].end(), profile.IntensityVector().begin() + first,
                   profile.IntensityVector().begin() + end);
  }
  return {ProfileOf(x[0], y[0]), ProfileOf(x[1], y[1])};
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
  const auto points = static_cast<std::size_t>(profile.GetCount()) + static_cast<std::size_t>(sum.GetCount());
  const std::size_t most = std::max(kMostRestored, kMostTimesRestored * points);
  CZRMassSpectrum grid = sum;
  ResampleOnto(profile, grid, most);
  const int below = CountBelow(grid, profile);
  if (below > 0) {
    grid = sum;
    ResampleOnto(PartOf(profile, below, profile.GetCount()), grid, most);
  }
  if (grid.GetMass(0) == 0) grid.SetIntensity(0, atZero);
  sum = MergePoints(PartOf(profile, 0, below), grid, true);
}

}  // namespace

bool AddOnOneGrid(const CZRMassSpectrum& profile, CZRMassSpectrum& sum) {
  const Masses masses = profile.MassVector();
  const Masses others = sum.MassVector();
  const bool areFew = masses.size() < kFewestWithGrid && others.size() < kFewestWithGrid;
  const auto stepAt = [&](std::size_t i, std::size_t at) { return StepAround(masses, i, others, at); };
  if (!areFew && !AreOnOneGrid(masses, others, stepAt)) return false;
  sum = MergePoints(profile, sum, true);
  return true;
}

void AddProfile(CZRMassSpectrum& profile, const GridSteps& steps, CZRMassSpectrum& sum) {
  const Masses masses = profile.MassVector();
  const auto stepAt = [&](std::size_t i, std::size_t) { return steps.At(masses[i]); };
  if (AddOnOneGrid(profile, sum)) return;
  if (AreOnOneGrid(masses, sum.MassVector(), stepAt)) {
    sum = MergePoints(profile, sum, true);
    return;
  }
  Parts parts = PartsOf(profile, sum.MassVector(), steps);
  if (parts.others.GetCount() > 1) {
    sum = MergePoints(parts.alone, sum, true);
    profile.Swap(parts.others);
  }
  if (static_cast<std::size_t>(sum.GetCount()) < kFewestWithGrid) sum.Swap(profile);
  Distribute(profile, sum);
}

void AddProfile(CZRMassSpectrum& profile, CZRMassSpectrum& sum) {
  if (AddOnOneGrid(profile, sum)) return;
  GridSteps steps;
  steps.Learn(profile.MassVector());
  steps.Learn(sum.MassVector());
  steps.Settle();
  AddProfile(profile, steps, sum);
}

}  // namespace zrml::source
