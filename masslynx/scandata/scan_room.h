// Where the points of one scan are and how much room they need.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/bytes.h"
#include "masslynx/scandata/point_unit_format.h"

namespace zrml::masslynx {

struct ScanRoom {
  std::uint64_t offset = 0;  ///< in the data file
  std::size_t bytes = 0;
  std::size_t points = 0;
  int layout = 0;  ///< the data format that the scan is read as

  /// How many of the points its first `size` bytes hold whole.
  std::size_t PointsIn(std::size_t size) const {
    return std::min(points, point_unit_format::UnitOf(layout).PointsIn(size));
  }
};

/// Arrays that a decoder fills, with room for all points of the scan.
struct PointArrays {
  double* masses = nullptr;  ///< of absorbance: wavelengths
  double* intensities = nullptr;
  /// Gets the places that are deliberately not written and keep what they held; may be null.
  std::vector<std::size_t>* unwritten = nullptr;
};

struct DecodedPoints {
  std::size_t count = 0;    ///< places from the first on, written or not: as many as the bytes hold whole
  bool isUnsorted = false;  ///< the masses written do not ascend
};

}  // namespace zrml::masslynx
