#include "openlynx/precursor_search.h"

#include <algorithm>
#include <cfloat>

namespace zrml::openlynx {
namespace {

// Runs that share a spectrum, as one. They come from one pass through the file, so the positions ascend.
std::vector<Run> JoinedRuns(std::span<const PrecursorCandidate> candidates) {
  std::vector<Run> runs;
  for (const PrecursorCandidate& candidate : candidates) runs.push_back(candidate.spectra);
  std::sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) { return a.first < b.first; });
  std::vector<Run> joined;
  for (const Run& run : runs) {
    if (!joined.empty() && run.first < joined.back().last) {
      joined.back().last = std::max(joined.back().last, run.last);
    } else {
      joined.push_back(run);
    }
  }
  return joined;
}

// Functions of MS level 1; none when one of them has no spectrum.
std::vector<PrecursorCandidate> FindCandidates(Report& report, Sample& sample,
                                               std::span<const std::size_t> functions) {
  std::vector<PrecursorCandidate> candidates;
  TextNumber lastType = kUnreadText;  // functions that lie in each other share a type: told once
  bool isSecondLevel = false;
  for (std::size_t i = 0; i < functions.size(); ++i) {
    const Function& function = sample.functions[functions[i]];
    const std::string_view type = report.TypeOf(sample, function);
    if (function.type != lastType) isSecondLevel = KindOfType(type) == FunctionKind::kMsMs;
    lastType = function.type;
    if (isSecondLevel) continue;
    if (function.spectra.Size() == 0) return {};
    candidates.push_back({static_cast<int>(i), function.spectra});
  }
  return candidates;
}

}  // namespace

PrecursorSearch::PrecursorSearch(Report& report, Sample& sample, std::span<const std::size_t> functions,
                                 std::uint64_t spectrum)
    : candidates_(FindCandidates(report, sample, functions)) {
  const double minutes = report.ReadSeries(std::span(&spectrum, 1), 0).minutes[0];
  double closest = DBL_MAX;  // nothing is as far as that
  for (const Run& run : JoinedRuns(candidates_)) {
    const auto spectra = std::span<const std::uint64_t>(sample.spectra).subspan(run.first, run.Size());
    const std::vector<double> times = report.ReadSeries(spectra, 0).minutes;
    for (std::size_t i = 0; i < times.size(); ++i) {
      const double distance = minutes - times[i];
      if (!(distance >= 0) || distance == DBL_MAX || distance > closest) continue;
      if (distance < closest) closest_.clear();
      closest = distance;
      closest_.push_back(run.first + i);
    }
  }
}

std::span<const std::size_t> PrecursorSearch::ClosestIn(const PrecursorCandidate& candidate) const {
  const auto first = std::lower_bound(closest_.begin(), closest_.end(), candidate.spectra.first);
  const auto last = std::lower_bound(first, closest_.end(), candidate.spectra.last);
  return {first, last};
}

std::pair<int, int> PrecursorSearch::ScanOf(const PrecursorCandidate& candidate, std::size_t spectrum) {
  return {candidate.function, static_cast<int>(spectrum - candidate.spectra.first)};
}

}  // namespace zrml::openlynx
