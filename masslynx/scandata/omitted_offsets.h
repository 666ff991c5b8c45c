// Offsets that an index leaves out. They are counted from the points of all scans before, so zeros that take
// the number of points of one scan move all of those behind it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "common/platform/platform.h"
#include "masslynx/function_record.h"
#include "masslynx/scandata/point_unit_format.h"
#include "masslynx/scandata/scan_times.h"

namespace zrml::masslynx {

class OmittedOffsets {
 public:
  OmittedOffsets(const platform::File& index, std::size_t recordSize, point_unit_format::PointUnit unit)
      : index_(index), recordSize_(recordSize), unit_(unit) {}

  void SetDataSize(std::uint64_t size) { dataSize_ = size; }

  /// Where the scans end whose offsets are counted from the scan at `place` on: at one that has its own, or
  /// behind the last one.
  std::size_t EndOf(std::span<const ScanIndexEntry> entries, std::size_t place);

  /// Whether the scans up to `end` stop before the next one begins, or before the data end, by a point at
  /// least: fewer bytes are of no scan.
  bool IsShort(std::span<const ScanIndexEntry> entries, std::size_t end) const;

  /// Whether the scan at `place` stops before the next one begins, or before the data end, by any bytes.
  bool LeavesBytes(std::span<const ScanIndexEntry> entries, std::size_t place) const;

  /// Takes the counted offsets off the scans with points behind each of `doubtful`, of whose records zeros
  /// may have taken a part, where the scans are short. Returns their places.
  Places Lose(std::span<ScanIndexEntry> entries, const Places& doubtful);

 private:
  bool IsOmitted(std::size_t place);
  // Those between the scan before `end` and the next one, or the end of the data; 0 of one without an offset.
  std::uint64_t BytesBehind(std::span<const ScanIndexEntry> entries, std::size_t end) const;

  const platform::File& index_;
  std::size_t recordSize_;
  point_unit_format::PointUnit unit_;
  std::uint64_t dataSize_ = 0;

  // Records read at once, as far as they are asked for in their order.
  std::vector<std::byte> block_;
  std::size_t blockBegin_ = 0;  // the first of these records
  std::size_t blockSize_ = 0;
};

}  // namespace zrml::masslynx
