// Makes the system calls of reading fail in the test program: open, fstat, stat, pread, opendir and readdir.
#pragma once

namespace zrml {

enum class CallFailure {
  kError,        // an input/output error
  kInterrupted,  // by a signal: must be retried
  kShort,        // a read gives one byte; other calls succeed
  kRead,         // an error of a read; other calls succeed
  kNoList,       // an error of opendir or readdir; other calls succeed
};

/// While one exists, the call after the next `count` ones fails, either alone or with all later ones. Not for
/// use with other threads running.
class FailingCalls {
 public:
  enum Extent { kOne, kAllFromThere };

  FailingCalls(int count, CallFailure failure, Extent extent = kOne);
  FailingCalls(const FailingCalls&) = delete;
  FailingCalls& operator=(const FailingCalls&) = delete;
  ~FailingCalls();

  /// Whether the failure has happened.
  bool HasFailed() const;
};

}  // namespace zrml
