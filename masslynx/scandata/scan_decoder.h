// Decodes the points of one scan. docs/data-layouts.md
#pragma once

#include <optional>

#include "masslynx/function_record.h"
#include "masslynx/scandata/scan_room.h"

namespace zrml::masslynx {

/// The room of scan `scan`, a position of the function's index. No value for an unknown data format or a mass
/// list that cannot serve.
std::optional<ScanRoom> RoomOf(const FunctionRecord& function, int scan);

/// Decodes the scan of a room from `bytes`, which are those of the data file from its offset on: all or, of a
/// file that ends before, fewer.
DecodedPoints DecodeScan(const FunctionRecord& function, int scan, const ScanRoom& room, Bytes bytes,
                         const PointArrays& points);

struct MassRange {
  double low = 0;
  double high = 0;
};

/// The intensities of the points from `range.low` to `range.high`, both included, as DecodeScan() gives them.
/// False where it takes more to see that the masses of the scan ascend; then `intensities` mean nothing.
bool DecodeWithin(const FunctionRecord& function, int scan, const ScanRoom& room, Bytes bytes,
                  MassRange range, std::vector<double>& intensities);

/// Whether scans of the layout may be several sub-scans, which are to be summed when masses do not ascend.
inline bool MayHaveSubScans(const ScanRoom& room) { return room.layout == 12 || room.layout == 13; }

}  // namespace zrml::masslynx
