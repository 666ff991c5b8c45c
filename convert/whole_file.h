// Whether an existing file is complete: copies may break off.
#pragma once

#include "common/platform/platform.h"
#include "convert/plan.h"

namespace zrml::convert {

/// Whether the file ends as its format demands. For a compressed file, the last stream is checked.
bool IsWhole(const platform::SystemPath& path, Format format, bool isGzipped);

}  // namespace zrml::convert
