// Decodes the points of one scan. docs/data-layouts.md
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "masslynx/function_record.h"
#include "masslynx/scandata/scan_room.h"

namespace zrml::masslynx {

/// Where scan `scan` is, a position in the function's index. No value for an unknown data format or an
/// unusable mass list.
std::optional<ScanRoom> RoomOf(const FunctionRecord& function, int scan);

/// Adds the places of those of the first `count` points of a room whose masses are gone: a list of masses
/// begins with one, but has none above 0 for the point, or an axis has a start, but no end. What slots make
/// of such points was never measured. An axis may descend.
void FindPointsWithoutMass(const FunctionRecord& function, const ScanRoom& room, std::size_t count,
                           std::vector<std::size_t>& places);

/// The points of one scan after the other, as RoomOf() has them; 0 without room.
class PointCounts {
 public:
  explicit PointCounts(const FunctionRecord& function);
  std::size_t At(std::size_t scan) const {
    return areDeclared_ ? function_.scanIndex[scan].pointCount : Found(scan);
  }

 private:
  std::size_t Found(std::size_t scan) const;

  const FunctionRecord& function_;
  bool areDeclared_;  // by the index alone
};

/// Decodes the scan of a room from `bytes`, the data file's content at its offset: all of it, or less when
/// the file ends earlier.
DecodedPoints DecodeScan(const FunctionRecord& function, int scan, const ScanRoom& room, Bytes bytes,
                         const PointArrays& points);

struct MassRange {
  double low = 0;
  double high = 0;
};

/// The intensities of the points from `range.low` to `range.high`, both included, as DecodeScan() gives them.
/// False where a simple check cannot show that the masses of the scan ascend; then `intensities` are
/// meaningless.
bool DecodeWithin(const FunctionRecord& function, int scan, const ScanRoom& room, Bytes bytes,
                  MassRange range, std::vector<double>& intensities);

/// Whether each point of a data format has a mass of its own, which is not zero then. Elsewhere masses come
/// from a list or an axis, and a point without intensity is all zeros.
bool HasOwnMasses(int dataFormat);

/// Whether scans of the layout may consist of several sub-scans, to be summed when masses do not ascend.
inline bool MayHaveSubScans(const ScanRoom& room) { return room.layout == 12 || room.layout == 13; }

}  // namespace zrml::masslynx
