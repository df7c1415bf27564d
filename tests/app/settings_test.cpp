#include <gtest/gtest.h>

#include <filesystem>

#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "core/app/settings.h"
#include "core/common/text_file.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

std::vector<std::string> iniLines(const test::TempDir& dir) { return *readLines(dir / "quarvel.ini"); }

TEST(Settings, FirstStartWritesTheNineteenDefaultLinesAndNoRecentFiles) {
  test::TempDir dir;
  RecordingShell shell;
  Session session(shell, dir.path());
  session.start();
  const auto lines = iniLines(dir);
  ASSERT_EQ(lines.size(), 19u);
  EXPECT_EQ(lines, Settings::defaultLines());
  EXPECT_EQ(lines[2], "DIR=C:\\Users\\");
  EXPECT_EQ(lines[13], "MINW=0.02");
  EXPECT_TRUE(shell.messages.empty());
  EXPECT_FALSE(std::filesystem::exists(dir / "temp.ini"));
  EXPECT_EQ(session.menu().find(211), nullptr);
  EXPECT_FLOAT_EQ(session.settings().values.minW, 0.02f);
}

TEST(Settings, KeysAreReadInUpperOrLowerCaseButNotMixed) {
  test::TempDir dir;
  test::writeText(dir / "quarvel.ini",
                  "ini-file for QUARVEL\r\n! Editor\r\nedt=/usr/bin/gedit\r\nMinu=0.5\r\nminv=0.25\r\n"
                  "MINW=0.03\r\nDepartment=Chemistry\r\ndepartment=Physics\r\nCOMPANY=Lab\r\n"
                  "OLD QUARVEL FILES\r\n/data/a.xy\r\n/data/b.uxd\r\nEND QUARVEL FILES\r\n");
  RecordingShell shell;
  Session session(shell, dir.path());
  session.start();
  const SettingsValues& v = session.settings().values;
  EXPECT_EQ(v.editor, "/usr/bin/gedit");
  EXPECT_FLOAT_EQ(v.minU, 0.0f);  // "Minu" is mixed case: ignored
  EXPECT_FLOAT_EQ(v.minV, 0.25f);
  EXPECT_FLOAT_EQ(v.minW, 0.03f);
  EXPECT_EQ(v.department, "Physics");
  EXPECT_EQ(v.company, "Lab");
  ASSERT_EQ(v.recentFiles, (std::vector<std::string>{"/data/a.xy", "/data/b.uxd"}));
  EXPECT_EQ(session.menu().find(211)->text, "/data/a.xy");
  EXPECT_EQ(session.menu().find(212)->text, "/data/b.uxd");
}

TEST(Settings, RewriteReplacesOnlyTheRecentBlockAndKeepsFourPaths) {
  test::TempDir dir;
  RecordingShell shell;
  Session session(shell, dir.path());
  session.start();
  for (const char* p : {"/a.xy", "/b.xy", "/c.xy", "/d.xy", "/e.xy", "/c.xy"}) session.settings().addRecentFile(p);
  ASSERT_TRUE(session.settings().rewrite(dir.path(), shell));
  auto lines = iniLines(dir);
  ASSERT_EQ(lines.size(), 19u + 6u);
  EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 19), Settings::defaultLines());
  EXPECT_EQ(std::vector<std::string>(lines.begin() + 19, lines.end()),
            (std::vector<std::string>{"OLD QUARVEL FILES", "/c.xy", "/e.xy", "/d.xy", "/b.xy", "END QUARVEL FILES"}));

  session.settings().addRecentFile("/f.xy");
  session.settings().values.extra["FOIL"] = "/bg/foil.gdf";
  ASSERT_TRUE(session.settings().rewrite(dir.path(), shell));
  lines = iniLines(dir);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "OLD QUARVEL FILES"), 1);
  EXPECT_EQ(lines[20], "/f.xy");

  Settings reread;
  reread.read(dir.path(), shell);
  EXPECT_EQ(reread.values.recentFiles.front(), "/f.xy");
  EXPECT_EQ(reread.values.extra.at("FOIL"), "/bg/foil.gdf");
  EXPECT_TRUE(shell.messages.empty());
}

TEST(Settings, AnUnwritableFolderIsReportedAndTheDefaultsStay) {
  RecordingShell shell;
  Settings settings;
  settings.read("/nonexistent/folder/for/quarvel", shell);
  EXPECT_EQ(shell.lastMessage(), (RecordedMessage{"File Error", "Error opening ini-file"}));
  EXPECT_EQ(settings.values.width, 900);
}

}  // namespace
}  // namespace quarvel
