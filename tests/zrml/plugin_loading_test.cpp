#ifndef _WIN32
#include <sys/stat.h>
#endif

#include "tests/support/built_file.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

class PluginLoadingTest : public ZrmlTest {
 protected:
  PluginLoadingTest() {
    // The program alone in a folder, so that no plug-in is beside it.
    std::filesystem::create_directories(folder_ / "program");
    setup_.program = folder_ / "program" / std::filesystem::path(ZRML_PROGRAM).filename();
    std::filesystem::copy_file(BuiltFile(ZRML_PROGRAM), setup_.program);
  }

  ProcessResult RunWith(const std::string& plugin) const {
    return RunBare({"info", source_, "--plugin", plugin});
  }

  std::string source_ = MakeFolder("run.raw");
};

TEST_F(PluginLoadingTest, HelpAndVersionNeedNoPlugin) {
  for (const char* option : {"--help", "--version"}) {
    const ProcessResult result = RunBare({option});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.output, "");
  }
}

TEST_F(PluginLoadingTest, NoPluginBesideTheProgramIsStatus6) {
  ExpectFailure(RunBare({"info", source_}), 6,
                "there is no plug-in " + Path("program") +
                    static_cast<char>(std::filesystem::path::preferred_separator) + ZRML_PLUGIN_FILE);
}

TEST_F(PluginLoadingTest, PluginBesideTheProgramIsFoundFromAnywhere) {
  std::filesystem::copy_file(BuiltFile(ZRML_FAKE_PLUGIN), folder_ / "program" / ZRML_PLUGIN_FILE);
  setup_.folder = folder_ / "scratch";
  EXPECT_EQ(RunBare({"info", source_}).status, 0);
}

TEST_F(PluginLoadingTest, PluginIsChosenBeforeOrAfterTheCommand) {
  const std::string plugin = PluginArgument(ZRML_FAKE_PLUGIN);
  EXPECT_EQ(RunBare({"info", source_, "--plugin", plugin}).status, 0);
  EXPECT_EQ(RunBare({"info", "--plugin", plugin, source_}).status, 0);
  EXPECT_EQ(RunBare({"--plugin", plugin, "info", source_}).status, 0);
}

TEST_F(PluginLoadingTest, PluginByBareNameIsTheOneInTheCurrentFolder) {
  std::filesystem::copy_file(BuiltFile(ZRML_FAKE_PLUGIN), folder_ / "mine.plugin");
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
  EXPECT_EQ(result.errors.find("zrml: --plugin: is empty"), 0U) << result.errors;
}

#ifndef _WIN32
// The loader would wait for somebody to write into it.
TEST_F(PluginLoadingTest, PipeIsNoPlugin) {
  ASSERT_EQ(::mkfifo((folder_ / "pipe.so").c_str(), 0600), 0);
  ExpectFailure(RunWith(Path("pipe.so")), 6,
                "cannot load the plug-in " + Path("pipe.so") + " (it is no file)");
}

// The loader maps what is not there, and dies of it.
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
  const std::string plugin = PluginArgument(ZRML_NEWER_PLUGIN);
  ExpectFailure(RunWith(plugin), 6, "the plug-in " + plugin + " does not speak version 10 of the interface");
}

TEST_F(PluginLoadingTest, LibraryWithoutAnExportIsStatus6) {
  const std::string plugin = PluginArgument(ZRML_PARTIAL_PLUGIN);
  ExpectFailure(RunWith(plugin), 6,
                plugin + " is not a data provider plug-in: it does not export GetInstance");
}

TEST_F(PluginLoadingTest, PluginThatMakesNoProviderIsStatus6) {
  const std::string plugin = PluginArgument(ZRML_EMPTY_PLUGIN);
  ExpectFailure(RunWith(plugin), 6, "the plug-in " + plugin + " does not make its provider 1");
}

TEST_F(PluginLoadingTest, MissingPathIsToldBeforeAMissingPlugin) {
  ExpectFailure(RunBare({"info", Path("missing")}), 3, "there is no file or folder " + Path("missing"));
}

}  // namespace
}  // namespace zrml::test
