// Reading the zone-indexing report back into the solution table: lines indexed and figure of
// merit from the most-probable-solutions table (the line holding "q(a)" heads it), the cell and
// volume from the direct-constants table (headed by "a        b"), row for row.
#pragma once

#include <string>
#include <vector>

#include "core/index/indexing_solution.h"

namespace quarvel {

SolutionTableRead readItoSolutions(const std::vector<std::string>& reportLines);

}  // namespace quarvel
