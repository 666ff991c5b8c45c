// A directory that lives as long as a test needs it, with file operations for damaging its content. Names are
// of files inside it. Every failure throws.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

#include "common/platform/platform.h"
#include "tests/support/byte_writer.h"

namespace zrml {

class TempDirectory {
 public:
  /// Makes an empty directory called `name` (u8"..." beyond ASCII) inside its own new folder.
  explicit TempDirectory(const std::filesystem::path& name = "acquisition.raw");
  TempDirectory(TempDirectory&& other) noexcept;
  TempDirectory& operator=(TempDirectory&&) = delete;
  ~TempDirectory();

  const std::filesystem::path& Path() const { return path_; }

  /// The path, or that of a file in it, as the interface takes it.
  std::wstring WidePath() const;
  std::wstring WidePath(const std::filesystem::path& name) const;

  /// The path in the system's own form.
  platform::SystemPath SystemPath() const { return platform::ToSystemPath(WidePath()); }

  void Write(const std::filesystem::path& name, std::span<const std::byte> bytes) const;
  void WriteText(const std::filesystem::path& name, std::string_view text) const;
  FileBytes Read(const std::filesystem::path& name) const;
  void Truncate(const std::filesystem::path& name, std::uintmax_t size) const;
  void Rename(const std::filesystem::path& from, const std::filesystem::path& to) const;
  void Remove(const std::filesystem::path& name) const;
  void MakeDirectory(const std::filesystem::path& name) const;

  /// One edit: `change` alters the bytes of a file.
  template <class Change>
  void Edit(const std::filesystem::path& name, Change change) const {
    FileBytes bytes = Read(name);
    change(bytes);
    Write(name, bytes);
  }

 private:
  std::filesystem::path folder_;  // empty once moved from
  std::filesystem::path path_;
};

/// Replaces or makes a file.
void WriteFileBytes(const std::filesystem::path& path, std::span<const std::byte> bytes);

}  // namespace zrml
