#include "tools/zrml/description.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

namespace zrml {
namespace {

// Positions 0 to count - 1 through `make`.
template <class Make>
auto List(int count, Make make) {
  std::vector<decltype(make(0))> items;
  items.reserve(static_cast<std::size_t>(std::max(count, 0)));
  for (int i = 0; i < count; ++i) items.push_back(make(i));
  return items;
}

std::optional<NumberRange> TimeRange(CDataServerImpl& server, int sample, int function) {
  HostVector<double> times;
  if (!server.GetRetentionTimes(sample, function, times)) return std::nullopt;
  std::optional<NumberRange> range;
  for (const double time : times) {
    if (std::isnan(time)) continue;
    if (!range) range = NumberRange{time, time};
    range->low = std::min(range->low, time);
    range->high = std::max(range->high, time);
  }
  return range;
}

constexpr std::wstring_view kFunctionText = L"CompleteFunctionBlock";

// Keys of the interface whose values are the same for all functions of a sample.
constexpr std::wstring_view kSampleKeys[] = {
    L"AnalysisDateTime", L"DatasetName",  L"InstrumentDescription", L"InstrumentName",
    L"MethodName",       L"OperatorName", L"ProviderName",          L"SampleName",
};

bool IsOfSample(const std::wstring& key) {
  return std::find(std::begin(kSampleKeys), std::end(kSampleKeys), key) != std::end(kSampleKeys);
}

const MetadataItem* Find(const std::vector<MetadataItem>& items, const std::wstring& key) {
  const auto item =
      std::find_if(items.begin(), items.end(), [&](const MetadataItem& each) { return each.key == key; });
  return item != items.end() ? &*item : nullptr;
}

FunctionDescription DescribeFunction(CDataServerImpl& server, int sample, int function,
                                     const std::vector<MetadataItem>& ofFirst) {
  FunctionDescription description;
  description.number = function + 1;
  description.name = server.GetFunctionName(sample, function);
  description.kind = server.GetFunctionKind(sample, function);
  description.msLevel = server.GetMSLevel(sample, function);
  description.scanType = server.GetMSMSScanType(sample, function);
  description.polarity = server.GetPolarity(sample, function);
  description.scans = std::max(server.GetScanCount(sample, function), 0);
  if (description.scans > 0) {
    description.minutes = TimeRange(server, sample, function);
    description.isCentroided = server.IsCentroided(sample, function);
  }
  NumberRange masses;
  if (server.GetFunctionMassRange(sample, function, masses.low, masses.high)) description.massRange = masses;
  description.dimensions = server.GetDimensionCount(sample, function);
  if (server.HasMobility(sample, function))
    description.driftBins = server.GetMobilityBinCount(sample, function);
  description.traces = List(server.GetFunctionTraceCount(sample, function), [&](int trace) {
    return NamedItem{trace + 1, server.GetFunctionTraceName(sample, function, trace)};
  });
  description.metadata = ReadMetadata(server, sample, function, FunctionText::kRead, ofFirst);
  return description;
}

}  // namespace

SampleDescription DescribeSample(CDataServerImpl& server, int sample) {
  SampleDescription description;
  description.number = sample + 1;
  description.name = server.GetSampleName(sample);
  // Asked before anything about functions: of a report's sample that has analog functions alone, the traces
  // count once more with every look at its functions.
  const int traces = server.GetTraceCount(sample);
  const int functions = server.GetFunctionCount(sample);
  description.metadata = ReadMetadata(server, sample, FunctionText::kRead);
  description.functions = List(functions, [&](int function) {
    return DescribeFunction(server, sample, function, description.metadata);
  });
  description.traces = List(traces, [&](int trace) {
    return NamedItem{trace + 1, server.GetTraceName(sample, trace)};
  });
  if (server.HasAbsorbanceData(sample)) description.absorbanceScans = server.GetAbsorbanceScanCount(sample);
  return description;
}

std::vector<MetadataItem> ReadMetadata(CDataServerImpl& server, int sample, FunctionText text) {
  return ReadMetadata(server, sample, 0, text, {});
}

std::vector<MetadataItem> ReadMetadata(CDataServerImpl& server, int sample, int function, FunctionText text,
                                       const std::vector<MetadataItem>& ofFirst) {
  std::vector<MetadataItem> items;
  std::vector<std::wstring> keys;
  if (!server.GetMetadataKeys(sample, function, keys)) return items;
  for (const std::wstring& key : keys) {
    if (Find(items, key) != nullptr || (text == FunctionText::kLeftOut && key == kFunctionText)) continue;
    MetadataItem& item = items.emplace_back(MetadataItem{key, std::nullopt});
    std::wstring value;
    if (const MetadataItem* const known = IsOfSample(key) ? Find(ofFirst, key) : nullptr) {
      item.value = known->value;
    } else if (server.GetMetadataValue(sample, function, key, value)) {
      item.value = value;
    }
  }
  return items;
}

}  // namespace zrml
