#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "convert/native_path.h"
#include "convert/target_file.h"

namespace zrml::convert {
namespace {

constexpr mode_t kMode = 0666;         // less what the process masks
constexpr mode_t kPermissions = 0777;  // of a file that is replaced

// 0, or the error. Never replaces a file at `to`.
int RenameToNew(const std::string& from, const std::string& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  // File systems that cannot: add a second name, then remove the first.
  if (::link(from.c_str(), to.c_str()) == 0) {
    ::unlink(from.c_str());  // the file is complete, even when its first name cannot be removed
    return 0;
  }
  if (errno != EPERM && errno != EOPNOTSUPP) return errno;
  // Nor links (FAT): between check and rename another program may make the file.
  if (platform::IsThere(to)) return EEXIST;
  return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

int RenameOver(const std::string& from, const std::string& to) {
  return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

// The name that the system gives an open file.
std::string LinkTo(std::intptr_t handle) { return "/proc/self/fd/" + std::to_string(handle); }

// 0, or the error. Never replaces a file at `path`.
int NameUnnamed(std::intptr_t handle, const std::string& path) {
  const std::string link = LinkTo(handle);
  return ::linkat(AT_FDCWD, link.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0 ? 0 : errno;
}

// A file without a name, which leaves nothing even when the program is killed. kClosed (-1) where the
// file system has none, or where it could not be named later.
int OpenUnnamed(const std::string& folder) {
  const int handle = ::open(folder.empty() ? "." : folder.c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, kMode);
  if (handle < 0 || ::access(LinkTo(handle).c_str(), F_OK) == 0) return handle;
  ::close(handle);
  return -1;
}

// Calls `make` with names for a temporary file in the folder of `path` until one is new. The name; empty
// after an error.
template <class Make>
std::string MakeTemporary(const std::string& path, Make make) {
  constexpr int kMostNames = 100;
  const std::string stem = FolderOf(path) + ".zrml-" + std::to_string(::getpid()) + "-";
  for (int i = 0; i < kMostNames; ++i) {
    std::string name = stem + std::to_string(i) + ".part";
    if (make(name)) return name;
    if (errno != EEXIST) break;
  }
  return {};
}

// Only the superuser may give a file away; that is not a reason to fail.
void TakeOver(const struct stat& replaced, int handle) {
  [[maybe_unused]] const int isKept = ::fchown(handle, replaced.st_uid, replaced.st_gid);
  ::fchmod(handle, replaced.st_mode & kPermissions);
}

// So that the new name also survives a power failure. Not all file systems can; the data are safe anyway.
void FlushFolder(const std::string& folder) {
  const int handle = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (handle < 0) return;
  ::fsync(handle);
  ::close(handle);
}

}  // namespace

TargetFile::TargetFile(std::string path, Existing existing, Cancel cancel)
    : path_(std::move(path)),
      target_(platform::FromUtf8Path(path_)),
      existing_(existing),
      cancel_(std::move(cancel)) {
  const bool mayReplace = existing_ == Existing::kReplace;
  if (!mayReplace && platform::IsThere(target_)) FailAsExisting();
  if (mayReplace) target_ = platform::FollowLinks(target_);
  struct stat replaced {};
  const bool isReplacing = mayReplace && ::stat(target_.c_str(), &replaced) == 0;
  if (mayReplace && !isReplacing && errno == ELOOP) Fail(ELOOP);
  handle_ = OpenUnnamed(FolderOf(target_));
  if (handle_ == kClosed) {
    temporary_ = MakeTemporary(target_, [this](const std::string& name) {
      handle_ = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
      return handle_ != kClosed;
    });
  }
  if (handle_ == kClosed) Fail(errno);
  if (isReplacing) TakeOver(replaced, static_cast<int>(handle_));
}

TargetFile::~TargetFile() {
  Close();
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

void TargetFile::Close() {
  if (handle_ != kClosed) ::close(static_cast<int>(handle_));
  handle_ = kClosed;
}

void TargetFile::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(static_cast<int>(handle_), bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      Fail(errno);
    }
  }
}

void TargetFile::Flush() {
  while (::fsync(static_cast<int>(handle_)) != 0 && errno != EINVAL) {
    if (errno != EINTR) Fail(errno);
    ThrowIfCancelled(cancel_);
  }
}

// 0, or the error.
int TargetFile::Name() {
  if (temporary_.empty()) {
    const int error = NameUnnamed(handle_, target_);
    if (error != EEXIST || existing_ == Existing::kKeep) return error;
    // An existing file can only be replaced by one that has a name, for an instant.
    temporary_ = MakeTemporary(
        target_, [this](const std::string& name) { return (errno = NameUnnamed(handle_, name)) == 0; });
    if (temporary_.empty()) return errno;
  }
  return existing_ == Existing::kKeep ? RenameToNew(temporary_, target_) : RenameOver(temporary_, target_);
}

void TargetFile::Finish() {
  Flush();
  const int error = Name();
  if (error == EEXIST && existing_ == Existing::kKeep) FailAsExisting();
  if (error != 0) Fail(error);
  temporary_.clear();
  Close();  // loses no flushed data
  FlushFolder(FolderOf(target_));
}

}  // namespace zrml::convert
