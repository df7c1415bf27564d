#include "cli/script_command.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <ostream>

#include "cli/console_shell.h"
#include "core/app/session.h"
#include "core/script/script_runner.h"

namespace quarvel {

int runScriptCommand(const std::string& scriptFile, int jobs, std::ostream& out, std::ostream& err) {
  ConsoleShell shell(out, err);
  // Names in the script and its lists are taken relative to the script's folder.
  const std::filesystem::path script = std::filesystem::absolute(scriptFile);
  Session session(shell, script.parent_path());
  const bool ok = runScript(session, script.string(), jobs);
  err << '\n';
  return ok ? 0 : 1;
}

void addScriptCommand(CLI::App& app, std::ostream& out, std::ostream& err, int& exitCode) {
  auto* run = app.add_subcommand("run-script", "Run a processing script over its list of pattern files");
  auto file = std::make_shared<std::string>();
  auto jobs = std::make_shared<int>(1);
  run->add_option("FILE", *file, "script file (.scr)")->required();
  run->add_option("-j,--jobs", *jobs, "process the file pairs on this many threads")->check(CLI::Range(1, 64))->capture_default_str();
  run->callback([=, &out, &err, &exitCode] { exitCode = runScriptCommand(*file, *jobs, out, err); });
}

}  // namespace quarvel
