#include "masslynx/scandata/scan_index.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "common/bytes.h"
#include "masslynx/raw_directory.h"
#include "masslynx/scandata/point_unit_format.h"
#include "masslynx/scandata/scan_index_format.h"
#include "masslynx/scandata/scan_statistics.h"

namespace zrml {
namespace {

namespace format = scan_index_format;
using platform::File;

class EntryReader {
 public:
  explicit EntryReader(int dataFormat)
      : unit_(point_unit_format::UnitOf(dataFormat)),
        centroidedByDefault_(dataFormat >= 0 && dataFormat <= 2) {}

  ScanIndexEntry Read(const std::byte* record, bool first) {
    ScanIndexEntry entry;
    entry.dataOffset = LoadU32(record + format::kDataOffset);
    if (!first && entry.dataOffset == 0) entry.dataOffset = static_cast<std::uint32_t>(expectedOffset_);
    const std::uint32_t word = LoadU32(record + format::kPackedWord);
    entry.pointCount = word & format::kPointCountMask;
    entry.segment = (word >> format::kSegmentShift) & format::kSegmentMask;
    entry.centroided =
        (word & format::kCentroidStateGiven) != 0 ? (word & format::kProfile) == 0 : centroidedByDefault_;
    entry.preCalibrated = (word & format::kPreCalibrated) != 0;
    entry.totalIntensity = LoadF32(record + format::kTotalIntensity);
    entry.retentionTime = LoadF32(record + format::kRetentionTime);
    expectedOffset_ += unit_.BytesOf(entry.pointCount);
    return entry;
  }

 private:
  point_unit_format::PointUnit unit_;
  bool centroidedByDefault_;
  std::uint64_t expectedOffset_ =
      0;  // where the next scan's points would be, were the scans back to back from 0
};

bool EarlierTime(const ScanIndexEntry& a, const ScanIndexEntry& b) {
  if (std::isnan(a.retentionTime) || std::isnan(b.retentionTime)) {
    return !std::isnan(a.retentionTime) && std::isnan(b.retentionTime);
  }
  return a.retentionTime < b.retentionTime;
}

// The entries of an index, and whether their data offsets and their times ascend.
struct Entries {
  std::vector<ScanIndexEntry> list;
  bool inFileOrder = true;
  bool inTimeOrder = true;

  // Looks at the order now, while the entry before is still in the cache.
  void Add(const ScanIndexEntry& entry) {
    if (!list.empty()) {
      inFileOrder &= !(entry.dataOffset < list.back().dataOffset);
      inTimeOrder &= !EarlierTime(entry, list.back());
    }
    list.push_back(entry);
  }
};

// The entries of all whole records that can be read; no more than `count`.
Entries ReadEntries(const File& file, std::size_t recordSize, std::size_t count, int dataFormat) {
  constexpr std::size_t kRecordsAtOnce = 4096;
  Entries entries;
  entries.list.reserve(count);
  std::vector<std::byte> block(std::min(count, kRecordsAtOnce) * recordSize);
  EntryReader reader(dataFormat);
  while (entries.list.size() < count) {
    const std::size_t wanted = std::min(count - entries.list.size(), kRecordsAtOnce) * recordSize;
    const std::size_t read =
        file.ReadAt(std::uint64_t{entries.list.size()} * recordSize, std::span(block).first(wanted));
    for (std::size_t at = 0; read - at >= recordSize; at += recordSize) {
      entries.Add(reader.Read(block.data() + at, entries.list.empty()));
    }
    if (read < wanted) break;
  }
  return entries;
}

}  // namespace

void LoadScanIndex(const std::wstring& directory, FunctionRecord& function, bool startWith30ByteRecords) {
  if (!function.scanIndex.empty() || function.typeCode == FunctionRecord::kNoFunction) return;
  const File file = OpenFunctionFile(directory, function, L"idx");
  if (!file.IsOpen()) return;
  const std::uint64_t size = file.Size();
  for (const std::size_t recordSize : {format::kShortRecordSize, format::kLongRecordSize}) {
    const bool isLong = recordSize == format::kLongRecordSize;
    const std::uint64_t count = size / recordSize;
    if ((startWith30ByteRecords && !isLong) || size % recordSize != 0 ||
        count > std::numeric_limits<int>::max()) {
      continue;
    }
    Entries entries = ReadEntries(file, recordSize, static_cast<std::size_t>(count), function.dataFormat);
    if (entries.inFileOrder) {
      if (!entries.inTimeOrder) std::stable_sort(entries.list.begin(), entries.list.end(), EarlierTime);
      LoadScanStatistics(directory, function, entries.list);
    }
    if (entries.inFileOrder || isLong) {
      function.scanIndex = std::move(entries.list);
      return;
    }
  }
}

}  // namespace zrml
