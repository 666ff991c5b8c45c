// Choosing among the points of a mass spectrum, and centroids in place of a profile.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "source/source.h"
#include "spectrum/centroiding.h"

namespace zrml::source {

/// Which points stay. What is set applies in the order of the members.
struct PointFilter {
  std::optional<Range> mz = {};             ///< both ends included
  bool dropsZeros = false;                  ///< points of intensity 0
  std::optional<double> minIntensity = {};  ///< the least that stays
  std::optional<std::size_t> top = {};      ///< so many of the most intense; of equal ones the first

  bool TakesAll() const { return !mz && !dropsZeros && !minIntensity && !top; }
};

/// "m/z 100 to 200, without zeros, at least 5, the 10 most intense"
std::string TextOf(const PointFilter& filter);

/// The points that stay, in their order. `others`, when given, has a value for each point as well. A NaN is
/// in no range, not above any intensity, and less than all others.
void Filter(const PointFilter& filter, std::vector<double>& mz, std::vector<double>& intensities,
            std::vector<double>* others = nullptr);

/// Whether the function measures neither chosen ions nor absorbance.
bool MayHaveProfiles(const Function& function);

/// Whether the points of a scan are samples of a profile: not peaks, chosen ions, or absorbance.
bool IsProfile(const Function& function, const Scan& scan);

/// Replaces a profile by its centroids.
void TakeCentroids(const CentroidOptions& options, std::vector<double>& mz, std::vector<double>& intensities);

}  // namespace zrml::source
