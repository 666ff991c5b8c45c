// Reads the statistics of a function's scans into its index. docs/scan-statistics.md
#pragma once

#include <string>
#include <vector>

#include "common/findings.h"
#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// Fills the statistics members of `entries`, the time-ordered index of `function`, and sets the function's
/// `calibrationConstant`. A missing file or one of another version changes nothing; items outside the file or
/// the file's record size read as 0. `refusal`: see NoticeRefusal(). Gives whether all values of scans may be
/// values.
bool LoadScanStatistics(const platform::SystemPath& folder, FunctionRecord& function,
                        std::vector<ScanIndexEntry>& entries, std::string* refusal = nullptr);

/// False for precursors and temperatures that no instrument has. `reference` is the function's temperature.
bool MayBe(const ScanIndexEntry& scan, float reference);

/// Reports damage that the file, which may be missing, shows next to an index of `scans` scans. Gives whether
/// it has a record for each of them.
bool NoticeStatistics(const platform::SystemPath& folder, const FunctionRecord& function, std::uint64_t scans,
                      Findings& findings);

}  // namespace zrml::masslynx
