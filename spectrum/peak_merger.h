// Merging of a peak with its neighbours, in arrays of masses and intensities.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <span>
#include <vector>

#include "spectrum/centroid_merge.h"

namespace zrml {

/// Visits peaks and merges each with its neighbours. Absorbed ones are marked by a mass of 0.
class PeakMerger {
 public:
  /// The arrays have `count` elements. `merged`, when given, has room for one entry a visit.
  PeakMerger(double* masses, double* intensities, int count, std::vector<MergedPeak>* merged = nullptr)
      : masses_(masses), intensities_(intensities), count_(count), merged_(merged) {}

  bool IsAbsorbed(std::int32_t i) const { return !(masses_[i] > 0); }

  /// `half` is half the width at the peak's mass. The walks to either side end at the first point that is
  /// absorbed or outside that; points that were visited before take part with the mass they have by now.
  void Visit(std::int32_t i, double half) {
    const double low = masses_[i] - half;
    const double high = masses_[i] + half;
    moment_ = intensities_[i] * masses_[i];
    intensity_ = intensities_[i];
    int lowest = i;
    while (lowest > 0 && masses_[lowest - 1] > 0 && masses_[lowest - 1] >= low) Take(--lowest);
    int highest = i;
    while (highest + 1 < count_ && masses_[highest + 1] > 0 && masses_[highest + 1] <= high) Take(++highest);
    if (merged_ != nullptr) merged_->push_back({i, lowest, highest});
    if (!(intensity_ > 0)) return;
    masses_[i] = moment_ / intensity_;
    intensities_[i] = intensity_;
  }

  /// The same of a peak that has no neighbours to take, without an entry.
  void VisitAlone(std::int32_t i) {
    const double intensity = intensities_[i];
    if (intensity > 0) masses_[i] = intensity * masses_[i] / intensity;  // not always the mass that it was
  }

  /// Visits as many peaks as `order` has elements, from `first` on, the strongest first, equal ones in their
  /// order, NaN last. What `order` holds does not matter.
  void VisitGroup(std::int32_t first, double half, std::span<std::int32_t> order) {
    std::iota(order.begin(), order.end(), first);
    std::sort(order.begin(), order.end(), [&](std::int32_t a, std::int32_t b) {
      if (intensities_[a] > intensities_[b]) return true;
      if (intensities_[a] < intensities_[b]) return false;
      const bool isNan = std::isnan(intensities_[a]);
      return isNan != std::isnan(intensities_[b]) ? !isNan : a < b;
    });
    for (const std::int32_t i : order) {
      if (!IsAbsorbed(i)) Visit(i, half);
    }
  }

 private:
  void Take(int i) {
    moment_ += intensities_[i] * masses_[i];
    intensity_ += intensities_[i];
    masses_[i] = 0;
  }

  double* masses_;
  double* intensities_;
  int count_;
  std::vector<MergedPeak>* merged_;
  double moment_ = 0;
  double intensity_ = 0;
};

}  // namespace zrml
