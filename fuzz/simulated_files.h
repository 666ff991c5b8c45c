// Files that exist in memory only. In a program with simulated_files.cpp they replace those of the operating
// system: fuzzers open thousands of directories a second without leaving the process.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "common/bytes.h"

namespace zrml::fuzz {

/// Contents by file name. Names are case-sensitive.
using Files = std::map<std::wstring, std::vector<std::byte>, std::less<>>;

/// The folder of all files, without a trailing separator.
inline constexpr const wchar_t* kFolder = L"/run.raw";

/// Replaces the content of the folder. Open files keep their content.
void SetFiles(Files files);

/// The number of open files.
int OpenFileCount();

}  // namespace zrml::fuzz
