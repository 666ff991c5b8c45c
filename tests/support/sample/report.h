// The report of a simulated sample list: a blank and two injections of the ten compounds.
#pragma once

#include <string>

#include "tests/support/text_writer.h"

namespace zrml::sample {

/// Always and everywhere the same bytes, except for line ends.
std::string Report(LineEnd lineEnd);

}  // namespace zrml::sample
