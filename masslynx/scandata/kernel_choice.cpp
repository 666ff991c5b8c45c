// Alone in its file, so that a program that tests one kind of kernels can bring its own choice.
#include "masslynx/scandata/point_kernels.h"

namespace zrml::masslynx {

const PointKernels& ChosenKernels() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2") ? kAvx2Kernels : kPortableKernels;
}

}  // namespace zrml::masslynx
