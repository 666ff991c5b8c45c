#include "convert/native_path.h"

#include <algorithm>

namespace zrml::convert {
namespace {

#ifdef _WIN32
constexpr std::wstring_view kSeparators = L"\\/:";
constexpr std::string_view kEndsOfFolders = "\\/:";
constexpr std::string_view kPlainMark = "\\\\?\\";  // after it a slash is not a separator
#else
constexpr std::string_view kSeparators = "/";
constexpr std::string_view kEndsOfFolders = "/";
#endif

// The position after the last separator before `end`.
std::size_t StartOfName(const SystemPath& path, std::size_t end) {
  return end == 0 ? 0 : path.find_last_of(kSeparators, end - 1) + 1;
}

}  // namespace

#ifdef _WIN32
std::string PathText(const SystemPath& path) {
  constexpr std::string_view kServerMark = "\\\\?\\UNC\\";
  std::string text = platform::ToUtf8Path(path);
  if (text.starts_with(kServerMark)) {
    text.replace(0, kServerMark.size(), "\\\\");
  } else if (text.starts_with(kPlainMark)) {
    text.erase(0, kPlainMark.size());
  }
  std::replace(text.begin(), text.end(), '\\', '/');
  return text;
}

std::string InFolder(const std::string& folder, const std::string& name) {
  const bool isPlain = folder.starts_with(kPlainMark);
  return folder + (folder.empty() || EndsAsFolder(folder) ? "" : isPlain ? "\\" : "/") + name;
}
#else
std::string PathText(const SystemPath& path) { return path; }

std::string InFolder(const std::string& folder, const std::string& name) {
  return folder + (folder.empty() || EndsAsFolder(folder) ? "" : "/") + name;
}
#endif

std::string UriPath(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kPlain = "-._~/:";
  std::string text;
  for (const char c : bytes) {
    const bool isAlphanumeric = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    const auto byte = static_cast<unsigned char>(c);
    if (isAlphanumeric || kPlain.find(c) != std::string_view::npos) {
      text.push_back(c);
    } else {
      text.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
  }
  return text;
}

std::string FileUri(const SystemPath& path) {
  const std::string bytes = PathText(path);
  const bool isOnServer = bytes.starts_with("//");
  return (isOnServer ? "file:" : bytes.starts_with('/') ? "file://" : "file:///") + UriPath(bytes);
}

SystemPath FolderOf(const SystemPath& path) { return path.substr(0, StartOfName(path, path.size())); }
SystemPath NameOf(const SystemPath& path) { return path.substr(StartOfName(path, path.size())); }

std::string StemOf(const SystemPath& path) {
  const std::string name = PathText(NameOf(path));
  return name.substr(0, name.rfind('.'));
}

SystemPath FolderOfSource(const std::string& path) {
  const SystemPath given = platform::FromUtf8Path(path);
  const SystemPath absolute = platform::AbsolutePath(given);
  return platform::IsFile(given) ? platform::AbsolutePath(FolderOf(absolute)) : absolute;
}

bool EndsAsFolder(const std::string& path) {
  return path.empty() || kEndsOfFolders.find(path.back()) != std::string_view::npos;
}

std::string MakeFolders(const std::string& path) {
  const SystemPath folder = platform::FromUtf8Path(path);
  std::size_t made = folder.size();
  while (made > 0 && !platform::IsDirectory(folder.substr(0, made))) made = StartOfName(folder, made - 1);
  std::string error;
  while (made < folder.size() && error.empty()) {
    made = std::min(folder.find_first_of(kSeparators, made), folder.size() - 1) + 1;
    error = platform::MakeFolder(folder.substr(0, made));
  }
  return error;
}

}  // namespace zrml::convert
