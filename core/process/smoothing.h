// Smoothing filters on the intensities of a pattern: the moving average (also the first step of
// the peak search) and the Savitzky-Golay quadratic/cubic filter.
#pragma once

#include <span>

namespace quarvel {

// Moving average over a window of n points, in place on y. Nothing happens for n below 2.
// With h = (n - 1) / 2, the first and last h points get one-sided windows that grow towards
// the inside (point k from the start, 1-based, is the mean of the first h + k points; likewise
// from the end); every other point i gets the sum over i - h .. i + h divided by n. For an even n
// the middle windows hold n - 1 points but are still divided by n, and point n/2 keeps its value.
// The grid is equidistant, so `x` is not needed; it is taken to keep the call shape of the
// paired version below.
void movingAverage(std::span<const float> x, std::span<float> y, int n);

// The same smoother on paired arrays of 2θ and intensity (the peak search smooths both): the
// middle windows average x like y, while the end points keep their x.
void movingAveragePairs(std::span<float> x, std::span<float> y, int n);

// Savitzky-Golay window sizes that have a coefficient set: 5, 7, ..., 25.
inline constexpr int kSavitzkyGolayMinWindow = 5;
inline constexpr int kSavitzkyGolayMaxWindow = 25;

struct SavitzkyGolaySet {
  int window = 0;                 // points in the window, odd
  std::span<const int> weights;   // c(-h) .. c(h)
  int divisor = 0;                // the normalising divisor the filter divides by
};

// The coefficient set for `window`; sizes outside 5, 7, ..., 25 get the 25-point set.
// The 23-point divisor is 8059, not the coefficients' sum of 805: the filter lowers intensities
// by about a factor of ten at that size, and patterns processed before rely on it.
SavitzkyGolaySet savitzkyGolaySet(int window);

// Savitzky-Golay filtering of y in place: every point at which the full window fits becomes
// Σ c(j)·y(i + j) / divisor. The first and last h points, where the window does not fit, take
// the nearest filtered value. A pattern shorter than the window is left unchanged.
void savitzkyGolay(std::span<float> y, int window);

}  // namespace quarvel
