// Whether the files of a source are whole, of either kind.
#pragma once

#include <string>
#include <vector>

#include "tools/zrml/check/finding.h"

namespace zrml {

/// Of a report that file alone; else of the raw directory that `path` is, or is a file in. Empty for a sound
/// source, and for what is neither.
std::vector<Finding> CheckSource(const std::wstring& path, bool isReport);

}  // namespace zrml
