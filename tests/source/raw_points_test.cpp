// Points of raw directories that the slots merge or drop.
#include <gtest/gtest.h>

#include "source/source.h"
#include "tests/support/nearest_points.h"
#include "tests/support/raw_directory_builder.h"

namespace zrml::source {
namespace {

using Values = std::vector<double>;

std::unique_ptr<Source> Open(const TempDirectory& directory) {
  const std::u8string path = directory.Path().u8string();
  return Source::Open({path.begin(), path.end()});
}

template <class Stored>
FunctionFiles Scans(unsigned dataFormat, const std::vector<std::vector<Stored>>& scans) {
  FunctionFiles function;
  function.record.dataFormat = dataFormat;
  for (const std::vector<Stored>& points : scans) function.scans.push_back(ScanOf(0.5F, points));
  return function;
}

// Channels of one mass, and a point of mass 0: the slots keep the most intense of each mass above 0.
TEST(RawPoints, PointsOfOneMassAreAllKept) {
  RawDirectoryBuilder raw;
  raw.functions.push_back(
      Scans<StoredPoint8>(8, {{{300 * 128, 5}, {100 * 128, 6}, {300 * 128, 9}, {0, 2}, {300 * 128, 1}}}));
  const TempDirectory directory = raw.Build();
  Values mz;
  Values intensities;
  EXPECT_EQ(Open(directory)->ReadPoints(0, 0, 0, mz, intensities).lost, 0u);
  EXPECT_EQ(mz, (Values{0, 100, 300, 300, 300}));
  EXPECT_EQ(intensities, (Values{2, 6, 5, 9, 1}));
}

// The second point of each pair has no intensity; that of the second one has no mass either, and is none.
TEST(RawPoints, PointsOfPairsWithoutIntensityAreKept) {
  constexpr std::uint32_t kMass = 1024;
  RawDirectoryBuilder raw;
  raw.functions.push_back(Scans<StoredPoint1>(1, {{{.mass = 100 * kMass, .mantissa = 5},
                                                   {.mass = 200 * kMass},
                                                   {.mass = 300 * kMass, .mantissa = 6},
                                                   {},
                                                   {.mass = 400 * kMass}}}));
  const TempDirectory directory = raw.Build();
  Values mz;
  Values intensities;
  EXPECT_EQ(Open(directory)->ReadPoints(0, 0, 0, mz, intensities).lost, 0u);
  EXPECT_EQ(mz, (Values{100, 200, 300, 400}));
  EXPECT_EQ(intensities, (Values{5, 0, 6, 0}));
}

// 40 points, of 4 bytes or 12, and 32 masses: 8 points have none.
TEST(RawPoints, PointsBeyondTheListOfMassesAreLost) {
  const auto readFirst = [](FunctionFiles function) {
    for (std::size_t i = 0; i < function.record.startMasses.size(); ++i)
      function.record.startMasses[i] = 100 + static_cast<float>(i);
    RawDirectoryBuilder raw;
    raw.functions = {std::move(function)};
    const TempDirectory directory = raw.Build();
    Values mz;
    Values intensities;
    return Open(directory)->ReadPoints(0, 0, 0, mz, intensities);
  };
  for (const PointsRead read : {readFirst(Scans<StoredPoint11>(11, {std::vector<StoredPoint11>(40)})),
                                readFirst(Scans<StoredPoint14>(14, {std::vector<StoredPoint14>(40)}))}) {
    EXPECT_EQ(read.count, 32u);
    EXPECT_EQ(read.lost, 8u);
  }
}

// 100 points from m/z 500, 0.002 apart, with intensities 1 to 100: once, and twice in one scan.
TEST(RawPoints, SubScansOfAProfileAreAddedSampleBySample) {
  std::vector<WantedPoint> points;
  for (int i = 0; i < 100; ++i) points.push_back({500 + 0.002 * i, 1.0 + i});
  const std::vector<StoredPoint12> once = NearestPoints<StoredPoint12>(points);
  std::vector<StoredPoint12> twice = once;
  twice.insert(twice.end(), once.begin(), once.end());
  FunctionFiles profile = Scans<StoredPoint12>(12, {once, twice});
  for (ScanFiles& scan : profile.scans) scan.index.centroidState = CentroidState::kProfile;
  FunctionFiles peaks = Scans<StoredPoint12>(12, {twice});
  peaks.scans[0].index.centroidState = CentroidState::kCentroid;
  RawDirectoryBuilder raw;
  raw.functions = {profile, peaks};
  const TempDirectory directory = raw.Build();
  const std::unique_ptr<Source> source = Open(directory);
  Values mz;
  Values intensities;
  source->ReadPoints(0, 0, 0, mz, intensities);
  ASSERT_EQ(mz.size(), 100u);
  Values summedMz;
  Values summed;
  EXPECT_EQ(source->ReadPoints(0, 0, 1, summedMz, summed).lost, 0u);
  EXPECT_EQ(summedMz, mz);
  for (double& intensity : intensities) intensity *= 2;
  EXPECT_EQ(summed, intensities);
  source->ReadPoints(0, 1, 0, mz, intensities);
  EXPECT_LT(mz.size(), 100u);  // peaks within 0.01 have merged
}

}  // namespace
}  // namespace zrml::source
