#include <windows.h>
// after windows.h, which it needs
#include <algorithm>
#include <shellapi.h>

#include "common/platform/platform.h"
#include "tools/zrml/host_system.h"

namespace zrml {
namespace {

constexpr std::size_t kUsualWidth = 80;

std::wstring LastError() { return L"system error " + std::to_wstring(::GetLastError()); }

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

std::wstring ProgramFolder() {
  std::wstring program(MAX_PATH, L'\0');
  DWORD length = 0;
  while ((length = ::GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()))) ==
         program.size()) {
    program.resize(program.size() * 2);
  }
  program.resize(length);
  return program.substr(0, program.find_last_of(L"\\/") + 1);
}

std::optional<SharedLibrary> SharedLibrary::Load(const std::wstring& path, std::wstring& error) {
  std::wstring full(::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  ::SetErrorMode(SEM_FAILCRITICALERRORS);  // no dialog when the library cannot be loaded
  // Libraries that the plug-in needs are looked up beside it, not beside the host.
  if (HMODULE handle = ::LoadLibraryExW(full.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)) {
    return SharedLibrary(handle);
  }
  error = LastError();
  return std::nullopt;
}

void* SharedLibrary::Symbol(const char* name) const {
  return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(handle_), name));
}

std::wstring WhyOutOfReach(const std::wstring& path) {
  if (::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) return {};
  return ::GetLastError() == ERROR_ACCESS_DENIED ? LastError() : std::wstring();
}

bool CanOpenFiles(int, std::wstring&) { return true; }  // memory is the only limit

bool IsTerminal(Stream stream) {
  DWORD mode = 0;
  return ::GetConsoleMode(::GetStdHandle(stream == Stream::kOutput ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE),
                          &mode) != 0;
}

std::size_t TerminalWidth(Stream stream) {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  const HANDLE file = ::GetStdHandle(stream == Stream::kOutput ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
  const bool isKnown = ::GetConsoleScreenBufferInfo(file, &info) && info.srWindow.Right > info.srWindow.Left;
  return isKnown ? static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1) : kUsualWidth;
}

void ReportFailedWrites() {}

WriteResult WriteStream(Stream stream, std::string_view utf8, std::wstring& error) {
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

}  // namespace zrml
