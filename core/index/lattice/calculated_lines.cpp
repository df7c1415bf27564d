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

void calculatedLines(const ReciprocalMetric& m, Centring centring, double qMax, std::vector<CalculatedLine>& out) {
  out.clear();
  if (!(qMax > 0.0) || !isPositiveDefinite(m)) return;
  const auto [hMax, kMax, lMax] = indexBounds(m, qMax);
  const double limit = qMax * (1.0 + 1e-10);  // a line exactly at the limit is kept
  for (int h = 0; h <= hMax; ++h) {
    for (int k = (h == 0 ? 0 : -kMax); k <= kMax; ++k) {
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

std::optional<CalculatedLine> nearestLineWithin(const ReciprocalMetric& m, Centring centring, double q,
                                                double tolerance) {
  const auto bounds = indexBounds(m, q + tolerance);
  const int hMax = bounds[0], kMax = bounds[1], lMax = bounds[2];  // named: the lambda captures lMax
  std::optional<CalculatedLine> best;
  double bestMiss = tolerance;
  auto consider = [&](int h, int k, int l, double c0, double b) {
    if (l < -lMax || l > lMax || (h == 0 && k == 0 && l == 0)) return;
    const double miss = std::abs(c0 + l * (b + m.C * l) - q);
    if (miss <= bestMiss && isAllowedReflection(centring, h, k, l)) {
      bestMiss = miss;
      best = CalculatedLine{c0 + l * (b + m.C * l), h, k, l};
    }
  };
  for (int h = 0; h <= hMax; ++h) {
    for (int k = (h == 0 ? 0 : -kMax); k <= kMax; ++k) {
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
      for (const double root : {(-b - s) / (2.0 * m.C), (-b + s) / (2.0 * m.C)}) {
        const int below = static_cast<int>(std::floor(root));
        consider(h, k, below, c0, b);
        consider(h, k, below + 1, c0, b);
      }
    }
  }
  return best;
}

}  // namespace quarvel
