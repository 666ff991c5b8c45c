// Everything that depends on the operating system: files by wide path, existence tests, the system code page,
// and the heap shared with a host. Paths are taken as the interface gives them; outside Windows a backslash
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

/// A path in the system's own form; empty when it names nothing.
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

  /// A closed File when `path` cannot be opened or is not a regular file.
  static File Open(const std::wstring& path);
  static File OpenSystemPath(const SystemPath& path);

  bool IsOpen() const { return handle_ != kClosed; }
  void Close();

  /// Releases the file without closing it: it stays open as long as the process runs.
  void Abandon() { handle_ = kClosed; }

  /// Size in bytes, 0 when closed or unknown.
  std::uint64_t Size() const;

  /// Reads bytes from `offset` on and returns how many: fewer than asked at the end of the file or on an
  /// error.
  std::size_t ReadAt(std::uint64_t offset, std::span<std::byte> out) const;

  /// Whether the system has refused a read since the file was opened, giving less than the file holds there.
  bool IsRefused() const { return isRefused_; }
  /// "cannot be read to its end (Input/output error)" after such a refusal.
  std::string Refusal() const;

 private:
  static constexpr std::intptr_t kClosed = -1;
  std::intptr_t handle_ = kClosed;
  mutable bool isRefused_ = false;
  mutable int error_ = 0;  // the system's code for the last refusal; 0 when it gave none
};

/// What is said of a file that was longer before.
inline constexpr const char* kHasShrunk = "has become shorter since it was opened";

/// The system's message for one of its error codes.
std::string ErrorText(int code);

inline std::string File::Refusal() const {
  if (!isRefused_) return {};
  return "cannot be read to its end" + (error_ == 0 ? std::string() : " (" + ErrorText(error_) + ")");
}

bool IsDirectory(const std::wstring& path);

/// Exists and is not a directory.
bool IsFile(const std::wstring& path);

#ifndef _WIN32  // where the system's paths are wide
bool IsDirectory(const SystemPath& path);
bool IsFile(const SystemPath& path);
#endif

/// True for a dangling link, too.
bool IsThere(const SystemPath& path);

/// Why the system cannot say whether anything exists at `path`, for example a folder on the way that may not
/// be searched; empty when it can.
std::string WhyOutOfReach(const SystemPath& path);

/// Why the system did not open the regular file at `path`; empty when there is no such file.
std::string WhyClosed(const SystemPath& path);

/// Changes when a file is written to. All 0 when there is no file.
struct FileStamp {
  std::uint64_t size = 0;
  std::int64_t written = 0;  ///< in the system's own unit

  bool operator==(const FileStamp&) const = default;
};
/// Does not open the file.
FileStamp StampOf(const SystemPath& path);

/// The last part of a file's path, spelled as in its folder: a case-insensitive system opens it by other
/// spellings, too.
SystemPath NameInFolder(const SystemPath& path);

/// All names in a directory, unordered, including any other names that the system has for a file. No value
/// when there are more than `most` or the directory cannot be listed; its files may open even so.
std::optional<std::vector<SystemPath>> ListNames(const SystemPath& directory, std::size_t most);

/// The names of the regular files in a folder, including links to such files and entries whose kind the
/// system does not report.
struct FileList {
  std::vector<SystemPath> names;  ///< in order
  std::string error;              ///< why the list may be incomplete
  bool isForbidden = false;       ///< this user may not list the folder
};
FileList ListFiles(const SystemPath& folder);

/// What is in a folder, in no order.
struct FolderEntry {
  SystemPath name;
  bool isFolder = false;
  bool isLink = false;
};
/// `error` says why there may be more; it is empty otherwise.
std::vector<FolderEntry> ListFolder(const SystemPath& folder, std::string& error);

/// Narrow text in the system's ANSI code page. Outside Windows: UTF-8 when the bytes are valid UTF-8,
/// Windows-1252 otherwise.
std::wstring FromCodePage(std::string_view text);

/// The inverse, for interfaces that take narrow paths; no value when a character has no narrow form.
std::optional<std::string> ToCodePage(std::wstring_view text);

/// A path as narrow text for programs and test files: UTF-8. Outside Windows, bytes that are not UTF-8
/// survive the round trip: each becomes U+DC00 plus its value.
std::wstring FromNativePath(std::string_view path);
std::string ToNativePath(std::wstring_view path);

/// The same without the detour through wide paths: outside Windows the bytes as they are, so a backslash is
/// part of a name. Empty when `path` has an embedded NUL.
SystemPath FromUtf8Path(std::string_view path);
std::string ToUtf8Path(const SystemPath& path);

/// A number that nobody can predict, from the system's generator of keys. Throws std::system_error when that
/// fails.
std::uint32_t RandomNumber();

/// Memory from the heap that the host itself uses. Null when there is none left.
void* SharedHeapAllocate(std::size_t bytes) noexcept;
void SharedHeapFree(void* block) noexcept;

/// Asks the system for large pages where memory that will be filled has none yet: giving a program many small
/// pages takes longer than filling them. Of no effect on little memory and on systems that choose by
/// themselves.
void PreferLargePages(void* memory, std::size_t bytes) noexcept;

}  // namespace zrml::platform
