// A C++ library of another maker, loaded while the program runs: the functions of a class that it exports are
// found by the names that the platform's usual compiler gives them.
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

  /// `stem`.dll or lib`stem`.so: from the folder that this code was loaded from, else from the loader's
  /// default folders; never from the current folder, unless the loader's own settings name it. A library that
  /// is not loaded when there is none.
  static SharedLibrary Load(std::string_view stem);

  bool IsLoaded() const { return handle_ != 0; }

  /// A member function of an exported class, const or not; null when the library has none. On Windows the
  /// class's and the function's name tell it, elsewhere also `arguments`, as the Itanium C++ ABI encodes
  /// them.
  Function FindMethod(std::string_view className, std::string_view method, std::string_view arguments) const;

  /// The constructor with exactly the arguments given: `microsoftArguments` on Windows, where a copy
  /// constructor may be exported beside it, `arguments` elsewhere.
  Function FindConstructor(std::string_view className, std::string_view microsoftArguments,
                           std::string_view arguments) const;

  /// The one that destroys without freeing.
  Function FindDestructor(std::string_view className) const;

 private:
  Function Find(const std::string& decoratedName) const;

  std::intptr_t handle_ = 0;
};

/// A path in the form that programs with narrow paths take, in the system's code page. Empty when it has no
/// such form.
std::string NarrowPath(const SystemPath& path);
#ifndef _WIN32  // where wide paths are those of the system
/// The same of a path of the interface, whose backslashes become slashes.
std::string NarrowPath(std::wstring_view path);
#endif

}  // namespace zrml::platform
