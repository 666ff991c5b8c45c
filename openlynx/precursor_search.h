// Finds the scan that a spectrum comes from among functions that may share spectra: each spectrum is read and
// compared once, however many functions contain it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

#include "openlynx/report.h"

namespace zrml::openlynx {

/// The precursor scan of a spectrum of a function: the closest one of MS level 1 that is not later. Gives
/// function and scan; no value when the function is not of level 2, or there is no such scan.
///
/// Of equally close scans, the last one in a function with the same polarity and kind of spectra counts, or
/// the first one when there is no such function. A function of level 1 without spectra ends the search.
///
/// `functions` are positions in the sample's functions, in file order, with their blocks found; `function` is
/// a place among them, and so is the one given. `missing` is the time of a spectrum without one.
std::optional<std::pair<int, int>> FindPrecursor(Report& report, Sample& sample,
                                                 std::span<const std::size_t> functions, int function,
                                                 std::uint64_t spectrum, double missing);

}  // namespace zrml::openlynx
