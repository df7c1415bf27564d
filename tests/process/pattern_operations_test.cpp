// Zero shift, Convert, the Chebyshev fit and the intensity operations on patterns made here,
// checked against independently computed positions and values.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "core/pattern/pattern_store.h"
#include "core/process/chebyshev_fit.h"
#include "core/process/convert.h"
#include "core/process/intensity_operations.h"
#include "core/process/zero_shift.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

float gaussian(float x, float centre, float width) {
  const float d = (x - centre) / width;
  return 10.0f + 1000.0f * std::exp(-0.5f * d * d);
}

// 2θ of the highest point, refined by a parabola through it and its neighbours.
double peakPosition(const PatternSlot& s) {
  const auto data = s.data();
  const auto top = static_cast<int>(std::max_element(data.begin(), data.end()) - data.begin());
  const double a = data[static_cast<std::size_t>(top - 1)], b = data[static_cast<std::size_t>(top)],
               c = data[static_cast<std::size_t>(top + 1)];
  return s.x(top) + 0.5 * (a - c) / (a - 2 * b + c) * s.step;
}

TEST(ZeroShift, WholeStepsMoveTheAxisOnlyAndOffGridShiftsResample) {
  PatternStore store;
  for (int slot : {1, 2, 3, 4})
    test::fillSlot(store.slot(slot), 20.0f, 0.02f, 1001, [](float x) { return gaussian(x, 30.0f, 0.1f); });

  EXPECT_EQ(offGridRemainder(0.06f, 0.02f), 0.0f);  // three steps, whatever the rounding
  EXPECT_FALSE(zeroShiftSlots(store, 0.06f, true));
  EXPECT_EQ(store.pattern().count, 1001);
  EXPECT_FLOAT_EQ(store.pattern().start, 20.06f);
  EXPECT_FLOAT_EQ(store.slot(4).end, 40.06f);
  EXPECT_FLOAT_EQ(store.pattern().y[500], gaussian(30.0f, 30.0f, 0.1f));

  ASSERT_TRUE(zeroShiftSlots(store, 0.05f, true));  // 0.11 in all, back on the 0.02 lattice
  const PatternSlot& p = store.pattern();
  EXPECT_EQ(p.count, 1000);
  EXPECT_NEAR(p.start, 20.12f, 1e-5f);
  EXPECT_NEAR(p.end, p.start + 999 * 0.02f, 1e-4f);
  EXPECT_NEAR(peakPosition(p), 30.11, 2e-3);
  for (int i = 400; i < 600; i += 7) EXPECT_NEAR(p.y[static_cast<std::size_t>(i)], gaussian(p.x(i), 30.11f, 0.1f), 1.0f);
  for (int slot : {2, 3, 4}) {
    EXPECT_FLOAT_EQ(store.slot(slot).start, p.start);
    EXPECT_EQ(store.slot(slot).count, 1001);  // only slot 1 is re-sampled
  }

  ASSERT_TRUE(zeroShiftSlots(store, -0.05f, true));  // negative remainders land on the lattice too
  EXPECT_NEAR(p.start, 20.08f, 1e-5f);
  EXPECT_NEAR(peakPosition(p), 30.06, 2e-3);
  EXPECT_FALSE(zeroShiftSlots(store, 0.05f, false));  // unchecked: never re-samples
  EXPECT_EQ(p.count, 999);
}

TEST(Convert, CopperToMolybdenumMovesAPeakToItsBraggPosition) {
  PatternSlot slot;
  test::fillSlot(slot, 10.0f, 0.01f, 7001, [](float x) { return gaussian(x, 40.0f, 0.08f); });
  ConvertSettings c{2.0f, 35.0f, 0.005f, 1.5406f, 0.70930f, true};
  ASSERT_TRUE(convertPattern(slot, c));
  const double bragg = 2.0 * std::asin(0.70930 / 1.5406 * std::sin(20.0 / 57.29578)) * 57.29578;
  EXPECT_NEAR(peakPosition(slot), bragg, 2e-3);
  EXPECT_EQ(slot.count, 6601);
  EXPECT_FLOAT_EQ(slot.start, 2.0f);
  EXPECT_NEAR(slot.end, 35.0f, 1e-4f);
  EXPECT_FLOAT_EQ(slot.wavelength, 0.70930f);
  EXPECT_EQ(slot.y[0], 0.0f);  // below the converted range: no data

  // Unusable grids leave the slot as it was; grids are capped at the store's capacity.
  EXPECT_FALSE(convertPattern(slot, {5.0f, 35.0f, 0.0f, 1.0f, 1.0f, true}));
  EXPECT_FALSE(convertPattern(slot, {5.0f, 35.0f, 0.01f, 0.0f, 1.0f, true}));
  EXPECT_EQ(slot.count, 6601);
  EXPECT_EQ(convertGridCount(0.0f, 100.0f, 0.001f), kMaxPoints);
  EXPECT_EQ(convertGridCount(10.0f, 10.3f, 0.1f), 4);
}

TEST(ChebyshevFit, RecoversASeriesSkipsExcludedPointsAndRefusesSingularSystems) {
  PatternSlot slot;
  // 100 + 20 T1 + 5 T2 on t = (2θ - 30) / 10, plus a spike that an excluded region hides.
  test::fillSlot(slot, 20.0f, 0.05f, 401, [](float x) {
    const float t = (x - 30.0f) / 10.0f;
    return 100.0f + 20.0f * t + 5.0f * (2.0f * t * t - 1.0f) + (x > 24.9f && x < 25.1f ? 5000.0f : 0.0f);
  });
  const auto fit = fitChebyshev(slot, 2, {{24.8f, 25.2f}});
  ASSERT_TRUE(fit);
  EXPECT_EQ(fit->npar, 3);
  EXPECT_NEAR(fit->coefficients[0], 100.0, 1e-2);
  EXPECT_NEAR(fit->coefficients[1], 20.0, 1e-2);
  EXPECT_NEAR(fit->coefficients[2], 5.0, 1e-2);
  EXPECT_LT(fit->rp, 1e-2);
  EXPECT_NEAR(fit->curve[100], 87.5f, 0.05f);  // the spike's point (t = -0.5) gets the smooth curve

  EXPECT_EQ(clampChebyshevOrder(20), 14);
  EXPECT_EQ(clampChebyshevOrder(-3), 0);
  PatternSlot tiny;
  test::fillSlot(tiny, 10.0f, 1.0f, 5, [](float) { return 1.0f; });
  EXPECT_FALSE(fitChebyshev(tiny, 14));  // 5 points, 15 parameters
}

TEST(IntensityOperations, NonNegativityPolynomialAndExcludedRegions) {
  PatternStore store;
  test::fillSlot(store.slot(1), 10.0f, 1.0f, 5, [](float x) { return x; });  // 10..14
  scaleIntensities(store.slot(1), -2.0);  // -20 .. -28: the lowest becomes zero
  EXPECT_FLOAT_EQ(store.slot(1).y[4], 0.0f);
  EXPECT_FLOAT_EQ(store.slot(1).y[0], 8.0f);

  test::fillSlot(store.slot(1), 10.0f, 1.0f, 5, [](float) { return 100.0f; });
  addPolynomial(store.slot(1), {1.0f, 0.0f, 0.5f, 0.0f, 0.0f, 0.0f});  // 1 + x²/2, all positive
  EXPECT_FLOAT_EQ(store.slot(1).y[2], 100.0f + 1.0f + 72.0f);
  addPolynomial(store.slot(1), {-1000.0f, 0, 0, 0, 0, 0});
  EXPECT_FLOAT_EQ(store.slot(1).y[0], 0.0f);  // lifted: the first point was the lowest

  for (int s : {1, 3, 4}) test::fillSlot(store.slot(s), 10.0f, 1.0f, 5, [](float) { return 7.0f; });
  zeroExcludedPoints(store, 1, {{11.0f, 13.0f}});  // strict: only 12 is inside
  for (int s : {1, 3, 4}) {
    EXPECT_FLOAT_EQ(store.slot(s).y[1], 7.0f);
    EXPECT_FLOAT_EQ(store.slot(s).y[2], 0.0f);
    EXPECT_FLOAT_EQ(store.slot(s).y[3], 7.0f);
  }
}

}  // namespace
}  // namespace quarvel
