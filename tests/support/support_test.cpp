// The writers against bytes worked out by hand: the reader tests rely on them.
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/platform/platform.h"
#include "tests/support/raw_directory_builder.h"

namespace zrml {
namespace {

std::string Hex(const FileBytes& bytes, std::size_t offset = 0, std::size_t count = std::string::npos) {
  const std::span<const std::byte> all(bytes);
  return BytesToHex(all.subspan(offset, std::min(count, all.size() - offset)));
}

TEST(ByteWriterTest, NumbersAreLittleEndian) {
  ByteWriter writer;
  writer.U8(0xFE).I8(-2).U16(0x1234).I16(-2).U32(0x12345678).F32(1.5F);  // 1.5 = 0x3FC00000
  EXPECT_EQ(Hex(writer.Written()), "FE FE 34 12 FE FF 78 56 34 12 00 00 C0 3F");
}

TEST(ByteWriterTest, TextAndFillingFollow) {
  EXPECT_EQ(Hex(ByteWriter().Text("\xB5g").Zeros(1).Unused(1).UnusedUpTo(5).UnusedUpTo(2).Take()),
            "B5 67 00 EE EE");
}

TEST(ByteWriterTest, PatchReplacesItsBytesOnly) {
  FileBytes bytes = HexToBytes("00 11 22 33 44 55");
  PatchU16(bytes, 1, 0xABCD);
  PatchU8(bytes, 5, 0x66);
  EXPECT_EQ(Hex(bytes), "00 CD AB 33 44 66");
  PatchF32(bytes, 0, 1);
  EXPECT_EQ(Hex(bytes), "00 00 80 3F 44 66");
  PatchU32(bytes, 2, 1);
  EXPECT_EQ(Hex(bytes), "00 00 01 00 00 00");
}

TEST(ByteWriterTest, PatchAcrossTheEndThrows) {
  FileBytes bytes(4);
  EXPECT_NO_THROW(PatchU32(bytes, 0, 1));
  EXPECT_THROW(PatchU32(bytes, 1, 1), std::out_of_range);
  EXPECT_THROW(PatchU8(bytes, 5, 1), std::out_of_range);
}

TEST(ByteWriterTest, HexMayBeSpacedAndInAnyCase) {
  EXPECT_EQ(HexToBytes("0A fF\n1b"), HexToBytes("0aFF1B"));
  EXPECT_EQ(BytesToHex(HexToBytes("0aff1b")), "0A FF 1B");
  EXPECT_THROW(HexToBytes("0"), std::invalid_argument);
  EXPECT_THROW(HexToBytes("0g"), std::invalid_argument);
}

TEST(TempDirectoryTest, IsEmptyAtFirstAndGoneAfterwards) {
  std::filesystem::path path;
  {
    const TempDirectory directory("run.raw");
    path = directory.Path();
    EXPECT_EQ(path.filename(), "run.raw");
    EXPECT_TRUE(std::filesystem::is_empty(path));
    directory.WriteText("a.txt", "x");
  }
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_FALSE(std::filesystem::exists(path.parent_path()));
}

TEST(TempDirectoryTest, TwoAreApart) { EXPECT_NE(TempDirectory().Path(), TempDirectory().Path()); }

TEST(TempDirectoryTest, FilesAreEditedByName) {
  const TempDirectory directory;
  directory.WriteText("a.txt", "one\r\ntwo");
  EXPECT_EQ(BytesToText(directory.Read("a.txt")), "one\r\ntwo");
  directory.Truncate("a.txt", 3);
  directory.Edit("a.txt", [](FileBytes& bytes) { PatchU8(bytes, 0, 'O'); });
  directory.Rename("a.txt", "b.txt");
  EXPECT_EQ(BytesToText(directory.Read("b.txt")), "One");
  EXPECT_FALSE(std::filesystem::exists(directory.Path() / "a.txt"));
  directory.Remove("b.txt");
  EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
  EXPECT_ANY_THROW(directory.Remove("b.txt"));
  EXPECT_ANY_THROW(directory.Read("b.txt"));
}

TEST(TempDirectoryTest, WidePathNamesTheDirectoryAndItsFiles) {
  const TempDirectory directory(u8"\u00B5.raw");
  directory.WriteText("a.txt", "x");
  EXPECT_TRUE(directory.WidePath().ends_with(L"\u00B5.raw"));
  EXPECT_TRUE(platform::IsFile(directory.WidePath("a.txt")));
}

TEST(TextWriterTest, LinesEndAsAsked) {
  EXPECT_EQ(BytesToText(WriteLines({"a", "\xE9"})), "a\r\n\xE9\r\n");
  EXPECT_EQ(BytesToText(WriteLines({"a", "b"}, LineEnd::kLf)), "a\nb\n");
  EXPECT_EQ(BytesToText(WriteLines({"a", "b"}, LineEnd::kCrLf, LastLine::kUnended)), "a\r\nb");
  EXPECT_TRUE(WriteLines({}).empty());
}

TEST(TextWriterTest, LinesSpellAsInTheFiles) {
  EXPECT_EQ(HeaderLine("Acquired Date", "14-Nov-2026"), "$$ Acquired Date: 14-Nov-2026");
  EXPECT_EQ(CalLine("MS1 Static", {0, 1}), "$$ Cal MS1 Static: 0,1");
  EXPECT_EQ(CalLine("Function 2", {-0.25, 1e-9}, Domain::kRoot), "$$ Cal Function 2: -0.25,1e-09,T1");
  EXPECT_EQ(CreatorLine("4.1"), "Created by MassLynx v4.1");
  // The label follows " - ", so it is at position 35 (36 for a number of two digits).
  EXPECT_EQ(FunctionHeading(3, "X").find('X'), 35U);
  EXPECT_EQ(FunctionHeading(12, "X"), "Function Parameters - Function 12 - X");
}

TEST(FunctionTableWriterTest, FieldsStandAtTheirOffsets) {
  FunctionTableRecord record = {.type = 18, .ionMode = 8, .dataFormat = 9, .scanTime = 0.5F};
  record.keptTimes = {1, 2, 3};
  record.defaultScanValue = 30;
  record.keptScanValue = 7;
  record.setMass = 556.25F;
  record.keptSetValue = 1;
  record.channels = {0x01020304};
  record.startMasses = {50};
  record.endMasses = {1200};
  const FileBytes bytes = WriteFunctionTable({record});
  ASSERT_EQ(bytes.size(), 416U);
  // 18 + 8 x 2^5 + 9 x 2^10 = 9490 = 0x2512; 0.5 = 0x3F000000; 1, 2, 3 = 0x3F800000, 0x40000000, 0x40400000.
  EXPECT_EQ(Hex(bytes, 0, 18), "12 25 00 00 00 3F 00 00 80 3F 00 00 00 40 00 00 40 40");
  EXPECT_EQ(Hex(bytes, 18, 6), "EE EE EE EE 1E 07");
  EXPECT_EQ(Hex(bytes, 24, 8), "00 10 0B 44 00 00 80 3F");  // 556.25 = 0x440B1000
  EXPECT_EQ(Hex(bytes, 32, 5), "04 03 02 01 00");
  EXPECT_EQ(Hex(bytes, 160, 5), "00 00 48 42 00");  // 50 = 0x42480000
  EXPECT_EQ(Hex(bytes, 288, 5), "00 00 96 44 00");  // 1200 = 0x44960000
}

TEST(FunctionTableWriterTest, MtofHasItsRangeAt70And74) {
  const FileBytes bytes = WriteFunctionTable({{.type = 17, .mtofLowMass = 50, .mtofHighMass = 2000}});
  ASSERT_EQ(bytes.size(), 416U);
  EXPECT_EQ(Hex(bytes, 24, 2), "EE EE");
  EXPECT_EQ(Hex(bytes, 68, 12), "EE EE 00 00 48 42 00 00 FA 44 EE EE");  // 2000 = 0x44FA0000
}

TEST(FunctionTableWriterTest, CodesKeepToTheirBits) {
  // Type 31, mode 0; then 0, 31; then format 15.
  EXPECT_EQ(Hex(WriteFunctionTable({{.type = 31, .ionMode = 0, .dataFormat = 0}}), 0, 2), "1F 00");
  EXPECT_EQ(Hex(WriteFunctionTable({{.type = 0, .ionMode = 31, .dataFormat = 0}}), 0, 2), "E0 03");
  EXPECT_EQ(Hex(WriteFunctionTable({{.type = 32, .ionMode = 32, .dataFormat = 15}}), 0, 2), "00 3C");
  EXPECT_EQ(Hex(WriteFunctionTable({{.packedWord = std::uint16_t{0xC001}}}), 0, 2), "01 C0");
}

TEST(FunctionTableWriterTest, EveryRecordAdds416Bytes) {
  EXPECT_EQ(WriteFunctionTable({}).size(), 0U);
  EXPECT_EQ(WriteFunctionTable(std::vector<FunctionTableRecord>(2)).size(), 832U);
}

TEST(HistoryWriterTest, HeaderHas132BytesAndEntries123) {
  const FileBytes bytes =
      WriteHistory({{.processNumber = 1, .rawFunctionNumber = 2, .processCode = 3},
                    {.processNumber = 2, .derivedFrom = 1, .rawFunctionNumber = 2, .processCode = 27}});
  ASSERT_EQ(bytes.size(), 132U + 2 * 123);
  EXPECT_EQ(WriteHistory({}).size(), 132U);
  EXPECT_EQ(Hex(bytes, 0, 8), "EE EE EE EE 01 00 02 00");
  EXPECT_EQ(Hex(bytes, 66, 4), "20 00 EE EE");  // the last of 32 numbers, then skipped bytes
  EXPECT_EQ(Hex(bytes, 132, 7), "01 00 00 00 02 00 EE");
  EXPECT_EQ(Hex(bytes, 132 + 20, 3), "03 00 EE");
  EXPECT_EQ(Hex(bytes, 255, 6), "02 00 01 00 02 00");
  EXPECT_EQ(Hex(bytes, 255 + 20, 2), "1B 00");
}

TEST(ScanIndexWriterTest, RecordHas22Bytes) {
  const FileBytes bytes = WriteScanIndex({{.dataOffset = 0x01020304,
                                           .pointCount = 5,
                                           .segment = 3,
                                           .centroidState = CentroidState::kProfile,
                                           .preCalibrated = true,
                                           .totalIntensity = 1.5F,
                                           .retentionTime = 0.25F}});
  // 5 + 3 x 2^22 + 2^27 + 2^28 + 2^30 = 0x58C00005; 1.5 = 0x3FC00000; 0.25 = 0x3E800000.
  EXPECT_EQ(Hex(bytes), "04 03 02 01 05 00 C0 58 00 00 C0 3F 00 00 80 3E EE EE EE EE EE EE");
  EXPECT_EQ(WriteScanIndex(std::vector<ScanIndexRecord>(20)).size(), 440U);
}

TEST(ScanIndexWriterTest, LongRecordHas8BytesMore) {
  const FileBytes bytes = WriteScanIndex({{.pointCount = 1}, {.pointCount = 2}}, 30);
  ASSERT_EQ(bytes.size(), 60U);
  EXPECT_EQ(Hex(bytes, 22, 16), "EE EE EE EE EE EE EE EE 00 00 00 00 02 00 00 00");
}

TEST(ScanIndexWriterTest, PackedWordFieldsKeepToTheirBits) {
  const auto word = [](const ScanIndexRecord& record) { return Hex(WriteScanIndex({record}), 4, 4); };
  EXPECT_EQ(word({.pointCount = 0x7FFFFF}), "FF FF 3F 00");
  EXPECT_EQ(word({.segment = 0x3F}), "00 00 C0 07");
  EXPECT_EQ(word({.centroidState = CentroidState::kCentroid}), "00 00 00 08");
  EXPECT_EQ(word({.centroidState = CentroidState::kProfile}), "00 00 00 18");
  EXPECT_EQ(word({.preCalibrated = true}), "00 00 00 40");
  EXPECT_EQ(word({.pointCount = 9, .packedWord = 0xA0000001}), "01 00 00 A0");
}

TEST(ScanStatisticsWriterTest, DescriptorsHave48BytesFrom32On) {
  const FileBytes bytes = WriteScanStatistics({{}, {}});
  // Header size 32 + 7 x 48 = 368 = 0x170; version 1; the last item ends at 25 = 0x19; 7 items.
  EXPECT_EQ(Hex(bytes, 0, 9), "70 01 01 00 19 00 07 00 EE");
  EXPECT_EQ(Hex(bytes, 31, 8), "EE 3E 00 EE EE 04 00 EE");  // item 62 at offset 4
  EXPECT_EQ(Hex(bytes, 79, 8), "EE 4D 00 EE EE 08 00 EE");  // item 77 at offset 8
  EXPECT_EQ(Hex(bytes, 320, 6), "67 00 EE EE 18 00");       // item 103 at offset 24
  EXPECT_EQ(bytes.size(), 368U + 2 * 25);
}

TEST(ScanStatisticsWriterTest, ItemsStandWhereTheirDescriptorsSay) {
  const FileBytes bytes = WriteScanStatistics({{},
                                               {.firstBytes = 0x04030201,
                                                .auxValue = 1.5F,
                                                .precursorMass = 556.25F,
                                                .precursorFlags = 1,
                                                .word80 = 0x1234,
                                                .temperatureValid = -1,
                                                .temperature = 25,
                                                .temperatureCoefficient = 2}});
  EXPECT_EQ(Hex(bytes, 368 + 25),
            "01 02 03 04 00 00 C0 3F 00 10 0B 44 01 00 34 12 00 00 C8 41 00 00 00 40 FF");  // 25 = 0x41C80000
}

TEST(ScanStatisticsWriterTest, LayoutCanBeChosenFreely) {
  const FileBytes bytes =
      WriteScanStatistics({{.precursorFlags = 0x0102}, {.precursorFlags = 0x0304}},
                          {.items = {{79, 2}, {999, 40}}, .version = 2, .headerSize = 130, .recordSize = 6});
  EXPECT_EQ(Hex(bytes, 0, 8), "82 00 02 00 06 00 02 00");
  EXPECT_EQ(Hex(bytes, 130), "00 00 02 01 EE EE 00 00 04 03 EE EE");
  EXPECT_EQ(Hex(WriteScanStatistics({}, {.items = {}, .itemCount = 3})).substr(0, 23),
            "20 00 01 00 04 00 03 00");
}

TEST(ScanStatisticsWriterTest, ItemBeyondTheRecordIsLeftOut) {
  const StatisticsLayout fits = {.items = {{77, 4}}, .recordSize = 8};
  const StatisticsLayout reachesOut = {.items = {{77, 5}}, .recordSize = 8};
  EXPECT_EQ(Hex(WriteScanStatistics({{.precursorMass = 2}}, fits), 80), "00 00 00 00 00 00 00 40");
  EXPECT_EQ(Hex(WriteScanStatistics({{.precursorMass = 2}}, reachesOut), 80), "00 00 00 00 EE EE EE EE");
}

TEST(ScanStatisticsWriterTest, ItemsCanBeMissing) {
  EXPECT_EQ(AllItems().size(), 7U);
  const std::vector<StatisticsItem> items = AllItemsBut({77, 104});
  ASSERT_EQ(items.size(), 5U);
  for (const StatisticsItem& item : items) EXPECT_TRUE(item.code != 77 && item.code != 104);
}

TEST(StoredPointsTest, Format0) {
  // 1 x 2^11 + 3 x 2^3 + 1 = 2073 = 0x819
  EXPECT_EQ(Hex(EncodePoints(std::vector<StoredPoint0>{{1, 3, 1}})), "19 08 00 00");
  EXPECT_EQ(IntensityOf(StoredPoint0{1, 3, 1}), 12.0);
}

TEST(StoredPointsTest, Format1OddCountIsFilledUp) {
  // Words 1 x 8 + 2 = 0x0A and 3 x 8 = 0x18; the second mass is split after its low byte.
  EXPECT_EQ(Hex(EncodePoints(std::vector<StoredPoint1>{{0x123456, 1, 2}, {0xABCDEF, 3, 0}, {1, 0x1FFF, 7}})),
            "0A 00 18 00 56 34 12 EF CD AB FF FF 00 00 01 00 00 00 00 00");
  EXPECT_EQ(IntensityOf(StoredPoint1{0, 1, 2}), 16.0);
}

TEST(StoredPointsTest, Format2) {
  // 5 x 8 + 3 = 43 = 0x2B
  EXPECT_EQ(Hex(EncodePoints(std::vector<StoredPoint2>{{5, 3}, {0x1FFF, 7}})), "2B 00 FF FF");
  EXPECT_EQ(IntensityOf(StoredPoint2{5, 3}), 320.0);
}

TEST(StoredPointsTest, Format4GroupsOfFour) {
  EXPECT_EQ(Hex(EncodePoints(std::vector<StoredPoint4>{{1, 3}, {-2, 15}, {3, 0}, {4, 1}, {5, 2}})),
            "01 00 FE FF 03 00 04 00 F3 10 05 00 EE EE EE EE EE EE E2 EE");
  EXPECT_EQ(IntensityOf(StoredPoint4{-2, 15}), -2147483648.0);  // -2 x 4^15
}

TEST(StoredPointsTest, Format5GroupsOfTwo) {
  EXPECT_EQ(Hex(EncodePoints(std::vector<StoredPoint5>{{1, 3}, {-2, 15}, {3, 0}})),
            "01 00 FE FF EE EE EE EE F3 EE 03 00 EE EE EE EE EE EE E0 EE");
}

TEST(StoredPointsTest, Format8) {
  // 1280 x 16 + 2 = 0x5002
  EXPECT_EQ(Hex(EncodePoints(std::vector<StoredPoint8>{{1280, -5, 2}})), "FB FF 02 50 00 00");
  EXPECT_EQ(IntensityOf(StoredPoint8{1280, -5, 2}), -80.0);
}

TEST(StoredPointsTest, Format9) {
  // 0x400000 x 2^9 + 9 x 16 + 1 = 0x80000091
  EXPECT_EQ(Hex(EncodePoints(std::vector<StoredPoint9>{{9, 0x400000, 100, 1}})), "64 00 91 00 00 80");
  EXPECT_EQ(IntensityOf(StoredPoint9{9, 0x400000, 100, 1}), 400.0);
}

TEST(StoredPointsTest, FloatWord) {
  EXPECT_EQ(PackFloatWord({.magnitude = 1, .exponent = 1}), 4194305U);
  EXPECT_EQ(IntensityOf(StoredFloat{.magnitude = 1, .exponent = 1}), 1.0 / 1048576);
  EXPECT_EQ(PackFloatWord({.magnitude = 1, .negative = true}), 2097153U);
  EXPECT_EQ(IntensityOf(StoredFloat{.magnitude = 1, .negative = true}), -1.0 / 2097152);
  EXPECT_EQ(PackFloatWord({.magnitude = 0x1FFFFF, .exponent = 63, .topBits = 5}), 0x5FDFFFFFU);
}

TEST(StoredPointsTest, Formats11And14HaveNoMasses) {
  EXPECT_EQ(Hex(EncodePoints(std::vector<StoredPoint11>{{{1, 1}}, {{1, 0, true}}})),
            "01 00 40 00 01 00 20 00");
  EXPECT_EQ(Hex(EncodePoints(std::vector<StoredPoint14>{{{1, 1}}})), "01 00 40 00 EE EE EE EE EE EE EE EE");
}

TEST(StoredPointsTest, Formats12And13EndWithTheMass) {
  // 9 x 2^27 + 2^26 = 0x4C000000
  EXPECT_EQ(Hex(EncodePoints(std::vector<StoredPoint12>{{9, 0x4000000, {1, 1}}})), "01 00 40 00 00 00 00 4C");
  EXPECT_EQ(Hex(EncodePoints(std::vector<StoredPoint13>{{31, 0x7FFFFFF, {1, 1}}})),
            "01 00 40 00 FF FF FF FF EE EE EE EE");
}

TEST(NearestPointsTest, FixedMassesAreRounded) {
  const auto format0 = NearestPoint<StoredPoint0>({100.004, 256});  // 12800.5 and 256 = 64 x 4
  EXPECT_EQ(format0.mass, 12801U);
  EXPECT_EQ(format0.mantissa, 64U);
  EXPECT_EQ(format0.exponent, 1U);
  EXPECT_EQ(NearestPoint<StoredPoint1>({100.0004, 8191}).mass, 102400U);  // 102400.4
  EXPECT_EQ(NearestPoint<StoredPoint1>({100.0004, 8191}).exponent, 0U);
  EXPECT_EQ(NearestPoint<StoredPoint8>({1000, -80}).mass, 128000U);
  EXPECT_EQ(NearestPoint<StoredPoint8>({1000, -80}).mantissa, -80);
}

TEST(NearestPointsTest, Format9MassUsesAllBitsOfItsMantissa) {
  const auto at256 = NearestPoint<StoredPoint9>({256, 32768});  // 2^9 x 1/2; 32768 = 8192 x 4
  EXPECT_EQ(at256.massExponent, 9U);
  EXPECT_EQ(at256.massMantissa, 0x400000U);
  EXPECT_EQ(at256.mantissa, 8192);
  EXPECT_EQ(at256.exponent, 1U);
  const auto below512 = NearestPoint<StoredPoint9>({511.99999999, -32768});
  EXPECT_EQ(below512.massExponent, 10U);
  EXPECT_EQ(below512.massMantissa, 0x400000U);
  EXPECT_EQ(below512.mantissa, -32768);
  EXPECT_EQ(below512.exponent, 0U);
  EXPECT_EQ(NearestPoint<StoredPoint9>({0.25, 1}).massExponent, 0U);
  EXPECT_EQ(NearestPoint<StoredPoint9>({0.25, 1}).massMantissa, 0x200000U);
}

TEST(NearestPointsTest, Format12IntensityIsAFloat) {
  const auto point = NearestPoint<StoredPoint12>({256, -3});  // 3 = 2^2 x 3/4
  EXPECT_EQ(point.massExponent, 9U);
  EXPECT_EQ(point.massMantissa, 0x4000000U);
  EXPECT_EQ(point.intensity.exponent, 2U);
  EXPECT_EQ(point.intensity.magnitude, 0x180000U);
  EXPECT_TRUE(point.intensity.negative);
}

TEST(NearestPointsTest, UnreachableValuesGiveTheNearestThatIs) {
  EXPECT_EQ(NearestPoint<StoredPoint0>({1e9, 1e9}).mass, 0x1FFFFFU);
  EXPECT_EQ(IntensityOf(NearestPoint<StoredPoint0>({1e9, 1e9})), 255.0 * 16384);
  EXPECT_EQ(IntensityOf(NearestPoint<StoredPoint0>({1, -7})), 0.0);
  EXPECT_EQ(IntensityOf(NearestPoint<StoredPoint9>({1, 1e30})), 32767.0 * 1073741824);
  EXPECT_EQ(NearestIntensityWord(320), 320U * 8);
  EXPECT_EQ(NearestIntensityWord(8192), 2048U * 8 + 1);
}

TEST(TraceWriterTest, AnalogFiles) {
  const FileBytes names = WriteAnalogsInf({"System Pressure", ""});
  ASSERT_EQ(names.size(), 170U);
  EXPECT_EQ(Hex(names, 0, 8), "EE EE EE EE 53 79 73 74");
  EXPECT_EQ(Hex(names, 84, 6), "00 EE EE EE EE 00");
  EXPECT_EQ(BytesToText(WriteAnalogsInf({std::string(100, 'x')})).substr(4), std::string(81, 'x'));
  EXPECT_EQ(Hex(WriteAnalogsDat({{1.5F, {PackIntensityWord(5, 3), 0x1234}}})), "00 00 C0 3F 2B 00 34 12");
}

TEST(TraceWriterTest, ChromatogramFiles) {
  const FileBytes names = WriteChromsInf({"TIC"});
  ASSERT_EQ(names.size(), 8U + 85);
  EXPECT_EQ(Hex(names, 0, 16), "08 00 01 00 55 00 02 00 EE EE EE EE 54 49 43 00");
  EXPECT_EQ(Hex(WriteChroDat({{0.5F, 1.5F}})), "08 00 01 00 08 00 02 00 00 00 00 3F 00 00 C0 3F");
  EXPECT_EQ(Hex(WriteChroDat({}, {.headerSize = 10, .second = 2, .recordSize = 9, .fourth = 3})),
            "0A 00 02 00 09 00 03 00 EE EE");
}

RawDirectoryBuilder TwoFunctions() {
  RawDirectoryBuilder raw;
  raw.functions.resize(2);
  raw.functions[0].scans = {ScanOf<StoredPoint9>(0.25F, {{9, 0x400000, 100, 1}}),
                            ScanFrom<StoredPoint9>(0.5F, {{100, 7}, {200, 9}})};
  raw.functions[1].statistics = StatisticsLayout();
  raw.processed[4].scans = {{.data = HexToBytes("01 02")}};
  raw.history = {{.processNumber = 4}};
  raw.labels = {CreatorLine("4.1")};
  raw.analogNames = {"Flow"};
  raw.chroms = {{.name = "TIC"}};
  return raw;
}

std::vector<std::string> Names(const RawDirectoryBuilder& raw) {
  std::vector<std::string> names;
  for (const auto& [name, bytes] : raw.Files()) names.push_back(name);
  return names;
}

TEST(RawDirectoryBuilderTest, WritesTheGivenFiles) {
  EXPECT_EQ(Names({}), (std::vector<std::string>{"_FUNCTNS.INF", "_HEADER.TXT"}));
  EXPECT_EQ(Names(TwoFunctions()),
            (std::vector<std::string>{"_ANALOGS.DAT", "_ANALOGS.INF", "_CHRO001.DAT", "_CHROMS.INF",
                                      "_EXTERN.INF", "_FUNC001.DAT", "_FUNC001.IDX", "_FUNC002.DAT",
                                      "_FUNC002.IDX", "_FUNC002.STS", "_FUNCTNS.INF", "_HEADER.TXT",
                                      "_HISTORY.INF", "_PROC004.DAT", "_PROC004.IDX"}));
}

TEST(RawDirectoryBuilderTest, LowerCaseNamesOnRequest) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.spelling = Spelling::kLowerCase;
  EXPECT_EQ(Names(raw),
            (std::vector<std::string>{"_func001.dat", "_func001.idx", "_functns.inf", "_header.txt"}));
}

TEST(RawDirectoryBuilderTest, IndexDescribesTheData) {
  const TempDirectory directory = TwoFunctions().Build("two.raw");
  EXPECT_EQ(directory.Path().filename(), "two.raw");
  EXPECT_EQ(directory.Read("_FUNC001.DAT").size(), 18U);
  const FileBytes index = directory.Read("_FUNC001.IDX");
  ASSERT_EQ(index.size(), 44U);
  // One point from 0 on, 400 = 0x43C80000 in all, at 0.25; two points from 6 on, 16 = 0x41800000, at 0.5.
  EXPECT_EQ(Hex(index, 0, 16), "00 00 00 00 01 00 00 00 00 00 C8 43 00 00 80 3E");
  EXPECT_EQ(Hex(index, 22, 16), "06 00 00 00 02 00 00 00 00 00 80 41 00 00 00 3F");
  EXPECT_EQ(Hex(directory.Read("_PROC004.DAT")), "01 02");
  EXPECT_EQ(BytesToText(directory.Read("_HEADER.TXT")),
            "$$ Version: 01.00\r\n$$ Acquired Name: acquisition\r\n");
}

}  // namespace
}  // namespace zrml
