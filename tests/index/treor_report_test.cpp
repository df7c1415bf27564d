#include <gtest/gtest.h>

#include <regex>

#include "core/app/recording_shell.h"
#include "core/common/text_file.h"
#include "core/index/treor/treor_engine.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

// Digits become 9 and a minus sign before a digit a blank: the texts, the order of the blocks
// and every column stay compared, the last digits of refined values (which differ between
// compilers) do not.
std::string normalised(const std::string& line) {
  static const std::regex minus("-(?=[0-9])"), digit("[0-9]");
  return std::regex_replace(std::regex_replace(line, minus, " "), digit, "9");
}

// Silicon measured with Cu Kα1: the cubic stage finds the cell, the √2 cell that indexes every
// line with twice the calculated lines comes second, and KS stops the run after the stage.
TEST(TreorReport, SiliconReportMatchesTheReferenceLineByLine) {
  const auto dir = test::testDataDir() / "treor";
  test::TempDir tmp;
  RecordingShell shell;
  ASSERT_TRUE(runTreor90(shell, dir / "silicon.tre", tmp / "treor.out"));
  const auto got = readLines(tmp / "treor.out");
  const auto expected = readLines(dir / "silicon.out");
  ASSERT_TRUE(got && expected);
  for (std::size_t i = 0; i < std::min(got->size(), expected->size()); ++i)
    ASSERT_EQ(normalised((*got)[i]), normalised((*expected)[i])) << "line " << i + 1;
  EXPECT_EQ(got->size(), expected->size());
}

}  // namespace
}  // namespace quarvel
