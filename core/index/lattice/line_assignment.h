// Assigning observed lines to calculated ones: each observed q takes the nearest calculated
// line within its tolerance. Several observed lines may share one calculated line (overlap).
#pragma once

#include <span>
#include <vector>

#include "core/index/lattice/calculated_lines.h"
#include "core/index/lattice/crystal_system.h"

namespace quarvel {

struct LineAssignment {
  bool indexed = false;
  double qCalc = 0;
  int h = 0, k = 0, l = 0;
};

// `calculated` must be sorted by q; `tolerance` holds one q tolerance per observed line.
std::vector<LineAssignment> assignLines(std::span<const double> qObserved, std::span<const double> tolerance,
                                        std::span<const CalculatedLine> calculated);
// The same without a list: each observed line asks the lattice for its nearest reflection,
// which for a few dozen lines costs less than listing and sorting every reflection below them.
std::vector<LineAssignment> assignLines(std::span<const double> qObserved, std::span<const double> tolerance,
                                        const ReciprocalMetric& metric, Centring centring);

// Every line indexed alike, by reflections with the same design row of `system`: the test the
// refinement iterates on. Reflections of one form (5 0 0 and 4 3 0 of a tetragonal cell) give
// the same equation; rounding picks one or the other from cycle to cycle, which is no change.
bool sameAssignments(std::span<const LineAssignment> a, std::span<const LineAssignment> b, CrystalSystem system);

}  // namespace quarvel
