#include "spectrum/centroid_merge.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>

#include "spectrum/parallel_sort.h"
#include "spectrum/peak_merger.h"

namespace zrml {
namespace {

constexpr double kWidestWidth = 1.0;

// The points of a spectrum, for VisitPeak().
class SpectrumPeaks {
 public:
  using Index = std::int32_t;
  static constexpr Index kNone = -1;

  SpectrumPeaks(CZRMassSpectrum& spectrum, Index count)
      : masses_(spectrum.GetMasses()), intensities_(spectrum.GetIntensities()), count_(count) {}

  double& Mass(Index i) const { return masses_[i]; }
  double& Intensity(Index i) const { return intensities_[i]; }
  Index Below(Index i) const { return i - 1; }
  Index Above(Index i) const { return i + 1 < count_ ? i + 1 : kNone; }

 private:
  double* masses_;
  double* intensities_;
  Index count_;
};

// Indices of the points, the most intense first, equal intensities in their original order, NaN last.
std::vector<std::int32_t> ByIntensity(const CZRMassSpectrum& spectrum, std::size_t count) {
  std::vector<double> keys(spectrum.GetIntensities(), spectrum.GetIntensities() + count);
  std::vector<std::int32_t> order(count);
  std::iota(order.begin(), order.end(), 0);
  const std::array arrays = {ParallelArray{sizeof(double), keys.data()},
                             ParallelArray{sizeof(std::int32_t), order.data()}};
  SortParallelArrays(static_cast<int>(SortKey::kDouble), false, count, arrays);
  return order;
}

// Keeps only the points of positive mass.
int KeepPositiveMasses(CZRMassSpectrum& spectrum, int count) {
  double* const masses = spectrum.GetMasses();
  double* const intensities = spectrum.GetIntensities();
  int kept = 0;
  for (int i = 0; i < count; ++i) {
    if (!(masses[i] > 0)) continue;
    masses[kept] = masses[i];
    intensities[kept] = intensities[i];
    ++kept;
  }
  spectrum.EnablePointData(false);
  spectrum.EnablePointFlags(false);
  spectrum.EnablePointValues(false);
  spectrum.SetSize(kept);
  return kept;
}

}  // namespace

double PeakWidthAt(const PeakMergeContext& context, double mass) {
  const double width = context.widthLaw ? context.widthLaw->Width(mass) : kWidestWidth;
  const double step = context.scanLaw ? NextMass(context.scanLaw, mass) - mass : 0;
  const double sum = 0.5 * step + width;
  return sum < kWidestWidth ? sum : kWidestWidth;
}

int MergePeaks(const PeakMergeContext& context, double factor, CZRMassSpectrum& spectrum,
               std::vector<MergedPeak>* merged) {
  if (merged != nullptr) merged->clear();
  if (factor <= 0) return 0;
  const std::size_t points = spectrum.UsablePoints();
  const int count = static_cast<int>(points);
  if (count < 2) return count;
  // All memory is allocated first: nothing fails once masses have changed.
  if (merged != nullptr) merged->reserve(points);
  const std::vector<std::int32_t> order = ByIntensity(spectrum, points);
  SpectrumPeaks peaks(spectrum, count);
  for (const std::int32_t i : order) {
    if (IsAbsorbed(peaks, i)) continue;
    const auto [lowest, highest] = VisitPeak(peaks, i, PeakWidthAt(context, peaks.Mass(i)) / factor * 0.5);
    if (merged != nullptr) merged->push_back({i, lowest, highest});
  }
  if (merged != nullptr) {
    std::sort(merged->begin(), merged->end(),
              [](const MergedPeak& a, const MergedPeak& b) { return a.peak < b.peak; });
  }
  return KeepPositiveMasses(spectrum, count);
}

int MergeCentroidPeaks(bool absoluteWidth, double width, CZRMassSpectrum& spectrum) {
  PeakMergeContext context;
  (absoluteWidth ? SetConstantWidth : SetPPMWidth)(context.widthLaw, width);
  return MergePeaks(context, 1.0, spectrum);
}

}  // namespace zrml
