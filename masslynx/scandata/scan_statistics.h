// Reads the statistics of a function's scans into its index. docs/scan-statistics.md
#pragma once

#include <string>
#include <vector>

#include "common/findings.h"
#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// Fills the statistics members of `entries`, the time-ordered index of `function`, and sets the function's
/// `calibrationConstant`. A missing file or one of another version changes nothing; items outside the file or
/// outside the file's record size read as 0. `refusal` is as NoticeRefusal() has it.
void LoadScanStatistics(const platform::SystemPath& folder, FunctionRecord& function,
                        std::vector<ScanIndexEntry>& entries, std::string* refusal = nullptr);

/// What the file, which need not be there, tells of damage beside an index of `scans` scans.
void NoticeStatistics(const platform::SystemPath& folder, const FunctionRecord& function, std::uint64_t scans,
                      Findings& findings);

}  // namespace zrml::masslynx
