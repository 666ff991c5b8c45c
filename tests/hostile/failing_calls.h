// Lets the system calls of the test program fail that reading takes: open, fstat, stat, pread, opendir and
// readdir.
#pragma once

namespace zrml {

enum class CallFailure {
  kError,        // an input/output error
  kInterrupted,  // by a signal: to be tried again
  kShort,        // a read gives one byte; other calls succeed
  kRead,         // an error of a read; other calls succeed
  kNoList,       // an error of opendir or readdir; other calls succeed
};

/// While one exists, the call after the next `count` ones fails, that one alone or with all after it. Not for
/// use beside other threads.
class FailingCalls {
 public:
  enum Extent { kOne, kAllFromThere };

  FailingCalls(int count, CallFailure failure, Extent extent = kOne);
  FailingCalls(const FailingCalls&) = delete;
  FailingCalls& operator=(const FailingCalls&) = delete;
  ~FailingCalls();

  /// Whether it came to the failure.
  bool HasFailed() const;
};

}  // namespace zrml
