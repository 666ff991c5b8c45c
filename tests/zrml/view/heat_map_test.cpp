#include "tools/zrml/view/heat_map.h"

#include <limits>

#include <gtest/gtest.h>

namespace zrml::view {
namespace {

using Cells = std::vector<std::uint8_t>;

struct Spectrum {
  std::vector<double> x;
  std::vector<double> y;
};

SpectraOverTime SpectraAt(std::vector<double> minutes, std::vector<Spectrum> spectra, bool isEven = false) {
  const auto read = [spectra](int scan, std::vector<double>& x, std::vector<double>& y) {
    const Spectrum& spectrum = spectra[static_cast<std::size_t>(scan)];
    x = spectrum.x;
    y = spectrum.y;
    return source::PointsRead{x.size(), 0};
  };
  return {std::move(minutes), read, isEven};
}

TEST(HeatMap, CellsHaveTheLargestValueByItsLogarithm) {
  const auto spectra = SpectraAt({1, 2}, {{{100, 101, 190}, {1000, 10000, 100}}, {{150}, {1}}});
  const Answer map = MakeHeatMap(spectra, {.ordinate = source::Range{100, 200}, .columns = 2, .rows = 2},
                                 Steps::kDecades, {});
  // 10000 is step 255, 100 half of the four decades below it: 1 + 127, and 1 the lowest step.
  EXPECT_EQ(map.grid.cells, (Cells{255, 0,  //
                                   128, 1}));
  EXPECT_EQ(map.facts["minutes"], (Json{0.5, 2.5}));
  EXPECT_EQ(map.facts["largest"], 10000);
  EXPECT_EQ(map.facts["isLogarithmic"], true);
}

TEST(HeatMap, EvenStepsReachFromTheLowestValueToTheLargest) {
  const auto spectra = SpectraAt({1, 2}, {{{200, 300}, {-1, 0}}, {{200, 300}, {3, 1}}}, true);
  const Answer map =
      MakeHeatMap(spectra, {.ordinate = source::Range{150, 350}, .columns = 2, .rows = 2}, Steps::kEven, {});
  EXPECT_EQ(map.grid.cells, (Cells{1, 255,      //
                                   65, 128}));  // 1 + 254 / 4 = 64.5, 1 + 254 / 2
}

TEST(HeatMap, PointsOfWavelengthsReachToTheirNeighbours) {
  const auto spectra = SpectraAt({1}, {{{200, 300}, {2, 1}}}, true);
  const Answer map =
      MakeHeatMap(spectra, {.ordinate = source::Range{150, 350}, .columns = 1, .rows = 4}, Steps::kEven, {});
  EXPECT_EQ(map.grid.cells, (Cells{255, 255, 1, 1}));  // they meet at 250
}

TEST(HeatMap, AGapOfTimeStaysEmpty) {
  const Spectrum point = {{100}, {7}};
  const auto spectra = SpectraAt({1, 2, 9, 10}, {point, point, point, point});
  const Answer map = MakeHeatMap(
      spectra,
      {.minutes = source::Range{0.5, 10.5}, .ordinate = source::Range{0, 200}, .columns = 10, .rows = 1},
      Steps::kDecades, {});
  EXPECT_EQ(map.grid.columns, 4);  // no more than scans: 2.5 minutes each
  EXPECT_EQ(map.grid.cells, (Cells{255, 0, 0, 255}));
}

TEST(HeatMap, OnlyWhatIsShownIsRead) {
  int reads = 0;
  SpectraOverTime spectra = SpectraAt({1, 2, 3}, {});
  spectra.read = [&](int scan, std::vector<double>& x, std::vector<double>& y) {
    ++reads;
    EXPECT_EQ(scan, 1);
    x = {100, 500};
    y = {5, 1000};
    return source::PointsRead{2, 0};
  };
  const MapView view = {
      .minutes = source::Range{1.9, 2.1}, .ordinate = source::Range{50, 150}, .columns = 1, .rows = 1};
  EXPECT_EQ(MakeHeatMap(spectra, view, Steps::kDecades, {}).facts["largest"], 5);
  EXPECT_EQ(reads, 1);
}

TEST(HeatMap, WithoutARangeItIsThatOfThePointsWithAMargin) {
  const auto spectra = SpectraAt({1, 2}, {{{100}, {1}}, {{200}, {1}}});
  const Answer map = MakeHeatMap(spectra, {.columns = 1, .rows = 1}, Steps::kDecades, {});
  EXPECT_EQ(map.facts["ordinate"], (Json{98.0, 202.0}));
}

TEST(HeatMap, OfNothingIsEmpty) {
  const Answer map = MakeHeatMap(SpectraAt({}, {}), {.columns = 8, .rows = 1}, Steps::kDecades, {});
  EXPECT_EQ(map.facts["isEmpty"], true);
  EXPECT_EQ(map.grid.cells, (Cells{0}));
}

TEST(HeatMap, AbsurdNumbersAreInSomeCell) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  const auto spectra =
      SpectraAt({kNaN, 1, kInfinity}, {{{5}, {5}}, {{100, 1e300, kNaN}, {1, kInfinity, kNaN}}, {{5}, {5}}});
  for (const Steps steps : {Steps::kDecades, Steps::kEven}) {
    const Answer map = MakeHeatMap(spectra, {.columns = 4, .rows = 4}, steps, {});
    EXPECT_EQ(map.grid.cells.size(), static_cast<std::size_t>(map.grid.columns) * 4);
  }
}

TEST(HeatMap, ProgressCountsScansAndWorkCanBeCancelled) {
  const auto spectra = SpectraAt({1, 2}, {{{100}, {1}}, {{200}, {1}}});
  std::vector<std::uint64_t> seen;
  const Work counting = {{}, [&](std::uint64_t done, std::uint64_t all) {
                           seen.push_back(done);
                           EXPECT_EQ(all, 4U);  // once for the range, once for the cells
                         }};
  MakeHeatMap(spectra, {.columns = 1, .rows = 1}, Steps::kDecades, counting);
  EXPECT_EQ(seen, (std::vector<std::uint64_t>{1, 2, 3, 4}));
  EXPECT_THROW(MakeHeatMap(spectra, {}, Steps::kDecades, {[] { return true; }, {}}), source::Cancelled);
}

}  // namespace
}  // namespace zrml::view
