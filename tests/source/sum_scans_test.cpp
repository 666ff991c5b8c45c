// Sums of scans beside the same additions made one by one, of reports whose points are whatever a test wants.
#include "source/sum_scans.h"

#include <cmath>
#include <numeric>

#include <gtest/gtest.h>

#include "spectrum/add_spectrum.h"
#include "tests/spectrum/random_numbers.h"
#include "tests/support/report_writer.h"
#include "tests/support/temp_directory.h"

namespace zrml::source {
namespace {

using Doubles = std::vector<double>;

class SumScansTest : public testing::Test {
 protected:
  // Intensities of a report are per cent of `base`.
  std::unique_ptr<Source> Open(const std::vector<ReportPairs>& scans, bool isCentroided,
                               const std::string& base = "777") {
    ReportLines blocks;
    for (const ReportPairs& points : scans) blocks = blocks + Block(points, isCentroided, base);
    return Open(blocks);
  }

  static ReportLines Block(const ReportPairs& points, bool isCentroided, const std::string& base = "100") {
    return SpectrumBlock(Keys({{"BPI", base}, {"Continuum", isCentroided ? "FALSE" : "TRUE"}}), points);
  }

  std::unique_ptr<Source> Open(const ReportLines& blocks) {
    directory_.WriteText("sum.rpt", ReportText(SampleBlock(FunctionBlock(blocks))));
    const auto path = (directory_.Path() / "sum.rpt").u8string();
    return Source::Open({path.begin(), path.end()});
  }

  static CZRMassSpectrum Spectrum(Source& source, int scan) {
    Doubles mz;
    Doubles intensities;
    source.ReadPoints(0, 0, scan, mz, intensities);
    CZRMassSpectrum spectrum;
    spectrum.SetSize(static_cast<int>(mz.size()));
    spectrum.CopyMasses(mz.data());
    spectrum.CopyIntensities(intensities.data());
    spectrum.SetCentroided(*IsCentroided(source.ScanAt(0, 0, scan)));
    return spectrum;
  }

  static void ExpectSum(Source& source, int first, int end, PeakWidth width) {
    CZRMassSpectrum expected = Spectrum(source, first);
    for (int scan = first + 1; scan < end; ++scan)
      AddSpectrum(!width.isPpm, width.width, Spectrum(source, scan), expected);
    const ScanSum sum = SumScans(source, 0, 0, first, end, width);
    EXPECT_EQ(sum.mz, Doubles(expected.MassVector().begin(), expected.MassVector().end()));
    EXPECT_EQ(sum.intensities, Doubles(expected.IntensityVector().begin(), expected.IntensityVector().end()));
  }

  // Points on a coarse grid, so that many are equal; with `repeats` also within a scan.
  static std::vector<ReportPairs> RandomScans(std::uint64_t seed, bool repeats) {
    RandomNumbers random(seed);
    std::vector<ReportPairs> scans(8);
    for (ReportPairs& points : scans) {
      double mz = 100;
      for (int i = random.Below(30); i > 0; --i) {
        mz += 0.25 * (random.Below(4) + (repeats ? 0 : 1));
        points.emplace_back(mz, random.Below(100));
      }
    }
    return scans;
  }

  TempDirectory directory_{"reports"};
};

TEST_F(SumScansTest, PeaksAreAddedAsBySpectra) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    for (const bool repeats : {false, true}) {
      SCOPED_TRACE(testing::Message() << seed << (repeats ? " with repeats" : ""));
      const auto source = Open(RandomScans(seed, repeats), true);
      for (const PeakWidth width : {PeakWidth{0, false}, {0.6, false}, {0, true}, {3000, true}}) {
        ExpectSum(*source, 0, 8, width);
        ExpectSum(*source, 3, 6, width);
        ExpectSum(*source, 5, 6, width);
      }
    }
  }
}

// The first scan has a mass twice, one behind it too, or none has one.
TEST_F(SumScansTest, EqualMassesWithinAScanStayApart) {
  const auto source = Open({{{100, 1}, {200, 2}}, {{100, 4}, {100, 8}}, {{100, 16}, {100, 32}}}, true, "100");
  ExpectSum(*source, 0, 3, {});
  const ScanSum sum = SumScans(*source, 0, 0, 0, 2, {});
  EXPECT_EQ(sum.mz, (Doubles{100, 100, 200}));
  EXPECT_EQ(sum.intensities, (Doubles{5, 8, 2}));
  ExpectSum(*source, 1, 3, {});
  // Within a tolerance they are one as soon as they are added to something.
  EXPECT_EQ(SumScans(*source, 0, 0, 0, 2, {10, true}).intensities, (Doubles{13, 2}));
}

TEST_F(SumScansTest, ProfilesAreAddedAsBySpectra) {
  std::vector<ReportPairs> scans(4);
  RandomNumbers random(5);
  for (std::size_t scan = 0; scan < scans.size(); ++scan) {
    for (int i = 0; i < 40; ++i)
      scans[scan].emplace_back(100 + 0.125 * i + 0.03 * static_cast<double>(scan), random.Below(100));
  }
  scans.insert(scans.begin(), ReportPairs{});
  scans.push_back({{100, 1}, {101, 2}});
  const auto source = Open(scans, false);
  ExpectSum(*source, 0, 6, {});
  ExpectSum(*source, 1, 5, {});
  ExpectSum(*source, 1, 5, {0.5, false});
  EXPECT_GT(SumScans(*source, 0, 0, 1, 5, {}).mz.size(), 40u);
}

double TotalOf(const Doubles& intensities) {
  return std::accumulate(intensities.begin(), intensities.end(), 0.0);
}

// A profile with steps of its own, or with those of another: time-of-flight steps of about 0.01 from about
// 500 on, some left out, or as few as three points.
ReportPairs RandomProfile(RandomNumbers& random) {
  const int points = random.Below(4) == 0 ? 3 + random.Below(3) : 3 + random.Below(200);
  const double shift = random.Below(2) == 0 ? 0 : random.Below(1000) / 1000.0;
  ReportPairs profile;
  const int first = random.Below(300);
  for (int i = 0; static_cast<int>(profile.size()) < points; ++i) {
    if (random.Below(5) == 0) continue;
    const double root = std::sqrt(500) + (first + i + shift) * 0.0002;
    profile.emplace_back(root * root, 1 + random.Below(10000) / 7.0);
  }
  return profile;
}

TEST_F(SumScansTest, TheTotalOfProfilesIsKept) {
  for (std::uint64_t seed = 1; seed <= 300; ++seed) {
    RandomNumbers random(seed);
    std::vector<ReportPairs> scans(static_cast<std::size_t>(2 + random.Below(6)));
    for (ReportPairs& profile : scans) profile = RandomProfile(random);
    const auto source = Open(scans, false);
    double total = 0;
    for (int scan = 0; scan < static_cast<int>(scans.size()); ++scan) {
      Doubles mz;
      Doubles intensities;
      source->ReadPoints(0, 0, scan, mz, intensities);
      ASSERT_EQ(mz.size(), scans[static_cast<std::size_t>(scan)].size());
      total += TotalOf(intensities);
    }
    const ScanSum sum = SumScans(*source, 0, 0, 0, static_cast<int>(scans.size()), {});
    EXPECT_NEAR(TotalOf(sum.intensities), total, 1e-11 * total) << seed;
    EXPECT_EQ(sum.leftOut, 0);
  }
}

// Steps of 1 and of 0.5, from 100 and 100.25 on. The second one's grid takes in the first: each point of it
// is halfway between two of the grid.
TEST_F(SumScansTest, ShortProfileIsAddedToTheGridOfTheNext) {
  const auto source = Open({{{100.5, 8}, {101.5, 4}, {102.5, 2}},
                            {{100.25, 1}, {100.75, 1}, {101.25, 1}, {101.75, 1}, {102.25, 1}, {102.75, 1}}},
                           false, "100");
  const ScanSum sum = SumScans(*source, 0, 0, 0, 2, {});
  EXPECT_EQ(sum.mz, (Doubles{100.25, 100.75, 101.25, 101.75, 102.25, 102.75}));
  EXPECT_EQ(sum.intensities, (Doubles{5, 5, 3, 3, 2, 2}));
}

TEST_F(SumScansTest, TwoShortProfilesHaveThePointsOfBoth) {
  const auto source =
      Open({{{100, 8}, {101, 4}, {102, 2}}, {{100, 1}, {100.5, 1}, {101.5, 1}, {103, 1}}}, false, "100");
  const ScanSum sum = SumScans(*source, 0, 0, 0, 2, {});
  EXPECT_EQ(sum.mz, (Doubles{100, 100.5, 101, 101.5, 102, 103}));
  EXPECT_EQ(sum.intensities, (Doubles{9, 1, 4, 1, 2, 1}));
}

// Equal masses have no step: they are one sample, and three samples of one mass are too few for a grid, of
// which nothing is said on standard output.
TEST_F(SumScansTest, SamplesOfOneMassAreOne) {
  const auto source = Open({{{100, 1}, {101, 2}, {101, 3}, {102, 4}},
                            {{100, 10}, {101, 20}, {102, 40}},
                            {{100, 1}, {100, 2}, {100, 3}}},
                           false, "100");
  testing::internal::CaptureStdout();
  const ScanSum sum = SumScans(*source, 0, 0, 0, 3, {});
  const ScanSum alone = SumScans(*source, 0, 0, 2, 3, {});
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(sum.mz, (Doubles{100, 101, 102}));
  EXPECT_EQ(sum.intensities, (Doubles{11, 25, 44}));
  EXPECT_EQ(sum.leftOut, 1);
  EXPECT_EQ(alone.intensities, Doubles{6});
}

// Steps of 1 from 100 on, and from 100.5 on with twice as many points, or one less: the first one that is not
// much sparser has its points in the sum, and each point of the other is halfway between two of them.
TEST_F(SumScansTest, TheGridIsThatOfTheFirstScanUnlessItIsSparse) {
  const ReportPairs five = {{100, 8}, {101, 4}, {102, 2}, {103, 6}, {104, 2}};
  ReportPairs more;
  for (int i = 0; i < 9; ++i) more.emplace_back(100.5 + i, 2);
  ReportPairs many = more;
  many.emplace_back(109.5, 2);
  many.emplace_back(110.5, 2);
  const ScanSum first = SumScans(*Open({five, more}, false, "100"), 0, 0, 0, 2, {});
  EXPECT_EQ(first.mz, (Doubles{100, 101, 102, 103, 104, 105, 106, 107, 108, 109}));
  EXPECT_EQ(first.intensities, (Doubles{9, 6, 4, 8, 4, 2, 2, 2, 2, 1}));
  const ScanSum second = SumScans(*Open({five, many}, false, "100"), 0, 0, 0, 2, {});
  EXPECT_EQ(second.mz,
            (Doubles{99.5, 100.5, 101.5, 102.5, 103.5, 104.5, 105.5, 106.5, 107.5, 108.5, 109.5, 110.5}));
  EXPECT_EQ(second.intensities, (Doubles{4, 8, 5, 6, 6, 3, 2, 2, 2, 2, 2, 2}));
  EXPECT_EQ(second.added, (std::vector{0, 1}));
}

// All points are on a grid of 0.01, which only the peak shows.
TEST_F(SumScansTest, SingleIonsAreAddedToTheGridOfAPeak) {
  const ReportPairs ions = {{100, 1}, {100.05, 1}, {100.11, 1}, {100.13, 1}, {100.21, 1}, {100.28, 1}};
  const ReportPairs peak = {{100.1, 1},    {100.11, 1},  {100.12, 20}, {100.13, 400},
                            {100.14, 400}, {100.15, 20}, {100.16, 1}};
  for (const auto& scans : {std::vector{ions, peak}, std::vector{peak, ions}}) {
    const ScanSum sum = SumScans(*Open(scans, false, "100"), 0, 0, 0, 2, {});
    EXPECT_EQ(sum.mz,
              (Doubles{100, 100.05, 100.1, 100.11, 100.12, 100.13, 100.14, 100.15, 100.16, 100.21, 100.28}));
    EXPECT_EQ(sum.intensities, (Doubles{1, 1, 1, 2, 20, 401, 400, 20, 1, 1, 1}));
  }
}

// The first two scans have steps of 0.03 and more, and 100.04 is closer than that to 100.03 and 100.05. That
// it is one step of 0.01 away is seen from the last one, at another m/z.
TEST_F(SumScansTest, TheGridIsThatOfAllScansTogether) {
  const ReportPairs ions = {{100, 1}, {100.03, 2}, {100.08, 3}};
  const ReportPairs others = {{100.04, 4}, {100.1, 5}, {100.16, 6}, {100.2, 7}, {100.29, 8}};
  const ReportPairs peak = {{101.5, 1}, {101.51, 9}, {101.52, 1}};
  const Doubles mz = {100, 100.03, 100.04, 100.08, 100.1, 100.16, 100.2, 100.29, 101.5, 101.51, 101.52};
  for (const auto& scans : {std::vector{ions, others, peak}, std::vector{peak, others, ions}}) {
    const ScanSum sum = SumScans(*Open(scans, false, "100"), 0, 0, 0, 3, {});
    EXPECT_EQ(sum.mz, mz);
    EXPECT_EQ(sum.intensities, (Doubles{1, 2, 4, 3, 5, 6, 7, 8, 1, 9, 1}));
  }
}

// Half a step beside those of the peak: each ion is split between two of its points, never the other way
// round, although there are more than half as many ions as points.
TEST_F(SumScansTest, SingleIonsOfAnotherGridAreDistributedOverThePeak) {
  const ReportPairs ions = {{100.125, 2}, {100.625, 2}, {100.875, 2}, {101.625, 2}, {101.875, 2}};
  const ReportPairs peak = {{100, 1},     {100.25, 1}, {100.5, 20}, {100.75, 400}, {101, 400},
                            {101.25, 20}, {101.5, 1},  {101.75, 1}, {102, 1}};
  for (const auto& scans : {std::vector{ions, peak}, std::vector{peak, ions}}) {
    const ScanSum sum = SumScans(*Open(scans, false, "100"), 0, 0, 0, 2, {});
    EXPECT_EQ(sum.mz, (Doubles{100, 100.25, 100.5, 100.75, 101, 101.25, 101.5, 101.75, 102}));
    EXPECT_EQ(sum.intensities, (Doubles{2, 2, 21, 402, 401, 20, 2, 3, 2}));
  }
}

// One such scan would make all sums infinite, or no number; so would a few of 1e307, or the product of one
// with its m/z.
TEST_F(SumScansTest, ScansWithAnIntensityTooLargeForSumsAreLeftOut) {
  for (const bool isCentroided : {false, true}) {
    const ReportPairs points = {{100, 1}, {101, 5}, {102, 1}};
    for (const double huge : {1e308, 1e306, 1e100}) {  // times ten
      const ReportPairs left = {{100, 1}, {101, huge}, {102, 1}};
      const ScanSum sum =
          SumScans(*Open({left, points, points}, isCentroided, "1000"), 0, 0, 0, 3, {10, true});
      EXPECT_EQ(sum.added, (std::vector{1, 2})) << huge;
      EXPECT_EQ(sum.leftOut, 1);
      EXPECT_EQ(sum.mz, (Doubles{100, 101, 102}));
      EXPECT_EQ(sum.intensities, (Doubles{20, 100, 20}));
    }
  }
}

TEST_F(SumScansTest, MeansOfLargeIntensitiesAreFinite) {
  const ReportPairs points = {{100, 1}, {101, 0x1p+330}, {102, 1}};  // 2e99
  for (const bool isCentroided : {false, true}) {
    ScanSum mean = SumScans(*Open({points, points, points, points}, isCentroided, "100"), 0, 0, 0, 4, {});
    EXPECT_EQ(mean.leftOut, 0);
    MakeMean(mean);
    EXPECT_EQ(mean.intensities, (Doubles{1, 0x1p+330, 1}));
  }
}

// A scan without points has nothing to add, which is something else.
TEST_F(SumScansTest, ProfilesOfTwoPointsAreLeftOut) {
  const auto source =
      Open({{{100, 1}, {101, 2}}, {}, {{100, 1}, {101, 5}, {102, 1}}, {{100, 3}}}, false, "100");
  const ScanSum sum = SumScans(*source, 0, 0, 0, 4, {});
  EXPECT_EQ(sum.added, (std::vector<int>{1, 2}));
  EXPECT_EQ(sum.leftOut, 2);
  EXPECT_EQ(sum.mz, (Doubles{100, 101, 102}));
  const ScanSum alone = SumScans(*source, 0, 0, 0, 2, {});
  EXPECT_EQ(alone.added, (std::vector<int>{0, 1}));
  EXPECT_EQ(alone.leftOut, 0);
  EXPECT_EQ(alone.intensities, (Doubles{1, 2}));
}

TEST_F(SumScansTest, ProfilesOfTwoPointsAloneAreAddedPointByPoint) {
  const auto source = Open({{{100, 1}, {101, 2}}, {{100.5, 3}}, {{100.5, 4}, {101, 5}}}, false, "100");
  const ScanSum sum = SumScans(*source, 0, 0, 0, 3, {});
  EXPECT_EQ(sum.mz, (Doubles{100, 100.5, 101}));
  EXPECT_EQ(sum.intensities, (Doubles{1, 7, 7}));
  EXPECT_EQ(sum.added, (std::vector{0, 1, 2}));
  EXPECT_EQ(sum.leftOut, 0);
}

// Three scans, of which a background of two has 2 * 3 / 2 = 3 times its sum to take off.
TEST_F(SumScansTest, BackgroundIsTakenOffAsOftenAsThereAreScans) {
  const ReportPairs scan = {{100, 10}, {101, 20}, {102, 30}};
  const ReportPairs background = {{100, 1}, {101, 2}, {102, 40}};
  const auto source = Open({scan, scan, scan, background, background}, false, "100");
  ScanSum sum = SumScans(*source, 0, 0, 0, 3, {});
  TakeOff(SumScans(*source, 0, 0, 3, 5, {}), {}, sum);
  EXPECT_EQ(sum.mz, (Doubles{100, 101, 102}));
  EXPECT_EQ(sum.intensities, (Doubles{27, 54, -30}));
  MakeMean(sum);
  EXPECT_EQ(sum.intensities, (Doubles{9, 18, -10}));
}

// The background's point at 100.5 is halfway between two of the sum's; 103 is beyond it.
TEST_F(SumScansTest, BackgroundOfAnotherGridIsTakenOffByParts) {
  const auto source = Open({{{100, 9}, {101, 9}, {102, 9}, {103, 9}, {104, 9}},
                            {{100.5, 4}, {101.5, 2}, {102.5, 0}, {103.5, 0}, {104.5, 6}}},
                           false, "100");
  ScanSum sum = SumScans(*source, 0, 0, 0, 1, {});
  TakeOff(SumScans(*source, 0, 0, 1, 2, {}), {}, sum);
  EXPECT_EQ(sum.mz, (Doubles{100, 101, 102, 103, 104, 105}));
  EXPECT_EQ(sum.intensities, (Doubles{7, 6, 8, 9, 6, -3}));
}

// A width of 1 reaches as far as 0.5: 100.5 is as near to 100 as to 101, and the lower one is taken.
TEST_F(SumScansTest, PeaksOfTheBackgroundAreTakenOffTheNearest) {
  const auto source =
      Open({{{100, 9}, {101, 8}, {300, 7}}, {{100.5, 1}, {200, 2}, {300.25, 3}}}, true, "100");
  ScanSum sum = SumScans(*source, 0, 0, 0, 1, {1, false});
  TakeOff(SumScans(*source, 0, 0, 1, 2, {1, false}), {1, false}, sum);
  EXPECT_EQ(sum.mz, (Doubles{100, 101, 200, 300}));
  EXPECT_EQ(sum.intensities, (Doubles{8, 8, -2, 4}));
  // 1000 parts per million of 300.25 reach 0.15 on either side.
  sum = SumScans(*source, 0, 0, 0, 1, {1000, true});
  TakeOff(SumScans(*source, 0, 0, 1, 2, {1000, true}), {1000, true}, sum);
  EXPECT_EQ(sum.mz, (Doubles{100, 100.5, 101, 200, 300, 300.25}));
  EXPECT_EQ(sum.intensities, (Doubles{9, -1, 8, -2, 7, -3}));
}

TEST_F(SumScansTest, CanBeCancelled) {
  const auto source = Open(RandomScans(1, false), true);
  int asked = 0;
  EXPECT_THROW(SumScans(*source, 0, 0, 0, 8, {}, [&] { return ++asked == 3; }), Cancelled);
  EXPECT_EQ(asked, 3);
}

// The first two scans are peaks, the third one is a profile, and the fourth one empty.
TEST_F(SumScansTest, BackgroundIsOfTheSumsKind) {
  const ReportPairs points = {{100, 1}, {101, 2}, {102, 1}};
  const auto source =
      Open(Block(points, true) + Block(points, true) + Block(points, false) + Block({}, false));
  const auto sumOf = [&](std::vector<int> scans) {
    return SumScans(*source, 0, 0, scans, {}, Unsuited::kAreLeftOut);
  };
  const std::vector<int> all = {0, 1, 2, 3};
  ScanSum profile = sumOf({2});
  const ScanSum background = SumBackground(*source, 0, 0, all, {}, profile);
  EXPECT_FALSE(background.isCentroided);
  EXPECT_EQ(background.added, (std::vector<int>{2, 3}));
  EXPECT_EQ(background.leftOut, 2);
  ScanSum empty = sumOf({3});
  const ScanSum peaks = SumBackground(*source, 0, 0, all, {}, empty);
  EXPECT_EQ(peaks.added, (std::vector<int>{0, 1, 3}));
  TakeOff(peaks, {}, empty);
  EXPECT_TRUE(empty.isCentroided);
}

}  // namespace
}  // namespace zrml::source
