#include "common/text.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace zrml {
namespace {

TEST(IsSpace, IsTrueForTheSixCharactersAlone) {
  const std::wstring spaces = L" \t\n\v\f\r";
  for (int code = 0; code < 0x10000; ++code) {
    const auto c = static_cast<wchar_t>(code);
    EXPECT_EQ(IsSpace(c), spaces.find(c) != std::wstring::npos) << std::hex << code;
  }
}

TEST(Trim, RemovesWhiteSpaceAtBothEndsOnly) {
  const struct {
    std::wstring text;
    std::wstring trimmed;
  } cases[] = {
      {L"", L""},
      {L"a", L"a"},
      {L" \t\n\v\f\r", L""},
      {L" \t\n\v\f\ra b \t\n\v\f\r", L"a b"},
      {L"a\r\n", L"a"},
      {L"\n a", L"a"},
      {L"\xa0 a \x85", L"\xa0 a \x85"},  // not white space, so it protects the blanks inside
      {std::wstring(L"\0 a", 3), std::wstring(L"\0 a", 3)},
  };
  for (const auto& expected : cases) EXPECT_EQ(Trim(expected.text), expected.trimmed);
}

TEST(Trim, NarrowTextLosesTheSameWhiteSpace) {
  EXPECT_EQ(Trim(std::string_view(" \t\n\v\f\ra b \t\n\v\f\r")), "a b");
  EXPECT_EQ(Trim(std::string_view(" \r\n")), "");
  EXPECT_EQ(Trim(std::string_view("\xa0 a \x85")), "\xa0 a \x85");
}

TEST(CaseMapping, MapsAsciiLettersAlone) {
  // Neighbours of the letters, sharp s, e acute, y diaeresis, dotless i and the Kelvin sign stay.
  EXPECT_EQ(ToUpper(L"azAZ09@[`{_.\xdf\xe9\xff\x131\x212a"), L"AZAZ09@[`{_.\xdf\xe9\xff\x131\x212a");
  EXPECT_EQ(ToLower(L"azAZ09@[`{_.\xdf\xc9\xff\x130\x212a"), L"azaz09@[`{_.\xdf\xc9\xff\x130\x212a");
  EXPECT_EQ(ToUpper(L"_Func001.idx"), L"_FUNC001.IDX");
  EXPECT_EQ(ToLower(L"_FUNC001.IDX"), L"_func001.idx");
  EXPECT_EQ(ToUpper(std::string_view("azAZ09@[`{_.\xdf\xe9")), "AZAZ09@[`{_.\xdf\xe9");
  EXPECT_EQ(ToUpper(L""), L"");
  EXPECT_EQ(ToLower(L""), L"");
}

TEST(ZeroPadded, PadsLikePrintf) {
  const struct {
    int value;
    std::size_t width;
    std::wstring text;
  } cases[] = {
      {7, 3, L"007"},
      {0, 1, L"0"},
      {0, 3, L"000"},
      {999, 3, L"999"},
      {1234, 3, L"1234"},
      {7, 0, L"7"},
      {-7, 3, L"-07"},
      {-7, 2, L"-7"},
      {-7, 1, L"-7"},
      {std::numeric_limits<int>::max(), 3, L"2147483647"},
      {std::numeric_limits<int>::min(), 3, L"-2147483648"},
      {std::numeric_limits<int>::min(), 13, L"-002147483648"},
  };
  for (const auto& expected : cases) EXPECT_EQ(ZeroPadded(expected.value, expected.width), expected.text);
}

TEST(FromBytes, EachByteIsTheCharacterOfItsCode) {
  EXPECT_EQ(FromBytes(""), L"");
  EXPECT_EQ(FromBytes(std::string_view("a\0\x7f\x80\xff", 5)), std::wstring(L"a\0\x7f\x80\xff", 5));
}

TEST(Widen, KeepsAsciiCharacters) {
  EXPECT_EQ(Widen(""), L"");
  EXPECT_EQ(Widen("_FUNC001.DAT ~"), L"_FUNC001.DAT ~");
  EXPECT_EQ(Widen(std::string_view("a\0b", 3)), std::wstring(L"a\0b", 3));
}

}  // namespace
}  // namespace zrml
