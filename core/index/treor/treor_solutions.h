// Reading the cells back from a trial-and-error engine report: every cell block ("   A =" in
// the first six columns) with its volume and the following " M-TEST=" line becomes one row of
// the solution table.
#pragma once

#include <string>
#include <vector>

#include "core/index/indexing_solution.h"

namespace quarvel {

SolutionTableRead readTreorSolutions(const std::vector<std::string>& reportLines);

}  // namespace quarvel
