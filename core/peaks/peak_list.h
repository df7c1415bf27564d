// The peak list found by the peak search (or entered by hand) and the options of the search.
// It feeds the profile fit and the indexing jobs.
#pragma once

#include <vector>

namespace quarvel {

inline constexpr std::size_t kMaxPeaks = 1000;

// Eight single-precision fields; the search fills position and intensity, the profile fit the
// others.
struct Peak {
  float position = 0.0f;   // 2θ, degrees
  float intensity = 0.0f;
  float fwhm = 0.0f;
  float eta = 0.0f;
  float fwhmLeft = 0.0f;
  float etaLeft = 0.0f;
  float reflection = 0.0f;
  float spare = 0.0f;
};

struct PeakList {
  std::vector<Peak> peaks;  // at most kMaxPeaks

  bool empty() const { return peaks.empty(); }
  std::size_t size() const { return peaks.size(); }
  void clear() { peaks.clear(); }
};

struct PeakSearchOptions {
  int smoothingFactor = 15;  // points
  float minFwhm = 0.05f;     // degrees 2θ
  float maxFwhm = 0.4f;      // degrees 2θ
  float sigmaFactor = 2.0f;
};

}  // namespace quarvel
