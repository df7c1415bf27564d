// Peak files (.pks): one line per peak, in list order: position, intensity, FWHM, η, left FWHM,
// left η (F10.4, F14.2 and four F9.4), then four integers derived for the peak on the current
// pattern: the point of the position and the first and last points within one FWHM of it
// (0 when the pattern is empty or the peak has no width yet), and a flag that is 1 once the
// profile fit has refined the peak.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/pattern/pattern_store.h"
#include "core/peaks/peak_list.h"

namespace quarvel {

std::string peakFileText(const std::vector<Peak>& peaks, const PatternSlot& pattern);

// The peaks of a .pks text. A line that cannot be read gives an error naming its number.
struct PeakFileRead {
  std::vector<Peak> peaks;
  std::string error;  // empty when every line was read
};
PeakFileRead parsePeakFile(std::string_view text, const std::string& name);

}  // namespace quarvel
