// GetSpectrum: how the provider completes a decoded scan, attribute by attribute.
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/raw_server.h"
#include "tests/masslynx/truncation.h"
#include "tests/support/raw_directory_builder.h"

namespace zrml {
namespace {

constexpr unsigned kNeutralLoss = 7;
constexpr unsigned kTofMsMs = 16;
constexpr unsigned kTofMs = 18;
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

using Points = std::vector<std::pair<double, double>>;

Points PointsOf(const CZRMassSpectrum& spectrum) {
  Points points;
  for (int i = 0; i < spectrum.GetCount(); ++i) {
    points.emplace_back(spectrum.GetMasses()[i], spectrum.GetIntensities()[i]);
  }
  return points;
}

/// A point of format 8: masses are stored in units of 1/128.
StoredPoint8 Point(std::uint32_t mass, std::int16_t intensity) {
  return {.mass = mass * 128, .mantissa = intensity};
}

class GetSpectrumTest : public testing::Test {
 protected:
  GetSpectrumTest() {
    FunctionFiles function;
    function.record.type = kTofMs;
    function.record.dataFormat = 8;
    function.record.defaultScanValue = 35;
    function.scans = {ScanOf<StoredPoint8>(0.5F, {Point(100, 7), Point(200, -9)})};
    raw_.functions = {function};
  }

  FunctionFiles& Function() { return raw_.functions[0]; }
  FunctionTableRecord& Record() { return Function().record; }
  ScanFiles& Scan() { return Function().scans[0]; }

  void Open() {
    server_.Close();
    directory_.reset();
    directory_.emplace(raw_.Build());
    ASSERT_TRUE(server_.Open(directory_->WidePath()));
  }
  CZRMassSpectrum Read(int function = 0, int scan = 0) {
    CZRMassSpectrum spectrum;
    EXPECT_TRUE(server_.GetSpectrum(0, function, scan, spectrum)) << function << " " << scan;
    return spectrum;
  }
  /// The only scan of the function in raw_.
  CZRMassSpectrum Built() {
    Open();
    return Read();
  }

  RawDirectoryBuilder raw_;
  std::optional<TempDirectory> directory_;
  plugin::CMLDataServerImpl server_;
};

/// A spectrum in which every attribute differs from what a read would set.
CZRMassSpectrum Marked() {
  CZRMassSpectrum spectrum(1);
  spectrum.SetMass(0, 11);
  spectrum.SetIntensity(0, 12);
  spectrum.SetTitle(L"title");
  spectrum.SetCentroided(true);
  spectrum.SetMSLevel(13);
  spectrum.SetScanType(14);
  spectrum.SetPolarity(15);
  spectrum.SetPrecursorMass(16);
  spectrum.SetStartTime(17);
  spectrum.SetEndTime(18);
  spectrum.SetFirstScan(19);
  spectrum.SetLastScan(20);
  spectrum.SetScanAuxValue(21);
  spectrum.SetFirstDriftBin(22);
  spectrum.SetLastDriftBin(23);
  spectrum.SetFirstDriftValue(24);
  spectrum.SetLastDriftValue(25);
  spectrum.UpdateStatistics();
  return spectrum;
}

void ExpectMarkedAttributes(const CZRMassSpectrum& spectrum) {
  EXPECT_EQ(spectrum.GetTitle(), L"title");
  EXPECT_TRUE(spectrum.IsCentroided());
  EXPECT_EQ(spectrum.GetMSLevel(), 13);
  EXPECT_EQ(spectrum.GetScanType(), 14);
  EXPECT_EQ(spectrum.GetPolarity(), 15);
  EXPECT_EQ(spectrum.GetPrecursorMass(), 16.0);
  EXPECT_EQ(spectrum.GetStartTime(), 17.0);
  EXPECT_EQ(spectrum.GetEndTime(), 18.0);
  EXPECT_EQ(spectrum.GetFirstScan(), 19);
  EXPECT_EQ(spectrum.GetLastScan(), 20);
  EXPECT_EQ(spectrum.GetFirstDriftBin(), 22);
  EXPECT_EQ(spectrum.GetLastDriftBin(), 23);
  EXPECT_EQ(spectrum.GetFirstDriftValue(), 24.0);
  EXPECT_EQ(spectrum.GetLastDriftValue(), 25.0);
}

void ExpectMarked(const CZRMassSpectrum& spectrum) {
  ExpectMarkedAttributes(spectrum);
  EXPECT_EQ(spectrum.GetScanAuxValue(), 21.0);
  EXPECT_EQ(PointsOf(spectrum), (Points{{11, 12}}));
  EXPECT_FALSE(spectrum.AreStatisticsStale());
}

// --- points ---

TEST_F(GetSpectrumTest, GivesTheDecodedPoints) {
  EXPECT_EQ(PointsOf(Built()), (Points{{100, 7}, {200, -9}}));
}

TEST_F(GetSpectrumTest, GivesEachScanItsOwnPoints) {
  Function().scans.push_back(ScanOf<StoredPoint8>(1.0F, {Point(300, 1)}));
  Function().scans.push_back(ScanOf<StoredPoint8>(1.5F, {}));
  Function().scans.push_back(ScanOf<StoredPoint8>(2.0F, {Point(400, 2)}));
  Open();
  EXPECT_EQ(PointsOf(Read(0, 3)), (Points{{400, 2}}));
  EXPECT_EQ(PointsOf(Read(0, 2)), Points{});
  EXPECT_EQ(PointsOf(Read(0, 1)), (Points{{300, 1}}));
  EXPECT_EQ(PointsOf(Read(0, 0)), (Points{{100, 7}, {200, -9}}));
}

TEST_F(GetSpectrumTest, CountsScansInTimeOrder) {
  Scan().index.retentionTime = 2;
  Function().scans.push_back(ScanOf<StoredPoint8>(1.0F, {Point(300, 1)}));
  Open();
  EXPECT_EQ(PointsOf(Read(0, 0)), (Points{{300, 1}}));
  EXPECT_EQ(Read(0, 0).GetStartTime(), 1.0);
  EXPECT_EQ(PointsOf(Read(0, 1)), (Points{{100, 7}, {200, -9}}));
}

TEST_F(GetSpectrumTest, ConvertsMassesWithTheHeadersCalibration) {
  raw_.header.push_back(CalLine("MS1 Static", {0.5, 2}));
  EXPECT_EQ(PointsOf(Built()), (Points{{200.5, 7}, {400.5, -9}}));
}

// Deliberate: the repeated last line of the header does no harm, since the last line of a kind wins anyway.
TEST_F(GetSpectrumTest, LastCalibrationLineWins) {
  raw_.header.push_back(CalLine("MS1 Static", {0.5, 2}));
  raw_.header.push_back(CalLine("MS1 Static", {1, 1}));
  EXPECT_EQ(PointsOf(Built()), (Points{{101, 7}, {201, -9}}));
}

TEST_F(GetSpectrumTest, MsMsFunctionTakesTheMs2Lines) {
  raw_.header.push_back(CalLine("MS1 Static", {1, 1}));
  raw_.header.push_back(CalLine("MS2 Static", {2, 1}));
  Record().type = kTofMsMs;
  EXPECT_EQ(PointsOf(Built()), (Points{{102, 7}, {202, -9}}));
}

// A function that the labels turn into type 11 keeps the calibration that its own type had chosen.
TEST_F(GetSpectrumTest, CalibrationIsChosenBeforeTheHighEnergyRamp) {
  raw_.header.push_back(CalLine("MS1 Static", {1, 1}));
  raw_.header.push_back(CalLine("MS2 Static", {2, 1}));
  raw_.labels = {CreatorLine("4.2"), FunctionHeading(1, "TOF MS FUNCTION"), "Ramp High Energy"};
  const CZRMassSpectrum ramped = Built();
  EXPECT_EQ(ramped.GetMSLevel(), 2);
  EXPECT_EQ(PointsOf(ramped), (Points{{101, 7}, {201, -9}}));

  Record().type = 11;
  EXPECT_EQ(PointsOf(Built()), (Points{{102, 7}, {202, -9}}));
}

TEST_F(GetSpectrumTest, ProcessedFunctionIsCalibratedLikeItsRawFunction) {
  raw_.header.push_back(CalLine("MS1 Static", {1, 1}));
  raw_.header.push_back(CalLine("Function 1", {3, 1}));
  raw_.history = std::vector<HistoryStep>{{.processNumber = 2, .rawFunctionNumber = 1, .processCode = 2}};
  raw_.processed[2].scans = {ScanOf<StoredPoint8>(0.5F, {Point(300, 1)})};
  Open();
  ASSERT_EQ(server_.GetFunctionCount(0), 2);
  EXPECT_EQ(PointsOf(Read(1, 0)), (Points{{303, 1}}));
}

// Sorted by mass, masses that are not positive dropped, the largest intensity of equal masses kept.
TEST_F(GetSpectrumTest, UnsortedPointsAreSortedAndMerged) {
  Scan() = ScanOf<StoredPoint8>(
      0.5F, {Point(300, 1), Point(100, 7), Point(0, 9), Point(200, 3), Point(100, 5), Point(200, 4)});
  EXPECT_EQ(PointsOf(Built()), (Points{{100, 7}, {200, 4}, {300, 1}}));
}

TEST_F(GetSpectrumTest, EqualNeighboursCountAsUnsorted) {
  Scan() = ScanOf<StoredPoint8>(0.5F, {Point(0, 9), Point(100, 5), Point(100, 7)});
  EXPECT_EQ(PointsOf(Built()), (Points{{100, 7}}));
}

// The clean-up is part of the sorting only.
TEST_F(GetSpectrumTest, SortedPointsKeepAMassOfZero) {
  Scan() = ScanOf<StoredPoint8>(0.5F, {Point(0, 9), Point(100, 5), Point(200, 7)});
  EXPECT_EQ(PointsOf(Built()), (Points{{0, 9}, {100, 5}, {200, 7}}));
}

// The flag of one scan says nothing about the next.
TEST_F(GetSpectrumTest, SortedScanAfterAnUnsortedOneKeepsItsPoints) {
  Scan() = ScanOf<StoredPoint8>(0.5F, {Point(200, 1), Point(100, 2)});
  Function().scans.push_back(ScanOf<StoredPoint8>(1.0F, {Point(0, 9), Point(100, 5)}));
  Open();
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(server_.GetSpectrum(0, 0, 0, spectrum));
  EXPECT_EQ(PointsOf(spectrum), (Points{{100, 2}, {200, 1}}));
  ASSERT_TRUE(server_.GetSpectrum(0, 0, 1, spectrum));
  EXPECT_EQ(PointsOf(spectrum), (Points{{0, 9}, {100, 5}}));
}

TEST_F(GetSpectrumTest, ContainerCanBeReused) {
  Function().scans.push_back(ScanOf<StoredPoint8>(1.0F, {Point(300, 20)}));
  Open();
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(server_.GetSpectrum(0, 0, 0, spectrum));
  EXPECT_TRUE(spectrum.AreStatisticsStale());
  EXPECT_EQ(spectrum.GetBasePeakIntensity(), 7.0);
  ASSERT_TRUE(server_.GetSpectrum(0, 0, 1, spectrum));
  EXPECT_TRUE(spectrum.AreStatisticsStale());
  EXPECT_EQ(spectrum.GetBasePeakIntensity(), 20.0);
  EXPECT_EQ(PointsOf(spectrum), (Points{{300, 20}}));
}

// A scan without points resizes nothing, but the statistics must still become stale.
TEST_F(GetSpectrumTest, StatisticsAreStaleAfterAScanWithoutPoints) {
  Scan() = ScanOf<StoredPoint8>(0.5F, {});
  Open();
  CZRMassSpectrum spectrum;
  spectrum.UpdateStatistics();
  ASSERT_TRUE(server_.GetSpectrum(0, 0, 0, spectrum));
  EXPECT_TRUE(spectrum.AreStatisticsStale());
}

// --- attributes ---

TEST_F(GetSpectrumTest, ScanTypeIsTheFunctionKindAndLevelFollows) {
  const struct {
    unsigned type;
    int kind;
    int level;
  } cases[] = {{kTofMs, 2, 1}, {kNeutralLoss, 2, 1}, {kTofMsMs, 4, 2}, {6, 4, 2}, {11, 4, 2}};
  for (const auto& expected : cases) {
    Record().type = expected.type;
    const CZRMassSpectrum spectrum = Built();
    EXPECT_EQ(spectrum.GetScanType(), expected.kind) << expected.type;
    EXPECT_EQ(spectrum.GetMSLevel(), expected.level) << expected.type;
  }
}

TEST_F(GetSpectrumTest, CentroidedIsTheScansOwn) {
  Function().scans.push_back(ScanOf<StoredPoint8>(1.0F, {Point(300, 1)}));
  Function().scans.push_back(ScanOf<StoredPoint8>(1.5F, {Point(300, 1)}));
  Function().scans[0].index.centroidState = CentroidState::kProfile;
  Function().scans[1].index.centroidState = CentroidState::kCentroid;
  Open();
  EXPECT_FALSE(Read(0, 0).IsCentroided());
  EXPECT_TRUE(Read(0, 1).IsCentroided());
  EXPECT_FALSE(Read(0, 2).IsCentroided());  // format 8 without its own state
}

TEST_F(GetSpectrumTest, StartTimeIsTheRetentionTimeWidened) {
  Scan().index.retentionTime = 0.1F;  // 13421773 x 2^-27
  EXPECT_EQ(Built().GetStartTime(), 13421773.0 / 134217728.0);
}

TEST_F(GetSpectrumTest, EndTimeAddsTheScanTimeInMinutes) {
  Scan().index.retentionTime = 2;
  Record().scanTime = 30;
  EXPECT_EQ(Built().GetEndTime(), 2.5);
}

// Deliberate: quotient and sum are rounded to single precision before they are widened.
TEST_F(GetSpectrumTest, EndTimeIsFormedInSinglePrecision) {
  // 1 / 60 = 8947848.53... x 2^-29, rounded to 24 bits.
  Scan().index.retentionTime = 0;
  Record().scanTime = 1;
  EXPECT_EQ(Built().GetEndTime(), 8947849.0 / 536870912.0);
  // 2^24 + 1 has 25 bits: halfway, to even.
  Scan().index.retentionTime = 16777216;
  Record().scanTime = 60;
  EXPECT_EQ(Built().GetEndTime(), 16777216.0);
}

TEST_F(GetSpectrumTest, ScanNumbersCountFromOne) {
  Function().scans.push_back(ScanOf<StoredPoint8>(1.0F, {Point(300, 1)}));
  Open();
  for (int scan = 0; scan < 2; ++scan) {
    const CZRMassSpectrum spectrum = Read(0, scan);
    EXPECT_EQ(spectrum.GetFirstScan(), scan + 1);
    EXPECT_EQ(spectrum.GetLastScan(), scan + 1);
  }
}

// Deliberate: scan numbers are narrowed to 16 bits with their sign.
TEST_F(GetSpectrumTest, ScanNumbersAbove32767WrapToNegativeOnes) {
  Function().scans.clear();
  for (int i = 0; i < 65537; ++i) {
    Function().scans.push_back(ScanOf<StoredPoint8>(static_cast<float>(i), {}));
  }
  Open();
  ASSERT_EQ(server_.GetScanCount(0, 0), 65537);
  const struct {
    int scan;
    int number;
  } cases[] = {{0, 1}, {32766, 32767}, {32767, -32768}, {40000, -25535}, {65534, -1}, {65535, 0}, {65536, 1}};
  for (const auto& expected : cases) {
    const CZRMassSpectrum spectrum = Read(0, expected.scan);
    EXPECT_EQ(spectrum.GetFirstScan(), expected.number) << expected.scan;
    EXPECT_EQ(spectrum.GetLastScan(), expected.number) << expected.scan;
    EXPECT_EQ(spectrum.GetStartTime(), expected.scan);
  }
}

// Deliberate: a mode without a polarity reads as positive.
TEST_F(GetSpectrumTest, PolarityIsNegativeForOddModesAndPositiveOtherwise) {
  for (unsigned mode = 0; mode < 32; ++mode) {
    Record().ionMode = mode;
    EXPECT_EQ(Built().GetPolarity(), mode < 16 && mode % 2 == 1 ? 2 : 1) << mode;
  }
}

TEST_F(GetSpectrumTest, DriftMembersStayAsTheyWereWithoutMobility) {
  Open();
  CZRMassSpectrum spectrum = Marked();
  ASSERT_TRUE(server_.GetSpectrum(0, 0, 0, spectrum));
  EXPECT_EQ(spectrum.GetFirstDriftBin(), 22);
  EXPECT_EQ(spectrum.GetLastDriftBin(), 23);
  EXPECT_EQ(spectrum.GetFirstDriftValue(), 24.0);
  EXPECT_EQ(spectrum.GetLastDriftValue(), 25.0);
}

// An empty mobility file has no bins.
TEST_F(GetSpectrumTest, DriftMembersSpanTheBinsOfAMobilityFunction) {
  Open();
  server_.Close();
  directory_->WriteText("_FUNC001.CDT", "");
  ASSERT_TRUE(server_.Open(directory_->WidePath()));
  CZRMassSpectrum spectrum = Marked();
  ASSERT_TRUE(server_.GetSpectrum(0, 0, 0, spectrum));
  EXPECT_EQ(spectrum.GetFirstDriftBin(), 1);
  EXPECT_EQ(spectrum.GetLastDriftBin(), 0);
  EXPECT_EQ(spectrum.GetFirstDriftValue(), 1.0);
  EXPECT_EQ(spectrum.GetLastDriftValue(), 0.0);
}

TEST_F(GetSpectrumTest, TitleIsKept) {
  Open();
  CZRMassSpectrum spectrum = Marked();
  ASSERT_TRUE(server_.GetSpectrum(0, 0, 0, spectrum));
  EXPECT_EQ(spectrum.GetTitle(), L"title");
}

// --- the scan value ---

TEST_F(GetSpectrumTest, ScanValueComesFromTheStatistics) {
  Function().statistics.emplace();
  Scan().statistics.auxValue = 0.1F;
  EXPECT_EQ(Built().GetScanAuxValue(), 13421773.0 / 134217728.0);
}

TEST_F(GetSpectrumTest, ScanValueOfZeroBecomesTheFunctionsDefault) {
  Function().statistics.emplace();
  for (const float zero : {0.0F, -0.0F}) {
    Scan().statistics.auxValue = zero;
    EXPECT_EQ(Built().GetScanAuxValue(), 35.0);
  }
  Record().defaultScanValue = 255;
  EXPECT_EQ(Built().GetScanAuxValue(), 255.0);
}

TEST_F(GetSpectrumTest, ScanValueWithoutStatisticsIsTheFunctionsDefault) {
  EXPECT_EQ(Built().GetScanAuxValue(), 35.0);
  Record().defaultScanValue = 0;
  EXPECT_EQ(Built().GetScanAuxValue(), 0.0);
}

TEST_F(GetSpectrumTest, ScanValueOfNanStays) {
  Function().statistics.emplace();
  Scan().statistics.auxValue = kNan;
  EXPECT_TRUE(std::isnan(Built().GetScanAuxValue()));
}

// Deliberate: it is the one attribute that is set although decoding fails. The default is not.
TEST_F(GetSpectrumTest, ScanValueIsSetEvenWhenDecodingFails) {
  Function().statistics.emplace();
  Record().dataFormat = 10;
  for (const float value : {12.5F, 0.0F}) {
    Scan().statistics.auxValue = value;
    Open();
    CZRMassSpectrum spectrum = Marked();
    EXPECT_FALSE(server_.GetSpectrum(0, 0, 0, spectrum));
    EXPECT_EQ(spectrum.GetScanAuxValue(), value);
    ExpectMarkedAttributes(spectrum);
    EXPECT_EQ(PointsOf(spectrum), (Points{{11, 12}}));  // this format fails before the points are sized
  }
}

// --- the precursor ---

class PrecursorTest : public GetSpectrumTest {
 protected:
  PrecursorTest() {
    Record().type = kTofMsMs;
    Record().setMass = 500.25F;
    Function().statistics.emplace();
  }
  double MassWith(std::uint16_t flags, float mass) {
    Scan().statistics.precursorFlags = flags;
    Scan().statistics.precursorMass = mass;
    return Built().GetPrecursorMass();
  }
};

TEST_F(PrecursorTest, IsTheScansOwnWhenItsFlagIsSet) {
  EXPECT_EQ(MassWith(1, 600.5F), 600.5);
  EXPECT_EQ(MassWith(0xFFFF, 600.5F), 600.5);
  EXPECT_EQ(MassWith(1, 0.1F), 13421773.0 / 134217728.0);
  EXPECT_EQ(MassWith(1, -600.5F), -600.5);
}

TEST_F(PrecursorTest, IsTheSetMassWithoutTheFlag) {
  EXPECT_EQ(MassWith(0, 600.5F), 500.25);
  EXPECT_EQ(MassWith(2, 600.5F), 500.25);
  EXPECT_EQ(MassWith(0xFFFE, 600.5F), 500.25);
}

TEST_F(PrecursorTest, OfZeroMeansTheSetMass) {
  EXPECT_EQ(MassWith(1, 0.0F), 500.25);
  EXPECT_EQ(MassWith(1, -0.0F), 500.25);
}

// Deliberate: not a number is not zero.
TEST_F(PrecursorTest, OfNanCountsAsSet) {
  EXPECT_TRUE(std::isnan(MassWith(1, kNan)));
  EXPECT_EQ(MassWith(0, kNan), 500.25);
}

TEST_F(PrecursorTest, IsTheSetMassWithoutStatistics) {
  Function().statistics.reset();
  EXPECT_EQ(Built().GetPrecursorMass(), 500.25);
}

TEST_F(PrecursorTest, IsEachScansOwn) {
  Function().scans.push_back(Scan());
  Function().scans[0].statistics = {.precursorMass = 600.5F, .precursorFlags = 1};
  Function().scans[1].statistics = {.precursorMass = 700.5F, .precursorFlags = 1};
  Function().scans[1].index.retentionTime = 1;
  Open();
  EXPECT_EQ(Read(0, 0).GetPrecursorMass(), 600.5);
  EXPECT_EQ(Read(0, 1).GetPrecursorMass(), 700.5);
}

// An MS scan has none and does not clear what the container held.
TEST_F(PrecursorTest, OfAnMsScanStaysAsItWas) {
  Scan().statistics = {.precursorMass = 600.5F, .precursorFlags = 1};
  for (const unsigned type : {kTofMs, kNeutralLoss}) {
    Record().type = type;
    Open();
    CZRMassSpectrum spectrum = Marked();
    ASSERT_TRUE(server_.GetSpectrum(0, 0, 0, spectrum));
    EXPECT_EQ(spectrum.GetPrecursorMass(), 16.0) << type;
  }
}

// --- failures ---

TEST_F(GetSpectrumTest, PositionsOutOfRangeLeaveTheSpectrumUntouched) {
  Open();
  const struct {
    int sample;
    int function;
    int scan;
  } cases[] = {{1, 0, 0}, {-1, 0, 0}, {INT_MAX, 0, 0}, {INT_MIN, 0, 0},
               {0, 1, 0}, {0, -1, 0}, {0, INT_MAX, 0}, {0, INT_MIN, 0},
               {0, 0, 1}, {0, 0, -1}, {0, 0, INT_MAX}, {0, 0, INT_MIN}};
  for (const auto& position : cases) {
    CZRMassSpectrum spectrum = Marked();
    EXPECT_FALSE(server_.GetSpectrum(position.sample, position.function, position.scan, spectrum))
        << position.sample << " " << position.function << " " << position.scan;
    ExpectMarked(spectrum);
  }
  Read(0, 0);
}

TEST_F(GetSpectrumTest, ClosedObjectLeavesTheSpectrumUntouched) {
  CZRMassSpectrum spectrum = Marked();
  EXPECT_FALSE(server_.GetSpectrum(0, 0, 0, spectrum));
  ExpectMarked(spectrum);
  Open();
  Read(0, 0);
  server_.Close();
  EXPECT_FALSE(server_.GetSpectrum(0, 0, 0, spectrum));
  ExpectMarked(spectrum);
}

TEST_F(GetSpectrumTest, DataFileGoneMissingLeavesTheSpectrumUntouched) {
  Open();
  directory_->Rename("_FUNC001.DAT", "aside");
  CZRMassSpectrum spectrum = Marked();
  EXPECT_FALSE(server_.GetSpectrum(0, 0, 0, spectrum));
  ExpectMarked(spectrum);
  directory_->Rename("aside", "_FUNC001.DAT");
  EXPECT_EQ(PointsOf(Read(0, 0)), (Points{{100, 7}, {200, -9}}));
}

// The data file is closed again after every read.
TEST_F(GetSpectrumTest, DataFileIsReadAnewEveryTime) {
  Open();
  EXPECT_EQ(PointsOf(Read(0, 0)), (Points{{100, 7}, {200, -9}}));
  directory_->Write("_FUNC001.DAT", EncodePoints(std::vector<StoredPoint8>{Point(300, 1), Point(400, 2)}));
  EXPECT_EQ(PointsOf(Read(0, 0)), (Points{{300, 1}, {400, 2}}));
}

// Missing bytes read as zero; a point has 6.
TEST_F(GetSpectrumTest, TruncatedDataGivesPointsMadeOfZeroBytes) {
  Scan() = ScanOf<StoredPoint8>(0.5F, {Point(100, 7), Point(200, 1)});
  Open();
  TruncateAtEveryLength(*directory_, "_FUNC001.DAT", [&](std::size_t size) {
    // Of the second raw mass 200 x 128 = 0x6400, from bit 4 on, the bytes are 00 40 06 00: cut after the
    // second, 0x400 / 128 = 8 is left. Of the first, 0x3200, they are 00 20 03 00: 0x200 / 128 = 4.
    Points expected = {{100, 7}, {200, 1}};  // also without the last byte, which was zero
    if (size == 10) expected = {{8, 1}, {100, 7}};
    if (size < 10) expected = {{100, 7}};  // the second mass is zero: dropped when sorted
    if (size == 4) expected = {{4, 7}};
    if (size < 4) expected = {{0, size > 0 ? 7 : 0}};  // both are zero: cut to the first point
    EXPECT_EQ(PointsOf(Read(0, 0)), expected);
  });
}

TEST_F(GetSpectrumTest, FormatsThatCannotBeReadFail) {
  for (const unsigned format : {10u, 15u}) {
    Record().dataFormat = format;
    Open();
    CZRMassSpectrum spectrum;
    EXPECT_FALSE(server_.GetSpectrum(0, 0, 0, spectrum)) << format;
    EXPECT_EQ(server_.GetScanCount(0, 0), 1) << format;
  }
}

TEST_F(GetSpectrumTest, DataFileIsFoundAgainUnderAnotherSpelling) {
  Open();
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(server_.GetSpectrum(0, 0, 0, spectrum));
  directory_->Rename("_FUNC001.DAT", "aside");
  EXPECT_FALSE(server_.GetSpectrum(0, 0, 0, spectrum));
  directory_->Rename("aside", "_func001.dat");
  EXPECT_TRUE(server_.GetSpectrum(0, 0, 0, spectrum));
  directory_->Rename("_func001.dat", "_FUNC001.dat");
  EXPECT_TRUE(server_.GetSpectrum(0, 0, 0, spectrum));
}

}  // namespace
}  // namespace zrml
