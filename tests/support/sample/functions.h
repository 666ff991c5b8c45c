// The functions of the simulated run. Each has its own timing within cycles of one second.
#pragma once

#include "tests/support/raw_directory_builder.h"

namespace zrml::sample {

inline constexpr double kRunMinutes = 10;

FunctionFiles Survey();           ///< time-of-flight continuum
FunctionFiles FragmentSpectra();  ///< of the strongest compound at the time, centroids
FunctionFiles LockMass();         ///< reference ions, continuum
FunctionFiles DiodeArray();       ///< absorbance
FunctionFiles IonRecording();     ///< selected negative ions, centroids

}  // namespace zrml::sample
