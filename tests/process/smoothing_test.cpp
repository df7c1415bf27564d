// The moving average and the Savitzky-Golay filter against values worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

#include "core/process/smoothing.h"

namespace quarvel {
namespace {

std::vector<float> ramp(int n, float (*f)(float)) {
  std::vector<float> y(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) y[static_cast<std::size_t>(i)] = f(static_cast<float>(i));
  return y;
}

// The moving average written the plain way: every window summed from a copy of the originals.
std::vector<float> plainMovingAverage(std::vector<float> v, int n, bool averageEnds) {
  const int count = static_cast<int>(v.size()), h = (n - 1) / 2;
  std::vector<float> out = v;
  auto at = [&](int j) { return v[static_cast<std::size_t>(j - 1)]; };
  auto put = [&](int j, float value) { out[static_cast<std::size_t>(j - 1)] = value; };
  for (int k = 1; averageEnds && k <= h; ++k) {
    const int a = std::min(h + k, count), b = std::max(count + 1 - h - k, 1);
    float sum = 0.0f;
    for (int j = 1; j <= a; ++j) sum += at(j);
    put(std::min(k, count), sum / static_cast<float>(a));
    sum = 0.0f;
    for (int j = count; j >= b; --j) sum += at(j);
    put(std::max(count + 1 - k, 1), sum / static_cast<float>(count + 1 - b));
  }
  for (int i = n / 2 + 1; i <= count - h; ++i) {
    float sum = 0.0f;
    for (int j = i - h; j <= i + h; ++j) sum += at(j);
    put(i, sum / static_cast<float>(n));
  }
  return out;
}

TEST(MovingAverage, InPlaceWindowsGiveTheSameBitsAsSummingFromACopy) {
  // Odd and even windows, patterns longer and shorter than the window, 2θ arrays (ends kept).
  for (int count : {1, 2, 5, 9, 16, 40, 333})
    for (int n : {2, 3, 4, 7, 10, 15, 31, 201}) {
      std::vector<float> y(static_cast<std::size_t>(count)), x(y.size());
      for (int i = 0; i < count; ++i) {
        y[static_cast<std::size_t>(i)] = static_cast<float>((i * 7919) % 113) * 0.37f + 1000.0f;
        x[static_cast<std::size_t>(i)] = 5.0f + 0.01f * static_cast<float>(i);
      }
      const auto expectedY = plainMovingAverage(y, n, true), expectedX = plainMovingAverage(x, n, false);
      movingAveragePairs(x, y, n);
      ASSERT_EQ(y, expectedY) << count << " points, window " << n;
      ASSERT_EQ(x, expectedX) << count << " points, window " << n;
    }
}

TEST(MovingAverage, GrowingEndWindowsAndFullMiddleWindows) {
  std::vector<float> y{1, 4, 2, 8, 5, 7, 3, 6};
  const std::vector<float> x(y.size(), 0.0f);
  const std::vector<float> before = y;

  movingAverage(x, y, 1);  // below 2: nothing happens
  EXPECT_EQ(y, before);

  movingAverage(x, y, 5);
  EXPECT_FLOAT_EQ(y[0], (1 + 4 + 2) / 3.0f);          // first point: mean of the first three
  EXPECT_FLOAT_EQ(y[1], (1 + 4 + 2 + 8) / 4.0f);      // window grows towards the inside
  EXPECT_FLOAT_EQ(y[2], (1 + 4 + 2 + 8 + 5) / 5.0f);  // first full window
  EXPECT_FLOAT_EQ(y[5], (8 + 5 + 7 + 3 + 6) / 5.0f);  // points 4..8
  EXPECT_FLOAT_EQ(y[6], (5 + 7 + 3 + 6) / 4.0f);
  EXPECT_FLOAT_EQ(y[7], (7 + 3 + 6) / 3.0f);
}

TEST(MovingAverage, EvenWidthDividesByNAndShortPatternsStayFinite) {
  std::vector<float> y{2, 2, 2, 2, 2, 2};
  const std::vector<float> x(y.size(), 0.0f);
  movingAverage(x, y, 4);  // h = 1; middle windows of 3 points divided by 4; point 2 untouched
  EXPECT_FLOAT_EQ(y[0], 2.0f);
  EXPECT_FLOAT_EQ(y[1], 2.0f);
  EXPECT_FLOAT_EQ(y[2], 1.5f);
  EXPECT_FLOAT_EQ(y[4], 1.5f);
  EXPECT_FLOAT_EQ(y[5], 2.0f);

  std::vector<float> shortOne{3, 6};
  movingAverage(std::vector<float>(2), shortOne, 9);
  for (float v : shortOne) EXPECT_FLOAT_EQ(v, 4.5f);
}

TEST(MovingAverage, PairedVersionAveragesTheMiddleAbscissaeOnly) {
  std::vector<float> x{10, 11, 12, 13, 14, 15, 16};
  std::vector<float> y{0, 0, 0, 7, 0, 0, 0};
  movingAveragePairs(x, y, 3);
  EXPECT_FLOAT_EQ(x[0], 10.0f);
  EXPECT_FLOAT_EQ(x[3], 13.0f);
  EXPECT_FLOAT_EQ(x[6], 16.0f);
  EXPECT_FLOAT_EQ(y[2], 7.0f / 3.0f);
  EXPECT_FLOAT_EQ(y[3], 7.0f / 3.0f);
  EXPECT_FLOAT_EQ(y[1], 0.0f);
}

TEST(SavitzkyGolay, CoefficientSetsSumToTheirDivisorsExceptTheKeptTwentyThree) {
  for (int w = 5; w <= 25; w += 2) {
    const SavitzkyGolaySet set = savitzkyGolaySet(w);
    ASSERT_EQ(set.window, w);
    ASSERT_EQ(set.weights.size(), static_cast<std::size_t>(w));
    const int sum = std::accumulate(set.weights.begin(), set.weights.end(), 0);
    EXPECT_EQ(sum, w == 23 ? 805 : set.divisor) << w;
    // Quadratic smoothing weights are proportional to 3m² + 3m - 1 - 5j².
    const int m = (w - 1) / 2;
    const int c0 = set.weights[static_cast<std::size_t>(m)];
    for (int j = 1; j <= m; ++j) {
      const long lhs = static_cast<long>(set.weights[static_cast<std::size_t>(m + j)]) * (3 * m * m + 3 * m - 1);
      const long rhs = static_cast<long>(c0) * (3 * m * m + 3 * m - 1 - 5 * j * j);
      EXPECT_EQ(lhs, rhs) << "window " << w << " j " << j;
    }
  }
  EXPECT_EQ(savitzkyGolaySet(23).divisor, 8059);
  EXPECT_EQ(savitzkyGolaySet(6).window, 25);
  EXPECT_EQ(savitzkyGolaySet(99).divisor, 5175);
}

TEST(SavitzkyGolay, ReproducesACubicInsideAndCopiesTheEdges) {
  auto cubic = [](float i) { return 100.0f + 3.0f * i - 0.5f * i * i + 0.01f * i * i * i; };
  for (int w : {5, 9, 15, 25}) {
    std::vector<float> y = ramp(60, cubic);
    savitzkyGolay(y, w);
    const int h = (w - 1) / 2;
    for (int i = h; i < 60 - h; ++i)
      EXPECT_NEAR(y[static_cast<std::size_t>(i)], cubic(static_cast<float>(i)), 2e-3f * std::abs(cubic(static_cast<float>(i))) + 1e-2f)
          << "window " << w << " point " << i;
    EXPECT_FLOAT_EQ(y[0], y[static_cast<std::size_t>(h)]);
    EXPECT_FLOAT_EQ(y[59], y[static_cast<std::size_t>(59 - h)]);
  }
  // The 23-point filter scales a flat pattern by 805/8059.
  std::vector<float> flat(40, 8059.0f);
  savitzkyGolay(flat, 23);
  EXPECT_NEAR(flat[20], 805.0f, 0.05f);
  // Shorter than the window: unchanged.
  std::vector<float> tiny{1, 2, 3};
  savitzkyGolay(tiny, 5);
  EXPECT_EQ(tiny, (std::vector<float>{1, 2, 3}));
}

}  // namespace
}  // namespace quarvel
