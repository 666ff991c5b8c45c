// Paths of the interface as the standard library takes them.
#pragma once

#include <filesystem>
#include <string>

namespace zrml {

/// Off Windows a backslash separates folders as a slash does.
std::filesystem::path NativePath(std::wstring path);
std::wstring WidePath(const std::filesystem::path& path);

/// The path's bytes, with slashes: UTF-8 on Windows, as the system has them elsewhere.
std::string PathBytes(const std::filesystem::path& path);

/// Makes a folder, and those that it is in, unless it exists. Throws a Failure.
void MakeFolder(const std::wstring& path);

}  // namespace zrml
