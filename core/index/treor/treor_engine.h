// Entry point of the trial-and-error indexing engine: reads the keyword input file, runs the
// search and writes the report. Everything the user needs to know is in the report; only a
// file that cannot be opened is told through the shell.
#pragma once

#include <filesystem>

namespace quarvel {

class Shell;

// Returns false when the input or the output file could not be opened.
bool runTreor90(Shell& shell, const std::filesystem::path& inputPath, const std::filesystem::path& outputPath);

}  // namespace quarvel
