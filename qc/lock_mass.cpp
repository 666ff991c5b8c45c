#include "qc/lock_mass.h"

#include <algorithm>
#include <cstddef>

#include "spectrum/apex_fit.h"

namespace zrml::qc {
namespace {

constexpr double kMillion = 1e6;

// The samples around `top` that are at least half as high and lead down from it, as first and end.
std::pair<std::size_t, std::size_t> UpperHalf(std::span<const double> intensities, std::size_t top) {
  const double half = intensities[top] / 2;
  const auto isPart = [&](std::size_t sample, std::size_t inner) {
    return intensities[sample] >= half && intensities[sample] <= intensities[inner];
  };
  std::size_t first = top;
  while (first > 0 && isPart(first - 1, first)) --first;
  std::size_t end = top + 1;
  while (end < intensities.size() && isPart(end, end - 1)) ++end;
  return {first, end};
}

double ApexAt(std::span<const double> mz, std::span<const double> intensities, std::size_t top) {
  const auto [first, end] = UpperHalf(intensities, top);
  const auto apex = FitApex(mz.subspan(first, end - first), intensities.subspan(first, end - first));
  return apex ? apex->mass : mz[top];
}

}  // namespace

std::optional<double> LockMassError(std::span<const double> mz, std::span<const double> intensities,
                                    bool isCentroided, double lockMass) {
  const double width = lockMass * kLockMassWindowPpm / kMillion;
  const auto first = std::lower_bound(mz.begin(), mz.end(), lockMass - width) - mz.begin();
  const auto last = std::upper_bound(mz.begin(), mz.end(), lockMass + width) - mz.begin();
  if (first >= last) return std::nullopt;
  const auto top = static_cast<std::size_t>(
      std::max_element(intensities.begin() + first, intensities.begin() + last) - intensities.begin());
  if (!(intensities[top] > 0)) return std::nullopt;
  const double mass = isCentroided ? mz[top] : ApexAt(mz, intensities, top);
  return (mass - lockMass) / lockMass * kMillion;
}

}  // namespace zrml::qc
