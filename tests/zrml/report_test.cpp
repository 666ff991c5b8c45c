// The program on a report: samples, functions, spectra, traces, metadata, and what is converted of it.
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

// A line a sample: its functions, their scans, and all traces; function 2 of the first is analog.
TEST_F(ReportTest, InfoListsTheSamples) {
  ExpectOutput(Run({"info", path_}), "Source    " + path_ + R"(
Provider  ZROpenLynxRptProvider
Content   processed report

Samples
  No  Name      Functions  Scans  Traces
   1  VIAL_1            2      3       5
   2  Sample 2          0      0       2
   3  Sample 3          0      0       0

--sample N shows what is in one of them.
)");
}

// Function 3 has no description and takes that of its trace.
TEST_F(ReportTest, InfoShowsASample) {
  ExpectOutput(Run({"info", path_, "--sample", "1"}), "Source    " + path_ + R"(
Provider  ZROpenLynxRptProvider
Content   processed report

Sample 1: VIAL_1

  Functions
    No  Name           Kind            Level  Polarity  Scans     Minutes  Data
     1  ES- MS survey  MS                  1  negative      3  0.5 to 2.5  centroid
     3  SIM caffeine   ion monitoring      -  unknown       0           -  -

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
)");
}

// Of a value with more than 60 characters people see the first 60, programs all.
TEST_F(ReportTest, LongValueIsCut) {
  const std::string name(70, 'n');
  const std::string path = Make("long.rpt", SampleBlock(Keys({{"UserName", name}})));
  EXPECT_NE(Run({"info", path})
                .output.find("OperatorName           " + name.substr(0, 60) + "... (70 characters)\n"),
            std::string::npos);
  EXPECT_EQ(json::parse(Run({"info", path, "--json"}).output)["samples"][0]["metadata"]["OperatorName"],
            name);
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
                "there is no sample 4: " + path_ + " has samples 1 to 3");
}

// The text of a function, an item of the interface, would be the report once more.
TEST_F(ReportTest, InfoAsJsonHasNoText) {
  const json info = json::parse(Run({"info", path_, "--json"}).output);
  EXPECT_EQ(info["report"], true);
  ASSERT_EQ(info["samples"].size(), 3U);
  const json function = info["samples"][0]["functions"][1];
  EXPECT_EQ(function["kindCode"], 32);
  EXPECT_EQ(function["metadata"], json::parse(R"({
    "ProviderName": "ZROpenLynxRptProvider", "OperatorName": "someone", "SampleName": null,
    "AnalysisDateTime": "1-Jan-2026T9:00", "InstrumentDescription": null
  })"));
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
                "there is no function 1: " + path_ + ", sample 2 has no functions");
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
                "there is no trace 3: " + path_ + ", sample 2 has traces 1 to 2");
  ExpectFailure(Run({"chromatogram", path_, "--sample", "3", "--trace", "1"}), 2,
                "there is no trace 1: " + path_ + ", sample 3 has no traces");
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

// The totals that the report has for its three spectra; function 3 is no survey.
TEST_F(ReportTest, ChromatogramOfASampleIsItsTotal) {
  EXPECT_TRUE(Run({"chromatogram", path_})
                  .output.ends_with("# functions: 1\n# type: total\n# points: 3\ntime\tintensity\n"
                                    "0.5\t7\n1.5\t7\n2.5\t7\n"));
  ExpectFailure(
      Run({"chromatogram", path_, "--sample", "3"}), 2,
      path_ + ", sample 3 has no MS function of level 1 with scans; --function chooses one of no functions");
}

TEST_F(ReportTest, TotalThatIsInNoKeyIsNotMadeUp) {
  const auto spectrum = [](const char* time) {
    return SpectrumBlock(Keys({{"Time", time}, {"BPI", "200"}}), {{100, 50}});
  };
  const std::string path =
      Make("bare.rpt", SampleBlock(FunctionBlock(Keys({{"Type", "MS"}}) + spectrum("1") + spectrum("2")) +
                                   FunctionBlock(Keys({{"Type", "MS2"}}) + spectrum("1"))));
  ExpectFailure(Run({"chromatogram", path}), 2,
                path + " does not tell its total ion current; --range adds up points");
  EXPECT_EQ(Run({"convert", path, "--stdout"}).output.find("total ion current chromatogram"),
            std::string::npos);
}

TEST_F(ReportTest, ConvertedSpectraSayHowTheyWereMade) {
  const std::string path =
      Make("combined.rpt",
           SampleBlock(FunctionBlock(
               Keys({{"Type", "MS"}}) +
               SpectrumBlock(Keys({{"Process", "Combine (5:9-1:3)"}, {"Time", "1"}}), {{100, 50}}))));
  const std::string output = Run({"convert", path, "--stdout"}).output;
  EXPECT_NE(output.find("name=\"sum of spectra\"/>\n<userParam name=\"process\" type=\"xsd:string\" "
                        "value=\"Combine (5:9-1:3)\"/>"),
            std::string::npos)
      << output;
}

// Of MRM the function's kind is one with SIM, but not what its channels are.
TEST_F(ReportTest, ReactionsAreNotIons) {
  const auto converted = [&](const char* type) {
    const std::string path =
        Make(std::string(type) + ".rpt",
             SampleBlock(
                 FunctionBlock(Keys({{"Type", type}}) + SpectrumBlock(Keys({{"Time", "1"}}), {{100, 50}}))));
    return Run({"convert", path, "--stdout", "--monitored-spectra"}).output;
  };
  for (const char* part : {"name=\"SIM spectrum\"", "name=\"selected ion monitoring chromatogram\""}) {
    EXPECT_NE(converted("SIM").find(part), std::string::npos) << part;
    EXPECT_EQ(converted("MRM").find(part), std::string::npos) << part;
  }
  for (const char* part : {"name=\"SRM spectrum\"", "name=\"selected reaction monitoring chromatogram\"",
                           "name=\"ms level\" value=\"2\""}) {
    EXPECT_NE(converted("MRM").find(part), std::string::npos) << part;
  }
}

TEST_F(ReportTest, TraceExcludesWhatChoosesPoints) {
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
    EXPECT_EQ(checked.output.substr(0, checked.output.find('\n')), "lost: " + finding);
  }

  const std::string whole_ = ReadBytes(folder_ / "vials.rpt");
};

// A copy that ends before the very last brace, or inside a list within four blocks: sample, function,
// spectrum and the list itself.
TEST_F(CutReportTest, IsDamagedInItsLastSample) {
  ExpectOutput(Run({"check", path_}),
               "note: function 1 of sample 1 has 1 of 3 scans that have no points; the first is scan 3\n"
               "note: function 1 of sample 1 has 1 of 2 traces that have no points; the first is trace 2\n" +
                   path_ + " is sound: 2 functions, 3 scans\n");
  ExpectCut(whole_.rfind('}'), "vials.rpt ends inside 1 block");
  ExpectCut(whole_.rfind("{"), "vials.rpt ends where its last sample begins");
  ExpectCut(whole_.find("100\t100"), "vials.rpt ends inside 4 blocks");
}

// Text of other programs between samples is not read.
TEST_F(CutReportTest, BracesOutsideSamplesCountForNothing) {
  std::ofstream(folder_ / "vials.rpt", std::ios::binary) << "{ made by somebody\n" << whole_ << "{\n";
  EXPECT_EQ(Run({"check", path_}).status, 0);
}

TEST_F(CutReportTest, SampleWithoutItsEndIsReported) {
  const std::size_t second = whole_.find("[SAMPLE]", 1);
  std::string text = whole_;
  text.erase(text.rfind('}', second), 3);  // and its line end
  std::ofstream(folder_ / "vials.rpt", std::ios::binary) << text;
  const ProcessResult checked = Run({"check", path_});
  EXPECT_EQ(checked.status, 7);
  EXPECT_EQ(checked.output.substr(0, checked.output.find('\n')), "lost: vials.rpt has no end of sample 1");
}

// Its spectra and traces are results of processing.
TEST_F(ReportTest, ConversionIsTheSecondStepOfProcessing) {
  const std::string converted = Run({"convert", path_, "--stdout", "--sample", "1"}).output;
  const std::size_t first = converted.find("<processingMethod order=\"0\" softwareRef=\"openlynx\">");
  const std::size_t second = converted.find("<processingMethod order=\"1\" softwareRef=\"zrml\">");
  ASSERT_NE(second, std::string::npos);
  EXPECT_LT(first, second);
}

class MisreadReportTest : public ReportTest {
 protected:
  // Of the sound report with `what` of its first sample replaced.
  std::string Misread(const std::string& what, const std::string& with) const {
    std::string text = ReadBytes(folder_ / "vials.rpt");
    text.replace(text.find(what), what.size(), with);
    std::ofstream(folder_ / "misread.rpt", std::ios::binary) << text;
    return Path("misread.rpt");
  }

  // Refused, whether or not what is left is asked for, in check; in convert unless it is.
  void ExpectLost(const std::string& path, const std::string& finding,
                  const std::string& sample = "1") const {
    const ProcessResult checked = Run({"check", path});
    EXPECT_EQ(checked.status, 7);
    EXPECT_NE(("\n" + checked.output).find("\nlost: " + finding + "\n"), std::string::npos) << checked.output;
    const std::vector<std::string> convert = {"convert", path, "--stdout", "--sample", sample};
    const ProcessResult converted = Run(convert);
    EXPECT_EQ(converted.status, 7);
    EXPECT_EQ(converted.output, "");
    std::vector<std::string> anyway = convert;
    anyway.push_back("--damaged");
    const ProcessResult left = Run(anyway);
    EXPECT_EQ(left.status, 0);
    EXPECT_NE(left.errors.find(": " + finding + "\n"), std::string::npos) << left.errors;
  }
};

// Lines 15 and 20 of the report: the base peak and the first point of the first spectrum.
TEST_F(MisreadReportTest, CommasInNumbers) {
  ExpectLost(Misread("BPI\t200", "BPI\t2,5e6"),
             "misread.rpt has a line with a comma in a number: line 15 (BPI)");
  ExpectLost(Misread("300\t50", "300,5\t50"), "misread.rpt has a line with a comma in a number: line 20");
}

// The first spectrum, at 0.5 minutes: 50 % and 100 % of its base peak of 200, a total of 7. The second one,
// at 1.5 minutes: 25 % of 200.
TEST_F(MisreadReportTest, NumbersWithCommasAreAbsent) {
  const auto rows = [&](const std::string& what, const std::string& with) {
    const ProcessResult converted = Run({"convert", Misread(what, with), "--stdout", "--sample", "1",
                                         "--function", "1", "--format", "tsv", "--damaged"});
    return converted.output.substr(converted.output.find('\n') + 1);
  };
  const std::string sound = "1\t1\t0.5\t100\t200\n1\t1\t0.5\t300\t100\n1\t2\t1.5\t200\t50\n";
  EXPECT_EQ(rows("TIC\t7", "TIC\t1,500"), sound);
  EXPECT_EQ(rows("BPI\t200", "BPI\t1,500"), "1\t2\t1.5\t200\t50\n");
  EXPECT_EQ(rows("300\t50", "300\t50,5"), "1\t1\t0.5\t100\t200\n1\t2\t1.5\t200\t50\n");
  EXPECT_EQ(rows("300\t50", "300,5\t50"), "1\t1\t0.5\t100\t200\n1\t2\t1.5\t200\t50\n");
  EXPECT_EQ(rows("Time\t0.5", "Time\t0,5"), "1\t2\t1.5\t200\t50\n1\t1\tnan\t100\t200\n1\t1\tnan\t300\t100\n");
}

TEST_F(MisreadReportTest, NumbersWithCommasAreNotShown) {
  const auto scan = [&](const std::string& path) {
    return nlohmann::json::parse(
        Run({"spectrum", path, "--sample", "1", "--function", "1", "--scan", "1", "--json"}).output);
  };
  const nlohmann::json without = scan(Misread("BPI\t200", "BPI\t1,500"));
  EXPECT_EQ(without["points"], 0);
  EXPECT_EQ(without["lostPoints"], 2);
  EXPECT_TRUE(scan(Misread("Time\t0.5", "Time\t0,5"))["startTime"].is_null());
  EXPECT_EQ(scan(Misread("300\t50", "300\t50,5"))["lostPoints"], 1);
}

// Each chromatogram is 100 % and 0 % of 50, at 1 and 2 minutes.
TEST_F(MisreadReportTest, TraceWithoutItsFullScaleIsEmpty) {
  const auto trace = [&](const std::string& path) {
    const std::string shown =
        Run({"chromatogram", path, "--sample", "1", "--function", "1", "--trace", "1"}).output;
    return shown.substr(shown.find("time\t"));
  };
  EXPECT_EQ(trace(path_), "time\tintensity\n1\t50\n2\t0\n");
  EXPECT_EQ(trace(Misread("MaxIntensity\t50", "MaxIntensity\t5,0")), "time\tintensity\n");
}

// The plug-in reads numbers up to the comma, deliberately.
TEST_F(MisreadReportTest, CommasAgreeWithThePlugIn) {
  const ProcessResult result = Run({"plugin", Argument(ZRML_PLUGIN), Misread("BPI\t200", "BPI\t1,500")});
  EXPECT_EQ(result.status, 0) << result.output << result.errors;
}

TEST_F(MisreadReportTest, MarkersThatAreNotRead) {
  ExpectLost(Misread("[SPECTRUM]", " [SPECTRUM]"),
             "misread.rpt has a marker that is indented, in small letters or behind other text, which is not "
             "read: line 12");
  ExpectLost(Misread("[SPECTRUM]\r\n{", "[SPECTRUM] {"),
             "misread.rpt has a marker without a line that begins with { behind it: line 12 ([SPECTRUM])");
}

// Of one sample; another one is converted all the same.
TEST_F(MisreadReportTest, IsDamageOfItsSample) {
  const std::string path = Misread("BPI\t200", "BPI\t2,5e6");
  EXPECT_EQ(Run({"convert", path, "--stdout", "--sample", "2"}).status, 0);
}

TEST_F(MisreadReportTest, ByteOrderMark) {
  const std::string mark = "\xEF\xBB\xBF";
  ExpectLost(Misread("[SAMPLE]", mark + "[SAMPLE]"),
             "misread.rpt has a byte-order mark before a marker, which is not read then: line 1");
  const std::string single = Path("single.rpt");
  std::ofstream(folder_ / "single.rpt", std::ios::binary) << mark << ReportText(SampleBlock({}));
  ExpectFailure(
      Run({"convert", single}), 7,
      single +
          " is damaged: single.rpt has a byte-order mark before a marker, which is not read then: line 1");
}

// What it has as m/z are wavelengths; its spectra are no MS1 spectra, and its total is none of ions.
TEST_F(ReportTest, FunctionOfAbsorbanceIsAbsorbance) {
  const auto function = [](const char* type, const char* tic) {
    return FunctionBlock(Keys({{"Type", type}}) +
                         SpectrumBlock(Keys({{"Time", "1"}, {"TIC", tic}}), {{210, 50}, {220, 100}}) +
                         ChromatogramBlock(Keys({{"Description", "210nm"}}), {{1, 100}}));
  };
  const std::string path = Make("pda.rpt", SampleBlock(function("MS", "3") + function("PDA", "7")));
  EXPECT_EQ(json::parse(Run({"info", "--json", path}).output)["samples"][0]["functions"][1]["kind"],
            "absorbance");
  EXPECT_TRUE(Run({"spectrum", path, "--function", "2", "--scan", "1"})
                  .output.ends_with("\nwavelength\tabsorbance\n210\t50\n220\t100\n"));
  const auto converted = [&](std::vector<std::string> more) {
    more.insert(more.begin(), {"convert", path, "--stdout"});
    const ProcessResult result = Run(more);
    EXPECT_EQ(result.errors, "");
    return result.output;
  };
  const std::string plain = converted({});
  EXPECT_EQ(plain.find("function=2"), std::string::npos);
  EXPECT_NE(plain.find("id=\"TIC\" defaultArrayLength=\"1\""), std::string::npos);
  EXPECT_EQ(plain.find("function 2 TIC"), std::string::npos);
  const std::string trace =
      "id=\"function 2 trace 1: 210nm\" defaultArrayLength=\"1\">\n<cvParam cvRef=\"MS\" "
      "accession=\"MS:1000812\"";
  EXPECT_NE(plain.find(trace), std::string::npos);
  const std::string whole = converted({"--absorbance"});
  EXPECT_NE(whole.find("id=\"function=2 process=0 scan=1\" defaultArrayLength=\"2\">\n<cvParam cvRef=\"MS\" "
                       "accession=\"MS:1000804\""),
            std::string::npos);
  EXPECT_NE(whole.find("name=\"wavelength array\""), std::string::npos);
  EXPECT_EQ(converted({"--format", "tsv"}),
            "function\tscan\ttime\tm/z\tintensity\n1\t1\t1\t210\t50\n1\t1\t1\t220\t100\n");
}

TEST_F(ReportTest, FunctionOfUnknownTypeIsOther) {
  const ReportLines spectrum = SpectrumBlock(Keys({{"Time", "1"}}), {{100, 50}});
  std::ofstream(folder_ / "unknown.rpt", std::ios::binary)
      << ReportText(SampleBlock(FunctionBlock(Keys({{"Type", "TOFX"}}) + spectrum)), LineEnd::kCrLf);
  const json function =
      json::parse(Run({"info", "--json", Path("unknown.rpt")}).output)["samples"][0]["functions"][0];
  EXPECT_EQ(function["kind"], "other");
  EXPECT_EQ(Run({"convert", Path("unknown.rpt"), "--stdout"}).output.find("MS1 spectrum"), std::string::npos);
  EXPECT_EQ(function["kindCode"], 0);
}

// Two spectra of products. Zeros are as long as what they are in place of.
class ZeroedReportTest : public ReportTest {
 protected:
  std::string Zeroed(const std::string& what) {
    const auto spectrum = [](const char* time) {
      return SpectrumBlock(Keys({{"Time", time}, {"BPI", "100"}, {"Continuum", "FALSE"}}),
                           {{100, 50}, {200, 100}});
    };
    std::string text =
        ReportText(SampleBlock(FunctionBlock(Keys({{"Type", "MS/MS"}}) + spectrum("1") + spectrum("2"))));
    text.replace(text.rfind(what), what.size(), what.size(), '\0');
    std::ofstream(folder_ / "zeroed.rpt", std::ios::binary) << text;
    return Path("zeroed.rpt");
  }

  static std::ptrdiff_t Count(const std::string& text, const std::string& part) {
    std::ptrdiff_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
  }
};

TEST_F(ZeroedReportTest, KindOfASpectrumIsNotClaimed) {
  const std::string path = Zeroed("FALSE");
  EXPECT_EQ(Run({"check", path}).status, 7);
  const std::string mzml = Run({"convert", path, "--damaged", "--stdout"}).output;
  EXPECT_EQ(Count(mzml, "name=\"centroid spectrum\""), 1);
  EXPECT_EQ(Count(mzml, "name=\"profile spectrum\""), 0);
  EXPECT_EQ(Count(mzml, "name=\"spectrum representation\""), 1);
  for (const bool isCentroid : {false, true}) {  // peaks of peaks would be others
    std::vector<std::string> arguments = {"convert", path, "--damaged", "--format", "mgf", "--stdout"};
    if (isCentroid) arguments.emplace_back("--centroid");
    const ProcessResult mgf = Run(arguments);
    EXPECT_EQ(mgf.status, 0) << mgf.errors;
    EXPECT_EQ(Count(mgf.output, "\n100 50\n200 100\n"), 2);
  }
  EXPECT_TRUE(json::parse(Run({"spectrum", path, "--scan", "2", "--json"}).output)["centroided"].is_null());
}

TEST_F(ZeroedReportTest, LevelOfAFunctionIsNotClaimed) {
  const std::string path = Zeroed("/MS");
  EXPECT_EQ(Run({"check", path}).status, 7);
  const std::string mzml = Run({"convert", path, "--damaged", "--stdout"}).output;
  EXPECT_EQ(Count(mzml, "<spectrum "), 2);
  EXPECT_EQ(Count(mzml, "name=\"ms level\""), 0);
  EXPECT_EQ(Count(mzml, "name=\"MS1 spectrum\"") + Count(mzml, "name=\"MSn spectrum\""), 0);
  EXPECT_EQ(Run({"convert", path, "--damaged", "--format", "mgf", "--stdout"}).status, 2);
  const json row = json::parse(Run({"info", path, "--json"}).output)["samples"][0]["functions"][0];
  EXPECT_TRUE(row["msLevel"].is_null());
  const std::string scans = Run({"scans", path}).output;
  EXPECT_EQ(Count(scans, "\n"), 3);
  const std::string leveled = Run({"scans", path, "--ms-level", "1-9"}).output;
  EXPECT_LT(Count(leveled, "\n"), 3);
}

TEST_F(ReportTest, FileThatIsNoReportIsRefused) {
  std::ofstream(folder_ / "none.rpt", std::ios::binary) << "[FUNCTION]\n{\n}\n";
  ExpectFailure(Run({"info", Path("none.rpt")}), 4,
                Path("none.rpt") + " is neither a raw directory nor a report");
}

}  // namespace
}  // namespace zrml::test
