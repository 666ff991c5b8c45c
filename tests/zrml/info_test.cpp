#include <nlohmann/json.hpp>

#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

using nlohmann::json;

class InfoTest : public ZrmlTest {
 protected:
  json RunJson(const std::string& path) const {
    const ProcessResult result = Run({"info", path, "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    return json::parse(result.output);
  }
};

// Function 5 is absorbance and not listed; numbers are those of the files. A column without any values, that
// of drift bins, is left out.
TEST_F(InfoTest, DirectoryIsShownInAlignedColumns) {
  const std::string path = Make("run.raw");
  ExpectOutput(Run({"info", path}), "Source    " + path + R"(
Provider  ZRMLProvider
Content   raw acquisition

Sample 1: Injection 1

  Functions
    No  File          Name                   Kind   Level  Scan type  Polarity  Scans         Minutes           m/z  Data
     1  _FUNC001.DAT  TOF MS ES+             MS         1  -          positive      3      0.5 to 1.5  50 to 1200.5  continuum
     2  _FUNC002.DAT  TOF MS/MS ES-          MS/MS      2  product    negative      2  0.125 to 1.125             -  centroid
     3  _FUNC003.DAT  MS ES+                 MS         1  -          positive      0               -             -  -
     4  _FUNC004.DAT  TOF ES+                MS         1  -          positive      2        3 to 3.5             -  centroid
     6  _FUNC006.DAT  TOF MS ES+ Lock Mass   MS         1  -          positive      1    0.25 to 0.25             -  centroid
    p1  _PROC001.DAT  TOF MS ES+ (Smoothed)  MS         1  -          positive      1      0.5 to 0.5  50 to 1200.5  continuum

  Traces
    1  Pressure
    2  UV\u001b[31m 254
    3  PDA - Total Absorbance

  Absorbance
    function 5, _FUNC005.DAT: 2 scans

  Metadata
    AnalysisDateTime  2026-11-14T09:15:00
    InstrumentName    SIM\u0085 2
    OperatorName      Zoë "Z"
    SampleName        -
    DatasetName       )" + path + R"(
    ProviderName      ZRMLProvider
    MethodName        -
    IonizationMethod  ES+ (functions 1, 3, 4, 6, p1)
                      ES- (function 2)
)");
}

// 0.1F and 0.3F are not short decimals; people see four digits, programs all digits.
TEST_F(InfoTest, JsonGivesWhatTextRounds) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.functions[0].record.startMasses[0] = 0.1F;
  raw.functions[0].record.endMasses[0] = 0.3F;
  const std::string path = Make("run.raw", raw);
  EXPECT_NE(Run({"info", path}).output.find("  0.1 to 0.3\n"), std::string::npos);
  EXPECT_NE(Run({"info", path, "--json"}).output.find("[0.10000000149011612, 0.30000001192092896]"),
            std::string::npos);
}

TEST_F(InfoTest, JsonHasTheDocumentedKeysOfAFunction) {
  const std::string path = Make("run.raw");
  json function = RunJson(path)["samples"][0]["functions"][0];
  EXPECT_EQ(function["metadata"]["IonizationMethod"], "ES+");
  function.erase("metadata");
  EXPECT_EQ(function, json::parse(R"({
    "number": 1, "file": "_FUNC001.DAT", "name": "TOF MS ES+", "kind": "MS", "kindCode": 2, "msLevel": 1,
    "scanType": "none", "polarity": "positive", "scans": 3, "minutes": [0.5, 1.5], "massRange": [50, 1200.5],
    "centroided": false, "dimensions": 2, "driftBins": null, "traces": []
  })"));
}

TEST_F(InfoTest, JsonOfAnEmptyFunctionHasNulls) {
  const json function = RunJson(Make("run.raw"))["samples"][0]["functions"][2];
  EXPECT_EQ(function["scans"], 0);
  EXPECT_EQ(function["minutes"], nullptr);
  EXPECT_EQ(function["massRange"], nullptr);
  EXPECT_EQ(function["centroided"], nullptr);
}

TEST_F(InfoTest, JsonOfProcessedDataHasItsName) {
  const json function = RunJson(Make("run.raw"))["samples"][0]["functions"][5];
  EXPECT_EQ(function["number"], "p1");
  EXPECT_EQ(function["file"], "_PROC001.DAT");
}

// A lost file changes no number.
TEST_F(InfoTest, NumbersStayWhenAFileIsLost) {
  const std::string path = Make("run.raw");
  for (const char* name : {"_FUNC002.DAT", "_FUNC002.IDX", "_FUNC002.STS"})
    std::filesystem::remove(folder_ / "run.raw" / name);
  const json functions = RunJson(path)["samples"][0]["functions"];
  std::vector<json> numbers;
  for (const json& function : functions) numbers.push_back(function["number"]);
  EXPECT_EQ(numbers, (std::vector<json>{1, 3, 4, 6, "p1"}));
}

TEST_F(InfoTest, JsonOfTheSourceAndItsSample) {
  const std::string path = Make("run.raw");
  const json info = RunJson(path);
  EXPECT_EQ(info["source"], path);
  EXPECT_EQ(info["provider"], "ZRMLProvider");
  EXPECT_EQ(info["report"], false);
  ASSERT_EQ(info["samples"].size(), 1u);
  const json sample = info["samples"][0];
  EXPECT_EQ(sample["number"], 1);
  EXPECT_EQ(sample["name"], "Injection 1");
  EXPECT_EQ(sample["functions"].size(), 6u);
  EXPECT_EQ(sample["traces"], json::parse(R"([{"number": 1, "name": "Pressure"},
                                              {"number": 2, "name": "UV\u001b[31m 254"},
                                              {"number": 3, "name": "PDA - Total Absorbance"}])"));
  EXPECT_EQ(sample["absorbanceFunction"], 5);
  EXPECT_EQ(sample["absorbanceFile"], "_FUNC005.DAT");
  EXPECT_EQ(sample["absorbanceScans"], 2);
  EXPECT_EQ(sample["metadata"]["OperatorName"], "Zo\u00eb \"Z\"");
}

TEST_F(InfoTest, JsonOfAReport) {
  const json info = RunJson(Make("vials.rpt", Vials()));
  EXPECT_EQ(info["report"], true);
  json sample = info["samples"][2];
  EXPECT_TRUE(sample["metadata"].is_object());
  sample.erase("metadata");
  EXPECT_EQ(sample, json::parse(R"({"number": 3, "name": "Sample 3", "functions": [], "traces": [],
                                    "absorbanceFunction": null, "absorbanceFile": null, "absorbanceScans": null})"));
  EXPECT_EQ(info["samples"][0]["functions"][1]["traces"],
            json::parse(R"([{"number": 1, "name": "caffeine"}])"));
  EXPECT_EQ(info["samples"][0]["functions"][1]["file"], nullptr);
}

TEST_F(InfoTest, SeveralSourcesAreShownOneAfterTheOther) {
  const std::string run = Make("run.raw");
  const std::string report = Make("vials.rpt", Vials());
  ExpectOutput(Run({"info", run, report}), Run({"info", run}).output + "\n" + Run({"info", report}).output);
  const json list = json::parse(Run({"info", run, report, "--json"}).output);
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0], RunJson(run));
  EXPECT_EQ(list[1], RunJson(report));
}

TEST_F(InfoTest, SourceThatFailsDoesNotHideTheOthers) {
  const std::string run = Make("run.raw");
  const std::string missing = Path("missing.raw");
  const ProcessResult result = Run({"info", missing, run, "--json"});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.errors, "zrml: there is no file or folder " + missing +
                               "\nzrml: 1 of 2 sources are not shown: " + missing + "\n");
  EXPECT_EQ(json::parse(result.output), json::array({RunJson(run)}));
}

// By name, also in folders of folders; not inside raw directories. A list, however many there are.
TEST_F(InfoTest, FoldersAreSearched) {
  const std::string first = Make("plate/b/run.raw");
  Make("plate/b/run.raw/inside.raw");
  const std::string second = Make("plate/vials.RPT", Vials());
  const std::string third = Make("plate/z");  // a raw directory by another name
  MakeFile("plate/notes.txt");
  const auto sourcesOf = [&](const std::vector<std::string>& arguments) {
    std::vector<json> sources;
    for (const json& info : json::parse(Run(arguments).output)) sources.push_back(info["source"]);
    return sources;
  };
  using Sources = std::vector<json>;
  EXPECT_EQ(sourcesOf({"info", "-r", Path("plate"), "--json"}), (Sources{first, second, third}));
  EXPECT_EQ(sourcesOf({"info", "-r", first, "--json"}), Sources{first});
  ExpectFailure(Run({"info", Path("plate")}), 4,
                Path("plate") + " is neither a raw directory nor a report; -r searches it for sources");
  ExpectFailure(Run({"info", "-r", Path("scratch")}), 4, "there is no source in " + Path("scratch"));
}

// Types 1 and 9 of the function table.
TEST_F(InfoTest, IonMonitoringIsAKindOfItsOwn) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.functions[0].record.type = 1;
  raw.functions[1].record.type = 9;
  const json functions = RunJson(Make("run.raw", raw))["samples"][0]["functions"];
  EXPECT_EQ(functions[0]["kind"], "ion monitoring");
  EXPECT_EQ(functions[1]["kind"], "reaction monitoring");
  EXPECT_EQ(functions[0]["kindCode"], 2);  // as the interface has it
}

TEST_F(InfoTest, JsonIsEscapedToPlainLines) {
  const ProcessResult result = Run({"info", Make("run.raw"), "--json"});
  EXPECT_NE(result.output.find(R"("OperatorName": "Zoë \"Z\"")"), std::string::npos);
  EXPECT_NE(result.output.find(R"("InstrumentName": "SIM\u0085 2")"), std::string::npos);
  EXPECT_NE(result.output.find(R"("UV\u001b[31m 254")"), std::string::npos);
}

}  // namespace
}  // namespace zrml::test
