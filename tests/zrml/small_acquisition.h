// A raw directory small enough to know by heart; what the commands print for it is worked out by hand.
#pragma once

#include <vector>

#include "tests/support/raw_directory_builder.h"

namespace zrml::test {

/// Function 1, survey, positive continuum data, m/z 50 to 1200.5, scan value 2.5, a quarter of a minute each:
///   0.5 min: (100, 10), (200.5, 3), (300.0625, 1000000)   1 min: (100.25, 5)   1.5 min: no points
/// Function 2, products, negative centroid data:
///   0.125 min: (50.5, 7), no precursor   1.125 min: (50.5, 8), precursor 445.125
/// Function 3 has no scans. Function 4 has two, of an unknown data format, at 3 and 3.5 min.
/// Function 5 is absorbance: 0.125 min: (210, 0), (210.5, 3)   0.25 min: (210, 4)
/// Function 6 is a lock mass: 0.25 min: (556.25, 9)
/// Process 1 smoothed function 1: 0.5 min: (100, 11)
/// Traces: "Pressure" (0.5, 5), (1, 2), and "UV\x1B[31m 254" (0.5, 6), (1, 0)
RawDirectoryBuilder SmallAcquisition();

/// What it is made of: scans whose masses and intensities survive packing, and functions of a quarter of a
/// minute a scan.
ScanFiles SmallScan(float minutes, CentroidState state, const std::vector<WantedPoint>& points);
FunctionFiles SmallFunction(unsigned type, unsigned ionMode, const std::vector<ScanFiles>& scans);

}  // namespace zrml::test
