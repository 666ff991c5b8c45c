#include "tests/support/sample/chemistry.h"

#include <array>
#include <cstddef>

#include "tests/support/sample/portable_math.h"

namespace zrml::sample {
namespace {

constexpr double kProton = 1.00727646688;

// The isotopes of an element by mass number above the lightest.
struct Element {
  int Formula::*count;
  std::array<MassPeak, 3> isotopes;
};

constexpr std::array<Element, 6> kElements = {{
    {&Formula::c, {{{12.0, 0.9893}, {13.0033548378, 0.0107}}}},
    {&Formula::h, {{{1.00782503207, 0.999885}, {2.0141017778, 0.000115}}}},
    {&Formula::n, {{{14.0030740048, 0.99636}, {15.0001088982, 0.00364}}}},
    {&Formula::o, {{{15.99491461956, 0.99757}, {16.9991317, 0.00038}, {17.999161, 0.00205}}}},
    {&Formula::p, {{{30.97376163, 1.0}}}},
    {&Formula::s, {{{31.972071, 0.9499}, {32.97145876, 0.0075}, {33.9678669, 0.0425}}}},
}};

constexpr std::size_t kPatternSize = 8;
using Pattern = std::array<MassPeak, kPatternSize>;

// Share and share x mass of each mass number after one more atom.
Pattern WithAtom(const Pattern& molecule, const std::array<MassPeak, 3>& isotopes) {
  Pattern sum = {};
  for (std::size_t i = 0; i < kPatternSize; ++i) {
    for (std::size_t j = 0; j < isotopes.size() && i + j < kPatternSize; ++j) {
      const double share = isotopes[j].intensity;
      sum[i + j].intensity += molecule[i].intensity * share;
      sum[i + j].mass += (molecule[i].mass + molecule[i].intensity * isotopes[j].mass) * share;
    }
  }
  return sum;
}

}  // namespace

std::vector<MassPeak> IsotopePattern(const Formula& formula, int charge) {
  constexpr double kSmallestShare = 0.001;
  Pattern molecule = {};
  molecule[0].intensity = 1;
  for (const Element& element : kElements) {
    for (int i = 0; i < formula.*element.count; ++i) molecule = WithAtom(molecule, element.isotopes);
  }
  std::vector<MassPeak> peaks;
  for (const MassPeak& peak : molecule) {
    if (peak.intensity < kSmallestShare) continue;
    const double mass = peak.mass / peak.intensity + charge * kProton;
    peaks.push_back({charge < 0 ? mass / -charge : mass / charge, peak.intensity});
  }
  return peaks;
}

double Elution::At(double minutes) const {
  constexpr double kTailing = 1.5;
  if (width == 0) return 1;
  const double distance = (minutes - apex) / (minutes > apex ? kTailing * width : width);
  return distance * distance > 64 ? 0 : Exp(-distance * distance / 2);
}

const std::vector<Compound>& Compounds() {
  static const std::vector<Compound> compounds = {
      {"paracetamol",
       {.c = 8, .h = 9, .n = 1, .o = 2},
       1,
       9e3,
       {1.20, 0.040},
       {{110.0600, 0.62}, {93.0335, 0.10}, {92.0495, 0.06}, {65.0386, 0.12}},
       {{243, 14, 0.85}}},
      {"caffeine",
       {.c = 8, .h = 10, .n = 4, .o = 2},
       1,
       3e4,
       {1.85, 0.045},
       {{138.0662, 0.55}, {110.0713, 0.18}, {83.0604, 0.07}, {69.0447, 0.08}},
       {{205, 10, 1.0}, {273, 12, 0.45}}},
      {"sulfadimethoxine",
       {.c = 12, .h = 14, .n = 4, .o = 4, .s = 1},
       1,
       2.4e4,
       {3.10, 0.050},
       {{156.0768, 0.50}, {108.0444, 0.16}, {92.0495, 0.14}, {245.1033, 0.08}},
       {{270, 16, 0.75}}},
      {"angiotensin II",
       {.c = 50, .h = 71, .n = 13, .o = 12},
       2,
       4e4,
       {3.65, 0.055},
       {{784.4101, 0.24}, {263.1390, 0.30}, {110.0713, 0.16}, {136.0757, 0.09}, {70.0651, 0.08}},
       {{215, 9, 0.60}, {275, 6, 0.08}}},
      {"propranolol",
       {.c = 16, .h = 21, .n = 1, .o = 2},
       1,
       4.2e4,
       {4.00, 0.050},
       {{116.1070, 0.28}, {183.0804, 0.26}, {157.0648, 0.12}, {98.0964, 0.11}, {72.0808, 0.10}},
       {{214, 8, 0.90}, {290, 10, 0.20}}},
      {"verapamil",
       {.c = 27, .h = 38, .n = 2, .o = 4},
       1,
       5e4,
       {4.45, 0.055},
       {{165.0910, 0.58}, {303.2067, 0.18}, {150.0675, 0.08}, {260.1645, 0.05}},
       {{229, 9, 0.50}, {278, 9, 0.22}}},
      {"reserpine",
       {.c = 33, .h = 40, .n = 2, .o = 9},
       1,
       3.6e4,
       {5.20, 0.060},
       {{195.0652, 0.34}, {397.2122, 0.20}, {448.1966, 0.12}, {174.0913, 0.12}, {365.1860, 0.07}},
       {{216, 9, 0.95}, {267, 12, 0.40}, {295, 8, 0.24}}},
      {"terfenadine",
       {.c = 32, .h = 41, .n = 1, .o = 2},
       1,
       3e4,
       {5.90, 0.060},
       {{436.2999, 0.30}, {454.3104, 0.22}, {262.1590, 0.10}, {107.0855, 0.08}},
       {{220, 10, 0.35}, {259, 7, 0.05}}},
      {"warfarin",
       {.c = 19, .h = 16, .o = 4},
       1,
       1.4e4,
       {6.50, 0.055},
       {{163.0390, 0.48}, {251.0703, 0.22}, {121.0284, 0.10}},
       {{220, 9, 0.55}, {283, 11, 0.42}, {305, 10, 0.40}}},
      {"phosphatidylcholine 34:1",
       {.c = 42, .h = 82, .n = 1, .o = 8, .p = 1},
       1,
       6e4,
       {8.60, 0.080},
       {{184.0733, 0.74}, {104.1070, 0.05}, {86.0964, 0.06}},
       {}},
  };
  return compounds;
}

const Compound& Background() {
  static const Compound background = {"dioctyl phthalate",
                                      {.c = 24, .h = 38, .o = 4},
                                      1,
                                      1.2e3,
                                      {},
                                      {{149.0233, 0.6}, {167.0339, 0.2}, {71.0855, 0.1}},
                                      {}};
  return background;
}

const Compound& LockMassCompound() {
  static const Compound lockMass = {
      "leucine enkephalin", {.c = 28, .h = 37, .n = 5, .o = 7}, 1, 2e4, {}, {}, {}};
  return lockMass;
}

}  // namespace zrml::sample
