// The passes of masslynx/scandata/point_kernels.h, point by point with the functions for single points: the
// reference for the fast ones.
#pragma once

#include <vector>

#include "masslynx/scandata/point_kernels.h"

namespace zrml::fuzz {

using masslynx::PointKernels;

extern const PointKernels kScalarKernels;

/// The library's own kernels that this processor supports.
std::vector<const PointKernels*> FastKernels();

/// Sets the result of ChosenKernels(); the library's own choice is not linked.
void ChooseKernels(const PointKernels& kernels);

}  // namespace zrml::fuzz
