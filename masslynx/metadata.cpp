#include "masslynx/metadata.h"

#include "masslynx/header.h"

namespace zrml::masslynx {
namespace {

constexpr MetadataItem kItems[] = {
    {L"AnalysisDateTime", MetadataOrigin::kDateTime},
    {L"InstrumentName", MetadataOrigin::kHeader, "Instrument"},
    {L"OperatorName", MetadataOrigin::kHeader, "User Name"},
    {L"SampleName", MetadataOrigin::kHeader, "Sample Description"},
    {L"DatasetName", MetadataOrigin::kFolder},
    {L"ProviderName", MetadataOrigin::kProvider},
    {L"MethodName", MetadataOrigin::kHeader, "MS Method"},
    {L"IonizationMethod", MetadataOrigin::kIonMode},
};

std::wstring DateTime(const std::vector<std::string_view>& headerLines) {
  std::wstring date;
  std::wstring time;
  LookupHeaderValue(headerLines, "Acquired Date", date);
  LookupHeaderValue(headerLines, "Acquired Time", time);
  return AnalysisDateTime(date, time);
}

}  // namespace

std::span<const MetadataItem> MetadataItems() { return kItems; }

std::wstring HeaderMetadata(const MetadataItem& item, const std::vector<std::string_view>& headerLines) {
  if (item.origin == MetadataOrigin::kDateTime) return DateTime(headerLines);
  std::wstring value;
  if (item.origin == MetadataOrigin::kHeader) LookupHeaderValue(headerLines, item.headerKey, value);
  return value;
}

}  // namespace zrml::masslynx
