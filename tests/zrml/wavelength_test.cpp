// zrml chromatogram --wavelength: the absorbance over time.
#include <nlohmann/json.hpp>

#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

using nlohmann::json;

class WavelengthTest : public ZrmlTest {
 protected:
  ProcessResult RunWavelength(const std::string& wavelength, std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"chromatogram", path_, "--wavelength", wavelength});
    return Run(more);
  }

  json Absorbances(const std::string& wavelength) const {
    return json::parse(RunWavelength(wavelength, {"--json"}).output)["intensities"];
  }

  std::string path_ = Make("run.raw");
};

// Its scans: (210, 0), (210.5, 3) at 0.125 min; (210, 4) at 0.25 min.
TEST_F(WavelengthTest, NearestOfEachScanCounts) {
  const std::string text = R"(
# provider: ZRMLProvider
# sample: 1
# sampleName: Injection 1
# type: absorbance
# wavelength: 211
# recordedWavelengths: 210 to 210.5
# points: 2
time	intensity
0.125	3
0.25	4
)";
  ExpectOutput(RunWavelength("211"), "# source: " + path_ + text);
  ExpectOutput(RunWavelength("211", {"--function", "5"}), "# source: " + path_ + text);
  EXPECT_EQ(Absorbances("210"), json::parse("[0, 4]"));
  EXPECT_EQ(Absorbances("210.25"), json::parse("[0, 4]")) << "the first of two that are equally near";
}

// 2.5 nm away at most: 213 - 210.5 in the first scan, too far in the second one.
TEST_F(WavelengthTest, NearHasALimit) {
  EXPECT_EQ(Absorbances("213"), json::parse("[3, null]"));
  EXPECT_TRUE(RunWavelength("213").output.ends_with("\n0.125\t3\n0.25\tnan\n"));
  EXPECT_EQ(Absorbances("207.5"), json::parse("[0, 4]"));
  for (const char* far : {"213.01", "207.4"}) {
    ExpectFailure(RunWavelength(far), 2,
                  "there is no wavelength " + std::string(far) + ": " + path_ + " has 210 to 210.5 nm");
  }
}

TEST_F(WavelengthTest, BandsAreMeans) {
  json band = json::parse(RunWavelength("210-210.5", {"--json"}).output);
  band.erase("source");
  EXPECT_EQ(band, json::parse(R"({
    "provider": "ZRMLProvider", "sample": 1, "sampleName": "Injection 1", "type": "absorbance", "wavelength": null,
    "wavelengthRange": [210, 210.5], "recordedWavelengths": [210, 210.5], "points": 2, "times": [0.125, 0.25],
    "intensities": [1.5, 4]
  })"));
  EXPECT_EQ(Absorbances("210.1-300"), json::parse("[3, null]"));
  ExpectFailure(RunWavelength("211-213"), 2,
                "there is no wavelength 211 to 213: " + path_ + " has 210 to 210.5 nm");
}

TEST_F(WavelengthTest, TimesChoose) {
  EXPECT_TRUE(
      RunWavelength("210", {"--rt", "0.2-"}).output.ends_with("# points: 1\ntime\tintensity\n0.25\t4\n"));
}

TEST_F(WavelengthTest, WavelengthThatIsNone) {
  for (const char* wrong : {"", "blue", "-254", "254-", "2e2"}) {
    ExpectFailure(RunWavelength(wrong), 2,
                  "--wavelength: \"" + std::string(wrong) +
                      "\" is not a wavelength such as 254, or a band such as 250-260 (see zrml chromatogram "
                      "--help)");
  }
  ExpectFailure(RunWavelength("260-250"), 2,
                "--wavelength: \"260-250\" has its larger number first (see zrml chromatogram --help)");
}

TEST_F(WavelengthTest, SourcesWithoutAbsorbance) {
  ExpectFailure(RunWavelength("254", {"--function", "1"}), 2, "function 1 has no absorbance spectra");
  ExpectFailure(RunWavelength("254", {"--function", "9"}), 2,
                "there is no function 9: " + path_ + " has functions 1 to 4, 6, p1");
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.functions.resize(4);
  const std::string without = Make("without.raw", raw);
  ExpectFailure(Run({"chromatogram", without, "--wavelength", "254"}), 2,
                without + " has no absorbance spectra");
}

class ReportWavelengthTest : public ZrmlTest {
 protected:
  // Wavelengths that do not ascend.
  static ReportLines Function(const char* type) {
    return FunctionBlock(Keys({{"Type", type}}) +
                         SpectrumBlock(Keys({{"Time", "1"}}), {{260, 50}, {254, 20}, {250, 10}}) +
                         SpectrumBlock(Keys({{"Time", "2"}}), {{250, 7}}));
  }
};

TEST_F(ReportWavelengthTest, IsThatOfItsFunction) {
  const std::string path = Make("pda.rpt", SampleBlock(Function("MS") + Function("PDA")));
  const json at = json::parse(Run({"chromatogram", path, "--wavelength", "252.5", "--json"}).output);
  EXPECT_EQ(at["function"], 2);
  EXPECT_EQ(at["times"], json::parse("[1, 2]"));
  EXPECT_EQ(at["intensities"], json::parse("[20, 7]"));
  EXPECT_EQ(at["recordedWavelengths"], json::parse("[250, 254]"));
  const json band = json::parse(Run({"chromatogram", path, "--wavelength", "252-260", "--json"}).output);
  EXPECT_EQ(band["intensities"], json::parse("[35, null]"));
}

TEST_F(ReportWavelengthTest, SeveralFunctionsNeedAChoice) {
  const std::string path = Make("pda.rpt", SampleBlock(Function("PDA") + Function("PDA")));
  ExpectFailure(Run({"chromatogram", path, "--wavelength", "254"}), 2,
                "--function is required: " + path + " has functions 1, 2");
  EXPECT_EQ(
      json::parse(
          Run({"chromatogram", path, "--wavelength", "254", "--function", "2", "--json"}).output)["function"],
      2);
  const std::string without = Make("ms.rpt", SampleBlock(Function("MS")));
  ExpectFailure(Run({"chromatogram", without, "--wavelength", "254"}), 2,
                without + " has no absorbance spectra");
}

}  // namespace
}  // namespace zrml::test
