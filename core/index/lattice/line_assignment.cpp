#include "core/index/lattice/line_assignment.h"

#include <algorithm>
#include <cmath>

namespace quarvel {

std::vector<LineAssignment> assignLines(std::span<const double> qObserved, std::span<const double> tolerance,
                                        std::span<const CalculatedLine> calculated) {
  std::vector<LineAssignment> result(qObserved.size());
  for (std::size_t i = 0; i < qObserved.size(); ++i) {
    const double q = qObserved[i], tol = tolerance[i];
    auto first = std::lower_bound(calculated.begin(), calculated.end(), q - tol,
                                  [](const CalculatedLine& line, double value) { return line.q < value; });
    LineAssignment& a = result[i];
    double bestMiss = tol;
    for (auto it = first; it != calculated.end() && it->q <= q + tol; ++it) {
      const double miss = std::abs(it->q - q);
      if (miss <= bestMiss) {
        bestMiss = miss;
        a.indexed = true;
        a.qCalc = it->q;
        a.h = it->h;
        a.k = it->k;
        a.l = it->l;
      }
    }
  }
  return result;
}

std::vector<LineAssignment> assignLines(std::span<const double> qObserved, std::span<const double> tolerance,
                                        const ReciprocalMetric& metric, Centring centring) {
  std::vector<LineAssignment> result(qObserved.size());
  if (!isPositiveDefinite(metric)) return result;
  const NearestLineFinder calculated(metric, centring);
  for (std::size_t i = 0; i < qObserved.size(); ++i)
    if (const auto near = calculated.nearest(qObserved[i], tolerance[i]))
      result[i] = {true, near->q, near->h, near->k, near->l};
  return result;
}

bool sameAssignments(std::span<const LineAssignment> a, std::span<const LineAssignment> b, CrystalSystem system) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i].indexed != b[i].indexed) return false;
    if (a[i].indexed && designRow(system, a[i].h, a[i].k, a[i].l) != designRow(system, b[i].h, b[i].k, b[i].l))
      return false;
  }
  return true;
}

}  // namespace quarvel
