// Scan index ("idx") files.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "masslynx/scandata/scan_index_format.h"
#include "tests/support/byte_writer.h"

namespace zrml {

enum class CentroidState { kByFormat, kCentroid, kProfile };

struct ScanIndexRecord {
  std::uint32_t dataOffset = 0;

  // The packed word, unless it is given as a whole. Values keep to their bits.
  std::uint32_t pointCount = 0;
  std::uint32_t segment = 0;
  CentroidState centroidState = CentroidState::kByFormat;
  bool preCalibrated = false;
  std::optional<std::uint32_t> packedWord = {};

  float totalIntensity = 0;
  float retentionTime = 0;  ///< minutes
};

/// `recordSize` is 22, 30, or a size that a reader must reject.
FileBytes WriteScanIndex(const std::vector<ScanIndexRecord>& records,
                         std::size_t recordSize = masslynx::scan_index_format::kShortRecordSize);

}  // namespace zrml
