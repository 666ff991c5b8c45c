// How reading a source fails: a status and one line for people.
#pragma once

#include <exception>
#include <string>
#include <utility>

namespace zrml::source {

/// Values are those of the program's exit statuses and of the C library.
enum class Status : int {
  kDone = 0,
  kWrongArgument = 2,
  kNotFound = 3,
  kNotRecognised = 4,
  kUnreadable = 5,
  kDamaged = 7,
};

class Error : public std::exception {
 public:
  Error(Status status, std::string message) : status_(status), message_(std::move(message)) {}

  Status GetStatus() const { return status_; }
  const std::string& Message() const { return message_; }
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  Status status_;
  std::string message_;
};

/// Thrown by work that its caller has cancelled.
struct Cancelled {};

}  // namespace zrml::source
