#include "tests/hostile/allocations.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr int kUnlimited = -1;

int allocationsLeft = kUnlimited;
bool hasFailed = false;
std::atomic<std::size_t> bytesInUse = 0;  // threads that a test starts allocate too
std::atomic<std::size_t> peakBytes = 0;

// Precedes each block; its size keeps the block aligned.
struct alignas(std::max_align_t) BlockSize {
  std::size_t bytes;
};

bool FailsNow() {
  if (allocationsLeft == kUnlimited || allocationsLeft-- > 0) return false;
  allocationsLeft = kUnlimited;
  hasFailed = true;
  return true;
}

void* Allocate(std::size_t bytes) noexcept {
  if (FailsNow() || bytes > SIZE_MAX - sizeof(BlockSize)) return nullptr;
  auto* const block = static_cast<BlockSize*>(std::malloc(sizeof(BlockSize) + bytes));
  if (block == nullptr) return nullptr;
  block->bytes = bytes;
  const std::size_t inUse = bytesInUse += bytes;
  if (inUse > peakBytes) peakBytes = inUse;
  return block + 1;
}

void Free(void* memory) noexcept {
  if (memory == nullptr) return;
  BlockSize* const block = static_cast<BlockSize*>(memory) - 1;
  bytesInUse -= block->bytes;
  std::free(block);
}

}  // namespace

namespace zrml {

FailingAllocation::FailingAllocation(int count) {
  hasFailed = false;
  allocationsLeft = count;
}
FailingAllocation::~FailingAllocation() { allocationsLeft = kUnlimited; }
bool FailingAllocation::HasFailed() const { return hasFailed; }

std::size_t BytesInUse() { return bytesInUse; }
std::size_t PeakBytes() { return peakBytes; }
void StartPeak() { peakBytes = bytesInUse.load(); }

}  // namespace zrml

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return Allocate(bytes); }
void* operator new(std::size_t bytes) {
  void* const memory = Allocate(bytes);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { Free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Free(memory); }
