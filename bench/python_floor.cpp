// python_floor: what the benchmarks of the Python package are measured against. Each work is done once, and
// the seconds that the processor took for it are printed.
//
//   python_floor make FOLDER       spectra.raw: 20,000 scans of 1,500 points; many.raw: 1,000,000 scans
//                                  of 10 points that are zeros
//   python_floor spectra PATH      the points of every scan, by the C library
//   python_floor ions PATH MZ...   chromatograms of m/z within 10 ppm, by the source
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/acquisition.h"
#include "source/source.h"
#include "zrml/zrml.h"

namespace zrml::bench {
namespace {

constexpr LayoutData kSpectra = {9, 1500, true, 20'000};
constexpr std::size_t kManyScans = 1'000'000;
constexpr std::uint32_t kPointsOfMany = 10;
constexpr std::uint32_t kBytesOfPoint = 6;
constexpr double kPpm = 10;

double ProcessorSeconds() {
  timespec now{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

template <class Work>
void PrintSeconds(Work work) {
  const double began = ProcessorSeconds();
  work();
  std::printf("%.9f\n", ProcessorSeconds() - began);
}

void Require(zrml_status status, const char* what) {
  if (status != ZRML_OK) throw std::runtime_error(what);
}

void MakeManyScans(const std::filesystem::path& directory) {
  std::vector<ScanIndexRecord> index(kManyScans);
  std::vector<ScanStatisticsRecord> statistics(kManyScans);
  for (std::size_t i = 0; i < kManyScans; ++i) {
    index[i].pointCount = kPointsOfMany;
    index[i].totalIntensity = static_cast<float>(i % 1000);
    index[i].retentionTime = static_cast<float>(static_cast<double>(i) / 6000);
    statistics[i].precursorMass = 500;
  }
  RawDirectoryBuilder raw;
  raw.functions.resize(1);
  std::filesystem::create_directories(directory);
  raw.WriteTo(directory);
  WriteFileBytes(directory / "_FUNC001.IDX", WriteScanIndex(index));
  WriteFileBytes(directory / "_FUNC001.STS", WriteScanStatistics(statistics));
  std::filesystem::resize_file(directory / "_FUNC001.DAT", kManyScans * kPointsOfMany * kBytesOfPoint);
}

void Make(const std::filesystem::path& folder) {
  std::filesystem::copy(AcquisitionOf(kSpectra).Path(), folder / "spectra.raw");
  MakeManyScans(folder / "many.raw");
}

void ReadSpectra(const char* path) {
  zrml_source* source = nullptr;
  int scans = 0;
  Require(zrml_open(path, &source), "open");
  Require(zrml_scan_count(source, 0, 0, &scans), "scan count");
  std::vector<std::uint32_t> rooms(static_cast<std::size_t>(scans));
  zrml_scan_table table = {};
  table.size = sizeof table;
  table.points = rooms.data();
  Require(zrml_read_scan_table(source, 0, 0, 0, scans, &table), "table");
  std::vector<double> mz;
  std::vector<double> intensities;
  PrintSeconds([&] {
    for (int scan = 0; scan < scans; ++scan) {
      const std::size_t room = rooms[static_cast<std::size_t>(scan)];
      std::size_t count = 0;
      mz.resize(room);
      intensities.resize(room);
      Require(zrml_read_points(source, 0, 0, scan, mz.data(), intensities.data(), room, &count, nullptr),
              "points");
    }
  });
  zrml_close(source);
}

void ReadIons(const char* path, int count, char** masses) {
  const auto source = source::Source::Open(path);
  std::vector<source::Range> ranges;
  for (int i = 0; i < count; ++i) {
    const double mass = std::atof(masses[i]);
    ranges.push_back({mass - mass * kPpm / 1e6, mass + mass * kPpm / 1e6});
  }
  const auto scans = static_cast<std::size_t>(source->ScanCount(0, 0));
  PrintSeconds([&] {
    std::vector<double> rows(ranges.size() * scans);
    source->MassRanges(0, 0, ranges, source::Within::kSum, rows);
  });
}

int Run(int argc, char** argv) {
  const std::string work = argc > 2 ? argv[1] : "";
  if (work == "make")
    Make(argv[2]);
  else if (work == "spectra")
    ReadSpectra(argv[2]);
  else if (work == "ions")
    ReadIons(argv[2], argc - 3, argv + 3);
  else
    return 2;
  return 0;
}

}  // namespace
}  // namespace zrml::bench

int main(int argc, char** argv) {
  try {
    return zrml::bench::Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "python_floor: %s\n", error.what());
    return 1;
  }
}
