#include "core/index/lattice/calculated_lines.h"

#include <algorithm>
#include <cmath>

namespace quarvel {

std::array<int, 3> indexBounds(const ReciprocalMetric& metric, double qMax) {
  const Mat3 g = inverse(metric.tensor());
  const double root = std::sqrt(std::max(qMax, 0.0)) * (1.0 + 1e-12);
  return {static_cast<int>(std::floor(std::sqrt(g(0, 0)) * root)),
          static_cast<int>(std::floor(std::sqrt(g(1, 1)) * root)),
          static_cast<int>(std::floor(std::sqrt(g(2, 2)) * root))};
}

namespace {

// Range of l with C l² + b l + c0 ≤ target (empty when lo > hi).
bool lRange(double C, double b, double c0, double target, int& lo, int& hi) {
  const double disc = b * b - 4.0 * C * (c0 - target);
  if (disc < 0.0) return false;
  const double s = std::sqrt(disc);
  lo = static_cast<int>(std::ceil((-b - s) / (2.0 * C) - 1e-9));
  hi = static_cast<int>(std::floor((-b + s) / (2.0 * C) + 1e-9));
  return lo <= hi;
}

}  // namespace

// The least value of a row (h, k) over real l is a quadratic in k, the form with l eliminated:
// alpha k² + beta h k + gamma h², positive for a positive-definite form.
RowMinimum::RowMinimum(const ReciprocalMetric& m)
    : alpha(m.B - m.D * m.D / (4.0 * m.C)),
      beta(m.F - m.D * m.E / (2.0 * m.C)),
      gamma(m.A - m.E * m.E / (4.0 * m.C)) {}

// Rows beyond the roots hold no line up to `target`. The range is widened by a hair: an extra
// row only costs a look, a missing one would lose a line.
bool RowMinimum::rowsReaching(int h, double target, int& lo, int& hi) const {
  const double b = h * beta;
  const double c = h * h * gamma - target;
  const double disc = b * b - 4.0 * alpha * c;
  if (disc < 0.0 || !(alpha > 0.0)) return false;
  const double s = std::sqrt(disc);
  lo = static_cast<int>(std::ceil((-b - s) / (2.0 * alpha) - 1e-6));
  hi = static_cast<int>(std::floor((-b + s) / (2.0 * alpha) + 1e-6));
  return lo <= hi;
}

void calculatedLines(const ReciprocalMetric& m, Centring centring, double qMax, std::vector<CalculatedLine>& out) {
  out.clear();
  if (!(qMax > 0.0) || !isPositiveDefinite(m)) return;
  const auto [hMax, kMax, lMax] = indexBounds(m, qMax);
  const double limit = qMax * (1.0 + 1e-10);  // a line exactly at the limit is kept
  const RowMinimum rows(m);
  for (int h = 0; h <= hMax; ++h) {
    int kLo = 0, kHi = 0;
    if (!rows.rowsReaching(h, limit, kLo, kHi)) continue;
    for (int k = std::max(kLo, h == 0 ? 0 : -kMax); k <= std::min(kHi, kMax); ++k) {
      const double c0 = m.A * h * h + m.B * k * k + m.F * h * k;
      const double b = m.D * k + m.E * h;
      int lo = 0, hi = 0;
      if (!lRange(m.C, b, c0, limit, lo, hi)) continue;
      lo = std::max(lo, -lMax);
      hi = std::min(hi, lMax);
      if (h == 0 && k == 0) lo = std::max(lo, 1);
      for (int l = lo; l <= hi; ++l) {
        if (!isAllowedReflection(centring, h, k, l)) continue;
        const double q = c0 + l * (b + m.C * l);
        if (q > 0.0 && q <= limit) out.push_back({q, h, k, l});
      }
    }
  }
  std::sort(out.begin(), out.end(), [](const CalculatedLine& x, const CalculatedLine& y) { return x.q < y.q; });
}

std::vector<CalculatedLine> calculatedLines(const ReciprocalMetric& metric, Centring centring, double qMax) {
  std::vector<CalculatedLine> out;
  calculatedLines(metric, centring, qMax, out);
  return out;
}

int countDistinct(std::span<const CalculatedLine> sorted, double qLimit) {
  int count = 0;
  double last = -1.0;
  for (const CalculatedLine& line : sorted) {
    if (line.q > qLimit) break;
    if (count == 0 || line.q - last > kDistinctRelativeGap * line.q) {
      ++count;
      last = line.q;
    }
  }
  return count;
}

std::vector<double> distinctValues(std::span<const CalculatedLine> sorted) {
  std::vector<double> values;
  for (const CalculatedLine& line : sorted)
    if (values.empty() || line.q - values.back() > kDistinctRelativeGap * line.q) values.push_back(line.q);
  return values;
}

NearestLineFinder::NearestLineFinder(const ReciprocalMetric& metric, Centring centring)
    : m_(metric),
      rows_(metric),
      centring_(centring),
      // The obverse rhombohedral condition -h + k + l = 3n is not kept by a change of sign of
      // one index (its lines are still all found on hexagonal axes, through equivalent indices).
      kMirror_(metric.D == 0.0 && metric.F == 0.0 && centring != Centring::R),
      lMirror_(metric.D == 0.0 && metric.E == 0.0 && centring != Centring::R) {
  const Mat3 g = inverse(metric.tensor());
  for (int i = 0; i < 3; ++i) axisReach_[static_cast<std::size_t>(i)] = std::sqrt(g(i, i));
}

std::optional<CalculatedLine> NearestLineFinder::nearest(double q, double tolerance) const {
  const ReciprocalMetric& m = m_;
  const double root = std::sqrt(std::max(q + tolerance, 0.0)) * (1.0 + 1e-12);
  const int hMax = static_cast<int>(std::floor(axisReach_[0] * root));
  const int kMax = static_cast<int>(std::floor(axisReach_[1] * root));
  const int lMax = static_cast<int>(std::floor(axisReach_[2] * root));
  std::optional<CalculatedLine> best;
  double bestMiss = tolerance;
  auto consider = [&](int h, int k, int l, double c0, double b) {
    if (l < -lMax || l > lMax || (h == 0 && k == 0 && l == 0)) return;
    const double miss = std::abs(c0 + l * (b + m.C * l) - q);
    if (miss <= bestMiss && isAllowedReflection(centring_, h, k, l)) {
      bestMiss = miss;
      best = CalculatedLine{c0 + l * (b + m.C * l), h, k, l};
    }
  };
  for (int h = 0; h <= hMax; ++h) {
    int kLo = 0, kHi = 0;
    if (!rows_.rowsReaching(h, q + tolerance, kLo, kHi)) continue;
    kLo = std::max(kLo, (h == 0 || kMirror_) ? 0 : -kMax);
    kHi = std::min(kHi, kMax);
    for (int k = kLo; k <= kHi; ++k) {
      const double c0 = m.A * h * h + m.B * k * k + m.F * h * k;
      const double b = m.D * k + m.E * h;
      const double disc = b * b - 4.0 * m.C * (c0 - q);
      if (disc < 0.0) {
        // q lies below this row's minimum; only the index at the vertex can come close.
        const int l = static_cast<int>(std::lround(-b / (2.0 * m.C)));
        consider(h, k, l, c0, b);
        continue;
      }
      const double s = std::sqrt(disc);
      if (!lMirror_) {
        const int below = static_cast<int>(std::floor((-b - s) / (2.0 * m.C)));
        consider(h, k, below, c0, b);
        consider(h, k, below + 1, c0, b);
      }
      const int below = static_cast<int>(std::floor((-b + s) / (2.0 * m.C)));
      consider(h, k, below, c0, b);
      consider(h, k, below + 1, c0, b);
    }
  }
  return best;
}

std::optional<CalculatedLine> nearestLineWithin(const ReciprocalMetric& metric, Centring centring, double q,
                                                double tolerance) {
  return NearestLineFinder(metric, centring).nearest(q, tolerance);
}

}  // namespace quarvel
