// Interpolating cubic spline through tabulated points, used wherever a pattern is re-sampled onto
// another grid (Zero shift with "Maintain original steps", Convert).
#pragma once

#include <span>
#include <vector>

namespace quarvel {

// An end derivative at or above this value means a natural end: zero second derivative there.
inline constexpr float kNaturalSplineEnd = 1.0e30f;

class CubicSpline {
 public:
  // `x` must be strictly ascending and as long as `y`. The end derivatives are the first
  // derivatives at the first and last point; kNaturalSplineEnd gives natural ends.
  CubicSpline(std::span<const float> x, std::span<const float> y,
              float firstDerivativeStart = kNaturalSplineEnd,
              float firstDerivativeEnd = kNaturalSplineEnd);

  // The spline at t. Outside [x first, x last] the end cubic is extended.
  float operator()(float t) const;

  // Values at ascending positions; out[i] is the spline at at[i]. Walks the intervals once, so a
  // whole grid costs no more than its length.
  void resample(std::span<const float> at, std::span<float> out) const;

  std::span<const float> secondDerivatives() const { return y2_; }

 private:
  float evaluate(std::size_t interval, float t) const;

  std::vector<float> x_;
  std::vector<float> y_;
  std::vector<float> y2_;
};

}  // namespace quarvel
