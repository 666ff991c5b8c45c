// The test program's memory: how much is in use, and allocations that fail. Not for use beside other threads.
#pragma once

#include <cstddef>

namespace zrml {

/// While one exists, the allocation after the next `count` successful ones fails, that one alone.
class FailingAllocation {
 public:
  explicit FailingAllocation(int count);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();

  bool HasFailed() const;
};

/// Bytes in use and, since the last call of StartPeak(), the most that were. Counted are the bytes that the
/// program asked for.
std::size_t BytesInUse();
std::size_t PeakBytes();
void StartPeak();

}  // namespace zrml
