// Data of profile-sum.png: two profiles of a time-of-flight analyser, half a step apart, as acquired, and the
// sum of the second, which begins below the first, onto the first. Prints blocks for gnuplot: masses and
// intensities, and a third column, the distance to the next point in steps of the analyser. make_figures.sh
#include <cmath>
#include <cstddef>
#include <cstdio>

#include "spectrum/profile_resampling.h"

namespace {

constexpr double kStep = 4e-4;  // in sqrt(m/z): 0.018 at m/z 500

double Signal(double mass, double peak, double height) {
  const double d = (mass - peak) / 0.06;
  return std::fabs(d) < 3 ? height * std::exp(-0.5 * d * d) : 0;
}

double FirstSignal(double mass) { return Signal(mass, 500.2, 1000) + Signal(mass, 501.6, 600); }
double SecondSignal(double mass) {
  return Signal(mass, 499.7, 400) + Signal(mass, 500.2, 500) + Signal(mass, 500.9, 800);
}

// Zeros are left out, except two next to each run of samples with intensity.
zrml::CZRMassSpectrum Acquire(double (*signal)(double), double offset) {
  zrml::CZRMassSpectrum spectrum;
  const double low = std::sqrt(499.4);
  const auto massOf = [=](int i) { return std::pow(low + kStep * (i + offset), 2); };
  for (int i = 0; massOf(i) < 502.2; ++i) {
    bool kept = false;
    for (int k = i - 2; k <= i + 2; ++k) kept = kept || signal(massOf(k)) > 0;
    if (!kept) continue;
    spectrum.MassVector().push_back(massOf(i));
    spectrum.IntensityVector().push_back(signal(massOf(i)));
  }
  spectrum.SetSize(static_cast<int>(spectrum.MassVector().size()));
  spectrum.SetCentroided(false);
  return spectrum;
}

void Print(const zrml::CZRMassSpectrum& spectrum) {
  for (int i = 0; i < spectrum.GetCount(); ++i) {
    const double steps = (std::sqrt(spectrum.GetMass(i + 1)) - std::sqrt(spectrum.GetMass(i))) / kStep;
    std::printf("%.9f %.6f %.6f\n", spectrum.GetMass(i), spectrum.GetIntensities()[i],
                i + 1 < spectrum.GetCount() ? steps : 1);
  }
  std::printf("\n\n");
}

}  // namespace

int main() {
  const zrml::CZRMassSpectrum first = Acquire(FirstSignal, 0);
  const zrml::CZRMassSpectrum second = Acquire(SecondSignal, 0.5);
  zrml::CZRMassSpectrum sum = first;
  zrml::ResampleOnto(second, sum);
  Print(first);
  Print(second);
  Print(sum);
  for (double mass = 499.4; mass < 502; mass += 0.002)
    std::printf("%.6f %.6f\n", mass, FirstSignal(mass) + SecondSignal(mass));
  return 0;
}
