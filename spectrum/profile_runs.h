// The samples of a profile by runs: those that follow each other on the grid, without a gap or two zeros in a
// row.
#pragma once

#include <cstddef>
#include <limits>
#include <span>
#include <vector>

namespace zrml {

using SampleIndex = std::ptrdiff_t;

/// What counts of an intensity: 0 when it is negative, infinite or not a number.
inline double CountedIntensity(double intensity) {
  return intensity > 0 && intensity <= std::numeric_limits<double>::max() ? intensity : 0;
}

/// Part of a profile, with ascending masses. It begins and ends with an intensity; around it all is 0.
struct ProfileRun {
  const double* mz;
  const double* intensities;
  SampleIndex first;
  SampleIndex last;

  double operator[](SampleIndex i) const {
    return i < first || i > last ? 0 : CountedIntensity(intensities[i]);
  }
  /// The mean of three samples, the middle one counted twice.
  double Smooth(SampleIndex i) const {
    return 0.25 * (*this)[i - 1] + 0.5 * (*this)[i] + 0.25 * (*this)[i + 1];
  }
};

/// A step ends a run when it is more than half as long again as the shortest of the eight before and after
/// it: acquisitions leave out zeros. So do a mass that is not above the one before, and one that is not a
/// number from 0 to 1e100, whose point is in no run. The arrays are as long as each other.
std::vector<ProfileRun> FindProfileRuns(std::span<const double> mz, std::span<const double> intensities);

/// The intensity of an ion if two samples differ by one standard deviation: counting ions makes the variance
/// of each sample the product of both intensities.
inline double IonOfDifference(double one, double other) {
  return (one - other) / (one + other) * (one - other);  // the square alone might overflow
}

/// The median of IonOfDifference where samples go up and down by turns, as no peak of three samples or more
/// does; 0 when they never do.
double IonIntensityOf(const std::vector<ProfileRun>& runs);

}  // namespace zrml
