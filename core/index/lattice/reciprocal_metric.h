// The reciprocal metric of a lattice as the six coefficients of its quadratic form
//   q(hkl) = 1/d² = A h² + B k² + C l² + D kl + E hl + F hk
// (A = a*², D = 2 b*·c*, ...), with conversions to and from the direct cell.
#pragma once

#include <optional>

#include "core/fit/linear_algebra.h"
#include "core/index/lattice/matrix3.h"

namespace quarvel {

struct ReciprocalMetric {
  double A = 0, B = 0, C = 0, D = 0, E = 0, F = 0;  // Å⁻²

  double q(int h, int k, int l) const {
    const double hd = h, kd = k, ld = l;
    return A * hd * hd + B * kd * kd + C * ld * ld + D * kd * ld + E * hd * ld + F * hd * kd;
  }
  // G*, the symmetric 3×3 tensor of the form.
  Mat3 tensor() const;
  static ReciprocalMetric fromTensor(const Mat3& g);
};

// G, the direct metric tensor (a², ab cos γ, ...).
Mat3 directMetric(const CellParameters& cell);
// The cell of a direct metric tensor; nullopt when it is not positive definite.
std::optional<CellParameters> cellFromDirectMetric(const Mat3& g);

ReciprocalMetric metricFromCell(const CellParameters& cell);
// nullopt when the form is not positive definite (no real lattice has it).
std::optional<CellParameters> cellFromMetric(const ReciprocalMetric& metric);

// Cell volume in Å³; 0 for impossible angles.
double cellVolume(const CellParameters& cell);
double cellVolume(const ReciprocalMetric& metric);

// All leading minors of G* positive (Sylvester): the admissibility test of a trial metric.
bool isPositiveDefinite(const ReciprocalMetric& metric);
bool isPositiveDefinite(const Mat3& g);

}  // namespace quarvel
