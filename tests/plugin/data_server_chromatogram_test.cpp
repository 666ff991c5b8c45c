// What the interface's base class computes from spectra: chromatograms, retention times, intensity ranges.
#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/data_server.h"
#include "tests/plugin/fake_server.h"

namespace zrml {
namespace {

using Doubles = HostVector<double>;

constexpr double kLargest = std::numeric_limits<double>::max();

// --- Chromatograms

using Chromatogram = bool (*)(CDataServerImpl&, bool allowCompute, CZRChromatogram&);

struct ChromatogramCase {
  const char* name;
  Chromatogram get;
  Doubles intensities;  // of the three scans below
  std::wstring title;   // from a container named "before"
};

std::vector<FakeScan> ThreeScans() {
  return {{0.5, {100, 200, 300}, {1, 8, 4}}, {1.5, {100, 200}, {-2, -3}}, {2.5, {}, {}}};
}

const std::vector<ChromatogramCase> kChromatograms = {
    {"base peak",
     [](CDataServerImpl& s, bool allow, CZRChromatogram& c) {
       return s.GetBasePeakChromatogram(allow, 2, 3, c);
     },
     {8, -2, 0},
     L"BPC"},
    {"base peak of a range",
     [](CDataServerImpl& s, bool allow, CZRChromatogram& c) {
       return s.GetMassRangeBasePeakChromatogram(150, 300, allow, 2, 3, c);
     },
     {8, -3, 0},
     L"BPC"},
    {"total",
     [](CDataServerImpl& s, bool allow, CZRChromatogram& c) {
       return s.GetTotalIonChromatogram(allow, 2, 3, c);
     },
     {13, -5, 0},
     L"before"},
    {"sum of a range",
     [](CDataServerImpl& s, bool allow, CZRChromatogram& c) {
       return s.GetMassRangeChromatogram(150, 300, allow, 2, 3, c);
     },
     {12, -3, 0},
     L"before"},
};

TEST(DataServerChromatograms, HaveOnePointForEachScan) {
  for (const ChromatogramCase& test : kChromatograms) {
    SCOPED_TRACE(test.name);
    BareServer server;
    server.scans = ThreeScans();
    CZRChromatogram c;
    c.SetSize(9);
    c.SetName(L"before");
    EXPECT_TRUE(test.get(server, true, c));
    EXPECT_EQ(c.Times(), (Doubles{0.5, 1.5, 2.5}));
    EXPECT_EQ(c.Intensities(), test.intensities);
    EXPECT_EQ(c.Name(), test.title);
    EXPECT_EQ(server.reads, (std::vector<std::vector<int>>{{2, 3, 0}, {2, 3, 1}, {2, 3, 2}}));
  }
}

TEST(DataServerChromatograms, ThatMustNotBeComputedFailUntouched) {
  for (const ChromatogramCase& test : kChromatograms) {
    SCOPED_TRACE(test.name);
    BareServer server;
    server.scans = ThreeScans();
    CZRChromatogram c;
    c.SetSize(9);
    c.SetName(L"before");
    EXPECT_FALSE(test.get(server, false, c));
    EXPECT_EQ(c.Times().size(), 9U);
    EXPECT_EQ(c.Name(), L"before");
    EXPECT_TRUE(server.reads.empty());
  }
}

TEST(DataServerChromatograms, OfNoScansAreEmpty) {
  for (const ChromatogramCase& test : kChromatograms) {
    for (const int count : {0, -1}) {
      SCOPED_TRACE(test.name);
      BareServer server;
      server.scanCount = count;
      CZRChromatogram c;
      c.SetSize(9);
      c.SetName(L"before");
      EXPECT_TRUE(test.get(server, true, c));
      EXPECT_TRUE(c.Times().empty());
      EXPECT_TRUE(c.Intensities().empty());
      EXPECT_EQ(c.Name(), test.title);
      EXPECT_FALSE(test.get(server, false, c));
    }
  }
}

TEST(DataServerChromatograms, AScanThatFailsEndsThemWithThePointsBeforeItWritten) {
  for (const ChromatogramCase& test : kChromatograms) {
    SCOPED_TRACE(test.name);
    BareServer server;
    server.scans = ThreeScans();
    server.scans[1] = kFailingScan;
    CZRChromatogram c;
    c.SetName(L"before");
    EXPECT_FALSE(test.get(server, true, c));
    EXPECT_EQ(c.Times(), (Doubles{0.5, 0, 0}));
    EXPECT_EQ(c.Intensities(), (Doubles{test.intensities[0], 0, 0}));
    EXPECT_EQ(c.Name(), test.title);
    EXPECT_EQ(server.reads.size(), 2U);
  }
}

/// Records what the chromatograms over all masses request from those over a range.
class RangeServer : public BareServer {
 public:
  struct Request {
    char kind;
    double low;
    double high;
    bool allowCompute;
    int sample;
    int function;
    bool operator==(const Request&) const = default;
  };

  bool GetMassRangeBasePeakChromatogram(double low, double high, bool allowCompute, int sample, int function,
                                        CZRChromatogram&) override {
    requests.push_back({'b', low, high, allowCompute, sample, function});
    return answer;
  }
  bool GetMassRangeChromatogram(double low, double high, bool allowCompute, int sample, int function,
                                CZRChromatogram&) override {
    requests.push_back({'t', low, high, allowCompute, sample, function});
    return answer;
  }

  bool answer = true;
  std::vector<Request> requests;
};

TEST(DataServerChromatograms, OverAllMassesGoThroughThoseOverARange) {
  for (const bool flag : {true, false}) {
    RangeServer server;
    server.answer = flag;
    CZRChromatogram c;
    EXPECT_EQ(server.GetBasePeakChromatogram(flag, 2, 3, c), flag);
    EXPECT_EQ(server.GetTotalIonChromatogram(flag, 4, 5, c), flag);
    EXPECT_EQ(server.requests, (std::vector<RangeServer::Request>{{'b', -kLargest, kLargest, flag, 2, 3},
                                                                  {'t', -kLargest, kLargest, flag, 4, 5}}));
  }
}

// --- Retention times and intensity range

TEST(DataServerRetentionTimes, AreOneForEachScan) {
  BareServer server;
  server.scans = TimedScans({0.5, 1.5, 0.25});
  Doubles times(9, 7.0);
  EXPECT_TRUE(server.GetRetentionTimes(2, 3, times));
  EXPECT_EQ(times, (Doubles{0.5, 1.5, 0.25}));
  EXPECT_EQ(server.reads, (std::vector<std::vector<int>>{{2, 3, 0}, {2, 3, 1}, {2, 3, 2}}));
}

TEST(DataServerRetentionTimes, OfNoScansAreEmpty) {
  BareServer server;
  Doubles times(9, 7.0);
  EXPECT_TRUE(server.GetRetentionTimes(0, 0, times));
  EXPECT_TRUE(times.empty());
  server.scanCount = -1;
  EXPECT_TRUE(server.GetRetentionTimes(0, 0, times));
}

TEST(DataServerRetentionTimes, AScanThatFailsEndsThemWithTheTimesBeforeItWritten) {
  BareServer server;
  server.scans = TimedScans({0.5, 1.5, 2.5});
  server.scans[1] = kFailingScan;
  Doubles times;
  EXPECT_FALSE(server.GetRetentionTimes(0, 0, times));
  EXPECT_EQ(times, (Doubles{0.5, 0, 0}));
  EXPECT_EQ(server.reads.size(), 2U);
}

TEST(DataServerSpectra, OneSpectrumServesAllScansOfARequest) {
  const auto distinct = [](BareServer& server) {
    std::sort(server.spectra.begin(), server.spectra.end());
    return std::unique(server.spectra.begin(), server.spectra.end()) - server.spectra.begin();
  };
  for (const ChromatogramCase& test : kChromatograms) {
    BareServer server;
    server.scans = ThreeScans();
    CZRChromatogram c;
    test.get(server, true, c);
    EXPECT_EQ(distinct(server), 1) << test.name;
  }
  BareServer server;
  server.scans = ThreeScans();
  Doubles times;
  server.GetRetentionTimes(0, 0, times);
  EXPECT_EQ(distinct(server), 1);
}

TEST(DataServerIntensityRange, WithoutMobilityIsThatOfTheSpectrum) {
  BareServer server;
  server.scans = {{0, {1, 2, 3}, {5, 9, 2}}, {0, {1, 2}, {-5, -9}}, {0, {}, {}}, kFailingScan};
  const struct {
    int scan;
    double min;
    double max;
  } cases[] = {{0, 2, 9}, {1, -9, -5}, {2, 0, 0}};
  for (const auto& test : cases) {
    double min = 7;
    double max = 8;
    EXPECT_TRUE(server.GetScanIntensityRange(2, 3, test.scan, min, max));
    EXPECT_EQ(min, test.min) << test.scan;
    EXPECT_EQ(max, test.max) << test.scan;
    EXPECT_EQ(server.reads.back(), (std::vector<int>{2, 3, test.scan}));
  }
  double min = 7;
  double max = 8;
  for (const int scan : {-1, 3, 4}) EXPECT_FALSE(server.GetScanIntensityRange(0, 0, scan, min, max)) << scan;
  EXPECT_EQ(min, 7.0);
  EXPECT_EQ(max, 8.0);
}

TEST(DataServerIntensityRange, WithMobilityIsThatOfAllBins) {
  const FakeScan low = {0, {1, 2}, {3, 5}};
  const FakeScan middle = {0, {1, 2}, {4, 6}};
  const FakeScan high = {0, {1, 2}, {5, 9}};
  const FakeScan negative = {0, {1}, {-4}};
  const FakeScan empty = {0, {}, {}};
  const struct {
    const char* name;
    std::vector<FakeScan> bins;
    bool found;
    double min;
    double max;
  } cases[] = {
      {"no bins", {}, true, 0, 0},
      {"one bin", {low}, true, 3, 5},
      {"rising", {low, middle, high}, true, 3, 9},
      {"falling", {high, middle, low}, true, 3, 9},
      {"negative alone, not widened to zero", {negative, negative}, true, -4, -4},
      {"an empty bin counts as zero", {low, empty}, true, 0, 5},
      {"first fails", {kFailingScan, low}, false, 7, 8},
      {"last fails", {low, high, kFailingScan}, false, 7, 8},
  };
  for (const auto& test : cases) {
    FakeServer server = WithBins(test.bins);
    double min = 7;
    double max = 8;
    EXPECT_EQ(server.GetScanIntensityRange(2, 0, 6, min, max), test.found) << test.name;
    EXPECT_EQ(min, test.min) << test.name;
    EXPECT_EQ(max, test.max) << test.name;
    EXPECT_TRUE(server.reads.empty()) << test.name;
    for (std::size_t bin = 0; bin < server.binReads.size(); ++bin) {
      EXPECT_EQ(server.binReads[bin], (std::vector<int>{2, 0, 6, static_cast<int>(bin)})) << test.name;
    }
  }
}

}  // namespace
}  // namespace zrml
