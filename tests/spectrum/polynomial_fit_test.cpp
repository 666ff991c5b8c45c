#include "spectrum/polynomial_fit.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/spectrum/failing_allocation.h"
#include "tests/spectrum/random_numbers.h"

namespace zrml {
namespace {

using Values = std::vector<double>;

constexpr char kSingular[] = "Singular matrix in routine LUDecomposition";

PolynomialFit FitOf(const Values& x, const Values& y) {
  PolynomialFit fit(static_cast<int>(x.size()));
  for (std::size_t i = 0; i < x.size(); ++i) fit.AddPoint(x[i], y[i]);
  return fit;
}

TEST(PolynomialFit, LineThroughThreePoints) {
  PolynomialFit fit = FitOf({0, 1, 2}, {1, 3, 5});
  ASSERT_TRUE(fit.Fit(1));
  for (const double x : {-3.0, 0.0, 0.5, 2.0, 100.0}) EXPECT_NEAR(fit.Evaluate(x), 2 * x + 1, 1e-12);
}

TEST(PolynomialFit, DegreeZeroIsTheMean) {
  PolynomialFit fit = FitOf({5, 7, 9}, {1, 2, 6});
  ASSERT_TRUE(fit.Fit(0));
  EXPECT_EQ(fit.Evaluate(-100), 3);  // origin 1, mean of 0, 1, 5 is 2
}

TEST(PolynomialFit, OriginsAreTheSmallestValuesInAnyOrder) {
  PolynomialFit fit = FitOf({2, 0, 1}, {5, 1, 3});
  ASSERT_TRUE(fit.Fit(1));
  EXPECT_NEAR(fit.Evaluate(10), 21, 1e-12);
}

TEST(PolynomialFit, EvaluateBeforeAnyFitIsZero) {
  EXPECT_EQ(PolynomialFit(10).Evaluate(5), 0.0);
  EXPECT_EQ(FitOf({1, 2}, {7, 8}).Evaluate(1), 0.0);
}

TEST(PolynomialFit, TooFewPointsLeaveThePreviousCoefficients) {
  PolynomialFit fit = FitOf({0, 1}, {1, 3});
  EXPECT_FALSE(fit.Fit(2));
  EXPECT_EQ(fit.Evaluate(1), 0.0);
  ASSERT_TRUE(fit.Fit(1));
  const double before = fit.Evaluate(4);
  EXPECT_NEAR(before, 9, 1e-12);
  EXPECT_FALSE(fit.Fit(2));
  EXPECT_EQ(fit.Evaluate(4), before);
  EXPECT_FALSE(PolynomialFit(0).Fit(0));
}

TEST(PolynomialFit, NegativeDegreesFail) {
  PolynomialFit fit = FitOf({0, 1}, {1, 3});
  EXPECT_FALSE(fit.Fit(-1));
  EXPECT_FALSE(PolynomialFit(-5).Fit(-1));
}

TEST(PolynomialFit, FailedAllocationKeepsPointsAndCoefficients) {
  PolynomialFit fit(0);
  for (int i = 0; i < 8; ++i) {
    const int failures =
        FailEveryAllocation([&] { fit.AddPoint(i, 2 * i); }, [&] { EXPECT_EQ(fit.GetPointCount(), i); });
    EXPECT_GE(failures, i == 0 ? 1 : 0);
  }
  ASSERT_TRUE(fit.Fit(1));
  const double before = fit.Evaluate(20);
  EXPECT_GT(FailEveryAllocation([&] { fit.Fit(2); }, [&] { EXPECT_EQ(fit.Evaluate(20), before); }), 0);
  EXPECT_NEAR(fit.Evaluate(20), 40, 1e-9);
}

TEST(SolveLinearSystem, TwoByTwoByHand) {
  // 2x + y = 5, x + 3y = 10: x = 1, y = 3. Factors: 2, 1, 1/2, 5/2, all exact.
  Values a = {2, 1, 1, 3};
  Values b = {5, 10};
  EXPECT_TRUE(PolynomialFit::SolveLinearSystem(2, a, b));
  EXPECT_EQ(b, (Values{1, 3}));
  EXPECT_EQ(a, (Values{2, 1, 0.5, 2.5}));
}

TEST(SolveLinearSystem, ZeroOnTheDiagonalIsPivotedAway) {
  Values a = {0, 1, 1, 0};
  Values b = {3, 4};
  EXPECT_TRUE(PolynomialFit::SolveLinearSystem(2, a, b));
  EXPECT_EQ(b, (Values{4, 3}));
}

// Without scaling the 10 would be the pivot; with scales 1/10 and 1/1000 it is the second row's 1.
TEST(SolveLinearSystem, PivotsAreComparedAfterScalingTheirRows) {
  Values a = {10, 1000, 1, 1};
  Values b = {1010, 2};
  EXPECT_TRUE(PolynomialFit::SolveLinearSystem(2, a, b));
  EXPECT_EQ(a, (Values{1, 1, 10, 990}));
  EXPECT_EQ(b, (Values{1, 1}));
}

TEST(SolveLinearSystem, RowInterchangesOfThreeRowsAreFollowed) {
  // x = 1, y = 2, z = 3; every factor is a small whole number or a half.
  Values a = {0, 0, 2, 4, 0, 0, 0, 1, 1};
  Values b = {6, 4, 5};
  EXPECT_TRUE(PolynomialFit::SolveLinearSystem(3, a, b));
  EXPECT_EQ(b, (Values{1, 2, 3}));
}

// The first interchange brings the first row, scaled by 1/2, to the second place: there its 1 counts less
// than the third row's. Had the scale not moved with the row, it would be the pivot.
TEST(SolveLinearSystem, ARowTakesItsScaleAlong) {
  Values a = {0, 1, 2, 1, 0, 0, 1, 1, 0};
  Values b = {3, 1, 2};
  EXPECT_TRUE(PolynomialFit::SolveLinearSystem(3, a, b));
  EXPECT_EQ(b, (Values{1, 1, 1}));
  EXPECT_EQ(a, (Values{1, 0, 0, 1, 1, 0, 0, 1, 2}));
}

TEST(SolveLinearSystem, ARowOfZerosPrintsTheMessageAndStillGivesTrue) {
  Values a = {0, 0, 1, 1};
  Values b = {1, 2};
  testing::internal::CaptureStdout();
  EXPECT_TRUE(PolynomialFit::SolveLinearSystem(2, a, b));
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), kSingular);
}

TEST(SolveLinearSystem, EachRowOfZerosPrintsTheMessage) {
  Values a = {0, 0, 0, 0};
  Values b = {1, 2};
  testing::internal::CaptureStdout();
  EXPECT_TRUE(PolynomialFit::SolveLinearSystem(2, a, b));
  std::fflush(stdout);
  std::string twice = kSingular;
  twice += kSingular;
  EXPECT_EQ(testing::internal::GetCapturedStdout(), twice);
}

// Two equal rows: the second pivot is 1 - 1 = 0 and becomes 1e-300, silently. y = (2 - 1) / 1e-300.
TEST(SolveLinearSystem, APivotOfZeroBecomesTiny) {
  Values a = {1, 1, 1, 1};
  Values b = {1, 2};
  testing::internal::CaptureStdout();
  EXPECT_TRUE(PolynomialFit::SolveLinearSystem(2, a, b));
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(a[3], 1e-300);
  EXPECT_EQ(b[1], 1 / 1e-300);
  EXPECT_EQ(b[0], 1 - 1 / 1e-300);
}

TEST(SolveLinearSystem, NoUnknownsAreSolvedAtOnce) {
  Values none;
  EXPECT_TRUE(PolynomialFit::SolveLinearSystem(0, none, none));
}

TEST(PolynomialFit, PointsAtOneMassPrintTheMessageAndStoreSomething) {
  PolynomialFit fit = FitOf({3, 3, 3}, {1, 2, 3});
  testing::internal::CaptureStdout();
  EXPECT_TRUE(fit.Fit(1));  // all shifted x are 0: the second row is
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), kSingular);
}

// Holds the determinants below: whole numbers x up to 6, at most 7 points, y up to 9 and a degree up to 5
// keep them below 9 times the product of the diagonal 7 * 91 * 2275 * 67171 * 2142595 * 71340451, which is
// 2^87.
__extension__ typedef __int128 Wide;

// The exact least-squares solution for whole numbers, by determinants of the normal equations.
class RationalFit {
 public:
  RationalFit(const std::vector<int>& x, const std::vector<int>& y, std::size_t degree) : size_(degree + 1) {
    for (std::size_t row = 0; row < size_; ++row) {
      std::vector<Wide> sums(size_ + 1);
      for (std::size_t i = 0; i < x.size(); ++i) {
        for (std::size_t column = 0; column < size_; ++column) sums[column] += Power(x[i], row + column);
        sums[size_] += y[i] * Power(x[i], row);
      }
      rows_.push_back(sums);
    }
    for (std::size_t replaced = 0; replaced <= size_; ++replaced)
      determinants_.push_back(Determinant(replaced));
  }

  // The value at a whole number as numerator and denominator.
  double At(int x) const {
    Wide numerator = 0;
    for (std::size_t power = 0; power < size_; ++power) numerator += determinants_[power] * Power(x, power);
    return static_cast<double>(numerator) / static_cast<double>(determinants_[size_]);
  }

 private:
  static Wide Power(int x, std::size_t exponent) {
    Wide power = 1;
    for (std::size_t i = 0; i < exponent; ++i) power *= x;
    return power;
  }

  // The determinant, by expansion, with one column replaced by the right-hand side (none when it is `size_`).
  Wide Determinant(std::size_t replaced) const {
    std::vector<std::size_t> columns;
    for (std::size_t column = 0; column < size_; ++column)
      columns.push_back(column == replaced ? size_ : column);
    return Expand(0, columns);
  }

  Wide Expand(std::size_t row, const std::vector<std::size_t>& columns) const {
    if (columns.empty()) return 1;
    Wide sum = 0;
    for (std::size_t k = 0; k < columns.size(); ++k) {
      std::vector<std::size_t> rest = columns;
      rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(k));
      const Wide minor = rows_[row][columns[k]] * Expand(row + 1, rest);
      sum += k % 2 == 0 ? minor : -minor;
    }
    return sum;
  }

  std::size_t size_;
  std::vector<std::vector<Wide>> rows_;
  std::vector<Wide> determinants_;  // indexed as in Determinant
};

// One rounding unit in every element of the normal equations of such points moves a value by up to 6e-10 at
// degree 3, 9e-8 at 4 and 5e-6 at 5 (computed in fractions); ten units are allowed.
TEST(PolynomialFit, AgreesWithExactRationalSolutions) {
  const double tolerances[] = {6e-9, 6e-9, 6e-9, 6e-9, 9e-7, 5e-5};
  RandomNumbers random(3);
  int compared = 0;
  for (int round = 0; round < 500; ++round) {
    const int degree = random.Below(6);
    std::vector<int> x;
    std::vector<int> y;
    for (int value = 0; value <= 6; ++value) {
      if (static_cast<int>(x.size()) > degree && random.Below(3) == 0) continue;
      x.push_back(value);
      y.push_back(random.Below(10));
    }
    const RationalFit exact(x, y, static_cast<std::size_t>(degree));
    PolynomialFit fit(static_cast<int>(x.size()));
    for (std::size_t i = 0; i < x.size(); ++i) fit.AddPoint(1000 + 0.5 * x[i], 0.25 * y[i] - 100);
    ASSERT_TRUE(fit.Fit(degree));
    for (int at = -2; at <= 8; ++at) {
      const double expected = 0.25 * exact.At(at) - 100;
      ASSERT_NEAR(fit.Evaluate(1000 + 0.5 * at), expected, tolerances[degree])
          << "degree " << degree << " at " << at;
      ++compared;
    }
  }
  EXPECT_EQ(compared, 5500);
}

// As a resampler uses it: the steps of real axes over the whole range. Those proportional to the mass and its
// square are polynomials; that of a time of flight is a square root, which degree 5 follows to 3 % of the
// largest step.
TEST(PolynomialFit, AThousandStepsOverTheWholeMassRangeAreFollowed) {
  const struct {
    double (*step)(double mass);
    double tolerance;
  } cases[] = {
      {[](double mass) { return 1e-5 * mass; }, 1e-9},
      {[](double mass) { return 4e-9 * mass * mass; }, 1e-8},
      {[](double mass) { return 2e-4 * std::sqrt(mass); }, 0.03 * 2e-4 * 71},
  };
  for (const auto& test : cases) {
    PolynomialFit fit(1000);
    for (int i = 0; i < 1000; ++i) {
      const double mass = 50 + 4950 * i / 999.0;
      fit.AddPoint(mass, test.step(mass));
    }
    ASSERT_TRUE(fit.Fit(5));
    for (int mass = 50; mass <= 5000; mass += 10)
      ASSERT_NEAR(fit.Evaluate(mass), test.step(mass), test.tolerance) << mass;
  }
}

// The mean of 2 and 4 at every x: with one coefficient there is nothing to multiply.
TEST(PolynomialFit, ConstantHasItsValueEverywhere) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  PolynomialFit fit = FitOf({1, 5}, {2, 4});
  ASSERT_TRUE(fit.Fit(0));
  for (const double x : {-kInfinity, -1e300, 0.0, 3.0, kInfinity, double{NAN}})
    EXPECT_EQ(fit.Evaluate(x), 3) << x;
}

}  // namespace
}  // namespace zrml
