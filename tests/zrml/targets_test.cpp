// Lists of targets.
#include "tools/zrml/targets.h"

#include <fstream>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/temp_directory.h"
#include "tools/zrml/failure.h"

namespace zrml::tool {
namespace {

class TargetsTest : public testing::Test {
 protected:
  std::string PathOf(const std::string& name) const {
    const std::u8string path = (directory_.Path() / name).u8string();
    return {path.begin(), path.end()};
  }

  std::vector<Target> Read(const std::string& text, Tolerance tolerance = {}) const {
    std::ofstream(directory_.Path() / "list", std::ios::binary) << text;
    return ReadTargets(PathOf("list"), tolerance);
  }

  // The message that follows the path.
  void ExpectRefused(const std::string& text, const std::string& message) const {
    try {
      Read(text);
      ADD_FAILURE() << "read: " << text;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.status, ExitStatus::kWrongUsage);
      EXPECT_EQ(failure.message, PathOf("list") + message);
    }
  }

  TempDirectory directory_;
};

// 10 ppm of 500 are 0.005.
TEST_F(TargetsTest, RangesReachToBothSides) {
  EXPECT_EQ(RangeAround(500, {10, true}).low, 500 - 0.005);
  EXPECT_EQ(RangeAround(500, {10, true}).high, 500 + 0.005);
  EXPECT_EQ(RangeAround(500, {0.25, false}).low, 499.75);
  EXPECT_EQ(RangeAround(500, {0.25, false}).high, 500.25);
  EXPECT_EQ(RangeAround(500, {0, true}).low, 500);
}

TEST_F(TargetsTest, RowsUnderALineOfNames) {
  const std::vector<Target> targets = Read(
      "comment\tmz\ttolerance\ttolerance_unit\trt_start\trt_end\tformula\n"
      "caffeine\t200\t0.5\tDa\t1\t2.5\tC8H10N4O2\n"
      "\n"
      "\t400\t\t\t\t3\n"
      "late\t500\t20\tppm\t3",
      {1, false});
  ASSERT_EQ(targets.size(), 3U);
  EXPECT_EQ(targets[0].mz, 200);
  EXPECT_EQ(targets[0].range.low, 199.5);
  EXPECT_EQ(targets[0].range.high, 200.5);
  EXPECT_EQ(targets[0].minutes->low, 1);
  EXPECT_EQ(targets[0].minutes->high, 2.5);
  EXPECT_EQ(targets[0].comment, "caffeine");
  EXPECT_EQ(targets[1].range.low, 399) << "the tolerance of the command line";
  EXPECT_EQ(targets[1].minutes->low, -std::numeric_limits<double>::infinity());
  EXPECT_EQ(targets[1].minutes->high, 3);
  EXPECT_EQ(targets[1].comment, "");
  EXPECT_EQ(targets[2].range.high, 500.01);
  EXPECT_EQ(targets[2].minutes->high, std::numeric_limits<double>::infinity());
}

TEST_F(TargetsTest, EndsInPlaceOfAMass) {
  const std::vector<Target> targets = Read("mz_start\tmz_end\r\n100\t200.5\r\n");
  ASSERT_EQ(targets.size(), 1U);
  EXPECT_EQ(targets[0].mz, std::nullopt);
  EXPECT_EQ(targets[0].range.low, 100);
  EXPECT_EQ(targets[0].range.high, 200.5);
  EXPECT_FALSE(targets[0].minutes);
}

TEST_F(TargetsTest, JsonHasTheSameNames) {
  const std::vector<Target> targets = Read(R"(
    [{"mz": 200, "tolerance": 0.5, "tolerance_unit": "da", "comment": "caffeine"},
     {"mz": 556.2771, "rt_start": null},
     {"mz_start": 100, "mz_end": 200.5, "rt_end": 3}])");
  ASSERT_EQ(targets.size(), 3U);
  EXPECT_EQ(targets[0].range.low, 199.5);
  EXPECT_EQ(targets[0].comment, "caffeine");
  EXPECT_EQ(targets[1].mz, 556.2771);
  EXPECT_EQ(targets[1].range.high, 556.2771 + 556.2771 * 10 / 1e6);
  EXPECT_FALSE(targets[1].minutes);
  EXPECT_EQ(targets[2].minutes->high, 3);
}

TEST_F(TargetsTest, WhatIsWrongIsNamed) {
  ExpectRefused("", ": there are no targets");
  ExpectRefused("mz\n", ": there are no targets");
  ExpectRefused("mz\n\n1O0\n", ", line 3: mz \"1O0\" is not a number of 0 or more");
  ExpectRefused("mz\n-1\n", ", line 2: mz \"-1\" is not a number of 0 or more");
  ExpectRefused("mz\n-0\n", ", line 2: mz \"-0\" is not a number of 0 or more");
  ExpectRefused("mz\n+1\n", ", line 2: mz \"+1\" is not a number of 0 or more");
  ExpectRefused("mz\ninf\n", ", line 2: mz \"inf\" is not a number of 0 or more");
  const std::vector<Target> huge = Read("mz\n1e308\n", {10, true});
  EXPECT_EQ(huge.at(0).range.low, 1e308 - 1e308 * (10 / 1e6));
  ExpectRefused("mz\n1e999\n", ", line 2: mz \"1e999\" is beyond the range of numbers");
  ExpectRefused("mz\n1e-999\n", ", line 2: mz \"1e-999\" is beyond the range of numbers");
  ExpectRefused("mz\n1e999x\n", ", line 2: mz \"1e999x\" is not a number of 0 or more");
  ExpectRefused("mz\n100,5\n", ", line 2: mz \"100,5\" is not a number of 0 or more");
  ExpectRefused("mz\n100\t5\n", ", line 2: there are more values than names in the first line");
  ExpectRefused("name\ncaffeine\n",
                ", line 1: no column is named mz, or mz_start and mz_end; names have tabs between them");
  ExpectRefused("mz,comment\n100,caffeine\n",
                ", line 1: no column is named mz, or mz_start and mz_end; names have tabs between them");
  ExpectRefused("mz\tcomment\n100\ta\n\tb\n", ", line 3: there is neither mz nor mz_start and mz_end");
  ExpectRefused("mz_start\n1\n", ", line 2: mz_start and mz_end belong together");
  ExpectRefused("mz_start\tmz_end\n2\t1\n", ", line 2: mz_start is larger than mz_end");
  ExpectRefused("mz\ttolerance\n2\t1\n", ", line 2: a tolerance needs a tolerance_unit, \"ppm\" or \"da\"");
  ExpectRefused("mz\ttolerance\ttolerance_unit\n2\t1\tmmu\n",
                ", line 2: tolerance_unit \"mmu\" is not \"ppm\" or \"da\"");
  ExpectRefused("mz\ttolerance_unit\n2\tppm\n", ", line 2: a tolerance_unit needs a tolerance");
}

TEST_F(TargetsTest, EndsStandAlone) {
  const std::string head = "mz\ttolerance\ttolerance_unit\tmz_start\tmz_end\n";
  const std::string wrong = ", line 2: mz_start and mz_end are the range; ";
  EXPECT_EQ(Read(head + "\t\t\t1\t2\n3\t1\tda\n").size(), 2U);
  ExpectRefused(head + "5\t\t\t1\t2\n", wrong + "mz cannot be given, too");
  ExpectRefused(head + "\t1\t\t1\t2\n", wrong + "tolerance cannot be given, too");
  ExpectRefused(head + "\t\tppm\t1\t2\n", wrong + "tolerance_unit cannot be given, too");
  ExpectRefused(head + "5\t\t\t1\t\n", ", line 2: mz_start and mz_end belong together");
  ExpectRefused("[{\"mz\": 5,\n\"mz_start\": 1, \"mz_end\": 2}]",
                ", line 1: mz_start and mz_end are the range; mz cannot be given, too");
}

// What nobody reads may be there as often as it likes.
TEST_F(TargetsTest, NamesAreThereOnce) {
  EXPECT_EQ(Read("\t\tnote\tmz\tnote\n1\t2\t3\t4\t5\n")[0].mz, 4);
  EXPECT_EQ(Read("[{\"note\": 1, \"mz\": 4, \"note\": 2}, {\"mz\": 5}]").size(), 2U);
  ExpectRefused("\nmz\tcomment\tmz\n1\t2\t3\n", ", line 2: mz is there twice");
  ExpectRefused("[{\"mz\": 1},\n{\"mz\": 2,\n\"mz\": 2}]", ", line 3: mz is there twice");
  ExpectRefused("[{\"rt_end\": null, \"rt_end\": 2}]", ", line 1: rt_end is there twice");
}

TEST_F(TargetsTest, NumbersOfJsonAreNotText) {
  ExpectRefused("[{\"mz\": 1},\n{\"mz\": \"100\"}]", ", line 2: mz \"100\" is not a number of 0 or more");
  for (const std::string name : {"tolerance", "mz_start", "mz_end", "rt_start", "rt_end"}) {
    ExpectRefused("[{\"" + name + "\": \"\"}]", ", line 1: " + name + " \"\" is not a number of 0 or more");
  }
  EXPECT_EQ(Read("[{\"mz\": 100, \"comment\": \"100\", \"mass\": \"100\"}]")[0].comment, "100");
}

TEST_F(TargetsTest, TextIsInUtf8AndHasLines) {
  const std::string lines = ": its lines end with CR alone, not with LF or CR LF";
  ExpectRefused("mz\r100\r200\r", lines);
  ExpectRefused("mz\r100", lines);
  ExpectRefused("\xEF\xBB\xBFmz\r100\r", lines);
  EXPECT_EQ(Read("[{\"mz\":\r100}]\r")[0].mz, 100) << "JSON has no lines";
  EXPECT_EQ(Read("\xEF\xBB\xBFmz\r\n100\r\n")[0].mz, 100);
  using namespace std::string_literals;
  const std::string utf16 = ": a list of targets is text in UTF-8, and this is UTF-16";
  ExpectRefused(
      "\xFF\xFEm\0z\0\n\0"
      "1\0"s,
      utf16);
  ExpectRefused(
      "\xFE\xFF\0m\0z\0\n\0"
      "1"s,
      utf16);
  ExpectRefused("\xFF\xFE[\0{\0"s, utf16);
  ExpectRefused("\xFF\xFE", utf16);
  ExpectRefused(
      "m\0z\0\n\0"
      "1\0"s,
      ": a list of targets is text in UTF-8, and this is not");
}

// A wrong value has the line of its own, a wrong target that on which it begins.
TEST_F(TargetsTest, LinesOfJson) {
  ExpectRefused("{}", ", line 1: the targets are not a list");
  ExpectRefused("\n\n{\"mz\": 1}", ", line 3: the targets are not a list");
  ExpectRefused("[\n{\"mz\": 1},\n{\"mz\" 2}]", ", line 3: this is not JSON");
  ExpectRefused("[\n{\"mz\": 1\n", ", line 2: this is not JSON");
  ExpectRefused("[{\"mz\": 1},\n 2]", ", line 2: this is not an object");
  ExpectRefused("[{\"mz\": 1},\n 2\n]", ", line 2: this is not an object");
  ExpectRefused("[{\"mz\": 1},\n\n [{\"mz\": 1}]]", ", line 3: this is not an object");
  ExpectRefused("[{\"mz\":\n1e400\n}]", ", line 2: a number is beyond the range of numbers");
  ExpectRefused("[{\"comment\": \"a\",\n\"mz\": [\n1]}]", ", line 2: mz is a list, not a number");
  ExpectRefused("[{\"mz\": {\"mz\": 1}}]", ", line 1: mz is an object, not a number");
  ExpectRefused("[{\"mz\": 1, \"comment\": [1]}]", ", line 1: comment is a list, not text");
  EXPECT_EQ(Read("[{\"mz\": 100, \"adducts\": [\"H\"]}]")[0].mz, 100) << "nobody reads adducts";
  ExpectRefused("[{\"comment\": \"a\",\n\"mz\":\n-1\n}]", ", line 3: mz \"-1\" is not a number of 0 or more");
  ExpectRefused("[{\"mz\": 1},\n{\n\"comment\": \"b\"}]",
                ", line 2: there is neither mz nor mz_start and mz_end");
  ExpectRefused("[{\"mz\": 1, \"tolerance\": 2,\r\n\"tolerance_unit\": \"%\"}]",
                ", line 2: tolerance_unit \"%\" is not \"ppm\" or \"da\"");
}

TEST_F(TargetsTest, FilesThatAreNone) {
  const auto expectFailure = [&](const std::string& name, ExitStatus status, const std::string& message) {
    try {
      ReadTargets(PathOf(name), {});
      ADD_FAILURE();
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.status, status);
      EXPECT_EQ(failure.message, message);
    }
  };
  expectFailure("none", ExitStatus::kNoSuchPath, "there is no file " + PathOf("none"));
  std::filesystem::create_directory(directory_.Path() / "folder");
  expectFailure("folder", ExitStatus::kWrongUsage,
                PathOf("folder") + " is a folder; a list of targets is a file");
}

}  // namespace
}  // namespace zrml::tool
