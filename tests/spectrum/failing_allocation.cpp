#include "tests/spectrum/failing_allocation.h"

#include <cstdlib>
#include <new>

namespace {

constexpr int kUnlimited = -1;
int allocationsLeft = kUnlimited;

}  // namespace

namespace zrml {

FailingAllocation::FailingAllocation(int count) { allocationsLeft = count; }
FailingAllocation::~FailingAllocation() { allocationsLeft = kUnlimited; }

}  // namespace zrml

void* operator new(std::size_t size) {
  if (allocationsLeft == 0) throw std::bad_alloc();
  if (allocationsLeft > 0) --allocationsLeft;
  void* const block = std::malloc(size > 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
