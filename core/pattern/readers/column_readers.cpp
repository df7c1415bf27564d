// Readers of the two-column text formats: xy (general), x_y (Velm) and chi (Ostra). All three
// hold 2θ and intensity per line; start and step come from the 2θ of the first and the last
// kept point, and the per-point 2θ values are then discarded.
#include <cmath>

#include <fmt/format.h>

#include "core/common/numbers.h"
#include "core/common/text_file.h"
#include "core/pattern/readers/pattern_parsers.h"
#include "core/pattern/readers/text_scanning.h"

namespace quarvel {
namespace {

struct ColumnRules {
  bool skipCommentLines;    // ";" and "_" (and, as real files write them, "#")
  bool keepNonZero;         // trailing test: intensity != 0 (else intensity > 0)
};

// Reads 2θ/intensity pairs from `lines` starting at `first`. Lines before the first data line
// that are not number pairs (a title, a wavelength alone on line 1) are passed over and
// remarked; after the data started, the first unreadable line ends them.
ReadOutcome readColumns(const std::vector<std::string_view>& lines, std::size_t first, const ColumnRules& rules,
                        const ReaderTexts& texts) {
  ScanData scan;
  std::vector<double> twoTheta;
  scan.y.reserve(lines.size());
  twoTheta.reserve(lines.size());
  std::size_t skippedHeader = 0;
  for (std::size_t i = first; i < lines.size() && twoTheta.size() < kReaderPointLimit; ++i) {
    const std::string_view line = lines[i];
    const auto firstChar = line.find_first_not_of(" \t");
    if (firstChar == std::string_view::npos) continue;
    const char head = line[firstChar];
    if (rules.skipCommentLines && (head == ';' || head == '_' || head == '#')) continue;
    double numbers[2] = {};
    std::optional<float> x, y;
    if (readLeadingNumbers(line, numbers) == 2) {
      x = asFloat(numbers[0]);
      y = asFloat(numbers[1]);
    }
    if (!x || !y) {
      if (!twoTheta.empty()) break;
      ++skippedHeader;
      continue;
    }
    twoTheta.push_back(numbers[0]);
    scan.y.push_back(*y);
  }
  if (scan.y.empty()) return ReadFailure{kFileErrorTitle, texts.emptyError};
  if (skippedHeader > 0)
    scan.remarks.push_back(fmt::format("{} header line(s) before the data were passed over", skippedHeader));

  const int count = rules.keepNonZero ? keptCount(scan.y, [](float v) { return v != 0.0f; })
                                      : keptCount(scan.y, [](float v) { return v > 0.0f; });
  if (count < 1) return ReadFailure{kFileErrorTitle, texts.emptyError};
  scan.y.resize(static_cast<std::size_t>(count));
  twoTheta.resize(static_cast<std::size_t>(count));
  const double start = twoTheta.front();
  const double step = count > 1 ? (twoTheta.back() - start) / (count - 1) : 0.0;
  scan.start = static_cast<float>(start);
  scan.step = static_cast<float>(step);
  if (auto remark = unevenStepRemark(twoTheta, start, step)) scan.remarks.push_back(*remark);
  return scan;
}

constexpr ReaderTexts kXyTexts{"Error opening xy file", "Error reading xy file", "Nothing read from xy file"};
constexpr ReaderTexts kChiTexts{"Error opening chi file", "Error reading chi file", "Nothing read from chi file"};

}  // namespace

const ReaderTexts& xyReaderTexts() { return kXyTexts; }
const ReaderTexts& chiReaderTexts() { return kChiTexts; }

ReadOutcome parseXy(std::string_view text) {
  return readColumns(splitLineViews(text), 0, {true, true}, kXyTexts);
}

ReadOutcome parseXyVelm(std::string_view text) {
  return readColumns(splitLineViews(text), 0, {false, false}, kXyTexts);
}

ReadOutcome parseChi(std::string_view text) {
  const auto lines = splitLineViews(text);
  if (lines.size() < 4) return ReadFailure{kFileErrorTitleCaps, kChiTexts.readError};
  // Line 2 names the x axis; a chi file integrated on another axis (Q, radius) is no 2θ scan.
  const std::string xLabel = toLower(lines[1]);
  if (xLabel.find("theta") == std::string::npos &&
      (xLabel.find('q') != std::string::npos || xLabel.find("radi") != std::string::npos))
    return ReadFailure{kFileErrorTitleCaps, "The chi file's x axis is not 2-theta: " + trim(lines[1])};
  ReadOutcome outcome = readColumns(lines, 4, {true, true}, kChiTexts);
  if (auto* scan = std::get_if<ScanData>(&outcome)) {
    const auto declared = readFreeNumbers(lines[3]);
    if (!declared.empty() && declared[0] >= 1 && static_cast<std::size_t>(declared[0]) != scan->y.size())
      scan->remarks.push_back(fmt::format("the file declares {} points; {} were kept",
                                          static_cast<long>(declared[0]), scan->y.size()));
  }
  return outcome;
}

}  // namespace quarvel
