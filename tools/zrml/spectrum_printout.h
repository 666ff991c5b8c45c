// What `zrml spectrum` prints of a scan and of a sum of scans.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "convert/selection.h"
#include "source/sum_scans.h"
#include "tools/zrml/printout.h"

namespace zrml::tool {

struct SpectrumPoints {
  std::vector<double> masses;
  std::vector<double> intensities;
  std::size_t lost = 0;               // declared by the index, held by no file
  std::optional<source::Range> bins;  // of the scan that the points are from
};

/// How scans were combined, and which.
struct Combination {
  bool isMean = false;
  const source::ScanSum& sum;
  const source::ScanSum* background = nullptr;
};

/// "1-3,7", as --scans takes them.
std::string ListOfScans(std::span<const int> positions);

/// The columns refer to `points`, which centroids and filters have been applied to if `choice` says so.
Printout PrintoutOfScan(source::Source& source, const FunctionPosition& at, int position,
                        const convert::PointChoice& choice, SpectrumPoints& points);
Printout PrintoutOfSum(source::Source& source, const FunctionPosition& at, const Combination& combination,
                       const convert::PointChoice& choice, SpectrumPoints& points);

/// Of a raw directory's absorbance spectra.
Printout PrintoutOfAbsorbance(source::Source& source, int sample, int position, const SpectrumPoints& points);
Printout PrintoutOfAbsorbanceSum(source::Source& source, int sample, const Combination& combination,
                                 const SpectrumPoints& points);

}  // namespace zrml::tool
