// Reader of the Philips udf format: "Key,value,/" header lines, then "RawScan" followed by the
// comma-separated counts over as many lines as needed, ended by "/".
#include <cmath>

#include <fmt/format.h>

#include "core/common/numbers.h"
#include "core/common/text_file.h"
#include "core/pattern/readers/pattern_parsers.h"
#include "core/pattern/readers/text_scanning.h"

namespace quarvel {
namespace {

constexpr ReaderTexts kUdfTexts{"Error opening udf file", "Error reading udf file", "Nothing read from udf file"};

}  // namespace

const ReaderTexts& udfReaderTexts() { return kUdfTexts; }

ReadOutcome parseUdf(std::string_view text) {
  const auto lines = splitLines(text);
  ScanData scan;
  scan.diffractometer = "Philips";
  std::optional<double> start, end, step;
  std::optional<std::size_t> rawScan;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string& line = lines[i];
    if (toLower(trim(line)).rfind("rawscan", 0) == 0) {
      rawScan = i + 1;
      break;
    }
    if (auto a1 = headerNumber(line, "LabdaAlpha1")) scan.wavelengths.alpha1 = static_cast<float>(*a1);
    else if (auto a2 = headerNumber(line, "LabdaAlpha2")) scan.wavelengths.alpha2 = static_cast<float>(*a2);
    else if (auto r = headerNumber(line, "RatioAlpha21")) scan.wavelengths.ratio = static_cast<float>(*r);
    else if (auto range = headerValue(line, "DataAngleRange")) {
      const auto n = readFreeNumbers(*range);
      if (n.size() < 2) return ReadFailure{kFileErrorTitleCaps, kUdfTexts.readError};
      start = n[0];
      end = n[1];
    } else if (auto st = headerNumber(line, "ScanStepSize")) step = st;
    else if (auto d = headerValue(line, "FileDateTime")) scan.date = *d;
    else if (auto id = headerValue(line, "SampleIdent")) scan.title = *id;
    else if (auto type = headerValue(line, "DiffrType")) { if (!type->empty()) scan.diffractometer = *type; }
  }
  if (!rawScan || !start || !end || !step || *step == 0.0 || !asFloat(*start))
    return ReadFailure{kFileErrorTitleCaps, kUdfTexts.readError};
  const double expected = std::round((*end - *start) / *step + 1.0);
  const std::size_t limit =
      expected >= 1.0 && expected < kUdfPointLimit ? static_cast<std::size_t>(expected) : kUdfPointLimit;
  bool ended = false;
  for (std::size_t i = *rawScan; i < lines.size() && !ended && scan.y.size() < limit; ++i) {
    std::string line = lines[i];
    if (auto slash = line.find('/'); slash != std::string::npos) {
      line.resize(slash);
      ended = true;
    }
    if (isBlank(line)) continue;
    const auto numbers = readFreeNumbers(line);
    if (numbers.empty()) break;
    for (double v : numbers)
      if (scan.y.size() < limit) scan.y.push_back(asFloat(v).value_or(0.0f));
  }
  if (scan.y.empty()) return ReadFailure{kFileErrorTitle, kUdfTexts.emptyError};
  const int count = keptCount(scan.y, [](float v) { return v > 0.0f; });
  if (count < 1) return ReadFailure{kFileErrorTitle, kUdfTexts.emptyError};
  scan.y.resize(static_cast<std::size_t>(count));
  if (expected >= 1.0 && static_cast<double>(count) != expected)
    scan.remarks.push_back(fmt::format("the header announces {} points; {} were kept", expected, count));
  scan.start = static_cast<float>(*start);
  scan.step = static_cast<float>(*step);
  scan.wavelength = scan.wavelengths.alpha1;
  return scan;
}

}  // namespace quarvel
