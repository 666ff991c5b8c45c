#include "spectrum/polynomial_fit.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>

namespace zrml {
namespace {

// Replaces a pivot of exactly 0 to keep the division finite.
constexpr double kTinyPivot = 1e-300;

// A square row-major matrix.
class Matrix {
 public:
  Matrix(std::size_t size, std::span<double> elements) : size_(size), elements_(elements) {}

  std::size_t Size() const { return size_; }
  double& operator()(std::size_t row, std::size_t column) const { return elements_[row * size_ + column]; }

  // Element (row, column) less the products of the first `terms` factors of its row and column.
  double Reduced(std::size_t row, std::size_t column, std::size_t terms) const {
    double sum = (*this)(row, column);
    for (std::size_t k = 0; k < terms; ++k) sum -= (*this)(row, k) * (*this)(k, column);
    return sum;
  }

  void SwapRows(std::size_t one, std::size_t other) const {
    for (std::size_t k = 0; k < size_; ++k) std::swap((*this)(one, k), (*this)(other, k));
  }

 private:
  std::size_t size_;
  std::span<double> elements_;
};

// One over the largest element of each row; infinite, with a message, for a row of zeros.
std::vector<double> RowScales(const Matrix& a) {
  std::vector<double> scales(a.Size());
  for (std::size_t row = 0; row < a.Size(); ++row) {
    double largest = 0;
    for (std::size_t column = 0; column < a.Size(); ++column)
      largest = std::max(largest, std::fabs(a(row, column)));
    if (largest == 0) std::fputs("Singular matrix in routine LUDecomposition", stdout);
    scales[row] = 1 / largest;
  }
  return scales;
}

// Reduces column `j` and returns the row of its pivot: the first one with the largest scaled value.
std::size_t ReduceColumn(const Matrix& a, std::size_t j, const std::vector<double>& scales) {
  for (std::size_t row = 0; row < j; ++row) a(row, j) = a.Reduced(row, j, row);
  std::size_t pivot = j;
  double largest = 0;
  for (std::size_t row = j; row < a.Size(); ++row) {
    a(row, j) = a.Reduced(row, j, j);
    const double scaled = scales[row] * std::fabs(a(row, j));
    if (scaled > largest) {
      largest = scaled;
      pivot = row;
    }
  }
  return pivot;
}

// Crout's method with implicit partial pivoting. Gives the row that each column's pivot came from.
std::vector<std::size_t> Decompose(const Matrix& a) {
  std::vector<double> scales = RowScales(a);
  std::vector<std::size_t> pivots(a.Size());
  for (std::size_t j = 0; j < a.Size(); ++j) {
    const std::size_t pivot = ReduceColumn(a, j, scales);
    if (pivot != j) {
      a.SwapRows(pivot, j);
      scales[pivot] = scales[j];
    }
    pivots[j] = pivot;
    if (a(j, j) == 0) a(j, j) = kTinyPivot;
    for (std::size_t row = j + 1; row < a.Size(); ++row) a(row, j) /= a(j, j);
  }
  return pivots;
}

void Substitute(const Matrix& a, const std::vector<std::size_t>& pivots, std::span<double> b) {
  for (std::size_t row = 0; row < a.Size(); ++row) {
    std::swap(b[row], b[pivots[row]]);
    for (std::size_t k = 0; k < row; ++k) b[row] -= a(row, k) * b[k];
  }
  for (std::size_t row = a.Size(); row-- > 0;) {
    for (std::size_t k = row + 1; k < a.Size(); ++k) b[row] -= a(row, k) * b[k];
    b[row] /= a(row, row);
  }
}

}  // namespace

PolynomialFit::PolynomialFit(int expectedPoints) {
  Reserve(static_cast<std::size_t>(std::max(expectedPoints, 0)));
}

// Reserve both before adding a point: a failed allocation must not leave an x without its y.
void PolynomialFit::Reserve(std::size_t points) {
  m_X.reserve(points);
  m_Y.reserve(points);
}

void PolynomialFit::AddPoint(double x, double y) {
  const bool isFirst = m_X.empty();
  if (m_X.size() == std::min(m_X.capacity(), m_Y.capacity())) Reserve(2 * m_X.size() + 8);
  m_X.push_back(x);
  m_Y.push_back(y);
  if (isFirst || x < m_XOrigin) m_XOrigin = x;
  if (isFirst || y < m_YOrigin) m_YOrigin = y;
}

bool PolynomialFit::Fit(int degree) {
  if (degree < 0 || degree > GetPointCount() - 1) return false;
  const auto unknowns = static_cast<std::size_t>(degree) + 1;
  std::vector<double> powerSums(2 * unknowns - 1);
  std::vector<double> solution(unknowns);
  for (std::size_t i = 0; i < m_X.size(); ++i) {
    const double u = m_X[i] - m_XOrigin;
    const double v = m_Y[i] - m_YOrigin;
    double power = 1.0;
    for (std::size_t p = 0; p < powerSums.size(); ++p) {
      powerSums[p] += power;
      if (p < unknowns) solution[p] += v * power;
      power *= u;
    }
  }
  std::vector<double> normal(unknowns * unknowns);
  for (std::size_t row = 0; row < unknowns; ++row) {
    for (std::size_t column = 0; column < unknowns; ++column)
      normal[row * unknowns + column] = powerSums[row + column];
  }
  SolveLinearSystem(static_cast<int>(unknowns), normal, solution);
  m_Coefficients.swap(solution);
  return true;
}

double PolynomialFit::Evaluate(double x) const {
  if (m_Coefficients.empty()) return 0.0;
  const double u = x - m_XOrigin;
  double value = m_Coefficients.back();
  for (std::size_t power = m_Coefficients.size() - 1; power-- > 0;) value = value * u + m_Coefficients[power];
  return value + m_YOrigin;
}

bool PolynomialFit::SolveLinearSystem(int n, std::span<double> a, std::span<double> b) {
  const Matrix matrix(static_cast<std::size_t>(std::max(n, 0)), a);
  Substitute(matrix, Decompose(matrix), b);
  return true;
}

}  // namespace zrml
