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
  kDataZeroed,        // zeros from inside a scan to the end of the data file
  kPointsLost,        // scans that lack points
  kPointsNone,        // spectra and traces of a report without any
  kScansUnreadable,
  kTotalsDiffer,       // scans whose points do not add up to their totals
  kMassesFarOutside,   // points where the function does not measure
  kIntensitiesAbsurd,  // which no detector gives
  kIndexMissing,
  kIndexCut,         // not a whole number of records
  kIndexEmpty,       // although there are data
  kIndexZeroed,      // records of zeros
  kOffsetsLost,      // behind records of zeros
  kIndexDisordered,  // offsets that go backwards
  kTimesLost,        // of scans
  kTimesReturn,      // to before the scan before
  kScansOverlap,
  kStatisticsCut,      // or for a different number of scans
  kStatisticsUnknown,  // of an unknown version
  kStatisticsZeroed,   // records of zeros at the end
  kStatisticsAbsurd,   // values that cannot be
  kTemperaturesUnknown,
  kPrecursorsOfMethod,
  kTextDamaged,    // zeros, or line ends that are not read
  kTextOversized,  // far larger than a text of its kind
  kFunctionTableCut,
  kFunctionZeroed,  // its record of the function table
  kFunctionIncomplete,
  kHistoryCut,
  kProcessUnrooted,  // a processed function without a raw function at its origin
  kProcessRepeated,  // several processed functions share a process number
  kAbsorbanceHidden,
  kFileUnowned,  // data that belong to no function
  kTraceListMissing,
  kTraceListCut,
  kTraceDataMissing,
  kTraceDataZeroed,   // at an end
  kTraceTimesReturn,  // so that the rest is not read
  kTraceListZeroed,
  kTraceEndDoubtful,  // zeros in the last record alone
  kTraceEndsEarly,    // long before the scans
  kTracesHidden,      // by others
  kTracesUnreadable,
  kReportCut,
  kSampleUnended,
  kByteOrderMark,    // before a marker
  kLineEnds,         // that are none: lines of CR alone
  kMarkerMisplaced,  // outside of the block that it belongs to
  kMarkerUnread,     // indented, or in small letters
  kBlockUnopened,    // a marker without a line that begins with a brace behind it
  kBraceMissing,     // ahead of a marker
  kBraceStray,       // one that closes nothing
  kBytesZeroed,      // in place of text
  kLineCut,          // by the end of the file
  kDecimalComma,
  kNumberUnread,  // a value of a key that is no number
  kRepresentationUnread,
  kPointsUnread,  // lines of a data list with one number
  kLinesJoined,   // in which two have become one
  kLinesSkipped,  // of data lists
  kScansEmpty,    // spectra of a report without points
  kTracesEmpty,
};

/// What a finding is about. Numbers are those in the files.
struct FindingSubject {
  enum class Kind { kSource, kFunction, kAbsorbance, kTraces, kSample };

  Kind kind = Kind::kSource;
  int sample = 0;    ///< in a report, from 1; 0 elsewhere
  int function = 0;  ///< from 1; of processed data the raw one, 0 where it is not known
  int process = 0;   ///< of a processed function
  int repeat = 1;    ///< among processed functions that share a process number

  // NOLINTNEXTLINE(modernize-use-nullptr): there is no pointer
  auto operator<=>(const FindingSubject&) const = default;
};

/// Numbers of scans, traces or lines, from 1, as runs of neighbours.
class Numbers {
 public:
  void Add(std::uint64_t number) { Add({number, number}); }
  void Add(const Numbers& others);

  bool IsEmpty() const { return runs_.empty(); }
  std::uint64_t Count() const;
  /// The lowest; 0 when there is none.
  std::uint64_t First() const;
  /// Whether others are between them.
  bool HasGaps() const { return Merged().size() > 1; }
  /// "17, 20-21"
  std::string Text() const;

  template <class Use>
  void ForEach(Use use) const {
    for (const Run& run : runs_) {
      for (std::uint64_t number = run.first; number <= run.last; ++number) use(number);
    }
  }

  /// Whether `matches(number)` for any of them.
  template <class Matches>
  bool HasAny(Matches matches) const {
    for (const Run& run : runs_) {
      for (std::uint64_t number = run.first; number <= run.last; ++number) {
        if (matches(number)) return true;
      }
    }
    return false;
  }

 private:
  struct Run {
    std::uint64_t first = 0;
    std::uint64_t last = 0;
  };
  void Add(const Run& run);
  /// In their order, neighbours together.
  std::vector<Run> Merged() const;

  std::vector<Run> runs_;
};

struct Finding {
  FindingCode code = {};
  std::string file = {};     ///< its name without folder, UTF-8; empty when the whole source is meant
  std::string problem = {};  ///< follows the file's name: "is missing, so the function has no scans"
  FindingSubject subject = {};
  std::uint64_t count = 1;  ///< how many scans, points, traces
  /// Number of the first one, from 1; 0 when they have no numbers. With kTimesReturn that of a record, in the
  /// order of the index; with other codes about scans that of a scan, in order of time.
  std::uint64_t first = 0;
  Numbers scans = {};  ///< that it is about; none when it is about the whole subject

  /// With their count and the first of them.
  void SetScans(Numbers about);
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

/// A kind of finding: the name that programs see ("data-cut"), and how much it matters.
struct FindingKind {
  FindingCode code;
  std::string_view name;
  Severity severity;
};

/// Every kind once. docs/check.md
std::span<const FindingKind> FindingKinds();
std::string_view NameOf(FindingCode code);
Severity SeverityOf(FindingCode code);
/// "lost", "suspect", "note".
std::string_view NameOf(Severity severity);

/// The finding as a sentence: "_FUNC001.DAT is missing, so ...".
std::string TextOf(const Finding& finding);

}  // namespace zrml
