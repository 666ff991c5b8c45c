// Everything reads as it does on a processor without AVX2.
#include "masslynx/scandata/point_kernels.h"

namespace zrml {

const PointKernels& ChosenKernels() { return kPortableKernels; }

}  // namespace zrml
