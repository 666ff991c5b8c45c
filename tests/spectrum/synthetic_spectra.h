// Spectra made for tests: from lists, and profiles as analysers sample them.
#pragma once

#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <ostream>
#include <vector>

#include "spectrum/mass_spectrum.h"
#include "tests/spectrum/random_numbers.h"

namespace zrml {

using Doubles = std::vector<double>;

inline CZRMassSpectrum MakeSpectrum(bool centroided, const Doubles& masses, const Doubles& intensities) {
  CZRMassSpectrum spectrum;
  spectrum.SetSize(static_cast<int>(masses.size()));
  spectrum.CopyMasses(masses.data());
  spectrum.CopyIntensities(intensities.data());
  spectrum.SetCentroided(centroided);
  return spectrum;
}

inline CZRMassSpectrum MakeCentroids(const Doubles& masses, const Doubles& intensities) {
  return MakeSpectrum(true, masses, intensities);
}

inline CZRMassSpectrum MakeProfile(const Doubles& masses, const Doubles& intensities) {
  return MakeSpectrum(false, masses, intensities);
}

inline Doubles Masses(const CZRMassSpectrum& spectrum) {
  return {spectrum.MassVector().begin(), spectrum.MassVector().end()};
}

inline Doubles Intensities(const CZRMassSpectrum& spectrum) {
  return {spectrum.IntensityVector().begin(), spectrum.IntensityVector().end()};
}

/// 0 to 1.
inline double UnitNumber(RandomNumbers& random) { return static_cast<double>(random.Next() >> 11) * 0x1p-53; }

/// An analyser: the coordinate that it samples evenly, by independent formulas, and the type code of its law.
struct Analyser {
  const char* name;
  int type;
  double (*coordinate)(double mass);
  double (*mass)(double coordinate);

  /// `count` masses, evenly sampled from `low` to `high`.
  Doubles Axis(double low, double high, std::size_t count) const {
    const double begin = coordinate(low);
    const double step = (coordinate(high) - begin) / static_cast<double>(count - 1);
    Doubles masses(count);
    for (std::size_t i = 0; i < count; ++i) masses[i] = mass(begin + step * static_cast<double>(i));
    return masses;
  }
};

/// Points of a profile.
struct Profile {
  Doubles masses;
  Doubles intensities;

  CZRMassSpectrum Spectrum() const { return MakeProfile(masses, intensities); }
};

/// Peaks of seven samples with one zero at either side; `gap` further zero samples between them are left out,
/// as in acquisitions.
inline Profile WithGaps(const Doubles& axis, std::size_t gap) {
  const double shape[] = {0, 1, 4, 9, 11, 8, 3, 1, 0};
  Profile profile;
  for (std::size_t begin = 0; begin + 9 <= axis.size(); begin += 9 + gap) {
    for (std::size_t i = 0; i < 9; ++i) {
      profile.masses.push_back(axis[begin + i]);
      profile.intensities.push_back(shape[i]);
    }
  }
  return profile;
}

inline std::ostream& operator<<(std::ostream& out, const Analyser& analyser) { return out << analyser.name; }

inline const Analyser kAnalysers[] = {
    {"Constant", 1, [](double m) { return m; }, [](double c) { return c; }},
    {"TOF", 2, [](double m) { return std::sqrt(m); }, [](double c) { return c * c; }},
    {"FT", 3, [](double m) { return 1 / m; }, [](double c) { return 1 / c; }},
    {"FT2", 4, [](double m) { return 1 / std::sqrt(m); }, [](double c) { return 1 / (c * c); }},
    {"Sector", 5, [](double m) { return std::log(m); }, [](double c) { return std::exp(c); }},
};

}  // namespace zrml
