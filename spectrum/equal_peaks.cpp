#include "spectrum/equal_peaks.h"

#include <algorithm>
#include <functional>

namespace zrml {

bool EqualPeaks::Add(Values masses, Values intensities) {
  constexpr std::size_t kFewPeaks = 1u << 20;
  const bool isUsual = masses.empty() ||
                       (masses.front() > 0 && std::adjacent_find(masses.begin(), masses.end(),
                                                                 std::not_fn(std::less<>())) == masses.end());
  if (!isUsual) return false;
  for (std::size_t i = 0; i < masses.size(); ++i) peaks_.push_back({masses[i], intensities[i]});
  if (peaks_.size() > 2 * folded_ + kFewPeaks) Fold();
  return true;
}

// Peaks of one mass stay in the order of their lists, which is the order of the additions.
void EqualPeaks::Fold() {
  std::stable_sort(peaks_.begin(), peaks_.end(),
                   [](const Peak& a, const Peak& b) { return a.mass < b.mass; });
  std::size_t count = 0;
  for (const Peak& peak : peaks_) {
    if (count > 0 && peaks_[count - 1].mass == peak.mass) {
      peaks_[count - 1].intensity += peak.intensity;
    } else {
      peaks_[count++] = peak;
    }
  }
  peaks_.resize(count);
  folded_ = count;
}

std::size_t EqualPeaks::Count() {
  if (folded_ != peaks_.size()) Fold();
  return folded_;
}

void EqualPeaks::CopyTo(double* masses, double* intensities) const {
  for (const Peak& peak : peaks_) {
    *masses++ = peak.mass;
    *intensities++ = peak.intensity;
  }
}

}  // namespace zrml
