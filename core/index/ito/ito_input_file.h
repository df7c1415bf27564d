// The input deck an ITO job writes from a peak file: a title card (the peak file path), the
// parameter card "9004 0 0 0" with tol2, tol3 and the wavelength, the card with zero shift,
// required figure of merit and indexed lines, one line card per peak, a blank card and "end ".
#pragma once

#include <string>
#include <vector>

namespace quarvel {

struct ItoJob {
  std::string peakFile;
  double wavelength = 1.5406;
  double zeroShift = 0.0;
  int maxLines = 30;
  double tol2 = 3.0;
  double tol3 = 4.5;
  int indexedLines = 14;
  double requiredMerit = 4.0;
};

// The cards of the deck (each without a line end).
std::vector<std::string> itoInputCards(const ItoJob& job, const std::vector<double>& peaks);

}  // namespace quarvel
