#include "core/index/lattice/reduced_form.h"

#include <cmath>

namespace quarvel {

namespace {

class Matcher {
 public:
  Matcher(const Mat3& g, double relativeTolerance)
      : A(g(0, 0)), B(g(1, 1)), C(g(2, 2)), D(g(1, 2)), E(g(0, 2)), F(g(0, 1)),
        eps_(relativeTolerance * (A + B + C) / 3.0) {}

  bool eq(double x, double y) const { return std::abs(x - y) <= eps_; }
  bool zero(double x) const { return eq(x, 0.0); }
  // Type I: all three products positive; type II: none positive.
  bool typeI() const { return D > eps_ && E > eps_ && F > eps_; }
  // 2|D + E + F| = A + B, the condition of the body-centred characters.
  bool sumCondition() const { return eq(2.0 * std::abs(D + E + F), A + B); }

  const double A, B, C, D, E, F;

 private:
  double eps_;
};

int allEqualEdges(const Matcher& m) {
  if (m.typeI()) {
    if (m.eq(m.D, m.A / 2) && m.eq(m.E, m.A / 2) && m.eq(m.F, m.A / 2)) return 1;
    if (m.eq(m.D, m.E) && m.eq(m.E, m.F)) return 2;
    return 0;
  }
  if (m.zero(m.D) && m.zero(m.E) && m.zero(m.F)) return 3;
  if (m.eq(m.D, -m.A / 3) && m.eq(m.E, -m.A / 3) && m.eq(m.F, -m.A / 3)) return 5;
  if (m.eq(m.D, m.E) && m.eq(m.E, m.F)) return 4;
  if (m.sumCondition()) {
    if (m.eq(m.D, m.E)) return 6;
    if (m.eq(m.E, m.F)) return 7;
    return 8;
  }
  return 0;
}

int firstTwoEdgesEqual(const Matcher& m) {
  if (m.typeI()) {
    if (m.eq(m.D, m.A / 2) && m.eq(m.E, m.A / 2) && m.eq(m.F, m.A / 2)) return 9;
    if (m.eq(m.D, m.E)) return 10;
    return 0;
  }
  if (m.zero(m.D) && m.zero(m.E)) {
    if (m.zero(m.F)) return 11;
    if (m.eq(m.F, -m.A / 2)) return 12;
    return 13;
  }
  if (m.eq(m.D, -m.A / 2) && m.eq(m.E, -m.A / 2) && m.zero(m.F)) return 15;
  if (m.eq(m.D, m.E)) return m.sumCondition() ? 16 : 14;
  if (m.sumCondition()) return 17;
  return 0;
}

int lastTwoEdgesEqual(const Matcher& m) {
  if (m.typeI()) {
    if (m.eq(m.E, m.A / 2) && m.eq(m.F, m.A / 2)) return m.eq(m.D, m.A / 4) ? 18 : 19;
    if (m.eq(m.E, m.F)) return 20;
    return 0;
  }
  if (m.zero(m.E) && m.zero(m.F)) {
    if (m.zero(m.D)) return 21;
    if (m.eq(m.D, -m.B / 2)) return 22;
    return 23;
  }
  if (m.eq(m.E, -m.A / 3) && m.eq(m.F, -m.A / 3) && m.sumCondition()) return 24;
  if (m.eq(m.E, m.F)) return 25;
  return 0;
}

int noEqualEdges(const Matcher& m) {
  if (m.typeI()) {
    if (m.eq(m.E, m.A / 2) && m.eq(m.F, m.A / 2)) return m.eq(m.D, m.A / 4) ? 26 : 27;
    if (m.eq(m.E, m.A / 2) && m.eq(m.F, 2 * m.D)) return 28;
    if (m.eq(m.F, m.A / 2) && m.eq(m.E, 2 * m.D)) return 29;
    if (m.eq(m.D, m.B / 2) && m.eq(m.F, 2 * m.E)) return 30;
    return 31;
  }
  const bool d0 = m.zero(m.D), e0 = m.zero(m.E), f0 = m.zero(m.F);
  const bool dHalfB = m.eq(m.D, -m.B / 2), eHalfA = m.eq(m.E, -m.A / 2), fHalfA = m.eq(m.F, -m.A / 2);
  if (d0 && e0 && f0) return 32;
  if (dHalfB && e0 && f0) return 40;
  if (d0 && eHalfA && f0) return 36;
  if (d0 && e0 && fHalfA) return 38;
  if (dHalfB && eHalfA && f0) return 42;
  if (e0 && f0) return 35;
  if (d0 && f0) return 33;
  if (d0 && e0) return 34;
  if (dHalfB && f0) return 41;
  if (eHalfA && f0) return 37;
  if (fHalfA && e0) return 39;
  if (m.sumCondition() && m.eq(std::abs(2 * m.D + m.F), m.B)) return 43;
  return 44;
}

constexpr std::string_view kBravais[45] = {
    "",   "cF", "hR", "cP", "hR", "cI", "tI", "tI", "oI", "hR", "mC", "tP", "hP", "oC", "mC",
    "tI", "oF", "mI", "tI", "oI", "mC", "tP", "hP", "oC", "hR", "mC", "oF", "mI", "mC", "mC",
    "mC", "aP", "oP", "mP", "mP", "mP", "oC", "mC", "oC", "mC", "oC", "mC", "oI", "mI", "aP"};

}  // namespace

ReducedForm reducedForm(const Mat3& reducedMetric, double relativeTolerance) {
  const Matcher m(reducedMetric, relativeTolerance);
  int number = 0;
  // The most special pattern of edge equalities first; a cell that fits none of its forms
  // falls back to the next more general group.
  if (m.eq(m.A, m.B) && m.eq(m.B, m.C)) number = allEqualEdges(m);
  if (number == 0 && m.eq(m.A, m.B)) number = firstTwoEdgesEqual(m);
  if (number == 0 && m.eq(m.B, m.C)) number = lastTwoEdgesEqual(m);
  if (number == 0) number = noEqualEdges(m);
  return {number, kBravais[number]};
}

}  // namespace quarvel
