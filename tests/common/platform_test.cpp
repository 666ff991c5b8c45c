#include "common/platform/platform.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/held_open.h"
#include "tests/support/temp_directory.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace zrml::platform {
namespace {

namespace fs = std::filesystem;

/// The bytes of a read, as text.
std::string ReadTextAt(const File& file, std::uint64_t offset, std::size_t count) {
  FileBytes bytes(count, std::byte{'?'});
  const std::size_t read = file.ReadAt(offset, bytes);
  EXPECT_LE(read, count);
  return BytesToText(std::span(bytes).first(read));
}

class Platform : public testing::Test {
 protected:
  File OpenNew(const fs::path& name, std::string_view text) {
    directory_.WriteText(name, text);
    return File::Open(directory_.WidePath(name));
  }

  TempDirectory directory_;
};

// --- Files

TEST_F(Platform, AFileIsOpenedByItsWidePath) {
  // e acute, two Chinese characters, blanks.
  for (const char8_t* name : {u8"plain", u8"caf\u00e9", u8"\u4e2d\u6587.raw", u8" a b"}) {
    const File file = OpenNew(fs::path(name), "text");
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(ReadTextAt(file, 0, 10), "text");
    EXPECT_TRUE(IsFile(directory_.WidePath(fs::path(name))));
    EXPECT_FALSE(IsDirectory(directory_.WidePath(fs::path(name))));
  }
}

TEST_F(Platform, AMissingPathIsNeitherFileNorDirectory) {
  for (const std::wstring& path :
       {directory_.WidePath("missing"), directory_.WidePath("missing") + L"/file", std::wstring()}) {
    EXPECT_FALSE(File::Open(path).IsOpen());
    EXPECT_FALSE(IsFile(path));
    EXPECT_FALSE(IsDirectory(path));
  }
}

TEST_F(Platform, ADirectoryIsNoFile) {
  EXPECT_TRUE(IsDirectory(directory_.WidePath()));
  EXPECT_FALSE(IsFile(directory_.WidePath()));
  EXPECT_FALSE(File::Open(directory_.WidePath()).IsOpen());
}

TEST_F(Platform, ABackslashSeparatesFolders) {
  directory_.MakeDirectory("inner");
  const File file = OpenNew(fs::path("inner") / "file", "text");
  ASSERT_TRUE(file.IsOpen());
  const std::wstring path = directory_.WidePath() + L"\\inner\\file";
  EXPECT_TRUE(File::Open(path).IsOpen());
  EXPECT_TRUE(IsFile(path));
  EXPECT_TRUE(IsDirectory(directory_.WidePath() + L"\\inner"));
  EXPECT_TRUE(IsDirectory(directory_.WidePath() + L"\\inner\\"));
}

TEST_F(Platform, APathWithANulNamesNothing) {
  ASSERT_TRUE(OpenNew("file", "text").IsOpen());
  const std::wstring path = directory_.WidePath("file") + L'\0';
  for (const std::wstring rest : {L"", L"x", L"/file"}) {
    EXPECT_FALSE(File::Open(path + rest).IsOpen());
    EXPECT_FALSE(IsFile(path + rest));
    EXPECT_FALSE(IsDirectory(directory_.WidePath() + L'\0' + rest));
  }
}

TEST_F(Platform, ReadsGiveTheBytesBetweenOffsetAndEnd) {
  const File file = OpenNew("file", "0123456789");
  EXPECT_EQ(file.Size(), 10U);
  const struct {
    std::uint64_t offset;
    std::size_t count;
    const char* text;
  } cases[] = {
      {0, 10, "0123456789"},
      {0, 4, "0123"},
      {3, 4, "3456"},
      {6, 4, "6789"},
      {6, 5, "6789"},
      {9, 1, "9"},
      {9, 100, "9"},
      {10, 1, ""},
      {11, 1, ""},
      {0, 0, ""},
      {10, 0, ""},
      {1ULL << 32, 4, ""},
      {(1ULL << 32) + 3, 4, ""},
      {(1ULL << 63) - 1, 4, ""},
      {1ULL << 63, 4, ""},
      {std::numeric_limits<std::uint64_t>::max(), 4, ""},
      {std::numeric_limits<std::uint64_t>::max() - 3, 8, ""},
      {3, 4, "3456"},  // reads do not move a position
  };
  for (const auto& test : cases)
    EXPECT_EQ(ReadTextAt(file, test.offset, test.count), test.text) << test.offset;
}

TEST_F(Platform, AnEmptyFileIsOpenAndGivesNothing) {
  const File file = OpenNew("file", "");
  EXPECT_TRUE(file.IsOpen());
  EXPECT_EQ(file.Size(), 0U);
  EXPECT_EQ(ReadTextAt(file, 0, 4), "");
}

TEST_F(Platform, OffsetsAreNotLimitedToTwoOrFourGigabytes) {
  // Only its first bytes are written; the rest of the file takes no room on the disk and reads as zero.
  constexpr std::uint64_t kFourGigabytes = 1ULL << 32;
  directory_.WriteText("large", "start");
  std::error_code error;
  fs::resize_file(directory_.Path() / "large", kFourGigabytes + 3, error);
  if (error) GTEST_SKIP() << "no sparse file of this size here: " << error.message();
  const File file = File::Open(directory_.WidePath("large"));
  EXPECT_EQ(file.Size(), kFourGigabytes + 3);
  EXPECT_EQ(ReadTextAt(file, 0, 5), "start");
  EXPECT_EQ(ReadTextAt(file, 1ULL << 31, 2), std::string(2, '\0'));
  EXPECT_EQ(ReadTextAt(file, kFourGigabytes, 5), std::string(3, '\0'));
}

TEST_F(Platform, AClosedFileGivesNothing) {
  File never;
  EXPECT_FALSE(never.IsOpen());
  File file = OpenNew("file", "text");
  file.Close();
  file.Close();
  for (const File* closed : {&never, &file}) {
    EXPECT_FALSE(closed->IsOpen());
    EXPECT_EQ(closed->Size(), 0U);
    EXPECT_EQ(ReadTextAt(*closed, 0, 4), "");
  }
}

TEST_F(Platform, MovingHandsTheFileOver) {
  File source = OpenNew("source", "source");
  File constructed(std::move(source));
  EXPECT_FALSE(source.IsOpen());  // NOLINT(bugprone-use-after-move): that is being tested
  EXPECT_EQ(ReadTextAt(constructed, 0, 10), "source");

  File target = OpenNew("target", "target");
  target = std::move(constructed);
  EXPECT_FALSE(constructed.IsOpen());  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(ReadTextAt(target, 0, 10), "source");

  target = File();
  EXPECT_FALSE(target.IsOpen());
}

TEST_F(Platform, FilesAreHeldOpenUntilClosedReplacedOrDestroyed) {
  const fs::path firstPath = directory_.Path() / "first";
  const fs::path secondPath = directory_.Path() / "second";
  {
    File first = OpenNew("first", "1");
    File second = OpenNew("second", "2");
    EXPECT_TRUE(IsHeldOpen(firstPath));
    EXPECT_TRUE(IsHeldOpen(secondPath));
    second = std::move(first);
    EXPECT_TRUE(IsHeldOpen(firstPath));
    EXPECT_FALSE(IsHeldOpen(secondPath));
    File third(std::move(second));
    EXPECT_TRUE(IsHeldOpen(firstPath));
    third.Close();
    EXPECT_FALSE(IsHeldOpen(firstPath));
    third = OpenNew("second", "2");
    EXPECT_TRUE(IsHeldOpen(secondPath));
  }
  EXPECT_FALSE(IsHeldOpen(secondPath));
}

TEST_F(Platform, AnAbandonedFileStaysOpen) {
  {
    File file = OpenNew("abandoned", "1");
    file.Abandon();
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(ReadTextAt(file, 0, 1), "");
  }
  EXPECT_TRUE(IsHeldOpen(directory_.Path() / "abandoned"));
}

TEST_F(Platform, ARefusedDirectoryIsNotHeldOpen) {
  const File refused = File::Open(directory_.WidePath());
  EXPECT_FALSE(refused.IsOpen());
  EXPECT_FALSE(IsHeldOpen(directory_.Path()));
}

#ifndef _WIN32
TEST_F(Platform, AFifoIsNoRegularFileAndDoesNotBlock) {
  const fs::path fifo = directory_.Path() / "fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  alarm(20);  // ends the program if opening waits for a writer
  EXPECT_FALSE(File::Open(directory_.WidePath("fifo")).IsOpen());
  alarm(0);
  EXPECT_TRUE(IsFile(directory_.WidePath("fifo")));  // exists and is no directory
}

TEST_F(Platform, AFileMayHaveAnyBytesInItsName) {
  for (const char* bytes : {"\xff", "caf\xe9", "\xc3\xa9", "\xed\xb3\xbf", "a\x80\xc3"}) {
    EXPECT_TRUE(OpenNew(fs::path(bytes), "text").IsOpen()) << testing::PrintToString(bytes);
    EXPECT_TRUE(IsFile(FromNativePath((directory_.Path() / bytes).native())));
  }
}
#endif

// --- Lists of names

std::optional<std::vector<std::string>> SortedNames(const std::wstring& directory, std::size_t most) {
  const std::optional<std::vector<SystemPath>> names = ListNames(ToSystemPath(directory), most);
  if (!names) return std::nullopt;
  std::vector<std::string> sorted;
  for (const SystemPath& name : *names) sorted.push_back(fs::path(name).string());
  std::sort(sorted.begin(), sorted.end());
  return sorted;
}

TEST_F(Platform, NamesOfADirectoryAreListed) {
  using Names = std::vector<std::string>;
  EXPECT_EQ(SortedNames(directory_.WidePath(), 10), (Names{".", ".."}));
  directory_.WriteText("b.dat", "");
  directory_.WriteText("A.DAT", "");
  directory_.MakeDirectory("inner");
  const Names all = {".", "..", "A.DAT", "b.dat", "inner"};
  for (const wchar_t* const end : {L"", L"\\", L"/"})
    EXPECT_EQ(SortedNames(directory_.WidePath() + end, 10), all);
}

TEST_F(Platform, NoMoreNamesAreListedThanRequested) {
  directory_.WriteText("file", "");
  ASSERT_EQ(SortedNames(directory_.WidePath(), 3), (std::vector<std::string>{".", "..", "file"}));
  EXPECT_EQ(SortedNames(directory_.WidePath(), 2), std::nullopt);
  EXPECT_EQ(SortedNames(directory_.WidePath(), 0), std::nullopt);
}

TEST_F(Platform, OnlyDirectoriesAreListed) {
  directory_.WriteText("file", "");
  EXPECT_EQ(SortedNames(directory_.WidePath("file"), 10), std::nullopt);
  EXPECT_EQ(SortedNames(directory_.WidePath("missing"), 10), std::nullopt);
  EXPECT_EQ(SortedNames(directory_.WidePath() + L'\0', 10), std::nullopt);
  EXPECT_EQ(SortedNames(L"", 10), std::nullopt);
}

TEST_F(Platform, ListingLeavesNothingOpen) {
  ASSERT_TRUE(SortedNames(directory_.WidePath(), 10).has_value());
  EXPECT_FALSE(IsHeldOpen(directory_.Path()));
  ASSERT_FALSE(SortedNames(directory_.WidePath(), 1).has_value());
  EXPECT_FALSE(IsHeldOpen(directory_.Path()));
}

// --- The system code page

TEST(CodePage, AsciiIsAsciiInEveryCodePage) {
  std::string ascii;
  for (char c = 0x20; c < 0x7f; ++c) ascii += c;
  ascii += std::string("\t\r\n\0end", 7);
  const std::wstring wide(ascii.begin(), ascii.end());
  EXPECT_EQ(FromCodePage(ascii), wide);
  EXPECT_EQ(ToCodePage(wide), ascii);
  EXPECT_EQ(FromCodePage(""), L"");
  EXPECT_EQ(ToCodePage(L""), "");
}

#ifdef _WIN32
TEST(CodePage, CharactersOutsideTheCodePageHaveNoNarrowForm) {
  if (GetACP() != 1252) GTEST_SKIP() << "the system code page is " << GetACP() << ", not 1252";
  EXPECT_EQ(ToCodePage(L"\u20ac\u00e9"), "\x80\xe9");
  EXPECT_EQ(FromCodePage("\x80\xe9"), L"\u20ac\u00e9");
  EXPECT_FALSE(ToCodePage(L"a\u4e2d").has_value());
  EXPECT_FALSE(ToCodePage(L"\u0100").has_value());  // A with macron is no A
}
#else
TEST(CodePage, ValidUtf8IsDecoded) {
  const struct {
    const char* bytes;
    const wchar_t* text;
  } cases[] = {
      {"\xc2\x80", L"\u0080"},              // first of two bytes
      {"\xc2\xb5g", L"\u00b5g"},            // micro sign
      {"\xdf\xbf", L"\u07ff"},              // last of two bytes
      {"\xe0\xa0\x80", L"\u0800"},          // first of three
      {"\xed\x9f\xbf", L"\ud7ff"},          // last before the surrogates
      {"\xee\x80\x80", L"\ue000"},          // first after them
      {"\xef\xbf\xbf", L"\uffff"},          // last of three
      {"\xf0\x90\x80\x80", L"\U00010000"},  // first of four
      {"\xf4\x8f\xbf\xbf", L"\U0010ffff"},  // last of all
  };
  for (const auto& test : cases) {
    EXPECT_EQ(FromCodePage(test.bytes), test.text);
    EXPECT_EQ(ToCodePage(test.text), test.bytes);
  }
}

TEST(CodePage, BytesThatAreNotUtf8AreWindows1252AsAWhole) {
  const struct {
    const char* name;
    std::string bytes;
    std::wstring text;
  } cases[] = {
      {"a single high byte", "\xb5g", L"\xb5g"},
      {"a lone continuation byte", "a\x80", L"a\x20ac"},
      {"a sequence cut short", "\xc3", L"\xc3"},
      {"a sequence of three cut short", "\xe2\x82", L"\xe2\x201a"},
      {"a sequence interrupted",
       "\xe2\x82"
       "a",
       L"\xe2\x201a"
       L"a"},
      {"two bytes for ASCII", "\xc1\xbf", L"\xc1\xbf"},
      {"two bytes for NUL", "\xc0\x80", L"\xc0\x20ac"},
      {"three bytes for two", "\xe0\x9f\xbf", L"\xe0\x178\xbf"},
      {"four bytes for three", "\xf0\x8f\xbf\xbf", L"\xf0\x8f\xbf\xbf"},
      {"a surrogate", "\xed\xa0\x80", L"\xed\xa0\x20ac"},
      {"beyond U+10FFFF", "\xf4\x90\x80\x80", L"\xf4\x90\x20ac\x20ac"},
      {"a lead byte that is never used", "\xf5\x80\x80\x80", L"\xf5\x20ac\x20ac\x20ac"},
      {"valid sequences next to an invalid one", "\xc2\xb5\xff", L"\xc2\xb5\xff"},
  };
  for (const auto& test : cases) EXPECT_EQ(FromCodePage(test.bytes), test.text) << test.name;
}

TEST(CodePage, Windows1252HasItsOwnCharactersFrom80To9F) {
  constexpr std::array<wchar_t, 32> kCharacters = {
      0x20ac, 0x0081, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021, 0x02c6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x008d, 0x017d, 0x008f, 0x0090, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022,
      0x2013, 0x2014, 0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x009d, 0x017e, 0x0178};
  for (int code = 0x80; code < 0x100; ++code) {
    const wchar_t expected =
        code < 0xa0 ? kCharacters[static_cast<std::size_t>(code - 0x80)] : static_cast<wchar_t>(code);
    EXPECT_EQ(FromCodePage(std::string(1, static_cast<char>(code))), std::wstring(1, expected))
        << std::hex << code;
  }
}

TEST(CodePage, InvalidCharactersHaveNoNarrowForm) {
  for (const unsigned code : {0xd800U, 0xdbffU, 0x110000U, 0x7fffffffU}) {
    EXPECT_FALSE(ToCodePage(L"a" + std::wstring(1, static_cast<wchar_t>(code))).has_value())
        << std::hex << code;
  }
}
#endif

// --- Native paths

TEST(NativePath, Utf8IsDecodedAndEncoded) {
  const struct {
    const char* narrow;
    const wchar_t* wide;
  } cases[] = {{"", L""},
               {"/a b/c.raw", L"/a b/c.raw"},
               {"caf\xc3\xa9", L"caf\u00e9"},
               {"\xe4\xb8\xad", L"\u4e2d"},
               {"\xf0\x9f\x98\x80", L"\U0001f600"}};
  for (const auto& test : cases) {
    EXPECT_EQ(FromNativePath(test.narrow), test.wide);
    EXPECT_EQ(ToNativePath(test.wide), test.narrow);
  }
}

TEST(RandomNumber, EveryBitIsSometimesSet) {
  // A bit that is the same in 200 numbers happens once in 2^195 runs.
  std::uint32_t any = 0;
  std::uint32_t all = ~0U;
  for (int i = 0; i < 200; ++i) {
    const std::uint32_t number = RandomNumber();
    any |= number;
    all &= number;
  }
  EXPECT_EQ(any, ~0U);
  EXPECT_EQ(all, 0U);
}

#ifndef _WIN32
TEST(NativePath, OtherBytesAreEscapedOneByOne) {
  const struct {
    std::string bytes;
    std::wstring wide;
  } cases[] = {
      {"\xff", L"\xdcff"},
      {"a\x80"
       "b",
       L"a\xdc80"
       L"b"},
      {"\xc3\xa9\xc3", L"\xe9\xdcc3"},
      {"\xe2\x82", L"\xdce2\xdc82"},
      {"\xc0\xaf", L"\xdcc0\xdcaf"},
      {"\xed\xb3\xbf", L"\xdced\xdcb3\xdcbf"},  // would be U+DCFF, an escape itself
  };
  for (const auto& test : cases) EXPECT_EQ(FromNativePath(test.bytes), test.wide);
}

TEST(NativePath, EveryPairAndTripleOfBytesSurvivesTheRoundTrip) {
  // Bytes at the edges of every class of UTF-8.
  const std::string edges =
      "\x01/Az\x7f\x80\x8f\x90\x9f\xa0\xbf\xc0\xc1\xc2\xdf\xe0\xe1\xec\xed\xee\xef\xf0\xf1\xf3\xf4\xf5\xff";
  for (const char a : edges) {
    for (const char b : edges) {
      for (const char c : edges) {
        for (const std::string& path :
             {std::string{a, b}, std::string{a, b, c}, std::string{a, b, c, '\x80', 'x'}}) {
          EXPECT_EQ(ToNativePath(FromNativePath(path)), path) << BytesToHex(TextToBytes(path));
        }
      }
    }
  }
}
#endif

}  // namespace
}  // namespace zrml::platform
