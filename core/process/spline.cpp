#include "core/process/spline.h"

#include <algorithm>
#include <cassert>

namespace quarvel {

CubicSpline::CubicSpline(std::span<const float> x, std::span<const float> y,
                         float firstDerivativeStart, float firstDerivativeEnd)
    : x_(x), y_(y), y2_(x.size(), 0.0f) {
  assert(x.size() == y.size());
  const std::size_t n = x_.size();
  if (n < 3) return;  // zero, one or two points: constant or straight line, y2 stays zero
  // Tridiagonal system for the second derivatives, solved by forward elimination (u holds the
  // decomposed right-hand side) and back-substitution.
  std::vector<float> u(n, 0.0f);
  if (firstDerivativeStart >= kNaturalSplineEnd) {
    y2_[0] = 0.0f;
  } else {
    y2_[0] = -0.5f;
    u[0] = (3.0f / (x_[1] - x_[0])) * ((y_[1] - y_[0]) / (x_[1] - x_[0]) - firstDerivativeStart);
  }
  // The right-hand sides do not depend on the elimination, so they are formed first; the
  // elimination itself then carries a single division per point.
  for (std::size_t i = 1; i + 1 < n; ++i) {
    const float slopes = (y_[i + 1] - y_[i]) / (x_[i + 1] - x_[i]) - (y_[i] - y_[i - 1]) / (x_[i] - x_[i - 1]);
    u[i] = 6.0f * slopes / (x_[i + 1] - x_[i - 1]);
  }
  for (std::size_t i = 1; i + 1 < n; ++i) {
    const float sig = (x_[i] - x_[i - 1]) / (x_[i + 1] - x_[i - 1]);
    const float inverseP = 1.0f / (sig * y2_[i - 1] + 2.0f);
    y2_[i] = (sig - 1.0f) * inverseP;
    u[i] = (u[i] - sig * u[i - 1]) * inverseP;
  }
  float qn = 0.0f;
  float un = 0.0f;
  if (firstDerivativeEnd < kNaturalSplineEnd) {
    const float h = x_[n - 1] - x_[n - 2];
    qn = 0.5f;
    un = (3.0f / h) * (firstDerivativeEnd - (y_[n - 1] - y_[n - 2]) / h);
  }
  y2_[n - 1] = (un - qn * u[n - 2]) / (qn * y2_[n - 2] + 1.0f);
  for (std::size_t k = n - 1; k-- > 0;) y2_[k] = y2_[k] * y2_[k + 1] + u[k];
}

float CubicSpline::evaluate(std::size_t lo, float t) const {
  const std::size_t hi = lo + 1;
  const float h = x_[hi] - x_[lo];
  const float a = (x_[hi] - t) / h;
  const float b = (t - x_[lo]) / h;
  return a * y_[lo] + b * y_[hi] + ((a * a * a - a) * y2_[lo] + (b * b * b - b) * y2_[hi]) * (h * h) / 6.0f;
}

float CubicSpline::operator()(float t) const {
  if (x_.empty()) return 0.0f;
  if (x_.size() == 1) return y_[0];
  // Interval [lo, lo + 1] holding t, the end intervals extended outwards.
  const auto it = std::upper_bound(x_.begin() + 1, x_.end() - 1, t);
  return evaluate(static_cast<std::size_t>(it - x_.begin()) - 1, t);
}

template <typename Position>
void CubicSpline::resampleAt(std::size_t count, Position position, std::span<float> out) const {
  assert(out.size() >= count);
  if (x_.size() < 2) {
    for (std::size_t i = 0; i < count; ++i) out[i] = x_.empty() ? 0.0f : y_[0];
    return;
  }
  std::size_t lo = 0;
  const std::size_t lastInterval = x_.size() - 2;
  for (std::size_t i = 0; i < count; ++i) {
    const float t = position(i);
    while (lo < lastInterval && x_[lo + 1] <= t) ++lo;
    while (lo > 0 && x_[lo] > t) --lo;
    out[i] = evaluate(lo, t);
  }
}

void CubicSpline::resample(std::span<const float> at, std::span<float> out) const {
  resampleAt(at.size(), [at](std::size_t i) { return at[i]; }, out);
}

void CubicSpline::resampleGrid(float start, float step, std::span<float> out) const {
  resampleAt(out.size(), [start, step](std::size_t i) { return start + static_cast<float>(i) * step; }, out);
}

}  // namespace quarvel
