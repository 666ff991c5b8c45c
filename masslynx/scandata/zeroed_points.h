// Data files with zeros where points were: what a copy that broke off looks like where its size had been set
// before, or one that has lost a block. docs/check.md
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "common/findings.h"
#include "common/platform/platform.h"
#include "masslynx/function_record.h"
#include "masslynx/scandata/scan_room.h"

namespace zrml::masslynx {

/// Where the zeros at a file's end begin: its size when there are none; kNoZeros when it cannot be read.
inline constexpr std::uint64_t kNoZeros = std::numeric_limits<std::uint64_t>::max();
std::uint64_t BeginOfZeros(const platform::File& file);

struct ZeroTail {
  std::uint64_t begin = 0;  ///< in the data file: no point from here on was measured
  Numbers scans = {};       ///< that have points there
};

/// Of a function whose index is loaded. Points of no intensity are sound zeros, so those alone prove nothing:
/// there has to be a scan that is all zeros and has a total, or points with masses of their own; or one that
/// breaks off into zeros where each point has a mass of its own, or that has then less than half of its
/// total, or less than that where the scans before add up to theirs. No value for functions of ion mobility,
/// whose points are elsewhere. `data` reads little where the file ends in a point.
std::optional<ZeroTail> FindZeroTail(const platform::File& data, const FunctionRecord& function);

/// Points of a scan as they are stored.
struct StoredPoints {
  const ScanRoom& room;
  Bytes bytes;
  std::span<const double> masses;
  std::span<const double> intensities;
  double lowest = 0;          ///< no mass of the function is less
  bool isInOrder = false;     ///< masses of a sound scan ascend, but for those of sub-scans
  bool isAbsorbance = false;  ///< wavelengths ascend in any case
};

/// The places, ascending, of points that are all zeros where each has a mass of its own, of those that the
/// zeros cut into, and of last points whose masses have lost their highest bits; none elsewhere. Of
/// absorbance any wavelength counts that has lost them.
void FindZeroedPoints(const StoredPoints& stored, std::vector<std::size_t>& places);

}  // namespace zrml::masslynx
