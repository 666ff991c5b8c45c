#ifndef _WIN32
#include <sys/stat.h>
#endif

#include "tests/support/built_file.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

class PluginLoadingTest : public ZrmlTest {
 protected:
  ProcessResult RunWith(const std::string& plugin) const { return Run({"plugin", plugin}); }
};

TEST_F(PluginLoadingTest, ProvidersAndTheirFilesAreShown) {
  const std::string plugin = Argument(ZRML_PLUGIN);
  ExpectOutput(RunWith(plugin), "Plug-in    " + plugin + R"(
Interface  10

Providers
  No  Name                   GUID                                    Files
   1  ZRMLProvider           {9e2ea952-4c83-489b-8e0b-a0ffedd70ca2}  Waters MassLynx (*.dat *.idx *.inf)
   2  ZROpenLynxRptProvider  {c1972a1b-f675-4d08-921a-3e6f8d107c76}  Waters OpenLynx Report (*.rpt)
)");
}

TEST_F(PluginLoadingTest, OtherCommandsNeedNoPlugin) {
  std::filesystem::create_directories(folder_ / "program");
  setup_.program = folder_ / "program" / std::filesystem::path(ZRML_PROGRAM).filename();
  std::filesystem::copy_file(BuiltFile(ZRML_PROGRAM), setup_.program);
  EXPECT_EQ(Run({"info", Make("run.raw")}).status, 0);
}

TEST_F(PluginLoadingTest, PluginByBareNameIsTheOneInTheCurrentFolder) {
  std::filesystem::copy_file(BuiltFile(ZRML_PLUGIN), folder_ / "mine.plugin");
  setup_.folder = folder_;
  EXPECT_EQ(RunWith("mine.plugin").status, 0);
}

TEST_F(PluginLoadingTest, MissingPluginIsStatus6) {
  ExpectFailure(RunWith(Path("none.so")), 6, "there is no plug-in " + Path("none.so"));
}

// The reason in brackets is the operating system's.
TEST_F(PluginLoadingTest, FileThatIsNoLibraryIsStatus6) {
  const std::string plugin = MakeFile("text.so");
  const ProcessResult result = RunWith(plugin);
  EXPECT_EQ(result.status, 6);
  EXPECT_EQ(result.output, "");
  EXPECT_TRUE(result.errors.starts_with("zrml: cannot load the plug-in " + plugin + " (")) << result.errors;
  EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1);
}

TEST_F(PluginLoadingTest, EmptyNameIsWrongUsage) {
  const ProcessResult result = RunWith("");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.errors.find("zrml: FILE: is empty"), 0U) << result.errors;
}

#ifndef _WIN32
// The loader would wait for a writer.
TEST_F(PluginLoadingTest, PipeIsNoPlugin) {
  ASSERT_EQ(::mkfifo((folder_ / "pipe.so").c_str(), 0600), 0);
  ExpectFailure(RunWith(Path("pipe.so")), 6,
                "cannot load the plug-in " + Path("pipe.so") + " (it is no file)");
}

// The loader maps missing parts and crashes.
TEST_F(PluginLoadingTest, CutPluginIsStatus6) {
  std::filesystem::copy_file(BuiltFile(ZRML_NEWER_PLUGIN), Path("cut.so"));
  for (const unsigned size : {4096u, 1000u, 100u}) {  // before its code
    SCOPED_TRACE(size);
    std::filesystem::resize_file(Path("cut.so"), size);
    ExpectFailure(RunWith(Path("cut.so")), 6,
                  "cannot load the plug-in " + Path("cut.so") + " (the file is cut)");
  }
}
#endif

TEST_F(PluginLoadingTest, PluginOfAnotherVersionIsStatus6) {
  const std::string plugin = Argument(ZRML_NEWER_PLUGIN);
  ExpectFailure(RunWith(plugin), 6, "the plug-in " + plugin + " does not speak version 10 of the interface");
}

TEST_F(PluginLoadingTest, LibraryWithoutAnExportIsStatus6) {
  const std::string plugin = Argument(ZRML_PARTIAL_PLUGIN);
  ExpectFailure(RunWith(plugin), 6,
                plugin + " is not a data provider plug-in: it does not export GetInstance");
}

TEST_F(PluginLoadingTest, PluginThatMakesNoProviderIsStatus6) {
  const std::string plugin = Argument(ZRML_EMPTY_PLUGIN);
  ExpectFailure(RunWith(plugin), 6, "the plug-in " + plugin + " does not make its provider 1");
}

TEST_F(PluginLoadingTest, MissingPluginIsReportedBeforeAMissingPath) {
  ExpectFailure(Run({"plugin", Path("none.so"), Path("missing")}), 6,
                "there is no plug-in " + Path("none.so"));
  const ProcessResult result = Run({"plugin", Argument(ZRML_PLUGIN), Path("missing")});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.errors, "zrml: there is no file or folder " + Path("missing") + "\n");
}

}  // namespace
}  // namespace zrml::test
