#include "spectrum/add_spectrum.h"

#include <algorithm>
#include <cstddef>

#include "spectrum/centroid_merge.h"
#include "spectrum/point_merge.h"
#include "spectrum/profile_resampling.h"
#include "spectrum/scan_law.h"

namespace zrml {
namespace {

constexpr int kShortestProfile = 3;

void TakePoints(const CZRMassSpectrum& source, CZRMassSpectrum& target) {
  CZRMassSpectrum taken(source);
  taken.SetPointDataRelease(nullptr, nullptr);  // source remains their owner
  taken.CopyAttributes(target);
  taken.InvalidateStatistics();
  target.Swap(taken);
}

// Points that only one of target's arrays has are dropped and their data released. Allocates nothing.
void CutToMergedPoints(CZRMassSpectrum& target) { target.SetSize(static_cast<int>(target.UsablePoints())); }

double FirstStep(const CZRMassSpectrum& spectrum) { return spectrum.GetMass(1) - spectrum.GetMass(0); }

// The first two points.
CZRMassSpectrum Start(const CZRMassSpectrum& spectrum) {
  const int count = static_cast<int>(std::min<std::size_t>(spectrum.UsablePoints(), 2));
  CZRMassSpectrum start;
  start.SetSize(count);
  for (int i = 0; i < count; ++i) start.SetMass(i, spectrum.GetMass(i));
  return start;
}

// Whether the combined points start with a step that neither spectrum has, judged by their first two points.
bool AreInterleaved(const CZRMassSpectrum& source, const CZRMassSpectrum& target) {
  const double step = FirstStep(MergePoints(Start(source), Start(target), true));
  return FirstStep(source) > step && FirstStep(target) > step;
}

// Gives the combined points when both spectra are samples of one grid.
bool MergeOnOneGrid(const CZRMassSpectrum& source, const CZRMassSpectrum& target, CZRMassSpectrum& merged) {
  if (AreInterleaved(source, target)) return false;
  ScanLawHolder targetLaw;
  ScanLawHolder law;
  DetectScanLaw(targetLaw, target);
  DetectScanLaw(law, source);
  if (SameScanLaw(law, targetLaw) == 0) return false;  // nor when one has none
  merged = MergePoints(source, target, true);
  merged.SetCentroided(false);
  DetectScanLaw(law, merged);
  return SameScanLaw(law, targetLaw) != 0;
}

}  // namespace

int AddSpectrum(bool absoluteWidth, double tolerance, const CZRMassSpectrum& source,
                CZRMassSpectrum& target) {
  if (source.IsCentroided() != target.IsCentroided()) {
    target.SetSize(0);
    return 0;
  }
  if (source.IsCentroided()) return AddCentroidSpectra(absoluteWidth, tolerance, source, target, true);
  return AddProfileSpectra(source, target);
}

int AddCentroidSpectra(bool absoluteWidth, double tolerance, const CZRMassSpectrum& source,
                       CZRMassSpectrum& target, bool sumEqualMasses) {
  CZRMassSpectrum work = MergePoints(source, target, sumEqualMasses);
  work.SetCentroided(target.IsCentroided());
  work.SetPolarity(target.GetPolarity());
  if (tolerance > 0) MergeCentroidPeaks(absoluteWidth, tolerance, work);
  if (work.HasPointData()) {  // the release function goes where the data go
    CutToMergedPoints(target);
    work.SwapPointDataRelease(target);
  }
  target.Swap(work);
  return target.GetCount();
}

int AddProfileSpectra(const CZRMassSpectrum& source, CZRMassSpectrum& target) {
  if (source.GetCount() < kShortestProfile) return target.GetCount();
  if (target.GetCount() < kShortestProfile) {
    TakePoints(source, target);
    return target.GetCount();
  }
  CZRMassSpectrum merged;
  if (!MergeOnOneGrid(source, target, merged)) return ResampleOnto(source, target);
  CutToMergedPoints(target);
  target.SwapPoints(merged);
  return target.GetCount();
}

}  // namespace zrml
