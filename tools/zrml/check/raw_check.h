// Whether the files of a raw directory fit together. Looks at the function table, the history, and the size
// of every index, statistics and data file, through the constants of their formats; not at the points.
#pragma once

#include <string>
#include <vector>

namespace zrml {

struct Finding {
  std::wstring file;       // its name; empty when it is about the whole
  std::wstring problem;    // "is missing, so the function has no scans"
  bool losesData = false;  // the provider gives zeros or nothing for what was acquired
};

/// Whether `path` is the folder of a raw directory or a file in one; `folder` is then that folder.
bool IsRawDirectory(const std::wstring& path, std::wstring& folder);

/// Empty for a sound one.
std::vector<Finding> CheckRawDirectory(const std::wstring& folder);

}  // namespace zrml
