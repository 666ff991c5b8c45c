// Sample-level traces: channels recorded beside the acquisition ("_ANALOGS.INF" with "_ANALOGS.DAT"), else
// stored chromatograms ("_CHROMS.INF" with one "_CHRO001.DAT" each). docs/traces.md
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/findings.h"
#include "common/platform/platform.h"

namespace zrml::masslynx {

struct TraceList {
  std::vector<std::wstring> names;
  bool fromAnalogs = false;
};

/// The trace after those of the list where a directory has an absorbance function: the total of each of its
/// scans.
inline constexpr std::wstring_view kTotalAbsorbance = L"PDA - Total Absorbance";

/// The traces of a directory, none when it lists none. No value when the list is damaged. `refusal`: see
/// NoticeRefusal().
std::optional<TraceList> ReadTraceList(const platform::SystemPath& folder, std::string* refusal = nullptr);

/// Reports damage of the lists, and records that are zeros or that no trace shows. With `lastScan`, the time
/// of the last one of any function, analog channels without values are damage and not a run that never began.
void NoticeTraces(const platform::SystemPath& folder, std::optional<float> lastScan, Findings& findings);

/// The data of one trace.
class TraceData {
 public:
  /// The trace at a position of the list. No value without a sound data file.
  static std::optional<TraceData> Open(const platform::SystemPath& folder, const TraceList& list,
                                       std::size_t trace, std::string* refusal = nullptr);

  /// Records in the file: the upper limit of points.
  std::size_t Count() const { return count_; }

  /// What zeros have done to the records: a copy that broke off. Analog channels have it in common.
  struct Zeros {
    std::size_t front = 0;   ///< records of zeros before any other; a single one may be measured at time 0
    std::size_t inside = 0;  ///< records of zeros between others, behind a time that is not 0
    std::size_t end = 0;     ///< records at the end that are no points: zeros, or cut inside their number
    bool isEndDoubtful = false;  ///< the last point ends in zeros, as no other does
  };

  /// Writes the stored times and values into arrays with room for Count() and returns the number of points:
  /// analog channels end where time runs backwards. No value when the file ends before its records. `zeros`
  /// is about all records, also those behind the points; when all are zeros they are at the end. With `zeros`
  /// records of zeros behind a time that is not 0 are left out; hosts get them as they stand.
  std::optional<std::size_t> Read(double* times, double* values, Zeros* zeros = nullptr) const;

  /// See File::Refusal().
  std::string Refusal() const { return file_.Refusal(); }

 private:
  platform::File file_;
  std::uint64_t offset_ = 0;  // of the first record
  std::size_t recordSize_ = 0;
  std::size_t word_ = 0;  // where an analog record has the trace's value; 0: a stored chromatogram
  std::size_t count_ = 0;
};

}  // namespace zrml::masslynx
