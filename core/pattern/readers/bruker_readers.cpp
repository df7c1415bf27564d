// Readers of the two Bruker text formats: the txt export ("key=value" header, "[Data]") and
// uxd ("_KEY=value" header, "_2THETACOUNTS" marker). Both keep only the counts of each data
// line; start and step come from the header, and, where it lacks them, from the 2θ column.
#include <fmt/format.h>

#include "core/common/numbers.h"
#include "core/common/text_file.h"
#include "core/pattern/readers/pattern_parsers.h"
#include "core/pattern/readers/text_scanning.h"

namespace quarvel {
namespace {

constexpr ReaderTexts kBrukerTexts{"Error opening txt file", "Error reading txt file", "Nothing read from txt file"};
constexpr char kBrukerDiffractometer[] = "Bruker D8 Advance";
// Bruker writes this for points that were not measured.
constexpr double kUnmeasured = -9999.0;

struct DataColumns {
  std::vector<double> twoTheta;
  std::vector<float> counts;
  std::size_t unmeasured = 0;
};

// Data lines from `first` on: "2θ counts" pairs (or counts alone when `countsOnly`). Comment
// lines (";") are passed over; the first other line that is not numbers ends the data.
DataColumns readDataLines(const std::vector<std::string>& lines, std::size_t first, bool countsOnly) {
  DataColumns data;
  for (std::size_t i = first; i < lines.size() && data.counts.size() < kReaderPointLimit; ++i) {
    const std::string line = trim(lines[i]);
    if (line.empty() || line[0] == ';') continue;
    const auto numbers = readFreeNumbers(line);
    if (countsOnly) {
      if (numbers.empty()) break;
      for (double v : numbers)
        if (data.counts.size() < kReaderPointLimit) data.counts.push_back(asFloat(v).value_or(0.0f));
      continue;
    }
    if (numbers.size() < 2 || !asFloat(numbers[0]) || !asFloat(numbers[1])) break;
    float counts = static_cast<float>(numbers[1]);
    if (numbers[1] == kUnmeasured) {
      counts = 0.0f;
      ++data.unmeasured;
    }
    data.twoTheta.push_back(numbers[0]);
    data.counts.push_back(counts);
  }
  return data;
}

// Fills start, step and counts of `scan` from the header values and the data columns.
ReadOutcome finishScan(ScanData scan, DataColumns data, std::optional<double> start, std::optional<double> step) {
  if (data.counts.empty()) return ReadFailure{kFileErrorTitle, kBrukerTexts.emptyError};
  const int count = keptCount(data.counts, [](float v) { return v > 0.0f; });
  if (count < 1) return ReadFailure{kFileErrorTitle, kBrukerTexts.emptyError};
  data.counts.resize(static_cast<std::size_t>(count));
  if (!data.twoTheta.empty()) {
    data.twoTheta.resize(static_cast<std::size_t>(count));
    if (!start) start = data.twoTheta.front();
    if (!step) step = count > 1 ? (data.twoTheta.back() - data.twoTheta.front()) / (count - 1) : 0.0;
    if (auto remark = unevenStepRemark(data.twoTheta, *start, *step)) scan.remarks.push_back(*remark);
  }
  if (!start || !step) return ReadFailure{kFileErrorTitleCaps, kBrukerTexts.readError};
  if (data.unmeasured > 0)
    scan.remarks.push_back(fmt::format("{} unmeasured point(s) (-9999) set to 0", data.unmeasured));
  scan.start = static_cast<float>(*start);
  scan.step = static_cast<float>(*step);
  scan.y = std::move(data.counts);
  scan.diffractometer = kBrukerDiffractometer;
  return scan;
}

// Drive values of a uxd range that scan 2θ.
bool drivesTwoTheta(std::string drive) {
  drive = toUpper(trim(drive));
  for (const char* ok : {"COUPLED", "DETECTOR", "2THETA", "TWOTHETA", "2THETA/THETA", "THETA/2THETA",
                         "THETA-2THETA", "2THETA-THETA", "UNLOCKED", "LOCKED COUPLED", "UNLOCKED COUPLED"})
    if (drive == ok) return true;
  return false;
}

}  // namespace

const ReaderTexts& brukerReaderTexts() { return kBrukerTexts; }

ReadOutcome parseBrukerTxt(std::string_view text) {
  const auto lines = splitLines(text);
  ScanData scan;
  std::optional<double> start, step, average, announced;
  std::optional<std::size_t> dataLine;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string& line = lines[i];
    if (toLower(trim(line)) == "[data]") {
      dataLine = i + 1;
      break;
    }
    if (auto v = headerValue(line, "Date")) scan.date = *v;
    else if (auto t = headerValue(line, "Time")) scan.time = *t;
    else if (auto a1 = headerNumber(line, "Alpha1")) scan.wavelengths.alpha1 = static_cast<float>(*a1);
    else if (auto a2 = headerNumber(line, "Alpha2")) scan.wavelengths.alpha2 = static_cast<float>(*a2);
    else if (auto r = headerNumber(line, "AlphaRatio")) scan.wavelengths.ratio = static_cast<float>(*r);
    else if (auto av = headerNumber(line, "AlphaAverage")) average = av;
    else if (auto inc = headerNumber(line, "Increment")) step = inc;
    else if (auto n = headerNumber(line, "NumberOfCompleteData")) announced = n;
    else if (auto s = headerNumber(line, "Start")) start = s;
  }
  if (!dataLine) return ReadFailure{kFileErrorTitleCaps, kBrukerTexts.readError};
  scan.wavelength = average ? static_cast<float>(*average) : scan.wavelengths.alpha1;
  ReadOutcome outcome = finishScan(std::move(scan), readDataLines(lines, *dataLine, false), start, step);
  if (auto* done = std::get_if<ScanData>(&outcome); done && announced && nint(*announced) != static_cast<long>(done->y.size()))
    done->remarks.push_back(fmt::format("the header announces {} points; {} were kept", nint(*announced), done->y.size()));
  return outcome;
}

ReadOutcome parseUxd(std::string_view text) {
  const auto lines = splitLines(text);
  ScanData scan;
  std::optional<double> start, step;
  std::optional<std::string> drive;
  std::size_t dataLine = 0;
  bool countsOnly = false;
  int ranges = 0;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string line = toUpper(trim(lines[i]));
    const bool pairMarker = startsWith(line, "_2THETACOUNTS") || startsWith(line, "_2THETACPS");
    const bool countMarker = line == "_COUNTS" || line == "_CPS" || startsWith(line, "_COUNTS ") ||
                             startsWith(line, "_COUNTS=") || startsWith(line, "_CPS=") || startsWith(line, "_CPS ");
    if (pairMarker || countMarker) {
      if (++ranges == 1) {
        dataLine = i + 1;
        countsOnly = countMarker;
      }
      continue;
    }
    if (ranges > 0) continue;  // only the first range's header counts
    const std::string& raw = lines[i];
    if (auto v = headerValue(raw, "_DATEMEASURED")) scan.date = *v;
    else if (auto w1 = headerNumber(raw, "_WL1")) scan.wavelengths.alpha1 = static_cast<float>(*w1);
    else if (auto w2 = headerNumber(raw, "_WL2")) scan.wavelengths.alpha2 = static_cast<float>(*w2);
    else if (auto r = headerNumber(raw, "_WLRATIO")) scan.wavelengths.ratio = static_cast<float>(*r);
    else if (auto st = headerNumber(raw, "_STEPSIZE")) step = st;
    else if (auto s = headerNumber(raw, "_START")) start = s;
    else if (auto d = headerValue(raw, "_DRIVE")) drive = d;
  }
  if (ranges == 0) return ReadFailure{kFileErrorTitleCaps, kBrukerTexts.readError};
  if (drive && !drivesTwoTheta(*drive))
    return ReadFailure{kFileErrorTitleCaps, "The uxd scan drives " + trim(*drive) + ", not 2theta: nothing read"};
  scan.wavelength = scan.wavelengths.alpha1;
  if (ranges > 1) scan.remarks.push_back(fmt::format("{} ranges in the file; the first is loaded", ranges));
  return finishScan(std::move(scan), readDataLines(lines, dataLine, countsOnly), start, step);
}

}  // namespace quarvel
