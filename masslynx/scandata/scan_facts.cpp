#include "masslynx/scandata/scan_facts.h"

#include "masslynx/function_types.h"
#include "masslynx/scandata/scan_statistics_format.h"

namespace zrml::masslynx {
namespace {

std::optional<float> UnlessZero(float value) { return value != 0.0F ? std::optional(value) : std::nullopt; }

std::optional<float> OwnPrecursorMass(const ScanIndexEntry& scan) {
  const bool isGiven = (scan.precursorFlags & scan_statistics_format::kPrecursorMassGiven) != 0;
  return isGiven ? UnlessZero(scan.precursorMass) : std::nullopt;
}

}  // namespace

bool HasPrecursors(const FunctionRecord& function) {
  return FunctionKindOfType(function.typeCode) == FunctionKind::kMsMs;
}

bool HasOwnPrecursor(const ScanIndexEntry& scan) { return OwnPrecursorMass(scan).has_value(); }

ScanFacts FactsOf(const FunctionRecord& function, const ScanIndexEntry& scan) {
  ScanFacts facts;
  facts.endMinutes = scan.retentionTime + function.scanTime / 60.0F;
  facts.value = scan.auxValue != 0.0F ? scan.auxValue : UnlessZero(function.defaultScanValue);
  if (!HasPrecursors(function)) return facts;
  const std::optional<float> own = OwnPrecursorMass(scan);
  facts.precursorMass = own ? own : UnlessZero(function.setMass);
  facts.isPrecursorOfMethod = !own && facts.precursorMass;
  return facts;
}

}  // namespace zrml::masslynx
