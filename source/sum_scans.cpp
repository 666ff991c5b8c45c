#include "source/sum_scans.h"

#include <optional>
#include <string>
#include <utility>

#include "source/position.h"
#include "spectrum/add_spectrum.h"
#include "spectrum/equal_peaks.h"
#include "spectrum/peak_sum.h"

namespace zrml::source {
namespace {

void RequireRange(int first, int end, int scans) {
  if (first < 0 || first >= scans) ThrowNoSuch(first, "scan");
  if (end > scans) ThrowNoSuch(end - 1, "scan");
  if (end <= first) throw Error(Status::kWrongArgument, "there is no scan to add up");
}

CZRMassSpectrum SpectrumOf(const ScanSum& points, bool isCentroided) {
  CZRMassSpectrum spectrum;
  spectrum.SetSize(static_cast<int>(points.mz.size()));
  spectrum.CopyMasses(points.mz.data());
  spectrum.CopyIntensities(points.intensities.data());
  spectrum.SetCentroided(isCentroided);
  return spectrum;
}

template <class Sum>
ScanSum PointsOf(Sum& sum) {
  ScanSum points = {std::vector<double>(sum.Count()), std::vector<double>(sum.Count())};
  sum.CopyTo(points.mz.data(), points.intensities.data());
  return points;
}

// Adds scan by scan, in the way that is quickest for what they are; the sum is the same.
class Adder {
 public:
  Adder(PeakWidth width, bool isCentroided) : width_(width), isCentroided_(isCentroided) {}

  void Add(const ScanSum& scan) {
    if (isCentroided_ && width_.width > 0 && !width_.isPpm) {
      peaks_ ? void(peaks_->Add(scan.mz, scan.intensities))
             : void(peaks_.emplace(width_.width, scan.mz, scan.intensities));
    } else if (sum_ || !isCentroided_ || width_.width > 0 || !equal_.Add(scan.mz, scan.intensities)) {
      AddToSpectrum(scan);
    }
  }

  ScanSum Take() {
    if (peaks_) return PointsOf(*peaks_);
    if (!sum_) return PointsOf(equal_);
    return {{sum_->MassVector().begin(), sum_->MassVector().end()},
            {sum_->IntensityVector().begin(), sum_->IntensityVector().end()}};
  }

 private:
  void AddToSpectrum(const ScanSum& scan) {
    CZRMassSpectrum spectrum = SpectrumOf(scan, isCentroided_);
    if (!sum_ && equal_.Count() == 0) {
      sum_ = std::move(spectrum);
      return;
    }
    if (!sum_) sum_ = SpectrumOf(PointsOf(equal_), isCentroided_);
    AddSpectrum(!width_.isPpm, width_.width, spectrum, *sum_);
  }

  PeakWidth width_;
  bool isCentroided_;
  EqualPeaks equal_;                    // as long as each list ascends
  std::optional<PeakSum> peaks_;        // with a width in m/z
  std::optional<CZRMassSpectrum> sum_;  // all else
};

}  // namespace

ScanSum SumScans(Source& source, int sample, int function, int first, int end, PeakWidth width,
                 const Cancel& cancel) {
  if (!(width.width >= 0)) throw Error(Status::kWrongArgument, "a peak width is not negative");
  RequireRange(first, end, source.ScanCount(sample, function));
  const bool isCentroided = source.ScanAt(sample, function, first).isCentroided;
  Adder adder(width, isCentroided);
  ScanSum scan;
  for (int i = first; i < end; ++i) {
    ThrowIfCancelled(cancel);
    if (source.ScanAt(sample, function, i).isCentroided != isCentroided)
      throw Error(
          Status::kWrongArgument,
          "scan " + std::to_string(i + 1) + " is of another kind (peaks, or a profile) than those before it");
    source.ReadPoints(sample, function, i, scan.mz, scan.intensities);
    adder.Add(scan);
  }
  return adder.Take();
}

}  // namespace zrml::source
