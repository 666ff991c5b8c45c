// Many mass ranges in one pass, beside each of them alone.
#include <bit>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "source/source.h"
#include "tests/support/raw_directory_builder.h"
#include "tests/support/report_writer.h"
#include "tests/support/sample/acquisition.h"

namespace zrml::source {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Narrow and wide, with points of the scans at their ends, without any, the wrong way round.
constexpr Range kRanges[] = {
    {556.2, 556.4}, {0, 100.0001}, {195.0876, 195.0876}, {100, 1000}, {900, 300},    {-kInfinity, kInfinity},
    {kNaN, 500},    {500, kNaN},   {391.2, 391.35},      {1e6, 2e6},  {999.99, 1000}};

std::vector<std::uint64_t> Bits(std::span<const double> values) {
  std::vector<std::uint64_t> bits;
  for (const double value : values) bits.push_back(std::bit_cast<std::uint64_t>(value));
  return bits;
}

void ExpectEachAlone(Source& source) {
  for (int function = 0; function < static_cast<int>(source.Functions(0).size()); ++function) {
    const auto scans = static_cast<std::size_t>(source.ScanCount(0, function));
    for (const Within within : {Within::kSum, Within::kLargest}) {
      std::vector<double> rows(scans * std::size(kRanges), -1);
      source.MassRanges(0, function, kRanges, within, rows);
      for (std::size_t i = 0; i < std::size(kRanges); ++i) {
        EXPECT_EQ(Bits(std::span(rows).subspan(i * scans, scans)),
                  Bits(source.MassRange(0, function, kRanges[i], within).intensities))
            << function << ", " << kRanges[i].low << " to " << kRanges[i].high;
      }
    }
  }
}

std::unique_ptr<Source> Open(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return Source::Open({text.begin(), text.end()});
}

TEST(MassRanges, OfARawDirectory) {
  const TempDirectory directory = sample::Acquisition().Build();
  ExpectEachAlone(*Open(directory.Path()));
}

// Its index says that the first scan has counted something; the second has its intensities behind many zeros.
TEST(MassRanges, OfScansThatAreZeroed) {
  RawDirectoryBuilder acquisition;
  acquisition.functions.resize(1);
  std::vector<WantedPoint> points;
  for (int i = 0; i < 40; ++i) points.push_back({100.0 + i, 0});
  acquisition.functions[0].scans = {ScanFrom<StoredPoint9>(1, points), ScanFrom<StoredPoint9>(2, points),
                                    ScanFrom<StoredPoint9>(3, {{100, 0}, {101, 7}})};
  acquisition.functions[0].scans[0].index.totalIntensity = 7;
  acquisition.functions[0].scans[1].index.totalIntensity = 0;
  points.push_back({150, 7});
  acquisition.functions[0].scans.push_back(ScanFrom<StoredPoint9>(4, points));
  const TempDirectory directory = acquisition.Build();
  const auto source = Open(directory.Path());
  ExpectEachAlone(*source);
  for (const Range range : {Range{0, 1000}, {99, 100}, {200, 300}}) {
    const std::vector<double> values = source->MassRange(0, 0, range, Within::kSum).intensities;
    EXPECT_TRUE(std::isnan(values[0])) << range.low;
    const double all = range.high == 1000 ? 7 : 0;
    EXPECT_EQ((std::vector<double>(values.begin() + 1, values.end())), (std::vector<double>{0, all, all}));
  }
  EXPECT_TRUE(std::isnan(source->BasePeaks(0, 0).intensities[0]));
}

TEST(MassRanges, OfAReport) {
  const TempDirectory directory("reports");
  ReportPairs points;
  for (int i = 0; i < 50; ++i) points.emplace_back(100 + 20 * i, i);
  directory.WriteText(
      "one.rpt", ReportText(SampleBlock(FunctionBlock(SpectrumBlock({}, points) + SpectrumBlock({}, {}) +
                                                      SpectrumBlock({}, {{500, 1}, {500, 2}, {500, 4}})))));
  ExpectEachAlone(*Open(directory.Path() / "one.rpt"));
}

TEST(MassRanges, NeedRoom) {
  const TempDirectory directory("reports");
  directory.WriteText("one.rpt", ReportText(SampleBlock(FunctionBlock(SpectrumBlock({}, {{500, 1}})))));
  const auto source = Open(directory.Path() / "one.rpt");
  std::vector<double> rows(std::size(kRanges) - 1);
  EXPECT_THROW(source->MassRanges(0, 0, kRanges, Within::kSum, rows), Error);
  source->MassRanges(0, 0, std::span(kRanges).first(rows.size()), Within::kSum, rows);
  EXPECT_EQ(rows[3], 1);
}

}  // namespace
}  // namespace zrml::source
