// The report of a simulated sample list: a blank and two injections of the ten compounds.
#pragma once

#include <string>

#include "tests/support/text_writer.h"

namespace zrml::sample {

/// The same bytes whenever and wherever it is made, but for its line ends.
std::string Report(LineEnd lineEnd);

}  // namespace zrml::sample
