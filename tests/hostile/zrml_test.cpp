// The command line on damaged sources: a fixed status, and one line that says what is the matter.
#include <algorithm>

#include <gtest/gtest.h>

#include "tests/hostile/reading.h"
#include "tests/zrml/process.h"

namespace zrml {
namespace {

constexpr int kNoProvider = 4;
constexpr int kCannotOpen = 5;

class DamagedSourceTest : public testing::Test {
 protected:
  test::ProcessResult Run(const std::vector<std::string>& arguments) const {
    test::ProcessSetup setup;
    setup.program = ZRML_PROGRAM;
    setup.arguments = arguments;
    setup.scratch = scratch_.Path();
    return test::RunProcess(setup);
  }

  // Runs `zrml info` over the directory; 0 or a failure that is told on one line.
  int Info(const TempDirectory& directory) const {
    const test::ProcessResult result = Run({"info", directory.Path().string()});
    if (result.status == 0) {
      EXPECT_EQ(result.errors, "");
    } else {
      EXPECT_EQ(result.output, "");
      EXPECT_TRUE(result.errors.starts_with("zrml: ")) << result.errors;
      EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    }
    return result.status;
  }

  const TempDirectory scratch_;
};

// What the status is when a file of the directory is gone, by its name; 0 for all others.
int StatusWithout(const std::string& name) {
  return name == "_HEADER.TXT" || name == "_FUNCTNS.INF" ? kNoProvider : 0;
}

TEST_F(DamagedSourceTest, MissingFile) {
  for (const auto& [name, bytes] : WholeDirectory().Files()) {
    SCOPED_TRACE(name);
    const TempDirectory directory = WholeDirectory().Build();
    directory.Remove(name);
    EXPECT_EQ(Info(directory), StatusWithout(name));
  }
}

TEST_F(DamagedSourceTest, FileCutInHalf) {
  for (const auto& [name, bytes] : WholeDirectory().Files()) {
    SCOPED_TRACE(name);
    const TempDirectory directory = WholeDirectory().Build();
    directory.Truncate(name, bytes.size() / 2);
    // The half of three function records is no whole number of them.
    EXPECT_EQ(Info(directory), name == "_FUNCTNS.INF" ? kCannotOpen : 0);
  }
}

TEST_F(DamagedSourceTest, EmptyFile) {
  for (const auto& [name, bytes] : WholeDirectory().Files()) {
    SCOPED_TRACE(name);
    const TempDirectory directory = WholeDirectory().Build();
    directory.Truncate(name, 0);
    EXPECT_EQ(Info(directory), name == "_HEADER.TXT" ? kNoProvider : 0);
  }
}

TEST_F(DamagedSourceTest, ScanThatCannotBeReadIsOneLine) {
  const TempDirectory directory = WholeDirectory().Build();
  // Data format 10 does not exist: bits 10 to 13 of the first record's word.
  directory.Edit("_FUNCTNS.INF", [](FileBytes& bytes) { PatchU16(bytes, 0, 18 | 8 << 5 | 10 << 10); });
  const test::ProcessResult result =
      Run({"spectrum", directory.Path().string(), "--function", "1", "--scan", "1"});
  EXPECT_NE(result.status, 0);
  EXPECT_LT(result.status, 128);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
}

}  // namespace
}  // namespace zrml
