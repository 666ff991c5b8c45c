#include "qc/metrics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "qc/statistics.h"

namespace zrml::qc {
namespace {

using Values = std::vector<double>;
using source::Range;

constexpr double kTenfold = 10;

constexpr Term kNoUnit = {};
constexpr Term kSecond = {"UO:0000010", "second"};
constexpr Term kMinute = {"UO:0000031", "minute"};
constexpr Term kHertz = {"UO:0000106", "hertz"};
constexpr Term kCount = {"UO:0000189", "count unit"};
constexpr Term kFraction = {"UO:0000191", "fraction"};
constexpr Term kMz = {"MS:1000040", "m/z"};
constexpr Term kIntensity = {"MS:1000043", "intensity unit"};

double LengthOf(const Range& range) { return range.high - range.low; }

// How long the run is; no value unless it takes time.
std::optional<Range> RunTime(const RunSpectra& run) {
  const std::optional<Range> range = TimeRange(run.Timed(kAllLevels));
  return range && LengthOf(*range) > 0 ? range : std::nullopt;
}

Values Duration(const RunSpectra& run) {
  const std::optional<Range> range = TimeRange(run.Timed(kAllLevels));
  return range ? Values{LengthOf(*range) * kSecondsPerMinute} : Values();
}

Values RetentionTimes(const RunSpectra& run) {
  const std::optional<Range> range = TimeRange(run.Timed(kAllLevels));
  return range ? Values{range->low * kSecondsPerMinute, range->high * kSecondsPerMinute} : Values();
}

Values PrecursorRange(const RunSpectra& run) {
  Values masses;
  for (const Spectrum& spectrum : run.All(kMs2)) {
    if (spectrum.precursorMz != 0) masses.push_back(spectrum.precursorMz);
  }
  if (masses.empty()) return {};
  const auto [low, high] = std::minmax_element(masses.begin(), masses.end());
  return {*low, *high};
}

Values Chromatograms(const RunSpectra& run) { return {static_cast<double>(run.chromatograms)}; }

template <Level kLevel>
Values Count(const RunSpectra& run) {
  return {static_cast<double>(run.All(kLevel).size())};
}

template <Level kLevel>
Values Empty(const RunSpectra& run) {
  const std::span<const Spectrum> spectra = run.All(kLevel);
  return {static_cast<double>(std::count_if(spectra.begin(), spectra.end(),
                                            [](const Spectrum& spectrum) { return spectrum.total == 0; }))};
}

// How often `isStep` holds for the totals of a MS1 spectrum and the next.
template <class IsStep>
Values Steps(const RunSpectra& run, IsStep isStep) {
  const std::span<const Spectrum> spectra = run.All(kMs1);
  double count = 0;
  for (std::size_t i = 1; i < spectra.size(); ++i) {
    if (isStep(spectra[i - 1].total, spectra[i].total)) ++count;
  }
  return {count};
}

Values Jumps(const RunSpectra& run) {
  return Steps(run, [](double before, double after) { return after > before * kTenfold; });
}

Values Falls(const RunSpectra& run) {
  return Steps(run, [](double before, double after) { return before > after * kTenfold; });
}

template <Level kLevel>
Values TicArea(const RunSpectra& run) {
  const std::span<const Spectrum> spectra = run.Timed(kLevel);
  const std::optional<Range> range = TimeRange(spectra);
  return range && LengthOf(*range) > 0 ? Values{Area(spectra, *range)} : Values();
}

Values TicAreaRatio(const RunSpectra& run) {
  const Values ms1 = TicArea<kMs1>(run);
  const Values ms2 = TicArea<kMs2>(run);
  return ms1.empty() || ms2.empty() || ms2[0] == 0 ? Values() : Values{ms1[0] / ms2[0]};
}

Values TicAreaOfQuarters(const RunSpectra& run) {
  const std::optional<Range> range = RunTime(run);
  Values areas;
  for (int k = 0; range && k < kParts; ++k) areas.push_back(Area(run.Timed(kAllLevels), Quarter(*range, k)));
  return areas;
}

// The lengths between times, the first of them from `start` on, as parts of the run.
Values Fractions(const RunSpectra& run, double start, Values times) {
  const std::optional<Range> range = RunTime(run);
  if (!range) return {};
  for (double& time : times) {
    const double end = time;
    time = (end - start) / LengthOf(*range);
    start = end;
  }
  return times;
}

Values TicFractions(const RunSpectra& run) {
  const std::span<const Spectrum> spectra = run.Timed(kAllLevels);
  return spectra.empty() ? Values() : Fractions(run, spectra.front().minutes, AccumulationTimes(spectra));
}

// From the first spectrum of the level to that with which each quarter of them is complete.
template <Level kLevel>
Values SpectrumFractions(const RunSpectra& run) {
  const std::span<const Spectrum> spectra = run.Timed(kLevel);
  if (spectra.empty()) return {};
  Values times;
  for (std::size_t k = 1; k <= kParts; ++k)
    times.push_back(spectra[(k * spectra.size() + kParts - 1) / kParts - 1].minutes);
  return Fractions(run, spectra.front().minutes, times);
}

template <Level kLevel>
Values TicTimes(const RunSpectra& run) {
  Values times = AccumulationTimes(run.Timed(kLevel));
  if (times.empty()) return {};
  times.pop_back();  // quartiles: a quarter, a half, three quarters
  for (double& time : times) time -= run.Timed(kAllLevels).front().minutes;
  return times;
}

Values TicRatios(const RunSpectra& run) { return QuartileRatios(TotalsOf(run.All(kMs1))); }

// Of their sizes, since changes down have no logarithm.
Values TicChangeRatios(const RunSpectra& run) {
  const Values totals = TotalsOf(run.All(kMs1));
  Values changes;
  for (std::size_t i = 1; i < totals.size(); ++i) changes.push_back(std::abs(totals[i - 1] - totals[i]));
  return QuartileRatios(changes);
}

Values CycleTime(const RunSpectra& run) {
  const std::span<const Spectrum> spectra = run.Timed(kMs1);
  Values times;
  for (std::size_t i = 1; i < spectra.size(); ++i)
    times.push_back(spectra[i].minutes - spectra[i - 1].minutes);
  const Values quartiles = Quartiles(times);
  return quartiles.empty() ? Values() : Values{quartiles[1] * kSecondsPerMinute};
}

// The last quarter has its end, too.
template <Level kLevel>
Values Frequencies(const RunSpectra& run) {
  const std::optional<Range> range = RunTime(run);
  const std::span<const Spectrum> spectra = run.Timed(kLevel);
  Values frequencies;
  for (int k = 0; range && k < kParts; ++k) {
    const Range quarter = Quarter(*range, k);
    const bool isLast = k + 1 == kParts;
    const auto count = std::count_if(spectra.begin(), spectra.end(), [&](const Spectrum& spectrum) {
      return spectrum.minutes >= quarter.low && (isLast || spectrum.minutes < quarter.high);
    });
    frequencies.push_back(static_cast<double>(count) / (LengthOf(quarter) * kSecondsPerMinute));
  }
  return frequencies;
}

// The points of a profile are not peaks.
template <Level kLevel>
Values PeakCounts(const RunSpectra& run) {
  Values counts;
  for (const Spectrum& spectrum : run.All(kLevel)) {
    if (!spectrum.isCentroided) return {};
    counts.push_back(spectrum.points);
  }
  return counts.empty() ? counts : QuartilesOfCounts(counts);
}

template <double Spectrum::*kValue>
Values Maximum(const RunSpectra& run) {
  Values largest;
  for (const Spectrum& spectrum : run.All(kAllLevels)) {
    if (largest.empty() || spectrum.*kValue > largest[0]) largest = {spectrum.*kValue};
  }
  return largest;
}

using enum Shape;

constexpr std::array kMetrics = {
    Metric{{"MS:4000067", "MS run duration"}, kSecond, "runSeconds", kSingle, Duration},
    Metric{{"MS:4000053", "chromatography duration"}, kSecond, "chromatographySeconds", kSingle, Duration},
    Metric{{"MS:4000070", "retention time acquisition range"},
           kSecond,
           "retentionSeconds",
           kRange,
           RetentionTimes},
    Metric{{"MS:4000069", "m/z acquisition range"}, kMz, "precursorMz", kRange, PrecursorRange},
    Metric{{"MS:4000059", "number of MS1 spectra"}, kCount, "ms1Spectra", kSingle, Count<kMs1>},
    Metric{{"MS:4000060", "number of MS2 spectra"}, kCount, "ms2Spectra", kSingle, Count<kMs2>},
    Metric{{"MS:4000071", "number of chromatograms"}, kCount, "chromatograms", kSingle, Chromatograms},
    Metric{{"MS:4000099", "number of empty MS1 scans"}, kCount, "ms1Empty", kSingle, Empty<kMs1>},
    Metric{{"MS:4000100", "number of empty MS2 scans"}, kCount, "ms2Empty", kSingle, Empty<kMs2>},
    Metric{{"MS:4000097", "MS1 signal jump (10x) count"}, kCount, "ms1Jumps", kSingle, Jumps},
    Metric{{"MS:4000098", "MS1 signal fall (10x) count"}, kCount, "ms1Falls", kSingle, Falls},
    Metric{{"MS:4000155", "area under TIC"}, kNoUnit, "ticArea", kSingle, TicArea<kAllLevels>},
    Metric{{"MS:4000029", "area under TIC in MS1"}, kNoUnit, "ms1TicArea", kSingle, TicArea<kMs1>},
    Metric{{"MS:4000030", "area under TIC in MS2"}, kNoUnit, "ms2TicArea", kSingle, TicArea<kMs2>},
    Metric{{"MS:4000031", "peak area of MS1 vs MS2 signal ratio"},
           kNoUnit,
           "ticAreaRatio",
           kSingle,
           TicAreaRatio},
    Metric{{"MS:4000156", "area under TIC RT quantiles"}, kNoUnit, "ticArea", kQuarters, TicAreaOfQuarters},
    Metric{{"MS:4000183", "TIC quantile RT fraction"}, kFraction, "ticFraction", kQuarters, TicFractions},
    Metric{{"MS:4000184", "MS1 quantile RT fraction"},
           kFraction,
           "ms1Fraction",
           kQuarters,
           SpectrumFractions<kMs1>},
    Metric{{"MS:4000185", "MS2 quantile RT fraction"},
           kFraction,
           "ms2Fraction",
           kQuarters,
           SpectrumFractions<kMs2>},
    Metric{{"MS:4000190", "MS1 TIC quantile RT"}, kMinute, "ms1TicMinutes", kQuartiles, TicTimes<kMs1>},
    Metric{{"MS:4000191", "MS2 TIC quantile RT"}, kMinute, "ms2TicMinutes", kQuartiles, TicTimes<kMs2>},
    Metric{{"MS:4000187", "MS1 TIC quantile ratios"}, kFraction, "ms1TicRatio", kRatios, TicRatios},
    Metric{{"MS:4000186", "MS1 TIC-change quantile ratios"},
           kFraction,
           "ms1TicChangeRatio",
           kRatios,
           TicChangeRatios},
    Metric{{"MS:4000192", "MS1 median cycle time"}, kSecond, "ms1CycleSeconds", kSingle, CycleTime},
    Metric{{"MS:4000106", "MS1 frequency in equal parts of subsequent RT"},
           kHertz,
           "ms1Hertz",
           kQuarters,
           Frequencies<kMs1>},
    Metric{{"MS:4000107", "MS2 frequency in equal parts of subsequent RT"},
           kHertz,
           "ms2Hertz",
           kQuarters,
           Frequencies<kMs2>},
    Metric{{"MS:4000061", "MS1 density quantiles"}, kCount, "ms1Peaks", kQuartiles, PeakCounts<kMs1>},
    Metric{{"MS:4000062", "MS2 density quantiles"}, kCount, "ms2Peaks", kQuartiles, PeakCounts<kMs2>},
    Metric{{"MS:4000202", "base peak intensity maximum"},
           kIntensity,
           "basePeakMaximum",
           kSingle,
           Maximum<&Spectrum::basePeak>},
    Metric{{"MS:4000204", "total ion current maximum"},
           kIntensity,
           "ticMaximum",
           kSingle,
           Maximum<&Spectrum::total>},
};

std::span<const std::string_view> EndsOf(Shape shape) {
  static constexpr std::array<std::string_view, 1> kWhole = {""};
  static constexpr std::array<std::string_view, 2> kEnds = {"Low", "High"};
  static constexpr std::array<std::string_view, 3> kThird = {"Q1", "Q2", "Q3"};
  static constexpr std::array<std::string_view, 3> kSteps = {"Q2", "Q3", "Q4"};
  static constexpr std::array<std::string_view, 4> kFourth = {"Quarter1", "Quarter2", "Quarter3", "Quarter4"};
  switch (shape) {
    case kRange:
      return kEnds;
    case kQuartiles:
      return kThird;
    case kRatios:
      return kSteps;
    case kQuarters:
      return kFourth;
    case kSingle:
      break;
  }
  return kWhole;
}

}  // namespace

std::span<const Metric> Metrics() { return kMetrics; }

std::vector<std::string> ColumnsOf(const Metric& metric) {
  std::vector<std::string> columns;
  for (const std::string_view end : EndsOf(metric.shape))
    columns.push_back(std::string(metric.column).append(end));
  return columns;
}

}  // namespace zrml::qc
