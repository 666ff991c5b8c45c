// Paths in arguments and converted files (bytes; UTF-8 on Windows), and paths of the system.
#pragma once

#include <string>
#include <string_view>

#include "common/platform/paths.h"

namespace zrml::convert {

using platform::SystemPath;

/// With slashes, and on Windows without the prefix for long paths.
std::string PathText(const SystemPath& path);

/// Everything before the last separator; empty for a name in the current folder.
SystemPath FolderOf(const SystemPath& path);
/// Everything after the last separator.
SystemPath NameOf(const SystemPath& path);
/// The same without its last point and what follows.
std::string StemOf(const SystemPath& path);

/// The raw directory itself, or the folder of the source's file; absolute.
SystemPath FolderOfSource(const std::string& path);

/// An absolute path as a file: URI.
std::string FileUri(const SystemPath& path);
/// What of `bytes` may not stand in the path of a URI, as % and digits.
std::string UriPath(std::string_view bytes);

/// Whether `path` ends like that of a folder.
bool EndsAsFolder(const std::string& path);
/// The path of a file as text.
std::string InFolder(const std::string& folder, const std::string& name);

/// Makes a folder and its parents. Returns an error text, empty on success.
std::string MakeFolders(const std::string& path);

}  // namespace zrml::convert
