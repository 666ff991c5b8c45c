#include "masslynx/directory_files.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "masslynx/function_record.h"
#include "tests/support/temp_directory.h"

namespace zrml::masslynx {
namespace {

std::string ContentOf(const platform::File& file) {
  FileBytes bytes(static_cast<std::size_t>(file.Size()));
  bytes.resize(file.ReadAt(0, bytes));
  return BytesToText(bytes);
}

/// The content of the file that opens; "closed" when none does.
std::string ContentIn(const std::wstring& directory, std::wstring_view name) {
  const platform::File file = OpenInDirectory(platform::ToSystemPath(directory), name);
  return file.IsOpen() ? ContentOf(file) : "closed";
}

/// Whether "A" and "a" are two files here, as on every Linux but not on Windows.
bool HasCaseSensitiveNames() {
  const TempDirectory probe;
  probe.WriteText("A", "");
  return !platform::IsFile(probe.WidePath("a"));
}

TEST(OpenInDirectory, OpensUpperAndLowerCaseNames) {
  const TempDirectory directory;
  directory.WriteText("_UPPER.INF", "upper");
  directory.WriteText("_lower.inf", "lower");
  for (const wchar_t* const name : {L"_UPPER.INF", L"_upper.inf", L"_Upper.Inf"}) {
    EXPECT_EQ(ContentIn(directory.WidePath(), name), "upper") << name;
  }
  for (const wchar_t* const name : {L"_LOWER.INF", L"_lower.inf", L"_Lower.Inf"}) {
    EXPECT_EQ(ContentIn(directory.WidePath(), name), "lower") << name;
  }
}

TEST(OpenInDirectory, PrefersTheUpperCaseName) {
  if (!HasCaseSensitiveNames()) GTEST_SKIP() << "names differing in case are one file here";
  const TempDirectory directory;
  directory.WriteText("_BOTH.INF", "upper");
  directory.WriteText("_both.inf", "lower");
  EXPECT_EQ(ContentIn(directory.WidePath(), L"_both.inf"), "upper");
  directory.Remove("_BOTH.INF");
  EXPECT_EQ(ContentIn(directory.WidePath(), L"_BOTH.INF"), "lower");
}

// Deliberate: not even the name as given is tried in a mixed case of its own.
TEST(OpenInDirectory, NeverTriesAMixedCase) {
  if (!HasCaseSensitiveNames()) GTEST_SKIP() << "names differing in case are one file here";
  const TempDirectory directory;
  directory.WriteText("_Mixed.inf", "mixed");
  EXPECT_EQ(ContentIn(directory.WidePath(), L"_Mixed.inf"), "closed");
}

TEST(OpenInDirectory, DirectoryKeepsItsCase) {
  const TempDirectory directory("Mixed Case.raw");
  directory.WriteText("_UPPER.INF", "upper");
  EXPECT_EQ(ContentIn(directory.WidePath(), L"_upper.inf"), "upper");
}

TEST(OpenInDirectory, TrailingBackslashMakesNoDifference) {
  const TempDirectory directory;
  directory.WriteText("_UPPER.INF", "upper");
  EXPECT_EQ(ContentIn(directory.WidePath(), L"_upper.inf"), "upper");
  EXPECT_EQ(ContentIn(directory.WidePath() + L'\\', L"_upper.inf"), "upper");
}

TEST(OpenInDirectory, EmptyTextsOpenNothing) {
  const TempDirectory directory;
  directory.WriteText("_UPPER.INF", "upper");
  EXPECT_EQ(ContentIn(directory.WidePath(), L""), "closed");
  EXPECT_EQ(ContentIn(L"", directory.WidePath("_UPPER.INF")), "closed");
  EXPECT_EQ(ContentIn(L"", L""), "closed");
}

TEST(OpenInDirectory, MissingFileOrDirectoryOpensNothing) {
  const TempDirectory directory;
  directory.WriteText("_UPPER.INF", "upper");
  EXPECT_EQ(ContentIn(directory.WidePath(), L"_other.inf"), "closed");
  EXPECT_EQ(ContentIn(directory.WidePath("missing"), L"_upper.inf"), "closed");
}

TEST(OpenInDirectory, DirectoryIsNoFile) {
  const TempDirectory directory;
  directory.MakeDirectory("_UPPER.INF");
  EXPECT_EQ(ContentIn(directory.WidePath(), L"_upper.inf"), "closed");
}

TEST(OpenInDirectory, EmptyFileOpens) {
  const TempDirectory directory;
  directory.WriteText("_UPPER.INF", "");
  EXPECT_EQ(ContentIn(directory.WidePath(), L"_upper.inf"), "");
}

// The answers must equal those of OpenInDirectory(), whether it tries a few names or lists the directory for
// many.
class FileFinderTest : public testing::TestWithParam<std::size_t> {
 protected:
  bool Opens(const std::wstring& name) const {
    const platform::SystemPath path = directory_.SystemPath();
    const bool opens = FileFinder(path, GetParam()).Opens(name);
    EXPECT_EQ(opens, OpenInDirectory(path, name).IsOpen()) << name;
    return opens;
  }

  TempDirectory directory_;
};

INSTANTIATE_TEST_SUITE_P(FewAndMany, FileFinderTest, testing::Values(1, 100));

TEST_P(FileFinderTest, FindsUpperAndLowerCaseNames) {
  directory_.WriteText("_FUNC001.DAT", "");
  directory_.WriteText("_func002.dat", "");
  for (const wchar_t* const name : {L"_FUNC001.DAT", L"_func001.dat", L"_Func002.Dat"})
    EXPECT_TRUE(Opens(name)) << name;
  EXPECT_FALSE(Opens(L"_FUNC003.DAT"));
  EXPECT_FALSE(Opens(L"_FUNC001.DA"));
  EXPECT_FALSE(Opens(L"_FUNC001.DATA"));
}

TEST_P(FileFinderTest, NeverFindsAMixedCase) {
  if (!HasCaseSensitiveNames()) GTEST_SKIP() << "names differing in case are one file here";
  directory_.WriteText("_Func001.dat", "");
  EXPECT_FALSE(Opens(L"_Func001.dat"));
}

TEST_P(FileFinderTest, FindsTheLowerCaseNameDespiteADirectory) {
  directory_.MakeDirectory("_FUNC001.DAT");
  EXPECT_FALSE(Opens(L"_FUNC001.DAT"));
  if (!HasCaseSensitiveNames()) GTEST_SKIP() << "names differing in case are one file here";
  directory_.WriteText("_func001.dat", "");
  EXPECT_TRUE(Opens(L"_FUNC001.DAT"));
}

TEST_P(FileFinderTest, OtherNamesInTheDirectoryMakeNoDifference) {
  directory_.WriteText("_FUNC001.DAT", "");
  directory_.WriteText(u8"\u00b5 and \u017f", "");
  EXPECT_TRUE(Opens(L"_FUNC001.DAT"));
  EXPECT_FALSE(Opens(L"_FUNC002.DAT"));
}

TEST_P(FileFinderTest, FileThatVanishesIsNotFound) {
  directory_.WriteText("_FUNC001.DAT", "");
  const platform::SystemPath path = directory_.SystemPath();
  const FileFinder finder(path, GetParam());
  ASSERT_TRUE(finder.Opens(L"_FUNC001.DAT"));
  directory_.Remove("_FUNC001.DAT");
  EXPECT_FALSE(finder.Opens(L"_FUNC001.DAT"));
}

TEST_P(FileFinderTest, FileThatComesLaterIsFoundByTheNext) {
  const platform::SystemPath path = directory_.SystemPath();
  const FileFinder early(path, GetParam());
  directory_.WriteText("_FUNC001.DAT", "");
  const bool isListed = GetParam() > 1;
  EXPECT_EQ(early.Opens(L"_FUNC001.DAT"), !isListed);
  EXPECT_TRUE(Opens(L"_FUNC001.DAT"));
}

TEST(FileFinder, DirectoryOfTooManyNamesIsNotListed) {
  const TempDirectory directory;
  for (int i = 0; i < 8 * 16; ++i) directory.WriteText("other " + std::to_string(i), "");
  const platform::SystemPath path = directory.SystemPath();
  const FileFinder finder(path, 8);
  directory.WriteText("_FUNC001.DAT", "");
  EXPECT_TRUE(finder.Opens(L"_FUNC001.DAT")) << "a list would not contain it";
}

TEST(FileFinder, MissingDirectoryHasNothing) {
  const TempDirectory directory;
  const platform::SystemPath path = platform::ToSystemPath(directory.WidePath("missing"));
  EXPECT_FALSE(FileFinder(path, 100).Opens(L"_FUNC001.DAT"));
}

TEST(FileExistsInDirectory, IsTrueForAFile) {
  const TempDirectory directory;
  directory.WriteText("_header.txt", "");
  EXPECT_TRUE(FileExistsInDirectory(platform::ToSystemPath(directory.WidePath()), L"_header.txt"));
  EXPECT_TRUE(FileExistsInDirectory(platform::ToSystemPath(directory.WidePath() + L'\\'), L"_header.txt"));
}

TEST(FileExistsInDirectory, NeverLooksForAMixedCase) {
  if (!HasCaseSensitiveNames()) GTEST_SKIP() << "names differing in case are one file here";
  const TempDirectory directory;
  directory.WriteText("_Header.txt", "");
  EXPECT_FALSE(FileExistsInDirectory(directory.SystemPath(), L"_Header.txt"));
  directory.Rename("_Header.txt", "_HEADER.TXT");
  EXPECT_TRUE(FileExistsInDirectory(directory.SystemPath(), L"_Header.txt"));
  directory.Rename("_HEADER.TXT", "_header.txt");
  EXPECT_TRUE(FileExistsInDirectory(directory.SystemPath(), L"_Header.txt"));
}

TEST(FileExistsInDirectory, IsFalseForADirectoryOrNothing) {
  const TempDirectory directory;
  directory.MakeDirectory("_header.txt");
  EXPECT_FALSE(FileExistsInDirectory(platform::ToSystemPath(directory.WidePath()), L"_header.txt"));
  EXPECT_FALSE(FileExistsInDirectory(platform::ToSystemPath(directory.WidePath()), L"_other.txt"));
}

TEST(FileExistsInDirectory, IsFalseWithoutTheDirectory) {
  const TempDirectory directory;
  directory.WriteText("_header.txt", "");
  EXPECT_FALSE(FileExistsInDirectory(platform::ToSystemPath(directory.WidePath("missing")), L"_header.txt"));
  EXPECT_FALSE(
      FileExistsInDirectory(platform::ToSystemPath(directory.WidePath("_header.txt")), L"_header.txt"));
  EXPECT_FALSE(FileExistsInDirectory(platform::ToSystemPath(L""), L"_header.txt"));
}

TEST(IsRawDirectory, NeedsHeaderAndFunctionTableInEitherSpelling) {
  const char* const headers[] = {"_HEADER.TXT", "_header.txt"};
  const char* const tables[] = {"_FUNCTNS.INF", "_functns.inf"};
  for (const char* const header : headers) {
    for (const char* const table : tables) {
      const TempDirectory directory;
      EXPECT_FALSE(IsRawDirectory(platform::ToSystemPath(directory.WidePath())));
      directory.WriteText(header, "");
      EXPECT_FALSE(IsRawDirectory(platform::ToSystemPath(directory.WidePath()))) << header;
      directory.WriteText(table, "");
      EXPECT_TRUE(IsRawDirectory(platform::ToSystemPath(directory.WidePath()))) << header << " " << table;
      EXPECT_TRUE(IsRawDirectory(platform::ToSystemPath(directory.WidePath() + L'\\')))
          << header << " " << table;
      directory.Remove(header);
      EXPECT_FALSE(IsRawDirectory(platform::ToSystemPath(directory.WidePath()))) << table;
    }
  }
}

TEST(IsRawDirectory, RejectsMixedCase) {
  if (!HasCaseSensitiveNames()) GTEST_SKIP() << "names differing in case are one file here";
  const TempDirectory directory;
  directory.WriteText("_HEADER.TXT", "");
  directory.WriteText("_Functns.inf", "");
  EXPECT_FALSE(IsRawDirectory(platform::ToSystemPath(directory.WidePath())));
  directory.Rename("_Functns.inf", "_FUNCTNS.INF");
  EXPECT_TRUE(IsRawDirectory(platform::ToSystemPath(directory.WidePath())));
}

TEST(IsRawDirectory, RejectsDirectoriesInPlaceOfTheFiles) {
  const TempDirectory directory;
  directory.WriteText("_HEADER.TXT", "");
  directory.MakeDirectory("_FUNCTNS.INF");
  EXPECT_FALSE(IsRawDirectory(platform::ToSystemPath(directory.WidePath())));
}

TEST(IsRawDirectory, RejectsFilesAndMissingPaths) {
  const TempDirectory directory;
  directory.WriteText("_HEADER.TXT", "");
  directory.WriteText("_FUNCTNS.INF", "");
  EXPECT_FALSE(IsRawDirectory(platform::ToSystemPath(directory.WidePath("_HEADER.TXT"))));
  EXPECT_FALSE(IsRawDirectory(platform::ToSystemPath(directory.WidePath("missing"))));
  EXPECT_FALSE(IsRawDirectory(platform::ToSystemPath(L"")));
}

TEST(FunctionStem, IsTheCommonPartOfAFunctionsFileNames) {
  EXPECT_EQ(FunctionStem("_FUNC002.DAT"), "_FUNC002");
  EXPECT_EQ(FunctionStem("_func002.idx"), "_FUNC002");
  EXPECT_EQ(FunctionStem("_Proc1000.cdt"), "_PROC1000");
  for (const char* const other : {"", "_FUNC", "_FUN001.DAT", "xFUNC001.DAT", "_FUNC001", "_FUNC001.DATA"})
    EXPECT_EQ(FunctionStem(other), "") << other;
}

TEST(FunctionFileName, HasThreeDigitsOrMore) {
  EXPECT_EQ(FunctionFileName(1, L"dat"), L"_FUNC001.dat");
  EXPECT_EQ(FunctionFileName(42, L"CDT"), L"_FUNC042.CDT");
  EXPECT_EQ(FunctionFileName(999, L"idx"), L"_FUNC999.idx");
  EXPECT_EQ(FunctionFileName(1000, L"idx"), L"_FUNC1000.idx");
  EXPECT_EQ(FunctionFileName(65535, L"sts"), L"_FUNC65535.sts");
}

TEST(ProcessedFileName, HasThreeDigitsOrMore) {
  EXPECT_EQ(ProcessedFileName(0, L"dat"), L"_PROC000.dat");
  EXPECT_EQ(ProcessedFileName(7, L"DAT"), L"_PROC007.DAT");
  EXPECT_EQ(ProcessedFileName(65535, L"idx"), L"_PROC65535.idx");
}

class OpenFunctionFileTest : public testing::Test {
 protected:
  std::string ContentOfFile(bool processed, std::uint16_t number, std::wstring_view extension) const {
    FunctionRecord function;
    function.processed = processed;
    function.number = number;
    const platform::File file = OpenFunctionFile(directory_.SystemPath(), function, extension);
    return file.IsOpen() ? ContentOf(file) : "closed";
  }

  TempDirectory directory_;
};

TEST_F(OpenFunctionFileTest, StemFollowsTheProcessedFlag) {
  directory_.WriteText("_FUNC003.DAT", "raw");
  directory_.WriteText("_PROC003.DAT", "processed");
  EXPECT_EQ(ContentOfFile(false, 3, L"dat"), "raw");
  EXPECT_EQ(ContentOfFile(true, 3, L"dat"), "processed");
  EXPECT_EQ(ContentOfFile(false, 4, L"dat"), "closed");
  EXPECT_EQ(ContentOfFile(false, 3, L"idx"), "closed");
}

TEST_F(OpenFunctionFileTest, TriesTheNameAsWrittenThenUpperThenLowerCase) {
  if (!HasCaseSensitiveNames()) GTEST_SKIP() << "names differing in case are one file here";
  directory_.WriteText("_FUNC001.idx", "as written");
  directory_.WriteText("_FUNC001.IDX", "upper");
  directory_.WriteText("_func001.idx", "lower");
  EXPECT_EQ(ContentOfFile(false, 1, L"idx"), "as written");
  directory_.Remove("_FUNC001.idx");
  EXPECT_EQ(ContentOfFile(false, 1, L"idx"), "upper");
  directory_.Remove("_FUNC001.IDX");
  EXPECT_EQ(ContentOfFile(false, 1, L"idx"), "lower");
  directory_.Remove("_func001.idx");
  EXPECT_EQ(ContentOfFile(false, 1, L"idx"), "closed");
}

}  // namespace
}  // namespace zrml::masslynx
