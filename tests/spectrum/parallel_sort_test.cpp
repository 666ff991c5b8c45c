#include "spectrum/parallel_sort.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numeric>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/spectrum/random_numbers.h"

namespace zrml {
namespace {

template <class T>
ParallelArray ArrayOf(std::vector<T>& values) {
  return {sizeof(T), values.empty() ? nullptr : values.data()};
}

bool Sort(SortKey key, bool ascending, std::size_t count, const std::vector<ParallelArray>& arrays) {
  return SortParallelArrays(static_cast<int>(key), ascending, count, arrays);
}

/// A key type with its code.
template <class T, int code>
struct Key {
  using Type = T;
  static constexpr int kCode = code;
};

template <class Case>
class ParallelSortKeys : public testing::Test {};

using AllKeys =
    testing::Types<Key<std::int8_t, 0>, Key<std::uint8_t, 1>, Key<std::int16_t, 2>, Key<std::uint16_t, 3>,
                   Key<std::int32_t, 4>, Key<std::uint32_t, 5>, Key<float, 6>, Key<double, 7>>;
TYPED_TEST_SUITE(ParallelSortKeys, AllKeys, );

TYPED_TEST(ParallelSortKeys, LowestAndHighestStandAtTheEnds) {
  using T = typename TypeParam::Type;
  using Limits = std::numeric_limits<T>;
  const T one = 1;
  std::vector<T> keys = {one, Limits::max(), 0, Limits::lowest(), 2};
  std::vector<char> names = {'1', 'M', '0', 'L', '2'};
  const std::array<ParallelArray, 2> arrays = {ArrayOf(keys), ArrayOf(names)};

  EXPECT_TRUE(SortParallelArrays(TypeParam::kCode, true, 5, arrays));
  // For unsigned types the lowest value is 0: equal keys keep their order.
  EXPECT_EQ(std::string(names.begin(), names.end()), std::is_signed_v<T> ? "L012M" : "0L12M");
  EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));

  EXPECT_TRUE(SortParallelArrays(TypeParam::kCode, false, 5, arrays));
  EXPECT_EQ(std::string(names.begin(), names.end()), "M210L");
}

// Sorts the keys together with their positions and compares with the standard library's stable sort; NaN
// last.
template <int code, class T>
void ExpectSorted(std::vector<T> keys, bool ascending) {
  std::vector<std::uint16_t> positions(keys.size());
  std::iota(positions.begin(), positions.end(), std::uint16_t{0});
  std::vector<std::uint16_t> expected = positions;
  std::stable_sort(expected.begin(), expected.end(), [&](std::uint16_t a, std::uint16_t b) {
    const bool isNumber = keys[a] == keys[a];
    if (!isNumber || keys[b] != keys[b]) return isNumber && keys[b] != keys[b];
    return ascending ? keys[a] < keys[b] : keys[b] < keys[a];
  });
  const std::vector<T> before = keys;
  const std::array<ParallelArray, 2> arrays = {ArrayOf(keys), ArrayOf(positions)};
  ASSERT_TRUE(SortParallelArrays(code, ascending, keys.size(), arrays));
  ASSERT_EQ(positions, expected);
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const T key = before[positions[i]];
    ASSERT_TRUE(keys[i] == key || (keys[i] != keys[i] && key != key)) << i;
  }
}

template <class T>
std::vector<T> RandomKeys(RandomNumbers& random, std::size_t count, int values) {
  std::vector<T> keys;
  for (std::size_t i = 0; i < count; ++i) keys.push_back(static_cast<T>(random.Below(values) - values / 2));
  return keys;
}

TYPED_TEST(ParallelSortKeys, RandomKeysAgreeWithBruteForce) {
  RandomNumbers random(2024);
  for (int round = 0; round < 200; ++round) {
    const std::size_t count = 1 + static_cast<std::size_t>(random.Below(40));
    const auto keys = RandomKeys<typename TypeParam::Type>(random, count, 200);
    ExpectSorted<TypeParam::kCode>(keys, random.Below(2) == 0);
  }
}

// From a tail of one element to all of them, with few values, so keys of the tail equal keys before it.
TYPED_TEST(ParallelSortKeys, ATailInOrderAgreesWithBruteForce) {
  using T = typename TypeParam::Type;
  RandomNumbers random(77);
  for (int round = 0; round < 400; ++round) {
    const std::size_t count = 2 + static_cast<std::size_t>(random.Below(60));
    const bool ascending = random.Below(2) == 0;
    std::vector<T> keys = RandomKeys<T>(random, count, round % 2 == 0 ? 8 : 200);
    const auto tail = keys.begin() + random.Below(static_cast<int>(count));
    std::sort(tail, keys.end(), [&](T a, T b) { return ascending ? a < b : b < a; });
    if (std::numeric_limits<T>::has_quiet_NaN && random.Below(2) == 0) {
      keys[static_cast<std::size_t>(random.Below(static_cast<int>(count)))] =
          std::numeric_limits<T>::quiet_NaN();
    }
    ExpectSorted<TypeParam::kCode>(keys, ascending);
  }
}

TYPED_TEST(ParallelSortKeys, ATailOfOneValueGoesWhereItBelongs) {
  using T = typename TypeParam::Type;
  for (const bool ascending : {true, false}) {
    for (const int value : {0, 3, 9}) {
      std::vector<T> keys = {T{5}, T{1}, T{7}, T{3}};
      keys.resize(500, static_cast<T>(value));
      ExpectSorted<TypeParam::kCode>(keys, ascending);
    }
  }
}

TYPED_TEST(ParallelSortKeys, AKeyArrayOfAnotherElementSizeIsRefused) {
  using T = typename TypeParam::Type;
  for (const std::size_t size : {1U, 2U, 3U, 4U, 8U, 16U}) {
    std::vector<T> keys(3 * 16, T{0});
    keys[0] = 2;
    const std::vector<T> before = keys;
    const std::array<ParallelArray, 1> arrays = {ParallelArray{size, keys.data()}};
    EXPECT_EQ(SortParallelArrays(TypeParam::kCode, true, 3, arrays), size == sizeof(T)) << size;
    EXPECT_EQ(keys == before, size != sizeof(T)) << size;
  }
}

template <class T>
void ExpectNanLast(SortKey key) {
  const T nan = std::numeric_limits<T>::quiet_NaN();
  const T infinity = std::numeric_limits<T>::infinity();
  const struct {
    bool ascending;
    std::string order;
  } cases[] = {{true, "L1Hnm"}, {false, "H1Lnm"}};
  for (const auto& expected : cases) {
    std::vector<T> keys = {nan, infinity, -nan, 1, -infinity};
    std::vector<char> names = {'n', 'H', 'm', '1', 'L'};
    EXPECT_TRUE(Sort(key, expected.ascending, 5, {ArrayOf(keys), ArrayOf(names)}));
    EXPECT_EQ(std::string(names.begin(), names.end()), expected.order);
    EXPECT_TRUE(std::isnan(keys[3]) && std::isnan(keys[4]));
  }
}

TEST(ParallelSort, NanStandsLastInEitherDirection) {
  ExpectNanLast<float>(SortKey::kFloat);
  ExpectNanLast<double>(SortKey::kDouble);
}

TEST(ParallelSort, ManyKeysWithNanAreSorted) {
  RandomNumbers random(7);
  for (const bool ascending : {true, false}) {
    std::vector<double> keys;
    for (int i = 0; i < 1000; ++i) {
      keys.push_back(random.Below(3) == 0 ? std::numeric_limits<double>::quiet_NaN() : random.Below(100));
    }
    const auto isNan = [](double key) { return std::isnan(key); };
    const auto numbers = std::count_if(keys.begin(), keys.end(), [&](double key) { return !isNan(key); });
    EXPECT_TRUE(Sort(SortKey::kDouble, ascending, keys.size(), {ArrayOf(keys)}));
    EXPECT_TRUE(std::is_sorted(keys.begin(), keys.begin() + numbers,
                               [&](double a, double b) { return ascending ? a < b : b < a; }));
    EXPECT_TRUE(std::all_of(keys.begin() + numbers, keys.end(), isNan));
  }
}

TEST(ParallelSort, NegativeZeroEqualsZero) {
  std::vector<double> keys = {0.0, -0.0, -1};
  std::vector<char> names = {'p', 'n', '1'};
  EXPECT_TRUE(Sort(SortKey::kDouble, true, 3, {ArrayOf(keys), ArrayOf(names)}));
  EXPECT_EQ(std::string(names.begin(), names.end()), "1pn");
}

TEST(ParallelSort, WholeElementsOfEverySizeMove) {
  for (const std::size_t size : {1U, 2U, 3U, 4U, 5U, 8U, 16U, 24U}) {
    std::vector<std::int32_t> keys = {30, 10, 20};
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < 3 * size; ++i) bytes.push_back(static_cast<std::uint8_t>(i));
    std::vector<std::uint8_t> expected;
    for (const std::size_t element : {1U, 2U, 0U}) {
      for (std::size_t i = 0; i < size; ++i)
        expected.push_back(static_cast<std::uint8_t>(element * size + i));
    }
    EXPECT_TRUE(Sort(SortKey::kInt32, true, 3, {ArrayOf(keys), {size, bytes.data()}}));
    EXPECT_EQ(keys, (std::vector<std::int32_t>{10, 20, 30}));
    EXPECT_EQ(bytes, expected) << size;
  }
}

TEST(ParallelSort, AbsentArraysAreSkippedAndTheFirstPresentOneIsTheKey) {
  std::vector<double> keys = {3, 1, 2};
  std::vector<std::uint8_t> flags = {30, 10, 20};
  EXPECT_TRUE(Sort(SortKey::kDouble, true, 3,
                   {{1, nullptr}, {8, nullptr}, ArrayOf(keys), {4, nullptr}, ArrayOf(flags)}));
  EXPECT_EQ(keys, (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(flags, (std::vector<std::uint8_t>{10, 20, 30}));
}

TEST(ParallelSort, WithoutAnyArrayItFails) {
  EXPECT_FALSE(Sort(SortKey::kDouble, true, 3, {}));
  EXPECT_FALSE(Sort(SortKey::kDouble, true, 3, {{8, nullptr}, {8, nullptr}}));
}

TEST(ParallelSort, OnlyTheGivenCountOfElementsMoves) {
  std::vector<double> keys = {3, 1, 2, 0};
  EXPECT_TRUE(Sort(SortKey::kDouble, true, 0, {ArrayOf(keys)}));
  EXPECT_TRUE(Sort(SortKey::kDouble, true, 1, {ArrayOf(keys)}));
  EXPECT_EQ(keys, (std::vector<double>{3, 1, 2, 0}));
  EXPECT_TRUE(Sort(SortKey::kDouble, true, 3, {ArrayOf(keys)}));
  EXPECT_EQ(keys, (std::vector<double>{1, 2, 3, 0}));
}

TEST(ParallelSort, AnUnknownKeyTypeFailsAndMovesNothing) {
  for (const int code : {-1, 8, 9, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    std::vector<double> keys = {3, 1, 2};
    const std::array<ParallelArray, 1> arrays = {ArrayOf(keys)};
    EXPECT_FALSE(SortParallelArrays(code, true, 3, arrays)) << code;
    EXPECT_EQ(keys, (std::vector<double>{3, 1, 2})) << code;
  }
}

}  // namespace
}  // namespace zrml
