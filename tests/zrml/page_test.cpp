#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

class PageTest : public ZrmlTest {
 protected:
  PageTest() { setup_.folder = folder_; }

  std::string PageAt(const std::string& name) const { return ReadBytes(folder_ / name); }
};

TEST_F(PageTest, IsNamedAfterItsRunAndPrinted) {
  ExpectOutput(Run({"page", Make("run.raw")}), "run.html\n");
  EXPECT_TRUE(PageAt("run.html").starts_with("<!DOCTYPE html>\n"));
}

TEST_F(PageTest, OfAReportIsOneWithAllSamples) {
  ExpectOutput(Run({"page", Make("plate.rpt", Vials())}), "plate.html\n");
  EXPECT_NE(PageAt("plate.html").find("\"sample?sample=2\""), std::string::npos);
}

TEST_F(PageTest, GoesToAFolderThatIsMade) {
  ExpectOutput(Run({"page", Make("a.raw"), Make("b.raw"), "-o", "new/pages"}),
               "new/pages/a.html\nnew/pages/b.html\n");
  EXPECT_NE(PageAt("new/pages/b.html"), "");
}

TEST_F(PageTest, GoesToANamedFileForOneSourceOnly) {
  const std::string path = Make("run.raw");
  ExpectOutput(Run({"page", path, "-b", "kept.html"}), "kept.html\n");
  ExpectFailure(Run({"page", path, Make("b.raw"), "-b", "kept.html"}), 2,
                "several sources do not fit into one file");
  ExpectFailure(Run({"page", path, "-b", Path("")}), 2, Path("") + " is a folder; -o takes one, -b a file");
}

TEST_F(PageTest, ReplacesNothingUnlessForced) {
  const std::string path = Make("run.raw");
  MakeFile("run.html", "mine");
  EXPECT_EQ(Run({"page", path}).status, 5);
  EXPECT_EQ(PageAt("run.html"), "mine");
  ExpectOutput(Run({"page", path, "--force"}), "run.html\n");
  EXPECT_NE(PageAt("run.html"), "mine");
}

TEST_F(PageTest, OfTwoRunsOfOneNameIsNotReplaced) {
  std::filesystem::create_directory(folder_ / "other");
  const ProcessResult result = Run({"page", Make("run.raw"), Make("other/run.raw"), "--force"});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.output, "run.html\n");
  EXPECT_NE(result.errors.find("other/run.raw would replace run.html, already written from another source\n"),
            std::string::npos)
      << result.errors;
}

TEST_F(PageTest, NeverGoesIntoItsSource) {
  const std::string path = Make("run.raw");
  ExpectFailure(Run({"page", path, "--force", "-b", path + "/_FUNC001.DAT"}), 2,
                path + "/_FUNC001.DAT is a part of the source");
}

TEST_F(PageTest, ShowsFindingsInsteadOfFailing) {
  const std::string path = Make("run.raw");
  std::filesystem::resize_file(folder_ / "run.raw/_FUNC001.DAT", 10);
  ExpectOutput(Run({"page", path}), "run.html\n");
  EXPECT_NE(PageAt("run.html").find("\"code\":\"data-cut\""), std::string::npos);
}

TEST_F(PageTest, SourcesThatFailDoNotStopTheOthers) {
  const ProcessResult result = Run({"page", Path("none.raw"), Make("run.raw")});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.output, "run.html\n");
  ExpectFailure(Run({"page", Path("none.raw")}), 3, "there is no file or folder " + Path("none.raw"));
}

TEST_F(PageTest, SizeIsAWholeNumberOfMegabytes) {
  ExpectFailure(Run({"page", "run.raw", "--max-size", "0.5"}), 2,
                "--max-size: \"0.5\" is not a whole number from 1 to 1000 (see zrml page --help)");
}

}  // namespace
}  // namespace zrml::test
