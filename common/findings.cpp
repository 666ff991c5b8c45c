#include "common/findings.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <string>
#include <utility>

namespace zrml {
namespace {

constexpr FindingKind kKinds[] = {
    {FindingCode::kFileUnreadable, "file-unreadable", Severity::kLost},
    {FindingCode::kDataMissing, "data-missing", Severity::kLost},
    {FindingCode::kDataCut, "data-cut", Severity::kLost},
    {FindingCode::kDataUnreferenced, "data-unreferenced", Severity::kLost},
    {FindingCode::kDataZeroed, "data-zeroed", Severity::kLost},
    {FindingCode::kPointsLost, "points-lost", Severity::kLost},
    {FindingCode::kScansUnreadable, "scans-unreadable", Severity::kLost},
    {FindingCode::kTotalsDiffer, "totals-differ", Severity::kSuspect},
    {FindingCode::kMassesFarOutside, "masses-far-outside", Severity::kSuspect},
    {FindingCode::kIntensitiesAbsurd, "intensities-absurd", Severity::kSuspect},
    {FindingCode::kIndexMissing, "index-missing", Severity::kLost},
    {FindingCode::kIndexCut, "index-cut", Severity::kLost},
    {FindingCode::kIndexEmpty, "index-empty", Severity::kLost},
    {FindingCode::kIndexZeroed, "index-zeroed", Severity::kLost},
    {FindingCode::kOffsetsLost, "offsets-lost", Severity::kLost},
    {FindingCode::kTimesLost, "times-lost", Severity::kLost},
    {FindingCode::kTimesReturn, "times-return", Severity::kSuspect},
    {FindingCode::kIndexDisordered, "index-disordered", Severity::kSuspect},
    {FindingCode::kScansOverlap, "scans-overlap", Severity::kSuspect},
    {FindingCode::kStatisticsCut, "statistics-cut", Severity::kLost},
    {FindingCode::kStatisticsUnknown, "statistics-unknown", Severity::kSuspect},
    {FindingCode::kStatisticsZeroed, "statistics-zeroed", Severity::kSuspect},
    {FindingCode::kStatisticsAbsurd, "statistics-absurd", Severity::kSuspect},
    {FindingCode::kTemperaturesUnknown, "temperatures-unknown", Severity::kSuspect},
    {FindingCode::kTextDamaged, "text-damaged", Severity::kSuspect},
    {FindingCode::kTextOversized, "text-oversized", Severity::kSuspect},
    {FindingCode::kPrecursorsOfMethod, "precursors-of-method", Severity::kSuspect},
    {FindingCode::kFunctionTableCut, "function-table-cut", Severity::kLost},
    {FindingCode::kFunctionZeroed, "function-zeroed", Severity::kLost},
    {FindingCode::kFunctionIncomplete, "function-incomplete", Severity::kSuspect},
    {FindingCode::kHistoryCut, "history-cut", Severity::kSuspect},
    {FindingCode::kProcessUnrooted, "process-unrooted", Severity::kLost},
    {FindingCode::kProcessRepeated, "process-repeated", Severity::kNote},
    {FindingCode::kAbsorbanceHidden, "absorbance-hidden", Severity::kNote},
    {FindingCode::kFileUnowned, "file-unowned", Severity::kLost},
    {FindingCode::kTraceListMissing, "trace-list-missing", Severity::kLost},
    {FindingCode::kTraceListCut, "trace-list-cut", Severity::kLost},
    {FindingCode::kTraceDataMissing, "trace-data-missing", Severity::kLost},
    {FindingCode::kTraceDataZeroed, "trace-data-zeroed", Severity::kLost},
    {FindingCode::kTraceTimesReturn, "trace-times-return", Severity::kSuspect},
    {FindingCode::kTraceListZeroed, "trace-list-zeroed", Severity::kSuspect},
    {FindingCode::kTraceEndDoubtful, "trace-end-doubtful", Severity::kSuspect},
    {FindingCode::kTraceEndsEarly, "trace-ends-early", Severity::kNote},
    {FindingCode::kTracesHidden, "traces-hidden", Severity::kNote},
    {FindingCode::kTracesUnreadable, "traces-unreadable", Severity::kLost},
    {FindingCode::kReportCut, "report-cut", Severity::kLost},
    {FindingCode::kSampleUnended, "sample-unended", Severity::kLost},
    {FindingCode::kByteOrderMark, "byte-order-mark", Severity::kLost},
    {FindingCode::kLineEnds, "line-ends", Severity::kLost},
    {FindingCode::kMarkerMisplaced, "marker-misplaced", Severity::kLost},
    {FindingCode::kMarkerUnread, "marker-unread", Severity::kLost},
    {FindingCode::kBlockUnopened, "block-unopened", Severity::kLost},
    {FindingCode::kBraceMissing, "brace-missing", Severity::kLost},
    {FindingCode::kBraceStray, "brace-stray", Severity::kNote},
    {FindingCode::kBytesZeroed, "bytes-zeroed", Severity::kLost},
    {FindingCode::kLineCut, "line-cut", Severity::kLost},
    {FindingCode::kDecimalComma, "decimal-comma", Severity::kLost},
    {FindingCode::kNumberUnread, "number-unread", Severity::kLost},
    {FindingCode::kRepresentationUnread, "representation-unread", Severity::kSuspect},
    {FindingCode::kPointsUnread, "points-unread", Severity::kLost},
    {FindingCode::kLinesJoined, "lines-joined", Severity::kLost},
    {FindingCode::kLinesSkipped, "lines-skipped", Severity::kSuspect},
    {FindingCode::kScansEmpty, "scans-empty", Severity::kNote},
    {FindingCode::kTracesEmpty, "traces-empty", Severity::kNote},
};

constexpr std::string_view kSeverities[] = {"lost", "suspect", "note"};

const FindingKind& KindOf(FindingCode code) {
  return *std::find_if(std::begin(kKinds), std::end(kKinds),
                       [&](const FindingKind& kind) { return kind.code == code; });
}

bool IsSame(const Finding& a, const Finding& b) {
  return a.code == b.code && a.file == b.file && a.subject == b.subject;
}

std::size_t HashOf(const Finding& finding) {
  const FindingSubject& subject = finding.subject;
  std::size_t hash = std::hash<std::string>()(finding.file);
  for (const int part : {static_cast<int>(finding.code), static_cast<int>(subject.kind), subject.sample,
                         subject.function, subject.process, subject.repeat})
    hash = hash * 31 + static_cast<std::size_t>(part);
  return hash;
}

}  // namespace

void Numbers::Add(const Run& run) {
  if (!runs_.empty() && run.first == runs_.back().last + 1) {
    runs_.back().last = run.last;
  } else {
    runs_.push_back(run);
  }
}

void Numbers::Add(const Numbers& others) {
  for (const Run& run : others.runs_) Add(run);
}

std::uint64_t Numbers::Count() const {
  return std::accumulate(
      runs_.begin(), runs_.end(), std::uint64_t{0},
      [](std::uint64_t count, const Run& run) { return count + run.last - run.first + 1; });
}

std::uint64_t Numbers::First() const {
  const auto least = std::min_element(runs_.begin(), runs_.end(),
                                      [](const Run& a, const Run& b) { return a.first < b.first; });
  return least == runs_.end() ? 0 : least->first;
}

std::vector<Numbers::Run> Numbers::Merged() const {
  std::vector<Run> ordered = runs_;
  std::sort(ordered.begin(), ordered.end(), [](const Run& a, const Run& b) { return a.first < b.first; });
  std::vector<Run> merged;
  for (const Run& run : ordered) {
    if (merged.empty() || run.first > merged.back().last + 1) {
      merged.push_back(run);
    } else {
      merged.back().last = std::max(merged.back().last, run.last);
    }
  }
  return merged;
}

std::string Numbers::Text() const {
  std::string text;
  for (const Run& run : Merged()) {
    text += (text.empty() ? "" : ", ") + std::to_string(run.first);
    if (run.last > run.first) text += '-' + std::to_string(run.last);
  }
  return text;
}

void Finding::SetScans(Numbers about) {
  count = about.Count();
  first = about.First();
  scans = std::move(about);
}

void Findings::Add(Finding finding) {
  const std::size_t hash = HashOf(finding);
  for (auto [at, last] = places_.equal_range(hash); at != last; ++at) {
    Finding& known = list_[at->second];
    if (!IsSame(known, finding)) continue;
    known.count += finding.count;
    if (known.scans.IsEmpty() || finding.scans.IsEmpty()) {
      known.scans = {};
    } else {
      known.scans.Add(finding.scans);
    }
    return;
  }
  list_.push_back(std::move(finding));
  places_.emplace(hash, list_.size() - 1);
}

std::span<const FindingKind> FindingKinds() { return kKinds; }
std::string_view NameOf(FindingCode code) { return KindOf(code).name; }
Severity SeverityOf(FindingCode code) { return KindOf(code).severity; }
std::string_view NameOf(Severity severity) { return kSeverities[static_cast<std::size_t>(severity)]; }

std::string TextOf(const Finding& finding) {
  return finding.file.empty() ? finding.problem : finding.file + ' ' + finding.problem;
}

}  // namespace zrml
