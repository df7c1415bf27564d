#include "core/peaks/background.h"

#include <algorithm>
#include <cmath>

#include "core/process/smoothing.h"

namespace quarvel {
namespace {

// Index of the pattern point at the background's point i (the grids share their step once
// a background was loaded; the starts may differ by whole steps).
int patternIndex(const PatternSlot& pattern, const PatternSlot& background, int i) {
  if (pattern.step == 0.0f) return i;
  return i + static_cast<int>(std::lround((background.start - pattern.start) / pattern.step));
}

template <class Visit>
void forEachCommonPoint(const PatternStore& store, const ProcessSettings& process, Visit visit) {
  const PatternSlot& p = store.slot(kSlotPattern);
  const PatternSlot& b = store.slot(kSlotBackground);
  for (int i = 0; i < b.count; ++i) {
    const int j = patternIndex(p, b, i);
    if (j < 0 || j >= p.count) continue;
    const float twoTheta = b.x(i);
    if (process.isExcluded(twoTheta)) continue;
    visit(twoTheta, static_cast<double>(p.y[static_cast<std::size_t>(j)]), static_cast<double>(b.y[static_cast<std::size_t>(i)]));
  }
}

}  // namespace

double smallestRatio(const PatternStore& store, const ProcessSettings& process) {
  double ratio = 1.0e30;
  forEachCommonPoint(store, process, [&](float, double p, double b) {
    if (p > 0.0 && b > 0.0) ratio = std::min(ratio, p / b);
  });
  return ratio;
}

void scaleBackground(PatternStore& store, double factor) {
  for (float& v : store.slot(kSlotBackground).data()) v = static_cast<float>(v * factor);
}

BackgroundSums backgroundSums(const PatternStore& store, const ProcessSettings& process) {
  BackgroundSums sums;
  forEachCommonPoint(store, process, [&](float, double p, double b) {
    sums.pattern += p;
    sums.background += b;
  });
  return sums;
}

double backgroundShare(const BackgroundSums& sums) {
  return sums.pattern > 0.0 ? 100.0 * sums.background / sums.pattern : 100.0;
}

double intervalFactor(const PatternStore& store, const ProcessSettings& process, float low, float high, bool weighted) {
  double p = 0, b = 0, rp = 0, rb = 0;
  forEachCommonPoint(store, process, [&](float x, double yp, double yb) {
    if (x < low || x > high) return;
    p += yp;
    b += yb;
    if (yp > 0.0) rp += 1.0 / yp;
    if (yb > 0.0) rb += 1.0 / yb;
  });
  if (weighted) return rp > 0.0 ? rb / rp : 1.0;
  return b != 0.0 ? p / b : 1.0;
}

void formDifference(PatternStore& store, const ProcessSettings& process) {
  const PatternSlot& p = store.slot(kSlotPattern);
  const PatternSlot& b = store.slot(kSlotBackground);
  PatternSlot& d = store.slot(kSlotAsLoaded);
  d.copyFrom(p);
  for (int j = 0; j < p.count; ++j) {
    const auto k = static_cast<std::size_t>(j);
    const int i = j - (patternIndex(p, b, 0));
    const double background = (i >= 0 && i < b.count) ? b.y[static_cast<std::size_t>(i)] : 0.0;
    d.y[k] = process.isExcluded(p.x(j)) ? 0.0f : static_cast<float>(p.y[k] - background);
  }
}

double crystallinity(const PatternStore& store, const ProcessSettings& process) {
  const PatternSlot& p = store.slot(kSlotPattern);
  const double lambda = p.wavelength > 0.0f ? p.wavelength : store.wavelength.alpha1;
  constexpr double kDegree = 3.14159265358979323846 / 180.0;
  double tp = 0.0, tb = 0.0;
  forEachCommonPoint(store, process, [&](float x, double yp, double yb) {
    const double s = 2.0 * std::sin(0.5 * x * kDegree) / lambda;
    // Δs for one step in 2θ: ds/d(2θ) = cos θ / λ per radian of 2θ.
    const double ds = std::cos(0.5 * x * kDegree) / lambda * p.step * kDegree;
    tp += yp * s * s * ds;
    tb += yb * s * s * ds;
  });
  return tp != 0.0 ? (tp - tb) * 100.0 / tp : 0.0;
}

std::vector<float> estimateBackground(std::span<const float> y, int window) {
  const std::size_t n = y.size();
  if (window <= 2 || n < 3) return {};
  std::vector<float> smooth(y.begin(), y.end());
  movingAverage(smooth, smooth, 5);
  // Log-log-square-root operator: compresses peaks so that clipping treats small and large
  // peaks alike.
  std::vector<double> v(n), clipped(n);
  for (std::size_t i = 0; i < n; ++i)
    v[i] = std::log(std::log(std::sqrt(std::max(0.0f, smooth[i]) + 1.0) + 1.0) + 1.0);
  const std::size_t m = static_cast<std::size_t>(window / 2);
  for (std::size_t p = std::min(m, (n - 1) / 2); p >= 1; --p) {
    clipped = v;
    for (std::size_t i = p; i + p < n; ++i) clipped[i] = std::min(v[i], 0.5 * (v[i - p] + v[i + p]));
    v.swap(clipped);
  }
  std::vector<float> background(n);
  for (std::size_t i = 0; i < n; ++i) {
    const double e = std::exp(std::exp(v[i]) - 1.0) - 1.0;
    background[i] = static_cast<float>(e * e - 1.0);
  }
  return background;
}

}  // namespace quarvel
