// What the entries of an index and the size of a data file tell of damage, without the points.
#pragma once

#include <span>

#include "common/findings.h"
#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// `entries` in file order, with whole offsets. `dataFormat` is kUnknownFormat where nothing is known of how
/// much room points take: then it counts where scans begin.
inline constexpr int kUnknownFormat = -1;
struct ScanExtents {
  std::span<const ScanIndexEntry> entries;
  int dataFormat = kUnknownFormat;
};

/// Points of one scan that are those of another: the same bytes are read for both. Not for offsets that go
/// backwards.
void NoticeOverlaps(const ScanExtents& extents, Finding about, Findings& findings);

/// Scans that reach past the end of a data file of `size` bytes, and bytes of it that no scan refers to, as
/// an index leaves behind that is cut, emptied or zeroed in places.
void NoticeExtents(const ScanExtents& extents, std::uint64_t size, Finding about, Findings& findings);

}  // namespace zrml::masslynx
