// Finding the scan that a spectrum comes from among functions whose spectra may be the same ones: each is
// read and compared once, whatever number of functions it is in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "openlynx/report.h"

namespace zrml::openlynx {

/// A function in which the precursor may be, and its run of the sample's spectra, which is not empty.
struct PrecursorCandidate {
  int function = 0;  // its position among those that are searched
  Run spectra;
};

/// Where the closest scans are that are not later than a spectrum.
class PrecursorSearch {
 public:
  /// `functions` are positions in the sample's functions, in the order of the file; their blocks have been
  /// found.
  PrecursorSearch(Report& report, Sample& sample, std::span<const std::size_t> functions,
                  std::uint64_t spectrum);

  /// Function and scan. Of equally close scans the last one counts that is in a function that is `alike`, or
  /// the first one when none is. No value when there is no scan.
  template <class Alike>
  std::optional<std::pair<int, int>> Find(Alike alike) const {
    std::optional<std::pair<int, int>> first;
    for (std::size_t i = candidates_.size(); i-- > 0;) {
      const std::span<const std::size_t> closest = ClosestIn(candidates_[i]);
      if (closest.empty()) continue;
      if (alike(candidates_[i])) return ScanOf(candidates_[i], closest.back());
      first = ScanOf(candidates_[i], closest.front());
    }
    return first;
  }

 private:
  std::span<const std::size_t> ClosestIn(const PrecursorCandidate& candidate) const;
  static std::pair<int, int> ScanOf(const PrecursorCandidate& candidate, std::size_t spectrum);

  std::vector<PrecursorCandidate> candidates_;
  std::vector<std::size_t> closest_;  // of the sample's spectra
};

/// The scan that the spectrum of a function of MS level 2 goes back to: function, as a position in
/// `functions`, and scan. Equally close scans in a function with the same polarity and the same kind of
/// spectra come first.
template <class SamePolarity, class SameSpectra>
std::optional<std::pair<int, int>> FindPrecursor(Report& report, Sample& sample,
                                                 std::span<const std::size_t> functions,
                                                 std::uint64_t spectrum, SamePolarity samePolarity,
                                                 SameSpectra sameSpectra) {
  std::size_t lastFirst =
      sample.spectra.size();  // functions that lie in each other share their first spectrum
  bool isAlike = false;
  return PrecursorSearch(report, sample, functions, spectrum).Find([&](const PrecursorCandidate& candidate) {
    if (!samePolarity(candidate.function)) return false;
    if (candidate.spectra.first != lastFirst) isAlike = sameSpectra(candidate.function);
    lastFirst = candidate.spectra.first;
    return isAlike;
  });
}

}  // namespace zrml::openlynx
