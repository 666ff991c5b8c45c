#include "tests/support/built_file.h"

#ifdef _WIN32
#include <array>
#include <windows.h>
#endif

namespace zrml {
namespace {

std::filesystem::path ProgramPath() {
#ifdef _WIN32
  std::array<wchar_t, 32768> path{};
  GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
  return path.data();
#else
  return std::filesystem::read_symlink("/proc/self/exe");
#endif
}

}  // namespace

std::filesystem::path BuiltFile(const std::filesystem::path& fromProgram) {
  return (ProgramPath().parent_path() / fromProgram).lexically_normal();
}

}  // namespace zrml
