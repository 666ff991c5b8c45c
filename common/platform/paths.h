// What writing asks of the operating system beside platform.h: paths in full, links, which names are one
// file, folders that are made, and why a call has failed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "common/platform/platform.h"

namespace zrml::platform {

/// Absolute, without "." and "..", and without a separator at its end.
SystemPath AbsolutePath(const SystemPath& path);

/// Where the symbolic links at `path` lead, also to nowhere. On Windows `path`: renaming replaces a link
/// there.
SystemPath FollowLinks(SystemPath path);

/// A file or folder, under whatever name.
struct FileId {
  std::uint64_t volume = 0;
  std::uint64_t file = 0;

  bool operator==(const FileId&) const = default;
};
/// No value when there is nothing at `path`.
std::optional<FileId> IdOf(const SystemPath& path);

/// A device, a pipe, a socket. On Windows names tell it, like "NUL" and "con.txt" in any folder.
bool IsDevice(const SystemPath& path);

/// Makes a folder, inside one that exists. Why it is not there; empty when it is.
std::string MakeFolder(const SystemPath& path);

#ifdef _WIN32
/// `path` in a form that calls take at any length; as it stands when it is short.
SystemPath Reachable(const SystemPath& path);
#endif

}  // namespace zrml::platform
