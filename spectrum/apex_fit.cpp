#include "spectrum/apex_fit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "spectrum/elementary.h"
#include "spectrum/polynomial_fit.h"

namespace zrml {
namespace {

constexpr std::size_t kMostTerms = 4;
constexpr std::size_t kSamplesOfCubic = 5;

using Coefficients = std::array<double, kMostTerms>;

// The normal equations: sums of w x^(row + column), and of w x^row y.
class NormalEquations {
 public:
  explicit NormalEquations(std::size_t terms) : terms_(terms) {}

  void Add(double x, double y, double weight) {
    double power = weight;
    for (std::size_t k = 0; k < 2 * terms_ - 1; ++k) {
      if (k < terms_) right_[k] += power * y;
      moments_[k] += power;
      power *= x;
    }
  }

  // Lowest power first.
  Coefficients Solve() const {
    std::array<double, kMostTerms * kMostTerms> matrix;
    for (std::size_t row = 0; row < terms_; ++row) std::copy_n(&moments_[row], terms_, &matrix[row * terms_]);
    Coefficients solution = right_;
    PolynomialFit::SolveLinearSystem(static_cast<int>(terms_), {matrix.data(), terms_ * terms_},
                                     {solution.data(), terms_});
    return solution;
  }

 private:
  std::size_t terms_;
  std::array<double, 2 * kMostTerms - 1> moments_{};
  Coefficients right_{};
};

// Where the curve is highest: the root of its derivative a x^2 + b x + c at which that falls, in the form
// that also holds for a = 0. Not a number when there is none.
double TopOf(const Coefficients& curve) {
  const double a = 3 * curve[3];
  const double b = 2 * curve[2];
  const double c = curve[1];
  return 2 * c / (std::sqrt(b * b - 4 * a * c) - b);
}

double ValueAt(const Coefficients& curve, double x) {
  return curve[0] + x * (curve[1] + x * (curve[2] + x * curve[3]));
}

}  // namespace

std::optional<Apex> FitApex(std::span<const double> mz, std::span<const double> intensities) {
  const std::size_t count = mz.size();
  if (count < 3) return std::nullopt;
  const double height = *std::max_element(intensities.begin(), intensities.end());
  const double halfWidth = 0.5 * (mz.back() - mz.front());
  const double middle = mz.front() + halfWidth;
  NormalEquations equations(count < kSamplesOfCubic ? 3 : 4);
  for (std::size_t i = 0; i < count; ++i) {
    const double relative = intensities[i] / height;
    equations.Add((mz[i] - middle) / halfWidth, PortableLog(relative), relative * relative);
  }
  const Coefficients curve = equations.Solve();
  const double top = TopOf(curve);
  if (!(top >= -1 && top <= 1)) return std::nullopt;
  return Apex{middle + top * halfWidth, height * PortableExp(ValueAt(curve, top))};
}

}  // namespace zrml
