// The answers to the questions of the page, read from a source: one table of them, for the server and for
// kept pages.
#pragma once

#include "source/source.h"
#include "tools/zrml/view/answer.h"
#include "tools/zrml/view/question.h"

namespace zrml::view {

/// Long work is cancelled through the one, and reports to the other.
struct Work {
  source::Cancel cancel = {};
  source::Progress progress = {};

  /// A cancel hook that also counts, for work that asks once for each of `all` parts.
  source::Cancel Counting(std::size_t all) const;
};

/// Curves of more points are thinned, unless the question has a limit of its own.
inline constexpr int kMostPoints = 200'000;

/// Throws WrongQuestion, a source::Error, or Cancelled.
Answer AnswerTo(source::Source& source, const Question& question, const Work& work = {});

/// Whether the answer may take long: it needs the points of many scans. Unknown questions do not.
bool IsLong(const Question& question);

struct FunctionPlace {
  int sample = 0;
  int function = 0;
};

/// Throws WrongQuestion when there is no such function.
FunctionPlace PlaceOf(source::Source& source, const Question& question);

/// Both ends belong to it. Throws WrongQuestion when they are not two numbers in order.
source::Range RangeOf(const Question& question, const std::string& low, const std::string& high);

// The answers of the table; answers.cpp has what they need of a question.
Answer AnswerRun(source::Source& source, const Question& question, const Work& work);
Answer AnswerSample(source::Source& source, const Question& question, const Work& work);
Answer AnswerFindings(source::Source& source, const Question& question, const Work& work);
Answer AnswerChromatogram(source::Source& source, const Question& question, const Work& work);
Answer AnswerTrace(source::Source& source, const Question& question, const Work& work);
Answer AnswerPeaks(source::Source& source, const Question& question, const Work& work);
Answer AnswerSpectrum(source::Source& source, const Question& question, const Work& work);
Answer AnswerAverage(source::Source& source, const Question& question, const Work& work);
Answer AnswerMap(source::Source& source, const Question& question, const Work& work);
Answer AnswerDriftMap(source::Source& source, const Question& question, const Work& work);
Answer AnswerAbsorbanceSpectrum(source::Source& source, const Question& question, const Work& work);
Answer AnswerAbsorbanceMap(source::Source& source, const Question& question, const Work& work);
Answer AnswerAbsorbanceLargest(source::Source& source, const Question& question, const Work& work);
Answer AnswerWavelength(source::Source& source, const Question& question, const Work& work);

}  // namespace zrml::view
