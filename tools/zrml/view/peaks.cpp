#include "tools/zrml/view/peaks.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace zrml::view {
namespace {

constexpr double kValley = 0.5;     // of the lower one of two apexes
constexpr double kSmallest = 0.01;  // of the largest

// Marks what belongs to the peak at `apex` on one side: until the signal has fallen to a valley and risen
// from it to twice as much.
void MarkSlope(std::span<const double> intensities, std::size_t apex, int step, std::vector<bool>& isTaken) {
  double lowest = intensities[apex];
  const auto end = static_cast<std::ptrdiff_t>(intensities.size());
  for (auto i = static_cast<std::ptrdiff_t>(apex); i >= 0 && i < end; i += step) {
    const double value = intensities[static_cast<std::size_t>(i)];
    if (std::isnan(value)) continue;
    lowest = std::min(lowest, value);
    if (lowest < kValley * value) return;
    isTaken[static_cast<std::size_t>(i)] = true;
  }
}

bool IsApex(std::span<const double> intensities, std::size_t i) {
  const double value = intensities[i];
  const bool isOverLeft = i == 0 || !(intensities[i - 1] > value);
  const bool isOverRight = i + 1 == intensities.size() || !(intensities[i + 1] > value);
  return isOverLeft && isOverRight;
}

// Of positive intensities, the largest first.
std::vector<std::size_t> Apexes(std::span<const double> intensities) {
  std::vector<std::size_t> apexes;
  for (std::size_t i = 0; i < intensities.size(); ++i) {
    if (intensities[i] > 0 && IsApex(intensities, i)) apexes.push_back(i);
  }
  std::stable_sort(apexes.begin(), apexes.end(),
                   [&](std::size_t a, std::size_t b) { return intensities[a] > intensities[b]; });
  return apexes;
}

}  // namespace

std::vector<std::size_t> LargestPeaks(std::span<const double> intensities, std::size_t count) {
  std::vector<std::size_t> peaks;
  std::vector<bool> isTaken(intensities.size());
  for (const std::size_t apex : Apexes(intensities)) {
    if (peaks.size() == count || intensities[apex] < kSmallest * intensities[peaks.empty() ? apex : peaks[0]])
      break;
    if (isTaken[apex]) continue;
    peaks.push_back(apex);
    MarkSlope(intensities, apex, -1, isTaken);
    MarkSlope(intensities, apex, 1, isTaken);
  }
  return peaks;
}

}  // namespace zrml::view
