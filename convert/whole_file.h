// Whether a file of before is a whole one: copies may break off.
#pragma once

#include "common/platform/platform.h"
#include "convert/plan.h"

namespace zrml::convert {

/// Whether the file ends as one of that format does. Of a compressed one the last of its streams is looked
/// at.
bool IsWhole(const platform::SystemPath& path, Format format, bool isGzipped);

}  // namespace zrml::convert
