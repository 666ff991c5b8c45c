// The spectra of a run, read by one worker from a source of its own.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "convert/losses.h"
#include "convert/plan.h"
#include "source/source.h"

namespace zrml::convert {

/// A spectrum of masses, or of wavelengths. Its points are valid until the next one is read.
struct Spectrum {
  source::Scan scan = {};    ///< not of absorbance
  std::string process = {};  ///< how it was made, in a report's words
  std::span<const double> positions = {};
  std::span<const double> intensities = {};
  std::span<const double> bins = {};  ///< with drift bins: of each point, from 1
  bool isLost = false;                ///< some or all of its points
  bool isPicked = false;              ///< the points are centroids of the profile that the file holds
};

/// What cannot be read is empty, and points that the file lacks are left out, once the losses know of it.
class SpectrumReader {
 public:
  SpectrumReader(source::Source& source, const RunPlan& plan, Losses& losses)
      : source_(source), plan_(plan), losses_(losses) {}

  const RunPlan& Plan() const { return plan_; }

  Spectrum ReadMass(const RunEntry& entry);
  /// All its points as they are in the file.
  Spectrum ReadMeasured(const RunEntry& entry);
  /// The same; where there are drift bins all of them in one spectrum, by mass, then bin. Empty when one of
  /// them cannot be read.
  Spectrum ReadMassOrDrift(const RunEntry& entry);

  Spectrum ReadAbsorbance(const RunEntry& entry);

 private:
  struct DriftPoint {
    double mass;
    double intensity;
    double bin;
  };

  /// `read` fills what it is given; without anything when it throws.
  template <class Read>
  Spectrum ReadOrLose(const RunEntry& entry, Read read);
  source::PointsRead ReadPoints(const RunEntry& entry, const RunFunction& function, Spectrum& spectrum);
  Spectrum ReadDrift(const RunEntry& entry);
  void AddDriftPoints(const RunEntry& entry, int bin, bool isPicked);
  /// Whether the points of a scan of mass are to become centroids; notes that in the spectrum.
  bool IsPicked(const RunFunction& function, const RunEntry& entry, Spectrum& spectrum) const;
  void TakeDriftPoints();

  source::Source& source_;
  const RunPlan& plan_;
  Losses& losses_;
  std::vector<double> positions_;
  std::vector<double> intensities_;
  std::vector<double> bins_;
  std::vector<DriftPoint> drift_;
};

}  // namespace zrml::convert
