#include "core/fit/linear_algebra.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quarvel {

int luDecompose(SquareMatrix<float>& a, std::vector<int>& permutation, int& parity) {
  const int n = a.n;
  constexpr float kTiny = 1.0e-20f;
  permutation.assign(static_cast<std::size_t>(n), 0);
  parity = 1;
  // Implicit scaling: 1 / largest magnitude of each row.
  std::vector<float> scale(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    float big = 0.0f;
    const float* r = a.row(i);
    for (int j = 0; j < n; ++j) big = std::max(big, std::fabs(r[j]));
    if (big == 0.0f) return -1;
    scale[static_cast<std::size_t>(i)] = 1.0f / big;
  }
  for (int k = 0; k < n; ++k) {
    int pivot = k;
    float best = -1.0f;
    for (int i = k; i < n; ++i) {
      const float merit = scale[static_cast<std::size_t>(i)] * std::fabs(a(i, k));
      if (merit > best) {
        best = merit;
        pivot = i;
      }
    }
    if (pivot != k) {
      std::swap_ranges(a.row(k), a.row(k) + n, a.row(pivot));
      std::swap(scale[static_cast<std::size_t>(k)], scale[static_cast<std::size_t>(pivot)]);
      parity = -parity;
    }
    permutation[static_cast<std::size_t>(k)] = pivot;
    if (a(k, k) == 0.0f) a(k, k) = kTiny;
    const float inversePivot = 1.0f / a(k, k);
    const float* pivotRow = a.row(k);
    for (int i = k + 1; i < n; ++i) {
      float* r = a.row(i);
      const float factor = r[k] * inversePivot;
      r[k] = factor;
      if (factor == 0.0f) continue;
      for (int j = k + 1; j < n; ++j) r[j] -= factor * pivotRow[j];
    }
  }
  return 0;
}

void luBackSubstitute(const SquareMatrix<float>& lu, const std::vector<int>& permutation,
                      std::span<float> b) {
  const int n = lu.n;
  for (int i = 0; i < n; ++i) std::swap(b[static_cast<std::size_t>(i)], b[static_cast<std::size_t>(permutation[static_cast<std::size_t>(i)])]);
  for (int i = 0; i < n; ++i) {
    float sum = b[static_cast<std::size_t>(i)];
    const float* r = lu.row(i);
    for (int j = 0; j < i; ++j) sum -= r[j] * b[static_cast<std::size_t>(j)];
    b[static_cast<std::size_t>(i)] = sum;
  }
  for (int i = n - 1; i >= 0; --i) {
    float sum = b[static_cast<std::size_t>(i)];
    const float* r = lu.row(i);
    for (int j = i + 1; j < n; ++j) sum -= r[j] * b[static_cast<std::size_t>(j)];
    b[static_cast<std::size_t>(i)] = sum / r[i];
  }
}

int invertMatrix(SquareMatrix<double>& a) {
  const int n = std::min(a.n, kMaxLeastSquaresOrder);
  if (n <= 0) return -1;
  SquareMatrix<float> lu(n);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) lu(i, j) = static_cast<float>(a(i, j));
  std::vector<int> permutation;
  int parity = 1;
  if (luDecompose(lu, permutation, parity) != 0) return -1;

  // Solve for all columns of the identity at once, row by row, so the inner loops run over
  // contiguous memory. Each element sees the same operations in the same order as a
  // column-by-column back-substitution.
  SquareMatrix<float> x(n);
  for (int i = 0; i < n; ++i) x(i, i) = 1.0f;
  for (int i = 0; i < n; ++i) {
    const int p = permutation[static_cast<std::size_t>(i)];
    if (p != i) std::swap_ranges(x.row(i), x.row(i) + n, x.row(p));
  }
  for (int i = 0; i < n; ++i) {
    float* xi = x.row(i);
    const float* li = lu.row(i);
    for (int j = 0; j < i; ++j) {
      const float f = li[j];
      if (f == 0.0f) continue;
      const float* xj = x.row(j);
      for (int c = 0; c < n; ++c) xi[c] -= f * xj[c];
    }
  }
  for (int i = n - 1; i >= 0; --i) {
    float* xi = x.row(i);
    const float* ui = lu.row(i);
    for (int j = i + 1; j < n; ++j) {
      const float f = ui[j];
      if (f == 0.0f) continue;
      const float* xj = x.row(j);
      for (int c = 0; c < n; ++c) xi[c] -= f * xj[c];
    }
    const float pivot = ui[i];
    for (int c = 0; c < n; ++c) xi[c] /= pivot;
  }
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) {
      const float v = x(i, j);
      if (!std::isfinite(v)) return -1;
      a(i, j) = v;
    }
  return 0;
}

std::optional<std::vector<double>> fitPolynomial(std::span<const double> x,
                                                 std::span<const double> y, int degree) {
  const int m = degree + 1;
  if (degree < 0 || x.size() != y.size() || x.size() < static_cast<std::size_t>(m)) return std::nullopt;
  SquareMatrix<double> normal(m);
  std::vector<double> rhs(static_cast<std::size_t>(m), 0.0);
  std::vector<double> powers(static_cast<std::size_t>(2 * m - 1));
  for (std::size_t p = 0; p < x.size(); ++p) {
    double v = 1.0;
    for (auto& pw : powers) { pw = v; v *= x[p]; }
    for (int i = 0; i < m; ++i) {
      rhs[static_cast<std::size_t>(i)] += powers[static_cast<std::size_t>(i)] * y[p];
      for (int j = 0; j < m; ++j) normal(i, j) += powers[static_cast<std::size_t>(i + j)];
    }
  }
  if (invertMatrix(normal) != 0) return std::nullopt;
  std::vector<double> coeff(static_cast<std::size_t>(m), 0.0);
  for (int i = 0; i < m; ++i)
    for (int j = 0; j < m; ++j) coeff[static_cast<std::size_t>(i)] += normal(i, j) * rhs[static_cast<std::size_t>(j)];
  return coeff;
}

namespace {

constexpr double kDegree = 57.29577951308232;

struct Metric {
  double g[3][3];
};

Metric directMetric(const CellParameters& c) {
  const double ca = std::cos(c.alpha / kDegree), cb = std::cos(c.beta / kDegree), cg = std::cos(c.gamma / kDegree);
  return {{{c.a * c.a, c.a * c.b * cg, c.a * c.c * cb},
           {c.a * c.b * cg, c.b * c.b, c.b * c.c * ca},
           {c.a * c.c * cb, c.b * c.c * ca, c.c * c.c}}};
}

// G⁻¹ h (the reciprocal-space vector in direct components); false for a singular metric.
bool solveMetric(const Metric& m, const double h[3], double out[3]) {
  const auto& g = m.g;
  const double det = g[0][0] * (g[1][1] * g[2][2] - g[1][2] * g[2][1]) -
                     g[0][1] * (g[1][0] * g[2][2] - g[1][2] * g[2][0]) +
                     g[0][2] * (g[1][0] * g[2][1] - g[1][1] * g[2][0]);
  if (!(det > 0.0)) return false;
  double inv[3][3];
  inv[0][0] = (g[1][1] * g[2][2] - g[1][2] * g[2][1]) / det;
  inv[0][1] = (g[0][2] * g[2][1] - g[0][1] * g[2][2]) / det;
  inv[0][2] = (g[0][1] * g[1][2] - g[0][2] * g[1][1]) / det;
  inv[1][0] = inv[0][1];
  inv[1][1] = (g[0][0] * g[2][2] - g[0][2] * g[2][0]) / det;
  inv[1][2] = (g[0][2] * g[1][0] - g[0][0] * g[1][2]) / det;
  inv[2][0] = inv[0][2];
  inv[2][1] = inv[1][2];
  inv[2][2] = (g[0][0] * g[1][1] - g[0][1] * g[1][0]) / det;
  for (int i = 0; i < 3; ++i) out[i] = inv[i][0] * h[0] + inv[i][1] * h[1] + inv[i][2] * h[2];
  return true;
}

}  // namespace

double reciprocalLength(int h, int k, int l, const CellParameters& cell) {
  const double hv[3] = {double(h), double(k), double(l)};
  double u[3];
  if (!solveMetric(directMetric(cell), hv, u)) return std::numeric_limits<double>::quiet_NaN();
  const double q = hv[0] * u[0] + hv[1] * u[1] + hv[2] * u[2];
  return q > 0.0 ? std::sqrt(q) : std::numeric_limits<double>::quiet_NaN();
}

std::array<double, 6> positionDerivatives(int h, int k, int l, const CellParameters& cell,
                                          double wavelength) {
  std::array<double, 6> out;
  out.fill(std::numeric_limits<double>::quiet_NaN());
  const double hv[3] = {double(h), double(k), double(l)};
  const Metric m = directMetric(cell);
  double u[3];
  if (!solveMetric(m, hv, u)) return out;
  const double q = hv[0] * u[0] + hv[1] * u[1] + hv[2] * u[2];  // 1/d²
  const double dStar = std::sqrt(q);
  const double sinTheta = 0.5 * wavelength * dStar;
  if (!(q > 0.0) || sinTheta >= 1.0) return out;

  // q = hᵀ G⁻¹ h, so dq/dp = -uᵀ (dG/dp) u with u = G⁻¹ h.
  const double a = cell.a, b = cell.b, c = cell.c;
  const double al = cell.alpha / kDegree, be = cell.beta / kDegree, ga = cell.gamma / kDegree;
  const double ca = std::cos(al), cb = std::cos(be), cg = std::cos(ga);
  const double sa = std::sin(al), sb = std::sin(be), sg = std::sin(ga);
  auto quad = [&](const double d[3][3]) {
    double s = 0.0;
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) s += u[i] * d[i][j] * u[j];
    return -s;
  };
  const double dA[3][3] = {{2 * a, b * cg, c * cb}, {b * cg, 0, 0}, {c * cb, 0, 0}};
  const double dB[3][3] = {{0, a * cg, 0}, {a * cg, 2 * b, c * ca}, {0, c * ca, 0}};
  const double dC[3][3] = {{0, 0, a * cb}, {0, 0, b * ca}, {a * cb, b * ca, 2 * c}};
  const double dAl[3][3] = {{0, 0, 0}, {0, 0, -b * c * sa}, {0, -b * c * sa, 0}};
  const double dBe[3][3] = {{0, 0, -a * c * sb}, {0, 0, 0}, {-a * c * sb, 0, 0}};
  const double dGa[3][3] = {{0, -a * b * sg, 0}, {-a * b * sg, 0, 0}, {0, 0, 0}};
  const double dq[6] = {quad(dA), quad(dB), quad(dC), quad(dAl), quad(dBe), quad(dGa)};

  // 2θ = 2 asin(λ d*/2) in degrees; d(2θ)/dq = 2 · (λ/2) / cos θ · 1/(2 d*) · deg.
  const double cosTheta = std::sqrt(1.0 - sinTheta * sinTheta);
  const double dTwoThetaDq = wavelength / (2.0 * dStar * cosTheta) * kDegree;
  for (int i = 0; i < 6; ++i) out[static_cast<std::size_t>(i)] = dq[i] * dTwoThetaDq;
  for (int i = 3; i < 6; ++i) out[static_cast<std::size_t>(i)] /= kDegree;  // per degree of angle
  return out;
}

}  // namespace quarvel
