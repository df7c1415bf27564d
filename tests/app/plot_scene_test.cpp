#include <gtest/gtest.h>

#include <cmath>

#include "core/app/plot_scene.h"
#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

TEST(PlotScene, DrawsTheSlotsOfThePlotModeInTheChosenUnit) {
  test::TempDir dir;
  RecordingShell shell;
  Session s(shell, dir.path());
  test::fillSlot(s.store().pattern(), 0.0f, 1.0f, 11, [](float x) { return x - 2.0f; });
  test::fillSlot(s.store().slot(kSlotBackground), 0.0f, 1.0f, 11, [](float) { return 1.0f; });
  s.peaks.peaks.push_back({5.0f, 3.0f});
  s.process.excludedRegions.push_back({2.0f, 4.0f});

  s.setPlotMode(PlotMode::PatternAndBackground);
  PlotScene scene = buildPlotScene(s);
  ASSERT_EQ(scene.curves.size(), 2u);
  EXPECT_EQ(scene.curves[1].role, CurveRole::Background);
  EXPECT_EQ(scene.curves[0].x.size(), 11u);

  // Logarithmic: zero and negative intensities become gaps, not spikes to the axis floor.
  s.store().selection.yAxisScale = YAxisScale::Logarithmic;
  s.setPlotMode(PlotMode::Pattern);
  scene = buildPlotScene(s);
  ASSERT_EQ(scene.curves.size(), 1u);
  EXPECT_TRUE(std::isnan(scene.curves[0].y[0]));
  EXPECT_TRUE(std::isnan(scene.curves[0].y[2]));
  EXPECT_DOUBLE_EQ(scene.curves[0].y[3], 1.0);
  EXPECT_TRUE(scene.logarithmic);

  // d-values: the point at 2θ = 0 has no d and is left out; x ascends.
  s.store().selection.xAxisUnit = XAxisUnit::D;
  scene = buildPlotScene(s);
  ASSERT_EQ(scene.curves[0].x.size(), 10u);
  EXPECT_LT(scene.curves[0].x.front(), scene.curves[0].x.back());
  EXPECT_NEAR(scene.curves[0].x.front(), 1.5406 / (2 * std::sin(5.0 / 57.29578)), 1e-4);
  EXPECT_NEAR(scene.peakMarkers[0], 1.5406 / (2 * std::sin(2.5 / 57.29578)), 1e-4);
  EXPECT_LT(scene.excludedSpans[0].first, scene.excludedSpans[0].second);
  EXPECT_EQ(scene.xLabel, "d (Å)");
}

}  // namespace
}  // namespace quarvel
