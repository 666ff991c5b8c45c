// What function table, index and statistics say about a scan, without its points. What no file says is
// absent.
#pragma once

#include <optional>

#include "masslynx/function_record.h"
#include "masslynx/scandata/scan_statistics_format.h"

namespace zrml::masslynx {

struct ScanFacts {
  float endMinutes = 0;                ///< of the scan; it begins at its retention time
  std::optional<float> precursorMass;  ///< of functions with precursors, never 0
  bool isPrecursorOfMethod = false;    ///< the method's set mass: the statistics lack the scan's own
  std::optional<float> value;          ///< the additional value (cone voltage and the like), never 0
};

/// Whether spectra of the function have a precursor mass.
bool HasPrecursors(const FunctionRecord& function);

/// What scans have of their function, found once for all of them.
struct MethodFacts {
  explicit MethodFacts(const FunctionRecord& function);

  float scanMinutes;
  bool hasPrecursors;
  std::optional<float> setMass;
  std::optional<float> value;
};

namespace scan_facts {

inline std::optional<float> UnlessZero(float value) {
  return value != 0.0F ? std::optional(value) : std::nullopt;
}

inline std::optional<float> OwnPrecursorMass(const ScanIndexEntry& scan) {
  const bool isGiven = (scan.precursorFlags & scan_statistics_format::kPrecursorMassGiven) != 0;
  return isGiven ? UnlessZero(scan.precursorMass) : std::nullopt;
}

}  // namespace scan_facts

/// Whether the statistics tell a precursor mass of the scan, so that it is not the method's.
inline bool HasOwnPrecursor(const ScanIndexEntry& scan) {
  return scan_facts::OwnPrecursorMass(scan).has_value();
}

inline ScanFacts FactsOf(const MethodFacts& method, const ScanIndexEntry& scan) {
  ScanFacts facts;
  facts.endMinutes = scan.retentionTime + method.scanMinutes;
  facts.value = scan.auxValue != 0.0F ? scan.auxValue : method.value;
  if (!method.hasPrecursors) return facts;
  const std::optional<float> own = scan_facts::OwnPrecursorMass(scan);
  facts.precursorMass = own ? own : method.setMass;
  facts.isPrecursorOfMethod = !own && method.setMass;
  return facts;
}

inline ScanFacts FactsOf(const FunctionRecord& function, const ScanIndexEntry& scan) {
  return FactsOf(MethodFacts(function), scan);
}

}  // namespace zrml::masslynx
