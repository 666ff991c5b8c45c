// Reads "_HISTORY.INF": functions made by later processing steps. docs/history.md
#pragma once

#include <string>
#include <vector>

#include "common/findings.h"
#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// Appends a record for each history entry of `folder` that has a data file, based on the record of the raw
/// function at the start of its chain. `functions` holds the whole table, one record for each raw function.
/// An entry whose raw function cannot be found, or is the absorbance function, is skipped; a missing file
/// appends nothing, a damaged one the entries that it still has. `refusal`: see NoticeRefusal().
void AppendProcessedFunctions(const platform::SystemPath& folder, std::vector<FunctionRecord>& functions,
                              Findings* findings = nullptr, std::string* refusal = nullptr);

/// The process numbers in the history that have a data file, each once.
std::vector<std::uint16_t> ProcessNumbersWithData(const platform::SystemPath& folder);

}  // namespace zrml::masslynx
