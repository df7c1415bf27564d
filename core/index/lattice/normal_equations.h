// Weighted linear least squares for the few parameters of a metric refinement, in double:
// the normal matrix is scaled to a unit diagonal before the Cholesky factorisation because the
// columns of a monoclinic or triclinic design differ by orders of magnitude.
#pragma once

#include <optional>
#include <span>
#include <vector>

namespace quarvel {

class NormalEquations {
 public:
  explicit NormalEquations(int parameters);

  // Adds one observation y ≈ row · p with weight w.
  void add(std::span<const double> row, double y, double weight);

  struct Solution {
    std::vector<double> p;
    std::vector<double> inverse;  // (XᵀWX)⁻¹, row-major, unscaled
  };
  // nullopt when the normal matrix is singular (not positive definite after scaling).
  std::optional<Solution> solve() const;

  int parameters() const { return m_; }

 private:
  int m_;
  std::vector<double> n_;    // XᵀWX, row-major
  std::vector<double> rhs_;  // XᵀWy
};

}  // namespace quarvel
