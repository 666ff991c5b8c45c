// Data files with zeros where points were: what a copy that broke off looks like where its size had been set
// before, or one that has lost a block. docs/check.md
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "common/platform/platform.h"
#include "masslynx/function_record.h"
#include "masslynx/scandata/scan_room.h"

namespace zrml::masslynx {

struct ZeroTail {
  std::uint64_t begin = 0;  ///< in the data file: no point from here on was measured
  std::uint64_t scans = 0;  ///< how many have points there
  std::uint64_t first = 0;  ///< number of the first of them, from 1
};

/// Of a function whose index is loaded. Points of no intensity are sound zeros, so those alone prove nothing:
/// there has to be a scan that is all zeros and has a total, or points with masses of their own; or one that
/// breaks off into zeros where each point has a mass of its own, or that has then less than half of its
/// total. No value for functions of ion mobility, whose points are elsewhere. `data` reads little where the
/// file ends in a point.
std::optional<ZeroTail> FindZeroTail(const platform::File& data, const FunctionRecord& function);

/// The places, ascending, of a scan's points that are all zeros where each has a mass of its own, and of
/// those that the zeros cut into; none elsewhere. `intensities` are those of the points as they are stored.
void FindZeroedPoints(const ScanRoom& room, Bytes bytes, std::span<const double> intensities,
                      std::vector<std::size_t>& places);

}  // namespace zrml::masslynx
