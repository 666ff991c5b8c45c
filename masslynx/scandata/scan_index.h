// Loads the scan index of a function together with the statistics. docs/scan-index.md
#pragma once

#include <string>

#include "common/findings.h"
#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// What becomes of an index that lacks something. Where it leaves out the offset of a scan, which is where
/// the scan before ends, the slots of the contract have the lower 32 bits of that, and of damaged records
/// what these say. As measured, records of zeros at its end are no scans, and scans whose time is lost have
/// NaN and keep their place.
enum class IndexView { kMeasured, kOfSlots };

/// Fills `scanIndex` in time order, unless it is already filled or the record is empty. Without a readable
/// index the function has no scans. Records are read as 22 bytes and, when the file's size or the order of
/// data offsets contradicts that, as 30. Deliberate: when the offsets of 30-byte records decrease too, the
/// entries stay as read, unsorted and without statistics.
///
/// Findings cover the data file as far as the index describes it, and the files beside it. `refusal`, of the
/// index or the statistics: see NoticeRefusal().
void LoadScanIndex(const platform::SystemPath& folder, FunctionRecord& function, IndexView view,
                   Findings* findings = nullptr, std::string* refusal = nullptr);

}  // namespace zrml::masslynx
