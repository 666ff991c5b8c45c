// The progress line of a conversion.
#include "tools/zrml/progress_bar.h"

#include <gtest/gtest.h>

namespace zrml::tool::test {
namespace {

TEST(ProgressLineTest, KeepsToTheTerminal) {
  const std::string half = "[" + std::string(15, '#') + std::string(15, ' ') + "] 50%";  // 36 columns
  EXPECT_EQ(ProgressLine(1, 2, "folder/run.raw", 80), half + " folder/run.raw");
  EXPECT_EQ(ProgressLine(1, 2, "folder/run.raw", 52), half + " folder/run.raw");
  EXPECT_EQ(ProgressLine(1, 2, "folder/run.raw", 51), half + " ...er/run.raw");
  EXPECT_EQ(ProgressLine(1, 2, "folder/run.raw", 42), half + " ...w");
  EXPECT_EQ(ProgressLine(1, 2, "folder/run.raw", 41), half);
  EXPECT_EQ(ProgressLine(1, 2, "folder/run.raw", 37), half);
  EXPECT_EQ(ProgressLine(1, 2, "folder/run.raw", 36), "50%");
  EXPECT_EQ(ProgressLine(1, 2, "folder/run.raw", 3), "");
}

// A character from U+1100 on may take two columns; U+00E9 takes one.
TEST(ProgressLineTest, WideCharactersAreNotCutInTwo) {
  const std::string half = "[" + std::string(15, '#') + std::string(15, ' ') + "] 50%";
  EXPECT_EQ(ProgressLine(1, 2, "\xC3\xA9\xE4\xB8\xAD\xE4\xB8\xAD", 43),
            half + " \xC3\xA9\xE4\xB8\xAD\xE4\xB8\xAD");
  EXPECT_EQ(ProgressLine(1, 2, "ab\xE4\xB8\xAD\xE4\xB8\xAD", 43), half + " ...\xE4\xB8\xAD");
}

}  // namespace
}  // namespace zrml::tool::test
