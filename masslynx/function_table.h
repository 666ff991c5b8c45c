// Reads "_FUNCTNS.INF" into function records. docs/function-table.md
#pragma once

#include <string>
#include <vector>

#include "common/findings.h"
#include "masslynx/function_record.h"
#include "masslynx/scandata/calibration.h"

namespace zrml::masslynx {

/// What a file gives whose size is not a whole number of records.
enum class CutTable { kNothing, kWholeRecords };

/// Reads the table of `folder` and each function's calibration and data file. One record per table entry,
/// including the absorbance function and functions without a data file. False when the file cannot be read,
/// when it is cut and should then give nothing, or when it has more functions than can be numbered.
bool ReadFunctionTable(const platform::SystemPath& folder, const std::vector<CalibrationLine>& calibration,
                       CutTable cutTable, std::vector<FunctionRecord>& functions,
                       Findings* findings = nullptr);

}  // namespace zrml::masslynx
