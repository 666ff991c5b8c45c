#include "spectrum/profile_runs.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>

namespace zrml {
namespace {

constexpr double kLowest = 1e-100;  // far from where squares underflow or overflow
constexpr double kHighest = 1e100;
constexpr SampleIndex kStepsAround = 4;
constexpr double kLongestStep = 1.5;  // of the shortest around

// The shortest and the longest of some steps. Their bits are compared: those above 0 have the order of
// integers, and anything else is longer, also what is not a number.
class StepRange {
 public:
  void Add(double step) {
    const auto bits = std::bit_cast<std::uint64_t>(step);
    shortest_ = std::min(shortest_, bits);
    longest_ = std::max(longest_, bits);
  }

  double Shortest() const { return std::bit_cast<double>(shortest_); }
  bool IsUpTo(double most) const { return longest_ <= std::bit_cast<std::uint64_t>(most); }

 private:
  std::uint64_t shortest_ = std::bit_cast<std::uint64_t>(kHighest);
  std::uint64_t longest_ = 0;
};

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
      return Copy(first, next_ - 1);
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

double ProfileRuns::ShortestStepAround(SampleIndex i) const {
  const SampleIndex last = std::min(i + kStepsAround, count_ - 2);
  double shortest = Step(i);
  for (SampleIndex k = std::max<SampleIndex>(i - kStepsAround, 0); k <= last; ++k)
    shortest = Step(k) > 0 && Step(k) < shortest ? Step(k) : shortest;
  return shortest;
}

bool ProfileRuns::HasPlace(SampleIndex i) const { return mz_[i] >= 0 && mz_[i] <= kHighest; }

// Whether the next sample of the stretch is of the same run.
bool ProfileRuns::IsFollowed(SampleIndex i) const {
  return Step(i) > 0 && mz_[i + 1] <= kHighest && Step(i) <= kLongestStep * ShortestStepAround(i);
}

// Whether it is plain that each of these samples but the last is followed.
bool ProfileRuns::HasEvenSteps(SampleIndex first, SampleIndex last) const {
  StepRange inside;
  for (SampleIndex i = first; i < last; ++i) inside.Add(Step(i));
  StepRange around = inside;
  for (SampleIndex i = std::max<SampleIndex>(first - kStepsAround, 0); i < first; ++i) around.Add(Step(i));
  for (SampleIndex i = last; i < std::min(last + kStepsAround, count_ - 1); ++i) around.Add(Step(i));
  return around.Shortest() > 0 && inside.IsUpTo(kLongestStep * around.Shortest()) && mz_[last] <= kHighest;
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
    next_ = i;
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
SampleIndex ProfileRuns::EndOfRun(SampleIndex first) const {
  constexpr SampleIndex kBlock = 64;
  SampleIndex i = first;
  for (;;) {
    const SampleIndex end = std::min(i + kBlock, endOfStretch_ - 1);
    if (HasEvenSteps(i, end)) {
      i = end;
    } else {
      while (i < end && IsFollowed(i)) ++i;
      if (i < end) break;
    }
    if (i == endOfStretch_ - 1) break;
  }
  return i + 1;
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
