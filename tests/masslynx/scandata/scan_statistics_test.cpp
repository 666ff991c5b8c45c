#include "masslynx/scandata/scan_statistics.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/masslynx/scandata/scan_files.h"
#include "tests/support/scan_statistics_writer.h"
#include "tests/support/temp_directory.h"

namespace zrml::masslynx {
namespace {

namespace format = scan_statistics_format;

using Entries = std::vector<ScanIndexEntry>;

constexpr const char* kFileName = "_FUNC001.sts";

// AllItems() puts the items at these offsets of 25-byte records, after a header of 32 + 7 x 48 bytes.
constexpr std::size_t kHeader = 368;
constexpr std::size_t kRecord = 25;

constexpr std::uint16_t kTemperatureItems[] = {format::kTemperatureValid, format::kTemperature,
                                               format::kTemperatureCoefficient};

const TempDirectory& Directory() {
  static const TempDirectory directory;
  return directory;
}

struct Loaded {
  Entries entries;
  bool calibrationConstant = false;
};

// In two parts. Gives what the function's calibrationConstant is then.
bool Fill(const TempDirectory& directory, const FunctionRecord& function, Entries& entries) {
  const platform::SystemPath folder = directory.SystemPath();
  StatisticsReader reader(folder, function);
  reader.Fill(std::span(entries).first(entries.size() / 2));
  reader.Fill(entries, entries.size() / 2);
  return reader.IsKnown() ? reader.HaveOneCalibration() : function.calibrationConstant;
}

/// The result of loading the statistics file. `before` is the function's calibrationConstant before that.
Loaded LoadFile(Entries entries, bool before) {
  FunctionRecord function;
  function.number = 1;
  function.typeCode = 0;
  function.calibrationConstant = before;
  const bool constant = Fill(Directory(), function, entries);
  return {std::move(entries), constant};
}

Loaded Load(const FileBytes& file, Entries entries, bool before = false) {
  WriteAnew(Directory(), kFileName, file);
  return LoadFile(std::move(entries), before);
}

Loaded Load(const FileBytes& file, std::size_t scans = 1, bool before = false) {
  return Load(file, Entries(scans), before);
}

/// All items differ, from each other and from the record's first bytes.
const ScanStatisticsRecord kScan = {.firstBytes = 0x3F800001,
                                    .auxValue = 30.5F,
                                    .precursorMass = 785.84F,
                                    .precursorFlags = 0x8001,
                                    .word80 = 0x1234,
                                    .temperatureValid = 1,
                                    .temperature = 25.25F,
                                    .temperatureCoefficient = -2.5F};

/// The expected content of an entry for kScan.
ScanIndexEntry EntryOfScan() {
  ScanIndexEntry entry;
  entry.auxValue = 30.5F;
  entry.precursorMass = 785.84F;
  entry.precursorFlags = 0x8001;
  entry.temperatureValid = true;
  entry.temperature = 25.25F;
  entry.temperatureCoefficient = -2.5F;
  return entry;
}

void WithoutTemperature(ScanIndexEntry& entry) {
  entry.temperatureValid = false;
  entry.temperature = 0;
  entry.temperatureCoefficient = 0;
}

void ExpectStatistics(const ScanIndexEntry& entry, const ScanIndexEntry& expected) {
  EXPECT_EQ(entry.auxValue, expected.auxValue);
  EXPECT_EQ(entry.precursorMass, expected.precursorMass);
  EXPECT_EQ(entry.precursorFlags, expected.precursorFlags);
  EXPECT_EQ(entry.temperatureValid, expected.temperatureValid);
  EXPECT_EQ(entry.temperature, expected.temperature);
  EXPECT_EQ(entry.temperatureCoefficient, expected.temperatureCoefficient);
}

std::vector<StatisticsItem> AllItemsWith(const std::vector<StatisticsItem>& more) {
  std::vector<StatisticsItem> items = AllItems();
  items.insert(items.end(), more.begin(), more.end());
  return items;
}

/// AllItems() with the offset of one item set to 0.
std::vector<StatisticsItem> AllItemsWithZeroOffsetOf(std::uint16_t code) {
  std::vector<StatisticsItem> items = AllItems();
  for (StatisticsItem& item : items) {
    if (item.code == code) item.offset = 0;
  }
  return items;
}

// Items.

TEST(ScanStatistics, WorkedFile) {
  // Header of 0x50 = 32 + 48 bytes, version 1, records of 8 bytes, one descriptor: item 0x3E = 62 at
  // offset 4.
  const std::string unused24 = "EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE";
  const std::string unused18 = "EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE";
  const std::string header = "50 00 01 00 08 00 01 00" + unused24;
  const std::string descriptor = "3E 00 EE EE 04 00" + unused24 + unused18;
  // 10 = 0x41200000, -1.5 = 0xBFC00000. Items 77 and 79 have no descriptor and take the first bytes.
  const std::string records = "01 00 80 3F 00 00 20 41  00 00 00 00 00 00 C0 BF";
  const Loaded loaded = Load(HexToBytes(header + descriptor + records), 2);

  EXPECT_EQ(loaded.entries[0].auxValue, 10.0F);
  EXPECT_EQ(loaded.entries[0].precursorMass, 0x1.000002p0F);  // 0x3F800001
  EXPECT_EQ(loaded.entries[0].precursorFlags, 1);
  EXPECT_FALSE(loaded.entries[0].temperatureValid);
  EXPECT_EQ(loaded.entries[1].auxValue, -1.5F);
  EXPECT_EQ(loaded.entries[1].precursorMass, 0.0F);
  EXPECT_TRUE(loaded.calibrationConstant);
}

TEST(ScanStatistics, EveryItemGoesToItsMember) {
  ScanStatisticsRecord second = kScan;
  second.auxValue = 7;
  second.temperature = 26;
  const FileBytes file = WriteScanStatistics({kScan, second});
  ASSERT_EQ(file.size(), kHeader + 2 * kRecord);
  const Loaded loaded = Load(file, 2);
  ExpectStatistics(loaded.entries[0], EntryOfScan());
  ScanIndexEntry expected = EntryOfScan();
  expected.auxValue = 7;
  expected.temperature = 26;
  ExpectStatistics(loaded.entries[1], expected);
}

TEST(ScanStatistics, OtherMembersOfTheEntryStay) {
  ScanIndexEntry entry;
  entry.dataOffset = 1;
  entry.pointCount = 2;
  entry.segment = 3;
  entry.totalIntensity = 4;
  entry.retentionTime = 5;
  entry.centroided = true;
  entry.preCalibrated = true;
  const Loaded loaded = Load(WriteScanStatistics({kScan}), Entries{entry});
  EXPECT_EQ(loaded.entries[0].dataOffset, 1U);
  EXPECT_EQ(loaded.entries[0].pointCount, 2U);
  EXPECT_EQ(loaded.entries[0].segment, 3U);
  EXPECT_EQ(loaded.entries[0].totalIntensity, 4.0F);
  EXPECT_EQ(loaded.entries[0].retentionTime, 5.0F);
  EXPECT_TRUE(loaded.entries[0].centroided);
  EXPECT_TRUE(loaded.entries[0].preCalibrated);
}

TEST(ScanStatistics, DescriptorOrderDoesNotMatter) {
  std::vector<StatisticsItem> items = AllItems();
  std::reverse(items.begin(), items.end());
  ExpectStatistics(Load(WriteScanStatistics({kScan}, {.items = items})).entries[0], EntryOfScan());
}

TEST(ScanStatistics, OtherItemCodesAreIgnored) {
  std::vector<StatisticsItem> items;
  for (std::uint16_t code = 0; code < 200; ++code) {
    const bool used = code == 62 || code == 77 || code == 79 || code == 80 || (code >= 103 && code <= 105);
    if (!used) items.push_back({code, 1});
  }
  const std::vector<StatisticsItem> all = AllItems();
  items.insert(items.begin() + 90, all.begin(), all.end());
  ExpectStatistics(Load(WriteScanStatistics({kScan}, {.items = items})).entries[0], EntryOfScan());
}

TEST(ScanStatistics, TemperatureIsValidAboveZeroAsASignedByte) {
  struct Case {
    std::int8_t stored;
    bool valid;
  };
  for (const Case& c :
       {Case{0, false}, Case{1, true}, Case{2, true}, Case{127, true}, Case{-128, false}, Case{-1, false}}) {
    ScanStatisticsRecord scan = kScan;
    scan.temperatureValid = c.stored;
    const Loaded loaded = Load(WriteScanStatistics({scan}));
    EXPECT_EQ(loaded.entries[0].temperatureValid, c.valid) << int{c.stored};
    EXPECT_EQ(loaded.entries[0].temperature, 25.25F);  // still kept
  }
}

// Missing descriptors.

TEST(ScanStatistics, MissingPrecursorItemsAreDeliberatelyReadFromTheRecordsFirstBytes) {
  const auto expectFirstBytes = [](const std::vector<StatisticsItem>& items, std::uint16_t code) {
    ScanIndexEntry expected = EntryOfScan();
    if (code == format::kPrecursorMass) expected.precursorMass = 0x1.000002p0F;  // 0x3F800001
    if (code == format::kPrecursorFlags) expected.precursorFlags = 1;
    FileBytes file =
        WriteScanStatistics({kScan}, {.items = items, .headerSize = kHeader, .recordSize = kRecord});
    PatchU32(file, kHeader, kScan.firstBytes);  // overwrites an item from the writer
    ExpectStatistics(Load(file).entries[0], expected);
  };
  for (const std::uint16_t code : {format::kPrecursorMass, format::kPrecursorFlags}) {
    SCOPED_TRACE(code);
    expectFirstBytes(AllItemsBut({code}), code);
    expectFirstBytes(AllItemsWithZeroOffsetOf(code), code);
  }
}

TEST(ScanStatistics, MissingAuxValueIsZero) {
  ScanIndexEntry expected = EntryOfScan();
  expected.auxValue = 0;
  for (const auto& items : {AllItemsBut({62}), AllItemsWithZeroOffsetOf(62)}) {
    ExpectStatistics(Load(WriteScanStatistics({kScan}, {.items = items})).entries[0], expected);
  }
}

TEST(ScanStatistics, TemperatureNeedsAllThreeItems) {
  ScanIndexEntry expected = EntryOfScan();
  WithoutTemperature(expected);
  const std::vector<std::vector<std::uint16_t>> missing = {{103},      {104},      {105},          {103, 104},
                                                           {103, 105}, {104, 105}, {103, 104, 105}};
  for (const auto& codes : missing) {
    SCOPED_TRACE(testing::PrintToString(codes));
    ExpectStatistics(Load(WriteScanStatistics({kScan}, {.items = AllItemsBut(codes)})).entries[0], expected);
  }
  for (const std::uint16_t code : kTemperatureItems) {
    SCOPED_TRACE(code);
    const Loaded loaded = Load(WriteScanStatistics({kScan}, {.items = AllItemsWithZeroOffsetOf(code)}));
    ExpectStatistics(loaded.entries[0], expected);
  }
}

TEST(ScanStatistics, LastDescriptorOfACodeWins) {
  // An eighth descriptor, of an unknown code, for offset 8: the precursor mass.
  const FileBytes control = WriteScanStatistics({kScan}, {.items = AllItemsWith({{999, 8}})});
  ExpectStatistics(Load(control).entries[0], EntryOfScan());

  const std::size_t eighth = format::kDescriptors + 7 * format::kDescriptorSize;
  FileBytes file = control;
  PatchU16(file, eighth + format::kItemCode, format::kAuxValue);
  ScanIndexEntry expected = EntryOfScan();
  expected.auxValue = 785.84F;
  ExpectStatistics(Load(file).entries[0], expected);

  PatchU16(file, eighth + format::kItemOffset, 0);  // absent
  expected.auxValue = 0;
  ExpectStatistics(Load(file).entries[0], expected);

  PatchU16(file, eighth + format::kItemCode, format::kTemperature);
  expected = EntryOfScan();
  WithoutTemperature(expected);
  ExpectStatistics(Load(file).entries[0], expected);
}

// The header.

TEST(ScanStatistics, OtherVersionsAreNotRead) {
  constexpr std::uint16_t kVersions[] = {0, 2, 3, 0x0100, 0x0101, 0xFFFF};
  for (const std::uint16_t version : kVersions) {
    for (const bool before : {false, true}) {
      const Loaded loaded = Load(WriteScanStatistics({kScan}, {.version = version}), 1, before);
      ExpectStatistics(loaded.entries[0], ScanIndexEntry());
      EXPECT_EQ(loaded.calibrationConstant, before) << version;
    }
  }
}

TEST(ScanStatistics, MissingFileChangesNothing) {
  const TempDirectory empty;
  for (const bool before : {false, true}) {
    FunctionRecord function;
    function.number = 1;
    function.typeCode = 0;
    function.calibrationConstant = before;
    Entries entries(1);
    EXPECT_EQ(Fill(empty, function, entries), before);
    ExpectStatistics(entries[0], ScanIndexEntry());
  }
}

TEST(ScanStatistics, HeaderSizeSaysWhereRecordsStart) {
  const Loaded later = Load(WriteScanStatistics({kScan}, {.headerSize = 1000}));
  ExpectStatistics(later.entries[0], EntryOfScan());

  // At 0 the record overlaps the header, whose bytes 8 to 31 are unused.
  FileBytes file = WriteScanStatistics({kScan});
  PatchU16(file, format::kRecordsOffset, 0);
  EXPECT_FALSE(Load(file).entries[0].temperatureValid);  // 0xEE is negative
}

TEST(ScanStatistics, HeaderSizeBeyondTheFileGivesZeros) {
  FileBytes file = WriteScanStatistics({kScan, kScan});
  for (const std::size_t headerSize : {file.size(), file.size() + 1, std::size_t{0xFFFF}}) {
    PatchU16(file, format::kRecordsOffset, static_cast<std::uint16_t>(headerSize));
    const Loaded loaded = Load(file, 2);
    ExpectStatistics(loaded.entries[0], ScanIndexEntry());
    ExpectStatistics(loaded.entries[1], ScanIndexEntry());
    EXPECT_TRUE(loaded.calibrationConstant);
  }
}

TEST(ScanStatistics, DescriptorsBeyondTheCountAreNotRead) {
  FileBytes file = WriteScanStatistics({kScan}, {.itemCount = 0});
  const Loaded none = Load(file);
  EXPECT_EQ(none.entries[0].auxValue, 0.0F);
  EXPECT_EQ(none.entries[0].precursorMass, 0x1.000002p0F);  // the first bytes
  EXPECT_FALSE(none.entries[0].temperatureValid);

  PatchU16(file, format::kDescriptorCount, 1);
  EXPECT_EQ(Load(file).entries[0].auxValue, 30.5F);  // only the first descriptor
  EXPECT_EQ(Load(file).entries[0].precursorFlags, 1);
}

TEST(ScanStatistics, DescriptorsBeyondTheFileHaveNoEffect) {
  ScanStatisticsRecord scan = kScan;
  scan.firstBytes = 0;  // where the eighth descriptor would stand: code 0
  const FileBytes file = WriteScanStatistics({scan}, {.itemCount = 0xFFFF});
  ExpectStatistics(Load(file).entries[0], EntryOfScan());
}

// Items and records outside.

TEST(ScanStatistics, ItemsOutsideTheRecordSizeAreZero) {
  // The temperature coefficient is at 20 to 23, the flag of temperatures at 24. The second record begins with
  // a byte above 0, which would make a flag.
  struct Case {
    std::uint16_t recordSize;
    bool hasCoefficient;
    bool hasFlag;
  };
  for (const Case& c :
       {Case{25, true, true}, Case{24, true, false}, Case{23, false, false}, Case{20, false, false}}) {
    SCOPED_TRACE(c.recordSize);
    const Loaded loaded = Load(WriteScanStatistics({kScan, kScan}, {.recordSize = c.recordSize}), 2);
    ScanIndexEntry expected = EntryOfScan();
    if (!c.hasCoefficient) expected.temperatureCoefficient = 0;
    if (!c.hasFlag) expected.temperatureValid = false;
    ExpectStatistics(loaded.entries[0], expected);
    ExpectStatistics(loaded.entries[1], expected);
  }
}

TEST(ScanStatistics, ItemsCutByTheRecordSizeAreZero) {
  // Records of 7 bytes hold the first four and three of the four bytes of item 62 at offset 4.
  const Loaded cut = Load(WriteScanStatistics({kScan, kScan}, {.recordSize = 7}), 2);
  for (const ScanIndexEntry& entry : cut.entries) ExpectStatistics(entry, ScanIndexEntry());

  const Loaded control = Load(WriteScanStatistics({kScan, kScan}, {.recordSize = 8}), 2);
  ScanIndexEntry expected;
  expected.auxValue = 30.5F;
  for (const ScanIndexEntry& entry : control.entries) ExpectStatistics(entry, expected);
}

TEST(ScanStatistics, MissingPrecursorItemsKeepToTheRecordSizeToo) {
  // Without descriptors the first bytes are used: four are needed for a mass, two for a word.
  FileBytes file = WriteScanStatistics({kScan}, {.items = {}, .recordSize = 4});
  EXPECT_EQ(Load(file).entries[0].precursorMass, 0x1.000002p0F);  // the control
  PatchU16(file, format::kRecordSize, 3);
  EXPECT_EQ(Load(file).entries[0].precursorMass, 0.0F);
  EXPECT_EQ(Load(file).entries[0].precursorFlags, 1);
  PatchU16(file, format::kRecordSize, 1);
  EXPECT_EQ(Load(file).entries[0].precursorFlags, 0);
  PatchU16(file, format::kRecordSize, 0);
  ExpectStatistics(Load(file, 3).entries[2], ScanIndexEntry());
}

TEST(ScanStatistics, ScansWithoutARecordGetZeros) {
  const Loaded loaded = Load(WriteScanStatistics({kScan, kScan}), 4);
  ExpectStatistics(loaded.entries[1], EntryOfScan());
  ExpectStatistics(loaded.entries[2], ScanIndexEntry());
  ExpectStatistics(loaded.entries[3], ScanIndexEntry());
  EXPECT_FALSE(loaded.calibrationConstant);
}

TEST(ScanStatistics, RecordsWithoutAScanAreIgnored) {
  const Loaded loaded = Load(WriteScanStatistics({kScan, {}, {}}), 1);
  ASSERT_EQ(loaded.entries.size(), 1U);
  ExpectStatistics(loaded.entries[0], EntryOfScan());
  EXPECT_TRUE(loaded.calibrationConstant);
}

TEST(ScanStatistics, RecordsBehindFourGigabytesAreOutsideTheFile) {
  // 65538 x 65535 is 2^32 + 65534: cut to 32 bits, the last scan would read from the second record.
  const Loaded loaded = Load(WriteScanStatistics({kScan, kScan}, {.recordSize = 0xFFFF}), 65539);
  ExpectStatistics(loaded.entries[1], EntryOfScan());
  ExpectStatistics(loaded.entries[2], ScanIndexEntry());
  ExpectStatistics(loaded.entries[65537], ScanIndexEntry());
  ExpectStatistics(loaded.entries[65538], ScanIndexEntry());
}

TEST(ScanStatistics, FileCutAtEveryLengthKeepsTheItemsBeforeTheCut) {
  const std::vector<ScanStatisticsRecord> scans = {kScan, kScan, kScan};
  const FileBytes whole = WriteScanStatistics(scans);
  ASSERT_EQ(whole.size(), kHeader + 3 * kRecord);
  EXPECT_TRUE(Load(whole, 3).calibrationConstant);  // the control

  for (std::size_t length = whole.size() + 1; length-- > 0;) {
    SCOPED_TRACE(length);
    Entries expected(3, EntryOfScan());
    for (std::size_t i = 0; i < 3; ++i) {
      const auto isCut = [&](std::size_t end) { return length < kHeader + i * kRecord + end; };
      if (isCut(8)) expected[i].auxValue = 0;
      if (isCut(12)) expected[i].precursorMass = 0;
      if (isCut(14)) expected[i].precursorFlags = 0;
      if (isCut(20)) expected[i].temperature = 0;
      if (isCut(24)) expected[i].temperatureCoefficient = 0;
      if (isCut(25)) expected[i].temperatureValid = false;
    }
    Directory().Truncate(kFileName, length);
    const bool before = length % 2 == 0;
    const Loaded loaded = LoadFile(Entries(3), before);
    for (std::size_t i = 0; i < 3; ++i) ExpectStatistics(loaded.entries[i], expected[i]);
    // Scans differ once the first temperature item is cut, until none of these items is left.
    const bool differ = length > kHeader + 19 && length < whole.size();
    if (length < 4) {  // no version
      EXPECT_EQ(loaded.calibrationConstant, before);
    } else if (length >= format::kHeaderSize) {
      EXPECT_EQ(loaded.calibrationConstant, !differ);
    }
  }
}

// Whether every scan converts masses the same way.

TEST(ScanStatistics, CalibrationIsConstantUntilTemperatureOrPreCalibrationChanges) {
  const auto constant = [](void (*change)(ScanStatisticsRecord&)) {
    std::vector<ScanStatisticsRecord> scans(4, kScan);
    change(scans[2]);
    return Load(WriteScanStatistics(scans), 4).calibrationConstant;
  };
  EXPECT_TRUE(constant([](ScanStatisticsRecord&) {}));
  EXPECT_FALSE(constant([](ScanStatisticsRecord& scan) { scan.temperature = 25.5F; }));
  EXPECT_FALSE(constant([](ScanStatisticsRecord& scan) { scan.temperatureCoefficient = 2.5F; }));
  EXPECT_FALSE(constant([](ScanStatisticsRecord& scan) { scan.temperatureValid = 0; }));
  EXPECT_TRUE(constant([](ScanStatisticsRecord& scan) { scan.temperatureValid = 2; }));  // valid as well
  EXPECT_TRUE(constant([](ScanStatisticsRecord& scan) {
    scan.auxValue = 1;
    scan.precursorMass = 2;
    scan.precursorFlags = 3;
    scan.word80 = 4;
    scan.firstBytes = 5;
  }));
}

TEST(ScanStatistics, PreCalibratedScanAmongOthersIsNotConstant) {
  for (std::size_t i = 0; i < 3; ++i) {
    Entries entries(3);
    entries[i].preCalibrated = true;
    EXPECT_FALSE(Load(WriteScanStatistics({kScan, kScan, kScan}), entries).calibrationConstant) << i;
  }
  Entries all(3);
  for (ScanIndexEntry& entry : all) entry.preCalibrated = true;
  EXPECT_TRUE(Load(WriteScanStatistics({kScan, kScan, kScan}), all).calibrationConstant);
}

TEST(ScanStatistics, TemperaturesThatDoNotCountDoNotDiffer) {
  std::vector<ScanStatisticsRecord> scans(2, kScan);
  scans[1].temperature = 30;
  EXPECT_FALSE(Load(WriteScanStatistics(scans), 2).calibrationConstant);  // the control
  EXPECT_TRUE(Load(WriteScanStatistics(scans, {.items = AllItemsBut({105})}), 2).calibrationConstant);
}

TEST(ScanStatistics, CalibrationOfOneScanOrNoneIsConstant) {
  EXPECT_TRUE(Load(WriteScanStatistics({kScan}), 1).calibrationConstant);
  EXPECT_TRUE(Load(WriteScanStatistics({}), Entries{}).calibrationConstant);
}

// File names.

TEST(ScanStatistics, EachOfTheThreeSpellingsIsFound) {
  for (const char* name : {"_FUNC012.sts", "_FUNC012.STS", "_func012.sts"}) {
    const TempDirectory directory;
    directory.Write(name, WriteScanStatistics({kScan}));
    FunctionRecord function;
    function.number = 12;
    function.typeCode = 0;
    Entries entries(1);
    Fill(directory, function, entries);
    ExpectStatistics(entries[0], EntryOfScan());
  }
}

}  // namespace
}  // namespace zrml::masslynx
