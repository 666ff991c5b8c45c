// How a command ends when it cannot do what was asked: an exit status and one line for the user.
#pragma once

#include <string>
#include <utility>

#include "source/error.h"

namespace zrml::tool {

/// Exit statuses of the program; listed in docs/zrml.md. Those of a source's errors have the same values.
enum class ExitStatus : int {
  kDone = 0,
  kWrongUsage = 2,
  kNoSuchPath = 3,
  kNoProvider = 4,
  kUnreadable = 5,  // also: the output cannot be written
  kNoPlugin = 6,
  kDamaged = 7,     // found by check; also: a plug-in whose answers differ from the source
  kSomeFailed = 8,  // of several inputs
};

/// Thrown where the problem is found, printed once at the top.
struct Failure {
  Failure(ExitStatus endStatus, std::string text) : status(endStatus), message(std::move(text)) {}

  ExitStatus status;
  std::string message;
};

inline Failure FailureOf(const source::Error& error) {
  return {static_cast<ExitStatus>(error.GetStatus()), error.Message()};
}

}  // namespace zrml::tool
