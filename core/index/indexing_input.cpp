#include "core/index/indexing_input.h"

#include "core/app/shell.h"
#include "core/common/text_file.h"
#include "core/index/peak_positions.h"

namespace quarvel {

bool writeIndexingInput(Shell& shell, const std::filesystem::path& peakFile, const std::filesystem::path& inputFile,
                        const IndexingInputLines& inputLines, std::string_view inputError) {
  const auto records = readLines(peakFile.string());
  if (!records) {
    shell.showMessage("File Error", "Error opening peak file");
    return false;
  }
  std::string text;
  for (const std::string& line : inputLines(readPeakPositions(*records))) text += line + "\n";
  if (!writeFileAtomically(inputFile.string(), text)) {
    shell.showMessage("File Error", inputError);
    return false;
  }
  return true;
}

}  // namespace quarvel
