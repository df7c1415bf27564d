// The card deck of the zone-indexing engine: parameter columns and defaults, line cards, the
// cards after the lines, and the line preparation of the reader stage.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "core/common/numbers.h"
#include "core/index/ito/ito_deck.h"
#include "core/index/ito/ito_input_file.h"
#include "core/index/ito/ito_lines.h"

namespace quarvel {
namespace {

TEST(ItoDeck, BlankParameterCardsTakeTheDefaults) {
  const ItoParameters p = readParameterCards("", "");
  EXPECT_TRUE(p.printManual);
  EXPECT_EQ(p.nsolmx, 4);
  EXPECT_DOUBLE_EQ(p.tol2, 3.0);
  EXPECT_DOUBLE_EQ(p.tol3, 4.5);
  EXPECT_DOUBLE_EQ(p.wavel, 1.5406);
  EXPECT_EQ(p.nq1, 3);
  EXPECT_EQ(p.nq2, 6);
  EXPECT_EQ(p.nz1, 6);
  EXPECT_EQ(p.nz2, 6);
  EXPECT_DOUBLE_EQ(p.tolg, 6.0);
  EXPECT_DOUBLE_EQ(p.prntmr, 4.0);
  EXPECT_EQ(p.prntln, 14);
  EXPECT_EQ(p.list, 1);
  EXPECT_DOUBLE_EQ(p.zercor, 0.0);
}

TEST(ItoDeck, EveryColumnOfTheParameterCardsIsRead) {
  std::string first;
  auto put = [&first](std::size_t column, std::string_view text) {
    if (first.size() < column - 1 + text.size()) first.resize(column - 1 + text.size(), ' ');
    first.replace(column - 1, text.size(), text);
  };
  put(1, "0112 1-1 1");
  put(11, " 2.50 5.00   0.70930");
  put(31, " 111 4 8 510 3 5-1 2");
  put(51, " 250.00000   1.50000  4.500088");
  const std::string second = "   -0.0300       6.0        16";
  const ItoParameters p = readParameterCards(first, second);
  EXPECT_TRUE(p.printManual);
  EXPECT_TRUE(p.printSpecialFeatures);
  EXPECT_TRUE(p.intensities);
  EXPECT_EQ(p.nsolmx, 2);
  EXPECT_EQ(p.nsyst, (std::array<int, 3>{1, -1, 1}));
  EXPECT_DOUBLE_EQ(p.tol2, 2.5);
  EXPECT_DOUBLE_EQ(p.tol3, 5.0);
  EXPECT_DOUBLE_EQ(p.wavel, 0.7093);
  EXPECT_EQ(p.linco, 1);
  EXPECT_EQ(p.lzerck, 1);
  EXPECT_EQ(p.enl, 1);
  EXPECT_EQ(p.nq1, 4);
  EXPECT_EQ(p.nq2, 8);
  EXPECT_EQ(p.nz1, 5);
  EXPECT_EQ(p.nz2, 10);
  EXPECT_EQ(p.nr, 3);
  EXPECT_EQ(p.indat, 5);
  EXPECT_EQ(p.list, -1);
  EXPECT_EQ(p.jtest, 2);
  EXPECT_DOUBLE_EQ(p.wmol, 250.0);
  EXPECT_DOUBLE_EQ(p.dobs, 1.5);
  EXPECT_DOUBLE_EQ(p.tolg, 4.5);
  EXPECT_EQ(p.ntst, 88);
  EXPECT_DOUBLE_EQ(p.zercor, -0.03);
  EXPECT_DOUBLE_EQ(p.prntmr, 6.0);
  EXPECT_EQ(p.prntln, 16);
}

TEST(ItoDeck, TheJobCardSuppressesTheManualAndAsksForFourSolutions) {
  const ItoParameters p = readParameterCards("9004 0 0 0 3.00 4.50   1.54060", "");
  EXPECT_FALSE(p.printManual);
  EXPECT_FALSE(p.printSpecialFeatures);
  EXPECT_FALSE(p.intensities);
  EXPECT_EQ(p.nsolmx, 4);
  EXPECT_EQ(p.nsyst, (std::array<int, 3>{0, 0, 0}));
}

TEST(ItoDeck, ProblemsLinesAndTheCardsAfterThem) {
  std::string withExtras(44, ' ');
  withExtras[0] = '9';
  withExtras[31] = '1';  // linco, columns 31-32
  withExtras[43] = '2';  // nr, columns 43-44
  const std::vector<std::string> cards{
      "first problem",
      "9",
      "",
      "   10.0000             12.0000",  // blank field skipped
      "   -5.0000   14.0000",                 // negative value kept for the echo
      "",
      "second problem",
      withExtras,
      "",
      "    20.000",
      "",
      "     82.22     99.46",                  // a line pair
      "     82.22     99.46      0.08",        // a rectangular zone
      "",
      "     10.03     11.03      3.42     90.00     90.00     90.00",
      "      0.00",
      "end",
      "ignored after the end card",
  };
  const ItoDeck deck = readItoDeck(cards);
  ASSERT_EQ(deck.problems.size(), 2u);
  EXPECT_TRUE(deck.endCardSeen);
  EXPECT_EQ(deck.problems[0].values, (std::vector<double>{10.0, 12.0, -5.0, 14.0}));
  const ItoProblem& second = deck.problems[1];
  EXPECT_EQ(second.title, "second problem");
  EXPECT_EQ(second.parameters.linco, 1);
  EXPECT_EQ(second.parameters.nr, 2);
  ASSERT_EQ(second.zoneCards.size(), 2u);
  EXPECT_EQ(second.zoneCards[0].count, 2);
  EXPECT_EQ(second.zoneCards[1].count, 3);
  ASSERT_EQ(second.trialLattices.size(), 1u);
  EXPECT_DOUBLE_EQ(second.trialLattices[0][2], 3.42);
}

TEST(ItoLines, DirectionDecidesTheKindOfValue) {
  EXPECT_EQ(detectInputKind({10, 12, 15, 20, 22, 25}), ItoInputKind::TwoTheta);
  EXPECT_EQ(detectInputKind({200, 300, 450, 600, 700, 900}), ItoInputKind::QUnits);
  EXPECT_EQ(detectInputKind({8.8, 7.4, 5.9, 4.4, 4.0, 3.6}), ItoInputKind::Spacing);
}

TEST(ItoLines, FortyLinesAreUsedAndTwentyCount) {
  std::vector<double> values;
  for (int i = 0; i < 45; ++i) values.push_back(10.0 + 1.5 * i);
  values.push_back(-3.0);
  const ItoLines lines = prepareLines(values, ItoParameters{});
  EXPECT_EQ(lines.given, 45);
  EXPECT_EQ(lines.count(), 40);
  EXPECT_EQ(lines.indexingCount(), 20);
  EXPECT_EQ(lines.dropped, 1);
  // q = 10⁴/d²; the same line given as d gives the same q
  ItoParameters p;
  const double d = 1.5406 / (2.0 * std::sin(5.0 * std::numbers::pi / 180.0));
  EXPECT_NEAR(qUnitsAt(10.0, p.wavel), 1.0e4 / (d * d), 1e-6);
}

TEST(ItoLines, ZeroCorrectionAndDuplicates) {
  ItoParameters p;
  p.zercor = 0.1;
  const ItoLines lines = prepareLines({20.0, 10.0, 10.0, 30.0}, p);
  ASSERT_EQ(lines.count(), 3);
  EXPECT_DOUBLE_EQ(lines.twoTheta.front(), 10.1);
  EXPECT_EQ(lines.duplicates, (std::vector<double>{10.0}));
  EXPECT_GT(lines.tolerance[2], lines.tolerance[0]);  // a fixed angle is more q at high angle
}

TEST(ItoInputFile, CardsAsTheJobWritesThem) {
  ItoJob job;
  job.peakFile = "peaks.dat";
  job.maxLines = 30;
  std::vector<double> peaks;
  for (int i = 0; i < 45; ++i) peaks.push_back(5.0 + i);
  const auto cards = itoInputCards(job, peaks);
  ASSERT_EQ(cards.size(), 3u + 30u + 2u);
  EXPECT_EQ(cards[0], "peaks.dat");
  EXPECT_EQ(cards[1], "9004 0 0 0 3.00 4.50   1.54060");
  EXPECT_EQ(cards[2], "    0.0000       4.0        14");
  EXPECT_EQ(cards[3], "    5.0000");
  EXPECT_EQ(cards[33], "");
  EXPECT_EQ(cards[34], "end ");
}

}  // namespace
}  // namespace quarvel
