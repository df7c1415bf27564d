#include "core/peaks/peak_files.h"

#include <algorithm>
#include <cmath>

#include "core/common/numbers.h"
#include "core/common/text_file.h"

namespace quarvel {

std::string peakFileText(const std::vector<Peak>& peaks, const PatternSlot& pattern) {
  std::string out;
  for (const Peak& p : peaks) {
    long point = 0, first = 0, last = 0;
    if (pattern.count > 0 && pattern.step != 0.0f) {
      auto index = [&](double x) { return std::clamp(nint((x - pattern.start) / pattern.step) + 1, 1L, static_cast<long>(pattern.count)); };
      point = index(p.position);
      if (p.fwhm > 0.0f) {
        first = index(p.position - p.fwhm);
        last = index(p.position + p.fwhm);
      }
    }
    out += formatF(p.position, 10, 4) + formatF(p.intensity, 14, 2) + formatF(p.fwhm, 9, 4) + formatF(p.eta, 9, 4) +
           formatF(p.fwhmLeft, 9, 4) + formatF(p.etaLeft, 9, 4) + formatI(point, 7) + formatI(first, 7) +
           formatI(last, 7) + formatI(p.fwhm > 0.0f ? 1 : 0, 3) + "\n";
  }
  return out;
}

PeakFileRead parsePeakFile(std::string_view text, const std::string& name) {
  PeakFileRead result;
  const auto lines = splitLines(text);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (trim(lines[i]).empty()) continue;
    const auto v = readFreeNumbers(lines[i]);
    if (v.size() < 2) {
      result.error = "Error reading " + name + " line " + std::to_string(i + 1);
      return result;
    }
    if (result.peaks.size() >= kMaxPeaks) break;
    Peak p;
    float* fields[] = {&p.position, &p.intensity, &p.fwhm, &p.eta, &p.fwhmLeft, &p.etaLeft};
    for (std::size_t k = 0; k < 6 && k < v.size(); ++k) *fields[k] = static_cast<float>(v[k]);
    result.peaks.push_back(p);
  }
  return result;
}

}  // namespace quarvel
