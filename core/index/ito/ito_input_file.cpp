#include "core/index/ito/ito_input_file.h"

#include <algorithm>

#include "core/common/numbers.h"

namespace quarvel {


std::vector<std::string> itoInputCards(const ItoJob& job, const std::vector<double>& peaks) {
  std::vector<std::string> cards;
  cards.push_back(job.peakFile);
  // no manual, no special features, no intensities, 4 extensive solutions, every system welcome
  cards.push_back("9004 0 0 0" + formatF(job.tol2, 5, 2) + formatF(job.tol3, 5, 2) + formatF(job.wavelength, 10, 5));
  cards.push_back(formatF(job.zeroShift, 10, 4) + formatF(job.requiredMerit, 10, 1) + formatI(job.indexedLines, 10));
  const std::size_t count = std::min(peaks.size(), static_cast<std::size_t>(std::max(job.maxLines, 0)));
  for (std::size_t i = 0; i < count; ++i) cards.push_back(formatF(peaks[i], 10, 4));
  cards.push_back("");
  cards.push_back("end ");
  return cards;
}

}  // namespace quarvel
