#include "convert/native_path.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/temp_directory.h"

namespace zrml::convert::test {
namespace {

SystemPath Native(const std::string& path) { return platform::FromUtf8Path(path); }

TEST(NativePathTest, IsTakenApart) {
  const struct {
    const char* path;
    const char* folder;
    const char* name;
    const char* stem;
  } cases[] = {
      {"run.mzML", "", "run.mzML", "run"},
      {"a.b/run", "a.b/", "run", "run"},
      {"/a/_FUNC001.DAT", "/a/", "_FUNC001.DAT", "_FUNC001"},
      {"a/x.y.z", "a/", "x.y.z", "x.y"},
      {"a/", "a/", "", ""},
#ifdef _WIN32
      {"C:run.mzML", "C:", "run.mzML", "run"},
      {"a\\b/run.mzML", "a\\b/", "run.mzML", "run"},
      {"\\\\server\\share\\run.raw", "\\\\server\\share\\", "run.raw", "run"},
#else
      {"a\\b", "", "a\\b", "a\\b"},
#endif
  };
  for (const auto& test : cases) {
    EXPECT_EQ(FolderOf(Native(test.path)), Native(test.folder)) << test.path;
    EXPECT_EQ(NameOf(Native(test.path)), Native(test.name)) << test.path;
    EXPECT_EQ(StemOf(Native(test.path)), test.stem) << test.path;
  }
}

TEST(NativePathTest, FileInAFolder) {
  EXPECT_EQ(InFolder("", "x"), "x");
  EXPECT_EQ(InFolder("a/b", "x"), "a/b/x");
  EXPECT_EQ(InFolder("a/b/", "x"), "a/b/x");
#ifdef _WIN32
  EXPECT_EQ(InFolder("a\\b", "x"), "a\\b/x");
  EXPECT_EQ(InFolder("a\\", "x"), "a\\x");
  EXPECT_EQ(InFolder("C:", "x"), "C:x");
  EXPECT_EQ(InFolder("\\\\?\\C:\\a", "x"), "\\\\?\\C:\\a\\x");
#endif
}

#ifdef _WIN32
TEST(NativePathTest, TextHasSlashesAndNoMarks) {
  EXPECT_EQ(PathText(L"C:\\a\\b"), "C:/a/b");
  EXPECT_EQ(PathText(L"\\\\server\\share\\a"), "//server/share/a");
  EXPECT_EQ(PathText(L"\\\\?\\C:\\a"), "C:/a");
  EXPECT_EQ(PathText(L"\\\\?\\UNC\\server\\share\\a"), "//server/share/a");
}
#endif

TEST(NativePathTest, FoldersAreMadeWithThoseThatTheyAreIn) {
  const TempDirectory directory;
  const auto path = [&](const std::string& name) {
    return platform::ToUtf8Path(directory.Path()) + "/" + name;
  };
  for (const char* const name : {"a/b/c", "d/e/", "f//g", ".", "a/b/c"}) {
    EXPECT_EQ(MakeFolders(path(name)), "") << name;
    EXPECT_TRUE(platform::IsDirectory(Native(path(name)))) << name;
  }
  directory.WriteText("file", "text");
  EXPECT_NE(MakeFolders(path("file")), "");
  EXPECT_NE(MakeFolders(path("file/a/b")), "");
}

TEST(NativePathTest, FolderInTheCurrentOne) {
  EXPECT_EQ(MakeFolders("."), "");
  EXPECT_EQ(MakeFolders(".."), "");
}

}  // namespace
}  // namespace zrml::convert::test
