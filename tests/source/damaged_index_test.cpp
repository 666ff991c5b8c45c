// Indexes with records of zeros and with times that are lost: what is found, and that what is left keeps its
// own values.
#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "source/points_look.h"
#include "source/source.h"
#include "tests/support/raw_directory_builder.h"

namespace zrml::source {
namespace {

using Lines = std::vector<std::string>;

constexpr std::size_t kRecord = 22;
constexpr std::size_t kTime = 12;  // in a record
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

// Products: scan k of four, from 1, is at k minutes and has a precursor of m/z 500 + k and points of m/z 100
// + k and 200 + k.
RawDirectoryBuilder Products() {
  RawDirectoryBuilder raw;
  FunctionFiles& function = raw.functions.emplace_back();
  function.record.type = 16;  // TOF MS/MS
  function.statistics = StatisticsLayout();
  for (int k = 1; k <= 4; ++k) {
    function.scans.push_back(
        ScanFrom<StoredPoint9>(static_cast<float>(k), {{100.0 + k, 8}, {200.0 + k, 16}}));
    function.scans.back().statistics = {.precursorMass = 500.0F + static_cast<float>(k), .precursorFlags = 1};
  }
  return raw;
}

// With so many points in the first two scans, of 6 bytes each.
RawDirectoryBuilder ProductsWith(std::size_t first, std::size_t second) {
  RawDirectoryBuilder raw = Products();
  for (const auto& [scan, points] : {std::pair<std::size_t, std::size_t>(0, first), {1, second}}) {
    ScanFiles& files = raw.functions[0].scans[scan];
    const ScanStatisticsRecord statistics = files.statistics;
    files = ScanFrom<StoredPoint9>(static_cast<float>(scan + 1), std::vector<WantedPoint>(points, {100, 8}));
    files.statistics = statistics;
  }
  return raw;
}

// Each scan as "minutes precursor: m/z".
Lines ScansOf(Source& source) {
  Lines lines;
  for (int i = 0; i < source.ScanCount(0, 0); ++i) {
    const Scan scan = source.ScanAt(0, 0, i);
    std::vector<double> mz;
    std::vector<double> intensities;
    source.ReadPoints(0, 0, i, mz, intensities);
    std::string line = std::isnan(scan.minutes) ? "?" : std::to_string(static_cast<int>(scan.minutes));
    line += ' ' + std::to_string(static_cast<int>(scan.precursorMz.value_or(0))) + ':';
    for (const double each : mz) line += ' ' + std::to_string(static_cast<int>(each));
    lines.push_back(line);
  }
  return lines;
}

Lines FindingsOf(Source& source) {
  Lines lines;
  for (const Finding& finding : source.Findings())
    lines.push_back(std::string(NameOf(finding.code)) + ": " + TextOf(finding));
  return lines;
}

// What is read of a directory after an edit of its index.
struct Seen {
  Lines scans;
  Lines findings;
  std::vector<double> totals;
};

Seen See(const RawDirectoryBuilder& raw, const std::function<void(FileBytes& index)>& edit = {}) {
  const TempDirectory directory = raw.Build();
  if (edit) directory.Edit("_FUNC001.IDX", edit);
  const std::u8string path = directory.Path().u8string();
  const auto source = Source::Open({path.begin(), path.end()});
  return {ScansOf(*source), FindingsOf(*source), source->TotalIons(0, 0).intensities};
}

Seen SeeTime(std::size_t scan, float time) {
  return See(Products(), [&](FileBytes& index) { PatchF32(index, (scan - 1) * kRecord + kTime, time); });
}

Seen SeeZeros(std::size_t from, std::size_t size) {
  return See(Products(), [&](FileBytes& index) {
    std::fill_n(index.begin() + static_cast<std::ptrdiff_t>(from), size, std::byte{0});
  });
}

const Lines kAll = {"1 501: 101 201", "2 502: 102 202", "3 503: 103 203", "4 504: 104 204"};

TEST(DamagedIndexTest, SoundOnesAreSilent) {
  const Seen seen = See(Products());
  EXPECT_EQ(seen.findings, Lines());
  EXPECT_EQ(seen.scans, kAll);
}

// A run may begin at 0, or a little earlier, and functions without times have zeros throughout.
TEST(DamagedIndexTest, TimesThatMayBe) {
  EXPECT_EQ(SeeTime(1, 0).findings, Lines());
  EXPECT_EQ(SeeTime(1, -0.5F).findings, Lines());
  RawDirectoryBuilder raw = Products();
  for (ScanFiles& scan : raw.functions[0].scans) scan.index.retentionTime = 0;
  EXPECT_EQ(See(raw).findings, Lines());
}

TEST(DamagedIndexTest, FirstRecordOfZerosMayBeAScan) {
  RawDirectoryBuilder raw = Products();
  raw.functions[0].scans[0].index = {};
  raw.functions[0].scans[0].data = {};
  EXPECT_EQ(See(raw).findings, Lines());
}

// The others keep their precursors, which statistics hold by the place in the order of time.
TEST(DamagedIndexTest, LostTimes) {
  const float infinite = std::numeric_limits<float>::infinity();
  for (const float time : {0.0F, kNan, infinite, -infinite, -3.0F, 1e-40F}) {
    const Seen seen = SeeTime(3, time);
    EXPECT_EQ(seen.findings,
              Lines{"times-lost: _FUNC001.IDX has lost the times of 1 of 4 scans; the first is scan 3"})
        << time;
    EXPECT_EQ(seen.scans, (Lines{kAll[0], kAll[1], "? 503: 103 203", kAll[3]})) << time;
  }
  for (const float time : {kNan, 1e-40F, -1e-40F}) {
    const Seen first = SeeTime(1, time);
    EXPECT_EQ(first.findings,
              Lines{"times-lost: _FUNC001.IDX has lost the times of 1 of 4 scans; the first is scan 1"});
    EXPECT_EQ(first.scans, (Lines{"? 501: 101 201", kAll[1], kAll[2], kAll[3]}));
  }
}

// The scan at 1.5 minutes is listed as the second one, but its record is the fourth.
TEST(DamagedIndexTest, TimesThatGoBackwards) {
  EXPECT_EQ(
      SeeTime(4, 1.5F).findings,
      Lines{"times-return: _FUNC001.IDX has times that go backwards at 1 of 4 scans; the first is record 4"});
  const TempDirectory directory = Products().Build();
  directory.Edit("_FUNC001.IDX", [](FileBytes& index) { PatchF32(index, 3 * kRecord + kTime, 1.5F); });
  const std::u8string path = directory.Path().u8string();
  const auto source = Source::Open({path.begin(), path.end()});
  const Finding& finding = source->Findings()[0];
  EXPECT_EQ(finding.first, 4U);
  EXPECT_TRUE(finding.scans.HasAny([](std::uint64_t number) { return number == 2; }));
}

TEST(DamagedIndexTest, RecordsOfZerosAtTheEnd) {
  const Seen seen = SeeZeros(2 * kRecord, 2 * kRecord);
  EXPECT_EQ(
      seen.findings,
      (Lines{
          "index-zeroed: _FUNC001.IDX has zeros in place of the records of 2 of 4 scans; the first is scan 3",
          "data-unreferenced: _FUNC001.DAT holds 24 bytes that no scan refers to"}));
  EXPECT_EQ(seen.scans, (Lines{kAll[0], kAll[1]}));
}

// Some bytes of the second time are left, which are no time.
TEST(DamagedIndexTest, ZerosFromInsideATime) {
  for (const std::size_t kept : {0, 1, 2, 3}) {
    const std::size_t from = kRecord + kTime + kept;
    const Seen seen = SeeZeros(from, 4 * kRecord - from);
    EXPECT_EQ(seen.scans, (Lines{kAll[0], "? 502: 102 202"})) << kept;
    ASSERT_EQ(seen.findings.size(), 3U) << kept;
    EXPECT_EQ(seen.findings[1],
              "times-lost: _FUNC001.IDX has lost the times of 1 of 4 scans; the first is scan 2");
  }
}

// It has no total either.
TEST(DamagedIndexTest, RecordOfZerosAmongOthers) {
  const Seen seen = SeeZeros(2 * kRecord, kRecord);
  EXPECT_EQ(
      seen.findings[0],
      "index-zeroed: _FUNC001.IDX has zeros in place of the records of 1 of 4 scans; the first is scan 3");
  EXPECT_EQ(seen.scans, (Lines{kAll[0], kAll[1], "? 503:", kAll[3]}));
  EXPECT_TRUE(std::isnan(seen.totals[2]));
  EXPECT_EQ(seen.totals[3], 24);
}

// Scans of 12 bytes. Where all offsets are left out, those behind the lost record cannot be counted.
TEST(DamagedIndexTest, LostRecordAmongOmittedOffsets) {
  const auto edit = [](FileBytes& index) {
    for (std::size_t scan = 0; scan < 4; ++scan) PatchU32(index, scan * kRecord, 0);
    std::fill_n(index.begin() + kRecord, kRecord, std::byte{0});
  };
  const Seen seen = See(Products(), edit);
  EXPECT_EQ(
      seen.findings,
      (Lines{
          "index-zeroed: _FUNC001.IDX has zeros in place of the records of 1 of 4 scans; the first is scan 2",
          "offsets-lost: _FUNC001.IDX has lost the offsets of 2 of 4 scans; the first is scan 3",
          "data-unreferenced: _FUNC001.DAT holds 36 bytes that no scan refers to"}));
  EXPECT_EQ(seen.scans, (Lines{kAll[0], "? 502:", "3 503:", "4 504:"}));
  const TempDirectory directory = Products().Build();
  directory.Edit("_FUNC001.IDX", edit);
  const std::u8string path = directory.Path().u8string();
  const auto source = Source::Open({path.begin(), path.end()});
  std::vector<double> mz;
  std::vector<double> intensities;
  EXPECT_EQ(source->ReadPoints(0, 0, 2, mz, intensities).lost, 2U);
  EXPECT_TRUE(LookAtPoints(*source).IsEmpty()) << "scans are named once";
}

// The fourth offset is omitted again, but follows from the third, which is 24.
TEST(DamagedIndexTest, OffsetBehindLostRecordEndsTheLoss) {
  const Seen seen = See(Products(), [](FileBytes& index) {
    std::fill_n(index.begin() + kRecord, kRecord, std::byte{0});
    PatchU32(index, 3 * kRecord, 0);
  });
  EXPECT_EQ(seen.scans, (Lines{kAll[0], "? 502:", kAll[2], kAll[3]}));
  EXPECT_EQ(seen.findings[1], "data-unreferenced: _FUNC001.DAT holds 12 bytes that no scan refers to");
}

// The zeros reach into the offset of the third record, which has its own; the fourth has, too.
TEST(DamagedIndexTest, ZerosUpToInsideAnOffset) {
  const Seen seen = SeeZeros(kRecord, kRecord + 4);
  EXPECT_EQ(seen.scans, (Lines{kAll[0], "? 502:", "3 503:", kAll[3]}));
  EXPECT_EQ(seen.findings[1],
            "offsets-lost: _FUNC001.IDX has lost the offsets of 1 of 4 scans; the first is scan 3");
}

// A run may begin with empty scans, of which the first is at 0 minutes.
TEST(DamagedIndexTest, EmptyScansAtTheFrontHaveATotal) {
  RawDirectoryBuilder raw = Products();
  for (const std::size_t scan : {0, 1}) {
    raw.functions[0].scans[scan].index = {.retentionTime = static_cast<float>(scan)};
    raw.functions[0].scans[scan].data = {};
  }
  const Seen seen = See(raw, [](FileBytes& index) { std::fill_n(index.begin(), kRecord, std::byte{0}); });
  EXPECT_EQ(seen.findings, Lines());
  EXPECT_EQ(seen.scans, (Lines{"0 501:", "1 502:", kAll[2], kAll[3]}));
  EXPECT_EQ(seen.totals[0], 0);
  EXPECT_EQ(seen.totals[1], 0);
}

// The offsets are 0, 240, 270 and 282. Zeros take the second record and the low byte of 270, and leave 256,
// where points of the second scan are; or of 264, and leave 256, where none begins.
TEST(DamagedIndexTest, ZerosUpToInsideAnOffsetLeaveALowerOne) {
  for (const std::size_t points : {5, 4}) {
    const RawDirectoryBuilder raw = ProductsWith(40, points);
    const std::vector<std::string> sound = See(raw).scans;
    const Seen seen =
        See(raw, [](FileBytes& index) { std::fill_n(index.begin() + kRecord, kRecord + 1, std::byte{0}); });
    ASSERT_EQ(seen.scans.size(), 4U);
    EXPECT_EQ(seen.scans[0], sound[0]);
    EXPECT_EQ(seen.scans[2], "3 503:");
    EXPECT_EQ(seen.scans[3], sound[3]);
    EXPECT_EQ(seen.findings[1],
              "offsets-lost: _FUNC001.IDX has lost the offsets of 1 of 4 scans; the first is scan 3");
  }
}

// Of the third time, 3 minutes or 0x40400000, zeros leave the highest byte, which is that of 2 minutes; the
// scan before the zeros is at 2.5.
TEST(DamagedIndexTest, ZerosUpToInsideATime) {
  RawDirectoryBuilder raw = Products();
  raw.functions[0].scans[0].index.retentionTime = 2.5F;
  raw.functions[0].scans[1].index.retentionTime = 2.75F;
  const Seen seen = See(
      raw, [](FileBytes& index) { std::fill_n(index.begin() + kRecord, kRecord + kTime + 3, std::byte{0}); });
  EXPECT_EQ(seen.scans, (Lines{"2 501: 101 201", "? 502:", "? 503:", kAll[3]}));
  EXPECT_EQ(
      seen.findings[0],
      "index-zeroed: _FUNC001.IDX has zeros in place of the records of 2 of 4 scans; the first is scan 2");
}

// Or they take its total, or two bytes of that, and leave its time.
TEST(DamagedIndexTest, ZerosUpToATime) {
  for (const std::size_t size : {kTime, kTime - 2}) {
    const Seen seen = SeeZeros(kRecord, kRecord + size);
    EXPECT_EQ(seen.scans, (Lines{kAll[0], "? 502:", "3 503:", kAll[3]}));
    EXPECT_TRUE(std::isnan(seen.totals[2]));
  }
}

// Zeros leave the low byte, 14, of the third offset, 270.
TEST(DamagedIndexTest, ZerosFromInsideAnOffset) {
  const RawDirectoryBuilder raw = ProductsWith(40, 5);
  const auto seeZerosFrom = [&](std::size_t first) {
    return See(raw, [=](FileBytes& index) {
      std::fill(index.begin() + static_cast<std::ptrdiff_t>(first), index.end(), std::byte{0});
    });
  };
  const Seen seen = seeZerosFrom(2 * kRecord + 1);
  EXPECT_EQ(seen.scans.size(), 2U);
  EXPECT_EQ(
      seen.findings[0],
      "index-zeroed: _FUNC001.IDX has zeros in place of the records of 2 of 4 scans; the first is scan 3");
  const Seen whole = seeZerosFrom(2 * kRecord);
  EXPECT_EQ(seen.scans, whole.scans);
  EXPECT_EQ(seen.findings, whole.findings);
}

// 16 whole records of 22 bytes and 8 bytes are 12 records of 30 bytes, too, which are in no order.
TEST(DamagedIndexTest, CutToAMultipleOfTheOtherSize) {
  RawDirectoryBuilder raw = Products();
  raw.functions[0].statistics.reset();
  raw.functions[0].scans.clear();
  for (int k = 1; k <= 20; ++k)
    raw.functions[0].scans.push_back(ScanFrom<StoredPoint9>(static_cast<float>(k), {{100.0 + k, 8}}));
  const Seen seen = See(raw, [](FileBytes& index) { index.resize(360); });
  EXPECT_EQ(seen.findings,
            Lines{"index-cut: _FUNC001.IDX does not end with a whole record, so the function has no scans"});
  EXPECT_EQ(seen.scans, Lines());
}

// No scan is left of them.
TEST(DamagedIndexTest, NothingButZeros) {
  const Seen seen = SeeZeros(0, 4 * kRecord);
  EXPECT_EQ(
      seen.findings,
      (Lines{
          "index-zeroed: _FUNC001.IDX has zeros in place of the records of 4 of 4 scans; the first is scan 1",
          "data-unreferenced: _FUNC001.DAT holds 48 bytes that no scan refers to"}));
  EXPECT_EQ(seen.scans, Lines());
}

void OmitOffsets(FileBytes& index) {
  for (std::size_t scan = 0; scan < 4; ++scan) PatchU32(index, scan * kRecord, 0);
}

Seen SeeZerosAmongOmittedOffsets(std::size_t from, std::size_t to, const RawDirectoryBuilder& raw) {
  return See(raw, [&](FileBytes& index) {
    OmitOffsets(index);
    std::fill(index.begin() + static_cast<std::ptrdiff_t>(from),
              index.begin() + static_cast<std::ptrdiff_t>(to), std::byte{0});
  });
}

TEST(DamagedIndexTest, OmittedOffsetsAreSound) {
  const Seen seen = SeeZerosAmongOmittedOffsets(0, 0, Products());
  EXPECT_EQ(seen.findings, Lines());
  EXPECT_EQ(seen.scans, kAll);
  RawDirectoryBuilder raw = Products();
  raw.functions[0].scans[0].index = {};
  raw.functions[0].scans[0].data = {};
  EXPECT_EQ(SeeZerosAmongOmittedOffsets(0, 0, raw).findings, Lines()) << "an empty scan at 0 minutes";
}

// The data are 48 bytes, and the other three scans have 36: the first one was no empty scan.
TEST(DamagedIndexTest, FirstRecordOfZerosAmongOmittedOffsets) {
  const Seen seen = SeeZerosAmongOmittedOffsets(0, kRecord, Products());
  EXPECT_EQ(
      seen.findings,
      (Lines{
          "index-zeroed: _FUNC001.IDX has zeros in place of the records of 1 of 4 scans; the first is scan 1",
          "offsets-lost: _FUNC001.IDX has lost the offsets of 3 of 4 scans; the first is scan 2",
          "data-unreferenced: _FUNC001.DAT holds 48 bytes that no scan refers to"}));
  EXPECT_EQ(seen.scans, (Lines{"? 501:", "2 502:", "3 503:", "4 504:"}));
  EXPECT_TRUE(std::isnan(seen.totals[0]));
  const Seen two = SeeZerosAmongOmittedOffsets(0, 2 * kRecord, Products());
  EXPECT_EQ(two.scans, (Lines{"? 501:", "? 502:", "3 503:", "4 504:"}));
}

// The second scan begins at 12.
TEST(DamagedIndexTest, FirstRecordOfZerosBeforeOffsets) {
  const Seen seen = SeeZeros(0, kRecord);
  EXPECT_EQ(
      seen.findings,
      (Lines{
          "index-zeroed: _FUNC001.IDX has zeros in place of the records of 1 of 4 scans; the first is scan 1",
          "data-unreferenced: _FUNC001.DAT holds 12 bytes that no scan refers to"}));
  EXPECT_EQ(seen.scans, (Lines{"? 501:", kAll[1], kAll[2], kAll[3]}));
}

// From the points of the second record to the offset of the third, which is then counted as 12; with its 12
// bytes that leaves 12 before the fourth, which has its own.
TEST(DamagedIndexTest, ZerosFromInsideARecordUpToAnOffset) {
  const Seen seen = SeeZeros(kRecord + 4, kRecord);
  EXPECT_EQ(seen.findings,
            (Lines{"offsets-lost: _FUNC001.IDX has lost the offsets of 1 of 4 scans; the first is scan 3",
                   "times-lost: _FUNC001.IDX has lost the times of 1 of 4 scans; the first is scan 2",
                   "data-unreferenced: _FUNC001.DAT holds 24 bytes that no scan refers to"}));
  EXPECT_EQ(seen.scans, (Lines{kAll[0], "? 502:", "3 503:", kAll[3]}));
}

// The fifth scan has its own offset. Of those before it the third cannot be counted, and is named once.
TEST(DamagedIndexTest, OffsetBetweenTwoLostRecordsIsLostOnce) {
  RawDirectoryBuilder raw = Products();
  raw.functions[0].scans.push_back(ScanFrom<StoredPoint9>(5, {{105, 8}, {205, 16}}));
  const Seen seen = See(raw, [](FileBytes& index) {
    PatchU32(index, 2 * kRecord, 0);
    for (const std::ptrdiff_t place : {1, 3})
      std::fill_n(index.begin() + place * static_cast<std::ptrdiff_t>(kRecord), kRecord, std::byte{0});
  });
  EXPECT_EQ(seen.findings[1],
            "offsets-lost: _FUNC001.IDX has lost the offsets of 1 of 5 scans; the first is scan 3");
}

// The second scan is empty. The bytes left over at the end are those of the fourth, whose record is gone.
TEST(DamagedIndexTest, LastRecordOfZerosSaysNothingAboutEmptyScans) {
  RawDirectoryBuilder raw = Products();
  raw.functions[0].scans[1].index.pointCount = 0;
  raw.functions[0].scans[1].index.totalIntensity = 0;
  raw.functions[0].scans[1].data = {};
  EXPECT_EQ(SeeZerosAmongOmittedOffsets(0, 0, raw).findings, Lines());
  const Seen seen = SeeZerosAmongOmittedOffsets(3 * kRecord, 4 * kRecord, raw);
  EXPECT_EQ(
      seen.findings,
      (Lines{
          "index-zeroed: _FUNC001.IDX has zeros in place of the records of 1 of 4 scans; the first is scan 4",
          "data-unreferenced: _FUNC001.DAT holds 12 bytes that no scan refers to"}));
  EXPECT_EQ(seen.scans, (Lines{kAll[0], "2 502:", kAll[2]}));
}

// The second record has a total of 24, but neither points nor a time: it is damaged, and where the third scan
// begins is not known, although the bytes left over at the end may all be of the fourth.
TEST(DamagedIndexTest, LastRecordOfZerosHidesNoDamagedRecord) {
  const Seen seen = See(Products(), [](FileBytes& index) {
    OmitOffsets(index);
    PatchU32(index, kRecord + 4, 0);
    PatchF32(index, kRecord + kTime, 0);
    std::fill_n(index.begin() + 3 * static_cast<std::ptrdiff_t>(kRecord), kRecord, std::byte{0});
  });
  EXPECT_EQ(
      seen.findings,
      (Lines{
          "index-zeroed: _FUNC001.IDX has zeros in place of the records of 1 of 4 scans; the first is scan 4",
          "offsets-lost: _FUNC001.IDX has lost the offsets of 1 of 4 scans; the first is scan 3",
          "times-lost: _FUNC001.IDX has lost the times of 1 of 4 scans; the first is scan 2",
          "data-unreferenced: _FUNC001.DAT holds 36 bytes that no scan refers to"}));
  EXPECT_EQ(seen.scans, (Lines{kAll[0], "? 502:", "3 503:"}));
}

// Whatever the number of records that are read at once.
TEST(DamagedIndexTest, LastRecordsOfZerosLeaveTheStatisticsToBeLookedAt) {
  for (const std::size_t sound : {4095U, 4096U, 4097U}) {
    RawDirectoryBuilder raw = Products();
    raw.functions[0].scans.resize(sound + 10, raw.functions[0].scans.back());
    raw.functions[0].scans[1].statistics = {};
    const Seen seen = See(raw, [&](FileBytes& index) {
      std::fill(index.begin() + static_cast<std::ptrdiff_t>(sound * kRecord), index.end(), std::byte{0});
    });
    const auto isAboutStatistics = [](const std::string& line) {
      return line.starts_with("statistics-zeroed");
    };
    EXPECT_EQ(std::count_if(seen.findings.begin(), seen.findings.end(), isAboutStatistics), 1) << sound;
  }
}

// The third record keeps its total and its time, but not its number of points.
TEST(DamagedIndexTest, ZerosInPlaceOfANumberOfPoints) {
  const Seen seen = SeeZerosAmongOmittedOffsets(kRecord + 16, 2 * kRecord + 8, Products());
  EXPECT_EQ(seen.findings,
            (Lines{"offsets-lost: _FUNC001.IDX has lost the offsets of 1 of 4 scans; the first is scan 4",
                   "data-unreferenced: _FUNC001.DAT holds 24 bytes that no scan refers to"}));
  EXPECT_EQ(seen.scans, (Lines{kAll[0], kAll[1], "3 503:", "4 504:"}));
}

// And its time alone: an empty scan, were there no bytes left over.
TEST(DamagedIndexTest, ZerosInPlaceOfANumberOfPointsAndATotal) {
  const Seen seen = SeeZerosAmongOmittedOffsets(2 * kRecord + 4, 2 * kRecord + 12, Products());
  EXPECT_EQ(seen.findings,
            (Lines{"offsets-lost: _FUNC001.IDX has lost the offsets of 1 of 4 scans; the first is scan 4",
                   "data-unreferenced: _FUNC001.DAT holds 24 bytes that no scan refers to"}));
  EXPECT_EQ(seen.scans, (Lines{kAll[0], kAll[1], "3 503:", "4 504:"}));
}

// Its points are where those of the third would be.
TEST(DamagedIndexTest, EmptyScanAmongOmittedOffsets) {
  RawDirectoryBuilder raw = Products();
  raw.functions[0].scans[1].index = {.retentionTime = 2};
  raw.functions[0].scans[1].data = {};
  const Seen seen = SeeZerosAmongOmittedOffsets(0, 0, raw);
  EXPECT_EQ(seen.findings, Lines());
  EXPECT_EQ(seen.scans, (Lines{kAll[0], "2 502:", kAll[2], kAll[3]}));
}

// A time alone takes no points: the scans fill the data.
TEST(DamagedIndexTest, LostTimeAmongOmittedOffsets) {
  const Seen seen = SeeZerosAmongOmittedOffsets(kRecord + kTime, kRecord + kTime + 4, Products());
  EXPECT_EQ(seen.findings,
            Lines{"times-lost: _FUNC001.IDX has lost the times of 1 of 4 scans; the first is scan 2"});
  EXPECT_EQ(seen.scans, (Lines{kAll[0], "? 502: 102 202", kAll[2], kAll[3]}));
}

// An empty scan, and 5 bytes behind the last one, which are less than a point of 6: no scan has lost its
// points. With 6 bytes it may be the second one that has.
TEST(DamagedIndexTest, StrayBytesOfLessThanAPointAmongOmittedOffsets) {
  RawDirectoryBuilder raw = Products();
  raw.functions[0].scans[1].index = {.retentionTime = 2};
  raw.functions[0].scans[1].data = {};
  const auto seeStray = [&](std::size_t bytes) {
    const TempDirectory directory = raw.Build();
    directory.Edit("_FUNC001.IDX", OmitOffsets);
    directory.Edit("_FUNC001.DAT", [&](FileBytes& data) { data.resize(data.size() + bytes, std::byte{7}); });
    const std::u8string path = directory.Path().u8string();
    return ScansOf(*Source::Open({path.begin(), path.end()}));
  };
  EXPECT_EQ(seeStray(5), (Lines{kAll[0], "2 502:", kAll[2], kAll[3]}));
  EXPECT_EQ(seeStray(6), (Lines{kAll[0], "2 502:", "3 503:", "4 504:"}));
}

// Of the first time, 1, the last byte is left at most, which is no time.
TEST(DamagedIndexTest, ZerosFromInsideTheFirstRecord) {
  for (const std::size_t from : {8, 12, 13, 14, 15}) {
    const Seen seen = SeeZeros(from, 4 * kRecord - from);
    EXPECT_EQ(
        seen.findings,
        (Lines{"index-zeroed: _FUNC001.IDX has zeros in place of the records of 3 of 4 scans; the first "
               "is scan 2",
               "times-lost: _FUNC001.IDX has lost the times of 1 of 4 scans; the first is scan 1",
               "data-unreferenced: _FUNC001.DAT holds 36 bytes that no scan refers to"}))
        << from;
    EXPECT_EQ(seen.scans, Lines{"? 501: 101 201"}) << from;
  }
}

// The zeros do not begin in the first record, so its time of 0 is as measured.
TEST(DamagedIndexTest, LastRecordsOfZerosBehindATimeOfZero) {
  const Seen seen = See(Products(), [](FileBytes& index) {
    PatchF32(index, kTime, 0);
    std::fill(index.begin() + 2 * static_cast<std::ptrdiff_t>(kRecord), index.end(), std::byte{0});
  });
  EXPECT_EQ(seen.scans, (Lines{"0 501: 101 201", kAll[1]}));
}

// The third scan is empty. The offset of such a scan refers to no bytes.
TEST(DamagedIndexTest, BytesBeforeAnEmptyScanAreOfNone) {
  RawDirectoryBuilder raw = Products();
  raw.functions[0].scans[2].index = {.retentionTime = 3};
  raw.functions[0].scans[2].data = {};
  EXPECT_EQ(See(raw).findings, Lines());
  const Seen seen =
      See(raw, [](FileBytes& index) { std::fill_n(index.begin() + kRecord + 4, 8, std::byte{0}); });
  EXPECT_EQ(seen.findings, Lines{"data-unreferenced: _FUNC001.DAT holds 12 bytes that no scan refers to"});
}

// The second time is zero, as the first one is, which a run may begin with.
TEST(DamagedIndexTest, ZerosFromInsideARecordBehindAScanAtZero) {
  const auto edit = [](FileBytes& index) {
    PatchF32(index, kTime, 0);
    std::fill(index.begin() + kRecord + kTime, index.end(), std::byte{0});
  };
  EXPECT_EQ(See(Products(), edit).scans, (Lines{"0 501: 101 201", "? 502: 102 202"}));
}

// Zeros do not tell that scans are of centroids; the other records do. The first record of zeros may be that
// of an empty scan, too.
TEST(DamagedIndexTest, RecordsOfZerosAreOfTheRepresentationOfOthers) {
  RawDirectoryBuilder raw = Products();
  for (ScanFiles& scan : raw.functions[0].scans) scan.index.centroidState = CentroidState::kCentroid;
  RawDirectoryBuilder empty = raw;
  empty.functions[0].scans[0] = {};
  const auto check = [](const RawDirectoryBuilder& builder, std::ptrdiff_t zeroed) {
    const TempDirectory directory = builder.Build();
    directory.Edit("_FUNC001.IDX", [&](FileBytes& index) {
      std::fill_n(index.begin() + zeroed * static_cast<std::ptrdiff_t>(kRecord), kRecord, std::byte{0});
    });
    const std::u8string path = directory.Path().u8string();
    const auto source = Source::Open({path.begin(), path.end()});
    ASSERT_EQ(source->ScanCount(0, 0), 4);
    for (int scan = 0; scan < 4; ++scan)
      EXPECT_EQ(IsCentroided(source->ScanAt(0, 0, scan)), true) << zeroed << ' ' << scan;
  };
  check(raw, 0);
  check(raw, 2);
  check(empty, 0);
}

}  // namespace
}  // namespace zrml::source
