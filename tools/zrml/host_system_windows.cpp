#include <windows.h>
// after windows.h, which it needs
#include <algorithm>
#include <shellapi.h>

#include "common/platform/paths.h"
#include "tools/zrml/host_system.h"

namespace zrml::tool {
namespace {

constexpr std::size_t kUsualWidth = 80;

std::string LastError() { return platform::ErrorText(static_cast<int>(::GetLastError())); }

// A console takes wide characters, whatever its code page.
bool WriteConsoleText(HANDLE console, std::string_view utf8) {
  const std::wstring text = platform::FromNativePath(utf8);
  for (std::wstring_view wide = text; !wide.empty();) {
    constexpr std::size_t kLargestPiece = 8192;
    DWORD count = 0;
    const auto size = static_cast<DWORD>(std::min(wide.size(), kLargestPiece));
    if (!::WriteConsoleW(console, wide.data(), size, &count, nullptr) || count == 0) return false;
    wide.remove_prefix(count);
  }
  return true;
}

}  // namespace

std::vector<std::string> ProgramArguments(int, char**) {
  std::vector<std::string> arguments;
  int count = 0;
  LPWSTR* wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  for (int i = 1; wide != nullptr && i < count; ++i) arguments.push_back(platform::ToNativePath(wide[i]));
  ::LocalFree(wide);
  return arguments;
}

void* LoadSharedLibrary(const std::string& path, std::string& error) {
  const std::wstring wide = platform::FromNativePath(path);
  std::wstring full(::GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(::GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  ::SetErrorMode(SEM_FAILCRITICALERRORS);  // no dialog when the library cannot be loaded
  // Libraries that the plug-in needs are looked up beside it, not beside the host.
  const HMODULE library = ::LoadLibraryExW(full.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (library == nullptr) error = LastError();
  return library;
}

void* FindExport(void* library, const char* name) {
  return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(library), name));
}

bool CanOpenFiles(int, std::string&) { return true; }  // memory is the only limit

bool IsErrorTerminal() {
  DWORD mode = 0;
  return ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

void OpenInBrowser(const std::string& address) {
  const std::wstring wide = platform::FromNativePath(address);
  ::ShellExecuteW(nullptr, L"open", wide.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

std::size_t ErrorTerminalWidth() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  const HANDLE file = ::GetStdHandle(STD_ERROR_HANDLE);
  const bool isKnown = ::GetConsoleScreenBufferInfo(file, &info) && info.srWindow.Right > info.srWindow.Left;
  return isKnown ? static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1) : kUsualWidth;
}

void ReportFailedWrites() {}

WriteResult WriteStream(Stream stream, std::string_view utf8, std::string& error) {
  const HANDLE file = ::GetStdHandle(stream == Stream::kOutput ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
  DWORD mode = 0;
  if (::GetConsoleMode(file, &mode) && WriteConsoleText(file, utf8)) return WriteResult::kWritten;
  while (!utf8.empty()) {
    DWORD count = 0;
    if (!::WriteFile(file, utf8.data(), static_cast<DWORD>(utf8.size()), &count, nullptr)) {
      const DWORD code = ::GetLastError();
      if (code == ERROR_NO_DATA || code == ERROR_BROKEN_PIPE) return WriteResult::kReaderGone;
      error = LastError();
      return WriteResult::kFailed;
    }
    utf8.remove_prefix(count);
  }
  return WriteResult::kWritten;
}

}  // namespace zrml::tool
