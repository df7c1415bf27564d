// Conversions between the measures of a diffraction line. The lattice code works in
// q = 1/d² (Å⁻²); the engines' own units are produced only at their report boundary:
// sin²θ = λ²q/4 for trial-and-error tolerances, and 10⁴/d² ("q-units") for the zone method.
#pragma once

#include <cmath>
#include <numbers>

namespace quarvel {

inline constexpr double kDegree = std::numbers::pi / 180.0;

// q of a line at 2θ (degrees); 0 for 2θ ≤ 0.
inline double qFromTwoTheta(double twoTheta, double wavelength) {
  const double s = std::sin(0.5 * twoTheta * kDegree);
  return 4.0 * s * s / (wavelength * wavelength);
}

// 2θ (degrees) of a line of given q; NaN beyond the wavelength's reach (sin θ > 1).
inline double twoThetaFromQ(double q, double wavelength) {
  const double s = 0.5 * wavelength * std::sqrt(q);
  if (s > 1.0) return std::nan("");
  return 2.0 * std::asin(s) / kDegree;
}

inline double dFromQ(double q) { return 1.0 / std::sqrt(q); }
inline double qFromD(double d) { return 1.0 / (d * d); }
inline double sinSquaredThetaFromQ(double q, double wavelength) { return 0.25 * wavelength * wavelength * q; }
inline double qFromSinSquaredTheta(double s, double wavelength) { return 4.0 * s / (wavelength * wavelength); }
inline double qUnitsFromQ(double q) { return 1.0e4 * q; }
inline double qFromQUnits(double qu) { return 1.0e-4 * qu; }

// dq/d(2θ) per radian of 2θ: turns an angular error into a q error at that angle.
inline double qSlopePerRadian(double twoTheta, double wavelength) {
  return 2.0 / (wavelength * wavelength) * std::sin(twoTheta * kDegree);
}

// A tolerance of ±tol degrees 2θ around a line at 2θ, expressed in q.
inline double qToleranceFromTwoTheta(double twoTheta, double toleranceDegrees, double wavelength) {
  return qSlopePerRadian(twoTheta, wavelength) * toleranceDegrees * kDegree;
}

}  // namespace quarvel
