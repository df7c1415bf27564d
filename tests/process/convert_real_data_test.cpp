// Convert on real data: the same powder measured at a synchrotron (0.692 Å) and with copper
// radiation. Carried to the copper wavelength, the synchrotron pattern must put its strongest
// peak where the copper measurement has it.
#include <gtest/gtest.h>

#include <algorithm>

#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "core/pattern/pattern_files.h"
#include "core/process/modify_operations.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

float strongestPeak(const PatternSlot& slot) {
  const auto d = slot.data();
  return slot.x(static_cast<int>(std::max_element(d.begin(), d.end()) - d.begin()));
}

TEST(ConvertRealData, SynchrotronPatternLandsOnTheCopperMeasurement) {
  QUARVEL_REQUIRE_SHARED_DATA();
  const auto folder = test::sharedDataDir() / "patterns" / "xy";
  test::TempDir dir;
  RecordingShell shell;
  Session session{shell, dir.path()};
  session.start();
  if (!openPatternFile(session, OpenFormat::Xy, (folder / "combs_SDPDRR1_sample2_Cu.XY").string()))
    GTEST_SKIP() << "SDPD round-robin sample 2 files not present";
  PatternSlot copper;
  copper.copyFrom(session.store().pattern());
  ASSERT_TRUE(openPatternFile(session, OpenFormat::Xy, (folder / "combs_SDPDRR1_sample2_0.692A.XY").string()));
  ASSERT_EQ(session.store().pattern().count, 7578);

  ASSERT_TRUE(applyConvert(session, {copper.start, copper.end, copper.step, 0.692f, 1.5406f, true}));
  const PatternSlot& converted = session.store().pattern();
  EXPECT_EQ(converted.count, copper.count);
  // 7.155° at 0.692 Å is 15.97° for copper; the copper scan has it at 15.94° (the two
  // instruments' zero points differ by about one and a half steps).
  EXPECT_NEAR(strongestPeak(converted), strongestPeak(copper), 0.05f);
  // The synchrotron scan ends at 40°, which is 99.2° for copper: no data at the grid's 100°.
  EXPECT_EQ(converted.y[static_cast<std::size_t>(converted.count - 1)], 0.0f);
  EXPECT_NEAR(session.store().axisTable().back().twoTheta, 100.0f, 1e-3f);  // axis rebuilt
  EXPECT_TRUE(session.store().undoAvailable());
}

}  // namespace
}  // namespace quarvel
