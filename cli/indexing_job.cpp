#include "cli/indexing_job.h"

#include <ostream>

#include "cli/console_shell.h"
#include "core/common/text_file.h"
#include "core/index/peak_positions.h"

namespace quarvel {

int runIndexingJob(const IndexingJobRequest& request,
                   const std::function<std::vector<std::string>(const std::vector<double>&)>& inputLines,
                   const std::function<bool(ConsoleShell&, const std::string&, const std::string&)>& run,
                   std::ostream& out, std::ostream& err) {
  ConsoleShell shell(out, err);
  std::string input = request.input;
  if (!request.peaks.empty()) {
    const auto records = readLines(request.peaks);
    if (!records) {
      shell.showMessage("File Error", "Error opening peak file");
      return 1;
    }
    if (input.empty()) input = request.defaultInput;
    std::string text;
    for (const std::string& line : inputLines(readPeakPositions(*records))) text += line + "\n";
    if (!writeFileAtomically(input, text)) {
      shell.showMessage("File Error", request.inputError);
      return 1;
    }
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
