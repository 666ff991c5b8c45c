// Acquisitions for the benchmarks, made on first use and removed at the end of the program.
#pragma once

#include <cstdint>
#include <string>

#include "tests/support/raw_directory_builder.h"

namespace zrml::bench {

struct LayoutData {
  unsigned dataFormat = 0;
  std::uint32_t points = 0;
  bool isCalibrated = false;
  int scans = 1;
};

/// Bytes of a scan in its data file.
std::size_t ScanBytes(const LayoutData& layout);

/// A directory with one function of equal scans, whose masses ascend.
const TempDirectory& AcquisitionOf(const LayoutData& layout);

inline constexpr int kManyScans = 1'000'000;
/// An index and statistics of many scans whose data are never read.
const TempDirectory& ManyScans();

}  // namespace zrml::bench
