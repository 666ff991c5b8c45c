#include "openlynx/precursor_search.h"

#include <algorithm>
#include <cfloat>
#include <vector>

namespace zrml::openlynx {
namespace {

// A function in which the precursor may be, and its run of the sample's spectra, which is not empty.
struct Candidate {
  int function = 0;  // its place among the searched ones
  Run spectra;
};

// Merges runs that share a spectrum. They come from one pass through the file, so the positions ascend.
std::vector<Run> JoinedRuns(std::span<const Candidate> candidates) {
  std::vector<Run> runs;
  for (const Candidate& candidate : candidates) runs.push_back(candidate.spectra);
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
std::vector<Candidate> FindCandidates(Report& report, Sample& sample,
                                      std::span<const std::size_t> functions) {
  std::vector<Candidate> candidates;
  TextNumber lastType = kUnreadText;  // nested functions share a type: parsed once
  bool isSecondLevel = false;
  for (std::size_t i = 0; i < functions.size(); ++i) {
    const Function& function = sample.functions[functions[i]];
    const std::string_view type = report.TypeOf(sample, function);
    if (function.type != lastType) isSecondLevel = MsLevelOf(KindOfType(type)) == 2;
    lastType = function.type;
    if (isSecondLevel || function.isTypeHidden) continue;
    if (function.spectra.Size() == 0) return {};
    candidates.push_back({static_cast<int>(i), function.spectra});
  }
  return candidates;
}

// The sample's spectra that are closest to a time and not later, by number.
std::vector<std::size_t> FindClosest(Report& report, const Sample& sample,
                                     std::span<const Candidate> candidates, double minutes, double missing) {
  std::vector<std::size_t> found;
  double closest = DBL_MAX;  // farther than any spectrum
  for (const Run& run : JoinedRuns(candidates)) {
    const auto spectra = std::span<const std::uint64_t>(sample.spectra).subspan(run.first, run.Size());
    const std::vector<double> times = report.ReadSeries(spectra, missing).minutes;
    for (std::size_t i = 0; i < times.size(); ++i) {
      const double distance = minutes - times[i];
      if (!(distance >= 0) || distance == DBL_MAX || distance > closest) continue;
      if (distance < closest) found.clear();
      closest = distance;
      found.push_back(run.first + i);
    }
  }
  return found;
}

std::span<const std::size_t> ThoseIn(const Run& run, std::span<const std::size_t> spectra) {
  const auto first = std::lower_bound(spectra.begin(), spectra.end(), run.first);
  return {first, std::lower_bound(first, spectra.end(), run.last)};
}

std::pair<int, int> ScanOf(const Candidate& candidate, std::size_t spectrum) {
  return {candidate.function, static_cast<int>(spectrum - candidate.spectra.first)};
}

// Whether functions have the polarity of one of them, and spectra of the same kind.
class SameKind {
 public:
  SameKind(Report& report, Sample& sample, Function& own)
      : report_(report),
        sample_(sample),
        isCentroided_(report.IsCentroided(sample, own)),
        polarity_(report.PolarityOf(sample, own)),
        lastFirst_(sample.spectra.size()) {}

  bool Includes(Function& other) {
    if (report_.PolarityOf(sample_, other) != polarity_) return false;
    if (other.spectra.first != lastFirst_)
      hasLastSameSpectra_ = report_.IsCentroided(sample_, other) == isCentroided_;
    lastFirst_ = other.spectra.first;
    return hasLastSameSpectra_;
  }

 private:
  Report& report_;
  Sample& sample_;
  bool isCentroided_;
  Polarity polarity_;
  std::size_t lastFirst_;  // nested functions share their first spectrum: read once
  bool hasLastSameSpectra_ = false;
};

}  // namespace

std::optional<std::pair<int, int>> FindPrecursor(Report& report, Sample& sample,
                                                 std::span<const std::size_t> functions, int function,
                                                 std::uint64_t spectrum, double missing) {
  const auto at = [&](int place) -> Function& {
    return sample.functions[functions[static_cast<std::size_t>(place)]];
  };
  if (MsLevelOf(report.KindOf(sample, at(function))) != 2) return std::nullopt;
  SameKind sameKind(report, sample, at(function));
  const std::vector<Candidate> candidates = FindCandidates(report, sample, functions);
  const double minutes = report.ReadSeries(std::span(&spectrum, 1), missing).minutes[0];
  const std::vector<std::size_t> closest = FindClosest(report, sample, candidates, minutes, missing);
  std::optional<std::pair<int, int>> first;
  for (std::size_t i = candidates.size(); i-- > 0;) {
    const Candidate& candidate = candidates[i];
    const std::span<const std::size_t> own = ThoseIn(candidate.spectra, closest);
    if (own.empty()) continue;
    if (sameKind.Includes(at(candidate.function))) return ScanOf(candidate, own.back());
    first = ScanOf(candidate, own.front());
  }
  return first;
}

}  // namespace zrml::openlynx
