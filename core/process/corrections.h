// Instrument and sample corrections: angle-dependent factors applied point by point to the
// intensities of a pattern on the grid start + i·step (degrees 2θ, no zero correction).
#pragma once

#include <span>

namespace quarvel {

// Lorentz-polarisation type corrections, in the order of the dialog's buttons:
// 1 *(1+cos²2θ)/2, 2 /(1+cos²2θ)/2, 3 *sin θ, 4 /sin θ, 5 *sin θ·sin 2θ, 6 /(sin θ·sin 2θ),
// 7 *cos(2θ - 45°), 8 /cos(2θ - 45°). The polarisation factor is halved so that it is 1 at
// 2θ = 0. Choices 3 to 6 use 2θ = 0.5° for points below it (no division by zero near the
// origin); choices 7 and 8 use 120° for points above it. Other choices change nothing.
inline constexpr int kLpChoiceCount = 8;
float lpCorrected(float y, float twoTheta, int choice);
void lpCorrect(std::span<float> y, float start, float step, int choice);

// Relative irradiated volume with an automatic divergence slit:
// g = sin(2θ·0.5·0.0153201 + 0.1947787) - 0.19355 (the sine's argument in radians as written).
float autoDivergenceFactor(float twoTheta);
// Forward: y / g (turns variable-slit data into fixed-slit data); reverse: y·g.
void autoDivergenceCorrect(std::span<float> y, float start, float step, bool reverse);

// Absorption by a flat plate of thickness t and absorption coefficient μ, in transmission, tilted
// by `inclination` α (degrees). The factor (1 - cos α / c) / (exp(-μt/c) - exp(-μt/cos α)) with
// c = cos(2θ - α) is normalised to 1 at the last point within one step of 2θ = α. Within one step
// of 2θ = 2α, where both parts of the fraction vanish, the previous point's factor is used.
// Points with c <= 0 are left unchanged, and when no point lies near α the factors are applied
// unnormalised. Returns false, changing nothing, when μt <= 0 or cos α <= 0.
bool flatPlateCorrect(std::span<float> y, float start, float step, float inclination, float muThickness);

}  // namespace quarvel
