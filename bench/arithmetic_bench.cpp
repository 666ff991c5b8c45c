// Sorting, summing, finding peaks.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <random>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "spectrum/add_spectrum.h"
#include "spectrum/centroiding.h"
#include "spectrum/mass_spectrum.h"
#include "spectrum/peak_sum.h"

namespace zrml::bench {
namespace {

constexpr std::size_t kPoints = 100000;

std::vector<double> OrderedMasses() {
  std::vector<double> masses(kPoints);
  for (std::size_t i = 0; i < kPoints; ++i) masses[i] = 100 + 0.01 * static_cast<double>(i);
  return masses;
}

std::vector<double> ShuffledMasses() {
  std::vector<double> masses = OrderedMasses();
  std::shuffle(masses.begin(), masses.end(), std::mt19937_64(1));
  return masses;
}

CZRMassSpectrum SpectrumOf(const std::vector<double>& masses) {
  CZRMassSpectrum spectrum(kPoints);
  spectrum.CopyMasses(masses.data());
  spectrum.CopyIntensities(masses.data());
  return spectrum;
}

void SortOrdered(benchmark::State& state) {
  CZRMassSpectrum spectrum = SpectrumOf(OrderedMasses());
  for (auto _ : state) benchmark::DoNotOptimize(SortByMass(true, spectrum));
  if (spectrum.GetCount() != kPoints || spectrum.GetMasses()[1] != 100.01) state.SkipWithError("wrong order");
}

void CheckOrder(benchmark::State& state) {
  const std::vector<double> masses = OrderedMasses();
  for (auto _ : state) benchmark::DoNotOptimize(std::is_sorted(masses.begin(), masses.end()));
}

// Both copy their input each time, a small part of the work.
void SortShuffled(benchmark::State& state) {
  const std::vector<double> masses = ShuffledMasses();
  CZRMassSpectrum spectrum(kPoints);
  for (auto _ : state) {
    spectrum.CopyMasses(masses.data());
    spectrum.CopyIntensities(masses.data());
    SortByMass(true, spectrum);
  }
  if (spectrum.GetMasses()[1] != 100.01 || spectrum.GetIntensities()[1] != 100.01)
    state.SkipWithError("wrong order");
}

void SortPairs(benchmark::State& state) {
  const std::vector<double> masses = ShuffledMasses();
  std::vector<std::pair<double, double>> pairs(kPoints);
  for (auto _ : state) {
    for (std::size_t i = 0; i < kPoints; ++i) pairs[i] = {masses[i], masses[i]};
    std::sort(pairs.begin(), pairs.end());
    benchmark::DoNotOptimize(pairs.data());
  }
}

// A profile full of peaks, sampled every 0.01 from `start` on.
CZRMassSpectrum Profile(double start) {
  CZRMassSpectrum spectrum(kPoints);
  for (std::size_t i = 0; i < kPoints; ++i) {
    spectrum.GetMasses()[i] = start + 0.01 * static_cast<double>(i);
    spectrum.GetIntensities()[i] = static_cast<double>(1 + i % 17);
  }
  spectrum.SetCentroided(false);
  return spectrum;
}

void Add(benchmark::State& state, double start) {
  const CZRMassSpectrum source = Profile(start);
  const CZRMassSpectrum first = Profile(100);
  CZRMassSpectrum target;
  for (auto _ : state) {
    target = first;
    benchmark::DoNotOptimize(AddSpectrum(true, 0.01, source, target));
  }
  if (target.GetTotalIntensity() < 1.9 * CZRMassSpectrum(first).GetTotalIntensity())
    state.SkipWithError("wrong sum");
}

void CopyBoth(benchmark::State& state) {
  const CZRMassSpectrum source = Profile(100);
  const CZRMassSpectrum first = Profile(100);
  for (auto _ : state) {
    CZRMassSpectrum one = source;
    CZRMassSpectrum other = first;
    benchmark::DoNotOptimize(one.GetMasses());
    benchmark::DoNotOptimize(other.GetMasses());
    benchmark::ClobberMemory();
  }
}

// Peaks of four samples at half height, one after the other, of one to five thousand ions with counting
// noise.
CZRMassSpectrum CountedPeaks(std::size_t peaks) {
  constexpr double kShape[] = {0, 0.02, 0.1, 0.5, 0.9, 0.9, 0.5, 0.1, 0.02, 0};
  std::mt19937_64 random(3);
  CZRMassSpectrum spectrum(static_cast<unsigned>(peaks * std::size(kShape)));
  for (std::size_t i = 0; i < peaks * std::size(kShape); ++i) {
    const double height = static_cast<double>(1 + i / std::size(kShape) % 5000);
    spectrum.GetMasses()[i] = 100 + 0.001 * static_cast<double>(i);
    std::poisson_distribution<int> count(height * kShape[i % std::size(kShape)] + 1e-9);
    spectrum.GetIntensities()[i] = count(random);
  }
  return spectrum;
}

void Centroids(benchmark::State& state) {
  constexpr std::size_t kPeaks = 100000;
  const CZRMassSpectrum profile = CountedPeaks(kPeaks);
  std::vector<double> mz;
  std::vector<double> intensities;
  for (auto _ : state) {
    FindCentroids(profile.MassVector(), profile.IntensityVector(), {}, mz, intensities);
    benchmark::DoNotOptimize(mz.data());
  }
  if (mz.size() < kPeaks / 20 * 19 || mz.size() > kPeaks / 20 * 21)
    state.SkipWithError("wrong number of peaks");
  state.SetItemsProcessed(state.iterations() * profile.GetCount());
}

void SumBoth(benchmark::State& state) {
  const CZRMassSpectrum profile = CountedPeaks(100000);
  for (auto _ : state) {
    double sum = 0;
    for (int i = 0; i < profile.GetCount(); ++i) sum += profile.GetMasses()[i] * profile.GetIntensities()[i];
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * profile.GetCount());
}

struct Peaks {
  std::vector<double> masses;
  std::vector<double> intensities;
};

// Lists of 10,000 peaks anywhere.
std::vector<Peaks> ListsThatDoNotAgree() {
  constexpr std::size_t kPeaks = 10'000;
  std::mt19937_64 random(1);
  std::vector<Peaks> lists(600);
  for (Peaks& list : lists) {
    for (std::size_t i = 0; i < kPeaks; ++i) {
      list.masses.push_back(50 + 1950 * std::ldexp(static_cast<double>(random() >> 11), -53));
      list.intensities.push_back(1 + static_cast<double>(random() % 1000));
    }
    std::sort(list.masses.begin(), list.masses.end());
  }
  return lists;
}

// Peaks within 5 ppm of a stronger one become part of it, which moves it.
void SumLists(benchmark::State& state) {
  const std::vector<Peaks> lists = ListsThatDoNotAgree();
  for (auto _ : state) {
    PeakSum sum(10, lists[0].masses, lists[0].intensities, false);
    for (std::size_t i = 1; i < lists.size(); ++i) sum.Add(lists[i].masses, lists[i].intensities);
    benchmark::DoNotOptimize(sum.Count());
  }
}

void SortLists(benchmark::State& state) {
  const std::vector<Peaks> lists = ListsThatDoNotAgree();
  for (auto _ : state) {
    std::vector<double> all;
    for (const Peaks& list : lists) all.insert(all.end(), list.masses.begin(), list.masses.end());
    std::sort(all.begin(), all.end());
    benchmark::DoNotOptimize(all.data());
  }
}

BENCHMARK(SumLists)->Name("Sum of 600 lists of 10k peaks anywhere/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(SortLists)->Name("Sum of 600 lists of 10k peaks anywhere/floor")->Unit(benchmark::kMillisecond);
BENCHMARK(SortOrdered)->Name("SortByMass of 100k points in order/ours");
BENCHMARK(CheckOrder)->Name("SortByMass of 100k points in order/floor");
BENCHMARK(SortShuffled)->Name("SortByMass of 100k points in random order/ours");
BENCHMARK(SortPairs)->Name("SortByMass of 100k points in random order/floor");
BENCHMARK_CAPTURE(Add, one, 100)->Name("AddSpectrum of two profiles of 100k points on one grid/ours");
BENCHMARK(CopyBoth)->Name("AddSpectrum of two profiles of 100k points on one grid/floor");
BENCHMARK_CAPTURE(Add, two, 100.0037)->Name("AddSpectrum of two profiles of 100k points on two grids/ours");
BENCHMARK(CopyBoth)->Name("AddSpectrum of two profiles of 100k points on two grids/floor");
BENCHMARK(Centroids)->Name("Centroids of a profile of 1M points/ours");
BENCHMARK(SumBoth)->Name("Centroids of a profile of 1M points/floor");

}  // namespace
}  // namespace zrml::bench
