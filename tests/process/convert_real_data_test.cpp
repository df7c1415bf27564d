// Convert on real data: the same powder measured at a synchrotron (0.692 Å) and with copper
// radiation. Carried to the copper wavelength, the synchrotron pattern must put its strongest
// peak where the copper measurement has it.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>

#include "core/common/numbers.h"
#include "core/pattern/pattern_store.h"
#include "core/process/convert.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

// Two-column 2θ / intensity text into a slot (grid from the first two points and the count).
bool readTwoColumns(const std::filesystem::path& path, PatternSlot& slot) {
  std::ifstream in(path);
  std::string line;
  std::vector<float> x;
  slot.count = 0;
  while (std::getline(in, line) && slot.count < kMaxPoints) {
    const auto v = readFreeNumbers(line);
    if (v.size() < 2) continue;
    x.push_back(static_cast<float>(v[0]));
    slot.y[static_cast<std::size_t>(slot.count++)] = static_cast<float>(v[1]);
  }
  if (x.size() < 2) return false;
  slot.start = x.front();
  slot.step = (x.back() - x.front()) / static_cast<float>(x.size() - 1);
  slot.recomputeEnd();
  return true;
}

float strongestPeak(const PatternSlot& slot) {
  const auto d = slot.data();
  return slot.x(static_cast<int>(std::max_element(d.begin(), d.end()) - d.begin()));
}

TEST(ConvertRealData, SynchrotronPatternLandsOnTheCopperMeasurement) {
  QUARVEL_REQUIRE_SHARED_DATA();
  const auto folder = test::sharedDataDir() / "patterns" / "xy";
  PatternSlot synchrotron, copper;
  if (!readTwoColumns(folder / "combs_SDPDRR1_sample2_0.692A.XY", synchrotron) ||
      !readTwoColumns(folder / "combs_SDPDRR1_sample2_Cu.XY", copper)) {
    GTEST_SKIP() << "SDPD round-robin sample 2 files not present";
  }
  ASSERT_EQ(synchrotron.count, 7578);
  ConvertSettings toCopper{copper.start, copper.end, copper.step, 0.692f, 1.5406f, true};
  ASSERT_TRUE(convertPattern(synchrotron, toCopper));
  EXPECT_EQ(synchrotron.count, copper.count);
  // 7.155° at 0.692 Å is 15.97° for copper; the copper scan has it at 15.94° (the two
  // instruments' zero points differ by about one and a half steps).
  EXPECT_NEAR(strongestPeak(synchrotron), strongestPeak(copper), 0.05f);
  // The synchrotron scan ends at 40°, which is 99.2° for copper: no data at the grid's 100°.
  EXPECT_EQ(synchrotron.y[static_cast<std::size_t>(synchrotron.count - 1)], 0.0f);
}

}  // namespace
}  // namespace quarvel
