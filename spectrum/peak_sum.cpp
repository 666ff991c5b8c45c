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

// Masses and intensities whose mean neither underflows nor overflows.
constexpr double kLightest = 1e-100;
constexpr double kWeakest = 1e-200;
constexpr double kStrongest = 1e200;

bool AreOrdinary(PeakSum::Values intensities) {
  bool areOrdinary = true;
  for (const double intensity : intensities)
    areOrdinary &= intensity == 0 || (intensity >= kWeakest && intensity <= kStrongest);
  return areOrdinary;
}

double HalfOf(double width) {
  PeakMergeContext context;
  SetConstantWidth(context.widthLaw, width);
  return PeakWidthAt(context, 0) * 0.5;
}

template <class T>
void MakeRoom(std::vector<T>& values, std::size_t room) {
  if (values.size() < room) values.resize(room);
}

struct Peak {
  double mass;
  double intensity;
};

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

// The peaks of a sum and of a list, taken as one list, in the order and with the sums of MergePoints().
struct PeakReaders {
  PeakReader sum;
  PeakReader list;

  bool AreAtEnd() const { return sum.IsAtEnd() && list.IsAtEnd(); }

  // The next peak: of lower mass, that of the sum when they do not compare, both when they are equal.
  Peak Take() {
    const bool hasBoth = !sum.IsAtEnd() && !list.IsAtEnd();
    if (hasBoth && sum.Mass() == list.Mass()) {
      const bool isSumStronger = sum.Intensity() > list.Intensity();  // 0.0 and -0.0 are equal
      const Peak peak{isSumStronger ? sum.Mass() : list.Mass(), sum.Intensity() + list.Intensity()};
      ++sum.at;
      ++list.at;
      return peak;
    }
    PeakReader& lower = (hasBoth ? sum.Mass() > list.Mass() : sum.IsAtEnd()) ? list : sum;
    const Peak peak{lower.Mass(), lower.Intensity()};
    ++lower.at;
    return peak;
  }
};

}  // namespace

void PeakSum::Peaks::Reset(std::size_t room) {
  MakeRoom(masses, room);
  MakeRoom(intensities, room);
  MakeRoom(unsettled, room);
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
// with others: either may be off by the error that StaysOrdinary() allows, a quarter of the difference.
PeakSum::PeakSum(double width, Values masses, Values intensities)
    : half_(HalfOf(width)), reach_(half_ * (1 + 1.0 / 64)) {
  if (!StaysOrdinary(masses, intensities)) reach_ = kEndless;
  sum_.Reset(masses.size());
  for (std::size_t i = 0; i < masses.size(); ++i) sum_.Append(masses[i], intensities[i]);
  sum_.MarkUnsettled(0);
}

// A settled peak was alone when it was visited, and the visit did not change it. It stays so until a peak
// comes nearer than the reach, which makes it part of a group that is visited as a whole. Peaks between half
// the width and the reach need not be in one group, but may.
bool PeakSum::Add(Values masses, Values intensities) {
  if (reach_ != kEndless && !StaysOrdinary(masses, intensities)) reach_ = kEndless;
  next_.Reset(sum_.count + masses.size());
  MakeRoom(order_, next_.masses.size());
  work_ += kVisitsOfACall;
  PeakReaders readers{{sum_.masses.data(), sum_.intensities.data(), sum_.count},
                      {masses.data(), intensities.data(), masses.size()}};
  PeakReader& old = readers.sum;
  bool hasChanged = false;
  for (std::size_t u = 0;;) {
    while (u < sum_.unsettledCount && sum_.unsettled[u] < old.at) ++u;
    const std::size_t settledEnd = u < sum_.unsettledCount ? sum_.unsettled[u] : sum_.count;
    const std::size_t farEnd =
        readers.list.IsAtEnd() ? settledEnd : FirstNear(old.at, settledEnd, readers.list.Mass());
    if (farEnd > old.at) {
      next_.Append(sum_, old.at, farEnd);
      work_ += (farEnd - old.at) / kCopiesOfAVisit;
      old.at = farEnd;
    }
    if (readers.AreAtEnd()) break;
    const std::size_t first = next_.count;
    Peak peak;
    do {
      peak = readers.Take();
      next_.Append(peak.mass, peak.intensity);
    } while (old.IsWithin(reach_, peak.mass) || readers.list.IsWithin(reach_, peak.mass));
    // Deliberate: a peak that is all there is stays as it is.
    if (next_.count == 1 && readers.AreAtEnd()) {
      next_.MarkUnsettled(0);
    } else {
      MergeGroup(first);
    }
    hasChanged = hasChanged || !IsAsBefore(first, farEnd, old.at);
  }
  std::swap(sum_, next_);
  return hasChanged;
}

// Whether a mean of masses, weighted by intensity, lies between those that went into it but for an error that
// is far below the width. A mean of n peaks is off by at most 2 n + 3 roundings, n + 1.5 times the epsilon.
// There is at most one for each list that leads to a peak of the sum; what each took in is gone but for one
// peak, so that all together took in no more than the points there were and one for each list.
bool PeakSum::StaysOrdinary(Values masses, Values intensities) {
  points_ += masses.size() + 1;
  if (masses.empty()) return true;
  bool isAscending = masses[0] >= kLightest;
  for (std::size_t i = 1; i < masses.size(); ++i) isAscending &= masses[i - 1] < masses[i];
  heaviest_ = std::max(heaviest_, masses.back());
  const double error = heaviest_ * static_cast<double>(points_) * 4 * std::numeric_limits<double>::epsilon();
  return isAscending && error < half_ / 256 && AreOrdinary(intensities);
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
  // Unsettled when it has changed, in case that it does so once more. Without a branch, which would often be
  // mispredicted.
  next_.unsettled[next_.unsettledCount] = static_cast<std::uint32_t>(first);
  next_.unsettledCount += next_.masses[first] != before ? 1 : 0;
}

void PeakSum::MergeSeveral(std::size_t first) {
  double* const masses = next_.masses.data() + first;
  double* const intensities = next_.intensities.data() + first;
  const std::size_t count = next_.count - first;
  work_ += count * static_cast<std::size_t>(1 + std::bit_width(count));
  PeakMerger merger(masses, intensities, static_cast<int>(count));
  merger.VisitGroup(0, half_, std::span(order_).first(count));
  next_.count = first;
  for (std::size_t i = 0; i < count; ++i) {
    if (!merger.IsAbsorbed(static_cast<std::int32_t>(i))) next_.Append(masses[i], intensities[i]);
  }
  next_.MarkUnsettled(first);
}

// Whether the peaks from `first` on are those that were [oldFirst, oldLast) in the sum, to the bit.
bool PeakSum::IsAsBefore(std::size_t first, std::size_t oldFirst, std::size_t oldLast) const {
  const std::size_t count = next_.count - first;
  if (count != oldLast - oldFirst) return false;
  const std::size_t size = count * sizeof(double);
  return size == 0 || (std::memcmp(&next_.masses[first], &sum_.masses[oldFirst], size) == 0 &&
                       std::memcmp(&next_.intensities[first], &sum_.intensities[oldFirst], size) == 0);
}

}  // namespace zrml
