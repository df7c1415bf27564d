// Automatic peak search on the second difference of the smoothed pattern, with a local
// constant-plus-Gaussian significance test of every candidate, and the nearest-maximum rule of
// the manual search.
#pragma once

#include <span>
#include <vector>

#include "core/peaks/peak_list.h"

namespace quarvel {

inline constexpr std::size_t kMaxCandidates = 5000;

struct PeakCandidate {
  int point = 0;   // 0-based index of the most negative second difference of its run
  int width = 0;   // run length in points
};

// Runs of negative second difference whose length lies within [wmin, wmax] points, in the
// order found, at most kMaxCandidates. `x` and `y` are smoothed in place (work copies).
std::vector<PeakCandidate> findCandidates(std::span<float> x, std::span<float> y, int smoothing, int wmin, int wmax);

struct Significance {
  double height = 0.0;  // Gaussian height above the local constant
  double noise = 0.0;   // square root of the local constant
};

// Fits constant + unit-area Gaussian of FWHM `width` points over the 2h + 1 points around the
// candidate (h = 3·width / 2) by linear least squares. Height and noise are 0 when the window
// does not fit inside the pattern (its first point must be at least the pattern's third).
Significance testCandidate(std::span<const float> y, const PeakCandidate& c, float step);

// The whole search on a pattern (2θ grid start + i·step, intensities y), replacing `out`.
// Positions are the smoothed 2θ of the candidate point; intensities the fitted peak height.
// The significance test runs on the smoothed intensities.
void searchPeaks(float start, float step, std::span<const float> y, const PeakSearchOptions& options,
                 std::vector<Peak>& out);

// The manual search: from the point nearest to `twoTheta`, climb to the nearest local maximum
// of the pattern. Returns the point index, or -1 for an empty pattern.
int nearestMaximum(float start, float step, std::span<const float> y, float twoTheta);

}  // namespace quarvel
