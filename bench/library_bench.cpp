// The C library beside the source that it is made of, and a table of scans beside making its arrays.
#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/acquisition.h"
#include "source/source.h"
#include "zrml/zrml.h"

namespace zrml::bench {
namespace {

constexpr LayoutData kScans = {8, 1500, false, 20'000};
constexpr LayoutData kManyScans = {8, 1, false, 1'000'000};
constexpr std::size_t kRanges = 100;

class OpenSource {
 public:
  explicit OpenSource(const LayoutData& layout) {
    zrml_open(AcquisitionOf(layout).Path().string().c_str(), &source_);
  }
  OpenSource(const OpenSource&) = delete;
  OpenSource& operator=(const OpenSource&) = delete;
  ~OpenSource() { zrml_close(source_); }

  zrml_source* Get() const { return source_; }

 private:
  zrml_source* source_ = nullptr;
};

void LibrarySpectra(benchmark::State& state) {
  const OpenSource source(kScans);
  std::vector<double> mz(kScans.points);
  std::vector<double> intensities(kScans.points);
  for (auto _ : state) {
    for (int scan = 0; scan < kScans.scans; ++scan) {
      std::size_t count = 0;
      zrml_read_points(source.Get(), 0, 0, scan, mz.data(), intensities.data(), mz.size(), &count, nullptr);
      if (count != kScans.points) state.SkipWithError("a spectrum is not read");
    }
    benchmark::DoNotOptimize(mz.data());
  }
}

void SourceSpectra(benchmark::State& state) {
  const auto source = source::Source::Open(AcquisitionOf(kScans).Path().string());
  std::vector<double> mz(kScans.points);
  std::vector<double> intensities(kScans.points);
  for (auto _ : state) {
    for (int scan = 0; scan < kScans.scans; ++scan) {
      if (source->ReadPoints(0, 0, scan, std::span(mz), std::span(intensities)).count != kScans.points)
        state.SkipWithError("a spectrum is not read");
    }
    benchmark::DoNotOptimize(mz.data());
  }
}

template <class Range>
std::vector<Range> NarrowRanges() {
  std::vector<Range> ranges;
  for (std::size_t i = 0; i < kRanges; ++i) {
    const double mz = 200 + 10 * static_cast<double>(i);
    ranges.push_back({mz * (1 - 1e-5), mz * (1 + 1e-5)});
  }
  return ranges;
}

void LibraryRanges(benchmark::State& state) {
  const OpenSource source(kScans);
  const auto ranges = NarrowRanges<zrml_range>();
  std::vector<double> rows(kRanges * kScans.scans);
  for (auto _ : state) {
    if (zrml_read_mass_ranges(source.Get(), 0, 0, ranges.data(), kRanges, ZRML_SUM, rows.data(),
                              rows.size()) != ZRML_OK)
      state.SkipWithError("the chromatograms are not read");
    benchmark::DoNotOptimize(rows.data());
  }
}

void SourceRanges(benchmark::State& state) {
  const auto source = source::Source::Open(AcquisitionOf(kScans).Path().string());
  const auto ranges = NarrowRanges<source::Range>();
  std::vector<double> rows(kRanges * kScans.scans);
  for (auto _ : state) {
    source->MassRanges(0, 0, ranges, source::Within::kSum, rows);
    benchmark::DoNotOptimize(rows.data());
  }
}

// The arrays of a table that a program would ask for, in new memory.
struct Columns {
  explicit Columns(std::size_t scans)
      : number(std::make_unique_for_overwrite<std::int32_t[]>(scans)),
        points(std::make_unique_for_overwrite<std::uint32_t[]>(scans)) {
    for (auto& each : values) each = std::make_unique_for_overwrite<double[]>(scans);
  }

  std::unique_ptr<std::int32_t[]> number;
  std::unique_ptr<std::uint32_t[]> points;
  std::array<std::unique_ptr<double[]>, 6> values;
};

void LibraryTable(benchmark::State& state) {
  const OpenSource source(kManyScans);
  int scans = 0;
  zrml_scan_count(source.Get(), 0, 0, &scans);  // loads the index
  zrml_scan_table table = {};
  table.size = sizeof table;
  for (auto _ : state) {
    Columns columns(kManyScans.scans);
    table.number = columns.number.get();
    table.points = columns.points.get();
    double** const arrays[] = {&table.minutes,      &table.total_intensity,
                               &table.base_peak_mz, &table.base_peak_intensity,
                               &table.precursor_mz, &table.scan_value};
    for (std::size_t i = 0; i < columns.values.size(); ++i) *arrays[i] = columns.values[i].get();
    if (zrml_read_scan_table(source.Get(), 0, 0, 0, kManyScans.scans, &table) != ZRML_OK)
      state.SkipWithError("the table is not read");
    benchmark::DoNotOptimize(columns.values.data());
  }
}

void MakeColumns(benchmark::State& state) {
  for (auto _ : state) {
    Columns columns(kManyScans.scans);
    std::fill_n(columns.number.get(), kManyScans.scans, 1);
    std::fill_n(columns.points.get(), kManyScans.scans, 1U);
    for (auto& each : columns.values) std::fill_n(each.get(), kManyScans.scans, 1.0);
    benchmark::DoNotOptimize(columns.values.data());
  }
}

BENCHMARK(LibrarySpectra)->Name("C library beside source/: all spectra of 20k scans/ours");
BENCHMARK(SourceSpectra)->Name("C library beside source/: all spectra of 20k scans/floor");
BENCHMARK(LibraryRanges)->Name("C library beside source/: 100 mass ranges of 20k scans/ours");
BENCHMARK(SourceRanges)->Name("C library beside source/: 100 mass ranges of 20k scans/floor");
BENCHMARK(LibraryTable)->Name("C library: table of 1M scans, index loaded, beside making its arrays/ours");
BENCHMARK(MakeColumns)->Name("C library: table of 1M scans, index loaded, beside making its arrays/floor");

}  // namespace
}  // namespace zrml::bench
