#include "qc/run_quality.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <span>
#include <utility>

#include "convert/channels.h"
#include "convert/date_time.h"
#include "qc/metrics.h"
#include "qc/spectra.h"
#include "qc/statistics.h"
#include "source/points_look.h"
#include "source/reference_peak.h"

namespace zrml::qc {
namespace {

constexpr std::size_t kMostPoints = 300;  // of a curve
constexpr double kLockMassWindow = 0.5;   // to either side, as that of `zrml lockmass`
constexpr double kMillion = 1e6;

enum class Use { kNone, kSpectra, kLockMass, kChannels };

Use UseOf(const source::Function& function) {
  using source::FunctionKind;
  if (function.id.process != 0) return Use::kNone;
  if (function.monitoring != source::Monitoring::kNone) return Use::kChannels;
  if (function.kind != FunctionKind::kMs && function.kind != FunctionKind::kMsMs) return Use::kNone;
  return function.isLockMass ? Use::kLockMass : Use::kSpectra;
}

// What is seen of one sample.
struct Seen {
  RunSpectra spectra;
  std::map<int, convert::ChannelSearch> channels;  // by function
  std::vector<TraceRange> traces;
  SpectrumList references;  // those with the lock mass: its deviation in place of the total
  std::size_t referenceCount = 0;
};

std::optional<source::Range> RangeOf(const std::vector<double>& values) {
  std::optional<source::Range> range;
  for (const double value : values) {
    if (!std::isfinite(value)) continue;
    if (!range) range = {value, value};
    range = source::Range{std::min(range->low, value), std::max(range->high, value)};
  }
  return range;
}

// NaN unless it is finite: nothing is acquired at the end of time.
double TimeOf(const source::ScanInSight& scan) {
  return std::isfinite(scan.scan.minutes) ? scan.scan.minutes : std::numeric_limits<double>::quiet_NaN();
}

class Collector : public source::Onlooker {
 public:
  Collector(std::size_t samples, const Wishes& wishes) : samples_(samples), wishes_(wishes) {}

  void See(const source::ScanInSight& scan) override {
    if (scan.read.count == 0 && scan.read.lost > 0) return;  // unknown, not empty
    Seen& seen = samples_[static_cast<std::size_t>(scan.sample)];
    switch (UseOf(scan.described)) {
      case Use::kSpectra:
        return AddSpectrum(scan, seen.spectra);
      case Use::kLockMass:
        return AddReference(scan, seen);
      case Use::kChannels:
        if (scan.read.lost == 0) seen.channels[scan.function].Add(scan.mz);
        return;
      case Use::kNone:
        return;
    }
  }

  void See(int sample, const source::Chromatogram& trace) override {
    Seen& seen = samples_[static_cast<std::size_t>(sample)];
    ++seen.spectra.chromatograms;
    if (const auto range = RangeOf(trace.intensities)) seen.traces.push_back({trace.name, *range});
  }

  std::vector<Seen>& Samples() { return samples_; }

 private:
  static void AddSpectrum(const source::ScanInSight& scan, RunSpectra& spectra) {
    const std::span<const double> intensities = scan.intensities;
    Spectrum spectrum = {.minutes = TimeOf(scan),
                         .total = std::accumulate(intensities.begin(), intensities.end(), 0.0),
                         .points = static_cast<std::uint32_t>(intensities.size()),
                         .isCentroided = scan.scan.representation == source::Representation::kCentroid};
    if (!intensities.empty()) spectrum.basePeak = *std::max_element(intensities.begin(), intensities.end());
    const double precursor = scan.scan.precursorMz.value_or(0);
    if (std::isfinite(precursor)) spectrum.precursorMz = precursor;
    spectra.lists.at(kAllLevels).Add(spectrum);
    if (const auto level = scan.described.msLevel) spectra.lists.at(level == 1 ? kMs1 : kMs2).Add(spectrum);
  }

  void AddReference(const source::ScanInSight& scan, Seen& seen) const {
    ++seen.referenceCount;
    if (!wishes_.lockMass) return;
    const double mz = *wishes_.lockMass;
    const source::Range window = {mz - kLockMassWindow, mz + kLockMassWindow};
    const source::ReferencePeak peak = source::LargestPeak(
        scan.scan.representation != source::Representation::kProfile, scan.mz, scan.intensities, window);
    if (peak.intensity > 0)
      seen.references.Add({.minutes = TimeOf(scan), .total = (peak.mz - mz) / mz * kMillion});
  }

  std::vector<Seen> samples_;
  Wishes wishes_;
};

// As many neighbours together as leave few enough points: `valueOf` them, at the time of the first.
template <class ValueOf>
source::Chromatogram Thinned(std::span<const Spectrum> spectra, ValueOf valueOf) {
  source::Chromatogram curve;
  const std::size_t together = (spectra.size() + kMostPoints - 1) / kMostPoints;
  for (std::size_t i = 0; i < spectra.size(); i += together) {
    const std::span<const Spectrum> neighbours = spectra.subspan(i, std::min(together, spectra.size() - i));
    const double value = valueOf(TotalsOf(neighbours));
    if (!std::isfinite(value)) continue;
    curve.minutes.push_back(neighbours.front().minutes);
    curve.intensities.push_back(value);
  }
  return curve;
}

double HighestOf(const std::vector<double>& values) {
  return *std::max_element(values.begin(), values.end());
}

// The highest of deviations would be far above their course.
double MedianOf(const std::vector<double>& values) { return Quartiles(values)[1]; }

LockMassCourse CourseOf(Seen& seen) {
  seen.references.Sort();
  const std::vector<double> deviations = TotalsOf(seen.references.All());
  LockMassCourse course = {.spectra = seen.referenceCount, .found = deviations.size()};
  if (deviations.empty()) return course;
  course.median = MedianOf(deviations);
  course.range = *RangeOf(deviations);
  course.curve = Thinned(seen.references.Timed(), MedianOf);
  return course;
}

// The first of the items that has a value.
std::string ValueOf(std::span<const source::MetadataItem> items, std::span<const std::string_view> keys) {
  for (const std::string_view key : keys) {
    for (const source::MetadataItem& item : items) {
      if (item.key == key && item.value && !item.value->empty()) return *item.value;
    }
  }
  return {};
}

void DescribeRun(source::Source& source, int sample, RunQuality& run) {
  constexpr std::array<std::string_view, 1> kDate = {"AnalysisDateTime"};
  constexpr std::array<std::string_view, 2> kInstrument = {"InstrumentName", "InstrumentDescription"};
  constexpr std::array<std::string_view, 1> kSample = {"SampleName"};
  std::vector<source::MetadataItem> items = source.SampleMetadata(sample);
  if (!source.Functions(sample).empty())
    items = source::Merged(std::move(items), source.FunctionMetadata(sample, 0));
  run.started = convert::XmlDateTime(ValueOf(items, kDate)).value_or("");
  run.instrument = ValueOf(items, kInstrument);
  run.sampleName = ValueOf(items, kSample);
}

// Infinite intensities have no finite sum. A metric says nothing then.
std::vector<double> ValuesOf(const Metric& metric, const RunSpectra& spectra) {
  std::vector<double> values = metric.compute(spectra);
  return AreFinite(values) ? values : std::vector<double>();
}

RunQuality QualityOf(Seen& seen) {
  RunQuality run;
  for (const auto& [function, search] : seen.channels) seen.spectra.chromatograms += search.Channels().size();
  for (SpectrumList& list : seen.spectra.lists) list.Sort();
  for (const Metric& metric : Metrics()) run.metrics.push_back(ValuesOf(metric, seen.spectra));
  run.traces = std::move(seen.traces);
  run.lockMass = CourseOf(seen);
  run.totals = Thinned(seen.spectra.Timed(kMs1), HighestOf);
  return run;
}

void AddFindings(std::span<const Finding> findings, std::vector<RunQuality>& runs) {
  for (const Finding& finding : findings) {
    for (std::size_t sample = 0; sample < runs.size(); ++sample) {
      const bool isOfAll = finding.subject.sample == 0;
      if (isOfAll || static_cast<std::size_t>(finding.subject.sample) == sample + 1)
        runs[sample].findings.push_back(finding);
    }
  }
}

}  // namespace

std::optional<Severity> WorstOf(const std::vector<Finding>& findings) {
  std::optional<Severity> worst;
  for (const Finding& finding : findings) {
    const Severity severity = SeverityOf(finding.code);
    worst = std::min(worst.value_or(severity), severity);
  }
  return worst;
}

std::vector<RunQuality> AssessRuns(source::Source& source, const Wishes& wishes,
                                   const source::Cancel& cancel) {
  const int samples = source.SampleCount();
  Collector collector(static_cast<std::size_t>(samples), wishes);
  const Findings ofPoints = source::LookAtPoints(source, cancel, {}, &collector);
  std::vector<RunQuality> runs;
  for (Seen& seen : collector.Samples()) runs.push_back(QualityOf(seen));
  for (int sample = 0; sample < samples; ++sample)
    DescribeRun(source, sample, runs[static_cast<std::size_t>(sample)]);
  AddFindings(source.Findings(), runs);
  AddFindings(ofPoints.List(), runs);
  return runs;
}

}  // namespace zrml::qc
