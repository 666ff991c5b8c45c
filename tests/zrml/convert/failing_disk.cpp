// A disk that cannot read "_FUNC001.DAT" from its second block on.
#include "tests/zrml/convert/disk.h"
// after it, which takes fortified functions out of them
#include <cerrno>

ssize_t ReadDisk(int file, void* bytes, size_t count, off_t offset) {
  constexpr off_t kBlock = 4096;
  if (offset + static_cast<off_t>(count) > kBlock && PathOf(file).ends_with("/_FUNC001.DAT")) {
    if (offset >= kBlock) {
      errno = EIO;
      return -1;
    }
    count = static_cast<size_t>(kBlock - offset);
  }
  return ReadSystem(file, bytes, count, offset);
}
