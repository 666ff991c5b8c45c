#include "tools/zrml/description.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

namespace zrml::tool {
namespace {

std::optional<source::Range> RangeOf(std::span<const double> minutes) {
  std::optional<source::Range> range;
  for (const double time : minutes) {
    if (std::isnan(time)) continue;
    if (!range) range = source::Range{time, time};
    range->low = std::min(range->low, time);
    range->high = std::max(range->high, time);
  }
  return range;
}

FunctionDescription DescribeFunction(source::Source& source, int sample, int position) {
  FunctionDescription description;
  description.function = source.Functions(sample)[static_cast<std::size_t>(position)];
  description.scans = source.ScanCount(sample, position);
  if (description.scans > 0) {
    description.minutes = RangeOf(source.Minutes(sample, position));
    description.isCentroided = source.ScanAt(sample, position, 0).isCentroided;
  }
  const bool hasMobility = description.function.hasMobility;
  description.dimensions = 1 + (hasMobility ? 1 : 0) + (description.scans > 1 ? 1 : 0);
  if (hasMobility) description.driftBins = source.DriftBinCount(sample, position);
  description.traces = source.FunctionTraces(sample, position);
  description.metadata = MetadataOf(source, sample, position);
  return description;
}

}  // namespace

std::vector<source::MetadataItem> MetadataOf(source::Source& source, int sample,
                                             std::optional<int> function) {
  std::vector<source::MetadataItem> items = source.SampleMetadata(sample);
  if (!function) return items;
  items = source::Merged(std::move(items), source.FunctionMetadata(sample, *function));
  if (source.GetFormat() == source::Format::kReport)
    items.push_back({std::string(kFunctionText), source.FunctionText(sample, *function)});
  return items;
}

SampleDescription DescribeSample(source::Source& source, int sample) {
  SampleDescription description;
  description.number = sample + 1;
  description.name = source.SampleName(sample);
  const int functions = static_cast<int>(source.Functions(sample).size());
  for (int i = 0; i < functions; ++i) description.functions.push_back(DescribeFunction(source, sample, i));
  description.traces = source.Traces(sample);
  if (source.HasAbsorbance(sample)) description.absorbanceScans = source.AbsorbanceScanCount(sample);
  description.metadata =
      functions > 0 ? description.functions.front().metadata : MetadataOf(source, sample, std::nullopt);
  return description;
}

}  // namespace zrml::tool
