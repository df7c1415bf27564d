// `quarvel-cli treor90`: runs the trial-and-error indexing engine on a keyword input file, or
// writes the input file of a TREOR90 job from a peak file (treor90.tre) and runs it.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace quarvel {

void addTreorCommand(CLI::App& app, std::ostream& out, std::ostream& err, int& exitCode);

}  // namespace quarvel
