#include "masslynx/scandata/index_entries.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <span>

#include "common/bytes.h"
#include "masslynx/scandata/point_unit_format.h"
#include "masslynx/scandata/scan_index_format.h"

namespace zrml::masslynx {
namespace {

namespace format = scan_index_format;

// Times that are not numbers are out of order for now.
void LookAt(const ScanIndexEntry& entry, std::uint64_t scanEnd, EntryOrder& order) {
  order.inTimeOrder &= entry.retentionTime >= order.latest;
  order.latest = entry.retentionTime;
  order.haveTimes &= MayBeTime(order.latest);
  order.areAllOfPoints &= entry.pointCount != 0;
  order.areBackToBack &= entry.DataOffset() == order.end;
  order.end = scanEnd;
  if (entry.HasLostOffset()) return;
  order.inFileOrder &= !(entry.DataOffset() < order.reached);
  order.reached = entry.DataOffset();
}

// A quick look at the entry leaves few records to look at. Zeros may begin inside the offset, and leave one
// below that of the scan before.
bool IsOfZeros(const ScanIndexEntry& entry, Bytes record, std::uint64_t reached) {
  if (entry.pointCount != 0 || entry.retentionTime != 0) return false;
  const std::uint32_t offset = LoadU32(record.data() + format::kDataOffset);
  return (offset == 0 || offset < reached) && AreZeros(record.subspan(sizeof offset));
}

class EntryReader {
 public:
  EntryReader(std::size_t recordSize, int dataFormat, IndexView view)
      : recordSize_(recordSize),
        unit_(point_unit_format::UnitOf(dataFormat)),
        centroidedByDefault_(dataFormat >= 0 && dataFormat <= 2),
        isMeasured_(view == IndexView::kMeasured) {}

  // The next records, each looked at while it is in the cache.
  void Add(Bytes records, Entries& entries) {
    std::size_t place = entries.list.size();
    entries.list.resize(place + records.size() / recordSize_);
    EntryOrder order = entries;  // a copy, which shares no memory with the list
    for (; place < entries.list.size(); ++place, records = records.subspan(recordSize_)) {
      ScanIndexEntry& entry = entries.list[place];
      Read(records.data(), place == 0, entry);
      if (isMeasured_ && (entry.pointCount == 0 || isBehindZeros_))
        LoseWhatIsZeroed(place, records.first(recordSize_), order, entries);
      latest_ = std::max(latest_, entry.retentionTime);
      if (entry.HasLostOffset()) entries.unplaced.push_back(place);
      LookAt(entry, entry.DataOffset() + unit_.BytesOf(entry.pointCount), order);
    }
    static_cast<EntryOrder&>(entries) = order;
  }

 private:
  // Where the entry is kept, since copies of half-written ones are slow.
  void Read(const std::byte* record, bool first, ScanIndexEntry& entry) {
    entry.dataOffset = LoadU32(record + format::kDataOffset);
    if (!first && entry.dataOffset == 0) {
      if (isMeasured_) {
        constexpr std::uint64_t kLost = ScanIndexEntry::kLostOffset;
        entry.SetDataOffset(isLost_ ? kLost : std::min(expectedOffset_, kLost));
      } else {
        entry.dataOffset = static_cast<std::uint32_t>(expectedOffset_);
      }
    } else if (isLost_) {
      expectedOffset_ = entry.dataOffset;
      isLost_ = false;
    }
    const std::uint32_t word = LoadU32(record + format::kPackedWord);
    entry.pointCount = word & format::kPointCountMask;
    entry.segment = static_cast<std::uint8_t>((word >> format::kSegmentShift) & format::kSegmentMask);
    entry.centroided =
        (word & format::kCentroidStateGiven) != 0 ? (word & format::kProfile) == 0 : centroidedByDefault_;
    entry.preCalibrated = (word & format::kPreCalibrated) != 0;
    entry.totalIntensity = LoadF32(record + format::kTotalIntensity);
    entry.retentionTime = LoadF32(record + format::kRetentionTime);
    expectedOffset_ += unit_.BytesOf(entry.pointCount);
  }

  // Zeros may end inside the total of a record, or behind it, so it is not known then, or inside its time,
  // and leave a lower one than that of the scans before.
  void LoseWhatIsZeroed(std::size_t place, Bytes record, EntryOrder& order, Entries& entries) {
    ScanIndexEntry& entry = entries.list[place];
    const bool isCut = isBehindZeros_ && AreZeros(record.first(format::kTotalIntensity));
    const bool hasCutTime = isCut && entry.totalIntensity == 0 && entry.retentionTime < latest_;
    if (isCut) entry.totalIntensity = std::numeric_limits<float>::quiet_NaN();
    const bool isZeroed = hasCutTime || IsOfZeros(entry, record, order.reached);
    isBehindZeros_ = isZeroed && place > 0;  // the first may be an empty scan, and so may the next
    entries.beginsWithZeros = entries.beginsWithZeros || (isZeroed && place == 0);
    if (isBehindZeros_) Lose(entry, place, order, entries.zeroRecords);
  }

  // The scan is without points, a total and a time, and begins where the scan before does. How many bytes it
  // had is not known, so scans behind it have no offset until one has its own.
  void Lose(ScanIndexEntry& entry, std::size_t place, EntryOrder& order, Places& zeroRecords) {
    zeroRecords.push_back(place);
    entry.totalIntensity = std::numeric_limits<float>::quiet_NaN();
    entry.SetDataOffset(order.reached);
    order.areBackToBack = false;
    isLost_ = true;
  }

  std::size_t recordSize_;
  point_unit_format::PointUnit unit_;
  bool centroidedByDefault_;
  bool isMeasured_;
  // Where the next scan's points would be, were the scans back to back from 0.
  std::uint64_t expectedOffset_ = 0;
  bool isLost_ = false;  // the record before, and no offset behind it is known
  bool isBehindZeros_ = false;
  float latest_ = 0;  // time
};

}  // namespace

bool EarlierTime(const ScanIndexEntry& a, const ScanIndexEntry& b) {
  if (std::isnan(a.retentionTime) || std::isnan(b.retentionTime)) {
    return !std::isnan(a.retentionTime) && std::isnan(b.retentionTime);
  }
  return a.retentionTime < b.retentionTime;
}

void Entries::FillFrom(StatisticsReader& statistics) {
  if (!inFileOrder || !inTimeOrder || !zeroRecords.empty() || filled == list.size()) return;
  statistics.Fill(list, filled);
  filled = list.size();
}

void Entries::LookAtTimes() {
  inTimeOrder = inTimeOrder || std::is_sorted(list.begin(), list.end(), EarlierTime);
}

void Entries::LoseFirst() {
  list.front().totalIntensity = std::numeric_limits<float>::quiet_NaN();
  zeroRecords.insert(zeroRecords.begin(), 0);
}

Places Entries::Doubtful() const {
  Places places = untimed;
  for (std::size_t place = 0; place < list.size() && !areAllOfPoints; ++place) {
    if (list[place].pointCount == 0) places.push_back(place);
  }
  std::sort(places.begin(), places.end());
  return places;
}

Places Entries::WithoutTimeAndPoints() const {
  Places places;
  std::copy_if(untimed.begin(), untimed.end(), std::back_inserter(places),
               [this](std::size_t place) { return list[place].pointCount == 0; });
  return places;
}

void Entries::DropZerosAndLostTimes() {
  TakeRepresentationOfSoundRecord();
  if (!MayLackTimes()) return;
  while (dropped < zeroRecords.size() && zeroRecords[zeroRecords.size() - 1 - dropped] + 1 == list.size()) {
    ++dropped;
    list.pop_back();
  }
  untimed = StandInForLostTimes(list, zeroRecords);
  inTimeOrder = false;
  LookAtTimes();
}

void Entries::TakeRepresentationOfSoundRecord() {
  std::size_t sound = beginsWithZeros ? 1 : 0;  // the first one; all before it are zeros
  for (const std::size_t place : zeroRecords) sound += place == sound ? 1U : 0U;
  if (sound == list.size()) return;
  const bool isCentroided = list[sound].centroided;
  if (beginsWithZeros) list.front().centroided = isCentroided;
  for (const std::size_t place : zeroRecords) list[place].centroided = isCentroided;
}

Entries ReadEntries(const platform::File& file, std::size_t recordSize, std::size_t count, int dataFormat,
                    IndexView view, StatisticsReader* statistics) {
  constexpr std::size_t kRecordsAtOnce = 4096;
  Entries entries;
  entries.list.reserve(count);
  platform::PreferLargePages(entries.list.data(), count * sizeof(ScanIndexEntry));
  std::vector<std::byte> block(std::min(count, kRecordsAtOnce) * recordSize);
  EntryReader reader(recordSize, dataFormat, view);
  while (entries.list.size() < count) {
    const std::size_t place = entries.list.size();
    const std::size_t wanted = std::min(count - place, kRecordsAtOnce) * recordSize;
    const std::size_t read = file.ReadAt(std::uint64_t{place} * recordSize, std::span(block).first(wanted));
    reader.Add(Bytes(block).first(read), entries);
    if (statistics != nullptr) entries.FillFrom(*statistics);
    if (read < wanted) break;
  }
  if (view == IndexView::kOfSlots) entries.LookAtTimes();
  return entries;
}

}  // namespace zrml::masslynx
