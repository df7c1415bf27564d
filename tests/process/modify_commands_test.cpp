// The Modify menu as users meet it, through the recording shell: exact dialog captions,
// remembered values, Cancel, the undo copy, messages and notes, and the dialog-free entry points
// a script uses.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/list_editor.h"
#include "core/app/plot_scene.h"
#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "core/process/modify_operations.h"
#include "tests/support/session_fixture.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

std::vector<std::string> captions(const DialogModel& d) {
  std::vector<std::string> out;
  for (const auto& c : d.controls())
    if (c.kind != ControlKind::Button && !c.label.empty()) out.push_back(c.label);
  return out;
}

struct ModifyFixture : test::SessionTest {
  void SetUp() override {
    SessionTest::SetUp();
    load([](float x) { return 100.0f + x; });
    shell.clear();
  }
  void load(const std::function<float(float)>& f, int n = 101) {
    test::fillSlot(session.store().pattern(), 10.0f, 0.1f, n, f);
    session.store().copyPatternToAsLoaded();
    session.rebuildAxisTable();
  }
  PatternSlot& pattern() { return session.store().pattern(); }
  // Answers the next dialog: `edit` sets values, then OK.
  void ok(std::function<void(DialogModel&)> edit = {}) {
    shell.answerDialog([edit](DialogModel& d) {
      if (edit) edit(d);
      return DialogModel::kOk;
    });
  }
  DialogModel seen{"", 0, 0};
  void inspect() {
    shell.answerDialog([this](DialogModel& d) {
      seen = d;
      return DialogModel::kCancel;
    });
  }
};

TEST_F(ModifyFixture, DialogsShowTheirExactCaptionsAndRememberedValues) {
  inspect();
  dispatcher.dispatch(cmd::kZeroShift);
  EXPECT_EQ(seen.title(), "Zero shift");
  EXPECT_EQ(seen.width(), 108);
  EXPECT_EQ(seen.height(), 81);
  EXPECT_EQ(captions(seen), (std::vector<std::string>{"Add to starting point", "Maintain original steps"}));

  inspect();
  dispatcher.dispatch(cmd::kTruncate);
  EXPECT_EQ(seen.title(), "Truncate pattern");
  EXPECT_EQ(seen.at("lower").group, "New pattern limits:");
  EXPECT_EQ(seen.text("upper"), "20");  // the pattern's own limits before the first use

  inspect();
  dispatcher.dispatch(cmd::kAddPolynomial);
  EXPECT_EQ(seen.title(), "Add polynomial function");
  EXPECT_EQ(captions(seen), (std::vector<std::string>{"A0", "A1", "A2", "A3", "A4", "A5"}));

  inspect();
  dispatcher.dispatch(cmd::kSavitzkyGolay);
  EXPECT_EQ(seen.title(), "Savitzky-Golay filtering");
  EXPECT_EQ(seen.at("window").group, "Window size");
  EXPECT_EQ(seen.at("window").options.front(), "  5");
  EXPECT_EQ(seen.at("window").options.back(), "25");
  EXPECT_EQ(seen.selected("window"), 2);  // 9 points

  inspect();
  dispatcher.dispatch(cmd::kConvert);
  EXPECT_EQ(seen.title(), "Convert Pattern");
  EXPECT_EQ(captions(seen), (std::vector<std::string>{"Start", "Degrees", "Stop", "Degrees", "Step", "Degrees",
                                                      "Original Wavelength", "New Wavelength"}));
  EXPECT_EQ(seen.text("old"), "1.5406");

  inspect();
  dispatcher.dispatch(cmd::kLpCorrections);
  EXPECT_EQ(seen.title(), "Lp-corrections");
  EXPECT_EQ(seen.at("choice").options[4], "*sin(th) * sin(2th)");
  EXPECT_EQ(seen.at("choice").options[7], "/cos(2th - 45)");

  inspect();
  dispatcher.dispatch(cmd::kAbsorptionFlatPlate);
  EXPECT_EQ(seen.title(), "Flat Plate Data");
  EXPECT_EQ(captions(seen), (std::vector<std::string>{"Inclination angle", "Mu * thickness"}));

  // Smooth and Chebyshev fit always open with 3; the others with the last value used.
  ok([](DialogModel& d) { d.setText("factor", "7"); });
  dispatcher.dispatch(cmd::kSmooth);
  inspect();
  dispatcher.dispatch(cmd::kSmooth);
  EXPECT_EQ(seen.text("factor"), "3");
  EXPECT_EQ(captions(seen), std::vector<std::string>{"Smoothing factor"});
  ok([](DialogModel& d) { d.setText("factor", "2.5"); });
  dispatcher.dispatch(cmd::kScale);
  inspect();
  dispatcher.dispatch(cmd::kScale);
  EXPECT_EQ(seen.text("factor"), "2.5");
  inspect();
  dispatcher.dispatch(cmd::kChebyshevFit);
  EXPECT_EQ(captions(seen), std::vector<std::string>{"Chebyshev order (0-14)"});
  EXPECT_EQ(seen.text("order"), "3");
}

TEST_F(ModifyFixture, CancelChangesNothingAndOkKeepsOneLevelOfUndo) {
  const float first = pattern().y[0];
  dispatcher.dispatch(cmd::kScale);  // nothing queued: Cancel
  EXPECT_FALSE(session.store().undoAvailable());
  EXPECT_EQ(shell.repaints, 0);

  ok([](DialogModel& d) { d.setText("factor", "-1"); });
  dispatcher.dispatch(cmd::kScale);
  EXPECT_FLOAT_EQ(*std::min_element(pattern().data().begin(), pattern().data().end()), 0.0f);
  EXPECT_TRUE(session.store().undoAvailable());
  EXPECT_EQ(shell.repaints, 1);

  // All-zero polynomial: nothing happens and the earlier undo copy stays.
  ok();
  dispatcher.dispatch(cmd::kAddPolynomial);
  dispatcher.dispatch(cmd::kUndo);
  EXPECT_FLOAT_EQ(pattern().y[0], first);
  EXPECT_FALSE(session.store().undoAvailable());
  ok([](DialogModel& d) { d.setText("factor", "1"); });
  dispatcher.dispatch(cmd::kSmooth);  // below 2: nothing, no copy
  EXPECT_FALSE(session.store().undoAvailable());
}

TEST_F(ModifyFixture, ExcludedRegionsRefuseTheTwentySixthAndZeroTheirPoints) {
  ok([this](DialogModel& d) {
    DialogControl& list = d.at("regions");
    for (int i = 0; i < 26; ++i) {
      const float low = 12.05f + 0.3f * static_cast<float>(i);
      listEditorAdd(list, {formatEditNumber(low), formatEditNumber(low + 0.1f)}, shell);
    }
    listEditorChange(list, 0, {"10.05", "10.35"});
  });
  dispatcher.dispatch(cmd::kExcludedRegions);
  EXPECT_EQ(shell.dialogTitles.back(), "Excluded region(s)");
  ASSERT_EQ(shell.messages.size(), 1u);
  EXPECT_EQ(shell.messages[0], (RecordedMessage{"Excluded regions", "Too many excluded regions"}));
  ASSERT_EQ(session.process.excludedRegions.size(), 25u);
  EXPECT_FLOAT_EQ(pattern().y[1], 0.0f);  // 10.1 .. 10.3 inside (10.05, 10.35)
  EXPECT_FLOAT_EQ(pattern().y[3], 0.0f);
  EXPECT_FLOAT_EQ(pattern().y[4], 100.0f + 10.4f);
  EXPECT_FLOAT_EQ(session.store().slot(kSlotAsLoaded).y[1], 0.0f);
  EXPECT_EQ(buildPlotScene(session).excludedSpans.size(), 25u);  // shaded in the plot

  inspect();  // the list comes back; Insert is refused at the limit too, Delete makes room
  dispatcher.dispatch(cmd::kExcludedRegions);
  DialogControl& list = seen.at("regions");
  EXPECT_EQ(list.rows.size(), 25u);
  EXPECT_FALSE(listEditorInsert(list, 0, {"1", "2"}, shell));
  EXPECT_EQ(shell.messages.size(), 2u);
  EXPECT_TRUE(listEditorDelete(list, 3));
  EXPECT_TRUE(listEditorInsert(list, 0, {"1", "2"}, shell));
  EXPECT_EQ(list.rows[0][1], "2");
}

TEST_F(ModifyFixture, ChebyshevFitFillsTheBackgroundOrReportsASingularSystem) {
  ok([](DialogModel& d) { d.setText("order", "2"); });
  EXPECT_FALSE(session.menu().isEnabled(cmd::kSubtractBackground));
  dispatcher.dispatch(cmd::kChebyshevFit);
  EXPECT_TRUE(session.menu().isEnabled(cmd::kSubtractBackground));  // the fitted curve is a background
  const PatternSlot& background = session.store().slot(kSlotBackground);
  ASSERT_EQ(background.count, 101);
  EXPECT_FLOAT_EQ(background.start, 10.0f);
  EXPECT_NEAR(background.y[50], 115.0f, 1e-2f);
  ASSERT_EQ(shell.notes.size(), 2u);
  for (const char* word : {"Cycle", "Rp =", "Rwp =", "GOF =", "npar =   3"})
    EXPECT_NE(shell.notes[1].find(word), std::string::npos) << word;
  EXPECT_EQ(session.store().selection.plotMode, PlotMode::PatternAndBackground);

  load([](float) { return 5.0f; }, 4);
  session.store().discardUndoCopy();
  ok([](DialogModel& d) { d.setText("order", "40"); });  // clamped to 14: 15 parameters, 4 points
  dispatcher.dispatch(cmd::kChebyshevFit);
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"Error", "Matrix inversion error"}));
  EXPECT_EQ(session.process.chebyshevOrder, 14);
  EXPECT_FALSE(session.store().undoAvailable());
  EXPECT_EQ(background.count, 101);
}

TEST_F(ModifyFixture, EditPatternTakesTheChangedIntensities) {
  ok([](DialogModel& d) {
    DialogControl& t = d.at("points");
    EXPECT_EQ(d.title(), "Edit Pattern");
    ASSERT_EQ(t.rows.size(), 101u);
    EXPECT_EQ(t.rows[2][0], "10.2000");
    EXPECT_FALSE(t.editableColumns[0]);
    t.rows[2][1] = "123.5";
  });
  dispatcher.dispatch(cmd::kEditPattern);
  EXPECT_FLOAT_EQ(pattern().y[2], 123.5f);
  EXPECT_TRUE(session.store().undoAvailable());

  session.store().discardUndoCopy();
  ok([](DialogModel& d) { d.at("points").rows[4][1] = "12,5"; });
  dispatcher.dispatch(cmd::kEditPattern);
  EXPECT_EQ(shell.lastMessage().title, "Error");
  EXPECT_NE(shell.lastMessage().text.find("point 5"), std::string::npos);
  EXPECT_FALSE(session.store().undoAvailable());
}

TEST_F(ModifyFixture, AutoDivergenceAsksTwiceAndFlatPlateKeepsItsCopy) {
  const float before = pattern().y[10];
  dispatcher.dispatch(cmd::kAutoDivergence);  // No, No
  ASSERT_EQ(shell.questions.size(), 2u);
  EXPECT_EQ(shell.questions[0], (RecordedMessage{"Auto-divergence", "Do you want to correct data for auto-divergence slit?"}));
  EXPECT_EQ(shell.questions[1].text, "Do you want to make the reverse correction?");
  EXPECT_FLOAT_EQ(pattern().y[10], before);
  EXPECT_FALSE(session.store().undoAvailable());

  shell.answerYesNo(false);
  shell.answerYesNo(true);  // reverse
  dispatcher.dispatch(cmd::kAutoDivergence);
  EXPECT_NEAR(pattern().y[10], before * (std::sin(11.0f * 0.5f * 0.0153201f + 0.1947787f) - 0.19355f), 1e-4f);
  EXPECT_TRUE(session.store().undoAvailable());

  // μt = 0: no change and no redraw, but Undo still goes back to before the command.
  dispatcher.dispatch(cmd::kUndo);
  ok([](DialogModel& d) { d.setText("alpha", "20"); });
  shell.repaints = 0;
  dispatcher.dispatch(cmd::kAbsorptionFlatPlate);
  EXPECT_EQ(shell.repaints, 0);
  EXPECT_TRUE(session.store().undoAvailable());
  EXPECT_FLOAT_EQ(session.process.inclination, 20.0f);
}

TEST_F(ModifyFixture, ScriptCallsShowNoDialogKeepNoCopyAndDoNotRefresh) {
  session.flags.scriptRunning = true;
  EXPECT_TRUE(applyScale(session, 2.0));
  EXPECT_TRUE(applySavitzkyGolay(session, 5));
  EXPECT_TRUE(applyTruncate(session, 11.0f, 15.0f));
  EXPECT_TRUE(applyAutoDivergence(session));
  EXPECT_FALSE(applySmooth(session, 1));
  EXPECT_TRUE(shell.dialogTitles.empty());
  EXPECT_TRUE(shell.questions.empty());
  EXPECT_FALSE(session.store().undoAvailable());
  EXPECT_EQ(shell.repaints, 0);
  EXPECT_EQ(pattern().count, 41);
  EXPECT_FLOAT_EQ(session.store().axisTable().front().twoTheta, 11.0f);  // axis follows the cut
  EXPECT_DOUBLE_EQ(session.process.scaleFactor, 2.0);  // remembered for the next dialog
}

}  // namespace
}  // namespace quarvel
