#include "spectrum/profile_resampling.h"

namespace zrml {
namespace {

ProfileView View(const CZRMassSpectrum& spectrum) {
  const std::size_t count = spectrum.UsablePoints();
  return {{spectrum.GetMasses(), count}, {spectrum.GetIntensities(), count}};
}

int Count(std::size_t points) { return static_cast<int>(points); }

// Adds one sample within the grid; `cursor` is the last grid point known to be at or below the samples.
void Distribute(double mass, double intensity, const double* gridMasses, double* gridIntensities,
                int gridCount, int& cursor) {
  if (mass == gridMasses[cursor]) {
    gridIntensities[cursor] += intensity;
    return;
  }
  while (cursor + 1 < gridCount && mass > gridMasses[cursor + 1]) ++cursor;
  if (cursor + 1 == gridCount) return;
  const double low = gridMasses[cursor];
  const double high = gridMasses[cursor + 1];
  if (mass == high) {
    gridIntensities[cursor + 1] += intensity;
    return;
  }
  gridIntensities[cursor] += intensity * (high - mass) / (high - low);
  gridIntensities[cursor + 1] += intensity * (mass - low) / (high - low);
}

}  // namespace

int DistributeOntoGrid(const double* sourceMasses, const double* sourceIntensities, int sourceCount,
                       const double* gridMasses, double* gridIntensities, int gridCount) {
  int cursor = 0;
  for (int i = 0; i < sourceCount && gridCount > 0; ++i) {
    const double mass = sourceMasses[i];
    if (mass > gridMasses[gridCount - 1]) return i;
    if (!(mass >= gridMasses[0]) || !(sourceIntensities[i] > 0)) continue;
    Distribute(mass, sourceIntensities[i], gridMasses, gridIntensities, gridCount, cursor);
  }
  if (gridCount > 0 && gridMasses[0] == 0.0) gridIntensities[0] = 0;
  return sourceCount;
}

void AddOntoGrid(const CZRMassSpectrum& source, CZRMassSpectrum& target, const ScanLawHolder& law,
                 const SamplingStepModel& model, std::size_t mostPoints) {
  const ProfileView samples = View(source);
  if (samples.masses.empty()) return;
  if (target.UsablePoints() < 2) {
    CZRMassSpectrum copy(source);
    copy.SetPointDataRelease(nullptr, nullptr);  // source remains their owner
    if (&source != &target) target.Swap(copy);
    target.InvalidateStatistics();
    return;
  }
  ProfileGrid grid = BuildProfileGrid(View(target), samples, law, model, mostPoints);
  DistributeOntoGrid(samples.masses.data(), samples.intensities.data(), Count(samples.masses.size()),
                     grid.masses.data(), grid.intensities.data(), Count(grid.masses.size()));
  const std::size_t dropped = grid.firstIsProvisional && grid.intensities[1] == 0 ? 1 : 0;
  target.SetSize(Count(grid.masses.size() - dropped));
  target.CopyMasses(grid.masses.data() + dropped);
  target.CopyIntensities(grid.intensities.data() + dropped);
}

int ProfileResampler::Add(const CZRMassSpectrum& source, CZRMassSpectrum& target, std::size_t mostPoints) {
  constexpr int kFewestTargetPoints = 5;
  if (&source == &target || source.GetCount() < 1 || target.GetCount() < kFewestTargetPoints)
    return target.GetCount();
  if (m_NeedsSetup) {
    BuildStepModel(m_StepModel, target);
    DetectScanLaw(m_Law, target);
    m_NeedsSetup = false;
  }
  AddOntoGrid(source, target, m_Law, m_StepModel, mostPoints);
  return target.GetCount();
}

int ResampleOnto(const CZRMassSpectrum& source, CZRMassSpectrum& target, std::size_t mostPoints) {
  ProfileResampler resampler;
  if (&source != &target) return resampler.Add(source, target, mostPoints);
  CZRMassSpectrum copy;  // of the points only: point data keep a single owner
  copy.AssignMasses(source.MassVector());
  copy.AssignIntensities(source.IntensityVector());
  copy.SetSize(source.GetCount());
  return resampler.Add(copy, target, mostPoints);
}

}  // namespace zrml
