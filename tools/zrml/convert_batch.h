// All sources of `zrml convert`: one after the other, or small ones side by side. What is printed, and which
// of two sources of one name gets its file, does not depend on the number of threads.
#pragma once

#include "tools/zrml/convert_request.h"
#include "tools/zrml/output.h"

namespace zrml::tool {

/// Converts the sources of a completed request. Throws a Failure, or source::Cancelled when the user has
/// stopped it.
void ConvertAll(const ConvertRequest& request, Output& out);

}  // namespace zrml::tool
