// The zone-indexing engine end to end: cells found from synthetic lines, the skipped problems
// and their messages, the report read back by the solution reader, the entry point's files.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "core/app/recording_shell.h"
#include "core/common/numbers.h"
#include "core/common/text_file.h"
#include "core/index/benchmark/indexing_matrix.h"
#include "core/index/ito/ito_candidates.h"
#include "core/index/ito/ito_engine.h"
#include "core/index/ito/ito_input_file.h"
#include "core/index/ito/ito_report.h"
#include "core/index/ito/ito_solutions.h"
#include "core/index/lattice/synthetic_lines.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

IndexingCase syntheticCase(CellParameters cell, Centring centring, double noise, int lines = 30) {
  IndexingCase c;
  c.name = "synthetic";
  c.knownCell = cell;
  c.centring = centring;
  SyntheticLineOptions options;
  options.noise = noise;
  options.maxLines = lines;
  options.seed = 7;
  c.twoTheta = syntheticLines(cell, centring, options);
  return c;
}

std::vector<std::string> deckFor(const std::vector<double>& twoTheta, const std::string& firstCard = "9",
                                 const std::string& secondCard = "") {
  std::vector<std::string> cards{"test problem", firstCard, secondCard};
  for (double t : twoTheta) cards.push_back(formatF(t, 10, 4));
  cards.push_back("");
  cards.push_back("end");
  return cards;
}

bool contains(const std::vector<std::string>& report, std::string_view text) {
  return std::any_of(report.begin(), report.end(), [&](const std::string& l) { return l.find(text) != std::string::npos; });
}

TEST(ItoEngine, FindsTheCellOfEachCrystalSystemFromNoisyLines) {
  const struct {
    CellParameters cell;
    Centring centring;
  } cells[] = {
      {{10.83, 10.83, 10.83, 90, 90, 90}, Centring::F},
      {{6.31, 6.31, 9.77, 90, 90, 90}, Centring::I},
      {{5.43, 5.43, 7.91, 90, 90, 120}, Centring::P},
      {{10.027, 11.028, 3.420, 90, 90, 90}, Centring::P},
      {{10.223, 6.497, 8.806, 90, 94.69, 90}, Centring::P},
      {{5.12, 8.01, 7.04, 102.6, 96.1, 91.4}, Centring::P},
  };
  for (const auto& [cell, centring] : cells) {
    const IndexingCase problem = syntheticCase(cell, centring, 0.01);
    const auto candidates = itoCandidates(problem);
    EXPECT_TRUE(knownCellFound(problem, candidates, 4)) << cell.a << " " << cell.b << " " << cell.c << " first "
                                                        << (candidates.empty() ? 0.0 : candidates[0].cell.a) << " "
                                                        << (candidates.empty() ? 0.0 : candidates[0].cell.b) << " "
                                                        << (candidates.empty() ? 0.0 : candidates[0].cell.c);
  }
}

// Triclinic cells whose first lines nearly fill one zone: the lines on a zone axis and the third
// axis are few, so the second cross term of that axis must come from the lines that need all
// three; among the trials, the ones with the fewest calculated lines go on to refinement.
TEST(ItoEngine, CompletesADominantZoneWithTheLinesThatNeedAllThreeAxes) {
  for (const CellParameters& cell : {CellParameters{4.038, 11.423, 14.635, 83.28, 87.99, 86.42},
                                     CellParameters{6.337, 9.286, 13.321, 86.04, 80.20, 75.68},
                                     CellParameters{2.998, 6.694, 7.011, 116.70, 100.10, 94.25}}) {
    const IndexingCase problem = syntheticCase(cell, Centring::P, 0.01, 25);
    EXPECT_TRUE(knownCellFound(problem, itoCandidates(problem), 4)) << cell.a << " " << cell.b << " " << cell.c;
  }
}

// Monoclinic cells with one axis near 3 Å: the lines off the dominant zone start near the 20th,
// the third axis stands at right angles to a zone row (a cross term the one or two lines that
// show it cannot win against chance) and the refinement needs the lines beyond the 20th.
TEST(ItoEngine, FindsMonoclinicCellsWithAShortAxis) {
  const struct {
    CellParameters cell;
    int missing;
  } cells[] = {{{22.907, 4.087, 3.049, 90, 101.55, 90}, 0}, {{20.592, 5.836, 3.966, 90, 95.77, 90}, 3}};
  for (const auto& [cell, missing] : cells) {
    IndexingCase problem;
    problem.knownCell = cell;
    SyntheticLineOptions options;
    options.noise = 0.01;
    options.resolution = 0.02;
    options.drop = missing;
    options.maxLines = 25 + missing;
    options.seed = 7;
    problem.twoTheta = syntheticLines(cell, Centring::P, options);
    EXPECT_TRUE(knownCellFound(problem, itoCandidates(problem), 4)) << cell.a << " " << cell.b << " " << cell.c;
  }
}

// A C-centred monoclinic cell with a 24 Å axis: its first eight lines are the orders 00l of one
// row, so every pair among the first six lines spans that row, not a zone. Lines on the row of
// the first line give way to the next lines, and the zone of the row and a line off it is found.
TEST(ItoEngine, FindsTheZoneWhenTheFirstLinesAreOrdersOfOneRow) {
  const CellParameters cell{2.700, 5.375, 24.079, 90, 109.49, 90};
  for (const double noise : {0.0, 0.01}) {
    IndexingCase problem;
    problem.knownCell = cell;
    problem.centring = Centring::C;
    SyntheticLineOptions options;
    options.noise = noise;
    options.resolution = 0.02;
    options.drop = 1;
    options.maxLines = 26;
    options.seed = 7;
    problem.twoTheta = syntheticLines(cell, Centring::C, options);
    EXPECT_TRUE(knownCellFound(problem, itoCandidates(problem), 4)) << "noise " << noise;
  }
  const ItoLines lines = prepareLines(syntheticLines(cell, Centring::C, {}), ItoParameters{});
  EXPECT_TRUE(onSameRow(lines, 0, 1));   // 001 and 002
  EXPECT_TRUE(onSameRow(lines, 1, 2));   // 002 and 003: orders 2 and 3 of the half row
  EXPECT_FALSE(onSameRow(lines, 0, 8));  // 001 and 010
}

// Problems of the benchmark's random cells that a step of the search used to miss.
IndexingCase matrixProblem(std::uint32_t seed, const std::string& name) {
  SyntheticMatrixOptions options;
  options.seed = seed;  // the whole matrix: each problem draws its lines from the one sequence
  for (IndexingCase& problem : syntheticMatrix(options))
    if (problem.name == name) return problem;
  ADD_FAILURE() << "the synthetic matrix has no problem " << name;
  return {};
}

// The same 24 Å C-centred cell with noise: a zone made from the first line and the ninth carries
// the error of the first line times 64 in the eighth order of its row and indexes 11 of the 20
// lines; refined on the lines it indexes it indexes 15, and the true lattice is formed from it.
TEST(ItoZones, ZoneConstantsAreRefinedOnTheLinesTheyIndex) {
  const IndexingCase problem = matrixProblem(8, "mC λ1.5406 σ0.01 z0.00 imp0 miss1");
  EXPECT_TRUE(knownCellFound(problem, itoCandidates(problem), 4));
}

// At 0.40 Å the q tolerance of a line is four times that at Cu Kα1: a zone whose points catch a
// random line that often is refined onto chance lines as readily as onto its own, and is left
// as it was found (a hexagonal cell lost when every zone was refined).
TEST(ItoZones, ZonesThatCatchChanceLinesAreNotRefined) {
  const IndexingCase problem = matrixProblem(1, "hP λ0.4000 σ0.01 z0.00 imp0 miss1");
  EXPECT_TRUE(knownCellFound(problem, itoCandidates(problem), 4));
}

// A triclinic cell whose first 15 lines lie in one zone (4.04 × 11.4 × 14.6 Å, exact positions):
// neither zone axis has the right cross term with the third among the few lines on it, and a
// trial with one of them refines to a cell that leaves a line out. The cross term found from all
// lines with the other held at a right angle, held in turn, gives the first one from all lines.
// With noise and three lines missing the first cross term held must be one of the clusters found
// on the lines of a zone axis, not the right angle.
TEST(ItoEngine, SeeksTheFirstCrossTermAgainWithTheSecondHeld) {
  for (const char* name : {"aP λ1.5406 σ0.00 z0.00 imp0 miss1", "aP λ1.5406 σ0.01 z0.00 imp0 miss3"}) {
    const IndexingCase problem = matrixProblem(3, name);
    EXPECT_TRUE(knownCellFound(problem, itoCandidates(problem), 4)) << name;
  }
}

// Exact positions, but reflections closer than the resolution merged into one line at their mean:
// the true cell fits all 20 lines to a few ten-thousandths of a degree, while wrong cells that
// leave one line out fit the other 19 exactly. The figure must not grow without bound as the
// mean error goes to zero, or the exact 19 beat the true 20.
TEST(ItoEngine, MergedLinesOfExactDataDoNotLoseToCellsThatLeaveOneOut) {
  const CellParameters cell{22.907, 4.087, 3.049, 90, 101.55, 90};  // pseudo C-centred: many pairs merge
  for (const std::uint32_t seed : {3u, 7u}) {
    IndexingCase problem;
    problem.knownCell = cell;
    SyntheticLineOptions options;
    options.resolution = 0.02;
    options.drop = 1;
    options.maxLines = 26;
    options.seed = seed;
    problem.twoTheta = syntheticLines(cell, Centring::P, options);
    EXPECT_TRUE(knownCellFound(problem, itoCandidates(problem), 4)) << "lines drawn with " << seed;
  }
}

// Orthorhombic and monoclinic cells of a quarter of the volume index a body-centred cubic pattern
// as well and fit its noise better: the cubic cell still comes first.
TEST(ItoEngine, PrefersTheHigherSymmetryWhenTheFiguresAreComparable) {
  const IndexingCase problem = syntheticCase({10.048, 10.048, 10.048, 90, 90, 90}, Centring::I, 0.01, 25);
  EXPECT_TRUE(knownCellFound(problem, itoCandidates(problem), 1));
}

// One impurity line among the first 20: the true tetragonal trial indexes 19 of them, while
// dozens of oblique cells of several times its volume index all 20. Some trials go on to
// refinement on the lines indexed against the lines calculated, and the true one is among them.
TEST(ItoEngine, AnImpurityLineDoesNotPushTheTrueTrialOut) {
  for (const IndexingCase& problem : syntheticMatrix()) {
    if (problem.name != "tP λ1.5406 σ0.01 z0.00 imp1 miss1") continue;
    EXPECT_TRUE(knownCellFound(problem, itoCandidates(problem), 4));
    return;
  }
  FAIL() << "the synthetic matrix has no such problem";
}

TEST(ItoZones, RankedOnTheirFitBeyondChanceNotOnLinesAlone) {
  const auto twoTheta = syntheticCase({10.027, 11.028, 3.420, 90, 90, 90}, Centring::P, 0.01).twoTheta;
  const ItoLines lines = prepareLines(twoTheta, ItoParameters{});
  ItoZone hk0;
  hk0.qa = 1e4 / (11.028 * 11.028);
  hk0.qb = 1e4 / (10.027 * 10.027);
  ItoZone fine = hk0;  // the same rows at half the spacing: every line of hk0 and more
  fine.qa /= 4.0;
  fine.qb /= 4.0;
  evaluateZone(hk0, lines);
  evaluateZone(fine, lines);
  EXPECT_GE(fine.indexed, hk0.indexed);
  EXPECT_GT(hk0.excess, fine.excess + 1.0);
}

TEST(ItoEngine, DuplicateInputIsReportedAndDropped) {
  auto lines = syntheticCase({6.31, 6.31, 9.77, 90, 90, 90}, Centring::I, 0.0).twoTheta;
  lines.insert(lines.begin() + 5, lines[4]);
  std::vector<ItoProblemResult> results;
  const auto report = runItoDeck(deckFor(lines), {}, &results);
  EXPECT_TRUE(contains(report, " the input value" + formatF(lines[4], 10, 4) + " appears twice"));
  EXPECT_TRUE(contains(report, " check your input"));
  ASSERT_EQ(results.size(), 1u);
  EXPECT_EQ(results[0].lines.count(), static_cast<int>(lines.size()) - 1);
}

// A line tolerance far below the noise leaves no zone and so no lattice: the problem is skipped
// with the advice. With the default base pairs and tolerance the zone table fills, and says so.
TEST(ItoEngine, NoLatticeSkipsTheProblemAndAFullZoneTableIsReported) {
  const auto lines = syntheticCase({5.12, 8.01, 7.04, 102.6, 96.1, 91.4}, Centring::P, 0.01, 25).twoTheta;
  std::string tight(78, ' ');
  tight[0] = '9';
  tight.replace(70, 8, "    0.01");  // tolg: 0.0001°
  std::vector<ItoProblemResult> results;
  auto report = runItoDeck(deckFor(lines, tight), {}, &results);
  ASSERT_EQ(results.size(), 1u);
  EXPECT_TRUE(results[0].skipped);
  EXPECT_TRUE(contains(report, " no lattices have been found. try again with e.g."));
  EXPECT_TRUE(contains(report, " larger tol3 (col. 16-20). this problem is skipped"));

  report = runItoDeck(deckFor(lines));
  EXPECT_TRUE(contains(report, " search for zones terminated - storage for 39 zones maximum"));
  EXPECT_TRUE(contains(report, "q(a)"));
}

TEST(ItoEngine, NineteenUsableLinesSkipTheProblem) {
  const auto lines = syntheticCase({10.027, 11.028, 3.420, 90, 90, 90}, Centring::P, 0.0, 19).twoTheta;
  std::vector<ItoProblemResult> results;
  const auto report = runItoDeck(deckFor(lines), {}, &results);
  ASSERT_EQ(results.size(), 1u);
  EXPECT_TRUE(results[0].skipped);
  EXPECT_TRUE(contains(report, "the program needs 20 lines and cannot be expected to give reliable results"));
  EXPECT_TRUE(contains(report, " this problem is skipped"));
  EXPECT_FALSE(contains(report, "q(a)"));
}

TEST(ItoEngine, ManualUnlessColumnOneHoldsNineAndTheReportTexts) {
  const auto lines = syntheticCase({10.027, 11.028, 3.420, 90, 90, 90}, Centring::P, 0.005, 45).twoTheta;
  std::vector<ItoProblemResult> results;
  const auto withManual = runItoDeck(deckFor(lines, "0"), {}, &results);
  EXPECT_TRUE(contains(withManual, "instructions for the zone-indexing program"));
  ASSERT_EQ(results.size(), 1u);
  EXPECT_EQ(results[0].lines.count(), 40);
  EXPECT_EQ(results[0].lines.indexingCount(), 20);
  EXPECT_TRUE(contains(withManual, "only the first 40 of 45 lines are used"));
  EXPECT_TRUE(contains(withManual, "q-values will be considered to be equal when they differ less than"));
  EXPECT_TRUE(contains(withManual, "q=h*h*a+k*k*b+l*l*c+k*l*d+l*h*e+h*k*f"));
  EXPECT_TRUE(contains(withManual, "any solution with a figure of merit below 4.0 is worthless"));
  const auto without = runItoDeck(deckFor(lines, "9004 0 0 0"));
  EXPECT_FALSE(contains(without, "instructions for the zone-indexing program"));
}

TEST(ItoEngine, ZeroCheckTableWithoutCorrection) {
  auto problem = syntheticCase({10.027, 11.028, 3.420, 90, 90, 90}, Centring::P, 0.0, 30);
  for (double& t : problem.twoTheta) t += 0.05;  // a zero error of 0.05°
  ItoParameters p;
  p.lzerck = 1;
  const ItoLines lines = prepareLines(problem.twoTheta, p);
  const auto table = zeroCheck(lines, p);
  const auto best = std::max_element(table.begin(), table.end(),
                                     [](const ZeroCheckRow& a, const ZeroCheckRow& b) { return a.fits < b.fits; });
  EXPECT_NEAR(best->shift, -5, 2);
  const auto report = runItoDeck(deckFor(problem.twoTheta, "9                               1"));
  EXPECT_TRUE(contains(report, " shifts (x0.01)  nr of fits  mean delta q"));
  EXPECT_TRUE(contains(report, "the correction is not applied"));
}

// A goniometer zero of 0.05° moves the lines of a long cell by more than their tolerance: refined
// with the cell, the true cell is found and the zero printed; lines without a zero get none.
TEST(ItoEngine, RefinesAZeroShiftWithTheCellAndPrintsIt) {
  IndexingCase problem;
  problem.knownCell = {10.223, 6.497, 8.806, 90, 94.69, 90};
  SyntheticLineOptions options;
  options.noise = 0.01;
  options.maxLines = 30;
  options.seed = 7;
  problem.twoTheta = syntheticLines(problem.knownCell, Centring::P, options);
  const auto unshifted = runItoDeck(deckFor(problem.twoTheta));
  EXPECT_FALSE(contains(unshifted, "zero shift refined"));

  options.zero = 0.05;
  problem.twoTheta = syntheticLines(problem.knownCell, Centring::P, options);
  EXPECT_TRUE(knownCellFound(problem, itoCandidates(problem), 4));
  const auto report = runItoDeck(deckFor(problem.twoTheta));
  const auto line = std::find_if(report.begin(), report.end(),
                                 [](const std::string& l) { return l.find(" zero shift refined: ") == 0; });
  ASSERT_NE(line, report.end());
  EXPECT_NEAR(std::stod(line->substr(21)), 0.05, 0.01) << *line;
}

TEST(ItoSolutions, ReadsTheEnginesOwnReport) {
  const auto lines = syntheticCase({9.19, 12.48, 6.24, 90, 106.9, 90}, Centring::P, 0.005).twoTheta;
  std::vector<ItoProblemResult> results;
  const auto report = runItoDeck(deckFor(lines), {}, &results);
  ASSERT_EQ(results.size(), 1u);
  const auto& solutions = results[0].solutions;
  ASSERT_FALSE(solutions.empty());
  const SolutionTableRead read = readItoSolutions(report);
  ASSERT_FALSE(read.error) << *read.error;
  ASSERT_EQ(read.solutions.size(), solutions.size());
  for (std::size_t i = 0; i < solutions.size(); ++i) {
    EXPECT_NEAR(read.solutions[i].a, solutions[i].cell.a, 1e-3);
    EXPECT_NEAR(read.solutions[i].beta, solutions[i].cell.beta, 1e-2);
    EXPECT_NEAR(read.solutions[i].volume, solutions[i].volume, 0.01);
    EXPECT_EQ(read.solutions[i].nix, static_cast<float>(solutions[i].indexed));
    EXPECT_NEAR(read.solutions[i].merit, std::min(solutions[i].merit, 9999.9), 0.051);
  }
  // a damaged direct-constants row is a read error, a report without the table has no solutions
  auto damaged = report;
  const auto header = std::find_if(damaged.begin(), damaged.end(),
                                   [](const std::string& l) { return l.find("a        b") != std::string::npos; });
  ASSERT_NE(header, damaged.end());
  (header + 1)->replace(3, 6, "  x.xx");
  EXPECT_EQ(readItoSolutions(damaged).error, "Read Error");
  EXPECT_EQ(readItoSolutions({"no table here"}).error, "No indexing solutions found");
}

TEST(ItoEngine, EntryPointWritesTheReportOrSaysWhy) {
  test::TempDir dir;
  RecordingShell shell;
  EXPECT_FALSE(runIto(dir / "missing.inp", dir / "ito.out", shell));
  EXPECT_EQ(shell.lastMessage().title, "File Error");
  EXPECT_FALSE(std::filesystem::exists(dir / "ito.out"));

  ItoJob job;
  job.peakFile = "synthetic";
  job.maxLines = 30;
  const auto lines = syntheticCase({6.31, 6.31, 9.77, 90, 90, 90}, Centring::I, 0.005).twoTheta;
  std::string deck;
  for (const auto& card : itoInputCards(job, lines)) deck += card + "\n";
  ASSERT_TRUE(writeFileAtomically(dir / "ito.inp", deck));
  ASSERT_TRUE(runIto(dir / "ito.inp", dir / "ito.out", shell));
  const auto report = readLines(dir / "ito.out");
  ASSERT_TRUE(report.has_value());
  EXPECT_FALSE(readItoSolutions(*report).error);

  shell.interrupt = true;
  ASSERT_TRUE(runIto(dir / "ito.inp", dir / "ito.out", shell));
  EXPECT_TRUE(contains(*readLines(dir / "ito.out"), "interrupted by the user"));
}

TEST(ItoEngine, CaseFilesWithKnownCells) {
  const auto folder = test::sharedDataDir() / "indexing";
  if (test::sharedDataDir().empty() || !std::filesystem::is_directory(folder)) GTEST_SKIP() << "no shared indexing data";
  // cases the engine solves today: a regression guard, not the quality table (see the benchmark)
  for (const char* name :
       {"mcmaille_test1_Cd3OH5NO3.txt", "mcmaille_test4_NH4_2Ni_SO4_2_6H2O.txt", "mcmaille_test6_K2S2O8.txt"}) {
    std::string error;
    const auto problem = readIndexingCase(folder / name, error);
    ASSERT_TRUE(problem.has_value()) << error;
    EXPECT_TRUE(knownCellFound(*problem, itoCandidates(*problem), 4)) << name;
  }
  // corundum: the R cell with half the c axis leaves three weak lines out with a higher figure;
  // the true cell, its super-cell indexing all 20, comes first
  std::string error;
  const auto corundum = readIndexingCase(folder / "mcmaille_al2o3_nist.txt", error);
  ASSERT_TRUE(corundum.has_value()) << error;
  EXPECT_TRUE(knownCellFound(*corundum, itoCandidates(*corundum), 1));
}

}  // namespace
}  // namespace quarvel
