// Files that exist in memory only. A program that contains simulated_files.cpp has these in place of the
// operating system's: fuzzers open thousands of directories a second, and none leaves its process.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "common/bytes.h"

namespace zrml::fuzz {

/// Contents by file name. Names tell case apart.
using Files = std::map<std::wstring, std::vector<std::byte>, std::less<>>;

/// The folder that all files are in, without a separator behind it.
inline constexpr const wchar_t* kFolder = L"/run.raw";

/// Replaces what the folder holds. Files that are open keep what they held.
void SetFiles(Files files);

/// How many files are open.
int OpenFileCount();

}  // namespace zrml::fuzz
