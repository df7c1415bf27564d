// Calculated lines of a lattice: every reflection up to a q limit (one of each ±hkl pair), the
// count of distinct q values, and the fast "is there a line near this q?" test that the trial
// phases of the indexing engines call millions of times.
#pragma once

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

// Which rows k of a given h can hold a line up to a q limit: the least value of a row over real l
// is a quadratic in k.
struct RowMinimum {
  explicit RowMinimum(const ReciprocalMetric& m);
  bool rowsReaching(int h, double target, int& lo, int& hi) const;
  double alpha, beta, gamma;
};

// The reflection whose q is nearest to `q` among those within ±tolerance, found without a list
// by solving the quadratic form for the last index over the rows of the first two that can
// reach q. The per-metric constants are worked out once: a trial asks about each of its lines.
// Rows k and -k (l and -l) of a form without the cross terms that tell them apart are looked at
// once; ties go to the positive index.
class NearestLineFinder {
 public:
  NearestLineFinder(const ReciprocalMetric& metric, Centring centring);
  std::optional<CalculatedLine> nearest(double q, double tolerance) const;
  bool hasLine(double q, double tolerance) const { return nearest(q, tolerance).has_value(); }

 private:
  ReciprocalMetric m_;
  RowMinimum rows_;
  Centring centring_;
  std::array<double, 3> axisReach_{};  // √(G⁻¹)ᵢᵢ: largest |index| per √q
  bool kMirror_ = false, lMirror_ = false;
};

std::optional<CalculatedLine> nearestLineWithin(const ReciprocalMetric& metric, Centring centring, double q,
                                                double tolerance);
inline bool hasLineWithin(const ReciprocalMetric& metric, Centring centring, double q, double tolerance) {
  return nearestLineWithin(metric, centring, q, tolerance).has_value();
}

}  // namespace quarvel
