#include "spectrum/peak_sum.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "spectrum/peak_merger.h"

// A merge visits all peaks, the strongest first. A visit depends on, and changes, only the peak, the
// neighbours that it absorbs and the first one on either side that it does not. Most visits therefore change
// nothing: the peak has no neighbour within half the width at its own mass, and its mean over itself is that
// mass. It does not matter when, or whether, these visits are made, as long as no neighbour moves to where it
// would be absorbed. That can only happen
//
// - in the addition that puts a peak beside them, or
// - when a neighbour is visited earlier and moves. It has one mass before its visit and one after it, so it
//   is enough to look at its neighbours then: at those on a side where it absorbed none, since absorbed peaks
//   end every walk until the merge is over.
//
// This leaves visits to peaks that were near each other at the start of the merge or came to be, and to peaks
// that moved alone. Of two peaks near each other, the one visited first absorbs the other, unless that one is
// already absorbed or either has moved. A peak moves when it absorbs another, or alone: the latter at most
// twice, since weighing it again gives the same result except for overflow. So there are only a few visits
// for each point added, however many lists the sum has: absorbed peaks are gone.
//
// As long as all lists ascend and have no negative intensities, each mean lies among the peaks that it is of.
// What is on one side of a gap wider than the reach of the peak above it then never comes near what is on the
// other, so the peaks between two such gaps, a group, have their visits as soon as the next one begins. Their
// order is that of one merge of all, and they are made where memory was just used.

namespace zrml {
namespace {

bool HaveSameBits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

// The order of visits: the strongest first, equal ones in mass order, NaN last.
constexpr auto kIsBefore = [](const auto& a, const auto& b) {
  if (a.intensity > b.intensity) return true;
  if (a.intensity < b.intensity) return false;
  const bool isNan = std::isnan(a.intensity);
  return isNan != std::isnan(b.intensity) ? !isNan : a.place < b.place;
};
constexpr auto kIsAfter = [](const auto& a, const auto& b) { return kIsBefore(b, a); };

// Products and sums of any such values neither overflow nor lose digits.
bool IsOrdinary(double value) { return value >= 1e-100 && value <= 1e100; }

// Whether means over these peaks lie among them, but for a rounding of much less than kRounding. That holds
// for sums with them, too.
bool AreOrdinary(PeakSum::Values masses, PeakSum::Values intensities) {
  constexpr std::size_t kMostPeaks = 1U << 20;
  return masses.size() <= kMostPeaks && std::ranges::is_sorted(masses) &&
         std::ranges::all_of(masses, IsOrdinary) &&
         std::ranges::all_of(intensities, [](double value) { return value == 0 || IsOrdinary(value); });
}

constexpr double kRounding = 1e-9;  // of a mass

}  // namespace

PeakSum::PeakSum(double width, Values masses, Values intensities, bool absoluteWidth)
    : isOrdinary_(AreOrdinary(masses, intensities)) {
  (absoluteWidth ? SetConstantWidth : SetPPMWidth)(width_.widthLaw, width);
  if (absoluteWidth) half_ = PeakWidthAt(width_, 0) * 0.5;
  peaks_.Reserve(masses.size());
  for (std::size_t i = 0; i < masses.size(); ++i)
    peaks_.SetUnsettled(peaks_.InsertBefore(PeakSequence::kNone, masses[i], intensities[i]), true);
}

bool PeakSum::Add(Values masses, Values intensities) {
  hasChanged_ = false;
  isOrdinary_ = isOrdinary_ && AreOrdinary(masses, intensities);
  // Deliberate: a single peak stays unchanged.
  FinishGroup(PeakSequence::kNone, Insert(masses, intensities) > 1);
  // Neighbours that are far from each other in memory take longer than the visits themselves.
  inserted_ += masses.size();
  if (inserted_ > peaks_.Count()) {
    peaks_.Renumber();
    inserted_ = 0;
  }
  return hasChanged_;
}

void PeakSum::CopyTo(double* masses, double* intensities) const {
  for (Index i = peaks_.First(); i != PeakSequence::kNone; i = peaks_.Above(i)) {
    *masses++ = peaks_.Mass(i);
    *intensities++ = peaks_.Intensity(i);
  }
}

double PeakSum::HalfWidth(Index i) const {
  return half_ ? *half_ : PeakWidthAt(width_, peaks_.Mass(i)) * 0.5;
}

// Inserts the list's peaks where MergePoints() puts them; returns the new number of peaks.
std::size_t PeakSum::Insert(Values masses, Values intensities) {
  std::size_t leftOut = 0;
  Index at = peaks_.First();
  for (std::size_t i = 0; i < masses.size(); ++i) {
    at = Advance(at, masses[i]);
    if (at != PeakSequence::kNone && peaks_.Mass(at) == masses[i]) {
      Combine(at, masses[i], intensities[i]);
      at = peaks_.Above(at);
      continue;
    }
    // Several peaks without a mass above 0 act as one: they end walks and are then removed. So is the one
    // kept here, as it is no longer alone.
    const Index below = at != PeakSequence::kNone ? peaks_.Below(at) : peaks_.Last();
    if (!(masses[i] > 0) && below != PeakSequence::kNone && IsAbsorbed(peaks_, below)) {
      if (!peaks_.MarksOf(below).isTouched) Touch(below);
      ++leftOut;
      continue;
    }
    const Index added = peaks_.InsertBefore(at, masses[i], intensities[i]);
    peaks_.MarksOf(added).isNew = true;
    Touch(added);
  }
  if (peaks_.HasUnsettled()) Advance(at, std::numeric_limits<double>::quiet_NaN());
  return peaks_.Count() + leftOut;
}

// The first peak from `at` on whose mass is not below `mass`. Unsettled ones passed on the way are touched.
PeakSum::Index PeakSum::Advance(Index at, double mass) {
  for (;;) {
    at = peaks_.Find(at, mass);
    if (at == PeakSequence::kNone || peaks_.Mass(at) >= mass) return at;
    Touch(at);
    at = peaks_.Above(at);
  }
}

// With a peak of the same mass.
void PeakSum::Combine(Index i, double mass, double intensity) {
  const double oldMass = peaks_.Mass(i);
  const double oldIntensity = peaks_.Intensity(i);
  if (!(oldIntensity > intensity)) peaks_.Mass(i) = mass;  // 0.0 and -0.0 are equal
  peaks_.Intensity(i) = oldIntensity + intensity;
  if (!HaveSameBits(peaks_.Mass(i), oldMass) || !HaveSameBits(peaks_.Intensity(i), oldIntensity))
    hasChanged_ = true;
  // The same peaks as before are near it.
  if (peaks_.IsUnsettled(i) || WouldMoveAlone(peaks_, i)) Touch(i);
}

void PeakSum::Touch(Index i) {
  if (const Index start = StartOfGroupWith(i); start != PeakSequence::kNone) FinishGroup(start, true);
  peaks_.SetUnsettled(i, false);
  peaks_.MarksOf(i).isTouched = true;
  touched_.push_back(i);
}

// The first peak of a group that holds `i` and none of the touched peaks. When there is no gap right below
// `i` or its neighbour, it belongs to their group.
PeakSum::Index PeakSum::StartOfGroupWith(Index i) const {
  if (!isOrdinary_ || touched_.empty()) return PeakSequence::kNone;
  const auto isAfterGap = [&](Index above) {
    const double mass = peaks_.Mass(above);
    return mass - peaks_.Mass(peaks_.Below(above)) > HalfWidth(above) + kRounding * mass;
  };
  if (isAfterGap(i)) return i;
  const Index below = peaks_.Below(i);
  return below != touched_.back() && isAfterGap(below) ? below : PeakSequence::kNone;
}

// Makes the visits to the peaks before `next`, where another group starts.
void PeakSum::FinishGroup(Index next, bool isMerge) {
  groupEnd_ = next;
  if (isMerge) {
    PlanVisits();
    MakeVisits();
  }
  Settle(isMerge);
  touched_.clear();
  visits_.clear();
  visited_.clear();
  absorbed_.clear();
  besideAbsorbed_.clear();
  groupStart_ = next;
}

PeakSum::Index PeakSum::Below(Index i) const {
  return i != groupStart_ ? peaks_.Below(i) : PeakSequence::kNone;
}

PeakSum::Index PeakSum::Above(Index i) const {
  const Index above = peaks_.Above(i);
  return above != groupEnd_ ? above : PeakSequence::kNone;
}

// Visits to the touched peaks and their neighbours, in order.
void PeakSum::PlanVisits() {
  Index last = PeakSequence::kNone;
  const auto planUntouched = [&](Index i) {
    if (i == PeakSequence::kNone || i == last || peaks_.MarksOf(i).isTouched) return;
    Plan(i);
    last = i;
  };
  for (const Index i : touched_) {
    planUntouched(Below(i));
    Plan(i);
    planUntouched(Above(i));
  }
  std::sort(visits_.begin(), visits_.end(), kIsBefore);
}

void PeakSum::Plan(Index i) {
  if (IsAbsorbed(peaks_, i)) {
    absorbed_.push_back(i);
  } else if (WouldChange(peaks_, i, HalfWidth(i))) {
    // Gaps between places leave room for visits that turn out to be needed later.
    const auto place = static_cast<std::int64_t>(visits_.size()) << 32;
    visits_.push_back({peaks_.Intensity(i), place, i});
    peaks_.MarksOf(i).isPlanned = true;
  }
}

void PeakSum::MakeVisits() {
  for (std::size_t next = 0; next < visits_.size() || !laterVisits_.empty();) {
    const bool isLater =
        next == visits_.size() || (!laterVisits_.empty() && kIsBefore(laterVisits_.front(), visits_[next]));
    if (!isLater) {
      Make(visits_[next++]);
      continue;
    }
    const Visit visit = laterVisits_.front();
    std::pop_heap(laterVisits_.begin(), laterVisits_.end(), kIsAfter);
    laterVisits_.pop_back();
    Make(visit);
  }
}

void PeakSum::Make(const Visit& visit) {
  const Index i = visit.peak;
  visited_.push_back(i);
  if (IsAbsorbed(peaks_, i)) return;
  const double mass = peaks_.Mass(i);
  const double intensity = peaks_.Intensity(i);
  const auto [lowest, highest] = VisitPeak(peaks_, i, HalfWidth(i));
  for (Index taken = lowest;; taken = peaks_.Above(taken)) {
    if (taken != i) absorbed_.push_back(taken);
    if (taken == highest) break;
  }
  if (IsAbsorbed(peaks_, i)) {
    absorbed_.push_back(i);
    return;
  }
  if (!HaveSameBits(peaks_.Intensity(i), intensity)) hasChanged_ = true;
  if (HaveSameBits(peaks_.Mass(i), mass)) return;
  hasChanged_ = true;
  if (lowest == i) PlanNeighbour(visit, Below(i), -1);
  if (highest == i) PlanNeighbour(visit, Above(i), 1);
}

// Plans a visit to the peak beside the one that `visit` has moved. If that comes earlier in the order of
// visits, it was left out because nothing was near it.
void PeakSum::PlanNeighbour(const Visit& visit, Index i, int step) {
  if (i == PeakSequence::kNone || IsAbsorbed(peaks_, i) || peaks_.MarksOf(i).isPlanned) return;
  const Visit later{peaks_.Intensity(i), visit.place + step, i};
  if (!kIsBefore(visit, later) || !WouldChange(peaks_, i, HalfWidth(i))) return;
  laterVisits_.push_back(later);
  std::push_heap(laterVisits_.begin(), laterVisits_.end(), kIsAfter);
  peaks_.MarksOf(i).isPlanned = true;
}

// Removes absorbed peaks and looks for those that the next merge would change. Without a merge there is at
// most one peak, and anything added will be its neighbour.
void PeakSum::Settle(bool hasMerged) {
  for (const Index i : touched_) {
    PeakSequence::Marks& marks = peaks_.MarksOf(i);
    marks.isTouched = false;
    if (marks.isNew && (!hasMerged || !IsAbsorbed(peaks_, i))) hasChanged_ = true;
  }
  for (const Index i : absorbed_) {
    if (!peaks_.MarksOf(i).isNew) hasChanged_ = true;
    for (const Index beside : {Below(i), Above(i)}) {
      if (IsThere(peaks_, beside)) besideAbsorbed_.push_back(beside);
    }
    peaks_.Remove(i);
  }
  for (const Index i : touched_) peaks_.MarksOf(i).isNew = false;
  for (const Index i : besideAbsorbed_) Recheck(i);
  for (const Index i : visited_) {
    peaks_.MarksOf(i).isPlanned = false;
    if (IsAbsorbed(peaks_, i)) continue;
    Recheck(i);
    Recheck(Below(i));
    Recheck(Above(i));
  }
}

void PeakSum::Recheck(Index i) {
  if (!IsThere(peaks_, i)) return;
  peaks_.Update(i);
  peaks_.SetUnsettled(i, WouldChange(peaks_, i, HalfWidth(i)));
}

}  // namespace zrml
