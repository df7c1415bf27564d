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

// Range of l with C l² + b l + c0 ≤ target (empty when lo > hi).
bool detail::lRange(double C, double b, double c0, double target, int& lo, int& hi) {
  const double disc = b * b - 4.0 * C * (c0 - target);
  if (disc < 0.0) return false;
  const double s = std::sqrt(disc);
  lo = static_cast<int>(std::ceil((-b - s) / (2.0 * C) - 1e-9));
  hi = static_cast<int>(std::floor((-b + s) / (2.0 * C) + 1e-9));
  return lo <= hi;
}

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
  forEachReflection(m, qMax, false, [&](int h, int k, int l, double q) {
    if (isAllowedReflection(centring, h, k, l)) out.push_back({q, h, k, l});
  });
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

bool moreDistinctLinesThan(const ReciprocalMetric& m, double qMax, int limit, std::vector<double>& values) {
  values.clear();
  // Mirrored rows give the same count: an orthorhombic trial lists a quarter of its reflections.
  // When even those are within the limit, no sort is needed.
  forEachReflection(m, qMax, true, [&](int, int, int, double q) { values.push_back(q); });
  if (static_cast<int>(values.size()) <= limit) return false;
  if (limit < 0) return true;
  std::sort(values.begin(), values.end());
  int count = 0;
  double last = -1.0;
  for (const double q : values)
    if (count == 0 || q - last > kDistinctRelativeGap * q) {
      if (++count > limit) return true;
      last = q;
    }
  return count > limit;
}

std::vector<double> distinctValues(std::span<const CalculatedLine> sorted) {
  std::vector<double> values;
  for (const CalculatedLine& line : sorted)
    if (values.empty() || line.q - values.back() > kDistinctRelativeGap * line.q) values.push_back(line.q);
  return values;
}

namespace {

// The numbers n ≤ kLimit that h² + k² (square) or h² + hk + k² (hexagonal) takes for integers h,
// k, each with the plainest such pair: the lines of a tetragonal, hexagonal or cubic form lie at
// A n + C l², so whether one lies near q is a question of a few n per layer l.
struct TwoIndexValues {
  static constexpr int kLimit = 4096;
  std::vector<TwoIndexValue> square, hexagonal;

  TwoIndexValues() : square(kLimit + 1), hexagonal(kLimit + 1) {
    for (int h = 0; h * h <= kLimit; ++h)
      for (int k = 0; h * h + k * k <= kLimit; ++k) {
        if (!square[static_cast<std::size_t>(h * h + k * k)].taken) square[static_cast<std::size_t>(h * h + k * k)] = {true, h, k};
        // Every vector of the hexagonal net is a 60° turn of one with both indices non-negative.
        const int n = h * h + h * k + k * k;
        if (n <= kLimit && !hexagonal[static_cast<std::size_t>(n)].taken) hexagonal[static_cast<std::size_t>(n)] = {true, h, k};
      }
  }
  static const TwoIndexValues& instance() {
    static const TwoIndexValues values;
    return values;
  }
};

// The coefficient of x_i x_j (i ≠ j) or of x_i² (i = j) of the quadratic form.
double formCoefficient(const ReciprocalMetric& m, int i, int j) {
  if (i == j) return i == 0 ? m.A : i == 1 ? m.B : m.C;
  const int other = 3 - i - j;  // the index the cross term does not contain
  return other == 0 ? m.D : other == 1 ? m.E : m.F;
}

}  // namespace

NearestLineFinder::NearestLineFinder(const ReciprocalMetric& metric, Centring centring) : centring_(centring) {
  // The forms of tetragonal, hexagonal and cubic trials (A = B, no cross term but a hexagonal F)
  // are searched by layers.
  if (centring == Centring::P && metric.D == 0.0 && metric.E == 0.0 && metric.A == metric.B && metric.A > 0.0 &&
      metric.C > 0.0 && (metric.F == 0.0 || metric.F == metric.A)) {
    layered_ = metric.F == 0.0 ? &TwoIndexValues::instance().square : &TwoIndexValues::instance().hexagonal;
    layerForm_ = metric;
  }
  // The largest index along axis i of a line up to q is √(G_ii q), with G the direct metric: the
  // edge length times √q. The search loops over the indices of the two shorter edges and solves
  // for the index of the longest, so the rows it looks at are as few as the lattice allows.
  const Mat3 g = inverse(metric.tensor());
  std::array<double, 3> edge{};
  for (int i = 0; i < 3; ++i) edge[static_cast<std::size_t>(i)] = std::sqrt(g(i, i));
  std::stable_sort(axes_.begin(), axes_.end(), [&](int x, int y) {
    return edge[static_cast<std::size_t>(x)] < edge[static_cast<std::size_t>(y)];
  });
  const auto [u, v, w] = axes_;
  m_.A = formCoefficient(metric, u, u), m_.B = formCoefficient(metric, v, v), m_.C = formCoefficient(metric, w, w);
  m_.D = formCoefficient(metric, v, w), m_.E = formCoefficient(metric, u, w), m_.F = formCoefficient(metric, u, v);
  rows_ = RowMinimum(m_);
  for (int i = 0; i < 3; ++i) axisReach_[static_cast<std::size_t>(i)] = edge[static_cast<std::size_t>(axes_[static_cast<std::size_t>(i)])];
  // The obverse rhombohedral condition -h + k + l = 3n is not kept by a change of sign of one
  // index (its lines are still all found on hexagonal axes, through equivalent indices).
  kMirror_ = m_.D == 0.0 && m_.F == 0.0 && centring != Centring::R;
  lMirror_ = m_.D == 0.0 && m_.E == 0.0 && centring != Centring::R;
}

// The indices in the order of the caller's axes.
CalculatedLine NearestLineFinder::line(double q, int i0, int i1, int i2) const {
  std::array<int, 3> hkl{};
  hkl[static_cast<std::size_t>(axes_[0])] = i0;
  hkl[static_cast<std::size_t>(axes_[1])] = i1;
  hkl[static_cast<std::size_t>(axes_[2])] = i2;
  return {q, hkl[0], hkl[1], hkl[2]};
}

// Layer by layer: the lines of layer l lie at A n + C l² for the n that h² + k² (h² + hk + k²)
// takes. False when n would run beyond the table (a very long a axis); the rows are then searched.
template <bool anyWillDo>
bool NearestLineFinder::searchLayers(double q, double tolerance, std::optional<CalculatedLine>& best) const {
  const std::vector<TwoIndexValue>& values = *layered_;
  const double A = layerForm_.A, C = layerForm_.C;
  double bestMiss = tolerance;
  for (int l = 0;; ++l) {
    const double layer = C * l * l;
    const double rest = q - layer;
    if (rest < -tolerance) break;
    const double highest = std::floor((rest + tolerance) / A);
    if (highest > TwoIndexValues::kLimit) return false;
    for (int n = std::max(static_cast<int>(std::ceil((rest - tolerance) / A)), l == 0 ? 1 : 0);
         n <= static_cast<int>(highest); ++n) {
      const TwoIndexValue& e = values[static_cast<std::size_t>(n)];
      if (!e.taken) continue;
      const double value = A * n + layer;
      const double miss = std::abs(value - q);
      if (miss > bestMiss) continue;
      bestMiss = miss;
      best = CalculatedLine{value, e.h, e.k, l};
      if (anyWillDo) return true;
    }
  }
  return true;
}

// What a search over the rows keeps: the largest index along each axis that a line up to
// q + tolerance can have, and the nearest allowed line found so far.
template <bool anyWillDo>
class NearestLineFinder::RowSearch {
 public:
  RowSearch(const NearestLineFinder& finder, double q, double tolerance)
      : finder_(finder), q_(q), bestMiss_(tolerance) {
    const double root = std::sqrt(std::max(q + tolerance, 0.0)) * (1.0 + 1e-12);
    hMax = static_cast<int>(std::floor(finder.axisReach_[0] * root));
    kMax = static_cast<int>(std::floor(finder.axisReach_[1] * root));
    lMax = static_cast<int>(std::floor(finder.axisReach_[2] * root));
  }

  // Looks at index l of row (h, k), whose lines lie at c0 + l (b + C l); true when the search can
  // end (any line within the tolerance will do).
  bool consider(int h, int k, int l, double c0, double b) {
    if (l < -lMax || l > lMax || (h == 0 && k == 0 && l == 0)) return false;
    const double value = c0 + l * (b + finder_.m_.C * l);
    const double miss = std::abs(value - q_);
    if (miss > bestMiss_) return false;
    const CalculatedLine found = finder_.line(value, h, k, l);
    if (finder_.centring_ != Centring::P && !isAllowedReflection(finder_.centring_, found.h, found.k, found.l))
      return false;
    bestMiss_ = miss;
    best = found;
    return anyWillDo;
  }

  int hMax = 0, kMax = 0, lMax = 0;
  std::optional<CalculatedLine> best;

 private:
  const NearestLineFinder& finder_;
  double q_, bestMiss_;
};

// A form without cross terms (an orthorhombic trial) holds the lines of row (h, k), h, k ≥ 0, at
// c0 + C l² for l ≥ 0. Along a row of h the index l nearest the root of C l² = q − c0 only falls
// as k grows, so it is found from the one before by a few comparisons instead of a square root
// per row. It finds the line the general search finds: both look at the index below the root and
// the one above it, row by row in the same order.
template <bool anyWillDo>
void NearestLineFinder::searchRectangular(double q, double tolerance, RowSearch<anyWillDo>& search) const {
  const double A = m_.A, B = m_.B, C = m_.C;
  for (int h = 0; h <= search.hMax; ++h) {
    int kLo = 0, kHi = 0;
    if (!rows_.rowsReaching(h, q + tolerance, kLo, kHi)) continue;
    kHi = std::min(kHi, search.kMax);
    int l = -1;  // the index below the root in the row before; none yet
    for (int k = std::max(kLo, 0); k <= kHi; ++k) {
      const double c0 = A * h * h + B * k * k;
      const double rest = q - c0;
      if (rest < 0.0) {
        // q lies below this row's first line; only l = 0 can come close.
        if (search.consider(h, k, 0, c0, 0.0)) return;
        continue;
      }
      if (l < 0) l = static_cast<int>(std::floor(std::sqrt(rest / C)));
      while (l > 0 && C * l * l > rest) --l;
      while (C * (l + 1) * (l + 1) <= rest) ++l;
      if (search.consider(h, k, l, c0, 0.0) || search.consider(h, k, l + 1, c0, 0.0)) return;
    }
  }
}

// Any other form: each row's lines lie on a parabola in l, whose crossings of q are solved for.
template <bool anyWillDo>
void NearestLineFinder::searchRows(double q, double tolerance, RowSearch<anyWillDo>& search) const {
  const ReciprocalMetric& m = m_;
  for (int h = 0; h <= search.hMax; ++h) {
    int kLo = 0, kHi = 0;
    if (!rows_.rowsReaching(h, q + tolerance, kLo, kHi)) continue;
    kLo = std::max(kLo, (h == 0 || kMirror_) ? 0 : -search.kMax);
    kHi = std::min(kHi, search.kMax);
    for (int k = kLo; k <= kHi; ++k) {
      const double c0 = m.A * h * h + m.B * k * k + m.F * h * k;
      const double b = m.D * k + m.E * h;
      const double disc = b * b - 4.0 * m.C * (c0 - q);
      if (disc < 0.0) {
        // q lies below this row's minimum; only the index at the vertex can come close.
        if (search.consider(h, k, static_cast<int>(std::lround(-b / (2.0 * m.C))), c0, b)) return;
        continue;
      }
      const double s = std::sqrt(disc);
      if (!lMirror_) {
        const int below = static_cast<int>(std::floor((-b - s) / (2.0 * m.C)));
        if (search.consider(h, k, below, c0, b) || search.consider(h, k, below + 1, c0, b)) return;
      }
      const int below = static_cast<int>(std::floor((-b + s) / (2.0 * m.C)));
      if (search.consider(h, k, below, c0, b) || search.consider(h, k, below + 1, c0, b)) return;
    }
  }
}

template <bool anyWillDo>
std::optional<CalculatedLine> NearestLineFinder::search(double q, double tolerance) const {
  if (layered_ != nullptr) {
    std::optional<CalculatedLine> found;
    if (searchLayers<anyWillDo>(q, tolerance, found)) return found;
  }
  RowSearch<anyWillDo> rows(*this, q, tolerance);
  if (kMirror_ && lMirror_) {
    searchRectangular(q, tolerance, rows);
  } else {
    searchRows(q, tolerance, rows);
  }
  return rows.best;
}

std::optional<CalculatedLine> NearestLineFinder::nearest(double q, double tolerance) const {
  return search<false>(q, tolerance);
}

bool NearestLineFinder::hasLine(double q, double tolerance) const { return search<true>(q, tolerance).has_value(); }

std::optional<CalculatedLine> nearestLineWithin(const ReciprocalMetric& metric, Centring centring, double q,
                                                double tolerance) {
  return NearestLineFinder(metric, centring).nearest(q, tolerance);
}

}  // namespace quarvel
