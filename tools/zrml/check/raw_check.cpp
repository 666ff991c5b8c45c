#include "tools/zrml/check/raw_check.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <set>

#include "common/bytes.h"
#include "common/platform/platform.h"
#include "common/text.h"
#include "masslynx/function_table_format.h"
#include "masslynx/history_format.h"
#include "masslynx/scandata/point_unit_format.h"
#include "masslynx/scandata/scan_index_format.h"
#include "masslynx/scandata/scan_statistics_format.h"
#include "tools/zrml/convert/native_path.h"

namespace zrml {
namespace {

using platform::File;

constexpr std::wstring_view kFunctionTable = L"_FUNCTNS.INF";
constexpr std::wstring_view kHistory = L"_HISTORY.INF";
constexpr std::wstring_view kHeader = L"_HEADER.TXT";
constexpr int kFormatUnknown = -1;
constexpr int kMixedFormat = 6;  // all scans but the last take less than the unit tells

// A file of the directory in either spelling.
class RawFile {
 public:
  RawFile(const std::wstring& folder, std::wstring name)
      : name_(std::move(name)), file_(File::Open(folder + L'\\' + ToUpper(name_))) {
    if (!file_.IsOpen()) file_ = File::Open(folder + L'\\' + ToLower(name_));
  }

  const std::wstring& Name() const { return name_; }
  bool Exists() const { return file_.IsOpen(); }
  std::uint64_t Size() const { return file_.Size(); }

  /// Zeros for what cannot be read.
  std::vector<std::byte> Read(std::uint64_t offset, std::size_t size) const {
    std::vector<std::byte> bytes(size);
    file_.ReadAt(offset, bytes);
    return bytes;
  }

 private:
  std::wstring name_;
  File file_;
};

struct ScanRecord {
  std::uint64_t offset = 0;
  std::uint64_t end = 0;  // of its points
};

// The index, in records of 22 or of 30 bytes: the shorter unless they do not fit or go backwards.
class Index {
 public:
  Index(const RawFile& file, int dataFormat)
      : file_(file),
        unit_(point_unit_format::UnitOf(dataFormat)),
        knowsEnds_(unit_.bytes != 0 && dataFormat != kMixedFormat) {
    if (dataFormat == kMixedFormat) unit_ = {2, 1};
    for (const std::size_t size : {scan_index_format::kShortRecordSize, scan_index_format::kLongRecordSize}) {
      if (file.Size() % size != 0) continue;
      recordSize_ = size;
      if (IsAscending()) return;
    }
  }

  bool Fits() const { return recordSize_ != 0; }

  /// Whether the ends of the scans are as far as their points reach, not only a lower bound.
  bool KnowsEnds() const { return knowsEnds_; }
  std::uint64_t Count() const { return Fits() ? file_.Size() / recordSize_ : 0; }

  bool IsAscending() const {
    std::uint64_t last = 0;
    bool isAscending = true;
    EachScan([&](const ScanRecord& scan) {
      isAscending = isAscending && scan.offset >= last;
      last = scan.offset;
    });
    return isAscending;
  }

  /// In file order.
  template <class Body>
  void EachScan(Body body) const {
    constexpr std::uint64_t kRecordsAtOnce = 4096;
    std::uint64_t expected = 0;
    for (std::uint64_t first = 0; first < Count(); first += kRecordsAtOnce) {
      const auto count = static_cast<std::size_t>(std::min(kRecordsAtOnce, Count() - first));
      const std::vector<std::byte> block = file_.Read(first * recordSize_, count * recordSize_);
      for (std::size_t i = 0; i < count; ++i) {
        const std::byte* const record = block.data() + i * recordSize_;
        ScanRecord scan = {LoadU32(record + scan_index_format::kDataOffset)};
        if (scan.offset == 0 && first + i > 0) scan.offset = expected;
        const std::uint32_t word = LoadU32(record + scan_index_format::kPackedWord);
        const std::uint64_t bytes = unit_.BytesOf(word & scan_index_format::kPointCountMask);
        scan.end = scan.offset + bytes;
        expected += bytes;
        body(scan);
      }
    }
  }

 private:
  const RawFile& file_;
  point_unit_format::PointUnit unit_;
  bool knowsEnds_;
  std::size_t recordSize_ = 0;
};

class Checker {
 public:
  explicit Checker(const std::wstring& folder) : folder_(folder) {}

  std::vector<Finding> Check() {
    CheckFunctions();
    CheckProcessed();
    CheckUnused();
    return std::move(findings_);
  }

 private:
  enum class Data { kWhole, kLost };

  void Add(const RawFile& file, const std::wstring& problem, Data data) {
    findings_.push_back({file.Name(), problem, data == Data::kLost});
  }

  void CheckFunctions() {
    namespace format = function_table_format;
    const RawFile table(folder_, std::wstring(kFunctionTable));
    if (!table.Exists()) return;  // not opened by the provider either
    if (table.Size() % format::kRecordSize != 0) Add(table, L"does not end with a whole record", Data::kLost);
    const std::uint64_t count = table.Size() / format::kRecordSize;
    for (std::uint64_t i = 0; i < std::min<std::uint64_t>(count, std::numeric_limits<int>::max() - 1); ++i) {
      const auto record = table.Read(i * format::kRecordSize, sizeof(std::uint16_t));
      const unsigned word = LoadU16(record.data() + format::kPackedWord);
      const unsigned shift = format::kTypeBits + format::kModeBits;
      const unsigned mask = (1u << format::kFormatBits) - 1;
      CheckStem(L"_FUNC" + ZeroPadded(static_cast<int>(i) + 1, 3), static_cast<int>(word >> shift & mask));
    }
  }

  // The format of a processed function's points is that of the function behind it; only where the scans begin
  // is checked.
  void CheckProcessed() {
    namespace format = history_format;
    const RawFile history(folder_, std::wstring(kHistory));
    if (!history.Exists() || history.Size() < format::kHeaderSize) return;
    const std::uint64_t count = (history.Size() - format::kHeaderSize) / format::kEntrySize;
    for (std::uint64_t i = 0; i < count; ++i) {
      const auto entry = history.Read(format::kHeaderSize + i * format::kEntrySize, format::kEntrySize);
      const std::wstring stem = L"_PROC" + ZeroPadded(LoadU16(entry.data() + format::kProcessNumber), 3);
      if (stems_.insert(stem).second && RawFile(folder_, stem + L".DAT").Exists())
        CheckFiles(stem, kFormatUnknown);
    }
  }

  void CheckStem(const std::wstring& stem, int dataFormat) {
    stems_.insert(stem);
    const RawFile data(folder_, stem + L".DAT");
    if (data.Exists()) {
      CheckFiles(stem, dataFormat);
    } else {
      Add(data, L"is missing, so the function is not listed", Data::kLost);
    }
  }

  void CheckFiles(const std::wstring& stem, int dataFormat) {
    const RawFile data(folder_, stem + L".DAT");
    const RawFile indexFile(folder_, stem + L".IDX");
    if (!indexFile.Exists()) return Add(indexFile, L"is missing, so the function has no scans", Data::kLost);
    const Index index(indexFile, dataFormat);
    if (!index.Fits())
      return Add(indexFile, L"does not end with a whole record, so the function has no scans", Data::kLost);
    if (!index.IsAscending()) Add(indexFile, L"has offsets that go backwards", Data::kWhole);
    // The points of an ion-mobility function are in a file of their own.
    if (!RawFile(folder_, stem + L".CDT").Exists()) CheckExtents(index, data);
    CheckStatistics(RawFile(folder_, stem + L".STS"), index.Count());
  }

  void CheckExtents(const Index& index, const RawFile& data) {
    std::uint64_t number = 0;
    std::uint64_t past = 0;
    std::uint64_t firstPast = 0;
    std::uint64_t end = 0;
    index.EachScan([&](const ScanRecord& scan) {
      ++number;
      end = std::max(end, scan.end);
      if (scan.end <= data.Size()) return;
      if (past++ == 0) firstPast = number;
    });
    if (past != 0) {
      Add(data,
          L"ends before " + std::to_wstring(past) + L" of " + std::to_wstring(number) +
              L" scans do; the first is scan " + std::to_wstring(firstPast),
          Data::kLost);
    }
    // What a cut or emptied index has left behind.
    if (index.KnowsEnds() && end < data.Size())
      Add(data, L"holds " + std::to_wstring(data.Size() - end) + L" bytes that no scan refers to",
          Data::kWhole);
  }

  void CheckStatistics(const RawFile& file, std::uint64_t scans) {
    namespace format = scan_statistics_format;
    if (!file.Exists()) return;  // there need not be one
    if (file.Size() < format::kHeaderSize) return Add(file, L"ends in its header", Data::kWhole);
    const auto header = file.Read(0, format::kHeaderSize);
    const unsigned version = LoadU16(header.data() + format::kVersion);
    if (version != format::kKnownVersion)
      return Add(file, L"is of version " + std::to_wstring(version) + L", which is not read", Data::kWhole);
    const std::uint64_t offset = LoadU16(header.data() + format::kRecordsOffset);
    const std::uint64_t size = LoadU16(header.data() + format::kRecordSize);
    const std::uint64_t bytes = file.Size() - std::min(offset, file.Size());
    if (size == 0 || bytes % size != 0) return Add(file, L"does not end with a whole record", Data::kWhole);
    if (bytes / size != scans) {
      Add(file,
          L"is about " + std::to_wstring(bytes / size) + L" scans, the index about " + std::to_wstring(scans),
          bytes / size > scans ? Data::kLost : Data::kWhole);
    }
  }

  // Data files of neither a function nor a processed one.
  void CheckUnused() {
    std::error_code error;
    std::vector<std::wstring> unused;
    for (std::filesystem::directory_iterator at(NativePath(folder_), error), end; !error && at != end;
         at.increment(error)) {
      const std::wstring name = WidePath(at->path().filename());
      const std::wstring upper = ToUpper(name);
      const bool isData = (upper.starts_with(L"_FUNC") || upper.starts_with(L"_PROC")) &&
                          upper.ends_with(L".DAT") && upper != kFunctionTable;
      if (isData && !stems_.contains(upper.substr(0, upper.size() - 4))) unused.push_back(name);
    }
    std::sort(unused.begin(), unused.end());
    for (const std::wstring& name : unused) findings_.push_back({name, L"belongs to no function", true});
  }

  std::wstring folder_;
  std::set<std::wstring> stems_;  // of the functions
  std::vector<Finding> findings_;
};

}  // namespace

bool IsRawDirectory(const std::wstring& path, std::wstring& folder) {
  folder = path;
  if (platform::IsFile(path)) {
    folder = WidePath(NativePath(path).parent_path());
    if (folder.empty()) folder = L".";
  }
  return RawFile(folder, std::wstring(kHeader)).Exists() &&
         RawFile(folder, std::wstring(kFunctionTable)).Exists();
}

std::vector<Finding> CheckRawDirectory(const std::wstring& folder) { return Checker(folder).Check(); }

}  // namespace zrml
