#include "spectrum/centroid_merge.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>

#include "spectrum/parallel_sort.h"

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

// The peak that a walk over its neighbours makes. Absorbed neighbours are marked by a mass of 0.
class PeakWalk {
 public:
  PeakWalk(double* masses, const double* intensities, int count)
      : masses_(masses), intensities_(intensities), count_(count) {}

  // A walk ends at the first point that is absorbed or outside the window. Points that were visited before
  // take part with the mass they have by now.
  void Absorb(int peak, double low, double high) {
    intensity_ = intensities_[peak];
    moment_ = intensity_ * masses_[peak];
    for (lowest_ = peak; lowest_ > 0 && masses_[lowest_ - 1] > 0 && masses_[lowest_ - 1] >= low;)
      Take(--lowest_);
    for (highest_ = peak;
         highest_ + 1 < count_ && masses_[highest_ + 1] > 0 && masses_[highest_ + 1] <= high;)
      Take(++highest_);
  }

  double Intensity() const { return intensity_; }
  double Mass() const { return moment_ / intensity_; }
  int Lowest() const { return lowest_; }
  int Highest() const { return highest_; }

 private:
  void Take(int i) {
    moment_ += intensities_[i] * masses_[i];
    intensity_ += intensities_[i];
    masses_[i] = 0;
  }

  double* masses_;
  const double* intensities_;
  int count_;
  double moment_ = 0;
  double intensity_ = 0;
  int lowest_ = 0;
  int highest_ = 0;
};

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
  const std::vector<std::int32_t> order = ByIntensity(spectrum, points);
  if (merged != nullptr) merged->reserve(points);

  double* const masses = spectrum.GetMasses();
  double* const intensities = spectrum.GetIntensities();
  PeakWalk walk(masses, intensities, count);
  for (const std::int32_t i : order) {
    const double mass = masses[i];
    if (!(mass > 0)) continue;
    const double half = PeakWidthAt(context, mass) / factor * 0.5;
    walk.Absorb(i, mass - half, mass + half);
    if (merged != nullptr) merged->push_back({i, walk.Lowest(), walk.Highest()});
    if (!(walk.Intensity() > 0)) continue;
    masses[i] = walk.Mass();
    intensities[i] = walk.Intensity();
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
