// The File-menu commands as a user meets them: the open dialog's texts, the steps around a
// load, a failed load, the save dialog, the recent-file list and the command-line tools.
#include <gtest/gtest.h>

#include <sstream>

#include "cli/pattern_commands.h"
#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "core/common/text_file.h"
#include "tests/support/session_fixture.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

struct FileCommands : test::SessionTest {
};

TEST_F(FileCommands, OpeningAPatternRunsTheStepsAroundTheRead) {
  const auto file = dir / "data" / "scan.chi";
  std::filesystem::create_directories(file.parent_path());
  test::writeText(file, "t\n2-Theta\n\n3\n10 1\n10.5 2\n11 3\n");
  shell.answerFile(file.string());
  dispatcher.dispatch(cmd::kOpenChi);

  ASSERT_EQ(shell.fileRequests.size(), 1u);
  EXPECT_EQ(shell.fileRequests[0].title, "Open Pattern File");
  EXPECT_EQ(shell.fileRequests[0].filters, std::vector<std::string>{"Open pattern file (*.chi)"});
  EXPECT_EQ(session.store().selection.fileFormatCode, 4);
  EXPECT_EQ(session.store().pattern().count, 3);
  EXPECT_TRUE(session.menu().isEnabled(cmd::kMenuModify));
  EXPECT_EQ(session.settings().values.recentFiles.front(), file.string());
  EXPECT_EQ(session.workingDirectory(), file.parent_path());
  EXPECT_NE(readWholeFile(dir / "quarvel.ini").value_or("").find(file.string()), std::string::npos);
  EXPECT_TRUE(shell.messages.empty());

  // The recent entry opens the same file again by its extension.
  session.store().pattern().clear();
  dispatcher.dispatch(cmd::kRecentFile1);
  EXPECT_EQ(session.store().pattern().count, 3);
}

TEST_F(FileCommands, AFailedOpenLeavesAnEmptyPatternAndGreyMenus) {
  const auto file = dir / "empty.xy";
  test::writeText(file, "; nothing\n");
  shell.answerFile(file.string());
  dispatcher.dispatch(cmd::kOpenXy);
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"File error", "Nothing read from xy file"}));
  EXPECT_EQ(session.store().pattern().count, 0);
  EXPECT_FALSE(session.menu().isEnabled(cmd::kMenuModify));
  EXPECT_TRUE(session.settings().values.recentFiles.empty());
}

TEST_F(FileCommands, SavingWritesTheCurrentSlotWithTheDialogsDefaultExtension) {
  test::fillSlot(session.store().pattern(), 10.0f, 0.1f, 4, [](float x) { return x; });
  shell.answerFile((dir / "out").string());
  dispatcher.dispatch(cmd::kSaveStd);
  EXPECT_EQ(shell.fileRequests.back().title, "Save Pattern File As");
  EXPECT_EQ(shell.fileRequests.back().filters, std::vector<std::string>{"Pattern file (*.dat)"});
  EXPECT_EQ(readLines(dir / "out.dat").value_or(std::vector<std::string>{}).size(), 2u);
  EXPECT_EQ(session.store().selection.fileFormatCode, 2);
}

TEST(PatternCli, InfoAndConvertReportFailuresWithAnExitCode) {
  test::TempDir dir;
  const auto xy = dir / "a.xy";
  test::writeText(xy, "5 10\n5.5 20\n6 30\n");
  std::ostringstream out, err;
  EXPECT_EQ(runInfo(xy.string(), "", out, err), 0);
  EXPECT_NE(out.str().find("count       3"), std::string::npos);
  EXPECT_EQ(runConvert(xy.string(), (dir / "a.cif").string(), "", "", out, err), 0);
  EXPECT_EQ(runInfo((dir / "a.cif").string(), "", out, err), 0);
  EXPECT_NE(out.str().find("CIF powder"), std::string::npos);

  EXPECT_EQ(runInfo((dir / "missing.xy").string(), "", out, err), 1);
  EXPECT_NE(err.str().find("Error opening xy file"), std::string::npos);
  EXPECT_EQ(runConvert(xy.string(), (dir / "a.png").string(), "", "", out, err), 1);
  EXPECT_EQ(runInfo(xy.string(), "xrdml", out, err), 1);
}

}  // namespace
}  // namespace quarvel
