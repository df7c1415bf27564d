#include <gtest/gtest.h>

#include <cmath>

#include "core/pattern/pattern_store.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

TEST(PatternStore, AxisTableHandlesOnePointAndZeroTwoTheta) {
  PatternStore store;
  test::fillSlot(store.pattern(), 0.0f, 0.5f, 1, [](float) { return 5.0f; });
  EXPECT_EQ(store.pattern().end, store.pattern().start);
  store.rebuildAxisTable();
  ASSERT_EQ(store.axisTable().size(), 1u);
  const AxisPoint p = store.axisTable()[0];
  EXPECT_FALSE(std::isfinite(p.d) && p.d > 0.0f);  // infinite or not a number
  EXPECT_EQ(p.q, 0.0f);
}

TEST(PatternStore, AxisTableFollowsZeroCorrectionAndCopiesLimitsToTheLoadedCopy) {
  PatternStore store;
  test::fillSlot(store.pattern(), 20.0f, 0.1f, 101, [](float) { return 1.0f; }, 1.5406f);
  store.selection.zeroCorrection = 0.5f;
  store.rebuildAxisTable();
  const auto axis = store.axisTable();
  EXPECT_FLOAT_EQ(axis[0].twoTheta, 20.5f);
  const double d = 1.5406 / (2.0 * std::sin(20.5 / 2.0 / 57.29578));
  EXPECT_NEAR(axis[0].d, d, 1e-4);
  EXPECT_NEAR(axis[0].q, 2.0 * M_PI / d, 1e-4);
  EXPECT_FLOAT_EQ(store.slot(kSlotAsLoaded).dAtFirst, axis[0].d);
  EXPECT_FLOAT_EQ(store.pattern().qAtLast, axis[100].q);
}

TEST(PatternStore, UndoCopiesAllNineSlots) {
  PatternStore store;
  for (int s = 1; s <= kSlotCount; ++s)
    test::fillSlot(store.slot(s), float(s), 0.01f, 10 * s, [s](float) { return float(s); });
  store.keepUndoCopy();
  for (int s = 1; s <= kSlotCount; ++s) {
    store.slot(s).count = 0;
    store.slot(s).start = -1.0f;
  }
  ASSERT_TRUE(store.restoreUndoCopy());
  for (int s = 1; s <= kSlotCount; ++s) {
    EXPECT_EQ(store.slot(s).count, 10 * s);
    EXPECT_FLOAT_EQ(store.slot(s).start, float(s));
    EXPECT_FLOAT_EQ(store.slot(s).y[static_cast<std::size_t>(10 * s - 1)], float(s));
  }
  EXPECT_FALSE(store.restoreUndoCopy());
  EXPECT_THROW(store.slot(0), std::out_of_range);
  EXPECT_THROW(store.slot(10), std::out_of_range);
}

}  // namespace
}  // namespace quarvel
