#include "masslynx/scandata/scan_index.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "masslynx/directory_files.h"
#include "masslynx/function_types.h"
#include "masslynx/scandata/calibration.h"
#include "masslynx/scandata/index_entries.h"
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

// Zeros that end inside an offset leave a lower one: the scan stops short of the next. Of the last scan that
// shows only where the index is whole.
void LoseCutOffsets(const OmittedOffsets& omitted, Entries& entries) {
  std::vector<ScanIndexEntry>& list = entries.list;
  const auto isOfZeros = [&](std::size_t place) {
    return std::binary_search(entries.zeroRecords.begin(), entries.zeroRecords.end(), place);
  };
  for (const std::size_t zeros : entries.zeroRecords) {
    const std::size_t place = zeros + 1;
    if (place >= list.size() || list[place].HasLostOffset() || isOfZeros(place)) continue;
    const bool isLast = place + 1 == list.size();
    const bool isEndKnown = isLast ? entries.dropped == 0 : !list[place + 1].HasLostOffset();
    if (!isEndKnown || !omitted.LeavesBytes(list, place)) continue;
    list[place].SetDataOffset(ScanIndexEntry::kLostOffset);
    entries.unplaced.push_back(place);
  }
}

// Leaves out what zeros have taken: scans, their times and their offsets.
void LoseWhatIsZeroed(const platform::SystemPath& folder, const FunctionRecord& function, const File& file,
                      std::size_t recordSize, Entries& entries) {
  const auto unit = point_unit_format::UnitOf(function.dataFormat);
  const bool hasPoints = unit.bytes > 0 && !function.hasMobilityData;
  OmittedOffsets omitted(file, recordSize, unit);
  const auto dataSize = [&] { return OpenFunctionFile(folder, function, L"dat").Size(); };
  if (entries.beginsWithZeros && hasPoints) {
    omitted.SetDataSize(dataSize());
    const std::size_t end = omitted.EndOf(entries.list, 0);
    if (entries.list[end - 1].HasLostOffset() || omitted.IsShort(entries.list, end)) entries.LoseFirst();
  }
  entries.DropZerosAndLostTimes();
  if (!hasPoints) return;
  const auto lose = [&](const Places& doubtful, bool isEndKnown) {
    if (doubtful.empty()) return;
    omitted.SetDataSize(isEndKnown ? dataSize() : 0);
    const Places lost = omitted.Lose(entries.list, doubtful);
    entries.unplaced.insert(entries.unplaced.end(), lost.begin(), lost.end());
  };
  // The last bytes are of the scans that are gone, if there are any. Only damaged records are doubted then.
  lose(entries.Doubtful(), entries.dropped == 0);
  if (entries.dropped > 0) lose(entries.WithoutTimeAndPoints(), true);
  if (!entries.zeroRecords.empty()) {
    omitted.SetDataSize(dataSize());
    LoseCutOffsets(omitted, entries);
  }
  std::sort(entries.unplaced.begin(), entries.unplaced.end());
}

// Whether long records make no sense where short ones do, but for the last one, which the file cuts.
bool AreCutShortRecords(const Entries& longOnes, const File& file, int dataFormat) {
  constexpr IndexView kView = IndexView::kMeasured;
  const std::uint64_t size = file.Size();
  if (size % format::kShortRecordSize == 0 || IsSound(longOnes)) return false;
  const auto count = static_cast<std::size_t>(size / format::kShortRecordSize);
  Entries shortOnes = ReadEntries(file, format::kShortRecordSize, count, dataFormat, kView);
  shortOnes.DropZerosAndLostTimes();
  return IsSound(shortOnes);
}

// What is wrong with records of an index. Out of order, a scan is listed at another place than its record.
struct RecordsNotice {
  FindingCode code;
  std::string_view what;
  bool isOfRecords = false;  // `first` is the number of a record, not of a scan
};

constexpr RecordsNotice kZeroedRecords = {FindingCode::kIndexZeroed, "has zeros in place of the records of "};
constexpr RecordsNotice kLostOffsets = {FindingCode::kOffsetsLost, "has lost the offsets of "};
constexpr RecordsNotice kLostTimes = {FindingCode::kTimesLost, "has lost the times of "};
constexpr RecordsNotice kReturningTimes = {FindingCode::kTimesReturn, "has times that go backwards at ",
                                           true};

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
    Add(kZeroedRecords, entries.zeroRecords, entries, numbers);
    Add(kLostOffsets, entries.unplaced, entries, numbers);
    Add(kLostTimes, lost, entries, numbers);
    if (!entries.inTimeOrder) Add(kReturningTimes, ReturningTimes(entries.list), entries, numbers);
  }

  // For the listed scans.
  void AbsurdStatistics(const StatisticsReader& statistics) {
    AddWithout(FindingCode::kStatisticsAbsurd, "has values that cannot be of ", "",
               [&](const ScanIndexEntry& scan) { return statistics.MayBe(scan); });
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
  // About scans at `places` in the file.
  void Add(const RecordsNotice& notice, const Places& places, const Entries& entries,
           const ScanNumbers& numbers) {
    if (places.empty()) return;
    Numbers scans;
    for (const std::size_t place : places)
      scans.Add(place < entries.list.size() ? numbers.Of(place) : place + 1);
    Finding finding = About(L"IDX");
    finding.code = notice.code;
    finding.SetScans(std::move(scans));
    if (notice.isOfRecords) finding.first = places.front() + 1;
    finding.problem = std::string(notice.what) + std::to_string(finding.count) + " of " +
                      std::to_string(entries.Records()) + " scans; the first is " +
                      (notice.isOfRecords ? "record " : "scan ") + std::to_string(finding.first);
    findings_.Add(std::move(finding));
  }

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

// Loads the index of one function.
class IndexLoader {
 public:
  IndexLoader(const platform::SystemPath& folder, FunctionRecord& function, IndexView view,
              Findings* findings, std::string* refusal)
      : folder_(folder),
        function_(function),
        view_(view),
        file_(OpenFunctionFile(folder, function, L"idx")),
        refusal_(refusal) {
    if (findings != nullptr) notices_.emplace(folder, function, *findings);
  }

  void Load() {
    if (notices_) notices_->DataFile(file_.IsOpen());
    if (!file_.IsOpen()) {
      NoticeRefusalOfIndex();
      if (notices_) notices_->Index();
      return;
    }
    const bool isLoaded = LoadRecordsOf(format::kShortRecordSize) || LoadRecordsOf(format::kLongRecordSize);
    if (!isLoaded && notices_) notices_->IndexCut(problem_);
  }

 private:
  // False where the index has no records of that size.
  bool LoadRecordsOf(std::size_t recordSize) {
    const std::uint64_t size = file_.Size();
    if (size % recordSize != 0 || size / recordSize > std::numeric_limits<int>::max()) return false;
    const auto count = static_cast<std::size_t>(size / recordSize);
    StatisticsReader statistics(folder_, function_);
    Entries entries = Read(recordSize, count, &statistics);
    NoticeRefusalOfIndex();
    if (const char* problem = ProblemOf(entries, recordSize)) {
      problem_ = problem;
      return false;
    }
    const ScanNumbers numbers = NumbersOf(entries);
    const bool someLackValues = entries.filled != entries.Records() || statistics.SomeLackValues();
    if (notices_) notices_->EntriesOf(entries, numbers, someLackValues);
    if (entries.inFileOrder) {
      FinishInOrder(entries, statistics);
    } else if (entries.filled > 0) {
      entries = Read(recordSize, count, nullptr);
    }
    Keep(entries, numbers);
    if (!notices_) return true;
    if (!statistics.ArePossible()) notices_->AbsurdStatistics(statistics);
    notices_->MissingStatistics();
    return true;
  }

  Entries Read(std::size_t recordSize, std::size_t count, StatisticsReader* statistics) const {
    Entries entries = ReadEntries(file_, recordSize, count, function_.dataFormat, view_, statistics);
    if (IsMeasured()) LoseWhatIsZeroed(folder_, function_, file_, recordSize, entries);
    return entries;
  }

  // Why records cannot have that size, as far as entries tell; null where they may.
  const char* ProblemOf(const Entries& entries, std::size_t recordSize) const {
    if (recordSize == format::kShortRecordSize)
      return entries.inFileOrder ? nullptr : "has offsets that go backwards";
    return IsMeasured() && AreCutShortRecords(entries, file_, function_.dataFormat) ? kCut : nullptr;
  }

  void FinishInOrder(Entries& entries, StatisticsReader& statistics) {
    if (!entries.inTimeOrder) std::stable_sort(entries.list.begin(), entries.list.end(), EarlierTime);
    if (entries.filled < entries.list.size() || !entries.inTimeOrder) statistics.Fill(entries.list);
    statistics.NoticeRefusal(refusal_);
    if (statistics.IsKnown()) function_.calibrationConstant = statistics.HaveOneCalibration();
  }

  void Keep(Entries& entries, const ScanNumbers& numbers) {
    for (const std::size_t place : entries.untimed)
      entries.list[numbers.Of(place) - 1].retentionTime = std::numeric_limits<float>::quiet_NaN();
    function_.scanIndex = std::move(entries.list);
  }

  void NoticeRefusalOfIndex() const {
    NoticeRefusal(file_, folder_, FileNameOf(function_, L"idx"), Spellings::kAsWrittenUpperLower, refusal_);
  }

  bool IsMeasured() const { return view_ == IndexView::kMeasured; }

  static constexpr const char* kCut = "does not end with a whole record";

  const platform::SystemPath& folder_;
  FunctionRecord& function_;
  IndexView view_;
  File file_;
  std::string* refusal_;
  std::optional<FunctionNotices> notices_;
  const char* problem_ = kCut;
};

}  // namespace

void LoadScanIndex(const platform::SystemPath& folder, FunctionRecord& function, IndexView view,
                   Findings* findings, std::string* refusal) {
  if (!function.scanIndex.empty() || function.typeCode == FunctionRecord::kNoFunction) return;
  IndexLoader(folder, function, view, findings, refusal).Load();
}

}  // namespace zrml::masslynx
