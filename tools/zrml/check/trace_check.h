// Whether the lists of a raw directory's traces are whole. That the data of a trace cannot be read, its
// provider tells.
#pragma once

#include <string>
#include <vector>

#include "tools/zrml/check/finding.h"

namespace zrml {

/// `hasScans`: of some function, so that analog channels without values are not those of a run that never
/// began.
std::vector<Finding> CheckTraceLists(const std::wstring& folder, bool hasScans);

}  // namespace zrml
