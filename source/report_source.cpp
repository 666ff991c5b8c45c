#include "source/report_source.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <limits>
#include <numeric>
#include <string_view>
#include <utility>

#include "common/platform/platform.h"
#include "common/text.h"
#include "openlynx/precursor_search.h"
#include "source/formats.h"
#include "source/position.h"

namespace zrml::source {
namespace {

using openlynx::CountOf;

constexpr double kAbsent = std::numeric_limits<double>::quiet_NaN();

std::string Utf8(const std::wstring& text) { return platform::ToNativePath(text); }

std::string FileName(const std::string& path) {
  const auto name = std::filesystem::path(platform::FromUtf8Path(path)).filename().u8string();
  return {name.begin(), name.end()};
}

struct KindRow {
  FunctionKind kind;
  Monitoring monitoring;
};

// By the model's kind, unknown types first.
constexpr std::array<KindRow, 5> kKinds = {{
    {FunctionKind::kOther, Monitoring::kNone},
    {FunctionKind::kMs, Monitoring::kNone},
    {FunctionKind::kMsMs, Monitoring::kNone},
    {FunctionKind::kIonMonitoring, Monitoring::kIons},
    {FunctionKind::kIonMonitoring, Monitoring::kReactions},
}};

constexpr std::array kPolarities = {Polarity::kUnknown, Polarity::kPositive, Polarity::kNegative};

constexpr const char* kProviderName = "ZROpenLynxRptProvider";
constexpr const char* kAnalogTrace = "Analog Trace";
constexpr const char* kFunctionTrace = "Function Trace";

// Positions of points in ascending order of `x`; equal ones stay in order.
std::vector<std::size_t> Order(const std::vector<double>& x) {
  std::vector<std::size_t> order(x.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  if (!std::is_sorted(x.begin(), x.end()))
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return x[a] < x[b]; });
  return order;
}

}  // namespace

std::string SampleNameOf(openlynx::Report& report, const openlynx::Sample& sample, std::int64_t number) {
  std::string name = Utf8(report.NameOf(sample));
  return !name.empty() ? name : "Sample " + std::to_string(number);
}

std::vector<MetadataItem> SampleItemsOf(openlynx::Report& report, const openlynx::Sample& sample) {
  const auto values = report.ReadItems(sample, openlynx::kSampleItems);
  std::vector<MetadataItem> items = {{"ProviderName", kProviderName}};
  for (std::size_t i = 0; i < values.size(); ++i) {
    const openlynx::SampleItem& item = openlynx::kSampleItems[i];
    const bool isDateTime = !item.timeKey.empty();
    std::string value = Utf8(values[i]);
    std::optional<std::string> held = isDateTime ? LocalDateTime(std::move(value), "T") : std::move(value);
    if (held && held->empty()) held.reset();
    items.push_back({std::string(item.name), std::move(held)});
  }
  return items;
}

std::unique_ptr<Source> OpenReport(const std::string& path) {
  const platform::SystemPath systemPath = platform::FromUtf8Path(path);
  if (!openlynx::HasReportExtension(systemPath) ||
      !openlynx::BeginsLikeReport(platform::File::OpenSystemPath(systemPath)))
    return nullptr;
  openlynx::ReportStream stream =
      openlynx::ReportStream::Open(systemPath, openlynx::ReportStream::Mode::kCareful);
  return stream.IsOpen() ? std::make_unique<ReportSource>(path, std::move(stream)) : nullptr;
}

ReportSource::ReportSource(std::string path, openlynx::ReportStream stream)
    : Source(std::move(path)), name_(FileName(Path())), report_(std::move(stream)) {}

template <class Read>
auto ReportSource::Reading(Read read) {
  report_.Stream().TakeRefusal();
  auto result = read();
  if (report_.Stream().TakeRefusal())
    throw Error(Status::kUnreadable, name_ + ' ' + report_.Stream().Refusal());
  return result;
}

// Samples that were found when a read was refused may be incomplete, and are searched again.
std::span<openlynx::Sample> ReportSource::Samples() {
  try {
    return Reading([&] { return report_.Samples(); });
  } catch (const Error&) {
    report_.ForgetSamples();
    throw;
  }
}

openlynx::Sample& ReportSource::SampleAt(int sample) { return At(Samples(), sample, "sample"); }

ReportSource::KnownSample& ReportSource::LookedThrough(int sample) {
  openlynx::Sample& found = SampleAt(sample);
  known_.resize(report_.Samples().size());
  KnownSample& known = known_[static_cast<std::size_t>(sample)];
  if (known.sample != nullptr) return known;
  try {
    return known = Reading([&] { return ReadFunctions(found); });
  } catch (const Error&) {
    const std::uint64_t position = std::exchange(found, {}).position;
    found.position = position;
    throw;
  }
}

ReportSource::KnownSample ReportSource::ReadFunctions(openlynx::Sample& sample) {
  KnownSample known = {&sample, {}, {}, {}};
  const std::span<openlynx::Function> all = report_.FunctionsOf(sample);
  report_.FindOwnBlocks(sample);
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (all[i].isAnalog) {
      const std::span<const std::uint64_t> traces = sample.ChromatogramsOf(all[i]);
      known.traces.insert(known.traces.end(), traces.begin(), traces.end());
    } else if (all[i].HasBlocks()) {
      known.functions.push_back(Describe(sample, i));
      known.numbers.push_back(i);
    }
  }
  return known;
}

Function ReportSource::Describe(openlynx::Sample& sample, std::size_t position) {
  const openlynx::Function& found = sample.functions[position];
  const openlynx::FunctionKind kind = report_.KindOf(sample, found);
  const KindRow& row = kKinds[static_cast<std::size_t>(kind)];
  Function function;
  function.id.number = CountOf(position + 1);
  function.name = Utf8(report_.NameOf(sample, found));
  if (function.name.empty()) function.name = "Function " + std::to_string(function.id.number);
  function.kind = report_.RecordsAbsorbance(sample, found) ? FunctionKind::kAbsorbance : row.kind;
  function.monitoring = row.monitoring;
  if (found.isTypeHidden) {
    function.msLevel.reset();
  } else {
    function.msLevel = openlynx::MsLevelOf(kind);
  }
  function.polarity = kPolarities[static_cast<std::size_t>(report_.PolarityOf(sample, found))];
  return function;
}

int ReportSource::SampleCount() { return CountOf(Samples().size()); }

std::string ReportSource::SampleName(int sample) {
  const openlynx::Sample& found = SampleAt(sample);
  return Reading([&] { return SampleNameOf(report_, found, std::int64_t{sample} + 1); });
}

std::vector<MetadataItem> ReportSource::SampleMetadata(int sample) {
  const openlynx::Sample& found = SampleAt(sample);
  if (metadataSample_ == sample) return metadata_;
  metadata_ = Reading([&] { return SampleItemsOf(report_, found); });
  metadataSample_ = sample;
  return metadata_;
}

std::optional<std::string> ReportSource::FunctionText(int sample, int function) {
  KnownSample& known = LookedThrough(sample);
  const openlynx::Function& found = FunctionAt(known, function);
  const bool isLast = &found == &known.sample->functions.back();
  const std::uint64_t end = isLast ? openlynx::kNoLimit : std::next(&found)->position;
  const std::optional<std::wstring> text = Reading([&] { return report_.ReadText(found, end); });
  return text ? std::optional(Utf8(*text)) : std::nullopt;
}

std::span<const Function> ReportSource::Functions(int sample) { return LookedThrough(sample).functions; }

openlynx::Function& ReportSource::FunctionAt(KnownSample& known, int function) {
  return known.sample->functions[At(std::span(known.numbers), function, "function")];
}

std::span<const std::uint64_t> ReportSource::SpectraOf(int sample, int function) {
  KnownSample& known = LookedThrough(sample);
  return known.sample->SpectraOf(FunctionAt(known, function));
}

std::span<const std::uint64_t> ReportSource::ChromatogramsOf(int sample, int function) {
  KnownSample& known = LookedThrough(sample);
  return known.sample->ChromatogramsOf(FunctionAt(known, function));
}

std::uint64_t ReportSource::SpectrumAt(int sample, int function, int scan) {
  return At(SpectraOf(sample, function), scan, "scan");
}

int ReportSource::ScanCount(int sample, int function) { return CountOf(SpectraOf(sample, function).size()); }

const ReportSource::KnownSpectrum& ReportSource::SpectrumOf(std::uint64_t position) {
  if (spectrum_ && spectrum_->position == position) return *spectrum_;
  return spectrum_.emplace(Reading([&] {
    const openlynx::SpectrumHead head = report_.ReadSpectrumHead(position);
    return KnownSpectrum{position, head, report_.CountLines(head)};
  }));
}

Scan ReportSource::ScanAt(int sample, int function, int scan) {
  const KnownSpectrum& spectrum = SpectrumOf(SpectrumAt(sample, function, scan));
  Scan result;
  result.minutes = result.endMinutes = spectrum.head.minutes.value_or(kAbsent);
  result.representation = spectrum.head.isRepresentationHidden ? Representation::kUnknown
                                                               : RepresentationOf(spectrum.head.isCentroided);
  result.points = static_cast<std::uint32_t>(spectrum.room);
  result.basePeakIntensity = spectrum.head.basePeak;
  result.totalIntensity = spectrum.head.totalIons;
  return result;
}

std::string ReportSource::ScanProcess(int sample, int function, int scan) {
  const KnownSpectrum& spectrum = SpectrumOf(SpectrumAt(sample, function, scan));
  return Reading([&] { return Utf8(report_.ReadProcess(spectrum.position, spectrum.head)); });
}

std::vector<double> ReportSource::Minutes(int sample, int function) {
  const auto spectra = SpectraOf(sample, function);
  return Reading([&] { return report_.ReadSeries(spectra, kAbsent).minutes; });
}

PointsRead ReportSource::ReadPoints(int sample, int function, int scan, std::span<double> mz,
                                    std::span<double> intensities) {
  const openlynx::SpectrumHead head = SpectrumOf(SpectrumAt(sample, function, scan)).head;
  const openlynx::Points points = Reading([&] { return report_.ReadPoints(head); });
  const std::vector<std::size_t> order = Order(points.x);
  RequireRoom(order.size(), mz, intensities);
  for (std::size_t i = 0; i < order.size(); ++i) {
    mz[i] = points.x[order[i]];
    intensities[i] = points.intensities[order[i]];
  }
  return {.count = order.size(), .lost = points.lost};
}

std::optional<ScanPosition> ReportSource::FindPrecursor(int sample, int function, int scan) {
  const std::uint64_t spectrum = SpectrumAt(sample, function, scan);
  const KnownSample& known = LookedThrough(sample);
  const auto found = Reading([&] {
    return openlynx::FindPrecursor(report_, *known.sample, known.numbers, function, spectrum, kAbsent);
  });
  return found ? std::optional(ScanPosition{found->first, found->second}) : std::nullopt;
}

Chromatogram ReportSource::Series(int sample, int function,
                                  std::vector<double> openlynx::ScanSeries::*intensities) {
  const auto spectra = SpectraOf(sample, function);
  openlynx::ScanSeries series = Reading([&] { return report_.ReadSeries(spectra, kAbsent); });
  return {{}, std::move(series.minutes), std::move(series.*intensities)};
}

Chromatogram ReportSource::TotalIons(int sample, int function) {
  return Series(sample, function, &openlynx::ScanSeries::totalIons);
}

Chromatogram ReportSource::BasePeaks(int sample, int function, const Cancel&) {
  return Series(sample, function, &openlynx::ScanSeries::basePeaks);
}

std::vector<Trace> ReportSource::NamesOf(std::span<const std::uint64_t> chromatograms, const char* noun) {
  const auto names = Reading([&] { return report_.TraceNames(chromatograms); });
  std::vector<Trace> traces;
  for (const std::wstring& name : names) {
    Trace& trace = traces.emplace_back(Trace{CountOf(traces.size()) + 1, Utf8(name)});
    if (trace.name.empty()) trace.name = noun + (" " + std::to_string(trace.number));
  }
  return traces;
}

Chromatogram ReportSource::ReadTraceAt(std::span<const std::uint64_t> chromatograms, int trace,
                                       const char* noun) {
  const std::uint64_t position = At(chromatograms, trace, "trace");
  openlynx::Trace read = Reading([&] { return report_.ReadTrace(position); });
  std::string name = Utf8(read.description);
  if (name.empty()) name = noun + (" " + std::to_string(trace + 1));
  return {std::move(name), std::move(read.points.x), std::move(read.points.intensities)};
}

std::vector<Trace> ReportSource::Traces(int sample) {
  return NamesOf(LookedThrough(sample).traces, kAnalogTrace);
}

Chromatogram ReportSource::ReadTrace(int sample, int trace) {
  return ReadTraceAt(LookedThrough(sample).traces, trace, kAnalogTrace);
}

std::vector<Trace> ReportSource::FunctionTraces(int sample, int function) {
  return NamesOf(ChromatogramsOf(sample, function), kFunctionTrace);
}

Chromatogram ReportSource::ReadFunctionTrace(int sample, int function, int trace) {
  return ReadTraceAt(ChromatogramsOf(sample, function), trace, kFunctionTrace);
}

std::span<const Finding> ReportSource::Findings() {
  if (!findings_) {
    zrml::Findings findings;
    report_.Check(name_, findings);
    findings_ = std::move(findings);
  }
  return findings_->List();
}

}  // namespace zrml::source
