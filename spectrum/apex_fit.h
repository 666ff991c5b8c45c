// The apex of a peak from the samples around its top: a curve through their logarithms, by least squares.
#pragma once

#include <array>
#include <optional>
#include <span>

namespace zrml {

struct Apex {
  double mass;
  double height;
};

/// The samples around the top of a peak. Masses ascend and intensities are positive.
struct PeakTop {
  std::span<const double> mz;
  std::span<const double> intensities;
  double highest;
};

/// A cubic (a parabola for fewer than five samples) through ln(intensity), each sample weighted by the square
/// of its intensity. Exact for a Gaussian; the cubic term takes up a tail on one side. Nothing when there are
/// fewer than three samples, or when the curve has no maximum between the first and the last, or one of more
/// than twice the highest intensity. Two tops take less time together than one after the other, and each has
/// the bits that it has beside any other.
std::array<std::optional<Apex>, 2> FitApexes(const PeakTop& one, const PeakTop& other);

}  // namespace zrml
