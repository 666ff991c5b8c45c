// Whether a report is whole.
#pragma once

#include <string>
#include <vector>

#include "tools/zrml/check/finding.h"

namespace zrml {

/// Looks for blocks that are still open where the file ends: what a copy that broke off looks like. Empty for
/// a sound one, and for a file that cannot be opened.
std::vector<Finding> CheckReport(const std::wstring& path);

}  // namespace zrml
