// `quarvel-cli commands`: the menu model as a table (id, menu path, text, accelerator).
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

namespace quarvel {

void addCommandsCommand(CLI::App& app, std::ostream& out);
void printCommandTable(std::ostream& out);

}  // namespace quarvel
