// How far a reference compound is from its mass, spectrum by spectrum.
#pragma once

#include <optional>
#include <span>

namespace zrml::qc {

/// Its peak is the highest point no further than this from the mass.
inline constexpr double kLockMassWindowPpm = 100;

/// The deviation, in parts per million, of the peak at `lockMass`: of a centroid its mass, of a profile the
/// apex of a curve through the samples of its upper half. No value when there is no point, or no intensity.
std::optional<double> LockMassError(std::span<const double> mz, std::span<const double> intensities,
                                    bool isCentroided, double lockMass);

}  // namespace zrml::qc
