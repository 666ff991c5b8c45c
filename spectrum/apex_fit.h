// The apex of a peak from the samples around its top: a curve through their logarithms, by least squares.
#pragma once

#include <optional>
#include <span>

namespace zrml {

struct Apex {
  double mass;
  double height;
};

/// A cubic (a parabola for fewer than five samples) through ln(intensity), each sample weighted by the square
/// of its intensity. Exact for a Gaussian; the cubic term takes up a tail on one side. Masses ascend and
/// intensities are positive. Nothing when there are fewer than three samples, or when the curve has no
/// maximum between the first and the last, or one of more than twice the `highest`
/// intensity.
std::optional<Apex> FitApex(std::span<const double> mz, std::span<const double> intensities, double highest);

}  // namespace zrml
