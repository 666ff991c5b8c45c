// Ion mobility through the plug-in, with a stand-in for the instrument maker's library next to it.
#include "tests/mobility/stand_in.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/provider_table.h"
#include "tests/support/built_file.h"
#include "tests/support/loaded_library.h"
#include "tests/support/raw_directory_builder.h"

namespace zrml {
namespace {

constexpr unsigned kTofMs = 18;
constexpr unsigned kTofMsMs = 16;

FunctionFiles FunctionOfThreeScans(unsigned type) {
  FunctionFiles function;
  function.record.type = type;
  function.record.dataFormat = 8;
  function.record.setMass = 321.5F;
  for (const float time : {0.5F, 1.0F, 1.5F})
    function.scans.push_back(ScanOf<StoredPoint8>(time, {{100 * 128, 1}}));
  return function;
}

// Functions 1 and 3 have mobility data, function 2 has none.
RawDirectoryBuilder Acquisition() {
  RawDirectoryBuilder raw;
  for (const unsigned type : {kTofMs, kTofMs, kTofMsMs}) raw.functions.push_back(FunctionOfThreeScans(type));
  return raw;
}

// The plug-in in its own folder, where libraries can be put next to it.
class StandInTest : public testing::Test {
 protected:
  StandInTest() {
    acquisition_.WriteText("_FUNC001.CDT", "");
    acquisition_.WriteText("_FUNC003.CDT", "");
    std::filesystem::copy_file(BuiltFile(ZRML_PLUGIN), PluginCopy());
  }

  ~StandInTest() override {
    server_.reset();  // before its code is unloaded
    plugin_.reset();
  }

  std::filesystem::path PluginCopy() const {
    return folder_.Path() / std::filesystem::path(ZRML_PLUGIN).filename();
  }

  void PutBesidePlugin(const std::string& variant) const {
    std::filesystem::copy_file(BuiltFile(ZRML_STAND_INS) / variant / ZRML_MOBILITY_LIBRARY,
                               folder_.Path() / ZRML_MOBILITY_LIBRARY);
  }

  void LoadPlugin() {
    plugin_ = std::make_unique<LoadedLibrary>(PluginCopy());
    const auto getInstance = plugin_->Get<GetInstanceFunction>("GetInstance");
    ASSERT_NE(getInstance, nullptr);
    server_ = CreateServer(getInstance, 0);
    ASSERT_NE(server_, nullptr);
    ASSERT_TRUE(server_->Open(acquisition_.WidePath()));
  }

  // With the library, kept loaded so its counters stay.
  void LoadWith(const std::string& variant) {
    PutBesidePlugin(variant);
    library_ = std::make_unique<LoadedLibrary>(folder_.Path() / ZRML_MOBILITY_LIBRARY);
    const auto standIn = library_->Get<StandInFunction>("StandIn");
    ASSERT_NE(standIn, nullptr);
    state_ = standIn();
    *state_ = {};
    LoadPlugin();
  }

  void ExpectNoMobility() {
    EXPECT_TRUE(server_->HasMobility(0, 0));  // the file still exists
    EXPECT_EQ(server_->GetScanDimensionCount(0, 0), 2);
    EXPECT_EQ(server_->GetMobilityBinCount(0, 0), 0);
    CZRMassSpectrum spectrum;
    EXPECT_FALSE(server_->GetMobilitySpectrum(0, 0, 0, 1, spectrum));
    HostVector<CZRMassSpectrum> spectra;
    EXPECT_FALSE(server_->GetMobilitySpectra(0, 0, 0, 0, 1, spectra));
    EXPECT_TRUE(spectra.empty());
    HostVector<double> axis;
    EXPECT_FALSE(server_->GetMobilityAxis(0, 0, 0, axis));
    double low = 0;
    double high = 0;
    EXPECT_FALSE(server_->GetScanMassRange(0, 0, 0, low, high));
    EXPECT_FALSE(server_->GetScanMobilityRange(0, 0, 0, low, high));
    EXPECT_TRUE(server_->GetSpectrum(0, 0, 0, spectrum));  // everything else works
    EXPECT_EQ(spectrum.GetCount(), 1);
    EXPECT_EQ(spectrum.GetLastDriftBin(), 0);
  }

  void ExpectOneBin() {
    CZRMassSpectrum spectrum;
    ASSERT_TRUE(server_->GetMobilitySpectrum(0, 0, 1, 1, spectrum));
    // Points at 1, 2 and 4: raw masses 100.5, 101 and 102, intensities 21, 21.125 and 21.25.
    EXPECT_EQ(spectrum.MassVector(), (HostVector<double>{100, 100.5, 101, 101.5, 102, 102.5}));
    EXPECT_EQ(spectrum.IntensityVector(), (HostVector<double>{0, 21, 21.125, 0, 21.25, 0}));
    EXPECT_EQ(spectrum.GetStartTime(), static_cast<double>(120.25F / 60.0F));
    EXPECT_EQ(spectrum.GetFirstDriftBin(), 2);
  }

  TempDirectory acquisition_ = Acquisition().Build();
  TempDirectory folder_{"plug-in"};
  std::unique_ptr<LoadedLibrary> library_;
  std::unique_ptr<LoadedLibrary> plugin_;
  std::unique_ptr<CDataServerImpl> server_;
  StandInState* state_ = nullptr;
};

TEST_F(StandInTest, AbsentLibraryGivesEmptyResults) {
  LoadPlugin();
  ExpectNoMobility();
}

TEST_F(StandInTest, FileThatIsNotALibraryGivesEmptyResults) {
  folder_.WriteText(ZRML_MOBILITY_LIBRARY, "no library");
  LoadPlugin();
  ExpectNoMobility();
}

TEST_F(StandInTest, IncompleteLibraryIsNotUsed) {
  LoadWith("incomplete");
  ExpectNoMobility();
  EXPECT_EQ(state_->constructions, 0);
}

TEST_F(StandInTest, CurrentFolderIsNotSearched) {
  const TempDirectory elsewhere("elsewhere");
  std::filesystem::copy_file(BuiltFile(ZRML_STAND_INS) / "whole" / ZRML_MOBILITY_LIBRARY,
                             elsewhere.Path() / ZRML_MOBILITY_LIBRARY);
  LoadPlugin();
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(elsewhere.Path());
  ExpectNoMobility();
  std::filesystem::current_path(before);
}

TEST_F(StandInTest, LibraryIsLoadedWhenItIsFirstNeeded) {
  LoadPlugin();
  EXPECT_TRUE(server_->HasMobility(0, 0));
  EXPECT_EQ(server_->GetScanCount(0, 0), 3);
  PutBesidePlugin("whole");  // after the open, before the first request
  EXPECT_EQ(server_->GetMobilityBinCount(0, 0), kStandInBins);
}

TEST_F(StandInTest, DriftBinIsRead) {
  LoadWith("whole");
  ExpectOneBin();
  EXPECT_EQ(state_->constructions, 1);
  EXPECT_EQ(state_->initialisations, 0);
  EXPECT_EQ(state_->releases, 0);
  EXPECT_EQ(state_->dataBlocks, 1);
  EXPECT_EQ(state_->function, 1);
  EXPECT_TRUE(server_->Close());
  EXPECT_EQ(state_->releases, 1);
  EXPECT_EQ(state_->misuses, 0);
}

TEST_F(StandInTest, OtherNamesAndAHiddenDestructorWorkToo) {
  LoadWith("otherwise");
  ExpectOneBin();
  server_.reset();  // without Close()
  EXPECT_EQ(state_->constructions, 1);
  EXPECT_EQ(state_->releases, 1);
  EXPECT_EQ(state_->misuses, 0);
}

TEST_F(StandInTest, LibraryIsGivenThePathInNarrowForm) {
  LoadWith("whole");
  EXPECT_EQ(server_->GetMobilityBinCount(0, 0), kStandInBins);
  std::string expected = acquisition_.Path().string() + "/";
  std::string given = state_->path;
  for (std::string* const path : {&expected, &given}) std::replace(path->begin(), path->end(), '\\', '/');
  EXPECT_EQ(given, expected);
}

TEST_F(StandInTest, FunctionNumberIsThePositionInTheListPlusOne) {
  acquisition_.Remove("_FUNC001.DAT");  // function 3 of the directory is the second of the list
  LoadWith("whole");
  EXPECT_EQ(server_->GetMobilityBinCount(0, 1), kStandInBins);
  EXPECT_EQ(state_->function, 2);
}

TEST_F(StandInTest, SecondOpenWithoutCloseAsksAReaderOfItsOwn) {
  LoadWith("whole");
  EXPECT_EQ(server_->GetMobilityBinCount(0, 0), kStandInBins);
  const TempDirectory other = Acquisition().Build(u8"Probe \u00B5.raw");
  other.WriteText("_FUNC001.CDT", "");
  ASSERT_TRUE(server_->Open(other.WidePath()));
  ExpectOneBin();
  const std::string path = state_->path;
  EXPECT_NE(path.find("Probe "), std::string::npos);
  EXPECT_EQ(state_->constructions, 2);
  EXPECT_EQ(state_->releases, 1);
}

TEST_F(StandInTest, LibraryThatThrowsHasFailed) {
#ifdef _WIN32
  GTEST_SKIP() << "exceptions of another compiler cannot be caught";
#endif
  LoadWith("throwing");
  state_->failing = kStandInConstruction;
  ExpectNoMobility();
  state_->failing = kStandInNone;  // throw no more
  server_->Close();
  ASSERT_TRUE(server_->Open(acquisition_.WidePath()));
  ExpectOneBin();
  for (int operation = kStandInConstruction + 1; operation < kStandInOperations; ++operation) {
    SCOPED_TRACE(operation);
    state_->failing = operation;
    CZRMassSpectrum spectrum;
    EXPECT_FALSE(server_->GetMobilitySpectrum(0, 0, 0, 1, spectrum));
    state_->failing = kStandInNone;
    ExpectOneBin();
  }
  state_->failing = kStandInConstruction;
  EXPECT_EQ(server_->GetMobilityBinCount(0, 2), 0);  // switching to it throws
  state_->failing = kStandInNone;
  EXPECT_EQ(server_->GetMobilityBinCount(0, 0), kStandInBins);
}

// Run with the folder of the whole library among the loader's default folders.
TEST_F(StandInTest, DISABLED_DefaultFoldersComeAfterTheOwn) {
  LoadPlugin();
  ExpectOneBin();
  server_->Close();
  LoadWith("otherwise");
  ExpectOneBin();
  EXPECT_EQ(state_->constructions, 1);
}

TEST_F(StandInTest, OneObjectTurnsFromFunctionToFunction) {
  LoadWith("whole");
  EXPECT_EQ(server_->GetMobilityBinCount(0, 0), kStandInBins);
  EXPECT_EQ(server_->GetMobilityBinCount(0, 1), 0);  // has none
  EXPECT_EQ(state_->initialisations, 0);
  EXPECT_EQ(server_->GetMobilityBinCount(0, 2), kStandInBins);
  EXPECT_EQ(state_->function, 3);
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(server_->GetMobilitySpectrum(0, 2, 0, 1, spectrum));
  EXPECT_EQ(spectrum.GetMass(0), 300);
  EXPECT_EQ(spectrum.GetMSLevel(), 2);
  EXPECT_EQ(spectrum.GetPrecursorMass(), 321.5);
  ASSERT_TRUE(server_->GetMobilitySpectrum(0, 0, 0, 1, spectrum));
  EXPECT_EQ(spectrum.GetMass(0), 100);
  EXPECT_EQ(state_->constructions, 1);
  EXPECT_EQ(state_->initialisations, 2);
  EXPECT_EQ(state_->misuses, 0);
}

TEST_F(StandInTest, ReaderOfAClosedDirectoryIsReleasedAndMadeAnew) {
  LoadWith("whole");
  for (int round = 1; round <= 3; ++round) {
    EXPECT_EQ(server_->GetMobilityBinCount(0, 0), kStandInBins);
    EXPECT_EQ(state_->constructions, round);
    EXPECT_TRUE(server_->Close());
    EXPECT_EQ(server_->GetMobilityBinCount(0, 0), 0);
    EXPECT_EQ(state_->releases, round);
    ASSERT_TRUE(server_->Open(acquisition_.WidePath()));
  }
  EXPECT_EQ(state_->misuses, 0);
}

TEST_F(StandInTest, SlotsOfAMobilityFunction) {
  LoadWith("whole");
  EXPECT_EQ(server_->GetDimensionCount(0, 0), 3);
  HostVector<double> axis;
  ASSERT_TRUE(server_->GetMobilityAxis(0, 0, 0, axis));
  EXPECT_EQ(axis, (HostVector<double>{1, 2, 3, 4}));
  double low = 0;
  double high = 0;
  EXPECT_TRUE(server_->GetScanMobilityRange(0, 0, 0, low, high));
  EXPECT_EQ(low, 1);
  EXPECT_EQ(high, 4);
  EXPECT_TRUE(server_->GetScanMassRange(0, 0, 2, low, high));
  EXPECT_EQ(low, 100);
  EXPECT_EQ(high, 131.5);  // 100 + 63 / 2
  EXPECT_FALSE(server_->GetScanMassRange(0, 0, 3, low, high));
  EXPECT_FALSE(server_->GetScanMassRange(0, 1, 0, low, high));
  // Bin 3 of scan 1: nine points of 13 + i / 8, the last of them at i = 8 with 14; bin 0 has none.
  EXPECT_TRUE(server_->GetScanIntensityRange(0, 0, 0, low, high));
  EXPECT_EQ(low, 0);
  EXPECT_EQ(high, 14);

  CZRMassSpectrum spectrum;
  ASSERT_TRUE(server_->GetSpectrum(0, 0, 0, spectrum));
  EXPECT_EQ(spectrum.GetFirstDriftBin(), 1);
  EXPECT_EQ(spectrum.GetLastDriftBin(), 4);
  EXPECT_EQ(spectrum.GetLastDriftValue(), 4);
}

TEST_F(StandInTest, RunOfBinsIsReadInOneRequest) {
  LoadWith("whole");
  HostVector<CZRMassSpectrum> spectra;
  ASSERT_TRUE(server_->GetMobilitySpectra(0, 0, 1, 0, 3, spectra));
  ASSERT_EQ(spectra.size(), 4U);
  EXPECT_EQ(spectra[0].GetCount(), 0);
  for (int bin = 0; bin < 4; ++bin) {
    CZRMassSpectrum& spectrum = spectra[static_cast<std::size_t>(bin)];
    EXPECT_EQ(spectrum.GetFirstDriftBin(), bin + 1);
    EXPECT_EQ(spectrum.GetLastScan(), 2);
    CZRMassSpectrum single;
    ASSERT_TRUE(server_->GetMobilitySpectrum(0, 0, 1, bin, single));
    EXPECT_EQ(spectrum.MassVector(), single.MassVector());
    EXPECT_EQ(spectrum.IntensityVector(), single.IntensityVector());
  }
  EXPECT_EQ(state_->dataBlocks, 5);
}

TEST_F(StandInTest, RunEndsAtABinThatCannotBeRead) {
  LoadWith("whole");
  HostVector<CZRMassSpectrum> spectra;
  EXPECT_FALSE(server_->GetMobilitySpectra(0, 0, kStandInBadScan, 0, 3, spectra));
  ASSERT_EQ(spectra.size(), 4U);
  EXPECT_EQ(spectra[0].GetFirstDriftBin(), 1);
  EXPECT_EQ(spectra[1].GetFirstDriftBin(), 0);
  double low = 7;
  double high = 8;
  EXPECT_FALSE(server_->GetScanIntensityRange(0, 0, kStandInBadScan, low, high));
  EXPECT_EQ(low, 7);
  EXPECT_EQ(high, 8);
}

TEST_F(StandInTest, RequestsOutOfRangeLoadNothing) {
  LoadWith("whole");
  CZRMassSpectrum spectrum;
  HostVector<CZRMassSpectrum> spectra;
  const struct {
    int sample, function, scan, bin;
  } requests[] = {{1, 0, 0, 0}, {0, 1, 0, 0},  {0, 3, 0, 0}, {0, -1, 0, 0},
                  {0, 0, 3, 0}, {0, 0, -1, 0}, {0, 0, 0, 4}, {0, 0, 0, -1}};
  for (const auto& [sample, function, scan, bin] : requests) {
    EXPECT_FALSE(server_->GetMobilitySpectrum(sample, function, scan, bin, spectrum));
    EXPECT_FALSE(server_->GetMobilitySpectra(sample, function, scan, bin, bin, spectra));
  }
  EXPECT_FALSE(server_->GetMobilitySpectra(0, 0, 0, 2, 1, spectra));
  EXPECT_EQ(state_->dataBlocks, 0);
  EXPECT_TRUE(spectra.empty());
}

TEST_F(StandInTest, EachOperationThatFailsGivesTheEmptyResultAndNoMore) {
  LoadWith("whole");
  for (int operation = kStandInConstruction; operation < kStandInOperations; ++operation) {
    SCOPED_TRACE(operation);
    server_->Close();
    ASSERT_TRUE(server_->Open(acquisition_.WidePath()));
    state_->failing = operation;
    CZRMassSpectrum spectrum;
    EXPECT_FALSE(server_->GetMobilitySpectrum(0, 0, 0, 1, spectrum));
    HostVector<CZRMassSpectrum> spectra;
    EXPECT_FALSE(server_->GetMobilitySpectra(0, 0, 0, 0, 1, spectra));
    EXPECT_TRUE(server_->GetSpectrum(0, 0, 0, spectrum));
    state_->failing = kStandInNone;
    if (operation == kStandInConstruction) {
      // An object that failed to initialise stays so until it is switched to another function.
      EXPECT_EQ(server_->GetMobilityBinCount(0, 0), 0);
      EXPECT_EQ(server_->GetMobilityBinCount(0, 2), kStandInBins);
    }
    ExpectOneBin();
  }
  server_->Close();
  EXPECT_EQ(state_->constructions, state_->releases);
  EXPECT_EQ(state_->misuses, 0);
}

TEST_F(StandInTest, TwoObjectsHaveAReaderEach) {
  LoadWith("whole");
  const std::unique_ptr<CDataServerImpl> other =
      CreateServer(plugin_->Get<GetInstanceFunction>("GetInstance"), 0);
  ASSERT_TRUE(other->Open(acquisition_.WidePath()));
  EXPECT_EQ(server_->GetMobilityBinCount(0, 0), kStandInBins);
  EXPECT_EQ(other->GetMobilityBinCount(0, 0), kStandInBins);
  EXPECT_EQ(state_->constructions, 2);
  server_->Close();
  EXPECT_EQ(other->GetMobilityBinCount(0, 0), kStandInBins);
}

}  // namespace
}  // namespace zrml
