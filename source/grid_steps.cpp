#include "source/grid_steps.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace zrml::source {
namespace {

// A place is the exponent of a mass and the five highest bits of its fraction: 32 to the octave. Within one,
// steps differ by 6.4 % at most.
constexpr int kLowBits = 47;

int PlaceOf(double mass) {
  const double size = std::max(std::abs(mass), std::numeric_limits<double>::min());
  return static_cast<int>(std::bit_cast<std::uint64_t>(size) >> kLowBits);
}

double LeastMassIn(int place) { return std::bit_cast<double>(static_cast<std::uint64_t>(place) << kLowBits); }

// By how much a step grows at most from one place to another above it.
double GrowthBetween(int low, int high) {
  const double growth = LeastMassIn(high) / LeastMassIn(low);
  return growth * growth;
}

// Rounded steps differ a little, which is no reason to doubt one.
bool IsClearlyLess(double step, double other) { return step < 0.9 * other; }

}  // namespace

void GridSteps::Note(int place, double step) {
  const auto [known, isNew] = bounds_.try_emplace(place, Bounds{step, step});
  if (!isNew && step < known->second.most) known->second = {step, step};
}

void GridSteps::Learn(std::span<const double> masses) {
  for (std::size_t i = 1; i < masses.size(); ++i) {
    const int low = PlaceOf(masses[i - 1]);
    const int high = PlaceOf(masses[i]);
    const double step = masses[i] - masses[i - 1];
    Note(low, step);
    if (high != low) Note(high, step);
  }
}

void GridSteps::Settle() {
  if (bounds_.empty()) return;
  int from = bounds_.begin()->first;
  Bounds carried = bounds_.begin()->second;
  for (auto& [place, bounds] : bounds_) {
    const double most = carried.most * GrowthBetween(from, place);
    if (IsClearlyLess(most, bounds.most)) bounds = {most, carried.least};
    from = place;
    carried = bounds;
  }
  for (auto known = bounds_.rbegin(); known != bounds_.rend(); ++known) {
    auto& [place, bounds] = *known;
    const double least = carried.least / GrowthBetween(place, from);
    if (IsClearlyLess(carried.most, bounds.most)) bounds = {carried.most, least};
    from = place;
    carried = bounds;
  }
  double least = 0;
  for (auto& [place, bounds] : bounds_)
    bounds.least = least = std::max(bounds.least, std::min(bounds.most, least));
}

double GridSteps::At(double mass) const {
  const auto known = bounds_.find(PlaceOf(mass));
  return known != bounds_.end() ? known->second.least : 0;
}

std::size_t CountEvenSteps(std::span<const double> masses) {
  constexpr double kMostUneven = 1.25;
  std::size_t count = 0;
  for (std::size_t i = 2; i < masses.size(); ++i) {
    const double before = masses[i - 1] - masses[i - 2];
    const double step = masses[i] - masses[i - 1];
    if (std::max(before, step) <= kMostUneven * std::min(before, step)) ++count;
  }
  return count;
}

}  // namespace zrml::source
