#include "masslynx/scandata/scan_index.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <numeric>
#include <optional>
#include <string>

#include "common/bytes.h"
#include "masslynx/directory_files.h"
#include "masslynx/function_types.h"
#include "masslynx/scandata/calibration.h"
#include "masslynx/scandata/omitted_offsets.h"
#include "masslynx/scandata/point_unit_format.h"
#include "masslynx/scandata/scan_decoder.h"
#include "masslynx/scandata/scan_extents.h"
#include "masslynx/scandata/scan_facts.h"
#include "masslynx/scandata/scan_index_format.h"
#include "masslynx/scandata/scan_statistics.h"
#include "masslynx/scandata/scan_times.h"

namespace zrml::masslynx {
namespace {

namespace format = scan_index_format;
using platform::File;

class EntryReader {
 public:
  EntryReader(int dataFormat, IndexView view)
      : unit_(point_unit_format::UnitOf(dataFormat)),
        centroidedByDefault_(dataFormat >= 0 && dataFormat <= 2),
        view_(view) {}

  // Where the entry is kept, since copies of half-written ones are slow.
  void Read(const std::byte* record, bool first, ScanIndexEntry& entry) {
    entry.dataOffset = LoadU32(record + format::kDataOffset);
    if (!first && entry.dataOffset == 0) {
      if (view_ == IndexView::kMeasured) {
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
    entry.segment = (word >> format::kSegmentShift) & format::kSegmentMask;
    entry.centroided =
        (word & format::kCentroidStateGiven) != 0 ? (word & format::kProfile) == 0 : centroidedByDefault_;
    entry.preCalibrated = (word & format::kPreCalibrated) != 0;
    entry.totalIntensity = LoadF32(record + format::kTotalIntensity);
    entry.retentionTime = LoadF32(record + format::kRetentionTime);
    expectedOffset_ += unit_.BytesOf(entry.pointCount);
  }

  // Where the scan of an entry ends.
  std::uint64_t EndOf(const ScanIndexEntry& entry) const {
    return entry.DataOffset() + unit_.BytesOf(entry.pointCount);
  }

  // The record was lost. How many bytes its scan has is not known, so scans behind it have no offset until
  // one has its own.
  void Lose() { isLost_ = true; }

 private:
  point_unit_format::PointUnit unit_;
  bool centroidedByDefault_;
  IndexView view_;
  // Where the next scan's points would be, were the scans back to back from 0.
  std::uint64_t expectedOffset_ = 0;
  bool isLost_ = false;
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
  bool areBackToBack = true;  // each begins where the one before ends, the first at 0
  std::uint64_t end = 0;      // of the last one
  float latest = -std::numeric_limits<float>::infinity();
  bool haveTimes = true;   // none has one that no run has
  std::size_t filled = 0;  // with statistics, from the first on
  // As measured:
  Places zeroRecords;            // the first one only where its points are missing
  std::size_t dropped = 0;       // of these, at the end of the index
  Places untimed;                // that have a stand-in for their time
  Places unplaced;               // without an offset, behind records that have lost their points to zeros
  bool areAllOfPoints = true;    // no scan is empty
  bool beginsWithZeros = false;  // the first record
  std::uint64_t reached = 0;     // the last offset that is known

  // Looks at the last entry while it is still in the cache. Times that are not numbers are out of order for
  // now.
  void Place(std::uint64_t scanEnd) {
    const ScanIndexEntry& entry = list.back();
    const std::size_t place = list.size() - 1;
    inTimeOrder &= entry.retentionTime >= latest;
    latest = entry.retentionTime;
    haveTimes &= MayBeTime(latest);
    areAllOfPoints &= entry.pointCount != 0;
    areBackToBack &= entry.DataOffset() == end;
    end = scanEnd;
    if (entry.HasLostOffset()) {
      unplaced.push_back(place);
    } else {
      inFileOrder &= !(entry.DataOffset() < reached);
      reached = entry.DataOffset();
    }
  }

  // The last entry is without points, a total and a time, and at the place of the scan before.
  void PlaceZeros() {
    zeroRecords.push_back(list.size() - 1);
    list.back().totalIntensity = std::numeric_limits<float>::quiet_NaN();
    list.back().SetDataOffset(reached);
    Place(reached);
    areBackToBack = false;
  }

  // While entries are still in the cache. Those behind one that will move are filled when it has moved.
  void FillFrom(StatisticsReader& statistics) {
    if (!inFileOrder || !inTimeOrder || !zeroRecords.empty() || filled == list.size()) return;
    statistics.Fill(list, filled);
    filled = list.size();
  }

  std::size_t Records() const { return list.size() + dropped; }

  bool MayLackTimes() const { return !inTimeOrder || !haveTimes || !zeroRecords.empty(); }

  // The quick look may have been wrong.
  void LookAtTimes() { inTimeOrder = inTimeOrder || std::is_sorted(list.begin(), list.end(), EarlierTime); }

  // The first record is an empty scan at 0 minutes, unless its points are missing.
  void LoseFirst() {
    list.front().totalIntensity = std::numeric_limits<float>::quiet_NaN();
    zeroRecords.insert(zeroRecords.begin(), 0);
  }

  // Records that may have lost their number of points to zeros, which take a time, too, or leave no points.
  Places Doubtful() const {
    Places places = untimed;
    for (std::size_t place = 0; place < list.size() && !areAllOfPoints; ++place) {
      if (list[place].pointCount == 0) places.push_back(place);
    }
    std::sort(places.begin(), places.end());
    return places;
  }

  void TakeAsMeasured() {
    if (!MayLackTimes()) return;
    while (dropped < zeroRecords.size() && zeroRecords[zeroRecords.size() - 1 - dropped] + 1 == list.size()) {
      ++dropped;
      list.pop_back();
    }
    untimed = StandInForLostTimes(list, zeroRecords);
    inTimeOrder = false;
    LookAtTimes();
  }
};

// A quick look at the entry leaves few records to look at.
bool IsOfZeros(const ScanIndexEntry& entry, Bytes record) {
  return entry.pointCount == 0 && entry.retentionTime == 0 && AreZeros(record);
}

bool IsSound(const Entries& entries) {
  return entries.inFileOrder && entries.inTimeOrder && entries.untimed.empty();
}

// Entries that are not in the order of the file are listed as they are.
ScanNumbers NumbersOf(const Entries& entries) {
  ScanNumbers numbers;
  if (entries.inTimeOrder || !entries.inFileOrder) return numbers;
  std::vector<std::uint32_t> order(entries.list.size());
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
    return EarlierTime(entries.list[a], entries.list[b]);
  });
  numbers.listed.resize(order.size());
  for (std::uint32_t i = 0; i < order.size(); ++i) numbers.listed[order[i]] = i + 1;
  return numbers;
}

// The entries of all whole records that can be read; no more than `count`. Some may have their statistics.
Entries ReadEntries(const File& file, std::size_t recordSize, std::size_t count, int dataFormat,
                    IndexView view, StatisticsReader* statistics = nullptr) {
  constexpr std::size_t kRecordsAtOnce = 4096;
  const bool isMeasured = view == IndexView::kMeasured;
  Entries entries;
  entries.list.reserve(count);
  platform::PreferLargePages(entries.list.data(), count * sizeof(ScanIndexEntry));
  std::vector<std::byte> block(std::min(count, kRecordsAtOnce) * recordSize);
  EntryReader reader(dataFormat, view);
  while (entries.list.size() < count) {
    const std::size_t wanted = std::min(count - entries.list.size(), kRecordsAtOnce) * recordSize;
    const std::size_t read =
        file.ReadAt(std::uint64_t{entries.list.size()} * recordSize, std::span(block).first(wanted));
    for (std::size_t at = 0; read - at >= recordSize; at += recordSize) {
      const bool isFirst = entries.list.empty();
      ScanIndexEntry& entry = entries.list.emplace_back();
      reader.Read(block.data() + at, isFirst, entry);
      const bool isZeros = isMeasured && IsOfZeros(entry, Bytes(block).subspan(at, recordSize));
      const bool isLost = isZeros && !isFirst;
      isLost ? entries.PlaceZeros() : entries.Place(reader.EndOf(entry));
      if (isLost) reader.Lose();
      entries.beginsWithZeros = entries.beginsWithZeros || (isZeros && isFirst);
    }
    if (statistics != nullptr) entries.FillFrom(*statistics);
    if (read < wanted) break;
  }
  if (!isMeasured) entries.LookAtTimes();
  return entries;
}

// Leaves out what zeros have taken.
void TakeAsMeasured(const platform::SystemPath& folder, const FunctionRecord& function, const File& file,
                    std::size_t recordSize, Entries& entries) {
  const auto unit = point_unit_format::UnitOf(function.dataFormat);
  const bool hasPoints = unit.bytes > 0 && !function.hasMobilityData;
  OmittedOffsets omitted = {file, recordSize, unit, 0};
  const auto findData = [&] { omitted.dataSize = OpenFunctionFile(folder, function, L"dat").Size(); };
  if (entries.beginsWithZeros && hasPoints) {
    findData();
    const std::size_t end = omitted.EndOf(entries.list, 0);
    if (entries.list[end - 1].HasLostOffset() || omitted.IsShort(entries.list, end)) entries.LoseFirst();
  }
  entries.TakeAsMeasured();
  const Places doubtful = hasPoints ? entries.Doubtful() : Places();
  if (doubtful.empty()) return;
  findData();
  if (entries.dropped > 0) omitted.dataSize = 0;  // the last bytes are of the scans that are gone
  const Places lost = omitted.Lose(entries.list, doubtful);
  entries.unplaced.insert(entries.unplaced.end(), lost.begin(), lost.end());
  std::sort(entries.unplaced.begin(), entries.unplaced.end());
}

// Whether long records make no sense where short ones do, but for the last one, which the file cuts.
bool AreCutShortRecords(const Entries& longOnes, const File& file, int dataFormat) {
  constexpr IndexView kView = IndexView::kMeasured;
  const std::uint64_t size = file.Size();
  if (size % format::kShortRecordSize == 0 || IsSound(longOnes)) return false;
  const auto count = static_cast<std::size_t>(size / format::kShortRecordSize);
  Entries shortOnes = ReadEntries(file, format::kShortRecordSize, count, dataFormat, kView);
  shortOnes.TakeAsMeasured();
  return IsSound(shortOnes);
}

// Findings about the files of one function.
class FunctionNotices {
 public:
  FunctionNotices(const platform::SystemPath& folder, const FunctionRecord& function, Findings& findings)
      : folder_(folder), function_(function), findings_(findings) {}

  void DataFile(bool hasIndex) {
    if (function_.hasDataFile) return;
    const bool isAbsorbance = function_.typeCode == kDadType;
    AddNotOpened(L"DAT", Spellings::kUpperLower, FindingCode::kDataMissing,
                 isAbsorbance ? ", so there are no absorbance spectra"
                 : hasIndex   ? ", so its scans have no points"
                              : ", so the function is not listed");
  }

  void Index() {
    if (!function_.hasDataFile) return;  // the function is not listed
    AddNotOpened(L"IDX", Spellings::kAsWrittenUpperLower, FindingCode::kIndexMissing,
                 ", so the function has no scans");
  }

  void IndexCut(const char* problem) {
    Finding finding = About(L"IDX");
    finding.code = FindingCode::kIndexCut;
    finding.problem = std::string(problem) + ", so the function has no scans";
    findings_.Add(std::move(finding));
  }

  // The entries in the order of the file.
  void EntriesOf(const Entries& entries, const ScanNumbers& numbers, bool someLackValues) {
    const File data = OpenFunctionFile(folder_, function_, L"dat");
    const std::uint64_t size = data.Size();
    if (entries.Records() == 0 && size > 0) {
      Finding finding = About(L"DAT");
      finding.code = FindingCode::kIndexEmpty;
      finding.problem = "holds " + std::to_string(size) + " bytes, but the index is empty";
      return findings_.Add(std::move(finding));
    }
    // The points of an ion-mobility function are in a file of their own.
    const bool hasPoints = !NoticeMobility();
    const ScanExtents extents = {entries.list, numbers, FormatOfPoints()};
    const bool areWhole = entries.areBackToBack && entries.end == size && HasOneUnit(extents.dataFormat);
    if (!entries.inFileOrder) {
      Finding finding = About(L"IDX");
      finding.code = FindingCode::kIndexDisordered;
      finding.problem = "has offsets that go backwards";
      findings_.Add(std::move(finding));
    } else {
      if (hasPoints && !areWhole) NoticeOverlaps(extents, About(L"IDX"), findings_);
      Times(entries, numbers);
    }
    if (hasPoints && function_.hasDataFile && !areWhole)
      NoticeExtents(extents, size, About(L"DAT"), findings_);
    hasStatistics_ = NoticeStatistics(folder_, function_, entries.Records(), someLackValues, findings_) &&
                     entries.inFileOrder;
  }

  void Times(const Entries& entries, const ScanNumbers& numbers) {
    Places lost;
    std::set_difference(entries.untimed.begin(), entries.untimed.end(), entries.zeroRecords.begin(),
                        entries.zeroRecords.end(), std::back_inserter(lost));
    const auto add = [&](FindingCode code, const std::string& what, const Places& places) {
      if (places.empty()) return;
      Numbers scans;
      for (const std::size_t place : places)
        scans.Add(place < entries.list.size() ? numbers.Of(place) : place + 1);
      Finding finding = About(L"IDX");
      finding.code = code;
      finding.SetScans(std::move(scans));
      // Out of order, a scan is listed at another place than its record.
      const bool isOfRecord = code == FindingCode::kTimesReturn;
      if (isOfRecord) finding.first = places.front() + 1;
      finding.problem = what + ' ' + std::to_string(finding.count) + " of " +
                        std::to_string(entries.Records()) + " scans; the first is " +
                        (isOfRecord ? "record " : "scan ") + std::to_string(finding.first);
      findings_.Add(std::move(finding));
    };
    add(FindingCode::kIndexZeroed, "has zeros in place of the records of", entries.zeroRecords);
    add(FindingCode::kOffsetsLost, "has lost the offsets of", entries.unplaced);
    add(FindingCode::kTimesLost, "has lost the times of", lost);
    if (!entries.inTimeOrder)
      add(FindingCode::kTimesReturn, "has times that go backwards at", ReturningTimes(entries.list));
  }

  // For the listed scans.
  void AbsurdStatistics() {
    AddWithout(FindingCode::kStatisticsAbsurd, "has values that cannot be of ", "",
               [this](const ScanIndexEntry& scan) { return MayBe(scan, function_.calTemperature); });
  }

  // For the listed scans: what is missing where the statistics that would hold it are.
  void MissingStatistics() {
    if (hasStatistics_) return;
    if (HasPrecursors(function_)) {
      AddWithout(FindingCode::kPrecursorsOfMethod, "does not tell the precursors of ",
                 function_.setMass != 0 ? ", which are the method's" : "", HasOwnPrecursor);
    }
    const bool isCorrected = HasCalibration(function_) && function_.calTemperature != 0 &&
                             HasOwnMasses(function_.dataFormat) && function_.typeCode != kDadType;
    if (isCorrected && !function_.processed) {
      AddWithout(FindingCode::kTemperaturesUnknown, "does not tell the temperatures of ",
                 ", whose masses are not corrected for them",
                 [](const ScanIndexEntry& scan) { return scan.temperatureValid || scan.preCalibrated; });
    }
  }

 private:
  Finding About(std::wstring_view extension) const {
    return {.file = platform::ToNativePath(FileNameOf(function_, extension)),
            .subject = SubjectOf(function_)};
  }

  // About the scans for which `has(scan)` is false.
  template <class Has>
  void AddWithout(FindingCode code, const std::string& what, const std::string& so, Has has) {
    const std::vector<ScanIndexEntry>& scans = function_.scanIndex;
    Numbers without;
    for (std::size_t i = 0; i < scans.size(); ++i) {
      if (!has(scans[i])) without.Add(i + 1);
    }
    if (without.IsEmpty()) return;
    Finding finding = About(L"STS");
    finding.code = code;
    finding.SetScans(std::move(without));
    finding.problem = what + std::to_string(finding.count) + " of " + std::to_string(scans.size()) +
                      " scans" + so + "; the first is scan " + std::to_string(finding.first);
    findings_.Add(std::move(finding));
  }

  void AddNotOpened(std::wstring_view extension, Spellings spellings, FindingCode codeWhenMissing,
                    std::string_view result) {
    Finding finding =
        NotOpened(folder_, FileNameOf(function_, extension), spellings, codeWhenMissing, result);
    finding.subject = SubjectOf(function_);
    findings_.Add(std::move(finding));
  }

  // Whether there are drift bins, readable or not.
  bool NoticeMobility() {
    const std::wstring name = FileNameOf(function_, L"CDT");
    if (!IsThere(folder_, name)) return false;
    if (!OpenInDirectory(folder_, name).IsOpen()) {
      AddNotOpened(L"CDT", Spellings::kUpperLower, FindingCode::kFileUnreadable,
                   ", so the function has no drift bins");
    }
    return true;
  }

  // The layout of an ion-mobility function, whose points are in another file, says nothing about data derived
  // from it.
  int FormatOfPoints() const {
    const bool isOfMobility =
        function_.processed && IsThere(folder_, FunctionFileName(function_.rawNumber, L"CDT"));
    return isOfMobility ? kUnknownFormat : function_.dataFormat;
  }

  const platform::SystemPath& folder_;
  const FunctionRecord& function_;
  Findings& findings_;
  bool hasStatistics_ = true;  // for each scan
};

}  // namespace

void LoadScanIndex(const platform::SystemPath& folder, FunctionRecord& function, IndexView view,
                   Findings* findings, std::string* refusal) {
  if (!function.scanIndex.empty() || function.typeCode == FunctionRecord::kNoFunction) return;
  std::optional<FunctionNotices> notices;
  if (findings != nullptr) notices.emplace(folder, function, *findings);
  const File file = OpenFunctionFile(folder, function, L"idx");
  if (notices) notices->DataFile(file.IsOpen());
  const auto notice = [&] {
    NoticeRefusal(file, folder, FileNameOf(function, L"idx"), Spellings::kAsWrittenUpperLower, refusal);
  };
  if (!file.IsOpen()) {
    notice();
    if (notices) notices->Index();
    return;
  }
  const std::uint64_t size = file.Size();
  constexpr const char* kCut = "does not end with a whole record";
  const char* problem = kCut;
  for (const std::size_t recordSize : {format::kShortRecordSize, format::kLongRecordSize}) {
    const bool isLong = recordSize == format::kLongRecordSize;
    const std::uint64_t count = size / recordSize;
    if (size % recordSize != 0 || count > std::numeric_limits<int>::max()) continue;
    const bool isMeasured = view == IndexView::kMeasured;
    const auto read = [&](StatisticsReader* statistics) {
      Entries entries = ReadEntries(file, recordSize, static_cast<std::size_t>(count), function.dataFormat,
                                    view, statistics);
      if (isMeasured) TakeAsMeasured(folder, function, file, recordSize, entries);
      return entries;
    };
    StatisticsReader statistics(folder, function);
    Entries entries = read(&statistics);
    notice();
    if (!entries.inFileOrder && !isLong) {
      problem = "has offsets that go backwards";
      continue;
    }
    if (isLong && isMeasured && AreCutShortRecords(entries, file, function.dataFormat)) {
      problem = kCut;
      break;
    }
    const ScanNumbers numbers = NumbersOf(entries);
    const bool someLackValues = entries.filled != entries.Records() || statistics.SomeLackValues();
    if (notices) notices->EntriesOf(entries, numbers, someLackValues);
    if (entries.inFileOrder) {
      if (!entries.inTimeOrder) std::stable_sort(entries.list.begin(), entries.list.end(), EarlierTime);
      if (entries.filled < entries.list.size() || !entries.inTimeOrder) {
        statistics.Fill(entries.list);
      }
      statistics.NoticeRefusal(refusal);
      if (statistics.IsKnown()) function.calibrationConstant = statistics.HaveOneCalibration();
    } else if (entries.filled > 0) {
      entries = read(nullptr);
    }
    for (const std::size_t place : entries.untimed)
      entries.list[numbers.Of(place) - 1].retentionTime = std::numeric_limits<float>::quiet_NaN();
    function.scanIndex = std::move(entries.list);
    if (notices) {
      if (!statistics.ArePossible()) notices->AbsurdStatistics();
      notices->MissingStatistics();
    }
    return;
  }
  if (notices) notices->IndexCut(problem);
}

}  // namespace zrml::masslynx
