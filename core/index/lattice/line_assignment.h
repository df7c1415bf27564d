// Assigning observed lines to calculated ones: each observed q takes the nearest calculated
// line within its tolerance. Several observed lines may share one calculated line (overlap).
#pragma once

#include <span>
#include <vector>

#include "core/index/lattice/calculated_lines.h"

namespace quarvel {

struct LineAssignment {
  bool indexed = false;
  double qCalc = 0;
  int h = 0, k = 0, l = 0;
  int candidates = 0;  // calculated lines within the tolerance
};

// `calculated` must be sorted by q; `tolerance` holds one q tolerance per observed line.
std::vector<LineAssignment> assignLines(std::span<const double> qObserved, std::span<const double> tolerance,
                                        std::span<const CalculatedLine> calculated);

// Same hkl for every line: the test the refinement iterates on.
bool sameAssignments(std::span<const LineAssignment> a, std::span<const LineAssignment> b);

}  // namespace quarvel
