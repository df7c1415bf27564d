#include "cli/indexing_job.h"

#include <ostream>

#include "cli/console_shell.h"
#include "core/index/indexing_input.h"

namespace quarvel {

int runIndexingJob(const IndexingJobRequest& request,
                   const IndexingInputLines& inputLines,
                   const std::function<bool(ConsoleShell&, const std::string&, const std::string&)>& run,
                   std::ostream& out, std::ostream& err) {
  ConsoleShell shell(out, err);
  std::string input = request.input;
  if (!request.peaks.empty()) {
    if (input.empty()) input = request.defaultInput;
    if (!writeIndexingInput(shell, request.peaks, input, inputLines, request.inputError)) return 1;
  }
  if (input.empty()) {
    err << request.command << ": an input file or --peaks is needed\n";
    return 1;
  }
  if (!run(shell, input, request.output)) return 1;
  out << "report written to " << request.output << '\n';
  return 0;
}

}  // namespace quarvel
