#include "common/number.h"

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace zrml {
namespace {

using DoubleLimits = std::numeric_limits<double>;
using FloatLimits = std::numeric_limits<float>;

/// A text with the number and rest expected from it.
template <class T>
struct Taken {
  std::wstring text;
  T value;
  std::wstring rest = L"";
};

template <class T>
bool SameNumber(T a, T b) {
  return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

template <class T, class Take>
void ExpectTaken(Take take, const std::vector<Taken<T>>& cases) {
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::PrintToString(expected.text));
    std::wstring_view text = expected.text;
    const auto value = take(text);
    ASSERT_TRUE(value.has_value());
    EXPECT_TRUE(SameNumber<T>(*value, expected.value)) << *value << " instead of " << expected.value;
    EXPECT_EQ(text, expected.rest);
  }
}

// Takes from wide text; the narrow overload must agree wherever the text has a narrow form.
template <class Take>
auto TakenByBoth(std::wstring_view& text, Take take) {
  std::string narrow;
  for (const wchar_t c : text) {
    if (c < 0x100) narrow.push_back(static_cast<char>(c));
  }
  const bool isNarrow = narrow.size() == text.size();
  std::string_view narrowText = narrow;
  const auto narrowValue = take(narrowText);
  const auto value = take(text);
  if (isNarrow) {
    EXPECT_EQ(narrowValue.has_value(), value.has_value());
    EXPECT_TRUE(SameNumber(narrowValue.value_or(0), value.value_or(0)));
    EXPECT_EQ(narrowText.size(), text.size());
  }
  return value;
}

const auto takeDouble = [](std::wstring_view& text) {
  return TakenByBoth(text, [](auto& any) { return TakeDouble(any); });
};
const auto takeFloat = [](std::wstring_view& text) {
  return TakenByBoth(text, [](auto& any) { return TakeFloat(any); });
};
const auto takeInt = [](std::wstring_view& text) {
  return TakenByBoth(text, [](auto& any) { return TakeInt(any); });
};

std::wstring Zeros(std::size_t count) { return std::wstring(count, L'0'); }

TEST(TakeDouble, DecimalNumbersTakeTheLongestValidPrefix) {
  ExpectTaken<double>(takeDouble, {
                                      {L"0", 0.0},
                                      {L"7", 7.0},
                                      {L"1.5", 1.5},
                                      {L"+1.5", 1.5},
                                      {L"-1.5", -1.5},
                                      {L".5", 0.5},
                                      {L"-.5", -0.5},
                                      {L"5.", 5.0},
                                      {L"007.50", 7.5},
                                      {L"1e2", 100.0},
                                      {L"1E+2", 100.0},
                                      {L"125e-3", 0.125},
                                      {L"5.e1", 50.0},
                                      {L"1e002", 100.0},
                                      {L"1.5x", 1.5, L"x"},
                                      {L"1.5 2", 1.5, L" 2"},
                                      {L"1.2.3", 1.2, L".3"},
                                      {L"1,5", 1.0, L",5"},
                                      {L"1e", 1.0, L"e"},
                                      {L"1e+", 1.0, L"e+"},
                                      {L"1e-x", 1.0, L"e-x"},
                                      {L"1e 2", 1.0, L"e 2"},
                                      {L"1e2e3", 100.0, L"e3"},
                                      {L"1e2.5", 100.0, L".5"},
                                      {L"1-2", 1.0, L"-2"},
                                      {L"1p4", 1.0, L"p4"},
                                  });
}

TEST(TakeDouble, ZeroKeepsItsSign) {
  ExpectTaken<double>(takeDouble, {
                                      {L"-0", -0.0},
                                      {L"-0.000", -0.0},
                                      {L"-.0e5", -0.0},
                                      {L"-0x0", -0.0},
                                      {L"0e999999999999999999999", 0.0},
                                      {L"-0.0e-999999999999999999999", -0.0},
                                      {L"0x0p999999999999999999999", 0.0},
                                  });
}

TEST(TakeDouble, HexadecimalNumbersTakeTheLongestValidPrefix) {
  ExpectTaken<double>(takeDouble, {
                                      {L"0x10", 16.0},
                                      {L"0XaB", 171.0},
                                      {L"-0x1p4", -16.0},
                                      {L"0x1.8p+1", 3.0},
                                      {L"0X1.8P-1", 0.75},
                                      {L"0x.8", 0.5},
                                      {L"0x1.", 1.0},
                                      {L"0x1.p2", 4.0},
                                      {L"0x1e5", 485.0},  // e is a digit: 0x1e5
                                      {L"0x1.8p10", 1536.0},
                                      {L"0x1p", 1.0, L"p"},
                                      {L"0x1p+", 1.0, L"p+"},
                                      {L"0x1pf", 1.0, L"pf"},
                                      {L"0x1p2.5", 4.0, L".5"},
                                      {L"0x1g", 1.0, L"g"},
                                      {L"0x1,8", 1.0, L",8"},
                                  });
}

TEST(TakeDouble, HexadecimalPrefixWithoutDigitsIsAZero) {
  ExpectTaken<double>(takeDouble, {
                                      {L"0x", 0.0, L"x"},
                                      {L"0X", 0.0, L"X"},
                                      {L"-0xg", -0.0, L"xg"},
                                      {L"0x.", 0.0, L"x."},
                                      {L"0x.p1", 0.0, L"x.p1"},
                                      {L"0xp1", 0.0, L"xp1"},
                                      {L"0x-1", 0.0, L"x-1"},
                                      {L"0x 1", 0.0, L"x 1"},
                                      {L"0x0x1", 0.0, L"x1"},
                                  });
}

TEST(TakeDouble, InfinityAndNanInAnyCaseTakeTheLongestValidPrefix) {
  const double infinity = DoubleLimits::infinity();
  const double nan = DoubleLimits::quiet_NaN();
  ExpectTaken<double>(takeDouble, {
                                      {L"inf", infinity},
                                      {L"+INF", infinity},
                                      {L"-Inf", -infinity},
                                      {L"infinity", infinity},
                                      {L"-INFINITY", -infinity},
                                      {L"infinit", infinity, L"init"},
                                      {L"infinite", infinity, L"inite"},
                                      {L"inf1", infinity, L"1"},
                                      {L"infinityx", infinity, L"x"},
                                      {L"nan", nan},
                                      {L"-NaN", nan},
                                      {L"nan1", nan, L"1"},
                                      {L"nan()", nan},
                                      {L"nan(_aZ9)x", nan, L"x"},
                                      {L"nan(12", nan, L"(12"},
                                      {L"nan(1-2)", nan, L"(1-2)"},
                                  });
}

TEST(TakeDouble, LeadingWhiteSpaceIsSkipped) {
  for (const wchar_t space : std::wstring(L" \t\n\v\f\r")) {
    ExpectTaken<double>(takeDouble, {{std::wstring(1, space) + L"2.5 ", 2.5, L" "}});
  }
  ExpectTaken<double>(takeDouble, {{L" \t\n\v\f\r -2.5", -2.5}});
}

TEST(TakeDouble, OtherSpacesAndDigitsOfUnicodeAreNoPartOfANumber) {
  // U+0120 and U+0131 have the low byte of a blank and of the digit 1.
  for (const wchar_t other : {L'\0', L'\x08', L'\x0e', L'\x1f', L'\x85', L'\xa0', L'\x120', L'\x131',
                              L'\x661', L'\x2003', L'\x3000', L'\xff11'}) {
    const std::wstring before = std::wstring(1, other) + L"1";
    std::wstring_view text = before;
    EXPECT_FALSE(TakeDouble(text).has_value()) << std::hex << static_cast<unsigned>(other);
    EXPECT_EQ(text, before);
    ExpectTaken<double>(takeDouble, {{std::wstring(L"1") + other, 1.0, std::wstring(1, other)}});
  }
}

TEST(TakeDouble, TextWithoutNumberGivesNothingAndStays) {
  for (const std::wstring before :
       {L"",    L"   ", L"+",   L"-",  L".",  L"+.", L"-.e1", L".x",  L"e5", L"x", L"abc",
        L"- 1", L"+-1", L"--1", L"in", L"na", L"-i", L"x10",  L" p1", L"\n", L",5"}) {
    std::wstring_view text = before;
    EXPECT_FALSE(TakeDouble(text).has_value()) << testing::PrintToString(before);
    EXPECT_EQ(text, before);
  }
}

TEST(TakeDouble, NothingBeyondTheViewIsRead) {
  const std::wstring all = L"12.75e1";
  const double expected[] = {1, 12, 12, 12.7, 12.75, 12.75, 127.5};
  const std::size_t left[] = {0, 0, 0, 0, 0, 1, 0};  // "12.75e" leaves its e
  for (std::size_t length = 1; length <= all.size(); ++length) {
    std::wstring_view text(all.data(), length);
    EXPECT_EQ(TakeDouble(text), expected[length - 1]) << length;
    EXPECT_EQ(text.size(), left[length - 1]) << length;
  }
}

TEST(TakeDouble, TooLargeValuesAreInfinityWithTheirSign) {
  const double infinity = DoubleLimits::infinity();
  ExpectTaken<double>(takeDouble,
                      {
                          {L"1e308", 1e308},
                          {L"1.7976931348623157e308", DoubleLimits::max()},
                          {L"0x1.fffffffffffff7p1023", DoubleLimits::max()},
                          {L"0x1.fffffffffffff8p1023", infinity},  // half-way to 2^1024 rounds to even
                          {L"1e309", infinity},
                          {L"-1e309x", -infinity, L"x"},
                          {L"-0x1p1024", -infinity},
                          {L"1e99999999999999999999", infinity},
                          {L"0x1" + Zeros(400) + L"p-500", infinity},  // 2^1100
                          {L"1e9223372036854775807", infinity},        // 2^63 - 1
                          {L"-0x1p99999999999999999999", -infinity},
                          {L"1" + Zeros(400), infinity},
                          {L"-1" + Zeros(400) + L"e-10", -infinity},
                          {L"0x1" + Zeros(400), infinity},
                      });
}

TEST(TakeDouble, TooSmallValuesAreZeroWithTheirSign) {
  ExpectTaken<double>(takeDouble, {
                                      {L"1e-400", 0.0},
                                      {L"-1e-400x", -0.0, L"x"},
                                      {L"1e-99999999999999999999", 0.0},
                                      {L"0x." + Zeros(400) + L"1p500", 0.0},  // 2^-1104
                                      {L"-0.01e-9223372036854775807", -0.0},
                                      {L"-0x1p-99999999999999999999", -0.0},
                                      {L"0." + Zeros(400) + L"1", 0.0},
                                      {L"-0." + Zeros(400) + L"1e10", -0.0},
                                      {L"0x." + Zeros(400) + L"1", 0.0},
                                      {L"-0x1p-1076", -0.0},
                                  });
}

TEST(TakeDouble, SubnormalValuesAreRoundedToTheNearest) {
  // The smallest subnormal is 2^-1074 = 4.94e-324; half of it is 2.47032822920623272e-324.
  const double smallest = DoubleLimits::denorm_min();
  ExpectTaken<double>(takeDouble, {
                                      {L"4.9406564584124654e-324", smallest},
                                      {L"-2.4703282292062328e-324", -smallest},
                                      {L"-2.4703282292062327e-324", -0.0},
                                      {L"0x1p-1074", smallest},
                                      {L"0x1.8p-1075", smallest},
                                      {L"0x1p-1075", 0.0},  // half-way rounds to even
                                      {L"0x1p-1022", DoubleLimits::min()},
                                      {L"2.2250738585072014e-308", DoubleLimits::min()},
                                  });
}

TEST(TakeDouble, LongMantissaAndExponentCancelOut) {
  ExpectTaken<double>(takeDouble, {
                                      {L"1" + Zeros(400) + L"e-400", 1.0},
                                      {L"0." + Zeros(400) + L"1e401", 1.0},
                                      {L"0x1" + Zeros(400) + L"p-1600", 1.0},
                                      {L"0x." + Zeros(399) + L"1p1600", 1.0},
                                      {Zeros(400) + L"2.5" + Zeros(400), 2.5},
                                  });
}

TEST(TakeDouble, RoundsToNearestEvenAtEveryDigit) {
  // Neighbours of 1 are 2^-52 apart; 1 + 2^-53 is 1.00000000000000011102230246251565404236316680908203125.
  ExpectTaken<double>(takeDouble,
                      {
                          {L"1.00000000000000011102230246251565404236316680908203125", 1.0},
                          {L"1.00000000000000011102230246251565404236316680908203126", 0x1.0000000000001p0},
                          {L"1.00000000000000033306690738754696212708950042724609375", 0x1.0000000000002p0},
                          {L"0x1.00000000000008", 1.0},
                          {L"0x1.00000000000008000000000000001", 0x1.0000000000001p0},
                          {L"0x1.00000000000018", 0x1.0000000000002p0},
                          {L"9007199254740993", 9007199254740992.0},
                          {L"0.1", 0x1.999999999999ap-4},
                      });
}

TEST(TakeFloat, FollowsTheSameGrammar) {
  ExpectTaken<float>(takeFloat, {
                                    {L" -1.5x", -1.5F, L"x"},
                                    {L"0x1.8p1", 3.0F},
                                    {L"0x", 0.0F, L"x"},
                                    {L"1e+", 1.0F, L"e+"},
                                    {L"-0", -0.0F},
                                    {L"-infinity,", -FloatLimits::infinity(), L","},
                                    {L"nan(1)", FloatLimits::quiet_NaN()},
                                });
  std::wstring_view text = L" +x";
  EXPECT_FALSE(takeFloat(text).has_value());
  EXPECT_EQ(text, L" +x");
}

TEST(TakeFloat, IsRoundedOnceAndNotThroughDouble) {
  // Floats next to 1 are 2^-23 apart. These decimals are just beside the middle of two floats, closer than a
  // double can resolve: rounding to double first would give the middle itself, which then rounds to the even
  // float, on the other side.
  ExpectTaken<float>(takeFloat,
                     {
                         {L"1.00000005960464477539062501", 0x1.000002p0F},  // 1 + 2^-24 + 1e-26
                         {L"1.00000017881393432617187499", 0x1.000002p0F},  // 1 + 3 * 2^-24 - 1e-26
                         {L"0x1.00000100000000001", 0x1.000002p0F},
                     });
  ASSERT_EQ(static_cast<float>(1.00000005960464477539062501), 1.0F);
  ASSERT_EQ(static_cast<float>(1.00000017881393432617187499), 0x1.000004p0F);
}

TEST(TakeFloat, ValuesBeyondItsRangeAreInfinityOrZeroWithTheirSign) {
  // The middle of the largest float and 2^128 is 3.40282356779733661...e38; half the smallest subnormal
  // is 7.006e-46.
  ExpectTaken<float>(takeFloat, {
                                    {L"3.4028235e38", FloatLimits::max()},
                                    {L"3.4028235677973366e38", FloatLimits::max()},
                                    {L"3.4028235677973367e38", FloatLimits::infinity()},
                                    {L"-1e39", -FloatLimits::infinity()},
                                    {L"-1e400", -FloatLimits::infinity()},
                                    {L"1.1754944e-38", FloatLimits::min()},
                                    {L"7.1e-46", FloatLimits::denorm_min()},
                                    {L"7.0e-46", 0.0F},
                                    {L"-1e-46", -0.0F},
                                    {L"-1e-400", -0.0F},
                                });
}

TEST(TakeInt, DecimalIntegersTakeTheLongestValidPrefix) {
  const struct {
    std::wstring text;
    int value;
    std::wstring rest;
  } cases[] = {
      {L"0", 0, L""},
      {L" \t\n\v\f\r42abc", 42, L"abc"},
      {L"-42", -42, L""},
      {L"+42", 42, L""},
      {L"00012", 12, L""},
      {L"0x10", 0, L"x10"},
      {L"12.5", 12, L".5"},
      {L"1e5", 1, L"e5"},
      {L"-0", 0, L""},
      {L"1-2", 1, L"-2"},
      {L"1\x661", 1, L"\x661"},
      {L"1\xa0"
       L"2",
       1,
       L"\xa0"
       L"2"},
  };
  for (const auto& expected : cases) {
    std::wstring_view text = expected.text;
    EXPECT_EQ(takeInt(text), expected.value) << testing::PrintToString(expected.text);
    EXPECT_EQ(text, expected.rest);
  }
}

TEST(TakeInt, ValuesOutside32BitsBecomeTheNearestLimit) {
  constexpr int kMax = std::numeric_limits<int>::max();
  constexpr int kMin = std::numeric_limits<int>::min();
  const struct {
    std::wstring text;
    int value;
  } cases[] = {
      {L"2147483647", kMax},
      {L"2147483648", kMax},
      {L"4294967297", kMax},
      {L"99999999999999999999999", kMax},
      {L"-2147483648", kMin},
      {L"-2147483649", kMin},
      {L"-99999999999999999999999", kMin},
      {Zeros(50) + L"7", 7},
  };
  for (const auto& expected : cases) {
    const std::wstring withRest = expected.text + L" x";
    std::wstring_view text = withRest;
    EXPECT_EQ(takeInt(text), expected.value) << testing::PrintToString(expected.text);
    EXPECT_EQ(text, L" x");
  }
}

TEST(TakeInt, TextWithoutIntegerGivesNothingAndStays) {
  for (const std::wstring before :
       {L"", L" ", L"-", L"+", L"- 1", L"+-1", L".5", L"x1", L"inf", L"\xa0\x31"}) {
    std::wstring_view text = before;
    EXPECT_FALSE(takeInt(text).has_value()) << testing::PrintToString(before);
    EXPECT_EQ(text, before);
  }
}

// Decimals with few digits take a shorter way; up to 15 digits and a point it must round like the long one.
TEST(TakeDouble, DecimalsOfEveryLengthAreTheNearestDouble) {
  std::mt19937_64 random(5);
  for (int round = 0; round < 100000; ++round) {
    std::string digits = std::to_string(random());
    digits.resize(std::min<std::size_t>(digits.size(), 1 + random() % 19));
    const std::size_t point = random() % (digits.size() + 2);
    if (point <= digits.size()) digits.insert(point, 1, '.');
    if (random() % 4 == 0) digits.insert(0, 1, random() % 2 == 0 ? '-' : '+');
    std::string_view text = digits;
    const std::optional<double> value = TakeDouble(text);
    ASSERT_TRUE(value.has_value()) << digits;
    ASSERT_EQ(*value, std::strtod(digits.c_str(), nullptr)) << digits;
    ASSERT_EQ(text, "");
  }
}

TEST(TakeDouble, NarrowTextKeepsItsRest) {
  const std::vector<std::pair<std::string, std::string>> cases = {{"12.5\t7", "\t7"}, {"12.5 7", " 7"},
                                                                  {"12.5,7", ",7"},   {"12.5x", "x"},
                                                                  {"12.5e", "e"},     {"12.5e0 1", " 1"}};
  for (const auto& [whole, rest] : cases) {
    std::string_view text = whole;
    EXPECT_EQ(TakeDouble(text), 12.5);
    EXPECT_EQ(text, rest);
  }
  for (const std::string whole : {".", "-", "x", "", " ", "-.", "\xB2"}) {
    std::string_view text = whole;
    EXPECT_EQ(TakeDouble(text), std::nullopt);
    EXPECT_EQ(text, whole);
  }
}

/// Sets a process locale with a decimal comma for its lifetime, if one is installed.
class CommaLocale {
 public:
  CommaLocale() {
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "fr_FR", "nl_NL.UTF-8",
                             "ru_RU.UTF-8", "German_Germany.1252", "German", "French"}) {
      if (std::setlocale(LC_ALL, name) && *std::localeconv()->decimal_point == ',') {
        found_ = true;
        return;
      }
    }
    std::setlocale(LC_ALL, "C");
  }
  ~CommaLocale() { std::setlocale(LC_ALL, "C"); }
  bool Found() const { return found_; }

 private:
  bool found_ = false;
};

TEST(Numbers, AProcessLocaleWithDecimalCommaChangesNothing) {
  const CommaLocale locale;
  if (!locale.Found()) GTEST_SKIP() << "no locale with a decimal comma is installed here";
  ExpectTaken<double>(
      takeDouble,
      {{L"1.5", 1.5}, {L"1,5", 1.0, L",5"}, {L"0x1.8p0", 1.5}, {L"1e309", DoubleLimits::infinity()}});
  ExpectTaken<float>(takeFloat, {{L"1.5", 1.5F}, {L"1,5", 1.0F, L",5"}});
  ExpectTaken<int>(takeInt, {{L"1.000", 1, L".000"}});
}

}  // namespace
}  // namespace zrml
