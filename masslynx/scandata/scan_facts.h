// What function table, index and statistics say about a scan, without its points. What no file says is
// absent.
#pragma once

#include <optional>

#include "masslynx/function_record.h"

namespace zrml::masslynx {

struct ScanFacts {
  float endMinutes = 0;                ///< of the scan; it begins at its retention time
  std::optional<float> precursorMass;  ///< of functions with precursors, never 0
  bool isPrecursorOfMethod = false;    ///< the method's set mass: the statistics lack the scan's own
  std::optional<float> value;          ///< the additional value (cone voltage and the like), never 0
};

ScanFacts FactsOf(const FunctionRecord& function, const ScanIndexEntry& scan);

/// Whether spectra of the function have a precursor mass.
bool HasPrecursors(const FunctionRecord& function);

/// Whether the statistics tell a precursor mass of the scan, so that it is not the method's.
bool HasOwnPrecursor(const ScanIndexEntry& scan);

}  // namespace zrml::masslynx
