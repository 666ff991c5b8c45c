// Reads "_FUNCTNS.INF" into function records. docs/function-table.md
#pragma once

#include <string>
#include <vector>

#include "common/findings.h"
#include "masslynx/function_record.h"
#include "masslynx/scandata/calibration.h"

namespace zrml::masslynx {

/// What a file that is no whole number of records gives.
enum class CutTable { kNothing, kWholeRecords };

/// Reads the table of `folder` and what each function has beside it: calibration and data files. One record
/// for each of the table, also for the absorbance function and for those without a data file. False when the
/// file cannot be read, or is cut and should then give nothing; the same holds for a table of more functions
/// than can be numbered.
bool ReadFunctionTable(const platform::SystemPath& folder, const std::vector<CalibrationLine>& calibration,
                       CutTable cutTable, std::vector<FunctionRecord>& functions,
                       Findings* findings = nullptr);

}  // namespace zrml::masslynx
