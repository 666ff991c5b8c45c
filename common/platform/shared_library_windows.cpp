#include <cstddef>
#include <span>
#include <utility>
#include <windows.h>

#include "common/platform/platform.h"
#include "common/platform/shared_library.h"

namespace zrml::platform {
namespace {

HMODULE ModuleOf(std::intptr_t handle) { return reinterpret_cast<HMODULE>(handle); }

// With a trailing backslash.
std::wstring OwnFolder() {
  static const char here = 0;
  HMODULE module = nullptr;
  constexpr DWORD kByAddress =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  if (!::GetModuleHandleExW(kByAddress, reinterpret_cast<LPCWSTR>(&here), &module)) return {};
  constexpr DWORD kLongestPath = 1u << 15;
  std::wstring file(kLongestPath, L'\0');
  const DWORD length = ::GetModuleFileNameW(module, file.data(), kLongestPath);
  if (length == 0 || length == kLongestPath) return {};
  file.resize(length);
  return file.substr(0, file.rfind(L'\\') + 1);
}

// A damaged library must not open a message box that an unattended host would wait for.
std::intptr_t Open(const std::wstring& file, DWORD flags) {
  DWORD before = 0;
  ::SetThreadErrorMode(SEM_FAILCRITICALERRORS, &before);
  const HMODULE module = ::LoadLibraryExW(file.c_str(), nullptr, flags);
  ::SetThreadErrorMode(before, nullptr);
  return reinterpret_cast<std::intptr_t>(module);
}

template <class T>
const T* At(HMODULE module, DWORD offset) {
  return reinterpret_cast<const T*>(reinterpret_cast<const std::byte*>(module) + offset);
}

// Offsets of a module's exported names.
std::span<const DWORD> ExportedNames(HMODULE module) {
  const auto& dos = *At<IMAGE_DOS_HEADER>(module, 0);
  const auto& headers = *At<IMAGE_NT_HEADERS>(module, static_cast<DWORD>(dos.e_lfanew));
  const DWORD offset = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
  if (offset == 0) return {};
  const auto& directory = *At<IMAGE_EXPORT_DIRECTORY>(module, offset);
  return {At<DWORD>(module, directory.AddressOfNames), directory.NumberOfNames};
}

// The first exported name with this prefix, or empty.
std::string ExportedName(HMODULE module, std::string_view start) {
  for (const DWORD offset : ExportedNames(module)) {
    const std::string_view name = At<char>(module, offset);
    if (name.starts_with(start)) return std::string(name);
  }
  return {};
}

}  // namespace

SharedLibrary::SharedLibrary(SharedLibrary&& other) noexcept : handle_(std::exchange(other.handle_, 0)) {}

SharedLibrary& SharedLibrary::operator=(SharedLibrary&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

SharedLibrary::~SharedLibrary() {
  if (IsLoaded()) ::FreeLibrary(ModuleOf(handle_));
}

SharedLibrary SharedLibrary::Load(std::string_view stem) {
  const std::wstring file = FromNativePath(stem) + L".dll";
  SharedLibrary library;
  if (const std::wstring folder = OwnFolder(); !folder.empty())
    library.handle_ =
        Open(folder + file, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
  if (!library.IsLoaded()) library.handle_ = Open(file, LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
  return library;
}

SharedLibrary::Function SharedLibrary::Find(const std::string& decoratedName) const {
  if (!IsLoaded() || decoratedName.empty()) return nullptr;
  const FARPROC found = ::GetProcAddress(ModuleOf(handle_), decoratedName.c_str());
  return reinterpret_cast<Function>(reinterpret_cast<void*>(found));
}

SharedLibrary::Function SharedLibrary::FindMethod(std::string_view className, std::string_view method,
                                                  std::string_view) const {
  if (!IsLoaded()) return nullptr;
  const std::string start = "?" + std::string(method) + "@" + std::string(className) + "@@";
  return Find(ExportedName(ModuleOf(handle_), start));
}

SharedLibrary::Function SharedLibrary::FindConstructor(std::string_view className,
                                                       std::string_view microsoftArguments,
                                                       std::string_view) const {
  return Find("??0" + std::string(className) + "@@QEAA@" + std::string(microsoftArguments));
}

SharedLibrary::Function SharedLibrary::FindDestructor(std::string_view className) const {
  return IsLoaded() ? Find(ExportedName(ModuleOf(handle_), "??1" + std::string(className) + "@@")) : nullptr;
}

std::string NarrowPath(const SystemPath& path) {
  if (path.find(L'\0') != SystemPath::npos) return {};
  return ToCodePage(path).value_or(std::string());
}

}  // namespace zrml::platform
