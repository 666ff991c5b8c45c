// The whole simulated run: ten compounds separated in ten minutes.
#pragma once

#include "tests/support/raw_directory_builder.h"

namespace zrml::sample {

/// Always and everywhere the same bytes.
RawDirectoryBuilder Acquisition();

}  // namespace zrml::sample
