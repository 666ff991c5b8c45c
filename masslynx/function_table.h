// Reads "_FUNCTNS.INF" into function records. docs/function-table.md
#pragma once

#include <string>
#include <vector>

#include "common/findings.h"
#include "masslynx/function_record.h"
#include "masslynx/scandata/calibration.h"

namespace zrml::masslynx {

/// What becomes of a damaged table. The slots of the contract refuse one that is cut, and read a record of
/// zeros as it is. As measured, the whole records of a cut table count, and of a function whose record is
/// zeros nothing is known but its number.
enum class TableView { kMeasured, kOfSlots };

/// Reads the table of `folder` and each function's calibration and data file. One record per table entry,
/// including the absorbance function and functions without a data file. False when the file cannot be read,
/// when it is cut and the slots refuse it, or when it has more functions than can be numbered.
bool ReadFunctionTable(const platform::SystemPath& folder, const std::vector<CalibrationLine>& calibration,
                       TableView view, std::vector<FunctionRecord>& functions, Findings* findings = nullptr);

}  // namespace zrml::masslynx
