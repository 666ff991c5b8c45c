#include "spectrum/step_model.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

namespace zrml {
namespace {

constexpr double kSmallestHalfStep = 1e-6;
constexpr std::size_t kMostSamples = 1000;
constexpr int kHighestDegree = 5;

// A run of points with intensity, with one point of zero intensity at either end where there is one.
struct Run {
  std::size_t first;
  std::size_t last;
};

std::vector<Run> FindRuns(const double* intensities, std::size_t count) {
  std::vector<Run> runs;
  bool open = false;
  for (std::size_t i = 0; i + 1 < count; ++i) {
    if (!open && intensities[i] > 0) {
      runs.push_back({i > 0 ? i - 1 : 0, count - 2});
      open = true;
    } else if (open && intensities[i] == 0 && intensities[i + 1] == 0) {
      runs.back().last = i;
      open = false;
    }
  }
  return runs;
}

// Lower indices of the pairs of neighbours inside runs. Adjacent runs share a point, but no pair.
std::vector<std::size_t> PairsInRuns(const std::vector<Run>& runs, std::span<const double> masses) {
  std::size_t count = 0;
  for (const Run& run : runs) count += run.last - std::min(run.first, run.last);
  std::vector<std::size_t> pairs;
  pairs.reserve(count);
  for (const Run& run : runs) {
    for (std::size_t i = run.first; i < run.last; ++i) {
      if (std::isfinite(masses[i + 1] - masses[i])) pairs.push_back(i);
    }
  }
  return pairs;
}

class StepSampler {
 public:
  StepSampler(SamplingStepModel& model, std::span<const double> masses, std::size_t expected)
      : model_(model), masses_(masses) {
    const int room = static_cast<int>(std::min(expected, kMostSamples));
    model_.below.emplace(room);
    model_.above.emplace(room);
    const std::size_t steps = masses_.size() - 1;
    smallest_ = steps > 0 ? (masses_.back() - masses_.front()) / static_cast<double>(steps) : 0;
  }

  // The step from point i to the next.
  double Step(std::size_t i) const { return masses_[i + 1] - masses_[i]; }

  void Sample(std::size_t i) {
    const double step = Step(i);
    if (!std::isfinite(step)) return;
    model_.below->AddPoint(masses_[i], step);
    model_.above->AddPoint(masses_[i + 1], step);
    if (step < smallest_ && !IsIsolated(i)) smallest_ = step;
    model_.lowMass = std::min(model_.lowMass, masses_[i]);
    model_.highMass = std::max(model_.highMass, masses_[i + 1]);
  }

  void Finish() const {
    model_.minHalfStep = std::max(kSmallestHalfStep, 0.5 * smallest_);
    int degree = std::min(kHighestDegree, model_.below->GetPointCount() / 2);
    while (degree >= 0 && !(model_.below->Fit(degree) && model_.above->Fit(degree))) --degree;
  }

 private:
  // A step narrower than both its neighbours says nothing about the sampling.
  bool IsIsolated(std::size_t i) const {
    const double step = Step(i);
    const bool belowPrevious = i == 0 || step < Step(i - 1);
    const bool belowNext = i + 2 >= masses_.size() || step < Step(i + 1);
    return belowPrevious && belowNext;
  }

  SamplingStepModel& model_;
  std::span<const double> masses_;
  double smallest_ = 0;
};

void SampleEverywhere(SamplingStepModel& model, std::span<const double> masses) {
  const std::size_t steps = masses.size() - 1;
  StepSampler sampler(model, masses, steps);
  const std::size_t stride = (steps + kMostSamples - 1) / kMostSamples;
  for (std::size_t i = 1; i < steps; i += stride) sampler.Sample(i - 1);
  sampler.Finish();
}

// The median of the steps of the pairs around pairs[k].
double LocalMedian(const StepSampler& sampler, const std::vector<std::size_t>& pairs, std::size_t k) {
  constexpr std::size_t kReach = 4;
  const std::size_t begin = k - std::min(k, kReach);
  const std::size_t end = std::min(k + kReach + 1, pairs.size());
  std::array<double, 2 * kReach + 1> steps;
  for (std::size_t i = begin; i < end; ++i) steps[i - begin] = sampler.Step(pairs[i]);
  double* const middle = steps.data() + (end - begin - 1) / 2;
  std::nth_element(steps.data(), middle, steps.data() + (end - begin));
  return *middle;
}

// A step across a gap spans several sampling steps: it stands out from the steps around it, even where a run
// is too short to show that.
void SampleRuns(SamplingStepModel& model, std::span<const double> masses,
                const std::vector<std::size_t>& pairs) {
  constexpr double kGapRatio = 1.5;
  StepSampler sampler(model, masses, pairs.size());
  const std::size_t stride = (pairs.size() + kMostSamples - 1) / kMostSamples;
  for (std::size_t k = 0; k < pairs.size(); k += stride) {
    if (sampler.Step(pairs[k]) <= kGapRatio * LocalMedian(sampler, pairs, k)) sampler.Sample(pairs[k]);
  }
  sampler.Finish();
}

double StepAt(const std::optional<PolynomialFit>& curve, double mass, double least) {
  return curve ? std::max(least, curve->Evaluate(mass)) : least;
}

}  // namespace

void BuildStepModel(SamplingStepModel& model, const CZRMassSpectrum& spectrum) {
  model = SamplingStepModel();
  const std::size_t count = spectrum.UsablePoints();
  if (count == 0) return;
  const std::span masses(spectrum.GetMasses(), count);
  const std::vector<std::size_t> pairs = PairsInRuns(FindRuns(spectrum.GetIntensities(), count), masses);
  if (pairs.empty()) {
    SampleEverywhere(model, masses);
  } else {
    SampleRuns(model, masses, pairs);
  }
}

double StepBelow(const SamplingStepModel& model, double mass) {
  return StepAt(model.below, mass, model.minHalfStep);
}

double StepAbove(const SamplingStepModel& model, double mass) {
  return StepAt(model.above, mass, model.minHalfStep);
}

}  // namespace zrml
