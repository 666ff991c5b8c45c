#include "tools/zrml/convert/spectrum_reader.h"

#include <algorithm>
#include <numeric>

namespace zrml {
namespace {

struct DriftPoint {
  double mass;
  double intensity;
  double bin;
};

// By mass, those without one last; equal masses stay in the order of their bins.
void SortByMass(std::vector<DriftPoint>& points) {
  std::stable_sort(points.begin(), points.end(), [](const DriftPoint& a, const DriftPoint& b) {
    return a.mass < b.mass || (a.mass == a.mass && b.mass != b.mass);
  });
}

std::vector<DriftPoint> PointsOf(const HostVector<CZRMassSpectrum>& spectra) {
  std::vector<DriftPoint> points;
  double bin = 0;
  for (const CZRMassSpectrum& spectrum : spectra) {
    bin += 1;
    const auto masses = MassesOf(spectrum);
    const auto intensities = IntensitiesOf(spectrum);
    for (std::size_t i = 0; i < masses.size(); ++i) points.push_back({masses[i], intensities[i], bin});
  }
  return points;
}

}  // namespace

std::span<const double> MassesOf(const CZRMassSpectrum& spectrum) {
  return {spectrum.GetMasses(), spectrum.UsablePoints()};
}

std::span<const double> IntensitiesOf(const CZRMassSpectrum& spectrum) {
  return {spectrum.GetIntensities(), spectrum.UsablePoints()};
}

void SpectrumReader::Lose(const RunEntry& entry) const {
  LoseSpectrum(plan_, plan_.FunctionOf(entry), entry.scan);
}

CZRMassSpectrum SpectrumReader::ReadMass(const RunEntry& entry) const {
  const RunFunction& function = plan_.FunctionOf(entry);
  CZRMassSpectrum spectrum;
  if (server_.GetSpectrum(plan_.sample, function.position, entry.scan, spectrum)) return spectrum;
  Lose(entry);
  CZRMassSpectrum empty;
  empty.SetCentroided(server_.IsCentroided(plan_.sample, function.position));
  return empty;
}

CZRMassSpectrum SpectrumReader::ReadDrift(const RunEntry& entry, std::vector<double>& bins) const {
  const RunFunction& function = plan_.FunctionOf(entry);
  HostVector<CZRMassSpectrum> spectra;
  if (!server_.GetMobilitySpectra(plan_.sample, function.position, entry.scan, 0, function.driftBins - 1,
                                  spectra)) {
    Lose(entry);
    spectra.clear();
  }
  std::vector<DriftPoint> points = PointsOf(spectra);
  SortByMass(points);
  CZRMassSpectrum spectrum = ReadMass(entry);  // its attributes
  spectrum.SetSize(static_cast<int>(points.size()));
  bins.resize(points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    spectrum.SetMass(static_cast<int>(i), points[i].mass);
    spectrum.SetIntensity(static_cast<int>(i), points[i].intensity);
    bins[i] = points[i].bin;
  }
  spectrum.InvalidateStatistics();
  return spectrum;
}

CZRAbsorbanceSpectrum SpectrumReader::ReadAbsorbance(const RunEntry& entry) const {
  CZRAbsorbanceSpectrum spectrum;
  if (server_.GetAbsorbanceSpectrum(plan_.sample, entry.scan, spectrum)) return spectrum;
  Lose(entry);
  return {};
}

}  // namespace zrml
