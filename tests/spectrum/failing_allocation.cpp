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

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (allocationsLeft == 0) return nullptr;
  if (allocationsLeft > 0) --allocationsLeft;
  return std::malloc(size > 0 ? size : 1);
}

void* operator new(std::size_t size) {
  void* const block = operator new(size, std::nothrow);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
