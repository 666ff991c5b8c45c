// Scans one by one, as a table, and their points.
#include <cmath>
#include <cstring>
#include <limits>

#include "tests/library/opened.h"
#include "tests/support/sound_directory.h"
#include "tests/zrml/small_acquisition.h"
#include "tests/zrml/vials.h"

namespace zrml::test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// NaN is equal to NaN here.
void ExpectValues(const Doubles& actual, const Doubles& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) {
    if (std::isnan(expected[i])) {
      EXPECT_TRUE(std::isnan(actual[i])) << i << ": " << actual[i];
    } else {
      EXPECT_EQ(actual[i], expected[i]) << i;
    }
  }
}

class LibraryScans : public testing::Test {
 protected:
  zrml_scan Scan(const Opened& opened, int function, int scan) {
    return Get<zrml_scan>(zrml_get_scan, opened.Get(), 0, function, scan);
  }

  int ScanCount(const Opened& opened, int function) {
    int count = -1;
    EXPECT_EQ(zrml_scan_count(opened.Get(), 0, function, &count), ZRML_OK);
    return count;
  }

  std::string Report() {
    folder_.WriteText("vials.rpt", ReportText(Vials()));
    return PathOf(folder_, "vials.rpt");
  }

  TempDirectory raw_ = SmallAcquisition().Build();
  TempDirectory folder_{"reports"};
};

// Every array that a table has.
struct Columns {
  explicit Columns(std::size_t count)
      : number(count),
        minutes(count),
        endMinutes(count),
        points(count),
        isCentroided(count),
        totalIntensity(count),
        basePeakMz(count),
        basePeakIntensity(count),
        precursorMz(count),
        scanValue(count) {}

  zrml_scan_table Table(int readsPoints = 0) {
    return {.size = sizeof(zrml_scan_table),
            .number = number.data(),
            .minutes = minutes.data(),
            .end_minutes = endMinutes.data(),
            .points = points.data(),
            .is_centroided = isCentroided.data(),
            .total_intensity = totalIntensity.data(),
            .base_peak_mz = basePeakMz.data(),
            .base_peak_intensity = basePeakIntensity.data(),
            .precursor_mz = precursorMz.data(),
            .scan_value = scanValue.data(),
            .reads_points = readsPoints};
  }

  std::vector<std::int32_t> number;
  Doubles minutes;
  Doubles endMinutes;
  std::vector<std::uint32_t> points;
  std::vector<std::uint8_t> isCentroided;
  Doubles totalIntensity;
  Doubles basePeakMz;
  Doubles basePeakIntensity;
  Doubles precursorMz;
  Doubles scanValue;
};

TEST_F(LibraryScans, RecordOfARawScan) {
  const Opened raw(raw_);
  EXPECT_EQ(ScanCount(raw, 0), 3);
  EXPECT_EQ(ScanCount(raw, 2), 0);
  const zrml_scan scan = Scan(raw, 0, 1);
  EXPECT_EQ(scan.number, 2);
  EXPECT_EQ(scan.is_centroided, 0);
  EXPECT_EQ(scan.minutes, 1);
  EXPECT_EQ(scan.end_minutes, 1.25);
  EXPECT_EQ(scan.points, 1u);
  EXPECT_EQ(scan.total_intensity, 5);
  EXPECT_EQ(scan.scan_value, 2.5);
  ExpectValues({scan.base_peak_intensity, scan.precursor_mz}, {kNaN, kNaN});
  EXPECT_EQ(scan.is_precursor_of_method, 0);
  const zrml_scan product = Scan(raw, 1, 1);
  EXPECT_EQ(product.is_centroided, 1);
  EXPECT_EQ(product.precursor_mz, 445.125);
  ExpectValues({product.scan_value}, {kNaN});
}

TEST_F(LibraryScans, PrecursorOfTheMethodIsTold) {
  RawDirectoryBuilder acquisition = SmallAcquisition();
  acquisition.functions[1].record.setMass = 300;
  const TempDirectory directory = acquisition.Build();
  const Opened raw(directory);
  EXPECT_EQ(Scan(raw, 1, 0).precursor_mz, 300);
  EXPECT_EQ(Scan(raw, 1, 0).is_precursor_of_method, 1);
  EXPECT_EQ(Scan(raw, 1, 1).is_precursor_of_method, 0);
}

TEST_F(LibraryScans, RecordOfAReportsScan) {
  const Opened report(Report());
  const zrml_scan scan = Scan(report, 0, 0);
  EXPECT_EQ(scan.minutes, 0.5);
  EXPECT_EQ(scan.end_minutes, 0.5);
  EXPECT_EQ(scan.base_peak_intensity, 200);
  EXPECT_EQ(scan.total_intensity, 7);
  EXPECT_GE(scan.points, 2u);
}

TEST_F(LibraryScans, PointsAscend) {
  const Opened raw(raw_);
  EXPECT_EQ(PointsOf(raw.Get(), 0, 0, 0), (Arrays{{100, 200.5, 300.0625}, {10, 3, 1'000'000}}));
  EXPECT_EQ(PointsOf(raw.Get(), 0, 0, 2), Arrays());
  EXPECT_EQ(PointsOf(raw.Get(), 0, 5, 0), (Arrays{{100}, {11}}));
  const Opened report(Report());
  EXPECT_EQ(PointsOf(report.Get(), 0, 0, 0), (Arrays{{100, 300}, {200, 100}}))
      << "of the largest, in percent";
}

TEST_F(LibraryScans, MoreRoomThanPointsStaysAsItIs) {
  const Opened raw(raw_);
  Doubles mz(3, -1);
  Doubles intensities(3, -1);
  std::size_t count = 0;
  ASSERT_EQ(zrml_read_points(raw.Get(), 0, 0, 1, mz.data(), intensities.data(), 3, &count, nullptr), ZRML_OK);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(mz, (Doubles{100.25, -1, -1}));
  EXPECT_EQ(intensities, (Doubles{5, -1, -1}));
}

TEST_F(LibraryScans, PointsOfSeveralScans) {
  const Opened raw(raw_);
  const std::vector<Arrays> all = {{{100, 200.5, 300.0625}, {10, 3, 1'000'000}}, {{100.25}, {5}}, {{}, {}}};
  EXPECT_EQ(PointsOfScans(raw.Get(), 0, 0, 3, 4), all);
  EXPECT_EQ(PointsOfScans(raw.Get(), 0, 1, 2, 1), std::vector<Arrays>(all.begin() + 1, all.end()));
  EXPECT_EQ(PointsOfScans(raw.Get(), 0, 0, 3, 3), std::vector<Arrays>(all.begin(), all.begin() + 1))
      << "no room for the second";
  const Opened report(Report());
  EXPECT_EQ(PointsOfScans(report.Get(), 0, 0, 1, 2), (std::vector<Arrays>{{{100, 300}, {200, 100}}}));
}

TEST_F(LibraryScans, PointsOfSeveralScansAreLostByScan) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Truncate("_FUNC001.DAT", 18);
  const Opened raw(directory);
  EXPECT_EQ(PointsOfScans(raw.Get(), 0, 0, 3, 6),
            (std::vector<Arrays>{{{100, 200}, {7, 9}}, {{100}, {7}, 1}, {{}, {}, 2}}));
}

// 12 bytes a scan: of the second 1 of 2 points is left, of the third none.
TEST_F(LibraryScans, LostPointsAreCounted) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Truncate("_FUNC001.DAT", 18);
  const Opened raw(directory);
  EXPECT_EQ(PointsOf(raw.Get(), 0, 0, 0), (Arrays{{100, 200}, {7, 9}}));
  EXPECT_EQ(PointsOf(raw.Get(), 0, 0, 1), (Arrays{{100}, {7}, 1}));
  EXPECT_EQ(PointsOf(raw.Get(), 0, 0, 2), (Arrays{{}, {}, 2}));
}

TEST_F(LibraryScans, TableHasWhatTheRecordsHave) {
  const Opened raw(raw_);
  Columns columns(3);
  const zrml_scan_table table = columns.Table();
  ASSERT_EQ(zrml_read_scan_table(raw.Get(), 0, 0, 0, 3, &table), ZRML_OK) << zrml_message(raw.Get());
  EXPECT_EQ(columns.number, (std::vector<std::int32_t>{1, 2, 3}));
  EXPECT_EQ(columns.minutes, (Doubles{0.5, 1, 1.5}));
  EXPECT_EQ(columns.endMinutes, (Doubles{0.75, 1.25, 1.75}));
  EXPECT_EQ(columns.points, (std::vector<std::uint32_t>{3, 1, 0}));
  EXPECT_EQ(columns.isCentroided, (std::vector<std::uint8_t>{0, 0, 0}));
  EXPECT_EQ(columns.totalIntensity, (Doubles{1'000'013, 5, 0}));
  EXPECT_EQ(columns.scanValue, (Doubles{2.5, 2.5, 2.5}));
  ExpectValues(columns.basePeakMz, {kNaN, kNaN, kNaN});
  ExpectValues(columns.basePeakIntensity, {kNaN, kNaN, kNaN});
  ExpectValues(columns.precursorMz, {kNaN, kNaN, kNaN});
  Columns products(2);
  const zrml_scan_table productTable = products.Table();
  ASSERT_EQ(zrml_read_scan_table(raw.Get(), 0, 1, 0, 2, &productTable), ZRML_OK);
  ExpectValues(products.precursorMz, {kNaN, 445.125});
  EXPECT_EQ(products.isCentroided, (std::vector<std::uint8_t>{1, 1}));
}

// A raw function whose record of 416 bytes is zeros, and a report's spectrum that says neither.
TEST_F(LibraryScans, RepresentationsThatAreNotKnown) {
  const TempDirectory lost = SoundDirectory().Build();
  lost.Edit("_FUNCTNS.INF", [](FileBytes& bytes) { std::fill_n(bytes.begin() + 416, 416, std::byte{0}); });
  folder_.WriteText("neither.rpt", ReportText(SampleBlock(FunctionBlock(SpectrumBlock(
                                       Keys({{"Time", "1"}, {"Continuum", "false"}}), {{100, 5}})))));
  const auto expectUnknown = [&](const Opened& opened, int function) {
    EXPECT_EQ(Scan(opened, function, 0).is_centroided, -1);
    Columns columns(1);
    const zrml_scan_table table = columns.Table();
    ASSERT_EQ(zrml_read_scan_table(opened.Get(), 0, function, 0, 1, &table), ZRML_OK);
    EXPECT_EQ(columns.isCentroided, std::vector<std::uint8_t>{2});
  };
  expectUnknown(Opened(lost), 1);
  expectUnknown(Opened(PathOf(folder_, "neither.rpt")), 0);
}

TEST_F(LibraryScans, TableOfPointsHasBasePeaks) {
  const Opened raw(raw_);
  Columns columns(3);
  const zrml_scan_table table = columns.Table(1);
  ASSERT_EQ(zrml_read_scan_table(raw.Get(), 0, 0, 0, 3, &table), ZRML_OK) << zrml_message(raw.Get());
  ExpectValues(columns.basePeakMz, {300.0625, 100.25, kNaN});
  EXPECT_EQ(columns.basePeakIntensity, (Doubles{1'000'000, 5, 0}));
  const Opened report(Report());
  Columns ofReport(3);
  const zrml_scan_table reportTable = ofReport.Table(1);
  ASSERT_EQ(zrml_read_scan_table(report.Get(), 0, 0, 0, 3, &reportTable), ZRML_OK);
  ExpectValues(ofReport.basePeakMz, {100, 200, kNaN});
  EXPECT_EQ(ofReport.points, (std::vector<std::uint32_t>{2, 1, 0})) << "as many as were read";
}

TEST_F(LibraryScans, TableOfLostPointsHasNoBasePeaks) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Truncate("_FUNC001.DAT", 18);
  const Opened raw(directory);
  Columns columns(3);
  const zrml_scan_table table = columns.Table(1);
  ASSERT_EQ(zrml_read_scan_table(raw.Get(), 0, 0, 0, 3, &table), ZRML_OK);
  ExpectValues(columns.basePeakMz, {200, 100, kNaN});
  ExpectValues(columns.basePeakIntensity, {9, 7, kNaN});
  EXPECT_EQ(columns.points, (std::vector<std::uint32_t>{2, 1, 0}));
}

TEST_F(LibraryScans, TableOfAPart) {
  const Opened raw(raw_);
  Doubles minutes(2, -1);
  Doubles values(2, -1);
  zrml_scan_table table = {};
  table.size = sizeof table;
  table.minutes = minutes.data();
  ASSERT_EQ(zrml_read_scan_table(raw.Get(), 0, 0, 1, 1, &table), ZRML_OK);
  EXPECT_EQ(minutes, (Doubles{1, -1}));
  table.total_intensity = values.data();
  ASSERT_EQ(zrml_read_scan_table(raw.Get(), 0, 0, 1, 2, &table), ZRML_OK);
  EXPECT_EQ(minutes, (Doubles{1, 1.5}));
  EXPECT_EQ(values, (Doubles{5, 0}));
  EXPECT_EQ(zrml_read_scan_table(raw.Get(), 0, 0, 3, 0, &table), ZRML_OK) << "none behind the last";
  EXPECT_EQ(minutes, (Doubles{1, 1.5}));
}

// The table is filled piece by piece.
TEST_F(LibraryScans, TableOfManyScans) {
  constexpr int kScans = 150;
  RawDirectoryBuilder acquisition;
  acquisition.functions.resize(1);
  for (int i = 0; i < kScans; ++i) {
    acquisition.functions[0].scans.push_back(
        ScanFrom<StoredPoint9>(static_cast<float>(i), {{100, static_cast<double>(1000 + i)}}));
  }
  const TempDirectory directory = acquisition.Build();
  const Opened raw(directory);
  for (const int first : {0, 3, 100}) {
    Columns columns(kScans);
    const zrml_scan_table table = columns.Table();
    ASSERT_EQ(zrml_read_scan_table(raw.Get(), 0, 0, first, kScans - first, &table), ZRML_OK);
    for (int i = first; i < kScans; ++i) {
      const auto row = static_cast<std::size_t>(i - first);
      EXPECT_EQ(columns.number[row], i + 1);
      EXPECT_EQ(columns.minutes[row], i);
      EXPECT_EQ(columns.totalIntensity[row], 1000 + i);
      EXPECT_EQ(columns.points[row], 1u);
    }
  }
}

TEST_F(LibraryScans, TimesAloneAreThoseOfTheTable) {
  const Opened report(Report());
  Columns columns(3);
  const zrml_scan_table table = columns.Table();
  ASSERT_EQ(zrml_read_scan_table(report.Get(), 0, 0, 0, 3, &table), ZRML_OK);
  EXPECT_EQ(columns.minutes, (Doubles{0.5, 1.5, 2.5}));
  EXPECT_EQ(columns.basePeakIntensity, (Doubles{200, 200, 200}));
  Doubles times(3);
  zrml_scan_table alone = {};
  alone.size = sizeof alone;
  alone.minutes = times.data();
  ASSERT_EQ(zrml_read_scan_table(report.Get(), 0, 0, 0, 3, &alone), ZRML_OK);
  EXPECT_EQ(times, columns.minutes);
}

TEST_F(LibraryScans, PrecursorIsTheScanBefore) {
  const Opened raw(raw_);
  int function = 9;
  int scan = 9;
  ASSERT_EQ(zrml_find_precursor(raw.Get(), 0, 1, 1, &function, &scan), ZRML_OK);
  EXPECT_EQ(function, 0);
  EXPECT_EQ(scan, 1) << "at 1 minute, before 1.125";
  ASSERT_EQ(zrml_find_precursor(raw.Get(), 0, 0, 1, &function, &scan), ZRML_OK);
  EXPECT_EQ(function, -1);
  EXPECT_EQ(scan, -1);
}

// A caller of a later version gives more room than this version fills.
TEST_F(LibraryScans, RecordsGrow) {
  const Opened raw(raw_);
  struct Later {
    zrml_scan known;
    double more;
    char last[3];
  } later;
  std::memset(&later, 0x55, sizeof later);
  later.known.size = sizeof later;
  ASSERT_EQ(zrml_get_scan(raw.Get(), 0, 0, 1, &later.known), ZRML_OK);
  EXPECT_EQ(later.known.size, sizeof later);
  EXPECT_EQ(later.known.minutes, 1);
  EXPECT_EQ(later.more, 0);
  EXPECT_EQ(later.last[2], 0);
  struct LaterTable {
    zrml_scan_table known;
    double* more;
  } table = {{}, nullptr};
  Doubles minutes(3);
  table.known.size = sizeof table;
  table.known.minutes = minutes.data();
  EXPECT_EQ(zrml_read_scan_table(raw.Get(), 0, 0, 0, 3, &table.known), ZRML_OK);
  EXPECT_EQ(minutes[2], 1.5);
  table.more = minutes.data();
  EXPECT_EQ(zrml_read_scan_table(raw.Get(), 0, 0, 0, 3, &table.known), ZRML_WRONG_ARGUMENT)
      << "an array that nobody would fill";
}

}  // namespace
}  // namespace zrml::test
