#include <nlohmann/json.hpp>

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

// Minutes of "Broken" are missing because its second scan cannot be read, those of the odd function because
// its time is no number; 0.30000000000000004 is rounded for people.
TEST_F(InfoTest, FolderIsShownInAlignedColumns) {
  const std::string path = MakeFolder("run.raw");
  ExpectOutput(Run({"info", path}), "Source    " + path + R"(
Provider  FakeFolder
Content   raw acquisition

Sample 1: Injection 1

  Functions
    No  Name              Kind   Level  Scan type  Polarity  Scans     Minutes           m/z  Data       Dim  Drift bins
     1  Survey            MS         1  -          positive      3  0.5 to 1.5  50 to 1200.5  continuum    2           -
     2  Product           MS/MS      2  product    negative      2  1.125 to 2    0.1 to 0.3  centroid     2           -
     3  Empty             MS         1  -          positive      0           -             -  -            1           -
     4  Broken            MS         1  -          positive      2           -             -  centroid     2           -
     5  Odd\tname\n"é𝄞\"  other      1  other      unknown       1           -             -  centroid     2         200
     6  Large             MS         1  -          positive      1  0.1 to 0.1             -  centroid     1           -

  Traces
    1  Pressure
    2  UV\u001b[31m 254

  Absorbance
    25 scans

  Metadata
    Operator  Zoë "Z"\r\nnext\u2028line
    Comment   -
    Absent    -
    Mode      ES+ (functions 1, 3, 4, 5, 6)
              ES- (function 2)
    Tab\tkey  µ \u0085 \u202e
)");
}

// Columns in which no function has anything to say are left out.
TEST_F(InfoTest, ReportShowsEverySampleAndTheTracesOfFunctions) {
  const std::string path = MakeFile("vials.fakereport");
  ExpectOutput(Run({"info", path}), "Source    " + path + R"(
Provider  FakeReport
Content   processed report

Sample 1: Vial A1

  Functions
    No  Name        Kind        Level  Polarity  Scans  Minutes  Data      Dim
     1  Function 1  absorbance      1  unknown       1   0 to 0  centroid    1

  Traces of function 1
    1  Channel 1
    2  Channel 2

Sample 2: -

  No functions
)");
}

TEST_F(InfoTest, JsonHasTheDocumentedKeysOfAFunction) {
  const json info = RunJson(MakeFolder("run.raw"));
  EXPECT_EQ(info["samples"][0]["functions"][0], json::parse(R"({
    "number": 1, "name": "Survey", "kind": "MS", "kindCode": 2, "msLevel": 1, "scanType": "none", "polarity": "positive",
    "scans": 3, "minutes": [0.5, 1.5], "massRange": [50, 1200.5], "centroided": false, "dimensions": 2,
    "driftBins": null, "traces": [],
    "metadata": {"Operator": "Zo\u00eb \"Z\"\r\nnext\u2028line", "Comment": "", "Absent": null, "Mode": "ES+",
                 "Tab\tkey": "\u00b5 \u0085 \u202e"}
  })"));
}

TEST_F(InfoTest, JsonGivesWhatTextRounds) {
  const json info = RunJson(MakeFolder("run.raw"));
  EXPECT_EQ(info["samples"][0]["functions"][1]["massRange"], json::parse("[0.1, 0.30000000000000004]"));
}

TEST_F(InfoTest, JsonOfAnEmptyFunctionHasNulls) {
  const json function = RunJson(MakeFolder("run.raw"))["samples"][0]["functions"][2];
  EXPECT_EQ(function["scans"], 0);
  EXPECT_EQ(function["minutes"], nullptr);
  EXPECT_EQ(function["massRange"], nullptr);
  EXPECT_EQ(function["centroided"], nullptr);
}

TEST_F(InfoTest, JsonOfAnOddFunctionKeepsItsNameAndCode) {
  const json function = RunJson(MakeFolder("run.raw"))["samples"][0]["functions"][4];
  EXPECT_EQ(function["name"], "Odd\tname\n\"\u00E9\U0001D11E\\\"");
  EXPECT_EQ(function["kind"], "other");
  EXPECT_EQ(function["kindCode"], 8);
  EXPECT_EQ(function["driftBins"], 200);
}

TEST_F(InfoTest, JsonOfTheSourceAndItsSample) {
  const std::string path = MakeFolder("run.raw");
  const json info = RunJson(path);
  EXPECT_EQ(info["source"], path);
  EXPECT_EQ(info["provider"], "FakeFolder");
  EXPECT_EQ(info["report"], false);
  ASSERT_EQ(info["samples"].size(), 1u);
  const json sample = info["samples"][0];
  EXPECT_EQ(sample["number"], 1);
  EXPECT_EQ(sample["name"], "Injection 1");
  EXPECT_EQ(sample["functions"].size(), 6u);
  EXPECT_EQ(sample["traces"], json::parse(R"([{"number": 1, "name": "Pressure"},
                                              {"number": 2, "name": "UV\u001b[31m 254"}])"));
  EXPECT_EQ(sample["absorbanceScans"], 25);
  EXPECT_EQ(sample["metadata"]["Mode"], "ES+");
}

TEST_F(InfoTest, JsonOfAReportWithoutFunctionsAndMetadata) {
  const json info = RunJson(MakeFile("vials.fakereport"));
  EXPECT_EQ(info["report"], true);
  EXPECT_EQ(info["samples"][1], json::parse(R"({"number": 2, "name": "", "functions": [], "traces": [],
                                                "absorbanceScans": null, "metadata": {}})"));
  EXPECT_EQ(info["samples"][0]["functions"][0]["traces"][1],
            json::parse(R"({"number": 2, "name": "Channel 2"})"));
}

TEST_F(InfoTest, JsonIsEscapedToPlainLines) {
  const ProcessResult result = Run({"info", MakeFolder("run.raw"), "--json"});
  EXPECT_NE(result.output.find(R"("Operator": "Zoë \"Z\"\r\nnext\u2028line")"), std::string::npos);
  EXPECT_NE(result.output.find(R"("UV\u001b[31m 254")"), std::string::npos);
}

}  // namespace
}  // namespace zrml::test
