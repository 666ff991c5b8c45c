#include "openlynx/openlynx_data_server.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <iterator>
#include <limits>
#include <tuple>
#include <utility>

#include "common/platform/platform.h"
#include "common/text.h"
#include "common/text_file.h"
#include "openlynx/report_block.h"

namespace zrml {
namespace {

using namespace report_format;

constexpr std::wstring_view kExtension = L".rpt";

// ValidateSource looks at so many lines, through a line buffer of its own size.
constexpr int kValidatedLines = 10;
constexpr std::size_t kValidatedLineBuffer = 999;

// A function's text of more characters is not handed out.
constexpr std::size_t kLargestFunctionText = 10'000'000;
// Bytes that one character may take in a code page, UTF-8 being the longest.
constexpr std::size_t kBytesPerCharacter = 4;

int CountOf(std::size_t size) {
  return static_cast<int>(std::min<std::size_t>(size, std::numeric_limits<int>::max()));
}

template <class Item>
Item* At(std::vector<Item>& items, int position) {
  const bool isThere = position >= 0 && static_cast<std::size_t>(position) < items.size();
  return isThere ? &items[static_cast<std::size_t>(position)] : nullptr;
}

// The item at a position of a run of a list.
const std::uint64_t* At(const std::vector<std::uint64_t>& list, const Run& run, int position) {
  const bool isThere = position >= 0 && static_cast<std::size_t>(position) < run.Size();
  return isThere ? &list[run.first + static_cast<std::size_t>(position)] : nullptr;
}

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
  if (path.size() < kExtension.size()) return false;
  const std::wstring extension = ToLower(std::wstring_view(path).substr(path.size() - kExtension.size()));
  return extension == kExtension && platform::IsFile(path);
}

bool COpenLynxRptDataServerImpl::ValidateSource(const std::wstring& path) {
  if (!CanOpen(path)) return false;
  // Twice the buffers: CR LF is two bytes of the file and one of the buffer.
  const std::wstring text = ReadText(platform::File::Open(path), kValidatedLineBuffer * 2 * kValidatedLines);
  LineReader reader(text, kValidatedLineBuffer);
  const std::wstring marker = Widen(kSample);
  std::wstring_view line;
  for (int i = 0; i < kValidatedLines && reader.Next(line); ++i) {
    if (line.find(marker) != std::wstring_view::npos) return true;
  }
  return false;
}

bool COpenLynxRptDataServerImpl::Open(const std::wstring& path) {
  ReportStream opened = ReportStream::Open(path);
  if (!opened.IsOpen()) return false;
  stream.Abandon();
  stream = std::move(opened);
  for (ReportSampleRecord& sample : samples) sample.Forget();
  return true;
}

bool COpenLynxRptDataServerImpl::Close() {
  stream.Close();
  samples.clear();
  spectrumRead = {};
  return true;
}

void COpenLynxRptDataServerImpl::IndexSamples() {
  if (stream.IsOpen() && samples.empty()) samples = FindSamples(stream);
}

ReportSampleRecord* COpenLynxRptDataServerImpl::FindSample(int sample) {
  IndexSamples();
  return stream.IsOpen() ? At(samples, sample) : nullptr;
}

ReportSampleRecord* COpenLynxRptDataServerImpl::FindIndexedSample(int sample) {
  ReportSampleRecord* const record = FindSample(sample);
  if (record != nullptr && !record->functionsIndexed) IndexFunctions(stream, *record);
  return record;
}

ReportFunctionRecord* COpenLynxRptDataServerImpl::FindFunction(int sample, int function) {
  ReportSampleRecord* const record = FindIndexedSample(sample);
  return record != nullptr ? At(record->functions, function) : nullptr;
}

ReportFunctionRecord* COpenLynxRptDataServerImpl::FindIndexedFunction(int sample, int function) {
  ReportFunctionRecord* const record = FindFunction(sample, function);
  if (record != nullptr) IndexBlocks(stream, *FindSample(sample), *record);
  return record;
}

int COpenLynxRptDataServerImpl::GetSampleCount() {
  IndexSamples();
  return stream.IsOpen() ? CountOf(samples.size()) : 0;
}

int COpenLynxRptDataServerImpl::GetFileSampleCount(const std::wstring& path) {
  ReportStream file = ReportStream::Open(path, ReportStream::Mode::kText);
  std::size_t count = 0;
  std::string_view line;
  while (file.IsOpen() && file.Find(kSample) && file.Next(line)) ++count;
  file.Abandon();
  return CountOf(count);
}

std::wstring COpenLynxRptDataServerImpl::GetSampleName(int sample) {
  const ReportSampleRecord* const record = FindSample(sample);
  if (record == nullptr) return {};
  const std::wstring fileName = TextOfKey(stream, record->position, kFileNameKey);
  return !fileName.empty() ? fileName : NumberedName(L"Sample", sample);
}

int COpenLynxRptDataServerImpl::GetFunctionCount(int sample) {
  ReportSampleRecord* const record = FindIndexedSample(sample);
  if (record == nullptr) return 0;
  IndexAllBlocks(stream, *record);
  std::erase_if(record->functions, [](const ReportFunctionRecord& entry) { return !entry.blocksIndexed; });
  return CountOf(record->functions.size());
}

std::wstring COpenLynxRptDataServerImpl::GetFunctionName(int sample, int function) {
  ReportFunctionRecord* const record = FindFunction(sample, function);
  if (record == nullptr) return {};
  const std::wstring name = NameOf(stream, *FindSample(sample), *record);
  return !name.empty() ? name : NumberedName(L"Function", function);
}

int COpenLynxRptDataServerImpl::GetFunctionKind(int sample, int function) {
  const ReportFunctionRecord* const record = FindFunction(sample, function);
  return KindOfType(record != nullptr ? TypeOf(stream, *FindSample(sample), *record) : std::string_view());
}

int COpenLynxRptDataServerImpl::GetPolarity(int sample, int function) {
  const ReportFunctionRecord* const record = FindFunction(sample, function);
  if (record == nullptr) return kUnknownPolarity;
  return PolarityOfIonMode(IonModeOf(stream, *FindSample(sample), *record));
}

int COpenLynxRptDataServerImpl::GetScanCount(int sample, int function) {
  const ReportFunctionRecord* const record = FindIndexedFunction(sample, function);
  return record != nullptr ? CountOf(record->spectra.Size()) : 0;
}

bool COpenLynxRptDataServerImpl::FillChromatogram(int sample, int function,
                                                  HostVector<double> ScanTimeSeries::*series,
                                                  CZRChromatogram& chromatogram) {
  const ReportFunctionRecord* const record = FindIndexedFunction(sample, function);
  if (record == nullptr) return false;
  const ScanTimeSeries scanTimes = ReadScanTimes(stream, FindSample(sample)->SpectraOf(*record));
  chromatogram.SetSize(CountOf(scanTimes.times.size()));
  chromatogram.AssignTimes(scanTimes.times);
  chromatogram.AssignIntensities(scanTimes.*series);
  return true;
}

bool COpenLynxRptDataServerImpl::GetBasePeakChromatogram(bool allowCompute, int sample, int function,
                                                         CZRChromatogram& chromatogram) {
  return FillChromatogram(sample, function, &ScanTimeSeries::bpi, chromatogram) ||
         GetMassRangeBasePeakChromatogram(-DBL_MAX, DBL_MAX, allowCompute, sample, function, chromatogram);
}

bool COpenLynxRptDataServerImpl::GetTotalIonChromatogram(bool allowCompute, int sample, int function,
                                                         CZRChromatogram& chromatogram) {
  return FillChromatogram(sample, function, &ScanTimeSeries::tic, chromatogram) ||
         GetMassRangeChromatogram(-DBL_MAX, DBL_MAX, allowCompute, sample, function, chromatogram);
}

bool COpenLynxRptDataServerImpl::GetRetentionTimes(int sample, int function, HostVector<double>& times) {
  const ReportFunctionRecord* const record = FindIndexedFunction(sample, function);
  if (record == nullptr) return false;
  times = ReadScanTimes(stream, FindSample(sample)->SpectraOf(*record)).times;
  return true;
}

bool COpenLynxRptDataServerImpl::GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) {
  const ReportFunctionRecord* const record = FindIndexedFunction(sample, function);
  if (record == nullptr) return false;
  const std::uint64_t* const position = At(FindSample(sample)->spectra, record->spectra, scan);
  if (position == nullptr) return false;
  spectrumRead = ReadSpectrum(stream, *position);
  if (spectrumRead.points.x.empty()) return false;
  const int kind = GetFunctionKind(sample, function);
  const bool isNegative = GetPolarity(sample, function) == kNegativePolarity;
  spectrum.SetSize(CountOf(spectrumRead.points.x.size()));
  spectrum.AssignMasses(spectrumRead.points.x);
  spectrum.AssignIntensities(spectrumRead.points.intensities);
  spectrum.SetStartTime(spectrumRead.minutes);
  spectrum.SetEndTime(spectrumRead.minutes);
  // Deliberately 16 bits: hosts show scan 32768 as -32768.
  const auto scanNumber = static_cast<std::int16_t>(std::int64_t{scan} + 1);
  spectrum.SetFirstScan(scanNumber);
  spectrum.SetLastScan(scanNumber);
  spectrum.SetCentroided(spectrumRead.isCentroided);
  spectrum.SetScanType(kind);
  spectrum.SetMSLevel(static_cast<short>(MsLevelOfKind(kind)));
  spectrum.SetPolarity(isNegative ? kNegativePolarity : kPositivePolarity);
  spectrum.InvalidateStatistics();
  spectrumRead = {};
  return true;
}

std::wstring COpenLynxRptDataServerImpl::TraceNameAt(std::uint64_t position, const wchar_t* noun, int trace) {
  const std::wstring description = TextOfKey(stream, position, kDescriptionKey);
  return !description.empty() ? description : NumberedName(noun, trace);
}

bool COpenLynxRptDataServerImpl::ReadTraceAt(std::uint64_t position, CZRChromatogram& chromatogram) {
  const ReportTrace trace = ReadTrace(stream, position);
  if (trace.points.x.empty()) return false;
  chromatogram.SetName(trace.description);
  chromatogram.SetSize(CountOf(trace.points.x.size()));
  chromatogram.AssignTimes(trace.points.x);
  chromatogram.AssignIntensities(trace.points.intensities);
  return true;
}

std::optional<std::uint64_t> COpenLynxRptDataServerImpl::FindAnalogTrace(int sample, int trace) {
  const ReportSampleRecord* const record = FindIndexedSample(sample);
  if (record == nullptr || trace < 0) return std::nullopt;
  return record->analogTraces.Position(static_cast<std::size_t>(trace));
}

int COpenLynxRptDataServerImpl::GetTraceCount(int sample) {
  const ReportSampleRecord* const record = FindIndexedSample(sample);
  return record != nullptr ? CountOf(record->analogTraces.Count()) : 0;
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
  const ReportFunctionRecord* const record = FindIndexedFunction(sample, function);
  return record != nullptr ? CountOf(record->chromatograms.Size()) : 0;
}

std::wstring COpenLynxRptDataServerImpl::GetFunctionTraceName(int sample, int function, int trace) {
  const ReportFunctionRecord* const record = FindIndexedFunction(sample, function);
  if (record == nullptr) return {};
  const std::uint64_t* const position = At(FindSample(sample)->chromatograms, record->chromatograms, trace);
  return position != nullptr ? TraceNameAt(*position, L"Function Trace", trace) : std::wstring();
}

bool COpenLynxRptDataServerImpl::GetFunctionTrace(int sample, int function, int trace,
                                                  CZRChromatogram& chromatogram) {
  const ReportFunctionRecord* const record = FindIndexedFunction(sample, function);
  if (record == nullptr) return false;
  const std::uint64_t* const position = At(FindSample(sample)->chromatograms, record->chromatograms, trace);
  return position == nullptr || ReadTraceAt(*position, chromatogram);
}

struct COpenLynxRptDataServerImpl::MetadataItem {
  std::wstring_view key;
  // False: the item does not exist for this sample and function.
  bool (COpenLynxRptDataServerImpl::*read)(const MetadataItem& item, int sample, int function,
                                           std::wstring& value);
  std::string_view sampleKey = {};
};

const COpenLynxRptDataServerImpl::MetadataItem COpenLynxRptDataServerImpl::kMetadata[] = {
    {L"ProviderName", &COpenLynxRptDataServerImpl::ReadProviderName},
    {L"OperatorName", &COpenLynxRptDataServerImpl::ReadSampleItem, kUserNameKey},
    {L"SampleName", &COpenLynxRptDataServerImpl::ReadSampleItem, kSampleIdKey},
    {L"AnalysisDateTime", &COpenLynxRptDataServerImpl::ReadDateTime},
    {L"InstrumentDescription", &COpenLynxRptDataServerImpl::ReadSampleItem, kInstrumentKey},
    {L"CompleteFunctionBlock", &COpenLynxRptDataServerImpl::ReadFunctionBlock},
};

bool COpenLynxRptDataServerImpl::ReadProviderName(const MetadataItem&, int sample, int, std::wstring& value) {
  if (FindSample(sample) == nullptr) return false;
  value = GetProviderName();
  return true;
}

bool COpenLynxRptDataServerImpl::ReadSampleItem(const MetadataItem& item, int sample, int,
                                                std::wstring& value) {
  const ReportSampleRecord* const record = FindSample(sample);
  if (record == nullptr) return false;
  value = TextOfKey(stream, record->position, item.sampleKey);
  return true;
}

// Joined as they stand; the zone is always +00:00, whatever the local time was.
bool COpenLynxRptDataServerImpl::ReadDateTime(const MetadataItem&, int sample, int, std::wstring& value) {
  const ReportSampleRecord* const record = FindSample(sample);
  if (record == nullptr) return false;
  std::array<KeyValue, 2> keys = {{{kDateKey}, {kTimeKey}}};
  ReadKeys(stream, record->position, keys);
  value = platform::FromCodePage(keys[0].value) + L"T" + platform::FromCodePage(keys[1].value) + L"+00:00";
  return true;
}

bool COpenLynxRptDataServerImpl::ReadFunctionBlock(const MetadataItem&, int sample, int function,
                                                   std::wstring& value) {
  const ReportFunctionRecord* const record = FindFunction(sample, function);
  if (record == nullptr) return false;
  value = platform::FromCodePage(
      ReadBlockText(stream, record->position, kLargestFunctionText * kBytesPerCharacter));
  if (value.size() <= kLargestFunctionText) return true;
  value.clear();
  return false;
}

bool COpenLynxRptDataServerImpl::GetMetadataValue(int sample, int function, const std::wstring& key,
                                                  std::wstring& value) {
  const auto item = std::find_if(std::begin(kMetadata), std::end(kMetadata),
                                 [&](const MetadataItem& row) { return row.key == key; });
  value.clear();  // not before the look-up: key and value may be one string
  return item != std::end(kMetadata) && (this->*item->read)(*item, sample, function, value);
}

bool COpenLynxRptDataServerImpl::GetMetadataKeys(int sample, int function, std::vector<std::wstring>& keys) {
  if (FindFunction(sample, function) == nullptr) return false;
  keys.clear();
  for (const MetadataItem& item : kMetadata) keys.emplace_back(item.key);
  return true;
}

std::optional<std::vector<PrecursorCandidate>> COpenLynxRptDataServerImpl::FindPrecursorCandidates(
    int sample) {
  ReportSampleRecord& record = *FindSample(sample);
  std::vector<PrecursorCandidate> candidates;
  TextNumber lastType = kUnreadText;  // functions that lie in each other share a type: told once
  bool isSecondLevel = false;
  for (std::size_t i = 0; i < record.functions.size(); ++i) {
    const ReportFunctionRecord& function = record.functions[i];
    const std::string_view type = TypeOf(stream, record, function);
    if (function.type != lastType) isSecondLevel = KindOfType(type) == kMsMsFunction;
    lastType = function.type;
    if (isSecondLevel) continue;
    if (function.spectra.Size() == 0) return std::nullopt;
    candidates.push_back({static_cast<int>(i), function.spectra});
  }
  return candidates;
}

// Reports have no kind whose spectra come from their own level, so only spectra of level 2 have precursors.
bool COpenLynxRptDataServerImpl::FindPrecursorScan(int sample, int function, int scan, int& precursorFunction,
                                                   int& precursorScan) {
  if (GetSampleCount() <= 0 || GetFunctionCount(sample) <= 0) return false;
  const ReportFunctionRecord* const own = FindIndexedFunction(sample, function);
  if (own == nullptr || scan < 0 || scan >= CountOf(own->spectra.Size())) return false;
  if (GetMSLevel(sample, function) != 2) return false;
  const std::span<const std::uint64_t> spectra = FindSample(sample)->spectra;
  const std::size_t at = own->spectra.first + static_cast<std::size_t>(scan);
  const double minutes = ReadScanTimes(stream, spectra.subspan(at, 1)).times[0];
  const auto candidates = FindPrecursorCandidates(sample);
  if (!candidates) return false;
  const PrecursorSearch search(stream, spectra, *candidates, minutes);
  const bool isCentroided = IsCentroided(sample, function);
  const int polarity = GetPolarity(sample, function);
  std::size_t lastFirst = spectra.size();  // functions that lie in each other share their first spectrum
  bool isAlike = false;
  const auto found = search.Find([&](const PrecursorCandidate& candidate) {
    if (GetPolarity(sample, candidate.function) != polarity) return false;
    if (candidate.spectra.first != lastFirst)
      isAlike = IsCentroided(sample, candidate.function) == isCentroided;
    lastFirst = candidate.spectra.first;
    return isAlike;
  });
  if (!found) return false;
  std::tie(precursorFunction, precursorScan) = *found;
  return true;
}

}  // namespace zrml
