// Loads the scan index of a function and, with it, the statistics. docs/scan-index.md
#pragma once

#include <string>

#include "common/findings.h"
#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// Where scans are whose offsets the index leaves out: as far as the scans before them reach, or the lower 32
/// bits of that, which is what the contract's slots give.
enum class LeftOutOffsets { kWhole, kLower32Bits };

/// Fills `scanIndex` in time order, unless it is filled already or the record is empty. Without a readable
/// index the function has no scans. Records are read as 22 bytes and, when the file's size or the order of
/// data offsets contradicts that, as 30. Deliberate: when the offsets of 30-byte records decrease too, the
/// entries stay as read, unsorted and without statistics.
///
/// Findings are about the data file as far as the index tells, and about all files beside it. `refusal` is as
/// NoticeRefusal() has it: of the index or the statistics.
void LoadScanIndex(const platform::SystemPath& folder, FunctionRecord& function, LeftOutOffsets leftOut,
                   Findings* findings = nullptr, std::string* refusal = nullptr);

}  // namespace zrml::masslynx
