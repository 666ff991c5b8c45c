#include "fuzz/simulated_files.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "common/platform/platform.h"

namespace zrml::fuzz {
namespace {

using Contents = std::shared_ptr<const std::vector<std::byte>>;

std::map<std::wstring, Contents, std::less<>> folder;
std::map<std::intptr_t, Contents> openFiles;
std::intptr_t lastHandle = 0;

// The name of a file in the folder; empty for every other path.
std::wstring_view NameInFolder(std::wstring_view path) {
  const std::wstring_view parent = kFolder;
  if (!path.starts_with(parent)) return {};
  path.remove_prefix(parent.size());
  return path.starts_with(L'\\') || path.starts_with(L'/') ? path.substr(1) : std::wstring_view();
}

Contents Find(std::wstring_view path) {
  const auto file = folder.find(NameInFolder(path));
  return file == folder.end() ? nullptr : file->second;
}

Contents FindAt(const platform::SystemPath& path) {
#ifdef _WIN32
  return Find(path);
#else
  return Find(platform::FromNativePath(path));
#endif
}

}  // namespace

void SetFiles(Files files) {
  folder.clear();
  openFiles.clear();  // files that reports have deliberately left open
  for (auto& [name, bytes] : files)
    folder.emplace(name, std::make_shared<const std::vector<std::byte>>(std::move(bytes)));
}

int OpenFileCount() { return static_cast<int>(openFiles.size()); }

}  // namespace zrml::fuzz

namespace zrml::platform {

using namespace zrml::fuzz;

File::File(File&& other) noexcept
    : handle_(std::exchange(other.handle_, kClosed)), isRefused_(std::exchange(other.isRefused_, false)) {}

File& File::operator=(File&& other) noexcept {
  std::swap(handle_, other.handle_);
  std::swap(isRefused_, other.isRefused_);
  other.Close();
  return *this;
}

#ifdef _WIN32
SystemPath ToSystemPath(const std::wstring& path) { return path; }
File File::Open(const std::wstring& path) { return OpenSystemPath(path); }
#else
SystemPath ToSystemPath(const std::wstring& path) {
  SystemPath native = ToNativePath(path);
  std::replace(native.begin(), native.end(), '\\', '/');
  return native;
}
File File::Open(const std::wstring& path) { return OpenSystemPath(ToSystemPath(path)); }
#endif

File File::OpenSystemPath(const SystemPath& path) {
  File file;
  Contents contents = FindAt(path);
  if (contents != nullptr) {
    file.handle_ = ++lastHandle;
    openFiles.emplace(file.handle_, std::move(contents));
  }
  return file;
}

void File::Close() {
  if (IsOpen()) openFiles.erase(std::exchange(handle_, kClosed));
}

std::uint64_t File::Size() const { return IsOpen() ? openFiles.at(handle_)->size() : 0; }

std::size_t File::ReadAt(std::uint64_t offset, std::span<std::byte> out) const {
  if (!IsOpen()) return 0;
  const std::vector<std::byte>& bytes = *openFiles.at(handle_);
  const auto begin = static_cast<std::size_t>(std::min<std::uint64_t>(offset, bytes.size()));
  const std::size_t count = std::min(out.size(), bytes.size() - begin);
  std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(begin), count, out.begin());
  return count;
}

bool IsDirectory(const std::wstring& path) {
  const std::wstring_view parent = kFolder;
  return path == parent || (path.starts_with(parent) && path.size() == parent.size() + 1 &&
                            (path.back() == L'\\' || path.back() == L'/'));
}

bool IsFile(const std::wstring& path) { return Find(path) != nullptr; }

#ifndef _WIN32
bool IsDirectory(const SystemPath& path) { return IsDirectory(FromNativePath(path)); }
bool IsFile(const SystemPath& path) { return IsFile(FromNativePath(path)); }
#endif

FileStamp StampOf(const SystemPath& path) {
  const Contents contents = FindAt(path);
  return {contents != nullptr ? contents->size() : 0};
}

bool IsThere(const SystemPath& path) { return IsFile(path) || IsDirectory(path); }

SystemPath NameInFolder(const SystemPath& path) {
  constexpr SystemPath::value_type kSeparators[] = {'/', '\\', 0};
  return path.substr(path.find_last_of(kSeparators) + 1);
}

// A simulated file that exists always opens.
std::string WhyClosed(const SystemPath&) { return {}; }
std::string WhyOutOfReach(const SystemPath&) { return {}; }

std::optional<std::vector<SystemPath>> ListNames(const SystemPath& directory, std::size_t most) {
  if (!IsDirectory(directory) || folder.size() > most) return std::nullopt;
  std::vector<SystemPath> names;
  for (const auto& [name, contents] : folder) names.push_back(ToSystemPath(name));
  return names;
}

FileList ListFiles(const SystemPath& directory) {
  FileList list;
  if (IsDirectory(directory)) list.names = *ListNames(directory, folder.size());
  std::sort(list.names.begin(), list.names.end());
  return list;
}

}  // namespace zrml::platform
