// zrml convert on sources damaged by a single edit: what is refused, and what is reported.
#include <algorithm>
#include <fstream>

#include "tests/support/sound_directory.h"
#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

class DamagedConversionTest : public ZrmlTest {
 protected:
  static std::string PathOf(const TempDirectory& directory) { return Argument(directory.Path()); }

  ProcessResult Convert(const TempDirectory& directory, std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"convert", PathOf(directory), "--stdout"});
    return Run(more);
  }

  // Refused where traces are converted: only in mzML.
  void ExpectTracesLost(const TempDirectory& directory, const std::string& finding) const {
    ExpectFailure(Convert(directory), 7,
                  PathOf(directory) + " is damaged: " + finding + " (--damaged converts what there is)");
    EXPECT_EQ(Convert(directory, {"--damaged"}).errors, "zrml: " + PathOf(directory) + ": " + finding + "\n");
    EXPECT_EQ(Convert(directory, {"--format", "tsv"}).errors, "");
  }
};

TEST_F(DamagedConversionTest, FunctionTableThatIsCut) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Truncate("_FUNCTNS.INF", 2 * 416 - 1);
  ExpectFailure(
      Convert(directory), 7,
      PathOf(directory) +
          " is damaged: _FUNCTNS.INF does not end with a whole record (--damaged converts what there is)");
}

TEST_F(DamagedConversionTest, ScansOfProcessedFunctions) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.history = {{.processNumber = 1, .derivedFrom = 0, .rawFunctionNumber = 2},
                 {.processNumber = 2, .derivedFrom = 1, .rawFunctionNumber = 1}};
  for (const int number : {1, 2}) {
    for (const float minutes : {0.1F, 0.2F})
      raw.processed[number].scans.push_back(ScanFrom<StoredPoint9>(minutes, {{100, 7}, {200, 9}}));
  }
  const TempDirectory directory = raw.Build();
  directory.Truncate("_PROC002.DAT", 23);
  EXPECT_EQ(Convert(directory, {"--function", "1-2,p1"}).status, 0);
  EXPECT_EQ(Convert(directory, {"--function", "p2"}).status, 7);
}

// Data format 10 has no layout.
TEST_F(DamagedConversionTest, ScansThatCannotBeRead) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].record.dataFormat = 10;
  const TempDirectory directory = raw.Build();
  const ProcessResult converted = Convert(directory, {"--threads", "3"});
  EXPECT_EQ(converted.status, 7);
  EXPECT_EQ(converted.errors, "zrml: " + PathOf(directory) +
                                  ": cannot read scan 1 of function 2 (--damaged converts what there is)\n");
  const ProcessResult anyway = Convert(directory, {"--damaged"});
  EXPECT_EQ(anyway.status, 0);
  EXPECT_EQ(anyway.errors, "zrml: " + PathOf(directory) +
                               ": _FUNC002.DAT: scans of function 2 that cannot be read: 2 (1-2)\n");
  EXPECT_NE(anyway.output.find("id=\"function=2 process=0 scan=2\" defaultArrayLength=\"0\""),
            std::string::npos);
}

// Of the second function, whose record has 416 bytes. The first one has 3 scans at level 1. The content of
// the file lists each type of spectrum once more.
TEST_F(DamagedConversionTest, FunctionWhoseRecordIsZeros) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Edit("_FUNCTNS.INF",
                 [](FileBytes& bytes) { std::fill(bytes.begin() + 416, bytes.end(), std::byte{0}); });
  EXPECT_EQ(Convert(directory).status, 7);
  EXPECT_EQ(Convert(directory, {"--function", "1"}).errors, "");
  const ProcessResult converted = Convert(directory, {"--damaged"});
  EXPECT_EQ(
      converted.errors,
      "zrml: " + PathOf(directory) +
          ": _FUNCTNS.INF has zeros in place of function 2, so its type and the layout of its scans are "
          "not known\nzrml: " +
          PathOf(directory) + ": _FUNC002.DAT: scans of function 2 that cannot be read: 2 (1-2)\n");
  const auto count = [&](const std::string& text) {
    int found = 0;
    for (std::size_t at = converted.output.find(text); at != std::string::npos;
         at = converted.output.find(text, at + 1))
      ++found;
    return found;
  };
  EXPECT_EQ(count("name=\"ms level\""), 3);
  EXPECT_EQ(count("name=\"positive scan\""), 3);
  EXPECT_EQ(count("name=\"MS1 spectrum\""), 3 + 1);
  EXPECT_EQ(count("name=\"mass spectrum\""), 2 + 1);
  EXPECT_EQ(count("name=\"spectrum representation\""), 2);
  EXPECT_EQ(count("name=\"scan start time\""), 5);
  EXPECT_EQ(count("name=\"function name\" type=\"xsd:string\" value=\"Unknown\""), 2);
  EXPECT_EQ(count("id=\"function=2 process=0 scan=2\" defaultArrayLength=\"0\""), 1);
  EXPECT_EQ(count("id=\"TIC\" defaultArrayLength=\"3\""), 1);
  EXPECT_EQ(count("id=\"function 2 TIC\" defaultArrayLength=\"2\""), 1);
  EXPECT_EQ(Convert(directory, {"--damaged", "--format", "tsv"}).output.find("\n2\t"), std::string::npos);
  EXPECT_NE(Run({"info", PathOf(directory), "--json"}).output.find("\"msLevel\": null"), std::string::npos);
}

// 6 bytes of the second of two scans.
TEST_F(DamagedConversionTest, DataThatNoScanRefersTo) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Truncate("_FUNC002.IDX", 22);
  const std::string finding = "_FUNC002.DAT holds 6 bytes that no scan refers to";
  ExpectFailure(Convert(directory, {"--format", "tsv"}), 7,
                PathOf(directory) + " is damaged: " + finding + " (--damaged converts what there is)");
  const ProcessResult converted = Convert(directory, {"--format", "tsv", "--damaged"});
  EXPECT_EQ(converted.status, 0);
  EXPECT_EQ(converted.errors, "zrml: " + PathOf(directory) + ": " + finding + "\n");
  directory.Truncate("_FUNC002.IDX", 0);
  EXPECT_EQ(Convert(directory, {"--format", "tsv"}).status, 7);
}

TEST_F(DamagedConversionTest, TracesThatAreLost) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.analogNames = {"pressure", "flow"};
  raw.analogs = {{.time = 1, .words = {8, 8}}};
  const TempDirectory directory = raw.Build();
  directory.Truncate("_ANALOGS.INF", 2 * 85 - 1);
  ExpectTracesLost(directory, "_ANALOGS.INF does not end with a whole record, so there are no traces");
  directory.Remove("_ANALOGS.INF");
  ExpectTracesLost(directory, "_ANALOGS.INF is missing, so there are no analog traces");
}

TEST_F(DamagedConversionTest, LabelsThatCannotBeOpened) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.MakeDirectory("_EXTERN.INF");
  EXPECT_EQ(Convert(directory, {"--format", "tsv"}).status, 7);
}

TEST_F(DamagedConversionTest, HeaderThatCannotBeOpened) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Remove("_HEADER.TXT");
  directory.MakeDirectory("_HEADER.TXT");
  ExpectFailure(Convert(directory, {"--damaged"}), 7,
                PathOf(directory) + " is damaged: _HEADER.TXT cannot be opened");
}

struct Selected {
  std::vector<std::string> options;
  int status;
};

class DamageOutsideTest : public DamagedConversionTest {
 protected:
  void ExpectStatus(const TempDirectory& directory, const std::vector<Selected>& cases) const {
    for (const Selected& selected : cases) {
      std::vector<std::string> arguments = {"convert", PathOf(directory) + file_, "--stdout"};
      arguments.insert(arguments.end(), selected.options.begin(), selected.options.end());
      const ProcessResult result = Run(arguments);
      EXPECT_EQ(result.status, selected.status) << testing::PrintToString(selected.options) << result.errors;
      EXPECT_EQ(result.errors.empty(), selected.status == 0) << result.errors;
    }
  }

  std::string file_;  // of the directory, with a slash
};

// Precursors of MS/MS scans are in the statistics.
TEST_F(DamagedConversionTest, LostStatisticsAreNotConvertedUnasked) {
  using Damage = void (*)(const TempDirectory& directory);
  const Damage damages[] = {
      [](const TempDirectory& directory) { directory.Truncate("_FUNC001.STS", 7); },
      [](const TempDirectory& directory) {
        directory.Truncate("_FUNC001.STS", directory.Read("_FUNC001.STS").size() - 1);
      },
      [](const TempDirectory& directory) {
        directory.Remove("_FUNC001.STS");
        directory.MakeDirectory("_FUNC001.STS");
      },
  };
  for (const Damage damage : damages) {
    const TempDirectory directory = SoundDirectory().Build();
    damage(directory);
    EXPECT_EQ(Run({"convert", PathOf(directory), "--stdout", "--function", "1"}).status, 7);
    EXPECT_EQ(Run({"convert", PathOf(directory), "--stdout", "--function", "2"}).status, 0);
  }
}

TEST_F(DamagedConversionTest, LostDataAreNotConvertedUnasked) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Truncate("_FUNC001.DAT", 35);
  const std::vector<std::string> arguments = {"convert", PathOf(directory), "--stdout", "--format", "tsv"};
  ExpectFailure(Run(arguments), 7,
                PathOf(directory) +
                    " is damaged: _FUNC001.DAT ends before 1 of 3 scans do; the first is scan 3 (--damaged "
                    "converts what there is)");
  std::vector<std::string> anyway = arguments;
  anyway.push_back("--damaged");
  const ProcessResult converted = Run(anyway);
  EXPECT_EQ(converted.status, 0);
  EXPECT_EQ(converted.errors, "zrml: " + PathOf(directory) +
                                  ": _FUNC001.DAT ends before 1 of 3 scans do; the first is scan 3\nzrml: " +
                                  PathOf(directory) +
                                  ": _FUNC001.DAT: scans of function 1 that have lost points: 1 (3)\n");
}

// The second of three index records is left.
TEST_F(DamagedConversionTest, LostScansWithOthersBetweenThemAreListed) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Edit("_FUNC001.IDX", [](FileBytes& bytes) {
    std::fill_n(bytes.begin(), 22, std::byte{0});
    std::fill_n(bytes.begin() + 44, 22, std::byte{0});
  });
  const ProcessResult converted = Convert(directory, {"--damaged", "--function", "1"});
  EXPECT_EQ(converted.status, 0);
  EXPECT_NE(converted.errors.find("_FUNC001.IDX has zeros in place of the records of 2 of 3 scans; the first "
                                  "is scan 1 (1, 3)\n"),
            std::string::npos)
      << converted.errors;
}

// Each leaves a directory that opens, with fewer scans or functions.
TEST_F(DamagedConversionTest, LostScansAndFunctionsAreNotConvertedUnasked) {
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
    const TempDirectory directory = SoundDirectory().Build();
    const std::vector<std::string> arguments = {"convert", PathOf(directory), "--stdout", "--format", "tsv"};
    EXPECT_EQ(Run(arguments).status, 0);
    damage(directory);
    EXPECT_EQ(Run(arguments).status, 7);
    EXPECT_EQ(Run({"check", PathOf(directory)}).status, 7);
  }
}

TEST_F(DamageOutsideTest, OfOtherFunctionsDoesNotMatter) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.labels = {CreatorLine("4.1"), FunctionHeading(2, "REFERENCE")};  // a lock mass
  const TempDirectory directory = raw.Build();
  directory.Truncate("_FUNC002.DAT", 5);
  ExpectStatus(directory, {{{}, 7},
                           {{"--function", "1"}, 0},
                           {{"--function", "2"}, 7},
                           {{"--function", "1-"}, 7},
                           {{"--exclude-lock-mass"}, 0},
                           {{"--ms-level", "2"}, 2}});
  file_ = "/_FUNC001.DAT";
  ExpectStatus(directory, {{{}, 0}});
  file_ = "/_FUNC002.DAT";  // its only function
  ExpectStatus(directory, {{{}, 7}, {{"--function", "1"}, 2}, {{"--function", "2"}, 7}});
}

// Three scans of 12 bytes, at 0.1, 0.2 and 0.3 minutes: one byte of the last is lost.
TEST_F(DamageOutsideTest, OfOtherScansDoesNotMatter) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Truncate("_FUNC001.DAT", 35);
  ExpectStatus(directory, {{{}, 7},
                           {{"--scans", "1-2"}, 0},
                           {{"--scans", "1-2", "--damaged"}, 0},
                           {{"--scans", "2-"}, 7},
                           {{"--rt", "-0.2"}, 0},
                           {{"--rt", "0.25-"}, 7},
                           {{"--scans", "3", "--rt", "-0.2"}, 2},
                           {{"--scans", "1-2", "--function", "1", "--format", "tsv"}, 0}});
  const TempDirectory zeroed = SoundDirectory().Build();
  zeroed.Edit("_FUNC001.DAT",
              [](FileBytes& bytes) { std::fill(bytes.begin() + 24, bytes.end(), std::byte{0}); });
  ExpectStatus(zeroed, {{{}, 7}, {{"--scans", "1-2"}, 0}, {{"--scans", "3"}, 7}});
}

// The header and the descriptors are left, and records of the first two of three scans.
TEST_F(DamageOutsideTest, StatisticsOfOtherScansDoNotMatter) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[0].statistics->recordSize = 40;
  const TempDirectory directory = raw.Build();
  directory.Truncate("_FUNC001.STS", directory.Read("_FUNC001.STS").size() - 40);
  ExpectStatus(directory, {{{}, 7}, {{"--scans", "1-2"}, 0}, {{"--scans", "3"}, 7}});
}

// The function of products, at 0.1 and 0.2 minutes, has no statistics.
TEST_F(DamageOutsideTest, PrecursorsOfOtherScansDoNotMatter) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].record.type = 16;  // TOF MS/MS
  raw.functions[1].record.setMass = 500;
  const TempDirectory directory = raw.Build();
  ExpectStatus(directory, {{{"--strict"}, 7}, {{"--strict", "--rt", "0.25-"}, 0}});
}

// The second record has the earliest time and the last place in the data file: its points are cut.
TEST_F(DamagedConversionTest, ScansHaveTheNumbersOfTheirTimes) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[0].scans[2].index.retentionTime = 0.05F;
  const TempDirectory directory = raw.Build();
  directory.Truncate("_FUNC001.DAT", 20);
  EXPECT_EQ(Run({"check", PathOf(directory)}).output,
            "suspect: _FUNC001.IDX has times that go backwards at 1 of 3 scans; the first is record 3\n"
            "lost: _FUNC001.DAT ends before 2 of 3 scans do; the first is scan 1\n");
  EXPECT_EQ(Convert(directory, {"--scans", "2", "--function", "1"}).status, 0);
  EXPECT_EQ(Convert(directory, {"--scans", "1", "--function", "1"}).status, 7);
}

TEST_F(DamageOutsideTest, LostFunctionCountsForItsNumber) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Remove("_FUNC002.DAT");
  ExpectStatus(directory, {{{}, 7}, {{"--function", "1"}, 0}, {{"--function", "2"}, 7}});
  const TempDirectory another = SoundDirectory().Build();
  another.Remove("_FUNC001.DAT");
  ExpectStatus(another, {{{"--function", "1"}, 7}});
}

TEST_F(DamageOutsideTest, AbsorbanceCountsByItsNumber) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].record.type = 12;
  const TempDirectory directory = raw.Build();
  ExpectStatus(directory, {{{}, 0}});
  directory.Truncate("_FUNC002.DAT", 5);
  const std::vector<std::string> asked = {"--absorbance"};
  ExpectStatus(directory, {{{}, 0}, {asked, 7}, {{"--function", "1"}, 0}, {{"--format", "tsv"}, 0}});
  directory.Remove("_FUNC002.DAT");  // and with it the trace of the total
  ExpectStatus(directory, {{{}, 7},
                           {asked, 7},
                           {{"--function", "1"}, 7},
                           {{"--format", "tsv"}, 0},
                           {{"--format", "tsv", "--function", "1-"}, 0}});
}

// Of which the trace of the total absorbance is made, whatever else is asked for.
TEST_F(DamageOutsideTest, IndexOfAbsorbanceCountsForItsTrace) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].record.type = 12;
  using Damage = void (*)(const TempDirectory& directory);
  const Damage damages[] = {
      [](const TempDirectory& directory) { directory.Truncate("_FUNC002.IDX", 22); },
      [](const TempDirectory& directory) { directory.Truncate("_FUNC002.IDX", 43); },
      [](const TempDirectory& directory) { directory.Remove("_FUNC002.IDX"); },
      [](const TempDirectory& directory) {
        directory.Edit("_FUNC002.IDX",
                       [](FileBytes& bytes) { std::fill(bytes.begin() + 22, bytes.end(), std::byte{0}); });
      },
  };
  for (const Damage damage : damages) {
    const TempDirectory directory = raw.Build();
    damage(directory);
    ExpectStatus(directory, {{{}, 7},
                             {{"--function", "1"}, 7},
                             {{"--ms-level", "1", "--strict"}, 7},
                             {{"--damaged", "--quiet"}, 0},
                             {{"--format", "tsv"}, 0}});
    const std::string file = Argument(directory.Path() / "_FUNC001.DAT");
    EXPECT_EQ(Run({"check", file}).status, 7);
    EXPECT_EQ(Run({"convert", file, "--stdout"}).status, 7);
    EXPECT_EQ(Run({"convert", file, "--stdout", "--absorbance"}).status, 7);
    EXPECT_EQ(Run({"convert", file, "--stdout", "--format", "tsv"}).status, 0);
  }
}

TEST_F(DamagedConversionTest, LockMassesWithoutNamesAreReported) {
  const TempDirectory directory = SoundDirectory().Build();
  const ProcessResult result = Run({"convert", PathOf(directory), "--stdout", "--exclude-lock-mass"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "zrml: " + PathOf(directory) +
                               ": _EXTERN.INF is missing, so no function is known to be a lock mass\n");
}

// Without the maker's library, which test machines lack.
TEST_F(DamagedConversionTest, OmittedDriftBinsAreReported) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.WriteText("_FUNC001.CDT", "x");
  const ProcessResult result = Run({"convert", PathOf(directory), "--stdout"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors,
            "zrml: " + PathOf(directory) +
                ": the drift bins of function 1 are left out: the library that reads them is missing\n");
  EXPECT_EQ(Run({"convert", PathOf(directory), "--stdout", "--function", "2"}).errors, "");
}

TEST_F(DamagedConversionTest, SourceIsNotReplacedByItsOutput) {
  const TempDirectory directory = SoundDirectory().Build();
  const std::string data = PathOf(directory) + "/_FUNC001.DAT";
  const FileBytes before = directory.Read("_FUNC001.DAT");
  ExpectFailure(Run({"convert", PathOf(directory), "-b", data, "--force"}), 2,
                data + " is a part of the source");
  EXPECT_EQ(directory.Read("_FUNC001.DAT"), before);
  ExpectFailure(Run({"convert", PathOf(directory), "-b", PathOf(directory), "--force"}), 2,
                PathOf(directory) + " is a folder; -o takes one, -b a file");
}

struct CutReport {
  std::size_t size;
  const char* finding;
  int sample;        // the only one refused
  const char* name;  // of the sample in messages, after the path
};

// In the last of three samples, or in a list of a spectrum of a function of the first.
TEST_F(DamagedConversionTest, ReportThatIsCut) {
  const std::string path = Make("vials.rpt", Vials());
  const std::string whole = ReadBytes(folder_ / "vials.rpt");
  const CutReport cuts[] = {
      {whole.rfind('}'), "vials.rpt ends inside 1 block", 3, ", sample 3"},
      {whole.rfind('{'), "vials.rpt ends where its last sample begins", 3, ", sample 3"},
      {whole.find("100\t100"), "vials.rpt ends inside 4 blocks", 1, ""}};
  for (const CutReport& cut : cuts) {
    std::filesystem::resize_file(folder_ / "vials.rpt", cut.size);
    std::vector<std::string> convert = {"convert", path, "--stdout", "--sample", std::to_string(cut.sample)};
    ExpectFailure(Run(convert), 7,
                  path + cut.name + " is damaged: " + cut.finding + " (--damaged converts what there is)");
    convert.push_back("--damaged");
    const ProcessResult converted = Run(convert);
    EXPECT_EQ(converted.status, 0);
    EXPECT_EQ(converted.errors, "zrml: " + path + cut.name + ": " + cut.finding + "\n");
    EXPECT_EQ(Run({"convert", path, "--stdout", "--sample", "1"}).status, cut.sample == 1 ? 7 : 0);
  }
}

// Functions without spectra and chromatograms are not listed, and every worker must see the remaining ones:
// the spectrum of the last of three, of which the middle one is empty.
TEST_F(DamagedConversionTest, WorkersSeeTheSameFunctions) {
  const auto function = [](const char* name, const ReportLines& content) {
    return FunctionBlock(Keys({{"Description", name}}) + content);
  };
  const auto scan = [](double mass) {
    return SpectrumBlock(Keys({{"Time", "1"}, {"BPI", "100"}, {"TIC", "7"}}), {{mass, 100}});
  };
  const ReportLines report = SampleBlock(function("empty", {}) + function("one", scan(111)) +
                                         function("hollow", {}) + function("two", scan(222) + scan(333)));
  const std::string path = Make("vials.rpt", report);
  for (const char* threads : {"1", "2", "3", "8"}) {
    ExpectOutput(
        Run({"convert", path, "--stdout", "--format", "tsv", "--threads", threads}),
        "function\tscan\ttime\tm/z\tintensity\n2\t1\t1\t111\t100\n4\t1\t1\t222\t100\n4\t2\t1\t333\t100\n");
  }
}

// Whether its spectrum is of peaks is not said by "false": it is written as it is.
TEST_F(DamagedConversionTest, CentroidsAreNotMadeOfWhatMayBePeaks) {
  const std::string path = Make(
      "vials.rpt",
      SampleBlock(FunctionBlock(SpectrumBlock(Keys({{"Time", "1"}, {"BPI", "4"}, {"Continuum", "false"}}),
                                              {{99, 25}, {100, 100}, {101, 25}}))));
  const std::string front = "zrml: " + path + ": ";
  const ProcessResult result = Run({"convert", path, "--stdout", "--format", "tsv", "--centroid"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output,
            "function\tscan\ttime\tm/z\tintensity\n1\t1\t1\t99\t1\n1\t1\t1\t100\t4\n1\t1\t1\t101\t1\n");
  EXPECT_EQ(
      result.errors,
      front + "vials.rpt has a Continuum that is neither TRUE nor FALSE, or behind other text: line 9\n" +
          front +
          "scans of function 1 of which it is not known whether they are profiles, so no centroids were "
          "made of them: 1 (1)\n");
  EXPECT_EQ(
      Run({"convert", path, "--stdout", "--format", "tsv"}).errors,
      front + "vials.rpt has a Continuum that is neither TRUE nor FALSE, or behind other text: line 9\n");
}

}  // namespace
}  // namespace zrml::test
