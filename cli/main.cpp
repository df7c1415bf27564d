// quarvel-cli: the program's operations from a terminal, for batch work and for checking files.
#include <CLI/CLI.hpp>
#include <iostream>

#include "cli/commands_command.h"
#include "cli/ito_command.h"
#include "cli/lines_command.h"
#include "cli/pattern_commands.h"
#include "cli/peaks_commands.h"
#include "cli/script_command.h"
#include "cli/treor_command.h"

int main(int argc, char** argv) {
  CLI::App app{"QUARVEL command-line tools: inspect, convert and process powder diffraction patterns"};
  app.set_version_flag("--version", std::string("quarvel-cli ") + QUARVEL_VERSION);
  app.require_subcommand(1);
  int exitCode = 0;
  quarvel::addCommandsCommand(app, std::cout);
  quarvel::addPatternCommands(app, std::cout, std::cerr, exitCode);
  quarvel::addPeaksCommands(app, std::cout, std::cerr, exitCode);
  quarvel::addScriptCommand(app, std::cout, std::cerr, exitCode);
  quarvel::addLinesCommand(app, std::cout);
  quarvel::addItoCommand(app, std::cout, std::cerr, exitCode);
  quarvel::addTreorCommand(app, std::cout, std::cerr, exitCode);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    return app.exit(e);
  }
  return exitCode;
}
