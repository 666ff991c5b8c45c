// The mass axis on which profiles are added: a spectrum's own samples, those that its acquisition left out
// between them, and its continuation below and above. docs/spectrum-arithmetic.md
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "spectrum/scan_law.h"
#include "spectrum/step_model.h"

namespace zrml {

/// A grid is not filled beyond this many points: then only points that enclose a source sample are made, at
/// most two for each.
inline constexpr std::size_t kMostGridPoints = std::size_t{1} << 24;

/// Points of a profile, masses ascending. Both arrays have the same length.
struct ProfileView {
  std::span<const double> masses;
  std::span<const double> intensities;
};

struct ProfileGrid {
  std::vector<double> masses;
  std::vector<double> intensities;
  /// The first point was made to enclose the source's low end and lies below it.
  bool firstIsProvisional = false;
};

/// The grid of `target`, of at least two points, for adding `source`: all of target's samples with their
/// intensities, and points of zero intensity placed by the sampling `law` where that agrees with the step
/// model, else by the model. It covers source's positive masses. Throws std::bad_alloc when it would have
/// more points than a spectrum can hold.
ProfileGrid BuildProfileGrid(const ProfileView& target, const ProfileView& source, const ScanLawHolder& law,
                             const SamplingStepModel& model, std::size_t mostPoints = kMostGridPoints);

}  // namespace zrml
