#include "convert/trace_kind.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string>

#include "common/text.h"

namespace zrml::convert {
namespace {

using source::FunctionKind;

struct TraceWord {
  std::string_view word;
  const CvTerm& term;
};

constexpr TraceWord kTraceWords[] = {
    {"pressure", cv::kPressureChromatogram},     {"flow", cv::kFlowChromatogram},
    {"absorbance", cv::kAbsorptionChromatogram}, {"absorption", cv::kAbsorptionChromatogram},
    {"uv", cv::kAbsorptionChromatogram},         {"tuv", cv::kAbsorptionChromatogram},
    {"pda", cv::kAbsorptionChromatogram},        {"dad", cv::kAbsorptionChromatogram},
    {"nm", cv::kAbsorptionChromatogram},
};

// Of functions with scans of masses.
constexpr TraceWord kMassWords[] = {
    {"tic", cv::kTicChromatogram},
    {"bpi", cv::kBasePeakChromatogram},
    {"bpc", cv::kBasePeakChromatogram},
};

// Words that show that a name means something other than the words above.
constexpr std::string_view kIonWords[] = {"tic", "bpi", "xic", "ion", "ionisation", "ionization", "source"};

bool RecordsIons(FunctionKind kind) {
  return kind == FunctionKind::kMs || kind == FunctionKind::kMsMs || kind == FunctionKind::kIonMonitoring;
}

// The term of the first word found in the name, or null.
const CvTerm* TermIn(std::span<const TraceWord> words, std::string_view name) {
  const auto row = std::find_if(words.begin(), words.end(),
                                [&](const TraceWord& each) { return HasWord(name, each.word); });
  return row != words.end() ? &row->term : nullptr;
}

bool SpeaksOfIons(std::string_view name) {
  return std::any_of(std::begin(kIonWords), std::end(kIonWords),
                     [&](std::string_view word) { return HasWord(name, word); });
}

}  // namespace

const CvTerm& TraceType(std::string_view name, std::optional<FunctionKind> function) {
  if (function == FunctionKind::kAbsorbance) return cv::kAbsorptionChromatogram;
  const std::string lower = ToLower(name);
  const bool isOfMasses = function && RecordsIons(*function);
  const CvTerm* found = nullptr;
  if (isOfMasses) {
    found = TermIn(kMassWords, lower);
  } else if (!SpeaksOfIons(lower)) {
    found = TermIn(kTraceWords, lower);
  }
  return found != nullptr ? *found : cv::kIonCurrentChromatogram;
}

}  // namespace zrml::convert
