#include "tests/zrml/zrml_run.h"

#include <fstream>
#include <iterator>

#include "tests/support/built_file.h"

namespace zrml::test {
namespace {

std::string Utf8(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

std::filesystem::path FromUtf8(const std::string& name) {
  return std::filesystem::path(std::u8string(name.begin(), name.end()));
}

}  // namespace

ZrmlTest::ZrmlTest() {
  std::filesystem::create_directories(folder_ / "scratch");
  setup_.program = BuiltFile(ZRML_PROGRAM);
  setup_.scratch = folder_ / "scratch";
}

ProcessResult ZrmlTest::Run(std::vector<std::string> arguments) const {
  ProcessSetup setup = setup_;
  setup.arguments = std::move(arguments);
  return RunProcess(setup);
}

std::string ZrmlTest::Path(const std::string& name) const { return Utf8(folder_ / FromUtf8(name)); }

std::string ZrmlTest::Make(const std::string& name, const RawDirectoryBuilder& raw) const {
  const std::filesystem::path path = folder_ / FromUtf8(name);
  std::filesystem::create_directories(path);
  raw.WriteTo(path);
  return Utf8(path);
}

std::string ZrmlTest::Make(const std::string& name, const ReportLines& report) const {
  return MakeFile(name, ReportText(report, LineEnd::kCrLf));
}

std::string ZrmlTest::MakeFile(const std::string& name, const std::string& text) const {
  const std::filesystem::path path = folder_ / FromUtf8(name);
  std::ofstream(path, std::ios::binary) << text;
  return Utf8(path);
}

std::string Argument(const std::filesystem::path& path) { return Utf8(BuiltFile(path)); }

void ExpectFailure(const ProcessResult& result, int status, const std::string& message) {
  EXPECT_EQ(result.status, status);
  EXPECT_EQ(result.errors, "zrml: " + message + "\n");
  EXPECT_EQ(result.output, "");
}

void ExpectOutput(const ProcessResult& result, const std::string& output) {
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, output);
}

}  // namespace zrml::test
