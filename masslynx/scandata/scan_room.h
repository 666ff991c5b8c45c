// Where the points of one scan are, and their size.
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

  /// How many complete points its first `size` bytes hold.
  std::size_t PointsIn(std::size_t size) const {
    return std::min(points, point_unit_format::UnitOf(layout).PointsIn(size));
  }
};

/// Arrays that a decoder fills, with room for all points of the scan.
struct PointArrays {
  double* masses = nullptr;  ///< wavelengths for absorbance
  double* intensities = nullptr;
  /// Receives the places that are deliberately not written and keep their old values; may be null.
  std::vector<std::size_t>* unwritten = nullptr;
  /// Second points of pairs without intensity are written, too, unless they have no mass either.
  bool hasEverySecond = false;
};

struct DecodedPoints {
  std::size_t count = 0;    ///< places, written or not: complete points in the bytes
  bool isUnsorted = false;  ///< the masses written do not ascend
};

}  // namespace zrml::masslynx
