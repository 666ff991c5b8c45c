// Decodes one absorbance (photodiode-array) scan. docs/data-layouts.md
#pragma once

#include <optional>

#include "masslynx/function_record.h"
#include "masslynx/scandata/scan_room.h"

namespace zrml::masslynx {

/// Where scan `scan` of the absorbance function is. No value for other data formats than 1 and 9.
std::optional<ScanRoom> AbsorbanceRoomOf(const FunctionRecord& function, int scan);

/// Decodes the scan of a room from its bytes, or from the first part of them. Returns the number of points
/// filled.
std::size_t DecodeAbsorbance(const ScanRoom& room, Bytes bytes, const PointArrays& points);

}  // namespace zrml::masslynx
