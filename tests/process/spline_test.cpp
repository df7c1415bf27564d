// The natural cubic spline against hand-computed values and exact reproductions.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/process/spline.h"

namespace quarvel {
namespace {

TEST(CubicSpline, NaturalEndsThroughThreePoints) {
  // Through (0,0), (1,1), (2,0) with natural ends: M1 = -3, so s(0.5) = 0.5 + 3/16.
  const std::vector<float> x{0, 1, 2}, y{0, 1, 0};
  const CubicSpline s(x, y);
  EXPECT_FLOAT_EQ(s.secondDerivatives()[0], 0.0f);
  EXPECT_FLOAT_EQ(s.secondDerivatives()[1], -3.0f);
  EXPECT_FLOAT_EQ(s.secondDerivatives()[2], 0.0f);
  EXPECT_FLOAT_EQ(s(0.5f), 0.6875f);
  EXPECT_FLOAT_EQ(s(1.5f), 0.6875f);
  EXPECT_FLOAT_EQ(s(1.0f), 1.0f);
}

TEST(CubicSpline, ReproducesStraightLinesAndClampedCubics) {
  std::vector<float> x, line, cubic;
  for (int i = 0; i < 30; ++i) {
    const float t = 0.3f * static_cast<float>(i);
    x.push_back(t);
    line.push_back(2.0f * t - 1.0f);
    cubic.push_back(t * t * t);
  }
  const CubicSpline straight(x, line);
  // Given the true end derivatives, a cubic is reproduced exactly.
  const CubicSpline clamped(x, cubic, 0.0f, 3.0f * x.back() * x.back());
  std::vector<float> at, out(20);
  for (int i = 0; i < 20; ++i) at.push_back(0.05f + 0.41f * static_cast<float>(i));
  straight.resample(at, out);
  for (std::size_t i = 0; i < at.size(); ++i) EXPECT_NEAR(out[i], 2.0f * at[i] - 1.0f, 1e-4f);
  clamped.resample(at, out);
  for (std::size_t i = 0; i < at.size(); ++i) {
    EXPECT_NEAR(out[i], at[i] * at[i] * at[i], 2e-3f);
    EXPECT_FLOAT_EQ(out[i], clamped(at[i]));  // walking and bisection agree
  }
}

TEST(CubicSpline, DegenerateInputsDoNotFail) {
  const std::vector<float> one{5.0f}, value{3.0f};
  EXPECT_FLOAT_EQ(CubicSpline(one, value)(7.0f), 3.0f);
  EXPECT_FLOAT_EQ(CubicSpline({}, {})(1.0f), 0.0f);
  const std::vector<float> two{0, 1}, twoY{0, 2};
  EXPECT_FLOAT_EQ(CubicSpline(two, twoY)(0.25f), 0.5f);
}

}  // namespace
}  // namespace quarvel
