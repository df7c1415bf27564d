#include <gtest/gtest.h>

#include <set>

#include "core/index/benchmark/indexing_matrix.h"
#include "core/index/treor/treor_candidates.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

// Published cases of the higher systems, each solved by the default job in well under a second
// (the monoclinic and triclinic cases take seconds each and are measured by the benchmark).
// Left out: alumina from the Cu Kα pattern (its 0.12° zero error is beyond the trial window) and
// the large cubic F cell (13 700 Å³, above the default volume limit).
const std::set<std::string> kSolvedHigherSystemCases = {
    "mcmaille_al2o3_nist",         "mcmaille_nac_Na2Ca3Al2F14",   "mcmaille_test1_Cd3OH5NO3",
    "mcmaille_test2_Sr2Cr2O7",     "mcmaille_test3_NH4B5O8_4H2O", "mcmaille_y2o3_with_trace_impurity_lines",
};

TEST(TreorCases, PublishedCellIsTheBestAcceptedCell) {
  const auto dir = test::sharedDataDir();
  if (dir.empty()) GTEST_SKIP() << "shared data absent";
  std::vector<std::string> errors;
  int run = 0;
  for (const IndexingCase& c : readIndexingCases(dir / "indexing", errors)) {
    if (!kSolvedHigherSystemCases.contains(c.name)) continue;
    ++run;
    const auto accepted = indexWithTreor(c);
    ASSERT_FALSE(accepted.empty()) << c.name;
    // The best cell, as the centred lattice or as the primitive cell refined.
    EXPECT_TRUE(knownCellFound(c, accepted, accepted.front().centring == Centring::P ? 1 : 2)) << c.name;
  }
  EXPECT_EQ(run, static_cast<int>(kSolvedHigherSystemCases.size()));
}

// Cells beyond the default limits (2000 Å³, 25 Å) are found once the job raises them.
TEST(TreorCases, LargeCellsAreFoundWithinRaisedLimits) {
  const auto dir = test::sharedDataDir();
  if (dir.empty()) GTEST_SKIP() << "shared data absent";
  struct Limits {
    const char* name;
    double vol, cem;
  };
  for (const Limits& l : {Limits{"mcmaille_test7_large_cubic_with_trace_lines", 15000, 25},
                          Limits{"conograph_erythromycinA_ErythroAII_SR", 9000, 35}}) {
    std::string error;
    const auto c = readIndexingCase(dir / "indexing" / (std::string(l.name) + ".txt"), error);
    ASSERT_TRUE(c) << error;
    TreorInput input = treorInputFor(*c);
    EXPECT_FALSE(knownCellFound(*c, acceptedCandidates(runTreor(input, nullptr)), 4)) << l.name;
    input.keywords.vol = l.vol;
    input.keywords.cem = l.cem;
    EXPECT_TRUE(knownCellFound(*c, acceptedCandidates(runTreor(input, nullptr)), 2)) << l.name;
  }
}

}  // namespace
}  // namespace quarvel
