#include <algorithm>
#include <memory>
#include <utility>
#include <windows.h>

#include "common/platform/platform.h"

namespace zrml::platform {
namespace {

constexpr std::size_t kLargestRead = 1u << 30;

bool NamesNothing(std::wstring_view path) {
  return path.empty() || path.find(L'\0') != std::wstring_view::npos;
}

}  // namespace

File::File(File&& other) noexcept
    : handle_(std::exchange(other.handle_, kClosed)), isRefused_(other.isRefused_) {}

File& File::operator=(File&& other) noexcept {
  std::swap(handle_, other.handle_);
  std::swap(isRefused_, other.isRefused_);
  other.Close();
  return *this;
}

SystemPath ToSystemPath(const std::wstring& path) { return NamesNothing(path) ? std::wstring() : path; }

File File::Open(const std::wstring& path) { return OpenSystemPath(ToSystemPath(path)); }

File File::OpenSystemPath(const SystemPath& path) {
  File file;
  if (path.empty()) return file;
  const HANDLE handle = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
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
  while (IsOpen() && done < out.size()) {
    const std::uint64_t position = offset + done;
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(position);
    at.OffsetHigh = static_cast<DWORD>(position >> 32);
    const DWORD wanted = static_cast<DWORD>(std::min(out.size() - done, kLargestRead));
    DWORD count = 0;
    if (!::ReadFile(reinterpret_cast<HANDLE>(handle_), out.data() + done, wanted, &count, &at) || count == 0)
      break;
    done += count;
  }
  if (done < out.size() && offset < Size() && done < Size() - offset) isRefused_ = true;
  return done;
}

bool IsDirectory(const std::wstring& path) {
  if (NamesNothing(path)) return false;
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool IsFile(const std::wstring& path) {
  if (NamesNothing(path)) return false;
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

std::string WhyOutOfReach(const SystemPath& path) {
  if (path.empty() || ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) return {};
  const DWORD code = ::GetLastError();
  return code == ERROR_ACCESS_DENIED ? "system error " + std::to_string(code) : std::string();
}

std::string WhyClosed(const SystemPath& path) {
  if (!IsFile(path)) return {};
  const bool isOpen = File::OpenSystemPath(path).IsOpen();  // since a moment ago
  return "system error " + std::to_string(isOpen ? ERROR_SHARING_VIOLATION : ::GetLastError());
}

FileStamp StampOf(const SystemPath& path) {
  WIN32_FILE_ATTRIBUTE_DATA found{};
  if (NamesNothing(path) || !::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &found)) return {};
  const auto joined = [](DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; };
  return {joined(found.nFileSizeHigh, found.nFileSizeLow),
          static_cast<std::int64_t>(
              joined(found.ftLastWriteTime.dwHighDateTime, found.ftLastWriteTime.dwLowDateTime))};
}

SystemPath NameInFolder(const SystemPath& path) {
  WIN32_FIND_DATAW entry{};
  const HANDLE found = NamesNothing(path) ? INVALID_HANDLE_VALUE : ::FindFirstFileW(path.c_str(), &entry);
  if (found == INVALID_HANDLE_VALUE) return path.substr(path.find_last_of(L"\\/") + 1);
  ::FindClose(found);
  return entry.cFileName;
}

std::optional<std::vector<SystemPath>> ListNames(const SystemPath& directory, std::size_t most) {
  struct CloseList {
    using pointer = HANDLE;
    void operator()(HANDLE list) const { ::FindClose(list); }
  };
  if (NamesNothing(directory)) return std::nullopt;
  WIN32_FIND_DATAW entry{};
  // One separator: paths that the system takes as they stand may not have two.
  const std::wstring pattern = directory + (directory.back() == L'\\' ? L"*" : L"\\*");
  const HANDLE handle = ::FindFirstFileW(pattern.c_str(), &entry);
  if (handle == INVALID_HANDLE_VALUE) return std::nullopt;
  const std::unique_ptr<void, CloseList> list(handle);
  std::vector<SystemPath> names;
  do {
    if (names.size() >= most) return std::nullopt;
    names.emplace_back(entry.cFileName);
    if (entry.cAlternateFileName[0] != L'\0') names.emplace_back(entry.cAlternateFileName);
  } while (::FindNextFileW(list.get(), &entry));
  if (::GetLastError() != ERROR_NO_MORE_FILES) return std::nullopt;
  return names;
}

}  // namespace zrml::platform
