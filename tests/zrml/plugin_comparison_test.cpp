// zrml plugin with a source: differences that the interface requires are listed row by row, and any other
// difference from the source is a fault.
#include "tools/zrml/plugin_comparison.h"

#include <cstdint>
#include <fstream>
#include <limits>

#include "tests/support/built_file.h"
#include "tests/support/sound_directory.h"
#include "tests/zrml/vials.h"
#include "tests/zrml/zrml_run.h"

namespace zrml::test {
namespace {

using tool::kWanted;
using tool::Wanted;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class PluginComparisonTest : public ZrmlTest {
 protected:
  // The lines of the output with a required difference or a fault.
  static std::string LineOf(const Wanted& difference, long long count) {
    return std::to_string(count) + "  " + std::string(difference.slot) + " " + std::string(difference.reason);
  }

  // With single blanks between words, however wide the columns are.
  static std::string Squeezed(const std::string& text) {
    std::string squeezed;
    for (const char c : text) {
      const bool isTwoBlanks = c == ' ' && squeezed.ends_with(' ');
      if (!isTwoBlanks) squeezed.push_back(c);
    }
    return squeezed;
  }

  // No faults, and these among the differences, each with this count.
  void ExpectWanted(const std::string& path,
                    const std::vector<std::pair<Wanted, long long>>& differences) const {
    const ProcessResult result = Run({"plugin", Argument(ZRML_PLUGIN), path});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    const std::string squeezed = Squeezed(result.output);
    for (const auto& [difference, count] : differences) {
      const std::string line = Squeezed(LineOf(difference, count));
      EXPECT_NE(squeezed.find(" " + line + "\n"), std::string::npos) << line << "\n" << result.output;
    }
  }

  // No faults, and none of these differences.
  void ExpectNotWanted(const std::string& path, const std::vector<Wanted>& differences) const {
    const ProcessResult result = Run({"plugin", Argument(ZRML_PLUGIN), path});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    for (const Wanted& difference : differences) {
      const std::string line = std::string(difference.slot) + " " + std::string(difference.reason);
      EXPECT_EQ(Squeezed(result.output).find(line), std::string::npos) << result.output;
    }
  }

  // The plug-in with one answer altered, named by its slot and perhaps a part of it.
  void ExpectFault(const std::string& path, const std::string& alteration) const {
    std::ofstream(path + ".altered") << alteration;
    const ProcessResult result = Run({"plugin", Argument(ZRML_ALTERED_PLUGIN), path});
    EXPECT_EQ(result.status, 7) << alteration << result.output;
    const std::string slot = alteration.substr(0, alteration.find(' '));
    const std::size_t faults = result.output.find("\nFaults\n  ");
    ASSERT_NE(faults, std::string::npos) << alteration << result.output;
    const bool isNamed = result.output.find("\n  " + slot + ": ", faults) != std::string::npos ||
                         result.output.find("\n  " + slot + " of ", faults) != std::string::npos;
    EXPECT_TRUE(isNamed) << alteration << result.output;
    EXPECT_TRUE(result.errors.starts_with("zrml: " + Argument(ZRML_ALTERED_PLUGIN) + " does not give what " +
                                          path + " holds: "))
        << result.errors;
  }

  void ExpectFaults(const std::string& path, const std::vector<std::string>& alterations) const {
    for (const std::string& alteration : alterations) ExpectFault(path, alteration);
  }

  void ExpectFaultsOfFunctions(const std::string& path) const {
    ExpectFaults(
        path, {"GetFunctionCount", "GetScanCount", "GetFunctionName", "GetFunctionKind", "GetMSLevel",
               "IsCentroided", "GetPolarity", "GetRetentionTimes", "GetSpectrum success", "GetSpectrum mass",
               "GetSpectrum intensity", "GetSpectrum start time", "FindPrecursorScan",
               "GetTotalIonChromatogram", "GetBasePeakChromatogram", "GetFunctionTraceCount",
               "GetFunctionTraceName", "GetFunctionTrace", "GetMetadataValue"});
  }

  // Omits the offsets of an index.
  static void ZeroOffsets(const std::filesystem::path& file, std::size_t recordSize) {
    std::fstream index(file, std::ios::binary | std::ios::in | std::ios::out);
    for (std::size_t at = 0; at < std::filesystem::file_size(file); at += recordSize)
      index.seekp(static_cast<std::streamoff>(at)).write("\0\0\0\0", 4);
  }

  // One function of one scan; "_FUNC001.DAT" is cut to `size` bytes.
  std::string MakeCut(const std::string& name, unsigned dataFormat, const ScanFiles& scan, std::size_t size,
                      float firstMass = 0, float lastMass = 0) const {
    RawDirectoryBuilder raw;
    raw.functions.resize(1);
    raw.functions[0].record.dataFormat = dataFormat;
    raw.functions[0].record.startMasses[0] = firstMass;
    raw.functions[0].record.endMasses[0] = lastMass;
    raw.functions[0].scans = {scan};
    std::string path = Make(name, raw);
    std::filesystem::resize_file(folder_ / name / "_FUNC001.DAT", size);
    return path;
  }

  struct Lost {
    std::size_t size;       // of the remaining file
    long long differences;  // required by the interface
  };
  void ExpectLost(const std::string& path, long long differences) const {
    SCOPED_TRACE(path + " of " + std::to_string(std::filesystem::file_size(path + "/_FUNC001.DAT")));
    if (differences > 0) {
      ExpectWanted(path, {{kWanted.lostPoints, differences}});
    } else {
      ExpectNotWanted(path, {kWanted.lostPoints});
    }
    ExpectFaults(path, {"GetSpectrum mass", "GetSpectrum intensity", "GetSpectrum fewer points"});
  }

  static ReportLines Scan(const std::vector<std::pair<std::string, std::string>>& keys,
                          const ReportPairs& points) {
    return SpectrumBlock(Keys(keys), points);
  }
  static ReportLines ReportOf(const ReportLines& scans) {
    return SampleBlock(FunctionBlock(Keys({{"Description", "survey"}, {"Type", "MS"}}) + scans));
  }
};

// Functions 6 and p1 are the fifth and the sixth of the list. Of ten spectra that can be read or refused,
// eight are read, one with a precursor. Function 3, of the first level, has no scans. Of each function two
// items have no value.
TEST_F(PluginComparisonTest, SmallAcquisition) {
  const std::string path = Make("run.raw");
  ExpectWanted(path, {{kWanted.listPosition, 2},
                      {kWanted.noPrecursor, 6},
                      {kWanted.refusedMassRange, 6},
                      {kWanted.absorbanceScan, 4},
                      {kWanted.precursorSearch, 1},
                      {kWanted.noMetadataValue, 12},
                      {kWanted.folderEnd, 6}});
}

// Then nothing is listed, and items of the sample alone have no function.
TEST_F(PluginComparisonTest, FunctionsWithoutTheirFiles) {
  const std::string path = Make("run.raw");
  for (const char* const extension : {".DAT", ".IDX"}) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "run.raw")) {
      const std::string name = entry.path().filename().string();
      if ((name.starts_with("_FUNC") || name.starts_with("_PROC")) && name.ends_with(extension))
        files.push_back(entry.path());
    }
    for (const std::filesystem::path& file : files) std::filesystem::remove(file);
    ASSERT_FALSE(files.empty());
    const ProcessResult result = Run({"plugin", Argument(ZRML_PLUGIN), path});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
  }
}

TEST_F(PluginComparisonTest, FunctionTableThatIsCut) {
  const std::string path = Make("run.raw");
  const std::filesystem::path table = folder_ / "run.raw" / "_FUNCTNS.INF";
  std::filesystem::resize_file(table, std::filesystem::file_size(table) - 1);
  ExpectWanted(path, {{kWanted.refusedTable, 1}});
}

// The first two records, of 416 bytes each: to the slots these functions, and p1 made of one, are "MS EI+".
TEST_F(PluginComparisonTest, FunctionsWhoseRecordsAreZeros) {
  const std::string path = Make("run.raw");
  std::fstream(folder_ / "run.raw" / "_FUNCTNS.INF", std::ios::in | std::ios::out) << std::string(832, '\0');
  ExpectWanted(path, {{kWanted.lostRecord, 3}});
  ExpectFaults(path, {"GetFunctionName", "GetPolarity", "GetSpectrum mass", "GetMetadataValue"});
}

TEST_F(PluginComparisonTest, FunctionWithoutItsDataFile) {
  const std::string path = Make("run.raw");
  std::filesystem::remove(folder_ / "run.raw" / "_FUNC002.DAT");
  ExpectWanted(path, {{kWanted.unlistedFunction, 1}, {kWanted.listPosition, 4}});
}

// The products' only precursor was in this file.
TEST_F(PluginComparisonTest, PrecursorWithoutItsDataFile) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.functions.resize(2);
  raw.history.clear();
  raw.processed.clear();
  const std::string path = Make("run.raw", raw);
  ExpectFault(path, "FindPrecursorScan");
  std::filesystem::remove(folder_ / "run.raw" / "_FUNC001.DAT");
  ExpectWanted(path, {{kWanted.unlistedFunction, 2}});
}

TEST_F(PluginComparisonTest, DriftBinsWithoutTheLibrary) {
  const std::string path = Make("run.raw");
  std::ofstream(folder_ / "run.raw" / "_FUNC006.CDT") << "";
  ExpectWanted(path, {{kWanted.lastDriftBin, 1}});
}

// Functions 3 and 5 share a name, which ends with their places 3 and 4 in the list.
TEST_F(PluginComparisonTest, FunctionsOfOneName) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.functions[5].record.type = 0;
  raw.labels.clear();
  ExpectWanted(Make("run.raw", raw), {{kWanted.sharedName, 1}});
}

TEST_F(PluginComparisonTest, ProcessedDataOfDriftBins) {
  const std::string path = Make("run.raw");
  std::ofstream(folder_ / "run.raw" / "_FUNC001.CDT") << "";
  ExpectWanted(path, {{kWanted.processedMobility, 1}, {kWanted.lastDriftBin, 2}});
}

// The stand-in for the maker's library has four bins.
TEST_F(PluginComparisonTest, DriftBinsWithTheLibrary) {
  const std::filesystem::path program = folder_ / "program";
  std::filesystem::create_directories(program);
  for (const std::filesystem::path& file : {BuiltFile(ZRML_PROGRAM), BuiltFile(ZRML_PLUGIN),
                                            BuiltFile(ZRML_STAND_INS) / "whole" / ZRML_MOBILITY_LIBRARY})
    std::filesystem::copy_file(file, program / file.filename());
  setup_.program = program / std::filesystem::path(ZRML_PROGRAM).filename();
  RawDirectoryBuilder raw;
  raw.functions = {SmallAcquisition().functions[0]};
  const std::string path = Make("run.raw", raw);
  std::ofstream(folder_ / "run.raw" / "_FUNC001.CDT") << "";
  const std::string plugin = Argument(program / std::filesystem::path(ZRML_PLUGIN).filename());
  const ProcessResult result = Run({"plugin", plugin, path});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_NE(Run({"info", path, "--json"}).output.find("\"driftBins\": 4"), std::string::npos);
}

// The last two of 32769, each with a first and a last scan.
TEST_F(PluginComparisonTest, NumbersBeyond16Bits) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.functions[0].scans.assign(32769, ScanFrom<StoredPoint9>(0.5F, {{100, 1}}));
  ExpectWanted(Make("run.raw", raw), {{kWanted.scanNumber, 4}});
}

// In data format 3, where masses are the places of the points, the last point is missing; so is the second
// point of a pair of format 1 without intensity.
TEST_F(PluginComparisonTest, PlacesWithoutPoints) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.functions[0].record.dataFormat = 3;
  raw.functions[0].scans = {ScanOf<StoredPoint3>(0.5F, {{.mantissa = 5}, {.mantissa = 6}, {.mantissa = 7}})};
  const std::string path = Make("cut.raw", raw);
  std::filesystem::resize_file(folder_ / "cut.raw" / "_FUNC001.DAT", 4);
  ExpectWanted(path, {{kWanted.lostPoints, 1}});
  raw.functions[0].record.dataFormat = 1;
  raw.functions[0].scans = {ScanOf<StoredPoint1>(
      0.5F,
      {{.mass = 100 * 1024, .mantissa = 5}, {.mass = 101 * 1024}, {.mass = 102 * 1024, .mantissa = 6}})};
  ExpectWanted(Make("pairs.raw", raw), {{kWanted.unwrittenPoints, 1}});
}

// Chromatograms are computed with one spectrum, in which the place keeps the point of the scan before.
TEST_F(PluginComparisonTest, PlaceWithoutAPointAfterOneWithAPoint) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.functions[0].record.dataFormat = 1;
  const StoredPoint1 first = {.mass = 100 * 1024, .mantissa = 5};
  raw.functions[0].scans = {ScanOf<StoredPoint1>(0.5F, {first, {.mass = 101 * 1024, .mantissa = 6}}),
                            ScanOf<StoredPoint1>(1, {first, {.mass = 101 * 1024}})};
  const std::string path = Make("run.raw", raw);
  ExpectWanted(path, {{kWanted.unwrittenPoints, 1}});
  ExpectFaults(path, {"GetMassRangeChromatogram", "GetMassRangeBasePeakChromatogram", "GetSpectrum mass"});
}

// The first function has three spectra: one out of order, one in order, one without points; and a trace
// without points. The second sample has analog functions alone, the third none.
TEST_F(PluginComparisonTest, Report) {
  const std::string path = Make("vials.rpt", Vials());
  ExpectWanted(path, {{kWanted.scanDimensions, 2},
                      {kWanted.reportOrder, 1},
                      {kWanted.refusedSpectrum, 1},
                      {kWanted.refusedTrace, 1},
                      {kWanted.growingTraces, 1},
                      {kWanted.noScanValue, 2},
                      {kWanted.noMetadata, 2}});
}

// The function has no polarity; its first spectrum no points, its second neither a time nor intensities. A
// time is requested as the start and the end of a spectrum and in the list of all.
TEST_F(PluginComparisonTest, ReportWithFewValues) {
  const ReportLines report =
      ReportOf(Scan({{"Time", "1"}, {"BPI", "100"}, {"TIC", "7"}, {"Continuum", "FALSE"}}, {}) +
               Scan({}, {{100, 50}}) + Scan({{"Time", "2"}, {"BPI", "100"}, {"TIC", "7"}}, {{100, 50}}));
  const std::string path = Make("little.rpt", report);
  ExpectWanted(path, {{kWanted.polarity, 2},
                      {kWanted.refusedFirstSpectrum, 1},
                      {kWanted.absentScanTime, 2},
                      {kWanted.absentTime, 1},
                      {kWanted.absentTotal, 1},
                      {kWanted.absentBasePeak, 1}});
}

// The interface has no number for an unknown type.
TEST_F(PluginComparisonTest, ReportOfUnknownType) {
  const ReportLines unknown = FunctionBlock(Keys({{"Type", "TOFX"}}) + Scan({{"Time", "1"}}, {{100, 50}}));
  ExpectWanted(Make("unknown.rpt", SampleBlock(unknown)), {{kWanted.unknownKind, 1}});
}

// Times and totals are given as stored; these times sort after all others.
TEST_F(PluginComparisonTest, NanValuesInADirectory) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.functions[0].scans.assign(3, ScanFrom<StoredPoint9>(0.5F, {{100, 1}}));
  raw.functions[0].scans[1].index.retentionTime = static_cast<float>(kNaN);
  raw.functions[0].scans[0].index.totalIntensity = static_cast<float>(kNaN);
  const std::string path = Make("run.raw", raw);
  ExpectNotWanted(path, {kWanted.absentTime, kWanted.absentTotal, kWanted.absentScanTime});
  ExpectFaults(path, {"GetRetentionTimes NaN", "GetTotalIonChromatogram NaN", "GetSpectrum NaN time"});
}

// The second scan has no values, which read as 0.
TEST_F(PluginComparisonTest, NanValuesInAReport) {
  const ReportLines report =
      ReportOf(Scan({{"Time", "nan"}, {"BPI", "nan"}, {"TIC", "nan"}}, {{100, 50}}) + Scan({}, {{100, 50}}));
  const std::string path = Make("none.rpt", report);
  ExpectWanted(path, {{kWanted.absentTime, 1},
                      {kWanted.absentTotal, 1},
                      {kWanted.absentBasePeak, 1},
                      {kWanted.absentScanTime, 2}});
  ExpectFaults(path, {"GetTotalIonChromatogram NaN", "GetBasePeakChromatogram NaN",
                      "GetTotalIonChromatogram zero", "GetBasePeakChromatogram zero"});
}

// The plug-in reads missing bytes of a point or a group of points as zeros. Points of mass 0 are left out, so
// a file that ends between two points can give the same as the source.
TEST_F(PluginComparisonTest, IncompletePoints) {
  const ScanFiles pairs = ScanOf<StoredPoint1>(0.5F, {{.mass = 100 * 1024, .mantissa = 5},
                                                      {.mass = 101 * 1024, .mantissa = 6},
                                                      {.mass = 102 * 1024, .mantissa = 7}});
  for (const auto& [size, differences] : {Lost{9, 1}, {10, 0}, {17, 1}})
    ExpectLost(MakeCut("pairs.raw", 1, pairs, size), differences);
  const ScanFiles points = ScanFrom<StoredPoint9>(0.5F, {{100.3, 5}, {200.7, 6}, {300.77, 7}});
  for (const auto& [size, differences] : {Lost{5, 1}, {6, 0}, {17, 1}})
    ExpectLost(MakeCut("points.raw", 9, points, size), differences);
  const ScanFiles groups = ScanOf<StoredPoint4>(
      0.5F,
      {{.mantissa = 5}, {.mantissa = 6}, {.mantissa = 7}, {.mantissa = 8}, {.mantissa = 9, .exponent = 2}});
  for (const auto& [size, differences] : {Lost{1, 1}, {9, 1}, {10, 1}, {19, 1}}) {
    ExpectLost(MakeCut("up.raw", 4, groups, size, 100, 500), differences);
    ExpectLost(MakeCut("down.raw", 4, groups, size, 500, 100), differences);
  }
}

// Two sub-scans of two points, which the plug-in does not sum when zeros follow. A point of data format 13
// ends with four meaningless bytes: without them the plug-in still has the last point, and sums it.
TEST_F(PluginComparisonTest, IncompleteSubScans) {
  const std::vector<StoredPoint12> stored =
      NearestPoints<StoredPoint12>({{100, 5}, {200, 6}, {100, 7}, {200, 8}});
  for (const auto& [size, differences] : {Lost{20, 0}, {24, 1}, {27, 1}, {31, 1}})
    ExpectLost(MakeCut("short.raw", 12, ScanOf(0.5F, stored), size), differences);
  std::vector<StoredPoint13> longPoints;
  for (const StoredPoint12& point : stored)
    longPoints.push_back({point.massExponent, point.massMantissa, point.intensity});
  const ScanFiles scan = ScanOf(0.5F, longPoints);
  for (const auto& [size, differences] : {Lost{36, 1}, {42, 1}, {44, 1}, {47, 1}})
    ExpectLost(MakeCut("long.raw", 13, scan, size), differences);
  const std::string whole = MakeCut("whole.raw", 13, scan, scan.data.size());
  ExpectNotWanted(whole, {kWanted.lostPoints, kWanted.unwrittenPoints, kWanted.profileSubScans});
  ExpectFaults(whole, {"GetSpectrum mass", "GetSpectrum intensity", "GetSpectrum more points"});
}

// Four samples of a profile, 0.002 apart, twice: summed as peaks they become fewer.
TEST_F(PluginComparisonTest, SubScansOfAProfile) {
  std::vector<WantedPoint> points;
  for (int i = 0; i < 8; ++i) points.push_back({500 + 0.002 * (i % 4), 5.0 + i});
  ScanFiles scan = ScanFrom<StoredPoint12>(0.5F, points);
  scan.index.centroidState = CentroidState::kProfile;
  const std::string profile = MakeCut("profile.raw", 12, scan, scan.data.size());
  ExpectWanted(profile, {{kWanted.profileSubScans, 1}});
  ExpectNotWanted(profile, {kWanted.lostPoints, kWanted.unwrittenPoints});
  scan.index.centroidState = CentroidState::kCentroid;
  ExpectNotWanted(MakeCut("peaks.raw", 12, scan, scan.data.size()), {kWanted.profileSubScans});
}

TEST_F(PluginComparisonTest, IncompleteAbsorbance) {
  const ScanFiles pairs =
      ScanOf<StoredPoint1>(0.5F, {{.mass = 210 * 1024, .mantissa = 5}, {.mass = 211 * 1024, .mantissa = 6}});
  const ScanFiles points = ScanFrom<StoredPoint9>(0.5F, {{210, 5}, {211, 6}});
  for (const unsigned dataFormat : {1U, 9U}) {
    RawDirectoryBuilder raw;
    raw.functions.resize(1);
    raw.functions[0].record.type = 12;
    raw.functions[0].record.dataFormat = dataFormat;
    raw.functions[0].scans = {dataFormat == 1 ? pairs : points};
    for (const std::size_t size : {9U, 8U, 3U}) {
      SCOPED_TRACE(std::to_string(dataFormat) + ", " + std::to_string(size));
      const std::string path = Make("run.raw", raw);
      std::filesystem::resize_file(folder_ / "run.raw" / "_FUNC001.DAT", size);
      ExpectWanted(path, {{kWanted.lostPoints, 1}});
      ExpectFaults(path, {"GetAbsorbanceSpectrum points", "GetAbsorbanceSpectrum time"});
    }
  }
}

// A function without blocks keeps its number, but has no place in the list.
TEST_F(PluginComparisonTest, FunctionOfAReportWithoutAName) {
  const ReportLines report =
      SampleBlock(FunctionBlock(Keys({{"Type", "MS"}})) + FunctionBlock(Scan({{"Time", "1"}}, {{100, 50}})));
  const std::string path = Make("unnamed.rpt", report);
  ExpectWanted(path, {{kWanted.unnamedFunction, 1}});
  ExpectFault(path, "GetFunctionName");
}

// A name from the report stays, wherever the function is in the list.
TEST_F(PluginComparisonTest, FunctionOfAReportThatIsCalledLikeOneWithoutAName) {
  const ReportLines report =
      SampleBlock(FunctionBlock(Keys({{"Type", "MS"}})) +
                  FunctionBlock(Keys({{"Description", "Function 2"}}) + Scan({{"Time", "1"}}, {{100, 50}})));
  ExpectNotWanted(Make("named.rpt", report), {kWanted.unnamedFunction});
}

// Samples after the character that ends a text are in the list, but not counted beforehand.
TEST_F(PluginComparisonTest, SamplesAfterTheEndOfText) {
  const std::string path = Make("end.rpt", SampleBlock({}) + Line("\x1A") + SampleBlock({}));
  ExpectWanted(path, {{kWanted.samplesBehindEnd, 1}});
  ExpectFaults(path, {"GetFileSampleCount", "GetSampleCount"});
}

// Data format 14 has at most one point per channel of the function, and these scans declare more than the
// files could hold: the last two would be beyond 4 GiB. Their offsets are lower by that much, so the index is
// not taken for one of short records; one of long records is not sorted.
TEST_F(PluginComparisonTest, OffsetsBeyondFourGigabytes) {
  for (const std::size_t recordSize : {std::size_t{22}, std::size_t{30}}) {
    SCOPED_TRACE(recordSize);
    RawDirectoryBuilder raw;
    raw.functions.resize(1);
    FunctionFiles& function = raw.functions[0];
    function.record.dataFormat = 14;
    function.indexRecordSize = recordSize;
    for (std::size_t i = 0; i < 32; ++i) function.record.startMasses[i] = static_cast<float>(100 + i);
    ScanFiles scan =
        ScanOf<StoredPoint14>(1, std::vector<StoredPoint14>(32, {{.magnitude = 1, .exponent = 21}}));
    scan.index.pointCount = 4194303;
    scan.data.clear();
    function.scans.assign(88, scan);
    function.scans[0].data =
        ScanOf<StoredPoint14>(1, std::vector<StoredPoint14>(32, {{.magnitude = 3}})).data;
    function.scans[5].index.retentionTime = 0.5F;
    const std::string name = std::to_string(recordSize) + ".raw";
    const std::string path = Make(name, raw);
    ZeroOffsets(folder_ / name / "_FUNC001.IDX", recordSize);
    ExpectWanted(path, {{kWanted.indexOfSlots, 1}});
    ExpectFault(path, "GetScanCount");
    if (recordSize == 22) continue;  // no scans
    ExpectFaults(path, {"GetSpectrum intensity", "GetSpectrum success", "GetRetentionTimes",
                        "GetTotalIonChromatogram", "IsCentroided"});
  }
}

// Function 5 is absorbance, function 4 has an index only. The plug-in then lists all functions.
TEST_F(PluginComparisonTest, ChoiceOfAFunctionThatIsNotInTheList) {
  const std::string path = Make("run.raw");
  std::filesystem::remove(folder_ / "run.raw" / "_FUNC004.DAT");
  for (const char* const file : {"/_FUNC005.DAT", "/_FUNC004.IDX"}) {
    ExpectWanted(path + file, {{kWanted.droppedChoice, 1}, {kWanted.unlistedFunction, 1}});
    std::ofstream(path + ".altered") << "GetFunctionCount";
    EXPECT_EQ(Run({"plugin", Argument(ZRML_ALTERED_PLUGIN), path + file}).status, 7);
  }
}

TEST_F(PluginComparisonTest, FolderThatIsCalledAsADataFile) {
  const std::string path = Make("of_Func002.raw");
  ExpectWanted(path, {{kWanted.folderChoice, 1}, {kWanted.listPosition, 1}});
  ExpectFaults(path, {"GetFunctionCount", "GetFunctionName"});
  ExpectNotWanted(Make("of_Func007.raw"), {kWanted.folderChoice});
}

// The absorbance trace needs no list, but is not given without one.
TEST_F(PluginComparisonTest, DamagedListOfTraces) {
  const std::string path = Make("run.raw");
  const std::filesystem::path list = folder_ / "run.raw" / "_ANALOGS.INF";
  std::filesystem::resize_file(list, std::filesystem::file_size(list) + 1);
  ExpectWanted(path, {{kWanted.lostTraces, 1}});
  ExpectFault(path, "GetTraceCount");
}

// A function without its end contains everything that follows.
ReportLines OpenFunction(const ReportLines& content) { return Line("[FUNCTION]") + Line("{") + content; }

ReportLines NamedTrace(const char* name) {
  return ChromatogramBlock(Keys({{"Description", name}, {"MaxIntensity", "50"}}), {{1, 100}, {2, 0}});
}

// The first analog function does not end and so contains the second one with its trace.
TEST_F(PluginComparisonTest, TraceOfTwoFunctions) {
  const ReportLines analog = Keys({{"Description", "ANALOG"}}) + ChromatogramBlock({}, {{1, 100}});
  const ReportLines survey = FunctionBlock(Keys({{"Type", "MS"}}) + Scan({{"Time", "1"}}, {{100, 50}}));
  const std::string path =
      Make("open.rpt", SampleBlock(survey + OpenFunction(analog + FunctionBlock(analog))));
  ExpectWanted(path, {{kWanted.repeatedTrace, 1}});
  ExpectFaults(path, {"GetTraceCount", "GetTraceName", "GetTrace"});
}

// For the plug-in the first function also has the spectra, the traces and the text of the second one.
TEST_F(PluginComparisonTest, FunctionInsideAnother) {
  const ReportLines products =
      FunctionBlock(Keys({{"Type", "MSMS"}}) + Scan({{"Time", "0.7"}}, {{200, 25}}) + NamedTrace("products"));
  const std::string path =
      Make("two.rpt", SampleBlock(OpenFunction(Keys({{"Type", "MS"}, {"IonMode", "ES-"}}) +
                                               Scan({{"Time", "0.5"}, {"BPI", "9"}}, {{300, 50}, {100, 90}}) +
                                               NamedTrace("survey") + products)));
  ExpectWanted(path, {{kWanted.unclosedFunction, 3}});
  ExpectFaultsOfFunctions(path);
}

// The first function has nothing of its own, so the source does not list it; for the plug-in it has the
// spectra and traces of all. So has the second one, with the text; the third one has those of the analog one.
TEST_F(PluginComparisonTest, FunctionsInsideEachOther) {
  const ReportLines analog =
      FunctionBlock(Keys({{"Description", "ANALOG"}}) + NamedTrace("pressure") + Scan({}, {{5, 5}}));
  const ReportLines products = OpenFunction(Keys({{"Description", "x"}, {"Type", "MSMS"}}) +
                                            Scan({{"Time", "0.7"}}, {{200, 25}}) + Scan({}, {}) + analog);
  const ReportLines survey =
      OpenFunction(Keys({{"Type", "MS"}, {"IonMode", "ES+"}}) +
                   Scan({{"Time", "0.5"}}, {{300, 50}, {100, 90}}) + NamedTrace("survey") + products);
  const std::string path = Make("three.rpt", SampleBlock(OpenFunction(Keys({{"Type", "MS"}}) + survey)));
  ExpectWanted(path, {{kWanted.unclosedFunction, 8}});
  ExpectFaultsOfFunctions(path);
}

// Its traces count for the analog function around it, too, its spectra nowhere else.
TEST_F(PluginComparisonTest, FunctionInsideAnAnalogOne) {
  const ReportLines survey =
      FunctionBlock(Keys({{"Type", "MS"}}) + Scan({{"Time", "1"}}, {{100, 50}}) + NamedTrace("survey"));
  const std::string path = Make(
      "analog.rpt", SampleBlock(OpenFunction(Keys({{"Description", "ANALOG"}}) + NamedTrace("p") + survey)));
  ExpectWanted(path, {{kWanted.repeatedTrace, 1}, {kWanted.listPosition, 1}});
  ExpectFaults(path, {"GetTraceCount", "GetTraceName", "GetTrace", "GetFunctionTraceName"});
}

TEST_F(PluginComparisonTest, FunctionWithoutBlocksInsideAnother) {
  const std::string path =
      Make("text.rpt", SampleBlock(OpenFunction(Keys({{"Type", "MS"}}) + Scan({{"Time", "1"}}, {{100, 50}}) +
                                                FunctionBlock(Keys({{"Type", "SIM"}})))));
  ExpectWanted(path, {{kWanted.unclosedFunction, 1}});
  ExpectFault(path, "GetMetadataValue");
}

// Functions without blocks leave the list only after the search for traces.
TEST_F(PluginComparisonTest, AnalogFunctionBesideOneWithoutBlocks) {
  const ReportLines trace = ChromatogramBlock(Keys({{"MaxIntensity", "50"}}), {{1, 100}});
  const std::string path =
      Make("beside.rpt", SampleBlock(FunctionBlock(Keys({{"Description", "ANALOG"}}) + trace) +
                                     FunctionBlock(Keys({{"Type", "MS"}}))));
  ExpectNotWanted(path, {kWanted.growingTraces, kWanted.repeatedTrace});
  ExpectFault(path, "GetTraceCount");
}

// Then there is nothing to compare.
TEST_F(PluginComparisonTest, SourcesThatAreRefused) {
  const std::string other = Make("other.raw");
  std::ofstream(folder_ / "other.raw" / "_HEADER.TXT") << "another text\n";
  const std::string empty = Make("empty.raw");
  std::ofstream(folder_ / "empty.raw" / "_HEADER.TXT") << "";
  const std::string report = MakeFile("report.rpt", "no sample\n");
  for (const std::string& path : {other, empty, report}) {
    const ProcessResult result = Run({"plugin", Argument(ZRML_PLUGIN), path});
    EXPECT_EQ(result.status, 4) << path << result.output;
    EXPECT_TRUE(result.errors.starts_with("zrml: " + path + " is n")) << result.errors;
  }
}

using AlteredPluginTest = PluginComparisonTest;

TEST_F(AlteredPluginTest, UnalteredHasNoFaults) {
  for (const std::string& path : {Make("run.raw"), Make("vials.rpt", Vials())}) {
    const ProcessResult result = Run({"plugin", Argument(ZRML_ALTERED_PLUGIN), path});
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(result.errors, "");
  }
}

TEST_F(AlteredPluginTest, EverySlotOfADirectory) {
  RawDirectoryBuilder raw = SmallAcquisition();
  raw.functions.erase(raw.functions.begin() + 2, raw.functions.begin() + 4);  // which end some searches
  raw.labels.clear();
  const std::string path = Make("run.raw", raw);
  for (const char* slot : {"GetProviderName",
                           "GetProviderGuid",
                           "GetFileFilter",
                           "IsReportSource",
                           "Open",
                           "Close",
                           "GetSampleCount",
                           "GetFileSampleCount",
                           "GetSampleName",
                           "GetFunctionCount",
                           "GetFunctionName",
                           "GetFunctionKind",
                           "GetMSMSScanType",
                           "GetPolarity",
                           "GetMSLevel",
                           "GetDimensionCount",
                           "IsCentroided",
                           "HasMobility",
                           "GetScanDimensionCount",
                           "GetScanCount",
                           "GetMobilityBinCount",
                           "GetBasePeakChromatogram",
                           "GetMassRangeBasePeakChromatogram",
                           "GetTotalIonChromatogram",
                           "GetMassRangeChromatogram",
                           "GetRetentionTimes",
                           "GetScanRetentionTime",
                           "GetFunctionMassRange",
                           "GetScanMassRange",
                           "GetScanMobilityRange",
                           "GetScanIntensityRange",
                           "GetMobilityAxis",
                           "GetTraceCount",
                           "GetTraceName",
                           "GetTrace",
                           "GetFunctionTraceCount",
                           "HasAbsorbanceData",
                           "GetAbsorbanceScanCount",
                           "GetAbsorbanceSpectrum points",
                           "GetAbsorbanceSpectrum time",
                           "GetAbsorbanceSpectrum scan",
                           "GetMetadataValue",
                           "GetMetadataKeys",
                           "FindPrecursorScan"}) {
    ExpectFault(path, slot);
  }
}

TEST_F(AlteredPluginTest, EveryPartOfASpectrum) {
  const std::string path = Make("run.raw");
  for (const char* part :
       {"success", "mass", "intensity", "more points", "fewer points", "start time", "end time", "first scan",
        "last scan", "centroided", "level", "kind", "polarity", "precursor", "scan value", "title", "label",
        "first drift bin", "last drift value"}) {
    ExpectFault(path, "GetSpectrum " + std::string(part));
  }
}

TEST_F(AlteredPluginTest, SlotsOfAReport) {
  const std::string path = Make("vials.rpt", Vials());
  for (const char* slot :
       {"IsReportSource", "GetSampleCount", "GetSampleName", "GetFunctionCount", "GetScanDimensionCount",
        "GetBasePeakChromatogram", "GetTotalIonChromatogram", "GetRetentionTimes", "GetScanMassRange",
        "GetSpectrum success", "GetSpectrum intensity", "GetSpectrum fewer points", "GetTraceCount",
        "GetTrace", "GetFunctionTraceName", "GetFunctionTrace", "GetMetadataValue"}) {
    ExpectFault(path, slot);
  }
}

TEST_F(AlteredPluginTest, DataFileOfADirectory) {
  const std::string folder = Make("run.raw");
  const std::string file = folder + "/_FUNC002.DAT";
  EXPECT_EQ(Run({"plugin", Argument(ZRML_ALTERED_PLUGIN), file}).status, 0);
  std::ofstream(folder + ".altered") << "OpenFileInSet";
  const ProcessResult result = Run({"plugin", Argument(ZRML_ALTERED_PLUGIN), file});
  EXPECT_EQ(result.status, 7);
  EXPECT_TRUE(
      result.output.ends_with("\nFaults\n  OpenFileInSet: success: the plug-in gives false, not true\n"))
      << result.output;
}

TEST_F(AlteredPluginTest, SourceThatNoProviderTakes) {
  const std::string path = Make("run.raw");
  std::ofstream(path + ".altered") << "CanOpen";
  const ProcessResult result = Run({"plugin", Argument(ZRML_ALTERED_PLUGIN), path});
  EXPECT_EQ(result.status, 7);
  EXPECT_TRUE(
      result.output.ends_with("\nFaults\n  ValidateSource: no provider of the plug-in takes the source\n"))
      << result.output;
}

// Two provider names, and the names of the source's six functions; of more than 20 faults only the number is
// shown.
TEST_F(AlteredPluginTest, FaultsAreListedOneByOneUpToALimit) {
  const std::string path = Make("run.raw");
  std::ofstream(path + ".altered") << "GetFunctionName";
  const ProcessResult few = Run({"plugin", Argument(ZRML_ALTERED_PLUGIN), path});
  EXPECT_NE(few.output.find("\nFaults\n  GetFunctionName of sample 1, function 1: name: the plug-in gives "
                            "\"TOF MS ES+x\", not \"TOF MS ES+\"\n"),
            std::string::npos)
      << few.output;
  EXPECT_TRUE(few.errors.ends_with(" holds: 6 faults\n")) << few.errors;
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.functions[0].scans.assign(25, ScanFrom<StoredPoint9>(0.5F, {{100, 1}}));
  const std::string many = Make("many.raw", raw);
  std::ofstream(many + ".altered") << "GetSpectrum title";
  const ProcessResult result = Run({"plugin", Argument(ZRML_ALTERED_PLUGIN), many});
  EXPECT_TRUE(result.output.ends_with("\n  and 5 more\n")) << result.output;
  EXPECT_TRUE(result.errors.ends_with(" holds: 25 faults\n")) << result.errors;
}

}  // namespace
}  // namespace zrml::test
