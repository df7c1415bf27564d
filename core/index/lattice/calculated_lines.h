// Calculated lines of a lattice: every reflection up to a q limit (one of each ±hkl pair), the
// count of distinct q values, and the fast "is there a line near this q?" test that the trial
// phases of the indexing engines call millions of times.
#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <vector>

#include "core/index/lattice/centring.h"
#include "core/index/lattice/reciprocal_metric.h"

namespace quarvel {

struct CalculatedLine {
  double q = 0;
  int h = 0, k = 0, l = 0;
};

// Largest |h|, |k|, |l| a reflection with q ≤ qMax can have: ⌊a√qMax⌋ and so on (the index is
// the projection of the reciprocal vector on the direct axis, so the bound is rigorous).
std::array<int, 3> indexBounds(const ReciprocalMetric& metric, double qMax);

// Reflections with 0 < q ≤ qMax allowed by the centring, sorted by q. The half space
// h > 0, or h = 0 and k > 0, or h = k = 0 and l > 0 holds one of each Friedel pair. `out` is
// reused so that repeated calls do not allocate.
void calculatedLines(const ReciprocalMetric& metric, Centring centring, double qMax,
                     std::vector<CalculatedLine>& out);
std::vector<CalculatedLine> calculatedLines(const ReciprocalMetric& metric, Centring centring, double qMax);

// Lines whose q differ by less than this relative amount are one value (exact metric
// degeneracies such as cubic 300 and 221); accidental near-coincidences stay apart.
inline constexpr double kDistinctRelativeGap = 1e-7;

// Number of distinct q values ≤ qLimit in a sorted list.
int countDistinct(std::span<const CalculatedLine> sorted, double qLimit);
std::vector<double> distinctValues(std::span<const CalculatedLine> sorted);
// Whether a primitive lattice has more than `limit` distinct q values up to qMax (counted as
// countDistinct does), without listing its reflections; `values` is scratch space.
bool moreDistinctLinesThan(const ReciprocalMetric& metric, double qMax, int limit, std::vector<double>& values);

// Which rows k of a given h can hold a line up to a q limit: the least value of a row over real l
// is a quadratic in k.
struct RowMinimum {
  RowMinimum() = default;
  explicit RowMinimum(const ReciprocalMetric& m);
  bool rowsReaching(int h, double target, int& lo, int& hi) const;
  double alpha = 0, beta = 0, gamma = 0;
};

namespace detail {
bool lRange(double C, double b, double c0, double target, int& lo, int& hi);
}  // namespace detail

// Calls visit(h, k, l, q) for every reflection with 0 < q ≤ qMax in the half space h > 0, or
// h = 0 and k > 0, or h = k = 0 and l > 0. With `foldMirrors`, rows k and -k (l and -l) of a form
// without the cross terms that tell them apart are visited once (they hold the same values bit
// for bit).
template <class Visit>
void forEachReflection(const ReciprocalMetric& m, double qMax, bool foldMirrors, Visit&& visit) {
  if (!(qMax > 0.0) || !isPositiveDefinite(m)) return;
  const bool kMirror = foldMirrors && m.D == 0.0 && m.F == 0.0;
  const bool lMirror = foldMirrors && m.D == 0.0 && m.E == 0.0;
  const auto [hMax, kMax, lMax] = indexBounds(m, qMax);
  const double limit = qMax * (1.0 + 1e-10);  // a line exactly at the limit is kept
  const RowMinimum rows(m);
  for (int h = 0; h <= hMax; ++h) {
    int kLo = 0, kHi = 0;
    if (!rows.rowsReaching(h, limit, kLo, kHi)) continue;
    for (int k = std::max(kLo, (h == 0 || kMirror) ? 0 : -kMax); k <= std::min(kHi, kMax); ++k) {
      const double c0 = m.A * h * h + m.B * k * k + m.F * h * k;
      const double b = m.D * k + m.E * h;
      int lo = 0, hi = 0;
      if (!detail::lRange(m.C, b, c0, limit, lo, hi)) continue;
      lo = std::max(lo, lMirror ? 0 : -lMax);
      hi = std::min(hi, lMax);
      if (h == 0 && k == 0) lo = std::max(lo, 1);
      for (int l = lo; l <= hi; ++l) {
        const double q = c0 + l * (b + m.C * l);
        if (q > 0.0 && q <= limit) visit(h, k, l, q);
      }
    }
  }
}

// A pair (h, k) that gives one value of h² + k² or h² + hk + k² (taken: there is one).
struct TwoIndexValue {
  bool taken = false;
  int h = 0, k = 0;
};

// The reflection whose q is nearest to `q` among those within ±tolerance, found without a list
// by solving the quadratic form for one index over the rows of the other two that can reach q
// (the index of the longest edge is solved for). The per-metric constants are worked out once:
// a trial asks about each of its lines. Rows k and -k (l and -l) of a form without the cross
// terms that tell them apart are looked at once; ties go to the positive index.
class NearestLineFinder {
 public:
  NearestLineFinder(const ReciprocalMetric& metric, Centring centring);
  std::optional<CalculatedLine> nearest(double q, double tolerance) const;
  // Whether any reflection lies within ±tolerance (the search ends at the first one).
  bool hasLine(double q, double tolerance) const;

 private:
  template <bool anyWillDo>
  std::optional<CalculatedLine> search(double q, double tolerance) const;
  template <bool anyWillDo>
  bool searchLayers(double q, double tolerance, std::optional<CalculatedLine>& best) const;
  template <bool anyWillDo>
  class RowSearch;
  template <bool anyWillDo>
  void searchRectangular(double q, double tolerance, RowSearch<anyWillDo>& search) const;
  template <bool anyWillDo>
  void searchRows(double q, double tolerance, RowSearch<anyWillDo>& search) const;
  CalculatedLine line(double q, int i0, int i1, int i2) const;

  std::array<int, 3> axes_{0, 1, 2};  // the caller's axis of each search index, longest edge last
  ReciprocalMetric m_;                // the form with its indices in that order
  RowMinimum rows_;
  Centring centring_;
  std::array<double, 3> axisReach_{};  // edge lengths in search order: largest |index| per √q
  bool kMirror_ = false, lMirror_ = false;
  // A tetragonal or hexagonal form (A = B) is searched layer by layer in a table of the values
  // of h² + k² or h² + hk + k²; null for other forms.
  const std::vector<TwoIndexValue>* layered_ = nullptr;
  ReciprocalMetric layerForm_;  // that form, its axes as given
};

std::optional<CalculatedLine> nearestLineWithin(const ReciprocalMetric& metric, Centring centring, double q,
                                                double tolerance);
inline bool hasLineWithin(const ReciprocalMetric& metric, Centring centring, double q, double tolerance) {
  return nearestLineWithin(metric, centring, q, tolerance).has_value();
}

}  // namespace quarvel
