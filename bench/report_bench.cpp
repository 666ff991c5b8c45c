// Reports: finding the samples of a gigabyte, and reading every spectrum of a hundred megabytes.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "plugin/report_server.h"
#include "source/source.h"
#include "tests/support/report_writer.h"
#include "tests/support/temp_directory.h"

namespace zrml::bench {
namespace {

constexpr int kPoints = 500;
constexpr int kSpectra = 10;  // per sample

std::string Sample() {
  ReportLines spectra;
  for (int i = 0; i < kSpectra; ++i) {
    ReportPairs points;
    for (int k = 0; k < kPoints; ++k)
      points.push_back({(1001234.0 + 17000.0 * k) / 10000, 0.25 * (1 + k % 400)});
    spectra = spectra + SpectrumBlock(Keys({{"Time", std::to_string(0.1 * i)},
                                            {"Continuum", "0"},
                                            {"BPI", "1000000"},
                                            {"TIC", "50000000"}}),
                                      points);
  }
  const ReportLines function =
      FunctionBlock(Keys({{"Type", "MS"}, {"IonMode", "ES+"}, {"Description", "survey"}}) + spectra);
  return ReportText(SampleBlock(Keys({{"SampleID", "vial"}}) + function));
}

struct Report {
  TempDirectory directory{"reports"};
  std::filesystem::path path = directory.Path() / "many.rpt";
  int samples = 0;

  explicit Report(std::uint64_t bytes) {
    const std::string sample = Sample();
    std::ofstream file(path, std::ios::binary);
    for (; static_cast<std::uint64_t>(samples) * sample.size() < bytes; ++samples) file << sample;
  }
};

const Report& Gigabyte() {
  static const Report report(std::uint64_t{1} << 30);
  return report;
}

const Report& HundredMegabytes() {
  static const Report report(100'000'000);
  return report;
}

void IndexSamples(benchmark::State& state) {
  const Report& report = Gigabyte();
  plugin::COpenLynxRptDataServerImpl server;
  for (auto _ : state) {
    server.Close();
    if (!server.Open(report.directory.WidePath("many.rpt")) || server.GetSampleCount() != report.samples)
      state.SkipWithError("wrong number of samples");
  }
}

void Grep(benchmark::State& state) {
  const std::string command = "LC_ALL=C grep -c '^\\[SAMPLE\\]' " + Gigabyte().path.string() +
                              " | grep -q .";  // to a null device it would stop at the first
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) state.SkipWithError("grep finds nothing");
  }
}

void ReadSpectra(benchmark::State& state) {
  const Report& report = HundredMegabytes();
  for (auto _ : state) {
    plugin::COpenLynxRptDataServerImpl server;
    server.Open(report.directory.WidePath("many.rpt"));
    CZRMassSpectrum spectrum;
    for (int sample = 0; sample < server.GetSampleCount(); ++sample) {
      for (int scan = 0; scan < server.GetScanCount(sample, 0); ++scan) {
        if (!server.GetSpectrum(sample, 0, scan, spectrum) || spectrum.GetCount() != kPoints)
          state.SkipWithError("a spectrum is not read");
      }
    }
    benchmark::DoNotOptimize(spectrum.GetMasses());
  }
}

void SourceReadSpectra(benchmark::State& state) {
  const Report& report = HundredMegabytes();
  std::vector<double> mz;
  std::vector<double> intensities;
  for (auto _ : state) {
    const auto source = source::Source::Open(report.path.string());
    for (int sample = 0; sample < source->SampleCount(); ++sample) {
      for (int scan = 0; scan < source->ScanCount(sample, 0); ++scan) {
        if (source->ReadPoints(sample, 0, scan, mz, intensities).count != kPoints)
          state.SkipWithError("a spectrum is not read");
      }
    }
    benchmark::DoNotOptimize(mz.data());
  }
}

void ReadLines(benchmark::State& state) {
  double sum = 0;
  for (auto _ : state) {
    std::ifstream file(HundredMegabytes().path, std::ios::binary);
    std::string line;
    while (std::getline(file, line)) {
      char* end = nullptr;
      sum += std::strtod(line.c_str(), &end);
      sum += std::strtod(end, nullptr);
    }
    benchmark::DoNotOptimize(sum);
  }
}

// Wall time: grep is a separate process.
BENCHMARK(IndexSamples)->Name("Sample index of a report of 1 GiB/ours")->UseRealTime();
BENCHMARK(Grep)->Name("Sample index of a report of 1 GiB/floor")->UseRealTime();
BENCHMARK(ReadSpectra)->Name("All spectra of a report of 100 MB/ours");
BENCHMARK(ReadLines)->Name("All spectra of a report of 100 MB/floor");
BENCHMARK(SourceReadSpectra)->Name("source/ beside the slots: all spectra of a report of 100 MB/ours");
BENCHMARK(ReadSpectra)->Name("source/ beside the slots: all spectra of a report of 100 MB/floor");

}  // namespace
}  // namespace zrml::bench
