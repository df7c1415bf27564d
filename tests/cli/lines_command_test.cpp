#include <gtest/gtest.h>

#include <sstream>

#include "cli/lines_command.h"
#include "core/common/numbers.h"

namespace quarvel {
namespace {

std::vector<double> readPeakFile(const std::string& text) {
  std::vector<double> values;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);)
    if (const auto v = readField(line, 1, 15)) values.push_back(*v);
  return values;
}

TEST(LinesCommand, PrintsTheCellsLinesInPeakFileColumns) {
  LinesRequest r;
  r.cell = {5.4309, 5.4309, 5.4309, 90, 90, 90};
  r.centring = "F";
  r.laue = 16;
  std::ostringstream out;
  ASSERT_EQ(printLines(out, r), "");
  const auto lines = readPeakFile(out.str());
  // 111 200 220 311 222 400 331 420 422 (90° at Cu Kα1 ends before 511/333).
  ASSERT_EQ(lines.size(), 9u);
  EXPECT_NEAR(lines[0], 28.4426, 1e-4);
  EXPECT_EQ(out.str().substr(0, 16), "        28.4426\n");

  // Faults: one line dropped, two added, all shifted; the same seed gives the same list.
  r.drop = 1;
  r.impurities = 2;
  r.zero = 0.05;
  r.noise = 0.01;
  std::ostringstream first, second;
  ASSERT_EQ(printLines(first, r), "");
  ASSERT_EQ(printLines(second, r), "");
  EXPECT_EQ(first.str(), second.str());
  const auto faulty = readPeakFile(first.str());
  EXPECT_EQ(faulty.size(), 10u);
  EXPECT_NEAR(faulty[0], 28.4926, 0.05);
}

TEST(LinesCommand, RejectsImpossibleRequests) {
  LinesRequest r;
  r.cell = {5, 5, 5, 90, 90, 90};
  std::ostringstream out;
  r.laue = 17;
  EXPECT_NE(printLines(out, r), "");
  r.laue = 1;
  r.centring = "X";
  EXPECT_NE(printLines(out, r), "");
  r.centring = "I";
  r.cell = {5, 5, 5, 150, 150, 150};
  EXPECT_NE(printLines(out, r), "");
  EXPECT_TRUE(out.str().empty());
}

}  // namespace
}  // namespace quarvel
