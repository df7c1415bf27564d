#include "core/index/lattice/normal_equations.h"

#include <cmath>

namespace quarvel {

NormalEquations::NormalEquations(int parameters)
    : m_(parameters), n_(static_cast<std::size_t>(parameters * parameters), 0.0),
      rhs_(static_cast<std::size_t>(parameters), 0.0) {}

void NormalEquations::add(std::span<const double> row, double y, double weight) {
  for (int i = 0; i < m_; ++i) {
    const double wi = weight * row[static_cast<std::size_t>(i)];
    rhs_[static_cast<std::size_t>(i)] += wi * y;
    for (int j = 0; j < m_; ++j) n_[static_cast<std::size_t>(i * m_ + j)] += wi * row[static_cast<std::size_t>(j)];
  }
}

std::optional<NormalEquations::Solution> NormalEquations::solve() const {
  const auto m = static_cast<std::size_t>(m_);
  auto at = [m](std::vector<double>& v, std::size_t i, std::size_t j) -> double& { return v[i * m + j]; };

  std::vector<double> scale(m);
  for (std::size_t i = 0; i < m; ++i) {
    const double d = n_[i * m + i];
    if (!(d > 0.0)) return std::nullopt;
    scale[i] = 1.0 / std::sqrt(d);
  }
  std::vector<double> a(m * m);
  for (std::size_t i = 0; i < m; ++i)
    for (std::size_t j = 0; j < m; ++j) a[i * m + j] = n_[i * m + j] * scale[i] * scale[j];

  // Cholesky: a = L Lᵀ, L kept in the lower triangle. A pivot below this relative size means
  // the design does not determine the parameters.
  constexpr double kSingularPivot = 1e-12;
  for (std::size_t j = 0; j < m; ++j) {
    double d = at(a, j, j);
    for (std::size_t k = 0; k < j; ++k) d -= at(a, j, k) * at(a, j, k);
    if (!(d > kSingularPivot)) return std::nullopt;
    at(a, j, j) = std::sqrt(d);
    for (std::size_t i = j + 1; i < m; ++i) {
      double s = at(a, i, j);
      for (std::size_t k = 0; k < j; ++k) s -= at(a, i, k) * at(a, j, k);
      at(a, i, j) = s / at(a, j, j);
    }
  }
  auto solveWith = [&](std::vector<double> b) {
    for (std::size_t i = 0; i < m; ++i) {
      for (std::size_t k = 0; k < i; ++k) b[i] -= at(a, i, k) * b[k];
      b[i] /= at(a, i, i);
    }
    for (std::size_t i = m; i-- > 0;) {
      for (std::size_t k = i + 1; k < m; ++k) b[i] -= at(a, k, i) * b[k];
      b[i] /= at(a, i, i);
    }
    return b;
  };

  Solution solution;
  std::vector<double> b(m);
  for (std::size_t i = 0; i < m; ++i) b[i] = rhs_[i] * scale[i];
  solution.p = solveWith(b);
  for (std::size_t i = 0; i < m; ++i) solution.p[i] *= scale[i];
  solution.inverse.assign(m * m, 0.0);
  for (std::size_t j = 0; j < m; ++j) {
    std::vector<double> e(m, 0.0);
    e[j] = 1.0;
    const std::vector<double> column = solveWith(e);
    for (std::size_t i = 0; i < m; ++i) solution.inverse[i * m + j] = column[i] * scale[i] * scale[j];
  }
  return solution;
}

}  // namespace quarvel
