// zrml qc on a run whose metrics are worked out by hand.
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>

#include <nlohmann/json.hpp>

#include "masslynx/scandata/scan_statistics_format.h"
#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

using nlohmann::json;

constexpr unsigned kSir = 1;
constexpr unsigned kTofMsMs = 16;
constexpr unsigned kTofMs = 18;

ScanFiles Peaks(float minutes, const std::vector<WantedPoint>& points) {
  ScanFiles scan = ScanFrom<StoredPoint9>(minutes, points);
  scan.index.centroidState = CentroidState::kCentroid;
  return scan;
}

FunctionFiles FunctionOf(unsigned type, const std::vector<ScanFiles>& scans) {
  FunctionFiles function;
  function.record.type = type;
  function.record.ionMode = 8;  // ES+
  function.scans = scans;
  return function;
}

// In minutes and totals, together:   0: 10   0.5: 4   1: 20   2: 400   3: 30   3.5: 0   4: 0
RawDirectoryBuilder Measured() {
  RawDirectoryBuilder raw;
  raw.header.push_back(HeaderLine("Acquired Date", "14-Nov-2026"));
  raw.header.push_back(HeaderLine("Acquired Time", "09:15:00"));
  raw.header.push_back(HeaderLine("Instrument", "SIM"));
  FunctionFiles products = FunctionOf(kTofMsMs, {Peaks(0.5F, {{50, 4}}), Peaks(3.5F, {})});
  products.statistics = StatisticsLayout();
  for (ScanFiles& scan : products.scans)
    scan.statistics.precursorFlags = masslynx::scan_statistics_format::kPrecursorMassGiven;
  products.scans[0].statistics.precursorMass = 445.125F;
  products.scans[1].statistics.precursorMass = 300.5F;
  raw.functions = {
      FunctionOf(kTofMs,
                 {Peaks(0, {{100, 10}}), Peaks(1, {{100, 10}, {200, 10}}),
                  Peaks(2, {{100, 100}, {200, 200}, {300, 100}}), Peaks(3, {{100, 30}}), Peaks(4, {})}),
      products,
      // A reference: 1/32 above and below 500, which is 62.5 ppm; 500.75 is too far away.
      FunctionOf(kTofMs, {Peaks(0.25F, {{500.03125, 9}, {500.75, 99}}), Peaks(2.25F, {{499.96875, 9}}),
                          Peaks(3.25F, {{500.75, 99}})}),
      FunctionOf(kSir, {Peaks(0.75F, {{150, 1000}, {309, 1}}), Peaks(1.75F, {{150, 7}, {309, 2000}})})};
  raw.labels = {CreatorLine("4.1"), FunctionHeading(3, "REFERENCE")};
  raw.history = {{.processNumber = 1, .derivedFrom = 0, .rawFunctionNumber = 1, .processCode = 3}};
  raw.processed[1] = FunctionOf(kTofMs, {Peaks(9, {{100, 5000}})});
  raw.analogNames = {"Pressure"};
  raw.analogs = {{.time = 0.5F, .words = {PackIntensityWord(5, 0)}},
                 {.time = 1, .words = {PackIntensityWord(2, 0)}}};
  return raw;
}

using Row = std::map<std::string, std::string>;

std::vector<std::string> Split(const std::string& line, char separator) {
  std::vector<std::string> cells(1);
  for (const char c : line) c == separator ? cells.emplace_back() : cells.back() += c;
  return cells;
}

std::vector<Row> RowsOf(const std::string& table) {
  std::vector<std::string> lines = Split(table, '\n');
  EXPECT_EQ(lines.back(), "");
  lines.pop_back();
  const std::vector<std::string> titles = Split(lines.at(0), '\t');
  std::vector<Row> rows;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const std::vector<std::string> cells = Split(lines[i], '\t');
    EXPECT_EQ(cells.size(), titles.size());
    Row row;
    for (std::size_t k = 0; k < cells.size(); ++k) row[titles[k]] = cells[k];
    rows.push_back(row);
  }
  return rows;
}

void ExpectCells(const Row& row, const Row& wanted) {
  for (const auto& [title, text] : wanted) EXPECT_EQ(row.at(title), text) << title;
}

class QcTest : public ZrmlTest {
 protected:
  // The table of the sources, for which nothing is wrong.
  std::vector<Row> Rows(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "qc");
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    return RowsOf(result.output);
  }

  std::string Text(const std::string& name) const {
    std::ifstream file(folder_ / name, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }

  json Mzqc(const std::string& name) const { return json::parse(Text(name)).at("mzQC"); }

  bool IsThere(const std::string& name) const { return std::filesystem::exists(folder_ / name); }

  static std::vector<std::string> LabelsOf(const json& mzqc) {
    std::vector<std::string> labels;
    for (const json& run : mzqc.at("runQualities")) labels.push_back(run.at("metadata").at("label"));
    return labels;
  }
};

TEST_F(QcTest, SpectraAreCounted) {
  const std::vector<Row> rows = Rows({Make("run.raw", Measured())});
  ASSERT_EQ(rows.size(), 1U);
  ExpectCells(rows[0], {{"run", "run"},
                        {"source", Path("run.raw")},
                        {"state", "sound"},
                        {"findings", ""},
                        {"started", "2026-11-14T09:15:00"},
                        {"instrument", "SIM"},
                        {"ms1Spectra", "5"},
                        {"ms2Spectra", "2"},
                        {"chromatograms", "3"},  // a pressure and two channels
                        {"ms1Empty", "1"},
                        {"ms2Empty", "1"},
                        {"ms1Jumps", "1"},  // 20 to 400
                        {"ms1Falls", "2"},  // 400 to 30, 30 to 0
                        {"ms1PeaksQ1", "1"},
                        {"ms1PeaksQ2", "1"},
                        {"ms1PeaksQ3", "2"},
                        {"ms2PeaksQ1", "0"},
                        {"ms2PeaksQ3", "1"},
                        {"basePeakMaximum", "200"},
                        {"ticMaximum", "400"},
                        {"precursorMzLow", "300.5"},
                        {"precursorMzHigh", "445.125"},
                        {"traces", "Pressure: 2 to 5"}});
}

// Of four quarters of 240 s. The totals are 464, so that 116, 232 and 348 have come together at 2 min.
TEST_F(QcTest, TimesAreParts) {
  const std::vector<Row> rows = Rows({Make("run.raw", Measured())});
  ExpectCells(rows.at(0), {{"runSeconds", "240"},
                           {"chromatographySeconds", "240"},
                           {"retentionSecondsLow", "0"},
                           {"retentionSecondsHigh", "240"},
                           {"ticFractionQuarter1", "0.5"},
                           {"ticFractionQuarter2", "0"},
                           {"ticFractionQuarter3", "0"},
                           {"ticFractionQuarter4", "0.25"},
                           {"ms1FractionQuarter1", "0.25"},  // the second of five completes a quarter
                           {"ms1FractionQuarter4", "0.25"},
                           {"ms2FractionQuarter1", "0"},  // the first of two completes a half
                           {"ms2FractionQuarter3", "0.75"},
                           {"ms2FractionQuarter4", "0"},
                           {"ms1TicMinutesQ1", "2"},
                           {"ms1TicMinutesQ3", "2"},
                           {"ms2TicMinutesQ2", "0.5"},
                           {"ms1CycleSeconds", "60"},
                           {"ms1HertzQuarter1", "0.016666666666666666"},
                           {"ms1HertzQuarter4", "0.03333333333333333"},  // with the end
                           {"ms2HertzQuarter1", "0.016666666666666666"},
                           {"ms2HertzQuarter2", "0"}});
}

// Minutes times intensity: 3.5, 6, 210, 215, 7.5 and 0 between the spectra, 15, 210, 215 and 15 between those
// of MS1.
TEST_F(QcTest, AreasAreBelowTheLine) {
  const std::vector<Row> rows = Rows({Make("run.raw", Measured())});
  ExpectCells(rows.at(0), {{"ticArea", "26520"},
                           {"ms1TicArea", "27300"},
                           {"ms2TicArea", "360"},
                           {"ticAreaRatio", "75.83333333333333"},
                           {"ticAreaQuarter1", "570"},
                           {"ticAreaQuarter2", "12600"},
                           {"ticAreaQuarter3", "12900"},
                           {"ticAreaQuarter4", "450"}});
}

// Of the totals 0, 10, 20, 30, 400 and of the changes 10, 30, 370, 380, whose quartiles are 25, 200 and
// 372.5.
TEST_F(QcTest, RatiosAreLogarithms) {
  const Row row = Rows({Make("run.raw", Measured())}).at(0);
  EXPECT_EQ(row.at("ms1TicRatioQ2"), "1");
  EXPECT_NEAR(std::stod(row.at("ms1TicRatioQ3")), std::log2(1.5), 1e-12);
  EXPECT_NEAR(std::stod(row.at("ms1TicRatioQ4")), std::log2(400.0 / 30), 1e-12);
  EXPECT_EQ(row.at("ms1TicChangeRatioQ2"), "3");
  EXPECT_NEAR(std::stod(row.at("ms1TicChangeRatioQ3")), std::log2(372.5 / 200), 1e-12);
  EXPECT_NEAR(std::stod(row.at("ms1TicChangeRatioQ4")), std::log2(380 / 372.5), 1e-12);
}

TEST_F(QcTest, TheLockMassIsFollowed) {
  const std::string path = Make("run.raw", Measured());
  ExpectCells(Rows({path, "--lock-mass", "500"}).at(0), {{"lockMassSpectra", "3"},
                                                         {"lockMassFound", "2"},
                                                         {"lockMassPpm", "0"},
                                                         {"lockMassPpmLow", "-62.5"},
                                                         {"lockMassPpmHigh", "62.5"}});
  ExpectCells(Rows({path}).at(0), {{"lockMassSpectra", "3"}, {"lockMassFound", "0"}, {"lockMassPpm", ""}});
  for (const std::string mass : {"0", "-5", "x", "", "1e400", "nan"}) {
    const ProcessResult result = Run({"qc", path, "--lock-mass=" + mass});
    EXPECT_EQ(result.status, 2) << mass;
  }
}

TEST_F(QcTest, MzqcHasTermsAndUnits) {
  ExpectOutput(Run({"qc", Make("run.raw", Measured()), "-b", Path("out.mzQC")}), Path("out.mzQC") + "\n");
  const json mzqc = Mzqc("out.mzQC");
  EXPECT_EQ(mzqc["version"], "1.0.0");
  ASSERT_EQ(mzqc["runQualities"].size(), 1U);
  const json& run = mzqc["runQualities"][0];
  EXPECT_EQ(run["metadata"]["label"], "run");
  EXPECT_EQ(run["metadata"]["inputFiles"][0],
            json::parse(R"({"name": "run.raw", "location": "file:///run.raw",
      "fileFormat": {"accession": "MS:1000526", "name": "Waters raw format"}})"));
  std::map<std::string, json> metrics;
  for (const json& metric : run["qualityMetrics"]) metrics[metric["accession"]] = metric;
  EXPECT_EQ(metrics.at("MS:4000059"),
            json::parse(R"({"accession": "MS:4000059", "name": "number of MS1 spectra",
      "value": 5, "unit": {"accession": "UO:0000189", "name": "count unit"}})"));
  EXPECT_EQ(metrics.at("MS:4000029"),
            json::parse(R"({"accession": "MS:4000029", "name": "area under TIC in MS1", "value": 27300})"));
  EXPECT_EQ(metrics.at("MS:4000070")["value"], (std::vector<double>{0, 240}));
  EXPECT_EQ(metrics.at("MS:4000156")["value"], (std::vector<double>{570, 12600, 12900, 450}));
  EXPECT_EQ(metrics.size(), 30U);
}

TEST_F(QcTest, PathsAreWrittenWhenAskedFor) {
  const std::string path = Make("a b.raw", Measured());
  EXPECT_EQ(Run({"qc", path, "-b", Path("out.mzQC"), "--full-paths"}).status, 0);
  const std::string location = Mzqc("out.mzQC")["runQualities"][0]["metadata"]["inputFiles"][0]["location"];
  EXPECT_TRUE(location.starts_with("file:///") && location.ends_with("/a%20b.raw")) << location;
  EXPECT_GT(location.size(), std::string("file:///a%20b.raw").size());
  EXPECT_EQ(Run({"qc", path, "-b", Path("name.mzQC")}).status, 0);
  EXPECT_EQ(Mzqc("name.mzQC")["runQualities"][0]["metadata"]["inputFiles"][0]["location"],
            "file:///a%20b.raw");
}

// Its row says so, the others are done, and mzQC, which has no word for it, lacks it.
TEST_F(QcTest, ADamagedRunAmongOthers) {
  const std::string good = Make("good.raw", Measured());
  const std::string bad = Make("bad.raw", Measured());
  std::filesystem::remove(folder_ / "bad.raw" / "_FUNC002.DAT");
  const std::string missing = Path("no.raw");
  const ProcessResult result = Run({"qc", bad, good, missing, "-b", Path("out.mzQC"), "--tsv",
                                    Path("out.tsv"), "--html", Path("out.html")});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.output, Path("out.mzQC") + "\n" + Path("out.tsv") + "\n" + Path("out.html") + "\n");
  const std::string damage = "_FUNC002.DAT is missing, so its scans have no points";
  EXPECT_EQ(result.errors, "zrml: " + bad + " is damaged: " + damage + "\nzrml: there is no file or folder " +
                               missing + "\nzrml: 2 of 3 sources are not whole: " + bad + ", " + missing +
                               "\n");
  EXPECT_EQ(LabelsOf(Mzqc("out.mzQC")), std::vector<std::string>{"good"});
  const std::vector<Row> rows = RowsOf(Text("out.tsv"));
  ASSERT_EQ(rows.size(), 3U);
  ExpectCells(rows[0], {{"run", "bad"}, {"state", "damaged"}, {"ms1Spectra", "5"}, {"ms2Spectra", "0"}});
  EXPECT_EQ(rows[0].at("findings").substr(0, 6 + damage.size()), "lost: " + damage);
  ExpectCells(rows[1], {{"run", "good"}, {"state", "sound"}, {"ms2Spectra", "2"}});
  ExpectCells(rows[2], {{"run", "no"},
                        {"state", "unreadable"},
                        {"findings", "there is no file or folder " + missing},
                        {"ms1Spectra", ""},
                        {"lockMassSpectra", ""}});
  const std::string page = Text("out.html");
  for (const char* text :
       {">damaged</td>", ">unreadable</td>", ">sound</td>", "1 sound, 1 damaged, 1 unreadable"})
    EXPECT_NE(page.find(text), page.npos) << text;
}

// There is nothing for mzQC then.
TEST_F(QcTest, ADamagedRunAlone) {
  const std::string bad = Make("bad.raw", Measured());
  std::filesystem::resize_file(folder_ / "bad.raw" / "_FUNC001.DAT", 0);
  const ProcessResult result = Run({"qc", bad, "-b", Path("out.mzQC"), "--tsv", Path("out.tsv")});
  EXPECT_EQ(result.status, 7);
  EXPECT_TRUE(result.errors.starts_with("zrml: " + bad + " is damaged: _FUNC001.DAT ")) << result.errors;
  EXPECT_FALSE(IsThere("out.mzQC"));
  EXPECT_EQ(RowsOf(Text("out.tsv")).at(0).at("state"), "damaged");
}

// Nothing is lost, so the run counts.
TEST_F(QcTest, ASuspectRun) {
  RawDirectoryBuilder raw = Measured();
  raw.functions[0].scans[2].index.totalIntensity = 4000;
  const std::string path = Make("run.raw", raw);
  const std::vector<Row> rows = Rows({path});
  EXPECT_EQ(rows.at(0).at("state"), "suspect");
  EXPECT_TRUE(rows[0].at("findings").starts_with("suspect: ")) << rows[0].at("findings");
  EXPECT_EQ(Run({"qc", path, "-b", Path("out.mzQC")}).status, 0);
  EXPECT_EQ(LabelsOf(Mzqc("out.mzQC")).size(), 1U);
}

TEST_F(QcTest, RunsOfOneNameGetNumbers) {
  Make("a/run.raw", Measured());
  Make("b/run.raw", Measured());
  EXPECT_EQ(Run({"qc", "-r", Path("a"), Path("b"), "-b", Path("out.mzQC")}).status, 0);
  const json mzqc = Mzqc("out.mzQC");
  EXPECT_EQ(LabelsOf(mzqc), (std::vector<std::string>{"run", "run (2)"}));
  EXPECT_EQ(mzqc["runQualities"][1]["metadata"]["inputFiles"][0]["name"], "run.raw (2)");
}

// Each sample is a run. The first spectrum of the first sample has 50 and 100 percent of 200; its time of day
// has no seconds, so it is no date for others.
TEST_F(QcTest, SamplesOfAReportAreRuns) {
  const std::string report = Make("vials.rpt", Vials());
  const ProcessResult result = Run({"qc", report, "-b", Path("out.mzQC"), "--tsv", Path("out.tsv")});
  EXPECT_EQ(result.status, 0) << result.errors;
  const std::vector<Row> rows = RowsOf(Text("out.tsv"));
  ASSERT_EQ(rows.size(), 3U);
  ExpectCells(rows[0], {{"run", "vials-sample1"},
                        {"started", ""},
                        {"ms1Spectra", "3"},
                        {"ms1Empty", "1"},
                        {"runSeconds", "120"},
                        {"ticMaximum", "300"}});
  ExpectCells(rows[2], {{"run", "vials-sample3"}, {"ms1Spectra", "0"}});
  const json input = Mzqc("out.mzQC")["runQualities"][1]["metadata"]["inputFiles"][0];
  EXPECT_EQ(input["name"], "vials.rpt sample 2");
  EXPECT_EQ(input["location"], "file:///vials.rpt#sample=2");
  EXPECT_EQ(input["fileFormat"]["accession"], "MS:1001369");
}

TEST_F(QcTest, SamplesOfReportsOfOneNameAreApart) {
  for (const char* const name : {"a", "b"}) std::filesystem::create_directory(folder_ / name);
  const std::string first = Make("a/vials.rpt", Vials());
  const std::string second = Make("b/vials.rpt", Vials());
  EXPECT_EQ(Run({"qc", first, second, "-b", Path("out.mzQC")}).status, 0);
  const json runs = Mzqc("out.mzQC")["runQualities"];
  ASSERT_EQ(runs.size(), 6U);
  const json input = runs[4]["metadata"]["inputFiles"][0];
  EXPECT_EQ(input["name"], "vials.rpt (2) sample 2");
  EXPECT_EQ(input["location"], "file:///vials.rpt%20%282%29#sample=2");
}

// A percentage of 1e308 is beyond all numbers on its way, and so is the last time. What does not depend on
// them is there.
TEST_F(QcTest, NumbersThatAreNotFiniteAreLeftOut) {
  const auto scan = [](const char* time) {
    return SpectrumBlock(Keys({{"Time", time}, {"BPI", "1e308"}, {"TIC", "7"}, {"Continuum", "FALSE"}}),
                         {{100, 100}, {200, 100}});
  };
  const std::string report = Make(
      "huge.rpt", SampleBlock(FunctionBlock(Keys({{"Type", "MS"}}) + scan("1") + scan("2") + scan("1e999"))));
  const ProcessResult result = Run({"qc", report, "-b", Path("out.mzQC"), "--tsv", Path("out.tsv"), "--html",
                                    Path("out.html"), "--multiqc", Path("m")});
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(Text("out.mzQC").find("null"), std::string::npos);
  const std::vector<Row> rows = RowsOf(Text("out.tsv"));
  ExpectCells(rows[0], {{"runSeconds", "60"},
                        {"ms1Spectra", "3"},
                        {"ms1PeaksQ1", "2"},
                        {"basePeakMaximum", ""},
                        {"ticMaximum", ""},
                        {"ticArea", ""},
                        {"ms1TicRatioQ2", ""},
                        {"ms1CycleSeconds", "60"}});
  for (const char* const file : {"out.tsv", "out.html", "m/zrml_qc_mqc.json"}) {
    EXPECT_EQ(Text(file).find("inf\t"), std::string::npos) << file;
    EXPECT_EQ(Text(file).find("nan"), std::string::npos) << file;
  }
  EXPECT_FALSE(std::filesystem::exists(folder_ / "m" / "zrml_tic_mqc.json"));
}

TEST_F(QcTest, TheSameWithAnyNumberOfThreads) {
  for (const char* name : {"p/a.raw", "p/b.raw", "p/c.raw", "p/d.raw"}) Make(name, Measured());
  std::filesystem::remove(folder_ / "p" / "b.raw" / "_FUNC001.DAT");
  std::vector<std::string> pages;
  std::vector<ProcessResult> results;
  for (const std::string threads : {"1", "2", "5"}) {
    const std::string page = "page" + threads + ".html";
    Run({"qc", "-r", Path("p"), "--threads", threads, "--html", Path(page)});
    pages.push_back(Text(page));
    results.push_back(Run({"qc", "-r", Path("p"), "--threads", threads}));
    EXPECT_EQ(results.back().status, 8);
    EXPECT_EQ(results.back().output, results.front().output);
    EXPECT_EQ(results.back().errors, results.front().errors);
    EXPECT_EQ(pages.back(), pages.front());
  }
}

TEST_F(QcTest, FilesThatExistAreKept) {
  const std::string path = Make("run.raw", Measured());
  MakeFile("out.tsv", "mine");
  ExpectFailure(Run({"qc", path, "--tsv", Path("out.tsv"), "--html", Path("out.html")}), 5,
                Path("out.tsv") + " exists; --force replaces it");
  EXPECT_EQ(Text("out.tsv"), "mine");
  EXPECT_FALSE(IsThere("out.html"));
  EXPECT_EQ(Run({"qc", path, "--tsv", Path("out.tsv"), "--force"}).status, 0);
  EXPECT_EQ(RowsOf(Text("out.tsv")).size(), 1U);
}

TEST_F(QcTest, SourcesAreNotReplaced) {
  const std::string path = Make("run.raw", Measured());
  const std::string inside = Path("run.raw/_HEADER.TXT");
  ExpectFailure(Run({"qc", path, "--tsv", inside, "--force"}), 2, inside + " is a part of the source");
  ExpectFailure(Run({"qc", path, "--multiqc", path}), 2,
                Path("run.raw/zrml_qc_mqc.json") + " is a part of the source");
  EXPECT_EQ(Rows({path}).size(), 1U);
}

TEST_F(QcTest, TargetsThatCannotBeWritten) {
  const std::string path = Make("run.raw", Measured());
  EXPECT_EQ(Run({"qc", path, "--html", Path("none/out.html")}).status, 5);
  EXPECT_EQ(Run({"qc", path, "--tsv", ""}).status, 2);
  EXPECT_EQ(Run({"qc", path, "--tsv", path}).status, 2);
  EXPECT_EQ(Run({"qc"}).status, 2);
  ExpectFailure(Run({"qc", path, "--tsv", Path("x"), "--html", Path("x")}), 2,
                Path("x") + " is named more than once");
  ExpectFailure(Run({"qc", path, "--tsv", Path("x"), "--html", Path("./x"), "--force"}), 2,
                Path("./x") + " is named more than once");
  std::filesystem::create_directory(folder_ / "m");
  const std::string content = Path("m/zrml_tic_mqc.json");
  ExpectFailure(Run({"qc", path, "--tsv", content, "--multiqc", Path("m")}), 2,
                content + " is named more than once");
}

// A reader that stops has what it wanted of the table; files and failures do not depend on it.
TEST_F(QcTest, NobodyReadsTheNames) {
  const std::string good = Make("good.raw", Measured());
  const std::string missing = Path("no.raw");
  setup_.outputTo = OutputTo::kClosedPipe;
  EXPECT_EQ(Run({"qc", good}).status, 0);
  const ProcessResult result =
      Run({"qc", good, missing, "--tsv", Path("out.tsv"), "--html", Path("out.html")});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(RowsOf(Text("out.tsv")).size(), 2U);
  EXPECT_TRUE(IsThere("out.html"));
}

// Their content: tests/zrml/convert/quality_test.py.
TEST_F(QcTest, MultiqcHasAFileForWhatThereIs) {
  const std::string path = Make("run.raw", Measured());
  const std::string folder = Path("new/multiqc");
  ExpectOutput(Run({"qc", path, "--multiqc", folder}),
               folder + "/zrml_qc_mqc.json\n" + folder + "/zrml_tic_mqc.json\n");
  const json table = json::parse(Text("new/multiqc/zrml_qc_mqc.json"));
  EXPECT_EQ(table["data"]["run"]["ms1TicArea"], 27300);
  EXPECT_EQ(table["data"]["run"]["state"], "sound");
  const json totals = json::parse(Text("new/multiqc/zrml_tic_mqc.json"));
  EXPECT_EQ(totals["data"]["run"], json::parse(R"({"0": 10, "1": 20, "2": 400, "3": 30, "4": 0})"));
  EXPECT_EQ(Run({"qc", path, "--multiqc", folder, "--force", "--lock-mass", "500"}).status, 0);
  const json lockMass = json::parse(Text("new/multiqc/zrml_lock_mass_mqc.json"));
  EXPECT_EQ(lockMass["data"]["run"], json::parse(R"({"0.25": 62.5, "2.25": -62.5})"));
}

// The page has runs by date, those without one last, and links to their own pages where those are.
TEST_F(QcTest, ThePageIsByDate) {
  RawDirectoryBuilder raw = Measured();
  Make("p/c.raw", raw);
  raw.header[2] = HeaderLine("Acquired Date", "2-Nov-2026");
  Make("p/b.raw", raw);
  raw.header[2] = HeaderLine("Acquired Date", "someday");
  Make("p/a.raw", raw);
  EXPECT_EQ(Run({"qc", "-r", Path("p"), "--html", Path("out.html"), "--pages", "my pages"}).status, 0);
  const std::string page = Text("out.html");
  const std::size_t b = page.find("<a href=\"#run-1\">b</a>");
  const std::size_t c = page.find("<a href=\"#run-2\">c</a>");
  const std::size_t a = page.find("<a href=\"#run-3\">a</a>");
  EXPECT_LT(b, c);
  EXPECT_LT(c, a);
  EXPECT_NE(a, page.npos);
  EXPECT_NE(page.find("<a href=\"./my%20pages/b.html\">"), page.npos);
  EXPECT_EQ(Run({"qc", "-r", Path(""), "--html", Path("out.html"), "--pages", "..", "--force"}).status, 0);
  EXPECT_NE(Text("out.html").find("<a href=\"./../p/b.html\">"), page.npos);
}

// A report beside the raw directory would have a page of the same name.
TEST_F(QcTest, OnePageIsOfOneSource) {
  Make("p/run.raw", Measured());
  Make("p/run.rpt", Vials());
  EXPECT_EQ(Run({"qc", "-r", Path("p"), "--html", Path("out.html"), "--pages", "x"}).status, 0);
  const std::string page = Text("out.html");
  const std::string link = "<a href=\"./x/run.html\">";
  const std::size_t first = page.find(link);
  EXPECT_LT(first, page.find("id=\"run-2\""));
  EXPECT_EQ(page.find(link, first + 1), page.npos);
}

// Without its quote the first would have the name of the second.
TEST_F(QcTest, NamesWithoutMarkupAreApart) {
  const std::string first = Make("a'.raw", Measured());
  const std::string second = Make("a_.raw", Measured());
  EXPECT_EQ(Run({"qc", first, second, "--multiqc", Path("m")}).status, 0);
  for (const char* const file : {"m/zrml_qc_mqc.json", "m/zrml_tic_mqc.json"}) {
    const json data = json::parse(Text(file))["data"];
    EXPECT_TRUE(data.size() == 2 && data.contains("a_") && data.contains("a_ (2)")) << data;
  }
}

#ifndef _WIN32
TEST_F(QcTest, NamesAreNoMarkup) {
  RawDirectoryBuilder raw = Measured();
  raw.header.push_back(HeaderLine("Sample Description", "</title><script>alert(1)</script>"));
  raw.analogNames = {"<b>bold</b>"};
  const std::string path = Make("<img src=x onerror=alert(1)>\"'&.raw", raw);
  EXPECT_EQ(Run({"qc", path, "--html", Path("out.html"), "--multiqc", Path("m")}).status, 0);
  const std::string page = Text("out.html");
  for (const char* markup : {"<img", "<script", "<b>", "\"'&"})
    EXPECT_EQ(page.find(markup), page.npos) << markup;
  EXPECT_NE(page.find("&lt;img src=x onerror=alert(1)&gt;"), page.npos);
  EXPECT_EQ(Text("m/zrml_qc_mqc.json").find('<'), std::string::npos);
}
#endif

}  // namespace
}  // namespace zrml::test
