// Adding up many peak lists, peaks of equal mass alone becoming one.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace zrml {

/// Gives the same bits as AddSpectrum() does without a peak width for one list after the other. Each of those
/// additions goes through the whole sum; here all together take n log n steps for n points, and memory for a
/// few times the points of the sum.
class EqualPeaks {
 public:
  using Values = std::span<const double>;

  /// Both are of one length. False, and nothing is added, unless the masses are above 0 and each is above the
  /// one before it.
  bool Add(Values masses, Values intensities);

  /// The sum so far.
  std::size_t Count();
  /// Each has room for Count() values.
  void CopyTo(double* masses, double* intensities) const;

 private:
  struct Peak {
    double mass;
    double intensity;
  };

  void Fold();

  std::vector<Peak> peaks_;  // in front those that are added up already
  std::size_t folded_ = 0;
};

}  // namespace zrml
