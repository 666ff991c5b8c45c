#include "plugin/report_server.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <string_view>
#include <tuple>
#include <utility>

#include "common/platform/platform.h"
#include "common/text.h"
#include "openlynx/precursor_search.h"

namespace zrml::plugin {
namespace {

using openlynx::CountOf;

constexpr std::wstring_view kProviderItem = L"ProviderName";
constexpr std::wstring_view kFunctionTextItem = L"CompleteFunctionBlock";

template <class Item>
Item* At(std::span<Item> items, int position) {
  const bool isThere = position >= 0 && static_cast<std::size_t>(position) < items.size();
  return isThere ? &items[static_cast<std::size_t>(position)] : nullptr;
}

HostVector<double> ToHost(const std::vector<double>& values) { return {values.begin(), values.end()}; }

// Selected ions and reactions deliberately share a kind.
int ToHost(openlynx::FunctionKind kind) {
  constexpr std::array kKinds = {kAbsorbanceFunction, kMsFunction, kMsMsFunction, kIonMonitoringFunction,
                                 kIonMonitoringFunction};
  return kKinds[static_cast<std::size_t>(kind)];
}

int ToHost(openlynx::Polarity polarity) {
  constexpr std::array kPolarities = {kUnknownPolarity, kPositivePolarity, kNegativePolarity};
  return kPolarities[static_cast<std::size_t>(polarity)];
}

// MS level of a spectrum of a function of this kind.
int MsLevelOfKind(int kind) { return kind == kMsMsFunction || kind == kKind16 || kind == kKind64 ? 2 : 1; }

std::wstring NumberedName(const wchar_t* noun, int position) {
  return std::wstring(noun) + L' ' + std::to_wstring(std::int64_t{position} + 1);
}

}  // namespace

std::wstring COpenLynxRptDataServerImpl::GetProviderName() { return L"ZROpenLynxRptProvider"; }
std::wstring COpenLynxRptDataServerImpl::GetProviderGuid() {
  return L"{c1972a1b-f675-4d08-921a-3e6f8d107c76}";
}
std::wstring COpenLynxRptDataServerImpl::GetFileFilter() { return L"Waters OpenLynx Report (*.rpt)"; }
bool COpenLynxRptDataServerImpl::IsReportSource() { return true; }

bool COpenLynxRptDataServerImpl::CanOpen(const std::wstring& path) {
  return openlynx::HasReportExtension(platform::ToSystemPath(path)) && platform::IsFile(path);
}

bool COpenLynxRptDataServerImpl::ValidateSource(const std::wstring& path) {
  return CanOpen(path) && openlynx::BeginsLikeReport(platform::File::Open(path));
}

bool COpenLynxRptDataServerImpl::Open(const std::wstring& path) {
  openlynx::ReportStream opened = openlynx::ReportStream::Open(platform::ToSystemPath(path));
  if (!opened.IsOpen()) return false;
  report_.Exchange(std::move(opened)).Abandon();
  return true;
}

bool COpenLynxRptDataServerImpl::Close() {
  report_ = {};
  seen_.clear();
  points_ = {};
  return true;
}

openlynx::Sample* COpenLynxRptDataServerImpl::FindSample(int sample) { return At(report_.Samples(), sample); }

COpenLynxRptDataServerImpl::FoundSample COpenLynxRptDataServerImpl::FindIndexedSample(int sample) {
  const std::span<openlynx::Sample> samples = report_.Samples();
  FoundSample found = {At(samples, sample)};
  if (!found) return found;
  seen_.resize(samples.size());
  found.seen = &seen_[static_cast<std::size_t>(sample)];
  if (!found.seen->isIndexed) Look(*found.sample, *found.seen);
  return found;
}

// A sample with analog functions only never counts as indexed: each further look adds its traces again. Looks
// at the same bytes have the same result.
void COpenLynxRptDataServerImpl::Look(openlynx::Sample& sample, SeenSample& seen) {
  // The digest is taken before the look that it describes: a change between the two only costs another look.
  std::optional<std::uint64_t> digest;
  if (sample.areFunctionsSought) digest = report_.Stream().Digest(sample.position, seen.lookedTo);
  if (digest && digest == seen.digest) return seen.traces.AddAgain();
  report_.FindFunctionsAgain(sample);
  report_.FindAllBlocks(sample, true);
  AnalogTraces::Look look = {sample.chromatograms, {}};
  std::vector<std::size_t> functions;
  for (std::size_t i = 0; i < sample.functions.size(); ++i) {
    if (sample.functions[i].isAnalog) {
      look.runs.push_back(sample.functions[i].chromatograms);
    } else {
      functions.push_back(i);
    }
  }
  seen.traces.Add(std::move(look));
  const std::uint64_t lookedTo = sample.end + 1;
  seen.digest = lookedTo == seen.lookedTo ? digest : std::nullopt;
  seen.lookedTo = lookedTo;
  seen.isIndexed = !functions.empty();
  seen.functions = std::move(functions);
}

COpenLynxRptDataServerImpl::FoundFunction COpenLynxRptDataServerImpl::FindFunction(int sample, int function) {
  const FoundSample found = FindIndexedSample(sample);
  const std::size_t* const number = found ? At(std::span(found.seen->functions), function) : nullptr;
  if (number == nullptr) return {};
  return {found.sample, &found.sample->functions[*number]};
}

std::optional<std::span<const std::uint64_t>> COpenLynxRptDataServerImpl::FindSpectra(int sample,
                                                                                      int function) {
  const FoundFunction found = FindFunction(sample, function);
  if (!found) return std::nullopt;
  return report_.SpectraOf(*found.sample, *found.function);
}

std::optional<std::span<const std::uint64_t>> COpenLynxRptDataServerImpl::FindChromatograms(int sample,
                                                                                            int function) {
  const FoundFunction found = FindFunction(sample, function);
  if (!found) return std::nullopt;
  return report_.ChromatogramsOf(*found.sample, *found.function);
}

int COpenLynxRptDataServerImpl::GetSampleCount() { return CountOf(report_.Samples().size()); }

int COpenLynxRptDataServerImpl::GetFileSampleCount(const std::wstring& path) {
  openlynx::ReportStream file =
      openlynx::ReportStream::Open(platform::ToSystemPath(path), openlynx::ReportStream::Mode::kText);
  std::size_t count = 0;
  std::string_view line;
  while (file.IsOpen() && file.Find(openlynx::report_format::kSample) && file.Next(line)) ++count;
  file.Abandon();
  return CountOf(count);
}

std::wstring COpenLynxRptDataServerImpl::GetSampleName(int sample) {
  const openlynx::Sample* const found = FindSample(sample);
  if (found == nullptr) return {};
  const std::wstring name = report_.NameOf(*found);
  return !name.empty() ? name : NumberedName(L"Sample", sample);
}

int COpenLynxRptDataServerImpl::GetFunctionCount(int sample) {
  const FoundSample found = FindIndexedSample(sample);
  if (!found) return 0;
  std::vector<std::size_t>& functions = found.seen->functions;
  if (!found.seen->isPruned && !functions.empty()) {
    report_.FindAllBlocks(*found.sample, false);
    std::erase_if(functions, [&](std::size_t i) { return !found.sample->functions[i].HasBlocks(); });
    found.seen->isPruned = true;
  }
  return CountOf(functions.size());
}

std::wstring COpenLynxRptDataServerImpl::GetFunctionName(int sample, int function) {
  const FoundFunction found = FindFunction(sample, function);
  if (!found) return {};
  const std::wstring name = report_.NameOf(*found.sample, *found.function);
  return !name.empty() ? name : NumberedName(L"Function", function);
}

int COpenLynxRptDataServerImpl::GetFunctionKind(int sample, int function) {
  const FoundFunction found = FindFunction(sample, function);
  return found ? ToHost(report_.KindOf(*found.sample, *found.function)) : kAbsorbanceFunction;
}

int COpenLynxRptDataServerImpl::GetPolarity(int sample, int function) {
  const FoundFunction found = FindFunction(sample, function);
  return found ? ToHost(report_.PolarityOf(*found.sample, *found.function)) : kUnknownPolarity;
}

int COpenLynxRptDataServerImpl::GetScanCount(int sample, int function) {
  const auto spectra = FindSpectra(sample, function);
  return spectra ? CountOf(spectra->size()) : 0;
}

bool COpenLynxRptDataServerImpl::FillChromatogram(int sample, int function,
                                                  std::vector<double> openlynx::ScanSeries::*series,
                                                  CZRChromatogram& chromatogram) {
  const auto spectra = FindSpectra(sample, function);
  if (!spectra) return false;
  const openlynx::ScanSeries scans = report_.ReadSeries(*spectra, 0);
  chromatogram.SetSize(CountOf(scans.minutes.size()));
  chromatogram.AssignTimes(ToHost(scans.minutes));
  chromatogram.AssignIntensities(ToHost(scans.*series));
  return true;
}

bool COpenLynxRptDataServerImpl::GetBasePeakChromatogram(bool allowCompute, int sample, int function,
                                                         CZRChromatogram& chromatogram) {
  return FillChromatogram(sample, function, &openlynx::ScanSeries::basePeaks, chromatogram) ||
         GetMassRangeBasePeakChromatogram(-DBL_MAX, DBL_MAX, allowCompute, sample, function, chromatogram);
}

bool COpenLynxRptDataServerImpl::GetTotalIonChromatogram(bool allowCompute, int sample, int function,
                                                         CZRChromatogram& chromatogram) {
  return FillChromatogram(sample, function, &openlynx::ScanSeries::totalIons, chromatogram) ||
         GetMassRangeChromatogram(-DBL_MAX, DBL_MAX, allowCompute, sample, function, chromatogram);
}

bool COpenLynxRptDataServerImpl::GetRetentionTimes(int sample, int function, HostVector<double>& times) {
  const auto spectra = FindSpectra(sample, function);
  if (!spectra) return false;
  times = ToHost(report_.ReadSeries(*spectra, 0).minutes);
  return true;
}

bool COpenLynxRptDataServerImpl::GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) {
  const auto spectra = FindSpectra(sample, function);
  const std::uint64_t* const position = spectra ? At(*spectra, scan) : nullptr;
  if (position == nullptr) return false;
  const openlynx::SpectrumHead head = report_.ReadSpectrumHead(*position);
  points_ = report_.ReadPoints(head);
  const std::vector<double>& masses = points_.x;
  const std::vector<double>& intensities = points_.intensities;
  if (masses.empty()) return false;
  const int kind = GetFunctionKind(sample, function);
  const bool isNegative = GetPolarity(sample, function) == kNegativePolarity;
  spectrum.SetSize(CountOf(masses.size()));
  spectrum.MassVector().assign(masses.begin(), masses.end());
  spectrum.IntensityVector().assign(intensities.begin(), intensities.end());
  spectrum.SetStartTime(head.minutes.value_or(0));
  spectrum.SetEndTime(head.minutes.value_or(0));
  // Deliberately 16 bits: hosts show scan 32768 as -32768.
  const auto scanNumber = static_cast<std::int16_t>(std::int64_t{scan} + 1);
  spectrum.SetFirstScan(scanNumber);
  spectrum.SetLastScan(scanNumber);
  spectrum.SetCentroided(head.isCentroided);
  spectrum.SetScanType(kind);
  spectrum.SetMSLevel(static_cast<short>(MsLevelOfKind(kind)));
  spectrum.SetPolarity(isNegative ? kNegativePolarity : kPositivePolarity);
  spectrum.InvalidateStatistics();
  points_ = {};
  return true;
}

std::wstring COpenLynxRptDataServerImpl::TraceNameAt(std::uint64_t position, const wchar_t* noun, int trace) {
  const std::wstring name = report_.TraceNames(std::span(&position, 1)).front();
  return !name.empty() ? name : NumberedName(noun, trace);
}

bool COpenLynxRptDataServerImpl::ReadTraceAt(std::uint64_t position, CZRChromatogram& chromatogram) {
  const openlynx::Trace trace = report_.ReadTrace(position);
  if (trace.points.x.empty()) return false;
  chromatogram.SetName(trace.description);
  chromatogram.SetSize(CountOf(trace.points.x.size()));
  chromatogram.AssignTimes(ToHost(trace.points.x));
  chromatogram.AssignIntensities(ToHost(trace.points.intensities));
  return true;
}

std::optional<std::uint64_t> COpenLynxRptDataServerImpl::FindAnalogTrace(int sample, int trace) {
  const FoundSample found = FindIndexedSample(sample);
  if (!found || trace < 0) return std::nullopt;
  return found.seen->traces.Position(static_cast<std::size_t>(trace));
}

int COpenLynxRptDataServerImpl::GetTraceCount(int sample) {
  const FoundSample found = FindIndexedSample(sample);
  return found ? CountOf(found.seen->traces.Count()) : 0;
}

std::wstring COpenLynxRptDataServerImpl::GetTraceName(int sample, int trace) {
  const std::optional<std::uint64_t> position = FindAnalogTrace(sample, trace);
  return position ? TraceNameAt(*position, L"Analog Trace", trace) : std::wstring();
}

bool COpenLynxRptDataServerImpl::GetTrace(int sample, int trace, CZRChromatogram& chromatogram) {
  const std::optional<std::uint64_t> position = FindAnalogTrace(sample, trace);
  return position && ReadTraceAt(*position, chromatogram);
}

int COpenLynxRptDataServerImpl::GetFunctionTraceCount(int sample, int function) {
  const auto traces = FindChromatograms(sample, function);
  return traces ? CountOf(traces->size()) : 0;
}

std::wstring COpenLynxRptDataServerImpl::GetFunctionTraceName(int sample, int function, int trace) {
  const auto traces = FindChromatograms(sample, function);
  const std::uint64_t* const position = traces ? At(*traces, trace) : nullptr;
  return position != nullptr ? TraceNameAt(*position, L"Function Trace", trace) : std::wstring();
}

bool COpenLynxRptDataServerImpl::GetFunctionTrace(int sample, int function, int trace,
                                                  CZRChromatogram& chromatogram) {
  const auto traces = FindChromatograms(sample, function);
  if (!traces) return false;
  const std::uint64_t* const position = At(*traces, trace);
  return position == nullptr || ReadTraceAt(*position, chromatogram);
}

bool COpenLynxRptDataServerImpl::ReadFunctionText(int sample, int function, std::wstring& value) {
  const FoundFunction found = FindFunction(sample, function);
  std::optional<std::wstring> text;
  if (found) text = report_.ReadText(*found.function);
  if (text) value = std::move(*text);
  return text.has_value();
}

bool COpenLynxRptDataServerImpl::GetMetadataValue(int sample, int function, const std::wstring& key,
                                                  std::wstring& value) {
  constexpr const auto& kItems = openlynx::kSampleItems;
  const auto item = std::find_if(kItems.begin(), kItems.end(),
                                 [&](const openlynx::SampleItem& each) { return Widen(each.name) == key; });
  const bool isProvider = key == kProviderItem;
  const bool isFunctionText = key == kFunctionTextItem;
  value.clear();  // not before: key and value may be the same string
  if (isFunctionText) return ReadFunctionText(sample, function, value);
  if (!isProvider && item == kItems.end()) return false;
  const openlynx::Sample* const found = FindSample(sample);
  if (found == nullptr) return false;
  value = isProvider ? GetProviderName() : report_.ReadItems(*found, std::span(item, 1)).front();
  return true;
}

bool COpenLynxRptDataServerImpl::GetMetadataKeys(int sample, int function, std::vector<std::wstring>& keys) {
  if (!FindFunction(sample, function)) return false;
  keys = {std::wstring(kProviderItem)};
  for (const openlynx::SampleItem& item : openlynx::kSampleItems) keys.push_back(Widen(item.name));
  keys.emplace_back(kFunctionTextItem);
  return true;
}

// No kind of function in reports has precursors of its own level, so only spectra of level 2 have precursors.
bool COpenLynxRptDataServerImpl::FindPrecursorScan(int sample, int function, int scan, int& precursorFunction,
                                                   int& precursorScan) {
  if (GetSampleCount() <= 0 || GetFunctionCount(sample) <= 0) return false;
  const auto spectra = FindSpectra(sample, function);
  if (!spectra || scan < 0 || scan >= CountOf(spectra->size())) return false;
  const FoundSample found = FindIndexedSample(sample);
  const auto precursor = openlynx::FindPrecursor(report_, *found.sample, found.seen->functions, function,
                                                 (*spectra)[static_cast<std::size_t>(scan)], 0);
  if (!precursor) return false;
  std::tie(precursorFunction, precursorScan) = *precursor;
  return true;
}

}  // namespace zrml::plugin
