// The log of `zrml convert`: a line of JSON for each source, written when the source ends.
#pragma once

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/zrml/failure.h"

namespace zrml::tool {

/// What has become of a source.
struct SourceReport {
  enum class Outcome { kDone, kSkipped, kFailed, kInterrupted };

  std::string source = {};
  Outcome outcome = Outcome::kDone;
  std::vector<std::string> targets = {};  // files that are there: made, or whole already
  std::optional<Failure> failure = {};
  double seconds = 0;
  std::vector<std::string> findings = {};
  // For standard error and standard output, where they wait for their turn.
  std::vector<std::string> errors = {};
  std::vector<std::string> printed = {};
};

class ConvertLog {
 public:
  /// Appends to the file; writes nothing when `path` is empty. Throws a Failure when it cannot be opened.
  explicit ConvertLog(const std::string& path);

  /// A line that cannot be written whole is not there at all.
  void Add(const SourceReport& report);
  /// That a line could not be written.
  std::optional<Failure> Problem() const;

 private:
  Failure Broken() const;

  std::string name_;
  std::filesystem::path path_;
  std::ofstream file_;
  bool isBroken_ = false;
};

}  // namespace zrml::tool
