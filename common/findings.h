// Problems that a reader finds in files it can only use in part. Reading goes on wherever it can: the reader
// reports each problem to a collector and skips what it cannot use. Callers that want no findings pass no
// collector.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zrml {

enum class Severity {
  kLost,     ///< measured data are missing
  kSuspect,  ///< the data may differ from what was measured
  kNote,
};

/// Every kind of finding; the table in findings.cpp has a row for each.
enum class FindingCode {
  kFileUnreadable,    // exists, but cannot be opened or read to its end
  kDataMissing,       // a function without its data file
  kDataCut,           // scans that extend past the end of their data file
  kDataUnreferenced,  // bytes that no scan refers to
  kIndexMissing,
  kIndexCut,         // not a whole number of records
  kIndexEmpty,       // although there are data
  kIndexDisordered,  // offsets that go backwards
  kScansOverlap,
  kStatisticsCut,      // or for a different number of scans
  kStatisticsUnknown,  // of an unknown version
  kTextOversized,      // far larger than a text of its kind
  kFunctionTableCut,
  kHistoryCut,
  kProcessUnrooted,  // a processed function without a raw function at its origin
  kProcessRepeated,  // several processed functions share a process number
  kFileUnowned,      // data that belong to no function
  kTraceListMissing,
  kTraceListCut,
  kTraceDataMissing,
  kReportCut,
  kSampleUnended,
};

/// What a finding is about. Numbers are those in the files.
struct FindingSubject {
  enum class Kind { kSource, kFunction, kAbsorbance, kTraces, kSample };

  Kind kind = Kind::kSource;
  int sample = 0;    ///< in a report, from 1; 0 elsewhere
  int function = 0;  ///< from 1
  int process = 0;   ///< of a processed function
  int repeat = 1;    ///< among processed functions that share a process number

  // NOLINTNEXTLINE(modernize-use-nullptr): there is no pointer
  auto operator<=>(const FindingSubject&) const = default;
};

struct Finding {
  FindingCode code = {};
  std::string file = {};     ///< its name without folder, UTF-8; empty when the whole source is meant
  std::string problem = {};  ///< follows the file's name: "is missing, so the function has no scans"
  FindingSubject subject = {};
  std::uint64_t count = 1;  ///< how many scans, points, traces
  std::uint64_t first = 0;  ///< number of the first one, from 1; 0 when they have no numbers
};

/// Collects findings. Stays small whatever the files hold: there is one entry per code, file and subject, and
/// its count grows.
class Findings {
 public:
  void Add(Finding finding);

  bool IsEmpty() const { return list_.empty(); }
  std::span<const Finding> List() const { return list_; }

 private:
  std::vector<Finding> list_;
  std::unordered_multimap<std::size_t, std::size_t> places_;  // in the list, by what identifies an entry
};

/// The name that programs see ("data-file-cut"), and the severity.
std::string_view NameOf(FindingCode code);
Severity SeverityOf(FindingCode code);

}  // namespace zrml
