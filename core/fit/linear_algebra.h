// Linear algebra shared by the profile fit, the Chebyshev background, the unit-cell
// refinement and the analysis plots. The factorisation works in single precision on purpose:
// the fit builds its normal matrix in double, and inverting it through a float LU with scaled
// partial pivoting is the behaviour every caller is tuned to.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <vector>

namespace quarvel {

inline constexpr int kMaxLeastSquaresOrder = 2030;

// Dense square matrix, row-major.
template <typename T>
struct SquareMatrix {
  int n = 0;
  std::vector<T> a;

  SquareMatrix() = default;
  explicit SquareMatrix(int order) : n(order), a(static_cast<std::size_t>(order) * static_cast<std::size_t>(order), T(0)) {}
  T& operator()(int i, int j) { return a[static_cast<std::size_t>(i) * static_cast<std::size_t>(n) + static_cast<std::size_t>(j)]; }
  T operator()(int i, int j) const { return a[static_cast<std::size_t>(i) * static_cast<std::size_t>(n) + static_cast<std::size_t>(j)]; }
  T* row(int i) { return a.data() + static_cast<std::size_t>(i) * static_cast<std::size_t>(n); }
  const T* row(int i) const { return a.data() + static_cast<std::size_t>(i) * static_cast<std::size_t>(n); }
};

struct LuFactors {
  SquareMatrix<float> lu;   // L below the diagonal (unit diagonal implied), U on and above
  std::vector<int> permutation;  // row interchanged with row i at step i
  int parity = 1;           // +1 or -1: sign of the permutation
};

// In-place LU factorisation with scaled partial pivoting: each row is scaled by the reciprocal
// of its largest magnitude when choosing pivots. A zero pivot is replaced by 1.0e-20. Returns 0,
// or -1 when a row is all zero (the matrix is left partly factorised).
int luDecompose(SquareMatrix<float>& a, std::vector<int>& permutation, int& parity);

// Solves A x = b with the factors of luDecompose; b is replaced by x.
void luBackSubstitute(const SquareMatrix<float>& lu, const std::vector<int>& permutation,
                      std::span<float> b);

// Inverts the symmetric or general matrix `a` of order n (orders above 2030 are treated as
// 2030) through a single-precision LU. The inverse replaces `a` (in double). Returns 0, or -1
// on failure (the caller then shows "Matrix inversion error").
int invertMatrix(SquareMatrix<double>& a);

// Least-squares polynomial of `degree` through (x, y) by the normal equations and the routines
// above; coefficients c0 + c1 x + ... Returns nullopt when the system is singular or there are
// fewer points than coefficients.
std::optional<std::vector<double>> fitPolynomial(std::span<const double> x,
                                                 std::span<const double> y, int degree);

struct CellParameters {
  double a = 1.0, b = 1.0, c = 1.0;           // Å
  double alpha = 90.0, beta = 90.0, gamma = 90.0;  // degrees
};

// 1/d of reflection hkl (Å⁻¹) for a cell; NaN for an impossible cell.
double reciprocalLength(int h, int k, int l, const CellParameters& cell);

// Derivatives of the reflection's position 2θ (degrees) at wavelength λ with respect to
// a, b, c (per Å) and α, β, γ (per degree). NaN entries for a reflection beyond the
// wavelength's reach (sin θ > 1).
std::array<double, 6> positionDerivatives(int h, int k, int l, const CellParameters& cell,
                                          double wavelength);

}  // namespace quarvel
