// The log of `zrml convert`: a line of JSON for each source, written when the source ends.
#pragma once

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
  explicit ConvertLog(std::string path);

  void Add(const SourceReport& report);
  /// Throws a Failure when a line could not be written.
  void Finish();

 private:
  std::string path_;
  std::ofstream file_;
};

}  // namespace zrml::tool
