#include <algorithm>
#include <climits>
#include <dlfcn.h>
#include <link.h>
#include <unistd.h>
#include <utility>

#include "common/platform/platform.h"
#include "common/platform/shared_library.h"

namespace zrml::platform {
namespace {

// The folder of this code at load time, with a trailing slash; empty when unknown.
std::string OwnFolder() {
  static const char here = 0;
  Dl_info info{};
  link_map* map = nullptr;
  char path[PATH_MAX] = "";
  if (::dladdr1(&here, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0) return {};
  if (map->l_name[0] != '\0') {
    if (::dlinfo(map, RTLD_DI_ORIGIN, path) != 0) return {};
    return path[0] == '/' ? std::string(path) + "/" : std::string();
  }
  // The program itself: the loader does not know its origin.
  if (::readlink("/proc/self/exe", path, sizeof path - 1) <= 0) return {};
  const std::string_view program = path;
  return std::string(program.substr(0, program.rfind('/') + 1));
}

std::intptr_t Open(const std::string& file) {
  return reinterpret_cast<std::intptr_t>(::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL));
}

// "_ZN" + class + member + "E" + arguments, each name after its length.
std::string ItaniumName(std::string_view qualifier, std::string_view className, std::string_view member,
                        std::string_view arguments) {
  return "_ZN" + std::string(qualifier) + std::to_string(className.size()) + std::string(className) +
         std::string(member) + "E" + std::string(arguments);
}

}  // namespace

SharedLibrary::SharedLibrary(SharedLibrary&& other) noexcept : handle_(std::exchange(other.handle_, 0)) {}

SharedLibrary& SharedLibrary::operator=(SharedLibrary&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

SharedLibrary::~SharedLibrary() {
  if (IsLoaded()) ::dlclose(reinterpret_cast<void*>(handle_));
}

SharedLibrary SharedLibrary::Load(std::string_view stem) {
  const std::string file = "lib" + std::string(stem) + ".so";
  SharedLibrary library;
  if (const std::string folder = OwnFolder(); !folder.empty()) library.handle_ = Open(folder + file);
  if (!library.IsLoaded()) library.handle_ = Open(file);
  return library;
}

SharedLibrary::Function SharedLibrary::Find(const std::string& decoratedName) const {
  if (!IsLoaded()) return nullptr;
  return reinterpret_cast<Function>(::dlsym(reinterpret_cast<void*>(handle_), decoratedName.c_str()));
}

SharedLibrary::Function SharedLibrary::FindMethod(std::string_view className, std::string_view method,
                                                  std::string_view arguments) const {
  const std::string member = std::to_string(method.size()) + std::string(method);
  const Function found = Find(ItaniumName("", className, member, arguments));
  return found != nullptr ? found : Find(ItaniumName("K", className, member, arguments));
}

SharedLibrary::Function SharedLibrary::FindConstructor(std::string_view className, std::string_view,
                                                       std::string_view arguments) const {
  return Find(ItaniumName("", className, "C1", arguments));
}

SharedLibrary::Function SharedLibrary::FindDestructor(std::string_view className) const {
  return Find(ItaniumName("", className, "D1", "v"));
}

std::string NarrowPath(const SystemPath& path) {
  return ToCodePage(FromNativePath(path)).value_or(std::string());
}

std::string NarrowPath(std::wstring_view path) {
  if (path.find(L'\0') != std::wstring_view::npos) return {};
  std::string narrow = ToCodePage(path).value_or(std::string());
  std::replace(narrow.begin(), narrow.end(), '\\', '/');
  return narrow;
}

}  // namespace zrml::platform
