#include "spectrum/apex_fit.h"

#include <array>
#include <cmath>
#include <optional>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/spectrum/synthetic_spectra.h"

namespace zrml {
namespace {

double Determinant(const std::array<Doubles, 3>& columns) {
  const auto& [a, b, c] = columns;
  return a[0] * (b[1] * c[2] - b[2] * c[1]) + b[0] * (c[1] * a[2] - c[2] * a[1]) +
         c[0] * (a[1] * b[2] - a[2] * b[1]);
}

// The parabola through the logarithms at 0, 1, 2 and so on, with the squares as weights, by Cramer's rule.
Apex WeightedParabola(const Doubles& intensities) {
  Doubles moments(5);
  Doubles right(3);
  for (std::size_t i = 0; i < intensities.size(); ++i) {
    double term = intensities[i] * intensities[i];
    for (std::size_t power = 0; power < 5; ++power, term *= static_cast<double>(i)) {
      moments[power] += term;
      if (power < 3) right[power] += term * std::log(intensities[i]);
    }
  }
  std::array<Doubles, 3> columns;
  for (std::size_t k = 0; k < 3; ++k) columns[k] = {moments[k], moments[k + 1], moments[k + 2]};
  Doubles solution;
  for (std::size_t k = 0; k < 3; ++k) {
    std::array<Doubles, 3> replaced = columns;
    replaced[k] = right;
    solution.push_back(Determinant(replaced) / Determinant(columns));
  }
  const double top = -solution[1] / (2 * solution[2]);
  return {top, std::exp(solution[0] + top * solution[1] / 2)};
}

std::optional<Apex> FitApex(const Doubles& mz, const Doubles& intensities, double highest) {
  const PeakTop top{mz, intensities, highest};
  return FitApexes(top, top)[0];
}

// With all bits.
std::string ToString(const std::optional<Apex>& apex) {
  std::ostringstream text;
  if (apex) text << std::hexfloat << apex->mass << " " << apex->height;
  return text.str();
}

TEST(ApexFit, FourSamplesHaveAParabola) {
  const Doubles intensities{2, 8, 6, 1};
  const auto apex = FitApex(Doubles{0, 1, 2, 3}, intensities, 8);
  ASSERT_TRUE(apex);
  EXPECT_NEAR(apex->mass, WeightedParabola(intensities).mass, 1e-10);
  EXPECT_NEAR(apex->height, WeightedParabola(intensities).height, 1e-9);
}

// Five times the Gaussian 2^(-x^2), sampled unevenly.
TEST(ApexFit, StepsMayDiffer) {
  Doubles intensities;
  const Doubles mz{500, 500.5, 501.125, 501.5, 502.25, 503};
  for (const double mass : mz) intensities.push_back(5 * std::exp2(-(mass - 501.25) * (mass - 501.25)));
  const auto apex = FitApex(mz, intensities, 5);
  ASSERT_TRUE(apex);
  EXPECT_NEAR(apex->mass, 501.25, 1e-9);
  EXPECT_NEAR(apex->height, 5, 1e-9);
}

TEST(ApexFit, NoMaximumBetweenTheFirstAndTheLast) {
  const Doubles mz{0, 1, 2};
  EXPECT_FALSE(FitApex(mz, Doubles{8, 2, 8}, 8));
  EXPECT_FALSE(FitApex(mz, Doubles{1, 4, 8}, 8));  // exponents 0, 2, 3: at 2.5
  EXPECT_FALSE(FitApex(mz, Doubles{8, 4, 1}, 8));
  EXPECT_FALSE(FitApex(mz, Doubles{3, 3, 3}, 3));
}

TEST(ApexFit, ThreeSamplesAtLeast) {
  EXPECT_FALSE(FitApex({}, {}, 0));
  EXPECT_FALSE(FitApex(Doubles{1}, Doubles{1}, 1));
  EXPECT_FALSE(FitApex(Doubles{1, 2}, Doubles{3, 4}, 4));
}

TEST(ApexFit, EachOfTwoIsWhatItIsAlone) {
  const Doubles mz{500, 500.5, 501.125, 501.5, 502.25, 503};
  const Doubles intensities{1, 3, 7, 8, 4, 2};
  const PeakTop cubic{mz, intensities, 8};
  const PeakTop parabola{{mz.data() + 1, 4}, {intensities.data() + 1, 4}, 8};
  const PeakTop none{{mz.data(), 2}, {intensities.data(), 2}, 3};
  for (const PeakTop& one : {cubic, parabola, none}) {
    const auto alone = FitApexes(one, one)[0];
    for (const PeakTop& other : {cubic, parabola, none}) {
      EXPECT_EQ(ToString(FitApexes(one, other)[0]), ToString(alone));
      EXPECT_EQ(ToString(FitApexes(other, one)[1]), ToString(alone));
    }
  }
}

}  // namespace
}  // namespace zrml
