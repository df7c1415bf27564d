// The zone-indexing engine: reads a card deck, solves every problem in it through the stages
// reader, finzon, evalu8, rear, threed, norm3, refpar, refpar2, untcel and zerchk, and writes the
// report. Talks to the user only through the Shell (file errors, interrupt, progress).
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/index/ito/ito_deck.h"
#include "core/index/ito/ito_lattices.h"
#include "core/index/ito/ito_lines.h"
#include "core/index/ito/ito_zones.h"

namespace quarvel {

class Shell;

struct ItoHooks {
  std::function<bool()> interrupted;
  std::function<void(double, std::string_view)> progress;
};

struct ItoProblemResult {
  bool skipped = false;
  bool interrupted = false;
  ItoLines lines;
  std::vector<ItoZone> zones;
  std::vector<ItoLattice> solutions;  // best first, as printed
};

// One problem: report lines appended to `report`.
ItoProblemResult solveItoProblem(const ItoProblem& problem, std::vector<std::string>& report, const ItoHooks& hooks = {});

// A whole deck; the results of each problem go to `results` when given.
std::vector<std::string> runItoDeck(const std::vector<std::string>& cards, const ItoHooks& hooks = {},
                                    std::vector<ItoProblemResult>* results = nullptr);

// The entry point: input deck path, output report path. False (after a message) when a file
// cannot be read or written; the report replaces the output file only once complete.
bool runIto(const std::filesystem::path& input, const std::filesystem::path& output, Shell& shell);

}  // namespace quarvel
