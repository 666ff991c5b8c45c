// Whether the files of a raw directory fit together. Looks at the function table, the history, and the size
// of every index, statistics and data file, through the constants of their formats; not at the points.
#pragma once

#include <string>
#include <vector>

namespace zrml {

// Which functions of the provider's list a finding is about, by their numbers from 1.
struct Concern {
  enum class Kind {
    kAll,
    kFunction,
    kFunctionsFrom,  // a function is not listed: it and those behind it, whose numbers are not what they were
    kAbsorbance,
    kNone,  // another than the one that the path chooses
  };

  Kind kind = Kind::kAll;
  int number = 0;
};

struct Finding {
  std::wstring file;       // its name; empty when it is about the whole
  std::wstring problem;    // "is missing, so the function has no scans"
  bool losesData = false;  // the provider gives zeros or nothing for what was acquired
  Concern concern = {};
};

/// Whether `path` is the folder of a raw directory or a file in one; `folder` is then that folder.
bool IsRawDirectory(const std::wstring& path, std::wstring& folder);

/// Empty for a sound one. `path` is the folder or the file in it that is opened.
std::vector<Finding> CheckRawDirectory(const std::wstring& folder, const std::wstring& path);

}  // namespace zrml
