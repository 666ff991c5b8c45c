#include <cerrno>
#include <sys/random.h>
#include <system_error>

#include "common/platform/platform.h"

namespace zrml::platform {

std::uint32_t RandomNumber() {
  std::uint32_t number = 0;
  while (::getrandom(&number, sizeof number, 0) != sizeof number) {
    if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "no random numbers");
  }
  return number;
}

}  // namespace zrml::platform
