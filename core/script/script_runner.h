// Running a script: every pair of input and output names goes through the script's command
// lines in order, with `scriptRunning` set (no dialogs, no undo copies, no refreshes).
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quarvel {

class Session;

struct ScriptProgram {
  std::vector<std::string> commands;  // the lines after the two list names
  std::vector<std::pair<std::string, std::string>> pairs;  // input and output names
};

// Reads the script file and its two list files; shows the runner's message and returns nullopt
// when one cannot be opened. The run ends at the last pair that has both names.
std::optional<ScriptProgram> loadScript(Session& session, const std::string& scriptFile);

// The pattern a pair leaves for Add-up (output code 5).
struct AddUpPart {
  float start = 0.0f, step = 0.0f;
  std::vector<float> y;
};

// Runs the command lines on one pair. Returns false after a message (the run stops); an Add-up
// output is returned in `addUp` instead of being written.
bool processPair(Session& session, const ScriptProgram& program, const std::string& input, const std::string& output,
                 std::optional<AddUpPart>& addUp);

// The whole run: load, process every pair (on `jobs` threads, each pair in its own session),
// write the Add-up sum, clear `scriptRunning`, refresh and say "Script done". Returns false when
// a message stopped the run (files already written stay).
bool runScript(Session& session, const std::string& scriptFile, int jobs = 1);

}  // namespace quarvel
