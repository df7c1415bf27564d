// Truncate on the store: which slots are cut, how start and end follow, empty results, and the
// zeroing used while multiple patterns are open.
#include <gtest/gtest.h>

#include "core/pattern/pattern_store.h"
#include "core/process/truncate.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

TEST(Truncate, CutsTheSlotsThatReachBeyondTheLimits) {
  PatternStore store;
  test::fillSlot(store.slot(1), 10.0f, 0.5f, 21, [](float x) { return x; });   // 10 .. 20
  test::fillSlot(store.slot(2), 12.0f, 0.5f, 5, [](float x) { return -x; });   // 12 .. 14, inside
  test::fillSlot(store.slot(4), 30.0f, 1.0f, 5, [](float x) { return x; });    // 30 .. 34, outside
  truncateSlots(store, 11.2f, 13.0f);

  const PatternSlot& p = store.slot(1);
  ASSERT_EQ(p.count, 4);  // 11.5, 12, 12.5, 13 (the upper limit itself is kept)
  EXPECT_FLOAT_EQ(p.start, 11.5f);
  EXPECT_FLOAT_EQ(p.end, 13.0f);
  EXPECT_FLOAT_EQ(p.y[0], 11.5f);
  EXPECT_FLOAT_EQ(p.y[3], 13.0f);
  EXPECT_FLOAT_EQ(p.step, 0.5f);

  EXPECT_EQ(store.slot(2).count, 3);  // its end 14 lies above the limit
  EXPECT_FLOAT_EQ(store.slot(2).y[0], -12.0f);
  EXPECT_EQ(store.slot(4).count, 0);
  EXPECT_FLOAT_EQ(store.slot(4).start, 0.0f);
}

TEST(Truncate, WithMultiplePatternsOpenOnlyZeroesTheCurrentSlot) {
  PatternStore store;
  test::fillSlot(store.slot(1), 10.0f, 1.0f, 11, [](float) { return 5.0f; });
  test::fillSlot(store.slot(5), 10.0f, 1.0f, 11, [](float) { return 7.0f; });
  store.multipleCount = 1;
  store.selection.currentSlot = 5;
  truncateSlots(store, 12.0f, 15.0f);
  EXPECT_EQ(store.slot(1).count, 11);
  EXPECT_FLOAT_EQ(store.slot(1).y[0], 5.0f);
  const PatternSlot& m = store.slot(5);
  EXPECT_EQ(m.count, 11);
  EXPECT_FLOAT_EQ(m.start, 10.0f);
  EXPECT_FLOAT_EQ(m.y[1], 0.0f);
  EXPECT_FLOAT_EQ(m.y[2], 7.0f);
  EXPECT_FLOAT_EQ(m.y[5], 7.0f);
  EXPECT_FLOAT_EQ(m.y[6], 0.0f);
}

}  // namespace
}  // namespace quarvel
