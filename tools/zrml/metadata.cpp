#include "tools/zrml/metadata.h"

#include <string>
#include <utility>

namespace zrml::tool {

std::vector<source::MetadataItem> MetadataOf(source::Source& source, int sample,
                                             std::optional<int> function) {
  std::vector<source::MetadataItem> items = source.SampleMetadata(sample);
  if (!function) return items;
  items = source::Merged(std::move(items), source.FunctionMetadata(sample, *function));
  if (source.GetFormat() == source::Format::kReport)
    items.push_back({std::string(kFunctionText), source.FunctionText(sample, *function)});
  return items;
}

}  // namespace zrml::tool
