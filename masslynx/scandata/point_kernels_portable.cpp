#include "masslynx/scandata/point_kernels.h"
#include "masslynx/scandata/point_kernels.inc"

namespace zrml {

const PointKernels kPortableKernels = kKernels;

}  // namespace zrml
