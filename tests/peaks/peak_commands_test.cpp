// The Peak search menu through the recording shell: options with "Search", the manual search,
// and the peak files.
#include <gtest/gtest.h>

#include <cmath>

#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "core/common/text_file.h"
#include "core/peaks/peak_files.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

struct PeakCommands : ::testing::Test {
  test::TempDir dir;
  RecordingShell shell;
  Session session{shell, dir.path()};
  CommandDispatcher dispatcher{session};
  void SetUp() override {
    session.start();
    test::fillSlot(session.store().pattern(), 20.0f, 0.02f, 1000, [](float x) {
      return 100.0f + 2000.0f * std::exp(-std::pow((x - 30.0f) / 0.08f, 2.0f));
    });
  }
};

TEST_F(PeakCommands, OptionsKeepTheValuesAndSearchAtOnce) {
  shell.answerDialog([](DialogModel& d) {
    EXPECT_EQ(d.at("smoothing").group, "2nd derivative");
    d.setText("smoothing", "5");
    d.setText("sigma", "4");
    return 2;  // "Search"
  });
  dispatcher.dispatch(cmd::kPeakSearchOptions);
  EXPECT_EQ(shell.dialogTitles.back(), "Peak search options");
  EXPECT_EQ(session.peakSearch.smoothingFactor, 5);
  EXPECT_FLOAT_EQ(session.peakSearch.sigmaFactor, 4.0f);
  ASSERT_EQ(session.peaks.size(), 1u);
  EXPECT_NEAR(session.peaks.peaks[0].position, 30.0, 0.05);
}

TEST_F(PeakCommands, ManualSearchAddsTheNearestMaximaAndCancelUndoesThem) {
  shell.answerDialog([](DialogModel& d) {
    d.at("marks").rows = {{"29.93"}};
    return 2;  // "Add": the dialog stays open
  });
  shell.answerDialogOk();
  dispatcher.dispatch(cmd::kManualSearch);
  ASSERT_EQ(session.peaks.size(), 1u);
  EXPECT_FLOAT_EQ(session.peaks.peaks[0].position, 30.0f);

  shell.answerDialog([](DialogModel& d) {
    d.at("marks").rows = {{"25.0"}};
    return 2;
  });
  dispatcher.dispatch(cmd::kManualSearch);  // the second dialog is cancelled
  EXPECT_EQ(session.peaks.size(), 1u);
}

TEST_F(PeakCommands, PeakFilesRoundTripAndReportBadLines) {
  dispatcher.dispatch(cmd::kSavePeaks);
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"Error", "No peaks in list"}));
  EXPECT_TRUE(shell.fileRequests.empty()) << "no file is asked for";

  session.peaks.peaks = {{30.0f, 2000.0f, 0.1f, 0.5f, 0.1f, 0.5f, 0.0f, 0.0f}, {45.25f, 12.5f}};
  shell.answerFile((dir / "list").string());
  dispatcher.dispatch(cmd::kSavePeaks);
  EXPECT_EQ(shell.fileRequests.back().title, "Save Peak positions");
  const auto text = readWholeFile(dir / "list.pks").value_or("");
  EXPECT_EQ(text.substr(0, text.find('\n')),
            "   30.0000       2000.00   0.1000   0.5000   0.1000   0.5000    501    496    506  1");

  session.peaks.clear();
  shell.answerFile((dir / "list.pks").string());
  dispatcher.dispatch(cmd::kLoadPeaks);
  ASSERT_EQ(session.peaks.size(), 2u);
  EXPECT_FLOAT_EQ(session.peaks.peaks[1].position, 45.25f);

  const auto read = parsePeakFile("30.0 100\nbroken\n", "bad.pks");
  EXPECT_EQ(read.error, "Error reading bad.pks line 2");
}

}  // namespace
}  // namespace quarvel
