#include <algorithm>
#include <utility>
#include <windows.h>

#include "common/platform/platform.h"

namespace zrml::platform {
namespace {

constexpr std::size_t kLargestRead = 1u << 30;

bool NamesNothing(std::wstring_view path) {
  return path.empty() || path.find(L'\0') != std::wstring_view::npos;
}

std::wstring Widened(UINT codePage, std::string_view text) {
  if (text.empty()) return {};
  const int size = static_cast<int>(std::min<std::size_t>(text.size(), kLargestRead));
  const int length = ::MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(std::max(length, 0)), L'\0');
  ::MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), length);
  return wide;
}

// No value when a character has no form in the code page. UTF-8 has one for all and takes no default
// character.
std::optional<std::string> Narrowed(UINT codePage, std::wstring_view text) {
  if (text.empty()) return std::string();
  const bool utf8 = codePage == CP_UTF8;
  const int size = static_cast<int>(std::min<std::size_t>(text.size(), kLargestRead));
  BOOL replaced = FALSE;
  const int length = ::WideCharToMultiByte(codePage, utf8 ? 0 : WC_NO_BEST_FIT_CHARS, text.data(), size,
                                           nullptr, 0, nullptr, utf8 ? nullptr : &replaced);
  if (length <= 0 || replaced) return std::nullopt;
  std::string narrow(static_cast<std::size_t>(length), '\0');
  ::WideCharToMultiByte(codePage, 0, text.data(), size, narrow.data(), length, nullptr, nullptr);
  return narrow;
}

}  // namespace

File::File(File&& other) noexcept : handle_(std::exchange(other.handle_, kClosed)) {}

File& File::operator=(File&& other) noexcept {
  std::swap(handle_, other.handle_);
  other.Close();
  return *this;
}

File File::Open(const std::wstring& path) {
  File file;
  if (NamesNothing(path)) return file;
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

std::wstring FromCodePage(std::string_view text) { return Widened(CP_ACP, text); }
std::optional<std::string> ToCodePage(std::wstring_view text) { return Narrowed(CP_ACP, text); }
std::wstring FromNativePath(std::string_view path) { return Widened(CP_UTF8, path); }
std::string ToNativePath(std::wstring_view path) { return Narrowed(CP_UTF8, path).value_or(std::string()); }

namespace {

using MallocFunction = void* (*)(std::size_t);
using FreeFunction = void (*)(void*);

void* ProcessHeapAllocate(std::size_t bytes) { return ::HeapAlloc(::GetProcessHeap(), 0, bytes); }
void ProcessHeapFree(void* block) { ::HeapFree(::GetProcessHeap(), 0, block); }

struct SharedHeap {
  MallocFunction allocate = ProcessHeapAllocate;
  FreeFunction release = ProcessHeapFree;
};

// A host with the dynamic runtime allocates with ucrtbase.dll; one with the static runtime on the process
// heap. On Windows the two are one heap, elsewhere (Wine) they are not.
SharedHeap FindSharedHeap() {
  HMODULE runtime = nullptr;  // pinned: what it has allocated must always find it again
  if (!::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN, L"ucrtbase.dll", &runtime)) return {};
  const FARPROC allocate = ::GetProcAddress(runtime, "malloc");
  const FARPROC release = ::GetProcAddress(runtime, "free");
  if (allocate == nullptr || release == nullptr) return {};
  return {reinterpret_cast<MallocFunction>(reinterpret_cast<void*>(allocate)),
          reinterpret_cast<FreeFunction>(reinterpret_cast<void*>(release))};
}

// Chosen once, before the first block, and constant from then on: every block goes back where it came from.
const SharedHeap& TheSharedHeap() {
  static const SharedHeap heap = FindSharedHeap();
  return heap;
}

}  // namespace

void* SharedHeapAllocate(std::size_t bytes) noexcept {
  return TheSharedHeap().allocate(bytes != 0 ? bytes : 1);
}
void SharedHeapFree(void* block) noexcept { TheSharedHeap().release(block); }

}  // namespace zrml::platform
