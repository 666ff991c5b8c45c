// The size of a scan's points in a data ("dat") file, by data format. docs/data-layouts.md
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace zrml::masslynx::point_unit_format {

/// `bytes` for every `points`, which are a power of two, rounded up.
struct PointUnit {
  std::uint64_t bytes = 0;
  std::uint64_t points = 1;

  constexpr std::uint64_t BytesOf(std::uint64_t count) const {
    return ((count + points - 1) >> std::countr_zero(points)) * bytes;
  }

  /// Complete points in `size` bytes; `bytes` is not 0.
  constexpr std::size_t PointsIn(std::size_t size) const {
    return static_cast<std::size_t>(size / bytes * points);
  }
};

inline constexpr std::array<PointUnit, 15> kPointUnits = {{
    {4, 1},
    {10, 2},
    {2, 1},
    {2, 1},
    {10, 4},
    {10, 2},
    {10, 4},  // of the last scan; earlier scans have 2 bytes per point
    {10, 2},
    {6, 1},
    {6, 1},
    {},
    {4, 1},
    {8, 1},
    {12, 1},
    {12, 1},
}};

static_assert(std::ranges::all_of(kPointUnits,
                                  [](const PointUnit& unit) { return std::has_single_bit(unit.points); }));

constexpr PointUnit UnitOf(int dataFormat) {
  const auto index = static_cast<std::size_t>(dataFormat);
  return index < kPointUnits.size() ? kPointUnits[index] : PointUnit{};
}

}  // namespace zrml::masslynx::point_unit_format
