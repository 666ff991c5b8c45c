// Adds a profile spectrum to another that is sampled differently. docs/spectrum-arithmetic.md
#pragma once

#include <cstddef>

#include "spectrum/mass_spectrum.h"
#include "spectrum/profile_grid.h"
#include "spectrum/scan_law.h"
#include "spectrum/step_model.h"

namespace zrml {

/// Adds sources to one target; law and step model are learned from the target beforehand.
class ProfileResampler {
 public:
  /// Adds `source` onto the sampling grid of `target`, which keeps its own samples, its attributes and, by
  /// position, its optional arrays. Nothing happens when the source is empty, when both are one object, or
  /// when target has fewer than five points. The result is target's count. When memory runs out target is
  /// unchanged.
  int Add(const CZRMassSpectrum& source, CZRMassSpectrum& target, std::size_t mostPoints = kMostGridPoints);

 private:
  bool m_NeedsSetup = true;
  SamplingStepModel m_StepModel;
  ScanLawHolder m_Law;
};

/// The same for one source, which may be `target` itself.
int ResampleOnto(const CZRMassSpectrum& source, CZRMassSpectrum& target,
                 std::size_t mostPoints = kMostGridPoints);

/// The core, for targets of any size: one of fewer than two points becomes a copy of `source` and shares its
/// point data without owning them.
void AddOntoGrid(const CZRMassSpectrum& source, CZRMassSpectrum& target, const ScanLawHolder& law,
                 const SamplingStepModel& model, std::size_t mostPoints = kMostGridPoints);

/// Splits the intensity of each source sample between the two grid points around it, in proportion to
/// closeness; both mass sequences ascend. Samples without intensity or below the grid are skipped. The result
/// is the number of samples seen, up to the first above the grid. Deliberate: a grid point at mass 0.0 never
/// carries intensity, unless the walk ended early at such a sample.
int DistributeOntoGrid(const double* sourceMasses, const double* sourceIntensities, int sourceCount,
                       const double* gridMasses, double* gridIntensities, int gridCount);

}  // namespace zrml
