// Everything is read as on a processor without AVX2.
#include "masslynx/scandata/point_kernels.h"

namespace zrml::masslynx {

const PointKernels& ChosenKernels() { return kPortableKernels; }

}  // namespace zrml::masslynx
