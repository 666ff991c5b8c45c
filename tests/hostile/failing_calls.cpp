#include "tests/hostile/failing_calls.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using zrml::CallFailure;

bool isActive = false;
int callsLeft = 0;
bool hasFailed = false;
CallFailure kindOfFailure{};
zrml::FailingCalls::Extent extentOfFailure{};

bool FailsNow() {
  if (!isActive) return false;
  if (callsLeft-- > 0) return false;
  if (hasFailed && extentOfFailure == zrml::FailingCalls::kOne) return false;
  hasFailed = true;
  return true;
}

// A call other than a read: only errors apply to it.
bool ErrorNow(bool isListing = false) {
  if (!FailsNow()) return false;
  if (kindOfFailure != CallFailure::kError && !(isListing && kindOfFailure == CallFailure::kNoList))
    return false;
  errno = EIO;
  return true;
}

}  // namespace

namespace zrml {

FailingCalls::FailingCalls(int count, CallFailure failure, Extent extent) {
  callsLeft = count;
  kindOfFailure = failure;
  extentOfFailure = extent;
  hasFailed = false;
  isActive = true;
}
FailingCalls::~FailingCalls() { isActive = false; }
bool FailingCalls::HasFailed() const { return hasFailed; }

}  // namespace zrml

// The linker sends the program's calls here (CMakeLists.txt).
extern "C" {

int __real_open(const char* path, int flags, ...);
int __real_fstat(int file, struct stat* status);
int __real_stat(const char* path, struct stat* status);
ssize_t __real_pread(int file, void* bytes, size_t count, off_t offset);
DIR* __real_opendir(const char* path);
dirent* __real_readdir(DIR* list);

int __wrap_open(const char* path, int flags, ...);
int __wrap_fstat(int file, struct stat* status);
int __wrap_stat(const char* path, struct stat* status);
ssize_t __wrap_pread(int file, void* bytes, size_t count, off_t offset);
DIR* __wrap_opendir(const char* path);
dirent* __wrap_readdir(DIR* list);

int __wrap_open(const char* path, int flags, ...) { return ErrorNow() ? -1 : __real_open(path, flags, 0600); }
int __wrap_fstat(int file, struct stat* status) { return ErrorNow() ? -1 : __real_fstat(file, status); }
DIR* __wrap_opendir(const char* path) { return ErrorNow(true) ? nullptr : __real_opendir(path); }
dirent* __wrap_readdir(DIR* list) { return ErrorNow(true) ? nullptr : __real_readdir(list); }
int __wrap_stat(const char* path, struct stat* status) { return ErrorNow() ? -1 : __real_stat(path, status); }

ssize_t __wrap_pread(int file, void* bytes, size_t count, off_t offset) {
  if (FailsNow()) {
    if (kindOfFailure == CallFailure::kNoList) return __real_pread(file, bytes, count, offset);
    if (kindOfFailure == CallFailure::kShort)
      return __real_pread(file, bytes, std::min<size_t>(count, 1), offset);
    errno = kindOfFailure == CallFailure::kInterrupted ? EINTR : EIO;
    return -1;
  }
  return __real_pread(file, bytes, count, offset);
}
}
