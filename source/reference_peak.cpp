#include "source/reference_peak.h"

#include "spectrum/centroiding.h"

namespace zrml::source {

ReferencePeak LargestPeak(bool isCentroided, std::span<const double> mz, std::span<const double> intensities,
                          Range window) {
  std::vector<double> centroids;
  std::vector<double> heights;
  if (!isCentroided) {
    FindCentroids(mz, intensities, {}, centroids, heights);
    mz = centroids;
    intensities = heights;
  }
  ReferencePeak peak;
  for (std::size_t i = 0; i < mz.size(); ++i) {
    if (!(mz[i] >= window.low && mz[i] <= window.high && intensities[i] > peak.intensity)) continue;
    peak.mz = mz[i];
    peak.intensity = intensities[i];
  }
  return peak;
}

std::vector<ReferencePeak> FollowPeak(Source& source, int sample, int function, Range window,
                                      const Cancel& cancel) {
  std::vector<ReferencePeak> peaks;
  std::vector<double> mz;
  std::vector<double> intensities;
  const int scans = source.ScanCount(sample, function);
  for (int i = 0; i < scans; ++i) {
    ThrowIfCancelled(cancel);
    const Scan scan = source.ScanAt(sample, function, i);
    const bool isLost = AreAllLost(source.ReadPoints(sample, function, i, mz, intensities));
    ReferencePeak& peak = peaks.emplace_back(
        isLost ? ReferencePeak{.intensity = std::numeric_limits<double>::quiet_NaN()}
               : LargestPeak(scan.representation != Representation::kProfile, mz, intensities, window));
    peak.minutes = scan.minutes;
  }
  return peaks;
}

}  // namespace zrml::source
