// For bench/centroids.py: preloaded into PeakPickerHiRes, prints the processor's seconds for its search
// alone, from peaks in memory to peaks in memory.
#include <cstdio>
#include <ctime>
#include <dlfcn.h>

// PeakPickerHiRes::pickExperiment(const MSExperiment&, MSExperiment&, bool) const of OpenMS, as compilers
// name it.
#define ZRML_PICK "_ZNK6OpenMS15PeakPickerHiRes14pickExperimentERKNS_12MSExperimentERS1_b"

extern "C" {

[[gnu::visibility("default")]] void PickExperiment(const void* picker, const void* input, void* output,
                                                   bool checksType) asm(ZRML_PICK);

void PickExperiment(const void* picker, const void* input, void* output, bool checksType) {
  const auto pick = reinterpret_cast<decltype(&PickExperiment)>(dlsym(RTLD_NEXT, ZRML_PICK));
  const std::clock_t began = std::clock();
  pick(picker, input, output, checksType);
  std::fprintf(stderr, "search: %.6f s\n", static_cast<double>(std::clock() - began) / CLOCKS_PER_SEC);
}

}  // extern "C"
