// Sums of scans, several scans, centroids and filters, of raw directories and of reports.
#include <nlohmann/json.hpp>

#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

using nlohmann::json;

constexpr float kNear = 400 + 1.0F / 512;  // 4.9 parts per million above 400

// Function 1 has profiles, an empty scan, a scan of peaks and a profile of two points; function 2 has peaks;
// function 3 is of absorbance.
RawDirectoryBuilder Acquisition() {
  constexpr unsigned kTofMs = 18;
  constexpr unsigned kAbsorbance = 12;
  constexpr unsigned kPositive = 8;
  constexpr unsigned kNegative = 9;
  const auto profile = CentroidState::kProfile;
  const auto peaks = CentroidState::kCentroid;
  RawDirectoryBuilder raw;
  raw.functions = {
      SmallFunction(kTofMs, kPositive,
                    {SmallScan(0.5F, profile, {{100, 10}, {100.25, 20}, {100.5, 10}}),
                     SmallScan(1, profile, {{100, 2}, {100.25, 4}, {100.5, 3}}), SmallScan(1.5F, profile, {}),
                     SmallScan(2, peaks, {{100.25, 100}}), SmallScan(2.5F, profile, {{100, 7}, {100.25, 7}}),
                     SmallScan(3, profile, {{100, 2}, {100.25, 2}, {100.5, 2}})}),
      SmallFunction(
          kTofMs, kNegative,
          {SmallScan(0.5F, peaks, {{400, 3}, {500, 8}}), SmallScan(1, peaks, {{kNear, 1}, {600, 2}})}),
      SmallFunction(kAbsorbance, kPositive,
                    {SmallScan(0.5F, peaks, {{210, 4}, {211, 8}}), SmallScan(1, peaks, {{210, 2}, {211, 2}}),
                     SmallScan(1.5F, peaks, {{210, 6}})}),
  };
  return raw;
}

// The same scans; intensities of a report are per cent of BPI.
ReportLines Report() {
  const auto scan = [](const char* time, bool isProfile, const ReportPairs& points) {
    return SpectrumBlock(Keys({{"Time", time}, {"BPI", "100"}, {"Continuum", isProfile ? "TRUE" : "FALSE"}}),
                         points);
  };
  return SampleBlock(
      FunctionBlock(Keys({{"Description", "profiles"}, {"Type", "MS"}, {"IonMode", "ES+"}}) +
                    scan("0.5", true, {{100, 10}, {100.25, 20}, {100.5, 10}}) +
                    scan("1", true, {{100, 2}, {100.25, 4}, {100.5, 3}}) + scan("1.5", true, {}) +
                    scan("2", false, {{100.25, 100}}) + scan("2.5", true, {{100, 7}, {100.25, 7}}) +
                    scan("3", true, {{100, 2}, {100.25, 2}, {100.5, 2}})) +
      FunctionBlock(Keys({{"Description", "peaks"}, {"Type", "MS"}, {"IonMode", "ES-"}}) +
                    scan("0.5", false, {{400, 3}, {500, 8}}) + scan("1", false, {{kNear, 1}, {600, 2}})));
}

class SpectrumSumTest : public ZrmlTest {
 protected:
  static std::vector<std::string> Joined(std::vector<std::string> front,
                                         const std::vector<std::string>& more) {
    front.insert(front.end(), more.begin(), more.end());
    return front;
  }

  ProcessResult RunRaw(const std::vector<std::string>& more) const {
    return Run(Joined({"spectrum", path_}, more));
  }

  // The points of the raw directory's and of the report's spectrum, which are the same.
  void ExpectPoints(const std::vector<std::string>& options, const std::string& masses,
                    const std::string& intensities) const {
    for (const std::string& path : {path_, report_}) {
      const ProcessResult result = Run(Joined({"spectrum", path, "--json"}, options));
      ASSERT_EQ(result.errors, "");
      const json spectrum = json::parse(result.output);
      EXPECT_EQ(spectrum["masses"], json::parse(masses)) << path;
      EXPECT_EQ(spectrum["intensities"], json::parse(intensities)) << path;
    }
  }

  void ExpectWrongUsage(const std::vector<std::string>& more, const std::string& message) const {
    ExpectFailure(RunRaw(more), 2, message);
  }

  std::string path_ = Make("run.raw", Acquisition());
  std::string report_ = Make("vial.rpt", Report());
};

// Scan 4 has peaks, scan 5 has two points; scan 3 has nothing and counts. A scan takes 15 s.
TEST_F(SpectrumSumTest, SumSaysWhichScansItHas) {
  ExpectOutput(RunRaw({"--function", "1", "--rt", "0.5-2.5", "--sum"}), "# source: " + path_ + R"(
# provider: ZRMLProvider
# sample: 1
# sampleName: Injection 1
# function: 1
# functionName: TOF MS ES+
# scans: 1-3
# scansAdded: 3
# scansLeftOut: 2
# combined: sum
# startMinutes: 0.5
# endMinutes: 1.75
# msLevel: 1
# polarity: positive
# centroided: false
# totalIntensity: 49
# basePeakMz: 100.25
# basePeakIntensity: 24
# points: 3
m/z	intensity
100	12
100.25	24
100.5	13
)");
}

TEST_F(SpectrumSumTest, JsonHasTheKeysOfAScanAndMore) {
  const json scan = json::parse(RunRaw({"--function", "2", "--scan", "1", "--json"}).output);
  json sum =
      json::parse(RunRaw({"--function", "2", "--sum", "--minus", "1-1", "--json", "--scans", "1"}).output);
  for (const auto& [key, value] : scan.items()) EXPECT_TRUE(sum.contains(key)) << key;
  EXPECT_EQ(sum["scan"], nullptr);
  EXPECT_EQ(sum["scans"], "1");
  EXPECT_EQ(sum["scansAdded"], 1);
  EXPECT_EQ(sum["scansLeftOut"], 0);
  EXPECT_EQ(sum["combined"], "sum");
  EXPECT_EQ(sum["background"], "2");
  EXPECT_EQ(sum["backgroundLeftOut"], 0);
}

TEST_F(SpectrumSumTest, MeanIsTheSumOverTheNumberOfScans) {
  ExpectPoints({"--function", "1", "--rt", "-1.5", "--mean"}, "[100, 100.25, 100.5]",
               "[4, 8, 4.333333333333333]");
  ExpectPoints({"--function", "1", "--scans", "1-2", "--mean"}, "[100, 100.25, 100.5]", "[6, 12, 6.5]");
  EXPECT_EQ(json::parse(RunRaw({"--function", "1", "--mean", "--json"}).output)["combined"], "mean");
}

// Without a list all: 10 + 2 + 2, 20 + 4 + 2, 10 + 3 + 2.
// The points of scan 1 are there, 3 of 12.
TEST_F(SpectrumSumTest, LostScansAreLeftOut) {
  const std::filesystem::path data = folder_ / "run.raw" / "_FUNC001.DAT";
  std::filesystem::resize_file(data, std::filesystem::file_size(data) / 4);
  const ProcessResult result = RunRaw({"--function", "1", "--scans", "1-2", "--mean", "--json"});
  ASSERT_EQ(result.status, 0);
  const json mean = json::parse(result.output);
  EXPECT_EQ(mean["intensities"], json::parse("[10, 20, 10]"));
  EXPECT_EQ(mean["scans"], "1");
  EXPECT_EQ(mean["scansLeftOut"], 1);
  EXPECT_EQ(mean["lostPoints"], 3);
  ExpectWrongUsage({"--function", "1", "--scans", "1", "--sum", "--minus", "1-1"},
                   "the background has no scans of the sum's kind (peaks, or profiles) that can be added");
}

TEST_F(SpectrumSumTest, SumOfAll) {
  ExpectPoints({"--function", "1", "--sum"}, "[100, 100.25, 100.5]", "[14, 26, 15]");
}

// The mean of the background is 2 everywhere, of two scans one has nothing: 12 - 2 * (0 + 2) / 2.
TEST_F(SpectrumSumTest, BackgroundIsTakenOff) {
  ExpectPoints({"--function", "1", "--scans", "1-2", "--sum", "--minus", "3-"}, "[100, 100.25, 100.5]",
               "[8, 20, 9]");
  ExpectPoints({"--function", "1", "--scans", "1-2", "--mean", "--minus", "3-3"}, "[100, 100.25, 100.5]",
               "[4, 10, 4.5]");
  ExpectPoints({"--function", "1", "--scans", "6", "--sum", "--minus", "1-1"}, "[100, 100.25, 100.5]",
               "[0, -2, -1]");
}

// (3 * 400 + 1 * (400 + 1/512)) / 4 = 400 + 1/2048. 4.8 parts per million are less than 1/512.
TEST_F(SpectrumSumTest, PeaksWithinTenPartsPerMillionAreOne) {
  const std::string merged = "[400.00048828125, 500, 600]";
  const std::string apart = "[400, 400.001953125, 500, 600]";
  ExpectPoints({"--function", "2", "--sum"}, merged, "[4, 8, 2]");
  ExpectPoints({"--function", "2", "--sum", "--ppm", "5"}, merged, "[4, 8, 2]");
  ExpectPoints({"--function", "2", "--sum", "--ppm", "4.8"}, apart, "[3, 1, 8, 2]");
  ExpectPoints({"--function", "2", "--sum", "--da", "0.002"}, merged, "[4, 8, 2]");
  ExpectPoints({"--function", "2", "--sum", "--da", "0"}, apart, "[3, 1, 8, 2]");
}

// The second scan's peak is taken off the first one's, which keeps its m/z.
TEST_F(SpectrumSumTest, PeaksOfTheBackgroundAreTakenOffThoseNearby) {
  ExpectPoints({"--function", "2", "--scans", "1", "--sum", "--minus", "1-"}, "[400, 500, 600]",
               "[2, 8, -2]");
}

TEST_F(SpectrumSumTest, SeveralScansFollowEachOther) {
  const auto one = [&](const char* scan) { return RunRaw({"--function", "2", "--scan", scan}).output; };
  ExpectOutput(RunRaw({"--function", "2", "--scans", "1-"}), one("1") + "\n" + one("2"));
  ExpectOutput(RunRaw({"--function", "2", "--rt", "1-9"}), one("2"));
  const json list = json::parse(RunRaw({"--function", "1", "--scans", "1,3-4", "--json"}).output);
  ASSERT_EQ(list.size(), 3U);
  EXPECT_EQ(list[0]["scan"], 1);
  EXPECT_EQ(list[1]["masses"], json::array());
  EXPECT_EQ(list[2], json::parse(RunRaw({"--function", "1", "--scan", "4", "--json"}).output));
  EXPECT_EQ(json::parse(RunRaw({"--function", "1", "--scans", "1", "--json"}).output).size(), 1U);
}

// Function 4 has points of no known layout. A list that was begun is a list.
TEST_F(SpectrumSumTest, ScansThatCannotBeReadAreStatus5) {
  const std::string path = Make("other.raw");
  const std::string error = "zrml: " + path + ": cannot read scan 1 of function 4\n";
  const ProcessResult list = Run({"spectrum", path, "--function", "4", "--scans", "1-", "--json"});
  EXPECT_EQ(list.status, 5);
  EXPECT_EQ(list.output, "[]\n");
  EXPECT_EQ(list.errors, error);
  ExpectFailure(Run({"spectrum", path, "--function", "4", "--sum"}), 5,
                path + ": cannot read scan 1 of function 4");
}

// ln 10, ln 20, ln 10 in steps of 0.25: highest in the middle, where it is 20.
TEST_F(SpectrumSumTest, CentroidsOfAScanAndOfASum) {
  ExpectPoints({"--function", "1", "--scan", "1", "--centroid", "--areas"}, "[100.25]", "[40]");
  const json spectrum =
      json::parse(RunRaw({"--function", "1", "--scans", "1-2", "--sum", "--centroid", "--json"}).output);
  ASSERT_EQ(spectrum["masses"].size(), 1U);
  EXPECT_NEAR(spectrum["masses"][0], 100.25, 0.05);
  EXPECT_NEAR(spectrum["intensities"][0], 24, 0.5);
  EXPECT_EQ(spectrum["centroided"], true);
  EXPECT_EQ(spectrum["centroids"], "heights");
}

TEST_F(SpectrumSumTest, CentroidsOfPeaksAreThePeaks) {
  ExpectPoints({"--function", "2", "--scan", "1", "--centroid"}, "[400, 500]", "[3, 8]");
  EXPECT_EQ(
      json::parse(RunRaw({"--function", "2", "--scan", "1", "--centroid", "--json"}).output)["centroids"],
      nullptr);
}

TEST_F(SpectrumSumTest, FiltersApplyInTheirOrder) {
  const auto points = [&](std::vector<std::string> more, const char* masses, const char* intensities) {
    more.insert(more.end(), {"--function", "1", "--scans", "6", "--sum", "--minus", "1-1"});
    ExpectPoints(more, masses, intensities);  // 0, -2 and -1 without a filter
  };
  points({"--drop-zeros"}, "[100.25, 100.5]", "[-2, -1]");
  points({"--min-intensity", "0"}, "[100]", "[0]");
  points({"--min-intensity", "0", "--drop-zeros"}, "[]", "[]");
  points({"--top", "2"}, "[100, 100.5]", "[0, -1]");
  points({"--top", "1", "--mz", "100.1-"}, "[100.5]", "[-1]");
  points({"--mz", "100.25-100.25"}, "[100.25]", "[-2]");
  EXPECT_NE(RunRaw({"--function", "1", "--scan", "1", "--top", "1", "--drop-zeros"})
                .output.find("\n# filter: without zeros, the 1 most intense\n# totalIntensity: 20\n"),
            std::string::npos);
}

// Both sides of the peak at 100.25 are outside, and it is whole all the same.
TEST_F(SpectrumSumTest, CentroidsAreMadeBeforeTheFilters) {
  ExpectPoints({"--function", "1", "--scan", "1", "--centroid", "--areas", "--mz", "100.2-100.3"}, "[100.25]",
               "[40]");
}

TEST_F(SpectrumSumTest, AbsorbanceByTime) {
  ExpectOutput(RunRaw({"--absorbance", "--rt", "0.5-1.5", "--sum"}), "# source: " + path_ + R"(
# provider: ZRMLProvider
# sample: 1
# sampleName: Injection 1
# scans: 1-2
# scansAdded: 2
# scansLeftOut: 1
# combined: sum
# startMinutes: 0.5
# endMinutes: 1
# points: 2
wavelength	absorbance
210	6
211	10
)");
  const json mean =
      json::parse(RunRaw({"--absorbance", "--rt", "0.5-1", "--mean", "--minus", "1-1", "--json"}).output);
  EXPECT_EQ(mean["wavelengths"], json::parse("[210, 211]"));
  EXPECT_EQ(mean["absorbances"], json::parse("[1, 3]"));  // (4 + 2) / 2 - 2 and (8 + 2) / 2 - 2
  const json list = json::parse(RunRaw({"--absorbance", "--rt", "1-", "--json"}).output);
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[1]["absorbances"], json::parse("[6]"));
  ExpectWrongUsage({"--absorbance", "--rt", "1.5-", "--sum", "--minus", "1-1"},
                   "the background has other wavelengths");
  ExpectWrongUsage({"--absorbance", "--scan", "1", "--mz", "1-2"},
                   "--mz excludes --absorbance (see zrml spectrum --help)");
}

// The absorbance function, which may be named as one, and a report's function of absorbance.
TEST_F(SpectrumSumTest, OptionsForMassSpectraAreNotForAbsorbance) {
  const std::string report =
      Make("report.rpt", SampleBlock(FunctionBlock(Keys({{"Type", "PDA"}}) +
                                                   SpectrumBlock(Keys({{"Time", "1"}}), {{210, 100}}))));
  const std::string refused =
      "absorbance spectra have no m/z; --centroid, --ppm, --da and filters are for mass spectra";
  const std::vector<std::vector<std::string>> places = {{path_, "--function", "3"}, {report}};
  for (const std::vector<std::string>& place : places) {
    const auto run = [&](std::vector<std::string> options) {
      options.insert(options.begin(), place.begin(), place.end());
      options.insert(options.begin(), "spectrum");
      return Run(options);
    };
    EXPECT_EQ(run({"--rt", "0-9", "--sum"}).status, 0);
    ExpectFailure(run({"--scan", "1", "--top", "1"}), 2, refused);
    ExpectFailure(run({"--rt", "0-9", "--sum", "--ppm", "10"}), 2, refused);
    ExpectFailure(run({"--rt", "0-9", "--sum", "--da", "0"}), 2, refused);
    ExpectFailure(run({"--scan", "1", "--polarity", "positive"}), 2, refused);
    ExpectFailure(run({"--scan", "1", "--centroid"}), 2, refused);
  }
}

// The data file is empty, so the points of all scans are lost.
TEST_F(SpectrumSumTest, NothingIsAddedWhereAllPointsAreLost) {
  const std::string lost = Make("lost.raw", Acquisition());
  for (const char* file : {"_FUNC001.DAT", "_FUNC003.DAT"}) {
    std::filesystem::resize_file(std::filesystem::path(lost) / file, 0);
  }
  for (const char* function : {"1", "3"}) {
    for (const char* combined : {"--sum", "--mean"}) {
      const ProcessResult result =
          Run({"spectrum", lost, "--function", function, "--rt", "0.5-1", combined, "--json"});
      ASSERT_EQ(result.status, 0) << result.errors;
      const json sum = json::parse(result.output);
      EXPECT_EQ(sum["scansAdded"], 0);
      EXPECT_EQ(sum["scansLeftOut"], 2);
      EXPECT_EQ(sum["startMinutes"], json());
      EXPECT_EQ(sum["endMinutes"], json());
      EXPECT_EQ(sum["points"], 0);
    }
  }
  ExpectFailure(Run({"spectrum", path_, "--function", "1", "--rt", "2-2", "--sum", "--minus", "2.5-2.5"}), 2,
                "the background has no scans of the sum's kind (peaks, or profiles) that can be added");
}

TEST_F(SpectrumSumTest, ScansThatAreNotThere) {
  ExpectWrongUsage({"--function", "2", "--scans", "1-2,5"},
                   "there is no scan 5: function 2 has scans 1 to 2");
  ExpectWrongUsage({"--function", "2", "--rt", "7-8", "--sum"},
                   path_ + ": none of the scans of function 2, which are at 0.5 to 1 minutes, is asked for");
  const std::string small = Make("small.raw");
  ExpectFailure(Run({"spectrum", small, "--function", "3", "--sum"}), 2,
                small + ": there are no scans of function 3");
  const std::string report = Make("empty.rpt", SampleBlock(Keys({{"FileName", "a"}})));
  ExpectFailure(Run({"spectrum", report, "--absorbance", "--sum"}), 2,
                report + ": there are no absorbance scans of " + report);
  ExpectWrongUsage({"--function", "2", "--minus", "0-1"},
                   "--minus requires --sum or --mean (see zrml spectrum --help)");
  ExpectWrongUsage({"--function", "2", "--sum", "--minus", "7-8"},
                   path_ + ": none of the scans of function 2 is background");
  ExpectWrongUsage({"--function", "2", "--scan", "1", "--polarity", "positive"},
                   path_ + ": the polarity of function 2 is negative");
  EXPECT_EQ(RunRaw({"--function", "2", "--scan", "1", "--polarity", "negative"}).status, 0);
}

TEST_F(SpectrumSumTest, OptionsThatDoNotGoTogether) {
  const std::string see = " (see zrml spectrum --help)";
  ExpectWrongUsage({"--function", "1", "--scan", "1", "--sum"}, "--scan excludes --sum" + see);
  ExpectWrongUsage({"--function", "1", "--scan", "1", "--rt", "1-2"}, "--scan excludes --rt" + see);
  ExpectWrongUsage({"--function", "1", "--scans", "1", "--minus", "1-2"},
                   "--minus requires --sum or --mean" + see);
  ExpectWrongUsage({"--function", "1", "--scans", "1", "--ppm", "5"}, "--ppm requires --sum or --mean" + see);
  ExpectWrongUsage({"--function", "1", "--sum", "--ppm", "5", "--da", "1"}, "--ppm excludes --da" + see);
  ExpectWrongUsage({"--function", "1", "--sum", "--areas"}, "--areas requires --centroid" + see);
  ExpectWrongUsage({"--function", "1", "--sum", "--ppm", "-1"},
                   "--ppm: \"-1\" is not a number such as 12.5" + see);
  ExpectWrongUsage({"--function", "1", "--sum", "--mz", "3"},
                   "--mz: \"3\" is not a range of m/z such as 100-200.5" + see);
  ExpectWrongUsage({"--function", "1", "--sum", "--top", "0"},
                   "--top: \"0\" is not a whole number from 1 to 2147483647" + see);
  ExpectWrongUsage({"--function", "1", "--sum", "--polarity", "plus"},
                   "--polarity: \"plus\" is not positive or negative" + see);
}

}  // namespace
}  // namespace zrml::test
