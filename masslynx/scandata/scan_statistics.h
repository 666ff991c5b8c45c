// Reads the statistics of a function's scans into its index. docs/scan-statistics.md
#pragma once

#include <string>
#include <vector>

#include "masslynx/function_record.h"

namespace zrml {

/// Fills the statistics members of `entries`, the time-ordered index of `function`, and sets the function's
/// `calibrationConstant`. A missing file or one of another version changes nothing; items outside the file or
/// outside the file's record size read as 0.
void LoadScanStatistics(const std::wstring& directory, FunctionRecord& function,
                        std::vector<ScanIndexEntry>& entries);

}  // namespace zrml
