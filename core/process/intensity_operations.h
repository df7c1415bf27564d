// Point-by-point operations on the intensities of one slot: Add Polynomial, Scale, the excluded
// regions, and the rule that keeps a pattern non-negative after the first two.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "core/process/process_settings.h"

namespace quarvel {

class PatternStore;
struct PatternSlot;

// Finds the lowest intensity; when it is below zero it is subtracted from every point, so the
// lowest point becomes exactly zero.
void liftToNonNegative(std::span<float> y);

// y(i) += A0 + A1·x + ... + A5·x⁵ with x the point's 2θ in degrees, then liftToNonNegative.
// Coefficients all zero: nothing happens.
void addPolynomial(PatternSlot& slot, const std::array<float, 6>& a);
bool isZeroPolynomial(const std::array<float, 6>& a);

// y(i) = factor·y(i), then liftToNonNegative.
void scaleIntensities(PatternSlot& slot, double factor);

// Every point of `slotIndex` whose 2θ lies strictly inside one of `regions` gets intensity zero
// in the current pattern, the as-loaded copy and the calculated profile (slots 1, 3 and 4), so
// that later fits and comparisons ignore it. The points stay in the grid.
void zeroExcludedPoints(PatternStore& store, int slotIndex, const std::vector<ExcludedRegion>& regions);

}  // namespace quarvel
