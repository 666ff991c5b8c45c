#include <algorithm>
#include <memory>
#include <utility>
#include <windows.h>

#include "common/platform/paths.h"
#include "common/platform/platform.h"

namespace zrml::platform {
namespace {

constexpr std::size_t kLargestRead = 1u << 30;

bool NamesNothing(std::wstring_view path) {
  return path.empty() || path.find(L'\0') != std::wstring_view::npos;
}

DWORD AttributesOf(const std::wstring& path) {
  return NamesNothing(path) ? INVALID_FILE_ATTRIBUTES : ::GetFileAttributesW(Reachable(path).c_str());
}

struct CloseList {
  using pointer = HANDLE;
  void operator()(HANDLE list) const { ::FindClose(list); }
};

// Calls `visit(entry)` for each entry of a folder until it returns false. Gives 0 or the error.
template <class Visit>
DWORD VisitEntries(const SystemPath& folder, Visit visit) {
  if (NamesNothing(folder)) return ERROR_PATH_NOT_FOUND;
  WIN32_FIND_DATAW entry{};
  // A single separator: paths that the system takes unchanged may not have two.
  const std::wstring pattern = folder + (folder.back() == L'\\' ? L"*" : L"\\*");
  const HANDLE handle = ::FindFirstFileW(Reachable(pattern).c_str(), &entry);
  if (handle == INVALID_HANDLE_VALUE) return ::GetLastError();
  const std::unique_ptr<void, CloseList> list(handle);
  do {
    if (!visit(entry)) return 0;
  } while (::FindNextFileW(list.get(), &entry));
  const DWORD code = ::GetLastError();
  return code == ERROR_NO_MORE_FILES ? 0 : code;
}

}  // namespace

File::File(File&& other) noexcept
    : handle_(std::exchange(other.handle_, kClosed)), isRefused_(other.isRefused_), error_(other.error_) {}

File& File::operator=(File&& other) noexcept {
  std::swap(handle_, other.handle_);
  std::swap(isRefused_, other.isRefused_);
  std::swap(error_, other.error_);
  other.Close();
  return *this;
}

SystemPath ToSystemPath(const std::wstring& path) { return NamesNothing(path) ? std::wstring() : path; }

File File::Open(const std::wstring& path) { return OpenSystemPath(ToSystemPath(path)); }

File File::OpenSystemPath(const SystemPath& path) {
  File file;
  if (path.empty()) return file;
  const HANDLE handle =
      ::CreateFileW(Reachable(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  file.handle_ = reinterpret_cast<std::intptr_t>(handle);
  if (file.IsOpen() && ::GetFileType(handle) != FILE_TYPE_DISK) file.Close();
  return file;
}

void File::Close() {
  if (IsOpen()) ::CloseHandle(reinterpret_cast<HANDLE>(std::exchange(handle_, kClosed)));
}

std::uint64_t File::Size() const {
  LARGE_INTEGER size{};
  if (!IsOpen() || !::GetFileSizeEx(reinterpret_cast<HANDLE>(handle_), &size) || size.QuadPart < 0) return 0;
  return static_cast<std::uint64_t>(size.QuadPart);
}

std::size_t File::ReadAt(std::uint64_t offset, std::span<std::byte> out) const {
  std::size_t done = 0;
  int error = 0;
  while (IsOpen() && done < out.size()) {
    const std::uint64_t position = offset + done;
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(position);
    at.OffsetHigh = static_cast<DWORD>(position >> 32);
    const DWORD wanted = static_cast<DWORD>(std::min(out.size() - done, kLargestRead));
    DWORD count = 0;
    if (!::ReadFile(reinterpret_cast<HANDLE>(handle_), out.data() + done, wanted, &count, &at))
      error = static_cast<int>(::GetLastError());
    if (error != 0 || count == 0) break;
    done += count;
  }
  if (done < out.size() && offset < Size() && done < Size() - offset) {
    isRefused_ = true;
    error_ = error;
  }
  return done;
}

bool IsDirectory(const std::wstring& path) {
  const DWORD attributes = AttributesOf(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool IsFile(const std::wstring& path) {
  const DWORD attributes = AttributesOf(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool IsThere(const SystemPath& path) { return AttributesOf(path) != INVALID_FILE_ATTRIBUTES; }

std::string WhyOutOfReach(const SystemPath& path) {
  if (path.empty() || IsThere(path)) return {};
  const DWORD code = ::GetLastError();
  return code == ERROR_ACCESS_DENIED ? ErrorText(ERROR_ACCESS_DENIED) : std::string();
}

std::string WhyClosed(const SystemPath& path) {
  if (!IsFile(path)) return {};
  const bool isOpen = File::OpenSystemPath(path).IsOpen();  // by now
  return ErrorText(static_cast<int>(isOpen ? ERROR_SHARING_VIOLATION : ::GetLastError()));
}

FileStamp StampOf(const SystemPath& path) {
  WIN32_FILE_ATTRIBUTE_DATA found{};
  if (NamesNothing(path)) return {};
  if (!::GetFileAttributesExW(Reachable(path).c_str(), GetFileExInfoStandard, &found)) return {};
  const auto joined = [](DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; };
  return {joined(found.nFileSizeHigh, found.nFileSizeLow),
          static_cast<std::int64_t>(
              joined(found.ftLastWriteTime.dwHighDateTime, found.ftLastWriteTime.dwLowDateTime))};
}

SystemPath NameInFolder(const SystemPath& path) {
  WIN32_FIND_DATAW entry{};
  const HANDLE found =
      NamesNothing(path) ? INVALID_HANDLE_VALUE : ::FindFirstFileW(Reachable(path).c_str(), &entry);
  if (found == INVALID_HANDLE_VALUE) return path.substr(path.find_last_of(L"\\/") + 1);
  ::FindClose(found);
  return entry.cFileName;
}

std::optional<std::vector<SystemPath>> ListNames(const SystemPath& directory, std::size_t most) {
  std::vector<SystemPath> names;
  bool hasMore = false;
  const DWORD error = VisitEntries(directory, [&](const WIN32_FIND_DATAW& entry) {
    hasMore = names.size() >= most;
    if (hasMore) return false;
    names.emplace_back(entry.cFileName);
    if (entry.cAlternateFileName[0] != L'\0') names.emplace_back(entry.cAlternateFileName);
    return true;
  });
  return error == 0 && !hasMore ? std::optional(std::move(names)) : std::nullopt;
}

FileList ListFiles(const SystemPath& folder) {
  FileList list;
  const DWORD error = VisitEntries(folder, [&](const WIN32_FIND_DATAW& entry) {
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) list.names.emplace_back(entry.cFileName);
    return true;
  });
  std::sort(list.names.begin(), list.names.end());
  if (error != 0) list.error = ErrorText(static_cast<int>(error));
  list.isForbidden = error == ERROR_ACCESS_DENIED;
  return list;
}

std::vector<FolderEntry> ListFolder(const SystemPath& folder, std::string& error) {
  std::vector<FolderEntry> entries;
  const DWORD code = VisitEntries(folder, [&](const WIN32_FIND_DATAW& entry) {
    const std::wstring_view name = entry.cFileName;
    const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    if (name != L"." && name != L"..") entries.push_back({SystemPath(name), isFolder, isLink});
    return true;
  });
  error = code == 0 ? std::string() : ErrorText(static_cast<int>(code));
  return entries;
}

}  // namespace zrml::platform
