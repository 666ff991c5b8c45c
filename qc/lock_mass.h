// How far a reference compound is from its mass, spectrum by spectrum.
#pragma once

#include <optional>
#include <span>

namespace zrml::qc {

/// Its peak is the highest one no further than this from the mass.
inline constexpr double kLockMassWindow = 0.5;

/// The deviation of the peak at `lockMass`, in parts per million. The peaks of a profile are its centroids
/// (FindCentroids), those of a centroided spectrum its points above 0. No value when there is none.
std::optional<double> LockMassError(std::span<const double> mz, std::span<const double> intensities,
                                    bool isCentroided, double lockMass);

}  // namespace zrml::qc
