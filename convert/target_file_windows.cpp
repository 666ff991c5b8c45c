#include <windows.h>
// after windows.h, which it needs
#include <algorithm>

#include "convert/native_path.h"
#include "convert/target_file.h"

namespace zrml::convert {
namespace {

constexpr int kMostNames = 100;

int LastError() { return static_cast<int>(::GetLastError()); }

HANDLE Handle(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

// Whether the system removes the file when it is closed, also when the program is killed. Not all disks do.
void SetRemoval(HANDLE handle, bool isRemoved) {
  FILE_DISPOSITION_INFO info{};
  info.DeleteFile = isRemoved ? TRUE : FALSE;
  ::SetFileInformationByHandle(handle, FileDispositionInfo, &info, sizeof(info));
}

std::intptr_t CreateNew(const std::wstring& path) {
  const HANDLE handle = ::CreateFileW(platform::Reachable(path).c_str(), GENERIC_WRITE | DELETE, 0, nullptr,
                                      CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle != INVALID_HANDLE_VALUE) SetRemoval(handle, true);
  return reinterpret_cast<std::intptr_t>(handle);  // INVALID_HANDLE_VALUE is -1
}

}  // namespace

TargetFile::TargetFile(std::string path, Existing existing, Cancel cancel)
    : path_(std::move(path)),
      target_(platform::FromUtf8Path(path_)),
      existing_(existing),
      cancel_(std::move(cancel)) {
  if (existing_ == Existing::kKeep && platform::IsThere(target_)) FailAsExisting();
  const std::wstring stem = FolderOf(target_) + L".zrml-" + std::to_wstring(::GetCurrentProcessId()) + L"-";
  for (int i = 0; i < kMostNames && handle_ == kClosed; ++i) {
    const std::wstring name = stem + std::to_wstring(i) + L".part";
    handle_ = CreateNew(name);
    if (handle_ != kClosed) {
      temporary_ = name;
    } else if (::GetLastError() != ERROR_FILE_EXISTS) {
      break;
    }
  }
  if (handle_ == kClosed) Fail(LastError());
}

TargetFile::~TargetFile() {
  Close();
  if (!temporary_.empty()) ::DeleteFileW(platform::Reachable(temporary_).c_str());
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
    if (!::WriteFile(Handle(handle_), bytes.data(), size, &count, nullptr)) Fail(LastError());
    bytes.remove_prefix(count);
  }
}

void TargetFile::Flush() {
  if (!::FlushFileBuffers(Handle(handle_))) Fail(LastError());
}

// 0, or the error.
int TargetFile::Name() {
  const DWORD flags =
      MOVEFILE_WRITE_THROUGH | (existing_ == Existing::kReplace ? MOVEFILE_REPLACE_EXISTING : 0);
  const std::wstring from = platform::Reachable(temporary_);
  return ::MoveFileExW(from.c_str(), platform::Reachable(target_).c_str(), flags) ? 0 : LastError();
}

void TargetFile::Finish() {
  Flush();
  SetRemoval(Handle(handle_), false);
  Close();
  const int error = Name();
  if (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS) FailAsExisting();
  if (error != 0) Fail(error);
  temporary_.clear();
}

}  // namespace zrml::convert
