#include "masslynx/function_table.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "masslynx/function_types.h"
#include "masslynx/scandata/point_unit_format.h"
#include "tests/masslynx/truncation.h"
#include "tests/support/function_table_writer.h"
#include "tests/support/temp_directory.h"

namespace zrml::masslynx {
namespace {

constexpr std::size_t kRecordSize = 416;
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// A record by hand. Packed word 0xD510: type 0x10, ionisation mode 0xD510 >> 5 & 31 = 8, data format
// 0xD510 >> 10 & 15 = 5, unused bits 14 and 15 set.
constexpr std::string_view kHeadHex =
    "10 D5"         //   0: packed word
    "00 00 00 3F"   //   2: scan time 0.5
    "00 00 C0 3F"   //   6: 1.5
    "00 00 00 40"   //  10: 2.0
    "00 00 00 C0"   //  14: -2.0
    "EE EE EE EE"   //  18: discarded
    "23 81"         //  22: default scan value 0x23 = 35, kept value 0x81 = 129
    "00 10 0B 44"   //  24: set mass 0x440B1000 = 2^9 x 1.00010110001b = 556.25
    "00 00 F0 41";  //  28: 30.0
constexpr std::string_view kChannelsHex =
    "01 02 03 84"  //  32: 0x84030201
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "07 00 00 00"  // 156: 7
    "00 00 C8 42"  // 160: start mass 100.0
    "00 00 48 42"  // 164: 50.0
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "00 00 80 BF"  // 284: -1.0
    "00 00 7A 44"  // 288: end mass 1000.0
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "00 00 FA 44";  // 412: 2000.0

class FunctionTableTest : public testing::Test {
 protected:
  void WriteTable(const std::vector<FunctionTableRecord>& records) {
    directory_.Write("_FUNCTNS.INF", WriteFunctionTable(records));
    for (std::size_t i = 0; i < records.size(); ++i) WriteData(i + 1);
  }
  void WriteData(std::size_t number) {
    directory_.WriteText("_FUNC00" + std::to_string(number) + ".DAT", "");
  }
  bool Read(std::vector<FunctionRecord>& functions, const std::vector<CalibrationLine>& calibration = {},
            TableView view = TableView::kOfSlots) const {
    return ReadFunctionTable(directory_.SystemPath(), calibration, view, functions);
  }
  std::vector<FunctionRecord> MustRead(const std::vector<CalibrationLine>& calibration = {}) const {
    std::vector<FunctionRecord> functions;
    EXPECT_TRUE(Read(functions, calibration));
    return functions;
  }
  FunctionRecord ReadOne(const FunctionTableRecord& record) {
    WriteTable({record});
    const std::vector<FunctionRecord> functions = MustRead();
    return functions.empty() ? FunctionRecord() : functions[0];
  }

  TempDirectory directory_;
};

TEST_F(FunctionTableTest, ReadsEveryFieldOfARecord) {
  directory_.Write("_FUNCTNS.INF", HexToBytes(std::string(kHeadHex).append(kChannelsHex)));
  WriteData(1);
  const std::vector<FunctionRecord> functions = MustRead();

  ASSERT_EQ(functions.size(), 1u);
  const FunctionRecord& function = functions[0];
  EXPECT_EQ(function.number, 1);
  EXPECT_FALSE(function.processed);
  EXPECT_EQ(function.typeCode, 16);
  EXPECT_EQ(function.ionMode, 8);
  EXPECT_EQ(function.dataFormat, 5);
  EXPECT_EQ(function.scanTime, 0.5F);
  EXPECT_EQ(function.defaultScanValue, 35);
  EXPECT_EQ(function.setMass, 556.25F);

  std::vector<float> starts(32);
  starts[0] = 100;
  starts[1] = 50;
  starts[31] = -1;
  std::vector<float> ends(32);
  ends[0] = 1000;
  ends[31] = 2000;
  EXPECT_EQ(function.startMasses, starts);
  EXPECT_EQ(function.endMasses, ends);

  EXPECT_TRUE(function.massRangeKnown);
  EXPECT_EQ(function.lowMass, 50.0);
  EXPECT_EQ(function.highMass, 2000.0);
  EXPECT_FALSE(function.hasMobilityData);
  EXPECT_TRUE(function.scanIndex.empty());
  EXPECT_TRUE(function.processChain.empty());
  EXPECT_EQ(function.label, L"");
  EXPECT_TRUE(function.hasDataFile);
}

// The same head with type 17 (0xD511). After offset 24 only the two masses are read.
TEST_F(FunctionTableTest, ReadsAMassRangeInPlaceOfListsForType17) {
  FileBytes bytes = HexToBytes(std::string(kHeadHex).append(kChannelsHex));
  PatchU16(bytes, 0, 0xD511);
  PatchBytes(bytes, 70,
             HexToBytes("00 00 20 42"     // 40.0
                        "00 00 E1 43"));  // 450.0
  directory_.Write("_FUNCTNS.INF", bytes);
  WriteData(1);
  const std::vector<FunctionRecord> functions = MustRead();

  ASSERT_EQ(functions.size(), 1u);
  const FunctionRecord& function = functions[0];
  EXPECT_EQ(function.typeCode, 17);
  EXPECT_EQ(function.ionMode, 8);
  EXPECT_EQ(function.dataFormat, 5);
  EXPECT_EQ(function.scanTime, 0.5F);
  EXPECT_EQ(function.defaultScanValue, 35);
  EXPECT_EQ(function.setMass, 0.0F);
  EXPECT_TRUE(function.startMasses.empty());
  EXPECT_TRUE(function.endMasses.empty());
  EXPECT_TRUE(function.massRangeKnown);
  EXPECT_EQ(function.lowMass, 40.0);
  EXPECT_EQ(function.highMass, 450.0);
}

TEST_F(FunctionTableTest, SplitsThePackedWord) {
  const struct {
    std::uint16_t word;
    int typeCode;
    int ionMode;
    int dataFormat;
  } cases[] =
      {
          {0x0000, 0, 0, 0},   {0x001F, 31, 0, 0},   {0x0020, 0, 1, 0},
          {0x03E0, 0, 31, 0},  {0x0400, 0, 0, 1},    {0x3C00, 0, 0, 15},
          {0xC000, 0, 0, 0},   {0xFFFF, 31, 31, 15}, {0x2412, 18, 0, 9},  // 9 << 10 | 0 << 5 | 18
          {0x3130, 16, 9, 12},                                            // 12 << 10 | 9 << 5 | 16
      };
  for (const auto& expected : cases) {
    FunctionTableRecord record;
    record.packedWord = expected.word;
    const FunctionRecord function = ReadOne(record);
    EXPECT_EQ(function.typeCode, expected.typeCode) << std::hex << expected.word;
    EXPECT_EQ(function.ionMode, expected.ionMode) << std::hex << expected.word;
    EXPECT_EQ(function.dataFormat, expected.dataFormat) << std::hex << expected.word;
  }
}

TEST_F(FunctionTableTest, DefaultScanValueIsAnUnsignedByte) {
  FunctionTableRecord record;
  record.defaultScanValue = 255;
  const FunctionRecord function = ReadOne(record);
  EXPECT_EQ(function.defaultScanValue, 255);
}

TEST_F(FunctionTableTest, FunctionsAreNumberedInFileOrder) {
  WriteTable({{.type = 5}, {.type = 6}, {.type = 7}});
  const std::vector<FunctionRecord> functions = MustRead();
  ASSERT_EQ(functions.size(), 3u);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(functions[static_cast<std::size_t>(i)].number, i + 1);
    EXPECT_EQ(functions[static_cast<std::size_t>(i)].typeCode, 5 + i);
  }
}

TEST_F(FunctionTableTest, AcceptsWholeRecordsOnly) {
  directory_.WriteText("_FUNCTNS.INF", std::string(832, '\0'));
  std::vector<FunctionRecord> functions;
  EXPECT_TRUE(Read(functions));
  EXPECT_EQ(functions.size(), 2u);
  for (const std::uintmax_t size : {833u, 831u, 417u, 415u, 1u}) {
    directory_.WriteText("_FUNCTNS.INF", std::string(size, '\0'));
    std::vector<FunctionRecord> other;
    EXPECT_FALSE(Read(other)) << size;
  }
}

TEST_F(FunctionTableTest, EmptyFileHasNoFunctions) {
  directory_.WriteText("_FUNCTNS.INF", "");
  const std::vector<FunctionRecord> functions = MustRead();
  EXPECT_TRUE(functions.empty());
}

TEST_F(FunctionTableTest, MissingFileFails) {
  std::vector<FunctionRecord> functions;
  EXPECT_FALSE(Read(functions));
}

TEST_F(FunctionTableTest, TruncatedRecordFails) {
  WriteTable({{.type = 18}});
  TruncateAtEveryLength(directory_, "_FUNCTNS.INF", [&](std::size_t size) {
    std::vector<FunctionRecord> functions;
    const bool isWhole = size == kRecordSize || size == 0;
    ASSERT_EQ(Read(functions), isWhole);
    if (!isWhole) return;
    EXPECT_EQ(functions.size(), size / kRecordSize);
  });
}

TEST_F(FunctionTableTest, LowerCaseNamesAreFound) {
  directory_.Write("_functns.inf", WriteFunctionTable({{}}));
  directory_.WriteText("_func001.dat", "");
  directory_.WriteText("_func001.cdt", "");
  const std::vector<FunctionRecord> functions = MustRead();
  ASSERT_EQ(functions.size(), 1u);
  EXPECT_TRUE(functions[0].hasDataFile);
  EXPECT_TRUE(functions[0].hasMobilityData);
}

TEST_F(FunctionTableTest, WholeRecordsOfACutTableAreReadWhenWanted) {
  WriteTable({{.type = 5}, {.type = 6}});
  directory_.Truncate("_FUNCTNS.INF", 2 * kRecordSize - 1);
  std::vector<FunctionRecord> functions;
  EXPECT_FALSE(Read(functions));
  ASSERT_TRUE(Read(functions, {}, TableView::kMeasured));
  ASSERT_EQ(functions.size(), 1u);
  EXPECT_EQ(functions[0].typeCode, 5);
}

// The slots deliberately read zeros: type MS, EI+, layout 0.
TEST_F(FunctionTableTest, RecordOfZerosIsLostWhereItIsNotForTheSlots) {
  WriteTable({{.type = 5}, {.type = 6}});
  directory_.Edit("_FUNCTNS.INF",
                  [](FileBytes& bytes) { std::fill_n(bytes.begin(), kRecordSize, std::byte{0}); });
  std::vector<FunctionRecord> functions;
  ASSERT_TRUE(Read(functions));
  EXPECT_EQ(functions.at(0).typeCode, 0);
  EXPECT_EQ(functions.at(0).ionMode, 0);
  EXPECT_EQ(functions.at(0).dataFormat, 0);
  EXPECT_EQ(functions.at(0).scanTime, 0);
  ASSERT_TRUE(Read(functions, {}, TableView::kMeasured));
  EXPECT_TRUE(functions.at(0).IsLost());
  EXPECT_EQ(functions.at(0).number, 1);
  EXPECT_TRUE(functions.at(0).hasDataFile);
  EXPECT_EQ(FunctionTypeText(functions.at(0).typeCode), L"Unknown ");
  EXPECT_EQ(PolarityOfIonMode(functions.at(0).ionMode), Polarity::kUnknown);
  EXPECT_EQ(point_unit_format::UnitOf(functions.at(0).dataFormat).bytes, 0u);
  EXPECT_TRUE(std::isnan(functions.at(0).scanTime));
  EXPECT_EQ(functions.at(1).typeCode, 6);
}

// Function numbers are 16 bits wide: 65,536 records cannot be numbered. The file is sparse. (65,535 would
// open, after a quarter of a million attempts at data files.)
TEST_F(FunctionTableTest, MoreThan65535FunctionsFail) {
  WriteTable({{}, {}});
  EXPECT_EQ(MustRead().size(), 2u);
  directory_.Truncate("_FUNCTNS.INF", kRecordSize * 65536);
  std::vector<FunctionRecord> functions;
  EXPECT_FALSE(Read(functions));
}

TEST_F(FunctionTableTest, FunctionWithoutDataFileKeepsItsPosition) {
  WriteTable({{.type = 1}, {.type = 2}, {.type = 3}});
  const auto haveData = [&] {
    std::vector<bool> have;
    for (const FunctionRecord& function : MustRead()) have.push_back(function.hasDataFile);
    return have;
  };
  EXPECT_EQ(haveData(), (std::vector<bool>{true, true, true}));
  directory_.Remove("_FUNC002.DAT");
  EXPECT_EQ(haveData(), (std::vector<bool>{true, false, true}));
  EXPECT_EQ(MustRead()[1].typeCode, 2);
}

TEST_F(FunctionTableTest, AbsorbanceFunctionIsAFunctionOfTheTable) {
  WriteTable({{.type = 18}, {.type = 12, .dataFormat = 1, .scanTime = 2}, {.type = 6}});
  directory_.Remove("_FUNC002.DAT");
  const std::vector<FunctionRecord> functions = MustRead();
  ASSERT_EQ(functions.size(), 3u);
  EXPECT_EQ(functions[1].typeCode, 12);
  EXPECT_EQ(functions[1].number, 2);
  EXPECT_EQ(functions[1].dataFormat, 1);
  EXPECT_EQ(functions[1].scanTime, 2.0F);
  EXPECT_FALSE(functions[1].hasDataFile);
}

TEST_F(FunctionTableTest, MobilityFileMarksItsFunctionOnly) {
  WriteTable({{}, {}});
  directory_.WriteText("_FUNC002.CDT", "");
  const std::vector<FunctionRecord> functions = MustRead();
  EXPECT_FALSE(functions[0].hasMobilityData);
  EXPECT_TRUE(functions[1].hasMobilityData);
}

TEST_F(FunctionTableTest, CalibrationFollowsNumberAndType) {
  WriteTable({{.type = 18}, {.type = 9}, {.type = 18}});
  const auto line = [](CalibrationKind kind, int number, double coefficient) {
    CalibrationLine result;
    result.kind = kind;
    result.number = number;
    result.polynomial.coefficients = {coefficient};
    return result;
  };
  const std::vector<FunctionRecord> functions =
      MustRead({line(CalibrationKind::kMs1Static, 0, 1), line(CalibrationKind::kMs2Static, 0, 2),
                line(CalibrationKind::kFunction, 3, 3)});
  using Coefficients = std::vector<double>;
  EXPECT_EQ(functions[0].staticCal.coefficients, Coefficients{1});
  EXPECT_EQ(functions[1].staticCal.coefficients, Coefficients{2});
  EXPECT_EQ(functions[2].staticCal.coefficients, Coefficients{1});
  EXPECT_EQ(functions[0].functionCal.coefficients, Coefficients{});
  EXPECT_EQ(functions[2].functionCal.coefficients, Coefficients{3});
}

// --- mass range ---

struct MassRange {
  bool known;
  double low;
  double high;
};

class MassRangeTest : public FunctionTableTest {
 protected:
  void Expect(const FunctionTableRecord& record, const MassRange& expected) {
    const FunctionRecord function = ReadOne(record);
    EXPECT_EQ(function.massRangeKnown, expected.known);
    if (!expected.known) return;
    EXPECT_EQ(function.lowMass, expected.low);
    EXPECT_EQ(function.highMass, expected.high);
  }
  void ExpectUnknown(const FunctionTableRecord& record) { Expect(record, {false, 0, 0}); }
};

TEST_F(MassRangeTest, IsUnknownWithoutMasses) { ExpectUnknown({}); }

TEST_F(MassRangeTest, SpansAllChannels) {
  Expect({.startMasses = {300, 100, 200}, .endMasses = {310, 330, 320}}, {true, 100, 330});
}

TEST_F(MassRangeTest, CountsTheLastChannel) {
  FunctionTableRecord record{.startMasses = {300}, .endMasses = {310}};
  record.startMasses[31] = 20;
  record.endMasses[31] = 4000;
  Expect(record, {true, 20, 4000});
}

TEST_F(MassRangeTest, StartMassesThatAreNotPositiveDoNotCount) {
  Expect({.startMasses = {0, -5, 100, -kInfinity}, .endMasses = {500}}, {true, 100, 500});
  ExpectUnknown({.startMasses = {-5, -100}, .endMasses = {500}});
}

TEST_F(MassRangeTest, EndMassesMustReachAPositiveValue) {
  ExpectUnknown({.startMasses = {100}, .endMasses = {}});
  FunctionTableRecord record{.startMasses = {100}};
  record.endMasses.fill(-500);
  ExpectUnknown(record);
}

TEST_F(MassRangeTest, HighBelowLowIsUnknown) {
  ExpectUnknown({.startMasses = {500}, .endMasses = {499.5F}});
  Expect({.startMasses = {500}, .endMasses = {500}}, {true, 500, 500});
}

TEST_F(MassRangeTest, NanCountsOnNeitherSide) {
  Expect({.startMasses = {kNan, 100}, .endMasses = {kNan, 500}}, {true, 100, 500});
  Expect({.startMasses = {100, kNan}, .endMasses = {500, kNan}}, {true, 100, 500});
  FunctionTableRecord record;
  record.startMasses.fill(kNan);
  record.endMasses.fill(kNan);
  ExpectUnknown(record);
}

TEST_F(MassRangeTest, StoredFloatsAreWidened) {
  // 0.1F is 0x3DCCCCCD = 13421773 x 2^-27.
  Expect({.startMasses = {0.1F}, .endMasses = {kInfinity}},
         {true, 13421773.0 / 134217728.0, std::numeric_limits<double>::infinity()});
}

FunctionTableRecord Mtof(float low, float high) {
  return {.type = 17, .mtofLowMass = low, .mtofHighMass = high};
}

TEST_F(MassRangeTest, OfType17IsGivenByTwoPositiveMasses) {
  Expect(Mtof(40, 450), {true, 40, 450});
  ExpectUnknown(Mtof(0, 450));
  ExpectUnknown(Mtof(40, 0));
  ExpectUnknown(Mtof(-40, 450));
  ExpectUnknown(Mtof(40, -450));
  ExpectUnknown(Mtof(kNan, 450));
  ExpectUnknown(Mtof(40, kNan));
}

// Deliberate: type 17 does not require high >= low.
TEST_F(MassRangeTest, OfType17MayBeReversed) { Expect(Mtof(450, 40), {true, 450, 40}); }

}  // namespace
}  // namespace zrml::masslynx
