#include "masslynx/history.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "masslynx/directory_files.h"
#include "tests/masslynx/truncation.h"
#include "tests/support/history_writer.h"
#include "tests/support/temp_directory.h"

namespace zrml::masslynx {
namespace {

using Chain = std::vector<std::uint16_t>;

constexpr std::size_t kHeaderSize = 132;
constexpr std::size_t kEntrySize = 123;

constexpr std::uint16_t kCombined = 2;
constexpr std::uint16_t kSmoothed = 3;
constexpr std::uint16_t kCentroided = 4;

// Type codes of the raw functions 1, 2 and 3, which processed functions inherit.
constexpr int kTypes[] = {18, 16, 6};

class HistoryTest : public testing::Test {
 protected:
  void WriteSteps(const std::vector<HistoryStep>& steps,
                  const HistoryFunctionNumbers& numbers = NumbersInOrder()) const {
    directory_.Write("_HISTORY.INF", WriteHistory(steps, numbers));
  }
  void WriteData(std::initializer_list<const char*> names) const {
    for (const char* const name : names) directory_.WriteText(name, "");
  }

  static std::vector<FunctionRecord> RawFunctions() {
    std::vector<FunctionRecord> functions;
    for (const int type : kTypes) {
      FunctionRecord& function = functions.emplace_back();
      function.number = static_cast<std::uint16_t>(functions.size());
      function.typeCode = type;
    }
    return functions;
  }

  /// The records appended to the three raw functions.
  std::vector<FunctionRecord> Appended() const {
    std::vector<FunctionRecord> functions = RawFunctions();
    AppendProcessedFunctions(directory_.SystemPath(), functions);
    EXPECT_GE(functions.size(), std::size(kTypes));
    functions.erase(functions.begin(), functions.begin() + std::size(kTypes));
    return functions;
  }
  std::vector<std::uint16_t> AppendedNumbers() const {
    std::vector<std::uint16_t> numbers;
    for (const FunctionRecord& function : Appended()) numbers.push_back(function.number);
    return numbers;
  }

  static void ExpectProcessed(const FunctionRecord& function, std::uint16_t number, int typeCode,
                              const Chain& chain) {
    EXPECT_TRUE(function.processed);
    EXPECT_EQ(function.number, number);
    EXPECT_EQ(function.typeCode, typeCode);
    EXPECT_EQ(function.processChain, chain);
  }

  TempDirectory directory_;
};

using Numbers = std::vector<std::uint16_t>;

// Two raw functions that one process has merged into one file.
TEST_F(HistoryTest, EntriesOfOneProcessNumberAreAFunctionEach) {
  WriteSteps({{.processNumber = 1, .rawFunctionNumber = 1, .processCode = kCombined},
              {.processNumber = 1, .rawFunctionNumber = 2, .processCode = kSmoothed},
              {.processNumber = 2, .derivedFrom = 1, .processCode = kCentroided}});
  WriteData({"_PROC001.DAT", "_PROC002.DAT"});
  const std::vector<FunctionRecord> appended = Appended();
  ASSERT_EQ(appended.size(), 3u);
  ExpectProcessed(appended[0], 1, kTypes[0], {kCombined});
  ExpectProcessed(appended[1], 1, kTypes[1], {kSmoothed});
  ExpectProcessed(appended[2], 2, kTypes[0], {kCombined, kCentroided});
}

TEST_F(HistoryTest, OfRepeatedProcessNumbersTheFirstEightAreKept) {
  std::vector<HistoryStep> steps(20, {.processNumber = 1, .rawFunctionNumber = 1, .processCode = kCombined});
  steps.push_back({.processNumber = 2, .rawFunctionNumber = 2, .processCode = kCombined});
  WriteSteps(steps);
  WriteData({"_PROC001.DAT", "_PROC002.DAT"});
  EXPECT_EQ(AppendedNumbers(), (Numbers{1, 1, 1, 1, 1, 1, 1, 1, 1, 2}));
}

TEST_F(HistoryTest, MissingFileAppendsNothing) {
  WriteData({"_PROC001.DAT"});
  EXPECT_EQ(AppendedNumbers(), Numbers{});
}

// By hand: two 16-bit words, the table with raw function 2 at position 0, 32 words, one entry.
TEST_F(HistoryTest, ReadsAnEntry) {
  std::string hex = "EE EE EE EE  02 00";
  for (int i = 1; i < 32; ++i) hex += " 00 00";
  for (int i = 0; i < 32; ++i) hex += " EE EE";
  hex +=
      "05 01"                    //  0: process number 0x0105 = 261
      "00 00"                    //  2: derived from a raw function
      "02 00"                    //  4: raw function number 2
      "EE EE EE EE EE EE EE EE"  //  6: four kept words
      "EE EE EE EE EE EE"        // 14: skipped
      "1B 00";                   // 20: process code 27
  for (int i = 0; i < 101; ++i) hex += " EE";
  directory_.Write("_HISTORY.INF", HexToBytes(hex));
  WriteData({"_PROC261.DAT"});

  const std::vector<FunctionRecord> appended = Appended();
  ASSERT_EQ(appended.size(), 1u);
  ExpectProcessed(appended[0], 261, kTypes[0], {27});
}

TEST_F(HistoryTest, ProcessedFunctionIsACopyOfItsRawFunction) {
  WriteSteps({{.processNumber = 4, .rawFunctionNumber = 2, .processCode = kCombined}});
  WriteData({"_PROC004.DAT"});
  std::vector<FunctionRecord> functions = RawFunctions();
  functions[1].ionMode = 9;
  functions[1].dataFormat = 8;
  functions[1].scanTime = 0.25F;
  functions[1].setMass = 500.5F;
  functions[1].defaultScanValue = 35;
  functions[1].startMasses = {50};
  functions[1].staticCal.coefficients = {0.5, 1};
  functions[1].massRangeKnown = true;
  functions[1].lowMass = 50;
  functions[1].highMass = 60;
  AppendProcessedFunctions(directory_.SystemPath(), functions);

  ASSERT_EQ(functions.size(), 4u);
  EXPECT_FALSE(functions[1].processed);
  EXPECT_EQ(functions[1].number, 2);
  EXPECT_TRUE(functions[1].processChain.empty());
  const FunctionRecord& processed = functions[3];
  ExpectProcessed(processed, 4, kTypes[1], {kCombined});
  EXPECT_EQ(processed.ionMode, 9);
  EXPECT_EQ(processed.dataFormat, 8);
  EXPECT_EQ(processed.scanTime, 0.25F);
  EXPECT_EQ(processed.setMass, 500.5F);
  EXPECT_EQ(processed.defaultScanValue, 35);
  EXPECT_EQ(processed.startMasses, std::vector<float>{50});
  EXPECT_EQ(processed.staticCal.coefficients, (std::vector<double>{0.5, 1}));
  EXPECT_TRUE(processed.massRangeKnown);
  EXPECT_EQ(processed.lowMass, 50.0);
  EXPECT_EQ(processed.highMass, 60.0);
}

TEST_F(HistoryTest, EntryWithoutDataFileIsSkipped) {
  WriteSteps({{.processNumber = 1}, {.processNumber = 2}, {.processNumber = 3}});
  WriteData({"_PROC001.DAT", "_PROC002.DAT", "_PROC003.DAT"});
  EXPECT_EQ(AppendedNumbers(), (Numbers{1, 2, 3}));
  directory_.Remove("_PROC002.DAT");
  EXPECT_EQ(AppendedNumbers(), (Numbers{1, 3}));
}

TEST_F(HistoryTest, LowerCaseNamesAreFound) {
  directory_.Write("_history.inf", WriteHistory({{.processNumber = 1}}));
  WriteData({"_proc001.dat"});
  EXPECT_EQ(AppendedNumbers(), Numbers{1});
}

TEST_F(HistoryTest, OtherFilesOfTheProcessedFunctionDoNotCount) {
  WriteSteps({{.processNumber = 1}});
  WriteData({"_PROC001.IDX", "_PROC001.STS", "_FUNC001.DAT"});
  EXPECT_EQ(AppendedNumbers(), Numbers{});
}

// --- chains ---

TEST_F(HistoryTest, ChainIsOldestFirst) {
  WriteSteps({{.processNumber = 1, .processCode = kCombined},
              {.processNumber = 2, .derivedFrom = 1, .processCode = kSmoothed},
              {.processNumber = 3, .derivedFrom = 2, .processCode = kCentroided}});
  WriteData({"_PROC001.DAT", "_PROC002.DAT", "_PROC003.DAT"});
  const std::vector<FunctionRecord> appended = Appended();
  ASSERT_EQ(appended.size(), 3u);
  ExpectProcessed(appended[0], 1, kTypes[0], {kCombined});
  ExpectProcessed(appended[1], 2, kTypes[0], {kCombined, kSmoothed});
  ExpectProcessed(appended[2], 3, kTypes[0], {kCombined, kSmoothed, kCentroided});
}

TEST_F(HistoryTest, SourceMayFollowInTheFile) {
  WriteSteps({{.processNumber = 2, .derivedFrom = 1, .processCode = kSmoothed},
              {.processNumber = 1, .processCode = kCombined}});
  WriteData({"_PROC002.DAT"});
  const std::vector<FunctionRecord> appended = Appended();
  ASSERT_EQ(appended.size(), 1u);
  ExpectProcessed(appended[0], 2, kTypes[0], {kCombined, kSmoothed});
}

TEST_F(HistoryTest, ChainLeadsThroughEntriesWithoutDataFile) {
  WriteSteps({{.processNumber = 1, .rawFunctionNumber = 3, .processCode = kCombined},
              {.processNumber = 2, .derivedFrom = 1, .processCode = kSmoothed}});
  WriteData({"_PROC002.DAT"});
  const std::vector<FunctionRecord> appended = Appended();
  ASSERT_EQ(appended.size(), 1u);
  ExpectProcessed(appended[0], 2, kTypes[2], {kCombined, kSmoothed});
}

// The raw function is named where the chain ends; what later entries say about it does not matter.
TEST_F(HistoryTest, RawFunctionIsThatOfTheChainsEnd) {
  WriteSteps({{.processNumber = 1, .rawFunctionNumber = 2, .processCode = kCombined},
              {.processNumber = 2, .derivedFrom = 1, .rawFunctionNumber = 3, .processCode = kSmoothed}});
  WriteData({"_PROC002.DAT"});
  const std::vector<FunctionRecord> appended = Appended();
  ASSERT_EQ(appended.size(), 1u);
  ExpectProcessed(appended[0], 2, kTypes[1], {kCombined, kSmoothed});
}

TEST_F(HistoryTest, CodesWithoutTextStayInTheChain) {
  WriteSteps({{.processNumber = 1, .processCode = 0},
              {.processNumber = 2, .derivedFrom = 1, .processCode = 0xFFFF}});
  WriteData({"_PROC002.DAT"});
  const std::vector<FunctionRecord> appended = Appended();
  ASSERT_EQ(appended.size(), 1u);
  ExpectProcessed(appended[0], 2, kTypes[0], {0, 0xFFFF});
}

TEST_F(HistoryTest, ChainThatPointsNowhereEndsThere) {
  WriteSteps({{.processNumber = 2, .derivedFrom = 9, .rawFunctionNumber = 2, .processCode = kSmoothed}});
  WriteData({"_PROC002.DAT"});
  const std::vector<FunctionRecord> appended = Appended();
  ASSERT_EQ(appended.size(), 1u);
  ExpectProcessed(appended[0], 2, kTypes[1], {kSmoothed});
}

TEST_F(HistoryTest, EntryDerivedFromItselfEndsThere) {
  WriteSteps({{.processNumber = 2, .derivedFrom = 2, .rawFunctionNumber = 2, .processCode = kSmoothed}});
  WriteData({"_PROC002.DAT"});
  const std::vector<FunctionRecord> appended = Appended();
  ASSERT_EQ(appended.size(), 1u);
  ExpectProcessed(appended[0], 2, kTypes[1], {kSmoothed});
}

// 1 comes from 2, 2 from 3 and 3 from 1: each walk ends before it returns to its start.
TEST_F(HistoryTest, LoopingChainEndsBeforeItsFirstRepeat) {
  WriteSteps({{.processNumber = 1, .derivedFrom = 2, .rawFunctionNumber = 1, .processCode = kCombined},
              {.processNumber = 2, .derivedFrom = 3, .rawFunctionNumber = 2, .processCode = kSmoothed},
              {.processNumber = 3, .derivedFrom = 1, .rawFunctionNumber = 3, .processCode = kCentroided}});
  WriteData({"_PROC001.DAT", "_PROC002.DAT", "_PROC003.DAT"});
  const std::vector<FunctionRecord> appended = Appended();
  ASSERT_EQ(appended.size(), 3u);
  ExpectProcessed(appended[0], 1, kTypes[2], {kCentroided, kSmoothed, kCombined});
  ExpectProcessed(appended[1], 2, kTypes[0], {kCombined, kCentroided, kSmoothed});
  ExpectProcessed(appended[2], 3, kTypes[1], {kSmoothed, kCombined, kCentroided});
}

// 3 leads into the loop of 1 and 2 without being part of it.
TEST_F(HistoryTest, ChainThatRunsIntoALoopEnds) {
  WriteSteps({{.processNumber = 1, .derivedFrom = 2, .rawFunctionNumber = 1, .processCode = kCombined},
              {.processNumber = 2, .derivedFrom = 1, .rawFunctionNumber = 2, .processCode = kSmoothed},
              {.processNumber = 3, .derivedFrom = 1, .rawFunctionNumber = 3, .processCode = kCentroided}});
  WriteData({"_PROC003.DAT"});
  const std::vector<FunctionRecord> appended = Appended();
  ASSERT_EQ(appended.size(), 1u);
  ExpectProcessed(appended[0], 3, kTypes[1], {kSmoothed, kCombined, kCentroided});
}

// A thousand entries, each derived from the one before: the length of a single chain is not limited.
TEST_F(HistoryTest, LongChainIsKeptWhole) {
  std::vector<HistoryStep> steps(1000);
  Chain chain;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const auto number = static_cast<std::uint16_t>(i + 1);
    steps[i] = {.processNumber = number, .derivedFrom = static_cast<std::uint16_t>(i), .processCode = number};
    chain.push_back(number);
  }
  steps[0].rawFunctionNumber = 3;
  WriteSteps(steps);
  WriteData({"_PROC1000.DAT"});
  const std::vector<FunctionRecord> appended = Appended();
  ASSERT_EQ(appended.size(), 1u);
  ExpectProcessed(appended[0], 1000, kTypes[2], chain);
}

// With every step of a chain listed, 1,447 functions have 1,047,628 steps together, and one more would exceed
// 2^20.
TEST_F(HistoryTest, ChainsThatAreTooLongTogetherLeaveTheRestOut) {
  std::vector<HistoryStep> steps(1450);
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const auto number = static_cast<std::uint16_t>(i + 1);
    steps[i] = {.processNumber = number, .derivedFrom = static_cast<std::uint16_t>(i)};
    directory_.WriteText(platform::ToNativePath(ProcessedFileName(number, L"DAT")), "");
  }
  WriteSteps(steps);
  EXPECT_EQ(Appended().size(), 1447u);
}

// --- the raw function's position ---

HistoryFunctionNumbers Table(std::initializer_list<std::uint16_t> numbers) {
  HistoryFunctionNumbers table{};
  std::copy(numbers.begin(), numbers.end(), table.begin());
  return table;
}

TEST_F(HistoryTest, RawFunctionNumberIsLookedUpInTheTable) {
  const HistoryFunctionNumbers table = Table({30, 10, 20});
  WriteData({"_PROC001.DAT"});
  const struct {
    std::uint16_t number;
    int typeCode;
  } cases[] = {{30, kTypes[0]}, {10, kTypes[1]}, {20, kTypes[2]}};
  for (const auto& expected : cases) {
    WriteSteps({{.processNumber = 1, .rawFunctionNumber = expected.number}}, table);
    const std::vector<FunctionRecord> appended = Appended();
    ASSERT_EQ(appended.size(), 1u) << expected.number;
    EXPECT_EQ(appended[0].typeCode, expected.typeCode) << expected.number;
  }
}

TEST_F(HistoryTest, TableGoesBeforeTheNumberItself) {
  WriteSteps({{.processNumber = 1, .rawFunctionNumber = 1}}, Table({3, 2, 1}));
  WriteData({"_PROC001.DAT"});
  const std::vector<FunctionRecord> appended = Appended();
  ASSERT_EQ(appended.size(), 1u);
  EXPECT_EQ(appended[0].typeCode, kTypes[2]);
}

TEST_F(HistoryTest, NumberThatIsNotInTheTableMeansItsOwnPosition) {
  WriteData({"_PROC001.DAT"});
  for (const std::uint16_t number : {std::uint16_t{1}, std::uint16_t{2}, std::uint16_t{3}}) {
    WriteSteps({{.processNumber = 1, .rawFunctionNumber = number}}, Table({}));
    const std::vector<FunctionRecord> appended = Appended();
    ASSERT_EQ(appended.size(), 1u) << number;
    EXPECT_EQ(appended[0].typeCode, kTypes[number - 1]) << number;
  }
}

TEST_F(HistoryTest, EntryWithoutARawFunctionIsSkipped) {
  WriteData({"_PROC001.DAT", "_PROC002.DAT"});
  for (const std::uint16_t number : {std::uint16_t{4}, std::uint16_t{32}, std::uint16_t{0xFFFF}}) {
    WriteSteps(
        {{.processNumber = 1, .rawFunctionNumber = number}, {.processNumber = 2, .rawFunctionNumber = 3}},
        Table({1}));
    EXPECT_EQ(AppendedNumbers(), Numbers{2}) << number;
  }
}

// With a table of ones, raw function number 0 is not in the table and has no position.
TEST_F(HistoryTest, RawFunctionNumberZeroIsSkipped) {
  HistoryFunctionNumbers ones;
  ones.fill(1);
  WriteData({"_PROC001.DAT"});
  WriteSteps({{.processNumber = 1, .rawFunctionNumber = 1}}, ones);
  EXPECT_EQ(AppendedNumbers(), Numbers{1});
  WriteSteps({{.processNumber = 1, .rawFunctionNumber = 0}}, ones);
  EXPECT_EQ(AppendedNumbers(), Numbers{});
}

// Position 31 is in the table but not in the list of three functions, and neither is number 40.
TEST_F(HistoryTest, TablePositionBeyondTheFunctionsIsSkipped) {
  HistoryFunctionNumbers numbers = NumbersInOrder();
  numbers[31] = 40;
  WriteSteps({{.processNumber = 1, .rawFunctionNumber = 40}}, numbers);
  WriteData({"_PROC001.DAT"});
  EXPECT_EQ(AppendedNumbers(), Numbers{});
}

TEST_F(HistoryTest, NoRawFunctionsGiveNoProcessedOnes) {
  WriteSteps({{.processNumber = 1}});
  WriteData({"_PROC001.DAT"});
  ASSERT_EQ(AppendedNumbers(), Numbers{1});
  std::vector<FunctionRecord> none;
  AppendProcessedFunctions(directory_.SystemPath(), none);
  EXPECT_TRUE(none.empty());
}

// --- damage ---

TEST_F(HistoryTest, TruncatedFileHoldsItsWholeEntries) {
  WriteSteps({{.processNumber = 1}, {.processNumber = 2, .rawFunctionNumber = 2}});
  WriteData({"_PROC001.DAT", "_PROC002.DAT"});
  TruncateAtEveryLength(directory_, "_HISTORY.INF", [&](std::size_t size) {
    Numbers expected;
    if (size >= kHeaderSize + kEntrySize) expected = {1};
    if (size == kHeaderSize + 2 * kEntrySize) expected = {1, 2};
    EXPECT_EQ(AppendedNumbers(), expected);
  });
}

TEST_F(HistoryTest, BytesAfterTheLastWholeEntryAreIgnored) {
  FileBytes bytes = WriteHistory({{.processNumber = 1}});
  bytes.resize(bytes.size() + kEntrySize - 1, std::byte{1});
  directory_.Write("_HISTORY.INF", bytes);
  WriteData({"_PROC001.DAT", "_PROC257.DAT"});  // 0x0101, were the rest an entry
  EXPECT_EQ(AppendedNumbers(), Numbers{1});
  bytes.push_back(std::byte{1});
  PatchU16(bytes, kHeaderSize + kEntrySize + 4, 1);  // of raw function 1
  directory_.Write("_HISTORY.INF", bytes);
  EXPECT_EQ(AppendedNumbers(), (Numbers{1, 257}));
}

}  // namespace
}  // namespace zrml::masslynx
