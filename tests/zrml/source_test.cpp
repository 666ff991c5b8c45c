#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

class SourceTest : public ZrmlTest {
 protected:
  // The first lines of `zrml info`.
  std::string Top(const ProcessResult& result) const {
    return result.output.substr(0, result.output.find("\n\n  Functions"));
  }
};

TEST_F(SourceTest, MissingPathIsStatus3) {
  ExpectFailure(Run({"info", Path("missing")}), 3, "there is no file or folder " + Path("missing"));
}

TEST_F(SourceTest, MissingPathIsToldOnOneLine) {
  setup_.folder = folder_;
  ExpectFailure(Run({"info", "two\nlines"}), 3, "there is no file or folder two\\nlines");
}

#ifndef _WIN32
TEST_F(SourceTest, LinkToItselfIsStatus5) {
  std::filesystem::create_symlink(Path("loop"), Path("loop"));
  ExpectFailure(Run({"info", Path("loop")}), 5,
                "cannot reach " + Path("loop") + " (Too many levels of symbolic links)");
}
#endif

TEST_F(SourceTest, EmptyPathIsWrongUsage) { ExpectFailure(Run({"info", ""}), 2, "PATH is empty"); }

TEST_F(SourceTest, FolderThatNoProviderTakesIsStatus4) {
  ExpectFailure(Run({"info", Path("scratch")}), 4, "no provider reads " + Path("scratch"));
}

TEST_F(SourceTest, ContentThatIsNotTheProvidersIsStatus4) {
  const std::string path = MakeFolder("run.raw", "something else");
  ExpectFailure(Run({"info", path}), 4, "no provider reads " + path);
}

TEST_F(SourceTest, SourceThatDoesNotOpenIsStatus5) {
  const std::string path = MakeFolder("run.raw", "valid but damaged");
  ExpectFailure(Run({"info", path}), 5, "FakeFolder cannot open " + path);
}

TEST_F(SourceTest, FileInAFolderThatAProviderTakesStandsForTheFolder) {
  const std::string folder = MakeFolder("run.raw");
  const std::string file = MakeFile("run.raw/_FUNC002.DAT");
  const ProcessResult result = Run({"info", file});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(Top(result), "Source    " + file +
                             "\nProvider  FakeFolder\nContent   raw acquisition\n\nSample 1: File " + file +
                             " in " + folder);
}

TEST_F(SourceTest, FileInTheCurrentFolderStandsForThatFolder) {
  MakeFolder("run.raw");
  MakeFile("run.raw/_FUNC002.DAT");
  setup_.folder = folder_ / "run.raw";
  EXPECT_TRUE(Top(Run({"info", "_FUNC002.DAT"})).ends_with("Sample 1: File _FUNC002.DAT in ."));
}

TEST_F(SourceTest, FileInAnyOtherFolderIsStatus4) {
  const std::string file = MakeFile("notes.txt");
  ExpectFailure(Run({"info", file}), 4, "no provider reads " + file);
}

TEST_F(SourceTest, FileThatAProviderTakesIsNotItsFolder) {
  MakeFolder("run.raw");
  const std::string file = MakeFile("run.raw/vials.fakereport");
  EXPECT_EQ(Top(Run({"info", file})),
            "Source    " + file + "\nProvider  FakeReport\nContent   processed report\n\nSample 1: Vial A1");
}

TEST_F(SourceTest, SeparatorAtTheEndIsNotPassedOn) {
  const std::string folder = MakeFolder("run.raw");
  const std::string file = MakeFile("run.raw/_FUNC002.DAT");
  EXPECT_EQ(Run({"info", folder + "//"}).status, 0);
  const std::string doubled = folder + "//_FUNC002.DAT";
  EXPECT_TRUE(Top(Run({"info", doubled})).ends_with("File " + doubled + " in " + folder));
}

TEST_F(SourceTest, PathBeyondAsciiIsFoundAndShown) {
  const std::string path = MakeFolder("données 試料.raw");
  const ProcessResult result = Run({"info", path});
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.output.starts_with("Source    " + path + "\n")) << result.output;
}

#ifndef _WIN32
// A file name may hold any byte there; the output is UTF-8 all the same.
TEST_F(SourceTest, PathThatIsNotUtf8IsFoundAndShownAsUtf8) {
  MakeFolder("plain");
  std::filesystem::rename(folder_ / "plain", folder_ / "odd\xFF.raw");
  setup_.folder = folder_;
  const ProcessResult result = Run({"info", "odd\xFF.raw"});
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.output.starts_with("Source    odd\xEF\xBF\xBD.raw\n")) << result.output;
}
#endif

}  // namespace
}  // namespace zrml::test
