#include "tools/zrml/view/thinning.h"

#include <limits>

#include <gtest/gtest.h>

namespace zrml::view {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using Doubles = std::vector<double>;
using Scans = std::vector<std::int32_t>;

TEST(Thinning, EachGroupKeepsItsLowestAndItsHighestInOrder) {
  Curve curve = {{1, 2, 3, 4, 5, 6, 7, 8}, {5, 9, 1, 2, 0, 3, 3, 7}, {10, 11, 12, 13, 14, 15, 16, 17}};
  Thin(curve, 4, Keep::kBoth);  // two groups of four
  EXPECT_EQ(curve.x, (Doubles{2, 3, 5, 8}));
  EXPECT_EQ(curve.y, (Doubles{9, 1, 0, 7}));
  EXPECT_EQ(curve.scans, (Scans{11, 12, 14, 17}));
}

TEST(Thinning, SticksKeepTheHighest) {
  Curve curve = {{1, 2, 3, 4, 5, 6}, {5, 9, 1, 2, 0, 3}, {}};
  Thin(curve, 3, Keep::kLargest);
  EXPECT_EQ(curve.x, (Doubles{2, 4, 6}));
  EXPECT_EQ(curve.y, (Doubles{9, 2, 3}));
}

TEST(Thinning, WhatFitsStaysAsItIs) {
  Curve curve = {{1, 2, 3}, {5, 9, 1}, {}};
  Thin(curve, 3, Keep::kLargest);
  EXPECT_EQ(curve.x, (Doubles{1, 2, 3}));
}

TEST(Thinning, GapsStayAndHideNoNumber) {
  Curve curve = {{1, 2, 3, 4, 5, 6, 7, 8}, {kNaN, 4, kNaN, 2, kNaN, kNaN, kNaN, kNaN}, {}};
  Thin(curve, 4, Keep::kBoth);
  EXPECT_EQ(curve.x, (Doubles{2, 4, 5}));
  EXPECT_EQ(curve.y[0], 4);
  EXPECT_EQ(curve.y[1], 2);
  EXPECT_TRUE(std::isnan(curve.y[2]));
}

TEST(Thinning, JoinedCellsAreTheLargest) {
  Grid grid = {4,
               2,
               {1, 2, 3, 4,  //
                9, 0, 0, 5}};
  Thin(grid, 2, 1);
  EXPECT_EQ(grid.columns, 2);
  EXPECT_EQ(grid.rows, 1);
  EXPECT_EQ(grid.cells, (std::vector<std::uint8_t>{9, 5}));
}

TEST(Thinning, CellsAreJoinedOneWayOnlyWhereTheOtherFits) {
  Grid grid = {3,
               2,
               {1, 2, 3,  //
                6, 5, 4}};
  Thin(grid, 5, 1);
  EXPECT_EQ(grid.columns, 3);
  EXPECT_EQ(grid.cells, (std::vector<std::uint8_t>{6, 5, 4}));
}

}  // namespace
}  // namespace zrml::view
