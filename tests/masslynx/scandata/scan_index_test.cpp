#include "masslynx/scandata/scan_index.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/masslynx/scandata/scan_files.h"
#include "tests/support/scan_index_writer.h"
#include "tests/support/scan_statistics_writer.h"
#include "tests/support/temp_directory.h"

namespace zrml::masslynx {
namespace {

constexpr const char* kIndexName = "_FUNC001.idx";
constexpr const char* kStatisticsName = "_FUNC001.sts";
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

FunctionRecord FunctionOf(int dataFormat, std::uint16_t number = 1) {
  FunctionRecord function;
  function.number = number;
  function.typeCode = 0;
  function.dataFormat = dataFormat;
  return function;
}

/// The entries of the index of function 1 in `directory`.
std::vector<ScanIndexEntry> Load(const TempDirectory& directory, int dataFormat = 9) {
  FunctionRecord function = FunctionOf(dataFormat);
  LoadScanIndex(directory.SystemPath(), function, IndexView::kOfSlots);
  return function.scanIndex;
}

/// The same from an index file of the given bytes.
std::vector<ScanIndexEntry> LoadBytes(const FileBytes& bytes, int dataFormat = 9) {
  static const TempDirectory directory;
  WriteAnew(directory, kIndexName, bytes);
  return Load(directory, dataFormat);
}

std::vector<std::uint32_t> Offsets(const std::vector<ScanIndexEntry>& entries) {
  std::vector<std::uint32_t> offsets;
  for (const ScanIndexEntry& entry : entries) offsets.push_back(entry.dataOffset);
  return offsets;
}

/// Records 0, 1, ... at data offsets 0, 100, 200, ... with 7 points each, one minute apart.
std::vector<ScanIndexRecord> Ascending(std::size_t count) {
  std::vector<ScanIndexRecord> records(count);
  for (std::size_t i = 0; i < count; ++i) {
    records[i].dataOffset = static_cast<std::uint32_t>(100 * i);
    records[i].pointCount = 7;
    records[i].retentionTime = static_cast<float>(i);
  }
  return records;
}

// Records.

TEST(ScanIndex, WorkedRecord) {
  // Packed 0x58C00003: bits 30, 28 and 27, segment 3 (0x00C00000), 3 points. 1000 = 0x447A0000, 0.5 =
  // 0x3F000000.
  const std::string record = "00 10 00 00  03 00 C0 58  00 00 7A 44  00 00 00 3F  EE EE EE EE  EE EE";
  const std::string rest = "EE EE EE EE EE EE EE EE";
  for (const std::string& hex : {record, record + rest}) {
    const auto entries = LoadBytes(HexToBytes(hex));
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].dataOffset, 4096U);
    EXPECT_EQ(entries[0].pointCount, 3U);
    EXPECT_EQ(entries[0].segment, 3U);
    EXPECT_EQ(entries[0].totalIntensity, 1000.0F);
    EXPECT_EQ(entries[0].retentionTime, 0.5F);
    EXPECT_FALSE(entries[0].centroided);
    EXPECT_TRUE(entries[0].preCalibrated);
    EXPECT_EQ(entries[0].auxValue, 0.0F);
    EXPECT_EQ(entries[0].temperature, 0.0F);
    EXPECT_EQ(entries[0].temperatureCoefficient, 0.0F);
    EXPECT_EQ(entries[0].precursorMass, 0.0F);
    EXPECT_EQ(entries[0].precursorFlags, 0);
    EXPECT_FALSE(entries[0].temperatureValid);
  }
}

TEST(ScanIndex, EveryBitOfThePackedWord) {
  for (unsigned bit = 0; bit <= 31; ++bit) {
    SCOPED_TRACE(bit);
    const auto entries = LoadBytes(WriteScanIndex({{.packedWord = 1U << bit}}));
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].pointCount, bit <= 21 ? 1U << bit : 0);
    EXPECT_EQ(entries[0].segment, bit >= 22 && bit <= 26 ? 1U << (bit - 22) : 0);
    EXPECT_EQ(entries[0].centroided, bit == 27);  // explicit, and bit 28 is not set
    EXPECT_EQ(entries[0].preCalibrated, bit == 30);
  }
}

TEST(ScanIndex, FieldsOfThePackedWordAtTheirLimits) {
  const auto all = LoadBytes(WriteScanIndex({{.packedWord = 0xFFFFFFFF}}));
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].pointCount, 4194303U);
  EXPECT_EQ(all[0].segment, 31U);
  EXPECT_FALSE(all[0].centroided);
  EXPECT_TRUE(all[0].preCalibrated);
}

TEST(ScanIndex, CentroidStateIsExplicitOrByFormat) {
  constexpr std::uint32_t kExplicit = 1U << 27;
  constexpr std::uint32_t kProfileBit = 1U << 28;
  for (int dataFormat = -1; dataFormat <= 16; ++dataFormat) {
    SCOPED_TRACE(dataFormat);
    const auto centroided = [&](std::uint32_t packedWord) {
      const auto entries = LoadBytes(WriteScanIndex({{.packedWord = packedWord}}), dataFormat);
      return entries.size() == 1 && entries[0].centroided;
    };
    const bool byFormat = dataFormat == 0 || dataFormat == 1 || dataFormat == 2;
    EXPECT_EQ(centroided(0), byFormat);
    EXPECT_EQ(centroided(kProfileBit), byFormat);
    EXPECT_TRUE(centroided(kExplicit));
    EXPECT_FALSE(centroided(kExplicit | kProfileBit));
  }
}

TEST(ScanIndex, TotalIntensityAndTimeAreKeptToTheBit) {
  const auto entries =
      LoadBytes(WriteScanIndex({{.totalIntensity = -0x1.fffffep+127F, .retentionTime = 0x1p-149F},
                                {.totalIntensity = 0x1.234568p+9F, .retentionTime = 0x1.99999ap-4F}}));
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].totalIntensity, -0x1.fffffep+127F);
  EXPECT_EQ(entries[0].retentionTime, 0x1p-149F);
  EXPECT_EQ(entries[1].totalIntensity, 0x1.234568p+9F);
  EXPECT_EQ(entries[1].retentionTime, 0x1.99999ap-4F);
}

// Record sizes.

TEST(ScanIndex, AscendingOffsetsReadAs22ByteRecords) {
  const FileBytes bytes = WriteScanIndex(Ascending(20));
  ASSERT_EQ(bytes.size(), 440U);
  const auto entries = LoadBytes(bytes);
  ASSERT_EQ(entries.size(), 20U);
  EXPECT_EQ(entries[19].dataOffset, 1900U);
  EXPECT_EQ(entries[19].pointCount, 7U);
}

TEST(ScanIndex, DecreasingOffsetIn440BytesGivesNoScans) {
  FileBytes bytes = WriteScanIndex(Ascending(20));
  PatchU32(bytes, 5 * 22, 399);  // record 4 begins at 400; 440 is not a multiple of 30
  EXPECT_TRUE(LoadBytes(bytes).empty());
  PatchU32(bytes, 5 * 22, 400);  // equal offsets do not decrease
  EXPECT_EQ(LoadBytes(bytes).size(), 20U);
}

TEST(ScanIndex, DecreasingOffsetIn330BytesIsReadAgainAs30ByteRecords) {
  // Read as 22-byte records: the first at 0, the second at the unused 0xEEEEEEEE, the third, 14 bytes into
  // the second long record, at 0xEEEE and half a positive time.
  const FileBytes bytes = WriteScanIndex(Ascending(11), 30);
  ASSERT_EQ(bytes.size(), 330U);
  const auto entries = LoadBytes(bytes);
  ASSERT_EQ(entries.size(), 11U);
  EXPECT_EQ(entries[10].dataOffset, 1000U);
  EXPECT_EQ(entries[10].pointCount, 7U);
  EXPECT_EQ(entries[10].retentionTime, 10.0F);
  EXPECT_EQ(LoadBytes(WriteScanIndex(Ascending(15), 22)).size(), 15U);  // the control: the same size
}

TEST(ScanIndex, SizeThatOnly30DividesReadsAs30ByteRecords) {
  for (const std::size_t count : {1U, 2U, 3U, 10U, 12U}) {
    const auto entries = LoadBytes(WriteScanIndex(Ascending(count), 30));
    ASSERT_EQ(entries.size(), count);
    EXPECT_EQ(entries.back().dataOffset, 100 * (count - 1));
  }
}

TEST(ScanIndex, OtherRecordSizesGiveNoScans) {
  for (const std::size_t size : {16U, 21U, 23U, 29U, 31U}) {
    EXPECT_TRUE(LoadBytes(WriteScanIndex(Ascending(1), size)).empty()) << size;
  }
}

TEST(ScanIndex, EmptyFileGivesNoScans) { EXPECT_TRUE(LoadBytes({}).empty()); }

TEST(ScanIndex, ShortRecordsCutAtEveryLength) {
  const FileBytes whole = WriteScanIndex(Ascending(5));
  EXPECT_EQ(LoadBytes(whole).size(), 5U);  // the control
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    // Whole records, or a size divisible by 30: there is no other evidence.
    const std::size_t expected = length % 22 == 0 ? length / 22 : length % 30 == 0 ? length / 30 : 0;
    FileBytes bytes = whole;
    bytes.resize(length);
    EXPECT_EQ(LoadBytes(bytes).size(), expected) << length;
  }
}

TEST(ScanIndex, LongRecordsCutAtEveryLength) {
  const FileBytes whole = WriteScanIndex(Ascending(5), 30);
  EXPECT_EQ(LoadBytes(whole).size(), 5U);  // the control
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    // 22 and 44 bytes look like one and two short records; 66, 88, ... hold a decreasing offset.
    const std::size_t expected = length == 22 || length == 44 ? length / 22
                                 : length % 30 == 0           ? length / 30
                                                              : 0;
    FileBytes bytes = whole;
    bytes.resize(length);
    EXPECT_EQ(LoadBytes(bytes).size(), expected) << length;
  }
}

// Deliberate: the second reading is the last.

TEST(ScanIndex, DecreasingOffsetsOf30ByteRecordsAreDeliberatelyKeptAsRead) {
  auto records = Ascending(2);
  records[0].dataOffset = 200;
  records[0].retentionTime = 5;
  records[1].retentionTime = 4;
  const ScanStatisticsRecord statistics = {.auxValue = 8};
  const TempDirectory directory;
  directory.Write(kStatisticsName, WriteScanStatistics({statistics, statistics}));

  directory.Write(kIndexName, WriteScanIndex(records, 30));
  const auto kept = Load(directory);
  ASSERT_EQ(kept.size(), 2U);
  EXPECT_EQ(kept[0].retentionTime, 5.0F);  // not sorted by time
  EXPECT_EQ(kept[1].retentionTime, 4.0F);
  EXPECT_EQ(kept[0].auxValue, 0.0F);  // no statistics
  EXPECT_EQ(kept[1].auxValue, 0.0F);

  records[0].dataOffset = 100;  // the control
  directory.Write(kIndexName, WriteScanIndex(records, 30));
  const auto sorted = Load(directory);
  ASSERT_EQ(sorted.size(), 2U);
  EXPECT_EQ(sorted[0].retentionTime, 4.0F);
  EXPECT_EQ(sorted[1].retentionTime, 5.0F);
  EXPECT_EQ(sorted[0].auxValue, 8.0F);
  EXPECT_EQ(sorted[1].auxValue, 8.0F);
}

TEST(ScanIndex, DecreasingOffsetsIn330BytesAreKeptAsReadToo) {
  FileBytes bytes = WriteScanIndex(Ascending(11), 30);
  PatchU32(bytes, 10 * 30, 1);
  const auto entries = LoadBytes(bytes);
  ASSERT_EQ(entries.size(), 11U);
  EXPECT_EQ(entries[9].dataOffset, 900U);
  EXPECT_EQ(entries[10].dataOffset, 1U);
}

// An index of several blocks is found out of order long after statistics have been read for its start.

TEST(ScanIndex, StatisticsAreInTheOrderOfTimesHoweverLateOneIsEarlier) {
  constexpr std::size_t kScans = 10'000;
  auto records = Ascending(kScans);
  records.back().retentionTime = -1;
  std::vector<ScanStatisticsRecord> statistics(kScans);
  for (std::size_t i = 0; i < kScans; ++i) statistics[i].auxValue = static_cast<float>(i);
  const TempDirectory directory;
  directory.Write(kIndexName, WriteScanIndex(records));
  directory.Write(kStatisticsName, WriteScanStatistics(statistics));
  const auto entries = Load(directory);
  ASSERT_EQ(entries.size(), kScans);
  for (std::size_t i = 0; i < kScans; ++i) {
    ASSERT_EQ(entries[i].retentionTime, static_cast<float>(i) - 1) << i;
    ASSERT_EQ(entries[i].auxValue, static_cast<float>(i)) << i;
  }
}

TEST(ScanIndex, NoEntryKeepsStatisticsHoweverLateAnOffsetDecreases) {
  constexpr std::size_t kScans = 10'001;  // 300,030 bytes, which 22 does not divide
  auto records = Ascending(kScans);
  records.back().dataOffset = 1;
  const TempDirectory directory;
  directory.Write(kIndexName, WriteScanIndex(records, 30));
  directory.Write(kStatisticsName,
                  WriteScanStatistics(std::vector<ScanStatisticsRecord>(kScans, {.auxValue = 8})));
  const auto entries = Load(directory);
  ASSERT_EQ(entries.size(), kScans);
  EXPECT_EQ(entries.back().dataOffset, 1U);
  for (std::size_t i = 0; i < kScans; ++i) ASSERT_EQ(entries[i].auxValue, 0.0F) << i;
}

// Data offsets.

TEST(ScanIndex, OffsetsAreComparedWithoutSign) {
  const std::vector<std::uint32_t> offsets = {0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  EXPECT_EQ(Offsets(LoadBytes(WriteScanIndex(
                {{.dataOffset = offsets[0]}, {.dataOffset = offsets[1]}, {.dataOffset = offsets[2]}}))),
            offsets);
}

TEST(ScanIndex, ZeroOffsetsAreReplacedByTheSizeOfTheScansBefore) {
  struct Case {
    int dataFormat;
    std::uint32_t after7;   ///< offset after 7 points
    std::uint32_t after12;  ///< and after 5 more
  };
  const Case cases[] = {
      {0, 28, 48},                                            // 4 bytes a point
      {1, 40, 70},                                            // 8 and 6 points of 10 bytes a pair
      {2, 14, 24},                                            // 2 bytes a point
      {3, 14, 24},   {4, 20, 40},                             // 8 and 8 points of 10 bytes a group of four
      {5, 40, 70},   {6, 20, 40},  {7, 40, 70}, {8, 42, 72},  // 6 bytes a point
      {9, 42, 72},   {10, 0, 0},                              // no layout
      {11, 28, 48},  {12, 56, 96},                            // 8 bytes a point
      {13, 84, 144},                                          // 12 bytes a point
      {14, 84, 144}, {15, 0, 0},   {-1, 0, 0},
  };
  const FileBytes bytes = WriteScanIndex({{.pointCount = 7, .retentionTime = 1},
                                          {.pointCount = 5, .retentionTime = 2},
                                          {.pointCount = 1, .retentionTime = 3}});
  for (const Case& c : cases) {
    const auto entries = LoadBytes(bytes, c.dataFormat);
    EXPECT_EQ(Offsets(entries), (std::vector<std::uint32_t>{0, c.after7, c.after12})) << c.dataFormat;
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].pointCount, 7U) << c.dataFormat;  // the count itself is not rounded up
  }
}

TEST(ScanIndex, GivenOffsetsAreKept) {
  EXPECT_EQ(Offsets(LoadBytes(WriteScanIndex({{.dataOffset = 3, .pointCount = 7}, {.dataOffset = 5}}))),
            (std::vector<std::uint32_t>{3, 5}));
}

TEST(ScanIndex, ReplacedOffsetsCountPointsFromTheFileStartNotFromGivenOffsets) {
  // Format 9: 7 x 6 = 42, although the first scan is at 10.
  EXPECT_EQ(Offsets(LoadBytes(WriteScanIndex({{.dataOffset = 10, .pointCount = 7}, {.pointCount = 1}}))),
            (std::vector<std::uint32_t>{10, 42}));
  // 42 + 60 = 102 after a scan at 1000: a decreasing offset.
  const std::vector<ScanIndexRecord> records = {
      {.pointCount = 7}, {.dataOffset = 1000, .pointCount = 10}, {}};
  EXPECT_TRUE(LoadBytes(WriteScanIndex(records)).empty());
  EXPECT_EQ(Offsets(LoadBytes(WriteScanIndex(records, 30))), (std::vector<std::uint32_t>{0, 1000, 102}));
}

TEST(ScanIndex, OffsetsAreCheckedInFileOrderBeforeSorting) {
  auto records = Ascending(3);
  records[0].retentionTime = 9;
  const auto entries = LoadBytes(WriteScanIndex(records));
  EXPECT_EQ(Offsets(entries), (std::vector<std::uint32_t>{100, 200, 0}));
}

// Order of time.

TEST(ScanIndex, ScansAreSortedByTime) {
  std::vector<ScanIndexRecord> records = Ascending(6);
  const float times[] = {3, 1, 2.5F, -1, kInfinity, -kInfinity};
  for (std::size_t i = 0; i < records.size(); ++i) records[i].retentionTime = times[i];
  EXPECT_EQ(Offsets(LoadBytes(WriteScanIndex(records))),
            (std::vector<std::uint32_t>{500, 300, 100, 200, 0, 400}));
}

TEST(ScanIndex, TimesThatAreNotANumberComeLast) {
  std::vector<ScanIndexRecord> records = Ascending(6);
  const float times[] = {kNaN, 2, -kNaN, kInfinity, 1, kNaN};
  for (std::size_t i = 0; i < records.size(); ++i) records[i].retentionTime = times[i];
  const auto entries = LoadBytes(WriteScanIndex(records));
  EXPECT_EQ(Offsets(entries), (std::vector<std::uint32_t>{400, 100, 300, 0, 200, 500}));
  ASSERT_EQ(entries.size(), 6U);
  for (std::size_t i = 3; i < 6; ++i) EXPECT_TRUE(std::isnan(entries[i].retentionTime)) << i;
}

TEST(ScanIndex, EqualTimesKeepTheFilesOrder) {
  std::vector<ScanIndexRecord> records = Ascending(100);
  for (std::size_t i = 0; i < records.size(); ++i) records[i].retentionTime = i % 2 == 0 ? 2.0F : 1.0F;
  std::vector<std::uint32_t> expected;
  for (std::uint32_t i = 1; i < 100; i += 2) expected.push_back(100 * i);
  for (std::uint32_t i = 0; i < 100; i += 2) expected.push_back(100 * i);
  EXPECT_EQ(Offsets(LoadBytes(WriteScanIndex(records))), expected);
}

TEST(ScanIndex, StatisticsRecordsGoToScansInTimeOrder) {
  auto records = Ascending(3);
  records[0].retentionTime = 9;
  const TempDirectory directory;
  directory.Write(kIndexName, WriteScanIndex(records));
  directory.Write(kStatisticsName,
                  WriteScanStatistics({{.auxValue = 10}, {.auxValue = 11}, {.auxValue = 12}}));
  const auto entries = Load(directory);
  ASSERT_EQ(entries.size(), 3U);
  EXPECT_EQ(Offsets(entries), (std::vector<std::uint32_t>{100, 200, 0}));
  EXPECT_EQ(entries[0].auxValue, 10.0F);
  EXPECT_EQ(entries[1].auxValue, 11.0F);
  EXPECT_EQ(entries[2].auxValue, 12.0F);
}

// Loading.

TEST(ScanIndex, MissingFileGivesNoScans) {
  const TempDirectory directory;
  EXPECT_TRUE(Load(directory).empty());
  directory.MakeDirectory(kIndexName);
  EXPECT_TRUE(Load(directory).empty());
}

TEST(ScanIndex, LoadedIndexIsNotReadAgain) {
  const TempDirectory directory;
  FunctionRecord function = FunctionOf(9);
  directory.Write(kIndexName, WriteScanIndex(Ascending(2)));
  LoadScanIndex(directory.SystemPath(), function, IndexView::kOfSlots);
  ASSERT_EQ(function.scanIndex.size(), 2U);
  directory.Write(kIndexName, WriteScanIndex(Ascending(5)));
  directory.Write(kStatisticsName, WriteScanStatistics({{.auxValue = 10}, {.auxValue = 11}}));
  LoadScanIndex(directory.SystemPath(), function, IndexView::kOfSlots);
  ASSERT_EQ(function.scanIndex.size(), 2U);
  EXPECT_EQ(function.scanIndex[0].auxValue, 0.0F);
  EXPECT_FALSE(function.calibrationConstant);
}

TEST(ScanIndex, FailedLoadIsTriedAgain) {
  const TempDirectory directory;
  FunctionRecord function = FunctionOf(9);
  LoadScanIndex(directory.SystemPath(), function, IndexView::kOfSlots);
  EXPECT_TRUE(function.scanIndex.empty());
  directory.Write(kIndexName, FileBytes(23));
  LoadScanIndex(directory.SystemPath(), function, IndexView::kOfSlots);
  EXPECT_TRUE(function.scanIndex.empty());
  directory.Write(kIndexName, WriteScanIndex(Ascending(2)));
  LoadScanIndex(directory.SystemPath(), function, IndexView::kOfSlots);
  EXPECT_EQ(function.scanIndex.size(), 2U);
}

TEST(ScanIndex, EmptyRecordIsNeverLoaded) {
  const TempDirectory directory;
  directory.Write(kIndexName, WriteScanIndex(Ascending(2)));
  FunctionRecord function = FunctionOf(9);
  function.typeCode = -1;
  LoadScanIndex(directory.SystemPath(), function, IndexView::kOfSlots);
  EXPECT_TRUE(function.scanIndex.empty());
  function.typeCode = 0;  // the control
  LoadScanIndex(directory.SystemPath(), function, IndexView::kOfSlots);
  EXPECT_EQ(function.scanIndex.size(), 2U);
}

// File names.

TEST(ScanIndex, NameCarriesTheNumberAndTheKindOfFunction) {
  struct Case {
    const char* name;
    std::uint16_t number;
    bool processed;
  };
  const Case cases[] = {{"_FUNC001.idx", 1, false},       {"_FUNC012.idx", 12, false},
                        {"_FUNC123.idx", 123, false},     {"_FUNC1234.idx", 1234, false},
                        {"_FUNC65535.idx", 65535, false}, {"_PROC001.idx", 1, true},
                        {"_PROC012.idx", 12, true}};
  for (const Case& written : cases) {
    const TempDirectory directory;
    directory.Write(written.name, WriteScanIndex(Ascending(2)));
    for (const Case& read : cases) {
      FunctionRecord function = FunctionOf(9, read.number);
      function.processed = read.processed;
      LoadScanIndex(directory.SystemPath(), function, IndexView::kOfSlots);
      EXPECT_EQ(function.scanIndex.size(), &read == &written ? 2U : 0U)
          << read.name << " of " << written.name;
    }
  }
}

TEST(ScanIndex, StatisticsOfAProcessedFunctionHaveItsName) {
  const TempDirectory directory;
  directory.Write("_PROC007.idx", WriteScanIndex(Ascending(1)));
  directory.Write("_FUNC007.sts", WriteScanStatistics({{.auxValue = 10}}));
  directory.Write("_PROC007.sts", WriteScanStatistics({{.auxValue = 20}}));
  FunctionRecord function = FunctionOf(9, 7);
  function.processed = true;
  LoadScanIndex(directory.SystemPath(), function, IndexView::kOfSlots);
  ASSERT_EQ(function.scanIndex.size(), 1U);
  EXPECT_EQ(function.scanIndex[0].auxValue, 20.0F);
}

TEST(ScanIndex, EachOfTheThreeSpellingsIsFound) {
  for (const char* name : {"_FUNC001.idx", "_FUNC001.IDX", "_func001.idx"}) {
    const TempDirectory directory;
    directory.Write(name, WriteScanIndex(Ascending(2)));
    EXPECT_EQ(Load(directory).size(), 2U) << name;
  }
}

#ifndef _WIN32  // where names that differ in case name the same file
TEST(ScanIndex, SpellingsAreTriedAsWrittenThenUpperThenLower) {
  const TempDirectory directory;
  directory.Write("_func001.IDX", WriteScanIndex(Ascending(4)));
  EXPECT_TRUE(Load(directory).empty());
  directory.Write("_func001.idx", WriteScanIndex(Ascending(3)));
  EXPECT_EQ(Load(directory).size(), 3U);
  directory.Write("_FUNC001.IDX", WriteScanIndex(Ascending(2)));
  EXPECT_EQ(Load(directory).size(), 2U);
  directory.Write("_FUNC001.idx", WriteScanIndex(Ascending(1)));
  EXPECT_EQ(Load(directory).size(), 1U);
}
#endif

}  // namespace
}  // namespace zrml::masslynx
