#include "core/process/chebyshev_fit.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/fit/linear_algebra.h"
#include "core/pattern/pattern_store.h"

namespace quarvel {
namespace {

using Basis = std::array<double, kMaxChebyshevOrder + 1>;

// T0(t) .. T(order)(t) by the three-term recurrence.
void chebyshevBasis(double t, int order, Basis& out) {
  out[0] = 1.0;
  if (order >= 1) out[1] = t;
  for (int k = 2; k <= order; ++k) out[static_cast<std::size_t>(k)] = 2.0 * t * out[static_cast<std::size_t>(k - 1)] - out[static_cast<std::size_t>(k - 2)];
}

struct RangeMap {
  double centre = 0.0;
  double halfWidth = 1.0;
  double operator()(double x) const { return (x - centre) / halfWidth; }
};

RangeMap mapOf(const PatternSlot& slot) {
  const double first = slot.x(0);
  const double last = slot.x(slot.count - 1);
  RangeMap m;
  m.centre = 0.5 * (first + last);
  m.halfWidth = last > first ? 0.5 * (last - first) : 1.0;
  return m;
}

bool isExcluded(float x, const std::vector<ExcludedRegion>& regions) {
  return std::any_of(regions.begin(), regions.end(), [x](const ExcludedRegion& r) { return r.low < x && x < r.high; });
}

double weightOf(double y) { return 1.0 / std::max(y, 1.0); }

}  // namespace

int clampChebyshevOrder(int order) { return std::clamp(order, 0, kMaxChebyshevOrder); }

std::optional<ChebyshevFitResult> fitChebyshev(const PatternSlot& slot, int order,
                                               const std::vector<ExcludedRegion>& excluded) {
  order = clampChebyshevOrder(order);
  const int npar = order + 1;
  if (slot.count <= 0) return std::nullopt;
  const RangeMap map = mapOf(slot);

  // Normal equations, upper triangle accumulated, then mirrored.
  SquareMatrix<double> normal(npar);
  std::vector<double> rhs(static_cast<std::size_t>(npar), 0.0);
  Basis t{};
  int used = 0;
  for (int i = 0; i < slot.count; ++i) {
    const float x = slot.x(i);
    if (isExcluded(x, excluded)) continue;
    const double y = slot.y[static_cast<std::size_t>(i)];
    const double w = weightOf(y);
    chebyshevBasis(map(x), order, t);
    for (int a = 0; a < npar; ++a) {
      const double wa = w * t[static_cast<std::size_t>(a)];
      rhs[static_cast<std::size_t>(a)] += wa * y;
      double* row = normal.row(a);
      for (int b = a; b < npar; ++b) row[b] += wa * t[static_cast<std::size_t>(b)];
    }
    ++used;
  }
  if (used < npar) return std::nullopt;
  for (int a = 0; a < npar; ++a)
    for (int b = 0; b < a; ++b) normal(a, b) = normal(b, a);
  if (invertMatrix(normal) != 0) return std::nullopt;

  ChebyshevFitResult result;
  result.npar = npar;
  result.pointsUsed = used;
  result.coefficients.assign(static_cast<std::size_t>(npar), 0.0);
  for (int a = 0; a < npar; ++a)
    for (int b = 0; b < npar; ++b)
      result.coefficients[static_cast<std::size_t>(a)] += normal(a, b) * rhs[static_cast<std::size_t>(b)];

  result.curve.resize(static_cast<std::size_t>(slot.count));
  double sumAbsDiff = 0.0, sumAbs = 0.0, sumWDiff2 = 0.0, sumWY2 = 0.0;
  for (int i = 0; i < slot.count; ++i) {
    const float x = slot.x(i);
    chebyshevBasis(map(x), order, t);
    double value = 0.0;
    for (int a = 0; a < npar; ++a) value += result.coefficients[static_cast<std::size_t>(a)] * t[static_cast<std::size_t>(a)];
    if (!std::isfinite(value)) return std::nullopt;
    result.curve[static_cast<std::size_t>(i)] = static_cast<float>(value);
    if (isExcluded(x, excluded)) continue;
    const double y = slot.y[static_cast<std::size_t>(i)];
    const double w = weightOf(y);
    const double diff = y - value;
    sumAbsDiff += std::fabs(diff);
    sumAbs += std::fabs(y);
    sumWDiff2 += w * diff * diff;
    sumWY2 += w * y * y;
  }
  result.rp = sumAbs > 0.0 ? 100.0 * sumAbsDiff / sumAbs : 0.0;
  result.rwp = sumWY2 > 0.0 ? 100.0 * std::sqrt(sumWDiff2 / sumWY2) : 0.0;
  result.gof = used > npar ? std::sqrt(sumWDiff2 / static_cast<double>(used - npar)) : 0.0;
  return result;
}

}  // namespace quarvel
