#include <nlohmann/json.hpp>

#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

using nlohmann::json;

class ChromatogramTest : public ZrmlTest {
 protected:
  ProcessResult RunChromatogram(const std::string& function, std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"chromatogram", path_, "--function", function});
    return Run(more);
  }

  // The common attributes of all chromatograms of the survey function, then `rest`.
  std::string Survey(const std::string& rest) const {
    return "# source: " + path_ +
           "\n# provider: ZRMLProvider\n# sample: 1\n# sampleName: Injection 1\n# function: 1\n"
           "# functionName: TOF MS ES+\n" +
           rest;
  }

  std::string path_ = Make("run.raw");
};

// Of the survey functions of the first one's polarity, by time: functions 1 and 6, and 3 and 4, of which one
// has no scans. Processed and other functions are left out.
TEST_F(ChromatogramTest, WithoutAFunctionItIsThatOfTheSample) {
  ExpectOutput(Run({"chromatogram", path_}), "# source: " + path_ + R"(
# provider: ZRMLProvider
# sample: 1
# sampleName: Injection 1
# functions: 1,3,4,6
# type: total
# points: 6
time	intensity
0.25	9
0.5	1000013
1	5
1.5	0
3	1
3.5	1
)");
  EXPECT_EQ(Run({"chromatogram", path_, "--tic"}).output, Run({"chromatogram", path_}).output);
  EXPECT_EQ(json::parse(Run({"chromatogram", path_, "--json"}).output)["functions"], "1,3,4,6");
  ExpectFailure(Run({"chromatogram", path_, "--bpc"}), 2,
                "--function is required: " + path_ + " has functions 1 to 4, 6, p1");
}

TEST_F(ChromatogramTest, DataFileIsTheOnlyFunction) {
  const ProcessResult result = Run({"chromatogram", path_ + "/_FUNC002.DAT"});
  EXPECT_TRUE(
      result.output.ends_with("# function: 2\n# functionName: TOF MS/MS ES-\n# type: total\n# points: 2\n"
                              "time\tintensity\n0.125\t7\n1.125\t8\n"))
      << result.output;
}

// The first survey, which was never acquired, has another polarity.
TEST_F(ChromatogramTest, FirstSurveyWithScansChoosesThePolarity) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.functions = {raw.functions[2], raw.functions[5]};
  raw.functions[0].record.ionMode = 9;  // ES-
  raw.processed.clear();
  raw.history.clear();
  raw.labels.clear();
  const std::string path = Make("second.raw", raw);
  const std::string shown = Run({"chromatogram", path}).output;
  EXPECT_EQ(shown.substr(shown.find("time\t")), "time\tintensity\n0.25\t9\n");
  EXPECT_NE(Run({"convert", path, "--stdout"}).output.find("id=\"TIC\" defaultArrayLength=\"1\""),
            std::string::npos);
}

TEST_F(ChromatogramTest, SampleWithoutSurveysHasNoTotal) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.functions = {raw.functions[1], raw.functions[1]};
  raw.processed.clear();
  raw.history.clear();
  const std::string path = Make("fragments.raw", raw);
  ExpectFailure(Run({"chromatogram", path}), 2,
                path + " has no MS function of level 1 with scans; --function chooses one of functions 1, 2");
}

// The survey's scans: (100, 10), (200.5, 3), (300.0625, 1000000); (100.25, 5); none.
TEST_F(ChromatogramTest, TotalIonIsTheDefault) {
  const std::string expected = Survey(R"(# type: total
# points: 3
time	intensity
0.5	1000013
1	5
1.5	0
)");
  ExpectOutput(RunChromatogram("1"), expected);
  ExpectOutput(RunChromatogram("1", {"--tic"}), expected);
}

// What is printed can be asked for, as in zrml scans.
TEST_F(ChromatogramTest, TimesChoose) {
  const auto points = [&](const std::vector<std::string>& more) {
    return json::parse(RunChromatogram("1", more).output)["times"];
  };
  EXPECT_EQ(points({"--rt", "1-1.25", "--json"}), json::parse("[1]"));
  EXPECT_EQ(points({"--rt", "1-", "--bpc", "--json"}), json::parse("[1, 1.5]"));
  EXPECT_EQ(points({"--rt", "2-", "--range", "1-2", "--json"}), json::parse("[]"));
  ExpectFailure(Run({"chromatogram", path_, "--trace", "1", "--rt", "1-2"}), 2,
                "--rt excludes --trace (see zrml chromatogram --help)");
}

TEST_F(ChromatogramTest, SeveralSourcesFollowOneAnother) {
  const std::string other = Make("other.raw");
  const std::string first = RunChromatogram("1").output;
  const std::string second = Run({"chromatogram", other, "--function", "1"}).output;
  ExpectOutput(Run({"chromatogram", path_, other, "--function", "1"}), first + "\n" + second);
  const json list = json::parse(Run({"chromatogram", path_, other, "--json"}).output);
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[1]["source"], other);
  EXPECT_EQ(list[1]["functions"], "1,3,4,6");
}

TEST_F(ChromatogramTest, BasePeak) {
  ExpectOutput(RunChromatogram("1", {"--bpc"}), Survey(R"(# type: base peak
# points: 3
time	intensity
0.5	1000000
1	5
1.5	0
)"));
}

TEST_F(ChromatogramTest, RangeSumsWithinBothEnds) {
  ExpectOutput(RunChromatogram("1", {"--range", "100-200.5"}), Survey(R"(# type: total
# massRange: 100 to 200.5
# points: 3
time	intensity
0.5	13
1	5
1.5	0
)"));
}

TEST_F(ChromatogramTest, BasePeakWithinARange) {
  ExpectOutput(RunChromatogram("1", {"--bpc", "--range", "100-200.5"}), Survey(R"(# type: base peak
# massRange: 100 to 200.5
# points: 3
time	intensity
0.5	10
1	5
1.5	0
)"));
}

TEST_F(ChromatogramTest, RangeOfOneMass) {
  const ProcessResult result = RunChromatogram("1", {"--range=100.25-100.25"});
  EXPECT_TRUE(result.output.ends_with("0.5\t0\n1\t5\n1.5\t0\n")) << result.output;
}

TEST_F(ChromatogramTest, JsonHasTheDocumentedKeys) {
  json chromatogram = json::parse(RunChromatogram("1", {"--range", ".5-200.5", "--json"}).output);
  EXPECT_EQ(chromatogram["source"], path_);
  chromatogram.erase("source");
  EXPECT_EQ(chromatogram, json::parse(R"({
    "provider": "ZRMLProvider", "sample": 1, "sampleName": "Injection 1", "function": 1, "functionName": "TOF MS ES+",
    "type": "total", "massRange": [0.5, 200.5], "points": 3, "times": [0.5, 1, 1.5], "intensities": [13, 5, 0]
  })"));
  EXPECT_EQ(json::parse(RunChromatogram("1", {"--json"}).output)["massRange"], nullptr);
}

TEST_F(ChromatogramTest, FunctionWithoutScansHasNoPoints) {
  const ProcessResult result = RunChromatogram("3");
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.output.ends_with("# type: total\n# points: 0\ntime\tintensity\n")) << result.output;
}

// Function 4 has an unknown data format; its totals are in the index.
TEST_F(ChromatogramTest, FunctionThatCannotBeReadIsStatus5) {
  EXPECT_TRUE(RunChromatogram("4").output.ends_with("\n3\t1\n3.5\t1\n"));
  ExpectFailure(RunChromatogram("4", {"--bpc"}), 5, path_ + ": cannot read scan 1 of function 4");
}

TEST_F(ChromatogramTest, UnknownFunctionTellsThoseThatThereAre) {
  ExpectFailure(RunChromatogram("7"), 2, "there is no function 7: " + path_ + " has functions 1 to 4, 6, p1");
}

// Function 5. Its data file has nothing else.
TEST_F(ChromatogramTest, AbsorbanceSaysWhatReadsIt) {
  const std::string file = path_ + "/_FUNC005.DAT";
  const std::string advice =
      " is absorbance data: zrml spectrum --absorbance has its spectra, zrml chromatogram --wavelength its "
      "chromatograms";
  ExpectFailure(RunChromatogram("5"), 2, "function 5 of " + path_ + advice);
  ExpectFailure(Run({"chromatogram", path_, "--function", "5", "--mz", "100"}), 2,
                "function 5 of " + path_ + advice);
  ExpectFailure(Run({"scans", path_, "--function", "5"}), 2, "function 5 of " + path_ + advice);
  ExpectFailure(Run({"chromatogram", file}), 2, "function 5 of " + file + advice);
}

TEST_F(ChromatogramTest, RangeThatIsNoRangeIsWrongUsage) {
  for (const char* range : {"100", "100-", "-100", "-5-10", "a-b", "100-200x", "1e2-2e2", "nan-inf",
                            "100--200", "100 -200", "1.2.3-4", ".-5", "", "0x10-0x20"}) {
    ExpectFailure(RunChromatogram("1", {"--range", range}), 2,
                  "--range: \"" + std::string(range) +
                      "\" is not a mass range such as 100-200.5 (see zrml chromatogram --help)");
  }
}

TEST_F(ChromatogramTest, RangeWithItsLargerNumberFirstIsWrongUsage) {
  ExpectFailure(RunChromatogram("1", {"--range", "200-100"}), 2,
                "--range: \"200-100\" has its larger number first (see zrml chromatogram --help)");
}

TEST_F(ChromatogramTest, TotalIonExcludesTheOthers) {
  ExpectFailure(RunChromatogram("1", {"--tic", "--bpc"}), 2,
                "--tic excludes --bpc (see zrml chromatogram --help)");
  ExpectFailure(RunChromatogram("1", {"--tic", "--range", "1-2"}), 2,
                "--tic excludes --range (see zrml chromatogram --help)");
}

TEST_F(ChromatogramTest, TraceIsOfTheSample) {
  ExpectOutput(Run({"chromatogram", path_, "--trace", "1"}), "# source: " + path_ + R"(
# provider: ZRMLProvider
# sample: 1
# sampleName: Injection 1
# type: trace
# trace: 1
# traceName: Pressure
# points: 2
time	intensity
0.5	5
1	2
)");
  const json trace = json::parse(Run({"chromatogram", path_, "--trace", "1", "--json"}).output);
  EXPECT_EQ(trace["traceName"], "Pressure");
  EXPECT_EQ(trace["times"], json::parse("[0.5, 1]"));
}

TEST_F(ChromatogramTest, MissingTraceFails) {
  ExpectFailure(Run({"chromatogram", path_, "--trace", "4"}), 2,
                "there is no trace 4: " + path_ + " has traces 1 to 3");
  ExpectFailure(RunChromatogram("1", {"--trace", "1"}), 2, "there is no trace 1: function 1 has no traces");
  for (const std::string other : {"--tic", "--bpc"}) {
    ExpectFailure(Run({"chromatogram", path_, "--trace", "1", other}), 2,
                  other + " excludes --trace (see zrml chromatogram --help)");
  }
}

// The total absorbance, scan by scan, is the trace after those of the files.
TEST_F(ChromatogramTest, TotalAbsorbanceIsATrace) {
  EXPECT_TRUE(Run({"chromatogram", path_, "--trace", "3"})
                  .output.ends_with("# traceName: PDA - Total Absorbance\n# points: 2\ntime\tintensity\n"
                                    "0.125\t3\n0.25\t4\n"));
}

TEST_F(ChromatogramTest, TraceThatCannotBeReadIsStatus5) {
  std::filesystem::resize_file(folder_ / "run.raw" / "_ANALOGS.DAT", 7);
  ExpectFailure(Run({"chromatogram", path_, "--trace", "2"}), 5, path_ + ": cannot read trace 2");
}

}  // namespace
}  // namespace zrml::test
