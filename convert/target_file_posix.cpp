#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "convert/native_path.h"
#include "convert/target_file.h"

namespace zrml::convert {
namespace {

constexpr mode_t kMode = 0666;  // less what the process masks
constexpr int kMostNames = 100;

std::string Reason(int error) { return std::generic_category().message(error); }

bool Exists(const std::string& path) {
  struct stat status;
  return ::lstat(path.c_str(), &status) == 0;
}

// With its slash; empty for the current folder.
std::string FolderOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

// 0, or the error. Never replaces a file at `to`.
int RenameToNew(const std::string& from, const std::string& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  // File systems that cannot: a second name, then without the first.
  if (::link(from.c_str(), to.c_str()) == 0) {
    ::unlink(from.c_str());  // the file is there, whole, also when its first name cannot be removed
    return 0;
  }
  if (errno != EPERM && errno != EOPNOTSUPP) return errno;
  // Nor that (FAT): between look and rename another program may make the file.
  if (Exists(to)) return EEXIST;
  return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

int RenameOver(const std::string& from, const std::string& to) {
  return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

// So that the new name, too, outlives a power failure. Not all file systems can; the data are safe anyway.
void FlushFolder(const std::string& folder) {
  const int handle = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (handle < 0) return;
  ::fsync(handle);
  ::close(handle);
}

}  // namespace

TargetFile::TargetFile(std::string path, Existing existing, Cancel cancel)
    : path_(std::move(path)), existing_(existing), cancel_(std::move(cancel)) {
  const std::string native = NativePath(path_).native();
  if (existing_ == Existing::kKeep && Exists(native)) FailAsExisting();
  const std::string stem = FolderOf(native) + ".zrml-" + std::to_string(::getpid()) + "-";
  for (int i = 0; i < kMostNames && handle_ == kClosed; ++i) {
    const std::string name = stem + std::to_string(i) + ".part";
    handle_ = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
    if (handle_ != kClosed) {
      temporaryPath_ = name;
    } else if (errno != EEXIST) {
      break;
    }
  }
  if (handle_ == kClosed) Fail(Reason(errno));
}

TargetFile::~TargetFile() {
  Close();
  if (!temporaryPath_.empty()) ::unlink(temporaryPath_.c_str());
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
      Fail(Reason(errno));
    }
  }
}

void TargetFile::Finish() {
  while (::fsync(static_cast<int>(handle_)) != 0 && errno != EINVAL) {
    if (errno != EINTR) Fail(Reason(errno));
    ThrowIfCancelled(cancel_);
  }
  const int closed = ::close(static_cast<int>(handle_));
  handle_ = kClosed;
  if (closed != 0 && errno != EINTR) Fail(Reason(errno));  // it is closed either way, and flushed before
  const std::string& from = temporaryPath_;
  const std::string to = NativePath(path_).native();
  const int error = existing_ == Existing::kKeep ? RenameToNew(from, to) : RenameOver(from, to);
  if (error == EEXIST && existing_ == Existing::kKeep) FailAsExisting();
  if (error != 0) Fail(Reason(error));
  temporaryPath_.clear();
  FlushFolder(FolderOf(to));
}

}  // namespace zrml::convert
