#include <cstdlib>

#include "common/platform/platform.h"

namespace zrml::platform {

void* SharedHeapAllocate(std::size_t bytes) noexcept { return std::malloc(bytes != 0 ? bytes : 1); }
void SharedHeapFree(void* block) noexcept { std::free(block); }

}  // namespace zrml::platform
