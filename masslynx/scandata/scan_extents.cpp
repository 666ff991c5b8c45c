#include "masslynx/scandata/scan_extents.h"

#include <algorithm>
#include <string>

#include "masslynx/scandata/point_unit_format.h"

namespace zrml::masslynx {
namespace {

using point_unit_format::PointUnit;
using point_unit_format::UnitOf;

constexpr int kMixedFormat = 6;        // whose scans are all of
constexpr int kFormatOfMixed = 3;      // this format,
constexpr int kFormatOfLastMixed = 4;  // but the last is of this one

// Calls `visit(begin, end, most)` with the place of each scan's points. The end is a lower bound, and `most`
// an upper one: which of the two formats a mixed scan has is not known. Scans without an offset have no room.
template <class Visit>
void ForEachScan(const ScanExtents& extents, Visit visit) {
  const bool isMixed = extents.dataFormat == kMixedFormat;
  const PointUnit unit = UnitOf(isMixed ? kFormatOfMixed : extents.dataFormat);
  const PointUnit lastUnit = isMixed ? UnitOf(kFormatOfLastMixed) : unit;
  for (const ScanIndexEntry& entry : extents.entries) {
    if (entry.HasLostOffset()) {
      visit(0, 0, 0);
      continue;
    }
    const std::uint64_t begin = entry.DataOffset();
    const bool isLast = &entry == &extents.entries.back();
    visit(begin, begin + (isLast ? lastUnit : unit).BytesOf(entry.pointCount),
          begin + lastUnit.BytesOf(entry.pointCount));
  }
}

void Add(FindingCode code, std::string problem, Finding about, Findings& findings) {
  about.code = code;
  about.problem = std::move(problem);
  findings.Add(std::move(about));
}

}  // namespace

bool HasOneUnit(int dataFormat) { return dataFormat != kMixedFormat && UnitOf(dataFormat).bytes != 0; }

void NoticeOverlaps(const ScanExtents& extents, Finding about, Findings& findings) {
  Numbers overlapping;
  Numbers earlier;
  std::size_t place = 0;
  std::uint64_t reached = 0;
  std::uint64_t last = 0;  // the scan that reaches as far
  ForEachScan(extents, [&](std::uint64_t begin, std::uint64_t end, std::uint64_t) {
    const std::uint64_t number = extents.numbers.Of(place++);
    if (end > begin && begin < reached) {
      overlapping.Add(number);
      earlier.Add(last);
    }
    if (end > reached) last = number;
    reached = std::max(reached, end);
  });
  if (overlapping.IsEmpty()) return;
  about.SetScans(overlapping);
  about.scans.Add(earlier);
  Add(FindingCode::kScansOverlap,
      "has scans that begin inside an earlier one: " + std::to_string(overlapping.Count()) + " of " +
          std::to_string(place) + "; the first is scan " + std::to_string(overlapping.First()),
      std::move(about), findings);
}

void NoticeExtents(const ScanExtents& extents, std::uint64_t size, const Finding& about, Findings& findings) {
  Numbers past;
  std::size_t place = 0;
  std::uint64_t reached = 0;
  std::uint64_t reachedAtMost = 0;
  std::uint64_t unused = 0;
  bool isInOrder = true;  // otherwise bytes between two scans may belong to a third
  ForEachScan(extents, [&](std::uint64_t begin, std::uint64_t end, std::uint64_t most) {
    const std::uint64_t number = extents.numbers.Of(place++);
    if (end > size) past.Add(number);
    if (end == begin) return;  // refers to nothing, wherever that is
    isInOrder = isInOrder && begin >= reached;
    if (begin > reachedAtMost) unused += std::min(begin, std::max(size, reachedAtMost)) - reachedAtMost;
    reached = std::max(reached, end);
    reachedAtMost = std::max(reachedAtMost, most);
  });
  if (!past.IsEmpty()) {
    Finding cut = about;
    cut.SetScans(past);
    Add(FindingCode::kDataCut,
        "ends before " + std::to_string(past.Count()) + " of " + std::to_string(place) +
            " scans do; the first is scan " + std::to_string(past.First()),
        std::move(cut), findings);
  }
  if (UnitOf(extents.dataFormat).bytes == 0) return;
  if (!isInOrder) unused = 0;
  if (reachedAtMost < size) unused += size - reachedAtMost;
  if (unused == 0) return;
  Add(FindingCode::kDataUnreferenced, "holds " + std::to_string(unused) + " bytes that no scan refers to",
      about, findings);
}

}  // namespace zrml::masslynx
