#include "core/peaks/peak_search.h"

#include <algorithm>
#include <cmath>

#include "core/common/numbers.h"
#include "core/process/smoothing.h"

namespace quarvel {

std::vector<PeakCandidate> findCandidates(std::span<float> x, std::span<float> y, int smoothing, int wmin, int wmax) {
  const std::size_t n = y.size();
  std::vector<PeakCandidate> candidates;
  if (n < 3) return candidates;
  movingAveragePairs(x, y, smoothing);

  // d1(i) = y(i-1) - y(i), smoothed; d2(i) = d1(i-1) - d1(i): a peak is a negative lobe of d2,
  // one point after the maximum.
  std::vector<float> d1(n, 0.0f);
  for (std::size_t i = 1; i < n; ++i) d1[i] = y[i - 1] - y[i];
  movingAverage(x, d1, smoothing);

  int runLength = 0;
  float runMinimum = 1.0e30f;
  int runPoint = 0;
  for (std::size_t i = 2; i < n && candidates.size() < kMaxCandidates; ++i) {
    const float d2 = d1[i - 1] - d1[i];
    if (d2 < 0.0f) {
      ++runLength;
      if (d2 < runMinimum) {
        runMinimum = d2;
        runPoint = static_cast<int>(i);
      }
      continue;
    }
    if (runLength >= wmin && runLength <= wmax && runLength > 0) candidates.push_back({runPoint, runLength});
    runLength = 0;
    runMinimum = 1.0e30f;
  }
  return candidates;
}

Significance testCandidate(std::span<const float> y, const PeakCandidate& c, float step) {
  const int n = static_cast<int>(y.size());
  const int h = (3 * c.width) / 2;
  // In the 1-based counting of the pattern the window must start at point 2 or later.
  if (c.point - h < 1 || c.point + h > n - 1 || c.width <= 0 || step == 0.0f) return {};
  const double w = c.width;
  double sy = 0, sg = 0, syg = 0, sgg = 0;
  const double count = 2.0 * h + 1.0;
  for (int k = -h; k <= h; ++k) {
    const double g = std::exp(-static_cast<double>(k) * k * 2.7725887 / (w * w)) * 0.9394372 / (w * step);
    const double v = y[static_cast<std::size_t>(c.point + k)];
    sy += v;
    sg += g;
    syg += v * g;
    sgg += g * g;
  }
  const double d = count * sgg - sg * sg;
  if (d == 0.0) return {};
  const double b = (sgg * sy - sg * syg) / d;
  const double a = (count * syg - sg * sy) / d;
  Significance s;
  s.noise = b > 0.0 ? std::sqrt(b) : 0.0;
  s.height = a * 0.9394372 / (w * step);
  return s;
}

void searchPeaks(float start, float step, std::span<const float> y, const PeakSearchOptions& options,
                 std::vector<Peak>& out) {
  out.clear();
  const std::size_t n = y.size();
  std::vector<float> wx(n), wy(y.begin(), y.end());
  for (std::size_t i = 0; i < n; ++i) wx[i] = start + static_cast<float>(i) * step;
  const int wmin = step != 0.0f ? static_cast<int>(nint(options.minFwhm / step)) : 0;
  const int wmax = step != 0.0f ? static_cast<int>(nint(options.maxFwhm / step)) : 0;
  const auto candidates = findCandidates(wx, wy, options.smoothingFactor, wmin, wmax);

  // The test runs on the smoothed intensities: the candidate's width was measured on them, so
  // the template matches the peak it is fitted to. Smoothing keeps the local level b, so the
  // counting-statistics noise estimate √b still holds.
  for (std::size_t number = 1; number <= candidates.size(); ++number) {
    const PeakCandidate& c = candidates[number - 1];
    const Significance s = testCandidate(wy, c, step);
    if (s.height <= 0.0 || s.noise <= 0.0 || s.height < options.sigmaFactor * s.noise) continue;
    if (number > kMaxPeaks) break;
    Peak peak;
    peak.position = wx[static_cast<std::size_t>(c.point)];
    peak.intensity = static_cast<float>(s.height);
    out.push_back(peak);
  }
}

int nearestMaximum(float start, float step, std::span<const float> y, float twoTheta) {
  const int n = static_cast<int>(y.size());
  if (n == 0 || step == 0.0f) return -1;
  int i = static_cast<int>(nint((twoTheta - start) / step));
  i = std::clamp(i, 0, n - 1);
  auto at = [&](int k) { return y[static_cast<std::size_t>(k)]; };
  for (;;) {
    if (i + 1 < n && at(i + 1) > at(i)) ++i;
    else if (i > 0 && at(i - 1) > at(i)) --i;
    else return i;
  }
}

}  // namespace quarvel
