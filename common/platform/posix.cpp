#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "common/platform/paths.h"
#include "common/platform/platform.h"

namespace zrml::platform {
namespace {

bool Status(const SystemPath& path, struct stat& status) {
  return !path.empty() && ::stat(path.c_str(), &status) == 0;
}

// Calls `visit(entry, folder)` for each entry of a folder until it returns false. Gives 0 or the error.
template <class Visit>
int VisitEntries(const SystemPath& folder, Visit visit) {
  struct CloseList {
    void operator()(DIR* list) const { ::closedir(list); }
  };
  const std::unique_ptr<DIR, CloseList> list(folder.empty() ? nullptr : ::opendir(folder.c_str()));
  if (list == nullptr) return errno;
  for (;;) {
    errno = 0;
    const dirent* const entry = ::readdir(list.get());
    if (entry == nullptr) return errno;
    if (!visit(*entry, ::dirfd(list.get()))) return 0;
  }
}

bool MayBeFile(const dirent& entry, int folder) {
  if (entry.d_type == DT_REG) return true;
  if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) return false;
  struct stat status {};
  return ::fstatat(folder, entry.d_name, &status, 0) == 0 ? S_ISREG(status.st_mode) : errno != ENOENT;
}

}  // namespace

SystemPath ToSystemPath(const std::wstring& path) {
  if (path.find(L'\0') != std::wstring::npos) return {};
  std::string native = ToNativePath(path);
  std::replace(native.begin(), native.end(), '\\', '/');
  return native;
}

File::File(File&& other) noexcept
    : handle_(std::exchange(other.handle_, kClosed)), isRefused_(other.isRefused_), error_(other.error_) {}

File& File::operator=(File&& other) noexcept {
  std::swap(handle_, other.handle_);
  std::swap(isRefused_, other.isRefused_);
  std::swap(error_, other.error_);
  other.Close();
  return *this;
}

File File::Open(const std::wstring& path) { return OpenSystemPath(ToSystemPath(path)); }

File File::OpenSystemPath(const SystemPath& path) {
  File file;
  if (path.empty()) return file;
  // O_NONBLOCK: opening a FIFO must not wait for its writer.
  file.handle_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  struct stat status {};
  if (file.IsOpen() && (::fstat(static_cast<int>(file.handle_), &status) != 0 || !S_ISREG(status.st_mode))) {
    file.Close();
  }
  return file;
}

void File::Close() {
  if (IsOpen()) ::close(static_cast<int>(std::exchange(handle_, kClosed)));
}

std::uint64_t File::Size() const {
  struct stat status {};
  if (!IsOpen() || ::fstat(static_cast<int>(handle_), &status) != 0 || status.st_size < 0) return 0;
  return static_cast<std::uint64_t>(status.st_size);
}

std::size_t File::ReadAt(std::uint64_t offset, std::span<std::byte> out) const {
  std::size_t done = 0;
  int error = 0;
  while (IsOpen() && done < out.size()) {
    const std::uint64_t position = offset + done;
    if (position > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) break;
    const ssize_t count = ::pread(static_cast<int>(handle_), out.data() + done, out.size() - done,
                                  static_cast<off_t>(position));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) error = errno;
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  if (done < out.size() && offset < Size() && done < Size() - offset) {
    isRefused_ = true;
    error_ = error;
  }
  return done;
}

bool IsDirectory(const std::wstring& path) { return IsDirectory(ToSystemPath(path)); }
bool IsFile(const std::wstring& path) { return IsFile(ToSystemPath(path)); }

bool IsDirectory(const SystemPath& path) {
  struct stat status {};
  return Status(path, status) && S_ISDIR(status.st_mode);
}

bool IsFile(const SystemPath& path) {
  struct stat status {};
  return Status(path, status) && !S_ISDIR(status.st_mode);
}

bool IsThere(const SystemPath& path) {
  struct stat status {};
  return !path.empty() && ::lstat(path.c_str(), &status) == 0;
}

std::string WhyOutOfReach(const SystemPath& path) {
  struct stat status {};
  if (path.empty() || ::stat(path.c_str(), &status) == 0) return {};
  const bool isMissing = errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG;
  return isMissing ? std::string() : ErrorText(errno);
}

// A file that opens now was out of reach for a moment only.
std::string WhyClosed(const SystemPath& path) {
  struct stat status {};
  if (!Status(path, status) || !S_ISREG(status.st_mode)) return {};
  const bool isOpen = File::OpenSystemPath(path).IsOpen();
  return ErrorText(isOpen ? EAGAIN : errno);
}

FileStamp StampOf(const SystemPath& path) {
  constexpr std::int64_t kPerSecond = 1'000'000'000;
  struct stat status {};
  if (!Status(path, status)) return {};
  return {static_cast<std::uint64_t>(status.st_size),
          status.st_mtim.tv_sec * kPerSecond + status.st_mtim.tv_nsec};
}

SystemPath NameInFolder(const SystemPath& path) { return path.substr(path.rfind('/') + 1); }

std::optional<std::vector<SystemPath>> ListNames(const SystemPath& directory, std::size_t most) {
  std::vector<SystemPath> names;
  bool hasMore = false;
  const int error = VisitEntries(directory, [&](const dirent& entry, int) {
    hasMore = names.size() == most;
    if (!hasMore) names.emplace_back(entry.d_name);
    return !hasMore;
  });
  return error == 0 && !hasMore ? std::optional(std::move(names)) : std::nullopt;
}

FileList ListFiles(const SystemPath& folder) {
  FileList list;
  const int error = VisitEntries(folder, [&](const dirent& entry, int own) {
    if (MayBeFile(entry, own)) list.names.emplace_back(entry.d_name);
    return true;
  });
  std::sort(list.names.begin(), list.names.end());
  if (error != 0) list.error = ErrorText(error);
  list.isForbidden = error == EACCES;
  return list;
}

std::vector<FolderEntry> ListFolder(const SystemPath& folder, std::string& error) {
  std::vector<FolderEntry> entries;
  const int code = VisitEntries(folder, [&](const dirent& entry, int) {
    const std::string_view name = entry.d_name;
    if (name == "." || name == "..") return true;
    const SystemPath path = PathIn(folder, SystemPath(name));
    struct stat status {};
    const bool isLink = ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
    entries.push_back({SystemPath(name), IsDirectory(path), isLink});
    return true;
  });
  error = code == 0 ? std::string() : ErrorText(code);
  return entries;
}

}  // namespace zrml::platform
