// Sums of scans beside the same additions made one by one, of reports whose points are whatever a test wants.
#include "source/sum_scans.h"

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
  std::unique_ptr<Source> Open(const std::vector<ReportPairs>& scans, bool isCentroided) {
    ReportLines blocks;
    for (const ReportPairs& points : scans)
      blocks = blocks +
               SpectrumBlock(Keys({{"BPI", "777"}, {"Continuum", isCentroided ? "FALSE" : "TRUE"}}), points);
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
    spectrum.SetCentroided(source.ScanAt(0, 0, scan).isCentroided);
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
  const auto source = Open({{{100, 1}, {200, 2}}, {{100, 4}, {100, 8}}, {{100, 16}, {100, 32}}}, true);
  ExpectSum(*source, 0, 3, {});
  const ScanSum sum = SumScans(*source, 0, 0, 0, 2, {});
  EXPECT_EQ(sum.mz, (Doubles{100, 100, 200}));
  ExpectSum(*source, 1, 3, {});
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

TEST_F(SumScansTest, CanBeCancelled) {
  const auto source = Open(RandomScans(1, false), true);
  int asked = 0;
  EXPECT_THROW(SumScans(*source, 0, 0, 0, 8, {}, [&] { return ++asked == 3; }), Cancelled);
  EXPECT_EQ(asked, 3);
}

}  // namespace
}  // namespace zrml::source
