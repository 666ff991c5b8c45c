#include "tools/zrml/view/thinning.h"

#include <algorithm>
#include <cmath>

namespace zrml::view {
namespace {

bool IsMore(double value, double than) { return value > than || (std::isnan(than) && !std::isnan(value)); }

// The positions in [begin, end) of the lowest and the highest number, as many as are to be kept.
void AddExtremes(const std::vector<double>& y, std::size_t begin, std::size_t end, Keep keep,
                 std::vector<std::size_t>& kept) {
  std::size_t low = begin;
  std::size_t high = begin;
  for (std::size_t i = begin; i < end; ++i) {
    if (IsMore(-y[i], -y[low])) low = i;
    if (IsMore(y[i], y[high])) high = i;
  }
  if (keep == Keep::kLargest || low == high) {
    kept.push_back(high);
    return;
  }
  kept.push_back(std::min(low, high));
  kept.push_back(std::max(low, high));
}

template <class Number>
void Pick(std::vector<Number>& numbers, const std::vector<std::size_t>& kept) {
  if (numbers.empty()) return;
  std::size_t place = 0;
  for (const std::size_t i : kept) numbers[place++] = numbers[i];
  numbers.resize(place);
  numbers.shrink_to_fit();
}

}  // namespace

void Thin(Curve& curve, std::size_t limit, Keep keep) {
  const std::size_t count = curve.y.size();
  if (count <= limit) return;
  const std::size_t groups = keep == Keep::kBoth ? limit / 2 : limit;
  std::vector<std::size_t> kept;
  kept.reserve(limit);
  for (std::size_t group = 0; group < groups; ++group)
    AddExtremes(curve.y, group * count / groups, (group + 1) * count / groups, keep, kept);
  Pick(curve.x, kept);
  Pick(curve.y, kept);
  Pick(curve.scans, kept);
}

void Thin(Grid& grid, int columns, int rows) {
  if (grid.columns <= columns && grid.rows <= rows) return;
  columns = std::min(columns, grid.columns);
  rows = std::min(rows, grid.rows);
  std::vector<std::uint8_t> cells(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
  std::size_t from = 0;
  for (int row = 0; row < grid.rows; ++row) {
    const std::size_t toRow = static_cast<std::size_t>(std::int64_t{row} * rows / grid.rows);
    for (int column = 0; column < grid.columns; ++column) {
      const auto to = static_cast<std::size_t>(std::int64_t{column} * columns / grid.columns);
      std::uint8_t& cell = cells[toRow * static_cast<std::size_t>(columns) + to];
      cell = std::max(cell, grid.cells[from++]);
    }
  }
  grid = {columns, rows, std::move(cells)};
}

}  // namespace zrml::view
