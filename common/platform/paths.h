// What writing needs from the operating system in addition to platform.h: absolute paths, links, whether two
// names are the same file, making folders, and why a call failed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "common/platform/platform.h"

namespace zrml::platform {

/// Absolute, without "." and "..", and without a trailing separator.
SystemPath AbsolutePath(const SystemPath& path);

/// Where the symbolic links at `path` lead, even when nothing is there. On Windows `path` itself: renaming
/// replaces a link there.
SystemPath FollowLinks(SystemPath path);

/// Identifies a file or folder, whatever name it is reached by.
struct FileId {
  std::uint64_t volume = 0;
  std::uint64_t file = 0;

  bool operator==(const FileId&) const = default;
  bool operator<(const FileId& other) const {
    return volume != other.volume ? volume < other.volume : file < other.file;
  }
};
/// No value when there is nothing at `path`.
std::optional<FileId> IdOf(const SystemPath& path);

/// A device, a pipe, a socket. On Windows decided by name: "NUL" and "con.txt" are devices in any folder.
bool IsDevice(const SystemPath& path);

/// Makes a folder inside an existing one. The reason for failure; empty when the folder exists.
std::string MakeFolder(const SystemPath& path);

#ifdef _WIN32
/// `path` in a form that system calls accept at any length; unchanged when it is short.
SystemPath Reachable(const SystemPath& path);
#endif

}  // namespace zrml::platform
