// Sums of two or three profiles, by hand.
#include "source/profile_sum.h"

#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace zrml::source {
namespace {

using Doubles = std::vector<double>;
using Pairs = std::vector<std::pair<double, double>>;

CZRMassSpectrum ProfileOf(const Pairs& points) {
  CZRMassSpectrum profile;
  profile.SetSize(static_cast<int>(points.size()));
  for (std::size_t i = 0; i < points.size(); ++i) {
    profile.SetMass(static_cast<int>(i), points[i].first);
    profile.SetIntensity(static_cast<int>(i), points[i].second);
  }
  return profile;
}

Pairs SumOf(const std::vector<Pairs>& profiles) {
  CZRMassSpectrum sum = ProfileOf(profiles[0]);
  for (std::size_t i = 1; i < profiles.size(); ++i) {
    CZRMassSpectrum profile = ProfileOf(profiles[i]);
    AddProfile(profile, sum);
  }
  Pairs points;
  for (int i = 0; i < sum.GetCount(); ++i) points.emplace_back(sum.GetMass(i), sum.GetIntensities()[i]);
  return points;
}

// Steps of 0.25 up to 102 and of 0.5 above it, as those of a time of flight grow, and few ions among zeros.
// No point lies between those of another scan, so each keeps its place, whichever scan is the first.
TEST(ProfileSum, SparseProfilesOfOneGridAreAddedPointByPoint) {
  const Pairs few = {{100, 0}, {100.25, 3}, {100.5, 0}, {105, 0}, {105.5, 2}, {106, 0}};
  const Pairs peaks = {{101, 0},   {101.25, 4}, {101.5, 8}, {101.75, 4}, {102, 0},
                       {103.5, 0}, {104, 2},    {104.5, 6}, {105, 2},    {105.5, 0}};
  const Pairs others = {{101.25, 0}, {101.5, 5}, {101.75, 0}, {104, 0}, {104.5, 1}, {105, 0}};
  const Pairs sum = {{100, 0}, {100.25, 3}, {100.5, 0}, {101, 0},   {101.25, 4}, {101.5, 13}, {101.75, 4},
                     {102, 0}, {103.5, 0},  {104, 2},   {104.5, 7}, {105, 2},    {105.5, 2},  {106, 0}};
  EXPECT_EQ(SumOf({few, peaks, others}), sum);
  EXPECT_EQ(SumOf({peaks, others, few}), sum);
  EXPECT_EQ(SumOf({others, few, peaks}), sum);
}

// Half a step off: each sample is split between the two beside it. The third profile has the points of the
// second, and is split as they were instead of being put between the points of the sum.
TEST(ProfileSum, ProfilesBetweenThePointsAreDistributed) {
  const Pairs one = {{100, 1}, {101, 1}, {102, 1}, {103, 1}, {104, 1}};
  const Pairs between = {{100.5, 2}, {101.5, 8}, {102.5, 2}};
  EXPECT_EQ(SumOf({one, between, between}), (Pairs{{100, 3}, {101, 11}, {102, 11}, {103, 3}, {104, 1}}));
}

// Every other point is one of the sum's, which may lack those between them because they were zeros.
TEST(ProfileSum, ProfilesOfEveryOtherPointAreAddedPointByPoint) {
  const Pairs one = {{100, 1}, {101, 1}, {102, 1}, {103, 1}, {104, 1}};
  const Pairs finer = {{101, 4}, {101.5, 8}, {102, 4}, {102.5, 2}};
  const Pairs sum = {{100, 1}, {101, 5}, {101.5, 8}, {102, 5}, {102.5, 2}, {103, 1}, {104, 1}};
  EXPECT_EQ(SumOf({one, finer}), sum);
  EXPECT_EQ(SumOf({finer, one}), sum);
}

// Steps of 0.1, but for rounding. The point beside 100.3 shows no step of its own.
TEST(ProfileSum, SinglePointsBesideThoseOfTheSumAreOfItsGrid) {
  const Pairs five = {{100.2, 312}, {100.3, 813}, {100.8, 74}, {100.9, 624}, {101, 238}};
  const Pairs three = {{100.4, 589}, {100.8, 842}, {100.9, 900}};
  const Pairs sum = {{100.2, 312}, {100.3, 813}, {100.4, 589}, {100.8, 916}, {100.9, 1524}, {101, 238}};
  EXPECT_EQ(SumOf({five, three}), sum);
  EXPECT_EQ(SumOf({three, five}), sum);
}

// A neighbour may be a little closer than those beside it are, but not half a step.
TEST(ProfileSum, PointsBesideThoseOfTheSumAreOfItsGrid) {
  const Pairs one = {{100, 1}, {101, 1}, {102, 1}, {103, 1}, {104, 1}};
  EXPECT_EQ(SumOf({one, {{104.75, 1}, {105.75, 1}, {106.75, 1}}}).size(), 8u);
  EXPECT_EQ(SumOf({one, {{104.5, 2}, {105.5, 2}, {106.5, 2}}}),
            (Pairs{{100, 1}, {101, 1}, {102, 1}, {103, 1}, {104, 2}, {105, 2}, {106, 2}, {107, 1}}));
}

// A grid is carried down to 1.5 and to 0, which carries nothing: 1.25 stays where it is.
TEST(ProfileSum, NothingIsLostNearZero) {
  const Pairs coarse = {{3.5, 4}, {5.5, 4}, {7.5, 4}, {9.5, 4}, {11.5, 4}};
  EXPECT_EQ(SumOf({coarse, {{1.25, 8}, {4.5, 2}, {8.5, 2}}}),
            (Pairs{{1.25, 8}, {3.5, 5}, {5.5, 5}, {7.5, 5}, {9.5, 5}, {11.5, 4}}));
}

TEST(ProfileSum, PointsAtZeroKeepTheirIntensity) {
  const Pairs fromZero = {{0, 3}, {2, 4}, {4, 4}, {6, 4}, {8, 4}};
  EXPECT_EQ(SumOf({fromZero, {{0, 1}, {1, 8}, {3, 2}}}),
            (Pairs{{0, 4}, {1, 8}, {2, 5}, {4, 5}, {6, 4}, {8, 4}}));
  EXPECT_EQ(SumOf({{{2, 4}, {4, 4}, {6, 4}, {8, 4}, {10, 4}}, {{-1, 7}, {0, 1}, {3, 2}}}),
            (Pairs{{-1, 7}, {0, 1}, {2, 5}, {4, 5}, {6, 4}, {8, 4}, {10, 4}}));
}

// The grids are half a step apart at 901, where each of the two samples goes half to either side. Of 100 the
// first profile says nothing, so the second one's steps, half as long, are those of the sum.
TEST(ProfileSum, StretchesFarFromAllOthersKeepTheirSteps) {
  const Pairs narrow = {{900, 0}, {900.5, 4}, {901, 8}, {901.5, 4}, {902, 0}};
  const Pairs alone = {{100.25, 3}, {100.5, 6}, {100.75, 3}};
  Pairs wide = {{100, 0}};
  wide.insert(wide.end(), alone.begin(), alone.end());
  for (const auto& point : Pairs{{101, 0}, {900.25, 0}, {900.75, 2}, {901.25, 2}, {901.75, 0}})
    wide.push_back(point);
  Pairs sum = SumOf({narrow, wide});
  std::erase_if(sum, [](const auto& point) { return point.second == 0; });
  Pairs expected = alone;
  for (const auto& point : Pairs{{900.5, 5}, {901, 10}, {901.5, 5}}) expected.push_back(point);
  EXPECT_EQ(sum, expected);
}

// A million zeros would be between the two stretches of the sum.
TEST(ProfileSum, LongGapsBetweenFewPointsAreNotFilled) {
  const Pairs one = {{100, 1}, {101, 1}, {102, 1}, {103, 1}, {104, 1}, {1e6, 1}, {1e6 + 1, 1}, {1e6 + 2, 1}};
  const Pairs between = {{100.5, 2}, {101.5, 8}, {102.5, 2}};
  EXPECT_EQ(SumOf({one, between}),
            (Pairs{{100, 2}, {101, 6}, {102, 6}, {103, 2}, {104, 1}, {1e6, 1}, {1e6 + 1, 1}, {1e6 + 2, 1}}));
}

// As runs of zeros that were left out are.
TEST(ProfileSum, GapsBetweenManyPointsAreFilled) {
  Pairs one;
  for (int i = 0; i < 10000; ++i) one.emplace_back(100 + i, 1);
  one.emplace_back(100 + 20000, 1);
  const Pairs sum = SumOf({one, {{100.5, 2}, {101.5, 8}, {102.5, 2}}});
  ASSERT_EQ(sum.size(), 20001);
  EXPECT_EQ(sum[1], (std::pair<double, double>{101, 6}));
  EXPECT_EQ(sum[15000], (std::pair<double, double>{15100, 0}));
}

}  // namespace
}  // namespace zrml::source
