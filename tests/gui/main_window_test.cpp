#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QTest>

#include "core/app/command_ids.h"
#include "core/app/messages.h"
#include "gui/desktop_app.h"
#include "gui/graphics_window.h"
#include "gui/menu_binding.h"
#include "gui/notes_window.h"
#include "tests/gui/gui_test_support.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

TEST(MainWindow, WindowsCarryTheirTitles) {
  test::TempDir dir;
  DesktopApp app(dir.path());
  EXPECT_EQ(app.window().windowTitle(), "QUARVEL - Display and handle diffraction patterns");
  EXPECT_EQ(app.window().graphics().windowTitle(), "QUARVEL Graphics");
  EXPECT_EQ(app.window().notes().windowTitle(), "Input/Output");
  EXPECT_EQ(app.window().childWindowCount(), 2);
}

TEST(MainWindow, MenuBarMirrorsTheMenuModel) {
  test::TempDir dir;
  DesktopApp app(dir.path());
  const MenuModel& model = app.session().menu();
  MenuBinding& menus = *app.window().menus();

  QStringList topLevel, expected;
  for (QAction* a : app.window().menuBar()->actions()) topLevel << a->text();
  for (const MenuItem& item : model.items())
    if (item.parent == 0) expected << QString::fromStdString(item.text);
  EXPECT_EQ(topLevel, expected);

  for (const MenuItem& item : model.items()) {
    if (item.kind == MenuItemKind::Separator) continue;
    QAction* action = menus.action(item.id);
    ASSERT_NE(action, nullptr) << item.text;
    EXPECT_EQ(action->text(), qtMenuText(item)) << item.id;
    EXPECT_EQ(action->isEnabled(), item.enabled) << item.text;
    if (item.checkable) {
      EXPECT_EQ(action->isChecked(), item.checked) << item.text;
    }
  }
  // Every accelerator has an action with its key, Ctrl+I included though it is in no menu.
  for (const Accelerator& acc : model.accelerators()) {
    QAction* action = menus.action(acc.command);
    ASSERT_NE(action, nullptr) << acc.key;
    EXPECT_EQ(action->shortcut(), QKeySequence(QString::fromStdString(acc.key))) << acc.key;
  }
  EXPECT_FALSE(menus.action(cmd::kMenuModify)->isEnabled());
  EXPECT_FALSE(menus.action(cmd::kMenuEditNotes)->isEnabled());

  // A recent file added later gets its number; an '&' in its path is shown, not a mnemonic.
  MenuItem recent;
  recent.id = cmd::kRecentFile1;
  recent.parent = cmd::kMenuFile;
  recent.text = "/data/a&b.xy";
  menus.apply(recent);
  EXPECT_EQ(menus.action(cmd::kRecentFile1)->text(), "&1 /data/a&&b.xy");
  EXPECT_EQ(menus.menu(cmd::kMenuFile)->actions().back(), menus.action(cmd::kRecentFile1));
}

TEST(MainWindow, MenuActionsReachTheDispatcher) {
  test::TempDir dir;
  DesktopApp app(dir.path());
  MenuBinding& menus = *app.window().menus();

  menus.action(cmd::kAxisQ)->trigger();
  EXPECT_EQ(app.session().store().selection.xAxisUnit, XAxisUnit::Q);
  EXPECT_TRUE(menus.action(cmd::kAxisQ)->isChecked());
  EXPECT_FALSE(menus.action(cmd::kAxisTwoTheta)->isChecked());
  EXPECT_EQ(app.window().graphics().plot().scene().xUnit, 3);

  menus.action(cmd::kXGrid)->trigger();
  EXPECT_TRUE(menus.action(cmd::kXGrid)->isChecked());
  EXPECT_TRUE(app.window().graphics().plot().xAxis->grid()->visible());
  menus.action(cmd::kXGrid)->trigger();
  EXPECT_FALSE(menus.action(cmd::kXGrid)->isChecked());

  // A checkable item whose command keeps the model unchanged keeps its check mark: "Pattern"
  // stays checked when chosen again.
  menus.action(cmd::kPlotPattern)->trigger();
  EXPECT_TRUE(menus.action(cmd::kPlotPattern)->isChecked());

  // The wavelength dialog is rendered, filled in and confirmed like a user would.
  test::whenModalOpens([](QWidget* dialog) {
    EXPECT_EQ(dialog->windowTitle(), "Wavelength(s)");
    dialog->findChild<QLineEdit*>("alpha1")->setText("1.7890");
    test::clickButton(dialog, "OK");
  });
  menus.action(cmd::kWavelength)->trigger();
  EXPECT_FLOAT_EQ(app.session().store().wavelength.alpha1, 1.789f);
}

TEST(MainWindow, MessagesAreCutTo79CharactersAndChildWindowsAreLimited) {
  test::TempDir dir;
  DesktopApp app(dir.path());
  QString title, text;
  auto readAndClose = [&](QWidget* box) {
    title = box->windowTitle();
    text = test::messageText(box);
    test::clickButton(box, "OK");
  };
  test::whenModalOpens(readAndClose);
  app.shell().showMessage(std::string(90, 't'), std::string(100, 'x'));
  EXPECT_EQ(title.size(), 79);
  EXPECT_EQ(text, QString(79, 'x'));

  const auto report = dir / "report.txt";
  test::writeText(report, "line 1\n");
  while (app.window().childWindowCount() < 99) app.shell().openTextViewer(report.string());
  test::whenModalOpens(readAndClose);
  app.shell().openTextViewer(report.string());
  EXPECT_EQ(text, "Maximun window allowed to open is 100 ");
  EXPECT_EQ(app.window().childWindowCount(), 99);
}

TEST(MainWindow, NotesAreSavedAndAskBeforeClosingWhenChanged) {
  test::TempDir dir;
  DesktopApp app(dir.path());
  app.shell().appendNotes("Zero shift 0.05");
  EXPECT_TRUE(app.session().menu().isEnabled(cmd::kSaveNotes));
  EXPECT_TRUE(app.window().menus()->action(cmd::kMenuEditNotes)->isEnabled());

  NotesWindow& notes = app.window().notes();
  const QString path = QString::fromStdString((dir / "notes.txt").string());
  ASSERT_TRUE(notes.saveTo(path));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), "Zero shift 0.05\n");

  // Saved: closes without a question. Changed again: "Save changes to Input/Output"; No closes.
  EXPECT_TRUE(notes.maybeSave());
  app.shell().appendNotes("Truncate");
  QString question;
  test::whenModalOpens([&](QWidget* box) {
    question = test::messageText(box);
    test::clickButton(box, "No");
  });
  EXPECT_TRUE(notes.maybeSave());
  EXPECT_EQ(question, "Save changes to Input/Output");
}

}  // namespace
}  // namespace quarvel

namespace quarvel {
namespace {

// A long computation sees Ctrl+I at its next poll; other commands are refused meanwhile, and
// the progress bar shows only while it runs.
TEST(MainWindow, CtrlIInterruptsARunningComputation) {
  test::TempDir dir;
  DesktopApp app(dir.path());
  app.window().show();
  QApplication::setActiveWindow(&app.window());
  ASSERT_TRUE(QTest::qWaitForWindowActive(&app.window()));
  auto* bar = app.window().findChild<QProgressBar*>();
  ASSERT_NE(bar, nullptr);

  int polls = 0;
  bool barShown = false;
  app.dispatcher().on(cmd::kFitAllPeaks, [&](Session& s) {
    s.shell().progress(0.25, "Fit All Peaks");
    barShown = bar->isVisible();
    QTest::keyClick(&app.window(), Qt::Key_I, Qt::ControlModifier);
    app.window().runCommand(cmd::kAxisQ);  // refused while the fit runs
    while (polls < 50 && !s.interruptRequested()) ++polls;
  });
  app.window().runCommand(cmd::kFitAllPeaks);
  EXPECT_TRUE(barShown);
  EXPECT_LT(polls, 50);
  EXPECT_TRUE(app.session().flags.interrupt);
  EXPECT_EQ(app.session().store().selection.xAxisUnit, XAxisUnit::TwoTheta);
  EXPECT_FALSE(bar->isVisible());
  EXPECT_FALSE(app.window().busy());
}

}  // namespace
}  // namespace quarvel

namespace quarvel {
namespace {

TEST(MainWindow, WindowCommandsArrangeShowAndCloseChildren) {
  test::TempDir dir;
  DesktopApp app(dir.path());
  app.window().resize(1000, 800);
  app.window().show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&app.window()));
  QWidget* graphics = app.window().graphics().parentWidget();
  QWidget* notes = app.window().notes().parentWidget();

  app.dispatcher().dispatch(cmd::kTileHorizontal);  // one above the other
  EXPECT_EQ(graphics->geometry().left(), notes->geometry().left());
  EXPECT_NE(graphics->geometry().top(), notes->geometry().top());
  app.dispatcher().dispatch(cmd::kTileVertical);  // side by side
  EXPECT_EQ(graphics->geometry().top(), notes->geometry().top());
  EXPECT_NE(graphics->geometry().left(), notes->geometry().left());

  QString title;
  test::whenModalOpens([&](QWidget* box) {
    title = box->windowTitle();
    test::clickButton(box, "OK");
  });
  app.dispatcher().dispatch(cmd::kAbout);
  EXPECT_EQ(title, "About QUARVEL");

  // Closing the graphics window with a pattern on display asks first; it comes back with the
  // next command that redraws the plot.
  test::fillSlot(app.session().store().pattern(), 10.0f, 0.1f, 100, [](float x) { return x; });
  app.session().refreshView();
  QString question;
  test::whenModalOpens([&](QWidget* box) {
    question = test::messageText(box);
    test::clickButton(box, "No");
  });
  graphics->close();
  EXPECT_EQ(question, "Save changes to QUARVEL Graphics");
  EXPECT_TRUE(graphics->isHidden());
  app.dispatcher().dispatch(cmd::kFullPattern);
  EXPECT_FALSE(graphics->isHidden());
}

}  // namespace
}  // namespace quarvel
