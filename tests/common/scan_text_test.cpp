#include "common/scan_text.h"

#include <string>

#include <gtest/gtest.h>

namespace zrml {
namespace {

TEST(ScanTextLiteral, MatchesItselfAndABlankAnyRunOfWhiteSpace) {
  const struct {
    std::wstring text;
    std::wstring format;
    bool matches;
    std::wstring rest;
  } cases[] = {
      {L"abc", L"abc", true, L""},
      {L"abcd", L"abc", true, L"d"},
      {L"abc", L"", true, L"abc"},
      {L"", L"", true, L""},
      {L"", L" ", true, L""},
      {L"a b", L"a b", true, L""},
      {L"ab", L"a b", true, L""},              // a blank also matches no white space
      {L"a \t\n\v\f\r b", L"a b", true, L""},  // and any run of it
      {L"ab", L"a   b", true, L""},            // as do several blanks together
      {L"a  b", L"a   b", true, L""},
      {L" \r\na", L" a", true, L""},
      {L"a \n", L"a ", true, L""},
      {L"a ,b", L"a,b", false, L" ,b"},  // other characters never skip white space
      {L" a", L"a", false, L" a"},
      {L"abx", L"abc", false, L"x"},
      {L"ab", L"abc", false, L""},
      {L"a  x", L"a b", false, L"x"},
      {L"ABC", L"abc", false, L"ABC"},
      {L"a\xa0"
       L"b",
       L"a b", false,
       L"\xa0"
       L"b"},  // a no-break space is no white space
      {L"$$ Cal Function 1:", L"$$ Cal Function ", true, L"1:"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::PrintToString(expected.format) + " on " + testing::PrintToString(expected.text));
    ScanText scan(expected.text);
    EXPECT_EQ(scan.Literal(expected.format), expected.matches);
    EXPECT_EQ(scan.Rest(), expected.rest);
  }
}

TEST(ScanTextNumbers, SkipLeadingWhiteSpaceAndStopBehindTheNumber) {
  ScanText scan(L" \t12 -0x1.8p1\n0.5x");
  EXPECT_EQ(scan.Int(), 12);
  EXPECT_EQ(scan.Rest(), L" -0x1.8p1\n0.5x");
  EXPECT_EQ(scan.Double(), -3.0);
  EXPECT_EQ(scan.Float(), 0.5F);
  EXPECT_EQ(scan.Rest(), L"x");
}

TEST(ScanTextNumbers, FailWithoutANumber) {
  for (const std::wstring_view text : {L"", L" ", L"x", L"-", L"$1"}) {
    EXPECT_FALSE(ScanText(text).Int().has_value());
    EXPECT_FALSE(ScanText(text).Double().has_value());
    EXPECT_FALSE(ScanText(text).Float().has_value());
  }
  EXPECT_FALSE(ScanText(L".5").Int().has_value());
}

TEST(ScanTextNumbers, FloatIsRoundedOnce) {
  // 1 + 2^-24 + 1e-26: as a double it would be half-way between two floats and round to 1.
  EXPECT_EQ(ScanText(L"1.00000005960464477539062501").Float(), 0x1.000002p0F);
}

TEST(ScanTextFormat, BlankBeforeACommaEndsAListOfCoefficients) {
  ScanText blank(L"$$ CalMS1Static:1.0 ,2");
  EXPECT_TRUE(blank.Literal(L"$$ CalMS1Static:"));
  EXPECT_EQ(blank.Double(), 1.0);
  EXPECT_FALSE(blank.Literal(L","));
  EXPECT_EQ(blank.Rest(), L" ,2");

  ScanText tight(L"$$ CalMS1Static:1.0, 2");
  EXPECT_TRUE(tight.Literal(L"$$ CalMS1Static:"));
  EXPECT_EQ(tight.Double(), 1.0);
  EXPECT_TRUE(tight.Literal(L","));
  EXPECT_EQ(tight.Double(), 2.0);
}

}  // namespace
}  // namespace zrml
