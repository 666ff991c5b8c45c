#include "source/sum_scans.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <optional>
#include <string>
#include <utility>

#include "source/grid_steps.h"
#include "source/position.h"
#include "source/profile_sum.h"
#include "spectrum/add_spectrum.h"
#include "spectrum/centroid_merge.h"
#include "spectrum/equal_peaks.h"
#include "spectrum/peak_sum.h"
#include "spectrum/point_merge.h"
#include "spectrum/profile_resampling.h"

namespace zrml::source {
namespace {

using Values = std::vector<double>;

constexpr std::size_t kShortestProfile = 3;

struct Points {
  Values mz;
  Values intensities;
};

CZRMassSpectrum SpectrumOf(const Points& points, bool isCentroided) {
  CZRMassSpectrum spectrum;
  spectrum.SetSize(static_cast<int>(points.mz.size()));
  spectrum.CopyMasses(points.mz.data());
  spectrum.CopyIntensities(points.intensities.data());
  spectrum.SetCentroided(isCentroided);
  return spectrum;
}

Points PointsOf(const CZRMassSpectrum& spectrum) {
  return {{spectrum.MassVector().begin(), spectrum.MassVector().end()},
          {spectrum.IntensityVector().begin(), spectrum.IntensityVector().end()}};
}

template <class Sum>
Points PointsIn(Sum& sum) {
  Points points = {Values(sum.Count()), Values(sum.Count())};
  sum.CopyTo(points.mz.data(), points.intensities.data());
  return points;
}

// Adds peak lists in the way that is quickest for what they are; the sum is the same.
class PeakAdder {
 public:
  explicit PeakAdder(PeakWidth width) : width_(width) {}

  void Add(const Points& scan) {
    if (width_.width > 0) {
      peaks_ ? void(peaks_->Add(scan.mz, scan.intensities))
             : void(peaks_.emplace(width_.width, scan.mz, scan.intensities, !width_.isPpm));
    } else if (sum_ || !equal_.Add(scan.mz, scan.intensities)) {
      AddToSpectrum(scan);
    }
  }

  Points Take() {
    if (peaks_) return PointsIn(*peaks_);
    return sum_ ? PointsOf(*sum_) : PointsIn(equal_);
  }

 private:
  void AddToSpectrum(const Points& scan) {
    CZRMassSpectrum spectrum = SpectrumOf(scan, true);
    if (!sum_ && equal_.Count() == 0) {
      sum_ = std::move(spectrum);
      return;
    }
    if (!sum_) sum_ = SpectrumOf(PointsIn(equal_), true);
    AddCentroidSpectra(true, 0, spectrum, *sum_, true);
  }

  PeakWidth width_;
  EqualPeaks equal_;                    // as long as each list ascends
  std::optional<PeakSum> peaks_;        // with a width
  std::optional<CZRMassSpectrum> sum_;  // all else
};

// The samples of a profile by ascending mass. Samples of one mass become one.
Points SamplesOf(const Points& scan) {
  constexpr double kLeastStep = 1e-30;  // powers of smaller ones are 0 where steps are fitted
  Points samples;
  for (std::size_t i = 0; i < scan.mz.size(); ++i) {
    if (!samples.mz.empty() && scan.mz[i] - samples.mz.back() < kLeastStep) {
      samples.intensities.back() += scan.intensities[i];
    } else {
      samples.mz.push_back(scan.mz[i]);
      samples.intensities.push_back(scan.intensities[i]);
    }
  }
  return samples;
}

// NaN cannot; larger values, or their products with masses, could make a sum infinite.
bool CanBeAdded(const Values& values) {
  constexpr double kMost = 1e100;
  return std::ranges::all_of(values, [](double value) { return std::abs(value) <= kMost; });
}

// Scans of one kind, added up.
class Adder {
 public:
  // Without steps, profiles are added as long as each shows that it is on the grid of those before it.
  Adder(PeakWidth width, bool isCentroided, bool isAbsorbance, const GridSteps* steps = nullptr)
      : peaks_(width), steps_(steps) {
    sum_.isCentroided = isCentroided;
    sum_.isAbsorbance = isAbsorbance;
  }

  bool IsOfKind(const Scan& scan) const { return scan.representation == RepresentationOf(sum_.isCentroided); }

  bool HasAxis(const Points& scan) const {
    return !sum_.isAbsorbance || scan.mz.empty() || axis_.mz.empty() || axis_.mz == scan.mz;
  }

  bool NeedsSteps() const { return needsSteps_; }

  void LeaveOut() { ++sum_.leftOut; }

  void Add(int position, const Points& scan, std::size_t lost) {
    sum_.lost += lost;
    const bool measuredNothing = lost == 0 && !sum_.isAbsorbance;
    if (scan.mz.empty() ? !measuredNothing : !AddPoints(position, scan)) return LeaveOut();
    sum_.added.push_back(position);
  }

  ScanSum Take() {
    if (profile_.GetCount() == 0) TakeShort();
    std::ranges::sort(sum_.added);
    Points points = sum_.isAbsorbance   ? std::move(axis_)
                    : sum_.isCentroided ? peaks_.Take()
                                        : PointsOf(profile_);
    sum_.mz = std::move(points.mz);
    sum_.intensities = std::move(points.intensities);
    return std::move(sum_);
  }

 private:
  bool AddPoints(int position, const Points& scan) {
    if (sum_.isAbsorbance) {
      AddToAxis(scan);
      return true;
    }
    if (!CanBeAdded(scan.mz) || !CanBeAdded(scan.intensities)) return false;
    if (!sum_.isCentroided) return AddToProfile(position, scan);
    peaks_.Add(scan);
    return true;
  }

  void AddToAxis(const Points& scan) {
    if (axis_.mz.empty()) {
      axis_ = scan;
    } else {
      std::ranges::transform(axis_.intensities, scan.intensities, axis_.intensities.begin(), std::plus<>());
    }
  }

  bool AddToProfile(int position, const Points& scan) {
    CZRMassSpectrum profile = SpectrumOf(SamplesOf(scan), false);
    if (profile.MassVector().size() < kShortestProfile) {
      short_ = MergePoints(profile, short_, true);
      shortPositions_.push_back(position);
      return false;
    }
    if (profile_.GetCount() == 0) {
      profile_.Swap(profile);
    } else if (steps_ != nullptr) {
      AddProfile(profile, *steps_, profile_);
    } else if (!AddOnOneGrid(profile, profile_)) {
      needsSteps_ = true;
    }
    return true;
  }

  // There is nothing else.
  void TakeShort() {
    profile_.Swap(short_);
    sum_.added.insert(sum_.added.end(), shortPositions_.begin(), shortPositions_.end());
    sum_.leftOut -= static_cast<int>(shortPositions_.size());
  }

  ScanSum sum_;  // but for the points
  PeakAdder peaks_;
  CZRMassSpectrum profile_;
  CZRMassSpectrum short_;  // profiles of one or two points
  std::vector<int> shortPositions_;
  Points axis_;
  const GridSteps* steps_;
  bool needsSteps_ = false;
};

void RequireScans(std::span<const int> scans, int count) {
  if (scans.empty()) throw Error(Status::kWrongArgument, "there is no scan to add up");
  for (const int scan : scans) {
    if (scan < 0 || scan >= count) ThrowNoSuch(scan, "scan");
  }
}

[[noreturn]] void RefuseScan(int scan, bool isOfKind) {
  throw Error(Status::kWrongArgument,
              "scan " + std::to_string(scan + 1) +
                  (isOfKind ? " has other wavelengths than those before it"
                            : " is of another kind (peaks, or a profile) than those before it"));
}

bool IsCentroidedKind(Source& source, int sample, int function, std::span<const int> scans,
                      Unsuited unsuited) {
  for (const int position : scans) {
    const Scan scan = source.ScanAt(sample, function, position);
    const std::optional<bool> isCentroided = IsCentroided(scan);
    if (isCentroided && (scan.points > 0 || unsuited == Unsuited::kAreAnError)) return *isCentroided;
  }
  return source.ScanAt(sample, function, scans.front()).representation == Representation::kCentroid;
}

// The scans in the order in which they are added: one that gives the grid of profiles, and the others. It is
// the first but those of much less weight than another: few points say little of a grid.
std::vector<int> InOrder(std::span<const int> scans, const std::vector<std::size_t>& weights) {
  const std::size_t most = *std::ranges::max_element(weights);
  const auto isGrid = [&](std::size_t weight) { return weight >= most - most / 2; };
  const auto first = std::ranges::find_if(weights, isGrid) - weights.begin();
  std::vector<int> order(scans.begin(), scans.end());
  std::rotate(order.begin(), order.begin() + first, order.begin() + first + 1);
  return order;
}

// What is added up of a source, and how.
struct Task {
  Source& source;
  int sample;
  int function;
  std::span<const int> scans;
  Unsuited unsuited;
  const Cancel& cancel;

  Scan At(int position) const { return source.ScanAt(sample, function, position); }

  std::size_t Read(int position, Points& points) const {
    ThrowIfCancelled(cancel);
    return source.ReadPoints(sample, function, position, points.mz, points.intensities).lost;
  }
};

bool IsStoredAsProfile(const Scan& scan) { return scan.representation == Representation::kProfile; }

std::vector<int> OrderByPoints(const Task& task) {
  std::vector<std::size_t> weights;
  for (const int position : task.scans) {
    const Scan scan = task.At(position);
    weights.push_back(IsStoredAsProfile(scan) ? scan.points : 0);
  }
  return InOrder(task.scans, weights);
}

// Reads all profiles for the steps of their grid; single ions have few of them, however many they are.
std::vector<int> OrderBySteps(const Task& task, GridSteps& steps) {
  std::vector<std::size_t> weights;
  Points points;
  for (const int position : task.scans) {
    task.Read(position, points);
    const Values mz = SamplesOf(points).mz;
    const bool isAdded = IsStoredAsProfile(task.At(position)) && mz.size() >= kShortestProfile &&
                         CanBeAdded(points.mz) && CanBeAdded(points.intensities);
    if (isAdded) steps.Learn(mz);
    weights.push_back(isAdded ? 1 + CountEvenSteps(mz) : 0);
  }
  steps.Settle();
  return InOrder(task.scans, weights);
}

// Of all masses in `grid`, which has a point beyond each end of `points` or at it.
Values OntoGrid(const Points& points, const Values& grid) {
  Values intensities(grid.size());
  const auto distribute = [&](double sign) {
    Values part = points.intensities;
    for (double& value : part) value *= sign;
    Values distributed(grid.size());
    DistributeOntoGrid(points.mz.data(), part.data(), static_cast<int>(part.size()), grid.data(),
                       distributed.data(), static_cast<int>(grid.size()));
    for (std::size_t i = 0; i < grid.size(); ++i) intensities[i] += sign * distributed[i];
  };
  distribute(1);
  if (std::ranges::any_of(points.intensities, [](double value) { return value < 0; })) distribute(-1);
  // To a point at 0 nothing is distributed.
  if (!points.mz.empty() && points.mz[0] == 0) intensities[0] = points.intensities[0];
  return intensities;
}

Values GridOf(const Points& sum, const Points& background) {
  if (sum.mz == background.mz || background.mz.empty()) return sum.mz;
  CZRMassSpectrum other = SpectrumOf(background, false);
  CZRMassSpectrum grid = SpectrumOf(sum, false);
  AddProfile(other, grid);
  return PointsOf(grid).mz;
}

double HalfWidthAt(double mz, PeakWidth width) {
  if (!(width.width > 0)) return 0;
  PeakMergeContext context;
  (width.isPpm ? SetPPMWidth : SetConstantWidth)(context.widthLaw, width.width);
  return PeakWidthAt(context, mz) * 0.5;
}

// The peak nearest to `mz` that is within reach, the lower one of two; no value when there is none.
std::optional<std::size_t> NearestTo(double mz, double reach, const Values& peaks) {
  const auto above = std::ranges::lower_bound(peaks, mz);
  auto nearest = above;
  if (above == peaks.end() || (above != peaks.begin() && mz - *(above - 1) <= *above - mz)) {
    if (above == peaks.begin()) return std::nullopt;
    nearest = above - 1;
  }
  if (!(std::abs(*nearest - mz) <= reach)) return std::nullopt;
  return static_cast<std::size_t>(nearest - peaks.begin());
}

void TakeOffPeaks(const Points& background, PeakWidth width, Points& sum) {
  Points alone;
  for (std::size_t i = 0; i < background.mz.size(); ++i) {
    const double mz = background.mz[i];
    if (const auto nearest = NearestTo(mz, HalfWidthAt(mz, width), sum.mz)) {
      sum.intensities[*nearest] -= background.intensities[i];
    } else {
      alone.mz.push_back(mz);
      alone.intensities.push_back(-background.intensities[i]);
    }
  }
  if (!alone.mz.empty()) sum = PointsOf(MergePoints(SpectrumOf(alone, true), SpectrumOf(sum, true), false));
}

void TakeOffProfile(const Points& background, Points& sum) {
  Values grid = GridOf(sum, background);
  const Values kept = OntoGrid(sum, grid);
  const Values taken = OntoGrid(background, grid);
  sum.mz = std::move(grid);
  sum.intensities.resize(sum.mz.size());
  std::ranges::transform(kept, taken, sum.intensities.begin(), std::minus<>());
}

void TakeOffAbsorbance(const Points& background, Points& sum) {
  if (background.mz.empty()) return;
  if (background.mz != sum.mz) throw Error(Status::kWrongArgument, "the background has other wavelengths");
  std::ranges::transform(sum.intensities, background.intensities, sum.intensities.begin(), std::minus<>());
}

void AddScan(const Task& task, int position, Points& points, Adder& adder) {
  const std::size_t lost = task.Read(position, points);
  const bool isLeftOut = task.unsuited == Unsuited::kAreLeftOut;
  const bool isOfKind = (isLeftOut && points.mz.empty()) || adder.IsOfKind(task.At(position));
  if (isOfKind && adder.HasAxis(points)) {
    adder.Add(position, points, lost);
  } else if (isLeftOut) {
    adder.LeaveOut();
  } else {
    RefuseScan(position, isOfKind);
  }
}

void AddScans(const Task& task, std::span<const int> order, Adder& adder) {
  Points points;
  for (const int position : order) {
    AddScan(task, position, points, adder);
    if (adder.NeedsSteps()) return;
  }
}

ScanSum SumOfKind(const Task& task, PeakWidth width, bool isCentroided) {
  if (!(width.width >= 0)) throw Error(Status::kWrongArgument, "a peak width is not negative");
  const Function& function = At(task.source.Functions(task.sample), task.function, "function");
  const bool isAbsorbance = function.kind == FunctionKind::kAbsorbance;
  Adder adder(width, isCentroided, isAbsorbance);
  AddScans(task, isAbsorbance ? std::vector(task.scans.begin(), task.scans.end()) : OrderByPoints(task),
           adder);
  if (!adder.NeedsSteps()) return adder.Take();
  GridSteps steps;
  const std::vector<int> order = OrderBySteps(task, steps);
  Adder adderOnGrid(width, isCentroided, isAbsorbance, &steps);
  AddScans(task, order, adderOnGrid);
  return adderOnGrid.Take();
}

}  // namespace

ScanSum SumScans(Source& source, int sample, int function, std::span<const int> scans, PeakWidth width,
                 Unsuited unsuited, const Cancel& cancel) {
  RequireScans(scans, source.ScanCount(sample, function));
  return SumOfKind({source, sample, function, scans, unsuited, cancel}, width,
                   IsCentroidedKind(source, sample, function, scans, unsuited));
}

ScanSum SumBackground(Source& source, int sample, int function, std::span<const int> scans, PeakWidth width,
                      const ScanSum& of, const Cancel& cancel) {
  if (of.mz.empty()) return SumScans(source, sample, function, scans, width, Unsuited::kAreLeftOut, cancel);
  RequireScans(scans, source.ScanCount(sample, function));
  return SumOfKind({source, sample, function, scans, Unsuited::kAreLeftOut, cancel}, width, of.isCentroided);
}

ScanSum SumScans(Source& source, int sample, int function, int first, int end, PeakWidth width,
                 const Cancel& cancel) {
  const int count = source.ScanCount(sample, function);
  if (first < 0 || first >= count) ThrowNoSuch(first, "scan");
  if (end > count) ThrowNoSuch(end - 1, "scan");
  std::vector<int> scans(static_cast<std::size_t>(std::max(end - first, 0)));
  std::iota(scans.begin(), scans.end(), first);
  return SumScans(source, sample, function, scans, width, Unsuited::kAreAnError, cancel);
}

ScanSum SumAbsorbance(Source& source, int sample, std::span<const int> scans, const Cancel& cancel) {
  RequireScans(scans, source.AbsorbanceScanCount(sample));
  Adder adder({}, false, true);
  Points points;
  for (const int scan : scans) {
    ThrowIfCancelled(cancel);
    const std::size_t lost = source.ReadAbsorbance(sample, scan, points.mz, points.intensities).lost;
    adder.HasAxis(points) ? adder.Add(scan, points, lost) : adder.LeaveOut();
  }
  return adder.Take();
}

void TakeOff(const ScanSum& background, PeakWidth width, ScanSum& sum) {
  if (background.added.empty())
    throw Error(Status::kWrongArgument,
                std::string("the background has no scans") +
                    (sum.isAbsorbance ? "" : " of the sum's kind (peaks, or profiles)") +
                    " that can be added");
  const bool isEmpty = background.mz.empty() || sum.mz.empty();
  if (!isEmpty && background.isCentroided != sum.isCentroided)
    throw Error(Status::kWrongArgument, "the background is of another kind (peaks, or a profile)");
  if (sum.mz.empty()) sum.isCentroided = background.isCentroided;
  Points taken = {background.mz, background.intensities};
  const auto scans = static_cast<double>(sum.added.size());
  for (double& value : taken.intensities)
    value = value * scans / static_cast<double>(background.added.size());
  Points points = {std::move(sum.mz), std::move(sum.intensities)};
  if (sum.isAbsorbance) {
    TakeOffAbsorbance(taken, points);
  } else if (sum.isCentroided) {
    TakeOffPeaks(taken, width, points);
  } else {
    TakeOffProfile(taken, points);
  }
  sum.mz = std::move(points.mz);
  sum.intensities = std::move(points.intensities);
}

void MakeMean(ScanSum& sum) {
  for (double& value : sum.intensities) value /= static_cast<double>(sum.added.size());
}

}  // namespace zrml::source
