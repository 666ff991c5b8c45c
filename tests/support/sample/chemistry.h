// The content of the simulated sample: compounds, their isotope patterns, elution, fragmentation and
// absorption.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "tests/support/nearest_points.h"

namespace zrml::sample {

struct Formula {
  int c = 0;
  int h = 0;
  int n = 0;
  int o = 0;
  int p = 0;
  int s = 0;
};

/// A mass peak: m/z, and the share of all molecules or an intensity.
using MassPeak = WantedPoint;

/// m/z and shares of the isotope peaks of [M+zH]z+, or of [M-H]- for charge -1, by mass number; shares below
/// one in a thousand are left out.
std::vector<MassPeak> IsotopePattern(const Formula& formula, int charge);

/// A chromatographic peak with a tail.
struct Elution {
  double apex = 0;   ///< minutes
  double width = 0;  ///< standard deviation of the rising side, minutes

  /// 1 at the apex. A width of 0 is a constant background.
  double At(double minutes) const;
};

struct AbsorptionBand {
  double wavelength = 0;  ///< nm
  double width = 0;       ///< standard deviation, nm
  double height = 0;      ///< 1 for the strongest compound at its apex
};

struct Compound {
  std::string_view name;
  Formula formula = {};
  int charge = 1;
  double response = 0;  ///< ions in a scan at the apex
  Elution elution = {};
  std::vector<MassPeak> fragments = {};  ///< the intensities of a compound add up to about 1
  std::vector<AbsorptionBand> bands = {};
};

const std::vector<Compound>& Compounds();

/// A plasticiser that is always present.
const Compound& Background();

/// Leucine enkephalin, sprayed from a second probe.
const Compound& LockMassCompound();

}  // namespace zrml::sample
