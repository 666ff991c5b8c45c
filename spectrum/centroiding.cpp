#include "spectrum/centroiding.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "spectrum/apex_fit.h"
#include "spectrum/profile_runs.h"

namespace zrml {
namespace {

constexpr double kDeviationsOfClearValley = 4;
constexpr double kDeviationsOfValley = 1.5;
constexpr SampleIndex kSamplesPerWidth = 6;  // at least, of those at half height, that are left after binning
constexpr SampleIndex kFewestToBin = 2 * kSamplesPerWidth;
constexpr double kTopFloor = 0.05;  // of the rise from the valley to the apex
constexpr double kHalfWidths = 3;   // 3.5 standard deviations of a Gaussian

double Square(double x) { return x * x; }

// What lies between two valleys of a run. A valley that stands out is a sample of the regions on both sides.
struct Region {
  SampleIndex first;
  SampleIndex apex;
  SampleIndex last;
  bool isFirstShared;
  bool isLastShared;
};

Region WholeOf(const ProfileRun& run) { return {run.first, run.first, run.last, false, false}; }

// Cuts a region at the valleys from which the samples on both sides stand out by more than `deviations`.
void CutAtValleys(const ProfileRun& run, const Region& whole, double deviations, double ion,
                  std::vector<Region>& regions) {
  const double limit = Square(deviations) * ion;
  const auto standsOut = [&](SampleIndex high, SampleIndex low) {
    const double difference = run[high] - run[low];
    return difference > 0 && difference * difference > limit * (run[high] + run[low]);
  };
  regions.clear();
  Region region = whole;
  region.apex = whole.first;
  SampleIndex valley = whole.first;
  bool hasFallen = false;
  for (SampleIndex i = whole.first; i <= whole.last; ++i) {
    if (!hasFallen) {
      if (run[i] > run[region.apex]) region.apex = i;
      hasFallen = standsOut(region.apex, i);
      valley = i;
    } else if (run[i] < run[valley]) {
      valley = i;
    } else if (standsOut(i, valley)) {
      regions.push_back({region.first, region.apex, valley, region.isFirstShared, true});
      region = {valley, i, whole.last, true, whole.isLastShared};
      hasFallen = false;
    }
  }
  regions.push_back(region);
}

// One flank of a peak, from its apex to the end of its region.
class Flank {
 public:
  // `direction` is -1 towards lower masses and 1 towards higher ones.
  Flank(const ProfileRun& run, const Region& region, SampleIndex direction)
      : run_(run),
        direction_(direction),
        apex_(region.apex),
        end_(direction < 0 ? region.first : region.last),
        isShared_(direction < 0 ? region.isFirstShared : region.isLastShared) {
    Measure();
  }

  // The last sample that is high enough for the curve through the top.
  SampleIndex EndOfTop() const {
    const double floor = Level(run_[apex_], kTopFloor);
    SampleIndex i = apex_;
    while (i != end_ && run_[i + direction_] >= floor) i += direction_;
    return i;
  }

  double Sum() const { return sum_; }
  // What lies under the flank and half of the apex, and the variance of that estimate over the ion's
  // intensity.
  double Ground() const { return samples_ * ground_; }
  double GroundVariance() const { return Square(samples_) * ground_; }

 private:
  double Valley() const { return isShared_ ? run_[end_] : 0; }
  double Level(double top, double part) const { return Valley() + part * (top - Valley()); }
  double DistanceTo(double mass) const { return static_cast<double>(direction_) * (mass - run_.mz[apex_]); }

  // How far off the smoothed samples have fallen half of the way from the apex to the valley.
  double HalfWidth() const {
    double higher = run_.Smooth(apex_);
    const double level = Level(higher, 0.5);
    for (SampleIndex i = apex_; i != end_; i += direction_) {
      const double lower = run_.Smooth(i + direction_);
      if (lower < level) {
        const double part = (higher - level) / (higher - lower);
        return DistanceTo(run_.mz[i] + part * (run_.mz[i + direction_] - run_.mz[i]));
      }
      higher = lower;
    }
    return std::numeric_limits<double>::infinity();
  }

  // Sums the samples beside the apex, as far as three half widths.
  void Measure() {
    const double reach = kHalfWidths * HalfWidth();
    for (SampleIndex i = apex_; i != end_;) {
      i += direction_;
      if (DistanceTo(run_.mz[i]) > reach) {
        ground_ = run_.Smooth(i);
        return;
      }
      const double share = i == end_ && isShared_ ? 0.5 : 1;
      sum_ += share * run_[i];
      samples_ += share;
    }
    ground_ = Valley();
  }

  const ProfileRun& run_;
  SampleIndex direction_;
  SampleIndex apex_;
  SampleIndex end_;
  bool isShared_;
  double sum_ = 0;
  double samples_ = 0.5;
  double ground_ = 0;
};

// The mean mass, weighted by intensity, and the highest sample.
Apex MeanOf(const ProfileRun& run, SampleIndex apex, SampleIndex first, SampleIndex last) {
  double sum = 0;
  double moment = 0;
  for (SampleIndex i = first; i <= last; ++i) {
    const double weight = run[i] / run[apex];
    sum += weight;
    moment += weight * (run.mz[i] - run.mz[apex]);
  }
  return {run.mz[apex] + moment / sum, run[apex]};
}

Apex FindApex(const ProfileRun& run, SampleIndex apex, SampleIndex first, SampleIndex last) {
  const auto count = static_cast<std::size_t>(last - first + 1);
  const auto curve = FitApex({run.mz + first, count}, {run.intensities + first, count}, run[apex]);
  return curve ? *curve : MeanOf(run, apex, first, last);
}

// The peak of a region: its place and its height, or the sum of its samples. Nothing when the square of its
// signal to noise, times the ion's intensity, is below `limit`.
std::optional<Apex> MeasurePeak(const ProfileRun& run, const Region& region, bool isArea, double limit) {
  const Flank left(run, region, -1);
  const Flank right(run, region, 1);
  const double sum = run[region.apex] + left.Sum() + right.Sum();
  const double net = std::max(sum - left.Ground() - right.Ground(), 0.0);
  const double variance = sum + left.GroundVariance() + right.GroundVariance();
  if (net * net < limit * variance) return std::nullopt;
  Apex peak = FindApex(run, region.apex, left.EndOfTop(), right.EndOfTop());
  if (isArea) peak.height = sum;
  return peak;
}

// The sample that a quarter of the others are below.
double LowerQuartile(const ProfileRun& run, const Region& region) {
  std::vector<double> samples(run.intensities + region.first, run.intensities + region.last + 1);
  const auto quarter = samples.begin() + static_cast<SampleIndex>(samples.size() / 4);
  std::nth_element(samples.begin(), quarter, samples.end());
  return *quarter;
}

// How many samples are at `level` or above, from the apex to `end`, or to where more of them in a row are
// below than were above so far: noise makes shorter gaps.
SampleIndex CountHigh(const ProfileRun& run, SampleIndex apex, SampleIndex end, double level) {
  const SampleIndex direction = end < apex ? -1 : 1;
  SampleIndex high = 0;
  SampleIndex low = 0;
  for (SampleIndex i = apex; i != end && low <= high;) {
    i += direction;
    const bool isHigh = run.Smooth(i) >= level;
    high += isHigh ? 1 : 0;
    low = isHigh ? 0 : low + 1;
  }
  return high;
}

SampleIndex CountHigh(const ProfileRun& run, const Region& region, double level) {
  return 1 + CountHigh(run, region.apex, region.first, level) +
         CountHigh(run, region.apex, region.last, level);
}

// How many samples of a region one bin may hold: the highest peak keeps six or more at half its height above
// the lower quartile.
SampleIndex BinSize(const ProfileRun& run, const Region& region) {
  const double half = 0.5 * run.Smooth(region.apex);
  if (CountHigh(run, region, half) < kFewestToBin) return 1;  // no more are higher, and this is quicker
  const SampleIndex high = CountHigh(run, region, half + 0.5 * LowerQuartile(run, region));
  return std::max<SampleIndex>(high / kSamplesPerWidth, 1);
}

class CentroidFinder {
 public:
  CentroidFinder(const CentroidOptions& options, double ion, std::vector<double>& mz,
                 std::vector<double>& intensities)
      : options_(options), ion_(ion), mz_(mz), intensities_(intensities) {}

  void AddRun(const ProfileRun& run) {
    CutAtValleys(run, WholeOf(run), kDeviationsOfValley, ion_, regions_);
    // Where no valley stands out, none is clear.
    const bool isUnbinned = ion_ <= 0 || run.Count() < kFewestToBin ||
                            (regions_.size() == 1 && BinSize(run, regions_.front()) == 1);
    isUnbinned ? AddPeaks(run, 1) : AddClearRegions(run);
  }

 private:
  void AddClearRegions(const ProfileRun& run) {
    CutAtValleys(run, WholeOf(run), kDeviationsOfClearValley, ion_, clear_);
    for (const Region& region : clear_) {
      const SampleIndex size = BinSize(run, region);
      if (size == 1) {
        AddRegion(run, region, 1);
      } else {
        AddBinned(run, region, size);
      }
    }
  }

  // Means of `size` samples, from the first of the region on; zeros make up the last.
  void AddBinned(const ProfileRun& run, const Region& region, SampleIndex size) {
    const SampleIndex count = (region.last - region.first) / size + 1;
    bins_.Reserve(static_cast<std::size_t>(count));
    binMz_.assign(static_cast<std::size_t>(count), 0);
    double* const intensities = bins_.Begin();
    for (SampleIndex bin = 0; bin < count; ++bin) {
      const SampleIndex begin = region.first + bin * size;
      const SampleIndex end = std::min(begin + size, region.last + 1);
      intensities[bin] = 0;
      for (SampleIndex k = begin; k < end; ++k) {
        binMz_[static_cast<std::size_t>(bin)] += run.mz[k] / static_cast<double>(end - begin);
        intensities[bin] += run[k] / static_cast<double>(size);
      }
    }
    bins_.End(static_cast<std::size_t>(count));
    AddRegion({binMz_.data(), intensities, 0, count - 1},
              {0, 0, count - 1, region.isFirstShared, region.isLastShared}, static_cast<double>(size));
  }

  // `size` is how many samples each one is the mean of.
  void AddRegion(const ProfileRun& run, const Region& region, double size) {
    CutAtValleys(run, region, kDeviationsOfValley, ion_ / size, regions_);
    AddPeaks(run, size);
  }

  // Those of the regions that the run was cut into.
  void AddPeaks(const ProfileRun& run, double size) {
    const double limit = Square(options_.minSignalToNoise) * ion_ / size;
    for (const Region& region : regions_) {
      const std::optional<Apex> peak = MeasurePeak(run, region, options_.isArea, limit);
      if (!peak) continue;
      mz_.push_back(peak->mass);
      intensities_.push_back(options_.isArea ? peak->height * size : peak->height);
    }
  }

  const CentroidOptions& options_;
  double ion_;
  std::vector<double>& mz_;
  std::vector<double>& intensities_;
  std::vector<Region> clear_;
  std::vector<Region> regions_;
  std::vector<double> binMz_;
  PaddedSamples bins_;
};

}  // namespace

double EstimateIonIntensity(std::span<const double> mz, std::span<const double> intensities) {
  return IonIntensityOf(mz, intensities);
}

void FindCentroids(std::span<const double> mz, std::span<const double> intensities,
                   const CentroidOptions& options, std::vector<double>& centroidMz,
                   std::vector<double>& centroidIntensities) {
  centroidMz.clear();
  centroidIntensities.clear();
  const double ion = options.ionIntensity ? *options.ionIntensity : IonIntensityOf(mz, intensities);
  const double least = Square(options.minSignalToNoise) * ion;  // a peak adds up to that or more
  CentroidFinder finder(options, ion, centroidMz, centroidIntensities);
  ProfileRuns runs(mz, intensities);
  while (const std::optional<ProfileRun> run = runs.Next(least)) finder.AddRun(*run);
}

}  // namespace zrml
