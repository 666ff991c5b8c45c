// Scan counts, times, chromatograms and absorbance spectra from the provider.
#include <climits>
#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/masslynx/ml_data_server_fixture.h"
#include "tests/masslynx/truncation.h"
#include "tests/support/raw_directory_builder.h"

namespace zrml {
namespace {

using MLDataServerScans = MLDataServerTest;

TEST_F(MLDataServerScans, AreCountedByTheIndex) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs, kTofMs});
  raw.functions[0] = FunctionOf(kTofMs, {0.5F, 1.0F, 1.5F});
  raw.functions[1] = FunctionOf(kTofMs, {});
  Open(raw);
  EXPECT_EQ(server_.GetScanCount(0, 0), 3);
  EXPECT_EQ(server_.GetScanCount(0, 1), 0);
}

TEST_F(MLDataServerScans, IndexIsReadOnceAndKeptUntilClose) {
  RawDirectoryBuilder raw;
  raw.functions = {FunctionOf(kTofMs, {0.5F, 1.0F})};
  Open(raw);
  EXPECT_EQ(server_.GetScanCount(0, 0), 2);
  directory_->Truncate("_FUNC001.IDX", 22);
  EXPECT_EQ(server_.GetScanCount(0, 0), 2);
  server_.Close();
  ASSERT_TRUE(server_.Open(directory_->WidePath()));
  EXPECT_EQ(server_.GetScanCount(0, 0), 1);
}

TEST_F(MLDataServerScans, IndexThatCouldNotBeReadIsTriedAgain) {
  RawDirectoryBuilder raw;
  raw.functions = {FunctionOf(kTofMs, {0.5F, 1.0F})};
  Open(raw);
  directory_->Rename("_FUNC001.IDX", "aside");
  EXPECT_EQ(server_.GetScanCount(0, 0), 0);
  directory_->Rename("aside", "_FUNC001.IDX");
  EXPECT_EQ(server_.GetScanCount(0, 0), 2);
}

TEST_F(MLDataServerScans, TruncatedIndexGivesItsWholeRecordsOrNoScans) {
  RawDirectoryBuilder raw;
  raw.functions = {FunctionOf(kTofMs, {0.5F, 1.0F})};
  Open(raw);
  TruncateAtEveryLength(*directory_, "_FUNC001.IDX", [&](std::size_t size) {
    server_.Close();
    ASSERT_TRUE(server_.Open(directory_->WidePath()));
    // Records have 22 bytes, or 30.
    EXPECT_EQ(server_.GetScanCount(0, 0), size == 44 ? 2 : size == 22 || size == 30 ? 1 : 0);
  });
}

TEST_F(MLDataServerScans, CentroidedIsThatOfTheFirstScanInTime) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs, kTofMs, kTofMs, kTofMs});
  raw.functions[0] = FunctionOf(kTofMs, {1.0F, 0.5F});
  raw.functions[0].scans[0].index.centroidState = CentroidState::kProfile;
  raw.functions[0].scans[1].index.centroidState = CentroidState::kCentroid;
  raw.functions[1] = FunctionOf(kTofMs, {0.5F, 1.0F});
  raw.functions[1].scans[0].index.centroidState = CentroidState::kProfile;
  raw.functions[1].scans[1].index.centroidState = CentroidState::kCentroid;
  raw.functions[2] = FunctionOf(kTofMs, {});
  raw.functions[3].record.dataFormat = 2;  // centroided by default
  Open(raw);
  EXPECT_TRUE(server_.IsCentroided(0, 0));
  EXPECT_FALSE(server_.IsCentroided(0, 1));
  EXPECT_FALSE(server_.IsCentroided(0, 2));
  EXPECT_TRUE(server_.IsCentroided(0, 3));
}

TEST_F(MLDataServerScans, CentroidedDoesNotReadTheData) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.functions[0].scans[0].index.centroidState = CentroidState::kCentroid;
  Open(raw);
  directory_->Remove("_FUNC001.DAT");
  EXPECT_TRUE(server_.IsCentroided(0, 0));
}

TEST_F(MLDataServerScans, RetentionTimesAreWidenedInTimeOrder) {
  RawDirectoryBuilder raw;
  raw.functions = {FunctionOf(kTofMs, {2.0F, 0.1F, 1.0F}), FunctionOf(kTofMs, {})};
  Open(raw);
  Doubles times = {7, 7, 7, 7};
  EXPECT_TRUE(server_.GetRetentionTimes(0, 0, times));
  EXPECT_EQ(times, (Doubles{13421773.0 / 134217728.0, 1, 2}));  // 0.1F is 13421773 x 2^-27
  EXPECT_TRUE(server_.GetRetentionTimes(0, 1, times));
  EXPECT_TRUE(times.empty());
}

TEST_F(MLDataServerScans, RetentionTimesDoNotNeedTheData) {
  RawDirectoryBuilder raw;
  raw.functions = {FunctionOf(kTofMs, {0.5F, 1.0F})};
  Open(raw);
  directory_->Remove("_FUNC001.DAT");
  Doubles times;
  EXPECT_TRUE(server_.GetRetentionTimes(0, 0, times));
  EXPECT_EQ(times, (Doubles{0.5, 1}));
}

// The stored totals, not the sums of the points; no name is set, and nothing is computed.
TEST_F(MLDataServerScans, TotalIonChromatogramComesFromTheIndex) {
  RawDirectoryBuilder raw;
  raw.functions = {FunctionOf(kTofMs, {1.0F, 0.5F})};
  raw.functions[0].scans[0].index.totalIntensity = 1e6F;
  raw.functions[0].scans[1].index.totalIntensity = 0.1F;
  Open(raw);
  directory_->Remove("_FUNC001.DAT");
  for (const bool allowCompute : {false, true}) {
    CZRChromatogram chromatogram;
    chromatogram.SetName(L"name");
    chromatogram.SetSize(5);
    EXPECT_TRUE(server_.GetTotalIonChromatogram(allowCompute, 0, 0, chromatogram));
    EXPECT_EQ(chromatogram.Times(), (Doubles{0.5, 1}));
    EXPECT_EQ(chromatogram.Intensities(), (Doubles{13421773.0 / 134217728.0, 1e6}));
    EXPECT_EQ(chromatogram.Name(), L"name");
  }
}

TEST_F(MLDataServerScans, TotalIonChromatogramWithoutScansIsEmpty) {
  RawDirectoryBuilder raw;
  raw.functions = {FunctionOf(kTofMs, {})};
  Open(raw);
  CZRChromatogram chromatogram;
  chromatogram.SetSize(5);
  EXPECT_TRUE(server_.GetTotalIonChromatogram(false, 0, 0, chromatogram));
  EXPECT_TRUE(chromatogram.Times().empty());
  EXPECT_TRUE(chromatogram.Intensities().empty());
}

TEST_F(MLDataServerScans, DimensionsCountMobilityAndTime) {
  RawDirectoryBuilder raw;
  raw.functions = {FunctionOf(kTofMs, {0.5F}), FunctionOf(kTofMs, {0.5F, 1.0F}), FunctionOf(kTofMs, {0.5F}),
                   FunctionOf(kTofMs, {0.5F, 1.0F})};
  const TempDirectory directory = raw.Build();
  directory.WriteText("_FUNC003.CDT", "");
  directory.WriteText("_func004.cdt", "");
  ASSERT_TRUE(server_.Open(directory.WidePath()));
  const struct {
    bool mobility;
    int scanDimensions;
    int dimensions;
  } expected[] = {{false, 1, 1}, {false, 1, 2}, {true, 2, 2}, {true, 2, 3}};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(server_.HasMobility(0, i), expected[i].mobility) << i;
    EXPECT_EQ(server_.GetScanDimensionCount(0, i), expected[i].scanDimensions) << i;
    EXPECT_EQ(server_.GetDimensionCount(0, i), expected[i].dimensions) << i;
  }
  server_.Close();
}

TEST_F(MLDataServerScans, MobilityAxisNeedsBins) {
  Open(DirectoryOf({kTofMs}));
  Doubles axis = {7};
  EXPECT_EQ(server_.GetMobilityBinCount(0, 0), 0);
  EXPECT_FALSE(server_.GetMobilityAxis(0, 0, 0, axis));
  EXPECT_EQ(axis, Doubles{7});
}

TEST_F(MLDataServerScans, PrecursorScanIsTheSurveyScanBefore) {
  RawDirectoryBuilder raw;
  raw.functions = {FunctionOf(kTofMs, {4.5F, 4.75F, 5.25F}), FunctionOf(kTofMsMs, {5.0F})};
  Open(raw);
  int function = -1;
  int scan = -1;
  EXPECT_TRUE(server_.FindPrecursorScan(0, 1, 0, function, scan));
  EXPECT_EQ(function, 0);
  EXPECT_EQ(scan, 1);
}

// --- absorbance ---

class MLDataServerAbsorbance : public MLDataServerTest {
 protected:
  /// Scans of two points each: 190.5 nm and 500 nm, with 3 x 4^2 and 5.
  static RawDirectoryBuilder Absorbance(unsigned dataFormat) {
    RawDirectoryBuilder raw = DirectoryOf({kTofMs, kDad});
    FunctionFiles& function = raw.functions[1];
    function.record.dataFormat = dataFormat;
    function.scans.clear();
    for (const float time : {0.25F, 0.75F}) {
      // Format 9: 190.5 = 2^8 x 0.744140625 and 500 = 2^9 x 0.9765625; x 2^23 are the mantissas.
      function.scans.push_back(dataFormat == 9
                                   ? ScanOf<StoredPoint9>(time, {{8, 6242304, 3, 2}, {9, 8192000, 5, 0}})
                                   : ScanOf<StoredPoint1>(time, {{195072, 3, 2}, {512000, 5, 0}}));  // x 1024
    }
    return raw;
  }

  void ExpectSecondScan() {
    CZRAbsorbanceSpectrum spectrum;
    spectrum.SetSize(5);
    ASSERT_TRUE(server_.GetAbsorbanceSpectrum(0, 1, spectrum));
    EXPECT_EQ(spectrum.Wavelengths(), (Doubles{190.5, 500}));
    EXPECT_EQ(spectrum.Absorbances(), (Doubles{48, 5}));
    EXPECT_EQ(spectrum.StartTime(), 0.75);
    EXPECT_EQ(spectrum.EndTime(), 0.75);
    EXPECT_EQ(spectrum.FirstScan(), 1);  // from 0, unlike those of mass spectra
    EXPECT_EQ(spectrum.LastScan(), 1);
  }

  bool CanRead(int sample, int scan) {
    CZRAbsorbanceSpectrum spectrum;
    return server_.GetAbsorbanceSpectrum(sample, scan, spectrum);
  }
};

TEST_F(MLDataServerAbsorbance, SpectraOfFormat9AreRead) {
  Open(Absorbance(9));
  EXPECT_TRUE(server_.HasAbsorbanceData(0));
  EXPECT_EQ(server_.GetAbsorbanceScanCount(0), 2);
  ExpectSecondScan();
}

TEST_F(MLDataServerAbsorbance, SpectraOfFormat1AreRead) {
  Open(Absorbance(1));
  EXPECT_EQ(server_.GetAbsorbanceScanCount(0), 2);
  ExpectSecondScan();
}

TEST_F(MLDataServerAbsorbance, FirstUseMayBeTheSpectrum) {
  Open(Absorbance(9));
  EXPECT_TRUE(CanRead(0, 0));
}

TEST_F(MLDataServerAbsorbance, OtherFormatsFail) {
  for (unsigned format = 0; format < 16; ++format) {
    RawDirectoryBuilder raw = Absorbance(format == 1 ? 1 : 9);
    raw.functions[1].record.dataFormat = format;
    Open(raw);
    EXPECT_EQ(server_.GetAbsorbanceScanCount(0), 2) << format;
    EXPECT_EQ(CanRead(0, 0), format == 9 || format == 1) << format;
  }
}

TEST_F(MLDataServerAbsorbance, PositionsOutOfRangeFail) {
  Open(Absorbance(9));
  EXPECT_TRUE(CanRead(0, 1));
  for (const int scan : {-1, 2, INT_MAX, INT_MIN}) EXPECT_FALSE(CanRead(0, scan)) << scan;
  for (const int sample : {1, -1}) {
    EXPECT_FALSE(server_.HasAbsorbanceData(sample));
    EXPECT_EQ(server_.GetAbsorbanceScanCount(sample), 0);
    EXPECT_FALSE(CanRead(sample, 0));
  }
}

TEST_F(MLDataServerAbsorbance, MissingDataFileFailsTheSpectrumOnly) {
  const TempDirectory directory = Absorbance(9).Build();
  directory.Remove("_FUNC002.DAT");
  ASSERT_TRUE(server_.Open(directory.WidePath()));
  EXPECT_TRUE(server_.HasAbsorbanceData(0));
  EXPECT_EQ(server_.GetAbsorbanceScanCount(0), 2);
  EXPECT_FALSE(CanRead(0, 0));
  server_.Close();
}

TEST_F(MLDataServerAbsorbance, IsAbsentWithoutTheFunction) {
  Open(DirectoryOf({kTofMs}));
  EXPECT_FALSE(server_.HasAbsorbanceData(0));
  EXPECT_EQ(server_.GetAbsorbanceScanCount(0), 0);
  EXPECT_FALSE(CanRead(0, 0));
}

// The absorbance function cannot be selected among the listed ones, and no selection removes it.
TEST_F(MLDataServerAbsorbance, StaysWithAnySelectedFunction) {
  const TempDirectory directory = Absorbance(9).Build();
  ASSERT_TRUE(server_.OpenFileInSet(directory.WidePath(), L"_FUNC001.DAT"));
  EXPECT_EQ(server_.GetFunctionCount(0), 1);
  ExpectSecondScan();
  server_.Close();
}

}  // namespace
}  // namespace zrml
