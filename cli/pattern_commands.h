// `quarvel-cli info FILE` and `quarvel-cli convert IN OUT`: the pattern readers and writers from
// a terminal.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "core/pattern/pattern_files.h"
#include "core/pattern/pattern_writers.h"

namespace CLI {
class App;
}

namespace quarvel {

// Format names as users type them ("xy", "dat" or "std", "x_y", "xrdml", ...), or the
// extension of a path; case does not matter here.
std::optional<OpenFormat> openFormatNamed(std::string name);
std::optional<SaveFormat> saveFormatNamed(std::string name);
std::string formatName(OpenFormat format);

// Each returns the process exit code: 0 on success, 1 after a message.
int runInfo(const std::string& path, const std::string& from, std::ostream& out, std::ostream& err);
int runConvert(const std::string& in, const std::string& outPath, const std::string& from, const std::string& to,
               std::ostream& out, std::ostream& err);

void addPatternCommands(CLI::App& app, std::ostream& out, std::ostream& err, int& exitCode);

}  // namespace quarvel
