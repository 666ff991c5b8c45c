#include <windows.h>
// after windows.h, which it needs
#include <algorithm>

#include "convert/native_path.h"
#include "convert/target_file.h"

namespace zrml::convert {
namespace {

constexpr int kMostNames = 100;

std::string Reason(DWORD error) { return "system error " + std::to_string(error); }

bool Exists(const std::wstring& path) {
  return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// With its separator; empty for the current folder.
std::wstring FolderOf(const std::wstring& path) { return path.substr(0, path.find_last_of(L"\\/:") + 1); }

HANDLE Handle(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

std::intptr_t CreateNew(const std::wstring& path) {
  const HANDLE handle =
      ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  return reinterpret_cast<std::intptr_t>(handle);  // INVALID_HANDLE_VALUE is -1
}

}  // namespace

TargetFile::TargetFile(std::string path, Existing existing, Cancel cancel)
    : path_(std::move(path)), existing_(existing), cancel_(std::move(cancel)) {
  const std::wstring wide = NativePath(path_).native();
  if (existing_ == Existing::kKeep && Exists(wide)) FailAsExisting();
  const std::wstring stem = FolderOf(wide) + L".zrml-" + std::to_wstring(::GetCurrentProcessId()) + L"-";
  for (int i = 0; i < kMostNames && handle_ == kClosed; ++i) {
    const std::wstring name = stem + std::to_wstring(i) + L".part";
    handle_ = CreateNew(name);
    if (handle_ != kClosed) {
      temporaryPath_ = PathText(name);
    } else if (::GetLastError() != ERROR_FILE_EXISTS) {
      break;
    }
  }
  if (handle_ == kClosed) Fail(Reason(::GetLastError()));
}

TargetFile::~TargetFile() {
  Close();
  if (!temporaryPath_.empty()) ::DeleteFileW(NativePath(temporaryPath_).c_str());
}

void TargetFile::Close() {
  if (handle_ != kClosed) ::CloseHandle(Handle(handle_));
  handle_ = kClosed;
}

void TargetFile::Write(std::string_view bytes) {
  constexpr std::size_t kLargest = 1u << 24;
  while (!bytes.empty()) {
    DWORD count = 0;
    const auto size = static_cast<DWORD>(std::min(bytes.size(), kLargest));
    if (!::WriteFile(Handle(handle_), bytes.data(), size, &count, nullptr)) Fail(Reason(::GetLastError()));
    bytes.remove_prefix(count);
  }
}

void TargetFile::Finish() {
  if (!::FlushFileBuffers(Handle(handle_))) Fail(Reason(::GetLastError()));
  Close();
  const DWORD flags =
      MOVEFILE_WRITE_THROUGH | (existing_ == Existing::kReplace ? MOVEFILE_REPLACE_EXISTING : 0);
  if (!::MoveFileExW(NativePath(temporaryPath_).c_str(), NativePath(path_).c_str(), flags)) {
    const DWORD error = ::GetLastError();
    if (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS) FailAsExisting();
    Fail(Reason(error));
  }
  temporaryPath_.clear();
}

}  // namespace zrml::convert
