// All that a sample of an open source tells about itself without its points: what `zrml info` shows. Values
// that the provider does not give are absent. Numbers count from 1.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/zrml/source.h"
#include "tools/zrml/value.h"

namespace zrml {

struct NamedItem {
  int number = 0;
  std::wstring name;
};

struct MetadataItem {
  std::wstring key;
  std::optional<std::wstring> value;
};

struct FunctionDescription {
  int number = 0;
  std::wstring name;
  int kind = 0;
  int msLevel = 0;
  int scanType = 0;
  int polarity = 0;
  int scans = 0;
  std::optional<NumberRange> minutes;    // of the scans
  std::optional<NumberRange> massRange;  // set in the method
  std::optional<bool> isCentroided;      // absent without scans
  int dimensions = 0;
  std::optional<int> driftBins;  // present with mobility
  std::vector<NamedItem> traces;
  std::vector<MetadataItem> metadata;
};

struct SampleDescription {
  int number = 0;
  std::wstring name;
  std::vector<FunctionDescription> functions;
  std::vector<NamedItem> traces;
  std::optional<int> absorbanceScans;
  std::vector<MetadataItem> metadata;  // as given for the first function
};

/// One sample at a time: a report has thousands, and their metadata can be most of its text.
SampleDescription DescribeSample(CDataServerImpl& server, int sample);

/// Which metadata items are wanted: of a report the text of a whole function can be most of the file.
enum class FunctionText { kRead, kLeftOut };

/// The metadata items of a sample's first function; each key once.
std::vector<MetadataItem> ReadMetadata(CDataServerImpl& server, int sample, FunctionText text);

/// Those of another function, `ofFirst` being the first one's. What is known to belong to the sample is not
/// asked for again: for each answer a provider may read the whole sample.
std::vector<MetadataItem> ReadMetadata(CDataServerImpl& server, int sample, int function, FunctionText text,
                                       const std::vector<MetadataItem>& ofFirst);

}  // namespace zrml
