// Random operations on a mass spectrum and on a plain model of it: two bytes give an operation and its
// argument.
#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>
#include <optional>
#include <vector>

#include "fuzz/check.h"
#include "fuzz/input.h"
#include "spectrum/mass_spectrum.h"

namespace zrml::fuzz {
namespace {

constexpr int kMostPoints = 64;

// Values that are equal or both NaN.
bool Same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

template <class Numbers>
bool SameNumbers(const HostVector<double>& a, const Numbers& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), Same);
}

struct Model {
  std::vector<double> masses;
  std::vector<double> intensities;
  bool hasFlags = false;
  bool hasValues = false;

  int Count() const { return static_cast<int>(masses.size()); }
  bool Has(int i) const { return i >= 0 && i < Count(); }
  void Size(int count) {
    masses.resize(static_cast<std::size_t>(count));
    intensities.resize(static_cast<std::size_t>(count));
  }
};

class Pair {
 public:
  void Step(Input& input) {
    constexpr void (Pair::*kOperations[])(Input&) = {
        &Pair::Resize,       &Pair::SetSize,  &Pair::Clear,    &Pair::EnableFlags,
        &Pair::EnableValues, &Pair::SetPoint, &Pair::Assign,   &Pair::Copy,
        &Pair::Swap,         &Pair::Sort,     &Pair::AskRange, &Pair::ResizeBadly};
    (this->*kOperations[input.Value<std::uint8_t>() % std::size(kOperations)])(input);
    CheckSame();
  }

 private:
  void Resize(Input& input) {
    const int count = input.Below(kMostPoints);
    const bool flags = input.Bool();
    const bool values = input.Bool();
    Check(spectrum_.Resize(count, flags, false, values, input.Bool()), "a size is taken");
    model_.Size(count);
    if (count == 0) return;  // clearing keeps the optional arrays in use
    model_.hasFlags = flags;
    model_.hasValues = values;
  }

  void ResizeBadly(Input& input) {
    Check(!spectrum_.Resize(-1 - input.Below(kMostPoints), true, true, true, true),
          "no negative size is taken");
  }

  void SetSize(Input& input) {
    const int count = input.Below(kMostPoints);
    Check(spectrum_.SetSize(count), "a size is taken");
    model_.Size(count);
  }

  void Clear(Input&) {
    spectrum_.Clear();
    model_.Size(0);
  }

  void EnableFlags(Input& input) {
    const bool enable = input.Bool();
    spectrum_.EnablePointFlags(enable);
    if (!enable || model_.Count() > 0) model_.hasFlags = enable;
  }

  void EnableValues(Input& input) {
    const bool enable = input.Bool();
    spectrum_.EnablePointValues(enable);
    if (!enable || model_.Count() > 0) model_.hasValues = enable;
  }

  void SetPoint(Input& input) {
    const int i = input.Value<std::int8_t>();
    const double mass = input.Value<float>();
    const double intensity = input.Value<float>();
    Check(spectrum_.SetMass(i, mass) == model_.Has(i), "a mass is set where a point is");
    Check(spectrum_.SetIntensity(i, intensity) == model_.Has(i), "an intensity is set where a point is");
    if (!model_.Has(i)) return;
    model_.masses[static_cast<std::size_t>(i)] = mass;
    model_.intensities[static_cast<std::size_t>(i)] = intensity;
  }

  void Assign(Input& input) {
    HostVector<double> masses(static_cast<std::size_t>(input.Below(kMostPoints)));
    for (double& mass : masses) mass = input.Value<std::uint8_t>();
    spectrum_.AssignMasses(masses);
    const int count = static_cast<int>(masses.size());
    Check(spectrum_.UsablePoints() <= std::min(model_.masses.size(), masses.size()),
          "no point without both arrays");
    spectrum_.UpdateStatistics();
    Check(spectrum_.SetSize(count), "a size is taken");
    model_.Size(count);
    model_.masses.assign(masses.begin(), masses.end());
  }

  void Copy(Input&) {
    CZRMassSpectrum copy(spectrum_);
    CZRMassSpectrum assigned;
    assigned = copy;
    spectrum_ = std::move(assigned);
  }

  void Swap(Input&) {
    CZRMassSpectrum other;
    other.SwapPoints(spectrum_);
    Check(spectrum_.GetCount() == 0 && spectrum_.UsablePoints() == 0, "SwapPoints exchanges the points");
    other.SwapPoints(spectrum_);
    other.Swap(spectrum_);
    other.Swap(spectrum_);
  }

  void Sort(Input& input) {
    const int order = input.Below(6) - 1;
    const bool sorted = SortSpectrum(order, false, false, false, spectrum_);
    Check(sorted == (model_.Count() == 0 || (order >= 0 && order <= 3)), "four orders are known");
    if (!sorted) return;
    std::vector<std::size_t> places(model_.masses.size());
    std::iota(places.begin(), places.end(), 0);
    const std::vector<double>& keys = order <= kMassDescending ? model_.masses : model_.intensities;
    const bool ascending = order == kMassAscending || order == kIntensityAscending;
    std::stable_sort(places.begin(), places.end(), [&](std::size_t a, std::size_t b) {
      if (std::isnan(keys[a]) || std::isnan(keys[b])) return !std::isnan(keys[a]) && std::isnan(keys[b]);
      return ascending ? keys[a] < keys[b] : keys[b] < keys[a];
    });
    Model old = model_;
    for (std::size_t i = 0; i < places.size(); ++i) {
      model_.masses[i] = old.masses[places[i]];
      model_.intensities[i] = old.intensities[places[i]];
    }
  }

  void AskRange(Input& input) {
    const double low = input.Value<float>();
    const double high = input.Bool() ? low + input.Value<std::uint8_t>() : input.Value<float>();
    int first = 0;
    int last = 0;
    const bool found = spectrum_.FindIndexRange(low, high, first, last);
    const double sum = spectrum_.GetIntensitySumInRange(low, high);
    const double largest = spectrum_.GetMaxIntensityInRange(low, high);
    if (!found) return Check(sum == 0 && largest == 0, "a range without points is empty");
    Check(model_.Has(first) && model_.Has(last) && first <= last, "a range lies within the points");
  }

  void CheckSame() {
    Check(spectrum_.GetCount() == model_.Count(), "counts are equal");
    Check(SameNumbers(spectrum_.MassVector(), model_.masses), "masses are equal");
    Check(SameNumbers(spectrum_.IntensityVector(), model_.intensities), "intensities are equal");
    Check(spectrum_.HasPointFlags() == model_.hasFlags, "the same flags are in use");
    Check(spectrum_.HasPointValues() == model_.hasValues, "the same values are in use");
    Check((spectrum_.GetPointFlags() != nullptr) == (model_.hasFlags && model_.Count() > 0),
          "flags are present");
    double total = 0;
    for (const double intensity : model_.intensities) total += intensity;
    Check(Same(spectrum_.GetTotalIntensity(), total), "totals are equal");
    const int base = spectrum_.GetBasePeakIndex();
    Check(model_.Count() == 0 || model_.Has(base), "the base peak is a point");
  }

  CZRMassSpectrum spectrum_;
  Model model_;
};

}  // namespace
}  // namespace zrml::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  zrml::fuzz::Input input(data, size);
  zrml::fuzz::Pair pair;
  for (int steps = 0; steps < 200 && !input.IsEmpty(); ++steps) pair.Step(input);
  return 0;
}
