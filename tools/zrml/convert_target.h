// Where `zrml convert` writes: files and their names, and standard output.
#pragma once

#include <string>
#include <string_view>

#include "convert/byte_sink.h"
#include "source/source.h"
#include "tools/zrml/convert_request.h"

namespace zrml::tool {

/// The path that a sample becomes.
std::string TargetPath(const ConvertRequest& request, source::Source& source, int sample);

/// Throws a Failure when the path is a part of the source, which must survive its conversion, also when files
/// may be replaced; or no file.
void RefuseAsTarget(const std::string& path, source::Source& source);

/// The program's standard output.
class StandardOutput : public convert::ByteSink {
 public:
  void Write(std::string_view bytes) override;
};

}  // namespace zrml::tool
