// Whether the files of a raw directory fit together. Looks at the function table, the history, and the size
// of every index, statistics and data file, through the constants of their formats; not at the points.
#pragma once

#include <string>
#include <vector>

#include "tools/zrml/check/finding.h"

namespace zrml {

/// Whether `path` is the folder of a raw directory or a file in one, readable or not; `folder` is then that
/// folder.
bool IsRawDirectory(const std::wstring& path, std::wstring& folder);

/// Whether there is a file that names its functions, readable or not.
bool HasLabels(const std::wstring& folder);

/// Empty for a sound one. `path` is the folder or the file in it that is opened.
std::vector<Finding> CheckRawDirectory(const std::wstring& folder, const std::wstring& path);

}  // namespace zrml
