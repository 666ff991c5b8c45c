#include "masslynx/ml_data_server.h"

#include <algorithm>
#include <cstdint>
#include <numeric>

#include "common/text.h"
#include "masslynx/function_names.h"
#include "masslynx/function_table.h"
#include "masslynx/function_types.h"
#include "masslynx/history.h"
#include "masslynx/labels.h"
#include "masslynx/raw_directory.h"
#include "masslynx/scan_attributes.h"
#include "masslynx/scandata/absorbance_decoder.h"
#include "masslynx/scandata/calibration.h"
#include "masslynx/scandata/scan_decoder.h"
#include "masslynx/scandata/scan_index.h"
#include "masslynx/scandata/scan_statistics_format.h"

namespace zrml {
namespace {

constexpr std::wstring_view kHeaderName = L"_header.txt";

// The lower-cased file name at the end of `file` when it looks like that of a function's data file.
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

std::wstring CMLDataServerImpl::GetProviderName() { return L"ZRMLProvider"; }
std::wstring CMLDataServerImpl::GetProviderGuid() { return L"{9e2ea952-4c83-489b-8e0b-a0ffedd70ca2}"; }
std::wstring CMLDataServerImpl::GetFileFilter() { return L"Waters MassLynx (*.dat *.idx *.inf)"; }

bool CMLDataServerImpl::CanOpen(const std::wstring& path) { return IsRawDirectory(path); }

bool CMLDataServerImpl::ValidateSource(const std::wstring& path) {
  return CanOpen(path) && IsMassLynxHeader(OpenInDirectory(path, kHeaderName));
}

bool CMLDataServerImpl::Open(const std::wstring& path) { return OpenFileInSet(path, path); }

bool CMLDataServerImpl::OpenFileInSet(const std::wstring& path, const std::wstring& file) {
  dataPath = path;
  if (!dataPath.empty() && !dataPath.ends_with(L'\\')) dataPath += L'\\';
  headerFile = OpenInDirectory(dataPath, kHeaderName);
  if (!headerFile.IsOpen()) return false;
  if (std::wstring name = FunctionFileOf(file); !name.empty()) selectedFile = std::move(name);
  return LoadDescription();
}

bool CMLDataServerImpl::LoadDescription() {
  headerLines = ReadHeaderLines(headerFile);
  FunctionTable table;
  if (!ReadFunctionTable(dataPath, ReadCalibrationLines(headerLines.All()), table)) return false;
  AppendProcessedFunctions(dataPath, table.functions);
  ApplyLabels(dataPath, table.functions);
  RemoveUnlisted(table);
  if (!selectedFile.empty() && !SelectFunction(selectedFile, table.functions)) selectedFile.clear();
  MarkSharedNames(table.functions);
  functions = std::move(table.functions);
  mobilityData.Release();  // its reader may still be that of a directory opened before
  if (table.absorbance.typeCode != FunctionRecord::kNoFunction)
    absorbanceRecord = std::move(table.absorbance);
  return true;
}

bool CMLDataServerImpl::Close() {
  headerFile.Close();
  dataFile.Close();
  selectedFile.clear();
  headerLines = HeaderLines();
  dataPath.clear();
  functions.clear();
  absorbanceRecord = FunctionRecord();
  traceList.reset();
  mobilityData.Release();
  return true;
}

FunctionRecord* CMLDataServerImpl::FindFunction(int sample, int function) {
  return sample == 0 && IsPosition(function, functions.size())
             ? &functions[static_cast<std::size_t>(function)]
             : nullptr;
}

FunctionRecord* CMLDataServerImpl::FindLoadedFunction(int sample, int function) {
  FunctionRecord* const record = FindFunction(sample, function);
  if (record != nullptr) LoadScanIndex(dataPath, *record);
  return record;
}

int CMLDataServerImpl::GetFunctionCount(int sample) {
  return sample == 0 ? static_cast<int>(functions.size()) : 0;
}

std::wstring CMLDataServerImpl::GetFunctionName(int sample, int function) {
  if (FindFunction(sample, function) == nullptr) return {};
  return FunctionName(functions, static_cast<std::size_t>(function));
}

int CMLDataServerImpl::GetFunctionKind(int sample, int function) {
  const FunctionRecord* const record = FindFunction(sample, function);
  return record != nullptr ? FunctionKindOfType(record->typeCode) : kAbsorbanceFunction;
}

int CMLDataServerImpl::GetMSMSScanType(int sample, int function) {
  const FunctionRecord* const record = FindFunction(sample, function);
  return record != nullptr ? MsMsScanTypeOfType(record->typeCode) : kNoMsMsScan;
}

int CMLDataServerImpl::GetPolarity(int sample, int function) {
  const FunctionRecord* const record = FindFunction(sample, function);
  return record != nullptr ? PolarityOfIonMode(record->ionMode) : kUnknownPolarity;
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
  return HasMobility(sample, function) ? mobilityData.BinCount(dataPath, function) : 0;
}

bool CMLDataServerImpl::GetScanMassRange(int sample, int function, int scan, double& low, double& high) {
  FunctionRecord* const record = FindMobilityFunction(sample, function);
  return record != nullptr && mobilityData.ReadMassRange({dataPath, function, *record, scan}, low, high);
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
  return record != nullptr && mobilityData.ReadBin({dataPath, function, *record, scan}, bin, spectrum);
}

bool CMLDataServerImpl::GetMobilitySpectra(int sample, int function, int scan, int firstBin, int lastBin,
                                           HostVector<CZRMassSpectrum>& spectra) {
  FunctionRecord* const record = FindMobilityFunction(sample, function);
  return record != nullptr &&
         mobilityData.ReadBins({dataPath, function, *record, scan}, firstBin, lastBin, spectra);
}

bool CMLDataServerImpl::DecodePoints(FunctionRecord& record, int scan, CZRMassSpectrum& spectrum) {
  struct CloseAfterwards {
    platform::File& file;
    ~CloseAfterwards() { file.Close(); }
  };
  dataFile = OpenDataFile(dataPath, record);
  const CloseAfterwards closer{dataFile};
  if (!dataFile.IsOpen()) return false;
  bool unsorted = false;
  const bool decoded = DecodeScan(dataFile, record, scan, spectrum, unsorted);
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
  const FunctionRecord& record = functions[static_cast<std::size_t>(function)];
  const ScanIndexEntry& entry = record.scanIndex[static_cast<std::size_t>(scan)];
  SetScanAttributes(record, entry, spectrum);
  spectrum.SetStartTime(entry.retentionTime);
  spectrum.SetEndTime(entry.retentionTime + record.scanTime / 60.0F);
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
  if (HasPrecursor(record)) {
    const bool given = (entry.precursorFlags & scan_statistics_format::kPrecursorMassGiven) != 0;
    spectrum.SetPrecursorMass(given && entry.precursorMass != 0.0F ? entry.precursorMass : record.setMass);
  }
  spectrum.InvalidateStatistics();
}

const TraceList* CMLDataServerImpl::LoadTraceList() {
  if (!traceList && !dataPath.empty()) traceList = ReadTraceList(dataPath);
  return traceList ? &*traceList : nullptr;
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
  return IsAbsorbanceTrace(*list, trace) ? L"PDA - Total Absorbance" : L"";
}

bool CMLDataServerImpl::GetTrace(int sample, int trace, CZRChromatogram& chromatogram) {
  const TraceList* const list = sample == 0 ? LoadTraceList() : nullptr;
  if (list == nullptr) return false;
  if (IsPosition(trace, list->names.size())) return ReadTrace(dataPath, *list, trace, chromatogram);
  return IsAbsorbanceTrace(*list, trace) && GetTotalAbsorbanceTrace(trace, chromatogram);
}

bool CMLDataServerImpl::GetTotalAbsorbanceTrace(int trace, CZRChromatogram& chromatogram) {
  LoadScanIndex(dataPath, absorbanceRecord);
  FillWithTotals(absorbanceRecord.scanIndex, chromatogram);
  chromatogram.SetName(GetTraceName(0, trace));
  return true;
}

bool CMLDataServerImpl::HasAbsorbanceData(int sample) {
  return sample == 0 && absorbanceRecord.typeCode == kDadType;
}

int CMLDataServerImpl::GetAbsorbanceScanCount(int sample) {
  if (sample != 0) return 0;
  LoadScanIndex(dataPath, absorbanceRecord);
  return static_cast<int>(absorbanceRecord.scanIndex.size());
}

bool CMLDataServerImpl::GetAbsorbanceSpectrum(int sample, int scan, CZRAbsorbanceSpectrum& spectrum) {
  if (!HasAbsorbanceData(sample) || scan < 0 || scan >= GetAbsorbanceScanCount(sample)) return false;
  const platform::File file = OpenInDirectory(dataPath, FunctionFileName(absorbanceRecord.number, L"DAT"));
  return file.IsOpen() && DecodeAbsorbanceScan(file, absorbanceRecord, scan, spectrum);
}

struct CMLDataServerImpl::MetadataItem {
  std::wstring_view key;
  // False: the item does not exist for this function.
  bool (CMLDataServerImpl::*read)(const MetadataItem& item, int function, std::wstring& value);
  std::string_view headerKey = {};
};

const CMLDataServerImpl::MetadataItem CMLDataServerImpl::kMetadata[] = {
    {L"AnalysisDateTime", &CMLDataServerImpl::ReadDateTime},
    {L"InstrumentName", &CMLDataServerImpl::ReadHeaderItem, "Instrument"},
    {L"OperatorName", &CMLDataServerImpl::ReadHeaderItem, "User Name"},
    {L"SampleName", &CMLDataServerImpl::ReadHeaderItem, "Sample Description"},
    {L"DatasetName", &CMLDataServerImpl::ReadDataPath},
    {L"ProviderName", &CMLDataServerImpl::ReadProviderName},
    {L"MethodName", &CMLDataServerImpl::ReadHeaderItem, "MS Method"},
    {L"IonizationMethod", &CMLDataServerImpl::ReadIonMode},
};

bool CMLDataServerImpl::ReadHeaderItem(const MetadataItem& item, int, std::wstring& value) {
  LookupHeaderValue(headerLines.All(), item.headerKey, value);
  return true;
}

bool CMLDataServerImpl::ReadDateTime(const MetadataItem&, int, std::wstring& value) {
  std::wstring date;
  std::wstring time;
  LookupHeaderValue(headerLines.All(), "Acquired Date", date);
  LookupHeaderValue(headerLines.All(), "Acquired Time", time);
  value = AnalysisDateTime(date, time);
  return true;
}

bool CMLDataServerImpl::ReadDataPath(const MetadataItem&, int, std::wstring& value) {
  value = dataPath;
  return true;
}

bool CMLDataServerImpl::ReadProviderName(const MetadataItem&, int, std::wstring& value) {
  value = GetProviderName();
  return true;
}

bool CMLDataServerImpl::ReadIonMode(const MetadataItem&, int function, std::wstring& value) {
  const FunctionRecord* const record = FindFunction(0, function);
  if (record != nullptr) value = IonModeText(record->ionMode);
  return record != nullptr;
}

bool CMLDataServerImpl::GetMetadataValue(int sample, int function, const std::wstring& key,
                                         std::wstring& value) {
  if (sample != 0) return false;
  const auto item = std::find_if(std::begin(kMetadata), std::end(kMetadata),
                                 [&](const MetadataItem& row) { return row.key == key; });
  value.clear();  // not before the look-up: key and value may be one string
  return item != std::end(kMetadata) && (this->*item->read)(*item, function, value);
}

bool CMLDataServerImpl::GetMetadataKeys(int sample, int, std::vector<std::wstring>& keys) {
  if (sample != 0) return false;
  keys.clear();
  for (const MetadataItem& item : kMetadata) keys.emplace_back(item.key);
  return true;
}

}  // namespace zrml
