// The findings of the reader of raw directories: each directory is made from a sound one by a single edit.
#include <algorithm>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "masslynx/raw_directory.h"
#include "tests/source/directory_findings.h"

namespace zrml::masslynx {
namespace {

using namespace test;

// Each point of format 9 has a mass, which is not zero: what is zero was never written there, whether or not
// totals are recorded. 2 points of 6 bytes a scan.
TEST(RawFindings, ZerosWithoutTotals) {
  RawDirectoryBuilder raw = SoundDirectory();
  for (ScanFiles& scan : raw.functions[0].scans) scan.index.totalIntensity = 0;
  const TempDirectory directory = raw.Build();
  EXPECT_EQ(LinesOf(directory), Lines());
  directory.Edit("_FUNC001.DAT",
                 [](FileBytes& bytes) { std::fill(bytes.begin() + 12, bytes.end(), std::byte{0}); });
  EXPECT_EQ(LinesOf(directory),
            Lines{"data-zeroed: _FUNC001.DAT ends in zeros that are no points of 2 of 3 scans; "
                  "the first is scan 2"});
  directory.Edit("_FUNC001.DAT",
                 [](FileBytes& bytes) { std::fill(bytes.begin(), bytes.end(), std::byte{0}); });
  EXPECT_EQ(LinesOf(directory),
            Lines{"data-zeroed: _FUNC001.DAT ends in zeros that are no points of 3 of 3 scans; "
                  "the first is scan 1"});
}

TEST(RawFindings, LowerCaseNamesAreTheSameFiles) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.spelling = Spelling::kLowerCase;
  ExpectLines(raw, {"data-cut: _FUNC001.DAT ends before 1 of 3 scans do; the first is scan 3"},
              [](const TempDirectory& directory) { directory.Truncate("_func001.dat", 35); });
}

// The points end at byte 36.
TEST(RawFindings, DataThatEndTooEarly) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Truncate("_FUNC001.DAT", 12);
  const std::vector<Finding> findings = Collect(directory);
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].code, FindingCode::kDataCut);
  EXPECT_EQ(findings[0].count, 2u);
  EXPECT_EQ(findings[0].first, 2u);
  EXPECT_EQ(findings[0].subject.kind, FindingSubject::Kind::kFunction);
  EXPECT_EQ(findings[0].subject.function, 1);
  EXPECT_EQ(findings[0].subject.process, 0);
}

// An offset of 0 in a later record means the end of the scan before it.
TEST(RawFindings, OmittedOffsetsAreComputed) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Edit("_FUNC001.IDX", [](FileBytes& bytes) {
    PatchU32(bytes, 22, 0);
    PatchU32(bytes, 44, 0);
  });
  EXPECT_EQ(LinesOf(directory), Lines());
  directory.Truncate("_FUNC001.DAT", 35);
  EXPECT_EQ(LinesOf(directory),
            Lines{"data-cut: _FUNC001.DAT ends before 1 of 3 scans do; the first is scan 3"});
}

// 180 scans of 4,194,303 points of 6 bytes without offsets extend beyond 2^32.
TEST(RawFindings, OmittedOffsetsHave64Bits) {
  constexpr std::size_t kScans = 180;
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  const TempDirectory directory = raw.Build();
  directory.Write("_FUNC001.IDX",
                  WriteScanIndex(std::vector<ScanIndexRecord>(kScans, {.pointCount = 4194303})));
  const auto end = [&](std::size_t size) {  // sparse, but for the last byte
    directory.Truncate("_FUNC001.DAT", size - 1);
    std::ofstream(directory.Path() / "_FUNC001.DAT", std::ios::binary | std::ios::app) << 'x';
  };
  end(kScans * 4194303 * 6);
  EXPECT_EQ(LinesOf(directory), Lines());
  end(kScans * 4194303 * 6 - 1);
  EXPECT_EQ(LinesOf(directory),
            Lines{"data-cut: _FUNC001.DAT ends before 1 of 180 scans do; the first is scan 180"});
}

// Points of such a function are elsewhere.
TEST(RawFindings, DataOfAMobilityFunctionMayEndAnywhere) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.Truncate("_FUNC001.DAT", 35);
  EXPECT_EQ(LinesOf(directory).size(), 1u);
  directory.WriteText("_FUNC001.CDT", "x");
  EXPECT_EQ(LinesOf(directory), Lines());
}

TEST(RawFindings, DriftBinsThatCannotBeOpened) {
  ExpectLines(SoundDirectory(),
              {"file-unreadable: _FUNC001.CDT cannot be opened, so the function has no drift bins"},
              [](const TempDirectory& directory) { directory.MakeDirectory("_FUNC001.CDT"); });
}

TEST(RawFindings, MissingFilesOfAFunction) {
  ExpectLines(SoundDirectory(), {"index-missing: _FUNC002.IDX is missing, so the function has no scans"},
              [](const TempDirectory& directory) { directory.Remove("_FUNC002.IDX"); });
  ExpectLines(SoundDirectory(), {"data-missing: _FUNC002.DAT is missing, so its scans have no points"},
              [](const TempDirectory& directory) { directory.Remove("_FUNC002.DAT"); });
  ExpectLines(SoundDirectory(), {"data-missing: _FUNC002.DAT is missing, so the function is not listed"},
              [](const TempDirectory& directory) {
                directory.Remove("_FUNC002.DAT");
                directory.Remove("_FUNC002.IDX");
              });
}

TEST(RawFindings, AbsorbanceFunctionWithoutData) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].record.type = 12;
  ExpectLines(raw, {"data-missing: _FUNC002.DAT is missing, so there are no absorbance spectra"},
              [](const TempDirectory& directory) { directory.Remove("_FUNC002.DAT"); });
}

// Not even for the superuser, who may read any file.
TEST(RawFindings, FilesThatCannotBeOpened) {
  const auto inTheWay = [](const char* name, const std::string& problem) {
    const TempDirectory directory = SoundDirectory().Build();
    EXPECT_EQ(LinesOf(directory), Lines()) << "the control";
    if (std::filesystem::exists(directory.Path() / name)) directory.Remove(name);
    directory.MakeDirectory(name);
    EXPECT_EQ(LinesOf(directory), Lines{"file-unreadable: " + std::string(name) + problem});
  };
  inTheWay("_FUNC002.IDX", " cannot be opened, so the function has no scans");
  inTheWay("_FUNC002.DAT", " cannot be opened, so its scans have no points");
  inTheWay("_FUNC001.STS", " cannot be opened");
  inTheWay("_HISTORY.INF", " cannot be opened");
  inTheWay("_EXTERN.INF", " cannot be opened");
}

TEST(RawFindings, IndexThatIsNoWholeNumberOfRecords) {
  ExpectLines(SoundDirectory(),
              {"index-cut: _FUNC002.IDX does not end with a whole record, so the function has no scans"},
              [](const TempDirectory& directory) { directory.Truncate("_FUNC002.IDX", 43); });
}

// 44 bytes are not a whole number of 30-byte records, so the reader cannot read the file in another way.
TEST(RawFindings, OffsetsThatGoBackwardsInShortRecordsLeaveNoScans) {
  ExpectLines(SoundDirectory(),
              {"index-cut: _FUNC002.IDX has offsets that go backwards, so the function has no scans"},
              [](const TempDirectory& directory) {
                directory.Edit("_FUNC002.IDX", [](FileBytes& bytes) { PatchU32(bytes, 0, 7); });
              });
}

// 15 records of 22 bytes, or 11 of 30; in neither size do they ascend.
TEST(RawFindings, OffsetsThatGoBackwardsInBothSizes) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].indexRecordSize = scan_index_format::kLongRecordSize;
  raw.functions[1].scans.assign(11, ScanFrom<StoredPoint9>(0.5F, {{300, 1}}));
  ExpectLines(raw, {"index-disordered: _FUNC002.IDX has offsets that go backwards"},
              [](const TempDirectory& directory) {
                directory.Edit("_FUNC002.IDX",
                               [](FileBytes& bytes) { PatchU32(bytes, 90, 1); });  // after offset 12
              });
}

// Scans of 12 bytes at 0, 12 and 24.
TEST(RawFindings, ScansThatOverlap) {
  ExpectLines(SoundDirectory(),
              {"scans-overlap: _FUNC001.IDX has scans that begin inside an earlier one: 1 of 3; the first is "
               "scan 2"},
              [](const TempDirectory& directory) {
                directory.Edit("_FUNC001.IDX", [](FileBytes& bytes) { PatchU32(bytes, 22, 11); });
              });
}

TEST(RawFindings, DataThatNoScanRefersTo) {
  ExpectLines(SoundDirectory(),
              {"index-zeroed: _FUNC001.IDX has zeros in place of the records of 1 of 3 scans; the first is "
               "scan 2",
               "data-unreferenced: _FUNC001.DAT holds 12 bytes that no scan refers to"},
              [](const TempDirectory& directory) {
                directory.Edit("_FUNC001.IDX",
                               [](FileBytes& bytes) { std::fill_n(bytes.begin() + 22, 22, std::byte{0}); });
              });
  ExpectLines(SoundDirectory(), {"data-unreferenced: _FUNC002.DAT holds 6 bytes that no scan refers to"},
              [](const TempDirectory& directory) { directory.Truncate("_FUNC002.IDX", 22); });
  ExpectLines(SoundDirectory(), {"index-empty: _FUNC002.DAT holds 12 bytes, but the index is empty"},
              [](const TempDirectory& directory) { directory.Truncate("_FUNC002.IDX", 0); });
}

// The last scan of format 6 is stored like format 4: seven points are two groups of 10 bytes, those of the
// scan before it seven words.
TEST(RawFindings, LastScanOfMixedData) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.functions[0].record.dataFormat = 6;
  raw.functions[0].scans = {{.index = {.pointCount = 7}, .data = FileBytes(14)},
                            {.index = {.pointCount = 7}, .data = FileBytes(20)}};
  ExpectLines(raw, {"data-cut: _FUNC001.DAT ends before 1 of 2 scans do; the first is scan 2"},
              [](const TempDirectory& directory) { directory.Truncate("_FUNC001.DAT", 33); });
}

// Of a function of products, whose precursors stand in its statistics.
// Three scans of 8 points in 16, 16 and 20 bytes. Without the second record the first scan has 20 at most.
TEST(RawFindings, RecordsOfMixedDataThatAreLost) {
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  raw.functions[0].record.dataFormat = 6;
  for (const std::size_t bytes : {16, 16, 20})
    raw.functions[0].scans.push_back({.index = {.pointCount = 8}, .data = FileBytes(bytes, std::byte{1})});
  ExpectLines(raw, {"data-unreferenced: _FUNC001.DAT holds 16 bytes that no scan refers to"},
              [](const TempDirectory& directory) {
                directory.Edit("_FUNC001.IDX",
                               [](FileBytes& bytes) { bytes.erase(bytes.begin(), bytes.begin() + 22); });
              });
  ExpectLines(raw, {"data-unreferenced: _FUNC001.DAT holds 12 bytes that no scan refers to"},
              [](const TempDirectory& directory) {
                directory.Edit("_FUNC001.IDX",
                               [](FileBytes& bytes) { bytes.erase(bytes.begin() + 22, bytes.begin() + 44); });
              });
}

// Records of 40 bytes. The first two scans have a precursor of their own in any case.
TEST(RawFindings, StatisticsThatEndInZeros) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[0].record.type = 16;  // TOF MS/MS
  raw.functions[0].record.setMass = 500;
  raw.functions[0].statistics->recordSize = 40;
  for (ScanFiles& scan : raw.functions[0].scans) {
    scan.statistics.precursorMass = 445;
    scan.statistics.precursorFlags = 1;
  }
  ExpectLines(raw,
              {"statistics-zeroed: _FUNC001.STS ends in zeros in place of the records of 1 of 3 scans; the "
               "first is scan 3",
               "precursors-of-method: _FUNC001.STS does not tell the precursors of 1 of 3 scans, which are "
               "the method's; the first is scan 3"},
              [](const TempDirectory& directory) {
                directory.Edit("_FUNC001.STS",
                               [](FileBytes& bytes) { std::fill_n(bytes.end() - 40, 40, std::byte{0}); });
              });
}

// Precursors at 8 and flags at 12 of records of 32 bytes, the last bytes of which are zero.
TEST(RawFindings, StatisticsThatEndInZerosInsideARecord) {
  RawDirectoryBuilder raw = SoundDirectory();
  for (ScanFiles& scan : raw.functions[0].scans)
    scan.statistics = {.auxValue = 30, .precursorMass = 445, .precursorFlags = 1};
  const TempDirectory directory = raw.Build();
  const FileBytes whole = directory.Read("_FUNC001.STS");
  const std::size_t record = std::to_integer<std::size_t>(whole[4]);
  const std::size_t last = whole.size() - record;
  EXPECT_EQ(LinesOf(directory), Lines()) << "the control";
  directory.Edit("_FUNC001.STS", [&](FileBytes& bytes) { ZeroFrom(bytes, last + 10); });
  EXPECT_EQ(LinesOf(directory), Lines{"statistics-zeroed: _FUNC001.STS ends in zeros inside the record of "
                                      "scan 3, where no other record has them"});
  // Another scan without a precursor, so the last one may have none either.
  directory.Edit("_FUNC001.STS", [&](FileBytes& bytes) {
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(last - record + 8), record - 8, std::byte{0});
  });
  EXPECT_EQ(LinesOf(directory), Lines());
}

TEST(RawFindings, StatisticsOfNothingButZeros) {
  ExpectLines(SoundDirectory(),
              {"statistics-zeroed: _FUNC001.STS ends in zeros in place of the records of 3 of 3 scans; the "
               "first is scan 1"},
              [](const TempDirectory& directory) {
                directory.Edit("_FUNC001.STS", [](FileBytes& bytes) {
                  ZeroFrom(bytes, std::to_integer<std::size_t>(bytes[0]) +
                                      256 * std::to_integer<std::size_t>(bytes[1]));
                });
              });
}

// The version is at byte 2; a header without records and items is of none.
TEST(RawFindings, StatisticsWhoseHeaderIsZeros) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[0].record.type = 16;  // TOF MS/MS
  raw.functions[0].record.setMass = 500;
  for (ScanFiles& scan : raw.functions[0].scans)
    scan.statistics = {.precursorMass = 445, .precursorFlags = 1};
  const std::string ofMethod =
      "precursors-of-method: _FUNC001.STS does not tell the precursors of 3 of 3 scans, which are the "
      "method's; the first is scan 1";
  const Lines lost = {"statistics-cut: _FUNC001.STS has zeros in place of its header", ofMethod};
  ExpectLines(raw, lost, [](const TempDirectory& directory) {
    directory.Edit("_FUNC001.STS", [](FileBytes& bytes) { ZeroFrom(bytes, 0); });
  });
  ExpectLines(raw, lost, [](const TempDirectory& directory) {
    directory.Edit("_FUNC001.STS",
                   [](FileBytes& bytes) { std::fill_n(bytes.begin() + 1, 31, std::byte{0}); });
  });
  ExpectLines(raw, {"statistics-unknown: _FUNC001.STS is of version 0, which is not read", ofMethod},
              [](const TempDirectory& directory) {
                directory.Edit("_FUNC001.STS", [](FileBytes& bytes) { bytes[2] = std::byte{0}; });
              });
}

// The second of three records of 40 bytes: a scan may have no values.
TEST(RawFindings, RecordOfTheStatisticsMayBeZeros) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[0].statistics->recordSize = 40;
  ExpectLines(raw, {}, [](const TempDirectory& directory) {
    directory.Edit("_FUNC001.STS", [](FileBytes& bytes) { std::fill_n(bytes.end() - 80, 40, std::byte{0}); });
  });
}

// Of the three records that are not zeros only one has a precursor, so others may be without.
TEST(RawFindings, StatisticsWithZerosAmongFewPrecursors) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[0].record.type = 16;  // TOF MS/MS
  raw.functions[0].statistics->recordSize = 40;
  for (const float minutes : {0.4F, 0.5F})
    raw.functions[0].scans.push_back(ScanFrom<StoredPoint9>(minutes, {{100, 7}}));
  std::vector<ScanFiles>& scans = raw.functions[0].scans;
  scans[0].statistics = {.precursorMass = 445, .precursorFlags = 1};
  scans[2].statistics = scans[4].statistics = {.auxValue = 5};
  ExpectLines(raw, {}, [](const TempDirectory&) {});
}

// Each other scan has a precursor, so the first two had one.
TEST(RawFindings, StatisticsWithZerosAmongPrecursors) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[0].record.type = 16;  // TOF MS/MS
  raw.functions[0].record.setMass = 500;
  raw.functions[0].statistics->recordSize = 40;
  for (const float minutes : {0.4F, 0.5F})
    raw.functions[0].scans.push_back(ScanFrom<StoredPoint9>(minutes, {{100, 7}}));
  for (ScanFiles& scan : raw.functions[0].scans)
    scan.statistics = {.precursorMass = 445, .precursorFlags = 1};
  const auto zero = [](const TempDirectory& directory) {
    directory.Edit("_FUNC001.STS",
                   [](FileBytes& bytes) { std::fill_n(bytes.end() - 200, 80, std::byte{0}); });
  };
  ExpectLines(raw,
              {"statistics-zeroed: _FUNC001.STS has zeros in place of the records of 2 of 5 scans; the first "
               "is scan 1",
               "precursors-of-method: _FUNC001.STS does not tell the precursors of 2 of 5 scans, which are "
               "the method's; the first is scan 1"},
              zero);
  for (ScanFiles& scan : raw.functions[0].scans) scan.statistics.temperature = 30;  // behind the precursor
  const TempDirectory directory = raw.Build();
  directory.Edit("_FUNC001.STS", [](FileBytes& bytes) { std::fill_n(bytes.end() - 200, 94, std::byte{0}); });
  EXPECT_EQ(
      LinesOf(directory),
      (Lines{"statistics-zeroed: _FUNC001.STS has zeros in place of the records of 2 of 5 scans; the first "
             "is scan 1",
             "precursors-of-method: _FUNC001.STS does not tell the precursors of 3 of 5 scans, which are "
             "the method's; the first is scan 1"}))
      << "zeros cut the third record, too";
  raw.functions[0].scans[3].statistics.precursorFlags = 0;
  ExpectLines(raw, {}, zero);
}

// A precursor of less than 1 m/z, and a temperature of 1,000 degrees with 11 ppm each; 10 ppm are just left.
TEST(RawFindings, StatisticsThatCannotBe) {
  const std::string line =
      "statistics-absurd: _FUNC001.STS has values that cannot be of 1 of 3 scans; the first is scan 2";
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[0].scans[1].statistics = {.precursorMass = 0.5F, .precursorFlags = 1};
  EXPECT_EQ(LinesOf(raw.Build()), Lines{line});
  raw.functions[0].scans[1].statistics = {
      .temperatureValid = 1, .temperature = 1000, .temperatureCoefficient = 11};
  EXPECT_EQ(LinesOf(raw.Build()), Lines{line});
  raw.functions[0].scans[1].statistics.temperatureCoefficient = 10;
  EXPECT_EQ(LinesOf(raw.Build()), Lines());
  raw.functions[0].statistics->items = AllItemsBut({77, 79});  // a survey's, read from where a counter is
  raw.functions[0].scans[1].statistics.firstBytes = 3;
  EXPECT_EQ(LinesOf(raw.Build()), Lines());
}

// The sixth description, of temperatures, has its place at byte 4.
TEST(RawFindings, TemperaturesThatAreDescribedInPart) {
  ExpectLines(SoundDirectory(),
              {"temperatures-unknown: _FUNC001.STS describes some of the items of temperatures only, so none "
               "is read"},
              [](const TempDirectory& directory) {
                directory.Edit("_FUNC001.STS", [](FileBytes& bytes) { PatchU16(bytes, 32 + 5 * 48 + 4, 0); });
              });
}

// The descriptions are 48 bytes each, from byte 32 on.
TEST(RawFindings, StatisticsWithoutDescriptions) {
  ExpectLines(SoundDirectory(),
              {"statistics-cut: _FUNC001.STS has zeros in place of 2 of 7 descriptions of its items"},
              [](const TempDirectory& directory) {
                directory.Edit("_FUNC001.STS", [](FileBytes& bytes) {
                  std::fill_n(bytes.begin() + 32 + 48, 2 * 48, std::byte{0});
                });
              });
  ExpectLines(SoundDirectory(),
              {"statistics-cut: _FUNC001.STS has zeros in place of 5 of 7 descriptions of its items"},
              [](const TempDirectory& directory) {
                directory.Edit("_FUNC001.STS", [](FileBytes& bytes) { ZeroFrom(bytes, 32 + 2 * 48); });
              });
}

// Only where the masses of the function are corrected for it.
TEST(RawFindings, TemperaturesThatAreMissing) {
  const auto remove = [](const TempDirectory& directory) { directory.Remove("_FUNC001.STS"); };
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].statistics = raw.functions[0].statistics;
  for (ScanFiles& scan : raw.functions[1].scans) scan.statistics.firstBytes = 2;
  raw.header.push_back(HeaderLine("Cal Temperature", "25.0"));
  ExpectLines(raw, {}, remove);
  raw.header.push_back(HeaderLine("Cal MS1 Static", "0.0,1.0"));
  ExpectLines(raw,
              {"temperatures-unknown: _FUNC001.STS does not tell the temperatures of 3 of 3 scans, whose "
               "masses are not corrected for them; the first is scan 1"},
              remove);
  raw.functions[0].record.dataFormat = 3;  // without masses of its own
  for (ScanFiles& scan : raw.functions[0].scans) scan.index.pointCount = 6;
  ExpectLines(raw, {}, remove);
  raw.functions[0].record.dataFormat = 9;
  for (ScanFiles& scan : raw.functions[0].scans) scan.index.pointCount = 2;
  raw.functions[0].scans[0].index.preCalibrated = true;
  ExpectLines(raw,
              {"temperatures-unknown: _FUNC001.STS does not tell the temperatures of 2 of 3 scans, whose "
               "masses are not corrected for them; the first is scan 2"},
              remove);
}

// A record of 416 bytes.
TEST(RawFindings, FunctionThatIsZeros) {
  RawDirectoryBuilder raw = SoundDirectory();
  const TempDirectory directory = raw.Build();
  directory.Edit("_FUNCTNS.INF", [](FileBytes& bytes) { ZeroFrom(bytes, 416); });
  const std::vector<Finding> findings = Collect(directory);
  ASSERT_FALSE(findings.empty());
  EXPECT_EQ(findings[0].code, FindingCode::kFunctionZeroed);
  EXPECT_EQ(TextOf(findings[0]),
            "_FUNCTNS.INF has zeros in place of function 2, so its type and the layout of its scans are not "
            "known");
  EXPECT_EQ(findings[0].subject, (FindingSubject{FindingSubject::Kind::kFunction, 0, 2}));
}

template <std::size_t kCount>
void ZeroSecondFunction(const TempDirectory& directory) {
  directory.Edit("_FUNCTNS.INF",
                 [](FileBytes& bytes) { std::fill_n(bytes.begin() + 416, kCount, std::byte{0}); });
}

// A sector of a disk, 512 bytes of zeros, ends inside a record. What is left of the times, at 2, or of the
// default scan value, at 22, shows that the type may be 0.
TEST(RawFindings, FunctionThatBeginsWithZeros) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].record.dataFormat = 0;
  raw.functions[1].record.startMasses[0] = 50;
  raw.functions[1].record.endMasses[0] = 1200;
  for (ScanFiles& scan : raw.functions[1].scans) {
    const float minutes = scan.index.retentionTime;
    scan = ScanFrom<StoredPoint0>(minutes, {{100, 8}, {200, 16}});
  }
  const std::string incomplete =
      "function-incomplete: _FUNCTNS.INF has zeros in place of the type, polarity, layout and times of "
      "function 2, which are taken as they stand";
  ExpectLines(raw, {}, ZeroSecondFunction<1>);
  ExpectLines(raw, {incomplete}, ZeroSecondFunction<24>);
  raw.functions[1].record.defaultScanValue = 30;
  ExpectLines(raw, {}, ZeroSecondFunction<22>);
}

// The list of last masses is at 288.
TEST(RawFindings, FunctionWithoutALastMass) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[1].record.startMasses[0] = 50;
  raw.functions[1].record.endMasses[0] = 1200;
  const auto zero = [](const TempDirectory& directory) {
    directory.Edit("_FUNCTNS.INF", [](FileBytes& bytes) { ZeroFrom(bytes, 416 + 288); });
  };
  ExpectLines(raw, {}, [](const TempDirectory&) {});
  ExpectLines(raw, {"function-incomplete: _FUNCTNS.INF has no last mass of function 2, but a first one"},
              zero);
  raw.functions[1].record.type = 1;  // SIR
  ExpectLines(raw, {}, zero);
}

TEST(RawFindings, PrecursorsThatAreTheMethods) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[0].record.type = 11;
  raw.functions[0].record.setMass = 500;
  for (ScanFiles& scan : raw.functions[0].scans)
    scan.statistics = {.precursorMass = 400, .precursorFlags = 1};
  raw.functions[0].scans[0].statistics.precursorFlags = 0;  // the method's, as the file has it
  const std::string whole = "precursors-of-method: _FUNC001.STS does not tell the precursors of ";
  const std::string ofAll = whole + "3 of 3 scans, which are the method's; the first is scan 1";
  ExpectLines(raw, {ofAll}, [](const TempDirectory& directory) { directory.Remove("_FUNC001.STS"); });
  ExpectLines(raw,
              {"statistics-cut: _FUNC001.STS is about 2 scans, the index about 3",
               whole + "2 of 3 scans, which are the method's; the first is scan 1"},
              [](const TempDirectory& directory) {
                const FileBytes bytes = directory.Read("_FUNC001.STS");
                directory.Truncate("_FUNC001.STS", bytes.size() - std::to_integer<std::size_t>(bytes[4]));
              });
  ExpectLines(raw, {"statistics-unknown: _FUNC001.STS is of version 2, which is not read", ofAll},
              [](const TempDirectory& directory) {
                directory.Edit("_FUNC001.STS", [](FileBytes& bytes) { bytes[2] = std::byte{2}; });
              });
  raw.functions[0].record.setMass = 0;
  ExpectLines(raw, {whole + "3 of 3 scans; the first is scan 1"},
              [](const TempDirectory& directory) { directory.Remove("_FUNC001.STS"); });
  raw.functions[0].record.type = 18;  // of no precursors
  ExpectLines(raw, {}, [](const TempDirectory& directory) { directory.Remove("_FUNC001.STS"); });
}

// The number in a file's name says which function it would be of.
TEST(RawFindings, SubjectsOfFilesOfNoFunction) {
  const TempDirectory directory = SoundDirectory().Build();
  directory.WriteText("_FUNC012.DAT", "x");
  directory.WriteText("_PROC007.DAT", "x");
  const std::vector<Finding> findings = Collect(directory);
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_EQ(findings[0].subject, (FindingSubject{FindingSubject::Kind::kFunction, 0, 12}));
  EXPECT_EQ(findings[1].subject, (FindingSubject{FindingSubject::Kind::kFunction, 0, 0, 7}));
}

TEST(RawFindings, Statistics) {
  const auto cutBy = [](const TempDirectory& directory, std::size_t bytes) {
    directory.Truncate("_FUNC001.STS", directory.Read("_FUNC001.STS").size() - bytes);
  };
  const TempDirectory directory = SoundDirectory().Build();
  const FileBytes whole = directory.Read("_FUNC001.STS");
  const auto recordSize =
      std::to_integer<std::size_t>(whole[4]) + 256 * std::to_integer<std::size_t>(whole[5]);
  EXPECT_EQ(LinesOf(directory), Lines()) << "the control";
  cutBy(directory, recordSize);
  EXPECT_EQ(LinesOf(directory), Lines{"statistics-cut: _FUNC001.STS is about 2 scans, the index about 3"});
  cutBy(directory, 1);
  EXPECT_EQ(LinesOf(directory), Lines{"statistics-cut: _FUNC001.STS does not end with a whole record"});
  directory.Truncate("_FUNC001.STS", 7);
  EXPECT_EQ(LinesOf(directory), Lines{"statistics-cut: _FUNC001.STS ends in its header"});
  directory.Write("_FUNC001.STS", whole);
  directory.Edit("_FUNC001.STS", [](FileBytes& bytes) { PatchU16(bytes, 2, 2); });
  EXPECT_EQ(LinesOf(directory), Lines{"statistics-unknown: _FUNC001.STS is of version 2, which is not read"});
}

TEST(RawFindings, FunctionTableThatIsCut) {
  ExpectLines(SoundDirectory(),
              {"function-table-cut: _FUNCTNS.INF does not end with a whole record",
               "file-unowned: _FUNC002.DAT belongs to no function"},
              [](const TempDirectory& directory) { directory.Truncate("_FUNCTNS.INF", 2 * 416 - 1); });
}

// Zeros in place of a calibration and behind it, then line ends of another system. The zero behind the text
// is that of a text in memory.
TEST(RawFindings, TextsThatAreDamaged) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.header.push_back(HeaderLine("Cal Function 1", "0.0,1.0,T0"));
  const auto editHeader = [&](void (*edit)(std::string & text)) {
    const TempDirectory directory = raw.Build();
    directory.Edit("_HEADER.TXT", [&](FileBytes& bytes) {
      std::string text;
      for (const std::byte byte : bytes) text += static_cast<char>(byte);
      edit(text);
      bytes.clear();
      for (const char c : text) bytes.push_back(static_cast<std::byte>(c));
    });
    return LinesOf(directory);
  };
  const std::string zeros = "text-damaged: _HEADER.TXT has zeros in place of text, so values are missing";
  const std::string ends =
      "text-damaged: _HEADER.TXT has CR alone in place of line ends, so lines are not read";
  EXPECT_EQ(editHeader([](std::string& text) { text += '\0'; }), Lines());
  EXPECT_EQ(editHeader([](std::string& text) { text[text.find("Cal")] = '\0'; }), Lines{zeros});
  EXPECT_EQ(editHeader([](std::string& text) {
              std::fill(text.begin() + static_cast<std::ptrdiff_t>(text.find("$$ Cal")), text.end(), '\0');
            }),
            Lines{zeros});
  EXPECT_EQ(editHeader([](std::string& text) { std::replace(text.begin(), text.end(), '\n', '\r'); }),
            Lines{ends});
  EXPECT_EQ(editHeader([](std::string& text) { text.insert(text.find('\n'), "\r\r"); }), Lines());
  const TempDirectory directory = raw.Build();
  directory.WriteText("_extern.inf", std::string("Created by") + std::string(4, '\0') + " v4.2\n");
  EXPECT_EQ(LinesOf(directory),
            Lines{"text-damaged: _EXTERN.INF has zeros in place of text, so values are missing"});
}

// The largest text that is read whole, and one byte more. The part that is read still counts.
TEST(RawFindings, TextsThatAreFarTooLarge) {
  constexpr std::size_t kMost = 16 * 1024 * 1024;
  RawDirectoryBuilder raw = SoundDirectory();
  raw.header.push_back(HeaderLine("Instrument", "Q1"));
  const TempDirectory directory = raw.Build();
  directory.WriteText("_extern.inf", "Instrument Parameters - Function 1:\n");
  const auto resize = [&](std::size_t size) {
    for (const char* const name : {"_HEADER.TXT", "_extern.inf"})
      directory.Edit(name, [=](FileBytes& bytes) { bytes.resize(size, std::byte{' '}); });
  };
  resize(kMost);
  EXPECT_EQ(LinesOf(directory), Lines());
  resize(kMost + 1);
  EXPECT_EQ(LinesOf(directory),
            (Lines{"text-oversized: _HEADER.TXT has 16777217 bytes, of which 16 MiB are read",
                   "text-oversized: _EXTERN.INF has 16777217 bytes, of which 16 MiB are read"}));
  const std::optional<RawDirectory> opened = RawDirectory::Open(directory.SystemPath());
  ASSERT_TRUE(opened);
  const auto lines = opened->Header().All();
  EXPECT_NE(std::find(lines.begin(), lines.end(), "$$ Instrument: Q1\n"), lines.end());
}

TEST(RawFindings, FilesOfNoFunction) {
  ExpectLines(
      SoundDirectory(),
      {"file-unowned: _FUNC003.DAT belongs to no function",
       "file-unowned: _FUNC009.CDT belongs to no function",
       "file-unowned: _PROC001.IDX belongs to no function"},
      [](const TempDirectory& directory) {
        for (const char* const name : {"_PROC001.IDX", "_FUNC009.CDT", "_FUNC003.IDX", "_FUNC003.DAT"})
          directory.WriteText(name, "x");
        directory.WriteText("_FUNC004.DAT", "");  // holds nothing
      });
}

// An acquisition that was stopped before this function.
TEST(RawFindings, FunctionThatWasNeverAcquiredIsSound) {
  const TempDirectory directory = SoundDirectory().Build();
  for (const char* const name : {"_FUNC002.DAT", "_FUNC002.IDX", "_FUNC002.STS"})
    directory.WriteText(name, "");
  EXPECT_EQ(LinesOf(directory), Lines());
}

RawDirectoryBuilder Processed(std::uint16_t rawFunctionNumber = 2) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.history = {{.processNumber = 1, .rawFunctionNumber = rawFunctionNumber}};
  raw.processed[1].scans = {ScanFrom<StoredPoint9>(0.1F, {{100, 7}, {200, 9}})};
  return raw;
}

TEST(RawFindings, ProcessedDataThatAreCut) {
  const TempDirectory directory = Processed().Build();
  EXPECT_EQ(LinesOf(directory), Lines()) << "the control";
  directory.Truncate("_PROC001.DAT", 11);
  const std::vector<Finding> findings = Collect(directory);
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].file, "_PROC001.DAT");
  EXPECT_EQ(findings[0].problem, "ends before 1 of 1 scans do; the first is scan 1");
  EXPECT_EQ(findings[0].subject.function, 2);
  EXPECT_EQ(findings[0].subject.process, 1);
  EXPECT_EQ(findings[0].subject.repeat, 1);
}

// The layout of points in the data file of a mobility function says nothing about the processed data.
TEST(RawFindings, ProcessedDataOfAMobilityFunctionMayEndAnywhere) {
  const TempDirectory directory = Processed().Build();
  directory.Truncate("_PROC001.DAT", 11);
  EXPECT_EQ(LinesOf(directory).size(), 1u);
  directory.WriteText("_FUNC002.CDT", "x");
  EXPECT_EQ(LinesOf(directory), Lines());
}

TEST(RawFindings, ProcessedFunctionOfNoFunction) {
  EXPECT_EQ(LinesOf(Processed(2).Build()), Lines()) << "the control";
  EXPECT_EQ(LinesOf(Processed(40).Build()),
            Lines{"process-unrooted: _PROC001.DAT goes back to no function, so it is not listed"});
}

// Two raw functions that one process has merged into one file: the reader lists a function for each and
// checks the second, too.
TEST(RawFindings, EntriesOfOneProcessNumber) {
  RawDirectoryBuilder raw = Processed();
  raw.history.push_back({.processNumber = 1, .rawFunctionNumber = 1});
  const TempDirectory directory = raw.Build();
  EXPECT_EQ(LinesOf(directory), Lines{"process-repeated: _HISTORY.INF has process 1 more than once"});
  directory.Remove("_PROC001.IDX");
  std::vector<int> repeats;
  for (const Finding& finding : Collect(directory)) {
    if (finding.code == FindingCode::kIndexMissing) repeats.push_back(finding.subject.repeat);
  }
  EXPECT_EQ(repeats, (std::vector<int>{1, 2}));
}

TEST(RawFindings, HistoryThatIsCut) {
  ExpectLines(Processed(),
              {"history-cut: _HISTORY.INF does not end with a whole record",
               "file-unowned: _PROC001.DAT belongs to no function"},
              [](const TempDirectory& directory) { directory.Truncate("_HISTORY.INF", 132 + 122); });
  ExpectLines(
      Processed(),
      {"history-cut: _HISTORY.INF ends in its header", "file-unowned: _PROC001.DAT belongs to no function"},
      [](const TempDirectory& directory) { directory.Truncate("_HISTORY.INF", 131); });
}

// The last one is shown.
TEST(RawFindings, AbsorbanceThatIsNotShown) {
  RawDirectoryBuilder raw = SoundDirectory();
  raw.functions[0].record.type = raw.functions[1].record.type = 12;
  EXPECT_EQ(LinesOf(raw.Build()), Lines{"absorbance-hidden: _FUNC001.DAT is absorbance that is not shown, "
                                        "since function 2 is absorbance, too"});
  RawDirectoryBuilder processed = Processed();
  processed.functions[1].record.type = 12;
  EXPECT_EQ(LinesOf(processed.Build()),
            Lines{"absorbance-hidden: _PROC001.DAT is processed absorbance, which is not shown"});
}

}  // namespace
}  // namespace zrml::masslynx
