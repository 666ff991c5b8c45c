#include <nlohmann/json.hpp>

#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

using nlohmann::json;

const std::string kTitles =
    "source\tsample\tfunction\tscan\tminutes\tmsLevel\tpolarity\tprecursorMz\tpoints\ttotalIntensity\tscanVal"
    "ue";

class ScansTest : public ZrmlTest {
 protected:
  ProcessResult RunScans(std::vector<std::string> more) const {
    more.insert(more.begin(), {"scans", path_});
    return Run(more);
  }

  // Lines of the raw directory, each as it follows the path and sample.
  std::string Lines(const std::vector<std::string>& lines, const std::string& moreTitles = "") const {
    std::string text = kTitles + moreTitles + "\n";
    for (const std::string& line : lines) text += path_ + "\t1\t" + line + "\n";
    return text;
  }

  std::string path_ = Make("run.raw");
};

// Totals in the index are those of the points: 10 + 3 + 1,000,000.
TEST_F(ScansTest, HasARowForEachScan) {
  ExpectOutput(RunScans({"--function", "1,6,p1"}), Lines({
                                                       "1\t1\t0.5\t1\tpositive\t\t3\t1000013\t2.5",
                                                       "1\t2\t1\t1\tpositive\t\t1\t5\t2.5",
                                                       "1\t3\t1.5\t1\tpositive\t\t0\t0\t2.5",
                                                       "6\t1\t0.25\t1\tpositive\t\t1\t9\t",
                                                       "p1\t1\t0.5\t1\tpositive\t\t1\t11\t",
                                                   }));
}

TEST_F(ScansTest, PointsGiveWhatTheIndexLacks) {
  ExpectOutput(RunScans({"--function", "1", "--points"}),
               Lines({"1\t1\t0.5\t1\tpositive\t\t3\t1000013\t2.5\t1000013\t300.0625\t1000000\t100\t300.0625",
                      "1\t2\t1\t1\tpositive\t\t1\t5\t2.5\t5\t100.25\t5\t100.25\t100.25",
                      "1\t3\t1.5\t1\tpositive\t\t0\t0\t2.5\t0\t\t\t\t"},
                     "\tsum\tbasePeakMz\tbasePeakIntensity\tlowestMz\thighestMz"));
}

TEST_F(ScansTest, LevelsAndTimesChoose) {
  const std::string line = "2\t2\t1.125\t2\tnegative\t445.125\t1\t8\t";
  ExpectOutput(RunScans({"--ms-level", "2", "--rt", "1-"}), Lines({line}));
  ExpectOutput(RunScans({"--function", "1-2", "--rt", "1.125-1.125"}), Lines({line}));
  ExpectOutput(RunScans({"--rt", "90-"}), Lines({}));
}

// Without --points, points that are gone change nothing.
TEST_F(ScansTest, PointsThatAreGoneAreNotMissed) {
  std::filesystem::resize_file(folder_ / "run.raw" / "_FUNC001.DAT", 0);
  ExpectOutput(RunScans({"--function", "1", "--rt", "1-1"}), Lines({"1\t2\t1\t1\tpositive\t\t1\t5\t2.5"}));
  ExpectOutput(RunScans({"--function", "1", "--rt", "1-1", "--points"}),
               Lines({"1\t2\t1\t1\tpositive\t\t1\t5\t2.5\t\t\t\t\t"},
                     "\tsum\tbasePeakMz\tbasePeakIntensity\tlowestMz\thighestMz"));
}

TEST_F(ScansTest, JsonOfOnePathIsAnObject) {
  const json scans = json::parse(RunScans({"--json", "--function", "2,p1"}).output);
  EXPECT_EQ(scans["source"], path_);
  ASSERT_EQ(scans["scans"].size(), 3U);
  EXPECT_EQ(scans["scans"][1], json::parse(R"({"sample": 1, "function": 2, "scan": 2, "minutes": 1.125,
      "msLevel": 2, "polarity": "negative", "precursorMz": 445.125, "points": 1, "totalIntensity": 8,
      "scanValue": null})"));
  EXPECT_EQ(scans["scans"][2]["function"], "p1");
  EXPECT_EQ(scans["scans"][2]["precursorMz"], nullptr);
}

TEST_F(ScansTest, ParquetGoesToAFileOrToStandardOutput) {
  const std::string file = Path("scans.parquet");
  ExpectOutput(RunScans({"-b", file}), "");
  const std::string table = ReadBytes(folder_ / "scans.parquet");
  EXPECT_TRUE(table.starts_with("PAR1") && table.ends_with("PAR1"));
  EXPECT_EQ(RunScans({"--format", "Parquet"}).output, table);
  ExpectFailure(RunScans({"-b", file}), 5, file + " exists; --force replaces it");
  ExpectOutput(RunScans({"-o", file, "--force", "--function", "1"}), "");
  EXPECT_LT(ReadBytes(folder_ / "scans.parquet").size(), table.size());
}

TEST_F(ScansTest, FormatsAreNamed) {
  EXPECT_EQ(RunScans({"--format", "tsv"}).output, RunScans({}).output);
  EXPECT_EQ(RunScans({"--format", "JSON"}).output, RunScans({"--json"}).output);
  ExpectFailure(RunScans({"--format", "csv"}), 2,
                "--format: \"csv\" is not tsv, json or parquet (see zrml scans --help)");
  const std::string message = "only Parquet is written to a file; text goes to standard output";
  ExpectFailure(RunScans({"-b", Path("scans.tsv")}), 2, message);
  ExpectFailure(RunScans({"-b", Path("scans"), "--json"}), 2, message);
}

TEST_F(ScansTest, TableNeverReplacesItsSource) {
  const std::string file = Argument(folder_ / "run.raw" / "_FUNC001.DAT");
  ExpectFailure(RunScans({"-b", file, "--force"}), 2, file + " is a part of the source");
}

// Rows of the others are in the file; without any row there is none.
TEST_F(ScansTest, TableOfSourcesThatFail) {
  const std::string file = Path("scans.parquet");
  ExpectFailure(Run({"scans", Path("gone.raw"), "-b", file}), 3,
                "there is no file or folder " + Path("gone.raw"));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "scans.parquet"));
  EXPECT_EQ(Run({"scans", Path("gone.raw"), path_, "-b", file}).status, 8);
  EXPECT_EQ(ReadBytes(folder_ / "scans.parquet"), RunScans({"--format", "parquet"}).output);
}

TEST_F(ScansTest, SeveralPathsAreAList) {
  const std::string report = Make("vials.rpt", Vials());
  const json list = json::parse(Run({"scans", path_, report, "--json", "--function", "1"}).output);
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0]["source"], path_);
  EXPECT_EQ(list[1]["source"], report);
  EXPECT_EQ(list[1]["scans"].size(), 3U);
}

// Of a report the spectrum's own keys count; those that it lacks are empty.
TEST_F(ScansTest, ReportsHaveRowsToo) {
  const std::string report = Make("vials.rpt", Vials());
  ExpectOutput(Run({"scans", report, "--function", "1"}),
               kTitles + "\n" + report + "\t1\t1\t1\t0.5\t1\tnegative\t\t2\t7\t\n" + report +
                   "\t1\t1\t2\t1.5\t1\tnegative\t\t1\t7\t\n" + report +
                   "\t1\t1\t3\t2.5\t1\tnegative\t\t0\t7\t\n");
}

// 1e308 times 1e300 is beyond all numbers. An empty cell would say that points are lost.
TEST_F(ScansTest, InfiniteSumsArePrinted) {
  const std::string report =
      Make("large.rpt", SampleBlock(FunctionBlock(SpectrumBlock(Keys({{"BPI", "1e308"}}), {{100, 1e300}}))));
  EXPECT_TRUE(Run({"scans", report, "--points"}).output.ends_with("\tinf\t100\tinf\t100\t100\n"));
  const json row = json::parse(Run({"scans", report, "--points", "--json"}).output)["scans"][0];
  EXPECT_EQ(row["sum"], json());
  EXPECT_EQ(row["basePeakMz"], 100);
}

// Of an only source nothing is there, of several the others.
TEST_F(ScansTest, SourcesThatAreNotThere) {
  const std::string missing = Path("no.raw");
  const ProcessResult alone = Run({"scans", missing});
  EXPECT_EQ(alone.status, 3);
  EXPECT_EQ(alone.output, "");
  EXPECT_EQ(alone.errors, "zrml: there is no file or folder " + missing + "\n");
  const ProcessResult result = Run({"scans", missing, path_, "--function", "6", "--json"});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.errors, alone.errors + "zrml: 1 of 2 sources are not shown in full: " + missing + "\n");
  const json list = json::parse(result.output);
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0]["scans"].size(), 1U);
}

// Function 4 has points of no known layout: what was read before it is there.
TEST_F(ScansTest, PointsThatCannotBeReadEndTheSource) {
  const ProcessResult result = RunScans({"--function", "2,4", "--points", "--json"});
  EXPECT_EQ(result.status, 5);
  EXPECT_EQ(result.errors, "zrml: " + path_ + ": cannot read scan 1 of function 4\n");
  EXPECT_EQ(json::parse(result.output)["scans"].size(), 2U);
}

TEST_F(ScansTest, FunctionsThatAreNotThere) {
  for (const char* const list : {"9", "1,9", "2-,9"}) {
    ExpectFailure(RunScans({"--function", list}), 2,
                  "there is no function 9: " + path_ + " has functions 1 to 4, 6, p1");
  }
  EXPECT_EQ(RunScans({"--function", "6-9"}).status, 0);
}

// 0.1 in single precision, of which JSON has all digits.
TEST_F(ScansTest, TextHasShortNumbers) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.functions[5].scans[0].index.retentionTime = 0.1F;
  const std::string path = Make("short.raw", raw);
  ExpectOutput(Run({"scans", path, "--function", "6"}),
               kTitles + "\n" + path + "\t1\t6\t1\t0.1\t1\tpositive\t\t1\t9\t\n");
  EXPECT_EQ(json::parse(Run({"scans", path, "--function", "6", "--json"}).output)["scans"][0]["minutes"],
            double{0.1F});
  // What is printed can be asked for.
  EXPECT_TRUE(Run({"scans", path, "--function", "6", "--rt", "0.1-0.1"})
                  .output.ends_with("\t0.1\t1\tpositive\t\t1\t9\t\n"));
}

// A link that leads in a circle is left alone; a folder without sources does not stop the others.
TEST_F(ScansTest, FoldersAreSearched) {
  Make("plate/a.raw");
  Make("plate/b.rpt", Vials());
  std::error_code unsupported;
  std::filesystem::create_directory_symlink(folder_ / "plate", folder_ / "plate" / "again", unsupported);
  std::filesystem::create_directories(folder_ / "empty");
  const ProcessResult both = Run({"scans", "-r", Path("empty"), Path("plate"), "--function", "1", "--json"});
  EXPECT_EQ(both.status, 8);
  EXPECT_EQ(json::parse(both.output).size(), 2U);
  const json list = json::parse(Run({"scans", "-r", Path("plate"), "--function", "1", "--json"}).output);
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0]["source"], Path("plate/a.raw"));
}

}  // namespace
}  // namespace zrml::test
