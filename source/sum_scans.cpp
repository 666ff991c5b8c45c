#include "source/sum_scans.h"

#include <string>

#include "source/position.h"
#include "spectrum/add_spectrum.h"

namespace zrml::source {
namespace {

void RequireRange(int first, int end, int scans) {
  if (first < 0 || first >= scans) ThrowNoSuch(first, "scan");
  if (end > scans) ThrowNoSuch(end - 1, "scan");
  if (end <= first) throw Error(Status::kWrongArgument, "there is no scan to add up");
}

CZRMassSpectrum ReadSpectrum(Source& source, int sample, int function, int scan) {
  CZRMassSpectrum spectrum;
  std::vector<double> mz;
  std::vector<double> intensities;
  source.ReadPoints(sample, function, scan, mz, intensities);
  spectrum.SetSize(static_cast<int>(mz.size()));
  spectrum.CopyMasses(mz.data());
  spectrum.CopyIntensities(intensities.data());
  spectrum.SetCentroided(source.ScanAt(sample, function, scan).isCentroided);
  return spectrum;
}

}  // namespace

ScanSum SumScans(Source& source, int sample, int function, int first, int end, PeakWidth width,
                 const Cancel& cancel) {
  if (!(width.width >= 0)) throw Error(Status::kWrongArgument, "a peak width is not negative");
  RequireRange(first, end, source.ScanCount(sample, function));
  ThrowIfCancelled(cancel);
  CZRMassSpectrum sum = ReadSpectrum(source, sample, function, first);
  for (int scan = first + 1; scan < end; ++scan) {
    ThrowIfCancelled(cancel);
    const CZRMassSpectrum spectrum = ReadSpectrum(source, sample, function, scan);
    if (spectrum.IsCentroided() != sum.IsCentroided())
      throw Error(Status::kWrongArgument,
                  "scan " + std::to_string(scan + 1) +
                      " is not of the kind of the scans before it: centroid, profile");
    AddSpectrum(!width.isPpm, width.width, spectrum, sum);
  }
  return {{sum.MassVector().begin(), sum.MassVector().end()},
          {sum.IntensityVector().begin(), sum.IntensityVector().end()}};
}

}  // namespace zrml::source
