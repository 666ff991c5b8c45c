// Loads the scan index of a function together with the statistics. docs/scan-index.md
#pragma once

#include <string>

#include "common/findings.h"
#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// Offsets of scans for which the index has none: where the scan before ends, or the lower 32 bits of that,
/// as in the slots of the contract.
enum class LeftOutOffsets { kWhole, kLower32Bits };

/// Fills `scanIndex` in time order, unless it is already filled or the record is empty. Without a readable
/// index the function has no scans. Records are read as 22 bytes and, when the file's size or the order of
/// data offsets contradicts that, as 30. Deliberate: when the offsets of 30-byte records decrease too, the
/// entries stay as read, unsorted and without statistics.
///
/// Findings cover the data file as far as the index describes it, and the files beside it. `refusal`, of the
/// index or the statistics: see NoticeRefusal().
void LoadScanIndex(const platform::SystemPath& folder, FunctionRecord& function, LeftOutOffsets leftOut,
                   Findings* findings = nullptr, std::string* refusal = nullptr);

}  // namespace zrml::masslynx
