#include "common/text_file.h"

#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "common/text.h"
#include "tests/support/temp_directory.h"

namespace zrml {
namespace {

using namespace std::string_view_literals;

constexpr std::uint64_t kAll = std::numeric_limits<std::uint64_t>::max();

/// The text read from a file of these bytes.
class TextFile : public testing::Test {
 protected:
  std::wstring Text(std::string_view bytes, std::uint64_t maxBytes = kAll) {
    directory_.WriteText("text", bytes);
    const platform::File file = platform::File::Open(directory_.WidePath("text"));
    const std::wstring text = ReadText(file, maxBytes);
    EXPECT_EQ(FromBytes(ReadTextBytes(file, maxBytes)), text);
    return text;
  }

 private:
  TempDirectory directory_;
};

TEST_F(TextFile, CrLfIsFoldedAndALoneCrStays) {
  const struct {
    std::string_view bytes;
    std::wstring_view text;
  } cases[] = {
      {"", L""},
      {"a\r\nb\r\n", L"a\nb\n"},
      {"a\nb\n", L"a\nb\n"},
      {"a\rb", L"a\rb"},
      {"a\r", L"a\r"},
      {"\r", L"\r"},
      {"\r\n", L"\n"},
      {"a\r\r\nb", L"a\r\nb"},
      {"a\n\rb", L"a\n\rb"},
      {"\r\n\r\n", L"\n\n"},
  };
  for (const auto& test : cases) EXPECT_EQ(Text(test.bytes), test.text) << testing::PrintToString(test.bytes);
}

TEST_F(TextFile, CtrlZEndsTheText) {
  EXPECT_EQ(Text("a\r\nb\x1a"
                 "c\r\n"),
            L"a\nb");
  EXPECT_EQ(Text("\x1a"
                 "a"),
            L"");
  EXPECT_EQ(Text("a\n\x1a"), L"a\n");
  EXPECT_EQ(Text("a\r\x1a\n"), L"a\r");
}

TEST_F(TextFile, EachByteIsTheCharacterOfTheSameCode) {
  std::string bytes;
  std::wstring text;
  for (int code = 0; code < 256; ++code) {
    if (code == 0x1a) continue;
    bytes += static_cast<char>(code);
    text += static_cast<wchar_t>(code);
  }
  EXPECT_EQ(Text(bytes), text);
}

TEST_F(TextFile, AClosedFileHasNoText) { EXPECT_EQ(ReadText(platform::File()), L""); }

TEST_F(TextFile, ReadsNoMoreThanTheBytesRequested) {
  const std::string_view bytes =
      "ab\r\ncd\x1a"
      "e";
  const std::wstring_view texts[] = {L"",      L"a",      L"ab",     L"ab\r",  L"ab\n",
                                     L"ab\nc", L"ab\ncd", L"ab\ncd", L"ab\ncd"};
  for (std::size_t limit = 0; limit <= bytes.size(); ++limit)
    EXPECT_EQ(Text(bytes, limit), texts[limit]) << limit;
  EXPECT_EQ(Text(bytes, 1000), L"ab\ncd");
}

TEST_F(TextFile, FoldsAcrossTheBlocksOfReading) {
  // Files are read in blocks of 65536 bytes: the pieces start at every place around the first two block ends.
  const struct {
    std::string_view bytes;
    std::wstring_view text;
  } pieces[] = {{"\r\nx", L"\nx"},
                {"\rx", L"\rx"},
                {"\r", L"\r"},
                {"\r\r\nx", L"\r\nx"},
                {"\r\x1a"
                 "x",
                 L"\r"},
                {"\x1a"
                 "x",
                 L""}};
  for (const std::size_t block : {65536U, 131072U}) {
    for (std::size_t before = block - 3; before <= block + 1; ++before) {
      for (const auto& piece : pieces) {
        const std::wstring text = Text(std::string(before, 'a') + std::string(piece.bytes));
        ASSERT_EQ(text.size(), before + piece.text.size()) << before << testing::PrintToString(piece.bytes);
        EXPECT_EQ(text.substr(before), piece.text) << before;
        EXPECT_EQ(text.find_first_not_of(L'a'), piece.text.empty() ? std::wstring::npos : before);
      }
    }
  }
}

TEST_F(TextFile, LimitOnTheBlockEndCutsThere) {
  std::string bytes(65535, 'a');
  bytes += "\r\nb";
  EXPECT_EQ(Text(bytes, 65535).size(), 65535U);
  EXPECT_EQ(Text(bytes, 65536).substr(65535), L"\r");
  EXPECT_EQ(Text(bytes, 65537).substr(65535), L"\n");
  EXPECT_EQ(Text(bytes, 65538).substr(65535), L"\nb");
}

// --- Lines

/// The result of a sequence of reads: each piece in angle brackets, an exclamation mark where the end was
/// reached.
std::wstring Pieces(std::wstring_view text, std::size_t bufferSize) {
  LineReader reader(text, bufferSize);
  std::wstring story;
  std::wstring_view piece;
  while (reader.Next(piece)) {
    story += L'<';
    story += piece;
    story += L'>';
    if (reader.MetEnd()) story += L'!';
  }
  return story + (reader.MetEnd() ? L"!" : L"?");
}

TEST(LineReader, LinesEndWithTheirLineFeed) {
  EXPECT_EQ(Pieces(L"a\nb\n", 100), L"<a\n><b\n>!");
  EXPECT_EQ(Pieces(L"\n\n", 100), L"<\n><\n>!");
}

TEST(LineReader, TheEndIsMetWithTheLastPieceOnlyWhenItLacksALineFeed) {
  EXPECT_EQ(Pieces(L"a\nb", 100), L"<a\n><b>!!");
  EXPECT_EQ(Pieces(L"a\nb\n", 100), L"<a\n><b\n>!");
  EXPECT_EQ(Pieces(L"", 100), L"!");
  EXPECT_FALSE(LineReader(L"", 100).MetEnd());  // not before a read
}

TEST(LineReader, PiecesHoldOneCharacterLessThanTheBuffer) {
  EXPECT_EQ(Pieces(L"abc\n", 6), L"<abc\n>!");      // with room to spare
  EXPECT_EQ(Pieces(L"abc\n", 5), L"<abc\n>!");      // the line feed is the last that fits
  EXPECT_EQ(Pieces(L"abcd\n", 5), L"<abcd><\n>!");  // it does not fit any more
  EXPECT_EQ(Pieces(L"abcde\nf", 5), L"<abcd><e\n><f>!!");
  EXPECT_EQ(Pieces(L"abcdefghi\n", 5), L"<abcd><efgh><i\n>!");
}

TEST(LineReader, APieceThatFillsTheBufferDoesNotMeetTheEnd) {
  EXPECT_EQ(Pieces(L"abc", 5), L"<abc>!!");
  EXPECT_EQ(Pieces(L"abcd", 5), L"<abcd>!");  // reading stopped at the full buffer
  EXPECT_EQ(Pieces(L"abcde", 5), L"<abcd><e>!!");
}

TEST(LineReader, ANulEndsThePieceAndTheRestOfTheLineIsLost) {
  EXPECT_EQ(Pieces(L"ab\0cd\nef\n"sv, 100), L"<ab><ef\n>!");
  EXPECT_EQ(Pieces(L"\0\nef"sv, 100), L"<><ef>!!");
  EXPECT_EQ(Pieces(L"ab\0"sv, 100), L"<ab>!!");
  EXPECT_EQ(Pieces(L"a\0bcdef\n"sv, 5), L"<a><def\n>!");  // a NUL takes its place in the buffer
}

TEST(LineReader, WithoutAnotherPieceTheLastOneStays) {
  LineReader reader(L"a\n", 100);
  std::wstring_view piece;
  EXPECT_TRUE(reader.Next(piece));
  EXPECT_FALSE(reader.Next(piece));
  EXPECT_FALSE(reader.Next(piece));
  EXPECT_EQ(piece, L"a\n");
}

}  // namespace
}  // namespace zrml
