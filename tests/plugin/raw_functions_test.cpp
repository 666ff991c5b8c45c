#include "plugin/raw_functions.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zrml::plugin {
namespace {

using masslynx::FunctionRecord;

constexpr int kTofMs = 18;
constexpr int kDad = 12;

/// Functions of the given types, all with data, numbered from 1.
std::vector<FunctionRecord> Table(const std::vector<int>& types) {
  std::vector<FunctionRecord> functions;
  for (const int type : types) {
    FunctionRecord& function = functions.emplace_back();
    function.number = static_cast<std::uint16_t>(functions.size());
    function.typeCode = type;
    function.hasDataFile = true;
  }
  return functions;
}

std::vector<int> ListedNumbers(std::vector<FunctionRecord> functions) {
  RemoveUnlisted(functions);
  std::vector<int> numbers;
  for (const FunctionRecord& function : functions) numbers.push_back(function.number);
  return numbers;
}

using Numbers = std::vector<int>;

TEST(RemoveUnlisted, KeepsOrderAndNumbersOfTheOthers) {
  std::vector<FunctionRecord> functions = Table({1, 2, 3, 4});
  EXPECT_EQ(ListedNumbers(functions), (Numbers{1, 2, 3, 4}));
  functions[0].hasDataFile = false;
  functions[2].hasDataFile = false;
  EXPECT_EQ(ListedNumbers(functions), (Numbers{2, 4}));
}

TEST(RemoveUnlisted, KeepsProcessedFunctionsAfterTheTable) {
  std::vector<FunctionRecord> functions = Table({1, 2, 3});
  functions[1].hasDataFile = false;
  functions[2].processed = true;
  functions[2].number = 9;
  EXPECT_EQ(ListedNumbers(functions), (Numbers{1, 9}));
}

TEST(RemoveUnlisted, AbsorbanceIsNotListedWithOrWithoutData) {
  std::vector<FunctionRecord> functions = Table({kTofMs, kDad, 6});
  EXPECT_EQ(ListedNumbers(functions), (Numbers{1, 3}));
  functions[1].hasDataFile = false;
  EXPECT_EQ(ListedNumbers(functions), (Numbers{1, 3}));
}

// --- selection ---

FunctionRecord Numbered(std::uint16_t number, bool processed) {
  FunctionRecord record;
  record.number = number;
  record.processed = processed;
  return record;
}

class SelectFunctionTest : public testing::Test {
 protected:
  void ExpectSelected(const std::wstring& fileName, std::uint16_t number, bool processed) const {
    std::vector<FunctionRecord> functions = list_;
    EXPECT_TRUE(SelectFunction(fileName, functions)) << testing::PrintToString(fileName);
    ASSERT_EQ(functions.size(), 1u) << testing::PrintToString(fileName);
    EXPECT_EQ(functions[0].number, number);
    EXPECT_EQ(functions[0].processed, processed);
  }
  void ExpectNone(const std::wstring& fileName) const {
    std::vector<FunctionRecord> functions = list_;
    EXPECT_FALSE(SelectFunction(fileName, functions)) << testing::PrintToString(fileName);
    EXPECT_EQ(functions.size(), list_.size());
  }

  const std::vector<FunctionRecord> list_ = {Numbered(1, false), Numbered(3, false), Numbered(123, false),
                                             Numbered(1, true), Numbered(2, true)};
};

TEST_F(SelectFunctionTest, TakesRawFunctionsByNumber) {
  ExpectSelected(L"_func001.dat", 1, false);
  ExpectSelected(L"_func003.dat", 3, false);
  ExpectSelected(L"_func123.dat", 123, false);
}

TEST_F(SelectFunctionTest, TakesProcessedFunctionsByNumber) {
  ExpectSelected(L"_proc001.dat", 1, true);
  ExpectSelected(L"_proc002.dat", 2, true);
}

TEST_F(SelectFunctionTest, TakesAnyExtension) {
  ExpectSelected(L"_func003.idx", 3, false);
  ExpectSelected(L"_proc002.sts", 2, true);
}

TEST_F(SelectFunctionTest, KeepsTheListWithoutAMatch) {
  ExpectNone(L"_func002.dat");  // processed 2 does not count
  ExpectNone(L"_proc003.dat");  // nor raw 3
  ExpectNone(L"_func000.dat");
  ExpectNone(L"_func999.dat");
  ExpectNone(L"_funcabc.dat");
}

// At most three characters are read as a number, up to the first non-digit.
TEST_F(SelectFunctionTest, ReadsThreeCharactersAtMost) {
  ExpectSelected(L"_func1234567", 123, false);
  ExpectSelected(L"_func3.dat00", 3, false);
  ExpectSelected(L"_func3xy.dat", 3, false);
}

TEST_F(SelectFunctionTest, EmptyListStaysEmpty) {
  std::vector<FunctionRecord> functions;
  EXPECT_FALSE(SelectFunction(L"_func001.dat", functions));
  EXPECT_TRUE(functions.empty());
}

}  // namespace
}  // namespace zrml::plugin
