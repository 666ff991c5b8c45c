// What ends zrml view before it serves; view/server_test.py asks its server.
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

using ViewTest = ZrmlTest;

TEST_F(ViewTest, WithoutASourceThereIsNothingToServe) {
  ExpectFailure(Run({"view", Path("none.raw"), "--no-open"}), 3,
                "there is no file or folder " + Path("none.raw"));
  ExpectFailure(Run({"view", MakeFile("text.txt"), "--no-open"}), 4,
                Path("text.txt") + " is neither a raw directory nor a report");
}

TEST_F(ViewTest, WithoutAnyOfSeveralSourcesEither) {
  const ProcessResult result = Run({"view", Path("a.raw"), Path("b.raw"), "--no-open"});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.output, "");
  EXPECT_NE(result.errors.find("2 of 2 sources are not shown: "), std::string::npos) << result.errors;
}

TEST_F(ViewTest, PortsAreNumbers) {
  for (const std::string port : {"0", "65536", "http"}) {
    ExpectFailure(Run({"view", "run.raw", "--port", port}), 2,
                  "--port: \"" + port + "\" is not a whole number from 1 to 65535 (see zrml view --help)");
  }
}

}  // namespace
}  // namespace zrml::test
