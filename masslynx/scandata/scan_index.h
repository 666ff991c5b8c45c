// Loads the scan index of a function and, with it, the statistics. docs/scan-index.md
#pragma once

#include <string>

#include "masslynx/function_record.h"

namespace zrml {

/// Fills `scanIndex` in time order, unless it is filled already or the record is empty. Without a readable
/// index the function has no scans. Records are read as 22 bytes and, when the file's size or the order of
/// data offsets contradicts that, as 30. Deliberate: when the offsets of 30-byte records decrease too, the
/// entries stay as read, unsorted and without statistics.
void LoadScanIndex(const std::wstring& directory, FunctionRecord& function,
                   bool startWith30ByteRecords = false);

}  // namespace zrml
