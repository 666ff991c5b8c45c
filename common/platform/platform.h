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

/// The path of `name` in `folder`, which must not be empty.
inline SystemPath PathIn(const SystemPath& folder, const SystemPath& name) {
#ifdef _WIN32
  constexpr wchar_t kSeparator = L'\\';
#else
  constexpr char kSeparator = '/';
#endif
  return folder.back() == kSeparator ? folder + name : folder + kSeparator + name;
}

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

  /// Reads bytes from `offset` on and returns how many: fewer than asked at the end of the file or on an
  /// error.
  std::size_t ReadAt(std::uint64_t offset, std::span<std::byte> out) const;

  /// Whether the system has refused a read since the file was opened: it gave less than the file has there.
  bool IsRefused() const { return isRefused_; }
  /// "cannot be read to its end (Input/output error)" when it has.
  std::string Refusal() const;

 private:
  static constexpr std::intptr_t kClosed = -1;
  std::intptr_t handle_ = kClosed;
  mutable bool isRefused_ = false;
  mutable int error_ = 0;  // the system's code of the last refusal; 0 where it gives none
};

/// The system's words for a code of its own.
std::string ErrorText(int code);

inline std::string File::Refusal() const {
  if (!isRefused_) return {};
  return "cannot be read to its end" + (error_ == 0 ? std::string() : " (" + ErrorText(error_) + ")");
}

bool IsDirectory(const std::wstring& path);

/// Exists and is not a directory.
bool IsFile(const std::wstring& path);

#ifndef _WIN32  // where wide paths are those of the system
bool IsDirectory(const SystemPath& path);
bool IsFile(const SystemPath& path);
#endif

/// Also a link that leads nowhere.
bool IsThere(const SystemPath& path);

/// Why the system does not tell whether there is something at `path`, like a folder on the way there that may
/// not be searched; empty when it does tell.
std::string WhyOutOfReach(const SystemPath& path);

/// Why the system has not opened the regular file at `path`; empty when there is none.
std::string WhyClosed(const SystemPath& path);

/// What tells whether a file has been written to since. All 0 when there is none.
struct FileStamp {
  std::uint64_t size = 0;
  std::int64_t written = 0;  ///< in a unit of the system's own

  bool operator==(const FileStamp&) const = default;
};
/// Opens nothing.
FileStamp StampOf(const SystemPath& path);

/// The last part of the path of a file, as it stands in its folder: a system that does not tell case apart
/// opens it by other spellings, too.
SystemPath NameInFolder(const SystemPath& path);

/// All names in a directory, in no order, with every other name that the system knows a file by. No value
/// when there are more than `most` or the directory cannot be listed; its files may open all the same.
std::optional<std::vector<SystemPath>> ListNames(const SystemPath& directory, std::size_t most);

/// The names of the regular files in a folder, links to such files included, and of what the system does not
/// tell the kind of.
struct FileList {
  std::vector<SystemPath> names;  ///< in order
  std::string error;              ///< why there may be more
  bool isForbidden = false;       ///< because nobody here may list the folder
};
FileList ListFiles(const SystemPath& folder);

/// Narrow text in the system's ANSI code page. Off Windows: UTF-8 where the bytes are valid UTF-8,
/// Windows-1252 otherwise.
std::wstring FromCodePage(std::string_view text);

/// The inverse, for interfaces that take narrow paths; no value when a character has no narrow form.
std::optional<std::string> ToCodePage(std::wstring_view text);

/// A path as narrow text for programs and test files: UTF-8. Off Windows a path's bytes that are not UTF-8
/// survive the round trip: each becomes U+DC00 plus its value.
std::wstring FromNativePath(std::string_view path);
std::string ToNativePath(std::wstring_view path);

/// The same paths without the detour over wide ones: off Windows their bytes as they stand, so that a
/// backslash is a character of a name. Empty when `path` has an embedded NUL.
SystemPath FromUtf8Path(std::string_view path);
std::string ToUtf8Path(const SystemPath& path);

/// Memory of the heap that the host's own allocations come from. Null when there is none left.
void* SharedHeapAllocate(std::size_t bytes) noexcept;
void SharedHeapFree(void* block) noexcept;

}  // namespace zrml::platform
