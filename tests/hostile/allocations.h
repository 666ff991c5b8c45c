// The test program's memory: how much is in use, and allocations that fail. Not for use with other threads
// running.
#pragma once

#include <cstddef>

namespace zrml {

/// While one exists, the allocation after the next `count` successful ones fails, and only that one.
class FailingAllocation {
 public:
  explicit FailingAllocation(int count);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();

  bool HasFailed() const;
};

/// Bytes in use now, and their maximum since the last call of StartPeak(). The bytes requested by the program
/// are counted.
std::size_t BytesInUse();
std::size_t PeakBytes();
void StartPeak();

}  // namespace zrml
