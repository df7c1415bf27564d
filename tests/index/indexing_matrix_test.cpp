#include <gtest/gtest.h>

#include <cmath>

#include "core/index/benchmark/indexing_matrix.h"
#include "core/index/lattice/synthetic_lines.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

TEST(LatticeIndexingMatrix, SyntheticProblemsAreWellFormedAndTheReferenceFindsThem) {
  SyntheticMatrixOptions o;
  o.noise = {0.01};
  o.zero = {0.05};
  o.impurities = {1};
  o.missing = {3};
  o.wavelengths = {1.5406};
  const auto cases = syntheticMatrix(o);
  ASSERT_EQ(cases.size(), 14u);  // one per Bravais lattice
  for (const IndexingCase& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.twoTheta.size(), static_cast<std::size_t>(o.lines + 1));  // 25 kept, one impurity
    EXPECT_TRUE(std::is_sorted(c.twoTheta.begin(), c.twoTheta.end()));
    const double v = cellVolume(c.knownCell);
    EXPECT_TRUE(v >= 50 && v <= 3000) << v;
    EXPECT_TRUE(knownCellFound(c, refineKnownCell(c)));
  }
  // Two cells per lattice: the first problem is the one drawn alone, then a new cell named " #2".
  o.cellsPerLattice = 2;
  const auto twice = syntheticMatrix(o);
  ASSERT_EQ(twice.size(), 28u);
  EXPECT_EQ(twice[0].twoTheta, cases[0].twoTheta);
  EXPECT_EQ(twice[1].name, cases[0].name + " #2");
  EXPECT_NE(twice[1].knownCell.a, cases[0].knownCell.a);
  // A wrong cell, or the right one below the top ranks, is not a success.
  const IndexingCase& c = cases.front();
  CellParameters doubled = c.knownCell;
  doubled.a *= 2;
  EXPECT_FALSE(knownCellFound(c, {{doubled, c.centring, 50}}));
  EXPECT_FALSE(knownCellFound(c, {{doubled, c.centring, 50}, {c.knownCell, c.centring, 40}}, 1));

  const auto summary = summariseBySystem({{"a", CrystalSystem::Cubic, true, 0.3},
                                          {"b", CrystalSystem::Cubic, false, 0.1, false},
                                          {"c", CrystalSystem::Cubic, true, 0.2},
                                          {"d", CrystalSystem::Cubic, false, 0.2}});
  ASSERT_EQ(summary.size(), 1u);
  EXPECT_EQ(summary[0].found, 2);
  EXPECT_EQ(summary[0].determinable, 3);
  EXPECT_EQ(summary[0].foundDeterminable, 2);
  EXPECT_DOUBLE_EQ(summary[0].medianSeconds, 0.2);
  EXPECT_DOUBLE_EQ(summary[0].worstSeconds, 0.3);
}

TEST(LatticeIndexingMatrix, CellsWhoseLinesLeaveAnAxisFreeAreNotDeterminable) {
  // Below 2θ 40° no line of this cell has h ≠ 0 (a = 2.2 Å puts 100 at 41°): the lines say
  // nothing about a, and no engine can be blamed for missing the cell.
  IndexingCase hidden;
  hidden.name = "oP hidden a";
  hidden.system = CrystalSystem::Orthorhombic;
  hidden.knownCell = {2.2, 9.0, 11.0, 90, 90, 90};
  SyntheticLineOptions lines;
  lines.maxTwoTheta = 40.0;
  hidden.twoTheta = syntheticLines(hidden.knownCell, Centring::P, lines);
  IndexingCase seen = hidden;
  seen.name = "oP all axes";
  lines.maxTwoTheta = 60.0;
  seen.twoTheta = syntheticLines(seen.knownCell, Centring::P, lines);

  const auto results = runIndexingMatrix([](const IndexingCase&) { return std::vector<CandidateCell>{}; }, {hidden, seen});
  ASSERT_EQ(results.size(), 2u);
  EXPECT_FALSE(results[0].determinable);
  EXPECT_TRUE(results[1].determinable);
  EXPECT_FALSE(results[1].found);
}

// A primitive orthorhombic cell with a = √3 b gives the lines of the hexagonal cell of twice its
// volume (a = 2b): the lines cannot choose, and an engine that answers with the hexagonal cell has
// not failed. A cell of another shape, or a super-cell with lines of its own, is no such answer.
TEST(LatticeIndexingMatrix, AnotherLatticeWithTheSameLinePositionsIsTold) {
  IndexingCase c;
  c.name = "oP a = √3 b";
  c.system = CrystalSystem::Orthorhombic;
  const double b = 2.793;
  c.knownCell = {std::sqrt(3.0) * b, b, 16.84, 90, 90, 90};
  SyntheticLineOptions lines;
  lines.maxLines = 25;
  c.twoTheta = syntheticLines(c.knownCell, Centring::P, lines);
  EXPECT_TRUE(sameLinePositions(c, {{2 * b, 2 * b, 16.84, 90, 90, 120}, Centring::P, 100}));
  EXPECT_FALSE(sameLinePositions(c, {{2 * b, 2 * b, 16.90, 90, 90, 120}, Centring::P, 100}));
  EXPECT_FALSE(sameLinePositions(c, {{std::sqrt(3.0) * b, b, 2 * 16.84, 90, 90, 90}, Centring::P, 100}));

  const auto results = runIndexingMatrix(
      [&](const IndexingCase&) { return std::vector<CandidateCell>{{{2 * b, 2 * b, 16.84, 90, 90, 120}, Centring::P, 100}}; },
      {c});
  ASSERT_EQ(results.size(), 1u);
  EXPECT_FALSE(results[0].found);
  EXPECT_TRUE(results[0].sameLines);
  EXPECT_EQ(summariseBySystem(results)[0].sameLinesDeterminable, 1);
}

TEST(LatticeIndexingMatrix, CaseFileErrorsNameTheFileAndLine) {
  test::TempDir dir;
  test::writeText(dir / "good.txt", "# WAVELENGTH 1.54056\n# KNOWN_CELL 4 4 4 90 90 90 | cubic F | test\n 20.1 5,5\n 30.2\n");
  test::writeText(dir / "bad.txt", "# WAVELENGTH 1.5\n# KNOWN_CELL 4 4 4 90 90 | cubic P | short\n 20.1\n");
  test::writeText(dir / "conograph_flags.txt",
                  "# WAVELENGTH 1.2\n# KNOWN_CELL 4 4 4 90 90 90 | cubic P | x\n 1 2.0E+001 9 0.1 1\n 2 2.1E+001 9 0.1 0\n");
  std::vector<std::string> errors;
  const auto cases = readIndexingCases(dir.path(), errors);
  ASSERT_EQ(cases.size(), 2u);
  EXPECT_EQ(cases[0].twoTheta.size(), 1u);  // the peak flagged 0 is not used
  EXPECT_EQ(cases[1].centring, Centring::F);
  EXPECT_EQ(cases[1].twoTheta, (std::vector<double>{20.1, 30.2}));
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_NE(errors[0].find("bad.txt, line 2"), std::string::npos) << errors[0];
}

}  // namespace
}  // namespace quarvel
