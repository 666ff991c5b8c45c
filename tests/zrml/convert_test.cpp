// zrml convert as users call it: options, names of files, what is refused and what is printed. The content of
// files is tested in tests/convert.
#include <fstream>
#include <set>

#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

class ConvertTest : public ZrmlTest {
 protected:
  // Converts to standard output.
  ProcessResult RunToOutput(std::vector<std::string> more) const {
    more.insert(more.begin(), {"convert", path_, "--stdout", "--no-zlib"});
    return Run(more);
  }

  std::string Converted(std::vector<std::string> more) const {
    const ProcessResult result = RunToOutput(std::move(more));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    return result.output;
  }

  // Into the folder "out".
  ProcessResult RunToFolder(std::vector<std::string> more) const {
    more.insert(more.begin(), {"convert", path_, "-o", Path("out"), "--function", "1,2"});
    return Run(more);
  }

  std::set<std::string> FilesIn(const std::string& folder) const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / folder))
      names.insert(entry.path().filename().string());
    return names;
  }

  std::string path_ = Make("run.raw");
};

void ExpectHas(const std::string& text, const std::string& part) {
  EXPECT_NE(text.find(part), std::string::npos) << part << "is not in\n" << text;
}
void ExpectLacks(const std::string& text, const std::string& part) {
  EXPECT_EQ(text.find(part), std::string::npos) << part << "is in\n" << text;
}

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST_F(ConvertTest, Tsv) {
  EXPECT_EQ(Converted({"--format", "tsv", "--function", "1,2,p1"}),
            "function\tscan\ttime\tm/z\tintensity\n"
            "2\t1\t0.125\t50.5\t7\n"
            "1\t1\t0.5\t100\t10\n"
            "1\t1\t0.5\t200.5\t3\n"
            "1\t1\t0.5\t300.0625\t1000000\n"
            "p1\t1\t0.5\t100\t11\n"
            "1\t2\t1\t100.25\t5\n"
            "2\t2\t1.125\t50.5\t8\n");
}

TEST_F(ConvertTest, Mgf) {
  const std::string output = Converted({"--format", "mgf", "--function", "1,2", "--scans", "2"});
  EXPECT_TRUE(
      output.starts_with("BEGIN IONS\nTITLE=run function=2 process=0 scan=2 TOF MS/MS ES-\nSCANS=2\n"))
      << output;
  EXPECT_TRUE(output.ends_with("\nRTINSECONDS=67.5\nPEPMASS=445.125\n50.5 8\nEND IONS\n\n")) << output;
  ExpectFailure(RunToOutput({"--format", "mgf", "--function", "1"}), 2,
                path_ + ": none of its scans is an MS/MS scan that is asked for");
}

TEST_F(ConvertTest, IdsHaveTheNumbersOfTheFiles) {
  const std::string output = Converted({"--function", "5,6,p1"});
  EXPECT_EQ(Count(output, "<spectrum "), 4U);
  for (const char* id : {"function=5 process=0 scan=1", "function=5 process=0 scan=2",
                         "function=6 process=0 scan=1", "function=1 process=1 scan=1"}) {
    ExpectHas(output, "id=\"" + std::string(id) + "\"");
  }
}

TEST_F(ConvertTest, StandardOutputIsNotIndexed) {
  const std::string output = Converted({"--function", "1"});
  EXPECT_TRUE(output.starts_with("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<mzML "))
      << output.substr(0, 100);
  ExpectLacks(output, "index>");
}

// Two arrays of the spectrum, two of the total ion current and two of the function's own, six of the traces,
// of which one is of absorbance.
TEST_F(ConvertTest, PrecisionIsChosenByArray) {
  const auto bits = [&](std::vector<std::string> more) {
    more.insert(more.end(), {"--function", "1", "--scans", "1"});
    const std::string output = Converted(more);
    return std::to_string(Count(output, "64-bit")) + " of " + std::to_string(Count(output, "-bit float"));
  };
  EXPECT_EQ(bits({}), "0 of 12");
  EXPECT_EQ(bits({"--64", "mz"}), "1 of 12");
  EXPECT_EQ(bits({"--64", "mz,time", "--32", "intensity"}), "6 of 12");
  ExpectFailure(RunToOutput({"--64", "mz", "--32", "mz"}), 2,
                "--64: mz cannot have both 32 and 64 bits (see zrml convert --help)");
}

// A header, an empty block, and a checksum and a length of 0: an empty gzip stream, not an empty file.
TEST_F(ConvertTest, NothingCompressedIsAGzipFile) {
  path_ = Make("vials.rpt", Vials());
  const std::string output = Converted({"--sample", "2", "--format", "mgf", "--gzip"});
  EXPECT_TRUE(output.starts_with("\x1F\x8B\x08")) << output;
  EXPECT_TRUE(output.ends_with(std::string(8, '\0')));
}

TEST_F(ConvertTest, SelectionIsByFunctionScanLevelTimeAndName) {
  const auto rows = [&](std::vector<std::string> more) {
    more.insert(more.end(), {"--format", "tsv"});
    return Count(Converted(more), "\n") - 1;
  };
  EXPECT_EQ(rows({"--function", "1,2"}), 6U);
  EXPECT_EQ(rows({"--function", "1,2", "--scans", "2-"}), 2U);
  EXPECT_EQ(rows({"--function", "1,2", "--ms-level", "2-"}), 2U);
  EXPECT_EQ(rows({"--function", "1,2", "--rt", "1-1.125"}), 2U);
  EXPECT_EQ(rows({"--function", "1,6"}), 5U);
  EXPECT_EQ(rows({"--function", "1,6", "--exclude-lock-mass"}), 4U);
  ExpectFailure(RunToOutput({"--function", "1", "--scans", "9"}), 2,
                path_ + ": none of its scans is asked for");
  EXPECT_EQ(rows({"--function", "6-9"}), 1U) << "not all of a range need be there";
  for (const char* const list : {"9", "1,9", "9-10,9"}) {
    ExpectFailure(RunToOutput({"--function", list}), 2,
                  "there is no function 9: " + path_ + " has functions 1 to 4, 6, p1");
  }
  ExpectFailure(RunToOutput({"--function", "1,p2"}), 2,
                "there is no function p2: " + path_ + " has functions 1 to 4, 6, p1");
}

TEST_F(ConvertTest, FileIsCalledAfterTheSource) {
  ExpectOutput(RunToFolder({}), Path("out") + "/run.mzML\n");
  ExpectOutput(RunToFolder({"--gzip", "--format", "tsv"}), Path("out") + "/run.tsv.gz\n");
  ExpectOutput(RunToFolder({"-q", "--format", "mgf"}), "");
  EXPECT_EQ(FilesIn("out"), (std::set<std::string>{"run.mzML", "run.tsv.gz", "run.mgf"}));
  EXPECT_TRUE(ReadBytes(folder_ / "out" / "run.mzML").ends_with("</fileChecksum>\n</indexedmzML>\n"));
  EXPECT_TRUE(ReadBytes(folder_ / "out" / "run.tsv.gz").starts_with("\x1F\x8B"));
}

TEST_F(ConvertTest, IndexCanBeLeftOut) {
  ExpectOutput(RunToFolder({"--no-index"}), Path("out") + "/run.mzML\n");
  EXPECT_TRUE(ReadBytes(folder_ / "out" / "run.mzML").ends_with("</run>\n</mzML>\n"));
}

TEST_F(ConvertTest, VerboseShowsTheContentOfAFile) {
  const ProcessResult result = RunToFolder({"-v"});
  EXPECT_EQ(result.output, Path("out") + "/run.mzML\n");
  EXPECT_EQ(result.errors,
            "zrml: " + path_ + " -> " + Path("out") + "/run.mzML: 5 spectra, 6 chromatograms\n");
}

TEST_F(ConvertTest, VerboseShowsStandardOutputToo) {
  const ProcessResult result = RunToOutput({"--function", "1,2", "-v"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "zrml: " + path_ + " -> standard output: 5 spectra, 6 chromatograms\n");
  ExpectFailure(RunToOutput({"-q", "-v"}), 2, "--quiet excludes --verbose (see zrml convert --help)");
}

TEST_F(ConvertTest, FolderIsNoFile) {
  for (const std::string& folder : {Path("."), Path("scratch"), Path("not/there/")}) {
    ExpectFailure(Run({"convert", path_, "-b", folder}), 2, folder + " is a folder; -o takes one, -b a file");
  }
  EXPECT_FALSE(std::filesystem::exists(folder_ / "not"));
}

// The rest is converted even when the reader of the names has left.
TEST_F(ConvertTest, ReaderOfTheNamesMayLeave) {
  setup_.outputTo = OutputTo::kClosedPipe;
  const std::string other = Make("other.raw");
  const ProcessResult result = Run({"convert", path_, other, "-o", Path("out"), "--function", "1"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(FilesIn("out"), (std::set<std::string>{"other.mzML", "run.mzML"}));
}

TEST_F(ConvertTest, ExistingFileIsKeptUnlessForced) {
  std::ofstream(folder_ / "mine.mzML") << "mine";
  const std::vector<std::string> arguments = {"convert", path_, "-b", Path("mine.mzML"), "--function", "1"};
  ExpectFailure(Run(arguments), 5, Path("mine.mzML") + " exists; --force replaces it");
  EXPECT_EQ(ReadBytes(folder_ / "mine.mzML"), "mine");
  std::vector<std::string> forced = arguments;
  forced.push_back("--force");
  ExpectOutput(Run(forced), Path("mine.mzML") + "\n");
  EXPECT_TRUE(ReadBytes(folder_ / "mine.mzML").ends_with("</indexedmzML>\n"));
}

// Function 4 has an unknown data format.
TEST_F(ConvertTest, FailureLeavesNoFile) {
  std::filesystem::create_directory(folder_ / "out");
  ExpectFailure(Run({"convert", path_, "-o", Path("out"), "--function", "1-4"}), 7,
                path_ + ": cannot read scan 1 of function 4 (--damaged converts what there is)");
  EXPECT_EQ(FilesIn("out"), std::set<std::string>());
}

TEST_F(ConvertTest, UnreadableDataAreReportedWhenTheRestIsWanted) {
  for (const char* threads : {"1", "3"}) {
    const ProcessResult told = RunToOutput({"--function", "4", "--damaged", "--threads", threads});
    EXPECT_EQ(told.status, 0);
    EXPECT_EQ(told.errors,
              "zrml: " + path_ + ": _FUNC004.DAT: scans of function 4 that cannot be read: 2 (1-2)\n");
    EXPECT_EQ(Count(told.output, "defaultArrayLength=\"0\""), 2U);
    EXPECT_EQ(RunToOutput({"--function", "4", "--damaged", "-q", "--threads", threads}).errors, "");
  }
}

// An unrecognised source is reported as in `zrml info`.
TEST_F(ConvertTest, SourceThatFailsDoesNotStopTheOthers) {
  const std::string other = Make("other.RAW");
  const std::string bad = MakeFile("bad.raw");
  const std::string missing = Path("missing.raw");
  const ProcessResult result =
      Run({"convert", missing, path_, bad, other, "-o", Path("out"), "--function", "1"});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.output, Path("out") + "/run.mzML\n" + Path("out") + "/other.mzML\n");
  EXPECT_EQ(result.errors, Run({"info", missing}).errors + Run({"info", bad}).errors +
                               "zrml: 2 of 4 sources are not converted: " + missing + ", " + bad + "\n");
  EXPECT_EQ(FilesIn("out"), (std::set<std::string>{"other.mzML", "run.mzML"}));
}

// Even with --force: the second would replace the first one's output.
TEST_F(ConvertTest, SourcesOfOneNameDoNotReplaceEachOther) {
  const std::string twin = Make("more/run.raw");
  const ProcessResult result = Run({"convert", path_, twin, "-o", Path("out"), "--force", "--function", "1"});
  EXPECT_EQ(result.status, 8);
  EXPECT_TRUE(result.errors.starts_with("zrml: " + twin + " would replace " + Path("out") +
                                        "/run.mzML, already written from another source\n"))
      << result.errors;
  const std::string converted = ReadBytes(folder_ / "out" / "run.mzML");
  ExpectHas(converted, "/run.raw\"");  // where its files are
  ExpectLacks(converted, "/more/");
}

TEST_F(ConvertTest, FailedSourceClaimsNoTarget) {
  const std::string broken = Make("more/run.raw");
  const ProcessResult result =
      Run({"convert", path_, broken, "-o", Path("out"), "--function", "4", "--force"});  // cannot be read
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.errors.find("another source"), std::string::npos) << result.errors;
}

TEST_F(ConvertTest, SampleThatFailsDoesNotStopTheOthers) {
  const std::string report = Make("vials.rpt", Vials());
  ExpectOutput(Run({"convert", report, "-o", Path("out"), "--sample", "1", "-q"}), "");
  const ProcessResult result = Run({"convert", report, "-o", Path("out")});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.output, Path("out") + "/vials-sample2.mzML\n" + Path("out") + "/vials-sample3.mzML\n");
  const std::string first = Path("out") + "/vials-sample1.mzML";
  EXPECT_EQ(result.errors, "zrml: " + first + " exists; --force replaces it\nzrml: 1 of 3 samples of " +
                               report + " are not converted: 1\n");
}

TEST_F(ConvertTest, SampleThatFailsIsNamed) {
  const std::string report = Make("vials.rpt", Vials());
  const ProcessResult result = Run({"convert", report, "-o", Path("out"), "--format", "mgf"});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.errors, "zrml: " + report +
                               ", sample 1: none of its scans is an MS/MS scan that is asked for\n"
                               "zrml: 1 of 3 samples of " +
                               report + " are not converted: 1\n");
}

TEST_F(ConvertTest, EachSampleOfAReportIsAFile) {
  const std::string report = Make("vials.rpt", Vials());
  const std::string stem = Path("out") + "/vials-sample";
  ExpectOutput(Run({"convert", report, "-o", Path("out")}),
               stem + "1.mzML\n" + stem + "2.mzML\n" + stem + "3.mzML\n");
  ExpectOutput(Run({"convert", report, "-o", Path("one"), "--sample", "2"}),
               Path("one") + "/vials-sample2.mzML\n");
  ExpectFailure(Run({"convert", report, "--stdout"}), 2, report + " has 3 samples; --sample chooses one");
  ExpectFailure(Run({"convert", report, "-o", Path("one"), "--sample", "4"}), 2,
                "there is no sample 4: " + report + " has samples 1 to 3");
}

TEST_F(ConvertTest, ReportIsATextFile) {
  path_ = Make("vials.rpt", Vials());
  const std::string output = Converted({"--sample", "1"});
  EXPECT_EQ(Count(output, "<sourceFile "), 1U);
  ExpectHas(output, "name=\"text format\"");
  ExpectHas(output, "id=\"function 1 trace 1: TIC\"");
}

TEST_F(ConvertTest, OptionsThatDoNotGoTogether) {
  const std::string other = Make("other.raw");
  ExpectFailure(Run({"convert", path_, other, "--stdout"}), 2, "several sources do not fit into one file");
  ExpectFailure(Run({"convert", path_, other, "-b", "x"}), 2, "several sources do not fit into one file");
  for (const char* threads : {"0", "257", "x", "99999999999"}) {
    ExpectFailure(Run({"convert", path_, "--threads", threads, "--stdout"}), 2,
                  "--threads: \"" + std::string(threads) +
                      "\" is not a whole number from 1 to 256 (see zrml convert --help)");
  }
  ExpectFailure(Run({"convert", path_, "-o", ""}), 2, "--output: is empty (see zrml convert --help)");
  ExpectFailure(Run({"convert", path_, "-b", ""}), 2, "--file: is empty (see zrml convert --help)");
  ExpectFailure(Run({"convert", path_, "--format", "mzxml"}), 2,
                "--format: \"mzxml\" is not mzml, mgf, tsv or parquet (see zrml convert --help)");
  ExpectFailure(Run({"convert", path_, "--rt", "5"}), 2,
                "--rt: \"5\" is not a time range such as 0.5-3 (see zrml convert --help)");
  ExpectFailure(Run({"convert", path_, "--scans", "0"}), 2,
                "--scans: \"0\" is not a list of numbers such as 1,3-5 (see zrml convert --help)");
  ExpectFailure(Run({"convert", path_, "--function", "p"}), 2,
                "--function: \"p\" is not a list of functions such as 1,3-5,p2 (see zrml convert --help)");
  EXPECT_EQ(Run({"convert", path_, "--stdout", "-o", "x"}).status, 2);
  EXPECT_EQ(Run({"convert", path_, "--stdout", "-z", "--no-zlib"}).status, 2);
}

TEST_F(ConvertTest, ThreadsDoNotChangeTheFile) {
  const std::vector<std::string> functions = {"--function", "1,2,5,6,p1", "--threads"};
  const auto converted = [&](const std::string& threads) {
    std::vector<std::string> arguments = functions;
    arguments.push_back(threads);
    return Converted(arguments);
  };
  const std::string one = converted("1");
  for (const char* threads : {"2", "3", "16"}) EXPECT_EQ(converted(threads), one) << threads;
}

// It has what it wanted; `head` is such a reader.
TEST_F(ConvertTest, ReaderThatLeavesEndsTheProgramQuietly) {
  setup_.outputTo = OutputTo::kClosedPipe;
  const ProcessResult result = RunToOutput({"--function", "1"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
}

#ifndef _WIN32
TEST_F(ConvertTest, FullDiskIsStatus5) {
  setup_.outputTo = OutputTo::kFullDisk;
  ExpectFailure(RunToOutput({"--function", "1"}), 5,
                path_ + ": cannot write to standard output (No space left on device)");
}

// The files exist and are not reported as missing.
TEST_F(ConvertTest, NamesThatCannotBePrintedDoNotFailTheConversion) {
  setup_.outputTo = OutputTo::kFullDisk;
  const std::string other = Make("other.raw");
  const ProcessResult result = Run({"convert", path_, other, "-o", Path("out"), "--function", "1"});
  EXPECT_EQ(result.status, 5);
  EXPECT_EQ(result.errors, "zrml: cannot write the output (No space left on device)\n");
  EXPECT_EQ(FilesIn("out"), (std::set<std::string>{"other.mzML", "run.mzML"}));
}

// printf data | sha1sum; a backslash separates folders in paths, not in names.
TEST_F(ConvertTest, FileWithABackslashInItsName) {
  const std::size_t before = Count(Converted({"--function", "1"}), "<sourceFile ");
  MakeFile("run.raw/odd\\name.txt");
  std::filesystem::create_symlink("nowhere", folder_ / "run.raw" / "link");
  const std::string output = Converted({"--function", "1"});
  EXPECT_EQ(Count(output, "<sourceFile "), before + 1);
  ExpectHas(output, "name=\"odd\\name.txt\"");
  ExpectHas(output, "value=\"a17c9aaa61e80a1bf71d0d850af4e5baa9800bbd\"");
}

TEST_F(ConvertTest, FolderThatCannotBeMadeIsStatus5) {
  MakeFile("file");
  ExpectFailure(Run({"convert", path_, "-o", Path("file") + "/out"}), 5,
                "cannot make the folder " + Path("file") + "/out (Not a directory)");
}
#endif

}  // namespace
}  // namespace zrml::test
