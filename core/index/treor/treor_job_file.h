// The input file a TREOR90 job writes from a peak file (treor90.tre): the peak file path as the
// title, every value read as F10.4, a blank line, the seven keyword lines CHOICE, WAVE, VOL,
// NIX, MERIT, D1, D2 (each ending in a comma) and "END*".
#pragma once

#include <string>
#include <vector>

namespace quarvel {

struct TreorJob {
  std::string peakFile;
  int choice = 3;           // input form: 0 sin²θ, 1 1/d², 2 θ, 3 2θ, 4 d
  double wavelength = 1.54056;
  double maxVolume = -2000.0;
  int unindexed = 1;        // NIX
  double merit = 10.0;
  double d1 = 0.0002;
  double d2 = 0.0004;
};

// Out-of-range values replaced by their defaults (a negative volume is kept as entered; zero
// becomes −2000).
TreorJob withJobDefaults(TreorJob job);

// The lines of the file, without line ends.
std::vector<std::string> treorJobLines(const TreorJob& job, const std::vector<double>& values);

}  // namespace quarvel
