// "Common factors in the quadratic forms": when every indexed line obeys one extra condition
// (all h even, all h + k even, ...), the cell is a super-cell of the true one along that
// direction, or a primitive description of a centred lattice. The engines warn and try the
// halved axis or the centring.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "core/index/lattice/line_assignment.h"

namespace quarvel {

struct IndexCondition {
  std::string_view name;  // "h = 2n", "h+k = 2n", "F", "-h+k+l = 3n", ...
  bool (*holds)(int h, int k, int l);
};

// The conditions tested: each axis even, the three face-centring sums, the body sum, all
// parities equal, and the obverse rhombohedral condition.
std::span<const IndexCondition> indexConditions();

// Conditions obeyed by every indexed line (at least `minimumLines` of them must be indexed,
// otherwise nothing is reported: a few lines obey anything).
std::vector<std::string_view> commonIndexConditions(std::span<const LineAssignment> lines, int minimumLines = 8);

}  // namespace quarvel
