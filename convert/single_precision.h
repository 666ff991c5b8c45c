// Numbers of double precision as such of single precision.
#pragma once

#include <span>
#include <vector>

namespace zrml::convert {

/// Rounds `values` into `singles`; true when no number has changed. NaN stays NaN.
bool RoundToSingle(std::span<const double> values, std::vector<float>& singles);

}  // namespace zrml::convert
