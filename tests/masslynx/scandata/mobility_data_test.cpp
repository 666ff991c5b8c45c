// Drift bins, with a test reader in place of the instrument maker's.
#include <climits>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/data_server.h"
#include "plugin/raw_spectra.h"

namespace zrml::masslynx {
namespace {

using plugin::MobilityScan;
using MobilityData = plugin::MobilitySpectra;
using Calls = std::vector<std::string>;

// One for all objects of a test.
struct Reader {
  bool exists = true;
  bool isInitialised = true;
  int blocks = 2;
  int bins = 3;
  std::vector<float> axis;
  int axisLength = -1;       // reported instead of the size of the axis
  std::vector<int> indices;  // of every bin
  std::vector<float> intensities;
  int count = -1;  // reported instead of the number of indices
  float seconds = 90;
  std::string failing;  // the operation that fails
  int failingBin = -1;  // or only from this bin on
  Calls calls;
};

Reader reader;

class FakeCluster : public MobilityCluster {
 public:
  FakeCluster(const std::string& path, int function) { Note("construct", path + std::to_string(function)); }
  ~FakeCluster() override { Note("destroy"); }

  void Initialise(const std::string& path, int function) override {
    Note("Initialise", path + std::to_string(function));
  }
  bool IsInitialised() override { return reader.isInitialised; }
  bool GetNumberOfBlocks(int& blocks) override {
    blocks = reader.blocks;
    return Note("getNumberOfBlocks");
  }
  bool GetScansInBlock(int& bins) override {
    bins = reader.bins;
    return Note("getScansInBlock");
  }
  bool GetMassAxisLength(int& length) override {
    length = reader.axisLength >= 0 ? reader.axisLength : static_cast<int>(reader.axis.size());
    return Note("getMassAxisLength");
  }
  bool GetMassAxis(float* axis) override {
    std::copy(reader.axis.begin(), reader.axis.end(), axis);
    return Note("getMassAxis");
  }
  bool LoadDataBlock(int scan) override { return Note("loadDataBlock", std::to_string(scan)); }
  bool GetScan(int scan, int bin, int* indices, float* intensities, int& count) override {
    std::copy(reader.indices.begin(), reader.indices.end(), indices);
    std::copy(reader.intensities.begin(), reader.intensities.end(), intensities);
    count = reader.count >= 0 || reader.count < -1 ? reader.count : static_cast<int>(reader.indices.size());
    return Note("getScan", std::to_string(scan) + "." + std::to_string(bin)) && bin != reader.failingBin;
  }
  bool GetRT(int scan, int bin, float& seconds) override {
    seconds = reader.seconds;
    return Note("getRT", std::to_string(scan) + "." + std::to_string(bin));
  }

 private:
  static bool Note(const std::string& operation, const std::string& arguments = {}) {
    reader.calls.push_back(arguments.empty() ? operation : operation + " " + arguments);
    return operation != reader.failing;
  }
};

std::unique_ptr<MobilityCluster> OpenFake(const std::string& path, int function) {
  if (reader.exists) return std::make_unique<FakeCluster>(path, function);
  reader.calls.push_back("no reader");
  return nullptr;
}

FunctionRecord RecordOf(int scans) {
  FunctionRecord record;
  record.typeCode = 18;
  record.hasMobilityData = true;
  record.scanIndex.resize(static_cast<std::size_t>(scans));
  return record;
}

std::vector<double> Vector(const HostVector<double>& values) { return {values.begin(), values.end()}; }

class MobilityDataTest : public testing::Test {
 protected:
  MobilityDataTest() {
    reader = Reader();
    for (int i = 0; i < 20; ++i) reader.axis.push_back(static_cast<float>(100 + i));
    reader.indices = {10, 11};
    reader.intensities = {5, 6};
  }

  MobilityScan Scan(int scan = 0) { return {directory_, 0, record_, scan}; }

  void ExpectPoints(const std::vector<double>& masses, const std::vector<double>& intensities) {
    CZRMassSpectrum spectrum;
    ASSERT_TRUE(data_.ReadBin(Scan(), 0, spectrum));
    EXPECT_EQ(Vector(spectrum.MassVector()), masses);
    EXPECT_EQ(Vector(spectrum.IntensityVector()), intensities);
    EXPECT_EQ(spectrum.GetCount(), static_cast<int>(masses.size()));
  }

  void ExpectFailure(int scan = 0, int bin = 0) {
    CZRMassSpectrum spectrum;
    EXPECT_FALSE(data_.ReadBin(Scan(scan), bin, spectrum));
    HostVector<CZRMassSpectrum> spectra;
    EXPECT_FALSE(data_.ReadBins(Scan(scan), bin, bin, spectra));
  }

  void SetPoints(std::vector<int> indices, std::vector<float> intensities) {
    reader.indices = std::move(indices);
    reader.intensities = std::move(intensities);
  }

  std::wstring directory_ = L"C:\\data\\run.raw\\";
#ifdef _WIN32
  std::string path_ = "C:\\data\\run.raw\\";
#else
  std::string path_ = "C:/data/run.raw/";
#endif
  FunctionRecord record_ = RecordOf(2);
  MobilityData data_{OpenFake};
};

TEST_F(MobilityDataTest, ProfileGetsZerosBesideARunOfData) {
  ExpectPoints({109, 110, 111, 112}, {0, 5, 6, 0});
}

TEST_F(MobilityDataTest, CentroidedBinHasItsPointsOnly) {
  record_.scanIndex[0].centroided = true;
  ExpectPoints({110, 111}, {5, 6});
}

TEST_F(MobilityDataTest, GapsOfOneTwoAndThreeBinsGetOneTwoAndTwoZeros) {
  SetPoints({2, 4, 7, 11}, {1, 2, 3, 4});
  ExpectPoints({101, 102, 103, 104, 105, 106, 107, 108, 110, 111, 112}, {0, 1, 0, 2, 0, 0, 3, 0, 0, 4, 0});
}

TEST_F(MobilityDataTest, StartOfTheAxisHasNoZeroBefore) {
  SetPoints({0}, {5});
  ExpectPoints({100, 101}, {5, 0});
}

TEST_F(MobilityDataTest, LastTwoBinsOfTheAxisHaveNoZeroAfter) {
  SetPoints({17}, {5});
  ExpectPoints({116, 117, 118}, {0, 5, 0});
  SetPoints({18}, {5});
  ExpectPoints({117, 118}, {0, 5});
  SetPoints({19}, {5});
  ExpectPoints({118, 119}, {0, 5});
}

// The middle point is left out, but still separates its neighbours.
TEST_F(MobilityDataTest, PointsWithoutIntensityAreSkippedButAreNeighbours) {
  for (const float nothing : {0.0F, -1.0F, -0.0F, std::numeric_limits<float>::quiet_NaN()}) {
    SetPoints({9, 10, 11}, {5, nothing, 6});
    ExpectPoints({108, 109, 111, 112}, {0, 5, 6, 0});
  }
}

TEST_F(MobilityDataTest, BinWithoutPointsIsEmpty) {
  SetPoints({}, {});
  ExpectPoints({}, {});
}

TEST_F(MobilityDataTest, FullAxisHasNoRoomForZeros) {
  std::vector<int> indices;
  std::vector<double> masses;
  for (int i = 0; i < 20; ++i) {
    indices.push_back(i);
    masses.push_back(100 + i);
  }
  SetPoints(indices, std::vector<float>(20, 1));
  ExpectPoints(masses, std::vector<double>(20, 1));
}

TEST_F(MobilityDataTest, IndicesOutsideTheAxisFail) {
  for (const int index : {-1, 20, INT_MAX, INT_MIN}) {
    SetPoints({3, index}, {1, 1});
    ExpectFailure();
    SetPoints({3, index}, {1, 0});  // even of a point that would be skipped
    ExpectFailure();
  }
  SetPoints({3, 19}, {1, 1});
  ExpectPoints({102, 103, 104, 118, 119}, {0, 1, 0, 0, 1});
}

TEST_F(MobilityDataTest, CountsOutsideTheAxisFail) {
  SetPoints({3, 4, 5}, {1, 1, 1});
  for (const int count : {21, INT_MAX, INT_MIN, -2}) {
    reader.count = count;
    ExpectFailure();
  }
  reader.count = 2;
  ExpectPoints({102, 103, 104, 105}, {0, 1, 1, 0});
}

// No order is required: each point is compared with the ones returned before and after it.
TEST_F(MobilityDataTest, IndicesThatDoNotAscendAreTakenAsTheyCome) {
  reader.axis = {100, 101, 102, 103};
  SetPoints({1, 1}, {5, 6});
  ExpectPoints({100, 101, 100, 101, 102}, {0, 5, 0, 6, 0});
  SetPoints({3, 0}, {5, 6});
  ExpectPoints({102, 103, 100, 101}, {0, 5, 6, 0});
}

TEST_F(MobilityDataTest, SpectrumTakesNoMoreMemoryThanItsPoints) {
  reader.axis.resize(100000, 1);
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(data_.ReadBin(Scan(), 0, spectrum));
  EXPECT_EQ(spectrum.GetCount(), 4);
  EXPECT_LT(spectrum.MassVector().capacity(), 100U);
}

TEST_F(MobilityDataTest, AttributesOfABin) {
  record_.ionMode = 7;
  record_.defaultScanValue = 11;
  record_.setMass = 333.5F;
  record_.scanIndex[1].auxValue = 2.5F;
  record_.scanIndex[1].precursorMass = 444;  // whole scans take it, bins do not
  record_.scanIndex[1].precursorFlags = 1;
  CZRMassSpectrum spectrum;
  spectrum.SetPrecursorMass(7);
  ASSERT_TRUE(data_.ReadBin(Scan(1), 2, spectrum));
  EXPECT_EQ(spectrum.GetStartTime(), 1.5);  // 90 s
  EXPECT_EQ(spectrum.GetEndTime(), 1.5);
  EXPECT_EQ(spectrum.GetScanType(), kMsFunction);
  EXPECT_EQ(spectrum.GetMSLevel(), 1);
  EXPECT_FALSE(spectrum.IsCentroided());
  EXPECT_EQ(spectrum.GetFirstScan(), 2);
  EXPECT_EQ(spectrum.GetLastScan(), 2);
  EXPECT_EQ(spectrum.GetPolarity(), kNegativePolarity);
  EXPECT_EQ(spectrum.GetScanAuxValue(), 2.5);
  EXPECT_EQ(spectrum.GetPrecursorMass(), 7);
  EXPECT_EQ(spectrum.GetFirstDriftBin(), 3);
  EXPECT_EQ(spectrum.GetLastDriftBin(), 3);
  EXPECT_EQ(spectrum.GetFirstDriftValue(), 3.0);
  EXPECT_EQ(spectrum.GetLastDriftValue(), 3.0);
  EXPECT_TRUE(spectrum.AreStatisticsStale());
  EXPECT_EQ(spectrum.GetTotalIntensity(), 11);

  record_.typeCode = 16;
  record_.ionMode = 99;
  record_.scanIndex[0].centroided = true;
  ASSERT_TRUE(data_.ReadBin(Scan(0), 0, spectrum));
  EXPECT_EQ(spectrum.GetScanType(), kMsMsFunction);
  EXPECT_EQ(spectrum.GetMSLevel(), 2);
  EXPECT_TRUE(spectrum.IsCentroided());
  EXPECT_EQ(spectrum.GetPolarity(), kPositivePolarity);
  EXPECT_EQ(spectrum.GetScanAuxValue(), 11);
  EXPECT_EQ(spectrum.GetPrecursorMass(), 333.5);
}

// 0.1 s are 0x3DCCCCCD / 60 in single precision, 0x3ADA740E, not the double 0.1 / 60.
TEST_F(MobilityDataTest, TimesAreDividedInSinglePrecision) {
  reader.seconds = 0.1F;
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(data_.ReadBin(Scan(), 0, spectrum));
  EXPECT_EQ(spectrum.GetStartTime(), 0x1.b4e81cp-10);
}

TEST_F(MobilityDataTest, ScanNumbersAreNotNarrowed) {
  reader.blocks = 40002;
  record_ = RecordOf(40002);
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(data_.ReadBin(Scan(40000), 0, spectrum));
  EXPECT_EQ(spectrum.GetFirstScan(), 40001);
  EXPECT_EQ(spectrum.GetLastScan(), 40001);
}

TEST_F(MobilityDataTest, CallsOfASingleBinComeInOrder) {
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(data_.ReadBin(Scan(1), 2, spectrum));
  EXPECT_EQ(reader.calls,
            (Calls{"construct " + path_ + "1", "getScansInBlock", "getNumberOfBlocks", "getMassAxisLength",
                   "getMassAxis", "loadDataBlock 1", "getRT 1.2", "getScan 1.2"}));
}

TEST_F(MobilityDataTest, NothingIsLoadedForAMissingBin) {
  for (const int bin : {3, INT_MAX}) ExpectFailure(0, bin);
  for (const int scan : {2, INT_MAX}) ExpectFailure(scan);
  for (const std::string& call : reader.calls) EXPECT_NE(call.substr(0, 13), "loadDataBlock");
  reader.calls.clear();
  ExpectFailure(-1);
  ExpectFailure(0, -1);
  EXPECT_EQ(reader.calls, Calls());
}

TEST_F(MobilityDataTest, BlocksAndIndexMustBothHaveTheScan) {
  reader.blocks = 3;
  ExpectFailure(2);  // beyond the index
  record_ = RecordOf(4);
  ExpectFailure(3);  // beyond the blocks
  CZRMassSpectrum spectrum;
  EXPECT_TRUE(data_.ReadBin(Scan(2), 0, spectrum));
}

TEST_F(MobilityDataTest, EachOperationThatFailsFailsTheRequest) {
  for (const char* const operation : {"getScansInBlock", "getNumberOfBlocks", "getMassAxisLength",
                                      "getMassAxis", "loadDataBlock", "getRT", "getScan"}) {
    SCOPED_TRACE(operation);
    reader.failing = operation;
    ExpectFailure();
    reader.failing.clear();
    ExpectPoints({109, 110, 111, 112}, {0, 5, 6, 0});
  }
  reader.isInitialised = false;
  ExpectFailure();
  EXPECT_EQ(data_.BinCount(directory_, 0), 0);
  reader.isInitialised = true;
  ExpectPoints({109, 110, 111, 112}, {0, 5, 6, 0});
}

TEST_F(MobilityDataTest, FailureToReadABinLeavesTheSpectrum) {
  CZRMassSpectrum spectrum;
  spectrum.SetSize(1);
  spectrum.SetMass(0, 7);
  spectrum.SetStartTime(8);
  const auto expectFailure = [&] {
    EXPECT_FALSE(data_.ReadBin(Scan(), 0, spectrum));
    EXPECT_EQ(spectrum.GetCount(), 1);
    EXPECT_EQ(spectrum.GetMass(0), 7);
    EXPECT_EQ(spectrum.GetStartTime(), 8);
  };
  for (const char* const operation : {"getRT", "getScan", "loadDataBlock"}) {
    reader.failing = operation;
    expectFailure();
  }
  reader.failing.clear();
  reader.count = 21;
  expectFailure();
  reader.count = -1;
  SetPoints({3, 20}, {1, 1});
  expectFailure();
}

TEST_F(MobilityDataTest, AxisWithoutBinsFails) {
  reader.axis.clear();
  ExpectFailure();
  double low = 0;
  double high = 0;
  EXPECT_FALSE(data_.ReadMassRange(Scan(), low, high));
}

TEST_F(MobilityDataTest, AxisOfMorePositionsThanAnyInstrumentHasFails) {
  for (const int length : {0, (1 << 24) + 1, INT_MAX}) {
    reader.axisLength = length;
    ExpectFailure();
  }
  for (const std::string& call : reader.calls) EXPECT_NE(call, "getMassAxis");
}

// The reader would write as many points as its own axis has.
TEST_F(MobilityDataTest, CachedAxisOfAnotherLengthFails) {
  record_.calibrationConstant = true;
  ExpectPoints({109, 110, 111, 112}, {0, 5, 6, 0});
  reader.axisLength = 1000;
  ExpectFailure();
  reader.axisLength = 19;
  ExpectFailure();
  reader.axisLength = -1;
  ExpectPoints({109, 110, 111, 112}, {0, 5, 6, 0});
}

TEST_F(MobilityDataTest, ReaderThatDoesNotTurnFailsUntilItDoes) {
  EXPECT_EQ(data_.BinCount(directory_, 0), 3);
  reader.isInitialised = false;
  EXPECT_EQ(data_.BinCount(directory_, 1), 0);
  reader.isInitialised = true;
  EXPECT_EQ(data_.BinCount(directory_, 1), 3);
  EXPECT_EQ(data_.BinCount(directory_, 0), 3);
}

TEST_F(MobilityDataTest, PathWithoutANarrowFormDoesNotReachALoadedReader) {
  EXPECT_EQ(data_.BinCount(directory_, 0), 3);
  reader.calls.clear();
  EXPECT_EQ(data_.BinCount(L"\xD800.raw", 1), 0);
  EXPECT_EQ(reader.calls, Calls());
}

TEST_F(MobilityDataTest, BinCountIsTheReaders) {
  EXPECT_EQ(data_.BinCount(directory_, 0), 3);
  reader.failing = "getScansInBlock";
  EXPECT_EQ(data_.BinCount(directory_, 0), 0);
  reader.failing.clear();
  for (const int count : {-1, INT_MIN, (1 << 24) + 1, INT_MAX}) {
    reader.bins = count;
    EXPECT_EQ(data_.BinCount(directory_, 0), 0) << count;
  }
  reader.bins = 1 << 24;
  EXPECT_EQ(data_.BinCount(directory_, 0), 1 << 24);
}

TEST_F(MobilityDataTest, RunOfBinsFillsAndGrowsTheVector) {
  HostVector<CZRMassSpectrum> spectra(1);
  ASSERT_TRUE(data_.ReadBins(Scan(), 1, 2, spectra));
  ASSERT_EQ(spectra.size(), 2U);
  EXPECT_EQ(spectra[0].GetFirstDriftBin(), 2);
  EXPECT_EQ(spectra[1].GetFirstDriftBin(), 3);
  EXPECT_EQ(spectra[1].GetCount(), 4);
}

TEST_F(MobilityDataTest, LongerVectorIsNotShortened) {
  HostVector<CZRMassSpectrum> spectra(3);
  spectra[2].SetStartTime(7);
  ASSERT_TRUE(data_.ReadBins(Scan(), 0, 1, spectra));
  ASSERT_EQ(spectra.size(), 3U);
  EXPECT_EQ(spectra[2].GetStartTime(), 7);
}

TEST_F(MobilityDataTest, RunEndsAtTheFirstBinThatFails) {
  reader.failingBin = 1;
  HostVector<CZRMassSpectrum> spectra;
  EXPECT_FALSE(data_.ReadBins(Scan(), 0, 2, spectra));
  ASSERT_EQ(spectra.size(), 3U);
  EXPECT_EQ(spectra[0].GetCount(), 4);
  EXPECT_EQ(spectra[1].GetCount(), 0);
  EXPECT_EQ(spectra[2].GetCount(), 0);
  EXPECT_EQ(reader.calls.back(), "getScan 0.1");
}

TEST_F(MobilityDataTest, RunOutOfRangeLeavesTheVector) {
  HostVector<CZRMassSpectrum> spectra;
  for (const auto& [first, last] : {std::pair{0, 3}, {2, 1}, {-1, 1}, {1, 0}, {0, INT_MAX}, {INT_MIN, 0}}) {
    EXPECT_FALSE(data_.ReadBins(Scan(), first, last, spectra)) << first << ' ' << last;
  }
  EXPECT_TRUE(spectra.empty());
}

TEST_F(MobilityDataTest, OneReaderServesAllFunctions) {
  EXPECT_EQ(data_.BinCount(directory_, 0), 3);
  EXPECT_EQ(data_.BinCount(directory_, 0), 3);
  EXPECT_EQ(data_.BinCount(directory_, 4), 3);
  EXPECT_EQ(data_.BinCount(directory_, 4), 3);
  EXPECT_EQ(data_.BinCount(directory_, 0), 3);
  data_.Release();
  EXPECT_EQ(data_.BinCount(directory_, 0), 3);
  EXPECT_EQ(reader.calls, (Calls{"construct " + path_ + "1", "getScansInBlock", "getScansInBlock",
                                 "Initialise " + path_ + "5", "getScansInBlock", "getScansInBlock",
                                 "Initialise " + path_ + "1", "getScansInBlock", "destroy",
                                 "construct " + path_ + "1", "getScansInBlock"}));
}

TEST_F(MobilityDataTest, AbsentReaderIsLookedForOnce) {
  reader.exists = false;
  ExpectFailure();
  EXPECT_EQ(data_.BinCount(directory_, 0), 0);
  EXPECT_EQ(reader.calls, Calls{"no reader"});
  data_.Release();
  reader.exists = true;
  EXPECT_EQ(data_.BinCount(directory_, 0), 3);
}

TEST_F(MobilityDataTest, PathWithoutANarrowFormFails) {
  for (const std::wstring& path :
       {std::wstring(), std::wstring(L"run\0.raw", 8), std::wstring(L"\xD800.raw")}) {
    directory_ = path;
    ExpectFailure();
    EXPECT_EQ(reader.calls, Calls());
    data_.Release();
  }
}

// 1 + 2x, widened from single precision: 1 + 2 x 100 = 201 up to 1 + 2 x 119 = 239.
TEST_F(MobilityDataTest, AxisIsCalibrated) {
  record_.staticCal.coefficients = {1, 2};
  ExpectPoints({219, 221, 223, 225}, {0, 5, 6, 0});
  double low = 0;
  double high = 0;
  ASSERT_TRUE(data_.ReadMassRange(Scan(), low, high));
  EXPECT_EQ(low, 201);
  EXPECT_EQ(high, 239);
}

TEST_F(MobilityDataTest, AxisIsReadForEachRequestUnlessCalibrationIsConstant) {
  CZRMassSpectrum spectrum;
  ASSERT_TRUE(data_.ReadBin(Scan(), 0, spectrum));
  ASSERT_TRUE(data_.ReadBin(Scan(), 0, spectrum));
  const auto axes = [] { return std::count(reader.calls.begin(), reader.calls.end(), "getMassAxis"); };
  EXPECT_EQ(axes(), 2);
  EXPECT_TRUE(record_.cachedMassAxis.empty());
  record_.calibrationConstant = true;
  ASSERT_TRUE(data_.ReadBin(Scan(), 0, spectrum));
  ASSERT_TRUE(data_.ReadBin(Scan(1), 0, spectrum));
  double low = 0;
  double high = 0;
  ASSERT_TRUE(data_.ReadMassRange(Scan(), low, high));
  EXPECT_EQ(axes(), 3);
  EXPECT_EQ(record_.cachedMassAxis.size(), 20U);
}

TEST_F(MobilityDataTest, FailedAxisIsNotCached) {
  record_.calibrationConstant = true;
  reader.failing = "getMassAxis";
  ExpectFailure();
  EXPECT_TRUE(record_.cachedMassAxis.empty());
}

// 200 ppm for each of the scan's ten degrees above the reference: 1 - 10 x 200 / 1e6 = 0.998 in single
// precision.
TEST_F(MobilityDataTest, AxisIsCorrectedForTheScansTemperature) {
  record_.staticCal.coefficients = {0, 1};
  record_.calTemperature = 20;
  ScanIndexEntry& entry = record_.scanIndex[1];
  entry.temperatureValid = true;
  entry.temperature = 30;
  entry.temperatureCoefficient = 200;
  double low = 0;
  double high = 0;
  ASSERT_TRUE(data_.ReadMassRange(Scan(1), low, high));
  EXPECT_EQ(low, 100.0F * 0.998F);
  ASSERT_TRUE(data_.ReadMassRange(Scan(0), low, high));
  EXPECT_EQ(low, 100);
}

TEST_F(MobilityDataTest, MassRangeNeedsTheScanInTheIndexOnly) {
  double low = 0;
  double high = 0;
  EXPECT_FALSE(data_.ReadMassRange(Scan(2), low, high));
  EXPECT_FALSE(data_.ReadMassRange(Scan(-1), low, high));
  reader.blocks = 0;
  EXPECT_TRUE(data_.ReadMassRange(Scan(1), low, high));
  EXPECT_EQ(low, 100);
  EXPECT_EQ(high, 119);
}

}  // namespace
}  // namespace zrml::masslynx
