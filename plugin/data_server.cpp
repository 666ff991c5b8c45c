#include "plugin/data_server.h"

#include <cfloat>
#include <cstdint>
#include <optional>

namespace zrml {
namespace {

bool IsSameLevelKind(int kind) { return kind == kKind8 || kind == kKind16; }

}  // namespace

CDataServerImpl::~CDataServerImpl() = default;

bool CDataServerImpl::CanOpen(const std::wstring& path) { return ValidateSource(path); }
int CDataServerImpl::GetSampleCount() { return 1; }
int CDataServerImpl::GetFileSampleCount(const std::wstring&) { return 1; }
std::wstring CDataServerImpl::GetSampleName(int) { return L"Injection 1"; }
int CDataServerImpl::GetFunctionCount(int) { return 1; }

std::wstring CDataServerImpl::GetFunctionName(int, int function) {
  return L"Function " + std::to_wstring(std::int64_t{function} + 1);
}

int CDataServerImpl::GetFunctionKind(int, int) { return kAbsorbanceFunction; }
int CDataServerImpl::GetMSMSScanType(int, int) { return kNoMsMsScan; }
int CDataServerImpl::GetPolarity(int, int) { return kUnknownPolarity; }

int CDataServerImpl::GetMSLevel(int sample, int function) {
  const int kind = GetFunctionKind(sample, function);
  return kind == kMsMsFunction || kind == kKind16 ? 2 : 1;
}

int CDataServerImpl::GetDimensionCount(int sample, int function) {
  const int scanDimensions = HasMobility(sample, function) ? GetScanDimensionCount(sample, function) : 1;
  return scanDimensions + (GetScanCount(sample, function) > 1 ? 1 : 0);
}

bool CDataServerImpl::IsCentroided(int sample, int function) {
  CZRMassSpectrum spectrum;
  return GetSpectrum(sample, function, 0, spectrum) && spectrum.IsCentroided();
}

bool CDataServerImpl::HasMobility(int, int) { return false; }
int CDataServerImpl::GetScanDimensionCount(int, int) { return 0; }
int CDataServerImpl::GetMobilityBinCount(int, int) { return 0; }

bool CDataServerImpl::GetBasePeakChromatogram(bool allowCompute, int sample, int function,
                                              CZRChromatogram& chromatogram) {
  return GetMassRangeBasePeakChromatogram(-DBL_MAX, DBL_MAX, allowCompute, sample, function, chromatogram);
}

bool CDataServerImpl::GetTotalIonChromatogram(bool allowCompute, int sample, int function,
                                              CZRChromatogram& chromatogram) {
  return GetMassRangeChromatogram(-DBL_MAX, DBL_MAX, allowCompute, sample, function, chromatogram);
}

namespace {

// One point per scan: its start time and the `intensity` of its spectrum. False at the first scan that fails.
template <class Intensity>
bool ComputeChromatogram(CDataServerImpl& server, int sample, int function, int count,
                         CZRChromatogram& chromatogram, Intensity intensity) {
  CZRMassSpectrum spectrum;
  for (int i = 0; i < count; ++i) {
    if (!server.GetSpectrum(sample, function, i, spectrum)) return false;
    chromatogram.SetTime(i, spectrum.GetStartTime());
    chromatogram.SetIntensity(i, intensity(spectrum));
  }
  return true;
}

}  // namespace

bool CDataServerImpl::GetMassRangeBasePeakChromatogram(double low, double high, bool allowCompute, int sample,
                                                       int function, CZRChromatogram& chromatogram) {
  if (!allowCompute) return false;
  const int count = GetScanCount(sample, function);
  chromatogram.SetSize(count);
  chromatogram.SetName(L"BPC");
  return ComputeChromatogram(
      *this, sample, function, count, chromatogram,
      [=](const CZRMassSpectrum& spectrum) { return spectrum.GetMaxIntensityInRange(low, high); });
}

// Deliberately sets no name, unlike the base peak chromatogram.
bool CDataServerImpl::GetMassRangeChromatogram(double low, double high, bool allowCompute, int sample,
                                               int function, CZRChromatogram& chromatogram) {
  if (!allowCompute) return false;
  const int count = GetScanCount(sample, function);
  chromatogram.SetSize(count);
  return ComputeChromatogram(
      *this, sample, function, count, chromatogram,
      [=](const CZRMassSpectrum& spectrum) { return spectrum.GetIntensitySumInRange(low, high); });
}

bool CDataServerImpl::GetRetentionTimes(int sample, int function, HostVector<double>& times) {
  const int count = GetScanCount(sample, function);
  times.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  CZRMassSpectrum spectrum;
  for (int i = 0; i < count; ++i) {
    if (!GetSpectrum(sample, function, i, spectrum)) return false;
    times[static_cast<std::size_t>(i)] = spectrum.GetStartTime();
  }
  return true;
}

bool CDataServerImpl::GetScanRetentionTime(int sample, int function, int scan, double& minutes) {
  CZRMassSpectrum spectrum;
  if (!GetSpectrum(sample, function, scan, spectrum)) return false;
  minutes = spectrum.GetStartTime();
  return true;
}

bool CDataServerImpl::GetFunctionMassRange(int, int, double&, double&) { return false; }

bool CDataServerImpl::GetScanMassRange(int sample, int function, int scan, double& low, double& high) {
  CZRMassSpectrum spectrum;
  return GetSpectrum(sample, function, scan, spectrum) && spectrum.GetMassRange(low, high);
}

bool CDataServerImpl::GetScanMobilityRange(int sample, int function, int scan, double& low, double& high) {
  if (!HasMobility(sample, function)) return false;
  HostVector<double> axis;
  if (!GetMobilityAxis(sample, function, scan, axis) || axis.empty()) return false;
  low = axis.front();
  high = axis.back();
  return true;
}

bool CDataServerImpl::GetScanIntensityRange(int sample, int function, int scan, double& min, double& max) {
  CZRMassSpectrum spectrum;
  if (!HasMobility(sample, function)) {
    if (!GetSpectrum(sample, function, scan, spectrum)) return false;
    min = spectrum.GetMinIntensity();
    max = spectrum.GetBasePeakIntensity();
    return true;
  }
  const int bins = GetMobilityBinCount(sample, function);
  double smallest = 0;
  double largest = 0;
  for (int bin = 0; bin < bins; ++bin) {
    if (!GetMobilitySpectrum(sample, function, scan, bin, spectrum)) return false;
    const double binSmallest = spectrum.GetMinIntensity();
    const double binLargest = spectrum.GetBasePeakIntensity();
    if (bin == 0 || binSmallest < smallest) smallest = binSmallest;
    if (bin == 0 || binLargest > largest) largest = binLargest;
  }
  min = smallest;
  max = largest;
  return true;
}

bool CDataServerImpl::GetMobilityAxis(int, int, int, HostVector<double>&) { return false; }
bool CDataServerImpl::GetMobilitySpectrum(int, int, int, int, CZRMassSpectrum&) { return false; }

bool CDataServerImpl::GetMobilitySpectra(int sample, int function, int scan, int firstBin, int lastBin,
                                         HostVector<CZRMassSpectrum>& spectra) {
  if (lastBin < firstBin) return false;
  spectra.resize(static_cast<std::size_t>(std::int64_t{lastBin} - firstBin + 1));
  int bin = firstBin;
  for (CZRMassSpectrum& spectrum : spectra) {
    if (!GetMobilitySpectrum(sample, function, scan, bin, spectrum)) return false;
    if (bin < lastBin) ++bin;
  }
  return true;
}

int CDataServerImpl::GetTraceCount(int) { return 0; }
std::wstring CDataServerImpl::GetTraceName(int, int trace) {
  return L"Trace " + std::to_wstring(std::int64_t{trace} + 1);
}
bool CDataServerImpl::GetTrace(int, int, CZRChromatogram&) { return false; }
int CDataServerImpl::GetFunctionTraceCount(int, int) { return 0; }

// Deliberate: the trace name at the function's index is used for every trace of the function.
std::wstring CDataServerImpl::GetFunctionTraceName(int sample, int function, int) {
  return GetFunctionName(sample, function) + L", " + GetTraceName(sample, function);
}

bool CDataServerImpl::GetFunctionTrace(int, int, int, CZRChromatogram&) { return false; }
bool CDataServerImpl::HasAbsorbanceData(int) { return false; }
int CDataServerImpl::GetAbsorbanceScanCount(int) { return 0; }
bool CDataServerImpl::GetAbsorbanceSpectrum(int, int, CZRAbsorbanceSpectrum&) { return false; }
bool CDataServerImpl::GetMetadataValue(int, int, const std::wstring&, std::wstring&) { return false; }

bool CDataServerImpl::GetMetadataKeys(int, int, std::vector<std::wstring>& keys) {
  keys.clear();
  return false;
}

std::wstring CDataServerImpl::GetFileFilter() { return {}; }
bool CDataServerImpl::OpenFileInSet(const std::wstring& path, const std::wstring&) { return Open(path); }
bool CDataServerImpl::IsReportSource() { return false; }

namespace {

// The best scan so far among functions that could hold the precursor.
struct PrecursorSearch {
  double distance = DBL_MAX;
  int function = 0;
  int scan = 0;
};

}  // namespace

bool CDataServerImpl::FindPrecursorScan(int sample, int function, int scan, int& precursorFunction,
                                        int& precursorScan) {
  const auto inRange = [](int position, int count) { return position >= 0 && position < count; };
  if (!inRange(sample, GetSampleCount()) || !inRange(function, GetFunctionCount(sample)) ||
      !inRange(scan, GetScanCount(sample, function))) {
    return false;
  }
  const int level = GetMSLevel(sample, function);
  if (level < 1) return false;
  HostVector<double> times;
  if (!GetRetentionTimes(sample, function, times) || static_cast<std::size_t>(scan) >= times.size())
    return false;
  const double time = times[static_cast<std::size_t>(scan)];
  const bool centroided = IsCentroided(sample, function);
  const int polarity = GetPolarity(sample, function);
  const int wantedLevel = IsSameLevelKind(GetFunctionKind(sample, function)) ? level : level - 1;

  PrecursorSearch best;
  const int functionCount = GetFunctionCount(sample);
  for (int f = 0; f < functionCount; ++f) {
    if (f == function || IsSameLevelKind(GetFunctionKind(sample, f)) || GetMSLevel(sample, f) != wantedLevel)
      continue;
    times.clear();
    GetRetentionTimes(sample, f, times);  // deliberately: unreadable times count as 0
    if (times.empty()) return false;
    std::optional<bool> isSameKind;  // determined once, and only when two scans are equally close
    for (std::size_t j = 0; j < times.size(); ++j) {
      const double distance = time - times[j];
      if (!(distance >= 0)) continue;
      if (distance == best.distance && !isSameKind) {
        isSameKind = IsCentroided(sample, f) == centroided && GetPolarity(sample, f) == polarity;
      }
      if (distance < best.distance || (distance == best.distance && *isSameKind)) {
        best = {distance, f, static_cast<int>(j)};
      }
    }
  }
  if (best.distance == DBL_MAX) return false;
  precursorFunction = best.function;
  precursorScan = best.scan;
  return true;
}

}  // namespace zrml
