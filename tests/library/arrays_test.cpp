// Chromatograms, sums, drift bins, traces and absorbance: what the arrays hold and how room is given for
// them.
#include <climits>
#include <cmath>
#include <limits>
#include <numeric>

#include "tests/library/opened.h"
#include "tests/support/sound_directory.h"
#include "tests/zrml/small_acquisition.h"
#include "tests/zrml/vials.h"

namespace zrml::test {
namespace {

struct Summed {
  Arrays points;
  zrml_sum record;
};

class LibraryArrays : public testing::Test {
 protected:
  using Series = zrml_status (*)(zrml_source*, int, int, double*, std::size_t);

  Doubles Read(Series read, const Opened& opened, int function, std::size_t scans) {
    Doubles values(scans, -1);
    EXPECT_EQ(read(opened.Get(), 0, function, values.data(), scans), ZRML_OK) << zrml_message(opened.Get());
    return values;
  }

  Arrays Sum(const Opened& opened, int function, int first, int end, double width = 0, int isPpm = 0) {
    return ReadTwice(opened.Get(), [&](double* x, double* y, std::size_t room, std::size_t* count) {
      return zrml_read_sum(opened.Get(), 0, function, first, end, width, isPpm, x, y, room, count);
    });
  }

  Summed SumOfScans(const Opened& opened, int function, const std::vector<int>& scans,
                    zrml_sum_options options = {}, const std::vector<int>& background = {}) {
    options.size = sizeof options;
    options.background = background.data();
    options.background_count = background.size();
    Summed summed = {};
    summed.record.size = sizeof summed.record;
    summed.points = ReadTwice(opened.Get(), [&](double* x, double* y, std::size_t room, std::size_t* count) {
      return zrml_read_sum_of_scans(opened.Get(), 0, function, scans.data(), scans.size(), &options, x, y,
                                    room, count, &summed.record);
    });
    return summed;
  }

  Arrays Trace(const Opened& opened, int function, int trace) {
    return ReadTwice(opened.Get(), [&](double* x, double* y, std::size_t room, std::size_t* count) {
      return zrml_read_trace(opened.Get(), 0, function, trace, x, y, room, count);
    });
  }

  Arrays Absorbance(const Opened& opened, int scan) {
    return ReadTwice(opened.Get(), [&](double* x, double* y, std::size_t room, std::size_t* count) {
      return zrml_read_absorbance(opened.Get(), 0, scan, x, y, room, count, nullptr);
    });
  }

  Doubles Ranges(const Opened& opened, int function, std::size_t scans, const std::vector<zrml_range>& ranges,
                 zrml_within within) {
    Doubles values(scans * ranges.size(), -1);
    EXPECT_EQ(zrml_read_mass_ranges(opened.Get(), 0, function, ranges.data(), ranges.size(), within,
                                    values.data(), values.size()),
              ZRML_OK)
        << zrml_message(opened.Get());
    return values;
  }

  std::string Report() {
    folder_.WriteText("vials.rpt", ReportText(Vials()));
    return PathOf(folder_, "vials.rpt");
  }

  TempDirectory raw_ = SmallAcquisition().Build();
  TempDirectory folder_{"reports"};
};

TEST_F(LibraryArrays, ChromatogramsOfARawDirectory) {
  const Opened raw(raw_);
  EXPECT_EQ(Read(zrml_read_minutes, raw, 0, 3), (Doubles{0.5, 1, 1.5}));
  EXPECT_EQ(Read(zrml_read_total_ions, raw, 0, 3), (Doubles{1'000'013, 5, 0}));
  EXPECT_EQ(Read(zrml_read_base_peaks, raw, 0, 3), (Doubles{1'000'000, 5, 0}));
  EXPECT_EQ(Read(zrml_read_minutes, raw, 2, 0), Doubles());
}

TEST_F(LibraryArrays, ChromatogramsOfAReport) {
  const Opened report(Report());
  EXPECT_EQ(Read(zrml_read_minutes, report, 0, 3), (Doubles{0.5, 1.5, 2.5}));
  EXPECT_EQ(Read(zrml_read_total_ions, report, 0, 3), (Doubles{7, 7, 7}));
  EXPECT_EQ(Read(zrml_read_base_peaks, report, 0, 3), (Doubles{200, 200, 200}));
}

// Both ends of a range belong to it. One range alone is read in another way than many.
TEST_F(LibraryArrays, MassRanges) {
  const Opened raw(raw_);
  const std::vector<zrml_range> ranges = {{100, 200.5}, {100.25, 100.25}, {0, 1000}, {500, 400}, {201, 300}};
  EXPECT_EQ(Ranges(raw, 0, 3, ranges, ZRML_SUM),
            (Doubles{13, 5, 0, 0, 5, 0, 1'000'013, 5, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Ranges(raw, 0, 3, ranges, ZRML_LARGEST),
            (Doubles{10, 5, 0, 0, 5, 0, 1'000'000, 5, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Ranges(raw, 0, 3, {{100, 200.5}}, ZRML_SUM), (Doubles{13, 5, 0}));
  EXPECT_EQ(Ranges(raw, 0, 3, {}, ZRML_SUM), Doubles());
  const Opened report(Report());
  EXPECT_EQ(Ranges(report, 0, 3, {{100, 200}, {300, 300}}, ZRML_SUM), (Doubles{200, 50, 0, 100, 0, 0}));
}

TEST_F(LibraryArrays, MassRangesOfLostPointsAreNaN) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Truncate("_FUNC001.DAT", 18);
  const Opened raw(directory);
  const Doubles two = Ranges(raw, 0, 3, {{100, 100}, {200, 200}}, ZRML_SUM);
  EXPECT_EQ((Doubles{two[0], two[1], two[3], two[4]}), (Doubles{7, 7, 9, 0}));
  EXPECT_TRUE(std::isnan(two[2]));
  EXPECT_TRUE(std::isnan(two[5]));
  EXPECT_TRUE(std::isnan(Ranges(raw, 0, 3, {{100, 100}}, ZRML_SUM)[2]));
}

TEST_F(LibraryArrays, SumsOfPeaks) {
  RawDirectoryBuilder acquisition = SoundDirectory();
  for (ScanFiles& scan : acquisition.functions[0].scans) scan.index.centroidState = CentroidState::kCentroid;
  const TempDirectory directory = acquisition.Build();
  const Opened raw(directory);
  EXPECT_EQ(Sum(raw, 0, 0, 3), (Arrays{{100, 200}, {21, 27}}));
  EXPECT_EQ(Sum(raw, 0, 1, 3), (Arrays{{100, 200}, {14, 18}}));
  EXPECT_EQ(Sum(raw, 0, 2, 3), (Arrays{{100, 200}, {7, 9}}));
  const Opened report(Report());
  EXPECT_EQ(Sum(report, 0, 0, 3), (Arrays{{100, 200, 300}, {200, 50, 100}}));
}

// A profile of fewer than three points is not added.
TEST_F(LibraryArrays, SumsOfProfiles) {
  const Opened raw(raw_);
  EXPECT_EQ(Sum(raw, 0, 0, 3), (Arrays{{100, 200.5, 300.0625}, {10, 3, 1'000'000}}));
}

TEST_F(LibraryArrays, WidthOfASumJoinsPeaks) {
  RawDirectoryBuilder acquisition;
  acquisition.functions.resize(1);
  acquisition.functions[0].scans = {ScanFrom<StoredPoint9>(0.5F, {{100, 7}}),
                                    ScanFrom<StoredPoint9>(1, {{100.25, 2}})};
  for (ScanFiles& scan : acquisition.functions[0].scans) scan.index.centroidState = CentroidState::kCentroid;
  const TempDirectory directory = acquisition.Build();
  const Opened raw(directory);
  EXPECT_EQ(Sum(raw, 0, 0, 2).x, (Doubles{100, 100.25}));
  EXPECT_EQ(Sum(raw, 0, 0, 2, 1).y, (Doubles{9}));
  EXPECT_EQ(Sum(raw, 0, 0, 2, 0.25).y.size(), 2u) << "half of it on either side";
  EXPECT_EQ(Sum(raw, 0, 0, 2, 1, 1).y.size(), 2u) << "one part per million";
  EXPECT_EQ(Sum(raw, 0, 0, 2, 10'000, 1).y, (Doubles{9})) << "one part in a hundred";
}

// Three scans at the same grid, one without points, peaks, and all points of the last one lost.
RawDirectoryBuilder ScansOfManyKinds() {
  RawDirectoryBuilder acquisition;
  acquisition.functions.resize(1);
  acquisition.functions[0].scans = {ScanFrom<StoredPoint9>(1, {{100, 10}, {100.25, 20}, {100.5, 10}}),
                                    ScanFrom<StoredPoint9>(2, {{100, 2}, {100.25, 4}, {100.5, 3}}),
                                    ScanFrom<StoredPoint9>(3, {}),
                                    ScanFrom<StoredPoint9>(4, {{100, 2}, {100.25, 2}, {100.5, 2}}),
                                    ScanFrom<StoredPoint9>(5, {{100.25, 7}}),
                                    ScanFrom<StoredPoint9>(6, {{100, 9}, {100.25, 9}, {100.5, 9}})};
  acquisition.functions[0].scans[4].index.centroidState = CentroidState::kCentroid;
  return acquisition;
}

TEST_F(LibraryArrays, SumsOfChosenScans) {
  const TempDirectory directory = ScansOfManyKinds().Build();
  const std::uint32_t kBytesOfScan = 3 * 6;
  directory.Truncate("_FUNC001.DAT", 3 * kBytesOfScan + 6);
  const Opened raw(directory);
  const Doubles grid = {100, 100.25, 100.5};
  const Summed all = SumOfScans(raw, 0, {0, 1, 2, 3, 4, 5});
  EXPECT_EQ(all.points, (Arrays{grid, {14, 26, 15}}));
  EXPECT_EQ(all.record.added, 4);
  EXPECT_EQ(all.record.left_out, 2);
  EXPECT_EQ(all.record.lost, 3u);
  EXPECT_EQ(all.record.is_centroided, 0);
  EXPECT_EQ(SumOfScans(raw, 0, {3, 1, 3}).points.y, (Doubles{4, 6, 5})) << "each once";
  EXPECT_EQ(SumOfScans(raw, 0, {4}).record.is_centroided, 1);
  EXPECT_EQ(Sum(raw, 0, 0, 6), all.points);
}

TEST_F(LibraryArrays, MeansLessABackground) {
  const TempDirectory directory = ScansOfManyKinds().Build();
  const Opened raw(directory);
  zrml_sum_options mean = {};
  mean.is_mean = 1;
  EXPECT_EQ(SumOfScans(raw, 0, {0, 1, 2}, mean).points.y, (Doubles{4, 8, 13 / 3.0}));
  EXPECT_EQ(SumOfScans(raw, 0, {0, 1}, {}, {3}).points.y, (Doubles{12 - 2 * 2, 24 - 2 * 2, 13 - 2 * 2}));
  EXPECT_EQ(SumOfScans(raw, 0, {3}, {}, {0}).points.y, (Doubles{2 - 10, 2 - 20, 2 - 10}));
  const Summed less = SumOfScans(raw, 0, {0, 1}, mean, {2, 3, 4});
  EXPECT_EQ(less.points.y, (Doubles{6 - 1, 12 - 1, 6.5 - 1})) << "one of the two measured nothing";
  EXPECT_EQ(less.record.added, 2);
  EXPECT_EQ(less.record.background_added, 2);
  EXPECT_EQ(less.record.background_left_out, 1);
}

TEST_F(LibraryArrays, BackgroundsThatCannotBeTakenOff) {
  const TempDirectory directory = ScansOfManyKinds().Build();
  directory.Truncate("_FUNC001.DAT", 3 * 3 * 6 + 6);
  const Opened raw(directory);
  std::size_t count = 0;
  const auto sum = [&](int background) {
    const int scan = 0;
    zrml_sum_options options = {};
    options.size = sizeof options;
    options.background = &background;
    options.background_count = 1;
    return zrml_read_sum_of_scans(raw.Get(), 0, 0, &scan, 1, &options, nullptr, nullptr, 0, &count, nullptr);
  };
  EXPECT_EQ(sum(3), ZRML_OK);
  EXPECT_EQ(sum(4), ZRML_WRONG_ARGUMENT) << "peaks";
  EXPECT_EQ(sum(5), ZRML_WRONG_ARGUMENT) << "lost";
  EXPECT_EQ(sum(6), ZRML_WRONG_ARGUMENT) << "not there";
}

// What was read without room is taken for the same scans, options and background only.
TEST_F(LibraryArrays, SumThatIsKeptIsForTheSameCall) {
  const TempDirectory directory = ScansOfManyKinds().Build();
  const Opened raw(directory);
  const std::vector<int> scans = {0, 1, 3};
  Doubles x(3);
  Doubles y(3);
  std::size_t count = 0;
  const auto read = [&](std::size_t first, int isMean, std::size_t backgrounds, std::size_t room) {
    zrml_sum_options options = {};
    options.size = sizeof options;
    options.is_mean = isMean;
    options.background = scans.data();
    options.background_count = backgrounds;
    return zrml_read_sum_of_scans(raw.Get(), 0, 0, &scans[first], 1, &options, x.data(), y.data(), room,
                                  &count, nullptr);
  };
  const auto readAfterFirst = [&](std::size_t first, int isMean, std::size_t backgrounds) {
    EXPECT_EQ(read(0, 0, 0, 0), ZRML_OK);
    EXPECT_EQ(read(first, isMean, backgrounds, 3), ZRML_OK);
    return y;
  };
  EXPECT_EQ(readAfterFirst(0, 0, 0), (Doubles{10, 20, 10}));
  EXPECT_EQ(readAfterFirst(1, 0, 0), (Doubles{2, 4, 3}));
  EXPECT_EQ(readAfterFirst(0, 0, 1), (Doubles{0, 0, 0}));
  EXPECT_EQ(readAfterFirst(0, 1, 2), (Doubles{10 - 6, 20 - 12, 10 - 6.5}));
}

TEST_F(LibraryArrays, SumsThatMeanNothing) {
  const Opened raw(raw_);
  std::size_t count = 0;
  const auto sum = [&](int first, int end, double width = 0) {
    return zrml_read_sum(raw.Get(), 0, 0, first, end, width, 0, nullptr, nullptr, 0, &count);
  };
  EXPECT_EQ(sum(0, 1), ZRML_OK);
  EXPECT_EQ(sum(0, 4), ZRML_WRONG_ARGUMENT);
  EXPECT_NE(std::string(zrml_message(raw.Get())).find("scan 4"), std::string::npos);
  EXPECT_EQ(sum(1, INT_MIN), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(sum(1, 1), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(sum(2, 1), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(sum(-1, 1), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(sum(3, 4), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(sum(0, 1, -1), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(sum(0, 1, std::numeric_limits<double>::quiet_NaN()), ZRML_WRONG_ARGUMENT);
}

TEST_F(LibraryArrays, Traces) {
  const Opened raw(raw_);
  EXPECT_EQ(Trace(raw, ZRML_OF_SAMPLE, 0), (Arrays{{0.5, 1}, {5, 2}}));
  EXPECT_EQ(Trace(raw, ZRML_OF_SAMPLE, 1), (Arrays{{0.5, 1}, {6, 0}}));
  EXPECT_EQ(Trace(raw, ZRML_OF_SAMPLE, 2), (Arrays{{0.125, 0.25}, {3, 4}}));
  const Opened report(Report());
  EXPECT_EQ(Trace(report, ZRML_OF_SAMPLE, 1), (Arrays{{1, 2}, {50, 0}}));
  EXPECT_EQ(Trace(report, 1, 0), (Arrays{{1, 2}, {50, 0}}));
  EXPECT_EQ(Trace(report, 0, 1), Arrays()) << "without points";
}

TEST_F(LibraryArrays, AbsorbanceOneByOne) {
  const Opened raw(raw_);
  Doubles minutes(2);
  ASSERT_EQ(zrml_read_absorbance_minutes(raw.Get(), 0, minutes.data(), 2), ZRML_OK);
  EXPECT_EQ(minutes, (Doubles{0.125, 0.25}));
  EXPECT_EQ(Absorbance(raw, 0), (Arrays{{210, 210.5}, {0, 3}}));
  EXPECT_EQ(Absorbance(raw, 1), (Arrays{{210}, {4}}));
}

TEST_F(LibraryArrays, AbsorbanceThatIsLost) {
  raw_.Truncate("_FUNC005.DAT", 6);
  const Opened raw(raw_);
  std::size_t count = 9;
  std::size_t lost = 9;
  Doubles x(2);
  Doubles y(2);
  ASSERT_EQ(zrml_read_absorbance(raw.Get(), 0, 0, x.data(), y.data(), 2, &count, &lost), ZRML_OK);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(lost, 1u);
  EXPECT_EQ(x[0], 210);
}

TEST_F(LibraryArrays, AbsorbanceAsAMatrix) {
  Doubles wavelengths(2);
  Doubles values(4, -1);
  int isMatrix = 9;
  const Opened uneven(raw_);
  ASSERT_EQ(zrml_read_absorbance_matrix(uneven.Get(), 0, 2, wavelengths.data(), values.data(), &isMatrix),
            ZRML_OK);
  EXPECT_EQ(isMatrix, 0) << "the second has one wavelength";
  RawDirectoryBuilder acquisition = SmallAcquisition();
  acquisition.functions[4].scans[1].data = acquisition.functions[4].scans[0].data;
  acquisition.functions[4].scans[1].index.pointCount = 2;
  const TempDirectory directory = acquisition.Build();
  const Opened even(directory);
  ASSERT_EQ(zrml_read_absorbance_matrix(even.Get(), 0, 2, wavelengths.data(), values.data(), &isMatrix),
            ZRML_OK);
  EXPECT_EQ(isMatrix, 1);
  EXPECT_EQ(wavelengths, (Doubles{210, 210.5}));
  EXPECT_EQ(values, (Doubles{0, 3, 0, 3}));
  ASSERT_EQ(zrml_read_absorbance_matrix(even.Get(), 0, 1, wavelengths.data(), values.data(), &isMatrix),
            ZRML_OK);
  EXPECT_EQ(isMatrix, 0) << "of one wavelength it is none";
  acquisition.functions[4].scans[1].data =
      EncodePoints(NearestPoints<StoredPoint9>({{210, 1}, {211, 2}}));  // 211 in place of 210.5
  const TempDirectory shifted = acquisition.Build();
  const Opened other(shifted);
  ASSERT_EQ(zrml_read_absorbance_matrix(other.Get(), 0, 2, wavelengths.data(), values.data(), &isMatrix),
            ZRML_OK);
  EXPECT_EQ(isMatrix, 0) << "as many, but another one";
}

TEST_F(LibraryArrays, RoomForArraysOfUnknownLength) {
  const Opened raw(raw_);
  Doubles x(3, -1);
  Doubles y(3, -1);
  std::size_t count = 9;
  const auto read = [&](std::size_t room) {
    return zrml_read_trace(raw.Get(), 0, ZRML_OF_SAMPLE, 0, x.data(), y.data(), room, &count);
  };
  EXPECT_EQ(read(1), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(count, 2u) << "which is set all the same";
  EXPECT_EQ(x, (Doubles{-1, -1, -1}));
  EXPECT_EQ(read(3), ZRML_OK);
  EXPECT_EQ(x, (Doubles{0.5, 1, -1}));
  EXPECT_EQ(y, (Doubles{5, 2, -1}));
  EXPECT_EQ(zrml_read_trace(raw.Get(), 0, ZRML_OF_SAMPLE, 0, x.data(), nullptr, 2, &count),
            ZRML_WRONG_ARGUMENT);
}

// What was read without room is not taken for another trace.
TEST_F(LibraryArrays, WhatIsKeptIsForTheSameCall) {
  const Opened raw(raw_);
  Doubles x(2);
  Doubles y(2);
  std::size_t count = 0;
  ASSERT_EQ(zrml_read_trace(raw.Get(), 0, ZRML_OF_SAMPLE, 0, nullptr, nullptr, 0, &count), ZRML_OK);
  ASSERT_EQ(zrml_read_trace(raw.Get(), 0, ZRML_OF_SAMPLE, 1, x.data(), y.data(), 2, &count), ZRML_OK);
  EXPECT_EQ(y, (Doubles{6, 0}));
  ASSERT_EQ(zrml_read_trace(raw.Get(), 0, ZRML_OF_SAMPLE, 0, nullptr, nullptr, 0, &count), ZRML_OK);
  ASSERT_EQ(zrml_read_absorbance(raw.Get(), 0, 0, x.data(), y.data(), 2, &count, nullptr), ZRML_OK);
  EXPECT_EQ(x, (Doubles{210, 210.5}));
}

// The stand-in for the mobility library has four bins; the second scan's second one has points at raw masses
// 100.5, 101 and 102. Continuum data have a zero on each side of them.
TEST_F(LibraryArrays, DriftBins) {
  raw_.WriteText("_FUNC001.CDT", "");
  const Opened raw(raw_);
  int count = 0;
  ASSERT_EQ(zrml_drift_bin_count(raw.Get(), 0, 0, &count), ZRML_OK);
  EXPECT_EQ(count, 4);
  EXPECT_EQ((Get<zrml_function>(zrml_get_function, raw.Get(), 0, 0).has_mobility), 1);
  ASSERT_EQ(zrml_drift_bin_count(raw.Get(), 0, 1, &count), ZRML_OK);
  EXPECT_EQ(count, 0);
  const auto bin = [&](int scan, int position) {
    return ReadTwice(raw.Get(), [&](double* x, double* y, std::size_t room, std::size_t* points) {
      return zrml_read_drift_bin(raw.Get(), 0, 0, scan, position, x, y, room, points);
    });
  };
  EXPECT_EQ(bin(1, 1), (Arrays{{100, 100.5, 101, 101.5, 102, 102.5}, {0, 21, 21.125, 0, 21.25, 0}}));
  std::size_t points = 0;
  const auto status = [&](int position) {
    return zrml_read_drift_bin(raw.Get(), 0, 0, 1, position, nullptr, nullptr, 0, &points);
  };
  EXPECT_EQ(status(-1), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(status(4), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(status(3), ZRML_OK);
}

struct Steps {
  std::vector<std::size_t> done;
  std::size_t all = 0;
  std::size_t last = 1000;  // the step that ends the work
};

int Note(void* context, std::size_t done, std::size_t all) {
  auto& steps = *static_cast<Steps*>(context);
  steps.done.push_back(done);
  steps.all = all;
  return done >= steps.last ? 1 : 0;
}

TEST_F(LibraryArrays, LongWorkTellsItsProgressAndEndsEarly) {
  RawDirectoryBuilder acquisition;
  acquisition.functions.resize(1);
  for (int i = 0; i < 150; ++i)
    acquisition.functions[0].scans.push_back(ScanFrom<StoredPoint9>(static_cast<float>(i), {{100, 1}}));
  const TempDirectory directory = acquisition.Build();
  const Opened raw(directory);
  Doubles values(2 * 150);
  const zrml_range ranges[] = {{0, 200}, {200, 300}};
  zrml_scan_table table = {};
  table.size = sizeof table;
  table.base_peak_mz = values.data();
  table.reads_points = 1;
  std::vector<int> scans(150);
  std::iota(scans.begin(), scans.end(), 0);
  zrml_sum_options options = {};
  options.size = sizeof options;
  options.background = &scans[100];
  options.background_count = 50;
  std::size_t count = 0;
  const std::vector<std::function<zrml_status()>> works = {
      [&] { return zrml_read_base_peaks(raw.Get(), 0, 0, values.data(), 150); },
      [&] { return zrml_read_mass_ranges(raw.Get(), 0, 0, ranges, 2, ZRML_SUM, values.data(), 300); },
      [&] { return zrml_read_sum(raw.Get(), 0, 0, 0, 150, 0, 0, nullptr, nullptr, 0, &count); },
      [&] { return zrml_read_scan_table(raw.Get(), 0, 0, 0, 150, &table); },
      [&] {
        return zrml_read_sum_of_scans(raw.Get(), 0, 0, scans.data(), 100, &options, nullptr, nullptr, 0,
                                      &count, nullptr);
      },
  };
  for (std::size_t i = 0; i < works.size(); ++i) {
    SCOPED_TRACE(i);
    Steps early;
    early.last = 64;
    ASSERT_EQ(zrml_set_progress(raw.Get(), Note, &early), ZRML_OK);
    EXPECT_EQ(works[i](), ZRML_CANCELLED);
    EXPECT_STREQ(zrml_message(raw.Get()), "cancelled");
    EXPECT_EQ(early.done, (std::vector<std::size_t>{0, 64}));
    Steps whole;
    ASSERT_EQ(zrml_set_progress(raw.Get(), Note, &whole), ZRML_OK);
    EXPECT_EQ(works[i](), ZRML_OK);
    EXPECT_EQ(whole.done, (std::vector<std::size_t>{0, 64, 128}));
    EXPECT_EQ(whole.all, 150u);
    ASSERT_EQ(zrml_set_progress(raw.Get(), nullptr, nullptr), ZRML_OK);
    EXPECT_EQ(works[i](), ZRML_OK);
    EXPECT_EQ(whole.done.size(), 3u);
  }
}

struct Found {
  zrml_status status = ZRML_OK;
  Arrays peaks;
};

Found FindPeaks(const Doubles& mz, const Doubles& intensities, const zrml_centroid_options* options,
                std::size_t room) {
  Found found;
  found.peaks = {Doubles(room), Doubles(room)};
  std::size_t count = 99;
  found.status = zrml_find_centroids(mz.data(), intensities.data(), mz.size(), options, found.peaks.x.data(),
                                     found.peaks.y.data(), room, &count);
  if (found.status == ZRML_OK) {
    found.peaks.x.resize(count);
    found.peaks.y.resize(count);
  }
  return found;
}

// The valley of 4 goes down and up in one sample: an ion adds (8 - 4)^2 / (8 + 4), and its noise hides the
// valley. The area is 2 + 8 + 4 + 8 + 2. docs/centroids.md has the other one by hand.
TEST(LibraryCentroids, AreFoundWithoutASource) {
  const Doubles mz = {100, 100.01, 100.02, 100.03, 100.04, 100.05, 100.06};
  zrml_centroid_options options = {};
  options.size = sizeof options;
  options.is_area = 1;
  const Found one = FindPeaks(mz, {0, 2, 8, 4, 8, 2, 0}, &options, 7);
  ASSERT_EQ(one.status, ZRML_OK);
  EXPECT_EQ(one.peaks.y, (Doubles{24}));
  const Found heights = FindPeaks({100, 100.01, 100.02, 100.03, 100.04}, {0, 4, 16, 8, 0}, nullptr, 5);
  ASSERT_EQ(heights.peaks.x.size(), 1U);
  EXPECT_NEAR(heights.peaks.x[0], 100.021667, 1e-6);
  EXPECT_NEAR(heights.peaks.y[0], 16.469, 1e-3);
  EXPECT_EQ(FindPeaks({}, {}, nullptr, 0).status, ZRML_OK);
}

TEST(LibraryCentroids, WrongArgumentsAreRefused) {
  const Doubles mz = {100, 100.01, 100.02};
  const Doubles intensities = {1, 2, 1};
  EXPECT_EQ(FindPeaks(mz, intensities, nullptr, 0).status, ZRML_WRONG_ARGUMENT);  // no room
  EXPECT_EQ(FindPeaks(mz, intensities, nullptr, 1).status, ZRML_OK);
  zrml_centroid_options options = {};
  EXPECT_EQ(FindPeaks(mz, intensities, &options, 3).status, ZRML_WRONG_ARGUMENT);  // no size
  options.size = sizeof options;
  for (const double wrong : {-1.0, std::nan("")}) {
    options.min_signal_to_noise = wrong;
    EXPECT_EQ(FindPeaks(mz, intensities, &options, 3).status, ZRML_WRONG_ARGUMENT);
  }
  double x[3];
  double y[3];
  std::size_t count = 0;
  const auto find = [&](const double* from, double* to, std::size_t* number) {
    return zrml_find_centroids(from, intensities.data(), 3, nullptr, to, y, 3, number);
  };
  EXPECT_EQ(find(mz.data(), x, &count), ZRML_OK);
  EXPECT_EQ(find(nullptr, x, &count), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(find(mz.data(), nullptr, &count), ZRML_WRONG_ARGUMENT);
  EXPECT_EQ(find(mz.data(), x, nullptr), ZRML_WRONG_ARGUMENT);
}

}  // namespace
}  // namespace zrml::test
