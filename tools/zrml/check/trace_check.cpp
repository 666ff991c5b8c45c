#include "tools/zrml/check/trace_check.h"

#include <cstdint>

#include "common/bytes.h"
#include "common/text.h"
#include "masslynx/scandata/traces_format.h"
#include "tools/zrml/check/raw_file.h"

namespace zrml {
namespace {

namespace format = traces_format;

constexpr std::wstring_view kNoTraces = L", so there are no traces";

class TraceChecker {
 public:
  TraceChecker(const std::wstring& folder, bool hasScans) : folder_(folder), hasScans_(hasScans) {}

  // Analog channels hide stored chromatograms, but not when their list cannot be opened.
  std::vector<Finding> Check() {
    const RawFile analogs(folder_, L"_ANALOGS.INF");
    const RawFile chromatograms(folder_, L"_CHROMS.INF");
    if (analogs.IsOpen()) {
      CheckAnalogs(analogs);
      return std::move(findings_);
    }
    const bool hasAnalogs = analogs.IsThere() || RawFile(folder_, L"_ANALOGS.DAT").Size() > 0;
    if (hasAnalogs) Add(analogs, analogs.Problem() + L", so there are no analog traces");
    if (chromatograms.IsOpen()) {
      CheckChromatograms(chromatograms);
    } else if (chromatograms.IsThere() || HasData(0)) {
      AddList(chromatograms, chromatograms.Problem());
    }
    return std::move(findings_);
  }

 private:
  void Add(const RawFile& file, const std::wstring& problem) {
    findings_.push_back({file.Name(), problem, true, {Concern::Kind::kTraces}});
  }
  void AddList(const RawFile& list, const std::wstring& problem) {
    Add(list, problem + std::wstring(kNoTraces));
  }

  void CheckAnalogs(const RawFile& list) {
    if (list.Size() % format::kNameRecordSize != 0) return AddList(list, L"does not end with a whole record");
    const RawFile data(folder_, L"_ANALOGS.DAT");
    if (list.Size() == 0) {
      if (data.Size() > 0 || HasData(0)) AddList(list, L"is empty");
    } else if (data.IsOpen() && data.Size() == 0 && hasScans_) {
      Add(data, L"is empty");
    }
  }

  void CheckChromatograms(const RawFile& list) {
    if (list.Size() == 0 && !HasData(0)) return;  // of a run that has recorded none
    if (list.Size() < format::kHeaderSize) return AddList(list, L"ends in its header");
    const auto header = list.Read(0, format::kHeaderSize);
    ByteCursor cursor(header);
    const std::uint64_t offset = cursor.U16();
    const bool isKnown = cursor.U16() == format::kHeaderSecond && cursor.U16() == format::kNameRecordSize &&
                         cursor.U16() == format::kHeaderFourth;
    if (!isKnown) return AddList(list, L"has a header that is not known");
    if (offset > list.Size()) return AddList(list, L"ends before its records");
    const std::uint64_t size = list.Size() - offset;
    if (size % format::kNameRecordSize != 0) return Add(list, L"does not end with a whole record");
    const std::uint64_t traces = size / format::kNameRecordSize;
    if (HasData(traces)) Add(DataOf(traces), L"belongs to no trace");
  }

  // Of the trace at `position`.
  RawFile DataOf(std::uint64_t position) const {
    return RawFile(folder_, L"_CHRO" + ZeroPadded(static_cast<int>(position) + 1, 3) + L".DAT");
  }
  bool HasData(std::uint64_t position) const { return DataOf(position).Size() > format::kHeaderSize; }

  const std::wstring& folder_;
  bool hasScans_;
  std::vector<Finding> findings_;
};

}  // namespace

std::vector<Finding> CheckTraceLists(const std::wstring& folder, bool hasScans) {
  return TraceChecker(folder, hasScans).Check();
}

}  // namespace zrml
