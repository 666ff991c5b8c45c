#include "common/host_heap.h"

#include <cstdint>

#include "common/platform/platform.h"

namespace zrml {
namespace {

// As the host's standard library lays out large blocks; it aborts the process when a block differs.
constexpr std::size_t kLargeBlock = 4096;
constexpr std::size_t kAlignment = 32;
constexpr std::size_t kOverhead = sizeof(void*) + kAlignment - 1;

void* AllocateRaw(std::size_t bytes) {
  void* const raw = platform::SharedHeapAllocate(bytes);
  if (raw == nullptr) throw std::bad_alloc();
  return raw;
}

}  // namespace

void* HostAllocate(std::size_t bytes) {
  if (bytes < kLargeBlock) return AllocateRaw(bytes);
  if (bytes > SIZE_MAX - kOverhead) throw std::bad_alloc();
  void* const raw = AllocateRaw(bytes + kOverhead);
  const auto user = (reinterpret_cast<std::uintptr_t>(raw) + kOverhead) & ~(kAlignment - 1);
  void** const block = reinterpret_cast<void**>(user);
  block[-1] = raw;
  return block;
}

void HostFree(void* block, std::size_t bytes) noexcept {
  if (block == nullptr) return;
  platform::SharedHeapFree(bytes < kLargeBlock ? block : static_cast<void**>(block)[-1]);
}

}  // namespace zrml
