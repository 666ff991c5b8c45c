#include "common/platform/paths.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "tests/support/temp_directory.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <cerrno>
#include <sys/stat.h>
#endif

namespace zrml::platform {
namespace {

namespace fs = std::filesystem;

class Paths : public testing::Test {
 protected:
  SystemPath PathOf(const fs::path& name) const { return directory_.Path() / name; }

  TempDirectory directory_;
};

TEST_F(Paths, AbsoluteOnesHaveNoDotsAndNoSeparatorAtTheirEnd) {
  const SystemPath inner = PathOf("inner");
  for (const char* const name : {"inner", "inner/", "./inner", "other/../inner", "inner/."})
    EXPECT_EQ(AbsolutePath(PathOf(name)), AbsolutePath(inner)) << name;
  const SystemPath current = AbsolutePath(FromUtf8Path("."));
  EXPECT_EQ(IdOf(current), IdOf(FromUtf8Path(".")));
  EXPECT_EQ(AbsolutePath(FromUtf8Path("inner")), PathIn(current, FromUtf8Path("inner")));
}

TEST_F(Paths, FileIsTheSameUnderEveryName) {
  directory_.WriteText("one", "text");
  directory_.WriteText("two", "text");
  directory_.MakeDirectory("folder");
  fs::create_hard_link(PathOf("one"), PathOf("again"));
  ASSERT_TRUE(IdOf(PathOf("one")).has_value());
  EXPECT_EQ(IdOf(PathOf("one")), IdOf(PathOf("again")));
  EXPECT_NE(IdOf(PathOf("one")), IdOf(PathOf("two")));
  ASSERT_TRUE(IdOf(PathOf("folder")).has_value());
  EXPECT_EQ(IdOf(PathOf("folder")), IdOf(PathOf("folder/../folder/")));
  EXPECT_EQ(IdOf(PathOf("missing")), std::nullopt);
  EXPECT_EQ(IdOf({}), std::nullopt);
}

TEST_F(Paths, FolderIsMadeOnce) {
  EXPECT_EQ(MakeFolder(PathOf("new")), "");
  EXPECT_TRUE(fs::is_directory(PathOf("new")));
  EXPECT_EQ(MakeFolder(PathOf("new")), "");
  directory_.WriteText("file", "text");
  EXPECT_NE(MakeFolder(PathOf("file")), "");
  EXPECT_NE(MakeFolder(PathOf("missing/new")), "");
  EXPECT_FALSE(fs::exists(PathOf("missing")));
}

TEST_F(Paths, FilesAreListedInOrder) {
  for (const char* const name : {"c", "a", "b"}) directory_.WriteText(name, "text");
  directory_.MakeDirectory("folder");
  const FileList list = ListFiles(directory_.SystemPath());
  EXPECT_EQ(list.names, (std::vector<SystemPath>{FromUtf8Path("a"), FromUtf8Path("b"), FromUtf8Path("c")}));
  EXPECT_EQ(list.error, "");
  for (const fs::path name : {"a", "missing"}) {
    const FileList none = ListFiles(PathOf(name));
    EXPECT_TRUE(none.names.empty());
    EXPECT_NE(none.error, "");
    EXPECT_FALSE(none.isForbidden);
  }
}

TEST_F(Paths, FilesAndFoldersAreNoDevices) {
  directory_.WriteText("file", "text");
  for (const char* const name : {"file", ".", "missing"}) EXPECT_FALSE(IsDevice(PathOf(name))) << name;
}

#ifdef _WIN32
TEST_F(Paths, NamesOfDevicesAreDevices) {
  for (const wchar_t* const path : {L"NUL", L"nul", L"NUL:", L"CON", L"C:\\AUX", L"\\\\.\\pipe\\name"})
    EXPECT_TRUE(IsDevice(path)) << ToNativePath(path);
  EXPECT_FALSE(IsDevice(L"\\\\?\\C:\\NUL"));
  EXPECT_FALSE(IsDevice(L"console"));
}

TEST_F(Paths, AbsoluteOnesOfServersStayThere) {
  EXPECT_EQ(AbsolutePath(L"\\\\server\\share\\run.raw\\"), L"\\\\server\\share\\run.raw");
  EXPECT_EQ(AbsolutePath(L"//server/share/a/../run.raw"), L"\\\\server\\share\\run.raw");
  EXPECT_EQ(AbsolutePath(L"\\\\?\\UNC\\server\\share\\run.raw\\"), L"\\\\?\\UNC\\server\\share\\run.raw");
  EXPECT_EQ(AbsolutePath(L"\\\\?\\C:\\run.raw"), L"\\\\?\\C:\\run.raw");
  EXPECT_EQ(AbsolutePath(L"C:/run.raw//"), L"C:\\run.raw");
  EXPECT_EQ(AbsolutePath(L"C:/"), L"C:\\");
}

TEST_F(Paths, LongOnesAreMarked) {
  const std::wstring name(240, L'n');
  EXPECT_EQ(Reachable(L"C:/short"), L"C:/short");
  EXPECT_EQ(Reachable(L"C:\\" + name), L"C:\\" + name);  // 243
  EXPECT_EQ(Reachable(L"C:/folder/" + name), L"\\\\?\\C:\\folder\\" + name);
  EXPECT_EQ(Reachable(L"//server/share/" + name), L"\\\\?\\UNC\\server\\share\\" + name);
  EXPECT_EQ(Reachable(L"\\\\?\\C:\\folder\\" + name), L"\\\\?\\C:\\folder\\" + name);
}

TEST_F(Paths, CaseDoesNotDistinguishFiles) {
  directory_.WriteText("run.mzML", "text");
  ASSERT_TRUE(IdOf(PathOf("run.mzML")).has_value());
  EXPECT_EQ(IdOf(PathOf("run.mzML")), IdOf(PathOf("RUN.MZML")));
}

// Wine's messages are shorter than those of Windows.
TEST(ErrorText, SaysItInWordsAndWithTheNumber) {
  const std::string text = ErrorText(ERROR_ACCESS_DENIED);
  EXPECT_TRUE(text.starts_with("Access ") && text.ends_with("denied, system error 5")) << text;
  EXPECT_EQ(ErrorText(0x20001234), "system error 536875572");  // whose words are a program's
}
#else
TEST_F(Paths, LinksAreFollowedToTheirEnd) {
  directory_.WriteText("file", "text");
  directory_.MakeDirectory("folder");
  fs::create_symlink("../file", PathOf("folder/first"));
  fs::create_symlink(PathOf("folder/first"), PathOf("second"));
  fs::create_symlink("nowhere", PathOf("lost"));
  fs::create_symlink("circle", PathOf("circle"));
  EXPECT_EQ(FollowLinks(PathOf("second")), PathOf("folder/../file"));
  EXPECT_EQ(FollowLinks(PathOf("lost")), PathOf("nowhere"));
  EXPECT_EQ(FollowLinks(PathOf("circle")), PathOf("circle"));
  for (const char* const name : {"file", "folder", "missing"})
    EXPECT_EQ(FollowLinks(PathOf(name)), PathOf(name));
}

TEST_F(Paths, LinkThatLeadsNowhereIsThere) {
  fs::create_symlink("nowhere", PathOf("lost"));
  EXPECT_TRUE(IsThere(PathOf("lost")));
  EXPECT_TRUE(IsThere(directory_.Path()));
  EXPECT_FALSE(IsThere(PathOf("nowhere")));
  EXPECT_FALSE(IsThere({}));
}

TEST_F(Paths, OnlyFilesAreListed) {
  directory_.WriteText("file", "text");
  fs::create_symlink("file", PathOf("link"));
  fs::create_symlink("nowhere", PathOf("lost"));
  fs::create_symlink(".", PathOf("self"));
  ASSERT_EQ(::mkfifo(PathOf("pipe").c_str(), 0600), 0);
  EXPECT_EQ(ListFiles(directory_.SystemPath()).names, (std::vector<SystemPath>{"file", "link"}));
}

TEST_F(Paths, PipesAndDevicesAreDevices) {
  ASSERT_EQ(::mkfifo(PathOf("pipe").c_str(), 0600), 0);
  fs::create_symlink("/dev/null", PathOf("link"));
  EXPECT_TRUE(IsDevice(PathOf("pipe")));
  EXPECT_TRUE(IsDevice(PathOf("link")));
}

TEST(ErrorText, IsThatOfTheSystem) { EXPECT_EQ(ErrorText(EACCES), "Permission denied"); }
#endif

}  // namespace
}  // namespace zrml::platform
