// `quarvel-cli peaks FILE` and `quarvel-cli background FILE`: the peak search and the automatic
// background from a terminal, for batch use.
#pragma once

#include <iosfwd>
#include <string>

#include "core/peaks/peak_list.h"

namespace CLI {
class App;
}

namespace quarvel {

struct PeaksRequest {
  std::string file, from, output;
  PeakSearchOptions options;
};
int runPeaks(const PeaksRequest& request, std::ostream& out, std::ostream& err);

struct BackgroundRequest {
  std::string file, from, output;
  int window = 201;
};
// Writes 2θ, pattern, background and difference columns.
int runBackground(const BackgroundRequest& request, std::ostream& out, std::ostream& err);

void addPeaksCommands(CLI::App& app, std::ostream& out, std::ostream& err, int& exitCode);

}  // namespace quarvel
