// From an engine report to one chosen cell: both engines' reports read into the same solution
// table, and the "Indexing solutions" dialog that lists it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "core/index/indexing_solution.h"

namespace quarvel {

class Shell;

struct SolutionTableRead {
  std::vector<IndexingSolution> solutions;
  std::optional<std::string> error;  // "Read Error" or "No indexing solutions found"
};

SolutionTableRead treorSolutionTable(const std::vector<std::string>& reportLines);
SolutionTableRead itoSolutionTable(const std::vector<std::string>& reportLines);

// One line of the list under the column heads "No.", "a", "b", "c", "alpha", "beta", "gamma",
// "volume", "FOM", "NIX".
std::string solutionColumnHeads();
std::string solutionLine(std::size_t number, const IndexingSolution& solution);

// Shows the list until a line is chosen with "OK" ("Select a solution first" otherwise) or the
// dialog is cancelled; the index of the chosen solution.
std::optional<std::size_t> chooseSolution(Shell& shell, const std::vector<IndexingSolution>& solutions);

}  // namespace quarvel
