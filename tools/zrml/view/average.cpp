#include "tools/zrml/view/average.h"

#include <algorithm>

#include "source/sum_scans.h"

namespace zrml::view {
namespace {

struct Scans {
  int first = 0;
  int end = 0;

  std::size_t Count() const { return static_cast<std::size_t>(end - first); }
};

Scans ScansWithin(const std::vector<double>& times, source::Range minutes) {
  const auto first = std::lower_bound(times.begin(), times.end(), minutes.low);
  const auto end = std::upper_bound(first, times.end(), minutes.high);
  if (first == end) throw source::Error(source::Status::kWrongArgument, "there is no scan in this time");
  return {static_cast<int>(first - times.begin()), static_cast<int>(end - times.begin())};
}

Curve MeanOf(source::Source& source, int sample, int function, const Scans& scans,
             const source::Cancel& cancel) {
  source::ScanSum sum =
      source::SumScans(source, sample, function, scans.first, scans.end, {kAveragePeakWidth, true}, cancel);
  for (double& intensity : sum.intensities) intensity /= static_cast<double>(scans.Count());
  return {std::move(sum.mz), std::move(sum.intensities), {}};
}

double Interpolated(const Curve& profile, double mz) {
  const auto above = std::lower_bound(profile.x.begin(), profile.x.end(), mz);
  if (above == profile.x.end()) return 0;
  const auto i = static_cast<std::size_t>(above - profile.x.begin());
  if (*above == mz) return profile.y[i];
  if (i == 0) return 0;
  const double share = (mz - profile.x[i - 1]) / (profile.x[i] - profile.x[i - 1]);
  return profile.y[i - 1] + share * (profile.y[i] - profile.y[i - 1]);
}

double SumAround(const Curve& centroids, double mz) {
  const double half = mz * kAveragePeakWidth / 2e6;
  auto at = std::lower_bound(centroids.x.begin(), centroids.x.end(), mz - half);
  double sum = 0;
  for (; at != centroids.x.end() && *at <= mz + half; ++at)
    sum += centroids.y[static_cast<std::size_t>(at - centroids.x.begin())];
  return sum;
}

}  // namespace

Curve Difference(const Curve& curve, const Curve& background, bool isCentroided) {
  Curve difference;
  for (std::size_t i = 0; i < curve.x.size(); ++i) {
    const double mz = curve.x[i];
    const double more =
        curve.y[i] - (isCentroided ? SumAround(background, mz) : Interpolated(background, mz));
    if (isCentroided && !(more > 0)) continue;
    difference.x.push_back(mz);
    difference.y.push_back(std::max(more, 0.0));
  }
  return difference;
}

Average AverageScans(source::Source& source, int sample, int function, source::Range minutes,
                     std::optional<source::Range> background, const Work& work) {
  const std::vector<double> times = source.Minutes(sample, function);
  const Scans front = ScansWithin(times, minutes);
  const Scans back = background ? ScansWithin(times, *background) : Scans();
  const source::Cancel cancel = work.Counting(front.Count() + back.Count());
  Average average = {MeanOf(source, sample, function, front, cancel), front.first,
                     static_cast<int>(front.Count()), static_cast<int>(back.Count())};
  if (background) {
    const bool isCentroided = source.ScanAt(sample, function, front.first).isCentroided;
    average.curve = Difference(average.curve, MeanOf(source, sample, function, back, cancel), isCentroided);
  }
  return average;
}

}  // namespace zrml::view
