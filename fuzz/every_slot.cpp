#include "fuzz/every_slot.h"

#include <algorithm>
#include <bit>
#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "fuzz/check.h"

namespace zrml::fuzz {
namespace {

constexpr int kMostFunctions = 6;
constexpr int kMostScansAdded = 64;  // in chromatograms that are computed from the spectra

// Positions worth trying where `count` exist: the ends, the ones next to them outside, and the limits of the
// type.
std::vector<int> Positions(int count) {
  std::vector<int> positions = {-1, 0, 1, count, INT_MAX, INT_MIN};
  if (count > 0) positions.push_back(count - 1);
  std::sort(positions.begin(), positions.end());
  positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
  return positions;
}

bool IsPosition(int position, int count) { return position >= 0 && position < count; }

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

constexpr std::pair<double, double> kRanges[] = {{100, 500},        {500, 100},  {-DBL_MAX, DBL_MAX},
                                                 {kNan, 500},       {100, kNan}, {-kInfinity, kInfinity},
                                                 {kInfinity, -1e30}};

bool SameBits(const HostVector<double>& a, const HostVector<double>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](double x, double y) {
    return std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
  });
}

void CheckWhole(const CZRMassSpectrum& spectrum) {
  const auto count = static_cast<std::size_t>(std::max(spectrum.GetCount(), 0));
  Check(spectrum.GetCount() >= 0, "a spectrum that was read has a count");
  Check(spectrum.MassVector().size() == count && spectrum.IntensityVector().size() == count,
        "a spectrum that was read has a mass and an intensity for each point");
}

class Asker {
 public:
  Asker(CDataServerImpl& server, std::size_t mostPoints) : server_(server), pointsLeft_(mostPoints) {}

  void AskAboutSource(const std::wstring& path) {
    server_.GetProviderName();
    server_.GetProviderGuid();
    server_.GetFileFilter();
    server_.IsReportSource();
    for (const std::wstring& source : {path, path + L'\\', path + L"/missing", std::wstring()}) {
      server_.ValidateSource(source);
      server_.CanOpen(source);
      server_.GetFileSampleCount(source);
    }
    Check(!server_.CanOpen(L""), "no path, no source");
  }

  void AskAboutSamples() {
    const int samples = server_.GetSampleCount();
    for (const int sample : Positions(std::min(samples, 3))) {
      server_.GetSampleName(sample);
      AskAboutTraces(sample);
      AskAboutAbsorbance(sample);
      const int functions = server_.GetFunctionCount(sample);
      for (const int function : Positions(functions)) AskAboutFunction(sample, function);
      for (int function = 2; function < std::min(functions, kMostFunctions); ++function)
        AskAboutFunction(sample, function);
    }
  }

 private:
  void AskAboutTraces(int sample) {
    const int traces = server_.GetTraceCount(sample);
    CZRChromatogram reused;
    for (const int trace : Positions(traces)) {
      server_.GetTraceName(sample, trace);
      const bool given = server_.GetTrace(sample, trace, reused);
      // A report's list may deliberately grow with each look.
      Check(!given || IsPosition(trace, traces) || (server_.IsReportSource() && trace >= traces),
            "no trace outside the list");
      Check(reused.Times().size() == reused.Intensities().size(), "a trace has pairs");
    }
  }

  void AskAboutAbsorbance(int sample) {
    const bool has = server_.HasAbsorbanceData(sample);
    const int scans = server_.GetAbsorbanceScanCount(sample);
    CZRAbsorbanceSpectrum reused;
    for (const int scan : Positions(scans)) {
      if (pointsLeft_ == 0) return;
      const bool given = server_.GetAbsorbanceSpectrum(sample, scan, reused);
      Check(!given || (has && IsPosition(scan, scans)), "no absorbance spectrum outside the scans");
      Spend(reused.Wavelengths().size());
    }
  }

  void AskAboutFunction(int sample, int function) {
    AskForProperties(sample, function);
    AskForMetadata(sample, function);
    const int scans = server_.GetScanCount(sample, function);
    Check(scans >= 0, "the number of scans is not negative");
    AskForTimes(sample, function, scans);
    for (const int scan : Positions(scans)) AskAboutScan(sample, function, scan, IsPosition(scan, scans));
    AskForChromatograms(sample, function, scans);
    AskAboutFunctionTraces(sample, function);
  }

  void AskForProperties(int sample, int function) {
    server_.GetFunctionName(sample, function);
    server_.GetFunctionKind(sample, function);
    server_.GetMSMSScanType(sample, function);
    server_.GetPolarity(sample, function);
    server_.GetMSLevel(sample, function);
    if (pointsLeft_ > 0) server_.IsCentroided(sample, function);
    server_.HasMobility(sample, function);
    server_.GetScanDimensionCount(sample, function);
    server_.GetDimensionCount(sample, function);
    server_.GetMobilityBinCount(sample, function);
    double low = 0;
    double high = 0;
    server_.GetFunctionMassRange(sample, function, low, high);
  }

  void AskForMetadata(int sample, int function) {
    std::vector<std::wstring> keys;
    server_.GetMetadataKeys(sample, function, keys);
    keys.emplace_back();
    keys.emplace_back(L"no such key");
    for (const std::wstring& key : keys) {
      std::wstring value;
      server_.GetMetadataValue(sample, function, key, value);
    }
  }

  void AskForTimes(int sample, int function, int scans) {
    if (pointsLeft_ == 0) return;
    HostVector<double> times(3, 1.0);
    const bool given = server_.GetRetentionTimes(sample, function, times);
    Check(!given || times.size() == static_cast<std::size_t>(scans), "one time per scan");
  }

  void AskAboutScan(int sample, int function, int scan, bool exists) {
    if (pointsLeft_ == 0) return;
    double low = 0;
    double high = 0;
    Check(!server_.GetScanRetentionTime(sample, function, scan, low) || exists, "no time outside the scans");
    Check(!server_.GetScanMassRange(sample, function, scan, low, high) || exists,
          "no range outside the scans");
    server_.GetScanMobilityRange(sample, function, scan, low, high);
    server_.GetScanIntensityRange(sample, function, scan, low, high);
    HostVector<double> axis;
    server_.GetMobilityAxis(sample, function, scan, axis);
    int precursorFunction = 0;
    int precursorScan = 0;
    server_.FindPrecursorScan(sample, function, scan, precursorFunction, precursorScan);
    AskForSpectrum(sample, function, scan, exists);
    AskForBins(sample, function, scan, exists);
  }

  void AskForSpectrum(int sample, int function, int scan, bool exists) {
    CZRMassSpectrum first;
    const bool given = server_.GetSpectrum(sample, function, scan, first);
    Check(!given || exists, "no spectrum outside the scans");
    Check(exists || first.GetCount() == 0, "a refused position leaves the container unchanged");
    Spend(first.MassVector().size());
    if (!given) return;
    CheckWhole(first);
    first.GetTotalIntensity();
    CZRMassSpectrum again;
    Check(server_.GetSpectrum(sample, function, scan, again), "what was read can be read again");
    Check(SameBits(first.MassVector(), again.MassVector()) &&
              SameBits(first.IntensityVector(), again.IntensityVector()),
          "a scan is the same each time");
    server_.GetSpectrum(sample, function, scan, reused_);
    CheckWhole(reused_);
  }

  // The number of bins comes from the mobility library and may change from question to question.
  void AskForBins(int sample, int function, int scan, bool exists) {
    const int bins = server_.GetMobilityBinCount(sample, function);
    for (const int bin : Positions(bins)) {
      const bool given = server_.GetMobilitySpectrum(sample, function, scan, bin, reused_);
      Check(!given || exists, "no bin outside the scans");
      if (given) CheckWhole(reused_);
      // A long range takes memory in proportion to its length, which the host decides: these are short.
      for (const auto& [first, last] :
           {std::pair(std::max(bin, -1), 2), std::pair(0, std::min(bin, 8)), std::pair(bin, bin)}) {
        HostVector<CZRMassSpectrum> spectra(1);
        server_.GetMobilitySpectra(sample, function, scan, first, last, spectra);
      }
    }
  }

  // A computed chromatogram reads every scan, so only small functions are asked for one.
  bool IsSmall(int sample, int function, int scans) {
    if (scans > kMostScansAdded) return false;
    for (int scan = 0; scan < scans && pointsLeft_ > 0; ++scan) {
      CZRMassSpectrum spectrum;
      server_.GetSpectrum(sample, function, scan, spectrum);
      Spend(2 * spectrum.MassVector().size());
    }
    return pointsLeft_ > 0;
  }

  void AskForChromatograms(int sample, int function, int scans) {
    CZRChromatogram reused;
    const bool compute = IsSmall(sample, function, scans);
    for (const bool allowed : {false, compute}) {
      server_.GetBasePeakChromatogram(allowed, sample, function, reused);
      server_.GetTotalIonChromatogram(allowed, sample, function, reused);
      for (const auto& [low, high] : kRanges) {
        if (allowed && scans > 4 && low != 100) continue;
        server_.GetMassRangeBasePeakChromatogram(low, high, allowed, sample, function, reused);
        server_.GetMassRangeChromatogram(low, high, allowed, sample, function, reused);
      }
    }
  }

  void AskAboutFunctionTraces(int sample, int function) {
    CZRChromatogram reused;
    for (const int trace : Positions(server_.GetFunctionTraceCount(sample, function))) {
      server_.GetFunctionTraceName(sample, function, trace);
      server_.GetFunctionTrace(sample, function, trace, reused);
    }
  }

  void Spend(std::size_t points) { pointsLeft_ -= std::min(points, pointsLeft_); }

  CDataServerImpl& server_;
  std::size_t pointsLeft_;
  CZRMassSpectrum reused_;
};

}  // namespace

void AskEverySlot(CDataServerImpl& server, const std::wstring& path, std::size_t mostPoints) {
  Asker asker(server, mostPoints);
  asker.AskAboutSource(path);
  asker.AskAboutSamples();
}

void LiveWith(CDataServerImpl& server, const std::wstring& path, const std::wstring& file) {
  AskEverySlot(server, path);
  server.Open(path);
  AskEverySlot(server, path);
  server.OpenFileInSet(path, file);
  AskEverySlot(server, path, 1u << 12);
  Check(server.Close(), "closing succeeds");
  AskEverySlot(server, path);
}

}  // namespace zrml::fuzz
