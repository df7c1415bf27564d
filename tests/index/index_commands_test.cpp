// The Index menu through the recording shell: the two job dialogs with their kept values and
// defaults, the input files they write, the engine runs into treor.out / ito.out, and reading
// the reports back into the solutions dialog and the reflection markers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "core/app/command_ids.h"
#include "core/common/numbers.h"
#include "core/common/text_file.h"
#include "core/structure/reflection_generator.h"
#include "tests/support/session_fixture.h"

namespace quarvel {
namespace {

constexpr CellParameters kCell{5.1, 7.3, 9.2, 90, 90, 90};  // primitive orthorhombic, 342.5 Å³
constexpr int kMmm = 5;  // Laue class of the cell: one line per set of equivalents

struct IndexCommands : test::SessionTest {
  std::filesystem::path peakFile = dir / "lines.pks";

  // The first n lines of the cell at Cu Kα1, one 2θ per record.
  void writePeaks(std::size_t n) {
    std::string text;
    for (const auto& r : generateReflections(kCell, kMmm, Centring::P, {1.5406, 5.0, 150.0})) {
      if (n-- == 0) break;
      text += formatF(r.twoTheta, 10, 4) + formatF(1000.0, 14, 2) + "\n";
    }
    test::writeText(peakFile, text);
  }

  std::vector<std::string> lines(const char* name) { return readLines(dir / name).value_or(std::vector<std::string>{}); }

  // Answers a job dialog with the peak file set and `press`.
  void answerJob(int press, std::function<void(DialogModel&)> edit = {}) {
    shell.answerDialog([this, press, edit](DialogModel& d) {
      d.setText("peakFile", peakFile.string());
      if (edit) edit(d);
      return press;
    });
  }

  bool holdsCell(const std::vector<IndexingSolution>& solutions) {
    return std::any_of(solutions.begin(), solutions.end(),
                       [](const IndexingSolution& s) { return std::abs(s.volume - 342.5) < 3.0; });
  }
};

TEST_F(IndexCommands, TreorDialogFillsDefaultsKeepsValuesAndSaveOnlyWritesTheFile) {
  writePeaks(12);
  session.indexing.treor.job.maxVolume = 0;
  answerJob(2, [](DialogModel& d) {
    EXPECT_EQ(d.text("maxVolume"), "-2000");
    EXPECT_EQ(d.text("maxCellEdge"), "100");
    EXPECT_EQ(d.text("d1"), "0.0002");  // plain decimals, not 2e-04
    EXPECT_EQ(d.selected("form"), 3);
    d.setText("maxVolume", "2500.5");
    d.setText("merit", "9.5");
    d.setText("unindexed", "1.6");
  });
  dispatcher.dispatch(cmd::kTreor90);
  EXPECT_EQ(shell.dialogTitles.back(), "TREOR90 Input");
  const auto tre = lines("treor90.tre");
  ASSERT_EQ(tre.size(), 1u + 12u + 1u + 8u);
  EXPECT_EQ(tre[0], peakFile.string());
  EXPECT_EQ(tre[16], "VOL= 2501,");
  EXPECT_EQ(tre[17], "NIX= 2,");
  EXPECT_EQ(tre[18], "MERIT= 10,");
  EXPECT_TRUE(shell.viewed.empty());
  EXPECT_FALSE(std::filesystem::exists(dir / "treor.out"));

  answerJob(0, [](DialogModel& d) { EXPECT_EQ(d.text("maxVolume"), "2500.5"); });  // kept; Cancel
  std::filesystem::remove(dir / "treor90.tre");
  dispatcher.dispatch(cmd::kTreor90);
  EXPECT_FALSE(std::filesystem::exists(dir / "treor90.tre"));
}

TEST_F(IndexCommands, ItoDeckHoldsMaxLinesAndTakesThePatternWavelength) {
  writePeaks(45);
  session.store().wavelength.alpha1 = 1.78897f;
  answerJob(2, [](DialogModel& d) {
    EXPECT_EQ(d.text("wavelength"), formatEditNumber(1.78897f));
    EXPECT_EQ(d.text("maxLines"), "30");
    d.setText("inputFile", "job.inp");
  });
  dispatcher.dispatch(cmd::kIto);
  const auto deck = lines("job.inp");
  ASSERT_EQ(deck.size(), 3u + 30u + 2u);
  EXPECT_EQ(deck[1], "9004 0 0 0 3.00 4.50   1.78897");
  EXPECT_EQ(deck.back(), "end ");
}

TEST_F(IndexCommands, BadFilesGetTheirMessages) {
  answerJob(1);  // no such peak file
  dispatcher.dispatch(cmd::kTreor90);
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"File Error", "Error opening peak file"}));

  writePeaks(30);
  answerJob(2, [this](DialogModel& d) { d.setText("inputFile", (dir / "no/such/folder/ito.inp").string()); });
  dispatcher.dispatch(cmd::kIto);
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"File Error", "Error opening ito input file"}));

  dispatcher.dispatch(cmd::kViewOutput);  // nothing remembered, the file dialog cancelled
  EXPECT_EQ(shell.fileRequests.back().title, "Open Indexing Output File");
  EXPECT_EQ(shell.lastMessage().text, "Invalid file selection");

  test::writeText(dir / "empty.out", "no cells here\n");
  shell.answerFile((dir / "empty.out").string());
  const auto dialogs = shell.dialogTitles.size();
  dispatcher.dispatch(cmd::kPlotTreorSolutions);
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"File Error", "No indexing solutions found"}));
  EXPECT_EQ(shell.dialogTitles.size(), dialogs);
  const auto asked = shell.fileRequests.size();
  dispatcher.dispatch(cmd::kViewOutput);  // the failed read forgot the file: asked again
  EXPECT_EQ(shell.fileRequests.size(), asked + 1);
}

// Both engines run end to end on the lines of one orthorhombic cell; each report is shown,
// remembered and read back, and the chosen cell marks its reflections.
TEST_F(IndexCommands, JobsRunTheEnginesAndTheChosenSolutionMarksReflections) {
  writePeaks(30);
  answerJob(1);
  dispatcher.dispatch(cmd::kTreor90);
  ASSERT_EQ(shell.viewed.size(), 1u);
  EXPECT_EQ(std::filesystem::path(shell.viewed[0]).filename(), "treor.out");

  shell.answerDialogOk();  // OK with no line selected
  shell.answerDialog([](DialogModel& d) {
    EXPECT_EQ(d.title(), "Indexing solutions");
    d.setSelected("solution", 0);
    return DialogModel::kOk;
  });
  dispatcher.dispatch(cmd::kPlotTreorSolutions);
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"Select solution", "Select a solution first"}));
  EXPECT_TRUE(shell.fileRequests.empty());  // the report just written is read without asking
  EXPECT_TRUE(holdsCell(session.indexing.solutions));
  const IndexingSolution& first = session.indexing.solutions[0];
  EXPECT_FLOAT_EQ(static_cast<float>(session.indexing.cell.a), first.a);
  EXPECT_FALSE(session.indexing.reflectionMarkers.empty());

  answerJob(1);
  dispatcher.dispatch(cmd::kIto);
  ASSERT_EQ(shell.viewed.size(), 2u);
  EXPECT_EQ(std::filesystem::path(shell.viewed[1]).filename(), "ito.out");
  shell.answerDialog([](DialogModel&) { return DialogModel::kCancel; });
  const auto markers = session.indexing.reflectionMarkers;
  dispatcher.dispatch(cmd::kPlotItoSolutions);
  EXPECT_TRUE(holdsCell(session.indexing.solutions));
  EXPECT_EQ(session.indexing.reflectionMarkers, markers);  // Cancel changes nothing
}

}  // namespace
}  // namespace quarvel
