// All that a sample of an open source tells about itself without its points: what `zrml info` shows. What the
// source does not hold is absent.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "source/source.h"

namespace zrml::tool {

struct FunctionDescription {
  source::Function function;
  int scans = 0;
  std::optional<source::Range> minutes;  // of the scans
  std::optional<bool> isCentroided;      // absent without scans
  int dimensions = 0;                    // 1 for m/z, one more for time, one more for drift
  std::optional<int> driftBins;          // present with mobility
  std::vector<source::Trace> traces;
  std::vector<source::MetadataItem> metadata;
};

struct SampleDescription {
  int number = 0;  // from 1
  std::string name;
  std::vector<FunctionDescription> functions;
  std::vector<source::Trace> traces;
  std::optional<int> absorbanceScans;
  std::vector<source::MetadataItem> metadata;  // as the first function has it
};

/// The item that a report's function has besides: its text.
inline constexpr std::string_view kFunctionText = "CompleteFunctionBlock";

/// The sample's items, with a function those that it has of its own as well.
std::vector<source::MetadataItem> MetadataOf(source::Source& source, int sample, std::optional<int> function);

/// One sample at a time: a report has thousands, and their metadata can be most of its text.
SampleDescription DescribeSample(source::Source& source, int sample);

}  // namespace zrml::tool
