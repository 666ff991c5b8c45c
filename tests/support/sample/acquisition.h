// The whole simulated run: ten compounds separated in ten minutes.
#pragma once

#include "tests/support/raw_directory_builder.h"

namespace zrml::sample {

/// The same bytes whenever and wherever it is made.
RawDirectoryBuilder Acquisition();

}  // namespace zrml::sample
