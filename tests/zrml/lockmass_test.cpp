// zrml lockmass: the measured mass of a reference ion.
#include <nlohmann/json.hpp>

#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

using nlohmann::json;

class LockMassTest : public ZrmlTest {
 protected:
  // With the scans of the reference function, 6, replaced.
  std::string MakeWith(const std::vector<ScanFiles>& scans) const {
    RawDirectoryBuilder raw = SmallAcquisition();
    raw.functions[5].scans = scans;
    return Make("made.raw", raw);
  }

  static ScanFiles Scan(float minutes, CentroidState state, const std::vector<WantedPoint>& points) {
    ScanFiles scan = ScanFrom<StoredPoint9>(minutes, points);
    scan.index.centroidState = state;
    return scan;
  }

  json Peaks(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "lockmass");
    arguments.emplace_back("--json");
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.errors, "");
    return json::parse(result.output);
  }
};

// The peak is at 556.25: 56.25 / 500 are 112500 ppm.
TEST_F(LockMassTest, IsThatOfTheReferenceFunction) {
  const std::string path = Make("run.raw");
  ExpectOutput(Run({"lockmass", path, "--mz", "500", "--da", "56.25"}), "# source: " + path + R"(
# provider: ZRMLProvider
# sample: 1
# sampleName: Injection 1
# function: 6
# functionName: TOF MS ES+ Lock Mass
# mz: 500
# massRange: 443.75 to 556.25
# points: 1
# found: 1
# medianErrorPpm: 112500
scan	time	m/z	errorPpm	intensity
1	0.25	556.25	112500	9
)");
}

// Half an m/z to either side by default; 900 ppm of 500 are 0.45. Of equal ones the first counts.
TEST_F(LockMassTest, LargestPointOfPeaksCounts) {
  const std::string path = MakeWith(
      {Scan(1, CentroidState::kCentroid, {{499, 100}, {499.5, 2}, {500, 8}, {500.25, 8}, {500.5, 7}}),
       Scan(2, CentroidState::kCentroid, {{499.5, 2}, {500.5, 3}}),
       Scan(3, CentroidState::kCentroid, {{499, 100}}), Scan(4, CentroidState::kCentroid, {})});
  json peaks = Peaks({path, "--mz", "500"});
  peaks.erase("source");
  EXPECT_EQ(peaks, json::parse(R"({
    "provider": "ZRMLProvider", "sample": 1, "sampleName": "Injection 1", "function": 6,
    "functionName": "TOF MS ES+ Lock Mass", "mz": 500, "massRange": [499.5, 500.5], "points": 4, "found": 2,
    "medianErrorPpm": 500, "scans": [1, 2, 3, 4], "times": [1, 2, 3, 4], "masses": [500, 500.5, null, null],
    "errorsPpm": [0, 1000, null, null], "intensities": [8, 3, 0, 0]
  })"));
  EXPECT_EQ(Peaks({path, "--mz", "500", "--ppm", "900"})["masses"], json::parse("[500, null, null, null]"));
}

// Samples of a Gaussian, 400 * 4^-k^2, in steps of 1/64: its centre is between none of them. The window cuts
// neither it nor a peak beyond its end.
TEST_F(LockMassTest, CentroidOfAProfileCounts) {
  std::vector<WantedPoint> points;
  for (const double centre : {500.0, 501.0}) {
    for (const int k : {-2, -1, 0, 1, 2})
      points.push_back({centre + k / 64.0, centre * 400 / 500 *
                                               (k == 0       ? 1
                                                : k * k == 1 ? 0.25
                                                             : 0.00390625)});
  }
  const std::string path = MakeWith({Scan(1, CentroidState::kProfile, points)});
  const json peaks = Peaks({path, "--mz", "499.99", "--da", "0.02"});
  EXPECT_NEAR(peaks["masses"][0].get<double>(), 500, 1e-6);
  EXPECT_NEAR(peaks["errorsPpm"][0].get<double>(), 20.0004, 0.002);  // 0.01 / 499.99
  EXPECT_NEAR(peaks["intensities"][0].get<double>(), 400, 1e-3);
  EXPECT_EQ(Peaks({path, "--mz", "500.5", "--da", "0.48"})["found"], 0) << "samples in the window, no peak";
}

TEST_F(LockMassTest, PointsThatAreLostAreNotZero) {
  const std::string path = Make("run.raw");
  std::filesystem::resize_file(folder_ / "run.raw" / "_FUNC006.DAT", 0);
  EXPECT_TRUE(Run({"lockmass", path, "--mz", "556.25"}).output.ends_with("\n1\t0.25\tnan\tnan\tnan\n"));
}

TEST_F(LockMassTest, OtherFunctionsAreChosen) {
  const std::string path = Make("run.raw");
  EXPECT_EQ(Peaks({path, "--function", "2", "--mz", "50.5"})["intensities"], json::parse("[7, 8]"));
  EXPECT_EQ(Peaks({path + "/_FUNC002.DAT", "--mz", "50.5"})["intensities"], json::parse("[7, 8]"));
  const std::string report = Make("vials.rpt", Vials());  // 100 % of 200
  EXPECT_EQ(Peaks({report, "--function", "1", "--mz", "100"})["intensities"], json::parse("[200, 0, 0]"));
  ExpectFailure(Run({"lockmass", path, "--function", "9", "--mz", "100"}), 2,
                "there is no function 9: " + path + " has functions 1 to 4, 6, p1");
}

// The method of function 1 has m/z 50 to 1200.5, that of function 6 none.
TEST_F(LockMassTest, MassOutsideOfTheFunctionIsNamed) {
  const std::string path = Make("run.raw");
  const auto errors = [&](const char* function, const char* mz) {
    const ProcessResult result = Run({"lockmass", path, "--function", function, "--mz", mz, "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(json::parse(result.output)["mz"], std::stod(mz));
    return result.errors;
  };
  EXPECT_EQ(errors("1", "1201.25"),
            "zrml: " + path + ": outside of m/z 50 to 1200.5, the range of function 1: 1201.25\n");
  EXPECT_EQ(errors("1", "1201"), "") << "its window begins at 1200.5";
  EXPECT_EQ(errors("6", "1201.25"), "");
}

TEST_F(LockMassTest, SourceWithoutAReferenceNeedsAFunction) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.labels = {CreatorLine("4.1"), FunctionHeading(1, "REFERENCE"), FunctionHeading(6, "REFERENCE")};
  const std::string two = Make("two.raw", raw);
  ExpectFailure(
      Run({"lockmass", two, "--mz", "556.25"}), 2,
      two + " names several functions as references; --function chooses one of functions 1 to 4, 6, p1");
  raw.labels.clear();
  const std::string none = Make("none.raw", raw);
  ExpectFailure(
      Run({"lockmass", none, "--mz", "556.25"}), 2,
      none + " names no function as the reference; --function chooses one of functions 1 to 4, 6, p1");
}

TEST_F(LockMassTest, MassIsRequired) {
  ExpectFailure(Run({"lockmass", "run.raw"}), 2, "--mz is required (see zrml lockmass --help)");
  for (const char* mass : {"0", "-556", "556,557", "x"}) {
    ExpectFailure(
        Run({"lockmass", "run.raw", "--mz", mass}), 2,
        "--mz: \"" + std::string(mass) + "\" is not an m/z such as 556.2771 (see zrml lockmass --help)");
  }
}

}  // namespace
}  // namespace zrml::test
