#include "tools/zrml/convert/native_path.h"

#include <algorithm>

#include "common/platform/platform.h"
#include "tools/zrml/failure.h"

namespace zrml {

#ifdef _WIN32
std::filesystem::path NativePath(std::wstring path) { return path; }
std::wstring WidePath(const std::filesystem::path& path) { return path.native(); }
std::string PathBytes(const std::filesystem::path& path) {
  const std::u8string text = path.generic_u8string();
  return {text.begin(), text.end()};
}
#else
std::filesystem::path NativePath(std::wstring path) {
  std::replace(path.begin(), path.end(), L'\\', L'/');
  return platform::ToNativePath(path);
}
std::wstring WidePath(const std::filesystem::path& path) { return platform::FromNativePath(path.native()); }
std::string PathBytes(const std::filesystem::path& path) { return path.native(); }
#endif

void MakeFolder(const std::wstring& path) {
  std::error_code error;
  std::filesystem::create_directories(NativePath(path), error);
  if (error && !platform::IsDirectory(path)) {
    throw Failure(ExitStatus::kUnreadable, L"cannot make the folder " + path + L" (" +
                                               platform::FromNativePath(error.message()) + L")");
  }
}

}  // namespace zrml
