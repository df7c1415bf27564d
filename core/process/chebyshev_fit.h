// Chebyshev fit: a smooth background curve fitted to a pattern by linear least squares.
#pragma once

#include <optional>
#include <vector>

#include "core/process/process_settings.h"

namespace quarvel {

struct PatternSlot;

inline constexpr int kMaxChebyshevOrder = 14;

// Orders outside 0..14 are clamped into it.
int clampChebyshevOrder(int order);

struct ChebyshevFitResult {
  std::vector<float> curve;           // the fitted series at every point of the slot
  std::vector<double> coefficients;   // of T0 .. T(order) on the 2θ range mapped to [-1, 1]
  double rp = 0.0;                    // profile R factor, percent
  double rwp = 0.0;                   // weighted profile R factor, percent
  double gof = 0.0;                   // goodness of fit
  int npar = 0;                       // order + 1
  int pointsUsed = 0;
};

// Fits a Chebyshev series of `order` (clamped) over the 2θ range of `slot` to its intensities,
// weighting each point by 1/y (counting statistics; 1 for intensities below one count). Points
// inside an excluded region take no part. nullopt when the normal matrix is singular (fewer
// points than parameters, or the inversion fails): the caller shows "Matrix inversion error".
std::optional<ChebyshevFitResult> fitChebyshev(const PatternSlot& slot, int order,
                                               const std::vector<ExcludedRegion>& excluded = {});

}  // namespace quarvel
