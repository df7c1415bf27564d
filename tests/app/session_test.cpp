// The working state as users meet it: menu enabling, the dispatcher, toggles, undo, recent files
// and the operation frame, all through the recording shell.
#include <gtest/gtest.h>

#include <cmath>

#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/operation.h"
#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "tests/support/session_fixture.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

struct SessionFixture : test::SessionTest {
  void loadPattern(int n = 100) {
    test::fillSlot(session.store().pattern(), 10.0f, 0.02f, n, [](float x) { return 100.0f + x; });
    session.store().copyPatternToAsLoaded();
    session.setPatternMenus(true);
    session.rebuildAxisTable();
  }
};

TEST_F(SessionFixture, StartGreysThePatternMenusAndTheBackgroundItems) {
  const MenuModel& m = session.menu();
  for (int id : {cmd::kMenuModify, cmd::kMenuMultiple, cmd::kMenuBackground, cmd::kMenuPeakSearch,
                 cmd::kMenuPeakFit, cmd::kMenuIndex, cmd::kMenuPlot, cmd::kAddToSumFile, cmd::kEditSumFile,
                 cmd::kCloseSumFile, cmd::kSaveNotes, cmd::kSaveNotesAs, cmd::kMenuEditNotes,
                 cmd::kScalingIntervals, cmd::kScaleBackground, cmd::kSubtractBackground,
                 cmd::kCrystallinity, cmd::kSaveBackground, cmd::kPlotBackground, cmd::kFitPattern}) {
    EXPECT_FALSE(m.isEnabled(id)) << m.path(id);
  }
  EXPECT_TRUE(m.isEnabled(cmd::kMenuFile));
  EXPECT_TRUE(m.isEnabled(cmd::kOpenSumFile));

  session.setPatternMenus(true);
  for (int id : {cmd::kMenuModify, cmd::kMenuMultiple, cmd::kMenuBackground, cmd::kMenuPeakSearch,
                 cmd::kMenuPeakFit, cmd::kMenuIndex, cmd::kMenuPlot}) {
    EXPECT_TRUE(m.isEnabled(id)) << m.path(id);
  }
  // The background items stay greyed until a background exists.
  EXPECT_FALSE(m.isEnabled(cmd::kSubtractBackground));
}

TEST_F(SessionFixture, RefreshGreysSavingAndEditingWhileTheBackgroundIsShown) {
  loadPattern();
  ASSERT_EQ(dispatcher.dispatch(cmd::kPlotBackground), 1);
  EXPECT_FALSE(session.menu().isEnabled(cmd::kMenuSavePattern));
  EXPECT_FALSE(session.menu().isEnabled(cmd::kEditPattern));
  EXPECT_TRUE(session.menu().isChecked(cmd::kPlotBackground));
  dispatcher.dispatch(cmd::kPlotPatternBackground);
  EXPECT_TRUE(session.menu().isEnabled(cmd::kMenuSavePattern));
  EXPECT_TRUE(session.menu().isEnabled(cmd::kEditPattern));
  EXPECT_EQ(session.store().selection.plotMode, PlotMode::PatternAndBackground);
  EXPECT_FALSE(session.menu().isChecked(cmd::kPlotBackground));
}

TEST_F(SessionFixture, UnknownIdsChangeNothingAndCommandsWithoutAnOperationAreAccepted) {
  loadPattern();
  shell.clear();
  EXPECT_EQ(dispatcher.dispatch(12345), 0);
  EXPECT_EQ(dispatcher.dispatch(0), 0);
  EXPECT_EQ(dispatcher.dispatch(cmd::kMenuModify), 0);  // a menu head is no command
  EXPECT_TRUE(shell.menuChanges.empty());
  EXPECT_EQ(shell.repaints, 0);
  // Every command of the menu and every accelerator is accepted.
  for (const MenuItem& item : session.menu().items()) {
    if (item.kind != MenuItemKind::Command || item.id == cmd::kExit) continue;
    EXPECT_EQ(dispatcher.dispatch(item.id), 1) << item.text;
  }
  for (const Accelerator& a : session.menu().accelerators()) EXPECT_EQ(dispatcher.dispatch(a.command), 1);
}

TEST_F(SessionFixture, AxisAndScaleChoicesMoveTheSingleCheckMark) {
  dispatcher.dispatch(cmd::kAxisQ);
  EXPECT_TRUE(session.menu().isChecked(cmd::kAxisQ));
  EXPECT_FALSE(session.menu().isChecked(cmd::kAxisTwoTheta));
  const int repaints = shell.repaints;
  dispatcher.dispatch(cmd::kAxisTwoTheta);
  EXPECT_TRUE(session.menu().isChecked(cmd::kAxisTwoTheta));
  EXPECT_FALSE(session.menu().isChecked(cmd::kAxisQ));
  EXPECT_FALSE(session.menu().isChecked(cmd::kAxisD));
  EXPECT_EQ(session.store().selection.xAxisUnit, XAxisUnit::TwoTheta);
  EXPECT_GT(shell.repaints, repaints);

  dispatcher.dispatch(cmd::kScaleLog);
  EXPECT_EQ(session.store().selection.yAxisScale, YAxisScale::Logarithmic);
  EXPECT_FALSE(session.menu().isChecked(cmd::kScaleLinear));
}

TEST_F(SessionFixture, TogglesFollowTheirFlagsAndRepaintWithoutResettingTheView) {
  const int resets = shell.viewResets;
  dispatcher.dispatch(cmd::kXGrid);
  dispatcher.dispatch(cmd::kW7Mode);
  EXPECT_TRUE(session.flags.xGrid);
  EXPECT_TRUE(session.menu().isChecked(cmd::kXGrid));
  EXPECT_TRUE(session.flags.w7Mode);
  dispatcher.dispatch(cmd::kXGrid);
  EXPECT_FALSE(session.flags.xGrid);
  EXPECT_FALSE(session.menu().isChecked(cmd::kXGrid));
  EXPECT_EQ(shell.viewResets, resets);
  dispatcher.dispatch(cmd::kInterrupt);
  EXPECT_TRUE(session.interruptRequested());
}

TEST_F(SessionFixture, UndoRestoresOnceAndResetsTheWorkingState) {
  loadPattern(50);
  session.keepUndoCopy();
  PatternSlot& p = session.store().pattern();
  p.y[0] = -7.0f;
  p.count = 10;
  session.setPlotMode(PlotMode::Difference);
  ASSERT_EQ(dispatcher.dispatch(cmd::kUndo), 1);
  EXPECT_EQ(p.count, 50);
  EXPECT_FLOAT_EQ(p.y[0], 110.0f);
  EXPECT_EQ(session.store().selection.plotMode, PlotMode::Pattern);
  EXPECT_FALSE(session.store().undoAvailable());

  p.y[0] = 1.0f;
  dispatcher.dispatch(cmd::kUndo);  // no copy left: nothing happens
  EXPECT_FLOAT_EQ(p.y[0], 1.0f);
}

TEST_F(SessionFixture, RecentFilesAreOpenedByAllLowerOrAllUpperExtensionsOnly) {
  session.settings().values.recentFiles = {(dir / "scan.Xy").string(), (dir / "scan.xy").string(),
                                           (dir / "scan.XRDML").string(), (dir / "scan.raw").string()};
  dispatcher.dispatch(cmd::kRecentFile1);
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"File Error", "Unrecognized extension"}));
  shell.clear();
  dispatcher.dispatch(cmd::kRecentFile2);
  dispatcher.dispatch(cmd::kRecentFile3);
  for (const auto& m : shell.messages) EXPECT_NE(m.text, "Unrecognized extension");
  dispatcher.dispatch(cmd::kRecentFile4);
  EXPECT_EQ(shell.lastMessage().text, "Unrecognized extension");
}

TEST_F(SessionFixture, TheOperationFrameKeepsTheUndoCopyOnlyAfterConfirmation) {
  loadPattern();
  int applied = 0;
  bool confirm = false;
  Operation op;
  op.askUser = [&](Session&) { return confirm; };
  op.apply = [&](Session& s) { ++applied; s.store().pattern().y[0] = 0.0f; };

  EXPECT_FALSE(runOperation(session, op));  // cancelled
  EXPECT_FALSE(session.store().undoAvailable());
  EXPECT_EQ(applied, 0);

  confirm = true;
  const int repaints = shell.repaints;
  EXPECT_TRUE(runOperation(session, op));
  EXPECT_TRUE(session.store().undoAvailable());
  EXPECT_GT(shell.repaints, repaints);

  // From a script: no dialog, no undo copy, no refresh.
  session.store().discardUndoCopy();
  session.flags.scriptRunning = true;
  confirm = false;
  const int before = shell.repaints;
  EXPECT_TRUE(runOperation(session, op));
  EXPECT_EQ(applied, 2);
  EXPECT_FALSE(session.store().undoAvailable());
  EXPECT_EQ(shell.repaints, before);

  // A void operation keeps the previous copy untouched.
  session.flags.scriptRunning = false;
  confirm = true;
  op.hasEffect = [](Session&) { return false; };
  EXPECT_FALSE(runOperation(session, op));
  EXPECT_EQ(applied, 2);
}

TEST_F(SessionFixture, TheWavelengthDialogRebuildsTheAxisTable) {
  loadPattern(10);
  shell.answerDialog([](DialogModel& d) {
    EXPECT_EQ(d.title(), "Wavelength(s)");
    d.setText("alpha1", "0.70930");
    return DialogModel::kOk;
  });
  dispatcher.dispatch(cmd::kWavelength);
  EXPECT_FLOAT_EQ(session.store().wavelength.alpha1, 0.7093f);
  const AxisPoint first = session.store().axisTable()[0];
  EXPECT_NEAR(first.d, 0.7093 / (2.0 * std::sin(5.0 / 57.29578)), 1e-4);
}

}  // namespace
}  // namespace quarvel
