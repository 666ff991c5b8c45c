// Points of the data formats that carry masses, from the wanted m/z and intensity: stores the nearest value
// of the layout, the largest for values beyond it, 0 for negative ones where it has no sign.
#pragma once

#include <cstdint>
#include <vector>

#include "tests/support/stored_points.h"

namespace zrml {

struct WantedPoint {
  double mass = 0;
  double intensity = 0;
};

template <class Stored>
Stored NearestPoint(const WantedPoint& wanted);

template <>
StoredPoint0 NearestPoint(const WantedPoint& wanted);
template <>
StoredPoint1 NearestPoint(const WantedPoint& wanted);
template <>
StoredPoint8 NearestPoint(const WantedPoint& wanted);
template <>
StoredPoint9 NearestPoint(const WantedPoint& wanted);
template <>
StoredPoint12 NearestPoint(const WantedPoint& wanted);

template <class Stored>
std::vector<Stored> NearestPoints(const std::vector<WantedPoint>& wanted) {
  std::vector<Stored> points;
  points.reserve(wanted.size());
  for (const WantedPoint& point : wanted) points.push_back(NearestPoint<Stored>(point));
  return points;
}

/// For an analog trace.
std::uint16_t NearestIntensityWord(double intensity);

}  // namespace zrml
