#include "masslynx/scandata/sub_scans.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "spectrum/peak_sum.h"

namespace zrml {
namespace {

constexpr double kPeakWidth = 0.01;  // m/z

using Values = PeakSum::Values;

// The end of the sub-scan that begins at `begin`, which is before the end of all.
std::size_t SubScanEnd(Values masses, std::size_t begin) {
  std::size_t end = begin + 1;
  while (end < masses.size() && !(masses[end] <= masses[end - 1])) ++end;
  return end;
}

bool IsRepeated(Values masses) {
  bool isRepeated = false;
  for (std::size_t i = 1; i < masses.size(); ++i) {
    if (!(masses[i] <= masses[i - 1])) continue;
    if (masses[i] != masses[0]) return false;
    isRepeated = true;
  }
  return isRepeated;
}

bool HaveSameBits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

// A file that was cut lacks points at its end: they are all alike.
std::size_t PointsBeforeTheTail(Values masses, Values intensities) {
  std::size_t count = masses.size();
  while (count > 1 && HaveSameBits(masses[count - 1], masses[count - 2]) &&
         HaveSameBits(intensities[count - 1], intensities[count - 2]))
    --count;
  return count;
}

}  // namespace

std::size_t MostSubScanWork(std::size_t points) {
  constexpr std::size_t kAlways = std::size_t{1} << 23;
  constexpr std::size_t kPerPoint = 64;
  return std::max(kAlways, kPerPoint * points);
}

bool SumSubScans(CZRMassSpectrum& spectrum, std::optional<std::size_t> limit) {
  const Values masses(spectrum.GetMasses(), spectrum.UsablePoints());
  const Values intensities(spectrum.GetIntensities(), spectrum.UsablePoints());
  if (!IsRepeated(masses)) return false;
  const std::size_t mostWork = limit.value_or(MostSubScanWork(PointsBeforeTheTail(masses, intensities)));
  std::size_t begin = 0;
  std::size_t end = SubScanEnd(masses, 0);
  PeakSum sum(kPeakWidth, masses.first(end), intensities.first(end));
  bool hasChanged = true;
  while (end < masses.size()) {
    const std::size_t before = end - begin;
    begin = end;
    end = SubScanEnd(masses, begin);
    const std::size_t count = end - begin;
    // Points that the file lacks are sub-scans of one point, which after the first change nothing. A sub-scan
    // of more can end with the point that the next begins with, when it has NaN between.
    const bool isSame = before == 1 && count == 1 && HaveSameBits(masses[begin], masses[begin - 1]) &&
                        HaveSameBits(intensities[begin], intensities[begin - 1]);
    if (isSame && !hasChanged) continue;
    hasChanged = sum.Add(masses.subspan(begin, count), intensities.subspan(begin, count));
    if (sum.Work() > mostWork) return false;
  }
  CZRMassSpectrum summed;
  summed.SetSize(static_cast<int>(sum.Masses().size()));
  summed.CopyMasses(sum.Masses().data());
  summed.CopyIntensities(sum.Intensities().data());
  summed.SetPolarity(spectrum.GetPolarity());
  spectrum.Swap(summed);
  return true;
}

}  // namespace zrml
