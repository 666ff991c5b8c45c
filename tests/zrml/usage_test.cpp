#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

class UsageTest : public ZrmlTest {
 protected:
  void ExpectWrongUsage(std::vector<std::string> arguments, const std::string& message) const {
    ExpectFailure(Run(std::move(arguments)), 2, message);
  }
};

TEST_F(UsageTest, VersionIsOneLine) {
  const ProcessResult result = Run({"--version"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, "zrml " ZRML_VERSION "\n");
}

TEST_F(UsageTest, HelpAndVersionHaveOtherNames) {
  EXPECT_EQ(Run({"-V"}).output, Run({"--version"}).output);
  EXPECT_EQ(Run({"help"}).output, Run({"--help"}).output);
  EXPECT_EQ(Run({"help", "spectrum"}).output, Run({"spectrum", "--help"}).output);
  EXPECT_NE(Run({"help", "spectrum"}).output.find("Usage: zrml spectrum "), std::string::npos);
  ExpectWrongUsage({"help", "inof"}, "there is no command inof (see zrml --help)");
}

TEST_F(UsageTest, JsonMayStandAheadOfTheCommand) {
  const std::string path = Make("run.raw");
  EXPECT_EQ(Run({"--json", "info", path}).output, Run({"info", path, "--json"}).output);
}

TEST_F(UsageTest, HelpNamesEveryCommand) {
  const ProcessResult result = Run({"--help"});
  EXPECT_EQ(result.status, 0);
  for (const char* command : {"\n  info ", "\n  spectrum ", "\n  chromatogram ", "\n  page ", "\n  view ",
                              "\n  check ", "\n  plugin "}) {
    EXPECT_NE(result.output.find(command), std::string::npos) << command;
  }
}

TEST_F(UsageTest, HelpOfACommandNamesItsOptions) {
  const ProcessResult result = Run({"chromatogram", "--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.output.find("Usage: zrml chromatogram "), std::string::npos);
  for (const char* option : {"--function LIST", "--sample N", "--tic", "--bpc", "--range LO-HI", "--json"}) {
    EXPECT_NE(result.output.find(std::string("\n  ") + option), std::string::npos) << option;
  }
}

TEST_F(UsageTest, MissingOrUnknownCommand) {
  ExpectWrongUsage({}, "a command is missing (see zrml --help)");
  ExpectWrongUsage({"inof", "run.raw"}, "there is no command inof (see zrml --help)");
}

TEST_F(UsageTest, MissingArguments) {
  ExpectWrongUsage({"info"}, "PATH is required (see zrml info --help)");
  ExpectWrongUsage({"spectrum", "run.raw", "--function", "1"},
                   "--scan, --scans, --rt, --sum or --mean is required (see zrml spectrum --help)");
  ExpectWrongUsage({"chromatogram", "run.raw", "--function"},
                   "--function needs a value (see zrml chromatogram --help)");
}

TEST_F(UsageTest, ArgumentsThatAreTooMany) {
  ExpectWrongUsage({"spectrum", "run.raw", "more.raw"},
                   "more.raw is not expected (see zrml spectrum --help)");
  ExpectWrongUsage({"info", "run.raw", "--josn"}, "--josn is not expected (see zrml info --help)");
  ExpectWrongUsage({"--josn"}, "--josn is not expected (see zrml --help)");
  ExpectWrongUsage({"chromatogram", "run.raw", "--function", "1", "--function", "2"},
                   "--function is given more than once (see zrml chromatogram --help)");
}

TEST_F(UsageTest, NumbersCountFromOne) {
  for (const char* number :
       {"0", "-1", "+1", "1.0", "1x", " 1", "0x1", "one", "", "2147483648", "99999999999999999999"}) {
    ExpectWrongUsage({"spectrum", "run.raw", "--function", "1", "--scan", number},
                     "--scan: \"" + std::string(number) +
                         "\" is not a whole number from 1 to 2147483647 (see zrml spectrum --help)");
  }
}

TEST_F(UsageTest, FunctionsGoByNumberOrByProcess) {
  for (const char* name : {"0", "-1", "+1", "1.0", "1x", " 1", "x", "", "p", "p0", "P1", "p1.", "p1.0",
                           "p1.2.3", "2147483648"}) {
    ExpectWrongUsage({"spectrum", "run.raw", "--function", name, "--scan", "1"},
                     "--function: \"" + std::string(name) +
                         "\" is not a function such as 4, p2 or p2.2 (see zrml spectrum --help)");
  }
}

// Not as octal 8.
TEST_F(UsageTest, NumberWithLeadingZerosIsDecimal) {
  const std::string path = Make("run.raw");
  ExpectFailure(Run({"spectrum", path, "--function", "010", "--scan", "1"}), 2,
                "there is no function 10: " + path + " has functions 1 to 4, 6, p1");
}

TEST_F(UsageTest, ErrorsStayOnOneLine) {
  ExpectWrongUsage({"info", "run.raw", "--a\nb\x1B"},
                   "--a\\nb\\u001b is not expected (see zrml info --help)");
}

}  // namespace
}  // namespace zrml::test
