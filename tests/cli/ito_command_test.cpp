#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <sstream>

#include "cli/ito_command.h"
#include "core/common/numbers.h"
#include "core/common/text_file.h"
#include "core/index/ito/ito_solutions.h"
#include "core/index/lattice/synthetic_lines.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

int runCli(const std::string& arguments, std::ostream& out, std::ostream& err) {
  CLI::App app;
  int exitCode = 0;
  addItoCommand(app, out, err, exitCode);
  app.parse(arguments);
  return exitCode;
}

TEST(ItoCommand, PeakFileBecomesTheJobDeckAndItsReport) {
  test::TempDir dir;
  SyntheticLineOptions options;
  options.noise = 0.005;
  options.maxLines = 45;
  std::string peaks;
  for (double t : syntheticLines({6.31, 6.31, 9.77, 90, 90, 90}, Centring::I, options)) peaks += formatF(t, 15, 4) + "\n";
  ASSERT_TRUE(writeFileAtomically(dir / "peaks.dat", peaks));

  std::ostringstream out, err;
  const std::string deck = (dir / "ito.inp").string(), report = (dir / "ito.out").string();
  ASSERT_EQ(runCli("ito --peaks " + (dir / "peaks.dat").string() + " --wave 1.5406 --zero 0.02 --max-lines 30 " + deck +
                       " " + report,
                   out, err),
            0)
      << err.str();
  const auto cards = readLines(deck);
  ASSERT_TRUE(cards.has_value());
  ASSERT_EQ(cards->size(), 3u + 30u + 2u);
  EXPECT_EQ((*cards)[0], (dir / "peaks.dat").string());
  EXPECT_EQ((*cards)[1], "9004 0 0 0 3.00 4.50   1.54060");
  EXPECT_EQ((*cards)[2], "    0.0200       4.0        14");
  EXPECT_EQ((*cards)[3].size(), 10u);
  EXPECT_EQ((*cards)[33], "");
  EXPECT_EQ((*cards)[34], "end ");

  const auto lines = readLines(report);
  ASSERT_TRUE(lines.has_value());
  EXPECT_FALSE(readItoSolutions(*lines).error);
}

TEST(ItoCommand, MissingPeakFileOrDeckIsAnError) {
  test::TempDir dir;
  std::ostringstream out, err;
  EXPECT_EQ(runCli("ito --peaks " + (dir / "none.dat").string() + " " + (dir / "ito.inp").string(), out, err), 1);
  EXPECT_NE(err.str().find("Error opening peak file"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(dir / "ito.inp"));
  EXPECT_EQ(runCli("ito " + (dir / "none.inp").string() + " " + (dir / "ito.out").string(), out, err), 1);
  EXPECT_FALSE(std::filesystem::exists(dir / "ito.out"));
}

}  // namespace
}  // namespace quarvel
