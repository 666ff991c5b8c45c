// A third-party C++ library, loaded at run time. The functions of a class that it exports are found by the
// names that the platform's usual compiler gives them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/platform/platform.h"

namespace zrml::platform {

/// A loaded library, unloaded by its destructor.
class SharedLibrary {
 public:
  using Function = void (*)();

  SharedLibrary() = default;
  SharedLibrary(SharedLibrary&& other) noexcept;
  SharedLibrary& operator=(SharedLibrary&& other) noexcept;
  ~SharedLibrary();

  /// `stem`.dll or lib`stem`.so: from the folder of this code, else from the loader's default folders; never
  /// from the current folder, unless the loader's own settings name it. Without one, the result is not
  /// loaded.
  static SharedLibrary Load(std::string_view stem);

  bool IsLoaded() const { return handle_ != 0; }

  /// A member function of an exported class, const or not; null when the library has none. On Windows it is
  /// found by class and name, elsewhere by `arguments` as well, in the encoding of the Itanium C++ ABI.
  Function FindMethod(std::string_view className, std::string_view method, std::string_view arguments) const;

  /// The constructor with exactly the arguments given: `microsoftArguments` on Windows, where a copy
  /// constructor may be exported beside it, `arguments` elsewhere.
  Function FindConstructor(std::string_view className, std::string_view microsoftArguments,
                           std::string_view arguments) const;

  /// The destructor that does not free the memory.
  Function FindDestructor(std::string_view className) const;

 private:
  Function Find(const std::string& decoratedName) const;

  std::intptr_t handle_ = 0;
};

/// A path as programs with narrow paths take it, in the system's code page. Empty when it has no such form.
std::string NarrowPath(const SystemPath& path);
#ifndef _WIN32  // where wide paths are those of the system
/// The same for a path of the interface; its backslashes become slashes.
std::string NarrowPath(std::wstring_view path);
#endif

}  // namespace zrml::platform
