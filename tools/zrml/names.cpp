#include "tools/zrml/names.h"

#include <array>

namespace zrml::tool {
namespace {

struct KindRow {
  const char* name;
  int code;
};

// Each in the order of its enumeration.
constexpr std::array<const char*, 2> kProviderNames = {"ZRMLProvider", "ZROpenLynxRptProvider"};
constexpr std::array<KindRow, 5> kKinds = {
    {{"MS", 2}, {"MS/MS", 4}, {"absorbance", 1}, {"ion monitoring", 32}, {"other", 0}}};
constexpr std::array<const char*, 5> kScanTypes = {"none", "precursor", "product", "neutral loss",
                                                   "neutral gain"};
constexpr std::array<const char*, 3> kPolarities = {"unknown", "positive", "negative"};

template <class Table, class Enumeration>
auto RowOf(const Table& table, Enumeration value) {
  return table.at(static_cast<std::size_t>(value));
}

}  // namespace

std::string ProviderName(source::Format format) { return RowOf(kProviderNames, format); }
std::string KindName(source::FunctionKind kind) { return RowOf(kKinds, kind).name; }
int KindCode(source::FunctionKind kind) { return RowOf(kKinds, kind).code; }
std::string ScanTypeName(source::ScanType scanType) { return RowOf(kScanTypes, scanType); }
std::string PolarityName(source::Polarity polarity) { return RowOf(kPolarities, polarity); }

}  // namespace zrml::tool
