// Data servers for tests of the base: one with only the operations that every provider must have, and one
// whose functions come from a description.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "plugin/data_server.h"

namespace zrml {

/// One scan or drift bin.
struct FakeScan {
  double time = 0;
  HostVector<double> masses;
  HostVector<double> intensities;
  bool centroided = true;
  bool fails = false;

  bool Fill(CZRMassSpectrum& spectrum) const {
    if (fails) return false;
    spectrum.AssignMasses(masses);
    spectrum.AssignIntensities(intensities);
    spectrum.SetSize(static_cast<int>(masses.size()));
    spectrum.SetStartTime(time);
    spectrum.SetCentroided(centroided);
    return true;
  }
};

/// Scans without points at the given times.
inline std::vector<FakeScan> TimedScans(const std::vector<double>& times, bool centroided = true) {
  std::vector<FakeScan> scans;
  for (const double time : times) scans.push_back({time, {}, {}, centroided, false});
  return scans;
}

inline const FakeScan kFailingScan = {0, {}, {}, true, true};

/// Every function of every sample has the same scans.
class BareServer : public CDataServerImpl {
 public:
  std::wstring GetProviderName() override { return L"Bare"; }
  std::wstring GetProviderGuid() override { return L"{}"; }
  bool Open(const std::wstring& path) override {
    opened.push_back(path);
    return accepts;
  }
  bool Close() override { return true; }
  bool ValidateSource(const std::wstring& path) override {
    validated.push_back(path);
    return accepts;
  }
  int GetScanCount(int, int) override { return scanCount.value_or(static_cast<int>(scans.size())); }
  bool GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) override {
    reads.push_back({sample, function, scan});
    spectra.push_back(&spectrum);
    return scan >= 0 && static_cast<std::size_t>(scan) < scans.size() &&
           scans[static_cast<std::size_t>(scan)].Fill(spectrum);
  }

  bool accepts = true;
  std::vector<FakeScan> scans;
  std::optional<int> scanCount;

  // The requests so far.
  std::vector<std::wstring> opened;
  std::vector<std::wstring> validated;
  std::vector<std::vector<int>> reads;  // sample, function, scan
  std::vector<const CZRMassSpectrum*> spectra;
};

struct FakeFunction {
  int kind = kMsFunction;
  std::vector<FakeScan> scans;
  int polarity = kPositivePolarity;
  std::optional<int> level = std::nullopt;  // default: the base class's
  bool mobility = false;
  int scanDimensions = 0;
  std::vector<FakeScan> bins = {};  // of every scan
  HostVector<double> axis = {};
  bool axisFails = false;
};

/// One sample with the functions of a description.
class FakeServer : public BareServer {
 public:
  explicit FakeServer(std::vector<FakeFunction> described) : functions(std::move(described)) {}

  int GetFunctionCount(int) override { return static_cast<int>(functions.size()); }
  int GetFunctionKind(int, int function) override { return At(function).kind; }
  int GetPolarity(int, int function) override { return At(function).polarity; }
  int GetMSLevel(int sample, int function) override {
    return At(function).level.value_or(BareServer::GetMSLevel(sample, function));
  }
  bool HasMobility(int, int function) override { return At(function).mobility; }
  int GetScanDimensionCount(int, int function) override { return At(function).scanDimensions; }
  int GetMobilityBinCount(int, int function) override { return static_cast<int>(At(function).bins.size()); }
  bool GetMobilityAxis(int, int function, int, HostVector<double>& axis) override {
    axis = At(function).axis;
    return !At(function).axisFails;
  }
  int GetScanCount(int, int function) override { return static_cast<int>(At(function).scans.size()); }
  bool GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) override {
    scans = At(function).scans;
    return BareServer::GetSpectrum(sample, function, scan, spectrum);
  }
  bool GetMobilitySpectrum(int sample, int function, int scan, int bin, CZRMassSpectrum& spectrum) override {
    binReads.push_back({sample, function, scan, bin});
    const std::vector<FakeScan>& bins = At(function).bins;
    return bin >= 0 && static_cast<std::size_t>(bin) < bins.size() &&
           bins[static_cast<std::size_t>(bin)].Fill(spectrum);
  }

  std::vector<FakeFunction> functions;
  std::vector<std::vector<int>> binReads;  // sample, function, scan, bin

 private:
  const FakeFunction& At(int function) const { return functions.at(static_cast<std::size_t>(function)); }
};

/// A function with these drift bins.
inline FakeServer WithBins(const std::vector<FakeScan>& bins) {
  FakeFunction function;
  function.mobility = true;
  function.bins = bins;
  return FakeServer({function});
}

}  // namespace zrml
