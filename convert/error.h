// How a conversion fails: a kind for programs and one line for people.
#pragma once

#include <exception>
#include <string>
#include <utility>

namespace zrml::convert {

enum class ErrorKind {
  kNothingSelected,  // there are scans, but none is requested
  kProfile,          // spectra that do not suit the format
  kTargetExists,
  kTargetUnwritable,
  kSourceChanged,     // while it was converted
  kSourceUnreadable,  // its files or its folder
  kSourceDamaged,     // some measured data is lost
  kSourceSuspect,     // points look wrong
  kSystem,            // it has no more threads, or lacks a function
};

class Error : public std::exception {
 public:
  Error(ErrorKind kind, std::string message) : kind_(kind), message_(std::move(message)) {}

  ErrorKind Kind() const { return kind_; }
  const std::string& Message() const { return message_; }
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  ErrorKind kind_;
  std::string message_;
};

}  // namespace zrml::convert
