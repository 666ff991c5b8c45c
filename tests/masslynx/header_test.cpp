#include "masslynx/header.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "common/platform/platform.h"
#include "common/text.h"
#include "tests/masslynx/truncation.h"
#include "tests/support/temp_directory.h"
#include "tests/support/text_writer.h"

namespace zrml::masslynx {
namespace {

using Lines = std::vector<std::wstring>;

// Line buffers of the reader hold one character less than their size.
constexpr std::size_t kLongestPiece = 9999;
constexpr std::size_t kFirstLineBuffer = 1000;

class HeaderFile : public testing::Test {
 protected:
  platform::File Open() const { return platform::File::Open(directory_.WidePath("_HEADER.TXT")); }
  platform::File Open(std::string_view text) const {
    directory_.WriteText("_HEADER.TXT", text);
    return Open();
  }
  static Lines LinesOf(const platform::File& file) {
    Lines lines;
    const HeaderLines header = ReadHeaderLines(file);
    for (const std::string_view line : header.All()) lines.push_back(FromBytes(line));
    return lines;
  }
  Lines LinesOf(std::string_view text) const { return LinesOf(Open(text)); }
  bool IsHeader(std::string_view text) const { return IsMassLynxHeader(Open(text)); }

  TempDirectory directory_;
};

using ReadHeaderLinesTest = HeaderFile;
using IsMassLynxHeaderTest = HeaderFile;

// Deliberate: the line loop appends its buffer again when the read after the last line fails.
TEST_F(ReadHeaderLinesTest, EndedLastLineStandsTwice) {
  EXPECT_EQ(LinesOf("a\nb\n"), (Lines{L"a\n", L"b\n", L"b\n"}));
  EXPECT_EQ(LinesOf("a\n"), (Lines{L"a\n", L"a\n"}));
}

TEST_F(ReadHeaderLinesTest, UnendedLastLineStandsOnce) {
  EXPECT_EQ(LinesOf("a\nb"), (Lines{L"a\n", L"b"}));
  EXPECT_EQ(LinesOf("a"), (Lines{L"a"}));
}

TEST_F(ReadHeaderLinesTest, EmptyLinesAreKept) {
  EXPECT_EQ(LinesOf("\n\na"), (Lines{L"\n", L"\n", L"a"}));
  EXPECT_EQ(LinesOf("\n"), (Lines{L"\n", L"\n"}));
}

TEST_F(ReadHeaderLinesTest, EmptyFileHasOneEmptyLine) { EXPECT_EQ(LinesOf(""), (Lines{L""})); }

TEST_F(ReadHeaderLinesTest, CarriageReturnBeforeLineFeedIsFolded) {
  EXPECT_EQ(LinesOf("a\r\nb\r\n"), (Lines{L"a\n", L"b\n", L"b\n"}));
}

TEST_F(ReadHeaderLinesTest, OtherCarriageReturnsStay) {
  EXPECT_EQ(LinesOf("a\rb\r\r\nc\r"), (Lines{L"a\rb\r\n", L"c\r"}));
}

TEST_F(ReadHeaderLinesTest, CtrlZEndsTheText) {
  EXPECT_EQ(LinesOf("a\nb\x1a"
                    "c\nd\n"),
            (Lines{L"a\n", L"b"}));
  EXPECT_EQ(LinesOf("a\n\x1a"
                    "b\n"),
            (Lines{L"a\n", L"a\n"}));
  EXPECT_EQ(LinesOf("\x1a"
                    "a\n"),
            (Lines{L""}));
}

TEST_F(ReadHeaderLinesTest, EveryOtherByteBecomesTheCharacterOfTheSameCode) {
  std::string text;
  std::wstring line;
  for (int code = 1; code < 256; ++code) {
    if (code == '\n' || code == '\r' || code == 0x1a) continue;
    text += static_cast<char>(code);
    line += static_cast<wchar_t>(code);
  }
  EXPECT_EQ(LinesOf(text), (Lines{line}));
  EXPECT_EQ(LinesOf("5 \xb5g\n"), (Lines{L"5 \u00b5g\n", L"5 \u00b5g\n"}));
}

// A pair of bytes that would be one character in UTF-8 stays a pair.
TEST_F(ReadHeaderLinesTest, Utf8IsNotDecoded) { EXPECT_EQ(LinesOf("\xc2\xb5"), (Lines{L"\u00c2\u00b5"})); }

TEST_F(ReadHeaderLinesTest, NulEndsTheLinesText) {
  EXPECT_EQ(LinesOf(std::string_view("a\0b\nc\nd", 7)), (Lines{L"a", L"c\n", L"d"}));
  EXPECT_EQ(LinesOf(std::string_view("a\0b\n", 4)), (Lines{L"a", L"a"}));
}

TEST_F(ReadHeaderLinesTest, LineThatFillsTheBufferIsOnePiece) {
  const std::string text(kLongestPiece - 1, 'x');
  const std::wstring line(kLongestPiece - 1, L'x');
  EXPECT_EQ(LinesOf(text + "\nb"), (Lines{line + L"\n", L"b"}));
  EXPECT_EQ(LinesOf(text + "\r\nb"), (Lines{line + L"\n", L"b"}));
}

TEST_F(ReadHeaderLinesTest, LongerLineContinuesInTheNextPiece) {
  const std::string text(kLongestPiece, 'x');
  const std::wstring piece(kLongestPiece, L'x');
  EXPECT_EQ(LinesOf(text + "\nb"), (Lines{piece, L"\n", L"b"}));
  EXPECT_EQ(LinesOf(text + "y\nb"), (Lines{piece, L"y\n", L"b"}));
  EXPECT_EQ(LinesOf(text + text + "y"), (Lines{piece, piece, L"y"}));
}

// Deliberate: the end is not reached while the buffer fills, so a full piece without a line end also appears
// twice.
TEST_F(ReadHeaderLinesTest, UnendedLastPieceOfFullLengthStandsTwice) {
  const std::string text(kLongestPiece, 'x');
  const std::wstring piece(kLongestPiece, L'x');
  EXPECT_EQ(LinesOf(text), (Lines{piece, piece}));
  EXPECT_EQ(LinesOf(text.substr(1)), (Lines{piece.substr(1)}));
}

// Two lines of 9 bytes each; a carriage return at the cut stays.
TEST_F(ReadHeaderLinesTest, TruncatedFileGivesTheLinesBeforeTheCut) {
  const std::wstring text = L"$$ A: 1\r\n$$ B: 2\r\n";
  const std::wstring first = L"$$ A: 1\n";
  const std::wstring second = L"$$ B: 2\n";
  directory_.WriteText("_HEADER.TXT", std::string(text.begin(), text.end()));
  TruncateAtEveryLength(directory_, "_HEADER.TXT", [&](std::size_t size) {
    Lines expected;
    if (size < 9) {
      expected = {text.substr(0, size)};
    } else if (size == 9) {
      expected = {first, first};
    } else if (size < 18) {
      expected = {first, text.substr(9, size - 9)};
    } else {
      expected = {first, second, second};
    }
    EXPECT_EQ(LinesOf(Open()), expected);
  });
}

TEST_F(ReadHeaderLinesTest, ClosedFileHasOneEmptyLine) { EXPECT_EQ(LinesOf(platform::File()), (Lines{L""})); }

TEST_F(IsMassLynxHeaderTest, AcceptsEitherKeyInTheFirstLine) {
  EXPECT_TRUE(IsHeader("$$ Version: 01.00\r\n$$ Acquired Name: a\r\n"));
  EXPECT_TRUE(IsHeader("$$ Acquired Name: a\r\n"));
  EXPECT_TRUE(IsHeader("$$ Version"));
}

TEST_F(IsMassLynxHeaderTest, AcceptsAKeyAnywhereInTheFirstLine) {
  EXPECT_TRUE(IsHeader("\xff\xfe x$$ Version\n"));
  EXPECT_TRUE(IsHeader("\xb5 $$ Acquired Namesake\n"));
}

TEST_F(IsMassLynxHeaderTest, RejectsOtherFirstLines) {
  EXPECT_FALSE(IsHeader(""));
  EXPECT_FALSE(IsHeader("\n"));
  EXPECT_FALSE(IsHeader("$$ Instrument: x\n"));
  EXPECT_FALSE(IsHeader("$$ version: 01.00\n"));
  EXPECT_FALSE(IsHeader("$$ ACQUIRED NAME: a\n"));
  EXPECT_FALSE(IsHeader("$$  Version: 01.00\n"));
  EXPECT_FALSE(IsHeader("Version: 01.00\n"));
  EXPECT_FALSE(IsHeader("$$ Acquired Date: 1-Jan-2020\n"));
}

TEST_F(IsMassLynxHeaderTest, DoesNotLookAtTheSecondLine) {
  EXPECT_FALSE(IsHeader("\n$$ Version: 01.00\n"));
  EXPECT_FALSE(IsHeader("a\r\n$$ Version: 01.00\r\n"));
  EXPECT_FALSE(IsHeader("$$ Vers\nion: 01.00\n"));
}

TEST_F(IsMassLynxHeaderTest, DoesNotReadPastCtrlZ) {
  EXPECT_FALSE(IsHeader("a\x1a$$ Version: 01.00\n"));
  EXPECT_TRUE(IsHeader("$$ Version\x1a"));
}

TEST_F(IsMassLynxHeaderTest, LooksAtTheFirstLineBufferOnly) {
  const std::string key = "$$ Version";
  const std::size_t lastStart = kFirstLineBuffer - 1 - key.size();  // it then ends with the buffer's text
  EXPECT_TRUE(IsHeader(std::string(lastStart, 'x') + key + "\n"));
  EXPECT_FALSE(IsHeader(std::string(lastStart + 2, 'x') + key + "\n"));
  EXPECT_FALSE(IsHeader(std::string(kFirstLineBuffer, 'x') + key + "\n"));
}

TEST_F(IsMassLynxHeaderTest, TruncatedHeaderIsAcceptedFromTheWholeKeyOn) {
  directory_.WriteText("_HEADER.TXT", "$$ Version: 01.00\r\n");
  TruncateAtEveryLength(directory_, "_HEADER.TXT", [&](std::size_t size) {
    EXPECT_EQ(IsMassLynxHeader(Open()), size >= 10);  // "$$ Version" is 10 bytes
  });
}

TEST_F(IsMassLynxHeaderTest, RejectsAClosedFile) { EXPECT_FALSE(IsMassLynxHeader(platform::File())); }

std::wstring Lookup(const std::vector<std::string_view>& lines, std::string_view key) {
  std::wstring value = L"untouched";
  LookupHeaderValue(lines, key, value);
  return value;
}

TEST(LookupHeaderValue, GivesTheTrimmedRestOfTheLine) {
  EXPECT_EQ(Lookup({"$$ Instrument: QTOF 1\n"}, "Instrument"), L"QTOF 1");
  EXPECT_EQ(Lookup({"$$ Instrument: \t a  b \r\n"}, "Instrument"), L"a  b");
  EXPECT_EQ(Lookup({"$$ Instrument: a: b"}, "Instrument"), L"a: b");
}

TEST(LookupHeaderValue, EmptyValueReplacesTheOldOne) {
  EXPECT_EQ(Lookup({"$$ Instrument: \n"}, "Instrument"), L"");
}

TEST(LookupHeaderValue, FirstMatchingLineWins) {
  EXPECT_EQ(Lookup({"$$ Other: 0\n", "$$ Instrument: 1\n", "$$ Instrument: 2\n"}, "Instrument"), L"1");
  EXPECT_EQ(Lookup({"$$ Instrument: \n", "$$ Instrument: 2\n"}, "Instrument"), L"");
}

TEST(LookupHeaderValue, LeavesTheValueUntouchedWithoutAMatch) {
  EXPECT_EQ(Lookup({}, "Instrument"), L"untouched");
  EXPECT_EQ(Lookup({""}, "Instrument"), L"untouched");
  EXPECT_EQ(Lookup({"$$ Other: 1\n"}, "Instrument"), L"untouched");
}

TEST(LookupHeaderValue, PrefixMustMatchExactlyFromTheLineStart) {
  for (const char* const line : {"$$ instrument: 1\n", "$$ INSTRUMENT: 1\n", " $$ Instrument: 1\n",
                                 "$$ Instrument:1\n", "$$ Instrument : 1\n", "$$  Instrument: 1\n",
                                 "$$ Instrument Name: 1\n", "$$ Instrument", "x$$ Instrument: 1\n"}) {
    EXPECT_EQ(Lookup({line}, "Instrument"), L"untouched") << line;
  }
}

// The blank after the colon belongs to the prefix, so a line without any value may not match.
TEST(LookupHeaderValue, ColonWithoutBlankDoesNotMatch) {
  EXPECT_EQ(Lookup({"$$ Instrument:\n"}, "Instrument"), L"untouched");
}

TEST(LookupHeaderValue, KeyMayHoldBlanksAndPercentSigns) {
  EXPECT_EQ(Lookup({"$$ Sample Description: x\n"}, "Sample Description"), L"x");
  EXPECT_EQ(Lookup({"$$ %d %ls: x\n"}, "%d %ls"), L"x");
}

TEST(LookupHeaderValue, KeepsCharactersAboveAscii) {
  EXPECT_EQ(Lookup({"$$ User Name: J\xf8rn \xb5\xa0\n"}, "User Name"), L"J\u00f8rn \u00b5\u00a0");
}

TEST(AnalysisDateTime, JoinsDateAndTime) {
  EXPECT_EQ(AnalysisDateTime(L"14-Nov-2026", L"23:59:01"), L"2026-11-14T23:59:01+00:00");
}

// Deliberate: only the month is padded.
TEST(AnalysisDateTime, DayKeepsItsSingleDigit) {
  EXPECT_EQ(AnalysisDateTime(L"5-Mar-2021", L"09:15:00"), L"2021-03-5T09:15:00+00:00");
  EXPECT_EQ(AnalysisDateTime(L"05-Mar-21", L"9:15"), L"21-03-05T9:15+00:00");
}

TEST(AnalysisDateTime, KnowsTwelveMonths) {
  const struct {
    const wchar_t* date;
    const wchar_t* converted;
  } cases[] = {
      {L"1-Jan-2020", L"2020-01-1T+00:00"}, {L"1-Feb-2020", L"2020-02-1T+00:00"},
      {L"1-Mar-2020", L"2020-03-1T+00:00"}, {L"1-Apr-2020", L"2020-04-1T+00:00"},
      {L"1-May-2020", L"2020-05-1T+00:00"}, {L"1-Jun-2020", L"2020-06-1T+00:00"},
      {L"1-Jul-2020", L"2020-07-1T+00:00"}, {L"1-Aug-2020", L"2020-08-1T+00:00"},
      {L"1-Sep-2020", L"2020-09-1T+00:00"}, {L"1-Oct-2020", L"2020-10-1T+00:00"},
      {L"1-Nov-2020", L"2020-11-1T+00:00"}, {L"1-Dec-2020", L"2020-12-1T+00:00"},
  };
  for (const auto& expected : cases) EXPECT_EQ(AnalysisDateTime(expected.date, L""), expected.converted);
}

TEST(AnalysisDateTime, OtherMonthNamesGiveMonthZero) {
  for (const wchar_t* const month : {L"MAR", L"mar", L"March", L"Ma", L"Mrz", L"3", L" Mar", L"Mar "}) {
    EXPECT_EQ(AnalysisDateTime(std::wstring(L"5-") + month + L"-2021", L"09:15:00"),
              L"2021-00-5T09:15:00+00:00")
        << month;
  }
}

TEST(AnalysisDateTime, MissingFieldsAreEmpty) {
  EXPECT_EQ(AnalysisDateTime(L"", L""), L"-00-T+00:00");
  EXPECT_EQ(AnalysisDateTime(L"", L"09:15:00"), L"-00-T09:15:00+00:00");
  EXPECT_EQ(AnalysisDateTime(L"14", L"09:15:00"), L"-00-14T09:15:00+00:00");
  EXPECT_EQ(AnalysisDateTime(L"14-", L"09:15:00"), L"-00-14T09:15:00+00:00");
  EXPECT_EQ(AnalysisDateTime(L"14-Nov", L"09:15:00"), L"-11-14T09:15:00+00:00");
  EXPECT_EQ(AnalysisDateTime(L"14-Nov-", L"09:15:00"), L"-11-14T09:15:00+00:00");
}

// A field needs at least one character; matching stops at the first that has none.
TEST(AnalysisDateTime, EmptyFieldEndsTheSplit) {
  EXPECT_EQ(AnalysisDateTime(L"-Nov-2026", L"x"), L"-00-Tx+00:00");
  EXPECT_EQ(AnalysisDateTime(L"14--2026", L"x"), L"-00-14Tx+00:00");
  EXPECT_EQ(AnalysisDateTime(L"-", L"x"), L"-00-Tx+00:00");
}

TEST(AnalysisDateTime, YearEndsAtAThirdDash) {
  EXPECT_EQ(AnalysisDateTime(L"14-Nov-2026-x", L"y"), L"2026-11-14Ty+00:00");
}

TEST(AnalysisDateTime, FieldsAreCopiedAsWritten) {
  EXPECT_EQ(AnalysisDateTime(L"x y-Nov-z\u00b5", L"9.15 h"), L"z\u00b5-11-x yT9.15 h+00:00");
}

// "2026-11-14T" is 11 characters and "+00:00" 6, so a time of 62 makes the 79 that a buffer of 80 holds.
TEST(AnalysisDateTime, LongestTextHas79Characters) {
  const std::wstring time(62, L't');
  const std::wstring whole = L"2026-11-14T" + time + L"+00:00";
  ASSERT_EQ(whole.size(), 79u);
  EXPECT_EQ(AnalysisDateTime(L"14-Nov-2026", time), whole);
  EXPECT_EQ(AnalysisDateTime(L"14-Nov-2026", time + L"t"), L"2026-11-14T" + time + L"t+00:0");
  EXPECT_EQ(AnalysisDateTime(L"14-Nov-2026", std::wstring(500, L't')),
            L"2026-11-14T" + std::wstring(68, L't'));
}

}  // namespace
}  // namespace zrml::masslynx
