#include "convert/total_ions.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace zrml::convert {
namespace {

bool HasSurveys(const source::Function& function) {
  return function.kind == source::FunctionKind::kMs && function.monitoring == source::Monitoring::kNone &&
         function.scanType == source::ScanType::kNone;
}

std::vector<double> InOrder(const std::vector<double>& values, const std::vector<std::size_t>& order) {
  std::vector<double> result;
  result.reserve(order.size());
  for (const std::size_t position : order) result.push_back(values[position]);
  return result;
}

}  // namespace

bool TotalIonFunctions::Take(const source::Function& function, bool hasScans) {
  if (!HasSurveys(function) || !(first_ || hasScans)) return false;
  if (!first_) first_ = function;
  return function.polarity == first_->polarity && (function.id.process == 0) == (first_->id.process == 0);
}

void Append(source::Chromatogram& chromatogram, const source::Chromatogram& function) {
  chromatogram.minutes.insert(chromatogram.minutes.end(), function.minutes.begin(), function.minutes.end());
  chromatogram.intensities.insert(chromatogram.intensities.end(), function.intensities.begin(),
                                  function.intensities.end());
}

void SortByTime(source::Chromatogram& chromatogram) {
  const std::vector<double>& minutes = chromatogram.minutes;
  std::vector<std::size_t> order(minutes.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return minutes[a] < minutes[b] || (std::isnan(minutes[b]) && !std::isnan(minutes[a]));
  });
  chromatogram.intensities = InOrder(chromatogram.intensities, order);
  chromatogram.minutes = InOrder(minutes, order);
}

}  // namespace zrml::convert
