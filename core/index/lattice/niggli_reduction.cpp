#include "core/index/lattice/niggli_reduction.h"

#include <cmath>

namespace quarvel {

namespace {

constexpr int kStepLimit = 1000;

// The Gruber six-vector (A, B, C, ξ, η, ζ) = (a², b², c², 2b·c, 2a·c, 2a·b).
struct Gruber {
  double A, B, C, xi, eta, zeta;
};

Gruber gruberOf(const Mat3& g) { return {g(0, 0), g(1, 1), g(2, 2), 2 * g(1, 2), 2 * g(0, 2), 2 * g(0, 1)}; }

Mat3 basisChange(std::initializer_list<double> rows) {
  Mat3 m;
  auto it = rows.begin();
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) m(i, j) = *it++;
  return m;
}

class Reducer {
 public:
  Reducer(const Mat3& g, double epsilon) : g0_(g), eps_(epsilon), t_(Mat3::identity()) { update(); }

  bool run(int& steps) {
    for (steps = 0; steps < kStepLimit; ++steps) {
      if (!step()) return true;
    }
    return false;
  }
  const Mat3& transform() const { return t_; }
  Mat3 metric() const { return transpose(t_) * g0_ * t_; }

 private:
  bool lt(double x, double y) const { return x < y - eps_; }
  bool gt(double x, double y) const { return lt(y, x); }
  bool eq(double x, double y) const { return !lt(x, y) && !lt(y, x); }
  int signOf(double x) const { return gt(x, 0.0) ? 1 : (lt(x, 0.0) ? -1 : 0); }

  void apply(const Mat3& n) {
    t_ = t_ * n;
    update();
  }
  void update() { s_ = gruberOf(metric()); }

  // One Křivý-Gruber step; false when the cell is reduced.
  bool step() {
    const Gruber& s = s_;
    if (gt(s.A, s.B) || (eq(s.A, s.B) && gt(std::abs(s.xi), std::abs(s.eta)))) {
      apply(basisChange({0, -1, 0, -1, 0, 0, 0, 0, -1}));  // swap a and b
      return true;
    }
    if (gt(s.B, s.C) || (eq(s.B, s.C) && gt(std::abs(s.eta), std::abs(s.zeta)))) {
      apply(basisChange({-1, 0, 0, 0, 0, -1, 0, -1, 0}));  // swap b and c
      return true;
    }
    const int l = signOf(s.xi), m = signOf(s.eta), n = signOf(s.zeta);
    if (l * m * n > 0) {
      if (l < 0 || m < 0 || n < 0) {  // make all three angles acute
        apply(basisChange({double(l), 0, 0, 0, double(m), 0, 0, 0, double(n)}));
        return true;
      }
    } else if (l > 0 || m > 0 || n > 0) {
      // make all three non-acute; a zero angle term absorbs the sign that keeps det = +1
      int i = l > 0 ? -1 : 1, j = m > 0 ? -1 : 1, k = n > 0 ? -1 : 1;
      if (i * j * k < 0) {
        if (l == 0) i = -1;
        else if (m == 0) j = -1;
        else if (n == 0) k = -1;
      }
      apply(basisChange({double(i), 0, 0, 0, double(j), 0, 0, 0, double(k)}));
      return true;
    }
    if (gt(std::abs(s.xi), s.B) || (eq(s.xi, s.B) && lt(2 * s.eta, s.zeta)) || (eq(s.xi, -s.B) && lt(s.zeta, 0))) {
      const double sg = s.xi > 0 ? 1 : -1;
      apply(basisChange({1, 0, 0, 0, 1, -sg, 0, 0, 1}));  // c -= sign(ξ) b
      return true;
    }
    if (gt(std::abs(s.eta), s.A) || (eq(s.eta, s.A) && lt(2 * s.xi, s.zeta)) || (eq(s.eta, -s.A) && lt(s.zeta, 0))) {
      const double sg = s.eta > 0 ? 1 : -1;
      apply(basisChange({1, 0, -sg, 0, 1, 0, 0, 0, 1}));  // c -= sign(η) a
      return true;
    }
    if (gt(std::abs(s.zeta), s.A) || (eq(s.zeta, s.A) && lt(2 * s.xi, s.eta)) || (eq(s.zeta, -s.A) && lt(s.eta, 0))) {
      const double sg = s.zeta > 0 ? 1 : -1;
      apply(basisChange({1, -sg, 0, 0, 1, 0, 0, 0, 1}));  // b -= sign(ζ) a
      return true;
    }
    const double sum = s.xi + s.eta + s.zeta + s.A + s.B;
    if (lt(sum, 0) || (eq(sum, 0) && gt(2 * (s.A + s.eta) + s.zeta, 0))) {
      apply(basisChange({1, 0, 1, 0, 1, 1, 0, 0, 1}));  // c += a + b
      return true;
    }
    return false;
  }

  Mat3 g0_;
  double eps_;
  Mat3 t_;
  Gruber s_{};
};

}  // namespace

NiggliReduction niggliReduce(const Mat3& directMetric, double relativeTolerance) {
  NiggliReduction result;
  const double det = determinant(directMetric);
  if (!(det > 0.0) || !isPositiveDefinite(directMetric)) return result;
  const double epsilon = relativeTolerance * std::pow(det, 1.0 / 3.0);  // V^(2/3)
  Reducer reducer(directMetric, epsilon);
  result.reduced = reducer.run(result.steps);
  result.transform = reducer.transform();
  result.metric = reducer.metric();
  if (const auto cell = cellFromDirectMetric(result.metric)) result.cell = *cell;
  return result;
}

Mat3 primitiveTransform(Centring centring) {
  constexpr double h = 0.5, t = 1.0 / 3.0;
  switch (centring) {
    case Centring::P: return Mat3::identity();
    case Centring::A: return basisChange({1, 0, 0, 0, h, h, 0, -h, h});
    case Centring::B: return basisChange({h, 0, h, 0, 1, 0, -h, 0, h});
    case Centring::C: return basisChange({h, h, 0, -h, h, 0, 0, 0, 1});
    case Centring::F: return basisChange({0, h, h, h, 0, h, h, h, 0});
    case Centring::I: return basisChange({-h, h, h, h, -h, h, h, h, -h});
    case Centring::R: return basisChange({2 * t, -t, -t, t, t, -2 * t, t, t, t});
  }
  return Mat3::identity();
}

Mat3 primitiveDirectMetric(const CellParameters& cell, Centring centring) {
  const Mat3 p = primitiveTransform(centring);
  return transpose(p) * directMetric(cell) * p;
}

NiggliReduction niggliReduce(const CellParameters& cell, Centring centring, double relativeTolerance) {
  return niggliReduce(primitiveDirectMetric(cell, centring), relativeTolerance);
}

}  // namespace quarvel
