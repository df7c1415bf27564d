// The first step of both indexing jobs: read the peak positions from the peak file and write
// the engine's card-image input file from them.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quarvel {

class Shell;

using IndexingInputLines = std::function<std::vector<std::string>(const std::vector<double>& peaks)>;

// False after the message ("Error opening peak file" or `inputError`, title "File Error") when
// the peak file cannot be read or the input file cannot be written. The input file is replaced
// only once its new content is complete.
bool writeIndexingInput(Shell& shell, const std::filesystem::path& peakFile, const std::filesystem::path& inputFile,
                        const IndexingInputLines& inputLines, std::string_view inputError);

}  // namespace quarvel
