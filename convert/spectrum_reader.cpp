#include "convert/spectrum_reader.h"

#include <algorithm>

namespace zrml::convert {

template <class Read>
Spectrum SpectrumReader::ReadOrLose(const RunEntry& entry, Read read) {
  const RunFunction& function = plan_.FunctionOf(entry);
  Spectrum spectrum;
  bool isCut = false;
  try {
    isCut = read(function, spectrum).lost > 0;
  } catch (const source::Error&) {
    spectrum = {.scan = spectrum.scan, .process = spectrum.process, .isLost = true};
    losses_.Add(function.isAbsorbance ? Loss::Kind::kAbsorbance : Loss::Kind::kScan, function.info.id,
                entry.scan + 1);
  }
  if (isCut) {
    spectrum.isLost = true;
    losses_.Add(function.isAbsorbance ? Loss::Kind::kAbsorbancePoints : Loss::Kind::kPoints, function.info.id,
                entry.scan + 1);
  }
  return spectrum;
}

Spectrum SpectrumReader::ReadMass(const RunEntry& entry) {
  return ReadOrLose(entry, [&](const RunFunction& function, Spectrum& spectrum) {
    const source::PointsRead read = ReadPoints(entry, function, spectrum);
    const PointChoice& points = plan_.selection.points;
    if (IsPicked(function, entry, spectrum))
      source::TakeCentroids(points.centroids, positions_, intensities_);
    source::Filter(points.filter, positions_, intensities_);
    spectrum.positions = positions_;
    spectrum.intensities = intensities_;
    return read;
  });
}

Spectrum SpectrumReader::ReadMeasured(const RunEntry& entry) {
  return ReadOrLose(entry, [&](const RunFunction& function, Spectrum& spectrum) {
    return ReadPoints(entry, function, spectrum);
  });
}

source::PointsRead SpectrumReader::ReadPoints(const RunEntry& entry, const RunFunction& function,
                                              Spectrum& spectrum) {
  spectrum.scan = source_.ScanAt(plan_.sample, function.position, entry.scan);
  spectrum.process = source_.ScanProcess(plan_.sample, function.position, entry.scan);
  const source::PointsRead read =
      source_.ReadPoints(plan_.sample, function.position, entry.scan, positions_, intensities_);
  if (read.lost == 0)
    losses_.AddFaults(
        function.info, entry.scan + 1,
        source::FaultsOf(plan_.sourceFormat, function.info, spectrum.scan, positions_, intensities_));
  spectrum.positions = positions_;
  spectrum.intensities = intensities_;
  return read;
}

Spectrum SpectrumReader::ReadMassOrDrift(const RunEntry& entry) {
  return plan_.FunctionOf(entry).driftBins > 0 ? ReadDrift(entry) : ReadMass(entry);
}

Spectrum SpectrumReader::ReadDrift(const RunEntry& entry) {
  return ReadOrLose(entry, [&](const RunFunction& function, Spectrum& spectrum) {
    spectrum.scan = source_.ScanAt(plan_.sample, function.position, entry.scan);
    spectrum.process = source_.ScanProcess(plan_.sample, function.position, entry.scan);
    drift_.clear();
    const bool isPicked = IsPicked(function, entry, spectrum);
    for (int bin = 0; bin < function.driftBins; ++bin) AddDriftPoints(entry, bin, isPicked);
    TakeDriftPoints();
    const source::PointsRead read = {drift_.size()};
    source::Filter(plan_.selection.points.filter, positions_, intensities_, &bins_);
    spectrum.positions = positions_;
    spectrum.intensities = intensities_;
    spectrum.bins = bins_;
    return read;
  });
}

bool SpectrumReader::IsPicked(const RunFunction& function, const RunEntry& entry, Spectrum& spectrum) const {
  const bool isUnknown =
      spectrum.scan.representation == source::Representation::kUnknown && !spectrum.positions.empty();
  if (isUnknown && AreCentroidsWanted(plan_.selection, function.info))
    losses_.Add(Loss::Kind::kRepresentation, function.info.id, entry.scan + 1);
  spectrum.isPicked = BecomesCentroids(plan_.selection, function.info, spectrum.scan);
  return spectrum.isPicked;
}

// Each bin is a profile of its own.
void SpectrumReader::AddDriftPoints(const RunEntry& entry, int bin, bool isPicked) {
  const int function = plan_.FunctionOf(entry).position;
  source_.ReadDriftBin(plan_.sample, function, entry.scan, bin, positions_, intensities_);
  if (isPicked) source::TakeCentroids(plan_.selection.points.centroids, positions_, intensities_);
  for (std::size_t i = 0; i < positions_.size(); ++i)
    drift_.push_back({positions_[i], intensities_[i], bin + 1.0});
}

// By mass, NaN last; equal masses stay in the order of their bins.
void SpectrumReader::TakeDriftPoints() {
  std::stable_sort(drift_.begin(), drift_.end(), [](const DriftPoint& a, const DriftPoint& b) {
    return a.mass < b.mass || (a.mass == a.mass && b.mass != b.mass);
  });
  for (std::vector<double>* const values : {&positions_, &intensities_, &bins_})
    values->resize(drift_.size());
  for (std::size_t i = 0; i < drift_.size(); ++i) {
    positions_[i] = drift_[i].mass;
    intensities_[i] = drift_[i].intensity;
    bins_[i] = drift_[i].bin;
  }
}

Spectrum SpectrumReader::ReadAbsorbance(const RunEntry& entry) {
  return ReadOrLose(entry, [&](const RunFunction& function, Spectrum& spectrum) {
    const source::PointsRead read =
        function.position == kNoPosition
            ? source_.ReadAbsorbance(plan_.sample, entry.scan, positions_, intensities_)
            : source_.ReadPoints(plan_.sample, function.position, entry.scan, positions_, intensities_);
    spectrum.positions = std::span(positions_).first(read.count);
    spectrum.intensities = std::span(intensities_).first(read.count);
    return read;
  });
}

}  // namespace zrml::convert
