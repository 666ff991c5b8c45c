#include "tools/zrml/view/answers.h"

#include <algorithm>
#include <array>
#include <memory>

namespace zrml::view {
namespace {

enum class Takes { kMoment, kLong };

struct Row {
  std::string_view name;
  Answer (*answer)(source::Source&, const Question&, const Work&);
  Takes takes;
};

// clang-format off
//   run                  what the file is, and its samples
//   sample               sample: functions, traces, absorbance, metadata
//   findings             points: 1 to look at every point, 0
//   chromatogram         sample, function, kind: tic, bpc, sum or largest (of low to high); from, to, limit
//   trace                sample, trace; function; from, to, limit
//   peaks                sample, function: the largest of its base peak chromatogram
//   spectrum             sample, function, scan; bin; centroids: 1 for those of a profile
//   average              sample, function, from, to; backFrom, backTo; centroids
//   map                  sample, function, columns, rows; from, to, low, high
//   drift-map            sample, function, scan, columns, rows; from, to (bins from 1), low, high
//   absorbance           sample, scan
//   absorbance-map       sample, columns, rows; from, to, low, high
//   absorbance-largest   sample: the largest value of each scan
//   wavelength           sample, low, high: the largest value between them, by scan
// clang-format on
constexpr std::array<Row, 14> kRows = {{
    {"run", AnswerRun, Takes::kMoment},
    {"sample", AnswerSample, Takes::kMoment},
    {"findings", AnswerFindings, Takes::kLong},
    {"chromatogram", AnswerChromatogram, Takes::kLong},
    {"trace", AnswerTrace, Takes::kMoment},
    {"peaks", AnswerPeaks, Takes::kLong},
    {"spectrum", AnswerSpectrum, Takes::kMoment},
    {"average", AnswerAverage, Takes::kLong},
    {"map", AnswerMap, Takes::kLong},
    {"drift-map", AnswerDriftMap, Takes::kLong},
    {"absorbance", AnswerAbsorbanceSpectrum, Takes::kMoment},
    {"absorbance-map", AnswerAbsorbanceMap, Takes::kLong},
    {"absorbance-largest", AnswerAbsorbanceLargest, Takes::kLong},
    {"wavelength", AnswerWavelength, Takes::kLong},
}};

const Row* FindRow(const Question& question) {
  const auto* const found =
      std::find_if(kRows.begin(), kRows.end(), [&](const Row& row) { return row.name == question.Name(); });
  return found == kRows.end() ? nullptr : found;
}

}  // namespace

source::Cancel Work::Counting(std::size_t all) const {
  const auto done = std::make_shared<std::uint64_t>(0);
  return [*this, done, all] {
    if (progress && *done < all) progress(++*done, all);
    return cancel && cancel();
  };
}

FunctionPlace PlaceOf(source::Source& source, const Question& question) {
  const int sample = question.Position("sample", source.SampleCount());
  return {sample, question.Position("function", static_cast<int>(source.Functions(sample).size()))};
}

source::Range RangeOf(const Question& question, const std::string& low, const std::string& high) {
  const source::Range range = {question.Number(low), question.Number(high)};
  if (range.low > range.high) throw WrongQuestion();
  return range;
}

Answer AnswerTo(source::Source& source, const Question& question, const Work& work) {
  const Row* const row = FindRow(question);
  if (row == nullptr) throw WrongQuestion();
  return row->answer(source, question, work);
}

bool IsLong(const Question& question) {
  const Row* const row = FindRow(question);
  if (row == nullptr || row->takes == Takes::kMoment) return false;
  return question.Word("kind") != "tic";
}

}  // namespace zrml::view
