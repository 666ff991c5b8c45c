// Signs of damage in the points of a scan, apart from lost points: sums that differ from the scan's total,
// masses outside the function's range, intensities that no detector gives. docs/check.md
#pragma once

#include <map>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "common/findings.h"
#include "source/source.h"

namespace zrml::source {

struct ScanFault {
  FindingCode code = {};
  std::string extent;  ///< by how much: "sum 10, total 500"
};

/// Faults of the points of a scan, in ascending m/z. None for reports, whose spectra are results of
/// processing, and none where there are drift bins.
std::vector<ScanFault> FaultsOf(Format format, const Function& function, const Scan& scan,
                                std::span<const double> mz, std::span<const double> intensities);

/// Scans with faults, in any order.
class FaultyScans {
 public:
  /// Scan `number`, from 1.
  void Add(const Function& function, int number, const std::vector<ScanFault>& faults);

  /// A finding for each function and fault.
  void AddTo(Findings& findings) const;

 private:
  struct Entry {
    std::string file;
    std::uint64_t count = 0;
    std::uint64_t first = 0;
    std::string extent;  // of the first
  };

  std::map<std::pair<FindingSubject, FindingCode>, Entry> entries_;
};

}  // namespace zrml::source
