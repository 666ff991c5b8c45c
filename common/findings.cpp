#include "common/findings.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace zrml {
namespace {

struct CodeRow {
  FindingCode code;
  std::string_view name;
  Severity severity;
};

constexpr CodeRow kCodes[] = {
    {FindingCode::kFileUnreadable, "file-unreadable", Severity::kLost},
    {FindingCode::kDataMissing, "data-missing", Severity::kLost},
    {FindingCode::kDataCut, "data-cut", Severity::kLost},
    {FindingCode::kDataUnreferenced, "data-unreferenced", Severity::kSuspect},
    {FindingCode::kIndexMissing, "index-missing", Severity::kLost},
    {FindingCode::kIndexCut, "index-cut", Severity::kLost},
    {FindingCode::kIndexEmpty, "index-empty", Severity::kLost},
    {FindingCode::kIndexDisordered, "index-disordered", Severity::kSuspect},
    {FindingCode::kScansOverlap, "scans-overlap", Severity::kSuspect},
    {FindingCode::kStatisticsCut, "statistics-cut", Severity::kLost},
    {FindingCode::kStatisticsUnknown, "statistics-unknown", Severity::kSuspect},
    {FindingCode::kTextOversized, "text-oversized", Severity::kSuspect},
    {FindingCode::kFunctionTableCut, "function-table-cut", Severity::kLost},
    {FindingCode::kHistoryCut, "history-cut", Severity::kSuspect},
    {FindingCode::kProcessUnrooted, "process-unrooted", Severity::kLost},
    {FindingCode::kProcessRepeated, "process-repeated", Severity::kNote},
    {FindingCode::kFileUnowned, "file-unowned", Severity::kLost},
    {FindingCode::kTraceListMissing, "trace-list-missing", Severity::kLost},
    {FindingCode::kTraceListCut, "trace-list-cut", Severity::kLost},
    {FindingCode::kTraceDataMissing, "trace-data-missing", Severity::kLost},
    {FindingCode::kReportCut, "report-cut", Severity::kLost},
    {FindingCode::kSampleUnended, "sample-unended", Severity::kLost},
};

const CodeRow& RowOf(FindingCode code) {
  return *std::find_if(std::begin(kCodes), std::end(kCodes),
                       [&](const CodeRow& row) { return row.code == code; });
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

void Findings::Add(Finding finding) {
  const std::size_t hash = HashOf(finding);
  for (auto [at, last] = places_.equal_range(hash); at != last; ++at) {
    Finding& known = list_[at->second];
    if (!IsSame(known, finding)) continue;
    known.count += finding.count;
    return;
  }
  list_.push_back(std::move(finding));
  places_.emplace(hash, list_.size() - 1);
}

std::string_view NameOf(FindingCode code) { return RowOf(code).name; }
Severity SeverityOf(FindingCode code) { return RowOf(code).severity; }

}  // namespace zrml
