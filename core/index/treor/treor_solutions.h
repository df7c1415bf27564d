// Reading the cells back from a trial-and-error engine report: every cell block ("   A =" in
// the first six columns) with its volume and the following " M-TEST=" line becomes one row of
// the solution table.
#pragma once

#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace quarvel {

inline constexpr int kMaxIndexingSolutions = 100;

// One row of the solution table, as single-precision values: a, b, c (Å), α, β, γ (degrees),
// volume (Å³), figure of merit, NIX.
struct IndexingSolution {
  float a = 0, b = 0, c = 0, alpha = 0, beta = 0, gamma = 0, volume = 0, merit = 0, nix = 0;
};

struct TreorSolutionsRead {
  std::vector<IndexingSolution> solutions;  // at most kMaxIndexingSolutions
  std::optional<std::string> error;         // "Read Error" or "No indexing solutions found"
};

TreorSolutionsRead readTreorSolutions(std::istream& in);

}  // namespace quarvel
