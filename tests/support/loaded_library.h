// A library that a test loads at run time.
#pragma once

#include <filesystem>
#include <string>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace zrml {

class LoadedLibrary {
 public:
  explicit LoadedLibrary(const std::filesystem::path& file) {
    const std::filesystem::path path = std::filesystem::absolute(file);
#ifdef _WIN32
    handle_ = reinterpret_cast<void*>(::LoadLibraryW(path.c_str()));
#else
    handle_ = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
#endif
  }
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;
  ~LoadedLibrary() {
    if (handle_ == nullptr) return;
#ifdef _WIN32
    ::FreeLibrary(static_cast<HMODULE>(handle_));
#else
    ::dlclose(handle_);
#endif
  }

  /// Null when the library was not loaded or has no such function.
  template <class Function>
  Function Get(const char* name) const {
    if (handle_ == nullptr) return nullptr;
#ifdef _WIN32
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(handle_), name)));
#else
    return reinterpret_cast<Function>(::dlsym(handle_, name));
#endif
  }

 private:
  void* handle_ = nullptr;
};

}  // namespace zrml
