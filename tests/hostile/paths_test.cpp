// Paths of every kind, and wrong kinds of things in place of a file or folder.
#include <filesystem>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "plugin/raw_server.h"
#include "plugin/report_server.h"
#include "tests/hostile/reading.h"

namespace zrml {
namespace {

namespace fs = std::filesystem;

std::wstring Wide(const fs::path& path) { return platform::FromNativePath(path.native()); }

// Whether all of WholeDirectory() is read at `path`. No answer depends on the path.
bool ReadsWhole(const std::wstring& path) {
  static const TempDirectory control = WholeDirectory().Build();
  plugin::CMLDataServerImpl server;
  const Answers expected = ReadEverything(server, control.WidePath());
  return expected[2] == "functions 3" && ReadEverything(server, path) == expected;
}

bool Opens(const std::wstring& path) {
  plugin::CMLDataServerImpl server;
  return server.ValidateSource(path) && server.Open(path);
}

// As a user other than root, for whom permissions count.
class AsNobody {
 public:
  AsNobody() : wasRoot_(::geteuid() == 0) {
    if (wasRoot_ && ::seteuid(65534) != 0) throw std::runtime_error("cannot become nobody");
  }
  AsNobody(const AsNobody&) = delete;
  AsNobody& operator=(const AsNobody&) = delete;
  ~AsNobody() {
    if (wasRoot_ && ::seteuid(0) != 0) std::abort();
  }

 private:
  bool wasRoot_;
};

TEST(Paths, LongOnesWithBlanksAndOtherScriptsAreRead) {
  for (const char8_t* const name : {u8"with a blank .raw", u8"\u00b5-\u00df-\u65e5\u672c\u8a9e.raw",
                                    u8"\U0001F9EA.raw", u8"-x", u8"%s%n.raw"}) {
    EXPECT_TRUE(ReadsWhole(WholeDirectory().Build(name).WidePath())) << fs::path(name);
  }
  const TempDirectory outer;
  fs::path deep = outer.Path();
  while (deep.native().size() < 300) deep /= "a folder of thirty characters!";
  fs::create_directories(deep);
  WholeDirectory().WriteTo(deep);
  EXPECT_TRUE(ReadsWhole(Wide(deep)));
}

TEST(Paths, TooLongOnesAreRefused) {
  const std::wstring name(300, L'a');  // longer than a file system allows
  EXPECT_FALSE(Opens(L"/tmp/" + name));
  std::wstring deep = L"/tmp";
  for (int i = 0; i < 100; ++i) deep += L'/' + name.substr(0, 100);
  EXPECT_FALSE(Opens(deep));
}

TEST(Paths, TrailingSeparatorsChangeNothing) {
  const TempDirectory directory = WholeDirectory().Build();
  for (const wchar_t* const end : {L"/", L"\\", L"//", L"\\\\", L"/."})
    EXPECT_TRUE(ReadsWhole(directory.WidePath() + end)) << platform::ToNativePath(end);
}

TEST(Paths, SymbolicLinksAreFollowed) {
  const TempDirectory directory = WholeDirectory().Build();
  const TempDirectory other;
  fs::create_directory_symlink(directory.Path(), other.Path() / "link.raw");
  EXPECT_TRUE(ReadsWhole(other.WidePath("link.raw")));
  fs::rename(directory.Path() / "_FUNC001.DAT", other.Path() / "data");
  fs::create_symlink(other.Path() / "data", directory.Path() / "_FUNC001.DAT");
  EXPECT_TRUE(ReadsWhole(directory.WidePath()));
}

TEST(Paths, LinksThatLeadNowhereOrInACircleAreMissingFiles) {
  const TempDirectory directory;
  for (const char* const target : {"nowhere", "circle.raw"}) {
    fs::remove(directory.Path() / "circle.raw");
    fs::create_symlink(directory.Path() / target, directory.Path() / "circle.raw");
    EXPECT_FALSE(Opens(directory.WidePath("circle.raw")));
  }
}

TEST(Paths, FileInPlaceOfTheDirectoryIsNoSource) {
  const TempDirectory directory;
  directory.WriteText("run.raw", "$$ Version: 01.00");
  EXPECT_FALSE(Opens(directory.WidePath("run.raw")));
}

TEST(Paths, DirectoryInPlaceOfAReportIsNoReport) {
  const TempDirectory directory("report.rpt");
  plugin::COpenLynxRptDataServerImpl server;
  EXPECT_FALSE(server.ValidateSource(directory.WidePath()));
  EXPECT_FALSE(server.Open(directory.WidePath()));
}

// Replaces each file of a raw directory by something else and reads the directory.
void ReplaceEachFile(const std::function<void(const fs::path& file)>& put) {
  for (const auto& [name, bytes] : WholeDirectory().Files()) {
    SCOPED_TRACE(name);
    const TempDirectory directory = WholeDirectory().Build();
    put(directory.Path() / name);
    plugin::CMLDataServerImpl server;
    const Answers answers = ReadEverything(server, directory.WidePath());
    const bool needed = name == "_HEADER.TXT" || name == "_FUNCTNS.INF";
    EXPECT_EQ(answers[1], needed ? "open 0" : "open 1");
    server.Close();
    fs::remove(directory.Path() / name);
    WriteFileBytes(directory.Path() / name, bytes);
    EXPECT_EQ(ReadEverything(server, directory.WidePath())[2], "functions 3") << "the object is sound";
  }
}

TEST(Paths, FolderInPlaceOfAFileIsAMissingFile) {
  ReplaceEachFile([](const fs::path& file) {
    fs::remove(file);
    fs::create_directory(file);
  });
}

TEST(Paths, PipeInPlaceOfAFileIsAMissingFile) {
  ReplaceEachFile([](const fs::path& file) {
    fs::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
  });
}

TEST(Paths, FileWithoutPermissionIsAMissingFile) {
  const TempDirectory directory = WholeDirectory().Build();
  fs::permissions(directory.Path().parent_path(), fs::perms::all);
  fs::permissions(directory.Path() / "_FUNC001.DAT", fs::perms::none);
  const AsNobody nobody;
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(server.GetFunctionCount(0), 2) << "a function without data is not listed";
}

// The names cannot be listed then, but files still open.
TEST(Paths, DirectoryThatMayOnlyBePassedThroughIsRead) {
  constexpr int kFunctions = 20;  // enough to be listed
  RawDirectoryBuilder raw;
  raw.functions.resize(kFunctions);
  for (const auto spelling : {Spelling::kUpperCase, Spelling::kLowerCase}) {
    raw.spelling = spelling;
    const TempDirectory directory = raw.Build();
    fs::permissions(directory.Path().parent_path(), fs::perms::all);
    fs::permissions(directory.Path(), fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec);
    {
      const AsNobody nobody;
      EXPECT_FALSE(platform::ListNames(platform::ToSystemPath(directory.WidePath()), 1000).has_value())
          << "the control";
      plugin::CMLDataServerImpl server;
      EXPECT_TRUE(server.Open(directory.WidePath()));
      EXPECT_EQ(server.GetFunctionCount(0), kFunctions);
      EXPECT_FALSE(server.HasMobility(0, 0));
    }
    fs::permissions(directory.Path(), fs::perms::owner_all);
  }
}

TEST(Paths, DirectoryWithoutPermissionIsNoSource) {
  const TempDirectory directory = WholeDirectory().Build();
  fs::permissions(directory.Path().parent_path(), fs::perms::all);
  {
    const AsNobody nobody;
    EXPECT_TRUE(Opens(directory.WidePath())) << "the control";
  }
  fs::permissions(directory.Path(), fs::perms::none);
  {
    const AsNobody nobody;
    EXPECT_FALSE(Opens(directory.WidePath()));
  }
  fs::permissions(directory.Path(), fs::perms::owner_all);
}

}  // namespace
}  // namespace zrml
