// A look at every point of a source, for damage that the structure of the files does not show. docs/check.md
#pragma once

#include "source/source.h"

namespace zrml::source {

/// A scan in mass that has been read, valid during the call.
struct ScanInSight {
  int sample = 0;
  int function = 0;
  const Function& described;
  const Scan& scan;
  PointsRead read;
  std::span<const double> mz;
  std::span<const double> intensities;
};

/// Sees what is read, for work that needs the same pass over the points.
class Onlooker {
 public:
  Onlooker() = default;
  Onlooker(const Onlooker&) = delete;
  Onlooker& operator=(const Onlooker&) = delete;
  virtual ~Onlooker() = default;

  /// Function by function, in the order of the scans. Scans that cannot be read are left out.
  virtual void See(const ScanInSight& scan) = 0;
  /// A trace of the sample or of one of its functions.
  virtual void See(int sample, const Chromatogram& trace) = 0;
};

/// What the source's own findings do not say: scans that cannot be read or have lost points, points that
/// cannot be measured values, spectra without points. Reads each scan and trace once; throws nothing but
/// Cancelled and what `onlooker` throws.
Findings LookAtPoints(Source& source, const Cancel& cancel = {}, const Progress& progress = {},
                      Onlooker* onlooker = nullptr);

}  // namespace zrml::source
