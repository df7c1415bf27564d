// One row of the solution table that both indexing engines' reports are read back into: the
// cell, its volume, the figure of merit and the engine's count beside it (unindexed lines for
// trial and error, lines indexed for the zone method). Single precision, as the table keeps it.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quarvel {

inline constexpr int kMaxIndexingSolutions = 100;

struct IndexingSolution {
  float a = 0, b = 0, c = 0;
  float alpha = 0, beta = 0, gamma = 0;
  float volume = 0;
  float merit = 0;
  float nix = 0;
};

// What reading an engine report gives: the solutions in report order (at most
// kMaxIndexingSolutions), or the message to show.
struct SolutionTableRead {
  std::vector<IndexingSolution> solutions;
  std::optional<std::string> error;  // "Read Error" or "No indexing solutions found"
};

}  // namespace quarvel
