#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <sys/mman.h>

#include "common/platform/platform.h"

namespace zrml::platform {

void* SharedHeapAllocate(std::size_t bytes) noexcept { return std::malloc(bytes != 0 ? bytes : 1); }
void SharedHeapFree(void* block) noexcept { std::free(block); }

void PreferLargePages(void* memory, std::size_t bytes) noexcept {
#ifdef MADV_HUGEPAGE
  constexpr std::uintptr_t kPage = 4096;
  constexpr std::size_t kLittle = std::size_t{1} << 21;
  if (bytes < kLittle) return;
  // All pages with some of it: a large page may reach from one array into the next one.
  const std::size_t before = reinterpret_cast<std::uintptr_t>(memory) % kPage;
  const int error = errno;
  ::madvise(static_cast<char*>(memory) - before, before + bytes, MADV_HUGEPAGE);
  errno = error;  // a refusal changes nothing
#else
  static_cast<void>(memory);
  static_cast<void>(bytes);
#endif
}

}  // namespace zrml::platform
