// The conversion of a sample, as a library: from a source in memory into memory.
#include <atomic>
#include <functional>
#include <limits>

#include "convert/plan.h"
#include "tests/convert/memory_conversion.h"

namespace zrml::convert::test {
namespace {

// 100, 200.5 and 300.0625 are 0x42C80000, 0x43488000 and 0x43960800 in single precision; 10, 0.5 and 1000000
// are 0x41200000, 0x3F000000 and 0x49742400.
TEST_F(ConvertTest, SurveySpectrumAsMzml) {
  ExpectHas(Converted(Of("1", "1")),
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
  const std::string output = Converted(Of("2", "1"));
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
  ExpectLacks(Converted(Of("2", "2")), "precursor");
}

// Minutes: 0.5, 1 and 1.5 of function 1, 1.125 and 2 of function 2.
TEST_F(ConvertTest, SpectraAreInTimeOrder) {
  const std::string output = Converted(Of("1,2"));
  std::size_t at = 0;
  for (const char* spectrum :
       {R"(index="0" id="function=1 process=0 scan=1")", R"(index="1" id="function=1 process=0 scan=2")",
        R"(index="2" id="function=2 process=0 scan=1")", R"(index="3" id="function=1 process=0 scan=3")",
        R"(index="4" id="function=2 process=0 scan=2")"}) {
    at = output.find(spectrum, at);
    ASSERT_NE(at, std::string::npos) << spectrum;
  }
}

TEST_F(ConvertTest, SpectrumWithoutATimeIsTheLast) {
  Scan(0, 0).minutes = std::numeric_limits<double>::quiet_NaN();
  const std::string output = Converted(Of("1,2"));
  const std::size_t last = output.find("index=\"4\" id=\"function=1 process=0 scan=1\"");
  ASSERT_NE(last, std::string::npos);
  EXPECT_EQ(output.find("scan start time", last), std::string::npos);
}

TEST_F(ConvertTest, EmptySpectrumHasEmptyArraysAndNoBasePeak) {
  const std::string output = Converted(Of("1", "3"));
  ExpectHas(output, "defaultArrayLength=\"0\"");
  EXPECT_EQ(Count(output, "<binaryDataArray encodedLength=\"0\">"), 2U);
  ExpectLacks(output, "base peak");
  ExpectLacks(output, "observed m/z");
  ExpectHas(output, "name=\"total ion current\" value=\"0\"");
}

TEST_F(ConvertTest, LostSpectrumHasNoTotal) {
  Scan(0, 1).isUnreadable = true;
  Options options = Of("1", "2");
  options.isLossAllowed = true;
  Text out;
  Convert(options, out);
  ExpectHas(out.text, "scan=2\" defaultArrayLength=\"0\"");
  ExpectLacks(out.text, "name=\"total ion current\"");
}

// Nobody says whether it was a profile.
TEST_F(ConvertTest, EmptySpectrumOfAReportIsOfNoKindUnlessTheReportSaysSo) {
  const std::string unknown =
      "<cvParam cvRef=\"MS\" accession=\"MS:1000525\" name=\"spectrum representation\"/>";
  ExpectLacks(Converted(Of("1", "3")), unknown);
  data_.format = source::Format::kReport;
  ExpectHas(Converted(Of("1", "3")), unknown);
  ExpectLacks(Converted(Of("1", "2")), unknown);
  Scan(0, 2).isCentroided = true;
  ExpectHas(Converted(Of("1", "3")), "name=\"centroid spectrum\"");
}

TEST_F(ConvertTest, NanIntensityIsNotTheBasePeak) {
  Scan(0, 1).points = {{100, 101, 102}, {std::numeric_limits<double>::quiet_NaN(), 3, 2}};
  ExpectHas(Converted(Of("1", "2")), "name=\"base peak m/z\" value=\"101\"");
}

TEST_F(ConvertTest, UnknownPolarityIsLeftOut) {
  data_.functions[0].info.polarity = source::Polarity::kUnknown;
  ExpectLacks(Converted(Of("1")), "tive scan");
}

// Each eighth of a minute from 0 on; 210 and 210.5 are 0x43520000 and 0x43528000; 0 and 3 are 0 and
// 0x40400000.
TEST_F(ConvertTest, AbsorbanceSpectraHaveTheNumberOfTheirFiles) {
  const std::string output = Converted(Within("0.375-0.375"));
  EXPECT_EQ(Count(output, "<spectrum "), 1U);
  ExpectHas(output, R"(<spectrum index="0" id="function=3 process=0 scan=4" defaultArrayLength="2">
<cvParam cvRef="MS" accession="MS:1000804" name="electromagnetic radiation spectrum"/>
<cvParam cvRef="MS" accession="MS:1000128" name="profile spectrum"/>
<cvParam cvRef="MS" accession="MS:1000619" name="lowest observed wavelength" value="210" unitCvRef="UO" unitAccession="UO:0000018" unitName="nanometer"/>
<cvParam cvRef="MS" accession="MS:1000618" name="highest observed wavelength" value="210.5" unitCvRef="UO" unitAccession="UO:0000018" unitName="nanometer"/>
)");
  ExpectHas(output, "unitName=\"nanometer\"/>\n<binary>AABSQwCAUkM=<");
  ExpectHas(output, "name=\"intensity array\"/>\n<binary>AAAAAAAAQEA=<");  // no file has a unit
}

// Bins 5 and 10 have points; equal masses stay in the order of the bins. 50, 100, 100, 150 are 0x42480000,
// 0x42C80000 twice and 0x43160000; 1, 2, 3, 4 are 0x3F800000, 0x40000000, 0x40400000, 0x40800000; 5 and 10
// are 0x40A00000 and 0x41200000.
TEST_F(ConvertTest, DriftBinsAreAThirdArray) {
  const std::string output = Converted(Of("5"));
  ExpectHas(output, "defaultArrayLength=\"4\"");
  ExpectHas(output, "<binary>AABIQgAAyEIAAMhCAAAWQw==<");
  ExpectHas(output, "<binary>AACAPwAAAEAAAEBAAACAQA==<");
  ExpectHas(output,
            "name=\"non-standard data array\" value=\"drift bin\"/>\n<binary>AACgQAAAoEAAACBBAAAgQQ==<");
}

TEST_F(ConvertTest, MissingDriftBinsAreNoted) {
  data_.functions[3].binCount = 0;
  Text out;
  const Result result = Convert(Of("1-"), out);
  ASSERT_EQ(result.notes.size(), 1U);
  EXPECT_EQ(result.notes[0].text,
            "the drift bins of function 5 are left out: the library that reads them is missing");
  ExpectHas(out.text, "id=\"function=5 process=0 scan=1\" defaultArrayLength=\"3\"");
  Text rows;
  EXPECT_TRUE(Convert(As(Format::kTsv, Of("5")), rows).notes.empty());
}

TEST_F(ConvertTest, AbsorbanceIsLeftOutUnlessAskedForOrAlone) {
  const auto convert = [&](const Selection& selection) {
    Options options = Of("1");
    options.selection = selection;
    Text out;
    const Result result = Convert(options, out);
    return std::pair(result.absorbance, Count(out.text, "name=\"wavelength array\""));
  };
  using Found = std::pair<Absorbance, std::size_t>;
  EXPECT_EQ(convert({}), Found(Absorbance::kLeftOut, 0));
  EXPECT_EQ(convert({.hasAbsorbance = true}), Found(Absorbance::kTaken, 25));
  EXPECT_EQ(convert({.functions = *FunctionSet::Parse("1"), .hasAbsorbance = true}),
            Found(Absorbance::kTaken, 25));
  EXPECT_EQ(convert({.functions = *FunctionSet::Parse("1")}), Found(Absorbance::kNone, 0));
  EXPECT_EQ(convert({.functions = *FunctionSet::Parse("1,3")}), Found(Absorbance::kTaken, 25));
  EXPECT_EQ(convert({.functions = *FunctionSet::Parse("1-")}), Found(Absorbance::kLeftOut, 0));
  EXPECT_EQ(convert({.functions = *FunctionSet::Parse("3-4")}), Found(Absorbance::kTakenAlone, 25));
  EXPECT_EQ(convert({.msLevels = *NumberSet::Parse("1")}), Found(Absorbance::kNone, 0));
  data_.functions = {data_.functions[2]};  // which has no scans
  EXPECT_EQ(convert({}), Found(Absorbance::kTakenAlone, 25));
}

// The areas of the bins are 10 + 20 + 10 and 1 + 2 + 1: two peaks, with the numbers of their bins.
TEST_F(ConvertTest, EachDriftBinHasCentroidsOfItsOwn) {
  FakeScan& scan = data_.functions[3].scans[0];
  scan.isCentroided = false;
  scan.bins = {{4, {{100, 100.25, 100.5}, {10, 20, 10}}}, {9, {{100, 100.25, 100.5}, {1, 2, 1}}}};
  Options options = Of("5");
  options.arrays.isCompressed = false;
  EXPECT_EQ(Count(Converted(options), "defaultArrayLength=\"6\""), 1U);
  options.selection.points = {.centroidLevels = NumberSet(), .centroids = {.isArea = true}};
  const std::string output = Converted(options);
  ExpectHas(output, "defaultArrayLength=\"2\" dataProcessingRef=\"centroiding\"");
  ExpectHas(output, "<binary>AACgQAAAIEE=</binary>");  // 5 and 10 of single precision
  options.selection.points.filter.minIntensity = 5;
  ExpectHas(Converted(options), "<binary>AACgQA==</binary>");
}

// The third of the three has no points, and no peaks, either.
TEST_F(ConvertTest, EmptyScansOfProfilesBecomeCentroidsToo) {
  for (int scan = 0; scan < 3; ++scan) Scan(0, scan).isCentroided = false;
  Options options = Of("1");
  EXPECT_EQ(Count(Converted(options), "\"MS:1000128\""), 3U);
  options.selection.points.centroidLevels = NumberSet();
  EXPECT_EQ(Count(Converted(options), "\"MS:1000128\""), 0U);
}

TEST_F(ConvertTest, ReportSpectraSayHowTheyWereMade) {
  Scan(0, 0).process = "Combine (5:9-1:3)";
  Scan(0, 1).process = "Smooth";
  const std::string output = Converted(Of("1"));
  ExpectHas(output,
            "<scanList count=\"1\">\n<cvParam cvRef=\"MS\" accession=\"MS:1000571\" "
            "name=\"sum of spectra\"/>\n<userParam name=\"process\" type=\"xsd:string\" "
            "value=\"Combine (5:9-1:3)\"/>\n<scan>");
  ExpectHas(output,
            "name=\"no combination\"/>\n<userParam name=\"process\" type=\"xsd:string\" "
            "value=\"Smooth\"/>\n<scan>");
}

// A spectrum without points is not written, whatever it is.
TEST_F(ConvertTest, ProfilesAreNoMgfUnlessAskedFor) {
  Scan(1, 0) = {.minutes = 1, .isCentroided = false};
  Converted(As(Format::kMgf, Of("2")));
  Scan(1, 1).isCentroided = false;
  ExpectError(As(Format::kMgf, Of("2")), ErrorKind::kProfile,
              "scan 2 of function 2 is a profile, and MGF is for peaks");
  Options options = As(Format::kMgf, Of("2"));
  options.selection.hasProfiles = true;
  EXPECT_EQ(Count(Converted(options), "BEGIN IONS"), 1U);
}

// 0.57 minutes in single precision and in double; 0.1 and 137.99786376953125 of single precision, and what is
// beyond it.
TEST_F(ConvertTest, TextHasTheShortestNumbers) {
  const auto single = [](float value) { return static_cast<double>(value); };
  Scan(1, 0).minutes = single(0.57F);
  Scan(1, 0).points = {{single(0.1F), 137.99786376953125, 137.997863769531, 16777217},
                       {1, 2.5, 0.1, 33554432}};
  Scan(1, 1).minutes = 0.57;
  const std::string output = Converted(As(Format::kMgf, Of("2")));
  EXPECT_EQ(Count(output, "RTINSECONDS=34.2\n"), 2U);
  ExpectHas(output, "\n0.1 1\n137.99786 2.5\n137.997863769531 0.1\n16777217 33554432\nEND");
  ExpectHas(Converted(As(Format::kTsv, Of("2", "1"))), "2\t1\t0.57\t137.99786\t2.5\n");
}

TEST_F(ConvertTest, FolderIsNamedHoweverItsPathWasTyped) {
  data_.metadata.push_back({"DatasetName", "../typed/./by/somebody/run.raw"});
  ExpectHas(Converted(Of("1")), "<userParam name=\"DatasetName\" type=\"xsd:string\" value=\"run.raw\"/>");
}

TEST_F(ConvertTest, MetadataAreParametersOfTheRun) {
  const std::string output = Converted(Of("1"));
  ExpectHas(output, "<run id=\"run_run\" ");
  ExpectHas(output,
            "<userParam name=\"Operator\" type=\"xsd:string\" value=\"Zo\xC3\xAB "
            "&quot;Z&quot;&#13;&#10;next\xE2\x80\xA8line\"/>");
  ExpectHas(output, "<userParam name=\"Mode\" type=\"xsd:string\" value=\"ES+\"/>");
  ExpectHas(output, "<userParam name=\"Mode of function 2\" type=\"xsd:string\" value=\"ES-\"/>");
  ExpectLacks(output, "Absent");
  ExpectLacks(output, "Mode of function 4");
  ExpectLacks(output, "all of it");  // the function's text
}

TEST_F(ConvertTest, SourceFilesHaveTheirChecksum) {
  // printf 'valid and sound' | sha1sum
  const std::string output = Converted(Of("1"));
  ExpectHas(output, "name=\"Waters raw format\"/>\n");
  ExpectHas(output, "value=\"153dc103289677f1a1af202eba15970f43425314\"");
}

TEST_F(ConvertTest, IndexStandsAtTheEnd) {
  Options options = Of("1");
  const std::string plain = Converted(options);
  EXPECT_TRUE(plain.starts_with("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<mzML "));
  EXPECT_TRUE(plain.ends_with("</run>\n</mzML>\n"));
  options.isIndexed = true;
  EXPECT_TRUE(Converted(options).ends_with("</fileChecksum>\n</indexedmzML>\n"));
}

// Two arrays of the spectrum, four of total ion currents, four of the traces: 0.1 is in one of them.
TEST_F(ConvertTest, PrecisionIsChosenByArray) {
  const auto bits = [&](const ArrayOptions& arrays) {
    Options options = Of("1", "1");
    options.arrays = arrays;
    options.arrays.isCompressed = false;
    const std::string output = Converted(options);
    return std::to_string(Count(output, "64-bit")) + " of " + std::to_string(Count(output, "-bit float"));
  };
  EXPECT_EQ(bits({}), "1 of 10");
  EXPECT_EQ(bits({.masses = Precision::kDouble}), "2 of 10");
  EXPECT_EQ(bits({Precision::kDouble, Precision::kSingle, Precision::kDouble}), "5 of 10");
}

TEST_F(ConvertTest, Mgf) {
  EXPECT_EQ(Converted(As(Format::kMgf, Of("1-3"))), R"(BEGIN IONS
TITLE=run function=2 process=0 scan=1 Product
SCANS=1
RTINSECONDS=67.5
PEPMASS=445.12
50.5 7
END IONS

BEGIN IONS
TITLE=run function=2 process=0 scan=2 Product
SCANS=2
RTINSECONDS=120
50.5 7
END IONS

)");
}

TEST_F(ConvertTest, TitleOfMgfIsOneLine) {
  data_.functions[1].info.name = "Pro\nduct\t\x7F";
  ExpectHas(Converted(As(Format::kMgf, Of("2", "1"))), "scan=1 Pro duct  \nSCANS");
}

// Non-finite points are left out of MGF, which has no form for them.
TEST_F(ConvertTest, Tsv) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  Scan(1, 1) = {.minutes = kNan,
                .points = {{1e-7, 0.1, 1e15, 1.7976931348623157e308}, {kNan, kInfinity, -0.0, 5e-324}}};
  EXPECT_EQ(Converted(As(Format::kTsv, Of("1,2"))),
            "function\tscan\ttime\tm/z\tintensity\n"
            "1\t1\t0.5\t100\t10\n"
            "1\t1\t0.5\t200.5\t0.5\n"
            "1\t1\t0.5\t300.0625\t1000000\n"
            "1\t2\t1\t100.25\t5\n"
            "2\t1\t1.125\t50.5\t7\n"
            "2\t2\tnan\t1e-07\tnan\n"
            "2\t2\tnan\t0.1\tinf\n"
            "2\t2\tnan\t1e+15\t-0\n"
            "2\t2\tnan\t1.7976931348623157e+308\t5e-324\n");
  ExpectHas(Converted(As(Format::kMgf, Of("2", "2"))),
            "Product\nSCANS=2\n1e+15 -0\n1.7976931348623157e+308 5e-324\nEND");
}

TEST_F(ConvertTest, SelectionIsByFunctionScanLevelAndTime) {
  const auto rows = [&](Options options, const std::string& levels, const std::string& minutes) {
    options.selection.msLevels = NumberSet::Parse(levels).value();
    options.selection.minutes = ParseTimeRange(minutes);
    return Count(Converted(As(Format::kTsv, options)), "\n") - 1;
  };
  EXPECT_EQ(rows(Of("1,2"), "1-", "0-"), 6U);
  EXPECT_EQ(rows(Of("1,2", "2-"), "1-", "0-"), 2U);
  EXPECT_EQ(rows(Of("1,2"), "2-", "0-"), 2U);
  EXPECT_EQ(rows(Of("1,2"), "1-", "1-1.125"), 2U);
}

TEST_F(ConvertTest, LockMassCanBeLeftOut) {
  data_.functions[1].info.isLockMass = true;
  Options options = As(Format::kTsv, Of("1,2"));
  options.selection.isLockMassExcluded = true;
  EXPECT_EQ(Count(Converted(options), "\n2\t"), 0U);
}

// They have numbers of functions and scans, but no level.
TEST_F(ConvertTest, AbsorbanceIsSelectedByItsNumber) {
  Options options = Of("3", "4-5");
  EXPECT_EQ(Count(Converted(options), "<spectrum "), 2U);
  options.selection.msLevels = NumberSet::Parse("1-").value();
  ExpectError(options, ErrorKind::kNothingSelected, "none of its scans is asked for");
}

TEST_F(ConvertTest, NothingSelected) {
  ExpectError(Of("9"), ErrorKind::kNothingSelected, "none of its scans is asked for");
  ExpectError(As(Format::kMgf, Of("1")), ErrorKind::kNothingSelected,
              "none of its scans is an MS/MS scan that is asked for");
}

TEST_F(ConvertTest, WithoutScansAnySelectionIsEmpty) {
  data_.functions.clear();
  EXPECT_EQ(Converted(As(Format::kTsv, Of("9"))), "function\tscan\ttime\tm/z\tintensity\n");
  EXPECT_EQ(Converted(As(Format::kMgf, Of("1"))), "");
  data_.absorbance.reset();
  ExpectLacks(Converted(Of("9")), "<spectrum ");
}

// Both "p2" and "p2.2" come from function 1.
TEST_F(ConvertTest, ProcessedFunctionsHaveIdsOfTheirOwn) {
  for (const int repeat : {1, 2}) {
    FakeFunction processed = data_.functions[1];
    processed.info.id = {.number = 1, .process = 2, .repeat = repeat};
    data_.functions.push_back(processed);
  }
  const std::string output = Converted(Of("1,p2,p2.2", "1"));
  ExpectHas(output, "id=\"function=1 process=0 scan=1\"");
  ExpectHas(output, "id=\"function=1 process=2 scan=1\"");
  ExpectHas(output, "id=\"function=1 process=65538 scan=1\"");
  EXPECT_EQ(Count(output, "<spectrum "), 3U);
  ExpectHas(output, "name=\"preset scan configuration\" value=\"1\"");
  const std::string rows = Converted(As(Format::kTsv, Of("p2.2", "1")));
  EXPECT_EQ(rows, "function\tscan\ttime\tm/z\tintensity\np2.2\t1\t1.125\t50.5\t7\n");
}

struct LossCase {
  const char* name;
  std::function<void(FakeData&)> lose;
  Options options;
  std::string refused;
  std::string reported;
  std::string converted;  // a part of the output
};

TEST_F(ConvertTest, LossesAreRefusedOrCounted) {
  const LossCase cases[] = {
      {"scans", [](FakeData& data) { data.functions[0].scans[1].isUnreadable = true; }, Of("1"),
       "cannot read scan 2 of function 1", "scans of function 1 that cannot be read: 1 (2)",
       "id=\"function=1 process=0 scan=2\" defaultArrayLength=\"0\""},
      {"points", [](FakeData& data) { data.functions[0].scans[1].lost = 3; }, Of("1"),
       "cannot read all points of scan 2 of function 1", "scans of function 1 that have lost points: 1 (2)",
       "id=\"function=1 process=0 scan=2\" defaultArrayLength=\"1\""},
      {"totals", [](FakeData& data) { data.functions[0].hasNoTotals = true; }, Of("1", "3"),
       "cannot read the total ion current of scan 3 of function 1",
       "total ion currents of function 1 that cannot be read: 1 (3)", "<chromatogramList count=\"2\""},
      {"bins", [](FakeData& data) { data.functions[3].scans[0].isUnreadable = true; }, Of("5"),
       "cannot read scan 1 of function 5", "scans of function 5 that cannot be read: 1 (1)",
       "id=\"function=5 process=0 scan=1\" defaultArrayLength=\"0\""},
      {"traces", [](FakeData& data) { data.traces[0].isUnreadable = true; }, Of("1"), "cannot read trace 1",
       "traces that cannot be read: 1 (1)", "<chromatogramList count=\"3\""},
      {"traces of functions",
       [](FakeData& data) { data.functionTraces[1] = {{.name = "UV", .isUnreadable = true}}; }, Of("2"),
       "cannot read trace 1 of function 2", "traces of function 2 that cannot be read: 1 (1)",
       "<chromatogramList count=\"3\""},
      {"absorbance", [](FakeData& data) { data.absorbance->scans[3].isUnreadable = true; },
       Within("0.375-0.375"), "cannot read absorbance spectrum 4",
       "absorbance spectra that cannot be read: 1 (4)",
       "id=\"function=3 process=0 scan=4\" defaultArrayLength=\"0\""},
      {"points of absorbance", [](FakeData& data) { data.absorbance->scans[3].lost = 1; },
       Within("0.375-0.375"), "cannot read all points of absorbance spectrum 4",
       "absorbance spectra that have lost points: 1 (4)",
       "id=\"function=3 process=0 scan=4\" defaultArrayLength=\"2\""},
  };
  for (LossCase loss : cases) {
    SCOPED_TRACE(loss.name);
    data_ = KnownData();
    loss.lose(data_);
    ExpectError(loss.options, ErrorKind::kSourceDamaged, loss.refused);
    loss.options.isLossAllowed = true;
    Text out;
    const Result result = Convert(loss.options, out);
    ASSERT_EQ(result.losses.size(), 1U);
    EXPECT_EQ(TextOf(result.losses[0]), loss.reported);
    EXPECT_TRUE(out.isFinished);
    ExpectHas(out.text, loss.converted);
  }
}

// The sample's own first, then by function; one line of each kind.
TEST_F(ConvertTest, LossesAreCountedWhateverTheWorkers) {
  for (FakeScan& scan : data_.functions[0].scans) scan.lost = 1;
  Scan(3, 0).isUnreadable = true;
  data_.traces[1].isUnreadable = true;
  for (std::size_t scan = 1; scan < 25; ++scan) data_.absorbance->scans[scan].isUnreadable = true;
  Options options = Within("0-");
  options.isLossAllowed = true;
  for (const int workers : {1, 3}) {
    Text out;
    const Result result = Convert(options, out, workers);
    EXPECT_EQ(result.spectra, 31U);
    EXPECT_EQ(Count(out.text, "<spectrum "), 31U);
    std::vector<std::string> lines;
    for (const Loss& loss : result.losses) lines.push_back(TextOf(loss));
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "traces that cannot be read: 1 (2)",
                         "scans of function 1 that have lost points: 3 (1-3)",
                         "absorbance spectra that cannot be read: 24 (2-25)",
                         "scans of function 5 that cannot be read: 1 (1)",
                     }));
  }
}

TEST_F(ConvertTest, WorkersDoNotChangeTheFile) {
  const std::string one = Converted(Within("0-"));
  for (const int workers : {2, 3, 16}) EXPECT_EQ(Converted(Within("0-"), workers), one) << workers;
}

TEST_F(ConvertTest, ResultCounts) {
  Text out;
  const Result result = Convert(Of("1,2"), out);
  EXPECT_EQ(result.spectra, 5U);
  EXPECT_EQ(result.chromatograms, 5U);
}

TEST_F(ConvertTest, ProgressGoesUpToTheEnd) {
  std::vector<std::uint64_t> seen;
  const Hooks hooks = {{}, [&](std::uint64_t done, std::uint64_t all) {
                         seen.push_back(done);
                         EXPECT_EQ(all, 5U);
                       }};
  Text out;
  Convert(Of("1,2"), out, 1, hooks);
  EXPECT_EQ(seen, (std::vector<std::uint64_t>{1, 2, 3, 4, 5}));
}

// Checked before each spectrum at least.
TEST_F(ConvertTest, CanBeCancelled) {
  for (const int asked : {0, 3}) {
    std::atomic<int> count = 0;
    const Hooks hooks = {[&] { return count++ >= asked; }, {}};
    Text out;
    EXPECT_THROW(Convert(Of("1,2"), out, 2, hooks), Cancelled);
    EXPECT_FALSE(out.isFinished);
  }
}

// Each may have an index on a slow disk.
TEST_F(ConvertTest, PlanCanBeCancelledBeforeEachFunctionAndBeforeAbsorbance) {
  const auto source = zrml::test::OpenFake(data_, PathText(directory_.Path()));
  const int questions = static_cast<int>(data_.functions.size()) + 1;
  for (int asked = 0; asked <= questions; ++asked) {
    int count = 0;
    const auto plan = [&] { PlanRun(*source, 0, {}, Format::kMzml, [&] { return count++ >= asked; }); };
    if (asked < questions) {
      EXPECT_THROW(plan(), Cancelled);
    } else {
      EXPECT_NO_THROW(plan());
    }
  }
}

TEST_F(ConvertTest, SourceThatChangesIsRefusedOrNoted) {
  const Hooks hooks = {
      {}, [&](std::uint64_t, std::uint64_t) { directory_.WriteText("_DATA.DAT", "more than before"); }};
  ExpectError(Of("1"), ErrorKind::kSourceChanged, "_DATA.DAT has changed during the conversion", hooks);
  directory_.WriteText("_DATA.DAT", "valid and sound");
  Options options = Of("1");
  options.isLossAllowed = true;
  Text out;
  const Result result = Convert(options, out, 1, hooks);
  ASSERT_EQ(result.notes.size(), 1U);
  EXPECT_EQ(result.notes[0].kind, Note::Kind::kSourceChanged);
}

// Points lost after the source was opened are a change, not damage.
TEST_F(ConvertTest, ScanLostByAChangeIsNotDamage) {
  Scan(0, 2).lost = 1;
  const Hooks hooks = {{}, [&](std::uint64_t, std::uint64_t) { directory_.WriteText("_DATA.DAT", "less"); }};
  ExpectError(Of("1"), ErrorKind::kSourceChanged, "_DATA.DAT has changed during the conversion", hooks);
}

TEST_F(ConvertTest, FileOutsideTheDataMayChange) {
  directory_.WriteText("notes.txt", "of mine");
  const Hooks hooks = {
      {}, [&](std::uint64_t, std::uint64_t) { directory_.WriteText("notes.txt", "are changed"); }};
  Text out;
  EXPECT_TRUE(Convert(Of("1"), out, 1, hooks).notes.empty());
}

}  // namespace
}  // namespace zrml::convert::test
