#include <gtest/gtest.h>

#include <sstream>

#include "core/app/recording_shell.h"
#include "core/index/benchmark/indexing_matrix.h"
#include "core/index/lattice/synthetic_lines.h"
#include "core/index/treor/treor_candidates.h"
#include "core/index/treor/treor_engine.h"
#include "core/index/treor/treor_solutions.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

struct SyntheticCell {
  const char* name;
  CrystalSystem system;
  CellParameters cell;
  Centring centring;
};

// Lines as measured: 0.01° noise, a 0.02° zero error and one impurity line among the first 25.
IndexingCase syntheticCase(const SyntheticCell& s) {
  SyntheticLineOptions o;
  o.noise = 0.01;
  o.zero = 0.02;
  o.impurities = 1;
  o.maxLines = 25;
  o.seed = 7;
  IndexingCase c;
  c.name = s.name;
  c.system = s.system;
  c.knownCell = s.cell;
  c.centring = s.centring;
  c.twoTheta = syntheticLines(s.cell, s.centring, o);
  return c;
}

std::string reportText(const TreorResult& result) {
  std::string text;
  for (const std::string& line : result.report) text += line + "\n";
  return text;
}

TEST(TreorEngine, FindsTheCellOfEachCrystalSystem) {
  const SyntheticCell cells[] = {
      {"cubic I", CrystalSystem::Cubic, {7.913, 7.913, 7.913, 90, 90, 90}, Centring::I},
      {"tetragonal P", CrystalSystem::Tetragonal, {6.281, 6.281, 4.127, 90, 90, 90}, Centring::P},
      {"hexagonal P", CrystalSystem::Hexagonal, {5.912, 5.912, 7.344, 90, 90, 120}, Centring::P},
      {"orthorhombic P", CrystalSystem::Orthorhombic, {7.517, 5.286, 4.913, 90, 90, 90}, Centring::P},
      {"monoclinic P", CrystalSystem::Monoclinic, {6.823, 5.117, 7.452, 90, 104.6, 90}, Centring::P},
  };
  for (const SyntheticCell& s : cells) {
    const IndexingCase c = syntheticCase(s);
    const TreorResult result = runTreor(treorInputFor(c), nullptr);
    EXPECT_TRUE(knownCellFound(c, acceptedCandidates(result), 4)) << s.name << "\n" << reportText(result);
  }
}

}  // namespace
}  // namespace quarvel
