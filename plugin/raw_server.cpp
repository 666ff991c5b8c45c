#include "plugin/raw_server.h"

#include <algorithm>
#include <cstdint>
#include <numeric>

#include "common/text.h"
#include "masslynx/directory_files.h"
#include "masslynx/function_names.h"
#include "masslynx/function_types.h"
#include "masslynx/metadata.h"
#include "masslynx/raw_directory.h"
#include "masslynx/scandata/scan_facts.h"
#include "masslynx/scandata/scan_index.h"
#include "plugin/raw_functions.h"

namespace zrml::plugin {
namespace {

using masslynx::FunctionRecord;
using masslynx::OpenInDirectory;
using masslynx::ScanIndexEntry;
using masslynx::TraceList;

// The lower-case file name at the end of `file`, if it looks like a function's data file.
std::wstring FunctionFileOf(const std::wstring& file) {
  constexpr std::size_t kNameLength = 12;  // _func001.dat
  if (file.size() < kNameLength) return {};
  const std::wstring name = ToLower(std::wstring_view(file).substr(file.size() - kNameLength));
  return name.starts_with(L"_func") || name.starts_with(L"_proc") ? name : std::wstring();
}

bool IsPosition(int position, std::size_t count) {
  return position >= 0 && static_cast<std::size_t>(position) < count;
}

// Total intensity over time. The name is kept.
void FillWithTotals(const std::vector<ScanIndexEntry>& scans, CZRChromatogram& chromatogram) {
  chromatogram.SetSize(static_cast<int>(scans.size()));
  double* const times = chromatogram.GetTimes();
  double* const intensities = chromatogram.GetIntensities();
  for (std::size_t i = 0; i < scans.size(); ++i) {
    times[i] = scans[i].retentionTime;
    intensities[i] = scans[i].totalIntensity;
  }
}

}  // namespace

std::wstring CMLDataServerImpl::GetProviderName() { return std::wstring(masslynx::kProviderName); }
std::wstring CMLDataServerImpl::GetProviderGuid() { return L"{9e2ea952-4c83-489b-8e0b-a0ffedd70ca2}"; }
std::wstring CMLDataServerImpl::GetFileFilter() { return L"Waters MassLynx (*.dat *.idx *.inf)"; }

bool CMLDataServerImpl::CanOpen(const std::wstring& path) {
  return masslynx::IsRawDirectory(platform::ToSystemPath(path));
}

bool CMLDataServerImpl::ValidateSource(const std::wstring& path) {
  return CanOpen(path) &&
         masslynx::IsMassLynxHeader(OpenInDirectory(platform::ToSystemPath(path), masslynx::kHeaderName));
}

bool CMLDataServerImpl::Open(const std::wstring& path) { return OpenFileInSet(path, path); }

bool CMLDataServerImpl::OpenFileInSet(const std::wstring& path, const std::wstring& file) {
  dataPath_ = path;
  if (!dataPath_.empty() && !dataPath_.ends_with(L'\\')) dataPath_ += L'\\';
  folder_ = platform::ToSystemPath(dataPath_);
  headerFile_ = OpenInDirectory(folder_, masslynx::kHeaderName);
  if (!headerFile_.IsOpen()) return false;
  if (std::wstring name = FunctionFileOf(file); !name.empty()) selectedFile_ = std::move(name);
  return LoadDescription();
}

bool CMLDataServerImpl::LoadDescription() {
  headerLines_ = masslynx::ReadHeaderLines(headerFile_);
  std::optional<std::vector<FunctionRecord>> all =
      masslynx::ReadFunctions(folder_, headerLines_, masslynx::TableView::kOfSlots);
  if (!all) return false;
  std::optional<FunctionRecord> absorbance;
  if (const auto position = masslynx::FindAbsorbance(*all)) absorbance = (*all)[*position];
  RemoveUnlisted(*all);
  if (!selectedFile_.empty() && !SelectFunction(selectedFile_, *all)) selectedFile_.clear();
  masslynx::MarkSharedNames(*all);
  functions_ = std::move(*all);
  mobilityData_.Release();  // its reader may still belong to a directory opened before
  if (absorbance) absorbanceRecord_ = std::move(*absorbance);
  return true;
}

bool CMLDataServerImpl::Close() {
  headerFile_.Close();
  dataFile_.Close();
  selectedFile_.clear();
  headerLines_ = masslynx::HeaderLines();
  dataPath_.clear();
  folder_.clear();
  functions_.clear();
  absorbanceRecord_ = FunctionRecord();
  traceList_.reset();
  mobilityData_.Release();
  return true;
}

FunctionRecord* CMLDataServerImpl::FindFunction(int sample, int function) {
  return sample == 0 && IsPosition(function, functions_.size())
             ? &functions_[static_cast<std::size_t>(function)]
             : nullptr;
}

FunctionRecord* CMLDataServerImpl::FindLoadedFunction(int sample, int function) {
  FunctionRecord* const record = FindFunction(sample, function);
  if (record != nullptr) masslynx::LoadScanIndex(folder_, *record, masslynx::IndexView::kOfSlots);
  return record;
}

int CMLDataServerImpl::GetFunctionCount(int sample) {
  return sample == 0 ? static_cast<int>(functions_.size()) : 0;
}

std::wstring CMLDataServerImpl::GetFunctionName(int sample, int function) {
  if (FindFunction(sample, function) == nullptr) return {};
  return masslynx::FunctionName(functions_, static_cast<std::size_t>(function));
}

int CMLDataServerImpl::GetFunctionKind(int sample, int function) {
  const FunctionRecord* const record = FindFunction(sample, function);
  return record != nullptr ? KindOf(*record) : kAbsorbanceFunction;
}

int CMLDataServerImpl::GetMSMSScanType(int sample, int function) {
  const FunctionRecord* const record = FindFunction(sample, function);
  return record != nullptr ? static_cast<int>(masslynx::ScanTypeOfType(record->typeCode)) : kNoMsMsScan;
}

int CMLDataServerImpl::GetPolarity(int sample, int function) {
  const FunctionRecord* const record = FindFunction(sample, function);
  return record != nullptr ? static_cast<int>(masslynx::PolarityOfIonMode(record->ionMode))
                           : kUnknownPolarity;
}

bool CMLDataServerImpl::IsCentroided(int sample, int function) {
  const FunctionRecord* const record = FindLoadedFunction(sample, function);
  return record != nullptr && !record->scanIndex.empty() && record->scanIndex.front().centroided;
}

bool CMLDataServerImpl::HasMobility(int sample, int function) {
  const FunctionRecord* const record = FindFunction(sample, function);
  return record != nullptr && record->hasMobilityData;
}

int CMLDataServerImpl::GetScanDimensionCount(int sample, int function) {
  const FunctionRecord* const record = FindFunction(sample, function);
  if (record == nullptr) return 0;
  return record->hasMobilityData ? 2 : 1;
}

int CMLDataServerImpl::GetScanCount(int sample, int function) {
  const FunctionRecord* const record = FindLoadedFunction(sample, function);
  return record != nullptr ? static_cast<int>(record->scanIndex.size()) : 0;
}

bool CMLDataServerImpl::GetTotalIonChromatogram(bool, int sample, int function,
                                                CZRChromatogram& chromatogram) {
  const FunctionRecord* const record = FindLoadedFunction(sample, function);
  if (record == nullptr) return false;
  FillWithTotals(record->scanIndex, chromatogram);
  return true;
}

bool CMLDataServerImpl::GetRetentionTimes(int sample, int function, HostVector<double>& times) {
  const FunctionRecord* const record = FindLoadedFunction(sample, function);
  if (record == nullptr) return false;
  times.resize(record->scanIndex.size());
  std::transform(record->scanIndex.begin(), record->scanIndex.end(), times.begin(),
                 [](const ScanIndexEntry& entry) { return entry.retentionTime; });
  return true;
}

bool CMLDataServerImpl::GetFunctionMassRange(int sample, int function, double& low, double& high) {
  const FunctionRecord* const record = FindFunction(sample, function);
  if (record == nullptr || !record->massRangeKnown) return false;
  low = record->lowMass;
  high = record->highMass;
  return true;
}

FunctionRecord* CMLDataServerImpl::FindMobilityFunction(int sample, int function) {
  FunctionRecord* const record = FindFunction(sample, function);
  return record != nullptr && record->hasMobilityData ? FindLoadedFunction(sample, function) : nullptr;
}

int CMLDataServerImpl::GetMobilityBinCount(int sample, int function) {
  return HasMobility(sample, function) ? mobilityData_.BinCount(dataPath_, function) : 0;
}

bool CMLDataServerImpl::GetScanMassRange(int sample, int function, int scan, double& low, double& high) {
  FunctionRecord* const record = FindMobilityFunction(sample, function);
  return record != nullptr && mobilityData_.ReadMassRange({dataPath_, function, *record, scan}, low, high);
}

bool CMLDataServerImpl::GetMobilityAxis(int sample, int function, int, HostVector<double>& axis) {
  const int bins = GetMobilityBinCount(sample, function);
  if (bins < 1) return false;
  axis.resize(static_cast<std::size_t>(bins));
  std::iota(axis.begin(), axis.end(), 1.0);
  return true;
}

bool CMLDataServerImpl::GetMobilitySpectrum(int sample, int function, int scan, int bin,
                                            CZRMassSpectrum& spectrum) {
  FunctionRecord* const record = FindMobilityFunction(sample, function);
  return record != nullptr && mobilityData_.ReadBin({dataPath_, function, *record, scan}, bin, spectrum);
}

bool CMLDataServerImpl::GetMobilitySpectra(int sample, int function, int scan, int firstBin, int lastBin,
                                           HostVector<CZRMassSpectrum>& spectra) {
  FunctionRecord* const record = FindMobilityFunction(sample, function);
  return record != nullptr &&
         mobilityData_.ReadBins({dataPath_, function, *record, scan}, firstBin, lastBin, spectra);
}

bool CMLDataServerImpl::DecodePoints(FunctionRecord& record, int scan, CZRMassSpectrum& spectrum) {
  struct CloseAfterwards {
    platform::File& file;
    ~CloseAfterwards() { file.Close(); }
  };
  dataFile_ = masslynx::OpenDataFile(folder_, record);
  const CloseAfterwards closer{dataFile_};
  if (!dataFile_.IsOpen()) return false;
  bool unsorted = false;
  const bool decoded = DecodeScan(dataFile_, record, scan, spectrum, unsorted);
  spectrum.SetScanAuxValue(
      record.scanIndex[static_cast<std::size_t>(scan)].auxValue);  // also when decoding failed
  return decoded && (!unsorted || SortByMass(true, spectrum));
}

bool CMLDataServerImpl::GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) {
  FunctionRecord* const record = FindLoadedFunction(sample, function);
  if (record == nullptr || !IsPosition(scan, record->scanIndex.size())) return false;
  if (!DecodePoints(*record, scan, spectrum)) return false;
  CompleteSpectrum(function, scan, spectrum);
  return true;
}

void CMLDataServerImpl::CompleteSpectrum(int function, int scan, CZRMassSpectrum& spectrum) {
  const FunctionRecord& record = functions_[static_cast<std::size_t>(function)];
  const ScanIndexEntry& entry = record.scanIndex[static_cast<std::size_t>(scan)];
  SetScanAttributes(record, entry, spectrum);
  spectrum.SetStartTime(entry.retentionTime);
  const masslynx::ScanFacts facts = masslynx::FactsOf(record, entry);
  spectrum.SetEndTime(facts.endMinutes);
  // Deliberately 16 bits: hosts show scan 32768 as -32768.
  const auto scanNumber = static_cast<std::int16_t>(std::int64_t{scan} + 1);
  spectrum.SetFirstScan(scanNumber);
  spectrum.SetLastScan(scanNumber);
  if (record.hasMobilityData) {
    const int bins = GetMobilityBinCount(0, function);
    spectrum.SetFirstDriftBin(1);
    spectrum.SetLastDriftBin(bins);
    spectrum.SetFirstDriftValue(1.0);
    spectrum.SetLastDriftValue(bins);
  }
  if (masslynx::HasPrecursors(record))
    spectrum.SetPrecursorMass(facts.precursorMass.value_or(record.setMass));  // 0, or negative zero
  spectrum.InvalidateStatistics();
}

const TraceList* CMLDataServerImpl::LoadTraceList() {
  if (!traceList_ && !dataPath_.empty()) traceList_ = masslynx::ReadTraceList(folder_);
  return traceList_ ? &*traceList_ : nullptr;
}

bool CMLDataServerImpl::IsAbsorbanceTrace(const TraceList& list, int trace) {
  return trace == static_cast<int>(list.names.size()) && HasAbsorbanceData(0);
}

int CMLDataServerImpl::GetTraceCount(int sample) {
  const TraceList* const list = sample == 0 ? LoadTraceList() : nullptr;
  if (list == nullptr) return 0;
  return static_cast<int>(list->names.size()) + (HasAbsorbanceData(sample) ? 1 : 0);
}

std::wstring CMLDataServerImpl::GetTraceName(int sample, int trace) {
  const TraceList* const list = sample == 0 ? LoadTraceList() : nullptr;
  if (list == nullptr) return {};
  if (IsPosition(trace, list->names.size())) return list->names[static_cast<std::size_t>(trace)];
  return std::wstring(IsAbsorbanceTrace(*list, trace) ? masslynx::kTotalAbsorbance : L"");
}

bool CMLDataServerImpl::GetTrace(int sample, int trace, CZRChromatogram& chromatogram) {
  const TraceList* const list = sample == 0 ? LoadTraceList() : nullptr;
  if (list == nullptr) return false;
  if (IsPosition(trace, list->names.size())) return ReadListedTrace(*list, trace, chromatogram);
  return IsAbsorbanceTrace(*list, trace) && GetTotalAbsorbanceTrace(trace, chromatogram);
}

bool CMLDataServerImpl::ReadListedTrace(const TraceList& list, int trace, CZRChromatogram& chromatogram) {
  const auto position = static_cast<std::size_t>(trace);
  const std::optional<masslynx::TraceData> data = masslynx::TraceData::Open(folder_, list, position);
  if (!data) return false;
  chromatogram.SetSize(static_cast<int>(data->Count()));
  chromatogram.SetName(list.names[position]);
  const auto kept = data->Read(chromatogram.GetTimes(), chromatogram.GetIntensities());
  if (kept && *kept < data->Count()) chromatogram.SetSize(static_cast<int>(*kept));
  return kept.has_value();
}

bool CMLDataServerImpl::GetTotalAbsorbanceTrace(int trace, CZRChromatogram& chromatogram) {
  LoadAbsorbanceIndex();
  FillWithTotals(absorbanceRecord_.scanIndex, chromatogram);
  chromatogram.SetName(GetTraceName(0, trace));
  return true;
}

bool CMLDataServerImpl::HasAbsorbanceData(int sample) {
  return sample == 0 && absorbanceRecord_.typeCode == masslynx::kDadType;
}

void CMLDataServerImpl::LoadAbsorbanceIndex() {
  masslynx::LoadScanIndex(folder_, absorbanceRecord_, masslynx::IndexView::kOfSlots);
}

int CMLDataServerImpl::GetAbsorbanceScanCount(int sample) {
  if (sample != 0) return 0;
  LoadAbsorbanceIndex();
  return static_cast<int>(absorbanceRecord_.scanIndex.size());
}

bool CMLDataServerImpl::GetAbsorbanceSpectrum(int sample, int scan, CZRAbsorbanceSpectrum& spectrum) {
  if (!HasAbsorbanceData(sample) || scan < 0 || scan >= GetAbsorbanceScanCount(sample)) return false;
  const platform::File file =
      OpenInDirectory(folder_, masslynx::FunctionFileName(absorbanceRecord_.number, L"DAT"));
  return file.IsOpen() && DecodeAbsorbanceScan(file, absorbanceRecord_, scan, spectrum);
}

bool CMLDataServerImpl::GetMetadataValue(int sample, int function, const std::wstring& key,
                                         std::wstring& value) {
  using Origin = masslynx::MetadataOrigin;
  if (sample != 0) return false;
  const std::span<const masslynx::MetadataItem> items = masslynx::MetadataItems();
  const auto item = std::find_if(items.begin(), items.end(),
                                 [&](const masslynx::MetadataItem& row) { return row.key == key; });
  value.clear();  // not before the look-up: key and value may be the same string
  if (item == items.end()) return false;
  const FunctionRecord* const record = FindFunction(0, function);
  switch (item->origin) {
    case Origin::kHeader:
    case Origin::kDateTime:
      value = masslynx::HeaderMetadata(*item, headerLines_.All());
      return true;
    case Origin::kFolder:
      value = dataPath_;
      return true;
    case Origin::kProvider:
      value = GetProviderName();
      return true;
    case Origin::kIonMode:
      if (record != nullptr) value = masslynx::IonModeText(record->ionMode);
      return record != nullptr;
  }
  return false;
}

bool CMLDataServerImpl::GetMetadataKeys(int sample, int, std::vector<std::wstring>& keys) {
  if (sample != 0) return false;
  keys.clear();
  for (const masslynx::MetadataItem& item : masslynx::MetadataItems()) keys.emplace_back(item.key);
  return true;
}

}  // namespace zrml::plugin
