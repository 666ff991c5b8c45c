// A polynomial through points by least squares: normal equations, solved by LU decomposition.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace zrml {

class PolynomialFit {
 public:
  /// Reserves room for that many points.
  explicit PolynomialFit(int expectedPoints);

  void AddPoint(double x, double y);
  int GetPointCount() const { return static_cast<int>(m_X.size()); }

  /// False, with the coefficients unchanged, when there are not more points than `degree` or it is negative.
  bool Fit(int degree);

  /// The fitted polynomial at x; 0.0 before the first fit.
  double Evaluate(double x) const;

  /// Solves a c = b for the n x n row-major matrix `a` of n * n elements and `b` of n; `b` becomes c and `a`
  /// its decomposition. Always true: a row of zeros prints "Singular matrix in routine LUDecomposition" to
  /// standard output, and the solution is then meaningless.
  static bool SolveLinearSystem(int n, std::span<double> a, std::span<double> b);

 private:
  void Reserve(std::size_t points);

  std::vector<double> m_X;
  std::vector<double> m_Y;
  std::vector<double> m_Coefficients;  // lowest power first, of (x - m_XOrigin)
  double m_XOrigin = 0;                // the smallest x and y: shifted values are never negative
  double m_YOrigin = 0;
};

}  // namespace zrml
