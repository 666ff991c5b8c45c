// Paths as arguments and converted files have them (bytes; UTF-8 on Windows), beside those of the system.
#pragma once

#include <string>

#include "common/platform/paths.h"

namespace zrml::convert {

using platform::SystemPath;

/// With slashes, and on Windows without what marks a path of any length.
std::string PathText(const SystemPath& path);

/// Without what is behind the last separator; empty for a name in the current folder.
SystemPath FolderOf(const SystemPath& path);
/// What is behind the last separator.
SystemPath NameOf(const SystemPath& path);
/// That without the last point and what is behind it.
std::string StemOf(const SystemPath& path);

/// The raw directory that a source is, or the folder of the file that it is; absolute.
SystemPath FolderOfSource(const std::string& path);

/// Whether `path` ends like that of a folder.
bool EndsAsFolder(const std::string& path);
/// The path of a file as text.
std::string InFolder(const std::string& folder, const std::string& name);

/// Makes a folder and those that it is in. Why it is not there; empty when it is.
std::string MakeFolders(const std::string& path);

}  // namespace zrml::convert
