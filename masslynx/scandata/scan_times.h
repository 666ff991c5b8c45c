// Times of scans that an index has lost or that cannot be right. docs/check.md
#pragma once

#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

#include "masslynx/function_record.h"

namespace zrml::masslynx {

/// What is left of a time when its last byte is zeroed is less than that, and no run has such times.
inline constexpr float kLeastTime = 1e-30F;

/// Whether the number alone may be a time, whatever is around it.
inline bool MayBeTime(float time) {
  return std::isfinite(time) && (time == 0 || std::abs(time) >= kLeastTime);
}

/// Of scans, from 0, in the order of the file; ascending.
using Places = std::vector<std::size_t>;

/// The scans whose time is lost: those of `zeroRecords`, which may go on behind the entries, and where it is
/// not finite, or zero or less behind a scan that has a time, or zero before one of `zeroRecords`. Each gets
/// a stand-in, the time of the scan before it or else of the one behind it, so that it keeps its place in the
/// order of time, and its own statistics.
Places StandInForLostTimes(std::span<ScanIndexEntry> entries, const Places& zeroRecords);

/// Scans with an earlier time than the scan before them.
Places ReturningTimes(std::span<const ScanIndexEntry> entries);

}  // namespace zrml::masslynx
