#include "spectrum/profile_runs.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <numeric>
#include <utility>

namespace zrml {
namespace {

constexpr double kLowest = 1e-100;  // far from where squares underflow or overflow
constexpr double kHighest = 1e100;
constexpr SampleIndex kStepsAround = 4;
constexpr double kLongestStep = 1.5;  // of the shortest around

// Whether a sample is higher than those beside it and they are no higher than theirs, or lower and no lower.
bool IsZigzag(const double* sample) {
  const double left = sample[0] - sample[-1];
  const double right = sample[0] - sample[1];
  if (left > 0 && right > 0) return sample[-1] <= sample[-2] && sample[1] <= sample[2];
  return left < 0 && right < 0 && sample[-1] >= sample[-2] && sample[1] >= sample[2];
}

// The intensity of an ion if two samples differ by one standard deviation: counting makes the variance of
// each the product of its intensity and an ion's.
double IonOfDifference(double one, double other) { return (one - other) * (one - other) / (one + other); }

void AddIonsOf(const ProfileRun& run, std::vector<double>& ions) {
  for (SampleIndex i = run.first; i <= run.last; ++i) {
    const double* const sample = run.intensities + i;
    if (!IsZigzag(sample)) continue;
    ions.push_back(IonOfDifference(sample[0], sample[-1]));
    ions.push_back(IonOfDifference(sample[0], sample[1]));
  }
}

// Of the runs up to the first that ends at `end` or behind it.
void AddIonsOf(ProfileRuns& runs, SampleIndex end, std::vector<double>& ions) {
  while (runs.Passed() < end) {
    const std::optional<ProfileRun> run = runs.Next(0);
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

}  // namespace

void PaddedSamples::Reserve(std::size_t most) {
  if (samples_ && most <= room_) return;
  room_ = most;
  samples_ = std::make_unique_for_overwrite<double[]>(room_ + 2 * kZeros);
  std::fill_n(samples_.get(), kZeros, 0.0);
}

void PaddedSamples::End(std::size_t count) { std::fill_n(Begin() + count, kZeros, 0.0); }

ProfileRuns::ProfileRuns(std::span<const double> mz, std::span<const double> intensities)
    : mz_(mz.data()),
      intensities_(intensities.data()),
      count_(static_cast<SampleIndex>(mz.size())),
      copied_(mz.size()) {}

std::optional<ProfileRun> ProfileRuns::Next(double least) {
  for (;;) {
    while (next_ < endOfStretch_ && !(Intensity(next_) > 0 && HasPlace(next_))) ++next_;
    if (next_ < endOfStretch_) {
      const SampleIndex first = std::exchange(next_, EndOfRun(next_));
      const ProfileRun run = Copy(first, next_ - 1);
      const bool isWholeStretch = first == beginOfStretch_ && next_ == endOfStretch_;
      if (isWholeStretch || SumOf(run) >= least) return run;
      continue;
    }
    if (!FindStretch(least)) return std::nullopt;
  }
}

void ProfileRuns::SkipTo(SampleIndex sample) {
  if (sample <= next_) return;
  next_ = sample;
  while (next_ < count_ && (Intensity(next_) > 0 || Intensity(next_ - 1) > 0)) ++next_;
  endOfStretch_ = next_;
}

double ProfileRuns::Intensity(SampleIndex i) const {
  const double value = intensities_[i];
  return value >= kLowest && value <= kHighest ? value : 0;
}

// Of those above 0, from sample to sample up to the one behind `last`. Their bits are compared, which have
// the order of integers; those of anything else, less 1, come behind them.
double ProfileRuns::ShortestStep(SampleIndex first, SampleIndex last) const {
  auto shortest = std::bit_cast<std::uint64_t>(kHighest) - 1;
  const SampleIndex end = std::min(last + 1, count_ - 1);
  for (SampleIndex i = std::max<SampleIndex>(first, 0); i < end; ++i)
    shortest = std::min(shortest, std::bit_cast<std::uint64_t>(Step(i)) - 1);
  return std::bit_cast<double>(shortest + 1);
}

bool ProfileRuns::HasPlace(SampleIndex i) const { return mz_[i] >= 0 && mz_[i] <= kHighest; }

// Whether the next sample of the stretch is of the same run. Samples are asked for in their order.
bool ProfileRuns::IsFollowed(SampleIndex i) {
  constexpr SampleIndex kBlock = 16;
  if (!(Step(i) > 0 && mz_[i + 1] <= kHighest)) return false;
  if (i >= endOfBlock_) {
    endOfBlock_ = i + kBlock;
    shortestStep_ = ShortestStep(i - kStepsAround, endOfBlock_ - 1 + kStepsAround);
  }
  // What is short beside the shortest step of many is short beside that of a few.
  return Step(i) <= kLongestStep * shortestStep_ ||
         Step(i) <= kLongestStep * ShortestStep(i - kStepsAround, i + kStepsAround);
}

// Goes to the next samples between two pairs of zeros that add up to `least`. They end with a zero, or where
// the profile ends.
bool ProfileRuns::FindStretch(double least) {
  SampleIndex i = endOfStretch_;
  while (i < count_) {
    double value = Intensity(i);
    if (!(value > 0)) {
      ++i;
      continue;
    }
    next_ = beginOfStretch_ = i;
    double sum = 0;
    double before = value;
    do {
      sum += value;
      before = value;
      value = ++i < count_ ? Intensity(i) : 0;
    } while (i < count_ && (value > 0 || before > 0));
    endOfStretch_ = i;
    if (sum >= least) return true;
  }
  next_ = endOfStretch_ = count_;
  return false;
}

// Behind the last sample of the run that begins there.
SampleIndex ProfileRuns::EndOfRun(SampleIndex first) {
  const SampleIndex last = endOfStretch_ - 1;
  for (SampleIndex i = first;; ++i) {
    // This is what IsFollowed() would find first; here it is done at once for a block.
    const SampleIndex end = std::min(endOfBlock_, last);
    const double longest = kLongestStep * shortestStep_;
    while (i < end && Step(i) > 0 && Step(i) <= longest && mz_[i + 1] <= kHighest) ++i;
    if (i == last || !IsFollowed(i)) return i + 1;
  }
}

ProfileRun ProfileRuns::Copy(SampleIndex first, SampleIndex last) {
  const SampleIndex count = last - first + 1;
  double* const samples = copied_.Begin();
  for (SampleIndex i = 0; i < count; ++i) samples[i] = Intensity(first + i);
  copied_.End(static_cast<std::size_t>(count));
  return {mz_ + first, samples, 0, count - 1};
}

double IonIntensityOf(std::span<const double> mz, std::span<const double> intensities) {
  constexpr SampleIndex kBlocks = 16;
  constexpr SampleIndex kBlock = 256;
  constexpr std::size_t kEnough = 512;
  const auto count = static_cast<SampleIndex>(mz.size());
  std::vector<double> ions;
  ProfileRuns part(mz, intensities);
  for (SampleIndex block = 0; block < kBlocks && count > 2 * kBlocks * kBlock; ++block) {
    const SampleIndex begin = count / kBlocks * block;
    part.SkipTo(begin);
    AddIonsOf(part, begin + kBlock, ions);
  }
  if (ions.size() >= kEnough) return MedianOf(ions);
  ions.clear();
  ProfileRuns whole(mz, intensities);
  AddIonsOf(whole, count, ions);
  return MedianOf(ions);
}

}  // namespace zrml
