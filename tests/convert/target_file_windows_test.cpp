// The target file of a killed program.
#include <windows.h>

#include "convert/target_file.h"
// after windows.h, which it needs
#include <filesystem>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/temp_directory.h"

namespace zrml::convert::test {
namespace {

constexpr const wchar_t* kFolder = L"ZRML_TEST_TARGET_FOLDER";
constexpr int kKilled = 77;

std::string PathIn(const std::filesystem::path& folder, const char* name) {
  const std::u8string path = (folder / name).u8string();
  return {path.begin(), path.end()};
}

[[noreturn]] void WriteAndBeKilled() {
  TargetFile target(PathIn(::_wgetenv(kFolder), "killed.mzML"), Existing::kKeep);
  target.Write("part");
  ::TerminateProcess(::GetCurrentProcess(), kKilled);
  std::abort();
}

// The statement runs in a separate process, which also gets here, with the folder in its environment.
TEST(TargetFileTest, NothingIsLeftOfAKilledProgram) {
  const TempDirectory directory;
  if (::_wgetenv(kFolder) == nullptr)
    ::_wputenv((std::wstring(kFolder) + L"=" + directory.Path().wstring()).c_str());
  EXPECT_EXIT(WriteAndBeKilled(), testing::ExitedWithCode(kKilled), "");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.Path()), {}), 0);
  TargetFile target(PathIn(directory.Path(), "whole.mzML"), Existing::kKeep);
  target.Write("whole");
  target.Finish();
  EXPECT_EQ(directory.Read("whole.mzML").size(), 5U);
}

}  // namespace
}  // namespace zrml::convert::test
