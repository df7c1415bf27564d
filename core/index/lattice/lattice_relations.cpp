#include "core/index/lattice/lattice_relations.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quarvel {

namespace {

double frobenius(const Mat3& m) {
  double s = 0.0;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) s += m(i, j) * m(i, j);
  return std::sqrt(s);
}

std::vector<Mat3> enumerateUnimodular() {
  std::vector<Mat3> result;
  for (int code = 0; code < 19683; ++code) {  // 3⁹ matrices
    Mat3 t;
    int c = code;
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j, c /= 3) t(i, j) = c % 3 - 1;
    if (std::abs(std::abs(determinant(t)) - 1.0) < 0.5) result.push_back(t);
  }
  // Fewest non-zero entries first: two reduced cells of one lattice are mostly the same basis
  // already (the identity), or the same vectors in another order or sign.
  auto nonZero = [](const Mat3& t) {
    int n = 0;
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) n += t(i, j) != 0.0;
    return n;
  };
  std::stable_sort(result.begin(), result.end(), [&](const Mat3& x, const Mat3& y) { return nonZero(x) < nonZero(y); });
  return result;
}

Mat3 reducedMetric(const CellParameters& cell, Centring centring) {
  return niggliReduce(cell, centring, kClassificationTolerance).metric;
}

}  // namespace

const std::vector<Mat3>& smallUnimodularMatrices() {
  static const std::vector<Mat3> matrices = enumerateUnimodular();
  return matrices;
}

std::vector<Mat3> hermiteNormalForms(int n) {
  std::vector<Mat3> forms;
  for (int a = 1; a <= n; ++a) {
    if (n % a) continue;
    for (int c = 1; c <= n / a; ++c) {
      if ((n / a) % c) continue;
      const int f = n / (a * c);
      for (int b = 0; b < c; ++b)
        for (int d = 0; d < f; ++d)
          for (int e = 0; e < f; ++e) {
            Mat3 h;
            h(0, 0) = a;
            h(1, 0) = b;
            h(1, 1) = c;
            h(2, 0) = d;
            h(2, 1) = e;
            h(2, 2) = f;
            forms.push_back(h);
          }
    }
  }
  return forms;
}

bool sameReducedLattice(const Mat3& g1, const Mat3& g2, double tolerance, MetricMatch match) {
  const double v1 = determinant(g1), v2 = determinant(g2);
  if (!(v1 > 0.0 && v2 > 0.0)) return false;
  // Volumes squared within about 1 %: the cheap filter before the matrix search.
  if (std::abs(v1 - v2) > 0.01 * std::max(v1, v2)) return false;
  const double whole = frobenius(g2);
  // The edges of a reduced cell are the shortest vectors of its lattice, so two reduced cells
  // of one lattice have nearly the same squared edges. Cells of similar volume are met by the
  // hundred in a search, and this rejects nearly all of them before the matrix search (with a
  // margin of four times the limit, which also covers the reduction's own tolerance).
  std::array<double, 3> d1{g1(0, 0), g1(1, 1), g1(2, 2)}, d2{g2(0, 0), g2(1, 1), g2(2, 2)};
  std::sort(d1.begin(), d1.end());
  std::sort(d2.begin(), d2.end());
  for (std::size_t i = 0; i < 3; ++i) {
    const double scale = match == MetricMatch::Whole ? std::max(frobenius(g1), whole) : std::max(d1[i], d2[i]);
    if (std::abs(d1[i] - d2[i]) > 4.0 * tolerance * scale) return false;
  }
  auto close = [&](const Mat3& d) {
    if (match == MetricMatch::Whole) return frobenius(d) <= tolerance * whole;
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j)
        if (std::abs(d(i, j)) > tolerance * std::sqrt(g2(i, i) * g2(j, j))) return false;
    return true;
  };
  for (const Mat3& t : smallUnimodularMatrices()) {
    Mat3 d = transpose(t) * g1 * t;
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) d(i, j) -= g2(i, j);
    if (close(d)) return true;
  }
  return false;
}

bool sameLattice(const CellParameters& cell1, Centring centring1, const CellParameters& cell2, Centring centring2,
                 double tolerance, MetricMatch match) {
  return sameReducedLattice(reducedMetric(cell1, centring1), reducedMetric(cell2, centring2), tolerance, match);
}

int superCellIndex(const CellParameters& cell, Centring centring, const CellParameters& candidate,
                   Centring candidateCentring, int maxIndex, double tolerance) {
  const Mat3 g1 = primitiveDirectMetric(cell, centring);
  const Mat3 g2 = reducedMetric(candidate, candidateCentring);
  const double ratio = std::sqrt(determinant(g2) / determinant(g1));
  const int n = static_cast<int>(std::lround(ratio));
  if (n < 1 || n > maxIndex || std::abs(ratio - n) > 0.01 * n) return 0;
  if (n == 1) return sameReducedLattice(niggliReduce(g1, kClassificationTolerance).metric, g2, tolerance) ? 1 : 0;
  for (const Mat3& h : hermiteNormalForms(n)) {
    const Mat3 sub = niggliReduce(transpose(h) * g1 * h, kClassificationTolerance).metric;
    if (sameReducedLattice(sub, g2, tolerance)) return n;
  }
  return 0;
}

}  // namespace quarvel
