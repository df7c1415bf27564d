// `quarvel-cli ito`: runs the zone-indexing engine on an input deck, or writes the deck of an
// ITO job from a peak file (ito.inp) and runs it.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace quarvel {

void addItoCommand(CLI::App& app, std::ostream& out, std::ostream& err, int& exitCode);

}  // namespace quarvel
