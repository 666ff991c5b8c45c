#include <algorithm>

#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

class OutputTest : public ZrmlTest {
 protected:
  // The spectrum of 100000 points.
  ProcessResult RunLarge(std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"spectrum", path_, "--function", "1", "--scan", "1"});
    return Run(more);
  }

  static RawDirectoryBuilder Large() {
    std::vector<WantedPoint> points;
    for (int i = 0; i < 100'000; ++i) points.push_back({100 + i / 128.0, static_cast<double>(i % 1000)});
    RawDirectoryBuilder raw;
    raw.functions.resize(1);
    raw.functions[0].scans = {ScanFrom<StoredPoint9>(0.5F, points)};
    return raw;
  }

  std::string path_ = Make("run.raw", Large());
};

TEST_F(OutputTest, LargeSpectrumIsWhole) {
  const std::string output = RunLarge().output;
  // The last mass is 100 + 99999 / 128 = 881.2421875, its intensity 99999 modulo 1000. Masses are of single
  // precision, of which 100.00781 is 100.0078125.
  EXPECT_NE(output.find("\n# points: 100000\nm/z\tintensity\n100\t0\n100.00781\t1\n"), std::string::npos);
  EXPECT_TRUE(output.ends_with("\n881.2422\t999\n")) << output.substr(output.size() - 100);
  const std::size_t points = output.find("m/z\tintensity\n") + std::string("m/z\tintensity\n").size();
  EXPECT_EQ(std::count(output.begin() + static_cast<std::ptrdiff_t>(points), output.end(), '\n'), 100000);
}

TEST_F(OutputTest, JsonHasAllDigits) {
  EXPECT_NE(RunLarge({"--json"}).output.find("\"masses\": [100, 100.0078125, "), std::string::npos);
}

TEST_F(OutputTest, ReaderThatLeavesEndsTheProgramQuietly) {
  setup_.outputTo = OutputTo::kClosedPipe;
  for (const ProcessResult& result :
       {RunLarge(), RunLarge({"--json"}), Run({"info", path_}), Run({"--help"})}) {
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
  }
}

#ifndef _WIN32
TEST_F(OutputTest, FullDiskIsStatus5) {
  setup_.outputTo = OutputTo::kFullDisk;
  for (const ProcessResult& result :
       {RunLarge(), RunLarge({"--json"}), Run({"info", path_}), Run({"--help"})}) {
    ExpectFailure(result, 5, "cannot write the output (No space left on device)");
  }
}
#endif

}  // namespace
}  // namespace zrml::test
