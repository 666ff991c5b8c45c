// Where `zrml convert` writes: names of files, standard output, and the names as they are printed.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "convert/byte_sink.h"
#include "source/source.h"
#include "tools/zrml/convert_request.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/output.h"

namespace zrml::tool {

/// The files that a command makes: none is made twice, and none is a part of a source.
class Targets {
 public:
  explicit Targets(const ConvertRequest& request) : request_(request) {}

  /// The path that a sample becomes. Throws a Failure when it may not.
  std::string PathFor(source::Source& source, int sample) const;
  void AddMade(const std::string& path) { made_.insert(path); }

 private:
  std::string PathOf(const std::string& name) const;

  const ConvertRequest& request_;
  std::set<std::string> made_;
};

/// The program's standard output.
class StandardOutput : public convert::ByteSink {
 public:
  void Write(std::string_view bytes) override;
};

/// Prints the files that are made. They are there also when their names cannot be printed, which fails the
/// command, at its end, but no conversion.
class PathPrinter {
 public:
  explicit PathPrinter(Output& out) : out_(out) {}

  void Print(const std::string& path);
  const std::optional<Failure>& Problem() const { return problem_; }

 private:
  Output& out_;
  bool isOver_ = false;  // nobody reads it, or it has failed
  std::optional<Failure> problem_;
};

}  // namespace zrml::tool
