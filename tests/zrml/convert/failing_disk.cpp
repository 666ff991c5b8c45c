// Preloaded into zrml: a disk that gives nothing of "_FUNC001.DAT" from its second block on.
#undef _FORTIFY_SOURCE  // whose headers define the functions that this file replaces
#include <array>
#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr off_t kBlock = 4096;

bool IsOnBadBlocks(int file) {
  std::array<char, 4096> path{};
  const std::string link = "/proc/self/fd/" + std::to_string(file);
  const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
  return length > 0 &&
         std::string_view(path.data(), static_cast<std::size_t>(length)).ends_with("/_FUNC001.DAT");
}

ssize_t Read(int file, void* bytes, size_t count, off_t offset) {
  if (offset + static_cast<off_t>(count) > kBlock && IsOnBadBlocks(file)) {
    if (offset >= kBlock) {
      errno = EIO;
      return -1;
    }
    count = static_cast<size_t>(kBlock - offset);
  }
  return ::syscall(SYS_pread64, file, bytes, count, offset);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) ssize_t pread(int file, void* bytes, size_t count,
                                                                off_t offset) {
  return Read(file, bytes, count, offset);
}

extern "C" __attribute__((visibility("default"))) ssize_t pread64(int file, void* bytes, size_t count,
                                                                  off_t offset) {
  return Read(file, bytes, count, offset);
}
