// zrml convert: what names say, what is skipped, which spectra are chosen, and folders of sources.
#ifndef _WIN32
#include <sys/stat.h>
#endif

#include <chrono>
#include <fstream>
#include <thread>

#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

class ConvertOptionsTest : public ZrmlTest {
 protected:
  ProcessResult Convert(std::vector<std::string> more) const {
    more.insert(more.begin(), {"convert", path_});
    return Run(more);
  }

  std::string Converted(std::vector<std::string> more) const {
    more.push_back("--stdout");
    const ProcessResult result = Convert(std::move(more));
    EXPECT_EQ(result.status, 0) << result.errors;
    return result.output;
  }

  std::string Contents(const std::string& name) const { return ReadBytes(folder_ / name); }

  // As if it had been written so many hours ago.
  void SetAge(const std::string& name, int hours) const {
    std::filesystem::last_write_time(
        folder_ / name, std::filesystem::file_time_type::clock::now() - std::chrono::hours(hours));
  }

  std::string path_ = Make("run.raw");
};

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

struct NameCase {
  const char* name;
  const char* begins;
};

TEST_F(ConvertOptionsTest, NamesSayTheFormat) {
  const NameCase cases[] = {
      {"a.mzML", "<?xml "},          {"a.MZML", "<?xml "},
      {"a.mgf", "BEGIN IONS\n"},     {"a.tsv", "function\tscan"},
      {"a.mzML.gz", "\x1F\x8B\x08"}, {"a.Mgf.GZ", "\x1F\x8B\x08"},
      {"a.xml", "<?xml "},           {"a", "<?xml "},
      {"a.parquet", "PAR1"},         {"a.Parquet", "PAR1"},
  };
  for (const NameCase& named : cases) {
    SCOPED_TRACE(named.name);
    const std::string file = Path(std::string("names/") + named.name);
    std::filesystem::create_directories(folder_ / "names");
    ExpectOutput(Convert({"-b", file, "--function", "1,2", "--force"}), file + "\n");
    EXPECT_TRUE(Contents(std::string("names/") + named.name).starts_with(named.begins));
  }
}

TEST_F(ConvertOptionsTest, OptionsGoWithNamesThatSayTheSameOrNothing) {
  for (const std::vector<std::string>& same :
       {std::vector<std::string>{"-b", Path("a.mgf"), "--format", "MGF"},
        {"-b", Path("b.mzML.gz"), "--gzip"},
        {"-b", Path("c.txt"), "--format", "Tsv"}}) {
    std::vector<std::string> arguments = same;
    arguments.insert(arguments.end(), {"--function", "1,2"});
    EXPECT_EQ(Convert(arguments).status, 0) << same[1];
  }
  EXPECT_TRUE(Contents("c.txt").starts_with("function\tscan"));
}

TEST_F(ConvertOptionsTest, NameThatContradictsIsRefused) {
  const std::string file = Path("x.mgf");
  ExpectFailure(Convert({"-b", file, "--format", "tsv"}), 2,
                "the name " + file + " contradicts --format tsv");
  ExpectFailure(Convert({"-b", file, "--gzip"}), 2, "the name " + file + " contradicts --gzip");
  EXPECT_FALSE(std::filesystem::exists(folder_ / "x.mgf"));
}

TEST_F(ConvertOptionsTest, LevelIsOfArraysTablesAndWholeFiles) {
  RawDirectoryBuilder raw = SmallAcquisition();
  std::vector<WantedPoint> points;
  for (int i = 0; i < 4000; ++i) points.push_back({100 + i * 0.0625, static_cast<float>(i * 7919 % 1009)});
  raw.functions[0].scans[0] = ScanFrom<StoredPoint9>(0.5F, points);
  path_ = Make("long.raw", raw);
  for (const std::vector<std::string>& format : {std::vector<std::string>{"--format", "mzml"},
                                                 {"--format", "parquet"},
                                                 {"--format", "tsv", "--gzip"}}) {
    std::vector<std::string> options = {"--function", "1", "--compression-level", "1"};
    options.insert(options.end(), format.begin(), format.end());
    const std::string fast = Converted(options);
    options[3] = "9";
    EXPECT_TRUE(Converted(options) != fast) << format[1];
  }
  ExpectFailure(Convert({"--stdout", "--compression-level", "10"}), 2,
                "--compression-level: \"10\" is not a whole number from 1 to 9 (see zrml convert --help)");
}

TEST_F(ConvertOptionsTest, ParquetIsNotCompressedAsAWhole) {
  const std::string message = "Parquet is compressed inside; --gzip and .gz are for other formats";
  ExpectFailure(Convert({"-b", Path("x.parquet.gz")}), 2, message);
  ExpectFailure(Convert({"-o", Path(""), "--format", "parquet", "--gzip"}), 2, message);
}

TEST_F(ConvertOptionsTest, ParquetIsWholeWithItsMark) {
  const std::vector<std::string> arguments = {"-b", Path("x.parquet"), "--function", "1", "--skip-existing"};
  ExpectOutput(Convert(arguments), Path("x.parquet") + "\n");
  SetAge("x.parquet", -1);
  ExpectOutput(Convert(arguments), "");
  std::filesystem::resize_file(folder_ / "x.parquet", std::filesystem::file_size(folder_ / "x.parquet") - 1);
  ExpectFailure(Convert(arguments), 5,
                Path("x.parquet") + " is older than its source, or not whole; --force replaces it");
}

TEST_F(ConvertOptionsTest, FileIsNoFolder) {
  for (const char* name : {"out.mzML", "out.tsv.gz"}) {
    ExpectFailure(Convert({"-o", Path(name)}), 2,
                  Path(name) + " is the name of a file; -b takes one, -o a folder");
    EXPECT_FALSE(std::filesystem::exists(folder_ / name));
  }
  ExpectOutput(Convert({"-o", Path("out.mzML/"), "--function", "1"}), Path("out.mzML/") + "run.mzML\n");
}

TEST_F(ConvertOptionsTest, WhatIsWholeAndNewerIsSkipped) {
  for (const auto& entry : std::filesystem::directory_iterator(folder_ / "run.raw"))
    SetAge("run.raw/" + entry.path().filename().string(), 2);
  for (const std::string name :
       {"out/run.mzML", "out/run.mgf", "out/run.tsv", "out/run.mzML.gz", "out/run.mgf.gz"}) {
    SCOPED_TRACE(name);
    const bool isGzipped = name.ends_with(".gz");
    const std::string bare = name.substr(0, name.size() - (isGzipped ? 3 : 0));
    std::vector<std::string> arguments = {"-o",
                                          Path("out"),
                                          "--function",
                                          "1,2",
                                          "--format",
                                          bare.substr(bare.rfind('.') + 1),
                                          "--skip-existing"};
    if (isGzipped) arguments.push_back("--gzip");
    ExpectOutput(Convert(arguments), Path(name) + "\n");
    const std::string converted = Contents(name);
    SetAge(name, 1);
    const auto written = std::filesystem::last_write_time(folder_ / name);
    ExpectOutput(Convert(arguments), "");
    EXPECT_EQ(std::filesystem::last_write_time(folder_ / name), written);

    const std::string why = Path(name) + " is older than its source, or not whole; --force replaces it";
    SetAge(name, 3);
    ExpectFailure(Convert(arguments), 5, why);
    std::filesystem::resize_file(folder_ / name, converted.size() - 2);
    ExpectFailure(Convert(arguments), 5, why);
    std::filesystem::resize_file(folder_ / name, 0);
    ExpectFailure(Convert(arguments), 5, why);
    arguments.push_back("--force");
    ExpectOutput(Convert(arguments), Path(name) + "\n");
    EXPECT_EQ(Contents(name), converted);
  }
}

// Its only MS/MS scan has no points.
TEST_F(ConvertOptionsTest, MgfThatIsRightlyEmptyIsSkipped) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.functions = {raw.functions[1]};
  raw.functions[0].scans = {{.index = {.retentionTime = 1}, .statistics = {.firstBytes = 2}}};
  raw.processed.clear();
  raw.history.clear();
  const std::string path = Make("hollow.raw", raw);
  for (const auto& entry : std::filesystem::directory_iterator(folder_ / "hollow.raw"))
    SetAge("hollow.raw/" + entry.path().filename().string(), 2);
  const std::vector<std::string> convert = {"convert",        path, "-o", Path("out"), "--format", "mgf",
                                            "--skip-existing"};
  ExpectOutput(Run(convert), Path("out/hollow.mgf") + "\n");
  EXPECT_EQ(Contents("out/hollow.mgf"), "");
  ExpectOutput(Run(convert), "");
}

// The second one of a name is never taken for the first, however often the command is given.
TEST_F(ConvertOptionsTest, SourcesOfOneNameAreNotSkippedForEachOther) {
  const std::string twin = Make("more/run.raw");
  for (int i = 0; i < 2; ++i) {
    const ProcessResult result =
        Run({"convert", path_, twin, "-o", Path("out"), "--function", "1", "--skip-existing"});
    EXPECT_EQ(result.status, 8);
    EXPECT_TRUE(result.errors.starts_with("zrml: " + twin + " would replace " + Path("out") + "/run.mzML, "))
        << result.errors;
  }
}

TEST_F(ConvertOptionsTest, SkippedFileIsReportedVerbosely) {
  const std::vector<std::string> arguments = {"-o", Path("out"), "--function", "1", "--skip-existing", "-v"};
  EXPECT_EQ(Convert(arguments).status, 0);
  SetAge("out/run.mzML", -1);  // both may have been written in one tick of the clock
  const ProcessResult again = Convert(arguments);
  EXPECT_EQ(again.output, "");
  EXPECT_EQ(again.errors, "zrml: " + path_ + " -> " + Path("out") + "/run.mzML: is there already\n");
}

TEST_F(ConvertOptionsTest, FoldersAreSearched) {
  Make("plate/one.raw");
  Make("plate/more/two.raw");
  ExpectOutput(Run({"convert", "-r", Path("plate"), "-o", Path("out"), "--function", "1"}),
               Path("out") + "/two.mzML\n" + Path("out") + "/one.mzML\n");
  ExpectFailure(Run({"convert", Path("plate"), "-o", Path("out")}), 4,
                Path("plate") + " is neither a raw directory nor a report; -r searches it for sources");
}

// Function 5 has two of them.
TEST_F(ConvertOptionsTest, SourcesAreListedInAFile) {
  const std::string other = Make("other.raw");
  const std::string list = MakeFile("list.txt", "\xEF\xBB\xBF" + other + "\r\n\n" + Make("last.raw"));
  ExpectOutput(Convert({"--from", list, "-o", Path("out"), "--format", "tsv", "--function", "1"}),
               Path("out/run.tsv\n") + Path("out/other.tsv\n") + Path("out/last.tsv\n"));
  ExpectFailure(Run({"convert", "--from", MakeFile("empty.txt", "\n")}), 2,
                "there are no sources in " + Path("empty.txt"));
  ExpectFailure(Run({"convert", "--from", Path("gone.txt")}), 3, "there is no file " + Path("gone.txt"));
  ExpectFailure(Run({"convert", "-q"}), 2, "PATH or --from is required (see zrml convert --help)");
}

#ifndef _WIN32
// Such as what a shell's <(command) names.
TEST_F(ConvertOptionsTest, ListMayBeAPipe) {
  const std::string source = Make("run.raw", SmallAcquisition());
  const std::string pipe = Path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&] { std::ofstream(pipe) << source << '\n'; });
  const ProcessResult result =
      Run({"convert", "--from", pipe, "-o", Path("out"), "--format", "tsv", "--function", "1"});
  writer.join();
  ExpectOutput(result, Path("out") + "/run.tsv\n");
  ExpectFailure(Run({"convert", "--from", "/dev/null"}), 2, "there are no sources in /dev/null");
}
#endif

TEST_F(ConvertOptionsTest, AbsorbanceIsWrittenOnRequest) {
  const std::vector<std::string> rest = {"--function", "1,2,6,p1"};
  const auto spectra = [&](std::vector<std::string> more) {
    return Count(Converted(std::move(more)),
                 "name=\"electromagnetic radiation spectrum\"/>\n<cvParam cvRef=\"MS\" "
                 "accession=\"MS:1000128\"");
  };
  EXPECT_EQ(spectra({"--damaged"}), 0U);  // function 4 cannot be read
  EXPECT_EQ(spectra({"--function", "1,2,6,p1", "--absorbance"}), 2U);
  EXPECT_EQ(spectra({"--function", "1,5"}), 2U);
  EXPECT_NE(Convert({"--stdout", "--damaged", "-v"})
                .errors.find(" chromatograms, without absorbance (--absorbance)\n"),
            std::string::npos);
}

// An index of no scans: what is in another file is not asked for.
TEST_F(ConvertOptionsTest, EmptyFunctionGetsNoAbsorbance) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.functions[0].scans.clear();
  const std::string path = Make("empty.raw", raw);
  const ProcessResult result = Run({"convert", path + "/_FUNC001.DAT", "--stdout"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_NE(result.output.find("<spectrumList count=\"0\""), std::string::npos);
}

TEST_F(ConvertOptionsTest, AbsorbanceAloneIsWritten) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.functions = {raw.functions[4]};
  raw.history.clear();
  raw.processed.clear();
  path_ = Make("detector.raw", raw);
  const ProcessResult result = Convert({"-o", Path("out")});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, Path("out") + "/detector.mzML\n");
  EXPECT_EQ(result.errors,
            "zrml: " + path_ + ": there are no other spectra, so its absorbance spectra are converted\n");
  EXPECT_EQ(Count(Contents("out/detector.mzML"), "<spectrum "), 2U);
  EXPECT_EQ(Convert({"-o", Path("out"), "-q", "--force"}).errors, "");
}

// The products of function 2, of type 9, with one channel at 50.5.
TEST_F(ConvertOptionsTest, MonitoringIsChromatogramsAndSpectraOnRequest) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.functions[1].record.type = 9;
  path_ = Make("channels.raw", raw);
  const std::string bare = Converted({"--function", "2"});
  EXPECT_EQ(Count(bare, "<spectrum "), 0U);
  EXPECT_EQ(Count(bare, "id=\"function 2 channel 1: 50.5\" defaultArrayLength=\"2\""), 1U);
  EXPECT_EQ(Count(Converted({"--function", "2", "--monitored-spectra"}), "<spectrum "), 2U);
  EXPECT_EQ(Count(Converted({"--function", "1,2", "--ms-level", "1"}), "<spectrum "), 3U);
}

TEST_F(ConvertOptionsTest, ProfilesAreNoMgfUnlessAskedFor) {
  RawDirectoryBuilder raw = SmallAcquisition();
  for (ScanFiles& scan : raw.functions[1].scans) scan.index.centroidState = CentroidState::kProfile;
  path_ = Make("profiles.raw", raw);
  const std::vector<std::string> asked = {"--format", "mgf", "--function", "2", "--stdout"};
  ExpectFailure(Convert(asked), 2,
                path_ +
                    ": scan 1 of function 2 is a profile, and MGF is for peaks (--centroid writes its peaks, "
                    "--profile the profile)");
  EXPECT_EQ(Count(Converted({"--format", "mgf", "--function", "2", "--profile"}), "BEGIN IONS"), 2U);
}

// Also from one of its data files: the function is that of the directory.
TEST_F(ConvertOptionsTest, FileIsTheSameHoweverItsSourceIsTyped) {
  setup_.folder = folder_;
  const std::string wanted = Converted({"--function", "1"});
  for (const char* typed : {"run.raw", "./run.raw", "run.raw/", "scratch/../run.raw", ".//run.raw//"}) {
    path_ = typed;
    EXPECT_EQ(Converted({"--function", "1"}), wanted) << typed;
  }
  path_ = "run.raw/_FUNC006.DAT";
  EXPECT_EQ(Count(Converted({}), "id=\"function=6 process=0 scan=1\""), 1U);
}

}  // namespace
}  // namespace zrml::test
