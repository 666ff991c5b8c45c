#include "tools/zrml/check/raw_check.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>

#include "common/bytes.h"
#include "common/platform/platform.h"
#include "common/text.h"
#include "masslynx/function_table_format.h"
#include "masslynx/scandata/point_unit_format.h"
#include "masslynx/scandata/scan_index_format.h"
#include "masslynx/scandata/scan_statistics_format.h"
#include "tools/zrml/check/raw_file.h"
#include "tools/zrml/check/raw_functions.h"
#include "tools/zrml/check/trace_check.h"
#include "tools/zrml/convert/native_path.h"

namespace zrml {
namespace {

constexpr std::wstring_view kFunctionTable = L"_FUNCTNS.INF";
constexpr std::wstring_view kHeader = L"_HEADER.TXT";
constexpr std::wstring_view kHistory = L"_HISTORY.INF";
constexpr std::wstring_view kLabels = L"_EXTERN.INF";
constexpr int kMixedFormat = 6;        // whose scans are all of
constexpr int kFormatOfMixed = 3;      // this format,
constexpr int kFormatOfLastMixed = 4;  // but the last is of this one

struct ScanRecord {
  std::uint64_t offset = 0;
  std::uint64_t end = 0;  // of its points
};

// The index, in records of 22 or of 30 bytes: the shorter unless they do not fit or go backwards.
class Index {
 public:
  Index(const RawFile& file, int dataFormat)
      : file_(file),
        offsetUnit_(point_unit_format::UnitOf(dataFormat)),
        unit_(offsetUnit_),
        knowsEnds_(unit_.bytes != 0 && dataFormat != kMixedFormat) {
    if (dataFormat == kMixedFormat) {
      unit_ = point_unit_format::UnitOf(kFormatOfMixed);
      lastUnit_ = point_unit_format::UnitOf(kFormatOfLastMixed);
    }
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
        const std::uint32_t points = word & scan_index_format::kPointCountMask;
        expected += offsetUnit_.BytesOf(points);
        const bool isLast = first + i + 1 == Count();
        scan.end = scan.offset + (isLast ? lastUnit_ : unit_).BytesOf(points);
        body(scan);
      }
    }
  }

 private:
  const RawFile& file_;
  point_unit_format::PointUnit offsetUnit_;        // what the provider counts where an offset is left out
  point_unit_format::PointUnit unit_;              // what a scan takes
  point_unit_format::PointUnit lastUnit_ = unit_;  // of the last scan
  bool knowsEnds_;
  std::size_t recordSize_ = 0;
};

class Checker {
 public:
  Checker(const std::wstring& folder, const std::wstring& path)
      : folder_(folder), functions_(ReadRawFunctions(folder)) {
    const std::wstring chosen = StemOf(path);
    for (const RawFunction& function : functions_.functions) {
      stems_.insert(function.stem);
      if (function.isListed && function.stem == chosen) chosen_ = chosen;
    }
  }

  std::vector<Finding> Check() {
    for (const std::wstring_view name : {kHeader, kFunctionTable, kHistory, kLabels}) CheckOpens(name);
    CheckFunctions();
    if (RawFile(folder_, std::wstring(kFunctionTable)).IsOpen()) CheckUnused();
    const std::vector<Finding> ofTraces = CheckTraceLists(folder_, hasScans_);
    findings_.insert(findings_.end(), ofTraces.begin(), ofTraces.end());
    return std::move(findings_);
  }

 private:
  enum class Data { kWhole, kLost };

  // "_FUNC001" of a path that ends in "_FUNC001.DAT": providers choose the function that a file belongs to.
  static std::wstring StemOf(const std::wstring& path) {
    constexpr std::size_t kNameLength = 12;
    constexpr std::size_t kStemLength = 8;
    if (path.size() < kNameLength) return {};
    return ToUpper(path).substr(path.size() - kNameLength, kStemLength);
  }

  Concern ConcernOf(const RawFunction& function) const {
    if (function.isAbsorbance) return {Concern::Kind::kAbsorbance};
    if (!chosen_.empty()) {
      return function.stem == chosen_ ? Concern{Concern::Kind::kFunction, 1} : Concern{Concern::Kind::kNone};
    }
    return {function.isListed ? Concern::Kind::kFunction : Concern::Kind::kFunctionsFrom, function.number};
  }

  void Add(const RawFile& file, const std::wstring& problem, Data data) {
    findings_.push_back({file.Name(), problem, data == Data::kLost, concern_});
  }

  // What is missing is the affair of whoever opens the directory; labels there need not be.
  void CheckOpens(std::wstring_view name) {
    const RawFile file(folder_, std::wstring(name));
    if (file.IsThere() && !file.IsOpen()) Add(file, file.Problem(), Data::kLost);
  }

  void CheckFunctions() {
    const RawFile table(folder_, std::wstring(kFunctionTable));
    if (table.Size() % function_table_format::kRecordSize != 0)
      Add(table, L"does not end with a whole record", Data::kLost);
    for (const RawFunction& function : functions_.functions) {
      concern_ = ConcernOf(function);
      if (function.isProcessed) {
        CheckProcessed(function);
      } else {
        CheckStem(function);
      }
    }
    concern_ = {};
  }

  void CheckProcessed(const RawFunction& function) {
    if (!function.isListed && !function.isAbsorbance) {
      return Add(RawFile(folder_, function.stem + L".DAT"), L"goes back to no function, so it is not listed",
                 Data::kLost);
    }
    if (function.isListed) CheckFiles(function);
  }

  void CheckStem(const RawFunction& function) {
    const RawFile data(folder_, function.stem + L".DAT");
    if (data.IsOpen()) return CheckFiles(function);
    const std::wstring result =
        function.isAbsorbance ? L", so there are no absorbance spectra" : L", so the function is not listed";
    Add(data, data.Problem() + result, Data::kLost);
  }

  void CheckFiles(const RawFunction& function) {
    const RawFile data = RawFile::OfFunction(folder_, function.stem, L"DAT");
    const RawFile indexFile = RawFile::OfFunction(folder_, function.stem, L"IDX");
    if (!indexFile.IsOpen())
      return Add(indexFile, indexFile.Problem() + L", so the function has no scans", Data::kLost);
    const Index index(indexFile, function.dataFormat);
    if (!index.Fits())
      return Add(indexFile, L"does not end with a whole record, so the function has no scans", Data::kLost);
    hasScans_ = hasScans_ || index.Count() > 0;
    if (index.Count() == 0 && data.Size() > 0) {
      return Add(data, L"holds " + std::to_wstring(data.Size()) + L" bytes, but the index is empty",
                 Data::kLost);
    }
    // The points of an ion-mobility function are in a file of their own.
    const RawFile mobility(folder_, function.stem + L".CDT");
    if (mobility.IsThere() && !mobility.IsOpen())
      Add(mobility, mobility.Problem() + L", so the function has no drift bins", Data::kLost);
    const bool hasPoints = !mobility.IsThere();
    if (!index.IsAscending()) {
      Add(indexFile, L"has offsets that go backwards", Data::kWhole);
    } else if (hasPoints) {
      CheckOverlaps(index, indexFile);
    }
    if (hasPoints) CheckExtents(index, data);
    CheckStatistics(RawFile::OfFunction(folder_, function.stem, L"STS"), index.Count());
  }

  // Points of one scan are those of another: the provider gives both.
  void CheckOverlaps(const Index& index, const RawFile& indexFile) {
    std::uint64_t number = 0;
    std::uint64_t overlapping = 0;
    std::uint64_t first = 0;
    std::uint64_t end = 0;
    index.EachScan([&](const ScanRecord& scan) {
      ++number;
      const bool overlaps = scan.end > scan.offset && scan.offset < end;
      end = std::max(end, scan.end);
      if (overlaps && overlapping++ == 0) first = number;
    });
    if (overlapping == 0) return;
    Add(indexFile,
        L"has scans that begin inside an earlier one: " + std::to_wstring(overlapping) + L" of " +
            std::to_wstring(number) + L"; the first is scan " + std::to_wstring(first),
        Data::kWhole);
  }

  void CheckExtents(const Index& index, const RawFile& data) {
    std::uint64_t number = 0;
    std::uint64_t past = 0;
    std::uint64_t firstPast = 0;
    std::uint64_t end = 0;
    std::uint64_t unused = 0;
    bool isInOrder = true;  // or what lies between two scans may belong to a third
    index.EachScan([&](const ScanRecord& scan) {
      ++number;
      if (scan.end > scan.offset) {
        isInOrder = isInOrder && scan.offset >= end;
        if (scan.offset > end) unused += std::min(scan.offset, std::max(data.Size(), end)) - end;
      }
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
    // What an index has left behind that is cut, emptied or zeroed in places.
    if (!index.KnowsEnds()) return;
    if (!isInOrder) unused = 0;
    if (end < data.Size()) unused += data.Size() - end;
    if (unused != 0)
      Add(data, L"holds " + std::to_wstring(unused) + L" bytes that no scan refers to", Data::kWhole);
  }

  // Without its statistics a scan has another precursor, that of the method.
  void CheckStatistics(const RawFile& file, std::uint64_t scans) {
    namespace format = scan_statistics_format;
    if (!file.IsThere()) return;  // there need not be one
    if (!file.IsOpen()) return Add(file, file.Problem(), Data::kLost);
    if (file.Size() == 0 && scans == 0) return;  // of a function that was never acquired
    if (file.Size() < format::kHeaderSize) return Add(file, L"ends in its header", Data::kLost);
    const auto header = file.Read(0, format::kHeaderSize);
    const unsigned version = LoadU16(header.data() + format::kVersion);
    if (version != format::kKnownVersion)
      return Add(file, L"is of version " + std::to_wstring(version) + L", which is not read", Data::kWhole);
    const std::uint64_t offset = LoadU16(header.data() + format::kRecordsOffset);
    const std::uint64_t size = LoadU16(header.data() + format::kRecordSize);
    const std::uint64_t bytes = file.Size() - std::min(offset, file.Size());
    if (size == 0 || bytes % size != 0) return Add(file, L"does not end with a whole record", Data::kLost);
    if (bytes / size != scans) {
      Add(file,
          L"is about " + std::to_wstring(bytes / size) + L" scans, the index about " + std::to_wstring(scans),
          Data::kLost);
    }
  }

  static std::wstring StemOfName(const std::wstring& name) { return name.substr(0, name.size() - 4); }
  static bool IsDataFile(const std::wstring& name) { return ToUpper(name).ends_with(L".DAT"); }

  // Data, indices and drift bins of neither a function nor a processed one; of each the first is told.
  void CheckUnused() {
    std::error_code error;
    std::vector<std::wstring> unused;
    for (std::filesystem::directory_iterator at(NativePath(folder_), error), end; !error && at != end;
         at.increment(error)) {
      const std::wstring name = WidePath(at->path().filename());
      const std::wstring upper = ToUpper(name);
      const bool isData = (upper.starts_with(L"_FUNC") || upper.starts_with(L"_PROC")) &&
                          (upper.ends_with(L".DAT") || upper.ends_with(L".IDX") || upper.ends_with(L".CDT"));
      const bool isEmpty = !at->is_regular_file(error) || at->file_size(error) == 0;
      if (isData && !isEmpty && !stems_.contains(StemOfName(upper))) unused.push_back(name);
    }
    std::sort(unused.begin(), unused.end(), [](const std::wstring& a, const std::wstring& b) {
      return std::pair(StemOfName(a), IsDataFile(b)) < std::pair(StemOfName(b), IsDataFile(a));
    });
    const auto isOfOneStem = [](const std::wstring& a, const std::wstring& b) {
      return StemOfName(ToUpper(a)) == StemOfName(ToUpper(b));
    };
    unused.erase(std::unique(unused.begin(), unused.end(), isOfOneStem), unused.end());
    for (const std::wstring& name : unused) {
      const bool isRaw = ToUpper(name).starts_with(L"_FUNC");
      const int number = (isRaw ? functions_.listedRaw : functions_.listed) + 1;
      const Concern concern =
          chosen_.empty() ? Concern{Concern::Kind::kFunctionsFrom, number} : Concern{Concern::Kind::kNone};
      findings_.push_back({name, L"belongs to no function", true, concern});
    }
  }

  std::wstring folder_;
  RawFunctions functions_;
  bool hasScans_ = false;
  std::set<std::wstring> stems_;  // of the functions
  std::wstring chosen_;           // the stem of the one that the path chooses; empty without one
  Concern concern_;               // of what is being checked
  std::vector<Finding> findings_;
};

}  // namespace

bool IsRawDirectory(const std::wstring& path, std::wstring& folder) {
  folder = path;
  if (platform::IsFile(path)) {
    folder = WidePath(NativePath(path).parent_path());
    if (folder.empty()) folder = L".";
  }
  return RawFile(folder, std::wstring(kHeader)).IsThere() &&
         RawFile(folder, std::wstring(kFunctionTable)).IsThere();
}

bool HasLabels(const std::wstring& folder) { return RawFile(folder, std::wstring(kLabels)).IsThere(); }

std::vector<Finding> CheckRawDirectory(const std::wstring& folder, const std::wstring& path) {
  return Checker(folder, path).Check();
}

}  // namespace zrml
