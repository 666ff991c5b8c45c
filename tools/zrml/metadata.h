// Metadata of a function as people and programs see them.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "source/source.h"

namespace zrml::tool {

/// The additional item of a report's function: its text.
inline constexpr std::string_view kFunctionText = "CompleteFunctionBlock";

/// The sample's items; with a function, also its own.
std::vector<source::MetadataItem> MetadataOf(source::Source& source, int sample, std::optional<int> function);

}  // namespace zrml::tool
