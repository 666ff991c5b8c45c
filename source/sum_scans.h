// Adding up the scans of a function by the spectrum arithmetic; means, and what a background has in them.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "source/source.h"

namespace zrml::source {

/// Weaker peaks within half of it on either side of a peak become part of that peak; 0 for equal m/z only.
/// Profiles use a grid instead, and absorbance spectra need none.
struct PeakWidth {
  double width = 0;    ///< not negative
  bool isPpm = false;  ///< parts per million, else m/z
};

struct ScanSum {
  std::vector<double> mz;  ///< or wavelengths
  std::vector<double> intensities;
  bool isCentroided = false;
  bool isAbsorbance = false;
  std::vector<int> added;  ///< positions of the scans
  int leftOut = 0;         ///< how many scans could not be added
  std::size_t lost = 0;    ///< points of the scans that the index declares and the file does not hold
};

/// What becomes of scans that cannot be added to the others: of the other kind, peaks or a profile, than the
/// first one, which is the first one with points when they are left out; of a kind that damage hides; of
/// absorbance, those with other
/// wavelengths. Left out in any case are scans whose points are all lost, those with an m/z or an intensity
/// that is beyond 1e100 or no number, so that a sum never is, and profiles of one or two points, unless there
/// are no others: then these are added point by point. Other scans without points are added, but for those of
/// absorbance, which has values wherever it is measured.
enum class Unsuited { kAreAnError, kAreLeftOut };

/// The scans at these positions, which ascend, added up in their order: peaks as by AddSpectrum(), profiles
/// by AddProfile(). Where these are not plainly of one grid, all are read a second time for the steps of it,
/// and then added, first one that gives the grid: the first of at least half as many even steps as the one
/// with most. Throws Error (kWrongArgument) without scans, and for those that are unsuited.
ScanSum SumScans(Source& source, int sample, int function, std::span<const int> scans, PeakWidth width,
                 Unsuited unsuited, const Cancel& cancel = {});

/// The scans from `first` up to, not including, `end`. Unsuited ones are an Error.
ScanSum SumScans(Source& source, int sample, int function, int first, int end, PeakWidth width,
                 const Cancel& cancel = {});

/// The same of a raw directory's absorbance spectra; unsuited ones are left out.
ScanSum SumAbsorbance(Source& source, int sample, std::span<const int> scans, const Cancel& cancel = {});

/// What is to be taken off a sum: scans that are unsuited for it are left out.
ScanSum SumBackground(Source& source, int sample, int function, std::span<const int> scans, PeakWidth width,
                      const ScanSum& of, const Cancel& cancel = {});

/// Takes off the mean of the background's scans, times the number of scans in the sum; intensities may become
/// negative. Of profiles it takes off point by point, on the grid that they have together. Each peak is taken
/// off the nearest one within half the width around it; where there is none it stays alone, negative. A sum
/// without points becomes one of the background's kind. Throws Error (kWrongArgument) when the background is
/// of another kind, has other wavelengths or no scans that were added.
void TakeOff(const ScanSum& background, PeakWidth width, ScanSum& sum);

/// Divides by the number of scans.
void MakeMean(ScanSum& sum);

}  // namespace zrml::source
