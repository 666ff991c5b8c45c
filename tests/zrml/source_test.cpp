#include "tests/zrml/vials.h"
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

TEST_F(SourceTest, MissingPathIsReportedOnOneLine) {
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

TEST_F(SourceTest, FolderThatIsNoSourceIsStatus4) {
  ExpectFailure(Run({"info", Path("scratch")}), 4,
                Path("scratch") + " is neither a raw directory nor a report; -r searches it for sources");
}

// The header's first line is that of another program.
TEST_F(SourceTest, ContentOfAnotherKindIsStatus4) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.header = {"something else"};
  const std::string path = Make("run.raw", raw);
  ExpectFailure(Run({"info", path}), 4, path + " is no raw directory: its _HEADER.TXT has another beginning");
}

TEST_F(SourceTest, DataFileChoosesItsFunction) {
  Make("run.raw");
  const std::string file = Path("run.raw") + "/_FUNC002.DAT";
  const ProcessResult result = Run({"info", file});
  EXPECT_EQ(Top(result), "Source    " + file +
                             "\nProvider  ZRMLProvider\nContent   raw acquisition\n\nSample 1: Injection 1");
  EXPECT_NE(result.output.find("\n     2  _FUNC002.DAT  TOF MS/MS ES-  "), std::string::npos)
      << result.output;
  EXPECT_EQ(result.output.find("Lock Mass"), std::string::npos);
}

TEST_F(SourceTest, FileOfNoFunctionIsStatus4) {
  const std::string folder = Make("run.raw");
  const std::string file = folder + "/_FUNCTNS.INF";
  ExpectFailure(Run({"check", file}), 4,
                file + " belongs to no function: give its folder (" + folder + ") or one of its data files");
  setup_.folder = folder_ / "run.raw";
  ExpectFailure(Run({"check", "_FUNCTNS.INF"}), 4,
                "_FUNCTNS.INF belongs to no function: give its folder (.) or one of its data files");
}

TEST_F(SourceTest, DataFileInTheCurrentFolder) {
  Make("run.raw");
  setup_.folder = folder_ / "run.raw";
  EXPECT_NE(Run({"info", "_FUNC002.DAT"}).output.find("\n     2  _FUNC002.DAT  TOF MS/MS ES-  "),
            std::string::npos);
}

TEST_F(SourceTest, FileInAnyOtherFolderIsStatus4) {
  const std::string file = MakeFile("notes.txt");
  ExpectFailure(Run({"info", file}), 4, file + " is neither a raw directory nor a report");
}

TEST_F(SourceTest, ReportInARawDirectoryIsAReport) {
  Make("run.raw");
  const std::string file = Make("run.raw/vials.rpt", Vials());
  EXPECT_EQ(Top(Run({"info", file, "--sample", "1"})),
            "Source    " + file +
                "\nProvider  ZROpenLynxRptProvider\nContent   processed report\n\nSample 1: VIAL_1");
}

TEST_F(SourceTest, SeparatorsMayBeDoubled) {
  const std::string folder = Make("run.raw");
  EXPECT_EQ(Run({"info", folder + "//"}).status, 0);
  EXPECT_EQ(Run({"info", folder + "//_FUNC002.DAT"}).status, 0);
}

TEST_F(SourceTest, PathBeyondAsciiIsFoundAndShown) {
  const std::string path = Make("données 試料.raw");
  const ProcessResult result = Run({"info", path});
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.output.starts_with("Source    " + path + "\n")) << result.output;
}

#ifndef _WIN32
// A file name may have any bytes there; the output is still UTF-8.
TEST_F(SourceTest, PathThatIsNotUtf8IsFoundAndShownAsUtf8) {
  Make("plain");
  std::filesystem::rename(folder_ / "plain", folder_ / "odd\xFF.raw");
  setup_.folder = folder_;
  const ProcessResult result = Run({"info", "odd\xFF.raw"});
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.output.starts_with("Source    odd\xEF\xBF\xBD.raw\n")) << result.output;
}
#endif

}  // namespace
}  // namespace zrml::test
