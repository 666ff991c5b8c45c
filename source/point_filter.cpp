#include "source/point_filter.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "common/number_text.h"

namespace zrml::source {
namespace {

using Values = std::vector<double>;

// The points of a spectrum as columns of one length.
class Columns {
 public:
  Columns(Values& mz, Values& intensities, Values* others)
      : mz_(mz), intensities_(intensities), others_(others) {}

  // Keeps the points that `isKept` is true of, by position.
  template <class IsKept>
  void Keep(IsKept isKept) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < mz_.size(); ++i) {
      if (!isKept(i)) continue;
      mz_[kept] = mz_[i];
      intensities_[kept] = intensities_[i];
      if (others_ != nullptr) (*others_)[kept] = (*others_)[i];
      ++kept;
    }
    mz_.resize(kept);
    intensities_.resize(kept);
    if (others_ != nullptr) others_->resize(kept);
  }

 private:
  Values& mz_;
  Values& intensities_;
  Values* others_;
};

// Whether each of the points is one of the `count` most intense.
std::vector<bool> AreAmongTop(const Values& intensities, std::size_t count) {
  std::vector<std::size_t> order(intensities.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  const auto isBefore = [&](std::size_t a, std::size_t b) {
    const bool isNan = std::isnan(intensities[b]);
    if (std::isnan(intensities[a]) != isNan) return isNan;
    return intensities[a] > intensities[b] || (!(intensities[a] < intensities[b]) && a < b);
  };
  std::nth_element(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(count), order.end(), isBefore);
  std::vector<bool> are(intensities.size());
  for (std::size_t i = 0; i < count; ++i) are[order[i]] = true;
  return are;
}

}  // namespace

std::string TextOf(const PointFilter& filter) {
  std::string text;
  const auto add = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
  if (filter.mz) add("m/z " + ShortNumber(filter.mz->low) + " to " + ShortNumber(filter.mz->high));
  if (filter.dropsZeros) add("without zeros");
  if (filter.minIntensity) add("at least " + ShortNumber(*filter.minIntensity));
  if (filter.top) add("the " + std::to_string(*filter.top) + " most intense");
  return text;
}

void Filter(const PointFilter& filter, Values& mz, Values& intensities, Values* others) {
  Columns columns(mz, intensities, others);
  if (filter.mz)
    columns.Keep([&](std::size_t i) { return mz[i] >= filter.mz->low && mz[i] <= filter.mz->high; });
  if (filter.dropsZeros) columns.Keep([&](std::size_t i) { return intensities[i] != 0; });
  if (filter.minIntensity)
    columns.Keep([&](std::size_t i) { return intensities[i] >= *filter.minIntensity; });
  if (filter.top && *filter.top < intensities.size()) {
    const std::vector<bool> areTop = AreAmongTop(intensities, *filter.top);
    columns.Keep([&](std::size_t i) { return areTop[i]; });
  }
}

bool MayHaveProfiles(const Function& function) {
  return function.monitoring == Monitoring::kNone && function.kind != FunctionKind::kAbsorbance;
}

bool IsProfile(const Function& function, const Scan& scan) {
  return scan.representation == Representation::kProfile && MayHaveProfiles(function);
}

void TakeCentroids(const CentroidOptions& options, Values& mz, Values& intensities) {
  Values centroids;
  Values heights;
  FindCentroids(mz, intensities, options, centroids, heights);
  mz.swap(centroids);
  intensities.swap(heights);
}

}  // namespace zrml::source
