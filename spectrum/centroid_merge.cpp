#include "spectrum/centroid_merge.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <numeric>
#include <span>

#include "spectrum/parallel_sort.h"
#include "spectrum/peak_merger.h"

namespace zrml {
namespace {

constexpr double kWidestWidth = 1.0;

// Indices of the points, the most intense first, equal intensities in their order, NaN last.
std::vector<std::int32_t> ByIntensity(const CZRMassSpectrum& spectrum, std::size_t count) {
  std::vector<double> keys(spectrum.GetIntensities(), spectrum.GetIntensities() + count);
  std::vector<std::int32_t> order(count);
  std::iota(order.begin(), order.end(), 0);
  const std::array arrays = {ParallelArray{sizeof(double), keys.data()},
                             ParallelArray{sizeof(std::int32_t), order.data()}};
  SortParallelArrays(static_cast<int>(SortKey::kDouble), false, count, arrays);
  return order;
}

// Moves the points of positive mass to the front and cuts the spectrum to them.
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

// Whether the law's width is the same at every mass.
bool IsConstant(const CZRMSPeakWidthLaw::Law& law) {
  double width = 0;
  double unused = 0;
  return law.GetParameters(width, unused) == CZRMSPeakWidthLaw::kConstant;
}

// Half the width where that is the same at every mass; otherwise 0.
double ConstantHalf(const PeakMergeContext& context, double factor) {
  const bool isConstant =
      context.scanLaw == nullptr && (context.widthLaw == nullptr || IsConstant(*context.widthLaw));
  return isConstant ? PeakWidthAt(context, 0) / factor * 0.5 : 0;
}

// Whether masses are in order and all are such that a mean of masses, weighted by intensity, lies between
// them but for an error far below `half`.
bool AreOrdinary(const double* masses, const double* intensities, int count, double half) {
  const double error = masses[count - 1] * count * 2 * std::numeric_limits<double>::epsilon();
  bool areInOrder = masses[0] >= kLightestOrdinary && error < half / 16;
  for (int i = 1; i < count; ++i) areInOrder &= masses[i - 1] <= masses[i];
  return areInOrder && AreOrdinaryIntensities({intensities, static_cast<std::size_t>(count)});
}

// Ordinary peaks fall into groups between which there is more than a walk reaches. None leads from one group
// into another, since a merged peak lies between those that went into it: so the strongest first need be
// found within each group only, and most groups are single peaks.
void MergeInGroups(const double* masses, int count, double half, std::span<std::int32_t> order,
                   PeakMerger& merger) {
  const double reach = half * (1 + 2.0 / 16);  // with the errors on either side
  for (std::int32_t first = 0; first < count;) {
    std::int32_t last = first + 1;
    while (last < count && masses[last] - masses[last - 1] <= reach) ++last;
    if (last == first + 1) {
      merger.VisitAlone(first);
    } else {
      merger.VisitGroup(first, half, order.first(static_cast<std::size_t>(last - first)));
    }
    first = last;
  }
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
  // All memory first: nothing fails once masses have been changed.
  if (merged != nullptr) merged->reserve(points);
  const double* const masses = spectrum.GetMasses();
  const double* const intensities = spectrum.GetIntensities();
  PeakMerger merger(spectrum.GetMasses(), spectrum.GetIntensities(), count, merged);
  const double half = ConstantHalf(context, factor);
  if (half > 0 && AreOrdinary(masses, intensities, count, half)) {
    std::vector<std::int32_t> order(points);
    MergeInGroups(masses, count, half, order, merger);
  } else {
    for (const std::int32_t i : ByIntensity(spectrum, points)) {
      if (!merger.IsAbsorbed(i)) merger.Visit(i, PeakWidthAt(context, masses[i]) / factor * 0.5);
    }
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
