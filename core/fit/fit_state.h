// State of the profile fit that other subsystems read: the refined Chebyshev background and the
// range it was fitted over. The fit itself fills in the rest as it lands.
#pragma once

#include <array>

namespace quarvel {

struct FitState {
  int backgroundTerms = 0;                  // refined Chebyshev terms, 0..15
  std::array<double, 15> backgroundCoeff{};
  float fitMin = 5.0f, fitMax = 150.0f;     // fitted 2θ range
  bool hasRefinedBackground = false;

  void reset() { *this = FitState(); }
};

}  // namespace quarvel
