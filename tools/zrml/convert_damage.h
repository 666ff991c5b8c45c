// What `zrml convert` does about damage: a source that has lost some of what is asked for is refused unless
// the user wants what there is; what else is known of it is a warning.
#pragma once

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

  /// Warns of what the conversion of that sample has found, but for what Look has warned of.
  void Report(const convert::Result& result, const std::string& name) const;

 private:
  bool IsReported(const convert::Note& note) const;
  bool IsReported(const convert::Loss& loss) const;
  void Warn(const std::string& name, const std::string& problem) const;
  void WarnOfMissingLabels(source::Source& source, const std::string& name) const;

  const ConvertRequest& request_;
  std::vector<const Finding*> reported_;  // of the sample in question, what Look has warned of
};

/// A conversion's error as the end of the command, with `front` before its message.
Failure FailureOf(const convert::Error& error, const std::string& front = {});

}  // namespace zrml::tool
