// What commands print of a source, beside printing the same numbers into memory.
#include <array>
#include <charconv>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/acquisition.h"
#include "source/source.h"
#include "source/sum_scans.h"
#include "tools/zrml/command_line.h"

namespace zrml::bench {
namespace {

// Standard output goes nowhere meanwhile.
class Silence {
 public:
  Silence() : kept_(::dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    const int nowhere = ::open("/dev/null", O_WRONLY);
    ::dup2(nowhere, STDOUT_FILENO);
    ::close(nowhere);
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  ~Silence() {
    ::dup2(kept_, STDOUT_FILENO);
    ::close(kept_);
  }

 private:
  int kept_;
};

void PrintScans(benchmark::State& state) {
  const std::string path = ManyScans().Path().string();
  const Silence silence;
  for (auto _ : state) {
    if (tool::RunCommandLine({"scans", path}) != tool::ExitStatus::kDone)
      state.SkipWithError("the command fails");
  }
}

// The five numbers of a row: scan, minutes, level, points, total.
void PrintNumbers(benchmark::State& state) {
  const std::unique_ptr<source::Source> source = source::Source::Open(ManyScans().Path().string());
  std::vector<std::array<double, 5>> rows;
  for (int i = 0; i < kManyScans; ++i) {
    const source::Scan scan = source->ScanAt(0, 0, i);
    rows.push_back(
        {i + 1.0, scan.minutes, 1, static_cast<double>(scan.points), scan.totalIntensity.value_or(0)});
  }
  for (auto _ : state) {
    std::string text;
    for (const auto& row : rows) {
      for (const double value : row) {
        std::array<char, 32> number;
        text.append(number.data(), std::to_chars(number.data(), number.data() + number.size(), value).ptr);
        text += '\t';
      }
    }
    benchmark::DoNotOptimize(text.data());
  }
}

// `targets` windows of 10 ppm to either side, over the mass range of 20,000 scans of 500 points.
void ExtractIons(benchmark::State& state, int targets) {
  const std::unique_ptr<source::Source> source =
      source::Source::Open(AcquisitionOf({8, 500, true, 20'000}).Path().string());
  std::vector<source::Range> ranges;
  for (int i = 0; i < targets; ++i) {
    const double mz = 150 + 1800.0 * i / targets;
    ranges.push_back({mz - mz * 1e-5, mz + mz * 1e-5});
  }
  std::vector<double> rows(ranges.size() * 20'000);
  for (auto _ : state) {
    source->MassRanges(0, 0, ranges, source::Within::kSum, rows);
    benchmark::DoNotOptimize(rows.data());
  }
}

void Extract100Ions(benchmark::State& state) { ExtractIons(state, 100); }
void Extract1Ion(benchmark::State& state) { ExtractIons(state, 1); }

const TempDirectory& LongScans() { return AcquisitionOf({9, 10'000, true, 600}); }

void SumAll(benchmark::State& state) {
  const std::unique_ptr<source::Source> source = source::Source::Open(LongScans().Path().string());
  for (auto _ : state)
    benchmark::DoNotOptimize(source::SumScans(*source, 0, 0, 0, 600, {10, true}).intensities.data());
}

void ReadAll(benchmark::State& state) {
  const std::unique_ptr<source::Source> source = source::Source::Open(LongScans().Path().string());
  std::vector<double> mz;
  std::vector<double> intensities;
  for (auto _ : state) {
    for (int scan = 0; scan < 600; ++scan) source->ReadPoints(0, 0, scan, mz, intensities);
  }
}

BENCHMARK(PrintScans)->Name("zrml scans of 1,000,000 scans/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(PrintNumbers)->Name("zrml scans of 1,000,000 scans/floor")->Unit(benchmark::kMillisecond);
BENCHMARK(Extract100Ions)->Name("Chromatograms of 100 ions beside 1 ion/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(Extract1Ion)->Name("Chromatograms of 100 ions beside 1 ion/floor")->Unit(benchmark::kMillisecond);
BENCHMARK(SumAll)->Name("Sum of 600 scans of 10k points/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(ReadAll)->Name("Sum of 600 scans of 10k points/floor")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zrml::bench
