#include <array>
#include <windows.h>

#include "common/platform/paths.h"

namespace zrml::platform {
namespace {

constexpr std::wstring_view kPlainMark = L"\\\\?\\";  // of a path that the system takes as it stands
constexpr std::wstring_view kDeviceMark = L"\\\\.\\";

std::wstring FullPath(const std::wstring& path) {
  std::wstring full(::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full;
}

// Empty when there is no message in that language.
std::wstring Words(DWORD code, DWORD language) {
  constexpr DWORD kFlags =
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
  std::array<wchar_t, 512> text{};
  const DWORD size = ::FormatMessageW(kFlags, nullptr, code, language, text.data(), text.size(), nullptr);
  const std::wstring words(text.data(), size);
  return words.substr(0, words.find_last_not_of(L" .\r\n") + 1);
}

}  // namespace

SystemPath AbsolutePath(const SystemPath& path) {
  std::wstring full = FullPath(path);
  while (full.ends_with(L'\\') && !full.ends_with(L":\\")) full.pop_back();
  return full;
}

SystemPath FollowLinks(SystemPath path) { return path; }

std::optional<FileId> IdOf(const SystemPath& path) {
  constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE handle = ::CreateFileW(Reachable(path).c_str(), 0, kShared, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);  // for folders, too
  if (handle == INVALID_HANDLE_VALUE) return std::nullopt;
  BY_HANDLE_FILE_INFORMATION found{};
  const bool isKnown = ::GetFileInformationByHandle(handle, &found) != 0;
  ::CloseHandle(handle);
  if (!isKnown) return std::nullopt;
  return FileId{found.dwVolumeSerialNumber, std::uint64_t{found.nFileIndexHigh} << 32 | found.nFileIndexLow};
}

bool IsDevice(const SystemPath& path) { return FullPath(path).starts_with(kDeviceMark); }

std::string MakeFolder(const SystemPath& path) {
  if (::CreateDirectoryW(Reachable(path).c_str(), nullptr)) return {};
  const DWORD code = ::GetLastError();
  return IsDirectory(path) ? std::string() : ErrorText(static_cast<int>(code));
}

// In English, or else in the user's language.
std::string ErrorText(int code) {
  std::wstring words = Words(static_cast<DWORD>(code), MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US));
  if (words.empty()) words = Words(static_cast<DWORD>(code), 0);
  const std::string number = "system error " + std::to_string(code);
  return words.empty() ? number : ToNativePath(words) + ", " + number;
}

SystemPath Reachable(const SystemPath& path) {
  constexpr DWORD kLong = 248;  // of a folder; of a file 260
  std::array<wchar_t, kLong> room{};
  if (::GetFullPathNameW(path.c_str(), kLong, room.data(), nullptr) < kLong) return path;
  const std::wstring full = FullPath(path);
  if (full.starts_with(kPlainMark) || full.starts_with(kDeviceMark)) return path;
  const bool isOnServer = full.starts_with(L"\\\\");
  return std::wstring(kPlainMark) + (isOnServer ? L"UNC" + full.substr(1) : full);
}

}  // namespace zrml::platform
