#include "masslynx/scandata/sub_scans.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace zrml::masslynx {
namespace {

constexpr double kPeakWidth = 0.01;  // m/z

using Values = PeakSum::Values;

// The end of the sub-scan that begins at `begin`, which is before the end of all.
std::size_t SubScanEnd(Values masses, std::size_t begin) {
  std::size_t end = begin + 1;
  while (end < masses.size() && !(masses[end] <= masses[end - 1])) ++end;
  return end;
}

bool HaveSameBits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

}  // namespace

bool HasSubScans(Values masses) {
  bool isRepeated = false;
  for (std::size_t i = 1; i < masses.size(); ++i) {
    if (!(masses[i] <= masses[i - 1])) continue;
    if (masses[i] != masses[0]) return false;
    isRepeated = true;
  }
  return isRepeated;
}

std::optional<PeakSum> SumSubScans(Values masses, Values intensities) {
  if (!HasSubScans(masses)) return std::nullopt;
  std::size_t begin = 0;
  std::size_t end = SubScanEnd(masses, 0);
  PeakSum sum(kPeakWidth, masses.first(end), intensities.first(end));
  bool hasChanged = true;
  while (end < masses.size()) {
    const std::size_t before = end - begin;
    begin = end;
    end = SubScanEnd(masses, begin);
    const std::size_t count = end - begin;
    // Missing points are sub-scans of one point, which change nothing after the first. A longer sub-scan can
    // end with the point that the next one begins with, when there is NaN between them.
    const bool isSame = before == 1 && count == 1 && HaveSameBits(masses[begin], masses[begin - 1]) &&
                        HaveSameBits(intensities[begin], intensities[begin - 1]);
    if (isSame && !hasChanged) continue;
    hasChanged = sum.Add(masses.subspan(begin, count), intensities.subspan(begin, count));
  }
  return sum;
}

}  // namespace zrml::masslynx
