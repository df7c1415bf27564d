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
  // derivatives at the first and last point; kNaturalSplineEnd gives natural ends. The spline
  // refers to `x` and `y` without copying them: they must outlive it.
  CubicSpline(std::span<const float> x, std::span<const float> y,
              float firstDerivativeStart = kNaturalSplineEnd,
              float firstDerivativeEnd = kNaturalSplineEnd);

  // The spline at t. Outside [x first, x last] the end cubic is extended.
  float operator()(float t) const;

  // Values at ascending positions; out[i] is the spline at at[i]. Walks the intervals once, so a
  // whole grid costs no more than its length.
  void resample(std::span<const float> at, std::span<float> out) const;
  // Values on the equidistant grid start + i·step, i = 0 .. out.size() - 1.
  void resampleGrid(float start, float step, std::span<float> out) const;

  std::span<const float> secondDerivatives() const { return y2_; }

 private:
  float evaluate(std::size_t interval, float t) const;
  template <typename Position>
  void resampleAt(std::size_t count, Position position, std::span<float> out) const;

  std::span<const float> x_;
  std::span<const float> y_;
  std::vector<float> y2_;
};

}  // namespace quarvel
