#define _CRT_RAND_S  // declares rand_s
#include <stdlib.h>
#include <system_error>

#include "common/platform/platform.h"

namespace zrml::platform {

std::uint32_t RandomNumber() {
  unsigned int number = 0;
  if (const int error = ::rand_s(&number); error != 0)
    throw std::system_error(error, std::generic_category(), "no random numbers");
  return number;
}

}  // namespace zrml::platform
