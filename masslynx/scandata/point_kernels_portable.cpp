#include "masslynx/scandata/point_kernels.h"
#include "masslynx/scandata/point_kernels.inc"

namespace zrml::masslynx {

const PointKernels kPortableKernels = kKernels;

}  // namespace zrml::masslynx
