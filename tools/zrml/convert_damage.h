// What `zrml convert` does about damage: a source that has lost some of the requested data is refused unless
// the user wants the rest; other findings are warnings.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "convert/convert.h"
#include "convert/error.h"
#include "tools/zrml/convert_request.h"
#include "tools/zrml/failure.h"

namespace zrml::tool {

class DamagePolicy {
 public:
  explicit DamagePolicy(const ConvertRequest& request) : request_(request) {}

  /// Call before the sample called `name` is converted. Throws a Failure.
  void Look(source::Source& source, int sample, const std::string& name);

  /// Call for a source without samples. Throws a Failure that says why it has none, as far as known.
  [[noreturn]] static void RefuseEmpty(source::Source& source);

  /// Warns of faults found by the conversion of that sample, except for files that Look has warned of. Lists
  /// each lost scan.
  void Report(const convert::Result& result, const std::string& name);

  /// Notes why a conversion has failed.
  void Note(const std::string& problem) { noted_.push_back(problem); }

  /// All that was noted, that it has warned of, or would have, without the name of the sample.
  const std::vector<std::string>& Noted() const { return noted_; }

 private:
  void RefuseReported(const std::string& name);
  bool IsReported(const convert::Note& note) const;
  std::string FileOf(const convert::Loss& loss) const;
  void Warn(const std::string& name, const std::string& problem);
  void WarnOfMissingLabels(source::Source& source, const std::string& name);

  const ConvertRequest& request_;
  // Of the sample in question, what Look has warned of, and the data file of each function.
  std::vector<const Finding*> reported_;
  std::map<convert::FunctionKey, std::string> files_;
  std::vector<std::string> noted_;
};

/// A conversion's error as the end of the command, with `front` before its message.
Failure FailureOf(const convert::Error& error, const std::string& front = {});

}  // namespace zrml::tool
