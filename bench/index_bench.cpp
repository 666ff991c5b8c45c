// Work done once per acquisition, and chromatograms; the floor is reading the files or copying the result.
#include <cfloat>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/acquisition.h"
#include "bench/files.h"
#include "plugin/raw_server.h"
#include "source/source.h"

namespace zrml::bench {
namespace {

void FirstScanCount(benchmark::State& state) {
  plugin::CMLDataServerImpl server;
  for (auto _ : state) {
    state.PauseTiming();
    server.Close();
    if (!server.Open(ManyScans().WidePath())) state.SkipWithError("the directory does not open");
    state.ResumeTiming();
    if (server.GetScanCount(0, 0) != kManyScans) state.SkipWithError("wrong number of scans");
  }
}

void ReadIndexAndStatistics(benchmark::State& state) {
  std::vector<char> buffer;
  for (auto _ : state) {
    for (const char* const name : {"_FUNC001.IDX", "_FUNC001.STS"})
      ReadWhole(ManyScans().Path() / name, buffer);
    benchmark::DoNotOptimize(buffer.data());
  }
}

void TotalIon(benchmark::State& state) {
  plugin::CMLDataServerImpl server;
  server.Open(ManyScans().WidePath());
  CZRChromatogram chromatogram;
  if (!server.GetTotalIonChromatogram(true, 0, 0, chromatogram) || chromatogram.Intensities()[999] != 999)
    return state.SkipWithError("wrong chromatogram");
  for (auto _ : state) benchmark::DoNotOptimize(server.GetTotalIonChromatogram(true, 0, 0, chromatogram));
}

void CopyTwoArrays(benchmark::State& state) {
  const std::vector<double> from(kManyScans, 1.0);
  std::vector<double> times(kManyScans);
  std::vector<double> intensities(kManyScans);
  for (auto _ : state) {
    std::copy(from.begin(), from.end(), times.begin());
    std::copy(from.begin(), from.end(), intensities.begin());
    benchmark::DoNotOptimize(times.data());
    benchmark::DoNotOptimize(intensities.data());
    benchmark::ClobberMemory();
  }
}

constexpr LayoutData kSmallScans = {9, 500, true, 20000};
constexpr LayoutData kUncalibrated = {9, 500, false, 20000};

template <const LayoutData& kScans>
void MassRange(benchmark::State& state) {
  plugin::CMLDataServerImpl server;
  server.Open(AcquisitionOf(kScans).WidePath());
  CZRChromatogram chromatogram;
  if (!server.GetMassRangeChromatogram(500, 1000, true, 0, 0, chromatogram) ||
      !(chromatogram.Intensities()[7] > 0))
    return state.SkipWithError("wrong chromatogram");
  for (auto _ : state)
    benchmark::DoNotOptimize(server.GetMassRangeChromatogram(500, 1000, true, 0, 0, chromatogram));
}

template <const LayoutData& kScans>
void EachSpectrum(benchmark::State& state) {
  plugin::CMLDataServerImpl server;
  server.Open(AcquisitionOf(kScans).WidePath());
  CZRMassSpectrum spectrum;
  for (auto _ : state) {
    for (int scan = 0; scan < kScans.scans; ++scan) server.GetSpectrum(0, 0, scan, spectrum);
    benchmark::DoNotOptimize(spectrum.GetMasses());
  }
}

template <const LayoutData& kScans>
void SourceMassRange(benchmark::State& state) {
  constexpr source::Range kRange = {500, 1000};
  plugin::CMLDataServerImpl server;
  CZRChromatogram expected;
  server.Open(AcquisitionOf(kScans).WidePath());
  server.GetMassRangeChromatogram(kRange.low, kRange.high, true, 0, 0, expected);
  const auto source = source::Source::Open(AcquisitionOf(kScans).Path().string());
  if (source->MassRange(0, 0, kRange, source::Within::kSum).intensities[7] != expected.Intensities()[7])
    return state.SkipWithError("wrong chromatogram");
  for (auto _ : state)
    benchmark::DoNotOptimize(source->MassRange(0, 0, kRange, source::Within::kSum).intensities.data());
}

template <const LayoutData& kScans>
void SourceEachSpectrum(benchmark::State& state) {
  const auto source = source::Source::Open(AcquisitionOf(kScans).Path().string());
  std::vector<double> mz;
  std::vector<double> intensities;
  for (auto _ : state) {
    for (int scan = 0; scan < kScans.scans; ++scan) {
      if (source->ReadPoints(0, 0, scan, mz, intensities).count != kScans.points)
        state.SkipWithError("a spectrum is not read");
    }
    benchmark::DoNotOptimize(mz.data());
  }
}

constexpr int kFunctions = 60;

const TempDirectory& ManyFunctions() {
  static const TempDirectory directory = [] {
    RawDirectoryBuilder raw;
    for (int i = 1; i <= kFunctions; ++i) {
      FunctionFiles function;
      function.record.startMasses[0] = 50;
      function.record.endMasses[0] = 1200;
      raw.functions.push_back(function);
      const std::string number = std::to_string(i);
      raw.header.push_back("$$ Cal Function " + number + ": 0.001,0.9999,1e-6,-1e-9,1e-12,T1");
      raw.labels.push_back("Function Parameters - Function " + number + " - TOF MS FUNCTION");
    }
    while (raw.header.size() < 2000)
      raw.header.push_back("$$ Some item of the method: and its value, as long as usual");
    return raw.Build();
  }();
  return directory;
}

void OpenDirectory(benchmark::State& state) {
  plugin::CMLDataServerImpl server;
  for (auto _ : state) {
    if (!server.Open(ManyFunctions().WidePath()) || server.GetFunctionCount(0) != kFunctions)
      state.SkipWithError("the directory does not open");
    server.Close();
  }
}

void SourceOpen(benchmark::State& state) {
  const std::string path = ManyFunctions().Path().string();
  for (auto _ : state) {
    if (source::Source::Open(path)->Functions(0).size() != kFunctions)
      state.SkipWithError("the directory does not open");
  }
}

void ReadFiles(benchmark::State& state, const std::vector<std::filesystem::path>& paths) {
  std::vector<char> buffer;
  for (auto _ : state) {
    for (const std::filesystem::path& path : paths) ReadWhole(path, buffer);
    benchmark::DoNotOptimize(buffer.data());
  }
}

// Opening must find out whether each function's data file can be opened.
void ReadDirectory(benchmark::State& state) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(ManyFunctions().Path()))
    paths.push_back(entry.path());
  ReadFiles(state, paths);
}

void ReadDescription(benchmark::State& state) {
  const std::filesystem::path& folder = ManyFunctions().Path();
  ReadFiles(state, {folder / "_HEADER.TXT", folder / "_FUNCTNS.INF", folder / "_EXTERN.INF"});
}

BENCHMARK(FirstScanCount)->Name("First GetScanCount of 1M scans with statistics/ours");
BENCHMARK(ReadIndexAndStatistics)->Name("First GetScanCount of 1M scans with statistics/floor");
BENCHMARK(TotalIon)->Name("Total ion chromatogram of 1M scans/ours");
BENCHMARK(CopyTwoArrays)->Name("Total ion chromatogram of 1M scans/floor");
BENCHMARK(MassRange<kSmallScans>)->Name("Mass-range chromatogram of 20k scans/ours");
BENCHMARK(EachSpectrum<kSmallScans>)->Name("Mass-range chromatogram of 20k scans/floor");
BENCHMARK(SourceEachSpectrum<kSmallScans>)->Name("source/ beside the slots: all spectra of 20k scans/ours");
BENCHMARK(EachSpectrum<kSmallScans>)->Name("source/ beside the slots: all spectra of 20k scans/floor");
BENCHMARK(SourceEachSpectrum<kUncalibrated>)
    ->Name("source/ beside the slots: all spectra of 20k scans, not calibrated/ours");
BENCHMARK(EachSpectrum<kUncalibrated>)
    ->Name("source/ beside the slots: all spectra of 20k scans, not calibrated/floor");
BENCHMARK(SourceMassRange<kSmallScans>)
    ->Name("source/ beside the slots: mass-range chromatogram of 20k scans/ours");
BENCHMARK(MassRange<kSmallScans>)
    ->Name("source/ beside the slots: mass-range chromatogram of 20k scans/floor");
BENCHMARK(SourceMassRange<kUncalibrated>)
    ->Name("source/ beside the slots: mass-range chromatogram of 20k scans, not calibrated/ours");
BENCHMARK(MassRange<kUncalibrated>)
    ->Name("source/ beside the slots: mass-range chromatogram of 20k scans, not calibrated/floor");
BENCHMARK(SourceOpen)->Name("source/ beside the slots: opening 60 functions/ours");
BENCHMARK(OpenDirectory)->Name("source/ beside the slots: opening 60 functions/floor");
BENCHMARK(OpenDirectory)->Name("Open of 60 functions and 2,000 header lines/ours");
BENCHMARK(ReadDirectory)->Name("Open of 60 functions and 2,000 header lines/floor");
BENCHMARK(OpenDirectory)->Name("Open of 60 functions and 2,000 header lines (floor without data files)/ours");
BENCHMARK(ReadDescription)
    ->Name("Open of 60 functions and 2,000 header lines (floor without data files)/floor");

}  // namespace
}  // namespace zrml::bench
