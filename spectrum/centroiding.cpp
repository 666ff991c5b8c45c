#include "spectrum/centroiding.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <emmintrin.h>
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
constexpr std::size_t kPeaksAtOnce = 64;
constexpr double kHalfWidths = 3;  // 3.5 standard deviations of a Gaussian

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
  const double limit = std::max(Square(deviations) * ion, 0.0);
  const auto standsOut = [limit](double high, double low) {
    return (high - low) * (high - low) > limit * (high + low);
  };
  const double* const samples = run.intensities;
  const SampleIndex last = whole.last;
  regions.clear();
  Region region = whole;
  region.apex = whole.first;
  for (SampleIndex i = whole.first;; ++i) {
    // The loops choose without jumps, which noise would make unpredictable.
    SampleIndex apex = region.apex;
    for (double high = samples[apex]; i <= last; ++i) {
      apex = samples[i] > high ? i : apex;
      high = std::max(high, samples[i]);
      if (standsOut(high, samples[i])) break;
    }
    region.apex = apex;
    if (i > last) break;
    SampleIndex valley = i;
    for (double low = samples[i]; i <= last; ++i) {
      valley = samples[i] < low ? i : valley;
      low = std::min(low, samples[i]);
      if (standsOut(samples[i], low)) break;
    }
    if (i > last) break;
    regions.push_back({region.first, region.apex, valley, region.isFirstShared, true});
    region = {valley, i, last, true, whole.isLastShared};
  }
  regions.push_back(region);
}

__m128d SmoothPair(const double* sample) {
  return 0.25 * _mm_loadu_pd(sample - 1) + 0.5 * _mm_loadu_pd(sample) + 0.25 * _mm_loadu_pd(sample + 1);
}

// How many samples in a row beside the apex pass a test of two at a time, and no more than `most`. Eight are
// looked at before the first jump: one that cannot be foreseen takes longer.
template <SampleIndex kDirection, class Test>
SampleIndex CountInRow(const double* apex, SampleIndex most, Test pass) {
  for (SampleIndex passed = 0; passed < most; passed += kReadable) {
    const double* const samples = kDirection > 0 ? apex + passed + 1 : apex - passed - kReadable;
    unsigned bits = 0;
    for (SampleIndex i = kReadable - 2; i >= 0; i -= 2)
      bits = bits << 2 | static_cast<unsigned>(_mm_movemask_pd(pass(samples + i)));
    const auto byte = static_cast<std::uint8_t>(bits);
    const SampleIndex inRow = kDirection > 0 ? std::countr_one(byte) : std::countl_one(byte);
    if (inRow < kReadable) return std::min(passed + inRow, most);
  }
  return most;
}

// One flank of a peak, from its apex to the end of its region: -1 towards lower masses, 1 towards higher
// ones.
template <SampleIndex kDirection>
class Flank {
 public:
  Flank(const ProfileRun& run, const Region& region)
      : mz_(run.mz + region.apex),
        samples_(run.intensities + region.apex),
        length_(kDirection < 0 ? region.apex - region.first : region.last - region.apex),
        isShared_(kDirection < 0 ? region.isFirstShared : region.isLastShared),
        valley_(isShared_ ? Sample(length_) : 0),
        halfWidth_(HalfWidth()),
        lengthOfTop_(FindEndOfTop()) {}

  // Sums the samples beside the apex, as far as three half widths.
  void Measure() {
    const double reach = kHalfWidths * halfWidth_;
    const SampleIndex unshared = length_ - (isShared_ ? 1 : 0);
    double sum = 0;
    SampleIndex i = 1;
    for (; i <= unshared && !(DistanceTo(Mass(i)) > reach); ++i) sum += Sample(i);
    count_ = static_cast<double>(i) - 0.5;
    const bool hasShared = i == length_ && i > unshared && !(DistanceTo(Mass(i)) > reach);
    sum_ = hasShared ? sum + 0.5 * valley_ : sum;
    count_ += hasShared ? 0.5 : 0;
    ground_ = hasShared || i > length_ || IsEndOfRun(i) ? valley_ : Smooth(i);
  }

  // How many samples beside the apex are high enough for the curve through the top.
  SampleIndex LengthOfTop() const { return lengthOfTop_; }

  double Sum() const { return sum_; }
  // What lies under the flank and half of the apex, and the variance of that estimate over the ion's
  // intensity.
  double Ground() const { return count_ * ground_; }
  double GroundVariance() const { return Square(count_) * ground_; }

 private:
  // So far from the apex.
  double Sample(SampleIndex i) const { return samples_[kDirection * i]; }
  double Smooth(SampleIndex i) const { return SmoothSample(samples_ + kDirection * i); }
  // A zero that was left in the profile, behind the last sample.
  bool IsEndOfRun(SampleIndex i) const { return i == length_ && !isShared_ && Sample(i) == 0; }
  double Mass(SampleIndex i) const { return mz_[kDirection * i]; }
  double DistanceTo(double mass) const { return static_cast<double>(kDirection) * (mass - mz_[0]); }
  double Level(double top, double part) const { return valley_ + part * (top - valley_); }

  // How far off the smoothed samples have fallen half of the way from the apex to the valley.
  double HalfWidth() const {
    const double level = Level(Smooth(0), 0.5);
    const __m128d levels = _mm_set1_pd(level);
    const SampleIndex i = CountInRow<kDirection>(
        samples_, length_, [levels](const double* two) { return _mm_cmpge_pd(SmoothPair(two), levels); });
    if (i == length_) return std::numeric_limits<double>::infinity();
    const double higher = Smooth(i);
    const double part = (higher - level) / (higher - Smooth(i + 1));
    return DistanceTo(Mass(i) + part * (Mass(i + 1) - Mass(i)));
  }

  SampleIndex FindEndOfTop() const {
    const __m128d floors = _mm_set1_pd(Level(Sample(0), kTopFloor));
    return CountInRow<kDirection>(
        samples_, length_, [floors](const double* two) { return _mm_cmpge_pd(_mm_loadu_pd(two), floors); });
  }

  const double* mz_;
  const double* samples_;
  SampleIndex length_;
  bool isShared_;
  double valley_;
  double halfWidth_;
  SampleIndex lengthOfTop_;
  double sum_ = 0;
  double count_ = 0;  // of the samples, with half of the apex
  double ground_ = 0;
};

// A peak whose place is to be found from the samples of its top.
struct Peak {
  const double* mz;
  const double* intensities;
  SampleIndex apex;
  SampleIndex first;
  SampleIndex last;
  double area;

  PeakTop Top() const {
    const auto count = static_cast<std::size_t>(last - first + 1);
    return {{mz + first, count}, {intensities + first, count}, intensities[apex]};
  }

  // The mean mass, weighted by intensity, and the highest sample.
  Apex Mean() const {
    double sum = 0;
    double moment = 0;
    for (SampleIndex i = first; i <= last; ++i) {
      const double weight = intensities[i] / intensities[apex];
      sum += weight;
      moment += weight * (mz[i] - mz[apex]);
    }
    return {mz[apex] + moment / sum, intensities[apex]};
  }
};

// The peak of a region. Nothing when the square of its signal to noise, times the ion's intensity, is below
// `limit`.
std::optional<Peak> FindPeak(const ProfileRun& run, const Region& region, double limit) {
  // Sums wait for half widths, which take a division: both are found before either is used.
  Flank<-1> left(run, region);
  Flank<1> right(run, region);
  left.Measure();
  right.Measure();
  const double sum = run[region.apex] + left.Sum() + right.Sum();
  const double net = std::max(sum - left.Ground() - right.Ground(), 0.0);
  const double variance = sum + left.GroundVariance() + right.GroundVariance();
  if (net * net < limit * variance) return std::nullopt;
  const SampleIndex apex = region.apex;
  return Peak{run.mz, run.intensities, apex, apex - left.LengthOfTop(), apex + right.LengthOfTop(), sum};
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

// No fewer than CountHigh() counts: a gap ends nothing here, and the sample behind may be counted, too.
SampleIndex CountAllHigh(const ProfileRun& run, const Region& region, double level) {
  const __m128d levels = _mm_set1_pd(level);
  __m128i count = _mm_setzero_si128();  // less one for each
  for (SampleIndex i = region.first; i <= region.last; i += 2)
    count = _mm_add_epi64(count, _mm_castpd_si128(_mm_cmpge_pd(SmoothPair(run.intensities + i), levels)));
  return -(count[0] + count[1]);
}

// How many samples of a region one bin may hold: the highest peak keeps six or more at half its height above
// the lower quartile.
SampleIndex BinSize(const ProfileRun& run, const Region& region) {
  const double half = 0.5 * run.Smooth(region.apex);
  // No more are higher than half the height, and these are quicker to count.
  if (CountAllHigh(run, region, half) < kFewestToBin || CountHigh(run, region, half) < kFewestToBin) return 1;
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

  // Finds the places of all peaks that have been added.
  void Finish() {
    for (std::size_t i = 0; i < peaks_.size(); i += 2) {
      const std::size_t other = std::min(i + 1, peaks_.size() - 1);
      const auto curves = FitApexes(peaks_[i].Top(), peaks_[other].Top());
      Add(peaks_[i], curves[0]);
      if (other != i) Add(peaks_[other], curves[1]);
    }
    peaks_.clear();
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
    AddRegion({binMz_.data(), intensities, 0, count - 1, false},
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
      std::optional<Peak> peak = FindPeak(run, region, limit);
      if (!peak) continue;
      peak->area *= size;
      peaks_.push_back(*peak);
    }
    if (!run.isLasting || peaks_.size() >= kPeaksAtOnce) Finish();
  }

  void Add(const Peak& peak, const std::optional<Apex>& curve) {
    const Apex apex = curve ? *curve : peak.Mean();
    mz_.push_back(apex.mass);
    intensities_.push_back(options_.isArea ? peak.area : apex.height);
  }

  const CentroidOptions& options_;
  double ion_;
  std::vector<double>& mz_;
  std::vector<double>& intensities_;
  std::vector<Region> clear_;
  std::vector<Region> regions_;
  std::vector<Peak> peaks_;
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
  ProfileRuns runs(mz, intensities, least);
  while (const std::optional<ProfileRun> run = runs.Next()) finder.AddRun(*run);
  finder.Finish();
}

}  // namespace zrml
