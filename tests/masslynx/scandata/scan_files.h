// Files that a test program writes repeatedly, reading each version once.
#pragma once

#include <filesystem>
#include <span>

#include "common/platform/platform.h"
#include "tests/support/temp_directory.h"

namespace zrml {

/// Rewrites a file of `directory`. It is removed first because some file systems flush a file with replaced
/// content to the disk, which is slow.
inline void WriteAnew(const TempDirectory& directory, const std::filesystem::path& name,
                      std::span<const std::byte> bytes) {
  std::filesystem::remove(directory.Path() / name);
  directory.Write(name, bytes);
}

/// A data file of the given bytes. It must be closed again before the next call.
inline platform::File OpenDataFile(std::span<const std::byte> bytes) {
  static const TempDirectory directory;
  WriteAnew(directory, "_FUNC001.DAT", bytes);
  return platform::File::Open(directory.WidePath("_FUNC001.DAT"));
}

}  // namespace zrml
