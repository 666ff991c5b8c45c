// zrml convert with the stand-in plug-in, whose numbers are known to the last digit.
#include <fstream>
#include <set>

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

  std::string path_ = MakeFolder("run.raw", "valid and sound");
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

// 100, 200.5 and 300.0625 are 0x42C80000, 0x43488000 and 0x43960800 in single precision; 10, 0.5 and 1000000
// are 0x41200000, 0x3F000000 and 0x49742400.
TEST_F(ConvertTest, SurveySpectrumAsMzml) {
  ExpectHas(Converted({"--function", "1", "--scans", "1"}),
            R"(<spectrumList count="1" defaultDataProcessingRef="conversion">
<spectrum index="0" id="function=1 process=0 scan=1" defaultArrayLength="3">
<cvParam cvRef="MS" accession="MS:1000579" name="MS1 spectrum"/>
<cvParam cvRef="MS" accession="MS:1000511" name="ms level" value="1"/>
<cvParam cvRef="MS" accession="MS:1000130" name="positive scan"/>
<cvParam cvRef="MS" accession="MS:1000128" name="profile spectrum"/>
<cvParam cvRef="MS" accession="MS:1000528" name="lowest observed m/z" value="100" unitCvRef="MS" unitAccession="MS:1000040" unitName="m/z"/>
<cvParam cvRef="MS" accession="MS:1000527" name="highest observed m/z" value="300.0625" unitCvRef="MS" unitAccession="MS:1000040" unitName="m/z"/>
<cvParam cvRef="MS" accession="MS:1000504" name="base peak m/z" value="300.0625" unitCvRef="MS" unitAccession="MS:1000040" unitName="m/z"/>
<cvParam cvRef="MS" accession="MS:1000505" name="base peak intensity" value="1000000" unitCvRef="MS" unitAccession="MS:1000131" unitName="number of detector counts"/>
<cvParam cvRef="MS" accession="MS:1000285" name="total ion current" value="1000010.5"/>
<cvParam cvRef="MS" accession="MS:1000796" name="spectrum title" value="first&#9;scan"/>
<scanList count="1">
<cvParam cvRef="MS" accession="MS:1000795" name="no combination"/>
<scan>
<cvParam cvRef="MS" accession="MS:1000016" name="scan start time" value="0.5" unitCvRef="UO" unitAccession="UO:0000031" unitName="minute"/>
<cvParam cvRef="MS" accession="MS:1000616" name="preset scan configuration" value="1"/>
<userParam name="function name" type="xsd:string" value="Survey"/>
<scanWindowList count="1">
<scanWindow>
<cvParam cvRef="MS" accession="MS:1000501" name="scan window lower limit" value="50" unitCvRef="MS" unitAccession="MS:1000040" unitName="m/z"/>
<cvParam cvRef="MS" accession="MS:1000500" name="scan window upper limit" value="1200.5" unitCvRef="MS" unitAccession="MS:1000040" unitName="m/z"/>
</scanWindow>
</scanWindowList>
</scan>
</scanList>
<binaryDataArrayList count="2">
<binaryDataArray encodedLength="16">
<cvParam cvRef="MS" accession="MS:1000521" name="32-bit float"/>
<cvParam cvRef="MS" accession="MS:1000576" name="no compression"/>
<cvParam cvRef="MS" accession="MS:1000514" name="m/z array" unitCvRef="MS" unitAccession="MS:1000040" unitName="m/z"/>
<binary>AADIQgCASEMACJZD</binary>
</binaryDataArray>
<binaryDataArray encodedLength="16">
<cvParam cvRef="MS" accession="MS:1000521" name="32-bit float"/>
<cvParam cvRef="MS" accession="MS:1000576" name="no compression"/>
<cvParam cvRef="MS" accession="MS:1000515" name="intensity array" unitCvRef="MS" unitAccession="MS:1000131" unitName="number of detector counts"/>
<binary>AAAgQQAAAD8AJHRJ</binary>
</binaryDataArray>
</binaryDataArrayList>
</spectrum>
</spectrumList>
)");
}

TEST_F(ConvertTest, ProductSpectrumNamesItsPrecursor) {
  const std::string output = Converted({"--function", "2", "--scans", "1"});
  ExpectHas(output, "name=\"MSn spectrum\"");
  ExpectHas(output, "name=\"ms level\" value=\"2\"");
  ExpectHas(output, "name=\"negative scan\"");
  ExpectHas(output, R"(<precursorList count="1">
<precursor>
<isolationWindow>
<cvParam cvRef="MS" accession="MS:1000827" name="isolation window target m/z" value="445.12" unitCvRef="MS" unitAccession="MS:1000040" unitName="m/z"/>
</isolationWindow>
<selectedIonList count="1">
<selectedIon>
<cvParam cvRef="MS" accession="MS:1000744" name="selected ion m/z" value="445.12" unitCvRef="MS" unitAccession="MS:1000040" unitName="m/z"/>
</selectedIon>
</selectedIonList>
<activation>
<cvParam cvRef="MS" accession="MS:1000044" name="dissociation method"/>
</activation>
</precursor>
</precursorList>
)");
  ExpectLacks(Converted({"--function", "2", "--scans", "2"}), "precursor");
}

// Minutes: 0.5, 1 and 1.5 of function 1, 1.125 and 2 of function 2.
TEST_F(ConvertTest, SpectraAreInTimeOrder) {
  const std::string output = Converted({"--function", "1,2"});
  std::size_t at = 0;
  for (const char* spectrum :
       {R"(index="0" id="function=1 process=0 scan=1")", R"(index="1" id="function=1 process=0 scan=2")",
        R"(index="2" id="function=2 process=0 scan=1")", R"(index="3" id="function=1 process=0 scan=3")",
        R"(index="4" id="function=2 process=0 scan=2")"}) {
    at = output.find(spectrum, at);
    ASSERT_NE(at, std::string::npos) << spectrum;
  }
}

TEST_F(ConvertTest, EmptySpectrumHasEmptyArraysAndNoBasePeak) {
  const std::string output = Converted({"--function", "1", "--scans", "3"});
  ExpectHas(output, "defaultArrayLength=\"0\"");
  EXPECT_EQ(Count(output, "<binaryDataArray encodedLength=\"0\">"), 2U);
  ExpectLacks(output, "base peak");
  ExpectLacks(output, "observed m/z");
  ExpectHas(output, "name=\"total ion current\" value=\"0\"");
}

// Each eighth of a minute from 0 on; 210 and 210.5 are 0x43520000 and 0x43528000; 0 and 3 are 0 and
// 0x40400000.
TEST_F(ConvertTest, AbsorbanceSpectraTakeTheNumberAfterTheLastFunction) {
  const std::string output = Converted({"--rt", "0.375-0.375"});
  EXPECT_EQ(Count(output, "<spectrum "), 1U);
  ExpectHas(output, R"(<spectrum index="0" id="function=7 process=0 scan=4" defaultArrayLength="2">
<cvParam cvRef="MS" accession="MS:1000804" name="electromagnetic radiation spectrum"/>
<cvParam cvRef="MS" accession="MS:1000128" name="profile spectrum"/>
<cvParam cvRef="MS" accession="MS:1000619" name="lowest observed wavelength" value="210" unitCvRef="UO" unitAccession="UO:0000018" unitName="nanometer"/>
<cvParam cvRef="MS" accession="MS:1000618" name="highest observed wavelength" value="210.5" unitCvRef="UO" unitAccession="UO:0000018" unitName="nanometer"/>
)");
  ExpectHas(output, "unitName=\"nanometer\"/>\n<binary>AABSQwCAUkM=<");
  ExpectHas(output, "unitName=\"absorbance unit\"/>\n<binary>AAAAAAAAQEA=<");
}

// Bins 5 and 10 have points; equal masses stay in the order of the bins. 50, 100, 100, 150 are 0x42480000,
// 0x42C80000 twice and 0x43160000; 1, 2, 3, 4 are 0x3F800000, 0x40000000, 0x40400000, 0x40800000; 5 and 10
// are 0x40A00000 and 0x41200000.
TEST_F(ConvertTest, DriftBinsAreAThirdArray) {
  const std::string output = Converted({"--function", "5"});
  ExpectHas(output, "defaultArrayLength=\"4\"");
  ExpectHas(output, "<binary>AABIQgAAyEIAAMhCAAAWQw==<");
  ExpectHas(output, "<binary>AACAPwAAAEAAAEBAAACAQA==<");
  ExpectHas(output,
            "name=\"non-standard data array\" value=\"drift bin\"/>\n<binary>AACgQAAAoEAAACBBAAAgQQ==<");
}

// The total ion current has a point for each mass spectrum, in their order; a name that says pressure and one
// that says UV.
TEST_F(ConvertTest, ChromatogramsOfRunAndTraces) {
  const std::string output = Converted({"--function", "1,2"});
  ExpectHas(output, "<chromatogramList count=\"3\" ");
  ExpectHas(output, R"(<chromatogram index="0" id="TIC" defaultArrayLength="5">
<cvParam cvRef="MS" accession="MS:1000235" name="total ion current chromatogram"/>
)");
  // 0.5, 1, 1.125, 1.5, 2: 0x3F000000, 0x3F800000, 0x3F900000, 0x3FC00000, 0x40000000
  ExpectHas(output, "<binary>AAAAPwAAgD8AAJA/AADAPwAAAEA=<");
  ExpectHas(output, R"(<chromatogram index="1" id="trace 1: Pressure" defaultArrayLength="2">
<cvParam cvRef="MS" accession="MS:1003019" name="pressure chromatogram"/>
)");
  // The control character of the name is none that XML has.
  ExpectHas(output,
            "id=\"trace 2: UV\xEF\xBF\xBD[31m 254\" defaultArrayLength=\"2\">\n"
            "<cvParam cvRef=\"MS\" accession=\"MS:1000812\" name=\"absorption chromatogram\"/>\n");
}

TEST_F(ConvertTest, TimeRangeCutsTracesToo) {
  const std::string output = Converted({"--function", "1", "--rt", "-0.75"});
  ExpectHas(output, "id=\"TIC\" defaultArrayLength=\"1\"");
  ExpectHas(output, "id=\"trace 1: Pressure\" defaultArrayLength=\"1\"");
}

TEST_F(ConvertTest, MetadataAreParametersOfTheRun) {
  const std::string output = Converted({"--function", "1"});
  ExpectHas(output, "<run id=\"run_run\" ");
  ExpectHas(output,
            "<userParam name=\"Operator\" type=\"xsd:string\" value=\"Zo\xC3\xAB "
            "&quot;Z&quot;&#13;&#10;next\xE2\x80\xA8line\"/>");
  ExpectHas(output, "<userParam name=\"Mode\" type=\"xsd:string\" value=\"ES+\"/>");
  ExpectHas(output, "<userParam name=\"Mode of function 2\" type=\"xsd:string\" value=\"ES-\"/>");
  ExpectLacks(output, "Absent");
  ExpectLacks(output, "Mode of function 3");
}

TEST_F(ConvertTest, SourceFilesHaveTheirChecksum) {
  // printf 'valid and sound' | sha1sum
  ExpectHas(Converted({"--function", "1"}), "value=\"153dc103289677f1a1af202eba15970f43425314\"");
}

TEST_F(ConvertTest, StandardOutputIsNotIndexed) {
  const std::string output = Converted({"--function", "1"});
  EXPECT_TRUE(output.starts_with("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<mzML "))
      << output.substr(0, 100);
  ExpectLacks(output, "index>");
}

TEST_F(ConvertTest, PrecisionIsChosenByArray) {
  const auto bits = [&](std::vector<std::string> more) {
    more.insert(more.end(), {"--function", "1", "--scans", "1"});
    const std::string output = Converted(more);
    return std::to_string(Count(output, "64-bit")) + " of " + std::to_string(Count(output, "-bit float"));
  };
  // Two arrays of the spectrum, two of the total ion current, four of the traces: 0.1 is in one of them.
  EXPECT_EQ(bits({}), "1 of 8");
  EXPECT_EQ(bits({"--64", "mz"}), "2 of 8");
  EXPECT_EQ(bits({"--64", "mz,time", "--32", "intensity"}), "4 of 8");
  ExpectFailure(RunToOutput({"--64", "mz", "--32", "mz"}), 2,
                "--64: mz cannot have both 32 and 64 bits (see zrml convert --help)");
}

TEST_F(ConvertTest, Mgf) {
  EXPECT_EQ(Converted({"--format", "mgf", "--function", "1-3"}), R"(BEGIN IONS
TITLE=function=2 process=0 scan=1 Product
RTINSECONDS=67.5
PEPMASS=445.12
50.5 7
END IONS

BEGIN IONS
TITLE=function=2 process=0 scan=2 Product
RTINSECONDS=120
50.5 7
END IONS

)");
  ExpectFailure(RunToOutput({"--format", "mgf", "--function", "1"}), 2,
                path_ + ": none of its scans is an MS/MS scan that is asked for");
}

// A header, an empty block, and a checksum and a length of 0: a gzip file of nothing, not an empty file.
TEST_F(ConvertTest, NothingCompressedIsAGzipFile) {
  path_ = MakeFile("vials.fakereport");
  const std::string output = Converted({"--sample", "2", "--format", "mgf", "--gzip"});
  EXPECT_TRUE(output.starts_with("\x1F\x8B\x08")) << output;
  EXPECT_TRUE(output.ends_with(std::string(8, '\0')));
}

TEST_F(ConvertTest, Tsv) {
  EXPECT_EQ(Converted({"--format", "tsv", "--function", "1,2,5"}),
            "function\tscan\ttime\tm/z\tintensity\n"
            "1\t1\t0.5\t100\t10\n"
            "1\t1\t0.5\t200.5\t0.5\n"
            "1\t1\t0.5\t300.0625\t1000000\n"
            "1\t2\t1\t100.25\t5\n"
            "2\t1\t1.125\t50.5\t7\n"
            "2\t2\t2\t50.5\t7\n"
            "5\t1\tnan\t1e-07\tnan\n"
            "5\t1\tnan\t0.1\tinf\n"
            "5\t1\tnan\t123456789\t-inf\n"
            "5\t1\tnan\t1e+15\t-0\n"
            "5\t1\tnan\t1.7976931348623157e+308\t5e-324\n");
}

TEST_F(ConvertTest, SelectionIsByFunctionScanLevelAndTime) {
  const auto rows = [&](std::vector<std::string> more) {
    more.insert(more.end(), {"--format", "tsv"});
    return Count(Converted(more), "\n") - 1;
  };
  EXPECT_EQ(rows({"--function", "1,2"}), 6U);
  EXPECT_EQ(rows({"--function", "1,2", "--scans", "2-"}), 2U);
  EXPECT_EQ(rows({"--function", "1,2", "--ms-level", "2-"}), 2U);
  EXPECT_EQ(rows({"--function", "1,2", "--rt", "1-1.125"}), 2U);
  ExpectFailure(RunToOutput({"--function", "9"}), 2, path_ + ": none of its scans is asked for");
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

TEST_F(ConvertTest, VerboseTellsWhatAFileHolds) {
  const ProcessResult result = RunToFolder({"-v"});
  EXPECT_EQ(result.output, Path("out") + "/run.mzML\n");
  EXPECT_EQ(result.errors,
            "zrml: " + path_ + " -> " + Path("out") + "/run.mzML: 5 spectra, 3 chromatograms\n");
}

TEST_F(ConvertTest, VerboseTellsOfStandardOutputToo) {
  const ProcessResult result = RunToOutput({"--function", "1,2", "-v"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "zrml: " + path_ + " -> standard output: 5 spectra, 3 chromatograms\n");
  ExpectFailure(RunToOutput({"-q", "-v"}), 2, "--quiet excludes --verbose (see zrml convert --help)");
}

TEST_F(ConvertTest, FolderIsNoFile) {
  for (const std::string& folder : {Path("."), Path("scratch"), Path("not/there/")}) {
    ExpectFailure(Run({"convert", path_, "-b", folder}), 2, folder + " is a folder; -o takes one, -b a file");
  }
  EXPECT_FALSE(std::filesystem::exists(folder_ / "not"));
}

// The rest is converted, too, for whoever has seen enough of the names.
TEST_F(ConvertTest, ReaderOfTheNamesMayLeave) {
  setup_.outputTo = OutputTo::kClosedPipe;
  const std::string other = MakeFolder("other.raw", "valid and sound");
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

TEST_F(ConvertTest, FailureLeavesNoFile) {
  path_ = MakeFolder("run.raw");
  std::filesystem::create_directory(folder_ / "out");
  ExpectFailure(
      Run({"convert", path_, "-o", Path("out"), "--function", "1-4"}), 7,
      path_ + ": cannot read the listed time of scan 1 of function 4 (--damaged converts what there is)");
  EXPECT_EQ(FilesIn("out"), std::set<std::string>());
}

struct Loss {
  const char* what;  // that the stand-in does not give in whole
  std::vector<std::string> selection;
  std::string refused;
  std::string told;
  std::string converted;  // a part of the output with --damaged
};

TEST_F(ConvertTest, WhatCannotBeReadIsRefusedOrTold) {
  const Loss losses[] = {
      {"times",
       {"--function", "1"},
       "the listed time of scan 3 of function 1",
       "listed times of function 1 that cannot be read: 1; the first is 3",
       "id=\"function=1 process=0 scan=3\""},
      {"totals",
       {"--function", "1"},
       "the total ion current of scan 3 of function 1",
       "total ion currents of function 1 that cannot be read: 1; the first is 3",
       "id=\"TIC\" defaultArrayLength=\"2\""},
      {"bins",
       {"--function", "5"},
       "scan 1 of function 5",
       "scans of function 5 that cannot be read: 1; the first is 1",
       "id=\"function=5 process=0 scan=1\" defaultArrayLength=\"0\""},
      {"traces",
       {"--function", "1"},
       "trace 1",
       "traces that cannot be read: 1; the first is 1",
       "id=\"trace 1: Pressure\" defaultArrayLength=\"0\""},
      {"absorbance",
       {"--rt", "0.375-0.375"},
       "absorbance spectrum 4",
       "absorbance spectra that cannot be read: 1; the first is 4",
       "id=\"function=7 process=0 scan=4\" defaultArrayLength=\"0\""},
  };
  for (const Loss& loss : losses) {
    SCOPED_TRACE(loss.what);
    path_ = MakeFolder(std::string(loss.what) + ".raw", std::string("valid and sound but for ") + loss.what);
    std::vector<std::string> arguments = {"--threads", "1"};  // one provider, which is asked twice
    arguments.insert(arguments.end(), loss.selection.begin(), loss.selection.end());
    const ProcessResult refused = RunToOutput(arguments);
    EXPECT_EQ(refused.status, 7);
    EXPECT_EQ(refused.errors,
              "zrml: " + path_ + ": cannot read " + loss.refused + " (--damaged converts what there is)\n");
    arguments.push_back("--damaged");
    const ProcessResult told = RunToOutput(arguments);
    EXPECT_EQ(told.status, 0);
    EXPECT_EQ(told.errors, "zrml: " + path_ + ": " + loss.told + "\n");
    ExpectHas(told.output, loss.converted);
    arguments.push_back("-q");
    EXPECT_EQ(RunToOutput(arguments).errors, "");
  }
}

// Of 9 mass spectra and 25 absorbance spectra none is left out. The first scan of function 4 is asked for its
// own time, 3 minutes.
TEST_F(ConvertTest, DamagedSourceKeepsItsScans) {
  path_ = MakeFolder("damaged.raw");
  for (const char* threads : {"1", "3"}) {
    const ProcessResult result = RunToOutput({"--damaged", "--threads", threads});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(Count(result.output, "<spectrum "), 34U);
    ExpectHas(result.output, "id=\"function=4 process=0 scan=1\" defaultArrayLength=\"1\"");
    ExpectHas(result.output, "name=\"scan start time\" value=\"3\"");
    ExpectHas(result.output, "id=\"function=4 process=0 scan=2\" defaultArrayLength=\"0\"");
    const std::string front = "zrml: " + path_ + ": ";
    EXPECT_EQ(result.errors, front + "traces that cannot be read: 1; the first is 2\n" + front +
                                 "listed times of function 4 that cannot be read: 2; the first is 1\n" +
                                 front + "scans of function 4 that cannot be read: 1; the first is 2\n" +
                                 front +
                                 "total ion currents of function 4 that cannot be read: 2; the first is 1\n" +
                                 front + "scans of function 5 that cannot be read: 1; the first is 1\n" +
                                 front + "absorbance spectra that cannot be read: 24; the first is 2\n");
  }
}

TEST_F(ConvertTest, SourceThatFailsDoesNotStopTheOthers) {
  const std::string other = MakeFolder("other.RAW", "valid and sound");
  const ProcessResult result = Run({"convert", Path("missing.raw"), path_, MakeFolder("bad.raw", "no"), other,
                                    "-o", Path("out"), "--function", "1"});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.output, Path("out") + "/run.mzML\n" + Path("out") + "/other.mzML\n");
  EXPECT_EQ(result.errors, "zrml: there is no file or folder " + Path("missing.raw") +
                               "\nzrml: no provider reads " + Path("bad.raw") +
                               "\nzrml: 2 of 4 sources are not converted: " + Path("missing.raw") + ", " +
                               Path("bad.raw") + "\n");
  EXPECT_EQ(FilesIn("out"), (std::set<std::string>{"other.mzML", "run.mzML"}));
}

// Also with --force: the second would replace what the first has become.
TEST_F(ConvertTest, SourcesOfOneNameDoNotReplaceEachOther) {
  const std::string twin = MakeFolder("more/run.raw", "valid and sound");
  const ProcessResult result = Run({"convert", path_, twin, "-o", Path("out"), "--force", "--function", "1"});
  EXPECT_EQ(result.status, 8);
  EXPECT_TRUE(result.errors.starts_with("zrml: " + twin + " would replace " + Path("out") +
                                        "/run.mzML, which another source has become\n"))
      << result.errors;
  const std::string converted = ReadBytes(folder_ / "out" / "run.mzML");
  ExpectHas(converted, "/run.raw\"");  // where its files are
  ExpectLacks(converted, "/more/");
}

TEST_F(ConvertTest, SourceThatFailedHasBecomeNothing) {
  const std::string broken = MakeFolder("more/run.raw", "valid and sound");
  const ProcessResult result =
      Run({"convert", path_, broken, "-o", Path("out"), "--function", "4", "--force"});  // cannot be read
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.errors.find("another source"), std::string::npos) << result.errors;
}

TEST_F(ConvertTest, SampleThatFailsDoesNotStopTheOthers) {
  const std::string report = MakeFile("vials.fakereport");
  ExpectOutput(Run({"convert", report, "-o", Path("out"), "--sample", "1", "-q"}), "");
  const ProcessResult result = Run({"convert", report, "-o", Path("out")});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.output, Path("out") + "/vials.fakereport-sample2.mzML\n");
  const std::string first = Path("out") + "/vials.fakereport-sample1.mzML";
  EXPECT_EQ(result.errors, "zrml: " + first + " exists; --force replaces it\nzrml: 1 of 2 samples of " +
                               report + " are not converted: 1\n");
}

TEST_F(ConvertTest, SampleThatFailsIsNamed) {
  const std::string report = MakeFile("vials.fakereport");
  const ProcessResult result = Run({"convert", report, "-o", Path("out"), "--format", "mgf"});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.errors, "zrml: " + report +
                               ", sample 1: none of its scans is an MS/MS scan that is asked for\n"
                               "zrml: 1 of 2 samples of " +
                               report + " are not converted: 1\n");
}

TEST_F(ConvertTest, EachSampleOfAReportIsAFile) {
  const std::string report = MakeFile("vials.fakereport");
  ExpectOutput(
      Run({"convert", report, "-o", Path("out")}),
      Path("out") + "/vials.fakereport-sample1.mzML\n" + Path("out") + "/vials.fakereport-sample2.mzML\n");
  ExpectOutput(Run({"convert", report, "-o", Path("one"), "--sample", "2"}),
               Path("one") + "/vials.fakereport-sample2.mzML\n");
  ExpectFailure(Run({"convert", report, "--stdout"}), 2, report + " has 2 samples; --sample chooses one");
  ExpectFailure(Run({"convert", report, "-o", Path("one"), "--sample", "3"}), 2,
                "there is no sample 3: " + report + " has samples 1 to 2");
}

// A report is a text file, and a trace that its provider does not give is left out: the first of two.
TEST_F(ConvertTest, ReportIsATextFile) {
  path_ = MakeFile("vials.fakereport");
  const std::string output = Converted({"--sample", "1"});
  EXPECT_EQ(Count(output, "<sourceFile "), 1U);
  ExpectHas(output, "name=\"text format\"");
  ExpectHas(output, "<chromatogramList count=\"2\" ");
  ExpectHas(output, "id=\"function 1 trace 2: Channel 2\"");
}

TEST_F(ConvertTest, OptionsThatDoNotGoTogether) {
  ExpectFailure(Run({"convert", path_, path_, "--stdout"}), 2, "several sources do not fit into one file");
  ExpectFailure(Run({"convert", path_, path_, "-b", "x"}), 2, "several sources do not fit into one file");
  for (const char* threads : {"0", "257", "x", "99999999999"}) {
    ExpectFailure(Run({"convert", path_, "--threads", threads, "--stdout"}), 2,
                  "--threads: \"" + std::string(threads) +
                      "\" is not a whole number from 1 to 256 (see zrml convert --help)");
  }
  ExpectFailure(Run({"convert", path_, "-o", ""}), 2, "--output: is empty (see zrml convert --help)");
  ExpectFailure(Run({"convert", path_, "-b", ""}), 2, "--file: is empty (see zrml convert --help)");
  ExpectFailure(Run({"convert", path_, "--format", "mzxml"}), 2,
                "--format: \"mzxml\" is not mzml, mgf or tsv (see zrml convert --help)");
  ExpectFailure(Run({"convert", path_, "--rt", "5"}), 2,
                "--rt: \"5\" is not a time range such as 0.5-3 (see zrml convert --help)");
  ExpectFailure(Run({"convert", path_, "--scans", "0"}), 2,
                "--scans: \"0\" is not a list of numbers such as 1,3-5 (see zrml convert --help)");
  EXPECT_EQ(Run({"convert", path_, "--stdout", "-o", "x"}).status, 2);
  EXPECT_EQ(Run({"convert", path_, "--stdout", "-z", "--no-zlib"}).status, 2);
}

TEST_F(ConvertTest, ThreadsDoNotChangeTheFile) {
  const std::string one = Converted({"--function", "1-2,5-6", "--threads", "1"});
  for (const char* threads : {"2", "3", "16"}) {
    EXPECT_EQ(Converted({"--function", "1-2,5-6", "--threads", threads}), one) << threads;
  }
}

TEST_F(ConvertTest, ReaderThatLeavesIsTold) {
  setup_.outputTo = OutputTo::kClosedPipe;
  const ProcessResult result = RunToOutput({"--function", "1"});
  EXPECT_EQ(result.status, 5);
  EXPECT_EQ(result.errors, "zrml: " + path_ + ": cannot write to standard output (its reader is gone)\n");
}

#ifndef _WIN32
TEST_F(ConvertTest, FullDiskIsStatus5) {
  setup_.outputTo = OutputTo::kFullDisk;
  ExpectFailure(RunToOutput({"--function", "1"}), 5,
                path_ + ": cannot write to standard output (No space left on device)");
}

// The files are there: it is not said that they are not.
TEST_F(ConvertTest, NamesThatCannotBePrintedDoNotFailTheConversion) {
  setup_.outputTo = OutputTo::kFullDisk;
  const std::string other = MakeFolder("other.raw", "valid and sound");
  const ProcessResult result = Run({"convert", path_, other, "-o", Path("out"), "--function", "1"});
  EXPECT_EQ(result.status, 5);
  EXPECT_EQ(result.errors, "zrml: cannot write the output (No space left on device)\n");
  EXPECT_EQ(FilesIn("out"), (std::set<std::string>{"other.mzML", "run.mzML"}));
}

// printf data | sha1sum; a backslash separates folders in paths, not in names.
TEST_F(ConvertTest, FileWithABackslashInItsName) {
  MakeFile("run.raw/odd\\name.txt");
  std::filesystem::create_symlink("nowhere", folder_ / "run.raw" / "link");
  const std::string output = Converted({"--function", "1"});
  ExpectHas(output, "<sourceFileList count=\"2\">");
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
