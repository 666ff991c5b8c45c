// Files that users write: lists of targets, of sources.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zrml::tool {

/// The text of a file of `things` ("targets"), or of standard input for "-", without a byte order mark.
/// Throws a Failure that names the file when it cannot be read, is too large, or is plainly not UTF-8.
std::string ReadListFile(const std::string& path, const std::string& things);

/// The lines of a file's text without their ends, LF or CR LF. Throws a Failure when all end with CR alone.
std::vector<std::string_view> LinesOf(std::string_view path, std::string_view text);

/// The lines of a file, without blank ones. Throws a Failure when there are none.
std::vector<std::string> ReadLines(const std::string& path, const std::string& things);

}  // namespace zrml::tool
