// Reads "_HISTORY.INF": functions that later processing steps have made. docs/history.md
#pragma once

#include <string>
#include <vector>

#include "masslynx/function_record.h"

namespace zrml {

/// Appends a record for each history entry of `directory` that has a data file, made from the record of the
/// raw function at the start of its chain. `functions` holds the whole table, one record for each raw
/// function. An entry whose raw function cannot be found is skipped; a missing or damaged file appends
/// nothing or what it still holds.
void AppendProcessedFunctions(const std::wstring& directory, std::vector<FunctionRecord>& functions);

}  // namespace zrml
