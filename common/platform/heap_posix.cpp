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
  // All pages with some of it, and on to the end of the last large one: that may reach into the next array.
  const auto begin = reinterpret_cast<std::uintptr_t>(memory);
  const std::size_t before = begin % kPage;
  const std::size_t behind = (kLittle - (begin + bytes) % kLittle) % kLittle;
  const int error = errno;
  ::madvise(static_cast<char*>(memory) - before, before + bytes + behind, MADV_HUGEPAGE);
  errno = error;  // a refusal changes nothing
#else
  static_cast<void>(memory);
  static_cast<void>(bytes);
#endif
}

}  // namespace zrml::platform
