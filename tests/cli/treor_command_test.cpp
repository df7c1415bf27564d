#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <sstream>

#include "cli/treor_command.h"
#include "core/common/text_file.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

int runCli(std::vector<std::string> args, std::ostream& out, std::ostream& err) {
  CLI::App app;
  int exitCode = 0;
  addTreorCommand(app, out, err, exitCode);
  std::vector<const char*> argv{"quarvel-cli"};
  for (const std::string& a : args) argv.push_back(a.c_str());
  app.parse(static_cast<int>(argv.size()), argv.data());
  return exitCode;
}

TEST(TreorCommand, WritesTheJobFileFromPeaksAndRunsIt) {
  test::TempDir dir;
  test::writeText(dir / "si.pks", "        28.4430\n        47.3040\n        56.1230\n        69.1320\n        76.3770\n"
                                  "        88.0320\n        94.9540\n       106.7100\n");
  std::ostringstream out, err;
  const std::string job = (dir / "job.tre").string(), report = (dir / "si.out").string();
  ASSERT_EQ(runCli({"treor90", "--peaks", (dir / "si.pks").string(), "--wave", "1.5406", "--vol", "900", "--merit",
                    "9.5", job, report},
                   out, err),
            0)
      << err.str();
  const auto lines = readLines(job);
  ASSERT_TRUE(lines);
  ASSERT_EQ(lines->size(), 18u);
  EXPECT_EQ((*lines)[1], "   28.4430");
  EXPECT_EQ((*lines)[11], "WAVE= 1.54060,");
  EXPECT_EQ((*lines)[12], "VOL=  900,");
  EXPECT_EQ((*lines)[14], "MERIT= 10,");
  EXPECT_NE(readWholeFile(report)->find(" THIS MAY BE THE SOLUTION !!!"), std::string::npos);

  // The job file alone runs as it is.
  EXPECT_EQ(runCli({"treor90", job, report}, out, err), 0);
  EXPECT_EQ(runCli({"treor90", "--peaks", (dir / "none.pks").string(), job}, out, err), 1);
  EXPECT_NE(err.str().find("Error opening peak file"), std::string::npos);
}

}  // namespace
}  // namespace quarvel
