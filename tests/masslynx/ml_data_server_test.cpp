// Recognising, opening, selecting and closing, and the provider's answers without data.
#include <climits>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/raw_server.h"
#include "tests/masslynx/ml_data_server_fixture.h"
#include "tests/masslynx/truncation.h"
#include "tests/support/raw_directory_builder.h"

namespace zrml {
namespace {

// --- the provider ---

TEST(MLDataServer, NamesItself) {
  plugin::CMLDataServerImpl server;
  EXPECT_EQ(server.GetProviderName(), L"ZRMLProvider");
  EXPECT_EQ(server.GetProviderGuid(), L"{9e2ea952-4c83-489b-8e0b-a0ffedd70ca2}");
  EXPECT_EQ(server.GetFileFilter(), L"Waters MassLynx (*.dat *.idx *.inf)");
  EXPECT_FALSE(server.IsReportSource());
}

// --- recognising a directory ---

TEST(MLDataServerCanOpen, TakesBothSpellings) {
  for (const Spelling spelling : {Spelling::kUpperCase, Spelling::kLowerCase}) {
    RawDirectoryBuilder raw = DirectoryOf({kTofMs});
    raw.spelling = spelling;
    const TempDirectory directory = raw.Build();
    plugin::CMLDataServerImpl server;
    EXPECT_TRUE(server.CanOpen(directory.WidePath()));
    EXPECT_TRUE(server.CanOpen(OpenedPath(directory)));
    EXPECT_TRUE(server.ValidateSource(directory.WidePath()));
    EXPECT_TRUE(server.ValidateSource(OpenedPath(directory)));
  }
}

TEST(MLDataServerCanOpen, RejectsFilesInsideTheDirectory) {
  const TempDirectory directory = DirectoryOf({kTofMs, kTofMs}).Build();
  plugin::CMLDataServerImpl server;
  for (const char* const name : {"_FUNC002.DAT", "_HEADER.TXT", "_FUNCTNS.INF", "missing"}) {
    EXPECT_FALSE(server.CanOpen(directory.WidePath(name))) << name;
    EXPECT_FALSE(server.ValidateSource(directory.WidePath(name))) << name;
  }
  EXPECT_FALSE(server.CanOpen(L""));
  EXPECT_FALSE(server.ValidateSource(L""));
}

TEST(MLDataServerCanOpen, NeedsHeaderAndFunctionTable) {
  for (const char* const name : {"_HEADER.TXT", "_FUNCTNS.INF"}) {
    const TempDirectory directory = DirectoryOf({kTofMs}).Build();
    plugin::CMLDataServerImpl server;
    EXPECT_TRUE(server.CanOpen(directory.WidePath())) << name;
    EXPECT_TRUE(server.ValidateSource(directory.WidePath())) << name;
    directory.Remove(name);
    EXPECT_FALSE(server.CanOpen(directory.WidePath())) << name;
    EXPECT_FALSE(server.ValidateSource(directory.WidePath())) << name;
  }
}

TEST(MLDataServerValidateSource, LooksAtTheFirstHeaderLine) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.header = {"$$ Acquired Name: x"};
  const TempDirectory acquired = raw.Build();
  raw.header = {"$$ Instrument: x", "$$ Version: 01.00"};
  const TempDirectory directory = raw.Build();
  plugin::CMLDataServerImpl server;
  EXPECT_TRUE(server.ValidateSource(acquired.WidePath()));
  EXPECT_FALSE(server.ValidateSource(directory.WidePath()));
  EXPECT_TRUE(server.CanOpen(directory.WidePath()));
  EXPECT_TRUE(server.Open(directory.WidePath()));  // opening does not check this
  EXPECT_EQ(Metadata(server, L"InstrumentName"), L"x");
}

TEST(MLDataServerValidateSource, ChangesNothing) {
  RawDirectoryBuilder other = DirectoryOf({kTofMs, kTofMs});
  other.header.push_back("$$ Instrument: other");
  const TempDirectory otherDirectory = other.Build();
  const TempDirectory directory = DirectoryOf({kDau}).Build();
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));

  EXPECT_TRUE(server.CanOpen(otherDirectory.WidePath()));
  EXPECT_TRUE(server.ValidateSource(otherDirectory.WidePath()));
  EXPECT_EQ(FunctionNames(server), Names{L"DAU ES+"});
  EXPECT_EQ(Metadata(server, L"DatasetName"), OpenedPath(directory));
  EXPECT_EQ(Metadata(server, L"InstrumentName"), L"");
  EXPECT_EQ(server.GetScanCount(0, 0), 1);

  plugin::CMLDataServerImpl closed;
  EXPECT_TRUE(closed.ValidateSource(otherDirectory.WidePath()));
  EXPECT_EQ(closed.GetFunctionCount(0), 0);
  EXPECT_EQ(Metadata(closed, L"DatasetName"), L"");
}

// --- opening and closing ---

TEST(MLDataServerOpen, TrailingBackslashMakesNoDifference) {
  const TempDirectory directory = DirectoryOf({kTofMs, kDau}).Build();
  for (const std::wstring& path : {directory.WidePath(), OpenedPath(directory)}) {
    plugin::CMLDataServerImpl server;
    EXPECT_TRUE(server.Open(path));
    EXPECT_EQ(FunctionNames(server), (Names{L"TOF MS ES+", L"DAU ES+"}));
    EXPECT_EQ(Metadata(server, L"DatasetName"), OpenedPath(directory));
  }
}

TEST(MLDataServerOpen, PathMustNameTheDirectoryItself) {
  const TempDirectory directory = DirectoryOf({kTofMs}).Build();
  plugin::CMLDataServerImpl server;
  EXPECT_FALSE(server.Open(directory.WidePath("_FUNC001.DAT")));
  EXPECT_FALSE(server.Open(directory.WidePath("_HEADER.TXT")));
  EXPECT_FALSE(server.Open(L""));
  EXPECT_TRUE(server.Open(directory.WidePath()));
}

TEST(MLDataServerOpen, DirectoryWithoutFunctionsOpens) {
  const TempDirectory directory = DirectoryOf({}).Build();
  plugin::CMLDataServerImpl server;
  EXPECT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(server.GetFunctionCount(0), 0);
}

TEST(MLDataServerOpen, WithoutHeaderOnlyThePathChanges) {
  RawDirectoryBuilder raw = DirectoryOf({kDau});
  raw.header.push_back("$$ Instrument: first");
  const TempDirectory first = raw.Build();
  const TempDirectory second = DirectoryOf({kTofMs, kTofMs}).Build();
  second.Remove("_HEADER.TXT");

  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(first.WidePath()));
  EXPECT_FALSE(server.Open(second.WidePath()));
  EXPECT_EQ(FunctionNames(server), Names{L"DAU ES+"});
  EXPECT_EQ(Metadata(server, L"InstrumentName"), L"first");
  EXPECT_EQ(Metadata(server, L"DatasetName"), OpenedPath(second));
}

TEST(MLDataServerOpen, MissingFunctionTableFailsAndKeepsTheHeader) {
  RawDirectoryBuilder raw = DirectoryOf({kDau});
  raw.header.push_back("$$ Instrument: x");
  const TempDirectory directory = raw.Build();
  directory.Remove("_FUNCTNS.INF");
  plugin::CMLDataServerImpl server;
  EXPECT_FALSE(server.Open(directory.WidePath()));
  EXPECT_EQ(server.GetFunctionCount(0), 0);
  EXPECT_EQ(Metadata(server, L"InstrumentName"), L"x");
  EXPECT_EQ(Metadata(server, L"DatasetName"), OpenedPath(directory));
  EXPECT_TRUE(server.Close());
  EXPECT_EQ(Metadata(server, L"InstrumentName"), L"");
  EXPECT_EQ(Metadata(server, L"DatasetName"), L"");
}

TEST(MLDataServerOpen, FunctionTableOfOddSizeFails) {
  const TempDirectory directory = DirectoryOf({kTofMs, kTofMs}).Build();
  plugin::CMLDataServerImpl server;
  EXPECT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(server.GetFunctionCount(0), 2);
  server.Close();
  directory.Edit("_FUNCTNS.INF", [](FileBytes& bytes) { bytes.resize(833); });
  EXPECT_FALSE(server.Open(directory.WidePath()));
  server.Close();
  directory.Edit("_FUNCTNS.INF", [](FileBytes& bytes) { bytes.resize(832); });
  EXPECT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(server.GetFunctionCount(0), 2);
}

TEST(MLDataServerOpen, OptionalFilesMayBeCutAnywhere) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs});
  raw.history = std::vector<HistoryStep>{{.processNumber = 1, .processCode = 2}};
  raw.labels = {FunctionHeading(1, "LABEL")};
  const TempDirectory directory = raw.Build();
  directory.WriteText("_PROC001.DAT", "");
  plugin::CMLDataServerImpl server;
  const auto names = [&] {
    server.Close();
    EXPECT_TRUE(server.Open(directory.WidePath()));
    return FunctionNames(server);
  };
  TruncateAtEveryLength(directory, "_HISTORY.INF", [&](std::size_t size) {
    Names expected = {L"TOF MS ES+ LABEL"};
    if (size == 132 + 123) expected.push_back(L"TOF MS ES+ (Combined)");
    EXPECT_EQ(names(), expected);
  });
  TruncateAtEveryLength(directory, "_EXTERN.INF", [&](std::size_t size) {
    std::wstring expected = L"TOF MS ES+";  // "L" is the 36th byte of its line
    if (size > 35) expected += L" " + std::wstring(L"LABEL").substr(0, size - 35);
    EXPECT_EQ(names(), Names{expected});
  });
}

TEST(MLDataServerClose, ForgetsTheSource) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs, kDad});
  raw.header.push_back("$$ Instrument: x");
  const TempDirectory directory = raw.Build();
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(server.GetFunctionCount(0), 1);
  EXPECT_TRUE(server.HasAbsorbanceData(0));
  EXPECT_TRUE(server.Close());
  EXPECT_EQ(server.GetFunctionCount(0), 0);
  EXPECT_FALSE(server.HasAbsorbanceData(0));
  EXPECT_EQ(Metadata(server, L"InstrumentName"), L"");
  EXPECT_EQ(Metadata(server, L"DatasetName"), L"");
}

TEST(MLDataServerClose, OfAClosedObjectChangesNothing) {
  plugin::CMLDataServerImpl server;
  EXPECT_TRUE(server.Close());
  EXPECT_TRUE(server.Close());
  const TempDirectory directory = DirectoryOf({kTofMs}).Build();
  EXPECT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(server.GetFunctionCount(0), 1);
}

TEST(MLDataServerClose, AnotherSourceCanBeOpenedAfterIt) {
  const TempDirectory first = DirectoryOf({kTofMs, kDad}).Build();
  const TempDirectory second = DirectoryOf({kDau, kTofMsMs}).Build();
  plugin::CMLDataServerImpl server;
  for (int round = 0; round < 3; ++round) {
    ASSERT_TRUE(server.Open(first.WidePath()));
    EXPECT_EQ(FunctionNames(server), Names{L"TOF MS ES+"});
    EXPECT_TRUE(server.HasAbsorbanceData(0));
    EXPECT_TRUE(server.Close());
    ASSERT_TRUE(server.Open(second.WidePath()));
    EXPECT_EQ(FunctionNames(server), (Names{L"DAU ES+", L"TOF MS/MS ES+"}));
    EXPECT_FALSE(server.HasAbsorbanceData(0));
    EXPECT_TRUE(server.Close());
  }
}

// Not guarded: the second description replaces the first.
TEST(MLDataServerOpen, SecondOpenWithoutCloseLoadsTheNewDescription) {
  RawDirectoryBuilder raw = DirectoryOf({kTofMs, kTofMs, kTofMs});
  raw.header.push_back("$$ Instrument: first");
  raw.labels = {FunctionHeading(1, "FIRST")};
  const TempDirectory first = raw.Build();
  raw = DirectoryOf({kDau, kTofMsMs});
  raw.header.push_back("$$ Instrument: second");
  raw.functions[0] = FunctionOf(kDau, {0.5F, 1.0F});
  const TempDirectory second = raw.Build();

  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(first.WidePath()));
  EXPECT_EQ(server.GetScanCount(0, 0), 1);
  ASSERT_TRUE(server.Open(second.WidePath()));
  EXPECT_EQ(FunctionNames(server), (Names{L"DAU ES+", L"TOF MS/MS ES+"}));
  EXPECT_EQ(Metadata(server, L"InstrumentName"), L"second");
  EXPECT_EQ(Metadata(server, L"DatasetName"), OpenedPath(second));
  EXPECT_EQ(server.GetScanCount(0, 0), 2);
}

TEST(MLDataServerOpen, ObjectsAreIndependent) {
  const TempDirectory directory = DirectoryOf({kTofMs}).Build();
  plugin::CMLDataServerImpl first;
  plugin::CMLDataServerImpl second;
  ASSERT_TRUE(first.Open(directory.WidePath()));
  ASSERT_TRUE(second.Open(directory.WidePath()));
  first.Close();
  EXPECT_EQ(first.GetFunctionCount(0), 0);
  EXPECT_EQ(second.GetFunctionCount(0), 1);
  EXPECT_EQ(second.GetScanCount(0, 0), 1);
}

// --- selection by file ---

class MLDataServerSelection : public testing::Test {
 protected:
  MLDataServerSelection() {
    raw_ = DirectoryOf({kTofMs, kDau, kTofMs});
    raw_.history = std::vector<HistoryStep>{{.processNumber = 2, .rawFunctionNumber = 1, .processCode = 2}};
    raw_.processed[2] = FunctionOf(0, {0.5F, 1.0F, 1.5F});
    directory_.emplace(raw_.Build());
  }

  Names NamesWith(const std::wstring& file) {
    plugin::CMLDataServerImpl server;
    EXPECT_TRUE(server.OpenFileInSet(directory_->WidePath(), file));
    return FunctionNames(server);
  }

  const Names all_ = {L"TOF MS ES+ 1", L"DAU ES+", L"TOF MS ES+ 3", L"TOF MS ES+ (Combined)"};
  RawDirectoryBuilder raw_;
  std::optional<TempDirectory> directory_;
};

TEST_F(MLDataServerSelection, WithoutAFunctionFileListsAll) {
  EXPECT_EQ(NamesWith(directory_->WidePath()), all_);
  for (const wchar_t* const file : {L"", L"_HEADER.TXT", L"C:\\a.raw\\_HEADER.TXT", L"_extern.inf", L"x"}) {
    EXPECT_EQ(NamesWith(file), all_) << file;
  }
}

TEST_F(MLDataServerSelection, FunctionFileListsItsFunctionAlone) {
  for (const std::wstring& file :
       {directory_->WidePath("_FUNC002.DAT"), OpenedPath(*directory_) + L"_FUNC002.DAT",
        std::wstring(L"C:\\a.raw\\_FUNC002.DAT"), std::wstring(L"C:/a.raw/_Func002.dat"),
        std::wstring(L"_func002.dat"), std::wstring(L"_FUNC002.IDX"), std::wstring(L"_func002.sts"),
        std::wstring(L"any_func002.cdt")}) {
    EXPECT_EQ(NamesWith(file), Names{L"DAU ES+"}) << testing::PrintToString(file);
  }
}

TEST_F(MLDataServerSelection, ProcessedFileListsItsProcessedFunction) {
  EXPECT_EQ(NamesWith(L"_PROC002.DAT"), Names{L"TOF MS ES+ (Combined)"});
}

TEST_F(MLDataServerSelection, SelectedFunctionKeepsItsFileNumber) {
  raw_.functions[1] = FunctionOf(kDau, {0.5F, 1.0F});
  raw_.WriteTo(directory_->Path());
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.OpenFileInSet(directory_->WidePath(), L"_FUNC002.DAT"));
  EXPECT_EQ(server.GetFunctionCount(0), 1);
  EXPECT_EQ(server.GetScanCount(0, 0), 2);
  EXPECT_EQ(server.GetScanCount(0, 1), 0);
}

// Names are made after the selection, so a selected function has no twins.
TEST_F(MLDataServerSelection, SelectedFunctionNeedsNoPlaceInItsName) {
  EXPECT_EQ(NamesWith(L"_FUNC003.DAT"), Names{L"TOF MS ES+"});
}

TEST_F(MLDataServerSelection, FileWithoutAFunctionListsAll) {
  for (const wchar_t* const file : {L"_FUNC004.DAT", L"_FUNC000.DAT", L"_PROC001.DAT", L"_FUNCTNS.INF"}) {
    EXPECT_EQ(NamesWith(file), all_) << file;
  }
}

// Only a name of exactly twelve characters is the name of a function's file.
TEST_F(MLDataServerSelection, ShorterAndLongerNamesListAll) {
  for (const wchar_t* const file : {L"_func02.dat", L"C:\\_func02.dat", L"_func0002.dat", L"_func002.da"}) {
    EXPECT_EQ(NamesWith(file), all_) << file;
  }
}

// Deliberate: Open() takes the directory itself for the chosen file, so a directory with such a name selects.
TEST_F(MLDataServerSelection, DirectoryCalledLikeAFunctionFileSelects) {
  const TempDirectory directory = raw_.Build("x_FUNC002.raw");
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.Open(directory.WidePath()));
  EXPECT_EQ(FunctionNames(server), Names{L"DAU ES+"});
  server.Close();
  ASSERT_TRUE(server.Open(OpenedPath(directory)));  // its last twelve characters start with "func"
  EXPECT_EQ(FunctionNames(server), all_);
}

// Deliberate: only Close() forgets the selection.
TEST_F(MLDataServerSelection, StaysUntilClose) {
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.OpenFileInSet(directory_->WidePath(), L"_FUNC002.DAT"));
  ASSERT_TRUE(server.Open(directory_->WidePath()));
  EXPECT_EQ(FunctionNames(server), Names{L"DAU ES+"});
  server.Close();
  ASSERT_TRUE(server.Open(directory_->WidePath()));
  EXPECT_EQ(FunctionNames(server), all_);
}

TEST_F(MLDataServerSelection, StaysAfterAnOpenWithoutFunctionTable) {
  const TempDirectory broken = raw_.Build();
  broken.Remove("_FUNCTNS.INF");
  plugin::CMLDataServerImpl server;
  EXPECT_FALSE(server.OpenFileInSet(broken.WidePath(), L"_FUNC002.DAT"));
  ASSERT_TRUE(server.Open(directory_->WidePath()));
  EXPECT_EQ(FunctionNames(server), Names{L"DAU ES+"});
}

TEST_F(MLDataServerSelection, IsNotMadeByAnOpenWithoutHeader) {
  const TempDirectory broken = raw_.Build();
  broken.Remove("_HEADER.TXT");
  plugin::CMLDataServerImpl server;
  EXPECT_FALSE(server.OpenFileInSet(broken.WidePath(), L"_FUNC002.DAT"));
  ASSERT_TRUE(server.Open(directory_->WidePath()));
  EXPECT_EQ(FunctionNames(server), all_);
}

TEST_F(MLDataServerSelection, IsForgottenWhenNothingMatches) {
  RawDirectoryBuilder one = DirectoryOf({kTofMsMs});
  const TempDirectory small = one.Build();
  plugin::CMLDataServerImpl server;
  ASSERT_TRUE(server.OpenFileInSet(small.WidePath(), L"_FUNC002.DAT"));
  EXPECT_EQ(FunctionNames(server), Names{L"TOF MS/MS ES+"});
  ASSERT_TRUE(server.Open(directory_->WidePath()));
  EXPECT_EQ(FunctionNames(server), all_);
}

// --- positions out of range ---

CZRChromatogram MarkedChromatogram() {
  CZRChromatogram chromatogram;
  chromatogram.SetSize(1);
  chromatogram.SetTime(0, 7);
  return chromatogram;
}

/// Every operation that takes a function: each gives its empty result and leaves its outputs unchanged.
void ExpectEmptyResults(CDataServerImpl& server, int sample, int function) {
  SCOPED_TRACE(testing::Message() << "sample " << sample << " function " << function);
  EXPECT_EQ(server.GetFunctionName(sample, function), L"");
  EXPECT_EQ(server.GetFunctionKind(sample, function), 1);
  EXPECT_EQ(server.GetMSMSScanType(sample, function), 0);
  EXPECT_EQ(server.GetPolarity(sample, function), 0);
  EXPECT_EQ(server.GetMSLevel(sample, function), 1);
  EXPECT_EQ(server.GetDimensionCount(sample, function), 1);
  EXPECT_FALSE(server.IsCentroided(sample, function));
  EXPECT_FALSE(server.HasMobility(sample, function));
  EXPECT_EQ(server.GetScanDimensionCount(sample, function), 0);
  EXPECT_EQ(server.GetScanCount(sample, function), 0);
  EXPECT_EQ(server.GetMobilityBinCount(sample, function), 0);

  CZRChromatogram chromatogram = MarkedChromatogram();
  EXPECT_FALSE(server.GetTotalIonChromatogram(true, sample, function, chromatogram));
  EXPECT_FALSE(server.GetBasePeakChromatogram(false, sample, function, chromatogram));
  EXPECT_FALSE(server.GetFunctionTrace(sample, function, 0, chromatogram));
  EXPECT_EQ(chromatogram.Times(), Doubles{7});
  EXPECT_EQ(server.GetFunctionTraceCount(sample, function), 0);

  Doubles values = {7};
  EXPECT_FALSE(server.GetRetentionTimes(sample, function, values));
  EXPECT_FALSE(server.GetMobilityAxis(sample, function, 0, values));
  EXPECT_EQ(values, Doubles{7});

  double low = -1;
  double high = -2;
  EXPECT_FALSE(server.GetFunctionMassRange(sample, function, low, high));
  EXPECT_FALSE(server.GetScanMassRange(sample, function, 0, low, high));
  EXPECT_FALSE(server.GetScanMobilityRange(sample, function, 0, low, high));
  EXPECT_FALSE(server.GetScanIntensityRange(sample, function, 0, low, high));
  EXPECT_FALSE(server.GetScanRetentionTime(sample, function, 0, low));
  EXPECT_EQ(low, -1.0);
  EXPECT_EQ(high, -2.0);

  CZRMassSpectrum spectrum;
  EXPECT_FALSE(server.GetSpectrum(sample, function, 0, spectrum));
  EXPECT_FALSE(server.GetMobilitySpectrum(sample, function, 0, 0, spectrum));
  EXPECT_EQ(spectrum.GetCount(), 0);
  HostVector<CZRMassSpectrum> spectra;
  EXPECT_FALSE(server.GetMobilitySpectra(sample, function, 0, 0, 1, spectra));

  int precursorFunction = -1;
  int precursorScan = -2;
  EXPECT_FALSE(server.FindPrecursorScan(sample, function, 0, precursorFunction, precursorScan));
  EXPECT_EQ(precursorFunction, -1);
  EXPECT_EQ(precursorScan, -2);

  std::wstring value;
  EXPECT_FALSE(server.GetMetadataValue(sample, function, L"IonizationMethod", value));
}

/// Every operation that takes only a sample.
void ExpectEmptySample(CDataServerImpl& server, int sample) {
  SCOPED_TRACE(testing::Message() << "sample " << sample);
  EXPECT_EQ(server.GetFunctionCount(sample), 0);
  EXPECT_EQ(server.GetTraceCount(sample), 0);
  CZRChromatogram chromatogram = MarkedChromatogram();
  EXPECT_FALSE(server.GetTrace(sample, 0, chromatogram));
  EXPECT_EQ(chromatogram.Times(), Doubles{7});
  EXPECT_FALSE(server.HasAbsorbanceData(sample));
  EXPECT_EQ(server.GetAbsorbanceScanCount(sample), 0);
  CZRAbsorbanceSpectrum spectrum;
  EXPECT_FALSE(server.GetAbsorbanceSpectrum(sample, 0, spectrum));
  EXPECT_TRUE(spectrum.Wavelengths().empty());
}

class MLDataServerGuards : public MLDataServerTest {
 protected:
  void SetUp() override {
    RawDirectoryBuilder raw = DirectoryOf({kTofMs, kTofMsMs, kDad});
    raw.functions[0].record.startMasses = {50};
    raw.functions[0].record.endMasses = {100};
    raw.analogNames = {"channel"};
    raw.analogs = {{.time = 0.5F, .words = {8}}};
    Open(raw);
    double low = 0;
    double high = 0;
    ASSERT_TRUE(server_.GetFunctionMassRange(0, 0, low, high));
    ASSERT_EQ(server_.GetScanCount(0, 1), 1);
    ASSERT_EQ(server_.GetAbsorbanceScanCount(0), 1);
  }
};

TEST_F(MLDataServerGuards, OtherSamplesAreEmpty) {
  for (const int sample : {1, -1, INT_MAX, INT_MIN}) {
    ExpectEmptySample(server_, sample);
    for (const int function : {0, 1, -1, 2}) ExpectEmptyResults(server_, sample, function);
  }
}

TEST_F(MLDataServerGuards, OtherFunctionsAreEmpty) {
  for (const int function : {2, 3, -1, INT_MAX, INT_MIN}) ExpectEmptyResults(server_, 0, function);
}

TEST_F(MLDataServerGuards, ClosedObjectIsEmpty) {
  server_.Close();
  ExpectEmptySample(server_, 0);
  for (const int function : {0, 1, -1}) ExpectEmptyResults(server_, 0, function);
  plugin::CMLDataServerImpl neverOpened;
  ExpectEmptySample(neverOpened, 0);
  ExpectEmptyResults(neverOpened, 0, 0);
}

TEST_F(MLDataServerGuards, OneSampleIsCountedWheneverAsked) {
  EXPECT_EQ(server_.GetSampleCount(), 1);
  EXPECT_EQ(server_.GetFileSampleCount(directory_->WidePath()), 1);
  EXPECT_EQ(server_.GetSampleName(0), L"Injection 1");
  server_.Close();
  EXPECT_EQ(server_.GetSampleCount(), 1);
}

}  // namespace
}  // namespace zrml
