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

// Calls `visit(begin, end)` with the place of each scan's points.
template <class Visit>
void ForEachScan(const ScanExtents& extents, Visit visit) {
  const bool isMixed = extents.dataFormat == kMixedFormat;
  const PointUnit unit = UnitOf(isMixed ? kFormatOfMixed : extents.dataFormat);
  const PointUnit lastUnit = isMixed ? UnitOf(kFormatOfLastMixed) : unit;
  for (const ScanIndexEntry& entry : extents.entries) {
    const std::uint64_t begin = entry.DataOffset();
    const bool isLast = &entry == &extents.entries.back();
    visit(begin, begin + (isLast ? lastUnit : unit).BytesOf(entry.pointCount));
  }
}

// Whether the ends of the scans are exact, not only lower bounds.
bool KnowsEnds(int dataFormat) { return UnitOf(dataFormat).bytes != 0 && dataFormat != kMixedFormat; }

void Add(FindingCode code, std::string problem, Finding about, Findings& findings) {
  about.code = code;
  about.problem = std::move(problem);
  findings.Add(std::move(about));
}

// Scans that have something in common, and the number of the first.
struct Counted {
  std::uint64_t count = 0;
  std::uint64_t first = 0;

  void Add(std::uint64_t number) {
    if (count++ == 0) first = number;
  }
};

void AddCounted(FindingCode code, const std::string& problem, const Counted& counted, Finding about,
                Findings& findings) {
  if (counted.count == 0) return;
  about.count = counted.count;
  about.first = counted.first;
  Add(code, problem, std::move(about), findings);
}

}  // namespace

void NoticeOverlaps(const ScanExtents& extents, Finding about, Findings& findings) {
  Counted overlapping;
  std::uint64_t number = 0;
  std::uint64_t reached = 0;
  ForEachScan(extents, [&](std::uint64_t begin, std::uint64_t end) {
    ++number;
    if (end > begin && begin < reached) overlapping.Add(number);
    reached = std::max(reached, end);
  });
  AddCounted(FindingCode::kScansOverlap,
             "has scans that begin inside an earlier one: " + std::to_string(overlapping.count) + " of " +
                 std::to_string(number) + "; the first is scan " + std::to_string(overlapping.first),
             overlapping, std::move(about), findings);
}

void NoticeExtents(const ScanExtents& extents, std::uint64_t size, Finding about, Findings& findings) {
  Counted past;
  std::uint64_t number = 0;
  std::uint64_t reached = 0;
  std::uint64_t unused = 0;
  bool isInOrder = true;  // otherwise bytes between two scans may belong to a third
  ForEachScan(extents, [&](std::uint64_t begin, std::uint64_t end) {
    ++number;
    if (end > begin) {
      isInOrder = isInOrder && begin >= reached;
      if (begin > reached) unused += std::min(begin, std::max(size, reached)) - reached;
    }
    reached = std::max(reached, end);
    if (end > size) past.Add(number);
  });
  AddCounted(FindingCode::kDataCut,
             "ends before " + std::to_string(past.count) + " of " + std::to_string(number) +
                 " scans do; the first is scan " + std::to_string(past.first),
             past, about, findings);
  if (!KnowsEnds(extents.dataFormat)) return;
  if (!isInOrder) unused = 0;
  if (reached < size) unused += size - reached;
  if (unused == 0) return;
  Add(FindingCode::kDataUnreferenced, "holds " + std::to_string(unused) + " bytes that no scan refers to",
      std::move(about), findings);
}

}  // namespace zrml::masslynx
