// Sums of many peak lists.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "spectrum/centroid_merge.h"
#include "spectrum/peak_sequence.h"

namespace zrml {

/// Sums peak lists one by one, with the same bits as AddSpectrum(absoluteWidth, width, list, sum) for each in
/// turn.
/// Each of those additions merges all peaks of the sum again, but most visits to a peak change nothing; this
/// class makes only the visits that may. For any masses and intensities, all additions together take at most
/// about n log n steps for n points.
class PeakSum {
 public:
  using Values = std::span<const double>;

  /// Starts with an unchanged copy of the first list. `width` is above 0, in mass units, or in parts per
  /// million when `absoluteWidth` is false. Masses and intensities are equal in number, here and in Add();
  /// all lists together have fewer than 2^31 points.
  PeakSum(double width, Values masses, Values intensities, bool absoluteWidth = true);

  /// False when this did not change the sum; adding the same list again will not change it either. When
  /// memory runs out, the sum is no longer usable.
  bool Add(Values masses, Values intensities);

  std::size_t Count() const { return peaks_.Count(); }
  /// Each has room for Count() values.
  void CopyTo(double* masses, double* intensities) const;

 private:
  using Index = PeakSequence::Index;

  struct Visit {
    double intensity;
    std::int64_t place;  // in the order of the peaks
    Index peak;
  };

  double HalfWidth(Index i) const;
  std::size_t Insert(Values masses, Values intensities);
  Index Advance(Index at, double mass);
  void Combine(Index i, double mass, double intensity);
  void Touch(Index i);
  Index StartOfGroupWith(Index i) const;
  void FinishGroup(Index next, bool isMerge);
  /// Neighbours in the group, or kNone.
  Index Below(Index i) const;
  Index Above(Index i) const;
  void PlanVisits();
  void Plan(Index i);
  void MakeVisits();
  void Make(const Visit& visit);
  void PlanNeighbour(const Visit& visit, Index i, int step);
  void Settle(bool hasMerged);
  void Recheck(Index i);

  PeakMergeContext width_;
  std::optional<double> half_;  // half the width, where it is the same everywhere
  PeakSequence peaks_;
  std::size_t inserted_ = 0;  // since the peaks were put in order in memory
  bool isOrdinary_;           // all lists so far
  // State of one addition.
  bool hasChanged_ = false;
  // Of a group in it.
  Index groupStart_ = PeakSequence::kNone;
  Index groupEnd_ = PeakSequence::kNone;  // the first peak above it
  std::vector<Index> touched_;            // in the order of the peaks
  std::vector<Visit> visits_;
  std::vector<Visit> laterVisits_;  // a heap
  std::vector<Index> visited_;
  std::vector<Index> absorbed_;
  std::vector<Index> besideAbsorbed_;
};

}  // namespace zrml
