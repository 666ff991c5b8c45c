// The passes of masslynx/scandata/point_kernels.h done point by point with the functions for single points:
// what the fast ones are compared with.
#pragma once

#include <vector>

#include "masslynx/scandata/point_kernels.h"

namespace zrml::fuzz {

using masslynx::PointKernels;

extern const PointKernels kScalarKernels;

/// The library's own that this processor runs.
std::vector<const PointKernels*> FastKernels();

/// What ChosenKernels() gives from now on; the library's own choice is not linked.
void ChooseKernels(const PointKernels& kernels);

}  // namespace zrml::fuzz
