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
      ++a.candidates;
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

bool sameAssignments(std::span<const LineAssignment> a, std::span<const LineAssignment> b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i].indexed != b[i].indexed) return false;
    if (a[i].indexed && (a[i].h != b[i].h || a[i].k != b[i].k || a[i].l != b[i].l)) return false;
  }
  return true;
}

}  // namespace quarvel
