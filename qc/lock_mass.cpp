#include "qc/lock_mass.h"

#include <cmath>
#include <cstddef>
#include <vector>

#include "spectrum/centroiding.h"

namespace zrml::qc {

std::optional<double> LockMassError(std::span<const double> mz, std::span<const double> intensities,
                                    bool isCentroided, double lockMass) {
  constexpr double kMillion = 1e6;
  std::vector<double> centroids;
  std::vector<double> heights;
  if (!isCentroided) {
    FindCentroids(mz, intensities, {}, centroids, heights);
    mz = centroids;
    intensities = heights;
  }
  std::optional<double> error;
  double height = 0;
  for (std::size_t i = 0; i < mz.size(); ++i) {
    if (std::abs(mz[i] - lockMass) > kLockMassWindow || !(intensities[i] > height)) continue;
    height = intensities[i];
    error = (mz[i] - lockMass) / lockMass * kMillion;
  }
  return error;
}

}  // namespace zrml::qc
