#include "spectrum/peak_sum.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "spectrum/centroid_merge.h"
#include "spectrum/peak_merger.h"

namespace zrml {
namespace {

constexpr std::size_t kVisitsOfACall = 8;
constexpr std::size_t kCopiesOfAVisit = 16;

constexpr double kEndless = std::numeric_limits<double>::infinity();

double HalfOf(double width) {
  PeakMergeContext context;
  SetConstantWidth(context.widthLaw, width);
  return PeakWidthAt(context, 0) * 0.5;
}

bool HaveSameBits(PeakSum::Values a, PeakSum::Values b) {
  if (a.size() != b.size()) return false;
  return a.empty() || std::memcmp(a.data(), b.data(), a.size_bytes()) == 0;
}

// Peaks that are taken one after the other.
struct PeakReader {
  const double* masses;
  const double* intensities;
  std::size_t count;
  std::size_t at = 0;

  bool IsAtEnd() const { return at == count; }
  double Mass() const { return masses[at]; }
  double Intensity() const { return intensities[at]; }
  bool IsWithin(double reach, double mass) const { return at < count && !(masses[at] - mass > reach); }
};

}  // namespace

// Empties them.
void PeakSum::Peaks::MakeRoom(std::size_t most) {
  if (masses.size() < most) {
    masses.resize(most);
    intensities.resize(most);
    unsettled.resize(most);
  }
  count = 0;
  unsettledCount = 0;
}

void PeakSum::Peaks::Append(double mass, double intensity) {
  masses[count] = mass;
  intensities[count++] = intensity;
}

void PeakSum::Peaks::Append(const Peaks& other, std::size_t first, std::size_t last) {
  std::copy(other.masses.data() + first, other.masses.data() + last, masses.data() + count);
  std::copy(other.intensities.data() + first, other.intensities.data() + last, intensities.data() + count);
  count += last - first;
}

void PeakSum::Peaks::MarkUnsettled(std::size_t first) {
  for (; first < count; ++first) unsettled[unsettledCount++] = static_cast<std::uint32_t>(first);
}

// Peaks further apart than the reach stay further apart than half the width, however often they are merged
// with others: the difference is four times the error that StaysOrdinary() allows.
PeakSum::PeakSum(double width, Values masses, Values intensities)
    : half_(HalfOf(width)), reach_(half_ * (1 + 1.0 / 64)) {
  if (!StaysOrdinary(masses, intensities)) reach_ = kEndless;
  sum_.MakeRoom(masses.size());
  for (std::size_t i = 0; i < masses.size(); ++i) sum_.Append(masses[i], intensities[i]);
  sum_.MarkUnsettled(0);
}

bool PeakSum::Add(Values masses, Values intensities) {
  if (reach_ != kEndless && !StaysOrdinary(masses, intensities)) {
    reach_ = kEndless;  // all peaks are one group
    sum_.unsettledCount = 0;
    sum_.MarkUnsettled(0);
  }
  next_.MakeRoom(sum_.count + masses.size());
  work_ += kVisitsOfACall;
  PeakReader sum{sum_.masses.data(), sum_.intensities.data(), sum_.count};
  PeakReader list{masses.data(), intensities.data(), masses.size()};
  // The peak of lower mass, that of the sum when they do not compare. The masses 0.0 and -0.0 are equal.
  const auto takeNext = [&] {
    const bool hasBoth = !sum.IsAtEnd() && !list.IsAtEnd();
    if (hasBoth && sum.Mass() == list.Mass()) {
      const bool isSumStronger = sum.Intensity() > list.Intensity();
      next_.Append(isSumStronger ? sum.Mass() : list.Mass(), sum.Intensity() + list.Intensity());
      ++sum.at;
      ++list.at;
    } else {
      PeakReader& lower = (hasBoth ? sum.Mass() > list.Mass() : sum.IsAtEnd()) ? list : sum;
      next_.Append(lower.Mass(), lower.Intensity());
      ++lower.at;
    }
  };
  for (std::size_t u = 0;;) {
    while (u < sum_.unsettledCount && sum_.unsettled[u] < sum.at) ++u;
    const std::size_t settled = u < sum_.unsettledCount ? sum_.unsettled[u] : sum.count;
    const std::size_t far = list.IsAtEnd() ? settled : FirstNear(sum.at, settled, list.Mass());
    if (far > sum.at) {
      next_.Append(sum_, sum.at, far);
      work_ += (far - sum.at) / kCopiesOfAVisit;
      sum.at = far;
    }
    if (sum.IsAtEnd() && list.IsAtEnd()) break;
    const std::size_t first = next_.count;
    double last = 0;
    do {
      takeNext();
      last = next_.masses[next_.count - 1];
    } while (sum.IsWithin(reach_, last) || list.IsWithin(reach_, last));
    // Deliberate: a peak that is all there is stays as it is.
    if (next_.count == 1 && sum.IsAtEnd() && list.IsAtEnd()) {
      next_.MarkUnsettled(0);
    } else {
      MergeGroup(first);
    }
  }
  std::swap(sum_, next_);
  const Values before = Values(next_.masses).first(next_.count);
  const Values intensitiesBefore = Values(next_.intensities).first(next_.count);
  return !HaveSameBits(Masses(), before) || !HaveSameBits(Intensities(), intensitiesBefore);
}

// Whether a mean of masses, weighted by intensity, lies between those that went into it but for an error that
// is far below the width. A mean of n peaks is off by at most 2 n + 3 roundings; those that lead to a peak of
// the sum are one for each list, and together take no more peaks than were added. Lists without peaks count
// too.
bool PeakSum::StaysOrdinary(Values masses, Values intensities) {
  constexpr double kWeakest = 1e-200;
  constexpr double kStrongest = 1e200;
  points_ += masses.size() + 1;
  if (masses.empty()) return true;
  bool isOrdinary = masses[0] > 0;
  for (std::size_t i = 1; i < masses.size(); ++i) isOrdinary &= masses[i - 1] < masses[i];
  for (const double intensity : intensities) {
    const bool isZero = std::bit_cast<std::uint64_t>(intensity) == 0;
    isOrdinary &= isZero || (intensity >= kWeakest && intensity <= kStrongest);
  }
  heaviest_ = std::max(heaviest_, masses.back());
  const double error = heaviest_ * static_cast<double>(points_) * 4 * std::numeric_limits<double>::epsilon();
  return isOrdinary && error < half_ / 256;
}

// The first of the sum's peaks [first, last), none of them unsettled, that is not further below `mass` than
// the reach.
std::size_t PeakSum::FirstNear(std::size_t first, std::size_t last, double mass) const {
  const auto isFar = [&](double other) { return mass - other > reach_; };
  if (first == last || !isFar(sum_.masses[first])) return first;
  std::size_t step = 1;
  for (; last - first > step && isFar(sum_.masses[first + step]); step *= 2) first += step;
  const double* const masses = sum_.masses.data();
  const double* const end = masses + first + std::min(step, last - first);
  return static_cast<std::size_t>(std::partition_point(masses + first, end, isFar) - masses);
}

// Merges the peaks from `first` on with each other.
void PeakSum::MergeGroup(std::size_t first) {
  if (next_.count - first > 1) {
    MergeSeveral(first);
    return;
  }
  ++work_;
  const double before = next_.masses[first];
  PeakMerger(&next_.masses[first], &next_.intensities[first], 1).VisitAlone(0);
  // Without a branch, which would often be mispredicted.
  next_.unsettled[next_.unsettledCount] = static_cast<std::uint32_t>(first);
  next_.unsettledCount += next_.masses[first] != before ? 1 : 0;
}

void PeakSum::MergeSeveral(std::size_t first) {
  double* const masses = next_.masses.data() + first;
  double* const intensities = next_.intensities.data() + first;
  const std::size_t count = next_.count - first;
  work_ += count * static_cast<std::size_t>(1 + std::bit_width(count));
  if (order_.size() < count) order_.resize(count);
  PeakMerger merger(masses, intensities, static_cast<int>(count));
  merger.VisitGroup(0, half_, std::span(order_).first(count));
  next_.count = first;
  for (std::size_t i = 0; i < count; ++i) {
    if (!merger.IsAbsorbed(static_cast<std::int32_t>(i))) next_.Append(masses[i], intensities[i]);
  }
  next_.MarkUnsettled(first);
}

}  // namespace zrml
