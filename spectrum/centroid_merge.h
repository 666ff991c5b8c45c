// Merging of peaks that lie within one peak width of each other.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "spectrum/mass_spectrum.h"
#include "spectrum/peak_width_law.h"
#include "spectrum/scan_law.h"

namespace zrml {

struct PeakMergeContext {
  std::shared_ptr<CZRMSPeakWidthLaw::Law> widthLaw;
  bool reserved = false;  ///< not interpreted
  ScanLawHolder scanLaw;
};

/// A merged peak: its index among the points before the merge, and the lowest and highest index merged into
/// it.
struct MergedPeak {
  std::int32_t peak;
  std::int32_t lowest;
  std::int32_t highest;
};

/// The width within which peaks merge at `mass`: that of the width law (1.0 without one) plus half a step of
/// the scan law, at most 1.0. The cap is deliberate: peaks more than half a mass unit from the visited one
/// never merge with it, whatever the law says.
double PeakWidthAt(const PeakMergeContext& context, double mass);

/// Merges the peaks of `spectrum`, whose masses ascend, strongest first, each with its neighbours within half
/// the width over `factor` on either side; a merged peak has the summed intensity at the mean mass, weighted
/// by intensity. With negative intensities, which some data formats can hold, that mean can fall outside the
/// merged peaks, and the masses may no longer ascend. Points of mass 0 or below are dropped; so are the
/// optional arrays, except the point marks, which are cut to size. The result is the new count, 0 with
/// nothing changed when `factor` is not positive; fewer than two points are left unchanged. `merged`, when
/// given, receives every visited peak in the order of `peak`, including those absorbed by a later one.
int MergePeaks(const PeakMergeContext& context, double factor, CZRMassSpectrum& spectrum,
               std::vector<MergedPeak>* merged = nullptr);

/// The same with a width of `width` mass units, or parts per million when `absoluteWidth` is false. A
/// negative width counts as 1.0.
int MergeCentroidPeaks(bool absoluteWidth, double width, CZRMassSpectrum& spectrum);

}  // namespace zrml
