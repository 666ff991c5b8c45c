#include "plugin/data_server.h"

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/plugin/fake_server.h"

namespace zrml {
namespace {

using Doubles = HostVector<double>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// --- Defaults that are constants

TEST(DataServerDefaults, NumbersAndFlags) {
  const struct {
    const char* name;
    int (*ask)(BareServer&);
    int expected;
  } cases[] = {
      {"GetSampleCount", [](BareServer& s) { return s.GetSampleCount(); }, 1},
      {"GetFileSampleCount", [](BareServer& s) { return s.GetFileSampleCount(L"any"); }, 1},
      {"GetFunctionCount", [](BareServer& s) { return s.GetFunctionCount(5); }, 1},
      {"GetFunctionKind", [](BareServer& s) { return s.GetFunctionKind(0, 3); }, 1},
      {"GetMSMSScanType", [](BareServer& s) { return s.GetMSMSScanType(0, 3); }, 0},
      {"GetPolarity", [](BareServer& s) { return s.GetPolarity(0, 3); }, 0},
      {"GetMSLevel", [](BareServer& s) { return s.GetMSLevel(0, 3); }, 1},
      {"HasMobility", [](BareServer& s) { return int{s.HasMobility(0, 3)}; }, 0},
      {"GetScanDimensionCount", [](BareServer& s) { return s.GetScanDimensionCount(0, 3); }, 0},
      {"GetMobilityBinCount", [](BareServer& s) { return s.GetMobilityBinCount(0, 3); }, 0},
      {"GetTraceCount", [](BareServer& s) { return s.GetTraceCount(0); }, 0},
      {"GetFunctionTraceCount", [](BareServer& s) { return s.GetFunctionTraceCount(0, 3); }, 0},
      {"HasAbsorbanceData", [](BareServer& s) { return int{s.HasAbsorbanceData(0)}; }, 0},
      {"GetAbsorbanceScanCount", [](BareServer& s) { return s.GetAbsorbanceScanCount(0); }, 0},
      {"IsReportSource", [](BareServer& s) { return int{s.IsReportSource()}; }, 0},
  };
  for (const auto& test : cases) {
    BareServer server;
    EXPECT_EQ(test.ask(server), test.expected) << test.name;
  }
}

TEST(DataServerDefaults, DisplayNamesCountFromOne) {
  BareServer server;
  EXPECT_EQ(server.GetSampleName(0), L"Injection 1");
  EXPECT_EQ(server.GetSampleName(5), L"Injection 1");
  EXPECT_EQ(server.GetFunctionName(0, 0), L"Function 1");
  EXPECT_EQ(server.GetFunctionName(0, 2), L"Function 3");
  EXPECT_EQ(server.GetFunctionName(0, -1), L"Function 0");
  EXPECT_EQ(server.GetFunctionName(4, 122), L"Function 123");
  EXPECT_EQ(server.GetTraceName(0, 0), L"Trace 1");
  EXPECT_EQ(server.GetTraceName(7, 9), L"Trace 10");
  EXPECT_EQ(server.GetFileFilter(), L"");
}

TEST(DataServerDefaults, FunctionTraceNameDeliberatelyTakesTheFunctionsIndexForTheTrace) {
  BareServer server;
  for (const int trace : {0, 1, 7})
    EXPECT_EQ(server.GetFunctionTraceName(0, 1, trace), L"Function 2, Trace 2");
}

TEST(DataServerDefaults, FunctionTraceNameTakesTheNamesThatTheProviderGives) {
  class Named : public BareServer {
    std::wstring GetFunctionName(int sample, int function) override {
      return L"f" + std::to_wstring(sample) + L"." + std::to_wstring(function);
    }
    std::wstring GetTraceName(int sample, int trace) override {
      return L"t" + std::to_wstring(sample) + L"." + std::to_wstring(trace);
    }
  };
  EXPECT_EQ(Named().GetFunctionTraceName(3, 1, 9), L"f3.1, t3.1");
}

TEST(DataServerDefaults, OperationsWithoutDataFailAndLeaveTheirOutputs) {
  BareServer server;
  double low = 7;
  double high = 8;
  EXPECT_FALSE(server.GetFunctionMassRange(0, 0, low, high));
  EXPECT_FALSE(server.GetScanMobilityRange(0, 0, 0, low, high));
  EXPECT_EQ(low, 7.0);
  EXPECT_EQ(high, 8.0);
  Doubles axis = {1};
  EXPECT_FALSE(server.GetMobilityAxis(0, 0, 0, axis));
  EXPECT_EQ(axis, Doubles{1});
  CZRMassSpectrum spectrum(2U);
  EXPECT_FALSE(server.GetMobilitySpectrum(0, 0, 0, 0, spectrum));
  EXPECT_EQ(spectrum.GetCount(), 2);
  CZRChromatogram chromatogram;
  chromatogram.SetSize(2);
  EXPECT_FALSE(server.GetTrace(0, 0, chromatogram));
  EXPECT_FALSE(server.GetFunctionTrace(0, 0, 0, chromatogram));
  EXPECT_EQ(chromatogram.Times().size(), 2U);
  CZRAbsorbanceSpectrum absorbance;
  absorbance.SetSize(2);
  EXPECT_FALSE(server.GetAbsorbanceSpectrum(0, 0, absorbance));
  EXPECT_EQ(absorbance.Wavelengths().size(), 2U);
  std::wstring value = L"kept";
  EXPECT_FALSE(server.GetMetadataValue(0, 0, L"key", value));
  EXPECT_EQ(value, L"kept");
}

TEST(DataServerDefaults, MetadataKeysAreEmptiedAndRefused) {
  BareServer server;
  std::vector<std::wstring> keys = {L"old"};
  EXPECT_FALSE(server.GetMetadataKeys(0, 0, keys));
  EXPECT_TRUE(keys.empty());
}

TEST(DataServerDefaults, CanOpenIsValidateSource) {
  for (const bool accepts : {true, false}) {
    BareServer server;
    server.accepts = accepts;
    EXPECT_EQ(server.CanOpen(L"path"), accepts);
    EXPECT_EQ(server.validated, std::vector<std::wstring>{L"path"});
    EXPECT_TRUE(server.opened.empty());
  }
}

TEST(DataServerDefaults, OpenFileInSetIsOpenWithoutTheFile) {
  for (const bool accepts : {true, false}) {
    BareServer server;
    server.accepts = accepts;
    EXPECT_EQ(server.OpenFileInSet(L"path", L"file"), accepts);
    EXPECT_EQ(server.opened, std::vector<std::wstring>{L"path"});
  }
}

// --- Defaults derived from a few others

TEST(DataServerDerived, MsLevelFollowsTheKind) {
  const struct {
    int kind;
    int level;
  } cases[] = {{0, 1}, {1, 1}, {2, 1}, {4, 2}, {8, 1}, {16, 2}, {20, 1}, {32, 1}, {-4, 1}};
  for (const auto& test : cases) {
    FakeFunction function;
    function.kind = test.kind;
    EXPECT_EQ(FakeServer({function}).GetMSLevel(0, 0), test.level) << test.kind;
  }
}

TEST(DataServerDerived, DimensionsAreThoseOfAScanAndTime) {
  const struct {
    std::size_t scans;
    bool mobility;
    int scanDimensions;
    int dimensions;
  } cases[] = {
      {0, false, 0, 1}, {1, false, 0, 1}, {2, false, 0, 2}, {10, false, 0, 2}, {10, false, 2, 2},
      {0, true, 2, 2},  {1, true, 2, 2},  {10, true, 2, 3}, {10, true, 0, 1},  {1, true, 0, 0},
  };
  for (const auto& test : cases) {
    FakeFunction function;
    function.scans.resize(test.scans);
    function.mobility = test.mobility;
    function.scanDimensions = test.scanDimensions;
    EXPECT_EQ(FakeServer({function}).GetDimensionCount(0, 0), test.dimensions)
        << test.scans << " scans, mobility " << test.mobility << " of " << test.scanDimensions;
  }
}

TEST(DataServerDerived, CentroidedIsReadFromTheFirstScan) {
  for (const bool centroided : {true, false}) {
    BareServer server;
    server.scans = TimedScans({1}, centroided);
    server.scans.push_back(TimedScans({2}, !centroided)[0]);
    EXPECT_EQ(server.IsCentroided(2, 3), centroided);
    EXPECT_EQ(server.reads, (std::vector<std::vector<int>>{{2, 3, 0}}));
  }
  BareServer failing;
  failing.scans = {kFailingScan};
  EXPECT_FALSE(failing.IsCentroided(0, 0));
  EXPECT_FALSE(BareServer().IsCentroided(0, 0));
}

TEST(DataServerDerived, ScanRetentionTimeIsTheSpectrumsStart) {
  BareServer server;
  server.scans = TimedScans({1.5, 2.5});
  server.scans.push_back(kFailingScan);
  double minutes = 7;
  EXPECT_TRUE(server.GetScanRetentionTime(2, 3, 1, minutes));
  EXPECT_EQ(minutes, 2.5);
  EXPECT_EQ(server.reads, (std::vector<std::vector<int>>{{2, 3, 1}}));
  for (const int scan : {-1, 2, 3}) EXPECT_FALSE(server.GetScanRetentionTime(0, 0, scan, minutes)) << scan;
  EXPECT_EQ(minutes, 2.5);
}

TEST(DataServerDerived, ScanMassRangeIsThatOfTheSpectrum) {
  BareServer server;
  server.scans = {{0, {100, 200, 300}, {1, 1, 1}}, {0, {50}, {1}}, {0, {}, {}}, kFailingScan};
  double low = 7;
  double high = 8;
  for (const int scan : {-1, 2, 3, 4}) EXPECT_FALSE(server.GetScanMassRange(0, 0, scan, low, high)) << scan;
  EXPECT_EQ(low, 7.0);
  EXPECT_EQ(high, 8.0);
  EXPECT_TRUE(server.GetScanMassRange(0, 0, 0, low, high));
  EXPECT_EQ(low, 100.0);
  EXPECT_EQ(high, 300.0);
  EXPECT_TRUE(server.GetScanMassRange(0, 0, 1, low, high));
  EXPECT_EQ(low, 50.0);
  EXPECT_EQ(high, 50.0);
}

TEST(DataServerDerived, ScanMobilityRangeIsTheEndsOfTheAxis) {
  const struct {
    const char* name;
    bool mobility;
    Doubles axis;
    bool axisFails;
    bool found;
  } cases[] = {
      {"axis", true, {3, 9, 5}, false, true},
      {"no mobility", false, {3, 9, 5}, false, false},
      {"axis that fails", true, {3, 9, 5}, true, false},
      {"empty axis", true, {}, false, false},
  };
  for (const auto& test : cases) {
    FakeFunction function;
    function.mobility = test.mobility;
    function.axis = test.axis;
    function.axisFails = test.axisFails;
    FakeServer server({function});
    double low = 7;
    double high = 8;
    EXPECT_EQ(server.GetScanMobilityRange(0, 0, 0, low, high), test.found) << test.name;
    EXPECT_EQ(low, test.found ? 3.0 : 7.0) << test.name;
    EXPECT_EQ(high, test.found ? 5.0 : 8.0) << test.name;
  }
}

// --- Mobility spectra

FakeScan Bin(double mass) { return {0, {mass}, {1}}; }

TEST(DataServerMobilitySpectra, AreReadInAscendingOrder) {
  FakeServer server = WithBins({Bin(10), Bin(11), Bin(12), Bin(13)});
  HostVector<CZRMassSpectrum> spectra(9);
  EXPECT_TRUE(server.GetMobilitySpectra(2, 0, 5, 1, 3, spectra));
  ASSERT_EQ(spectra.size(), 3U);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(spectra[static_cast<std::size_t>(i)].GetMass(0), 11.0 + i);
  EXPECT_EQ(server.binReads, (std::vector<std::vector<int>>{{2, 0, 5, 1}, {2, 0, 5, 2}, {2, 0, 5, 3}}));
}

TEST(DataServerMobilitySpectra, EqualBinsYieldOne) {
  FakeServer server = WithBins({Bin(10), Bin(11)});
  HostVector<CZRMassSpectrum> spectra;
  EXPECT_TRUE(server.GetMobilitySpectra(0, 0, 0, 1, 1, spectra));
  ASSERT_EQ(spectra.size(), 1U);
  EXPECT_EQ(spectra[0].GetMass(0), 11.0);
}

TEST(DataServerMobilitySpectra, ReversedBinsFailAndLeaveTheVector) {
  FakeServer server = WithBins({Bin(10), Bin(11)});
  for (const int last : {0, -5, std::numeric_limits<int>::min()}) {
    HostVector<CZRMassSpectrum> spectra(2);
    spectra[1].SetTitle(L"kept");
    EXPECT_FALSE(server.GetMobilitySpectra(0, 0, 0, 1, last, spectra));
    ASSERT_EQ(spectra.size(), 2U);
    EXPECT_EQ(spectra[1].GetTitle(), L"kept");
  }
  EXPECT_TRUE(server.binReads.empty());
}

TEST(DataServerMobilitySpectra, TheFirstFailureEndsTheReadingAndEarlierOnesStay) {
  FakeServer server = WithBins({Bin(10), kFailingScan, Bin(12)});
  HostVector<CZRMassSpectrum> spectra;
  EXPECT_FALSE(server.GetMobilitySpectra(0, 0, 0, 0, 2, spectra));
  ASSERT_EQ(spectra.size(), 3U);
  EXPECT_EQ(spectra[0].GetMass(0), 10.0);
  EXPECT_EQ(spectra[2].GetCount(), 0);
  EXPECT_EQ(server.binReads.size(), 2U);
}

// --- Precursor search

FakeFunction Function(int kind, const std::vector<double>& times, int polarity = kPositivePolarity,
                      bool centroided = true) {
  return {kind, TimedScans(times, centroided), polarity};
}

FakeFunction AtLevel(FakeFunction function, int level) {
  function.level = level;
  return function;
}

FakeFunction FailingAt(FakeFunction function, std::size_t scan) {
  function.scans[scan] = kFailingScan;
  return function;
}

struct PrecursorCase {
  const char* name;
  std::vector<FakeFunction> functions;
  int function;
  int scan;
  int precursorFunction;  // -1: none is found
  int precursorScan = -1;
};

void ExpectPrecursors(const std::vector<PrecursorCase>& cases) {
  for (const PrecursorCase& test : cases) {
    SCOPED_TRACE(test.name);
    FakeServer server(test.functions);
    int function = -7;
    int scan = -8;
    const bool found = test.precursorFunction >= 0;
    EXPECT_EQ(server.FindPrecursorScan(0, test.function, test.scan, function, scan), found);
    EXPECT_EQ(function, found ? test.precursorFunction : -7);
    EXPECT_EQ(scan, found ? test.precursorScan : -8);
  }
}

TEST(FindPrecursorScan, IsTheClosestScanOfTheNextLowerLevelThatIsNotLater) {
  ExpectPrecursors({
      {"one before, one after", {Function(2, {4.98, 5.01}), Function(4, {5.0})}, 1, 0, 0, 0},
      {"closest of several", {Function(2, {1, 2, 3, 4}), Function(4, {3.5})}, 1, 0, 0, 2},
      {"at the same time", {Function(2, {1, 2, 3}), Function(4, {2})}, 1, 0, 0, 1},
      {"all later", {Function(2, {5.01, 6}), Function(4, {5.0})}, 1, 0, -1},
      {"time of the given scan", {Function(2, {1, 2, 3}), Function(4, {1.5, 2.5})}, 1, 1, 0, 1},
      {"survey after the function", {Function(4, {5}), Function(2, {4})}, 0, 0, 1, 0},
      {"closest of two functions", {Function(2, {1}), Function(2, {2}), Function(4, {3})}, 2, 0, 1, 0},
      {"times out of order", {Function(2, {4, 1, 3}), Function(4, {4.5})}, 1, 0, 0, 0},
      {"only a function itself", {Function(4, {5})}, 0, 0, -1},
      {"no lower level", {Function(4, {4}), Function(4, {5})}, 1, 0, -1},
      {"level 1 has no lower one", {Function(2, {4}), Function(2, {5})}, 1, 0, -1},
      {"two levels lower is not searched",
       {AtLevel(Function(2, {4}), 1), AtLevel(Function(4, {5}), 3)},
       1,
       0,
       -1},
      {"level 3 has level 2",
       {Function(2, {4.9}), Function(4, {4.5}), AtLevel(Function(4, {5}), 3)},
       2,
       0,
       1,
       0},
      {"level 1 has level 0", {AtLevel(Function(1, {4}), 0), Function(2, {5})}, 1, 0, 0, 0},
      {"an absorbance function is of level 1", {Function(1, {4}), Function(4, {5})}, 1, 0, 0, 0},
  });
}

TEST(FindPrecursorScan, Kinds8And16SearchTheirOwnLevelAndAreNeverFound) {
  ExpectPrecursors({
      {"kind 8 finds level 1", {Function(2, {4}), Function(4, {4.5}), Function(8, {5})}, 2, 0, 0, 0},
      {"kind 16 finds level 2", {Function(2, {4.5}), Function(4, {4}), Function(16, {5})}, 2, 0, 1, 0},
      {"kind 8 is skipped", {Function(8, {4.5}), Function(2, {4}), Function(4, {5})}, 2, 0, 1, 0},
      {"kind 16 is skipped",
       {AtLevel(Function(16, {4.5}), 1), Function(2, {4}), Function(4, {5})},
       2,
       0,
       1,
       0},
      {"kind 8 does not find kind 8", {Function(8, {4}), Function(8, {5})}, 1, 0, -1},
      {"kind 16 does not find kind 16", {Function(16, {4}), Function(16, {5})}, 1, 0, -1},
      {"kind 16 does not find level 1", {Function(2, {4}), Function(16, {5})}, 1, 0, -1},
  });
}

TEST(FindPrecursorScan, OfEqualDistancesTheLaterReplacesOnlyWhenItMatchesTheFunction) {
  const int kPlus = kPositivePolarity;
  const int kMinus = kNegativePolarity;
  const FakeFunction given = Function(4, {5}, kPlus, true);
  ExpectPrecursors({
      {"matches", {Function(2, {4}, kMinus, false), Function(2, {4}, kPlus, true), given}, 2, 0, 1, 0},
      {"both match", {Function(2, {4}, kPlus, true), Function(2, {4}, kPlus, true), given}, 2, 0, 1, 0},
      {"other polarity", {Function(2, {4}, kPlus, true), Function(2, {4}, kMinus, true), given}, 2, 0, 0, 0},
      {"other centroid flag",
       {Function(2, {4}, kPlus, true), Function(2, {4}, kPlus, false), given},
       2,
       0,
       0,
       0},
      {"neither", {Function(2, {4}, kMinus, true), Function(2, {4}, kMinus, false), given}, 2, 0, 0, 0},
      {"closer without match",
       {Function(2, {4}, kPlus, true), Function(2, {4.5}, kMinus, false), given},
       2,
       0,
       1,
       0},
      {"match but farther",
       {Function(2, {4.5}, kMinus, false), Function(2, {4}, kPlus, true), given},
       2,
       0,
       0,
       0},
      {"two scans of a matching function", {Function(2, {4, 4, 3}), given}, 1, 0, 0, 1},
      {"two scans of another function", {Function(2, {4, 4, 3}, kMinus), given}, 1, 0, 0, 0},
      {"a continuum function matches continuum",
       {Function(2, {4}, kMinus, true), Function(2, {4}, kMinus, false), Function(4, {5}, kMinus, false)},
       2,
       0,
       1,
       0},
  });
}

TEST(FindPrecursorScan, PositionsOutsideTheDataGiveFalse) {
  const std::vector<FakeFunction> functions = {Function(2, {4}), Function(4, {5})};
  ExpectPrecursors({
      {"control", functions, 1, 0, 0, 0},
      {"scan -1", functions, 1, -1, -1},
      {"scan 1", functions, 1, 1, -1},
      {"function -1", functions, -1, 0, -1},
      {"function 2", functions, 2, 0, -1},
      {"level 0", {Function(2, {4}), AtLevel(Function(4, {5}), 0)}, 1, 0, -1},
      {"level 0 of kind 8", {AtLevel(Function(2, {4}), 0), AtLevel(Function(8, {5}), 0)}, 1, 0, -1},
  });
  FakeServer server(functions);
  int function = -7;
  int scan = -8;
  for (const int sample : {-1, 1})
    EXPECT_FALSE(server.FindPrecursorScan(sample, 1, 0, function, scan)) << sample;
  EXPECT_EQ(function, -7);
  EXPECT_EQ(scan, -8);
}

TEST(FindPrecursorScan, EmptyTimesOfAnEligibleFunctionEndTheSearchWithFalse) {
  const FakeFunction survey = Function(2, {4});
  const FakeFunction given = Function(4, {5});
  ExpectPrecursors({
      {"after one that was found", {survey, Function(2, {}), given}, 2, 0, -1},
      {"before one that would be found", {Function(2, {}), survey, given}, 2, 0, -1},
      {"behind the given one", {survey, given, Function(2, {})}, 1, 0, -1},
      {"of another level does not matter", {survey, given, Function(4, {})}, 1, 0, 0, 0},
      {"of kind 8 does not matter", {survey, given, Function(8, {})}, 1, 0, 0, 0},
  });
}

TEST(FindPrecursorScan, TimesThatCannotBeRead) {
  const FakeFunction survey = Function(2, {4, 4.5});
  ExpectPrecursors({
      {"of the given function end the search", {survey, FailingAt(Function(4, {5, 6}), 1)}, 1, 0, -1},
      // The times of the other function may be incomplete: unread ones are 0.
      {"of a survey count as zero", {FailingAt(survey, 1), Function(4, {5, 6})}, 1, 0, 0, 0},
      {"nor are they times of an earlier reading",
       {FailingAt(Function(2, {3, 9}), 1), Function(4, {2, 4})},
       1,
       1,
       0,
       0},
  });
}

TEST(FindPrecursorScan, NanTimesAreNeverClosest) {
  ExpectPrecursors({
      {"of a survey scan", {Function(2, {kNan, 4, kNan}), Function(4, {5})}, 1, 0, 0, 1},
      {"of all survey scans", {Function(2, {kNan, kNan}), Function(4, {5})}, 1, 0, -1},
      {"of the given scan", {Function(2, {4}), Function(4, {kNan})}, 1, 0, -1},
  });
}

}  // namespace
}  // namespace zrml
