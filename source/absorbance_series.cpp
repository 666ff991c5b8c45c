#include "source/absorbance_series.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zrml::source {
namespace {

// What of a scan is wanted.
Range ReachOf(const Wavelengths& wanted, const std::vector<double>& recorded) {
  if (wanted.isBand) return wanted.range;
  const auto distance = [&](double wavelength) { return std::abs(wavelength - wanted.range.low); };
  const auto nearest = std::min_element(recorded.begin(), recorded.end(),
                                        [&](double a, double b) { return distance(a) < distance(b); });
  if (nearest == recorded.end() || !(distance(*nearest) <= kFarthestWavelength)) return {1, 0};
  return {*nearest, *nearest};
}

void Include(double wavelength, std::optional<Range>& range) {
  if (!range) range = {wavelength, wavelength};
  range = {std::min(range->low, wavelength), std::max(range->high, wavelength)};
}

}  // namespace

AbsorbanceSeries ReadAbsorbanceSeries(Source& source, int sample, std::optional<int> function,
                                      const Wavelengths& wavelengths, const Cancel& cancel) {
  AbsorbanceSeries series;
  std::vector<double> recorded;
  std::vector<double> values;
  const int scans = function ? source.ScanCount(sample, *function) : source.AbsorbanceScanCount(sample);
  if (function) series.points.minutes = source.Minutes(sample, *function);
  for (int scan = 0; scan < scans; ++scan) {
    ThrowIfCancelled(cancel);
    if (!function) series.points.minutes.push_back(source.AbsorbanceMinutes(sample, scan));
    function ? source.ReadPoints(sample, *function, scan, recorded, values)
             : source.ReadAbsorbance(sample, scan, recorded, values);
    const Range reach = ReachOf(wavelengths, recorded);
    double sum = 0;
    int count = 0;
    for (std::size_t i = 0; i < recorded.size(); ++i) {
      Include(recorded[i], series.recorded);
      if (!(recorded[i] >= reach.low && recorded[i] <= reach.high)) continue;
      Include(recorded[i], series.used);
      sum += values[i];
      ++count;
    }
    series.points.intensities.push_back(count > 0 ? sum / count : std::numeric_limits<double>::quiet_NaN());
  }
  return series;
}

}  // namespace zrml::source
