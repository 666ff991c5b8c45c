// Centroids of a profile: where its peaks are, and how high or how large. The method, its limits and its
// figures: docs/centroids.md.
#pragma once

#include <optional>
#include <span>
#include <vector>

namespace zrml {

struct CentroidOptions {
  bool isArea = false;  ///< a peak's intensity is the sum of its samples instead of its height
  /// Peaks that stand out of what is beside them by fewer standard deviations are left out.
  double minSignalToNoise = 2.5;
  /// What one ion adds to the intensities: their noise is the square root of the product with it. Estimated
  /// from the profile when absent; 0 for a profile without noise.
  std::optional<double> ionIntensity = std::nullopt;
};

/// What one ion adds to the intensities, from the samples that go up and down by turns, as no peak of three
/// samples or more does; 0 when there are none.
double EstimateIonIntensity(std::span<const double> mz, std::span<const double> intensities);

/// Replaces both vectors by the centroids of the profile, in its order. Masses should ascend: where one does
/// not, a peak ends. A point whose mass is not from 0 to 1e100 is left out; an intensity that is not counts
/// as 0. The arrays are as long as each other. Linear time.
void FindCentroids(std::span<const double> mz, std::span<const double> intensities,
                   const CentroidOptions& options, std::vector<double>& centroidMz,
                   std::vector<double>& centroidIntensities);

}  // namespace zrml
