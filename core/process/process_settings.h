// Settings of the Modify operations, kept between uses so that each dialog opens with the
// values of its last use.
#pragma once

#include <array>
#include <vector>

namespace quarvel {

struct ExcludedRegion {
  float low = 0.0f;
  float high = 0.0f;
};

inline constexpr std::size_t kMaxExcludedRegions = 25;

struct ConvertSettings {
  float start = 0.0f, stop = 0.0f, step = 0.0f;
  float oldWavelength = 0.0f, newWavelength = 0.0f;
  bool used = false;  // false until the first Convert: the dialog then shows the pattern's values
};

struct ProcessSettings {
  float zeroShift = 0.0f;
  bool maintainOriginalSteps = false;
  float truncateLower = 0.0f, truncateUpper = 0.0f;
  std::vector<ExcludedRegion> excludedRegions;  // at most kMaxExcludedRegions
  std::array<float, 6> polynomial{};            // A0..A5
  double scaleFactor = 1.0;
  int smoothingFactor = 3;
  int savitzkyGolayWindow = 9;
  int chebyshevOrder = 3;
  ConvertSettings convert;
  int lpChoice = 1;            // 1..8
  float inclination = 0.0f;    // flat plate: inclination angle α, degrees
  float muThickness = 0.0f;    // flat plate: μt

  // A point is excluded when low < 2θ < high for any region (strict on both sides).
  bool isExcluded(float twoTheta) const {
    for (const auto& r : excludedRegions)
      if (r.low < twoTheta && twoTheta < r.high) return true;
    return false;
  }

  // The values that go back to their defaults whenever the working state is reset.
  void resetWorkingDefaults() {
    polynomial = {};
    savitzkyGolayWindow = 9;
  }
};

}  // namespace quarvel
