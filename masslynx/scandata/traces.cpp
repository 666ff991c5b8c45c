#include "masslynx/scandata/traces.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <span>
#include <utility>

#include "common/bytes.h"
#include "common/number_text.h"
#include "common/text.h"
#include "masslynx/directory_files.h"
#include "masslynx/scandata/packed_point.h"
#include "masslynx/scandata/traces_format.h"

namespace zrml::masslynx {
namespace {

namespace format = traces_format;
using platform::File;

// Calls `visit(record)` for each of `count` records of `size` bytes from `offset` on, until it returns false.
// A few records are read at a time. False when the file has fewer.
template <class Visit>
bool ForEachRecord(const File& file, std::uint64_t offset, std::uint64_t count, std::size_t size,
                   Visit visit) {
  constexpr std::size_t kBlock = std::size_t{1} << 16;
  const std::size_t atOnce = std::max<std::size_t>(1, kBlock / size);
  const auto block = std::make_unique_for_overwrite<std::byte[]>(atOnce * size);
  for (std::uint64_t done = 0; done < count; done += atOnce) {
    const auto records = static_cast<std::size_t>(std::min<std::uint64_t>(atOnce, count - done));
    const std::span bytes(block.get(), records * size);
    if (file.ReadAt(offset + done * size, bytes) != bytes.size()) return false;
    for (std::size_t i = 0; i < records; ++i) {
      if (!visit(block.get() + i * size)) return true;
    }
  }
  return true;
}

// Fewer records say nothing about another.
constexpr std::size_t kSome = 3;

constexpr std::wstring_view kAnalogList = L"_ANALOGS.INF";
constexpr std::wstring_view kAnalogData = L"_ANALOGS.DAT";
constexpr std::wstring_view kChromatogramList = L"_CHROMS.INF";

std::wstring ChromatogramData(std::size_t trace) {
  return L"_CHRO" + ZeroPadded(static_cast<int>(trace) + 1, 3) + L".DAT";
}

struct Header {
  std::uint16_t size = 0;  // where the records begin
  std::uint64_t dataSize = 0;
  const char* problem = nullptr;  // a constant is not as it must be, or the file ends too early
};

Header ReadHeader(const File& file, std::uint16_t recordSize) {
  std::array<std::byte, format::kHeaderSize> bytes;
  if (file.ReadAt(0, bytes) != bytes.size()) return {.problem = "ends in its header"};
  ByteCursor cursor(bytes);
  Header header;
  header.size = cursor.U16();
  const bool isKnown = cursor.U16() == format::kHeaderSecond && cursor.U16() == recordSize &&
                       cursor.U16() == format::kHeaderFourth;
  if (!isKnown) return {.problem = "has a header that is not known"};
  const std::uint64_t fileSize = file.Size();
  if (header.size > fileSize) return {.problem = "ends before its records"};
  header.dataSize = fileSize - header.size;
  return header;
}

// Looks at the zeros of records, one after another.
class ZeroSearch {
 public:
  ZeroSearch(std::size_t recordSize, bool isAnalog) : recordSize_(recordSize), isAnalog_(isAnalog) {}

  void Add(const std::byte* record) {
    std::size_t end = recordSize_;
    while (end > 0 && record[end - 1] == std::byte{0}) --end;
    ++count_;
    if (end == 0) return void(++zeros_);
    if (last_ == 0) front_ = zeros_;
    if (hasTime_) inside_ += zeros_;
    hasTime_ = LoadF32(record) > 0;
    least_ = zeros_ > 0 ? 0 : last_ > 0 ? std::min(least_, last_) : least_;
    last_ = end;
    zeros_ = 0;
  }

  TraceData::Zeros Found() const {
    if (last_ == 0) return {.end = count_ == 1 ? 0 : count_};  // one may be at time 0
    TraceData::Zeros found = {.front = front_ == 1 ? 0 : front_, .inside = inside_, .end = zeros_};
    const bool isValueCut = !isAnalog_ && IsPartOf(last_, format::kAnalogTimeSize);
    const bool isCut = IsPartOf(last_, 0) || isValueCut;
    const std::size_t others = count_ - zeros_ - 1;
    const bool isSingular = others >= (zeros_ > 0 ? 1 : kSome) && last_ < recordSize_ && least_ > last_;
    if (isCut || (isSingular && zeros_ > 0)) {
      ++found.end;
    } else {
      found.isEndDoubtful = isSingular;
    }
    return found;
  }

 private:
  // Bytes of a number but for its last one are no number that is measured.
  static bool IsPartOf(std::size_t end, std::size_t number) {
    return end > number && end < number + sizeof(float);
  }

  std::size_t recordSize_;
  bool isAnalog_;
  std::size_t count_ = 0;
  std::size_t front_ = 0;
  std::size_t inside_ = 0;
  std::size_t zeros_ = 0;  // behind the last other record
  bool hasTime_ = false;   // that record
  std::size_t last_ = 0;   // where the zeros of that begin; 0: there is none
  std::size_t least_ = std::numeric_limits<std::size_t>::max();  // where those of a record before it begin
};

std::wstring NameOf(const std::byte* record, std::size_t position) {
  const char* const text = reinterpret_cast<const char*>(record + format::kName);
  const std::string_view name(text, std::find(text, text + format::kNameSize, '\0'));
  return name.empty() ? L"Trace " + std::to_wstring(position + 1) : platform::FromCodePage(name);
}

std::optional<TraceList> ReadNames(const File& file, std::uint64_t offset, std::uint64_t count,
                                   bool fromAnalogs) {
  TraceList list;
  list.fromAnalogs = fromAnalogs;
  const bool whole =
      count <= std::numeric_limits<int>::max() - 1 &&  // one more may be added to them
      ForEachRecord(file, offset, count, format::kNameRecordSize, [&](const std::byte* record) {
        list.names.push_back(NameOf(record, list.names.size()));
        return true;
      });
  return whole ? std::optional(std::move(list)) : std::nullopt;
}

std::optional<TraceList> ReadAnalogNames(const File& file) {
  const std::uint64_t size = file.Size();
  if (size % format::kNameRecordSize != 0) return std::nullopt;
  return ReadNames(file, 0, size / format::kNameRecordSize, true);
}

// Bytes after the last whole record are ignored.
std::optional<TraceList> ReadChromatogramNames(const File& file) {
  const Header header = ReadHeader(file, format::kNameRecordSize);
  if (header.problem != nullptr) return std::nullopt;
  return ReadNames(file, header.size, header.dataSize / format::kNameRecordSize, false);
}

class TraceNotices {
 public:
  TraceNotices(const platform::SystemPath& folder, std::optional<float> lastScan, Findings& findings)
      : folder_(folder), lastScan_(lastScan), findings_(findings) {}

  // Analog channels hide stored chromatograms, but not when their list cannot be opened.
  void Notice() const {
    const File analogs = OpenInDirectory(folder_, kAnalogList);
    if (analogs.IsOpen()) {
      NoticeAnalogs(analogs);
      return NoticeHidden(analogs);
    }
    if (IsThere(folder_, kAnalogList) || OpenInDirectory(folder_, kAnalogData).Size() > 0)
      AddNotOpened(kAnalogList, ", so there are no analog traces");
    const File chromatograms = OpenInDirectory(folder_, kChromatogramList);
    if (chromatograms.IsOpen()) {
      NoticeChromatograms(chromatograms);
    } else if (IsThere(folder_, kChromatogramList) || HasData(0)) {
      AddNotOpened(kChromatogramList, ", so there are no traces");
    }
  }

 private:
  static constexpr FindingSubject kTraces = {.kind = FindingSubject::Kind::kTraces};

  void Add(FindingCode code, std::wstring_view name, std::string problem) const {
    findings_.Add({.code = code,
                   .file = platform::ToNativePath(name),
                   .problem = std::move(problem),
                   .subject = kTraces});
  }
  void AddCut(std::wstring_view name, const std::string& problem) const {
    Add(FindingCode::kTraceListCut, name, problem + ", so there are no traces");
  }
  void AddNotOpened(std::wstring_view name, std::string_view result) const {
    Finding finding =
        NotOpened(folder_, name, Spellings::kUpperLower, FindingCode::kTraceListMissing, result);
    finding.subject = kTraces;
    findings_.Add(std::move(finding));
  }

  void NoticeAnalogs(const File& list) const {
    if (list.Size() % format::kNameRecordSize != 0)
      return AddCut(kAnalogList, "does not end with a whole record");
    const File data = OpenInDirectory(folder_, kAnalogData);
    if (list.Size() == 0) {
      if (data.Size() > 0 || HasData(0)) AddCut(kAnalogList, "is empty");
    } else if (data.IsOpen() && data.Size() == 0 && lastScan_) {
      Add(FindingCode::kTraceDataMissing, kAnalogData, "is empty");
    } else if (const std::optional<TraceList> names = ReadAnalogNames(list)) {
      NoticeNames(list, 0, kAnalogList);
      NoticeAnalogPoints(*names);
    }
  }

  // What is wrong with the points of one channel is so for all.
  void NoticeAnalogPoints(const TraceList& list) const {
    const std::optional<TraceData> data = TraceData::Open(folder_, list, 0);
    if (!data) return;  // which reading the traces finds out
    const PointsSeen seen = NoticePoints(*data, kAnalogData);
    if (!seen.kept || *seen.kept + seen.lost >= data->Count()) return;
    Add(FindingCode::kTraceTimesReturn, kAnalogData,
        "has times that go backwards, so only " + std::to_string(*seen.kept) + " of " +
            std::to_string(data->Count()) + " records are read");
  }

  struct PointsSeen {
    std::size_t lost = 0;
    std::optional<std::size_t> kept;
  };

  PointsSeen NoticePoints(const TraceData& data, std::wstring_view name) const {
    std::vector<double> times(data.Count());
    std::vector<double> values(data.Count());
    TraceData::Zeros zeros;
    const std::optional<std::size_t> kept = data.Read(times.data(), values.data(), &zeros);
    const auto add = [&](const char* what, std::size_t records) {
      if (records == 0) return;
      Add(FindingCode::kTraceDataZeroed, name,
          what + std::to_string(records) + " of " + std::to_string(data.Count()) + " records");
    };
    add("ends in zeros in place of ", zeros.end);
    if (zeros.isEndDoubtful)
      Add(FindingCode::kTraceEndDoubtful, name, "ends in zeros inside a record, where no other has them");
    add("has zeros in place of ", zeros.inside);
    add("begins with zeros in place of ", zeros.front);
    const std::size_t lost = zeros.inside + zeros.end;
    if (kept && *kept + lost >= data.Count())
      NoticeTimes(std::span(times).first(data.Count() - lost).subspan(zeros.front), zeros.end == 0, name);
    return {lost, kept};
  }

  // Channels end where times go backwards, chromatograms do not.
  void NoticeTimes(std::span<const double> times, bool isWhole, std::wstring_view name) const {
    if (!std::is_sorted(times.begin(), times.end()))
      return Add(FindingCode::kTraceTimesReturn, name, "has times that go backwards");
    if (isWhole) NoticeEarlyEnd(times, name);
  }

  // Two of its points later there are still scans.
  void NoticeEarlyEnd(std::span<const double> times, std::wstring_view name) const {
    constexpr double kMost = 0.9;
    if (times.size() <= kSome || !lastScan_) return;
    const double step = (times.back() - times.front()) / static_cast<double>(times.size() - 1);
    const double scan = *lastScan_;
    if (!(times.back() < scan * kMost && times.back() + 2 * step < scan)) return;
    Add(FindingCode::kTraceEndsEarly, name,
        "ends at " + ShortNumber(times.back()) + ", the scans end at " + ShortNumber(scan) + " minutes");
  }

  // Names may be missing, but seldom all of them.
  void NoticeNames(const File& list, std::uint64_t offset, std::wstring_view name) const {
    std::uint64_t records = (list.Size() - offset) / format::kNameRecordSize;
    bool areZeros = records > 0;
    ForEachRecord(list, offset, records, format::kNameRecordSize, [&](const std::byte* record) {
      areZeros = AreZeros({record, format::kNameRecordSize});
      return areZeros;
    });
    if (areZeros) Add(FindingCode::kTraceListZeroed, name, "has zeros in place of all names");
  }

  // An empty list of channels is damage already.
  void NoticeHidden(const File& analogs) const {
    if (analogs.Size() == 0 || !HasData(0)) return;
    Add(FindingCode::kTracesHidden, kChromatogramList,
        "is not read beside _ANALOGS.INF, so the stored chromatograms are no traces");
  }

  void NoticeChromatograms(const File& list) const {
    if (list.Size() == 0 && !HasData(0)) return;  // the run has recorded none
    const Header header = ReadHeader(list, format::kNameRecordSize);
    if (header.problem != nullptr) return AddCut(kChromatogramList, header.problem);
    if (header.dataSize % format::kNameRecordSize != 0)
      return Add(FindingCode::kTraceListCut, kChromatogramList, "does not end with a whole record");
    NoticeNames(list, header.size, kChromatogramList);
    const auto traces = static_cast<std::size_t>(header.dataSize / format::kNameRecordSize);
    if (HasData(traces)) Add(FindingCode::kFileUnowned, ChromatogramData(traces), "belongs to no trace");
    for (std::size_t trace = 0; trace < traces; ++trace) {
      const std::optional<TraceData> data = TraceData::Open(folder_, {}, trace);
      if (data) NoticePoints(*data, ChromatogramData(trace));
    }
  }

  // Of the trace at `position`.
  bool HasData(std::size_t position) const {
    return OpenInDirectory(folder_, ChromatogramData(position)).Size() > format::kHeaderSize;
  }

  const platform::SystemPath& folder_;
  std::optional<float> lastScan_;
  Findings& findings_;
};

}  // namespace

std::optional<TraceList> ReadTraceList(const platform::SystemPath& folder, std::string* refusal) {
  for (const auto& [name, read] :
       {std::pair(kAnalogList, &ReadAnalogNames), std::pair(kChromatogramList, &ReadChromatogramNames)}) {
    const File file = OpenInDirectory(folder, name);
    std::optional<TraceList> list = file.IsOpen() ? read(file) : TraceList();
    NoticeRefusal(file, folder, name, Spellings::kUpperLower, refusal);
    if (file.IsOpen()) return list;
  }
  return TraceList();
}

void NoticeTraces(const platform::SystemPath& folder, std::optional<float> lastScan, Findings& findings) {
  TraceNotices(folder, lastScan, findings).Notice();
}

std::optional<TraceData> TraceData::Open(const platform::SystemPath& folder, const TraceList& list,
                                         std::size_t trace, std::string* refusal) {
  TraceData data;
  std::uint64_t size = 0;
  const std::wstring name = list.fromAnalogs ? std::wstring(kAnalogData) : ChromatogramData(trace);
  data.file_ = OpenInDirectory(folder, name);
  if (list.fromAnalogs) {
    data.recordSize_ = format::kAnalogTimeSize + format::kAnalogWordSize * list.names.size();
    data.word_ = format::kAnalogTimeSize + format::kAnalogWordSize * trace;
    size = data.file_.Size();
  } else {
    data.recordSize_ = format::kPointSize;
    const Header header = ReadHeader(data.file_, format::kPointSize);
    if (header.problem != nullptr) NoticeRefusal(data.file_, folder, name, Spellings::kUpperLower, refusal);
    if (header.problem != nullptr || header.size < format::kHeaderSize) return std::nullopt;
    data.offset_ = header.size;
    size = header.dataSize;
  }
  NoticeRefusal(data.file_, folder, name, Spellings::kUpperLower, refusal);
  if (!data.file_.IsOpen() || size % data.recordSize_ != 0) return std::nullopt;
  if (size / data.recordSize_ > std::numeric_limits<int>::max()) return std::nullopt;
  data.count_ = static_cast<std::size_t>(size / data.recordSize_);
  return data;
}

std::optional<std::size_t> TraceData::Read(double* times, double* values, Zeros* zeros) const {
  constexpr std::size_t kValue = 4;
  const bool isAnalog = word_ != 0;
  std::size_t kept = 0;
  bool isOver = false;
  ZeroSearch search(recordSize_, isAnalog);
  const bool isWhole = ForEachRecord(file_, offset_, count_, recordSize_, [&](const std::byte* record) {
    if (zeros != nullptr) search.Add(record);
    const double time = LoadF32(record);
    const bool isBehindTime = kept > 0 && times[kept - 1] > 0;
    if (zeros != nullptr && isBehindTime && AreZeros({record, recordSize_})) return true;
    isOver = isOver || (isAnalog && kept > 0 && times[kept - 1] > time);
    if (isOver) return zeros != nullptr;  // the rest belongs to a later run
    times[kept] = time;
    values[kept++] = isAnalog ? IntensityWord(LoadU16(record + word_)) : LoadF32(record + kValue);
    return true;
  });
  if (!isWhole) return std::nullopt;
  if (zeros != nullptr) *zeros = search.Found();
  return kept;
}

}  // namespace zrml::masslynx
