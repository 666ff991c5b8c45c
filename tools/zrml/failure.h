// How a command ends when it cannot do what was asked: an exit status and one line for the user.
#pragma once

#include <string>
#include <utility>

namespace zrml {

/// Exit statuses of the program; listed in docs/zrml.md.
enum class ExitStatus : int {
  kDone = 0,
  kWrongUsage = 2,
  kNoSuchPath = 3,
  kNoProvider = 4,
  kUnreadable = 5,  // also: the output cannot be written
  kNoPlugin = 6,
  kDamaged = 7,     // what check has found
  kSomeFailed = 8,  // of several inputs
};

/// Thrown by whoever finds out, printed once at the top.
struct Failure {
  Failure(ExitStatus endStatus, std::wstring text) : status(endStatus), message(std::move(text)) {}

  ExitStatus status;
  std::wstring message;
};

/// Whether it may be that the source's files are damaged.
inline bool MayBeOfDamage(const Failure& failure) {
  return failure.status == ExitStatus::kUnreadable || failure.status == ExitStatus::kNoProvider;
}

}  // namespace zrml
