// Finding the scan that a spectrum comes from among functions whose spectra may be the same ones: each is
// read and compared once, whatever number of functions it is in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

#include "openlynx/report.h"

namespace zrml::openlynx {

/// The scan that a spectrum of a function goes back to: the closest one of MS level 1 that is not later.
/// Gives function and scan; no value when the function is not of level 2, or there is no such scan.
///
/// Of equally close scans the last one counts that is in a function with the same polarity and the same kind
/// of spectra, or the first one when there is no such function. A function of level 1 without spectra ends
/// the search.
///
/// `functions` are positions in the sample's functions, in the order of the file, whose blocks have been
/// found; `function` is a place among them, and so is the one given.
std::optional<std::pair<int, int>> FindPrecursor(Report& report, Sample& sample,
                                                 std::span<const std::size_t> functions, int function,
                                                 std::uint64_t spectrum);

}  // namespace zrml::openlynx
