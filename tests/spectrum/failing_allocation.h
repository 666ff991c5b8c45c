// Makes the allocations of the test program fail, one after the other.
#pragma once

#include <new>

namespace zrml {

/// While one exists, the allocation after the next `count` successful ones fails, and all after it.
class FailingAllocation {
 public:
  explicit FailingAllocation(int count);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();
};

/// Runs `attempt` with more and more allocations allowed until it succeeds; `check` runs after each failure.
/// Returns the number of failures.
template <class Attempt, class Check>
int FailEveryAllocation(Attempt attempt, Check check) {
  for (int failures = 0;; ++failures) {
    bool failed = false;
    {
      const FailingAllocation failing(failures);
      try {
        attempt();
      } catch (const std::bad_alloc&) {
        failed = true;
      }
    }
    if (!failed) return failures;
    check();
  }
}

}  // namespace zrml
