#include "spectrum/profile_runs.h"

#include <algorithm>

namespace zrml {
namespace {

constexpr double kHighestMass = 1e100;
constexpr SampleIndex kStepsAround = 8;
constexpr double kLongestStep = 1.5;  // of the shortest around

class RunFinder {
 public:
  RunFinder(std::span<const double> mz, std::span<const double> intensities)
      : mz_(mz.data()), intensities_(intensities.data()), count_(static_cast<SampleIndex>(mz.size())) {}

  std::vector<ProfileRun> Find() const {
    std::vector<ProfileRun> runs;
    for (SampleIndex i = 0; i < count_; ++i) {
      if (!HasIntensity(i)) continue;
      ProfileRun run{mz_, intensities_, i, i};
      while (IsFollowed(i)) {
        ++i;
        if (HasIntensity(i)) run.last = i;
      }
      runs.push_back(run);
    }
    return runs;
  }

 private:
  bool HasIntensity(SampleIndex i) const {
    return CountedIntensity(intensities_[i]) > 0 && mz_[i] >= 0 && mz_[i] <= kHighestMass;
  }

  double Step(SampleIndex i) const { return mz_[i + 1] - mz_[i]; }

  double ShortestStepAround(SampleIndex i) const {
    const SampleIndex last = std::min(i + kStepsAround, count_ - 2);
    double shortest = Step(i);
    for (SampleIndex k = std::max<SampleIndex>(i - kStepsAround, 0); k <= last; ++k) {
      if (Step(k) > 0 && Step(k) < shortest) shortest = Step(k);
    }
    return shortest;
  }

  // Whether the next sample is of the same run.
  bool IsFollowed(SampleIndex i) const {
    if (i + 1 >= count_ || !(Step(i) > 0) || !(mz_[i + 1] <= kHighestMass)) return false;
    return (HasIntensity(i) || HasIntensity(i + 1)) && Step(i) <= kLongestStep * ShortestStepAround(i);
  }

  const double* mz_;
  const double* intensities_;
  SampleIndex count_;
};

// Whether sample i is higher than those beside it and they are no higher than theirs, or lower and no lower.
bool IsZigzag(const ProfileRun& run, SampleIndex i) {
  const double left = run[i] - run[i - 1];
  const double right = run[i] - run[i + 1];
  if (left > 0 && right > 0) return run[i - 1] <= run[i - 2] && run[i + 1] <= run[i + 2];
  return left < 0 && right < 0 && run[i - 1] >= run[i - 2] && run[i + 1] >= run[i + 2];
}

}  // namespace

std::vector<ProfileRun> FindProfileRuns(std::span<const double> mz, std::span<const double> intensities) {
  return RunFinder(mz, intensities).Find();
}

double IonIntensityOf(const std::vector<ProfileRun>& runs) {
  std::vector<double> ions;
  for (const ProfileRun& run : runs) {
    for (SampleIndex i = run.first; i <= run.last; ++i) {
      if (!IsZigzag(run, i)) continue;
      ions.push_back(IonOfDifference(run[i], run[i - 1]));
      ions.push_back(IonOfDifference(run[i], run[i + 1]));
    }
  }
  if (ions.empty()) return 0;
  const auto middle = ions.begin() + static_cast<SampleIndex>(ions.size() / 2);
  std::nth_element(ions.begin(), middle, ions.end());
  return *middle;
}

}  // namespace zrml
