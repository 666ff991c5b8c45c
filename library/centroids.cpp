// Centroids of the points of a profile.
#include <algorithm>
#include <cmath>
#include <span>

#include "library/handle.h"
#include "source/point_filter.h"

namespace zrml::library {
namespace {

CentroidOptions OptionsOf(const zrml_centroid_options* given) {
  CentroidOptions options;
  if (given == nullptr) return options;
  RequireKnown(*given);
  if (!(given->min_signal_to_noise >= 0)) ThrowWrongArgument("a signal to noise is not negative");
  options.isArea = given->is_area != 0;
  if (given->min_signal_to_noise > 0) options.minSignalToNoise = given->min_signal_to_noise;
  return options;
}

void FindCentroids(std::span<const double> mz, std::span<const double> intensities,
                   const zrml_centroid_options* options, std::span<double> centroidMz,
                   std::span<double> centroidIntensities, std::size_t& count) {
  std::vector<double> places(mz.begin(), mz.end());
  std::vector<double> sizes(intensities.begin(), intensities.end());
  source::TakeCentroids(OptionsOf(options), places, sizes);
  count = places.size();
  RequireRoom(count, centroidMz.data(), centroidMz.size());
  std::ranges::copy(places, centroidMz.begin());
  std::ranges::copy(sizes, centroidIntensities.begin());
}

}  // namespace
}  // namespace zrml::library

zrml_status zrml_find_centroids(const double* mz, const double* intensities, size_t points,
                                const zrml_centroid_options* options, double* centroid_mz,
                                double* centroid_intensities, size_t room, size_t* count) {
  using namespace zrml::library;
  std::string message;  // there is no source to keep it
  try {
    Require(count, "count");
    for (const double* const array : {mz, intensities}) RequireRoom(points, array, points);
    for (const double* const array : {centroid_mz, centroid_intensities}) RequireRoom(room, array, room);
    FindCentroids({mz, points}, {intensities, points}, options, {centroid_mz, room},
                  {centroid_intensities, room}, *count);
    return ZRML_OK;
  } catch (...) {
    return StatusOfException(message);
  }
}
