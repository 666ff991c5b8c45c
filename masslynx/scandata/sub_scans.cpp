#include "masslynx/scandata/sub_scans.h"

#include <algorithm>
#include <vector>

#include "spectrum/add_spectrum.h"

namespace zrml {
namespace {

constexpr double kPeakWidth = 0.01;  // m/z

// A sum of two spectra costs as much as so many visits before it visits any point.
constexpr std::size_t kVisitsOfACall = 8;

// Where sub-scans start after the first, and behind them the end; nothing for a scan that is not repeated.
std::vector<std::size_t> SubScanEnds(const CZRMassSpectrum& spectrum) {
  const std::size_t count = spectrum.UsablePoints();
  const double* const masses = spectrum.GetMasses();
  std::vector<std::size_t> ends;
  for (std::size_t i = 1; i < count; ++i) {
    if (!(masses[i] <= masses[i - 1])) continue;
    if (masses[i] != masses[0]) return {};
    ends.push_back(i);
  }
  if (!ends.empty()) ends.push_back(count);
  return ends;
}

// A fresh spectrum of the points [begin, end): it counts as centroided, as sub-scans are summed as peaks.
CZRMassSpectrum SubScan(const CZRMassSpectrum& scan, std::size_t begin, std::size_t end) {
  CZRMassSpectrum part;
  part.SetSize(static_cast<int>(end - begin));
  part.CopyMasses(scan.GetMasses() + begin);
  part.CopyIntensities(scan.GetIntensities() + begin);
  return part;
}

}  // namespace

std::size_t MostSubScanVisits(std::size_t points, std::size_t subScans) {
  constexpr std::size_t kFew = 512;
  constexpr std::size_t kAlwaysOfFew = std::size_t{1} << 24;
  constexpr std::size_t kAlways = std::size_t{1} << 23;
  constexpr std::size_t kPerPoint = 16;
  return std::max(subScans <= kFew ? kAlwaysOfFew : kAlways, kPerPoint * points);
}

bool SumSubScans(CZRMassSpectrum& spectrum, std::optional<std::size_t> limit) {
  const std::vector<std::size_t> ends = SubScanEnds(spectrum);
  if (ends.empty()) return false;
  const std::size_t mostVisits = limit.value_or(MostSubScanVisits(spectrum.UsablePoints(), ends.size()));
  CZRMassSpectrum sum = SubScan(spectrum, 0, ends[0]);
  sum.SetPolarity(spectrum.GetPolarity());
  std::size_t visits = 0;
  for (std::size_t k = 1; k < ends.size(); ++k) {
    visits += sum.UsablePoints() + (ends[k] - ends[k - 1]) + kVisitsOfACall;
    if (visits > mostVisits) return false;
    AddSpectrum(true, kPeakWidth, SubScan(spectrum, ends[k - 1], ends[k]), sum);
  }
  spectrum.Swap(sum);
  return true;
}

}  // namespace zrml
