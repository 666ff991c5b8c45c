#include "tools/zrml/convert/mzml_spectrum.h"

#include <algorithm>
#include <cmath>
#include <immintrin.h>
#include <limits>

#include "tools/zrml/convert/mzml_params.h"
#include "tools/zrml/convert/run_format.h"
#include "tools/zrml/convert/spectrum_reader.h"
#include "tools/zrml/convert/xml.h"

namespace zrml {
namespace {

struct ScanTypeTerm {
  int scanType;
  const CvTerm& term;
};

constexpr ScanTypeTerm kScanTypeTerms[] = {
    {kPrecursorIonScan, cv::kPrecursorIonSpectrum},
    {kNeutralLossScan, cv::kNeutralLossSpectrum},
    {kNeutralGainScan, cv::kNeutralGainSpectrum},
};

// The smallest and largest finite value; absent without one. Two at a time: finding them one by one would
// take as long as encoding the values.
std::optional<NumberRange> FiniteRange(std::span<const double> values) {
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
  const NumberRange range = {std::min(low[0], low[1]), std::max(high[0], high[1])};
  return range.low <= range.high ? std::optional(range) : std::nullopt;
}

void AppendRange(std::string& out, std::span<const double> values, const CvTerm& low, const CvTerm& high,
                 const CvTerm& unit) {
  const std::optional<NumberRange> range = FiniteRange(values);
  if (!range) return;
  AppendCvNumber(out, low, range->low, &unit);
  AppendCvNumber(out, high, range->high, &unit);
}

void AppendPolarity(std::string& out, int polarity) {
  if (polarity == kPositivePolarity) AppendCvParam(out, cv::kPositiveScan);
  if (polarity == kNegativePolarity) AppendCvParam(out, cv::kNegativeScan);
}

void AppendScanWindow(std::string& out, const std::optional<NumberRange>& range) {
  if (!range || !std::isfinite(range->low) || !std::isfinite(range->high)) return;
  out += "<scanWindowList count=\"1\">\n<scanWindow>\n";
  AppendCvNumber(out, cv::kWindowLow, range->low, &cv::kMzUnit);
  AppendCvNumber(out, cv::kWindowHigh, range->high, &cv::kMzUnit);
  out += "</scanWindow>\n</scanWindowList>\n";
}

void AppendScan(std::string& out, const RunFunction& function, double minutes) {
  out += "<scanList count=\"1\">\n";
  AppendCvParam(out, cv::kNoCombination);
  out += "<scan>\n";
  AppendFiniteCvNumber(out, cv::kScanStartTime, minutes, &cv::kMinute);
  AppendCvParam(out, cv::kPresetScan, std::to_string(function.number));
  if (!function.name.empty()) AppendUserParam(out, L"function name", function.name);
  AppendScanWindow(out, function.massRange);
  out += "</scan>\n</scanList>\n";
}

// How the precursor was broken up the interface does not tell.
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

class MzmlRenderer : public Renderer {
 public:
  MzmlRenderer(CDataServerImpl& server, const RunPlan& plan, const ArrayOptions& options)
      : reader_(server, plan), options_(options), arrays_(options.isCompressed) {}

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
  void Open(std::string& out, std::size_t index, const RunEntry& entry, std::size_t points) const {
    out += "<spectrum";
    AppendAttribute(out, "index", index);
    AppendAttribute(out, "id", NativeId(reader_.Plan().FunctionOf(entry).number, entry.scan + 1));
    AppendAttribute(out, "defaultArrayLength", points);
    out += ">\n";
  }

  void AppendMass(std::string& out, std::size_t index, const RunEntry& entry) {
    const RunFunction& function = reader_.Plan().FunctionOf(entry);
    const bool hasDrift = function.driftBins > 0;
    CZRMassSpectrum spectrum = hasDrift ? reader_.ReadDrift(entry, bins_) : reader_.ReadMass(entry);
    const auto masses = MassesOf(spectrum);
    Open(out, index, entry, masses.size());
    AppendCvParam(out, SpectrumType(function));
    AppendCvParam(out, cv::kMsLevel, std::to_string(function.msLevel));
    AppendPolarity(out, function.polarity);
    AppendCvParam(out, spectrum.IsCentroided() ? cv::kCentroid : cv::kProfile);
    AppendSummary(out, spectrum);
    AppendScan(out, function, entry.minutes);
    AppendPrecursor(out, spectrum.GetPrecursorMass());
    out += hasDrift ? "<binaryDataArrayList count=\"3\">\n" : "<binaryDataArrayList count=\"2\">\n";
    arrays_.Append(out, {cv::kMzArray, &cv::kMzUnit, options_.masses}, masses);
    arrays_.Append(out, {cv::kIntensityArray, &cv::kDetectorCounts, options_.intensities},
                   IntensitiesOf(spectrum));
    if (hasDrift) arrays_.Append(out, {cv::kOtherArray, nullptr, Precision::kExact, "drift bin"}, bins_);
    out += "</binaryDataArrayList>\n</spectrum>\n";
  }

  static void AppendSummary(std::string& out, CZRMassSpectrum& spectrum) {
    AppendRange(out, MassesOf(spectrum), cv::kLowestMz, cv::kHighestMz, cv::kMzUnit);
    if (spectrum.UsablePoints() > 0) {
      AppendFiniteCvNumber(out, cv::kBasePeakMz, spectrum.GetBasePeakMass(), &cv::kMzUnit);
      AppendFiniteCvNumber(out, cv::kBasePeakIntensity, spectrum.GetBasePeakIntensity(),
                           &cv::kDetectorCounts);
    }
    AppendFiniteCvNumber(out, cv::kTotalIonCurrent, spectrum.GetTotalIntensity());
    const HostString& title = spectrum.GetTitle();
    if (!title.empty())
      AppendCvParam(out, cv::kSpectrumTitle, XmlText(std::wstring(title.begin(), title.end())));
  }

  void AppendAbsorbance(std::string& out, std::size_t index, const RunEntry& entry) {
    const CZRAbsorbanceSpectrum spectrum = reader_.ReadAbsorbance(entry);
    const std::size_t points = std::min(spectrum.Wavelengths().size(), spectrum.Absorbances().size());
    const std::span<const double> wavelengths = {spectrum.Wavelengths().data(), points};
    Open(out, index, entry, points);
    AppendCvParam(out, cv::kRadiationSpectrum);
    AppendCvParam(out, cv::kProfile);
    AppendRange(out, wavelengths, cv::kLowestWavelength, cv::kHighestWavelength, cv::kNanometer);
    AppendScan(out, reader_.Plan().FunctionOf(entry), entry.minutes);
    out += "<binaryDataArrayList count=\"2\">\n";
    arrays_.Append(out, {cv::kWavelengthArray, &cv::kNanometer, options_.masses}, wavelengths);
    arrays_.Append(out, {cv::kIntensityArray, &cv::kAbsorbanceUnit, options_.intensities},
                   {spectrum.Absorbances().data(), points});
    out += "</binaryDataArrayList>\n</spectrum>\n";
  }

  SpectrumReader reader_;
  ArrayOptions options_;
  ArrayWriter arrays_;
  std::vector<double> bins_;
};

}  // namespace

const CvTerm& SpectrumType(const RunFunction& function) {
  if (function.isAbsorbance) return cv::kRadiationSpectrum;
  for (const ScanTypeTerm& entry : kScanTypeTerms) {
    if (entry.scanType == function.scanType) return entry.term;
  }
  const bool isFragment = function.msLevel > 1;
  if (function.kind == kIonMonitoringFunction) return isFragment ? cv::kSrmSpectrum : cv::kSimSpectrum;
  return isFragment ? cv::kMsnSpectrum : cv::kMs1Spectrum;
}

std::unique_ptr<Renderer> MakeMzmlRenderer(CDataServerImpl& server, const RunPlan& plan,
                                           const ArrayOptions& arrays) {
  return std::make_unique<MzmlRenderer>(server, plan, arrays);
}

}  // namespace zrml
