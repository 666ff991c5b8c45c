// What a reader notices about files that it cannot use whole. Reading goes on wherever it can: a reader hands
// each thing that it notices to a collector and passes it. Whoever wants no findings gives no collector.
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
  kLost,     ///< something measured is not there any more
  kSuspect,  ///< what is there may not be what was measured
  kNote,
};

/// Every kind of finding; the table in findings.cpp has a row for each.
enum class FindingCode {
  kFileUnreadable,    // it is there and cannot be opened or read to its end
  kDataMissing,       // a function without its data file
  kDataCut,           // scans that reach past the end of their data file
  kDataUnreferenced,  // bytes that no scan refers to
  kIndexMissing,
  kIndexCut,         // not a whole number of records
  kIndexEmpty,       // beside data
  kIndexDisordered,  // offsets that go backwards
  kScansOverlap,
  kStatisticsCut,      // or about another number of scans
  kStatisticsUnknown,  // of another version
  kTextOversized,      // far larger than a text of its kind
  kFunctionTableCut,
  kHistoryCut,
  kProcessUnrooted,  // a processed function that goes back to no raw one
  kProcessRepeated,  // several processed functions with one process number
  kFileUnowned,      // data of no function
  kTraceListMissing,
  kTraceListCut,
  kTraceDataMissing,
  kReportCut,
  kSampleUnended,
};

/// What a finding is about. Numbers are those of the files.
struct FindingSubject {
  enum class Kind { kSource, kFunction, kAbsorbance, kTraces, kSample };

  Kind kind = Kind::kSource;
  int sample = 0;    ///< of a report, from 1; 0 elsewhere
  int function = 0;  ///< from 1
  int process = 0;   ///< of a processed function
  int repeat = 1;    ///< among processed functions with one process number

  // NOLINTNEXTLINE(modernize-use-nullptr): it has no pointer
  auto operator<=>(const FindingSubject&) const = default;
};

struct Finding {
  FindingCode code = {};
  std::string file = {};     ///< its name without folder, UTF-8; empty when it is about the whole
  std::string problem = {};  ///< "is missing, so the function has no scans": what follows the file's name
  FindingSubject subject = {};
  std::uint64_t count = 1;  ///< how many scans, points, traces
  std::uint64_t first = 0;  ///< number of the first of them, from 1; 0 where nothing is numbered
};

/// Collects findings. Few whatever the files hold: of one code, file and subject there is one entry, whose
/// count grows.
class Findings {
 public:
  void Add(Finding finding);

  bool IsEmpty() const { return list_.empty(); }
  std::span<const Finding> List() const { return list_; }

 private:
  std::vector<Finding> list_;
  std::unordered_multimap<std::size_t, std::size_t> places_;  // in the list, by what makes findings one entry
};

/// The name that programs see ("data-file-cut"), and how much it matters.
std::string_view NameOf(FindingCode code);
Severity SeverityOf(FindingCode code);

}  // namespace zrml
