#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <set>
#include <sstream>

#include "core/common/text_file.h"
#include "core/index/lattice/lattice_relations.h"
#include "core/index/lattice/matrix3.h"
#include "core/index/lattice/niggli_reduction.h"
#include "core/index/lattice/reciprocal_metric.h"
#include "core/index/lattice/synthetic_lines.h"
#include "core/index/lattice/units.h"
#include "core/index/treor/cell_report.h"
#include "core/index/treor/treor_run.h"
#include "core/index/treor/treor_solutions.h"
#include "core/index/treor/trial_search.h"

namespace quarvel {
namespace {

const CellParameters kTetragonal{6.281, 6.281, 4.127, 90, 90, 90};

std::vector<double> tetragonalLines(double wavelength) {
  SyntheticLineOptions o;
  o.wavelength = wavelength;
  o.maxLines = 20;
  return syntheticLines(kTetragonal, Centring::P, o);
}

std::string firstLinesOf(const TreorResult& result, std::string_view start, int count) {
  std::string text;
  for (std::size_t i = 0; i < result.report.size(); ++i)
    if (result.report[i].starts_with(start)) {
      for (int j = 0; j < count && i + j < result.report.size(); ++j) text += result.report[i + j] + "\n";
      break;
    }
  return text;
}

// A triclinic trial (a finer lattice of a monoclinic trial, a general triclinic solve) comes in
// whatever basis gave it. Refined in a strongly oblique one, the normal equations were singular and
// the trial kept its start values: a wrong cell was accepted instead of this monoclinic C one.
TEST(TreorUnits, TriclinicTrialRefinesInAnObliqueBasis) {
  const CellParameters monoclinicC{2.938, 7.420, 13.826, 90, 95.8, 90};
  ObservedLines lines;
  SyntheticLineOptions o;
  o.maxLines = 25;
  lines.twoTheta = syntheticLines(monoclinicC, Centring::C, o);
  for (const double t : lines.twoTheta) lines.q.push_back(qFromTwoTheta(t, lines.wavelength));
  lines.given = lines.twoTheta;
  lines.refineTolerance = qFromSinSquaredTheta(0.0004, lines.wavelength);
  // The primitive cell (3.99, 3.99, 13.83 Å) in its reduced basis and in the basis the search gave.
  const CellParameters reduced = niggliReduce(monoclinicC, Centring::C).cell;
  for (const CellParameters& start : {reduced, CellParameters{7.42168, 3.99097, 14.24690, 103.976, 74.945, 158.405}}) {
    const RefinedTrial refined = refineTrial(lines, CrystalSystem::Triclinic, metricFromCell(start));
    ASSERT_TRUE(refined.solved);
    EXPECT_EQ(refined.figure.unindexed, 0);
    EXPECT_GT(refined.figure.m, 1000);
    EXPECT_NEAR(cellVolume(refined.refinement.cell), cellVolume(monoclinicC) / 2, 0.2);
  }
}

// With a molar weight and a density only cells holding a whole number of formula units are
// admitted: the tetragonal cell (162.8 Å³) holds two units of 100 g/mol at 2.04 g/cm³, and none
// at 2.55 g/cm³ (2.5 units).
TEST(TreorUnits, TheDensityTestKeepsCellsThatHoldAWholeNumberOfUnits) {
  for (const double density : {2.04, 2.55}) {
    TreorInput input;
    input.keywords.wave = 1.5406;
    input.values = tetragonalLines(1.5406);
    input.keywords.molw = 100.0;
    input.keywords.dens = density;
    input.keywords.edens = 0.05;
    const TreorResult result = runTreor(input, nullptr);
    const bool found = std::any_of(result.cells.begin(), result.cells.end(), [](const TreorCell& c) {
      return c.accepted && std::abs(c.cell.a - kTetragonal.a) < 1e-3 && std::abs(c.cell.c - kTetragonal.c) < 1e-3;
    });
    EXPECT_EQ(found, density < 2.5) << density;
    if (found) {
      EXPECT_EQ(firstLinesOf(result, " CALCULATED DENSITY", 1), " CALCULATED DENSITY =   2.040 G/CM**3 FOR Z =   2\n");
    }
  }
}

// Assignments that only rename the axes of another give the same cell and are cut off: the
// cells admitted must be those of the full search (but for the few noted below). A monoclinic and an orthorhombic pattern, the
// base lines of each general test (a loose window, so that many cells pass).
TEST(TreorUnits, CuttingOffRenamedAssignmentsAdmitsTheSameCells) {
  struct Pattern {
    CrystalSystem system;
    CellParameters cell;
    int maxIndex, maxSum;
  };
  for (const Pattern& p : {Pattern{CrystalSystem::Orthorhombic, {7.517, 5.286, 4.913, 90, 90, 90}, 3, 5},
                           Pattern{CrystalSystem::Monoclinic, {6.823, 5.117, 7.452, 90, 104.6, 90}, 3, 4}}) {
    SyntheticLineOptions o;
    o.maxLines = 25;
    o.noise = 0.01;
    TrialProblem problem;
    for (const double t : syntheticLines(p.cell, Centring::P, o)) problem.q.push_back(qFromTwoTheta(t, 1.5406));
    problem.testLines = 15;
    problem.iqRequired = 12;
    problem.tolerance = qFromSinSquaredTheta(0.0004, 1.5406);
    auto admittedCells = [&](bool pruning) {
      TrialSearch search(problem, nullptr);
      search.setOrbitPruning(pruning);
      search.beginStage(3000.0, 12);
      std::set<std::array<long, 4>> cells;  // a, b, c (sorted) and the volume, to 0.01 %
      const int lines = freeParameterCount(p.system);
      std::vector<int> base;
      for (int i = 0; i < lines; ++i) base.push_back(i);
      search.searchBaseSet(p.system, base, labelTable(p.system, p.maxIndex, p.maxSum), [&](const Trial& t) {
        const auto cell = cellFromMetric(t.metric);
        std::array<double, 3> edges{cell->a, cell->b, cell->c};
        std::sort(edges.begin(), edges.end());
        cells.insert({std::lround(edges[0] * 1e4), std::lround(edges[1] * 1e4), std::lround(edges[2] * 1e4),
                      std::lround(cellVolume(*cell) * 1e2)});
      });
      return cells;
    };
    const auto full = admittedCells(false);
    EXPECT_GT(full.size(), 5u) << crystalSystemName(p.system);
    // A stage tests one trial per cell key, the first it meets; a few trials of other cells that
    // share a key by rounding are met in another order and may refit to a slightly other cell.
    const auto pruned = admittedCells(true);
    std::vector<std::array<long, 4>> differing;
    std::set_symmetric_difference(full.begin(), full.end(), pruned.begin(), pruned.end(), std::back_inserter(differing));
    EXPECT_LE(differing.size(), full.size() / 1000) << crystalSystemName(p.system);
    EXPECT_NEAR(static_cast<double>(pruned.size()), static_cast<double>(full.size()), full.size() / 1000.0);
  }
}

// A trial that took its base lines with multiplied indices describes a super-cell (here three
// times the volume, along no single axis); the finer lattice that indexes as many test lines is
// the cell itself, and the cell itself has none.
TEST(TreorUnits, TheFinerLatticeOfASuperCellTrialIsTheCell) {
  const CellParameters cell{6.823, 5.117, 7.452, 90, 104.6, 90};
  SyntheticLineOptions o;
  o.maxLines = 20;
  TrialProblem problem;
  for (const double t : syntheticLines(cell, Centring::P, o)) {
    problem.q.push_back(qFromTwoTheta(t, 1.5406));
    problem.fitWindow.push_back(qFromSinSquaredTheta(0.0002, 1.5406));
    problem.slope.push_back(1.0);
  }
  problem.testLines = 15;
  problem.iqRequired = 15;
  TrialSearch search(problem, nullptr);
  search.setFinerLatticeIndex(6);
  Mat3 m;  // direct super-cell axes in terms of the cell's, determinant 3
  m(0, 0) = 1, m(0, 1) = 1, m(1, 1) = 1, m(1, 2) = 1, m(2, 0) = 1, m(2, 2) = 2;
  Trial superCell;
  superCell.system = CrystalSystem::Monoclinic;
  superCell.metric = ReciprocalMetric::fromTensor(inverse(transpose(m) * directMetric(cell) * m));
  superCell.iq = 15;
  const auto finer = search.finestSubLattice(superCell);
  ASSERT_TRUE(finer.has_value());
  EXPECT_TRUE(sameLattice(*cellFromMetric(*finer), Centring::P, cell, Centring::P, 1e-6));
  Trial itself = superCell;
  itself.metric = metricFromCell(cell);
  EXPECT_FALSE(search.finestSubLattice(itself).has_value());
}

// A finer lattice or a halved axis keeps the limits every trial keeps, judged on the lattice's
// shortest vectors: two 5 Å edges 5.7° apart span a lattice with a 0.5 Å vector.
TEST(TreorUnits, LowerLimitsHoldForTheShortestVectorsOfTheLattice) {
  TrialProblem problem;
  problem.q = {0.01, 0.02, 0.03};
  const TrialSearch search(problem, nullptr);
  EXPECT_TRUE(search.withinLowerLimits(metricFromCell({5.82, 2.63, 8.29, 90, 99.2, 90})));
  EXPECT_FALSE(search.withinLowerLimits(metricFromCell({5.82, 0.68, 8.29, 90, 99.2, 90})));
  EXPECT_FALSE(search.withinLowerLimits(metricFromCell({5.0, 5.0, 8.0, 90, 90, 5.73})));
  EXPECT_FALSE(search.withinLowerLimits(metricFromCell({2.1, 2.1, 4.0, 90, 90, 90})));  // 17.6 Å³
}

// Every input form describes the same lines; the cell must not depend on which one the job used.
TEST(TreorUnits, EveryInputFormGivesTheSameCell) {
  const double lambda = 1.5406;
  const auto twoTheta = tetragonalLines(lambda);
  for (int choice = 0; choice <= 4; ++choice) {
    TreorInput input;
    input.keywords.choice = choice;
    input.keywords.wave = lambda;
    for (double t : twoTheta) {
      const double q = qFromTwoTheta(t, lambda);
      const double values[] = {sinSquaredThetaFromQ(q, lambda), q, t / 2, t, dFromQ(q)};
      input.values.push_back(values[choice]);
    }
    const TreorResult result = runTreor(input, nullptr);
    ASSERT_FALSE(result.cells.empty()) << "CHOICE=" << choice;
    const TreorCell& cell = result.cells.front();
    EXPECT_TRUE(cell.accepted) << "CHOICE=" << choice;
    EXPECT_NEAR(cell.cell.a, kTetragonal.a, 1e-3) << "CHOICE=" << choice;
    EXPECT_NEAR(cell.cell.c, kTetragonal.c, 1e-3) << "CHOICE=" << choice;
  }
}

// A second order among the first seven lines is left out of the base lines but kept in the
// refinement; switching the check off (IDIV=0) leaves the lines alone.
TEST(TreorUnits, HigherOrdersAmongTheFirstLinesAreFlagged) {
  TreorInput input;
  input.keywords.wave = 1.5406;
  input.values = tetragonalLines(1.5406);  // 100 at 14.09°, 200 at 28.40°
  TreorResult result = runTreor(input, nullptr);
  const std::string flagged = firstLinesOf(result, " LINE", 2);
  EXPECT_NE(flagged.find(" IS ORDER 2 OF LINE  1 AND SHOULD NOT BE INCLUDED IN THE TREOR\n"), std::string::npos)
      << flagged;
  EXPECT_NE(flagged.find(" BASE LINE SETS. IT WILL BE SKIPPED IN THE TRIAL PHASE."), std::string::npos);
  ASSERT_FALSE(result.cells.empty());
  EXPECT_TRUE(result.cells.front().accepted);

  input.keywords.idiv = 0;
  result = runTreor(input, nullptr);
  EXPECT_EQ(firstLinesOf(result, " LINE", 1), "");
}

// An accepted cell as the ranking sees it.
TreorCell rankedCell(double m20, CrystalSystem system, int unindexed, int allUnindexed, double allMerit, double volume) {
  TreorCell c;
  c.m20 = m20;
  c.metricSystem = system;
  c.unindexed = unindexed;
  c.allLinesUnindexed = allUnindexed;
  c.allLinesMerit = allMerit;
  c.volume = volume;
  c.accepted = true;
  return c;
}

// M20s within 15 % of the best of their run are a tie: fewer lines unindexed over all lines
// first, then the better figure over all lines, then the smaller cell.
// A cell clearly better by M20 stays ahead whatever the lines past the 20th say.
TEST(TreorUnits, RankingBreaksNearTiesOfMeritByAllTheLines) {
  auto cell = [](double m20, int allUnindexed, double allMerit, double volume) {
    return rankedCell(m20, CrystalSystem::Orthorhombic, 0, allUnindexed, allMerit, volume);
  };
  const std::vector<TreorCell> cells{cell(40.0, 0, 90.0, 100.0), cell(60.0, 1, 30.0, 1600.0), cell(54.0, 0, 20.0, 800.0),
                                     cell(52.0, 1, 35.0, 400.0), cell(53.0, 1, 34.0, 200.0), cell(51.5, 1, 35.0, 300.0), cell(80.0, 1, 10.0, 900.0)};
  std::vector<double> order;
  for (const TreorCell* c : rankedAcceptedCells(cells)) order.push_back(c->m20);
  EXPECT_EQ(order, (std::vector<double>{80.0, 54.0, 51.5, 52.0, 53.0, 60.0, 40.0}));
}

// Each line past the 20th that a cell leaves unindexed, beyond the first, counts as a free
// parameter: orthorhombic cells of one zone of a monoclinic lattice (M20 48 and 42, three and
// four lines unindexed past the 20th) rank behind the monoclinic cell (M20 54) that indexes them.
TEST(TreorUnits, LinesMissedPastTheTwentiethCountAgainstACell) {
  auto cell = [](double m20, CrystalSystem system, int unindexed, int allUnindexed) {
    return rankedCell(m20, system, unindexed, allUnindexed, 0.0, 0.0);
  };
  const std::vector<TreorCell> cells{cell(48.0, CrystalSystem::Orthorhombic, 0, 4),
                                     cell(42.2, CrystalSystem::Orthorhombic, 0, 3),
                                     cell(54.2, CrystalSystem::Monoclinic, 0, 1),
                                     cell(30.0, CrystalSystem::Orthorhombic, 1, 2)};
  std::vector<double> order;
  for (const TreorCell* c : rankedAcceptedCells(cells)) order.push_back(c->m20);
  EXPECT_EQ(order, (std::vector<double>{54.2, 30.0, 42.2, 48.0}));
}

TEST(TreorSolutions, ReadsAtMostAHundredAndRefusesABrokenBlock) {
  std::ostringstream many;
  for (int i = 0; i < 101; ++i)
    many << "\n   A =  5.430883  0.000009 A   ALFA = 90.000000  0.000000 DEG\n"
            "   B =  5.430883  0.000009 A   BETA = 90.000000  0.000000 DEG\n"
            "   C =  5.430883  0.000009 A  GAMMA = 90.000000  0.000000 DEG\n"
            "   UNIT CELL VOLUME =    160.18 A**3\n\n NUMBER OF SINGLE INDEXED LINES =   0\n\n"
            " M-TEST=   39 UNINDEXED IN THE TEST=    1\n";
  const SolutionTableRead read = readTreorSolutions(splitLines(many.str()));
  ASSERT_FALSE(read.error);
  ASSERT_EQ(read.solutions.size(), 100u);
  EXPECT_FLOAT_EQ(read.solutions[99].volume, 160.18f);
  EXPECT_FLOAT_EQ(read.solutions[99].merit, 39);
  EXPECT_FLOAT_EQ(read.solutions[99].nix, 1);

  const std::vector<std::string> broken{"   A =  5.430883  0.000009 A   ALFA = 90.000000  0.000000 DEG", "   B = ******"};
  EXPECT_EQ(readTreorSolutions(broken).error, "Read Error");
}

}  // namespace
}  // namespace quarvel
