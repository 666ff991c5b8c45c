// Whether a report is whole.
#pragma once

#include <string>
#include <vector>

#include "tools/zrml/check/finding.h"

namespace zrml {

/// Looks for samples whose blocks are still open where the next one begins or the file ends, as in a copy
/// that broke off. Empty for a sound one, and for a file that cannot be opened.
std::vector<Finding> CheckReport(const std::wstring& path);

}  // namespace zrml
