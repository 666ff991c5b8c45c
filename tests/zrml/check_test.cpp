// zrml check on raw directories damaged by a single edit.
#include <algorithm>
#include <sstream>

#include <nlohmann/json.hpp>

#include "tests/support/sound_directory.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

class CheckTest : public ZrmlTest {
 protected:
  ProcessResult Check(const TempDirectory& directory, std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"check", PathOf(directory)});
    return Run(more);
  }

  static std::string PathOf(const TempDirectory& directory) { return Argument(directory.Path()); }

  // Status 7 and the findings, a line each, all of something that is lost.
  void ExpectFindings(const TempDirectory& directory, const std::string& findings, int count = 1) const {
    std::string lines;
    std::istringstream list(findings);
    for (std::string line; std::getline(list, line);) lines += "lost: " + line + "\n";
    ExpectLines(directory, lines, count);
  }

  void ExpectLines(const TempDirectory& directory, const std::string& lines, int count = 1) const {
    const ProcessResult result = Check(directory);
    EXPECT_EQ(result.status, 7);
    EXPECT_EQ(result.output, lines);
    EXPECT_EQ(result.errors, "zrml: " + PathOf(directory) + " is damaged: " + Counted(count));
  }

  // A finding that nothing is lost by, before others of the points: status 0, with --strict 7.
  void ExpectSuspect(const TempDirectory& directory, const std::string& line,
                     const std::string& content) const {
    const ProcessResult result = Check(directory);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output.substr(0, result.output.find('\n') + 1), "suspect: " + line + "\n");
    EXPECT_TRUE(result.output.ends_with('\n' + PathOf(directory) + " has lost nothing: " + content + "\n"))
        << result.output;
    EXPECT_EQ(result.errors, "");
    const ProcessResult strict = Check(directory, {"--strict"});
    EXPECT_EQ(strict.status, 7);
    EXPECT_EQ(strict.output, result.output);
    EXPECT_TRUE(strict.errors.starts_with("zrml: " + PathOf(directory) + " is suspect: ")) << strict.errors;
  }

  static std::string Counted(int count) {
    return std::to_string(count) + (count == 1 ? " finding\n" : " findings\n");
  }
};

// Each finding names its source; the summary says how many are damaged.
TEST_F(CheckTest, SeveralSources) {
  const TempDirectory sound = SoundDirectory().Build();
  const TempDirectory damaged = SoundDirectory().Build();
  damaged.Truncate("_FUNC001.DAT", 35);
  const std::string finding = "_FUNC001.DAT ends before 1 of 3 scans do; the first is scan 3";
  const ProcessResult result = Check(damaged, {PathOf(sound)});
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(result.output, PathOf(damaged) + ": lost: " + finding + "\n" + PathOf(sound) +
                               " is sound: 2 functions, 5 scans\n");
  EXPECT_EQ(result.errors, "zrml: 1 of 2 sources damaged\n");
  const auto list = nlohmann::json::parse(Check(damaged, {PathOf(sound), "--json"}).output);
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0]["sound"], false);
  EXPECT_EQ(list[0]["findings"][0]["message"], finding);
  EXPECT_EQ(list[1]["sound"], true);
  EXPECT_EQ(Check(sound, {PathOf(sound)}).status, 0);
}

TEST_F(CheckTest, SourceThatIsNotThereDoesNotStopTheOthers) {
  const TempDirectory sound = SoundDirectory().Build();
  const ProcessResult result = Run({"check", Path("no.raw"), PathOf(sound)});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.output, PathOf(sound) + " is sound: 2 functions, 5 scans\n");
  EXPECT_EQ(result.errors, "zrml: there is no file or folder " + Path("no.raw") +
                               "\nzrml: 1 of 2 sources are not checked: " + Path("no.raw") + "\n");
}

TEST_F(CheckTest, SoundDirectoryIsStatus0) {
  const TempDirectory directory = SoundDirectory().Build();
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 5 scans\n");
}

TEST_F(CheckTest, LowerCaseNamesAreFoundToo) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.spelling = Spelling::kLowerCase;
  const TempDirectory directory = raw.Build();
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 5 scans\n");
  directory.Truncate("_func001.dat", 35);
  ExpectFindings(directory, "_FUNC001.DAT ends before 1 of 3 scans do; the first is scan 3\n");
}

// The points end at byte 36.
TEST_F(CheckTest, DataFileThatEndsTooEarly) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Truncate("_FUNC001.DAT", 35);
  ExpectFindings(directory, "_FUNC001.DAT ends before 1 of 3 scans do; the first is scan 3\n");
  directory.Truncate("_FUNC001.DAT", 12);
  ExpectFindings(directory, "_FUNC001.DAT ends before 2 of 3 scans do; the first is scan 2\n");
  directory.Truncate("_FUNC001.DAT", 0);
  ExpectFindings(directory, "_FUNC001.DAT ends before 3 of 3 scans do; the first is scan 1\n");
}

// An offset of 0 in a later record means the end of the scan before it.
TEST_F(CheckTest, OmittedOffsetsAreComputed) {
  const TempDirectory directory = SoundDirectory().Build();
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
  const TempDirectory directory = SoundDirectory().Build();
  directory.Truncate("_FUNC001.DAT", 35);
  directory.WriteText("_FUNC001.CDT", "x");
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 5 scans\n");
}

TEST_F(CheckTest, IndexThatIsNoWholeNumberOfRecords) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Truncate("_FUNC002.IDX", 43);
  ExpectFindings(directory, "_FUNC002.IDX does not end with a whole record, so the function has no scans\n");
}

// In the second of two records, so the files of that function belong to none.
TEST_F(CheckTest, FunctionTableThatIsCut) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Truncate("_FUNCTNS.INF", 2 * 416 - 1);
  ExpectFindings(directory,
                 "_FUNCTNS.INF does not end with a whole record\n_FUNC002.DAT belongs to no function\n", 2);
}

// Scans of 12 bytes at 0, 12 and 24.
TEST_F(CheckTest, ScansThatOverlap) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Edit("_FUNC001.IDX", [](FileBytes& bytes) { PatchU32(bytes, 22, 11); });
  ExpectSuspect(directory,
                "_FUNC001.IDX has scans that begin inside an earlier one: 1 of 3; the first is scan 2",
                "2 functions, 5 scans");
  directory.Edit("_FUNC001.IDX", [](FileBytes& bytes) { PatchU32(bytes, 44, 11); });
  directory.Truncate("_FUNC001.DAT", 23);
  ExpectSuspect(directory,
                "_FUNC001.IDX has scans that begin inside an earlier one: 2 of 3; the first is scan 2",
                "2 functions, 5 scans");
}

// A copy that lost a block: 22 bytes of zeros are a scan without points. Its 12 bytes of data are left over.
TEST_F(CheckTest, HoleInTheIndex) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Edit("_FUNC001.IDX", [](FileBytes& bytes) { std::fill_n(bytes.begin() + 22, 22, std::byte{0}); });
  const std::string zeros =
      "_FUNC001.IDX has zeros in place of the records of 1 of 3 scans; the first is scan 2\n";
  ExpectFindings(directory, zeros + "_FUNC001.DAT holds 12 bytes that no scan refers to\n", 2);
  directory.Edit("_FUNC001.IDX", [](FileBytes& bytes) { std::fill_n(bytes.begin(), 22, std::byte{0}); });
  ExpectFindings(directory,
                 "_FUNC001.IDX has zeros in place of the records of 2 of 3 scans; the first is scan 1\n"
                 "_FUNC001.DAT holds 24 bytes that no scan refers to\n",
                 2);
}

// Leftover bytes are not reported then: a later scan may use those before it.
TEST_F(CheckTest, ScansInAnotherOrder) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Edit("_FUNC001.IDX", [](FileBytes& bytes) {
    PatchU32(bytes, 0, 24);
    PatchU32(bytes, 22, 12);
    PatchU32(bytes, 44, 1);
  });
  ExpectFindings(directory, "_FUNC001.IDX has offsets that go backwards, so the function has no scans\n");
}

// Derived from the second function with 6 bytes per point; the first has 4. The second step is derived from
// the first, so its own function number is ignored.
TEST_F(CheckTest, ScansOfProcessedFunctions) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[0].record.dataFormat = 11;
  raw.functions[0].scans = {ScanOf<StoredPoint11>(0.1F, {{{.magnitude = 1u << 20, .exponent = 3}}})};
  raw.functions[0].statistics.reset();
  raw.history = {{.processNumber = 1, .derivedFrom = 0, .rawFunctionNumber = 2},
                 {.processNumber = 2, .derivedFrom = 1, .rawFunctionNumber = 1}};
  for (const int number : {1, 2}) {
    for (const float minutes : {0.1F, 0.2F})
      raw.processed[number].scans.push_back(ScanFrom<StoredPoint9>(minutes, {{100, 7}, {200, 9}}));
  }
  const TempDirectory directory = raw.Build();
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 4 functions, 7 scans\n");
  directory.Truncate("_PROC002.DAT", 23);
  ExpectFindings(directory, "_PROC002.DAT ends before 1 of 2 scans do; the first is scan 2\n");
}

TEST_F(CheckTest, ProcessedFunctionOfNoFunction) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.history = {{.processNumber = 1, .derivedFrom = 0, .rawFunctionNumber = 40}};
  raw.processed[1].scans = {ScanFrom<StoredPoint9>(0.1F, {{100, 7}})};
  const TempDirectory directory = raw.Build();
  ExpectFindings(directory, "_PROC001.DAT goes back to no function, so it is not listed\n");
}

// Not even for the superuser, who may read any file.
TEST_F(CheckTest, FileThatCannotBeOpenedIsNotMissing) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Remove("_FUNC002.IDX");
  directory.MakeDirectory("_FUNC002.IDX");
  ExpectFindings(directory, "_FUNC002.IDX cannot be opened, so the function has no scans\n");
}

#ifndef _WIN32  // where file names are case-sensitive
TEST_F(CheckTest, NamesAsProvidersWriteThem) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Rename("_FUNC002.IDX", "_FUNC002.idx");
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 5 scans\n");
}
#endif

TEST_F(CheckTest, IndexThatIsMissing) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Remove("_FUNC002.IDX");
  ExpectFindings(directory, "_FUNC002.IDX is missing, so the function has no scans\n");
}

// 15 records of 22 bytes, or 11 of 30; in neither size do they ascend.
TEST_F(CheckTest, IndexThatGoesBackwards) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].indexRecordSize = masslynx::scan_index_format::kLongRecordSize;
  raw.functions[1].scans.assign(11, ScanFrom<StoredPoint9>(0.5F, {{300, 1}}));
  const TempDirectory directory = raw.Build();
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 14 scans\n");
  directory.Edit("_FUNC002.IDX", [](FileBytes& bytes) { PatchU32(bytes, 90, 1); });  // after offset 12
  ExpectSuspect(directory, "_FUNC002.IDX has offsets that go backwards", "2 functions, 14 scans");
}

TEST_F(CheckTest, StatisticsOfAnotherNumberOfScans) {
  const TempDirectory directory = SoundDirectory().Build();
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
  const TempDirectory directory = SoundDirectory().Build();
  directory.Edit("_FUNC001.STS", [](FileBytes& bytes) { bytes[2] = std::byte{2}; });
  ExpectSuspect(directory, "_FUNC001.STS is of version 2, which is not read", "2 functions, 5 scans");
}

TEST_F(CheckTest, DataFilesOfNoFunction) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.WriteText("_FUNC003.DAT", "x");
  directory.WriteText("_PROC001.DAT", "x");
  ExpectFindings(directory, "_FUNC003.DAT belongs to no function\n_PROC001.DAT belongs to no function\n", 2);
}

// An acquisition stopped before this function, with empty files.
TEST_F(CheckTest, FunctionThatWasNeverAcquiredIsSound) {
  const TempDirectory directory = SoundDirectory().Build();
  for (const char* name : {"_FUNC002.DAT", "_FUNC002.IDX", "_FUNC002.STS", "_FUNC003.DAT", "_PROC001.IDX"})
    directory.WriteText(name, "");
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 3 scans\n");
}

TEST_F(CheckTest, EmptyIndexBesideDriftBins) {
  const TempDirectory directory = SoundDirectory().Build();
  const auto size = directory.Read("_FUNC002.DAT").size();
  directory.WriteText("_FUNC002.CDT", "x");
  directory.WriteText("_FUNC002.IDX", "");
  ExpectFindings(directory,
                 "_FUNC002.DAT holds " + std::to_string(size) + " bytes, but the index is empty\n");
}

// The data file of a processed function is missing, so it is not listed; its index still exists.
TEST_F(CheckTest, IndexOfNoFunction) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.WriteText("_PROC001.IDX", "x");
  directory.WriteText("_FUNC009.CDT", "x");
  directory.WriteText("_FUNC003.IDX", "x");
  directory.WriteText("_FUNC003.DAT", "x");
  ExpectFindings(directory,
                 "_FUNC003.DAT belongs to no function\n_FUNC009.CDT belongs to no function\n"
                 "_PROC001.IDX belongs to no function\n",
                 3);
}

TEST_F(CheckTest, FunctionTableThatCannotBeOpened) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Remove("_FUNCTNS.INF");
  directory.MakeDirectory("_FUNCTNS.INF");
  ExpectFindings(directory, "_FUNCTNS.INF cannot be opened\n");
}

TEST_F(CheckTest, DriftBinsThatCannotBeOpened) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.MakeDirectory("_FUNC001.CDT");
  ExpectFindings(directory, "_FUNC001.CDT cannot be opened, so the function has no drift bins\n");
}

// The last scan of format 6 is stored like format 4: seven points are two groups of 10 bytes, those of the
// scan before it seven words.
TEST_F(CheckTest, LastScanOfMixedDataThatIsCut) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.functions[0].record.dataFormat = 6;
  raw.functions[0].scans = {{.index = {.pointCount = 7}, .data = FileBytes(14)},
                            {.index = {.pointCount = 7}, .data = FileBytes(20)}};
  const TempDirectory directory = raw.Build();
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 1 function, 2 scans\n");
  directory.Truncate("_FUNC001.DAT", 33);
  ExpectFindings(directory, "_FUNC001.DAT ends before 1 of 2 scans do; the first is scan 2\n");
  // When its offset is left out the provider counts groups for the scan before it, too: from byte 20 on.
  directory.Edit("_FUNC001.IDX", [](FileBytes& bytes) { PatchU32(bytes, 22, 0); });
  directory.Write("_FUNC001.DAT", FileBytes(40));
  EXPECT_EQ(Check(directory).status, 0);
  directory.Truncate("_FUNC001.DAT", 39);
  ExpectFindings(directory, "_FUNC001.DAT ends before 1 of 2 scans do; the first is scan 2\n");
}

TEST_F(CheckTest, FunctionWithoutData) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Remove("_FUNC002.DAT");
  ExpectFindings(directory, "_FUNC002.DAT is missing, so its scans have no points\n");
}

// Data format 10 has no layout.
TEST_F(CheckTest, ScansThatTheProviderCannotRead) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].record.dataFormat = 10;
  const TempDirectory directory = raw.Build();
  ExpectFindings(directory, "_FUNC002.DAT has 2 of 2 scans that cannot be read; the first is scan 1\n");
}

// Function 2 has no statistics to show how many scans there were: two scans of 12 bytes each.
TEST_F(CheckTest, DataThatNoScanRefersTo) {
  const TempDirectory directory = SoundDirectory().Build();
  const auto size = directory.Read("_FUNC002.DAT").size();
  directory.Truncate("_FUNC002.IDX", 22);
  const std::string finding =
      "_FUNC002.DAT holds " + std::to_string(size / 2) + " bytes that no scan refers to";
  ExpectFindings(directory, finding + "\n");
  directory.Truncate("_FUNC002.IDX", 0);
  ExpectFindings(directory,
                 "_FUNC002.DAT holds " + std::to_string(size) + " bytes, but the index is empty\n");
}

TEST_F(CheckTest, TracesThatCannotBeRead) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.analogNames = {"pressure", "flow"};
  raw.analogs = {{.time = 1, .words = {8, 8}}};
  const TempDirectory directory = raw.Build();
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 5 scans\n");
  directory.Truncate("_ANALOGS.DAT", 7);
  ExpectFindings(directory, "the run has 2 of 2 traces that cannot be read; the first is trace 1\n");
}

class LostTracesTest : public CheckTest {
 protected:
  void ExpectLost(const TempDirectory& directory, const std::string& finding) const {
    ExpectFindings(directory, finding + "\n");
  }

  static TempDirectory WithAnalogs() {
    RawDirectoryBuilder raw = SoundDirectory();
    raw.analogNames = {"pressure", "flow"};
    raw.analogs = {{.time = 1, .words = {8, 8}}};
    return raw.Build();
  }

  static TempDirectory WithChromatograms() {
    RawDirectoryBuilder raw = SoundDirectory();
    raw.chroms = {{"pressure", {{1, 2}}}, {"flow", {{1, 2}}}};
    return raw.Build();
  }
};

TEST_F(LostTracesTest, ListOfAnalogChannels) {
  const TempDirectory directory = WithAnalogs();
  directory.Truncate("_ANALOGS.INF", 2 * 85 - 1);
  ExpectLost(directory, "_ANALOGS.INF does not end with a whole record, so there are no traces");
  directory.Truncate("_ANALOGS.INF", 0);
  ExpectLost(directory, "_ANALOGS.INF is empty, so there are no traces");
  directory.Remove("_ANALOGS.INF");
  ExpectLost(directory, "_ANALOGS.INF is missing, so there are no analog traces");
  directory.MakeDirectory("_ANALOGS.INF");
  ExpectLost(directory, "_ANALOGS.INF cannot be opened, so there are no analog traces");
}

TEST_F(LostTracesTest, ValuesOfAnalogChannels) {
  const TempDirectory directory = WithAnalogs();
  directory.Truncate("_ANALOGS.DAT", 0);
  ExpectLost(directory, "_ANALOGS.DAT is empty");
}

// A run that was stopped before its first scan.
TEST_F(LostTracesTest, ChannelsOfARunWithoutScansMayBeEmpty) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.analogNames = {"pressure"};
  const TempDirectory directory = raw.Build();
  directory.WriteText("_ANALOGS.DAT", "");
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 1 function, 0 scans\n");
}

// Its header is 8 bytes, two records of 85 follow.
TEST_F(LostTracesTest, ListOfChromatograms) {
  const TempDirectory directory = WithChromatograms();
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 5 scans\n");
  const FileBytes whole = directory.Read("_CHROMS.INF");
  directory.Truncate("_CHROMS.INF", 8 + 2 * 85 - 1);
  ExpectLost(directory, "_CHROMS.INF does not end with a whole record");
  directory.Truncate("_CHROMS.INF", 8 + 85);
  ExpectLost(directory, "_CHRO002.DAT belongs to no trace");
  directory.Truncate("_CHROMS.INF", 7);
  ExpectLost(directory, "_CHROMS.INF ends in its header, so there are no traces");
  directory.Write("_CHROMS.INF", whole);
  directory.Edit("_CHROMS.INF", [](FileBytes& bytes) { PatchU16(bytes, 0, 179); });
  ExpectLost(directory, "_CHROMS.INF ends before its records, so there are no traces");
  directory.Edit("_CHROMS.INF", [](FileBytes& bytes) { PatchU16(bytes, 4, 84); });
  ExpectLost(directory, "_CHROMS.INF has a header that is not known, so there are no traces");
  directory.Remove("_CHROMS.INF");
  ExpectLost(directory, "_CHROMS.INF is missing, so there are no traces");
  directory.MakeDirectory("_CHROMS.INF");
  ExpectLost(directory, "_CHROMS.INF cannot be opened, so there are no traces");
}

// The list of analog channels hides the chromatograms, even when it is empty.
TEST_F(LostTracesTest, EmptyListThatHidesChromatograms) {
  const TempDirectory directory = WithChromatograms();
  directory.WriteText("_ANALOGS.INF", "");
  ExpectLost(directory, "_ANALOGS.INF is empty, so there are no traces");
}

TEST_F(LostTracesTest, EmptyListOfARunWithoutChromatogramsIsSound) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.WriteText("_CHROMS.INF", "");
  ExpectOutput(Check(directory), PathOf(directory) + " is sound: 2 functions, 5 scans\n");
}

// Otherwise names and values of the functions would be missing.
TEST_F(CheckTest, LabelsThatCannotBeOpened) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.MakeDirectory("_EXTERN.INF");
  ExpectFindings(directory, "_EXTERN.INF cannot be opened\n");
}

TEST_F(CheckTest, HeaderThatCannotBeOpened) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Remove("_HEADER.TXT");
  ExpectFailure(Check(directory), 4, PathOf(directory) + " is no raw directory: it has no _HEADER.TXT");
  directory.MakeDirectory("_HEADER.TXT");
  ExpectFindings(directory, "_HEADER.TXT cannot be opened\n");
}

TEST_F(CheckTest, JsonHasTheDocumentedKeys) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Remove("_FUNC002.IDX");
  const ProcessResult result = Check(directory, {"--json"});
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(nlohmann::json::parse(result.output),
            (nlohmann::json{{"source", PathOf(directory)},
                            {"sound", false},
                            {"functions", 2},
                            {"scans", 3},
                            {"absorbanceScans", nullptr},
                            {"findings",
                             {{{"code", "index-missing"},
                               {"severity", "lost"},
                               {"file", "_FUNC002.IDX"},
                               {"sample", nullptr},
                               {"function", 2},
                               {"count", 1},
                               {"first", nullptr},
                               {"message", "_FUNC002.IDX is missing, so the function has no scans"}}}}}));
}

TEST_F(CheckTest, AbsorbanceIsCounted) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].record.type = 12;  // absorbance
  const TempDirectory directory = raw.Build();
  const std::string path = Argument(directory.Path() / "_FUNC002.DAT");
  ExpectOutput(Run({"check", path}), path + " is sound: 1 function, 2 scans\n");
  const std::string other = Argument(directory.Path() / "_FUNC001.DAT");
  const std::string counts = " is sound: 1 function, 3 scans, 2 absorbance scans\n";
  ExpectOutput(Run({"check", other}), other + counts);
  ExpectOutput(Check(directory), PathOf(directory) + counts);
  const auto jsonOf = [&](const std::string& source) {
    return nlohmann::json::parse(Run({"check", source, "--json"}).output);
  };
  const auto json = jsonOf(PathOf(directory));
  EXPECT_EQ(json["scans"], 3);
  EXPECT_EQ(json["absorbanceScans"], 2);
  const auto alone = jsonOf(path);
  EXPECT_EQ(alone["scans"], 2) << "where absorbance is the only function";
  EXPECT_EQ(alone["absorbanceScans"], 2);
  EXPECT_EQ(jsonOf(other)["absorbanceScans"], 2) << "which are converted beside the scans of any data file";
}

// Data format 10 has no layout.
TEST_F(CheckTest, TracesAndAbsorbanceAreReadThrough) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].record.type = 12;  // absorbance
  raw.functions[1].record.dataFormat = 10;
  const TempDirectory directory = raw.Build();
  ExpectFindings(directory, "_FUNC002.DAT has 2 of 2 scans that cannot be read; the first is scan 1\n");
}

}  // namespace
}  // namespace zrml::test
