// All that the operating system is asked for: files by wide path, existence tests, the system code page, and
// the heap that is shared with a host. Paths are as the interface gives them; off Windows a backslash
// separates folders as a slash does. A path with an embedded NUL names nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zrml::platform {

/// A path as the system takes it; empty when it names nothing.
#ifdef _WIN32
using SystemPath = std::wstring;
#else
using SystemPath = std::string;
#endif
SystemPath ToSystemPath(const std::wstring& path);

/// A regular file opened for reading. Closed by its destructor.
class File {
 public:
  File() = default;
  File(File&& other) noexcept;
  File& operator=(File&& other) noexcept;
  ~File() { Close(); }

  /// A closed File when `path` cannot be opened or is no regular file.
  static File Open(const std::wstring& path);
  static File OpenSystemPath(const SystemPath& path);

  bool IsOpen() const { return handle_ != kClosed; }
  void Close();

  /// Lets go of the file without closing it: it stays open as long as the process runs.
  void Abandon() { handle_ = kClosed; }

  /// Size in bytes, 0 when closed or unknown.
  std::uint64_t Size() const;

  /// When it was last written to, in a unit of the system's own; 0 when closed or unknown.
  std::int64_t WriteTime() const;

  /// Reads bytes from `offset` on and returns how many: fewer than asked at the end of the file or on an
  /// error.
  std::size_t ReadAt(std::uint64_t offset, std::span<std::byte> out) const;

 private:
  static constexpr std::intptr_t kClosed = -1;
  std::intptr_t handle_ = kClosed;
};

bool IsDirectory(const std::wstring& path);

/// Exists and is not a directory.
bool IsFile(const std::wstring& path);

/// All names in a directory, in no order, with every other name that the system knows a file by. No value
/// when there are more than `most` or the directory cannot be listed; its files may open all the same.
std::optional<std::vector<SystemPath>> ListNames(const std::wstring& directory, std::size_t most);

/// Narrow text in the system's ANSI code page. Off Windows: UTF-8 where the bytes are valid UTF-8,
/// Windows-1252 otherwise.
std::wstring FromCodePage(std::string_view text);

/// The inverse, for interfaces that take narrow paths; no value when a character has no narrow form.
std::optional<std::string> ToCodePage(std::wstring_view text);

/// A path as narrow text for programs and test files: UTF-8. Off Windows a path's bytes that are not UTF-8
/// survive the round trip: each becomes U+DC00 plus its value.
std::wstring FromNativePath(std::string_view path);
std::string ToNativePath(std::wstring_view path);

/// Memory of the heap that the host's own allocations come from. Null when there is none left.
void* SharedHeapAllocate(std::size_t bytes) noexcept;
void SharedHeapFree(void* block) noexcept;

}  // namespace zrml::platform
