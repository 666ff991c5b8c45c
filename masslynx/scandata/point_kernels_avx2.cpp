// Compiled for AVX2, without fused multiply-add.
#include "masslynx/scandata/point_kernels.h"
#include "masslynx/scandata/point_kernels.inc"

namespace zrml::masslynx {

const PointKernels kAvx2Kernels = kKernels;

}  // namespace zrml::masslynx
