// The program on a report: samples, functions, spectra, traces, metadata.
#include <fstream>

#include <nlohmann/json.hpp>

#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

using nlohmann::json;

class ReportTest : public ZrmlTest {
 protected:
  ReportTest() {
    std::ofstream(folder_ / "vials.rpt", std::ios::binary) << ReportText(Vials(), LineEnd::kCrLf);
  }

  std::string path_ = Path("vials.rpt");
};

// Function 2 is analog. Function 3 has no description and takes that of its trace. Values of more than 60
// characters are cut; all characters of the functions' text are counted, CR and LF too.
TEST_F(ReportTest, InfoShowsEverySample) {
  ExpectOutput(Run({"info", path_}), "Source    " + path_ + R"(
Provider  ZROpenLynxRptProvider
Content   processed report

Sample 1: VIAL_1

  Functions
    No  Name           Kind            Level  Polarity  Scans     Minutes  Data      Dim
     1  ES- MS survey  MS                  1  negative      3  0.5 to 2.5  centroid    2
     3  SIM caffeine   ion monitoring      1  unknown       0           -  -           1

  Traces of function 1
    1  TIC
    2  Function Trace 2

  Traces of function 3
    1  caffeine

  Traces
    1  Pressure
    2  Temperature

  Metadata
    ProviderName           ZROpenLynxRptProvider
    OperatorName           someone
    SampleName             -
    AnalysisDateTime       1-Jan-2026T9:00
    InstrumentDescription  -
    CompleteFunctionBlock  [FUNCTION]\r\n{\r\nDescription\tsurvey\r\nType\tMS\r\nIonMode\tES-\r\n[SP... (424 characters) (function 1)
                           [FUNCTION]\r\n{\r\nType\tSIM\r\nNote\tnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn... (223 characters) (function 3)

Sample 2: Sample 2

  No functions

  Traces
    1  Pressure
    2  Temperature

  Metadata
    ProviderName           ZROpenLynxRptProvider
    OperatorName           -
    SampleName             -
    AnalysisDateTime       -
    InstrumentDescription  -

Sample 3: Sample 3

  No functions

  Metadata
    ProviderName           ZROpenLynxRptProvider
    OperatorName           -
    SampleName             -
    AnalysisDateTime       -
    InstrumentDescription  -
)");
}

TEST_F(ReportTest, InfoOfOneSample) {
  const ProcessResult result = Run({"info", path_, "--sample", "3"});
  ExpectOutput(result, "Source    " + path_ + R"(
Provider  ZROpenLynxRptProvider
Content   processed report

Sample 3: Sample 3

  No functions

  Metadata
    ProviderName           ZROpenLynxRptProvider
    OperatorName           -
    SampleName             -
    AnalysisDateTime       -
    InstrumentDescription  -
)");
  ExpectFailure(Run({"info", path_, "--sample", "4"}), 2,
                "there is no sample 4: the source has samples 1 to 3");
}

TEST_F(ReportTest, InfoAsJsonHasTheWholeText) {
  const json info = json::parse(Run({"info", path_, "--json"}).output);
  EXPECT_EQ(info["report"], true);
  ASSERT_EQ(info["samples"].size(), 3U);
  const json function = info["samples"][0]["functions"][1];
  EXPECT_EQ(function["kindCode"], 32);
  EXPECT_EQ(function["metadata"]["CompleteFunctionBlock"],
            "[FUNCTION]\r\n{\r\nType\tSIM\r\nNote\t" + std::string(100, 'n') +
                "\r\n[CHROMATOGRAM]\r\n{\r\nDescription\tcaffeine\r\nMaxIntensity\t50\r\n"
                "[TRACE]\r\n{\r\n1\t100\r\n2\t0\r\n}\r\n}\r\n}\r\n");
  EXPECT_EQ(info["samples"][1]["traces"],
            json::parse(R"([{"number": 1, "name": "Pressure"}, {"number": 2, "name": "Temperature"}])"));
  const json sample = json::parse(Run({"info", path_, "--json", "--sample", "2"}).output);
  ASSERT_EQ(sample["samples"].size(), 1U);
  EXPECT_EQ(sample["samples"][0]["number"], 2);
}

TEST_F(ReportTest, SpectrumOfASample) {
  ExpectOutput(Run({"spectrum", path_, "--sample", "1", "--function", "1", "--scan", "1"}),
               "# source: " + path_ + R"(
# provider: ZROpenLynxRptProvider
# sample: 1
# sampleName: VIAL_1
# function: 1
# functionName: ES- MS survey
# scan: 1
# startMinutes: 0.5
# endMinutes: 0.5
# msLevel: 1
# polarity: negative
# centroided: true
# totalIntensity: 300
# basePeakMz: 100
# basePeakIntensity: 200
# points: 2
m/z	intensity
100	200
300	100
)");
  EXPECT_TRUE(Run({"spectrum", path_, "--function", "1", "--scan", "3"})
                  .output.ends_with("# points: 0\nm/z\tintensity\n"));
  ExpectFailure(Run({"spectrum", path_, "--sample", "2", "--function", "1", "--scan", "1"}), 2,
                "there is no function 1: sample 2 has no functions");
}

TEST_F(ReportTest, ChromatogramsAreThoseOfTheReport) {
  const ProcessResult result = Run({"chromatogram", path_, "--function", "1", "--bpc"});
  EXPECT_TRUE(result.output.ends_with(
      "# type: base peak\n# points: 3\ntime\tintensity\n0.5\t200\n1.5\t200\n2.5\t200\n"))
      << result.output;
}

TEST_F(ReportTest, TraceOfASample) {
  ExpectOutput(Run({"chromatogram", path_, "--sample", "2", "--trace", "2"}), "# source: " + path_ + R"(
# provider: ZROpenLynxRptProvider
# sample: 2
# sampleName: Sample 2
# type: trace
# trace: 2
# traceName: Temperature
# points: 2
time	intensity
1	50
2	0
)");
  ExpectFailure(Run({"chromatogram", path_, "--sample", "2", "--trace", "3"}), 2,
                "there is no trace 3: sample 2 has traces 1 to 2");
  ExpectFailure(Run({"chromatogram", path_, "--sample", "3", "--trace", "1"}), 2,
                "there is no trace 1: sample 3 has no traces");
}

TEST_F(ReportTest, TraceOfAFunction) {
  const json trace =
      json::parse(Run({"chromatogram", path_, "--function", "3", "--trace", "1", "--json"}).output);
  json expected = json::parse(R"({
    "provider": "ZROpenLynxRptProvider", "sample": 1, "sampleName": "VIAL_1", "function": 3, "functionName": "SIM caffeine",
    "type": "trace", "trace": 1, "traceName": "caffeine", "points": 2, "times": [1, 2], "intensities": [50, 0]
  })");
  expected["source"] = path_;
  EXPECT_EQ(trace, expected);
  EXPECT_TRUE(Run({"chromatogram", path_, "--function", "1", "--trace", "2"})
                  .output.ends_with("# points: 0\ntime\tintensity\n"));
  ExpectFailure(Run({"chromatogram", path_, "--function", "1", "--trace", "3"}), 2,
                "there is no trace 3: function 1 has traces 1 to 2");
}

TEST_F(ReportTest, TraceOfASampleAsJsonHasNoFunction) {
  const json trace = json::parse(Run({"chromatogram", path_, "--trace", "1", "--json"}).output);
  EXPECT_FALSE(trace.contains("function"));
  EXPECT_FALSE(trace.contains("functionName"));
  EXPECT_EQ(trace["traceName"], "Pressure");
}

TEST_F(ReportTest, ChromatogramNeedsAFunctionOrATrace) {
  ExpectFailure(Run({"chromatogram", path_}), 2, "--function is required (see zrml chromatogram --help)");
  ExpectFailure(Run({"chromatogram", path_, "--trace", "1", "--bpc"}), 2,
                "--bpc excludes --trace (see zrml chromatogram --help)");
  ExpectFailure(Run({"chromatogram", path_, "--trace", "1", "--range", "1-2"}), 2,
                "--range excludes --trace (see zrml chromatogram --help)");
}

class CutReportTest : public ReportTest {
 protected:
  void ExpectCut(std::size_t size, const std::string& finding) const {
    std::filesystem::resize_file(folder_ / "vials.rpt", size);
    const ProcessResult checked = Run({"check", path_});
    EXPECT_EQ(checked.status, 7);
    EXPECT_EQ(checked.output, finding + "\n");
  }

  const std::string whole_ = ReadBytes(folder_ / "vials.rpt");
};

// A copy that broke off before the last brace of all; in a list of a spectrum of a function of a sample, each
// with its own brace.
TEST_F(CutReportTest, IsDamagedInItsLastSample) {
  ExpectOutput(Run({"check", path_}), path_ + " is sound: 2 functions, 3 scans\n");
  ExpectCut(whole_.rfind('}'), "vials.rpt ends inside 1 block");
  ExpectCut(whole_.rfind("{"), "vials.rpt ends where its last sample begins");
  ExpectCut(whole_.find("100\t100"), "vials.rpt ends inside 4 blocks");
}

// What another program has written between samples is not read.
TEST_F(CutReportTest, BracesOutsideSamplesCountForNothing) {
  std::ofstream(folder_ / "vials.rpt", std::ios::binary) << "{ made by somebody\n" << whole_ << "{\n";
  EXPECT_EQ(Run({"check", path_}).status, 0);
}

TEST_F(CutReportTest, SampleWithoutItsEndIsTold) {
  const std::size_t second = whole_.find("[SAMPLE]", 1);
  std::string text = whole_;
  text.erase(text.rfind('}', second), 3);  // and its line end
  std::ofstream(folder_ / "vials.rpt", std::ios::binary) << text;
  const ProcessResult checked = Run({"check", path_});
  EXPECT_EQ(checked.status, 7);
  EXPECT_EQ(checked.output, "vials.rpt has no end of sample 1\n");
}

TEST_F(ReportTest, FunctionOfUnknownTypeIsOther) {
  const ReportLines spectrum = SpectrumBlock(Keys({{"Time", "1"}}), {{100, 50}});
  std::ofstream(folder_ / "unknown.rpt", std::ios::binary)
      << ReportText(SampleBlock(FunctionBlock(Keys({{"Type", "TOFX"}}) + spectrum)), LineEnd::kCrLf);
  const json function =
      json::parse(Run({"info", "--json", Path("unknown.rpt")}).output)["samples"][0]["functions"][0];
  EXPECT_EQ(function["kind"], "other");
  EXPECT_EQ(function["kindCode"], 0);
}

TEST_F(ReportTest, FileThatIsNoReportIsRefused) {
  std::ofstream(folder_ / "none.rpt", std::ios::binary) << "[FUNCTION]\n{\n}\n";
  ExpectFailure(Run({"info", Path("none.rpt")}), 4,
                Path("none.rpt") + " is neither a raw directory nor a report");
}

}  // namespace
}  // namespace zrml::test
