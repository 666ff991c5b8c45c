#include "convert/mzml_spectrum.h"

#include <algorithm>
#include <cmath>
#include <immintrin.h>
#include <limits>

#include "common/text.h"
#include "convert/mzml_params.h"
#include "convert/spectrum_reader.h"
#include "convert/writer.h"

namespace zrml::convert {
namespace {

struct ScanTypeTerm {
  source::ScanType scanType;
  const CvTerm& term;
};

constexpr ScanTypeTerm kScanTypeTerms[] = {
    {source::ScanType::kPrecursor, cv::kPrecursorIonSpectrum},
    {source::ScanType::kNeutralLoss, cv::kNeutralLossSpectrum},
    {source::ScanType::kNeutralGain, cv::kNeutralGainSpectrum},
};

// The smallest and largest finite value; absent without one. Two at a time: finding them one by one would
// take as long as encoding the values.
std::optional<source::Range> FiniteRange(std::span<const double> values) {
  const __m128d infinity = _mm_set1_pd(std::numeric_limits<double>::infinity());
  const __m128d minusInfinity = _mm_set1_pd(-std::numeric_limits<double>::infinity());
  __m128d low = infinity;
  __m128d high = minusInfinity;
  const auto look = [&](__m128d pair) {
    const __m128d isFinite = _mm_cmpeq_pd(_mm_sub_pd(pair, pair), _mm_setzero_pd());
    const __m128d finite = _mm_and_pd(isFinite, pair);
    low = _mm_min_pd(low, _mm_or_pd(finite, _mm_andnot_pd(isFinite, infinity)));
    high = _mm_max_pd(high, _mm_or_pd(finite, _mm_andnot_pd(isFinite, minusInfinity)));
  };
  std::size_t i = 0;
  for (; values.size() - i >= 2; i += 2) look(_mm_loadu_pd(values.data() + i));
  if (i < values.size()) look(_mm_set1_pd(values[i]));
  const source::Range range = {std::min(low[0], low[1]), std::max(high[0], high[1])};
  return range.low <= range.high ? std::optional(range) : std::nullopt;
}

void AppendRange(std::string& out, std::span<const double> values, const CvTerm& low, const CvTerm& high,
                 const CvTerm& unit) {
  const std::optional<source::Range> range = FiniteRange(values);
  if (!range) return;
  AppendCvNumber(out, low, range->low, &unit);
  AppendCvNumber(out, high, range->high, &unit);
}

void AppendPolarity(std::string& out, source::Polarity polarity) {
  if (polarity == source::Polarity::kPositive) AppendCvParam(out, cv::kPositiveScan);
  if (polarity == source::Polarity::kNegative) AppendCvParam(out, cv::kNegativeScan);
}

void AppendScanWindow(std::string& out, const std::optional<source::Range>& range) {
  if (!range || !std::isfinite(range->low) || !std::isfinite(range->high)) return;
  out += "<scanWindowList count=\"1\">\n<scanWindow>\n";
  AppendCvNumber(out, cv::kWindowLow, range->low, &cv::kMzUnit);
  AppendCvNumber(out, cv::kWindowHigh, range->high, &cv::kMzUnit);
  out += "</scanWindow>\n</scanWindowList>\n";
}

// A report says how its spectra were made. Combined ones no longer come from one scan; the report does not
// say whether they were summed or averaged, and the sum is the nearest term.
void AppendCombination(std::string& out, const std::string& process) {
  const bool isCombined = ToLower(process).find("combine") != std::string::npos;
  AppendCvParam(out, isCombined ? cv::kSumOfSpectra : cv::kNoCombination);
  if (!process.empty()) AppendUserParam(out, "process", process);
}

void AppendScan(std::string& out, const source::Function& function, double minutes,
                const std::string& process) {
  out += "<scanList count=\"1\">\n";
  AppendCombination(out, process);
  out += "<scan>\n";
  AppendFiniteCvNumber(out, cv::kScanStartTime, minutes, &cv::kMinute);
  AppendCvParam(out, cv::kPresetScan, std::to_string(function.id.number));
  if (!function.name.empty()) AppendUserParam(out, "function name", function.name);
  AppendScanWindow(out, function.massRange);
  out += "</scan>\n</scanList>\n";
}

// No file says how the precursor was fragmented.
void AppendPrecursor(std::string& out, double mass) {
  if (!std::isfinite(mass) || mass == 0) return;
  out += "<precursorList count=\"1\">\n<precursor>\n<isolationWindow>\n";
  AppendCvNumber(out, cv::kIsolationTarget, mass, &cv::kMzUnit);
  out += "</isolationWindow>\n<selectedIonList count=\"1\">\n<selectedIon>\n";
  AppendCvNumber(out, cv::kSelectedIon, mass, &cv::kMzUnit);
  out += "</selectedIon>\n</selectedIonList>\n<activation>\n";
  AppendCvParam(out, cv::kDissociation);
  out += "</activation>\n</precursor>\n</precursorList>\n";
}

// The first of the points with the largest intensity, and the sum of all intensities.
void AppendSummary(std::string& out, const Spectrum& spectrum) {
  AppendRange(out, spectrum.positions, cv::kLowestMz, cv::kHighestMz, cv::kMzUnit);
  double sum = 0;
  double largest = -std::numeric_limits<double>::infinity();
  std::size_t basePeak = spectrum.intensities.size();
  for (std::size_t i = 0; i < spectrum.intensities.size(); ++i) {
    sum += spectrum.intensities[i];
    if (!(spectrum.intensities[i] > largest)) continue;  // NaN, too
    largest = spectrum.intensities[i];
    basePeak = i;
  }
  if (basePeak < spectrum.intensities.size()) {
    AppendFiniteCvNumber(out, cv::kBasePeakMz, spectrum.positions[basePeak], &cv::kMzUnit);
    AppendFiniteCvNumber(out, cv::kBasePeakIntensity, largest, &cv::kDetectorCounts);
  }
  const bool isKnown = !spectrum.isLost || !spectrum.positions.empty();
  if (isKnown) AppendFiniteCvNumber(out, cv::kTotalIonCurrent, sum);
}

class MzmlRenderer : public Renderer {
 public:
  MzmlRenderer(source::Source& source, const RunPlan& plan, Losses& losses, const ArrayOptions& options)
      : reader_(source, plan, losses), options_(options), arrays_(options) {}

  void Render(std::size_t index, std::string& text) override {
    const RunEntry& entry = reader_.Plan().entries[index];
    text.clear();
    if (reader_.Plan().FunctionOf(entry).isAbsorbance) {
      AppendAbsorbance(text, index, entry);
    } else {
      AppendMass(text, index, entry);
    }
  }

 private:
  void Open(std::string& out, std::size_t index, const RunEntry& entry, const Spectrum& spectrum) const {
    out += "<spectrum";
    AppendAttribute(out, "index", index);
    AppendAttribute(out, "id", NativeId(reader_.Plan().FunctionOf(entry).info.id, entry.scan + 1));
    AppendAttribute(out, "defaultArrayLength", spectrum.positions.size());
    const RunPlan& plan = reader_.Plan();
    const bool isFiltered = !plan.selection.points.filter.TakesAll() && !plan.FunctionOf(entry).isAbsorbance;
    if (spectrum.isPicked || isFiltered)
      AppendAttribute(out, "dataProcessingRef", spectrum.isPicked ? kCentroiding : kFiltering);
    out += ">\n";
  }

  void AppendMass(std::string& out, std::size_t index, const RunEntry& entry) {
    const RunFunction& function = reader_.Plan().FunctionOf(entry);
    const bool hasDrift = function.driftBins > 0;
    const Spectrum spectrum = reader_.ReadMassOrDrift(entry);
    Open(out, index, entry, spectrum);
    AppendCvParam(out, SpectrumType(function));
    if (const auto level = MsLevelOf(function.info)) AppendCvParam(out, cv::kMsLevel, std::to_string(*level));
    AppendPolarity(out, function.info.polarity);
    AppendCvParam(out, RepresentationOf(spectrum));
    AppendSummary(out, spectrum);
    AppendScan(out, function.info, entry.minutes, spectrum.process);
    AppendPrecursor(out, spectrum.scan.precursorMz.value_or(0));
    out += hasDrift ? "<binaryDataArrayList count=\"3\">\n" : "<binaryDataArrayList count=\"2\">\n";
    arrays_.Append(out, {cv::kMzArray, &cv::kMzUnit, options_.masses}, spectrum.positions);
    arrays_.Append(out, {cv::kIntensityArray, &cv::kDetectorCounts, options_.intensities},
                   spectrum.intensities);
    if (hasDrift)
      arrays_.Append(out, {cv::kOtherArray, nullptr, Precision::kExact, "drift bin"}, spectrum.bins);
    out += "</binaryDataArrayList>\n</spectrum>\n";
  }

  // For a report's spectrum without points profile only means that nothing says otherwise.
  const CvTerm& RepresentationOf(const Spectrum& spectrum) const {
    if (spectrum.isPicked) return cv::kCentroid;
    const source::Representation stored = spectrum.scan.representation;
    if (stored == source::Representation::kUnknown) return cv::kRepresentation;
    if (stored == source::Representation::kCentroid) return cv::kCentroid;
    const bool isReport = reader_.Plan().sourceFormat == source::Format::kReport;
    return isReport && spectrum.positions.empty() ? cv::kRepresentation : cv::kProfile;
  }

  void AppendAbsorbance(std::string& out, std::size_t index, const RunEntry& entry) {
    const Spectrum spectrum = reader_.ReadAbsorbance(entry);
    Open(out, index, entry, spectrum);
    AppendCvParam(out, cv::kRadiationSpectrum);
    AppendCvParam(out, cv::kProfile);
    AppendRange(out, spectrum.positions, cv::kLowestWavelength, cv::kHighestWavelength, cv::kNanometer);
    AppendScan(out, reader_.Plan().FunctionOf(entry).info, entry.minutes, {});
    out += "<binaryDataArrayList count=\"2\">\n";
    arrays_.Append(out, {cv::kWavelengthArray, &cv::kNanometer, options_.masses}, spectrum.positions);
    arrays_.Append(out, {cv::kIntensityArray, nullptr, options_.intensities}, spectrum.intensities);
    out += "</binaryDataArrayList>\n</spectrum>\n";
  }

  SpectrumReader reader_;
  ArrayOptions options_;
  ArrayWriter arrays_;
};

}  // namespace

const CvTerm& SpectrumType(const RunFunction& function) {
  if (function.isAbsorbance) return cv::kRadiationSpectrum;
  for (const ScanTypeTerm& entry : kScanTypeTerms) {
    if (entry.scanType == function.info.scanType) return entry.term;
  }
  if (function.info.monitoring == source::Monitoring::kIons) return cv::kSimSpectrum;
  if (function.info.monitoring == source::Monitoring::kReactions) return cv::kSrmSpectrum;
  if (function.info.kind == source::FunctionKind::kOther) return cv::kMassSpectrum;  // of an unknown type
  return function.info.msLevel > 1 ? cv::kMsnSpectrum : cv::kMs1Spectrum;
}

std::unique_ptr<Renderer> MakeMzmlRenderer(source::Source& source, const RunPlan& plan, Losses& losses,
                                           const ArrayOptions& arrays) {
  return std::make_unique<MzmlRenderer>(source, plan, losses, arrays);
}

}  // namespace zrml::convert
