// Damage in the points, as users of zrml check and zrml convert meet it.
#include <algorithm>
#include <filesystem>

#include <nlohmann/json.hpp>

#include "tests/support/sound_directory.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

using nlohmann::json;

constexpr const char* kAdvice = " (--damaged converts what there is)";
constexpr const char* kRefused = " (refused by --strict)";

class PointsDamageTest : public ZrmlTest {
 protected:
  static std::string PathOf(const TempDirectory& directory) { return Argument(directory.Path()); }

  ProcessResult Convert(const TempDirectory& directory, std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"convert", PathOf(directory), "--stdout", "--format", "tsv"});
    return Run(more);
  }

  auto FilesInFolder() const { return std::distance(std::filesystem::directory_iterator(folder_), {}); }

  static void Zero(const TempDirectory& directory, std::ptrdiff_t from, std::ptrdiff_t size) {
    directory.Edit("_FUNC001.DAT",
                   [&](FileBytes& bytes) { std::fill_n(bytes.begin() + from, size, std::byte{0}); });
  }
};

// Three scans of two points of 6 bytes: of the second one the first point is left.
TEST_F(PointsDamageTest, TailOfZerosIsLost) {
  const TempDirectory directory = SoundDirectory().Build();
  Zero(directory, 18, 18);
  const std::string path = PathOf(directory);
  const std::string finding =
      "_FUNC001.DAT ends in zeros that are no points of 2 of 3 scans; the first is scan 2";
  const ProcessResult checked = Run({"check", path});
  EXPECT_EQ(checked.status, 7);
  EXPECT_EQ(checked.output, "lost: " + finding + "\n");
  ExpectFailure(Convert(directory), 7, path + " is damaged: " + finding + kAdvice);
  const ProcessResult anyway = Convert(directory, {"--damaged", "--function", "1"});
  EXPECT_EQ(anyway.status, 0);
  EXPECT_EQ(anyway.errors, "zrml: " + path + ": " + finding + "\nzrml: " + path +
                               ": _FUNC001.DAT: scans of function 1 that have lost points: 2 (2-3)\n");
  EXPECT_EQ(std::count(anyway.output.begin(), anyway.output.end(), '\n'), 1 + 3);  // and the column names
}

// It is found when the points are read, after the file was begun, of which nothing remains.
TEST_F(PointsDamageTest, ScanOfZerosAmongOthersIsLost) {
  const TempDirectory directory = SoundDirectory().Build();
  Zero(directory, 12, 12);
  const std::string path = PathOf(directory);
  const std::string target = Argument(folder_ / "out.mzML");
  const auto before = FilesInFolder();
  ExpectFailure(Run({"convert", path, "-b", target}), 7,
                path + ": cannot read all points of scan 2 of function 1" + kAdvice);
  EXPECT_EQ(FilesInFolder(), before);
  const ProcessResult anyway = Run({"convert", path, "-b", target, "--damaged"});
  EXPECT_EQ(anyway.status, 0);
  EXPECT_EQ(anyway.errors,
            "zrml: " + path + ": _FUNC001.DAT: scans of function 1 that have lost points: 1 (2)\n");
  EXPECT_NE(
      ReadBytes(folder_ / "out.mzML").find("id=\"function=1 process=0 scan=2\" defaultArrayLength=\"0\""),
      std::string::npos);
}

// A header of 8 bytes and two records of 8: of the second one nothing is left, and no point at time 0 is made
// of it.
TEST_F(PointsDamageTest, TraceThatEndsInZerosHasNoSuchPoints) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.chroms = {{"flow", {{1, 2}, {2, 3}}}};
  const TempDirectory directory = raw.Build();
  directory.Edit("_CHRO001.DAT", [](FileBytes& bytes) { std::fill_n(bytes.begin() + 16, 8, std::byte{0}); });
  const std::string shown = Run({"chromatogram", PathOf(directory), "--trace", "1"}).output;
  EXPECT_EQ(shown.substr(shown.find("time\t")), "time\tintensity\n1\t2\n");
  EXPECT_EQ(Run({"convert", PathOf(directory), "--stdout"}).status, 7);
  EXPECT_EQ(Convert(directory).status, 0);  // which has no traces
}

// The third scan has counted something, or nothing.
TEST_F(PointsDamageTest, TotalWithoutPointsIsLost) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].scans.push_back({.index = {.retentionTime = 0.3F}});
  EXPECT_EQ(Run({"check", PathOf(raw.Build())}).status, 0);
  raw.functions[1].scans.back().index.totalIntensity = 5;
  const TempDirectory directory = raw.Build();
  const std::string path = PathOf(directory);
  EXPECT_EQ(Run({"check", path}).output,
            "lost: _FUNC002.DAT has 1 of 3 scans that have lost points; the first is scan 3\n");
  ExpectFailure(Convert(directory), 7, path + ": cannot read all points of scan 3 of function 2" + kAdvice);
  EXPECT_EQ(Convert(directory, {"--scans", "1-2"}).status, 0);
}

// Two scans of two ions; the second ion of the second scan was measured and not there.
TEST_F(PointsDamageTest, ZerosOfIonMonitoringAreMeasured) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.functions[0].record.type = 1;  // SIR
  raw.functions[0].record.dataFormat = 1;
  raw.functions[0].scans = {
      ScanOf<StoredPoint1>(0.5F, {{.mass = 100 * 1024, .mantissa = 5}, {.mass = 200 * 1024, .mantissa = 6}}),
      ScanOf<StoredPoint1>(1, {{.mass = 100 * 1024, .mantissa = 7}, {.mass = 200 * 1024}})};
  const std::string converted = Run({"convert", PathOf(raw.Build()), "--stdout"}).output;
  EXPECT_NE(converted.find("id=\"function 1 channel 2: 200\" defaultArrayLength=\"2\""), std::string::npos);
  EXPECT_NE(converted.find("<spectrumList count=\"0\""), std::string::npos);
}

TEST_F(PointsDamageTest, NothingLostIsListedTwice) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[0].statistics.reset();
  for (const float minutes : {0.4F, 0.5F, 0.6F})
    raw.functions[0].scans.push_back(ScanFrom<StoredPoint9>(minutes, {{100, 7}, {200, 9}}));
  const TempDirectory directory = raw.Build();
  Zero(directory, 0, 12);
  Zero(directory, 24, 24);
  const ProcessResult anyway = Convert(directory, {"--damaged", "--threads", "3"});
  EXPECT_EQ(anyway.errors, "zrml: " + PathOf(directory) +
                               ": _FUNC001.DAT: scans of function 1 that have lost points: 3 (1, 3-4)\n");
}

TEST_F(PointsDamageTest, JsonSaysWhatProgramsNeed) {
  const TempDirectory directory = SoundDirectory().Build();
  Zero(directory, 12, 12);
  const json printed = json::parse(Run({"check", PathOf(directory), "--json"}).output);
  EXPECT_EQ(printed["sound"], false);
  EXPECT_EQ(
      printed["findings"],
      (json{{{"code", "points-lost"},
             {"severity", "lost"},
             {"file", "_FUNC001.DAT"},
             {"sample", nullptr},
             {"function", 1},
             {"count", 1},
             {"first", 2},
             {"message", "_FUNC001.DAT has 1 of 3 scans that have lost points; the first is scan 2"}}}));
}

// Whatever is not asked for counts for nothing.
TEST_F(PointsDamageTest, OfAnotherFunctionIsNoHindrance) {
  const TempDirectory directory = SoundDirectory().Build();
  Zero(directory, 12, 24);
  directory.WriteText("_FUNC009.DAT", "x");
  EXPECT_EQ(Run({"check", PathOf(directory)}).status, 7);
  ExpectOutput(Run({"check", "--strict", PathOf(directory) + "/_FUNC002.DAT"}),
               PathOf(directory) + "/_FUNC002.DAT is sound: 1 function, 2 scans\n");
  EXPECT_EQ(Run({"check", PathOf(directory) + "/_FUNC001.DAT"}).status, 7);
  const ProcessResult other = Convert(directory, {"--function", "2", "--strict"});
  EXPECT_EQ(other.status, 0);
  EXPECT_EQ(other.errors, "");
  EXPECT_EQ(Convert(directory, {"--function", "1"}).status, 7);
  EXPECT_EQ(Convert(directory, {"--function", "9"}).status, 7);
}

// Reported, or refused with --strict; the file that was begun is removed.
TEST_F(PointsDamageTest, SuspectPointsAreReported) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[0].scans[1].index.totalIntensity = 32;  // of 16
  const TempDirectory directory = raw.Build();
  const std::string path = PathOf(directory);
  const std::string finding =
      "_FUNC001.DAT has 1 scan whose points do not add up to the total in the index; the first is scan 2 "
      "(sum "
      "16, total 32)";
  ExpectOutput(Run({"check", path}),
               "suspect: " + finding + "\n" + path + " has lost nothing: 2 functions, 5 scans\n");
  EXPECT_EQ(Run({"check", path, "--strict"}).status, 7);
  const ProcessResult converted = Convert(directory, {"--threads", "2"});
  EXPECT_EQ(converted.status, 0);
  EXPECT_EQ(converted.errors, "zrml: " + path + ": " + finding + "\n");
  const auto before = FilesInFolder();
  ExpectFailure(Run({"convert", path, "-b", Argument(folder_ / "out.mzML"), "--strict"}), 7,
                path + ": " + finding + kRefused);
  EXPECT_EQ(FilesInFolder(), before);
  EXPECT_EQ(Convert(directory, {"--strict", "--function", "2"}).status, 0);
  ExpectFailure(Convert(directory, {"--strict", "--damaged"}), 2,
                "--damaged excludes --strict (see zrml convert --help)");
}

// What is known beforehand is refused before anything is written.
TEST_F(PointsDamageTest, StatisticsThatAreMissing) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].record.type = 11;  // products
  raw.functions[1].record.setMass = 500;
  const TempDirectory directory = raw.Build();
  const std::string path = PathOf(directory);
  const std::string finding =
      "_FUNC002.STS does not tell the precursors of 2 of 2 scans, which are the method's; the first is scan "
      "1";
  ExpectOutput(Run({"check", path}),
               "suspect: " + finding + "\n" + path + " has lost nothing: 2 functions, 5 scans\n");
  EXPECT_EQ(Convert(directory).errors, "zrml: " + path + ": " + finding + "\n");
  EXPECT_EQ(Convert(directory, {"--function", "1", "--strict"}).status, 0);
  ExpectFailure(Convert(directory, {"--strict"}), 7, path + " is suspect: " + finding + kRefused);
}

// Two of three scans, with what they hold still in the data file.
TEST_F(PointsDamageTest, ScansBeyondACutIndexAreLost) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[0].statistics.reset();
  const TempDirectory directory = raw.Build();
  directory.Truncate("_FUNC001.IDX", 22);
  const std::string finding = "_FUNC001.DAT holds 24 bytes that no scan refers to";
  const ProcessResult checked = Run({"check", PathOf(directory)});
  EXPECT_EQ(checked.status, 7);
  EXPECT_EQ(checked.output, "lost: " + finding + "\n");
  ExpectFailure(Convert(directory), 7, PathOf(directory) + " is damaged: " + finding + kAdvice);
}

TEST_F(PointsDamageTest, LostPointsAreNoPointsOfASpectrum) {
  const TempDirectory directory = SoundDirectory().Build();
  Zero(directory, 12, 12);
  const json scan =
      json::parse(Run({"spectrum", PathOf(directory), "--function", "1", "--scan", "2", "--json"}).output);
  EXPECT_EQ(scan["points"], 0);
  EXPECT_EQ(scan["lostPoints"], 2);
  EXPECT_EQ(scan["totalIntensity"], json());
  EXPECT_EQ(scan["masses"], json::array());
}

}  // namespace
}  // namespace zrml::test
