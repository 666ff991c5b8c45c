// Long paths, paths on a server and links as sources and targets; devices; and several names of one file.
#include <cstdlib>
#include <fstream>

#include "convert/native_path.h"
#include "convert/source_files.h"
#include "tests/support/sound_directory.h"
#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace zrml::test {
namespace {

namespace fs = std::filesystem;

class PathsTest : public ZrmlTest {
 protected:
  // Checks that every command reads the source at `path`, a SoundDirectory() called "run.raw", and that
  // conversion writes into the folder `out`, which does not exist yet.
  void ExpectUsable(const std::string& path, const std::string& out,
                    const std::string& separator = "/") const {
    EXPECT_EQ(Run({"info", path}).status, 0);
    EXPECT_EQ(Run({"spectrum", path, "--function", "1", "--scan", "1"}).status, 0);
    EXPECT_EQ(Run({"chromatogram", path, "--function", "1"}).status, 0);
    ExpectOutput(Run({"check", path}), path + " is sound: 2 functions, 5 scans\n");
    const std::string target = out + separator + "run.mzML";
    ExpectOutput(Run({"convert", path, "-o", out}), target + "\n");
    ExpectFailure(Run({"convert", path, "-o", out}), 5, target + " exists; --force replaces it");
    ExpectOutput(Run({"convert", path, "-o", out, "--force"}), target + "\n");
    ExpectFailure(Run({"convert", path, "-o", path}), 2,
                  path + separator + "run.mzML is a part of the source");
  }

  // The names of source files in the converted output.
  std::string Converted(const std::string& name) const { return ReadBytes(folder_ / name); }
};

TEST_F(PathsTest, LongOnesAreReadAndWritten) {
  const std::string name(99, 'n');
  const std::string folder = Path("a" + name) + "/b" + name + "/c" + name;
  ASSERT_EQ(convert::MakeFolders(folder), "");
  const std::string path = folder + "/run.raw";
  const auto move = [](const std::string& from, const std::string& to) {
#ifdef _WIN32
    fs::rename(platform::Reachable(platform::FromUtf8Path(from)),
               platform::Reachable(platform::FromUtf8Path(to)));
#else
    fs::rename(from, to);
#endif
  };
  move(Make("plain.raw", SoundDirectory()), path);
  ExpectUsable(path, folder + "/out");
  move(Path("a" + name) + "/b" + name, Path("short"));  // can be inspected and removed
  EXPECT_TRUE(Converted("short/c" + name + "/out/run.mzML").ends_with("</indexedmzML>\n"));
}

// Whatever the path is: the file that would be replaced is checked, not its name.
TEST_F(PathsTest, OtherSourceIsNoTarget) {
  const std::string raw = Make("run.raw", SoundDirectory());
  const std::string report = Make("run.mzML", Vials());
  const std::string before = ReadBytes(folder_ / "run.mzML");
  const ProcessResult result = Run({"convert", raw, report, "-o", Path("."), "--force"});
  EXPECT_EQ(result.status, 8);
  EXPECT_TRUE(result.errors.starts_with("zrml: " + Path(".") + "/run.mzML is a part of the source " + report))
      << result.errors;
  EXPECT_EQ(ReadBytes(folder_ / "run.mzML"), before);
}

TEST_F(PathsTest, FolderOfAnotherSourceTakesNoTarget) {
  const std::string raw = Make("run.raw", SoundDirectory());
  const std::string other = Make("other.raw", SoundDirectory());
  for (const std::string& second : {other, other + "/_FUNC001.DAT"}) {
    EXPECT_EQ(Run({"convert", raw, second, "-o", other, "--force"}).status, 8);
    EXPECT_FALSE(fs::exists(folder_ / "other.raw" / "run.mzML"));
  }
}

TEST_F(PathsTest, TargetMayBeBesideAReport) {
  const std::string report = Make("vials.rpt", Vials());
  EXPECT_EQ(Run({"convert", report, "-o", Path("."), "--sample", "1"}).status, 0);
}

// Nothing is opened before this check: the missing source is not reported.
TEST_F(PathsTest, DeviceIsNoTarget) {
#ifdef _WIN32
  const std::vector<std::string> devices = {"NUL", "nul", "con.mzML", Path("aux"), "\\\\.\\pipe\\name"};
#else
  const std::vector<std::string> devices = {"/dev/null", "/dev/full"};
#endif
  for (const std::string& device : devices) {
    for (const char* const force : {"-q", "--force"}) {
      ExpectFailure(Run({"convert", Path("missing.raw"), "-b", device, force}), 2,
                    device + " exists and is not a regular file");
    }
  }
}

#ifdef _WIN32
// A folder of Wine's that is a server's share, and a folder of the same path on the drive C.
class ServerTest : public PathsTest {
 protected:
  void SetUp() override {
    const char* const prefix = std::getenv("WINECONFIGDIR");  // \??\Z:\...
    if (prefix == nullptr) GTEST_SKIP() << "there is no server";
    servers_ = fs::path(std::string(prefix).substr(4)) / "dosdevices" / "unc";
    server_ = folder_.parent_path().filename().string();
    SoundDirectory().WriteTo(Made(servers_ / server_ / "share" / "run.raw"));
    const fs::path decoy = Made(fs::path("C:\\") / server_ / "share" / "run.raw");
    SoundDirectory().WriteTo(decoy);
    std::ofstream(decoy / "_DECOY.TXT") << "decoy";
    setup_.folder = "C:\\";
  }
  void TearDown() override {
    if (server_.empty()) return;
    fs::remove_all(servers_ / server_);
    fs::remove_all(fs::path("C:\\") / server_);
  }

  static fs::path Made(const fs::path& folder) {
    fs::create_directories(folder);
    return folder;
  }
  std::string OnServer(const std::string& start, const std::string& name) const {
    return start + server_ + "\\share\\" + name;
  }
  fs::path Share() const { return servers_ / server_ / "share"; }

  fs::path servers_;
  std::string server_;
};

TEST_F(ServerTest, IsReadAndWritten) {
  ExpectUsable(OnServer("\\\\", "run.raw"), OnServer("\\\\", "out\\deep"));
  ExpectUsable(OnServer("//", "run.raw"), OnServer("\\\\", "other"));
  ExpectUsable(OnServer("\\\\?\\UNC\\", "run.raw"), OnServer("\\\\?\\UNC\\", "marked"), "\\");
}

TEST_F(ServerTest, FilesAreThoseOfTheServer) {
  for (const char* const start : {"\\\\", "\\\\?\\UNC\\"}) {
    ASSERT_EQ(Run({"convert", OnServer(start, "run.raw"), "-o", Path("out"), "--force"}).status, 0);
    const std::string converted = Converted("out/run.mzML");
    EXPECT_NE(converted.find("location=\"file://" + server_ + "/share/run.raw\""), std::string::npos);
    EXPECT_NE(converted.find("name=\"_FUNC001.DAT\""), std::string::npos);
    EXPECT_EQ(converted.find("_DECOY.TXT"), std::string::npos);
  }
}

TEST_F(ServerTest, FilesAreWatched) {
  for (const char* const start : {"\\\\", "\\\\?\\UNC\\"}) {
    const convert::SourceStamp stamp(OnServer(start, "run.raw"));
    EXPECT_EQ(stamp.FindChange(), std::nullopt);
    std::ofstream(Share() / "run.raw" / "_FUNC001.DAT", std::ios::app) << "more";
    EXPECT_EQ(stamp.FindChange(), "_FUNC001.DAT");
  }
}

TEST_F(PathsTest, MarkedOnesAreReadAndWritten) {
  Make("run.raw", SoundDirectory());
  const auto marked = [&](const std::string& name) {
    return "\\\\?\\" + platform::ToUtf8Path(platform::AbsolutePath(folder_ / name));
  };
  ExpectUsable(marked("run.raw"), marked("out"), "\\");
}

TEST_F(PathsTest, NamesThatDifferInCaseAreOneTarget) {
  const std::string first = Make("a/run.raw", SoundDirectory());
  const std::string second = Make("b/RUN.raw", SoundDirectory());
  const ProcessResult result = Run({"convert", first, second, "-o", Path("out"), "--force"});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.output, Path("out") + "/run.mzML\n");
  EXPECT_TRUE(result.errors.starts_with("zrml: " + second + " would replace " + Path("out") +
                                        "/RUN.mzML, already written from another source\n"))
      << result.errors;
}

TEST_F(PathsTest, ProgramSaysThatItsPathsMayBeLong) {
  const HMODULE program = ::LoadLibraryExW(setup_.program.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
  ASSERT_NE(program, nullptr);
  const HRSRC found = ::FindResourceW(program, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(24));  // a manifest
  ASSERT_NE(found, nullptr);
  const std::string manifest(static_cast<const char*>(::LockResource(::LoadResource(program, found))),
                             ::SizeofResource(program, found));
  EXPECT_NE(manifest.find("SMI/2016/WindowsSettings'>true</longPathAware>"), std::string::npos) << manifest;
  ::FreeLibrary(program);
}
#else
TEST_F(PathsTest, LinksToOneFileAreOneTarget) {
  const std::string first = Make("run.raw", SoundDirectory());
  const std::string second = Make("other.raw", SoundDirectory());
  fs::create_directory(folder_ / "out");
  fs::create_symlink("run.mzML", folder_ / "out" / "other.mzML");
  const ProcessResult result = Run({"convert", first, second, "-o", Path("out"), "--force"});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.output, Path("out") + "/run.mzML\n");
  EXPECT_NE(Converted("out/run.mzML").find("/run.raw\""), std::string::npos);
}

TEST_F(PathsTest, LinkToAFileOfASourceIsNoTarget) {
  const std::string raw = Make("run.raw", SoundDirectory());
  const std::string before = ReadBytes(folder_ / "run.raw" / "_FUNC001.DAT");
  fs::create_symlink("run.raw/_FUNC001.DAT", folder_ / "link.mzML");
  ExpectFailure(Run({"convert", raw, "-b", Path("link.mzML"), "--force"}), 2,
                Path("link.mzML") + " is a part of the source");
  EXPECT_EQ(ReadBytes(folder_ / "run.raw" / "_FUNC001.DAT"), before);
}

TEST_F(PathsTest, LinkThatLeadsNowhereIsAFinding) {
  const std::string raw = Make("run.raw", SoundDirectory());
  EXPECT_EQ(Run({"check", raw}).status, 0) << "the control";
  fs::remove(folder_ / "run.raw" / "_EXTERN.INF");
  fs::create_symlink("nowhere", folder_ / "run.raw" / "_EXTERN.INF");
  const ProcessResult result = Run({"check", raw});
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(result.output, "lost: _EXTERN.INF cannot be opened\n");
}
#endif

}  // namespace
}  // namespace zrml::test
