#include "tests/support/held_open.h"

#include <system_error>

#ifdef _WIN32
#include <windows.h>
#endif

namespace zrml {

bool IsHeldOpen(const std::filesystem::path& path) {
#ifdef _WIN32
  // Without sharing it can be opened only when it is not open elsewhere.
  const HANDLE handle =
      CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return true;
  CloseHandle(handle);
  return false;
#else
  std::error_code ignored;  // the listing itself is open, but closed by the time it is checked
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    if (std::filesystem::read_symlink(entry, ignored) == std::filesystem::canonical(path)) return true;
  }
  return false;
#endif
}

}  // namespace zrml
