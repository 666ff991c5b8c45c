// Pieces of lines, and the two quick searches compared with a walk through all pieces.
#include "openlynx/report_stream.h"

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/temp_directory.h"

namespace zrml::openlynx {
namespace {

using Mode = ReportStream::Mode;

class ReportStreamTest : public testing::Test {
 protected:
  ReportStream Open(const std::string& text, Mode mode = Mode::kBinary) {
    directory_.WriteText("report.rpt", text);
    return ReportStream::Open(platform::ToSystemPath(directory_.WidePath("report.rpt")), mode);
  }

  std::vector<std::string> Pieces(const std::string& text, Mode mode = Mode::kBinary) {
    ReportStream stream = Open(text, mode);
    std::vector<std::string> pieces;
    std::string_view piece;
    while (stream.Next(piece)) pieces.emplace_back(piece);
    return pieces;
  }

  std::vector<std::size_t> PieceSizes(const std::string& text, Mode mode = Mode::kBinary) {
    std::vector<std::size_t> sizes;
    for (const std::string& piece : Pieces(text, mode)) sizes.push_back(piece.size());
    return sizes;
  }

  TempDirectory directory_{"reports"};
};

using Sizes = std::vector<std::size_t>;

std::string LineOf(std::size_t size) { return std::string(size, 'x') + '\n'; }

TEST_F(ReportStreamTest, PieceEndsWithItsLineFeed) {
  EXPECT_EQ(Pieces("a\n\nbc\r\nd"), (std::vector<std::string>{"a\n", "\n", "bc\r\n", "d"}));
  EXPECT_EQ(Pieces("a\n"), (std::vector<std::string>{"a\n"}));
  EXPECT_TRUE(Pieces("").empty());
}

// A buffer of 1000 bytes holds 999 and the terminator: a line of 998 fits with its line feed, the line feed
// of one of 999 is a separate piece.
TEST_F(ReportStreamTest, LongLineComesInPieces) {
  const std::vector<std::pair<std::size_t, Sizes>> cases = {
      {997, {998}},     {998, {999}},       {999, {999, 1}},       {1000, {999, 2}},
      {1001, {999, 3}}, {1997, {999, 999}}, {1998, {999, 999, 1}}, {5000, {999, 999, 999, 999, 999, 6}},
  };
  for (const auto& [size, expected] : cases) {
    SCOPED_TRACE(size);
    Sizes withNext = expected;
    withNext.push_back(5);
    EXPECT_EQ(PieceSizes(LineOf(size) + "next\n"), withNext);
  }
  EXPECT_EQ(PieceSizes(std::string(999, 'x')), (Sizes{999}));
  EXPECT_EQ(PieceSizes(std::string(1000, 'x')), (Sizes{999, 1}));
}

TEST_F(ReportStreamTest, BytesStayAsTheyAre) {
  const std::string text("a\0b\x1a\r\r\n\xff", 8);
  EXPECT_EQ(Pieces(text), (std::vector<std::string>{std::string("a\0b\x1a\r\r\n", 7), "\xff"}));
}

TEST_F(ReportStreamTest, PositionsAreOffsetsInTheFile) {
  ReportStream stream = Open("ab\r\ncd\n");
  std::string_view piece;
  EXPECT_EQ(stream.Position(), 0U);
  ASSERT_TRUE(stream.Next(piece));
  EXPECT_EQ(stream.Position(), 4U);
  ASSERT_TRUE(stream.Next(piece));
  EXPECT_EQ(stream.Position(), 7U);
  EXPECT_FALSE(stream.Next(piece));
  stream.Seek(4);
  ASSERT_TRUE(stream.Next(piece));
  EXPECT_EQ(piece, "cd\n");
  stream.Seek(1000);  // after the end
  EXPECT_FALSE(stream.Next(piece));
  stream.Seek(1);
  ASSERT_TRUE(stream.Next(piece));
  EXPECT_EQ(piece, "b\r\n");
}

TEST_F(ReportStreamTest, ClosedStreamHasNothing) {
  ReportStream stream;
  std::string_view piece;
  EXPECT_FALSE(stream.IsOpen());
  EXPECT_FALSE(stream.Next(piece));
  EXPECT_FALSE(stream.NextMarked(piece));
  EXPECT_FALSE(stream.Find("["));
}

TEST_F(ReportStreamTest, TextModeFoldsCrLfAndEndsAtCtrlZ) {
  EXPECT_EQ(Pieces("a\r\nb\rc\r\r\nd", Mode::kText), (std::vector<std::string>{"a\n", "b\rc\r\n", "d"}));
  EXPECT_EQ(Pieces("a\r\nb\x1a\nc", Mode::kText), (std::vector<std::string>{"a\n", "b"}));
  EXPECT_EQ(Pieces("a\r\x1a\n", Mode::kText), (std::vector<std::string>{"a\r"}));
  EXPECT_EQ(Pieces("a\r", Mode::kText), (std::vector<std::string>{"a\r"}));
  EXPECT_EQ(Pieces("\r", Mode::kText), (std::vector<std::string>{"\r"}));
  EXPECT_TRUE(Pieces("\x1a[SAMPLE]", Mode::kText).empty());
}

TEST_F(ReportStreamTest, TextModeCountsAFoldedLineEndAsOneByte) {
  EXPECT_EQ(PieceSizes(std::string().append(998, 'x').append("\r\nab"), Mode::kText), (Sizes{999, 2}));
  EXPECT_EQ(PieceSizes(std::string().append(998, 'x').append("\r\nab")), (Sizes{999, 1, 2}));
}

// Files are read in blocks of 131,072 bytes: text across a border must not reveal it.
TEST_F(ReportStreamTest, BlockBordersDoNotShow) {
  constexpr std::size_t kBlock = 131072;
  for (std::size_t before = kBlock - 12; before <= kBlock + 2; ++before) {
    SCOPED_TRACE(before);
    std::string filler;
    while (filler.size() + 100 < before) filler += std::string(63, 'x') + '\n';
    filler += std::string(before - filler.size() - 1, 'y') + '\n';
    const std::string text = filler + "[SAMPLE]\r\n{\r\nlast";
    std::vector<std::string> tail = Pieces(text);
    tail.erase(tail.begin(), tail.end() - 3);
    EXPECT_EQ(tail, (std::vector<std::string>{"[SAMPLE]\r\n", "{\r\n", "last"}));
    tail = Pieces(text, Mode::kText);
    tail.erase(tail.begin(), tail.end() - 3);
    EXPECT_EQ(tail, (std::vector<std::string>{"[SAMPLE]\n", "{\n", "last"}));
    ReportStream stream = Open(text);
    ASSERT_TRUE(stream.Find("[SAMPLE]"));
    EXPECT_EQ(stream.Position(), before);
    std::string_view piece;
    ASSERT_TRUE(stream.NextMarked(piece));
    ASSERT_TRUE(stream.NextMarked(piece));
    EXPECT_EQ(piece, "{\r\n");
    EXPECT_FALSE(stream.NextMarked(piece));
  }
}

TEST_F(ReportStreamTest, TextModeKeepsACrBeforeABlockBorder) {
  constexpr std::size_t kBlock = 131072;
  for (const char* end : {"\r", "\rx", "\r\r", "\r\x1a"}) {
    std::string expected = end;
    if (expected.back() == '\x1a') expected.pop_back();
    for (std::size_t before = kBlock - 3; before <= kBlock; ++before) {
      const std::string text = Pieces(std::string(before, '\n') + end, Mode::kText).back();
      EXPECT_EQ(text, expected) << before;
    }
  }
}

TEST_F(ReportStreamTest, FindTakesBeginningsOfPiecesOnly) {
  ReportStream stream =
      Open(" [SAMPLE]\nx[SAMPLE]\n[SAMPLE\n" + std::string().append(999, 'x').append("[SAMPLE] a\n") +
           std::string().append(998, 'x').append("[SAMPLE] b\n"));
  ASSERT_TRUE(stream.Find("[SAMPLE]"));
  std::string_view piece;
  ASSERT_TRUE(stream.Next(piece));
  EXPECT_EQ(piece, "[SAMPLE] a\n");
  EXPECT_FALSE(stream.Find("[SAMPLE]"));
}

// Both searches compared with a walk through all pieces, on bytes that matter to them.
TEST_F(ReportStreamTest, SearchesFindWhatGoingThroughAllPiecesFinds) {
  const std::vector<std::string> parts = {"[SAMPLE]",
                                          "\n[SAMPLE]",
                                          "[",
                                          "{",
                                          "}",
                                          "\n",
                                          "]",
                                          "_",
                                          "y",
                                          "\x7f",
                                          "Y",
                                          "1.5\t",
                                          std::string(1, '\0'),
                                          "[SAMPLE",
                                          std::string(7, 'x'),
                                          std::string(500, 'x'),
                                          std::string(998, '1'),
                                          std::string(999, '['),
                                          "\xDB\xFB\xFD"};
  std::mt19937 random(3);
  std::size_t found = 0;
  for (int round = 0; round < 300; ++round) {
    std::string text;
    for (int i = 0; i < 60; ++i) text += parts[random() % parts.size()];
    std::vector<std::string> marked;
    std::vector<std::string> samples;
    for (const std::string& piece : Pieces(text)) {
      if (piece[0] == '[' || piece[0] == '{' || piece[0] == '}') marked.push_back(piece);
      if (piece.starts_with("[SAMPLE]")) samples.push_back(piece);
    }
    std::string_view piece;
    ReportStream stream = Open(text);
    for (const std::string& expected : marked) {
      ASSERT_TRUE(stream.NextMarked(piece));
      ASSERT_EQ(piece, expected);
    }
    EXPECT_FALSE(stream.NextMarked(piece));
    stream.Seek(0);
    for (const std::string& expected : samples) {
      ASSERT_TRUE(stream.Find("[SAMPLE]"));
      ASSERT_TRUE(stream.Next(piece));
      ASSERT_EQ(piece, expected);
    }
    EXPECT_FALSE(stream.Find("[SAMPLE]"));
    found += samples.size();
  }
  EXPECT_GT(found, 100U);
}

}  // namespace
}  // namespace zrml::openlynx
