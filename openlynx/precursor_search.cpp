#include "openlynx/precursor_search.h"

#include <algorithm>
#include <cfloat>

#include "openlynx/report_values.h"

namespace zrml {
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

}  // namespace

PrecursorSearch::PrecursorSearch(ReportStream& stream, std::span<const std::uint64_t> spectra,
                                 std::span<const PrecursorCandidate> candidates, double minutes)
    : candidates_(candidates) {
  double closest = DBL_MAX;  // nothing is as far as that
  for (const Run& run : JoinedRuns(candidates)) {
    const HostVector<double> times = ReadScanTimes(stream, spectra.subspan(run.first, run.Size())).times;
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

}  // namespace zrml
