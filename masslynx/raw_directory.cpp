#include "masslynx/raw_directory.h"

#include <algorithm>
#include <string>

#include "common/text.h"
#include "masslynx/directory_files.h"
#include "masslynx/function_types.h"
#include "masslynx/history.h"
#include "masslynx/labels.h"
#include "masslynx/scandata/calibration.h"
#include "masslynx/scandata/scan_index.h"
#include "masslynx/scandata/traces.h"
#include "masslynx/unowned_files.h"

namespace zrml::masslynx {

std::optional<std::vector<FunctionRecord>> ReadFunctions(const platform::SystemPath& folder,
                                                         const HeaderLines& header, TableView view,
                                                         Findings* findings, std::string* refusal) {
  std::vector<FunctionRecord> functions;
  if (!ReadFunctionTable(folder, ReadCalibrationLines(header.All()), view, functions, findings))
    return std::nullopt;
  AppendProcessedFunctions(folder, functions, findings, refusal);
  ApplyLabels(folder, functions, findings, refusal);
  return functions;
}

std::optional<std::size_t> FindAbsorbance(std::span<const FunctionRecord> functions) {
  for (std::size_t i = functions.size(); i-- > 0;) {
    if (functions[i].typeCode == kDadType) return i;
  }
  return std::nullopt;
}

namespace {

// A directory has the absorbance of one function, deliberately.
void NoticeHiddenAbsorbance(std::span<const FunctionRecord> functions, Findings& findings) {
  const std::optional<std::size_t> shown = FindAbsorbance(functions);
  for (std::size_t i = 0; shown && i < *shown; ++i) {
    if (functions[i].typeCode != kDadType || !functions[i].hasDataFile) continue;
    findings.Add({.code = FindingCode::kAbsorbanceHidden,
                  .file = platform::ToNativePath(FileNameOf(functions[i], L"DAT")),
                  .problem = "is absorbance that is not shown, since function " +
                             std::to_string(functions[*shown].number) + " is absorbance, too",
                  .subject = SubjectOf(functions[i])});
  }
}

}  // namespace

std::optional<RawDirectory> RawDirectory::Open(const platform::SystemPath& folder) {
  const platform::File header = OpenInDirectory(folder, kHeaderName);
  if (!header.IsOpen()) return std::nullopt;
  RawDirectory directory;
  directory.folder_ = folder;
  directory.header_ = HeaderLines(ReadTextOf(header, kHeaderName, &directory.findings_));
  NoticeRefusal(header, folder, kHeaderName, Spellings::kUpperLower, &directory.refusal_);
  std::optional<std::vector<FunctionRecord>> functions = ReadFunctions(
      folder, directory.header_, TableView::kMeasured, &directory.findings_, &directory.refusal_);
  if (!functions) return std::nullopt;
  directory.functions_ = std::move(*functions);
  directory.states_.resize(directory.functions_.size());
  return directory;
}

bool RawDirectory::HasScans(std::size_t function) const {
  const FunctionRecord& record = functions_.at(function);
  if (record.hasDataFile || OpenFunctionFile(folder_, record, L"idx").IsOpen()) return true;
  std::string refusal;
  for (const std::wstring_view extension : {L"idx", L"dat"})
    NoticeRefusal({}, folder_, FileNameOf(record, extension), Spellings::kAsWrittenUpperLower, &refusal);
  return !refusal.empty();
}

platform::SystemPath RawDirectory::DataFileName(std::size_t function) const {
  const FunctionRecord& record = functions_.at(function);
  const platform::SystemPath path = PathOfDataFile(folder_, record);
  return path.empty() ? platform::ToSystemPath(FileNameOf(record, L"DAT")) : platform::NameInFolder(path);
}

FunctionRecord& RawDirectory::LoadedFunction(std::size_t function) {
  FunctionRecord& record = functions_.at(function);
  FunctionState& state = states_[function];
  if (state.isLoaded) return record;
  state.findings = {};
  record.scanIndex.clear();  // of an attempt that ended for lack of memory
  std::string refusal;
  LoadScanIndex(folder_, record, IndexView::kMeasured, &state.findings, &refusal);
  state.isLoaded = refusal.empty();
  if (state.isLoaded) return record;
  record.scanIndex.clear();
  refusal_ = std::move(refusal);
  return record;
}

void RawDirectory::OpenData(std::size_t function) {
  if (data_.IsOpen() && dataOf_ == function) return;
  data_.Close();  // before the next one is opened: two may be too many
  reader_.Forget();
  data_ = OpenDataFile(folder_, functions_.at(function));
  dataOf_ = function;
  states_[function].dataSize = std::max(states_[function].dataSize, data_.Size());
}

// Data that were there before are not lost, unlike those of a broken copy: another program changes the file.
void RawDirectory::NoticeShortRead(std::size_t function) {
  const std::wstring name = FileNameOf(functions_[function], L"dat");
  NoticeRefusal(data_, folder_, name, Spellings::kAsWrittenUpperLower, &refusal_);
  if (refusal_.empty() && data_.Size() < states_[function].dataSize)
    refusal_ = platform::ToNativePath(ToUpper(name)) + ' ' + platform::kHasShrunk;
}

// For the open data file.
const std::optional<ZeroTail>& RawDirectory::TailOf(std::size_t function) {
  FunctionState& state = states_[function];
  if (!state.isTailKnown) state.tail = FindZeroTail(data_, functions_[function]);
  state.isTailKnown = data_.IsOpen() && !data_.IsRefused();
  return state.tail;
}

std::optional<Bytes> RawDirectory::ReadScan(std::size_t function, const ScanRoom& room) {
  OpenData(function);
  std::optional<Bytes> bytes;
  if (data_.IsOpen()) bytes = reader_.Read(data_, room.offset, room.bytes);
  if (!bytes || bytes->size() < room.bytes) NoticeShortRead(function);
  // Where a scan ends in a measured byte, the end of the file need not be checked.
  if (bytes && !bytes->empty() && bytes->back() == std::byte{0}) {
    const std::optional<ZeroTail>& tail = TailOf(function);
    if (tail && tail->begin < room.offset + bytes->size())
      bytes = bytes->first(static_cast<std::size_t>(std::max(tail->begin, room.offset) - room.offset));
  }
  if (data_.IsRefused()) data_.Close();  // the next attempt may succeed
  return bytes;
}

std::string RawDirectory::WhyNoData(std::size_t function) const {
  const Finding finding = NotOpened(folder_, FileNameOf(functions_.at(function), L"dat"),
                                    Spellings::kAsWrittenUpperLower, FindingCode::kDataMissing);
  return finding.file + ' ' + finding.problem;
}

void RawDirectory::NoticeZeroTail(std::size_t function, Findings& findings) {
  OpenData(function);
  const std::optional<ZeroTail>& tail = TailOf(function);
  if (data_.IsRefused()) data_.Close();
  if (!tail) return;
  const FunctionRecord& record = functions_[function];
  Finding finding = {.code = FindingCode::kDataZeroed,
                     .file = platform::ToNativePath(FileNameOf(record, L"DAT")),
                     .subject = SubjectOf(record)};
  finding.SetScans(tail->scans);
  finding.problem = "ends in zeros that are no points of " + std::to_string(finding.count) + " of " +
                    std::to_string(record.scanIndex.size()) + " scans; the first is scan " +
                    std::to_string(finding.first);
  findings.Add(std::move(finding));
}

Findings RawDirectory::CollectFindings() {
  Findings findings = findings_;
  const std::string refusal = refusal_;
  std::optional<float> lastScan;
  for (std::size_t i = 0; i < functions_.size(); ++i) {
    for (const ScanIndexEntry& scan : LoadedFunction(i).scanIndex)
      lastScan = std::max(lastScan.value_or(0), scan.retentionTime);  // unless that is NaN
    for (const Finding& finding : states_[i].findings.List()) findings.Add(finding);
    if (functions_[i].hasDataFile) NoticeZeroTail(i, findings);
  }
  refusal_ = refusal;
  NoticeHiddenAbsorbance(functions_, findings);
  NoticeUnownedFiles(folder_, functions_, findings);
  NoticeTraces(folder_, lastScan, findings);
  return findings;
}

}  // namespace zrml::masslynx
