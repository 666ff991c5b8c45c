// A disk that is slow at each read of a file of a raw directory, whatever signals come, and first adds a byte
// to the file named in ZRML_DISK_LOG.
#include "tests/zrml/convert/disk.h"
// after it, which takes fortified functions out of them
#include <cstdlib>
#include <ctime>
#include <fcntl.h>

namespace {

void TakeTime() {
  const char* const log = std::getenv("ZRML_DISK_LOG");
  const int file = log != nullptr ? ::open(log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666) : -1;
  if (file < 0 || ::write(file, ".", 1) != 1) std::abort();
  ::close(file);
  timespec left = {0, 10'000'000};
  while (::nanosleep(&left, &left) != 0) continue;
}

}  // namespace

ssize_t ReadDisk(int file, void* bytes, size_t count, off_t offset) {
  if (PathOf(file).find(".raw/") != std::string::npos) TakeTime();
  return ReadSystem(file, bytes, count, offset);
}
