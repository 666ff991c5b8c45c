#include "source/reference_peak.h"

#include "spectrum/centroiding.h"

namespace zrml::source {
namespace {

void TakeLargest(const std::vector<double>& mz, const std::vector<double>& intensities, Range window,
                 ReferencePeak& peak) {
  for (std::size_t i = 0; i < mz.size(); ++i) {
    if (!(mz[i] >= window.low && mz[i] <= window.high && intensities[i] > peak.intensity)) continue;
    peak.mz = mz[i];
    peak.intensity = intensities[i];
  }
}

}  // namespace

std::vector<ReferencePeak> FollowPeak(Source& source, int sample, int function, Range window,
                                      const Cancel& cancel) {
  std::vector<ReferencePeak> peaks;
  std::vector<double> mz;
  std::vector<double> intensities;
  std::vector<double> centroidMz;
  std::vector<double> heights;
  const int scans = source.ScanCount(sample, function);
  for (int i = 0; i < scans; ++i) {
    ThrowIfCancelled(cancel);
    const Scan scan = source.ScanAt(sample, function, i);
    ReferencePeak& peak = peaks.emplace_back(ReferencePeak{.minutes = scan.minutes});
    if (AreAllLost(source.ReadPoints(sample, function, i, mz, intensities))) {
      peak.intensity = std::numeric_limits<double>::quiet_NaN();
    } else if (scan.isCentroided) {
      TakeLargest(mz, intensities, window, peak);
    } else {
      FindCentroids(mz, intensities, {}, centroidMz, heights);
      TakeLargest(centroidMz, heights, window, peak);
    }
  }
  return peaks;
}

}  // namespace zrml::source
