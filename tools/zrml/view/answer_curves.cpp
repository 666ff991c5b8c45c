// Chromatograms, traces and spectra.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "spectrum/centroiding.h"
#include "tools/zrml/view/answers.h"
#include "tools/zrml/view/average.h"
#include "tools/zrml/view/peaks.h"
#include "tools/zrml/view/thinning.h"

namespace zrml::view {
namespace {

using source::Source;

// A chromatogram with a scan at each point.
Curve ScanCurve(source::Chromatogram&& chromatogram) {
  Curve curve = {std::move(chromatogram.minutes), std::move(chromatogram.intensities), {}};
  curve.scans.resize(curve.x.size());
  std::iota(curve.scans.begin(), curve.scans.end(), 0);
  return curve;
}

// The ends of the lines that are seen between two times, in whatever order the points are.
void CutTimes(Curve& curve, source::Range minutes) {
  const std::vector<double>& x = curve.x;
  const auto isSeen = [&](std::size_t from, std::size_t to) {
    return std::min(x[from], x[to]) <= minutes.high && std::max(x[from], x[to]) >= minutes.low;
  };
  Curve cut;
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (!isSeen(i, i) && !(i > 0 && isSeen(i - 1, i)) && !(i + 1 < x.size() && isSeen(i, i + 1))) continue;
    cut.x.push_back(x[i]);
    cut.y.push_back(curve.y[i]);
    if (!curve.scans.empty()) cut.scans.push_back(curve.scans[i]);  // traces have none
  }
  curve = std::move(cut);
}

Answer CurveAnswer(const Question& question, Curve curve) {
  Answer answer;
  if (question.Has("from")) CutTimes(curve, RangeOf(question, "from", "to"));
  const int limit = question.Has("limit") ? std::max(question.Position("limit"), 2) : kMostPoints;
  answer.facts["points"] = curve.y.size();
  answer.facts["isEmpty"] =
      std::all_of(curve.y.begin(), curve.y.end(), [](double value) { return std::isnan(value); });
  Thin(curve, static_cast<std::size_t>(limit), Keep::kBoth);
  answer.curve = std::move(curve);
  return answer;
}

source::Chromatogram ReadChromatogram(Source& source, const Question& question, const FunctionPlace& at,
                                      const Work& work) {
  const std::string kind = question.Word("kind");
  if (kind == "tic") return source.TotalIons(at.sample, at.function);
  const source::Cancel cancel =
      work.Counting(static_cast<std::size_t>(source.ScanCount(at.sample, at.function)));
  if (kind == "bpc") return source.BasePeaks(at.sample, at.function, cancel);
  if (kind != "sum" && kind != "largest") throw WrongQuestion();
  return source.MassRange(at.sample, at.function, RangeOf(question, "low", "high"),
                          kind == "sum" ? source::Within::kSum : source::Within::kLargest, cancel);
}

Json PrecursorJson(Source& source, const FunctionPlace& at, int scan) {
  const auto found = source.FindPrecursor(at.sample, at.function, scan);
  return found ? Json{{"function", found->function}, {"scan", found->scan}} : Json();
}

// Scans of products that come from a scan: the next ones of each function, as far as they do.
Json ProductsJson(Source& source, const FunctionPlace& at, int scan, double minutes) {
  constexpr int kMost = 20;
  Json products = Json::array();
  const int functions = static_cast<int>(source.Functions(at.sample).size());
  for (int function = 0; function < functions; ++function) {
    if (source.Functions(at.sample)[static_cast<std::size_t>(function)].msLevel < 2) continue;
    const std::vector<double> times = source.Minutes(at.sample, function);
    auto next = static_cast<int>(std::lower_bound(times.begin(), times.end(), minutes) - times.begin());
    for (int count = 0; next < static_cast<int>(times.size()) && count < kMost; ++next, ++count) {
      const auto from = source.FindPrecursor(at.sample, function, next);
      if (!from || from->function != at.function || from->scan != scan) break;
      const source::Scan product = source.ScanAt(at.sample, function, next);
      products.push_back({{"function", function},
                          {"scan", next},
                          {"precursorMz", product.precursorMz ? Json(*product.precursorMz) : Json()}});
    }
  }
  return products;
}

void AddPointFacts(const Curve& curve, Json& facts) {
  const auto base = std::max_element(curve.y.begin(), curve.y.end());
  const bool hasPoints = base != curve.y.end();
  facts["points"] = curve.y.size();
  facts["total"] = std::accumulate(curve.y.begin(), curve.y.end(), 0.0);
  facts["basePeakMz"] = hasPoints ? Json(curve.x[static_cast<std::size_t>(base - curve.y.begin())]) : Json();
  facts["basePeak"] = hasPoints ? Json(*base) : Json();
}

// The curve as a spectrum, or its centroids when the question wants them.
Answer SpectrumAnswer(const Question& question, Curve curve, std::optional<bool> isCentroided) {
  Answer answer;
  AddPointFacts(curve, answer.facts);
  answer.facts["isCentroided"] = isCentroided ? Json(*isCentroided) : Json();
  answer.facts["areCentroids"] = isCentroided.value_or(true);
  if (isCentroided == false && question.Word("centroids") == "1") {
    Curve centroids;
    FindCentroids(curve.x, curve.y, {}, centroids.x, centroids.y);
    curve = std::move(centroids);
    answer.facts["areCentroids"] = true;
  }
  answer.curve = std::move(curve);
  return answer;
}

}  // namespace

Answer AnswerChromatogram(Source& source, const Question& question, const Work& work) {
  return CurveAnswer(question,
                     ScanCurve(ReadChromatogram(source, question, PlaceOf(source, question), work)));
}

Answer AnswerTrace(Source& source, const Question& question, const Work&) {
  const int sample = question.Position("sample", source.SampleCount());
  const int trace = question.Position("trace");
  source::Chromatogram points =
      question.Has("function") ? source.ReadFunctionTrace(sample, PlaceOf(source, question).function, trace)
                               : source.ReadTrace(sample, trace);
  return CurveAnswer(question, {std::move(points.minutes), std::move(points.intensities), {}});
}

Answer AnswerPeaks(Source& source, const Question& question, const Work& work) {
  constexpr std::size_t kMost = 6;
  const FunctionPlace at = PlaceOf(source, question);
  const int scans = source.ScanCount(at.sample, at.function);
  const source::Chromatogram chromatogram =
      source.BasePeaks(at.sample, at.function, work.Counting(static_cast<std::size_t>(scans)));
  Answer answer;
  answer.facts["peaks"] = Json::array();
  for (const std::size_t scan : LargestPeaks(chromatogram.intensities, kMost)) {
    answer.facts["peaks"].push_back({{"scan", scan},
                                     {"minutes", chromatogram.minutes[scan]},
                                     {"intensity", chromatogram.intensities[scan]}});
  }
  return answer;
}

Answer AnswerSpectrum(Source& source, const Question& question, const Work&) {
  const FunctionPlace at = PlaceOf(source, question);
  const int position = question.Position("scan", source.ScanCount(at.sample, at.function));
  const source::Scan scan = source.ScanAt(at.sample, at.function, position);
  Curve curve;
  source::PointsRead read;
  if (question.Has("bin")) {
    const int bin = question.Position("bin", source.DriftBinCount(at.sample, at.function));
    source.ReadDriftBin(at.sample, at.function, position, bin, curve.x, curve.y);
  } else {
    read = source.ReadPoints(at.sample, at.function, position, curve.x, curve.y);
  }
  Answer answer = SpectrumAnswer(question, std::move(curve), IsCentroided(scan));
  Json& facts = answer.facts;
  facts["scan"] = position;
  facts["minutes"] = scan.minutes;
  facts["endMinutes"] = scan.endMinutes;
  facts["lost"] = read.lost;
  facts["process"] = source.ScanProcess(at.sample, at.function, position);
  facts["precursorMz"] = scan.precursorMz ? Json(*scan.precursorMz) : Json();
  facts["isPrecursorOfMethod"] = scan.isPrecursorOfMethod;
  facts["scanValue"] = scan.scanValue ? Json(*scan.scanValue) : Json();
  facts["precursor"] = PrecursorJson(source, at, position);
  facts["products"] = ProductsJson(source, at, position, scan.minutes);
  return answer;
}

Answer AnswerAverage(Source& source, const Question& question, const Work& work) {
  const FunctionPlace at = PlaceOf(source, question);
  const source::Range front = RangeOf(question, "from", "to");
  std::optional<source::Range> background;
  if (question.Has("backFrom")) background = RangeOf(question, "backFrom", "backTo");
  const auto [mean, backgroundScans] = AverageScans(source, at.sample, at.function, front, background, work);
  Answer answer = SpectrumAnswer(question, {mean.mz, mean.intensities, {}}, mean.isCentroided);
  answer.facts["scans"] = mean.added.size();
  answer.facts["leftOut"] = mean.leftOut;
  answer.facts["lost"] = mean.lost;
  answer.facts["backgroundScans"] = backgroundScans;
  return answer;
}

}  // namespace zrml::view
