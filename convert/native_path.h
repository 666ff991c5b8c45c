// Paths as the standard library takes them, and back.
#pragma once

#include <filesystem>
#include <string>

namespace zrml::convert {

/// Of the system's bytes (UTF-8 on Windows).
std::filesystem::path NativePath(const std::string& path);

/// The system's bytes, with slashes (UTF-8 on Windows).
std::string PathText(const std::filesystem::path& path);

/// Absolute, without "." and "..", and without a separator at its end.
std::filesystem::path AbsolutePath(const std::string& path);

/// A file of whatever kind, but no folder.
bool IsFile(const std::string& path);

}  // namespace zrml::convert
