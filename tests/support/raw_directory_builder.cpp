#include "tests/support/raw_directory_builder.h"

namespace zrml {
namespace {

using FileMap = std::map<std::string, FileBytes>;

// "_FUNC" and 7: "_FUNC007.".
std::string NumberedStem(const std::string& stem, int number) {
  const std::string digits = std::to_string(number);
  return stem + std::string(digits.size() < 3 ? 3 - digits.size() : 0, '0') + digits + ".";
}

void AddFunction(const std::string& stem, const FunctionFiles& function, FileMap& files) {
  std::vector<ScanIndexRecord> index;
  std::vector<ScanStatisticsRecord> statistics;
  ByteWriter data;
  for (const ScanFiles& scan : function.scans) {
    index.push_back(scan.index);
    index.back().dataOffset = static_cast<std::uint32_t>(data.Size());
    statistics.push_back(scan.statistics);
    data.Append(scan.data);
  }
  files[stem + "IDX"] = WriteScanIndex(index, function.indexRecordSize);
  if (function.statistics) files[stem + "STS"] = WriteScanStatistics(statistics, *function.statistics);
  files[stem + "DAT"] = data.Take();
}

void AddFunctions(const RawDirectoryBuilder& raw, FileMap& files) {
  std::vector<FunctionTableRecord> records;
  for (const FunctionFiles& function : raw.functions) {
    records.push_back(function.record);
    AddFunction(NumberedStem("_FUNC", static_cast<int>(records.size())), function, files);
  }
  files["_FUNCTNS.INF"] = WriteFunctionTable(records);
  for (const auto& [number, function] : raw.processed) {
    AddFunction(NumberedStem("_PROC", number), function, files);
  }
}

void AddTraces(const RawDirectoryBuilder& raw, FileMap& files) {
  if (!raw.analogNames.empty()) {
    files["_ANALOGS.INF"] = WriteAnalogsInf(raw.analogNames);
    files["_ANALOGS.DAT"] = WriteAnalogsDat(raw.analogs);
  }
  std::vector<std::string> names;
  for (const ChromTrace& trace : raw.chroms) {
    names.push_back(trace.name);
    files[NumberedStem("_CHRO", static_cast<int>(names.size())) + "DAT"] = WriteChroDat(trace.points);
  }
  if (!names.empty()) files["_CHROMS.INF"] = WriteChromsInf(names);
}

std::string LowerCase(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return text;
}

}  // namespace

std::map<std::string, FileBytes> RawDirectoryBuilder::Files() const {
  FileMap files;
  files["_HEADER.TXT"] = WriteLines(header, lineEnd);
  if (!history.empty()) files["_HISTORY.INF"] = WriteHistory(history, historyNumbers);
  if (!labels.empty()) files["_EXTERN.INF"] = WriteLines(labels, lineEnd);
  AddFunctions(*this, files);
  AddTraces(*this, files);
  if (spelling == Spelling::kUpperCase) return files;

  FileMap lowerCase;
  for (auto& [name, bytes] : files) lowerCase[LowerCase(name)] = std::move(bytes);
  return lowerCase;
}

void RawDirectoryBuilder::WriteTo(const std::filesystem::path& directory) const {
  for (const auto& [name, bytes] : Files()) WriteFileBytes(directory / name, bytes);
}

TempDirectory RawDirectoryBuilder::Build(const std::filesystem::path& directoryName) const {
  TempDirectory directory(directoryName);
  WriteTo(directory.Path());
  return directory;
}

}  // namespace zrml
