// Blocks as the host's standard library makes them: a broken one ends the process.
#include "common/host_heap.h"

#include <cstdint>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "common/platform/platform.h"

namespace zrml {
namespace {

constexpr std::size_t kLarge = 4096;
constexpr std::size_t kOverhead = 39;  // a word, and 31 bytes to align within

std::uintptr_t AddressOf(const void* block) { return reinterpret_cast<std::uintptr_t>(block); }

std::uintptr_t WordBefore(const void* block) {
  std::uintptr_t word = 0;
  std::memcpy(&word, static_cast<const std::byte*>(block) - sizeof(word), sizeof(word));
  return word;
}

TEST(HostHeap, LargeBlocksAreAlignedAndRememberTheirStart) {
  for (const std::size_t bytes : {kLarge, kLarge + 1, std::size_t{1} << 20}) {
    void* const block = HostAllocate(bytes);
    EXPECT_EQ(AddressOf(block) % 32, 0U) << bytes;
    const std::uintptr_t distance = AddressOf(block) - WordBefore(block);
    EXPECT_GE(distance, sizeof(void*)) << bytes;
    EXPECT_LE(distance, kOverhead) << bytes;
    std::memset(block, 0xA5, bytes);  // all of it is ours; sanitizers watch
    HostFree(block, bytes);
  }
}

// Like the host: takes the block apart itself and frees the start.
TEST(HostHeap, TheHostCanFreeOurBlocks) {
  void* const small = HostAllocate(kLarge - 1);
  platform::SharedHeapFree(small);
  void* const large = HostAllocate(kLarge);
  platform::SharedHeapFree(reinterpret_cast<void*>(WordBefore(large)));
}

TEST(HostHeap, WeCanFreeTheHostsBlocks) {
  HostFree(platform::SharedHeapAllocate(kLarge - 1), kLarge - 1);
  void* const raw = platform::SharedHeapAllocate(kLarge + kOverhead);
  const std::uintptr_t user = (AddressOf(raw) + kOverhead) & ~std::uintptr_t{31};
  const std::uintptr_t start = AddressOf(raw);
  std::memcpy(reinterpret_cast<std::byte*>(user) - sizeof(start), &start, sizeof(start));
  HostFree(reinterpret_cast<void*>(user), kLarge);
}

TEST(HostHeap, NothingToFree) {
  HostFree(nullptr, 0);
  HostFree(nullptr, kLarge);
}

TEST(HostHeap, ABlockOfNoBytesIsABlock) {
  void* const block = HostAllocate(0);
  EXPECT_NE(block, nullptr);
  HostFree(block, 0);
}

TEST(HostHeap, SizesThatCannotBeThrowBadAlloc) {
  constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
  EXPECT_THROW(HostAllocate(kMost), std::bad_alloc);
  EXPECT_THROW(HostAllocate(kMost - kOverhead + 1), std::bad_alloc);
  EXPECT_THROW(HostAllocator<double>().allocate(kMost / sizeof(double) + 1), std::bad_alloc);
}

}  // namespace
}  // namespace zrml
