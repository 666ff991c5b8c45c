// Damage that shows in the entries of an index and the size of a data file, without the points.
#pragma once

#include <span>

#include "common/findings.h"
#include "masslynx/function_record.h"
#include "masslynx/scandata/scan_numbers.h"

namespace zrml::masslynx {

/// `entries` in file order, with whole offsets. `dataFormat` is kUnknownFormat where the size of points is
/// unknown: then the starts of scans are compared.
inline constexpr int kUnknownFormat = -1;
struct ScanExtents {
  std::span<const ScanIndexEntry> entries;
  const ScanNumbers& numbers;
  int dataFormat = kUnknownFormat;
};

/// Whether all scans have as many bytes to a point, and how many is known.
bool HasOneUnit(int dataFormat);

/// Reports scans that share points: the same bytes are read for both. Not for offsets that go backwards.
void NoticeOverlaps(const ScanExtents& extents, Finding about, Findings& findings);

/// Reports scans that extend past the end of a data file of `size` bytes, and bytes that no scan refers to,
/// as a cut, emptied or partly zeroed index leaves them.
void NoticeExtents(const ScanExtents& extents, std::uint64_t size, const Finding& about, Findings& findings);

}  // namespace zrml::masslynx
