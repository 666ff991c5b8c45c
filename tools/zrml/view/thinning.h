// Fewer numbers for the same picture: of neighbours the extremes stay.
#pragma once

#include "tools/zrml/view/answer.h"

namespace zrml::view {

enum class Keep {
  kBoth,     ///< the lowest and the highest of each group, for lines
  kLargest,  ///< for sticks
};

/// Groups of neighbours take the place of points when there are more than `limit`, which is at least 2.
/// Points stay in order. A group without any number keeps one point.
void Thin(Curve& curve, std::size_t limit, Keep keep);

/// Joins cells until there are at most so many; a cell is the largest of those that it takes the place of.
void Thin(Grid& grid, int columns, int rows);

}  // namespace zrml::view
