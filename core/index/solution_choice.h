// The "Indexing solutions" dialog: the solution table read from an engine report, one line per
// cell, and the cell the user chooses.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "core/index/indexing_solution.h"

namespace quarvel {

class Shell;

// One line of the list under the column heads "No.", "a", "b", "c", "alpha", "beta", "gamma",
// "volume", "FOM", "NIX".
std::string solutionColumnHeads();
std::string solutionLine(std::size_t number, const IndexingSolution& solution);

// Shows the list until a line is chosen with "OK" ("Select a solution first" otherwise) or the
// dialog is cancelled; the index of the chosen solution.
std::optional<std::size_t> chooseSolution(Shell& shell, const std::vector<IndexingSolution>& solutions);

}  // namespace quarvel
