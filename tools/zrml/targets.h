// Ions to extract chromatograms of, each a range of m/z: around a mass, or between two. In a file they
// are rows of TSV under a line of names, or a JSON list of objects, with the names
//
//   mz, tolerance, tolerance_unit ("ppm" or "da"), mz_start, mz_end, rt_start, rt_end (minutes), comment
//
// where either mz must be given or mz_start and mz_end, which have no tolerance. Others are ignored.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "source/source.h"

namespace zrml::tool {

/// How far a range reaches to either side of a mass.
struct Tolerance {
  double width = 10;
  bool isPpm = true;  ///< parts per million of the mass, else m/z
};

struct Target {
  std::optional<double> mz;  ///< no value when the ends were given
  source::Range range;
  std::optional<source::Range> minutes;  ///< open ends are infinite
  std::string comment;
};

/// From mz - delta to mz + delta, where delta is the width, or mz * width / 1e6.
source::Range RangeAround(double mz, Tolerance tolerance);

/// The targets of a file, in its order. `tolerance` applies to targets without their own. Throws a Failure
/// that names the file, the line, and what is wrong there.
std::vector<Target> ReadTargets(const std::string& path, Tolerance tolerance);

}  // namespace zrml::tool
