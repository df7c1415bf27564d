// Lp, auto-divergence and flat-plate factors against values computed here in double precision.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/process/corrections.h"

namespace quarvel {
namespace {

constexpr double kRad = 57.29578;

TEST(LpCorrection, FactorsClampsAndRoundTrips) {
  // Choice 1 uses the halved polarisation factor: 1 at 2θ = 0, 0.5 at 90°.
  EXPECT_FLOAT_EQ(lpCorrected(10.0f, 0.0f, 1), 10.0f);
  EXPECT_NEAR(lpCorrected(10.0f, 90.0f, 1), 5.0f, 1e-5f);
  EXPECT_NEAR(lpCorrected(10.0f, 60.0f, 1), 10.0 * (0.5 + 0.5 * 0.25), 1e-4);
  EXPECT_NEAR(lpCorrected(1.0f, 40.0f, 5), std::sin(20.0 / kRad) * std::sin(40.0 / kRad), 1e-6);
  EXPECT_NEAR(lpCorrected(1.0f, 40.0f, 8), 1.0 / std::cos(-5.0 / kRad), 1e-6);

  // Below 0.5° the sine terms use 0.5°: no division by zero at the origin.
  const float sinQuarter = static_cast<float>(std::sin(0.25 / kRad));
  std::vector<float> y(5, 1.0f);  // 2θ = 0, 0.1, ..., 0.4
  lpCorrect(y, 0.0f, 0.1f, 3);
  for (float v : y) EXPECT_NEAR(v, sinQuarter, 1e-7f);
  std::vector<float> z(5, 1.0f);
  lpCorrect(z, 0.0f, 0.1f, 4);
  for (float v : z) EXPECT_NEAR(v, 1.0f / sinQuarter, 1e-2f);

  // Above 120° choice 7 multiplies by cos(75°).
  std::vector<float> high(4, 2.0f);  // 121 .. 151
  lpCorrect(high, 121.0f, 10.0f, 7);
  for (float v : high) EXPECT_NEAR(v, 2.0 * std::cos(75.0 / kRad), 1e-6);

  // Each correction and its inverse restore the intensities.
  for (int forward : {1, 3, 5, 7}) {
    std::vector<float> w;
    for (int i = 0; i < 200; ++i) w.push_back(100.0f + static_cast<float>(i));
    const std::vector<float> before = w;
    lpCorrect(w, 0.3f, 0.7f, forward);
    lpCorrect(w, 0.3f, 0.7f, forward + 1);
    for (std::size_t i = 0; i < w.size(); ++i) EXPECT_NEAR(w[i], before[i], 2e-5f * before[i]) << forward;
  }
}

TEST(AutoDivergence, FactorAndReverseRestore) {
  const double expected = std::sin(40.0 * 0.5 * 0.0153201 + 0.1947787) - 0.19355;
  EXPECT_NEAR(autoDivergenceFactor(40.0f), expected, 1e-6);
  std::vector<float> y{100.0f, 200.0f, 300.0f};
  autoDivergenceCorrect(y, 20.0f, 20.0f, false);
  EXPECT_NEAR(y[1], 200.0 / expected, 1e-2);
  autoDivergenceCorrect(y, 20.0f, 20.0f, true);
  EXPECT_NEAR(y[0], 100.0f, 1e-3f);
  EXPECT_NEAR(y[1], 200.0f, 1e-3f);
  EXPECT_NEAR(y[2], 300.0f, 1e-3f);
}

double flatPlateFactor(double twoTheta, double alpha, double muT) {
  const double c0 = std::cos(alpha / kRad);
  const double c = std::cos((twoTheta - alpha) / kRad);
  return (1.0 - c0 / c) / (std::exp(-muT / c) - std::exp(-muT / c0));
}

TEST(FlatPlate, NormalisedAtTheInclinationAndCarriedOverAtTwiceIt) {
  const float start = 5.0f, step = 0.5f, alpha = 10.0f, muT = 0.8f;
  std::vector<float> y(101, 1000.0f);  // 5 .. 55
  ASSERT_TRUE(flatPlateCorrect(y, start, step, alpha, muT));
  // 2θ = α is point 10; the factor there is 1.
  EXPECT_NEAR(y[10], 1000.0f, 1e-2f);
  const double norm = flatPlateFactor(10.0, alpha, muT);
  EXPECT_NEAR(y[70], 1000.0 * flatPlateFactor(40.0, alpha, muT) / norm, 0.05);
  EXPECT_NEAR(y[0], 1000.0 * flatPlateFactor(5.0, alpha, muT) / norm, 0.05);
  // Within one step of 2θ = 2α (points 29..31 = 19.5, 20, 20.5) the factor of the preceding point.
  EXPECT_FLOAT_EQ(y[30], y[29]);
  EXPECT_FLOAT_EQ(y[31], y[30]);
}

TEST(FlatPlate, VoidValuesChangeNothing) {
  std::vector<float> y(10, 5.0f);
  EXPECT_FALSE(flatPlateCorrect(y, 10.0f, 1.0f, 10.0f, 0.0f));
  EXPECT_FALSE(flatPlateCorrect(y, 10.0f, 1.0f, 100.0f, 1.0f));  // cos α <= 0
  for (float v : y) EXPECT_EQ(v, 5.0f);
}

}  // namespace
}  // namespace quarvel
