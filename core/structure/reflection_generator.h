// Reflections of a cell for a Laue class and a lattice centring over a 2θ range: one
// representative of each class of equivalents with its multiplicity and position. Shared by the
// unit-cell fit, the reflection markers and the pattern calculation.
#pragma once

#include <vector>

#include "core/index/lattice/centring.h"
#include "core/structure/laue_class.h"

namespace quarvel {

struct GeneratedReflection {
  int h = 0, k = 0, l = 0;
  int multiplicity = 0;
  double q = 0;         // 1/d², Å⁻²
  double twoTheta = 0;  // degrees
};

struct ReflectionRange {
  double wavelength = 1.5406;
  double twoThetaMin = 0.0;   // degrees
  double twoThetaMax = 90.0;  // degrees; a reflection exactly here is kept
};

inline constexpr int kMaxIndex = 99;
inline constexpr int kMaxGeneratedReflections = 99999;

// Sorted by 2θ. The cell is first forced onto the Laue class's constraints; R centring given
// with a cell on rhombohedral axes (a = b = c, α = β = γ) counts as primitive.
std::vector<GeneratedReflection> generateReflections(const CellParameters& cell, int laueClass, Centring centring,
                                                     const ReflectionRange& range);

}  // namespace quarvel
