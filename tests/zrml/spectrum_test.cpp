#include <nlohmann/json.hpp>

#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

using nlohmann::json;

class SpectrumTest : public ZrmlTest {
 protected:
  ProcessResult RunSpectrum(int function, int scan, std::vector<std::string> more = {}) const {
    more.insert(more.begin(),
                {"spectrum", path_, "--function", std::to_string(function), "--scan", std::to_string(scan)});
    return Run(more);
  }

  std::string path_ = MakeFolder("run.raw");
};

// Total: 10 + 0.5 + 1000000.
TEST_F(SpectrumTest, SurveyScanShowsAttributesAndPoints) {
  ExpectOutput(RunSpectrum(1, 1), "# source: " + path_ + R"(
# provider: FakeFolder
# sample: 1
# sampleName: Injection 1
# function: 1
# functionName: Survey
# scan: 1
# title: first\tscan
# startMinutes: 0.5
# endMinutes: 0.75
# msLevel: 1
# polarity: positive
# centroided: false
# scanValue: 2.5
# totalIntensity: 1000010.5
# basePeakMz: 300.0625
# basePeakIntensity: 1000000
# points: 3
m/z	intensity
100	10
200.5	0.5
300.0625	1000000
)");
}

TEST_F(SpectrumTest, ProductScanShowsItsPrecursor) {
  ExpectOutput(RunSpectrum(2, 1), "# source: " + path_ + R"(
# provider: FakeFolder
# sample: 1
# sampleName: Injection 1
# function: 2
# functionName: Product
# scan: 1
# startMinutes: 1.125
# endMinutes: 1.375
# msLevel: 2
# polarity: negative
# centroided: true
# precursorMz: 445.12
# precursorFunction: 1
# precursorScan: 2
# scanValue: 0
# totalIntensity: 7
# basePeakMz: 50.5
# basePeakIntensity: 7
# points: 1
m/z	intensity
50.5	7
)");
}

TEST_F(SpectrumTest, ProductScanWithoutPrecursorLeavesItOut) {
  const ProcessResult result = RunSpectrum(2, 2);
  EXPECT_NE(result.output.find("# msLevel: 2\n"), std::string::npos);
  EXPECT_EQ(result.output.find("precursor"), std::string::npos);
  const json spectrum = json::parse(RunSpectrum(2, 2, {"--json"}).output);
  EXPECT_EQ(spectrum["precursorMz"], nullptr);
  EXPECT_EQ(spectrum["precursorFunction"], nullptr);
}

TEST_F(SpectrumTest, EmptySpectrumIsASuccess) {
  const ProcessResult result = RunSpectrum(1, 3);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_TRUE(result.output.ends_with("# totalIntensity: 0\n# points: 0\nm/z\tintensity\n")) << result.output;
  const json spectrum = json::parse(RunSpectrum(1, 3, {"--json"}).output);
  EXPECT_EQ(spectrum["masses"], json::array());
  EXPECT_EQ(spectrum["intensities"], json::array());
  EXPECT_EQ(spectrum["basePeakMz"], nullptr);
}

// Positional from 1e-5 up to 1e15, otherwise with an exponent; each is the shortest that reads back as the
// same double.
TEST_F(SpectrumTest, NumbersAreShortestAndUnusualOnesAreNamed) {
  const ProcessResult result = RunSpectrum(5, 1);
  EXPECT_TRUE(
      result.output.ends_with("m/z\tintensity\n"
                              "1e-07\tnan\n"
                              "0.1\tinf\n"
                              "123456789\t-inf\n"
                              "1e+15\t-0\n"
                              "1.7976931348623157e+308\t5e-324\n"))
      << result.output;
  EXPECT_NE(result.output.find("# functionName: Odd\\tname\\n\"é𝄞\\\"\n"), std::string::npos);
  EXPECT_NE(result.output.find("# startMinutes: nan\n"), std::string::npos);
  EXPECT_NE(result.output.find("# driftBins: 1 to 200\n# driftValues: 0.5 to 100\n"), std::string::npos);
}

TEST_F(SpectrumTest, JsonHasNullForNumbersWithoutAForm) {
  const ProcessResult result = RunSpectrum(5, 1, {"--json"});
  EXPECT_NE(result.output.find(R"("intensities": [null, null, null, -0, 5e-324])"), std::string::npos)
      << result.output;
  EXPECT_NE(result.output.find(R"("masses": [1e-07, 0.1, 123456789, 1e+15, 1.7976931348623157e+308])"),
            std::string::npos);
  const json spectrum = json::parse(result.output);
  EXPECT_EQ(spectrum["startMinutes"], nullptr);
  EXPECT_EQ(spectrum["driftBins"], json::parse("[1, 200]"));
  EXPECT_EQ(spectrum["functionName"], "Odd\tname\n\"\u00E9\U0001D11E\\\"");
}

TEST_F(SpectrumTest, JsonHasTheDocumentedKeys) {
  json spectrum = json::parse(RunSpectrum(1, 1, {"--json"}).output);
  EXPECT_EQ(spectrum["source"], path_);
  spectrum.erase("source");
  EXPECT_EQ(spectrum, json::parse(R"({
    "provider": "FakeFolder", "sample": 1, "sampleName": "Injection 1", "function": 1, "functionName": "Survey",
    "scan": 1, "title": "first\tscan", "label": null, "startMinutes": 0.5, "endMinutes": 0.75, "msLevel": 1,
    "polarity": "positive", "centroided": false, "precursorMz": null, "precursorFunction": null,
    "precursorScan": null, "scanValue": 2.5, "driftBins": null, "driftValues": null, "totalIntensity": 1000010.5,
    "basePeakMz": 300.0625, "basePeakIntensity": 1000000, "points": 3,
    "masses": [100, 200.5, 300.0625], "intensities": [10, 0.5, 1000000]
  })"));
}

TEST_F(SpectrumTest, SampleOfAReportIsChosenByNumber) {
  const std::string report = MakeFile("vials.fakereport");
  const ProcessResult result = Run({"spectrum", report, "--function", "1", "--scan", "1", "--sample", "1"});
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.output.ends_with("m/z\tintensity\n18\t1.5\n")) << result.output;
  ExpectFailure(Run({"spectrum", report, "--function", "1", "--scan", "1", "--sample", "2"}), 2,
                "there is no function 1: sample 2 has no functions");
  ExpectFailure(Run({"spectrum", report, "--function", "1", "--scan", "1", "--sample", "3"}), 2,
                "there is no sample 3: the source has samples 1 to 2");
}

TEST_F(SpectrumTest, NumbersOutOfRangeTellTheRange) {
  ExpectFailure(RunSpectrum(7, 1), 2, "there is no function 7: sample 1 has functions 1 to 6");
  ExpectFailure(RunSpectrum(1, 4), 2, "there is no scan 4: function 1 has scans 1 to 3");
  ExpectFailure(RunSpectrum(3, 1), 2, "there is no scan 1: function 3 has no scans");
  ExpectFailure(RunSpectrum(6, 2), 2, "there is no scan 2: function 6 has only scan 1");
  ExpectFailure(RunSpectrum(1, 1, {"--sample", "2"}), 2,
                "there is no sample 2: the source has only sample 1");
}

TEST_F(SpectrumTest, ScanThatCannotBeReadIsStatus5) {
  EXPECT_EQ(RunSpectrum(4, 1).status, 0);
  ExpectFailure(RunSpectrum(4, 2), 5, "cannot read scan 2 of function 4 of " + path_);
  ExpectFailure(RunSpectrum(4, 2, {"--json"}), 5, "cannot read scan 2 of function 4 of " + path_);
}

TEST_F(SpectrumTest, DriftBinIsASpectrumOfItsOwn) {
  const ProcessResult result = RunSpectrum(5, 1, {"--bin", "2"});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_NE(result.output.find("# driftBins: 2 to 2\n# driftValues: 2 to 2\n"), std::string::npos);
  EXPECT_NE(result.output.find("# points: 1\nm/z\tintensity\n55.5\t9\n"), std::string::npos);
}

TEST_F(SpectrumTest, DriftBinThatIsNotThereFails) {
  ExpectFailure(RunSpectrum(5, 1, {"--bin", "201"}), 2,
                "there is no drift bin 201: a scan of function 5 has drift bins 1 to 200");
  ExpectFailure(RunSpectrum(1, 1, {"--bin", "1"}), 2,
                "there is no drift bin 1: a scan of function 1 has no drift bins");
  ExpectFailure(RunSpectrum(5, 1, {"--bin", "3"}), 5,
                "cannot read drift bin 3 of scan 1 of function 5 of " + path_);
}

TEST_F(SpectrumTest, AbsorbanceIsOfTheSample) {
  ExpectOutput(Run({"spectrum", path_, "--absorbance", "--scan", "1"}), "# source: " + path_ + R"(
# provider: FakeFolder
# sample: 1
# sampleName: Injection 1
# scan: 1
# startMinutes: 0.125
# points: 2
wavelength	absorbance
210	0
210.5	0.75
)");
  const json spectrum = json::parse(Run({"spectrum", path_, "--absorbance", "--scan", "1", "--json"}).output);
  EXPECT_EQ(spectrum["wavelengths"], json::parse("[210, 210.5]"));
  EXPECT_EQ(spectrum["absorbances"], json::parse("[0, 0.75]"));
}

TEST_F(SpectrumTest, AbsorbanceThatIsNotThereFails) {
  ExpectFailure(Run({"spectrum", path_, "--absorbance", "--scan", "26"}), 2,
                "there is no absorbance scan 26: sample 1 has absorbance scans 1 to 25");
  ExpectFailure(Run({"spectrum", path_, "--absorbance", "--scan", "2"}), 5,
                "cannot read absorbance scan 2 of " + path_);
  ExpectFailure(Run({"spectrum", MakeFile("two.fakereport"), "--absorbance", "--scan", "1"}), 2,
                "there is no absorbance scan 1: sample 1 has no absorbance scans");
  ExpectFailure(RunSpectrum(1, 1, {"--absorbance"}), 2,
                "--function excludes --absorbance (see zrml spectrum --help)");
  ExpectFailure(Run({"spectrum", path_, "--absorbance", "--scan", "1", "--bin", "1"}), 2,
                "--bin excludes --absorbance (see zrml spectrum --help)");
}

}  // namespace
}  // namespace zrml::test
