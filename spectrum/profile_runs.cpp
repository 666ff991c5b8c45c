#include "spectrum/profile_runs.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <emmintrin.h>
#include <numeric>
#include <utility>
#include <vector>

namespace zrml {
namespace {

constexpr double kHighestMass = 1e100;
constexpr SampleIndex kStepsAround = 4;
static_assert(kStepsAround <= kReadable);
constexpr double kLongestStep = 1.5;  // of the shortest around

// A bit for each of two samples: whether it is higher than those beside it and they are no higher than
// theirs, or lower and no lower.
int ZigzagsOf(const double* sample) {
  const __m128d beforeLeft = _mm_loadu_pd(sample - 2);
  const __m128d left = _mm_loadu_pd(sample - 1);
  const __m128d middle = _mm_loadu_pd(sample);
  const __m128d right = _mm_loadu_pd(sample + 1);
  const __m128d behindRight = _mm_loadu_pd(sample + 2);
  const __m128d areHigher =
      _mm_and_pd(_mm_and_pd(_mm_cmpgt_pd(middle, left), _mm_cmpgt_pd(middle, right)),
                 _mm_and_pd(_mm_cmple_pd(left, beforeLeft), _mm_cmple_pd(right, behindRight)));
  const __m128d areLower =
      _mm_and_pd(_mm_and_pd(_mm_cmplt_pd(middle, left), _mm_cmplt_pd(middle, right)),
                 _mm_and_pd(_mm_cmpge_pd(left, beforeLeft), _mm_cmpge_pd(right, behindRight)));
  return _mm_movemask_pd(_mm_or_pd(areHigher, areLower));
}

// The intensity of an ion if two samples differ by one standard deviation: counting makes the variance of
// each the product of its intensity and an ion's.
double IonOfDifference(double one, double other) { return (one - other) * (one - other) / (one + other); }

void AddIonsOf(const ProfileRun& run, std::vector<double>& ions) {
  for (SampleIndex i = run.first; i <= run.last; i += 2) {
    const double* sample = run.intensities + i;
    // Behind an odd number of samples comes a zero that is no lower than what is behind it.
    for (int zigzags = ZigzagsOf(sample); zigzags != 0; zigzags >>= 1, ++sample) {
      if (zigzags % 2 == 0) continue;
      ions.push_back(IonOfDifference(sample[0], sample[-1]));
      ions.push_back(IonOfDifference(sample[0], sample[1]));
    }
  }
}

// Of the runs up to the first that ends at `end` or behind it.
void AddIonsOf(ProfileRuns& runs, SampleIndex end, std::vector<double>& ions) {
  while (runs.Passed() < end) {
    if (const double single = runs.PassSingle(end); single > 0) {
      ions.push_back(IonOfDifference(single, 0));
      ions.push_back(ions.back());
      continue;
    }
    const std::optional<ProfileRun> run = runs.Next();
    if (!run) return;
    AddIonsOf(*run, ions);
  }
}

double SumOf(const ProfileRun& run) {
  return std::accumulate(run.intensities + run.first, run.intensities + run.last + 1, 0.0);
}

// Of an even number the upper one of the two in the middle.
double MedianOf(std::vector<double>& values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<SampleIndex>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// Looks at the steps and the samples of a stretch, two at a time. Any may be looked at twice.
class StretchLook {
 public:
  StretchLook(const double* mz, const double* intensities) : mz_(mz), intensities_(intensities) {}

  void AddSteps(SampleIndex i) {
    const __m128d steps = Steps(i);
    shortest_ = _mm_min_pd(steps, shortest_);
    longest_ = _mm_max_pd(steps, longest_);
    areOdd_ = _mm_or_pd(areOdd_, _mm_cmpngt_pd(steps, _mm_setzero_pd()));
  }

  // Of those only the shortest counts.
  void AddStepsAround(SampleIndex i) { shortest_ = _mm_min_pd(Steps(i), shortest_); }

  void AddSamples(SampleIndex i) {
    const __m128d values = _mm_loadu_pd(intensities_ + i);
    const __m128d areCounted = _mm_and_pd(_mm_cmpge_pd(values, _mm_set1_pd(kLowestIntensity)),
                                          _mm_cmple_pd(values, _mm_set1_pd(kHighestIntensity)));
    const __m128d counted = _mm_and_pd(values, areCounted);
    highest_ = _mm_max_pd(highest_, counted);
    areOdd_ = _mm_or_pd(areOdd_, _mm_cmpneq_pd(values, counted));
  }

  // Whether all steps are above 0 and none is long beside the shortest, and all samples count as what they
  // are.
  bool IsPlain() const {
    const double shortest = std::min(shortest_[0], shortest_[1]);
    const double longest = std::max(longest_[0], longest_[1]);
    return _mm_movemask_pd(areOdd_) == 0 && shortest > 0 && longest <= kLongestStep * shortest;
  }

  double Highest() const { return std::max(highest_[0], highest_[1]); }

 private:
  __m128d Steps(SampleIndex i) const { return _mm_loadu_pd(mz_ + i + 1) - _mm_loadu_pd(mz_ + i); }

  const double* mz_;
  const double* intensities_;
  __m128d shortest_ = _mm_set1_pd(kHighestMass);
  __m128d longest_ = _mm_setzero_pd();
  __m128d areOdd_ = _mm_setzero_pd();
  __m128d highest_ = _mm_setzero_pd();
};

}  // namespace

void PaddedSamples::Reserve(std::size_t most) {
  if (samples_ && most <= room_) return;
  room_ = most;
  samples_ = std::make_unique_for_overwrite<double[]>(room_ + 2 * kZeros);
  std::fill_n(samples_.get(), kZeros, 0.0);
}

void PaddedSamples::End(std::size_t count) { std::fill_n(Begin() + count, kZeros, 0.0); }

ProfileRuns::ProfileRuns(std::span<const double> mz, std::span<const double> intensities, double least)
    : mz_(mz.data()),
      intensities_(intensities.data()),
      count_(static_cast<SampleIndex>(mz.size())),
      least_(least),
      stretches_(intensities, least) {}

std::optional<ProfileRun> ProfileRuns::Next() {
  for (;;) {
    if (next_ == stretch_.end && !FindStretch()) return std::nullopt;
    if (next_ == stretch_.begin && LookAtStretch()) {
      next_ = stretch_.end;
      const ProfileRun run{mz_, intensities_, stretch_.begin, stretch_.end - 1, true};
      if (highest_ >= least_ || SumOf(run) >= least_) return run;
      continue;
    }
    while (next_ < stretch_.end && !(CountedIntensity(intensities_[next_]) > 0 && HasPlace(next_))) ++next_;
    if (next_ == stretch_.end) continue;
    const SampleIndex first = std::exchange(next_, EndOfRun(next_));
    const ProfileRun run = Copy({first, next_});
    if (least_ <= 0 || SumOf(run) >= least_) return run;
  }
}

double ProfileRuns::PassSingle(SampleIndex end) {
  if (next_ == stretch_.end) FindStretch();
  const bool isSingle =
      next_ == stretch_.begin && stretch_.Count() == 2 && stretch_.end < end && HasPlace(next_);
  if (!isSingle) return 0;
  next_ = stretch_.end;
  return intensities_[stretch_.begin];
}

void ProfileRuns::SkipTo(SampleIndex sample) {
  if (sample <= next_) return;
  stretches_.SkipTo(sample);
  next_ = stretches_.Passed();
  stretch_ = {next_, next_};
}

// Whether the stretch is one of the many of a few ions, whose runs need no look.
bool ProfileRuns::IsShortAndLow() const {
  constexpr SampleIndex kShort = 4;
  if (stretch_.Count() == 0 || stretch_.Count() > kShort) return false;
  double sum = 0;
  for (SampleIndex i = stretch_.begin; i < stretch_.end; ++i) sum += CountedIntensity(intensities_[i]);
  return !(sum >= least_);
}

bool ProfileRuns::FindStretch() {
  do {
    stretch_ = stretches_.Next();
  } while (IsShortAndLow());
  next_ = stretch_.begin;
  return stretch_.Count() > 0;
}

// Of those above 0, from sample to sample up to the one behind `last`. Their bits are compared, which have
// the order of integers; those of anything else, less 1, come behind them.
double ProfileRuns::ShortestStep(SampleIndex first, SampleIndex last) const {
  auto shortest = std::bit_cast<std::uint64_t>(kHighestMass) - 1;
  const SampleIndex end = std::min(last + 1, count_ - 1);
  for (SampleIndex i = std::max<SampleIndex>(first, 0); i < end; ++i)
    shortest = std::min(shortest, std::bit_cast<std::uint64_t>(Step(i)) - 1);
  return std::bit_cast<double>(shortest + 1);
}

bool ProfileRuns::HasPlace(SampleIndex i) const { return mz_[i] >= 0 && mz_[i] <= kHighestMass; }

// Whether the stretch is plainly one run of samples that can be read where they are: whether no step is long
// beside the shortest in it and around it, so that IsFollowed() is true of all samples but the last. All is
// looked at in one loop, as the end of a loop takes as long as several samples.
bool ProfileRuns::LookAtStretch() {
  constexpr SampleIndex kMost = 64;
  const auto [begin, end] = stretch_;
  if (end - begin < 3 || end - begin > kMost || begin < kReadable || end + kReadable > count_) return false;
  StretchLook look(mz_, intensities_);
  for (SampleIndex i = begin; i < end - 3; i += 2) {
    look.AddSteps(i);
    look.AddSamples(i);
  }
  look.AddSteps(end - 3);
  look.AddSamples(end - 3);
  look.AddSamples(end - 1);
  look.AddSamples(begin - 2);
  for (SampleIndex i = 0; i < kStepsAround; i += 2) {
    look.AddStepsAround(begin - kStepsAround + i);
    look.AddStepsAround(end - 1 + i);
  }
  highest_ = look.Highest();
  return look.IsPlain() && HasPlace(begin) && mz_[end - 1] <= kHighestMass;
}

// Whether the next sample of the stretch is of the same run. Samples are asked for in their order.
bool ProfileRuns::IsFollowed(SampleIndex i) {
  constexpr SampleIndex kBlock = 16;
  if (!(Step(i) > 0 && mz_[i + 1] <= kHighestMass)) return false;
  if (i >= endOfBlock_) {
    endOfBlock_ = i + kBlock;
    shortestStep_ = ShortestStep(i - kStepsAround, endOfBlock_ - 1 + kStepsAround);
  }
  // What is short beside the shortest step of many is short beside that of a few.
  return Step(i) <= kLongestStep * shortestStep_ ||
         Step(i) <= kLongestStep * ShortestStep(i - kStepsAround, i + kStepsAround);
}

// Behind the last sample of the run that begins there.
SampleIndex ProfileRuns::EndOfRun(SampleIndex first) {
  const SampleIndex last = stretch_.end - 1;
  for (SampleIndex i = first;; ++i) {
    // This is what IsFollowed() would find first; here it is done at once for a block.
    const SampleIndex end = std::min(endOfBlock_, last);
    const double longest = kLongestStep * shortestStep_;
    while (i < end && Step(i) > 0 && Step(i) <= longest && mz_[i + 1] <= kHighestMass) ++i;
    if (i == last || !IsFollowed(i)) return i + 1;
  }
}

ProfileRun ProfileRuns::Copy(const SampleRange& part) {
  copied_.Reserve(static_cast<std::size_t>(part.Count()));
  double* const samples = copied_.Begin();
  std::transform(intensities_ + part.begin, intensities_ + part.end, samples, CountedIntensity);
  copied_.End(static_cast<std::size_t>(part.Count()));
  return {mz_ + part.begin, samples, 0, part.Count() - 1, false};
}

double IonIntensityOf(std::span<const double> mz, std::span<const double> intensities) {
  constexpr SampleIndex kBlocks = 16;
  constexpr SampleIndex kBlock = 256;
  constexpr std::size_t kEnough = 512;
  const auto count = static_cast<SampleIndex>(mz.size());
  std::vector<double> ions;
  ProfileRuns part(mz, intensities, 0);
  for (SampleIndex block = 0; block < kBlocks && count > 2 * kBlocks * kBlock; ++block) {
    const SampleIndex begin = count / kBlocks * block;
    part.SkipTo(begin);
    AddIonsOf(part, begin + kBlock, ions);
  }
  if (ions.size() >= kEnough) return MedianOf(ions);
  ions.clear();
  ProfileRuns whole(mz, intensities, 0);
  AddIonsOf(whole, count, ions);
  return MedianOf(ions);
}

}  // namespace zrml
