// Memory shared by host and plug-in: either side may grow or free what the other has allocated, so blocks
// come from the host's heap, in the layout of its standard library.
#pragma once

#include <cstddef>
#include <limits>
#include <new>

namespace zrml {

/// A block of `bytes` bytes. Blocks of 4,096 bytes or more are aligned to 32; the word before them holds the
/// start of their memory. Throws std::bad_alloc.
void* HostAllocate(std::size_t bytes);

/// Frees a block that was allocated with the same `bytes`, here or by the host. Null is ignored.
void HostFree(void* block, std::size_t bytes) noexcept;

/// A standard allocator over those blocks.
template <class T>
struct HostAllocator {
  using value_type = T;

  HostAllocator() = default;
  template <class U>
  HostAllocator(const HostAllocator<U>&) noexcept {}

  T* allocate(std::size_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) throw std::bad_alloc();
    return static_cast<T*>(HostAllocate(count * sizeof(T)));
  }
  void deallocate(T* block, std::size_t count) noexcept { HostFree(block, count * sizeof(T)); }

  template <class U>
  bool operator==(const HostAllocator<U>&) const noexcept {
    return true;
  }
};

}  // namespace zrml
