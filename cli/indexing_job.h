// What the two indexing subcommands share: write the engine's input file from a peak file when
// one is given, run the engine on the input file, and say where the report went.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "core/index/indexing_input.h"

namespace quarvel {

class ConsoleShell;

struct IndexingJobRequest {
  std::string command;       // subcommand name, for the usage message
  std::string input;         // engine input file; written from `peaks` when that is given
  std::string defaultInput;  // name used when `peaks` is given without an input file
  std::string output;        // report file
  std::string peaks;         // peak file, or empty
  std::string inputError;    // message when the input file cannot be written
};

// `inputLines` turns the peak positions into the lines of the input file; `run` runs the
// engine (input, output) and reports success. Returns the exit code.
int runIndexingJob(const IndexingJobRequest& request,
                   const IndexingInputLines& inputLines,
                   const std::function<bool(ConsoleShell&, const std::string&, const std::string&)>& run,
                   std::ostream& out, std::ostream& err);

}  // namespace quarvel
