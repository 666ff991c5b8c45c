#include "source/names.h"

#include <array>

namespace zrml::source {
namespace {

// Each in the order of its enumeration.
constexpr std::array kKinds = {"MS", "MS/MS", "absorbance", "ion monitoring", "other"};
constexpr std::array kScanTypes = {"none", "precursor", "product", "neutral loss", "neutral gain"};
constexpr std::array kPolarities = {"unknown", "positive", "negative"};

template <class Table, class Enumeration>
const char* RowOf(const Table& table, Enumeration value) {
  return table.at(static_cast<std::size_t>(value));
}

}  // namespace

const char* NameOf(FunctionKind kind) { return RowOf(kKinds, kind); }
const char* KindNameOf(const Function& function) {
  if (function.monitoring == Monitoring::kReactions) return "reaction monitoring";
  return function.monitoring == Monitoring::kIons ? NameOf(FunctionKind::kIonMonitoring)
                                                  : NameOf(function.kind);
}
const char* NameOf(ScanType scanType) { return RowOf(kScanTypes, scanType); }
const char* NameOf(Polarity polarity) { return RowOf(kPolarities, polarity); }

}  // namespace zrml::source
