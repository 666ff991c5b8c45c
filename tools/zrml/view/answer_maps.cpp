// Maps over time, and the absorbance spectra of a raw directory.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "tools/zrml/view/answers.h"
#include "tools/zrml/view/heat_map.h"
#include "tools/zrml/view/thinning.h"

namespace zrml::view {
namespace {

using source::Source;

constexpr int kMostCells = 4096;  // across and upwards

std::optional<source::Range> SideOf(const Question& question, const char* low, const char* high) {
  if (!question.Has(low)) return std::nullopt;
  const source::Range range = RangeOf(question, low, high);
  if (range.low == range.high) throw WrongQuestion();
  return range;
}

MapView ViewOf(const Question& question) {
  return {.minutes = SideOf(question, "from", "to"),
          .ordinate = SideOf(question, "low", "high"),
          .columns = std::max(question.Position("columns", kMostCells), 1),
          .rows = std::max(question.Position("rows", kMostCells), 1)};
}

int AbsorbanceSample(Source& source, const Question& question) {
  const int sample = question.Position("sample", source.SampleCount());
  if (!source.HasAbsorbance(sample)) throw WrongQuestion();
  return sample;
}

SpectraOverTime AbsorbanceSpectra(Source& source, int sample) {
  SpectraOverTime spectra;
  spectra.hasEvenPoints = true;
  const int scans = source.AbsorbanceScanCount(sample);
  for (int scan = 0; scan < scans; ++scan) spectra.minutes.push_back(source.AbsorbanceMinutes(sample, scan));
  spectra.read = [&source, sample](int scan, std::vector<double>& x, std::vector<double>& y) {
    return source.ReadAbsorbance(sample, scan, x, y);
  };
  return spectra;
}

// The largest value of each scan between two wavelengths, and where the largest of all is.
Answer LargestBetween(Source& source, int sample, source::Range wavelengths, const Work& work) {
  const SpectraOverTime spectra = AbsorbanceSpectra(source, sample);
  Answer answer;
  Curve& curve = answer.curve;
  curve.x = spectra.minutes;
  double largest = -std::numeric_limits<double>::infinity();
  std::vector<double> x;
  std::vector<double> y;
  for (int scan = 0; scan < static_cast<int>(curve.x.size()); ++scan) {
    source::ThrowIfCancelled(work.cancel);
    spectra.read(scan, x, y);
    double most = std::numeric_limits<double>::quiet_NaN();
    for (std::size_t i = 0; i < x.size(); ++i) {
      if (x[i] < wavelengths.low || x[i] > wavelengths.high) continue;
      if (!(y[i] <= most)) most = y[i];
      if (!(y[i] > largest)) continue;
      largest = y[i];
      answer.facts["wavelength"] = x[i];
      answer.facts["scan"] = scan;
    }
    curve.y.push_back(most);
    curve.scans.push_back(scan);
    if (work.progress) work.progress(curve.y.size(), curve.x.size());
  }
  answer.facts["points"] = curve.y.size();
  Thin(curve, kMostPoints, Keep::kBoth);
  return answer;
}

}  // namespace

Answer AnswerMap(Source& source, const Question& question, const Work& work) {
  const FunctionPlace at = PlaceOf(source, question);
  const source::Function& function = source.Functions(at.sample)[static_cast<std::size_t>(at.function)];
  MapView view = ViewOf(question);
  if (!view.ordinate && function.massRange && function.massRange->low < function.massRange->high)
    view.ordinate = function.massRange;
  const bool isAbsorbance = function.kind == source::FunctionKind::kAbsorbance;
  const auto read = [&](int scan, std::vector<double>& x, std::vector<double>& y) {
    return source.ReadPoints(at.sample, at.function, scan, x, y);
  };
  return MakeHeatMap({source.Minutes(at.sample, at.function), read, isAbsorbance}, view,
                     isAbsorbance ? Steps::kEven : Steps::kDecades, work);
}

Answer AnswerDriftMap(Source& source, const Question& question, const Work& work) {
  const FunctionPlace at = PlaceOf(source, question);
  const int scan = question.Position("scan", source.ScanCount(at.sample, at.function));
  std::vector<double> bins(static_cast<std::size_t>(source.DriftBinCount(at.sample, at.function)));
  if (bins.empty()) throw WrongQuestion();
  std::iota(bins.begin(), bins.end(), 1.0);
  const auto read = [&](int bin, std::vector<double>& x, std::vector<double>& y) {
    source.ReadDriftBin(at.sample, at.function, scan, bin, x, y);
    return source::PointsRead{x.size(), 0};
  };
  return MakeHeatMap({bins, read}, ViewOf(question), Steps::kDecades, work);
}

Answer AnswerAbsorbanceMap(Source& source, const Question& question, const Work& work) {
  const int sample = AbsorbanceSample(source, question);
  return MakeHeatMap(AbsorbanceSpectra(source, sample), ViewOf(question), Steps::kEven, work);
}

Answer AnswerAbsorbanceSpectrum(Source& source, const Question& question, const Work&) {
  const int sample = AbsorbanceSample(source, question);
  const int scan = question.Position("scan", source.AbsorbanceScanCount(sample));
  Answer answer;
  const source::PointsRead read = source.ReadAbsorbance(sample, scan, answer.curve.x, answer.curve.y);
  answer.facts = {{"scan", scan},
                  {"minutes", source.AbsorbanceMinutes(sample, scan)},
                  {"points", read.count},
                  {"lost", read.lost}};
  return answer;
}

Answer AnswerAbsorbanceLargest(Source& source, const Question& question, const Work& work) {
  constexpr double kEnd = std::numeric_limits<double>::infinity();
  return LargestBetween(source, AbsorbanceSample(source, question), {-kEnd, kEnd}, work);
}

Answer AnswerWavelength(Source& source, const Question& question, const Work& work) {
  const int sample = AbsorbanceSample(source, question);
  return LargestBetween(source, sample, RangeOf(question, "low", "high"), work);
}

}  // namespace zrml::view
