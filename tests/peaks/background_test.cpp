// The Background menu through the recording shell: loading with the step and range rules,
// the subtraction question, crystallinity, excluded points, scaling, and the automatic
// background on real patterns.
#include <gtest/gtest.h>

#include <cmath>

#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "core/pattern/pattern_reading.h"
#include "core/peaks/background.h"
#include "core/peaks/background_commands.h"
#include "core/process/smoothing.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

struct BackgroundFixture : ::testing::Test {
  test::TempDir dir;
  RecordingShell shell;
  Session session{shell, dir.path()};
  CommandDispatcher dispatcher{session};

  void SetUp() override {
    session.start();
    test::fillSlot(session.store().pattern(), 10.0f, 0.5f, 21, [](float x) { return 100.0f + x; });
    session.store().copyPatternToAsLoaded();
    session.setPatternMenus(true);
  }
  std::string writeBackground(float start, float step, int n, float value) {
    std::string text;
    for (int i = 0; i < n; ++i) text += std::to_string(start + i * step) + " " + std::to_string(value) + "\n";
    test::writeText(dir / "bg.xy", text);
    return (dir / "bg.xy").string();
  }
};

TEST_F(BackgroundFixture, LoadingCutsBothPatternsToTheCommonRangeAndShowsTheBackground) {
  ASSERT_TRUE(loadBackground(session, BackgroundType::UserDefined, OpenFormat::Xy, writeBackground(12.0f, 0.5f, 30, 50.0f)));
  EXPECT_FLOAT_EQ(session.store().pattern().start, 12.0f);
  EXPECT_FLOAT_EQ(session.store().pattern().end, 20.0f);
  EXPECT_EQ(session.store().slot(kSlotBackground).count, 17);
  EXPECT_EQ(session.store().selection.currentSlot, kSlotBackground);
  EXPECT_EQ(session.store().selection.plotMode, PlotMode::Background);
  EXPECT_TRUE(session.menu().isEnabled(cmd::kSubtractBackground));
  EXPECT_FALSE(session.menu().isEnabled(cmd::kMenuSavePattern)) << "greyed while the background is shown";
}

TEST_F(BackgroundFixture, IncompatibleStepsAndDisjointRangesAreHandled) {
  EXPECT_FALSE(loadBackground(session, BackgroundType::UserDefined, OpenFormat::Xy, writeBackground(10.0f, 0.2f, 30, 5.0f)));
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"Background", "Incompatible step sizes"}));
  EXPECT_EQ(session.store().pattern().count, 21) << "nothing is cut";

  loadBackground(session, BackgroundType::UserDefined, OpenFormat::Xy, writeBackground(40.0f, 0.5f, 5, 5.0f));
  EXPECT_EQ(session.store().pattern().count, 0);
  EXPECT_EQ(session.store().slot(kSlotBackground).count, 0);
}

TEST_F(BackgroundFixture, SubtractAsksWithTheShareAndSkipsExcludedPoints) {
  loadBackground(session, BackgroundType::UserDefined, OpenFormat::Xy, writeBackground(10.0f, 0.5f, 21, 28.75f));
  session.process.excludedRegions.push_back({14.9f, 15.1f});
  shell.answerYesNo(true);
  dispatcher.dispatch(cmd::kSubtractBackground);
  // Pattern sum over the non-excluded points: 20 points of 100 + x; background 28.75 each.
  ASSERT_EQ(shell.questions.size(), 1u);
  EXPECT_EQ(shell.questions[0], (RecordedMessage{"Background Subtraction", "Background =   25.00 %. Subtract?"}));
  const PatternSlot& d = session.store().slot(kSlotAsLoaded);
  EXPECT_FLOAT_EQ(d.y[0], 110.0f - 28.75f);
  EXPECT_FLOAT_EQ(d.y[10], 0.0f) << "15 deg is excluded";
  EXPECT_EQ(session.store().selection.plotMode, PlotMode::Difference);

  const float before = d.y[0];
  shell.answerYesNo(false);
  dispatcher.dispatch(cmd::kSubtractBackground);
  EXPECT_FLOAT_EQ(session.store().slot(kSlotAsLoaded).y[0], before);
  EXPECT_EQ(session.store().selection.plotMode, PlotMode::Pattern);
  EXPECT_EQ(session.store().selection.currentSlot, kSlotPattern);
}

TEST_F(BackgroundFixture, ShareOfAZeroPatternIsOneHundredPercent) {
  EXPECT_DOUBLE_EQ(backgroundShare({0.0, 5.0}), 100.0);
}

TEST_F(BackgroundFixture, CrystallinityOfAPatternTwiceItsBackgroundIsFiftyPercent) {
  PatternStore& store = session.store();
  store.slot(kSlotBackground).copyFrom(store.pattern());
  for (float& v : store.slot(kSlotBackground).data()) v *= 0.5f;
  dispatcher.dispatch(cmd::kCrystallinity);
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"Crystallinity", "Crystallinity =   50.00 %"}));
  EXPECT_EQ(shell.notes.back(), "Crystallinity: 50.00");
}

TEST_F(BackgroundFixture, ScalingTouchesThePatternFromBelowEvenWhenCancelled) {
  PatternStore& store = session.store();
  store.slot(kSlotBackground).copyFrom(store.pattern());
  for (float& v : store.slot(kSlotBackground).data()) v = 200.0f;
  dispatcher.dispatch(cmd::kScaleBackground);  // the dialog is cancelled
  EXPECT_EQ(shell.dialogTitles.back(), "Scale background");
  EXPECT_FLOAT_EQ(store.slot(kSlotBackground).y[0], 110.0f);  // smallest ratio 110/200
  EXPECT_EQ(store.selection.plotMode, PlotMode::PatternAndBackground);

  // Weighted average: n / Σ(1/I) of the pattern over that of the background.
  EXPECT_NEAR(intervalFactor(store, session.process, 10.0f, 10.5f, true), (2 / (1 / 110.0 + 1 / 110.5)) / 110.0, 1e-6);
  EXPECT_NEAR(intervalFactor(store, session.process, 10.0f, 10.5f, false), (110.0 + 110.5) / 220.0, 1e-6);
}

TEST_F(BackgroundFixture, AutoSubtractAsksWithTheScaleAndNeedsAWindowAboveTwo) {
  EXPECT_FALSE(autoSubtractBackground(session, 2));
  EXPECT_TRUE(shell.questions.empty());
  shell.answerYesNo(true);
  EXPECT_TRUE(autoSubtractBackground(session, 9));
  EXPECT_EQ(shell.questions.back(), (RecordedMessage{"Background subtraction", "scale =   1.000. Subtract now?"}));
  EXPECT_EQ(session.store().selection.plotMode, PlotMode::Difference);
}

// On real patterns the estimate stays under the smoothed pattern (within the counting noise)
// and follows its slow changes: the difference has no broad offset left.
TEST(AutoBackground, StaysUnderRealPatternsAndFollowsTheirBaseline) {
  QUARVEL_REQUIRE_SHARED_DATA();
  const std::pair<const char*, OpenFormat> files[] = {
      {"xy/yadg_210520step1_30min.xy", OpenFormat::Xy}, {"xy/pyobjcryst_cpd-1a_QARR.prn", OpenFormat::Xy},
      {"xy/combs_SDPDRR1_sample2_Cu.XY", OpenFormat::Xy}, {"xrdml/fairmat_XRD-918-16_10_v1.6_crlf.xrdml", OpenFormat::Xrdml},
      {"std/fox_cime_start_step_end.dat", OpenFormat::Std}};
  for (auto [file, format] : files) {
    SCOPED_TRACE(file);
    RecordingShell shell;
    test::TempDir dir;
    Session session(shell, dir.path());
    ASSERT_TRUE(readPatternFile(session, format, 1, (test::sharedDataDir() / "patterns" / file).string()));
    const auto y = session.store().pattern().data();
    const auto background = estimateBackground(y, 101);
    std::vector<float> smooth(y.begin(), y.end());
    movingAverage(smooth, smooth, 9);
    std::size_t above = 0;
    for (std::size_t i = 0; i < y.size(); ++i)
      if (background[i] > smooth[i] + 3.0 * std::sqrt(std::max(1.0f, smooth[i]))) ++above;
    EXPECT_LT(above, y.size() / 200) << "points where the background exceeds the pattern by more than the noise";
    // The lowest tenth of the difference sits near zero: the baseline is followed.
    std::vector<float> difference(y.size());
    for (std::size_t i = 0; i < y.size(); ++i) difference[i] = smooth[i] - background[i];
    std::nth_element(difference.begin(), difference.begin() + difference.size() / 10, difference.end());
    const float tenth = difference[difference.size() / 10];
    EXPECT_LT(std::fabs(tenth), 4.0 * std::sqrt(std::max(1.0f, smooth[y.size() / 2])));
  }
}

}  // namespace
}  // namespace quarvel
