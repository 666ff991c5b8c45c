#include <fstream>

#include <nlohmann/json.hpp>

#include "tests/support/built_file.h"
#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

using nlohmann::json;

class SpectrumTest : public ZrmlTest {
 protected:
  ProcessResult RunSpectrum(const std::string& function, int scan, std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"spectrum", path_, "--function", function, "--scan", std::to_string(scan)});
    return Run(more);
  }

  std::string path_ = Make("run.raw");
};

// Total: 10 + 3 + 1000000. A scan takes 15 s.
TEST_F(SpectrumTest, SurveyScanShowsAttributesAndPoints) {
  ExpectOutput(RunSpectrum("1", 1), "# source: " + path_ + R"(
# provider: ZRMLProvider
# sample: 1
# sampleName: Injection 1
# function: 1
# functionName: TOF MS ES+
# scan: 1
# startMinutes: 0.5
# endMinutes: 0.75
# msLevel: 1
# polarity: positive
# centroided: false
# scanValue: 2.5
# totalIntensity: 1000013
# basePeakMz: 300.0625
# basePeakIntensity: 1000000
# points: 3
m/z	intensity
100	10
200.5	3
300.0625	1000000
)");
}

// The survey scan before 1.125 min is the second, at 1 min.
TEST_F(SpectrumTest, ProductScanShowsItsPrecursor) {
  const ProcessResult result = RunSpectrum("2", 2);
  EXPECT_NE(result.output.find(R"(# startMinutes: 1.125
# endMinutes: 1.375
# msLevel: 2
# polarity: negative
# centroided: true
# precursorMz: 445.125
# precursorFunction: 1
# precursorScan: 2
)"),
            std::string::npos)
      << result.output;
  EXPECT_TRUE(result.output.ends_with("# points: 1\nm/z\tintensity\n50.5\t8\n")) << result.output;
}

// It is before every survey scan, and its precursor is unknown.
TEST_F(SpectrumTest, ProductScanWithoutPrecursorLeavesItOut) {
  const ProcessResult result = RunSpectrum("2", 1);
  EXPECT_NE(result.output.find("# msLevel: 2\n"), std::string::npos);
  EXPECT_EQ(result.output.find("precursor"), std::string::npos);
  const json spectrum = json::parse(RunSpectrum("2", 1, {"--json"}).output);
  EXPECT_EQ(spectrum["precursorMz"], nullptr);
  EXPECT_EQ(spectrum["precursorFunction"], nullptr);
}

TEST_F(SpectrumTest, EmptySpectrumIsASuccess) {
  const ProcessResult result = RunSpectrum("1", 3);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_TRUE(result.output.ends_with("# totalIntensity: 0\n# points: 0\nm/z\tintensity\n")) << result.output;
  const json spectrum = json::parse(RunSpectrum("1", 3, {"--json"}).output);
  EXPECT_EQ(spectrum["masses"], json::array());
  EXPECT_EQ(spectrum["intensities"], json::array());
  EXPECT_EQ(spectrum["basePeakMz"], nullptr);
}

TEST_F(SpectrumTest, JsonHasTheDocumentedKeys) {
  json spectrum = json::parse(RunSpectrum("1", 1, {"--json"}).output);
  EXPECT_EQ(spectrum["source"], path_);
  spectrum.erase("source");
  EXPECT_EQ(spectrum, json::parse(R"({
    "provider": "ZRMLProvider", "sample": 1, "sampleName": "Injection 1", "function": 1,
    "functionName": "TOF MS ES+", "scan": 1, "title": null, "label": null, "startMinutes": 0.5, "endMinutes": 0.75,
    "msLevel": 1, "polarity": "positive", "centroided": false, "precursorMz": null, "precursorFunction": null,
    "precursorScan": null, "scanValue": 2.5, "driftBins": null, "driftValues": null, "totalIntensity": 1000013,
    "basePeakMz": 300.0625, "basePeakIntensity": 1000000, "points": 3, "lostPoints": null,
    "masses": [100, 200.5, 300.0625], "intensities": [10, 3, 1000000]
  })"));
}

TEST_F(SpectrumTest, ProcessedDataGoByTheirName) {
  const ProcessResult result = RunSpectrum("p1", 1);
  EXPECT_NE(result.output.find("# function: p1\n# functionName: TOF MS ES+ (Smoothed)\n"), std::string::npos)
      << result.output;
  EXPECT_TRUE(result.output.ends_with("\n100\t11\n"));
  EXPECT_EQ(json::parse(RunSpectrum("p1", 1, {"--json"}).output)["function"], "p1");
}

// The last point of the first scan, of 6 bytes each, and those of the second.
TEST_F(SpectrumTest, PointsThatTheFileLacksAreCounted) {
  std::filesystem::resize_file(folder_ / "run.raw" / "_FUNC001.DAT", 2 * 6 + 5);
  const ProcessResult result = RunSpectrum("1", 1);
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.output.ends_with("# points: 2\n# lostPoints: 1\nm/z\tintensity\n100\t10\n200.5\t3\n"))
      << result.output;
  EXPECT_TRUE(RunSpectrum("1", 2).output.ends_with("# points: 0\n# lostPoints: 1\nm/z\tintensity\n"));
}

TEST_F(SpectrumTest, SampleOfAReportIsChosenByNumber) {
  const std::string report = Make("vials.rpt", Vials());
  const auto run = [&](const char* sample) {
    return Run({"spectrum", report, "--function", "1", "--scan", "2", "--sample", sample});
  };
  EXPECT_TRUE(run("1").output.ends_with("m/z\tintensity\n200\t50\n"));
  ExpectFailure(run("2"), 2, "there is no function 1: " + report + ", sample 2 has no functions");
  ExpectFailure(run("4"), 2, "there is no sample 4: " + report + " has samples 1 to 3");
}

TEST_F(SpectrumTest, NumbersThatAreNotThereTellThoseThatAre) {
  for (const char* function : {"7", "p2", "p1.2"}) {
    ExpectFailure(
        RunSpectrum(function, 1), 2,
        "there is no function " + std::string(function) + ": " + path_ + " has functions 1 to 4, 6, p1");
  }
  ExpectFailure(RunSpectrum("1", 4), 2, "there is no scan 4: function 1 has scans 1 to 3");
  ExpectFailure(RunSpectrum("3", 1), 2, "there is no scan 1: function 3 has no scans");
  ExpectFailure(RunSpectrum("6", 2), 2, "there is no scan 2: function 6 has only scan 1");
  ExpectFailure(RunSpectrum("p1", 2), 2, "there is no scan 2: function p1 has only scan 1");
  ExpectFailure(RunSpectrum("1", 1, {"--sample", "2"}), 2,
                "there is no sample 2: " + path_ + " has only sample 1");
}

TEST_F(SpectrumTest, DataFileIsTheOnlyFunction) {
  path_ += "/_FUNC006.DAT";
  EXPECT_TRUE(RunSpectrum("6", 1).output.ends_with("\n556.25\t9\n"));
  EXPECT_TRUE(Run({"spectrum", path_, "--scan", "1"}).output.ends_with("\n556.25\t9\n"));
  ExpectFailure(RunSpectrum("1", 1), 2, "there is no function 1: " + path_ + " has only function 6");
}

TEST_F(SpectrumTest, FunctionIsRequiredWhereThereAreSeveral) {
  ExpectFailure(Run({"spectrum", path_, "--scan", "1"}), 2,
                "--function is required: " + path_ + " has functions 1 to 4, 6, p1");
}

// Whose data file has no other, and which has a number like the others.
TEST_F(SpectrumTest, AbsorbanceGoesByItsFileAndItsNumberToo) {
  const std::string wanted = "\n# points: 1\nwavelength\tabsorbance\n210\t4\n";
  EXPECT_TRUE(RunSpectrum("5", 2).output.ends_with(wanted));
  EXPECT_TRUE(Run({"spectrum", path_ + "/_FUNC005.DAT", "--scan", "2"}).output.ends_with(wanted));
}

TEST_F(SpectrumTest, ScanThatCannotBeReadIsStatus5) {
  for (const std::vector<std::string>& more : {std::vector<std::string>{}, {"--json"}})
    ExpectFailure(RunSpectrum("4", 2, more), 5, path_ + ": cannot read scan 2 of function 4");
}

TEST_F(SpectrumTest, MissingDriftBinFails) {
  ExpectFailure(RunSpectrum("1", 1, {"--bin", "1"}), 2,
                "there is no drift bin 1: a scan of function 1 has no drift bins");
}

// The library has four bins; the second scan's second one has points at places 1, 2 and 4 of its axis: raw
// masses 100.5, 101 and 102. Continuum data have a zero on each side of them.
TEST_F(SpectrumTest, DriftBinIsASpectrumOfItsOwn) {
  std::filesystem::create_directories(folder_ / "program");
  setup_.program = folder_ / "program" / std::filesystem::path(ZRML_PROGRAM).filename();
  std::filesystem::copy_file(BuiltFile(ZRML_PROGRAM), setup_.program);
  std::filesystem::copy_file(BuiltFile(ZRML_STAND_INS) / "whole" / ZRML_MOBILITY_LIBRARY,
                             folder_ / "program" / ZRML_MOBILITY_LIBRARY);
  std::ofstream(folder_ / "run.raw" / "_FUNC001.CDT") << "";
  const ProcessResult whole = RunSpectrum("1", 2);
  EXPECT_NE(whole.output.find("# driftBins: 1 to 4\n# driftValues: 1 to 4\n"), std::string::npos)
      << whole.output << whole.errors;
  const ProcessResult bin = RunSpectrum("1", 2, {"--bin", "2"});
  EXPECT_NE(bin.output.find("# driftBins: 2 to 2\n# driftValues: 2 to 2\n"), std::string::npos);
  EXPECT_TRUE(bin.output.ends_with(
      "m/z\tintensity\n100\t0\n100.5\t21\n101\t21.125\n101.5\t0\n102\t21.25\n102.5\t0\n"))
      << bin.output;
  ExpectFailure(RunSpectrum("1", 1, {"--bin", "5"}), 2,
                "there is no drift bin 5: a scan of function 1 has drift bins 1 to 4");
}

TEST_F(SpectrumTest, AbsorbanceIsOfTheSample) {
  ExpectOutput(Run({"spectrum", path_, "--absorbance", "--scan", "1"}), "# source: " + path_ + R"(
# provider: ZRMLProvider
# sample: 1
# sampleName: Injection 1
# scan: 1
# startMinutes: 0.125
# points: 2
wavelength	absorbance
210	0
210.5	3
)");
  const json spectrum = json::parse(Run({"spectrum", path_, "--absorbance", "--scan", "1", "--json"}).output);
  EXPECT_EQ(spectrum["wavelengths"], json::parse("[210, 210.5]"));
  EXPECT_EQ(spectrum["absorbances"], json::parse("[0, 3]"));
}

TEST_F(SpectrumTest, MissingAbsorbanceFails) {
  ExpectFailure(Run({"spectrum", path_, "--absorbance", "--scan", "3"}), 2,
                "there is no absorbance scan 3: " + path_ + " has absorbance scans 1 to 2");
  const std::string report = Make("vials.rpt", Vials());
  ExpectFailure(Run({"spectrum", report, "--absorbance", "--scan", "1"}), 2,
                "there is no absorbance scan 1: " + report + ", sample 1 has no absorbance scans");
  ExpectFailure(RunSpectrum("1", 1, {"--absorbance"}), 2,
                "--function excludes --absorbance (see zrml spectrum --help)");
  ExpectFailure(Run({"spectrum", path_, "--absorbance", "--scan", "1", "--bin", "1"}), 2,
                "--bin excludes --absorbance (see zrml spectrum --help)");
}

TEST_F(SpectrumTest, AbsorbanceThatCannotBeReadIsStatus5) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.functions[4].record.dataFormat = 10;  // which has no layout
  const std::string path = Make("other.raw", raw);
  ExpectFailure(Run({"spectrum", path, "--absorbance", "--scan", "2"}), 5,
                path + ": cannot read absorbance spectrum 2");
}

}  // namespace
}  // namespace zrml::test
