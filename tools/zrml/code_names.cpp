#include "tools/zrml/code_names.h"

#include <span>

#include "plugin/data_server.h"

namespace zrml {
namespace {

struct CodeName {
  int code;
  std::wstring_view name;
};

constexpr CodeName kKinds[] = {
    {kAbsorbanceFunction, L"absorbance"},
    {kMsFunction, L"MS"},
    {kMsMsFunction, L"MS/MS"},
    {kIonMonitoringFunction, L"ion monitoring"},
};

constexpr CodeName kScanTypes[] = {
    {kNoMsMsScan, L"none"},
    {kPrecursorIonScan, L"precursor"},
    {kProductIonScan, L"product"},
    {kNeutralLossScan, L"neutral loss"},
    {kNeutralGainScan, L"neutral gain"},
};

constexpr CodeName kPolarities[] = {
    {kUnknownPolarity, L"unknown"},
    {kPositivePolarity, L"positive"},
    {kNegativePolarity, L"negative"},
};

std::wstring_view NameOf(int code, std::span<const CodeName> names) {
  for (const CodeName& entry : names) {
    if (entry.code == code) return entry.name;
  }
  return L"other";
}

}  // namespace

std::wstring_view KindName(int kind) { return NameOf(kind, kKinds); }
std::wstring_view ScanTypeName(int scanType) { return NameOf(scanType, kScanTypes); }
std::wstring_view PolarityName(int polarity) { return NameOf(polarity, kPolarities); }

}  // namespace zrml
