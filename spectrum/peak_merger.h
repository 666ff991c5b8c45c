// Merging of a peak with its neighbours.
#pragma once

namespace zrml {

/// Ordered peaks, as these functions take them: `Peaks` has an Index; Mass() and Intensity(), which return
/// references; and Below() and Above(), the neighbours of a peak, or kNone at either end. A peak whose mass
/// is not above 0 counts as absorbed.
template <class Peaks>
bool IsAbsorbed(const Peaks& peaks, typename Peaks::Index i) {
  return !(peaks.Mass(i) > 0);
}

template <class Peaks>
bool IsThere(const Peaks& peaks, typename Peaks::Index i) {
  return i != Peaks::kNone && !IsAbsorbed(peaks, i);
}

/// The lowest and the highest of the peaks merged into one.
template <class Peaks>
struct PeakRange {
  typename Peaks::Index lowest;
  typename Peaks::Index highest;
};

/// Merges a peak with its neighbours, whose masses become 0. `half` is half the width at the peak's mass. The
/// walk to either side ends at the first peak that is absorbed or farther away; peaks visited earlier take
/// part with their current mass.
template <class Peaks>
PeakRange<Peaks> VisitPeak(Peaks& peaks, typename Peaks::Index i, double half) {
  using Index = typename Peaks::Index;
  const double low = peaks.Mass(i) - half;
  const double high = peaks.Mass(i) + half;
  double moment = peaks.Intensity(i) * peaks.Mass(i);
  double intensity = peaks.Intensity(i);
  const auto take = [&](Index j) {
    moment += peaks.Intensity(j) * peaks.Mass(j);
    intensity += peaks.Intensity(j);
    peaks.Mass(j) = 0;
  };
  PeakRange<Peaks> range{i, i};
  for (Index j = peaks.Below(i); IsThere(peaks, j) && peaks.Mass(j) >= low; j = peaks.Below(j))
    take(range.lowest = j);
  for (Index j = peaks.Above(i); IsThere(peaks, j) && peaks.Mass(j) <= high; j = peaks.Above(j))
    take(range.highest = j);
  if (intensity > 0) {
    peaks.Mass(i) = moment / intensity;
    peaks.Intensity(i) = intensity;
  }
  return range;
}

/// Whether a visit moves a peak that has no neighbour to absorb: the mean over a single peak is rounded and
/// may differ from its mass.
template <class Peaks>
bool WouldMoveAlone(const Peaks& peaks, typename Peaks::Index i) {
  const double intensity = peaks.Intensity(i);
  return intensity > 0 && intensity * peaks.Mass(i) / intensity != peaks.Mass(i);
}

/// Whether a visit would absorb a neighbour or move the peak.
template <class Peaks>
bool WouldChange(const Peaks& peaks, typename Peaks::Index i, double half) {
  const double mass = peaks.Mass(i);
  const auto below = peaks.Below(i);
  if (IsThere(peaks, below) && peaks.Mass(below) >= mass - half) return true;
  const auto above = peaks.Above(i);
  if (IsThere(peaks, above) && peaks.Mass(above) <= mass + half) return true;
  return WouldMoveAlone(peaks, i);
}

}  // namespace zrml
