// GoogleTest wants a notification between threads for its death tests on Windows and would build it of
// std::mutex, which the compiler's win32 thread model lacks. Our tests are of one thread and have no such
// tests.
#pragma once

namespace testing::internal {

class Notification {
 public:
  void Notify() {}
  void WaitForNotification() {}
};

}  // namespace testing::internal
