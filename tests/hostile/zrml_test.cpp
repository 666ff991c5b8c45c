// The command line on damaged sources: a fixed status, and one line that says what is wrong.
#include <algorithm>

#include <gtest/gtest.h>

#include "tests/hostile/reading.h"
#include "tests/support/built_file.h"
#include "tests/zrml/process.h"

namespace zrml {
namespace {

constexpr int kNoProvider = 4;
constexpr int kDamaged = 7;

class DamagedSourceTest : public testing::Test {
 protected:
  test::ProcessResult Run(const std::vector<std::string>& arguments) const {
    test::ProcessSetup setup;
    setup.program = BuiltFile(ZRML_PROGRAM);
    setup.arguments = arguments;
    setup.scratch = scratch_.Path();
    return test::RunProcess(setup);
  }

  // Runs `zrml info` on the directory; 0, or a failure reported on one line.
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

// The status when a file of the directory is missing, by its name; 0 for all others.
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
    // Half of three function records is one and a half: the first is shown, and a check finds the cut.
    EXPECT_EQ(Info(directory), 0);
    const int status = Run({"check", directory.Path().string()}).status;
    EXPECT_TRUE(status == kDamaged || name != "_FUNCTNS.INF") << status;
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

// With each file missing, cut or empty in turn: either a whole file, or no file and one line; no other files
// either way.
TEST_F(DamagedSourceTest, ConversionLeavesAWholeFileOrNone) {
  using Damage = void (*)(const TempDirectory& directory, const std::string& name, std::size_t size);
  const Damage damages[] = {
      [](const TempDirectory& directory, const std::string& name, std::size_t) { directory.Remove(name); },
      [](const TempDirectory& directory, const std::string& name, std::size_t size) {
        directory.Truncate(name, size / 2);
      },
      [](const TempDirectory& directory, const std::string& name, std::size_t) {
        directory.Truncate(name, 0);
      },
  };
  int refused = 0;
  int converted = 0;
  for (const Damage damage : damages) {
    for (const auto& [name, bytes] : WholeDirectory().Files()) {
      SCOPED_TRACE(name);
      const TempDirectory directory = WholeDirectory().Build();
      damage(directory, name, bytes.size());
      const TempDirectory target("out");
      const test::ProcessResult result =
          Run({"convert", directory.Path().string(), "-q", "-o", target.Path().string()});
      std::vector<std::string> files;
      for (const auto& entry : std::filesystem::directory_iterator(target.Path()))
        files.push_back(entry.path().filename().string());
      if (result.status == 0) {
        ++converted;
        ASSERT_EQ(files, std::vector<std::string>{"acquisition.mzML"});
        EXPECT_TRUE(test::ReadBytes(target.Path() / files.front()).ends_with("</indexedmzML>\n"));
        EXPECT_EQ(result.errors, "");
      } else {
        ++refused;
        EXPECT_EQ(files, std::vector<std::string>());
        EXPECT_TRUE(result.errors.starts_with("zrml: ")) << result.errors;
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
      }
    }
  }
  EXPECT_GT(refused, 20);
  EXPECT_GT(converted, 5);
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
