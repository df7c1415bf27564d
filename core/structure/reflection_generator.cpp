#include "core/structure/reflection_generator.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "core/common/numbers.h"
#include "core/index/lattice/units.h"

namespace quarvel {

namespace {

bool onRhombohedralAxes(const CellParameters& c) {
  constexpr double tol = 1e-6;
  return std::abs(c.b - c.a) <= tol * c.a && std::abs(c.c - c.a) <= tol * c.a && std::abs(c.beta - c.alpha) <= tol &&
         std::abs(c.gamma - c.alpha) <= tol;
}

struct Limits {
  int h, k, l;
};

Limits indexLimits(const CellParameters& cell, double dStarMax) {
  auto limit = [dStarMax](double edge) { return static_cast<int>(std::min<long>(nint(1.5 * edge * dStarMax), kMaxIndex)); };
  return {limit(cell.a), limit(cell.b), limit(cell.c)};
}

// Calls visit(h, k, l, q) for every allowed reflection with qLow ≤ q ≤ qHigh.
template <typename Visit>
void forEachReflection(const ReciprocalMetric& m, const Limits& lim, Centring centring, double qLow, double qHigh,
                       Visit visit) {
  for (int h = -lim.h; h <= lim.h; ++h)
    for (int k = -lim.k; k <= lim.k; ++k)
      for (int l = -lim.l; l <= lim.l; ++l) {
        if (h == 0 && k == 0 && l == 0) continue;
        if (!isAllowedReflection(centring, h, k, l)) continue;
        const double q = m.q(h, k, l);
        if (q >= qLow && q <= qHigh) visit(h, k, l, q);
      }
}

}  // namespace

std::vector<GeneratedReflection> generateReflections(const CellParameters& input, int laueClass, Centring centring,
                                                     const ReflectionRange& range) {
  const CellParameters cell = applyLaueConstraints(input, laueClass);
  if (centring == Centring::R && onRhombohedralAxes(cell)) centring = Centring::P;
  const ReciprocalMetric metric = metricFromCell(cell);
  if (!isPositiveDefinite(metric)) return {};

  // The range in (sin θ/λ)² = q/4, widened by a hair so that a reflection exactly at an end stays.
  const double lambda = range.wavelength;
  double qLow = qFromTwoTheta(std::max(range.twoThetaMin, 0.0), lambda) * (1.0 - 1e-10);
  double qHigh = qFromTwoTheta(std::min(range.twoThetaMax, 180.0), lambda) * (1.0 + 1e-10);

  // Too many reflections: the upper limit of (sin θ/λ)² moves to the middle of the range.
  Limits limits = indexLimits(cell, std::sqrt(qHigh));
  for (;;) {
    long count = 0;
    forEachReflection(metric, limits, centring, qLow, qHigh, [&count](int, int, int, double) { ++count; });
    if (count <= kMaxGeneratedReflections) break;
    qHigh = 0.5 * (qLow + qHigh);
    limits = indexLimits(cell, std::sqrt(qHigh));
  }

  std::vector<GeneratedReflection> reflections;
  forEachReflection(metric, limits, centring, qLow, qHigh, [&](int h, int k, int l, double q) {
    const EquivalenceClass eq = equivalenceClass({h, k, l}, laueClass);
    if (eq.representative != Hkl{h, k, l}) return;
    reflections.push_back({h, k, l, eq.multiplicity, q, 2.0 * std::asin(std::min(1.0, 0.5 * lambda * std::sqrt(q))) / kDegree});
  });
  std::sort(reflections.begin(), reflections.end(), [](const GeneratedReflection& x, const GeneratedReflection& y) {
    return x.twoTheta < y.twoTheta || (x.twoTheta == y.twoTheta && std::tie(x.h, x.k, x.l) > std::tie(y.h, y.k, y.l));
  });
  return reflections;
}

}  // namespace quarvel
