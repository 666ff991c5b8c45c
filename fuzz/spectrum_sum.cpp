// Arithmetic on spectra: sums, resampling, merging of peaks, scan laws, sub-scans, sorting, centroids, on
// points with any bits or with likely values.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <span>

#include "fuzz/check.h"
#include "fuzz/input.h"
#include "plugin/raw_spectra.h"
#include "spectrum/add_spectrum.h"
#include "spectrum/centroid_merge.h"
#include "spectrum/centroiding.h"
#include "spectrum/peak_sum.h"
#include "spectrum/profile_resampling.h"
#include "tests/spectrum/synthetic_spectra.h"

namespace zrml::fuzz {
namespace {

constexpr int kMostPoints = 300;
constexpr std::size_t kMostGridPoints = std::size_t{1} << 14;

constexpr int kDense = 4;

// Masses: arbitrary, sampled by one of the laws, or less than one apart with intensities of either sign.
double NextMassOf(Input& input, int law, double step, std::size_t i, double previous) {
  const double at = 10 + step * static_cast<double>(i);
  switch (law) {
    case 0:
      return input.Value<double>();
    case 1:
      return at;
    case 2:
      return at * at;
    case 3:
      return 1 / (1 / (at + 1) + 1e-9);
    default:
      return previous + input.Value<std::uint8_t>() / 256.0;
  }
}

double NextIntensityOf(Input& input, int law) {
  if (law == 0) return input.Value<double>();
  const auto byte = input.Value<std::uint8_t>();
  return law == kDense ? static_cast<std::int8_t>(byte) : byte;
}

CZRMassSpectrum TakeSpectrum(Input& input) {
  const int count = input.Below(kMostPoints);
  const int law = input.Below(5);
  const double step = input.Value<std::uint8_t>() / 64.0;
  CZRMassSpectrum spectrum;
  spectrum.SetSize(count);
  spectrum.SetCentroided(input.Bool());
  double mass = 0;
  for (int i = 0; i < count; ++i) {
    mass = NextMassOf(input, law, step, static_cast<std::size_t>(i), mass);
    spectrum.SetMass(i, mass);
    spectrum.SetIntensity(i, NextIntensityOf(input, law));
  }
  if (input.Bool()) spectrum.EnablePointFlags(true);
  if (input.Bool()) spectrum.EnablePointMarks(true);
  return spectrum;
}

void CheckWhole(const CZRMassSpectrum& spectrum) {
  const auto count = static_cast<std::size_t>(std::max(spectrum.GetCount(), 0));
  Check(spectrum.GetCount() >= 0, "a sum has a count");
  Check(spectrum.MassVector().size() == count && spectrum.IntensityVector().size() == count,
        "a sum has whole points");
  if (spectrum.GetPointFlags() != nullptr) Check(spectrum.HasPointFlags(), "existing flags are in use");
}

bool AllBounded(const CZRMassSpectrum& spectrum) {
  const auto isBounded = [](double value) { return std::abs(value) < 1e300; };
  const HostVector<double>& intensities = spectrum.IntensityVector();
  return std::all_of(intensities.begin(), intensities.end(), isBounded);
}

// Merging by mass preserves the intensity of centroid spectra.
void AddCentroids(const CZRMassSpectrum& source, CZRMassSpectrum target) {
  const auto points = source.UsablePoints() + target.UsablePoints();
  const int count = AddCentroidSpectra(true, 0, source, target, true);
  CheckWhole(target);
  Check(count == target.GetCount() && target.UsablePoints() <= points,
        "a sum has no more points than its parts");
}

void Add(Input& input, const CZRMassSpectrum& source, CZRMassSpectrum target) {
  const double tolerance = input.Bool() ? input.Value<double>() : 0.01;
  const bool absolute = input.Bool();
  const bool areOfOneKind = source.IsCentroided() == target.IsCentroided();
  const int count = AddSpectrum(absolute, tolerance, source, target);
  Check(count == target.GetCount(), "the result is the count");
  Check(areOfOneKind || count == 0, "a spectrum of the other kind empties the target");
  CheckWhole(target);
  if (target.IsCentroided()) AddSpectrum(absolute, tolerance, target, target);
}

void Resample(const CZRMassSpectrum& source, CZRMassSpectrum target) {
  if (!std::is_sorted(source.MassVector().begin(), source.MassVector().end()) ||
      !std::is_sorted(target.MassVector().begin(), target.MassVector().end()))
    return;
  SamplingStepModel model;
  BuildStepModel(model, target);
  ScanLawHolder law;
  DetectScanLaw(law, target);
  const std::size_t most = kMostGridPoints + 2 * source.UsablePoints() + target.UsablePoints() + 4;
  AddOntoGrid(source, target, law, model, kMostGridPoints);
  CheckWhole(target);
  Check(target.UsablePoints() <= most, "a grid is bounded");
}

using Values = PeakSum::Values;

CZRMassSpectrum PeaksOf(const PeakSum& sum) {
  CZRMassSpectrum spectrum;
  spectrum.SetSize(static_cast<int>(sum.Count()));
  sum.CopyTo(spectrum.GetMasses(), spectrum.GetIntensities());
  return spectrum;
}

CZRMassSpectrum ToSpectrum(Values masses, Values intensities) {
  return MakeCentroids({masses.begin(), masses.end()}, {intensities.begin(), intensities.end()});
}

bool AreSame(Values values, Values expected) {
  return std::equal(values.begin(), values.end(), expected.begin(), expected.end(), [](double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) ||
           (std::isnan(a) && std::isnan(b));
  });
}

struct List {
  Values masses;
  Values intensities;

  List Cut(std::size_t count) {
    const List first{masses.first(count), intensities.first(count)};
    *this = {masses.subspan(count), intensities.subspan(count)};
    return first;
  }
};

List PointsOf(const CZRMassSpectrum& spectrum) {
  const std::size_t count = spectrum.UsablePoints();
  return {{spectrum.GetMasses(), count}, {spectrum.GetIntensities(), count}};
}

bool HaveSamePoints(const CZRMassSpectrum& a, const CZRMassSpectrum& b) {
  return AreSame(PointsOf(a).masses, PointsOf(b).masses) &&
         AreSame(PointsOf(a).intensities, PointsOf(b).intensities);
}

// Pieces of both spectra in turn, some more than once, so lists fall into and around the sum: the result must
// equal adding them one by one.
void SumLists(Input& input, const CZRMassSpectrum& source, const CZRMassSpectrum& target) {
  const double width = input.Bool() ? std::abs(input.Value<double>()) : 0.01;
  if (!(width > 0)) return;
  List rests[] = {PointsOf(source), PointsOf(target)};
  const auto next = [&](std::size_t turn) {
    List& rest = rests[turn % 2];
    return rest.Cut(std::min<std::size_t>(input.Value<std::uint8_t>() % 64, rest.masses.size()));
  };
  const List first = next(0);
  PeakSum sum(width, first.masses, first.intensities);
  CZRMassSpectrum expected = ToSpectrum(first.masses, first.intensities);
  for (std::size_t turn = 1; turn < 16; ++turn) {
    const List list = next(turn);
    const int times = input.Below(3) + 1;
    for (int i = 0; i < times; ++i) {
      const CZRMassSpectrum before = expected;
      const bool hasChanged = sum.Add(list.masses, list.intensities);
      AddSpectrum(true, width, ToSpectrum(list.masses, list.intensities), expected);
      const CZRMassSpectrum peaks = PeaksOf(sum);
      Check(HaveSamePoints(peaks, expected), "a sum of lists equals adding one by one");
      Check(hasChanged || HaveSamePoints(peaks, before), "a sum reports when it has changed");
    }
  }
}

// A scan whose pieces all start with the same mass is their sum.
void SumRepeats(Input& input, CZRMassSpectrum spectrum) {
  if (spectrum.UsablePoints() == 0) return;
  for (std::size_t i = 0; i < spectrum.UsablePoints(); i += 1 + input.Value<std::uint8_t>() % 64)
    spectrum.SetMass(static_cast<int>(i), spectrum.GetMass(0));
  CZRMassSpectrum sum = spectrum;
  const bool isSum = plugin::SumSubScans(sum);
  CheckWhole(sum);
  CZRMassSpectrum expected;
  bool isRepeated = false;
  for (List rest = PointsOf(spectrum); !rest.masses.empty();) {
    std::size_t count = 1;
    while (count < rest.masses.size() && !(rest.masses[count] <= rest.masses[count - 1])) ++count;
    const List list = rest.Cut(count);
    CZRMassSpectrum part = ToSpectrum(list.masses, list.intensities);
    if (list.masses.data() == spectrum.GetMasses()) {
      expected.Swap(part);
      continue;
    }
    isRepeated = list.masses[0] == spectrum.GetMass(0);
    if (!isRepeated) break;
    AddSpectrum(true, 0.01, part, expected);
  }
  Check(isSum == isRepeated, "sub-scans with the same first mass are summed");
  Check(HaveSamePoints(sum, isSum ? expected : spectrum), "a sum of sub-scans equals adding one by one");
}

void Merge(CZRMassSpectrum spectrum) {
  SortByMass(true, spectrum);
  const bool bounded = AllBounded(spectrum);
  const auto points = spectrum.UsablePoints();
  MergeCentroidPeaks(true, 0.5, spectrum);
  CheckWhole(spectrum);
  Check(!bounded || spectrum.UsablePoints() <= points, "merging makes no points");
}

// No peak is made of nothing: together they have no more than the profile.
void FindPeaks(const CZRMassSpectrum& profile) {
  constexpr double kHighest = 1e100;
  double total = 0;
  for (const double value : profile.IntensityVector()) total += value > 0 && value <= kHighest ? value : 0;
  Doubles mz;
  Doubles values;
  for (const bool isArea : {false, true}) {
    FindCentroids(profile.MassVector(), profile.IntensityVector(), {.isArea = isArea}, mz, values);
    Check(mz.size() == values.size() && mz.size() <= profile.UsablePoints(), "each centroid has its points");
    for (const double mass : mz) Check(mass >= 0 && mass <= kHighest, "a centroid has a mass");
    for (const double value : values)
      Check(value >= 0 && value <= 2 * kHighest, "a centroid has an intensity");
  }
  double sum = 0;
  for (const double area : values) sum += area;
  Check(sum <= total * (1 + 1e-9), "areas come from the profile");
}

}  // namespace
}  // namespace zrml::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zrml;
  fuzz::Input input(data, size);
  const CZRMassSpectrum source = fuzz::TakeSpectrum(input);
  const CZRMassSpectrum target = fuzz::TakeSpectrum(input);
  fuzz::Add(input, source, target);
  fuzz::AddCentroids(source, target);
  fuzz::Resample(source, target);
  fuzz::SumLists(input, source, target);
  fuzz::SumRepeats(input, source);
  fuzz::Merge(source);
  fuzz::FindPeaks(source);
  return 0;
}
