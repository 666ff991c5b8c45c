#include "common/scan_text.h"

#include <string>

#include <gtest/gtest.h>

namespace zrml {
namespace {

TEST(ScanTextLiteral, MatchesItselfAndABlankAnyRunOfWhiteSpace) {
  const struct {
    std::string text;
    std::string format;
    bool matches;
    std::string rest;
  } cases[] = {
      {"abc", "abc", true, ""},
      {"abcd", "abc", true, "d"},
      {"abc", "", true, "abc"},
      {"", "", true, ""},
      {"", " ", true, ""},
      {"a b", "a b", true, ""},
      {"ab", "a b", true, ""},              // a blank also matches no white space
      {"a \t\n\v\f\r b", "a b", true, ""},  // and any run of it
      {"ab", "a   b", true, ""},            // as do several blanks together
      {"a  b", "a   b", true, ""},
      {" \r\na", " a", true, ""},
      {"a \n", "a ", true, ""},
      {"a ,b", "a,b", false, " ,b"},  // other characters never skip white space
      {" a", "a", false, " a"},
      {"abx", "abc", false, "x"},
      {"ab", "abc", false, ""},
      {"a  x", "a b", false, "x"},
      {"ABC", "abc", false, "ABC"},
      {"a\xa0"
       "b",
       "a b", false,
       "\xa0"
       "b"},  // a no-break space is no white space
      {"$$ Cal Function 1:", "$$ Cal Function ", true, "1:"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::PrintToString(expected.format) + " on " + testing::PrintToString(expected.text));
    ScanText scan(expected.text);
    EXPECT_EQ(scan.Literal(expected.format), expected.matches);
    EXPECT_EQ(scan.Rest(), expected.rest);
  }
}

TEST(ScanTextNumbers, SkipLeadingWhiteSpaceAndStopBehindTheNumber) {
  ScanText scan(" \t12 -0x1.8p1\n0.5x");
  EXPECT_EQ(scan.Int(), 12);
  EXPECT_EQ(scan.Rest(), " -0x1.8p1\n0.5x");
  EXPECT_EQ(scan.Double(), -3.0);
  EXPECT_EQ(scan.Float(), 0.5F);
  EXPECT_EQ(scan.Rest(), "x");
}

TEST(ScanTextNumbers, FailWithoutANumber) {
  for (const std::string_view text : {"", " ", "x", "-", "$1"}) {
    EXPECT_FALSE(ScanText(text).Int().has_value());
    EXPECT_FALSE(ScanText(text).Double().has_value());
    EXPECT_FALSE(ScanText(text).Float().has_value());
  }
  EXPECT_FALSE(ScanText(".5").Int().has_value());
}

TEST(ScanTextNumbers, FloatIsRoundedOnce) {
  // 1 + 2^-24 + 1e-26: as a double it would be half-way between two floats and round to 1.
  EXPECT_EQ(ScanText("1.00000005960464477539062501").Float(), 0x1.000002p0F);
}

TEST(ScanTextFormat, BlankBeforeACommaEndsAListOfCoefficients) {
  ScanText blank("$$ CalMS1Static:1.0 ,2");
  EXPECT_TRUE(blank.Literal("$$ CalMS1Static:"));
  EXPECT_EQ(blank.Double(), 1.0);
  EXPECT_FALSE(blank.Literal(","));
  EXPECT_EQ(blank.Rest(), " ,2");

  ScanText tight("$$ CalMS1Static:1.0, 2");
  EXPECT_TRUE(tight.Literal("$$ CalMS1Static:"));
  EXPECT_EQ(tight.Double(), 1.0);
  EXPECT_TRUE(tight.Literal(","));
  EXPECT_EQ(tight.Double(), 2.0);
}

}  // namespace
}  // namespace zrml
