// What `zrml convert` does about damage: a source that has lost some of what is asked for is refused unless
// the user wants what there is; what else is known of it is a warning.
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

  /// Before a sample is converted, which is called `name`. Throws a Failure.
  void Look(source::Source& source, int sample, const std::string& name);

  /// At a source without samples. Throws a Failure that says why there is none, as far as is known.
  [[noreturn]] static void RefuseEmpty(source::Source& source);

  /// Warns of what the conversion of that sample has found, but for files that Look has warned of. Each scan
  /// that is lost is listed.
  void Report(const convert::Result& result, const std::string& name) const;

 private:
  bool IsReported(const convert::Note& note) const;
  std::string FileOf(const convert::Loss& loss) const;
  void Warn(const std::string& name, const std::string& problem) const;
  void WarnOfMissingLabels(source::Source& source, const std::string& name) const;

  const ConvertRequest& request_;
  // Of the sample in question, what Look has warned of, and the data file of each function.
  std::vector<const Finding*> reported_;
  std::map<convert::FunctionKey, std::string> files_;
};

/// A conversion's error as the end of the command, with `front` before its message.
Failure FailureOf(const convert::Error& error, const std::string& front = {});

}  // namespace zrml::tool
