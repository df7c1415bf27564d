// The background of the current pattern (slot 2) and what is derived from it: scaling,
// subtraction into slot 3, crystallinity, and the automatic background estimate. These
// functions work on the store only; the Background menu commands add the dialogs and messages.
#pragma once

#include <span>
#include <vector>

#include "core/pattern/pattern_store.h"
#include "core/process/process_settings.h"

namespace quarvel {

// Smallest pattern/background ratio over the points where both are above zero and that are not
// excluded (1.0e30 when there is none).
double smallestRatio(const PatternStore& store, const ProcessSettings& process);

// Multiplies every background point by `factor`.
void scaleBackground(PatternStore& store, double factor);

// Pattern and background sums over the background grid, excluded points skipped.
struct BackgroundSums {
  double pattern = 0.0;
  double background = 0.0;
};
BackgroundSums backgroundSums(const PatternStore& store, const ProcessSettings& process);

// The background's share of the pattern in percent: 100·S2/S1, or 100 when S1 is not positive.
double backgroundShare(const BackgroundSums& sums);

// The factor that brings the background to the pattern over [low, high]: P/B for the simple
// average, RB/RP (means with weights 1/I) for the weighted one. Points at or below zero cannot
// carry a weight and are left out of the reciprocal sums.
double intervalFactor(const PatternStore& store, const ProcessSettings& process, float low, float high, bool weighted);

// slot3(i) = slot1(i) - slot2(i), and 0 for excluded points; slot 3 takes slot 1's grid.
void formDifference(PatternStore& store, const ProcessSettings& process);

// Crystallinity in percent, with every point weighted by s²·Δs in reciprocal space
// (s = 2 sin θ / λ).
double crystallinity(const PatternStore& store, const ProcessSettings& process);

// Automatic background of a pattern, SNIP-type peak clipping (Ryan et al. 1988; Morháč &
// Matoušek 2008) on the log-log-square-root scale, with clipping windows decreasing from
// `window`/2 points to 1, applied to the lightly smoothed pattern. Empty for windows of 2 or less.
std::vector<float> estimateBackground(std::span<const float> y, int window);

}  // namespace quarvel
