// `quarvel-cli run-script FILE.scr [--jobs N]`: the script runner from a terminal.
#pragma once

#include <iosfwd>
#include <string>

namespace CLI {
class App;
}

namespace quarvel {

// Exit code 0 when the script ran to "Script done", 1 after any error message.
int runScriptCommand(const std::string& scriptFile, int jobs, std::ostream& out, std::ostream& err);

void addScriptCommand(CLI::App& app, std::ostream& out, std::ostream& err, int& exitCode);

}  // namespace quarvel
