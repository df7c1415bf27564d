// Scripts: the file Create Script writes, the runner's messages and limits, Add-up on several
// threads, and a chain of operations over real patterns against the same operations run one by
// one.
#include <gtest/gtest.h>

#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "core/common/text_file.h"
#include "core/pattern/pattern_reading.h"
#include "core/pattern/pattern_writers.h"
#include "core/peaks/background_commands.h"
#include "core/process/modify_operations.h"
#include "core/script/script_file.h"
#include "core/script/script_runner.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

struct ScriptFixture : ::testing::Test {
  test::TempDir dir;
  RecordingShell shell;
  Session session{shell, dir.path()};
  CommandDispatcher dispatcher{session};
  void SetUp() override { session.start(); }

  void writeXy(const std::string& name, float start, int n, float scale) {
    std::string text;
    for (int i = 0; i < n; ++i) text += std::to_string(start + 0.1f * i) + " " + std::to_string(scale * (10 + i % 7)) + "\n";
    test::writeText(dir / name, text);
  }
  std::string script(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs,
                     const std::string& commands) {
    std::string in, out;
    for (const auto& i : inputs) in += i + "\n";
    for (const auto& o : outputs) out += o + "\n";
    test::writeText(dir / "in.lst", in);
    test::writeText(dir / "out.lst", out);
    test::writeText(dir / "run.scr", "in.lst\nout.lst\n" + commands);
    return (dir / "run.scr").string();
  }
};

TEST_F(ScriptFixture, CreateScriptWritesFixedFieldsAndLeavesVoidCommandsOut) {
  shell.answerDialog([](DialogModel& d) {
    EXPECT_EQ(d.at("output").group, "Ouput format");
    EXPECT_EQ(d.at("useSavitzkyGolay").label, "Savitsky-Golay filtering:");
    d.setText("script", "batch.scr");
    d.setText("inputList", "in.lst   ");
    d.setText("outputList", "out.lst");
    d.setSelected("input", 4);
    d.setSelected("output", 3);
    d.setChecked("useZero", true);
    d.setText("zero", "0");  // void: left out
    d.setChecked("useTruncate", true);
    d.setText("low", "10");
    d.setText("high", "80.5");
    d.setChecked("useSmooth", true);
    d.setText("smooth", "2");  // below 3: left out
    d.setChecked("useSavitzkyGolay", true);
    d.setText("savitzkyGolay", "31");  // written as 25
    d.setChecked("useConvert", true);
    for (auto [k, v] : {std::pair{"old", "1.5406"}, {"new", "0.7093"}, {"start", "5"}, {"stop", "40"}, {"step", "0.01"}})
      d.setText(k, v);
    return DialogModel::kOk;
  });
  dispatcher.dispatch(cmd::kCreateScript);
  EXPECT_EQ(readWholeFile(dir / "batch.scr").value_or(""),
            "in.lst\n"
            "out.lst\n"
            "INFM         5\n"
            "TRUN   10.0000   80.5000\n"
            "SAGO        25\n"
            "CONV   1.54060   0.70930   5.00000  40.00000   0.01000\n"
            "UTFM         4\n");
  EXPECT_EQ(session.script.scriptFile, (dir / "batch.scr").string());
}

TEST_F(ScriptFixture, EmptyListsAndShortOutputListsEndCleanly) {
  writeXy("a.xy", 10, 50, 1);
  writeXy("b.xy", 10, 50, 2);
  EXPECT_TRUE(runScript(session, script({}, {}, "INFM         2\nUTFM         2\n")));
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"Script", "Script done"}));

  EXPECT_TRUE(runScript(session, script({"a.xy", "b.xy"}, {"a.out"}, "INFM         2\nUTFM         2\n")));
  EXPECT_TRUE(std::filesystem::exists(dir / "a.out"));
  EXPECT_FALSE(session.flags.scriptRunning);
}

TEST_F(ScriptFixture, FailuresStopTheRunAndKeepWhatWasWritten) {
  writeXy("a.xy", 10, 50, 1);
  EXPECT_FALSE(runScript(session, script({"a.xy", "missing.xy", "a.xy"}, {"1.out", "2.out", "3.out"},
                                         "INFM         2\nUTFM         2\n")));
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"File error", "Error opening xy file"}));
  EXPECT_TRUE(std::filesystem::exists(dir / "1.out"));
  EXPECT_FALSE(std::filesystem::exists(dir / "3.out"));

  EXPECT_FALSE(runScript(session, script({"a.xy"}, {"x.out"}, "INFM         2\nSMOO      many\nUTFM         2\n")));
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"Read Error", "Error reading SMOO command"}));

  shell.clear();
  EXPECT_TRUE(runScript(session, script({"a.xy"}, {"t.out"}, "INFM         2\nTRUN       low\nUTFM         2\n")));
  EXPECT_EQ(shell.messages.size(), 1u) << "only \"Script done\": an unreadable TRUN is passed over";

  EXPECT_FALSE(runScript(session, (dir / "none.scr").string()));
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"File error", "Error opening script file"}));
  test::writeText(dir / "lists.scr", "nolist.lst\nout.lst\n");
  EXPECT_FALSE(runScript(session, (dir / "lists.scr").string()));
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"File Error", "Error opening input file list file"}));
}

TEST_F(ScriptFixture, AddUpSumsInInputOrderWhateverTheNumberOfThreads) {
  std::vector<std::string> inputs, outputs;
  for (int i = 0; i < 9; ++i) {
    writeXy("p" + std::to_string(i) + ".xy", 10, 40 + i, 1.0f + i);
    inputs.push_back("p" + std::to_string(i) + ".xy");
    outputs.push_back("sum.xy");
  }
  const auto file = script(inputs, outputs, "INFM         2\nUTFM         5\n");
  ASSERT_TRUE(runScript(session, file, 1));
  const auto one = readWholeFile(dir / "sum.xy").value_or("");
  ASSERT_TRUE(runScript(session, file, 2));
  EXPECT_EQ(readWholeFile(dir / "sum.xy").value_or("-"), one);
  // Point 1 of every pattern is 10 × its scale: 10 × (1 + 2 + ... + 9).
  EXPECT_NE(one.find("   10.0000         450.00\n"), std::string::npos) << one.substr(0, 80);

  writeXy("long.xy", 10, 10001, 1);
  EXPECT_FALSE(runScript(session, script({"long.xy"}, {"s.xy"}, "INFM         2\nUTFM         5\n")));
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"Pattern Error", "More than 10000 data points"}));
}

// The same chain, once as a script and once operation by operation, gives the same files.
TEST(ScriptOnRealPatterns, ChainMatchesTheOperationsRunOneByOne) {
  QUARVEL_REQUIRE_SHARED_DATA();
  const std::string files[] = {"xy/combs_SDPDRR1_sample2_Cu.XY", "xy/yadg_210520step1_30min.xy", "xy/fityk_SiC_Zn.dat"};
  test::TempDir dir;
  std::string in, out;
  for (int i = 0; i < 3; ++i) {
    in += (test::sharedDataDir() / "patterns" / files[i]).string() + "\n";
    out += "scripted" + std::to_string(i) + ".xy\n";
  }
  test::writeText(dir / "in.lst", in);
  test::writeText(dir / "out.lst", out);
  test::writeText(dir / "chain.scr",
                  "in.lst\nout.lst\nINFM         2\nZERO    0.0500\nTRUN   21.0000   79.0000\nSCAL   1.50000\n"
                  "SMOO         5\nSAGO         9\nBKGR       101\nCONV   1.54060   1.54060  22.00000  78.00000   0.02000\n"
                  "UTFM         2\n");
  RecordingShell scriptShell;
  Session scripted(scriptShell, dir.path());
  ASSERT_TRUE(runScript(scripted, (dir / "chain.scr").string(), 2));

  for (int i = 0; i < 3; ++i) {
    RecordingShell shell;
    Session s(shell, dir.path());
    ASSERT_TRUE(readPatternFile(s, OpenFormat::Xy, 1, (test::sharedDataDir() / "patterns" / files[i]).string()));
    s.rebuildAxisTable();
    applyZeroShift(s, 0.05f, false);
    applyTruncate(s, 21.0f, 79.0f);
    applyScale(s, 1.5);
    applySmooth(s, 5);
    applySavitzkyGolay(s, 9);
    shell.answerYesNo(true);
    autoSubtractBackground(s, 101);
    ConvertSettings grid;
    grid.oldWavelength = grid.newWavelength = 1.5406f;
    grid.start = 22.0f;
    grid.stop = 78.0f;
    grid.step = 0.02f;
    grid.used = true;
    applyConvert(s, grid);
    const std::string expected = patternFileText(s.store(), s.store().selection.currentSlot, SaveFormat::Xy, "");
    EXPECT_GT(expected.size(), 1000u);
    EXPECT_EQ(readWholeFile(dir / ("scripted" + std::to_string(i) + ".xy")).value_or(""), expected) << files[i];
  }
}

}  // namespace
}  // namespace quarvel
