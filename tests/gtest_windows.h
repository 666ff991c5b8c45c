// GoogleTest needs a notification between threads for its death tests on Windows and would build it from
// std::mutex, which the compiler's win32 thread model lacks. Our tests have one thread and no death tests.
#pragma once

namespace testing::internal {

class Notification {
 public:
  void Notify() {}
  void WaitForNotification() {}
};

}  // namespace testing::internal
