// Reads "_HISTORY.INF": functions that later processing steps have made. docs/history.md
#pragma once

#include <string>
#include <vector>

#include "common/findings.h"
#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// Appends a record for each history entry of `folder` that has a data file, made from the record of the raw
/// function at the start of its chain. `functions` holds the whole table, one record for each raw function.
/// An entry whose raw function cannot be found, or has absorbance, is skipped; a missing or damaged file
/// appends nothing or what it still holds. `refusal` is as NoticeRefusal() has it.
void AppendProcessedFunctions(const platform::SystemPath& folder, std::vector<FunctionRecord>& functions,
                              Findings* findings = nullptr, std::string* refusal = nullptr);

/// The process numbers that the history names and that have a data file, each once.
std::vector<std::uint16_t> ProcessNumbersWithData(const platform::SystemPath& folder);

}  // namespace zrml::masslynx
