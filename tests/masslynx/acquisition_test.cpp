// A whole acquisition through the interface, as a host walks it, with file names in either case.
#include <cfloat>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/raw_server.h"
#include "tests/support/raw_directory_builder.h"

namespace zrml {
namespace {

using Doubles = HostVector<double>;
using Points = std::vector<std::pair<double, double>>;

// Function 1: survey scans, calibrated in the root domain to mass = (0.5 + sqrt(raw))^2.
FunctionFiles SurveyFunction() {
  FunctionFiles function;
  function.record.type = 18;
  function.record.dataFormat = 9;
  function.record.scanTime = 0;
  function.record.startMasses = {50};
  function.record.endMasses = {1200};
  // Format 9 holds 2^exponent x mantissa x 2^-23. 100 = 2^7 x 0.78125, 400 = 2^9 x 0.78125.
  const std::uint32_t mantissa = 6553600;  // 0.78125 x 2^23
  function.scans = {ScanOf<StoredPoint9>(1.0F, {{7, mantissa, 10, 0}, {9, mantissa, 20, 0}}),
                    ScanOf<StoredPoint9>(2.0F, {{7, mantissa, 30, 1}, {9, mantissa, 5, 0}}),
                    ScanOf<StoredPoint9>(3.0F, {})};
  return function;
}

// Function 2: product-ion scans in profile mode each with a precursor, except the last one.
FunctionFiles ProductFunction() {
  FunctionFiles function;
  function.record.type = 16;
  function.record.ionMode = 9;
  function.record.dataFormat = 8;
  function.record.scanTime = 30;
  function.record.setMass = 321.5F;
  function.record.defaultScanValue = 20;
  function.statistics.emplace();
  function.scans = {ScanOf<StoredPoint8>(1.25F, {{50 * 128, 3}, {60 * 128, 4}}),
                    ScanOf<StoredPoint8>(2.25F, {{70 * 128, 5}})};
  function.scans[0].statistics = {.auxValue = 27.5F, .precursorMass = 654.25F, .precursorFlags = 1};
  return function;
}

FunctionFiles LockMassFunction() {
  FunctionFiles function;
  function.record.type = 18;
  function.record.dataFormat = 0;  // centroided
  function.scans = {ScanOf<StoredPoint0>(1.5F, {{556 * 128, 100, 2}})};
  return function;
}

FunctionFiles AbsorbanceFunction() {
  FunctionFiles function;
  function.record.type = 12;
  function.record.dataFormat = 1;
  function.scans = {ScanOf<StoredPoint1>(0.5F, {{210 * 1024, 1, 0}, {254 * 1024, 2, 0}, {280 * 1024, 3, 1}})};
  return function;
}

RawDirectoryBuilder Acquisition(Spelling spelling) {
  RawDirectoryBuilder raw;
  raw.spelling = spelling;
  raw.header = {HeaderLine("Version", "01.00"),
                HeaderLine("Acquired Name", "Plasma 7"),
                HeaderLine("Acquired Date", "21-Nov-2024"),
                HeaderLine("Acquired Time", "08:30:05"),
                HeaderLine("Instrument", "Xevo"),
                HeaderLine("User Name", "M\xfcller"),
                HeaderLine("Sample Description", "2 \xb5L plasma"),
                CalLine("MS1 Static", {0.5, 1}, Domain::kRoot),
                CalLine("MS2 Static", {1, 1}),
                CalLine("Function 3", {0, 1})};
  raw.functions = {SurveyFunction(), ProductFunction(), LockMassFunction(), AbsorbanceFunction()};
  raw.labels = {CreatorLine("4.1"), "", FunctionHeading(1, "TOF MS FUNCTION"),
                FunctionHeading(2, "TOF PRODUCT ION FUNCTION"), FunctionHeading(3, "REFERENCE")};
  raw.history = std::vector<HistoryStep>{
      {.processNumber = 1, .rawFunctionNumber = 1, .processCode = 2},
      {.processNumber = 2, .derivedFrom = 1, .rawFunctionNumber = 1, .processCode = 3}};
  raw.processed[2].scans = {ScanOf<StoredPoint9>(2.0F, {{7, 6553600, 77, 0}})};
  return raw;
}

class AcquisitionTest : public testing::TestWithParam<Spelling> {
 protected:
  AcquisitionTest()
      : directory_(Acquisition(GetParam()).Build()), server_(std::make_unique<plugin::CMLDataServerImpl>()) {
    EXPECT_TRUE(server_->ValidateSource(directory_.WidePath()));
    EXPECT_TRUE(server_->Open(directory_.WidePath()));
  }

  CZRMassSpectrum Spectrum(int function, int scan) {
    CZRMassSpectrum spectrum;
    EXPECT_TRUE(server_->GetSpectrum(0, function, scan, spectrum));
    return spectrum;
  }
  Points PointsOf(int function, int scan) {
    const CZRMassSpectrum spectrum = Spectrum(function, scan);
    Points points;
    for (int i = 0; i < spectrum.GetCount(); ++i) {
      points.emplace_back(spectrum.GetMasses()[i], spectrum.GetIntensities()[i]);
    }
    return points;
  }
  std::wstring Metadata(const std::wstring& key, int function = 0) {
    std::wstring value;
    EXPECT_TRUE(server_->GetMetadataValue(0, function, key, value));
    return value;
  }

  TempDirectory directory_;
  std::unique_ptr<CDataServerImpl> server_;  // as a host sees it
};

INSTANTIATE_TEST_SUITE_P(Spellings, AcquisitionTest,
                         testing::Values(Spelling::kUpperCase, Spelling::kLowerCase),
                         [](const auto& spelling) {
                           return spelling.param == Spelling::kUpperCase ? "UpperCase" : "LowerCase";
                         });

TEST_P(AcquisitionTest, ListsItsFunctions) {
  const struct {
    const wchar_t* name;
    int kind;
    int level;
    int polarity;
    int scans;
    bool centroided;
  } functions[] = {{L"TOF MS ES+ TOF MS FUNCTION", 2, 1, 1, 3, false},
                   {L"TOF MS/MS ES- TOF PRODUCT ION FUNCTION", 4, 2, 2, 2, false},
                   {L"TOF MS ES+ Lock Mass", 2, 1, 1, 1, true},
                   {L"TOF MS ES+ (Combined, Smoothed)", 2, 1, 1, 1, false}};
  ASSERT_EQ(server_->GetFunctionCount(0), 4);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(server_->GetFunctionName(0, i), functions[i].name);
    EXPECT_EQ(server_->GetFunctionKind(0, i), functions[i].kind) << i;
    EXPECT_EQ(server_->GetMSLevel(0, i), functions[i].level) << i;
    EXPECT_EQ(server_->GetPolarity(0, i), functions[i].polarity) << i;
    EXPECT_EQ(server_->GetScanCount(0, i), functions[i].scans) << i;
    EXPECT_EQ(server_->IsCentroided(0, i), functions[i].centroided) << i;
    EXPECT_FALSE(server_->HasMobility(0, i)) << i;
  }
}

TEST_P(AcquisitionTest, GivesItsMassRange) {
  double low = 0;
  double high = 0;
  EXPECT_TRUE(server_->GetFunctionMassRange(0, 0, low, high));
  EXPECT_EQ(low, 50.0);
  EXPECT_EQ(high, 1200.0);
  EXPECT_FALSE(server_->GetFunctionMassRange(0, 1, low, high));
}

// (0.5 + 10)^2 = 110.25 and (0.5 + 20)^2 = 420.25 are exact in single precision.
TEST_P(AcquisitionTest, ReadsCalibratedSurveySpectra) {
  EXPECT_EQ(PointsOf(0, 0), (Points{{110.25, 10}, {420.25, 20}}));
  EXPECT_EQ(PointsOf(0, 1), (Points{{110.25, 120}, {420.25, 5}}));
  EXPECT_EQ(PointsOf(0, 2), Points{});
  const CZRMassSpectrum spectrum = Spectrum(0, 1);
  EXPECT_EQ(spectrum.GetStartTime(), 2.0);
  EXPECT_EQ(spectrum.GetEndTime(), 2.0);
  EXPECT_EQ(spectrum.GetFirstScan(), 2);
  EXPECT_EQ(spectrum.GetPrecursorMass(), 0.0);
}

TEST_P(AcquisitionTest, ReadsProductSpectraWithTheirPrecursors) {
  EXPECT_EQ(PointsOf(1, 0), (Points{{51, 3}, {61, 4}}));
  EXPECT_EQ(PointsOf(1, 1), (Points{{71, 5}}));
  const CZRMassSpectrum first = Spectrum(1, 0);
  EXPECT_EQ(first.GetPrecursorMass(), 654.25);
  EXPECT_EQ(first.GetScanAuxValue(), 27.5);
  EXPECT_EQ(first.GetEndTime(), 1.75);
  EXPECT_EQ(first.GetPolarity(), 2);
  const CZRMassSpectrum second = Spectrum(1, 1);
  EXPECT_EQ(second.GetPrecursorMass(), 321.5);
  EXPECT_EQ(second.GetScanAuxValue(), 20.0);
}

TEST_P(AcquisitionTest, ReadsLockMassAndProcessedSpectra) {
  EXPECT_EQ(PointsOf(2, 0), (Points{{556, 1600}}));
  EXPECT_TRUE(Spectrum(2, 0).IsCentroided());
  EXPECT_EQ(PointsOf(3, 0), (Points{{110.25, 77}}));
}

TEST_P(AcquisitionTest, GivesChromatograms) {
  CZRChromatogram chromatogram;
  EXPECT_TRUE(server_->GetTotalIonChromatogram(false, 0, 0, chromatogram));
  EXPECT_EQ(chromatogram.Times(), (Doubles{1, 2, 3}));
  EXPECT_EQ(chromatogram.Intensities(), (Doubles{30, 125, 0}));
  EXPECT_TRUE(server_->GetBasePeakChromatogram(true, 0, 0, chromatogram));
  EXPECT_EQ(chromatogram.Intensities(), (Doubles{20, 120, 0}));
  EXPECT_TRUE(server_->GetMassRangeChromatogram(400, 500, true, 0, 0, chromatogram));
  EXPECT_EQ(chromatogram.Intensities(), (Doubles{20, 5, 0}));
}

TEST_P(AcquisitionTest, FindsPrecursorScans) {
  int function = -1;
  int scan = -1;
  EXPECT_TRUE(server_->FindPrecursorScan(0, 1, 1, function, scan));
  // At 2.25: the survey scan at 2.0 is nearer than the lock mass at 1.5, and the processed scan at 2.0, of
  // another polarity than the product scan, does not replace it.
  EXPECT_EQ(function, 0);
  EXPECT_EQ(scan, 1);
}

TEST_P(AcquisitionTest, ReadsAbsorbanceSpectra) {
  EXPECT_TRUE(server_->HasAbsorbanceData(0));
  ASSERT_EQ(server_->GetAbsorbanceScanCount(0), 1);
  CZRAbsorbanceSpectrum spectrum;
  EXPECT_TRUE(server_->GetAbsorbanceSpectrum(0, 0, spectrum));
  EXPECT_EQ(spectrum.Wavelengths(), (Doubles{210, 254, 280}));
  EXPECT_EQ(spectrum.Absorbances(), (Doubles{1, 2, 12}));
  EXPECT_EQ(spectrum.StartTime(), 0.5);
}

TEST_P(AcquisitionTest, GivesItsMetadata) {
  EXPECT_EQ(Metadata(L"AnalysisDateTime"), L"2024-11-21T08:30:05+00:00");
  EXPECT_EQ(Metadata(L"InstrumentName"), L"Xevo");
  EXPECT_EQ(Metadata(L"OperatorName"), L"M\u00fcller");
  EXPECT_EQ(Metadata(L"SampleName"), L"2 \u00b5L plasma");
  EXPECT_EQ(Metadata(L"DatasetName"), directory_.WidePath() + L'\\');
  EXPECT_EQ(Metadata(L"MethodName"), L"");
  EXPECT_EQ(Metadata(L"IonizationMethod", 1), L"ES-");
}

TEST_P(AcquisitionTest, OpensAgainAfterClose) {
  EXPECT_TRUE(server_->Close());
  EXPECT_EQ(server_->GetFunctionCount(0), 0);
  EXPECT_TRUE(server_->OpenFileInSet(directory_.WidePath(), directory_.WidePath("_FUNC002.DAT")));
  ASSERT_EQ(server_->GetFunctionCount(0), 1);
  EXPECT_EQ(server_->GetFunctionName(0, 0), L"TOF MS/MS ES- TOF PRODUCT ION FUNCTION");
  EXPECT_EQ(PointsOf(0, 1), (Points{{71, 5}}));
}

}  // namespace
}  // namespace zrml
