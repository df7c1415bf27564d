// Reading the cells back from a trial-and-error engine report: every cell block ("   A =" in
// the first six columns) with its volume and the following " M-TEST=" line becomes one row of
// the solution table.
#pragma once

#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "core/index/indexing_solution.h"

namespace quarvel {

struct TreorSolutionsRead {
  std::vector<IndexingSolution> solutions;  // at most kMaxIndexingSolutions
  std::optional<std::string> error;         // "Read Error" or "No indexing solutions found"
};

TreorSolutionsRead readTreorSolutions(std::istream& in);

}  // namespace quarvel
