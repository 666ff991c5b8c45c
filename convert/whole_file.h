// Whether an existing file is complete: copies may break off.
#pragma once

#include "common/platform/platform.h"
#include "convert/plan.h"

namespace zrml::convert {

enum class Ending { kCut, kEmpty, kWhole };

/// Whether the file ends as its format demands; one of MGF may be empty. For a compressed file, the last
/// stream is checked.
Ending EndingOf(const platform::SystemPath& path, Format format, bool isGzipped);

}  // namespace zrml::convert
