#include "core/index/treor/treor_engine.h"

#include <fstream>
#include <sstream>

#include "core/app/shell.h"
#include "core/common/text_file.h"
#include "core/index/treor/treor_input.h"
#include "core/index/treor/treor_run.h"

namespace quarvel {

bool runTreor90(Shell& shell, const std::filesystem::path& inputPath, const std::filesystem::path& outputPath) {
  std::ifstream in(inputPath, std::ios::binary);
  if (!in) {
    shell.showMessage("File Error", "Error opening TREOR90 input file");
    return false;
  }
  std::stringstream text;
  text << in.rdbuf();
  AtomicFile output(outputPath);
  if (!output.open()) {
    shell.showMessage("File Error", "Error opening TREOR90 output file");
    return false;
  }
  const TreorInputResult parsed = parseTreorInput(text.str());
  const std::vector<std::string> report =
      parsed.input ? runTreor(*parsed.input, &shell).report : invalidCardReport(parsed.badCard);
  for (const std::string& line : report) output.writeLine(line);
  if (!output.commit()) {
    shell.showMessage("File Error", "Error opening TREOR90 output file");
    return false;
  }
  return true;
}

}  // namespace quarvel
