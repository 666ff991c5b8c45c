// Parquet files byte by byte, and how points become rows. Independent readers:
// tests/zrml/convert/parquet_test.mjs.
#include <cmath>
#include <cstring>
#include <limits>

#include "convert/hex.h"
#include "convert/parquet/compact_writer.h"
#include "convert/parquet/dictionary.h"
#include "convert/parquet/repeated_column.h"
#include "convert/parquet/run_encoder.h"
#include "convert/parquet/table_file.h"
#include "tests/convert/memory_conversion.h"

namespace zrml::convert::test {
namespace {

using parquet::Bounds;
using parquet::Chunk;
using parquet::Column;
using parquet::PlainNumber;
using parquet::PlainText;
using parquet::RepeatedColumn;
using parquet::RunEncoder;
using parquet::Type;

std::string Joined(const std::vector<std::string>& parts) {
  std::string joined;
  for (const std::string& part : parts) joined += part;
  return joined;
}

std::string HexOf(const std::string& text) { return Hex(std::as_bytes(std::span(text))); }

struct Run {
  std::uint32_t value;
  std::size_t count;
};

std::string Encoded(int bits, const std::vector<Run>& runs) {
  std::string out;
  RunEncoder encoder(bits, out);
  for (const Run& run : runs) encoder.Add(run.value, run.count);
  encoder.Finish();
  return HexOf(out);
}

// A run: twice its length, then the value. Packed: twice the number of groups and one, then the bits.
TEST(RunEncoderTest, RepeatsAreRunsAndOthersPacked) {
  EXPECT_EQ(Encoded(1, {}), "");
  EXPECT_EQ(Encoded(1, {{1, 8}}), "1001");
  EXPECT_EQ(Encoded(1, {{1, 7}}), "037f");
  EXPECT_EQ(Encoded(1, {{1, 100}}), "c80101");
  EXPECT_EQ(Encoded(9, {{300, 8}}), "102c01");
  // The example of the format's own page: 0 to 7 in three bits.
  EXPECT_EQ(Encoded(3, {{0, 1}, {1, 1}, {2, 1}, {3, 1}, {4, 1}, {5, 1}, {6, 1}, {7, 1}}), "0388c6fa");
}

// A group is filled up first: five zeros and three of the twelve ones, then nine.
TEST(RunEncoderTest, RunBeginsAfterAWholeGroup) {
  EXPECT_EQ(Encoded(1, {{0, 5}, {1, 12}}), "03e01201");
  EXPECT_EQ(Encoded(1, {{0, 5}, {1, 10}}), "05e07f");
  EXPECT_EQ(Encoded(2, {{3, 9}, {1, 1}, {2, 8}}),
            "1203"
            "05a9aa0200");
}

TEST(CompactWriterTest, LongListsAndNumbersOfBothSigns) {
  std::string out;
  parquet::CompactWriter writer(out);
  writer.Int32(1, -1);
  writer.Int64(2, 300);
  writer.Int32s(4, std::vector<std::int32_t>(15, 1));
  writer.End();
  EXPECT_EQ(HexOf(out),
            "1501"
            "16d804"
            "29f50f" +
                std::string("020202020202020202020202020202") + "00");
}

RepeatedColumn Filled(const Column& column, const std::vector<std::pair<std::string, std::size_t>>& values) {
  RepeatedColumn filled(column);
  for (const auto& [value, rows] : values) filled.Add(value, rows);
  return filled;
}

constexpr Column kScanColumn = {"scan", Type::kInt32, false};
constexpr Column kPolarityColumn = {"polarity", Type::kText, true};

std::string Int(double value) { return PlainNumber(Type::kInt32, value); }

// docs/parquet.md explains each of these bytes.
TEST(TableFileTest, TableOfThreeRows) {
  Text out;
  parquet::TableFile file({kScanColumn, kPolarityColumn}, out);
  file.Begin();
  const std::vector<Chunk> chunks = {
      Filled(kScanColumn, {{Int(1), 2}, {Int(2), 1}}).Finish(nullptr),
      Filled(kPolarityColumn, {{PlainText("up"), 1}, {"", 1}, {PlainText("up"), 1}}).Finish(nullptr)};
  file.AddRowGroup(chunks);
  file.End();
  const std::string version = "zrml version " ZRML_VERSION;
  const std::string columns = Joined({
      "50415231",  // PAR1
      // scan: the dictionary, then places in it
      "1504151015104c1504150000000100000002000000",
      "1500150615062c15061510150615060000010304",
      // polarity: the dictionary, then presence and places
      "1504150c150c4c150215000000020000007570",
      "1500151215122c15061510150615060000020000000305010300",
  });
  const std::string footer = Joined({
      // version; the schema's root, scan, polarity
      "1504",
      "193c4806736368656d61150400",
      "1502250018047363616e00",
      "150c25021808706f6c617269747925004c1c000000",
      // rows; one row group of two columns
      "1606",
      "191c192c",
      // scan and its statistics
      "26081c150219350006101918047363616e150016061652165226322608",
      "1c3600280402000000180401000000000000",
      // polarity and its statistics
      "265a1c150c1935000610191808706f6c617269747915001606165a165a268001265a",
      "1c36022802757018027570000000",
      // the row group's sizes
      "16ac011606260816ac0100",
      // what wrote it; the orders of both columns
      "28" + Hex(std::array{static_cast<std::byte>(version.size())}) + HexOf(version),
      "192c1c00001c000000",
  });
  const std::string size = HexOf(Int(static_cast<double>(footer.size() / 2)));
  EXPECT_EQ(HexOf(out.text), columns + footer + size + "50415231");
}

// Also where slots are taken again and again, and a value is the beginning of another.
TEST(DictionaryTest, EachValueOnceInItsOrder) {
  constexpr std::uint32_t kValues = 5000;
  parquet::Dictionary dictionary;
  EXPECT_EQ(dictionary.PlaceOf("a"), 0U);
  EXPECT_EQ(dictionary.PlaceOf("ab"), 1U);
  EXPECT_EQ(dictionary.PlaceOf("a"), 0U);
  for (int round = 0; round < 2; ++round) {
    for (std::uint32_t i = 0; i < kValues; ++i) EXPECT_EQ(dictionary.PlaceOf(Int(i)), i + 2);
  }
  EXPECT_EQ(dictionary.Count(), kValues + 2);
  EXPECT_EQ(dictionary.ValueAt(1), "ab");
  EXPECT_EQ(dictionary.ValueAt(300), Int(298));
  EXPECT_EQ(HexOf(dictionary.Bytes().substr(0, 11)), "6161620000000001000000");
}

TEST(RepeatedColumnTest, DictionaryOnlyWhereItIsShorter) {
  EXPECT_GT(Filled(kScanColumn, {{Int(7), 4}}).Finish(nullptr).dictionarySize, 0U);
  const Chunk each = Filled(kScanColumn, {{Int(7), 1}, {Int(8), 1}}).Finish(nullptr);
  EXPECT_EQ(each.dictionarySize, 0U);
  EXPECT_EQ(HexOf(each.pages),
            "150015101510"
            "2c1504150015061506"
            "0000"
            "0700000008000000");
}

TEST(RepeatedColumnTest, CompressedOnlyWhereThatIsShorter) {
  Deflater deflater(Deflater::Wrapper::kGzip);
  EXPECT_EQ(Filled(kScanColumn, {{Int(7), 1}}).Finish(&deflater).codec, parquet::Codec::kNone);
  RepeatedColumn counting(kScanColumn);
  for (int i = 0; i < 1000; ++i) counting.Add(Int(i), 1);
  const Chunk packed = counting.Finish(&deflater);
  EXPECT_EQ(packed.codec, parquet::Codec::kGzip);
  EXPECT_LT(packed.pages.size(), packed.plainSize);
  EXPECT_GT(packed.plainSize, 4000U);
}

TEST(RepeatedColumnTest, NothingButAbsentValues) {
  const Chunk chunk = Filled(kPolarityColumn, {{"", 9}}).Finish(nullptr);
  EXPECT_EQ(chunk.absent, 9U);
  EXPECT_TRUE(chunk.bounds.IsEmpty());
  EXPECT_EQ(HexOf(chunk.pages),
            "1500150c150c"
            "2c1512150015061506"
            "0000"
            "020000001200");
}

// Zeros have the sign that excludes neither.
TEST(BoundsTest, NanCountsForNothingAndZeroHasBothSigns) {
  Bounds bounds;
  bounds.Widen(Type::kDouble, PlainNumber(Type::kDouble, std::numeric_limits<double>::quiet_NaN()));
  EXPECT_TRUE(bounds.IsEmpty());
  bounds.Widen(Type::kDouble, PlainNumber(Type::kDouble, 0));
  EXPECT_EQ(bounds.Low(Type::kDouble), PlainNumber(Type::kDouble, -0.0));
  bounds.Widen(Type::kDouble, PlainNumber(Type::kDouble, -0.0));
  EXPECT_EQ(bounds.High(Type::kDouble), PlainNumber(Type::kDouble, 0.0));
  bounds.Widen(Type::kDouble, PlainNumber(Type::kDouble, -std::numeric_limits<double>::infinity()));
  EXPECT_EQ(bounds.Low(Type::kDouble), PlainNumber(Type::kDouble, -std::numeric_limits<double>::infinity()));
}

TEST(BoundsTest, TextIsComparedByItsBytesNotItsLength) {
  Bounds bounds;
  for (const char* const text : {"p2", "10", "9"}) bounds.Widen(Type::kText, PlainText(text));
  EXPECT_EQ(bounds.Low(Type::kText), "10");
  EXPECT_EQ(bounds.High(Type::kText), "p2");
}

template <class Number>
std::string BytesOf(const std::vector<Number>& numbers) {
  return {reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(Number)};
}

class ParquetTest : public ConvertTest {
 protected:
  // Not compressed.
  static Options AsParquet(const std::string& functions) { return As(Format::kParquet, Of(functions)); }

  // Each row group names each of its columns once; the schema does, too.
  static std::size_t GroupsOf(const std::string& file) { return Count(file, "isolation_upper") - 1; }
};

TEST_F(ParquetTest, NumbersHave32BitsWhereAllOfTheColumnSurviveThat) {
  Scan(0, 0).points = {{100.5, 200.25}, {1, 2}};
  Scan(0, 1).points = {{300.5}, {3}};
  ExpectHas(Converted(AsParquet("1")), BytesOf<float>({100.5F, 200.25F, 300.5F}));
  Scan(0, 1).points = {{300.1}, {3}};
  const std::string file = Converted(AsParquet("1"));
  ExpectHas(file, BytesOf<double>({100.5, 200.25, 300.1}));
  ExpectHas(file, BytesOf<float>({1, 2, 3}));
}

// The centroid of two equal samples is halfway between them: between two neighbours of single precision.
TEST_F(ParquetTest, NumbersThatAreWrittenDecideNotThoseOfTheSource) {
  const double next = 100 + 0x1p-17;
  Scan(0, 0).points = {{100, next, 300.1}, {8, 8, 0.1}};
  Scan(0, 0).isCentroided = false;
  Options options = AsParquet("1");
  options.selection.scans = NumberSet::Parse("1").value();
  options.selection.points.filter.mz = source::Range{0, 200};
  ExpectHas(Converted(options), BytesOf<float>({100, static_cast<float>(next)}));
  options.selection.points.centroidLevels = NumberSet();
  ExpectHas(Converted(options), BytesOf<double>({100 + 0x1p-18}));
}

TEST_F(ParquetTest, ProgressIsOfReadingAndOfWriting) {
  const std::size_t all = data_.functions[0].scans.size();
  Text out;
  std::vector<std::pair<std::uint64_t, std::uint64_t>> seen;
  const Hooks hooks = {
      .progress = [&](std::uint64_t done, std::uint64_t of) { seen.emplace_back(done, of); }};
  Convert(AsParquet("1"), out, 1, hooks);
  EXPECT_EQ(seen, (decltype(seen){{all, 2 * all}, {2 * all, 2 * all}}));
  seen.clear();
  Options options = AsParquet("1");
  options.arrays.masses = options.arrays.intensities = Precision::kDouble;
  Convert(options, out, 1, hooks);
  EXPECT_EQ(seen, (decltype(seen){{all, all}}));
}

TEST_F(ParquetTest, RequestedPrecisionIsKept) {
  Scan(0, 0).points = {{100.1, 200.25}, {1, 2}};
  Options options = AsParquet("1");
  options.selection.scans = NumberSet::Parse("1").value();
  options.arrays.masses = Precision::kSingle;
  options.arrays.intensities = Precision::kDouble;
  const std::string file = Converted(options);
  ExpectHas(file, BytesOf<float>({100.1F, 200.25F}));
  ExpectHas(file, BytesOf<double>({1, 2}));
}

TEST_F(ParquetTest, RowGroupsEndWithTheirFunctionAndWhenTheyAreFull) {
  EXPECT_EQ(GroupsOf(Converted(AsParquet("1"))), 1U);
  EXPECT_EQ(GroupsOf(Converted(AsParquet("1,2"))), 2U);
  constexpr std::size_t kMostRows = 1u << 20;
  Scan(0, 0).points = {std::vector<double>(kMostRows - 1, 100), std::vector<double>(kMostRows - 1, 1)};
  Scan(0, 1).points = {{100}, {1}};
  EXPECT_EQ(GroupsOf(Converted(AsParquet("1"))), 1U);
  Scan(0, 1).points = {{100, 101}, {1, 2}};
  EXPECT_EQ(GroupsOf(Converted(AsParquet("1"))), 2U);
  Scan(0, 0).points = {std::vector<double>(2 * kMostRows, 100), std::vector<double>(2 * kMostRows, 1)};
  EXPECT_EQ(GroupsOf(Converted(AsParquet("1"))), 3U);
}

TEST_F(ParquetTest, WorkersDoNotChangeTheFile) {
  for (int i = 0; i < 300; ++i) data_.functions[0].scans.push_back(Scan(0, 0));
  Scan(0, 7).points = {std::vector<double>(1u << 17, 100), std::vector<double>(1u << 17, 1)};
  Options options = AsParquet("1,2,4");
  options.arrays.isCompressed = true;
  const std::string file = Converted(options);
  EXPECT_EQ(Converted(options, 2), file);
  EXPECT_EQ(Converted(options, 5), file);
}

// By m/z, then bin.
TEST_F(ParquetTest, DriftBinsAreIonMobility) {
  FakeFunction& function = data_.functions[3];
  ASSERT_GT(function.binCount, 4);
  function.scans.resize(1);
  function.scans[0].bins = {{0, {{300, 400}, {1, 2}}}, {4, {{300}, {7}}}};
  const std::string file = Converted(AsParquet(std::to_string(function.info.id.number)));
  ExpectHas(file, BytesOf<float>({300, 300, 400}));
  ExpectHas(file, BytesOf<float>({1, 7, 2}));
  ExpectHas(file, BytesOf<float>({1, 5, 1}));
}

TEST_F(ParquetTest, ScansWithoutPointsHaveNoRowsButANumber) {
  for (FakeScan& scan : data_.functions[0].scans) scan.points = {};
  EXPECT_EQ(GroupsOf(Converted(AsParquet("1"))), 0U);
  data_.functions[0].scans.back().points = {{100}, {1}};
  const auto last = static_cast<double>(data_.functions[0].scans.size());
  const std::string scanPage =
      "150015081508"
      "2c1502150015061506"
      "0000" +
      HexOf(Int(last));
  EXPECT_EQ(HexOf(Converted(AsParquet("1")).substr(4, scanPage.size() / 2)), scanPage);
}

TEST_F(ParquetTest, LossesAreRefusedOrCounted) {
  Scan(0, 0).isUnreadable = true;
  ExpectError(AsParquet("1"), ErrorKind::kSourceDamaged, "cannot read scan 1 of function 1");
  Options options = AsParquet("1");
  options.isLossAllowed = true;
  Text out;
  const Result result = Convert(options, out);
  ASSERT_EQ(result.losses.size(), 1U);
  EXPECT_EQ(result.losses[0].numbers, std::vector<int>{1});
  EXPECT_EQ(result.spectra, data_.functions[0].scans.size());
}

TEST_F(ParquetTest, CanBeCancelledWhileItLooksAtThePoints) {
  int calls = 0;
  Text out;
  EXPECT_THROW(Convert(AsParquet("1"), out, 1, {.cancel = [&] { return ++calls > 6; }}), Cancelled);
  EXPECT_EQ(calls, 7);
  EXPECT_TRUE(out.text.empty());
}

}  // namespace
}  // namespace zrml::convert::test
