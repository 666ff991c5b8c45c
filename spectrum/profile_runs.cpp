#include "spectrum/profile_runs.h"

#include <algorithm>

namespace zrml {
namespace {

constexpr double kLowest = 1e-100;  // far from where squares underflow or overflow
constexpr double kHighest = 1e100;
constexpr std::size_t kZeros = 2;  // around runs: as far as what looks at a sample's surroundings goes
constexpr SampleIndex kStepsAround = 4;
constexpr double kLongestStep = 1.5;  // of the shortest around

class Samples {
 public:
  Samples(std::span<const double> mz, std::span<const double> intensities)
      : mz_(mz.data()), intensities_(intensities.data()), count_(static_cast<SampleIndex>(mz.size())) {}

  SampleIndex Count() const { return count_; }
  double Mass(SampleIndex i) const { return mz_[i]; }
  double Intensity(SampleIndex i) const {
    return intensities_[i] >= kLowest && intensities_[i] <= kHighest ? intensities_[i] : 0;
  }
  bool CanBegin(SampleIndex i) const { return Intensity(i) > 0 && mz_[i] >= 0 && mz_[i] <= kHighest; }

  // Whether the next sample is of the same run.
  bool IsFollowed(SampleIndex i) const {
    return i + 1 < count_ && (Intensity(i) > 0 || Intensity(i + 1) > 0) && Step(i) > 0 &&
           mz_[i + 1] <= kHighest && Step(i) <= kLongestStep * ShortestStepAround(i);
  }

 private:
  double Step(SampleIndex i) const { return mz_[i + 1] - mz_[i]; }

  double ShortestStepAround(SampleIndex i) const {
    const SampleIndex last = std::min(i + kStepsAround, count_ - 2);
    double shortest = Step(i);
    for (SampleIndex k = std::max<SampleIndex>(i - kStepsAround, 0); k <= last; ++k)
      shortest = Step(k) > 0 && Step(k) < shortest ? Step(k) : shortest;
    return shortest;
  }

  const double* mz_;
  const double* intensities_;
  SampleIndex count_;
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

}  // namespace

ProfileRuns::ProfileRuns(std::span<const double> mz, std::span<const double> intensities) {
  mz_.reserve(mz.size() + 2 * kZeros);
  intensities_.reserve(mz.size() + 2 * kZeros);
  Clear();
  const Samples samples(mz, intensities);
  for (SampleIndex i = 0; i < samples.Count(); ++i) {
    if (!samples.CanBegin(i)) continue;
    Add(samples.Mass(i), samples.Intensity(i));
    while (samples.IsFollowed(i)) {
      ++i;
      Add(samples.Mass(i), samples.Intensity(i));
    }
    EndRun();
  }
}

void ProfileRuns::Clear() {
  mz_.clear();
  intensities_.clear();
  lasts_.clear();
  AddZeros();
}

void ProfileRuns::AddZeros() {
  mz_.insert(mz_.end(), kZeros, 0.0);
  intensities_.insert(intensities_.end(), kZeros, 0.0);
}

void ProfileRuns::Add(double mz, double intensity) {
  mz_.push_back(mz);
  intensities_.push_back(intensity);
}

void ProfileRuns::EndRun() {
  lasts_.push_back(static_cast<SampleIndex>(mz_.size()) - 1);
  AddZeros();
}

ProfileRun ProfileRuns::operator[](std::size_t run) const {
  const SampleIndex before = run == 0 ? -1 : lasts_[run - 1];
  return {mz_.data(), intensities_.data(), before + 1 + static_cast<SampleIndex>(kZeros), lasts_[run]};
}

double ProfileRuns::IonIntensity() const {
  std::vector<double> ions;
  for (std::size_t i = kZeros; i + kZeros < intensities_.size(); ++i) {
    const double* const sample = &intensities_[i];
    if (!IsZigzag(sample)) continue;
    ions.push_back(IonOfDifference(sample[0], sample[-1]));
    ions.push_back(IonOfDifference(sample[0], sample[1]));
  }
  if (ions.empty()) return 0;
  const auto middle = ions.begin() + static_cast<SampleIndex>(ions.size() / 2);
  std::nth_element(ions.begin(), middle, ions.end());
  return *middle;
}

}  // namespace zrml
