// zrml check with the plug-in itself, on raw directories that one edit has damaged.
#include <nlohmann/json.hpp>

#include "tests/support/raw_directory_builder.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

// Two functions of data format 9, 6 bytes a point: 3 scans of 2 points and 2 scans of 1 point. The first has
// statistics.
RawDirectoryBuilder Sound() {
  RawDirectoryBuilder raw;
  raw.functions.resize(2);
  raw.functions[0].statistics = StatisticsLayout();
  for (const float minutes : {0.1F, 0.2F, 0.3F})
    raw.functions[0].scans.push_back(ScanFrom<StoredPoint9>(minutes, {{100, 7}, {200, 9}}));
  for (const float minutes : {0.1F, 0.2F})
    raw.functions[1].scans.push_back(ScanFrom<StoredPoint9>(minutes, {{300, 1}}));
  return raw;
}

class CheckTest : public ZrmlTest {
 protected:
  ProcessResult Check(const TempDirectory& directory, std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"check", PathOf(directory)});
    return RunBare(more);
  }

  static std::string PathOf(const TempDirectory& directory) {
    return PluginArgument(directory.Path().string().c_str());
  }

  // Status 7, the findings, a line each, and how many there are.
  void ExpectFindings(const TempDirectory& directory, const std::string& findings, int count = 1) const {
    const ProcessResult result = Check(directory);
    EXPECT_EQ(result.status, 7);
    EXPECT_EQ(result.output, findings);
    EXPECT_EQ(result.errors, "zrml: " + PathOf(directory) + " is damaged: " + std::to_string(count) +
                                 (count == 1 ? " finding\n" : " findings\n"));
  }
};

TEST_F(CheckTest, SoundDirectoryIsStatus0) {
  const TempDirectory directory = Sound().Build();
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 5 scans\n");
}

TEST_F(CheckTest, LowerCaseNamesAreFoundToo) {
  RawDirectoryBuilder raw = Sound();
  raw.spelling = Spelling::kLowerCase;
  const TempDirectory directory = raw.Build();
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 5 scans\n");
  directory.Truncate("_func001.dat", 35);
  ExpectFindings(directory, "_FUNC001.DAT ends before 1 of 3 scans do; the first is scan 3\n");
}

// The points end at byte 36.
TEST_F(CheckTest, DataFileThatEndsTooEarly) {
  const TempDirectory directory = Sound().Build();
  directory.Truncate("_FUNC001.DAT", 35);
  ExpectFindings(directory, "_FUNC001.DAT ends before 1 of 3 scans do; the first is scan 3\n");
  directory.Truncate("_FUNC001.DAT", 12);
  ExpectFindings(directory, "_FUNC001.DAT ends before 2 of 3 scans do; the first is scan 2\n");
  directory.Truncate("_FUNC001.DAT", 0);
  ExpectFindings(directory, "_FUNC001.DAT ends before 3 of 3 scans do; the first is scan 1\n");
}

// An offset of 0 in a later record stands for the end of the scan before it.
TEST_F(CheckTest, OffsetsLeftOutAreWorkedOut) {
  const TempDirectory directory = Sound().Build();
  directory.Edit("_FUNC001.IDX", [](FileBytes& bytes) {
    PatchU32(bytes, 22, 0);
    PatchU32(bytes, 44, 0);
  });
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 5 scans\n");
  directory.Truncate("_FUNC001.DAT", 35);
  ExpectFindings(directory, "_FUNC001.DAT ends before 1 of 3 scans do; the first is scan 3\n");
}

// Points of such a function are elsewhere.
TEST_F(CheckTest, DataFileOfAMobilityFunctionMayEndAnywhere) {
  const TempDirectory directory = Sound().Build();
  directory.Truncate("_FUNC001.DAT", 35);
  directory.WriteText("_FUNC001.CDT", "x");
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 5 scans\n");
}

TEST_F(CheckTest, IndexThatIsNoWholeNumberOfRecords) {
  const TempDirectory directory = Sound().Build();
  directory.Truncate("_FUNC002.IDX", 43);
  ExpectFindings(directory, "_FUNC002.IDX does not end with a whole record, so the function has no scans\n");
}

TEST_F(CheckTest, IndexThatIsMissing) {
  const TempDirectory directory = Sound().Build();
  directory.Remove("_FUNC002.IDX");
  ExpectFindings(directory, "_FUNC002.IDX is missing, so the function has no scans\n");
}

// 15 records of 22 bytes, or 11 of 30; in neither size do they ascend.
TEST_F(CheckTest, IndexThatGoesBackwards) {
  RawDirectoryBuilder raw = Sound();
  raw.functions[1].indexRecordSize = scan_index_format::kLongRecordSize;
  raw.functions[1].scans.assign(11, ScanFrom<StoredPoint9>(0.5F, {{300, 1}}));
  const TempDirectory directory = raw.Build();
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 14 scans\n");
  directory.Edit("_FUNC002.IDX", [](FileBytes& bytes) { PatchU32(bytes, 90, 1); });  // after offset 12
  ExpectFindings(directory, "_FUNC002.IDX has offsets that go backwards\n");
}

TEST_F(CheckTest, StatisticsOfAnotherNumberOfScans) {
  const TempDirectory directory = Sound().Build();
  FileBytes bytes = directory.Read("_FUNC001.STS");
  const std::size_t recordSize =
      std::to_integer<std::size_t>(bytes[4]) + std::to_integer<std::size_t>(bytes[5]) * 256;
  directory.Truncate("_FUNC001.STS", bytes.size() - recordSize);
  ExpectFindings(directory, "_FUNC001.STS is about 2 scans, the index about 3\n");
  directory.Truncate("_FUNC001.STS", bytes.size() - recordSize - 1);
  ExpectFindings(directory, "_FUNC001.STS does not end with a whole record\n");
  directory.Truncate("_FUNC001.STS", 7);
  ExpectFindings(directory, "_FUNC001.STS ends in its header\n");
}

TEST_F(CheckTest, StatisticsOfAnotherVersion) {
  const TempDirectory directory = Sound().Build();
  directory.Edit("_FUNC001.STS", [](FileBytes& bytes) { bytes[2] = std::byte{2}; });
  ExpectFindings(directory, "_FUNC001.STS is of version 2, which is not read\n");
}

TEST_F(CheckTest, DataFilesOfNoFunction) {
  const TempDirectory directory = Sound().Build();
  directory.WriteText("_FUNC003.DAT", "x");
  directory.WriteText("_PROC001.DAT", "x");
  ExpectFindings(directory, "_FUNC003.DAT belongs to no function\n_PROC001.DAT belongs to no function\n", 2);
}

TEST_F(CheckTest, FunctionWithoutData) {
  const TempDirectory directory = Sound().Build();
  directory.Remove("_FUNC002.DAT");
  ExpectFindings(directory, "_FUNC002.DAT is missing, so the function is not listed\n");
}

// Data format 10 has no layout.
TEST_F(CheckTest, ScansThatTheProviderCannotRead) {
  RawDirectoryBuilder raw = Sound();
  raw.functions[1].record.dataFormat = 10;
  const TempDirectory directory = raw.Build();
  ExpectFindings(directory, "2 of 2 scans of function 2 cannot be read; the first is 1\n");
  const ProcessResult converted = RunBare({"convert", PathOf(directory), "--stdout", "--threads", "3"});
  EXPECT_EQ(converted.status, 7);
  EXPECT_EQ(converted.errors, "zrml: " + PathOf(directory) +
                                  ": cannot read scan 1 of function 2 (--damaged converts what there is)\n");
  const ProcessResult anyway = RunBare({"convert", PathOf(directory), "--stdout", "--damaged"});
  EXPECT_EQ(anyway.status, 0);
  EXPECT_EQ(anyway.errors,
            "zrml: " + PathOf(directory) + ": scans of function 2 that cannot be read: 2; the first is 1\n");
  EXPECT_NE(anyway.output.find("id=\"function=2 process=0 scan=2\" defaultArrayLength=\"0\""),
            std::string::npos);
}

TEST_F(CheckTest, LostDataAreNotConvertedUnasked) {
  const TempDirectory directory = Sound().Build();
  directory.Truncate("_FUNC001.DAT", 35);
  const std::vector<std::string> arguments = {"convert", PathOf(directory), "--stdout", "--format", "tsv"};
  ExpectFailure(RunBare(arguments), 7,
                PathOf(directory) +
                    " is damaged: _FUNC001.DAT ends before 1 of 3 scans do; the first is scan 3 (--damaged "
                    "converts what there is, with zeros for lost points)");
  std::vector<std::string> anyway = arguments;
  anyway.push_back("--damaged");
  const ProcessResult converted = RunBare(anyway);
  EXPECT_EQ(converted.status, 0);
  EXPECT_EQ(converted.errors, "zrml: " + PathOf(directory) +
                                  ": _FUNC001.DAT ends before 1 of 3 scans do; the first is scan 3\n");
}

// Each leaves a directory that opens, with scans or functions less.
TEST_F(CheckTest, LostScansAndFunctionsAreNotConvertedUnasked) {
  using Damage = void (*)(const TempDirectory& directory);
  const Damage damages[] = {
      [](const TempDirectory& directory) { directory.Remove("_FUNC002.DAT"); },
      [](const TempDirectory& directory) { directory.Remove("_FUNC002.IDX"); },
      [](const TempDirectory& directory) { directory.Truncate("_FUNC002.IDX", 43); },
      [](const TempDirectory& directory) {
        directory.Truncate("_FUNC001.IDX", 22);
      },  // fewer than statistics
      [](const TempDirectory& directory) { directory.WriteText("_FUNC003.DAT", "x"); },
  };
  for (const Damage damage : damages) {
    const TempDirectory directory = Sound().Build();
    const std::vector<std::string> arguments = {"convert", PathOf(directory), "--stdout", "--format", "tsv"};
    EXPECT_EQ(RunBare(arguments).status, 0);
    damage(directory);
    EXPECT_EQ(RunBare(arguments).status, 7);
    EXPECT_EQ(RunBare({"check", PathOf(directory)}).status, 7);
  }
}

// Function 2 has no statistics that would tell how many scans there were: 12 bytes of each of two scans.
TEST_F(CheckTest, DataThatNoScanRefersTo) {
  const TempDirectory directory = Sound().Build();
  const auto size = directory.Read("_FUNC002.DAT").size();
  directory.Truncate("_FUNC002.IDX", 22);
  const std::string finding =
      "_FUNC002.DAT holds " + std::to_string(size / 2) + " bytes that no scan refers to";
  ExpectFindings(directory, finding + "\n");
  const ProcessResult converted = RunBare({"convert", PathOf(directory), "--stdout", "--format", "tsv"});
  EXPECT_EQ(converted.status, 0);
  EXPECT_EQ(converted.errors, "zrml: " + PathOf(directory) + ": " + finding + "\n");
  directory.Truncate("_FUNC002.IDX", 0);
  ExpectFindings(directory, "_FUNC002.DAT holds " + std::to_string(size) + " bytes that no scan refers to\n");
}

TEST_F(CheckTest, TracesThatCannotBeRead) {
  RawDirectoryBuilder raw = Sound();
  raw.analogNames = {"pressure", "flow"};
  raw.analogs = {{.time = 1, .words = {8, 8}}};
  const TempDirectory directory = raw.Build();
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 5 scans\n");
  directory.Truncate("_ANALOGS.DAT", 7);
  ExpectFindings(directory, "2 of 2 traces cannot be read; the first is 1\n");
}

TEST_F(CheckTest, SourceIsNotReplacedByWhatItBecomes) {
  const TempDirectory directory = Sound().Build();
  const std::string data = PathOf(directory) + "/_FUNC001.DAT";
  const FileBytes before = directory.Read("_FUNC001.DAT");
  ExpectFailure(RunBare({"convert", PathOf(directory), "-b", data, "--force"}), 2,
                data + " is a part of the source");
  EXPECT_EQ(directory.Read("_FUNC001.DAT"), before);
  ExpectFailure(RunBare({"convert", PathOf(directory), "-b", PathOf(directory), "--force"}), 2,
                PathOf(directory) + " is there and no file that could be replaced");
}

TEST_F(CheckTest, JsonHasTheDocumentedKeys) {
  const TempDirectory directory = Sound().Build();
  directory.Remove("_FUNC002.IDX");
  const ProcessResult result = Check(directory, {"--json"});
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(nlohmann::json::parse(result.output),
            (nlohmann::json{
                {"source", PathOf(directory)},
                {"sound", false},
                {"functions", 2},
                {"scans", 3},
                {"findings",
                 {{{"file", "_FUNC002.IDX"}, {"problem", "is missing, so the function has no scans"}}}}}));
}

TEST_F(CheckTest, SourceOfAnotherProviderIsReadThrough) {
  const std::string path = MakeFolder("run.raw");
  const ProcessResult result = Run({"check", path});
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(result.output,
            "1 of 2 scans of function 4 cannot be read; the first is 2\n"
            "24 of 25 absorbance spectra cannot be read; the first is 2\n"
            "1 of 2 traces cannot be read; the first is 2\n");
  ExpectOutput(Run({"check", MakeFolder("sound.raw", "valid and sound")}),
               Path("sound.raw") + " is sound: 6 functions, 7 scans\n");
}

}  // namespace
}  // namespace zrml::test
