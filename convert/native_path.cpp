#include "convert/native_path.h"

namespace zrml::convert {

namespace fs = std::filesystem;

#ifdef _WIN32
fs::path NativePath(const std::string& path) { return std::u8string(path.begin(), path.end()); }
std::string PathText(const fs::path& path) {
  const std::u8string text = path.generic_u8string();
  return {text.begin(), text.end()};
}
#else
fs::path NativePath(const std::string& path) { return path; }
std::string PathText(const fs::path& path) { return path.native(); }
#endif

fs::path AbsolutePath(const std::string& path) {
  std::error_code error;
  fs::path absolute = fs::absolute(NativePath(path), error).lexically_normal();
  if (!absolute.has_filename()) absolute = absolute.parent_path();  // "run.raw/", "."
  return absolute;
}

bool IsFile(const std::string& path) {
  std::error_code ignored;
  const fs::file_status status = fs::status(NativePath(path), ignored);
  return fs::exists(status) && !fs::is_directory(status);
}

}  // namespace zrml::convert
