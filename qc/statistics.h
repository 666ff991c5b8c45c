// Arithmetic on the values of a run's spectra. Times are minutes unless a name says otherwise.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "qc/spectra.h"
#include "source/source.h"

namespace zrml::qc {

inline constexpr double kSecondsPerMinute = 60;
inline constexpr int kParts = 4;

std::vector<double> TotalsOf(std::span<const Spectrum> spectra);

bool AreFinite(std::span<const double> values);

/// First, second and third quartile, between two values as far as they are apart. Empty unless there are
/// values, all of them finite.
std::vector<double> Quartiles(std::vector<double> values);

/// The same, each one of the values: the lowest that so many are not above.
std::vector<double> QuartilesOfCounts(std::vector<double> counts);

/// Logarithms to the base 2 of how the second quartile exceeds the first, the third the second, and the
/// largest value the third. Empty when one of them is no number.
std::vector<double> QuartileRatios(std::vector<double> values);

/// The area under the line through the totals from one time to another, in intensity times seconds.
double Area(std::span<const Spectrum> spectra, source::Range minutes);

/// When a quarter, a half, three quarters and all of the total have come together. Empty without a total.
std::vector<double> AccumulationTimes(std::span<const Spectrum> spectra);

/// Of the first and the last spectrum; no value without spectra.
std::optional<source::Range> TimeRange(std::span<const Spectrum> timed);

/// The quarters of a range, of equal length.
source::Range Quarter(const source::Range& range, int index);

}  // namespace zrml::qc
