// Readers of the formats that give start and step in a header and the intensities alone:
// std (general, .dat) and gdf (Huber).
#include <fmt/format.h>

#include "core/common/numbers.h"
#include "core/common/text_file.h"
#include "core/pattern/readers/pattern_parsers.h"
#include "core/pattern/readers/text_scanning.h"

namespace quarvel {
namespace {

constexpr ReaderTexts kStdTexts{"Error opening std file", "Error reading std file", "Nothing read from std file"};
constexpr ReaderTexts kGdfTexts{"Error opening gdf file", "Error reading gdf file", "Nothing read from gdf file"};
constexpr std::size_t kGdfHeaderLines = 16;

// Appends the leading numbers of each line (at most `perLine`) from `first` on, up to `limit`
// values; the first line without a number ends the data. Blank lines are passed over.
void readValueLines(const std::vector<std::string>& lines, std::size_t first, std::size_t perLine,
                    std::vector<float>& values, std::size_t limit) {
  for (std::size_t i = first; i < lines.size() && values.size() < limit; ++i) {
    if (isBlank(lines[i])) continue;
    const auto numbers = readFreeNumbers(lines[i]);
    if (numbers.empty()) return;
    for (std::size_t k = 0; k < numbers.size() && k < perLine && values.size() < limit; ++k) {
      auto v = asFloat(numbers[k]);
      if (!v) return;
      values.push_back(*v);
    }
  }
}

bool keepPositive(float v) { return v > 0.0f; }

}  // namespace

ReadOutcome parseStd(std::string_view text) {
  const auto lines = splitLines(text);
  if (lines.empty()) return ReadFailure{kFileErrorTitleCaps, kStdTexts.readError};
  // Line 1: start and step; real files add the end angle and a title, which are not needed.
  const auto head = readFreeNumbers(lines[0]);
  if (head.size() < 2 || !asFloat(head[0]) || !asFloat(head[1]))
    return ReadFailure{kFileErrorTitleCaps, kStdTexts.readError};
  ScanData scan;
  scan.start = static_cast<float>(head[0]);
  scan.step = static_cast<float>(head[1]);
  readValueLines(lines, 1, 10, scan.y, kReaderPointLimit);
  if (scan.y.empty()) return ReadFailure{kFileErrorTitle, kStdTexts.emptyError};
  const int count = keptCount(scan.y, keepPositive);
  if (count < 1) return ReadFailure{kFileErrorTitle, kStdTexts.emptyError};
  scan.y.resize(static_cast<std::size_t>(count));
  if (head.size() >= 3 && head[1] != 0.0) {
    const long announced = nint((head[2] - head[0]) / head[1]) + 1;
    if (announced != count)
      scan.remarks.push_back(fmt::format("line 1 announces {} points to {}; {} were kept", announced,
                                         head[2], count));
  }
  return scan;
}

ReadOutcome parseGdf(std::string_view text) {
  const auto lines = splitLines(text);
  if (lines.size() < kGdfHeaderLines) return ReadFailure{kFileErrorTitleCaps, kGdfTexts.readError};
  ScanData scan;
  for (std::size_t i = 0; i < kGdfHeaderLines; ++i) scan.comments.push_back(lines[i].substr(0, 80));
  if (auto n = readFreeNumbers(lines[2]); !n.empty()) scan.headerInteger = nint(n[0]);
  else return ReadFailure{kFileErrorTitleCaps, kGdfTexts.readError};
  scan.title = trim(lines[8].substr(0, 80));
  const std::string& dateLine = lines[9];
  if (auto open = dateLine.find('>'); open != std::string::npos) {
    const auto close = dateLine.find('<', open + 1);
    scan.date = dateLine.substr(open + 1, close == std::string::npos ? std::string::npos : close - open - 1);
  }
  // Lines 11, 12 and 13: start, end and step, each with its own message.
  const char* const headerErrors[] = {"Error reading gdf file2", "Error reading gdf file3", "Error reading gdf file4"};
  double values[3] = {};
  for (int k = 0; k < 3; ++k) {
    const auto n = readFreeNumbers(lines[10 + static_cast<std::size_t>(k)]);
    if (n.empty() || !asFloat(n[0])) return ReadFailure{kFileErrorTitleCaps, headerErrors[k]};
    values[k] = n[0];
  }
  scan.start = static_cast<float>(values[0]);
  scan.step = static_cast<float>(values[2]);
  readValueLines(lines, kGdfHeaderLines, 1, scan.y, kReaderPointLimit);
  if (scan.y.empty()) return ReadFailure{kFileErrorTitle, kGdfTexts.emptyError};
  const int count = keptCount(scan.y, keepPositive);
  if (count < 1) return ReadFailure{kFileErrorTitle, kGdfTexts.emptyError};
  scan.y.resize(static_cast<std::size_t>(count));
  return scan;
}

const ReaderTexts& stdReaderTexts() { return kStdTexts; }
const ReaderTexts& gdfReaderTexts() { return kGdfTexts; }

}  // namespace quarvel
