#include <array>
#include <cerrno>
#include <climits>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "common/platform/paths.h"

namespace zrml::platform {

SystemPath AbsolutePath(const SystemPath& path) {
  std::error_code error;
  std::filesystem::path absolute = std::filesystem::absolute(path, error).lexically_normal();
  if (!absolute.has_filename()) absolute = absolute.parent_path();  // "run.raw/", "."
  return absolute;
}

SystemPath FollowLinks(SystemPath path) {
  constexpr int kMostLinks = 40;  // the system's own limit
  std::array<char, PATH_MAX> text{};
  for (int i = 0; i < kMostLinks; ++i) {
    const ssize_t length = ::readlink(path.c_str(), text.data(), text.size());
    if (length <= 0) break;
    const std::string next(text.data(), static_cast<std::size_t>(length));
    path.resize(next.front() == '/' ? 0 : path.rfind('/') + 1);
    path += next;
  }
  return path;
}

std::optional<FileId> IdOf(const SystemPath& path) {
  struct stat status {};
  if (path.empty() || ::stat(path.c_str(), &status) != 0) return std::nullopt;
  return FileId{status.st_dev, status.st_ino};
}

bool IsDevice(const SystemPath& path) {
  struct stat status {};
  if (path.empty() || ::stat(path.c_str(), &status) != 0) return false;
  return !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

std::string MakeFolder(const SystemPath& path) {
  constexpr mode_t kMode = 0777;  // the process's mask applies
  if (::mkdir(path.c_str(), kMode) == 0 || (errno == EEXIST && IsDirectory(path))) return {};
  return ErrorText(errno == EEXIST ? ENOTDIR : errno);
}

std::string ErrorText(int code) { return std::generic_category().message(code); }

}  // namespace zrml::platform
