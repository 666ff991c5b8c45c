// GetSpectrum; the floor is reading the scan's bytes and writing two arrays of doubles.
#include <cmath>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/acquisition.h"
#include "masslynx/scandata/calibration.h"
#include "plugin/raw_server.h"

namespace zrml::bench {
namespace {

// Masses ascend, and the first and last intensities differ from those of an empty container.
const char* Wrong(const CZRMassSpectrum& spectrum, const LayoutData& layout) {
  const std::size_t points = layout.dataFormat == 11 || layout.dataFormat == 14 ? 32 : layout.points;
  if (spectrum.UsablePoints() != points) return "wrong number of points";
  for (std::size_t i = 1; i < points; ++i) {
    if (!(spectrum.GetMasses()[i] >= spectrum.GetMasses()[i - 1])) return "masses do not ascend";
  }
  if (!(std::fabs(spectrum.GetMasses()[0] - (layout.dataFormat == 3 ? 1 : 100)) < 1))
    return "wrong first mass";
  return spectrum.GetIntensities()[points - 1] != 0 ? nullptr : "wrong last intensity";
}

void Ours(benchmark::State& state, LayoutData layout) {
  plugin::CMLDataServerImpl server;
  CZRMassSpectrum spectrum;
  if (!server.Open(AcquisitionOf(layout).WidePath()) || !server.GetSpectrum(0, 0, 0, spectrum))
    return state.SkipWithError("the scan is not read");
  if (const char* const wrong = Wrong(spectrum, layout)) return state.SkipWithError(wrong);
  int scan = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(server.GetSpectrum(0, 0, scan, spectrum));
    if (++scan == layout.scans) scan = 0;
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(layout.points));
}

void Floor(benchmark::State& state, LayoutData layout) {
  const std::string path = (AcquisitionOf(layout).Path() / "_FUNC001.DAT").string();
  const std::size_t bytes = ScanBytes(layout);
  std::vector<char> buffer(bytes);
  std::vector<double> masses(layout.points);
  std::vector<double> intensities(layout.points);
  int scan = 0;
  for (auto _ : state) {
    const int file = ::open(path.c_str(), O_RDONLY);
    if (::pread(file, buffer.data(), bytes, static_cast<off_t>(bytes) * scan) != static_cast<ssize_t>(bytes))
      state.SkipWithError("the bytes are not read");
    ::close(file);
    std::fill(masses.begin(), masses.end(), 1.0);
    std::fill(intensities.begin(), intensities.end(), 2.0);
    benchmark::DoNotOptimize(masses.data());
    benchmark::DoNotOptimize(intensities.data());
    benchmark::ClobberMemory();
    if (++scan == layout.scans) scan = 0;
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(layout.points));
}

void AddRow(const std::string& name, const LayoutData& layout) {
  benchmark::RegisterBenchmark((name + "/ours").c_str(), Ours, layout);
  benchmark::RegisterBenchmark((name + "/floor").c_str(), Floor, layout);
}

const int registered = [] {
  constexpr std::uint32_t kPoints = 100000;
  for (const unsigned format : {0u, 1u, 8u, 9u, 12u, 13u}) {
    AddRow("GetSpectrum 100k points, calibrated, format " + std::to_string(format), {format, kPoints, true});
    AddRow("GetSpectrum 100k points, format " + std::to_string(format), {format, kPoints, false});
  }
  for (const unsigned format : {3u, 4u, 5u}) {
    AddRow("GetSpectrum 100k points, format " + std::to_string(format), {format, kPoints, false});
  }
  for (const unsigned format : {2u, 11u, 14u}) {
    AddRow("GetSpectrum 32 points, format " + std::to_string(format), {format, 32, false});
  }
  AddRow("GetSpectrum 500 points of 20k scans", {9, 500, true, 20000});
  return 0;
}();

}  // namespace
}  // namespace zrml::bench
