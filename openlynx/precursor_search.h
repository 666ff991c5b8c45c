// Finding the scan that a spectrum comes from among functions whose spectra may be the same ones: each is
// read and compared once, whatever number of functions it is in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "openlynx/report_index.h"
#include "openlynx/report_stream.h"

namespace zrml {

/// A function in which the precursor may be, and its run of the sample's spectra, which is not empty.
struct PrecursorCandidate {
  int function = 0;
  Run spectra;
};

/// Where the closest scans are that are not later than a time.
class PrecursorSearch {
 public:
  /// `candidates` are in the order of the file.
  PrecursorSearch(ReportStream& stream, std::span<const std::uint64_t> spectra,
                  std::span<const PrecursorCandidate> candidates, double minutes);

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

  std::span<const PrecursorCandidate> candidates_;
  std::vector<std::size_t> closest_;  // of the sample's spectra
};

}  // namespace zrml
