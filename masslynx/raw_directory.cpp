#include "masslynx/raw_directory.h"

#include <algorithm>

#include "masslynx/directory_files.h"
#include "masslynx/function_table.h"
#include "masslynx/function_types.h"
#include "masslynx/history.h"
#include "masslynx/labels.h"
#include "masslynx/scandata/scan_index.h"
#include "masslynx/scandata/traces.h"
#include "masslynx/unowned_files.h"

namespace zrml::masslynx {

std::optional<RawDirectory> RawDirectory::Open(const platform::SystemPath& folder, Findings* findings) {
  const platform::File header = OpenInDirectory(folder, kHeaderName);
  if (!header.IsOpen()) return std::nullopt;
  RawDirectory directory;
  directory.folder_ = folder;
  directory.header_ = ReadHeaderLines(header);
  std::string& refusal = directory.refusal_;
  NoticeRefusal(header, folder, kHeaderName, Spellings::kUpperLower, &refusal);
  std::vector<FunctionRecord>& functions = directory.functions_;
  if (!ReadFunctionTable(folder, ReadCalibrationLines(directory.header_.All()), CutTable::kWholeRecords,
                         functions, findings))
    return std::nullopt;
  AppendProcessedFunctions(folder, functions, findings, &refusal);
  ApplyLabels(folder, functions, findings, &refusal);
  directory.isLoaded_.resize(functions.size());
  return directory;
}

std::optional<std::size_t> RawDirectory::FindAbsorbance() const {
  for (std::size_t i = functions_.size(); i-- > 0;) {
    if (functions_[i].typeCode == kDadType) return i;
  }
  return std::nullopt;
}

bool RawDirectory::HasScans(std::size_t function) const {
  const FunctionRecord& record = functions_.at(function);
  if (record.hasDataFile || OpenFunctionFile(folder_, record, L"idx").IsOpen()) return true;
  std::string refusal;
  for (const std::wstring_view extension : {L"idx", L"dat"})
    NoticeRefusal({}, folder_, FileNameOf(record, extension), Spellings::kAsWrittenUpperLower, &refusal);
  return !refusal.empty();
}

platform::SystemPath RawDirectory::DataFileName(std::size_t function) {
  FunctionRecord& record = functions_.at(function);
  if (record.dataFilePath.empty()) OpenDataFile(folder_, record);
  if (record.dataFilePath.empty()) return platform::ToSystemPath(FileNameOf(record, L"DAT"));
  return platform::NameInFolder(record.dataFilePath);
}

FunctionRecord& RawDirectory::LoadedFunction(std::size_t function) {
  FunctionRecord& record = functions_.at(function);
  if (isLoaded_[function]) return record;
  std::string refusal;
  LoadScanIndex(folder_, record, LeftOutOffsets::kWhole, nullptr, &refusal);
  isLoaded_[function] = refusal.empty();
  if (refusal.empty()) return record;
  record.scanIndex.clear();
  refusal_ = std::move(refusal);
  return record;
}

void RawDirectory::OpenData(std::size_t function) {
  if (data_.IsOpen() && dataOf_ == function) return;
  data_.Close();  // before the next one is opened: there may be no room for two
  reader_.Forget();
  data_ = OpenDataFile(folder_, functions_.at(function));
  dataOf_ = function;
}

std::optional<Bytes> RawDirectory::ReadScan(std::size_t function, const ScanRoom& room) {
  OpenData(function);
  std::optional<Bytes> bytes;
  if (data_.IsOpen()) bytes = reader_.Read(data_, room.offset, room.bytes);
  if (!bytes || bytes->size() < room.bytes) {
    NoticeRefusal(data_, folder_, FileNameOf(functions_[function], L"dat"), Spellings::kAsWrittenUpperLower,
                  &refusal_);
  }
  if (data_.IsRefused()) data_.Close();  // what it did not give may be there next time
  return bytes;
}

std::string RawDirectory::WhyNoData(std::size_t function) const {
  const Finding finding = NotOpened(folder_, FileNameOf(functions_.at(function), L"dat"),
                                    Spellings::kAsWrittenUpperLower, FindingCode::kDataMissing);
  return finding.file + ' ' + finding.problem;
}

void CollectFindings(const platform::SystemPath& folder, Findings& findings) {
  const std::optional<RawDirectory> directory = RawDirectory::Open(folder, &findings);
  if (!directory) return;
  bool hasScans = false;
  for (FunctionRecord function : directory->Functions()) {
    LoadScanIndex(folder, function, LeftOutOffsets::kWhole, &findings);
    hasScans = hasScans || !function.scanIndex.empty();
  }
  NoticeUnownedFiles(folder, directory->Functions(), findings);
  NoticeTraces(folder, hasScans, findings);
}

}  // namespace zrml::masslynx
