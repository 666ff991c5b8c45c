// zrml chromatogram of named ions and of lists of targets.
#include <nlohmann/json.hpp>

#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

using nlohmann::json;

class IonChromatogramTest : public ZrmlTest {
 protected:
  ProcessResult RunIons(std::vector<std::string> more) const {
    more.insert(more.begin(), {"chromatogram", path_});
    return Run(more);
  }

  json Chromatograms(std::vector<std::string> more) const {
    more.emplace_back("--json");
    return json::parse(RunIons(more).output)["chromatograms"];
  }

  // Of the only chromatogram.
  json Intensities(const std::vector<std::string>& more) const {
    const json chromatograms = Chromatograms(more);
    EXPECT_EQ(chromatograms.size(), 1U);
    return chromatograms[0]["intensities"];
  }

  void ExpectWrongUsage(const std::vector<std::string>& more, const std::string& message) const {
    ExpectFailure(RunIons(more), 2, message + " (see zrml chromatogram --help)");
  }

  std::string path_ = Make("run.raw");
};

// Both ends belong to a range. The areas: (10 + 5) / 2 * 0.5 min + (5 + 0) / 2 * 0.5 min, and 3 / 2 * 0.5
// min.
TEST_F(IonChromatogramTest, OneForEachMass) {
  const std::string head = "# source: " + path_ + R"(
# provider: ZRMLProvider
# sample: 1
# sampleName: Injection 1
# function: 1
# functionName: TOF MS ES+
# type: total
)";
  ExpectOutput(RunIons({"--function", "1", "--mz", "100.125,200.5", "--da", "0.125"}), head + R"(# mz: 100.125
# massRange: 100 to 100.25
# apexMinutes: 0.5
# apexIntensity: 10
# area: 5
# points: 3
time	intensity
0.5	10
1	5
1.5	0

)" + head + R"(# mz: 200.5
# massRange: 200.375 to 200.625
# apexMinutes: 0.5
# apexIntensity: 3
# area: 0.75
# points: 3
time	intensity
0.5	3
1	0
1.5	0
)");
}

// 625 ppm of 200 are 0.125.
TEST_F(IonChromatogramTest, JsonHasTheDocumentedKeys) {
  json printed = json::parse(RunIons({"--function", "1", "--mz", "200", "--ppm", "625", "--json"}).output);
  EXPECT_EQ(printed["source"], path_);
  ASSERT_EQ(printed["chromatograms"].size(), 1U);
  EXPECT_EQ(printed["chromatograms"][0]["source"], path_);
  printed["chromatograms"][0].erase("source");
  EXPECT_EQ(printed["chromatograms"][0], json::parse(R"({
    "provider": "ZRMLProvider", "sample": 1, "sampleName": "Injection 1", "function": 1, "functionName": "TOF MS ES+",
    "type": "total", "mz": 200, "massRange": [199.875, 200.125], "comment": null, "apexMinutes": null,
    "apexIntensity": null, "area": 0, "points": 3, "times": [0.5, 1, 1.5], "intensities": [0, 0, 0]
  })"));
}

// 10 ppm of 100 are 0.001.
TEST_F(IonChromatogramTest, TenPartsPerMillionAreTheDefault) {
  EXPECT_EQ(Chromatograms({"--function", "1", "--mz", "100"})[0]["massRange"],
            json::parse("[99.999, 100.001]"));
}

TEST_F(IonChromatogramTest, SumsOrLargestIntensities) {
  const std::vector<std::string> all = {"--function", "1", "--mz", "200", "--da", "100.0625"};
  const auto with = [&](const char* option) {
    std::vector<std::string> options = all;
    options.emplace_back(option);
    return options;
  };
  EXPECT_EQ(Intensities(all), json::parse("[1000013, 5, 0]"));
  EXPECT_EQ(Intensities(with("--sum")), json::parse("[1000013, 5, 0]"));
  const json largest = Chromatograms(with("--max"))[0];
  EXPECT_EQ(largest["intensities"], json::parse("[1000000, 5, 0]"));
  EXPECT_EQ(largest["type"], "base peak");
  EXPECT_EQ(largest["area"], 250002.5);  // 1000005 / 4 + 5 / 4
}

TEST_F(IonChromatogramTest, LevelsAndFunctionsChoose) {
  const auto functions = [&](const std::vector<std::string>& more) {
    json numbers = json::array();
    for (const json& each : Chromatograms(more)) numbers.push_back(each["function"]);
    return numbers;
  };
  EXPECT_EQ(functions({"--mz", "50.5,100", "--ms-level", "2"}), json::parse("[2, 2]"));
  EXPECT_EQ(functions({"--mz", "100", "--function", "1-3,p1"}), json::parse(R"([1, 2, 3, "p1"])"));
  EXPECT_EQ(functions({"--mz", "100", "--function", "1-3", "--ms-level", "1"}), json::parse("[1, 3]"));
  ExpectFailure(
      RunIons({"--mz", "100", "--ms-level", "3"}), 2,
      path_ + " has no MS function of such a level; --function chooses one of functions 1 to 4, 6, p1");
  for (const char* const list : {"7", "1,7", "7,1", "1-3,7"}) {
    ExpectFailure(RunIons({"--mz", "100", "--function", list}), 2,
                  "there is no function 7: " + path_ + " has functions 1 to 4, 6, p1");
  }
  for (const char* const list : {"7-9", "7-", "7-8,12-15"}) {
    ExpectFailure(RunIons({"--mz", "100", "--function", list, "--ms-level", "1"}), 2,
                  "there is no function 7: " + path_ + " has functions 1 to 4, 6, p1");
  }
  EXPECT_EQ(functions({"--mz", "100", "--function", "3,7-9"}), json::parse("[3]"));
}

// Those of level 1: function 4 has points of no known layout, and what was read before it is there.
TEST_F(IonChromatogramTest, FunctionThatCannotBeReadEndsTheSource) {
  const ProcessResult result = RunIons({"--mz", "100", "--json"});
  EXPECT_EQ(result.status, 5);
  EXPECT_EQ(result.errors, "zrml: " + path_ + ": cannot read scan 1 of function 4\n");
  const json read = json::parse(result.output)["chromatograms"];
  ASSERT_EQ(read.size(), 2U);
  EXPECT_EQ(read[0]["function"], 1);
  EXPECT_EQ(read[1]["function"], 3);
}

// A data file stands for its function, whatever its level.
TEST_F(IonChromatogramTest, OnlyFunctionNeedsNoChoice) {
  const json printed =
      json::parse(Run({"chromatogram", path_ + "/_FUNC002.DAT", "--mz", "50.5", "--json"}).output);
  EXPECT_EQ(printed["chromatograms"][0]["intensities"], json::parse("[7, 8]"));
}

TEST_F(IonChromatogramTest, TimesChoose) {
  const json chromatogram = Chromatograms({"--function", "1", "--mz", "100.25", "--rt", "0.75-"})[0];
  EXPECT_EQ(chromatogram["times"], json::parse("[1, 1.5]"));
  EXPECT_EQ(chromatogram["intensities"], json::parse("[5, 0]"));
  EXPECT_EQ(chromatogram["apexMinutes"], 1);
}

TEST_F(IonChromatogramTest, ListsOfTargets) {
  const std::string rows =
      MakeFile("targets.tsv",
               "comment\tmz\ttolerance\ttolerance_unit\tmz_start\tmz_end\trt_start\trt_end\n"
               "first\t100\t0.25\tda\t\t\t\t\n"
               "\t\t\t\t200\t301\t\t0.75\n"
               "last\t100.25\t\t\t\t\t1\t1.25\n");
  const std::string objects = MakeFile("targets.json", R"([
      {"comment": "first", "mz": 100, "tolerance": 0.25, "tolerance_unit": "da"},
      {"mz_start": 200, "mz_end": 301, "rt_end": 0.75},
      {"comment": "last", "mz": 100.25, "rt_start": 1, "rt_end": 1.25}])");
  const json found = Chromatograms({"--function", "1", "--targets", rows});
  ASSERT_EQ(found.size(), 3U);
  EXPECT_EQ(found[0]["comment"], "first");
  EXPECT_EQ(found[0]["intensities"], json::parse("[10, 5, 0]"));
  EXPECT_EQ(found[1]["mz"], nullptr);
  EXPECT_EQ(found[1]["massRange"], json::parse("[200, 301]"));
  EXPECT_EQ(found[1]["times"], json::parse("[0.5]"));
  EXPECT_EQ(found[1]["intensities"], json::parse("[1000003]"));
  EXPECT_EQ(found[2]["comment"], "last");
  EXPECT_EQ(found[2]["intensities"], json::parse("[5]"));
  EXPECT_EQ(found[2]["area"], 0) << "one point has no area";
  EXPECT_EQ(Chromatograms({"--function", "1", "--targets", objects}), found);
}

TEST_F(IonChromatogramTest, ListThatCannotBeReadPrintsNothing) {
  const std::string list = MakeFile("targets.tsv", "mz\n100\n\n1O0\n");
  ExpectFailure(RunIons({"--function", "1", "--targets", list}), 2,
                list + ", line 4: mz \"1O0\" is not a number of 0 or more");
  const std::string objects = MakeFile("targets.json", "[{\"mz\": 100}, {\"mz\": true}]");
  ExpectFailure(RunIons({"--function", "1", "--targets", objects, "--json"}), 2,
                objects + ", line 1: mz \"true\" is not a number of 0 or more");
  ExpectFailure(RunIons({"--targets", Path("none.tsv")}), 3, "there is no file " + Path("none.tsv"));
}

// The method of function 1 has m/z 50 to 1200.5, that of function 6 none.
TEST_F(IonChromatogramTest, TargetsOutsideAreNamed) {
  const std::string list = MakeFile("targets.tsv", "mz\tmz_start\tmz_end\n1201\t\t\n\t10\t49.5\n50\t\t\n");
  const ProcessResult result = RunIons({"--function", "1,6", "--targets", list, "--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors,
            "zrml: " + path_ + ": outside of m/z 50 to 1200.5, the range of function 1: 1201, 10 to 49.5\n");
  const json chromatograms = json::parse(result.output)["chromatograms"];
  ASSERT_EQ(chromatograms.size(), 6U);
  EXPECT_EQ(chromatograms[0]["intensities"], json::parse("[0, 0, 0]"));
}

// The points of its scans are 50 % at m/z 300 before 100 % at 100, then 25 % at 200, then none, of 200.
TEST_F(IonChromatogramTest, MassesOfAReportNeedNotAscend) {
  const std::string report = Make("vials.rpt", Vials());
  const json chromatograms =
      json::parse(Run({"chromatogram", report, "--mz", "100,200,300,250", "--da", "1", "--json"})
                      .output)["chromatograms"];
  ASSERT_EQ(chromatograms.size(), 4U);
  EXPECT_EQ(chromatograms[0]["intensities"], json::parse("[200, 0, 0]"));
  EXPECT_EQ(chromatograms[0]["area"], 100);
  EXPECT_EQ(chromatograms[1]["intensities"], json::parse("[0, 50, 0]"));
  EXPECT_EQ(chromatograms[1]["area"], 50);
  EXPECT_EQ(chromatograms[2]["intensities"], json::parse("[100, 0, 0]"));
  EXPECT_EQ(chromatograms[3]["intensities"], json::parse("[0, 0, 0]"));
}

// The area is that of the points by time: (2 + 4) / 2 * 1 + (4 + 8) / 2 * 2 = 15. The point without a time
// has a place in the list alone.
TEST_F(IonChromatogramTest, TimesOfAReportNeedNotAscend) {
  const auto scan = [](const char* time, double intensity) {
    return SpectrumBlock(Keys({{"Time", time}}), {{100, intensity}});
  };
  const std::string report =
      Make("times.rpt", SampleBlock(FunctionBlock(Keys({{"Type", "MS"}}) + scan("4", 8) + scan("1", 2) +
                                                  SpectrumBlock({}, {{100, 9}}) + scan("2", 4))));
  const json chromatogram =
      json::parse(Run({"chromatogram", report, "--mz", "100", "--json"}).output)["chromatograms"][0];
  EXPECT_EQ(chromatogram["times"], json::parse("[4, 1, null, 2]"));
  EXPECT_EQ(chromatogram["intensities"], json::parse("[8, 2, 9, 4]"));
  EXPECT_EQ(chromatogram["area"], 15);
}

TEST_F(IonChromatogramTest, SeveralPathsAreAList) {
  const std::string report = Make("vials.rpt", Vials());
  const std::vector<std::string> ions = {"--mz", "100", "--function", "1", "--json"};
  const auto run = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), ions.begin(), ions.end());
    return Run(arguments);
  };
  const json both = json::parse(run({"chromatogram", path_, report}).output);
  ASSERT_EQ(both.size(), 2U);
  EXPECT_EQ(both[0]["source"], path_);
  EXPECT_EQ(both[1]["chromatograms"][0]["intensities"], json::parse("[200, 0, 0]"));
  const std::string missing = Path("no.raw");
  const ProcessResult result = run({"chromatogram", missing, report});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.errors, "zrml: there is no file or folder " + missing +
                               "\nzrml: 1 of 2 sources are not shown in full: " + missing + "\n");
  EXPECT_EQ(json::parse(result.output).size(), 1U);
  ExpectFailure(run({"chromatogram", missing}), 3, "there is no file or folder " + missing);
}

TEST_F(IonChromatogramTest, MassesThatAreNone) {
  for (const char* list : {"", "0", "-1", "1e2", "100,", ",100", "100;200", "100 200", "nan", "1.2.3"}) {
    ExpectWrongUsage({"--mz", list},
                     "--mz: \"" + std::string(list) + "\" is not a list of m/z such as 556.2771,195.0877");
  }
  ExpectWrongUsage({"--mz", "100", "--ppm", "-1"}, "--ppm: \"-1\" is not a number such as 10 or 0.02");
}

TEST_F(IonChromatogramTest, OptionsThatDoNotGoTogether) {
  for (const std::string other : {"--tic", "--bpc", "--range=1-2", "--trace=1", "--wavelength=254"}) {
    const ProcessResult result = RunIons({"--mz", "100", other});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.errors.find(" excludes "), std::string::npos) << result.errors;
  }
  ExpectWrongUsage({"--mz", "100", "--targets", "list"}, "--mz excludes --targets");
  ExpectWrongUsage({"--mz", "100", "--ppm", "1", "--da", "1"}, "--ppm excludes --da");
  ExpectWrongUsage({"--mz", "100", "--sum", "--max"}, "--sum excludes --max");
  for (const std::string lone : {"--ppm=1", "--da=1", "--sum", "--max", "--ms-level=1"}) {
    ExpectWrongUsage({"--function", "1", lone}, lone.substr(0, lone.find('=')) + " needs --mz or --targets");
  }
  for (const char* list : {"1-2", "1,2", "1,p1", "2-"}) {
    ExpectWrongUsage({"--function", list}, "--function takes several functions only with --mz or --targets");
  }
}

}  // namespace
}  // namespace zrml::test
