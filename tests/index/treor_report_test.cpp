#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>

#include "core/app/recording_shell.h"
#include "core/common/text_file.h"
#include "core/index/benchmark/indexing_matrix.h"
#include "core/index/treor/treor_engine.h"
#include "core/index/treor/treor_job_file.h"
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

// Published patterns of the shared test data, each written as the indexing job writes its file
// (default limits) and run from it: a tetragonal and an orthorhombic cell found in their stages,
// and a monoclinic cell above the volume limit, whose run goes through every stage.
// The references are kept normalised, so they hold the layout of the report and none of the
// measured values. QUARVEL_WRITE_GOLDEN=1 writes them anew after a deliberate change of the
// engine (read the difference first).
TEST(TreorReport, ClassicPatternsMatchTheirReferenceReports) {
  const auto shared = test::sharedDataDir();
  if (shared.empty()) GTEST_SKIP() << "shared data absent";
  for (const std::string name :
       {"mcmaille_test2_Sr2Cr2O7", "mcmaille_test1_Cd3OH5NO3", "mcmaille_dicvol1_BTO"}) {
    SCOPED_TRACE(name);
    std::string error;
    const auto c = readIndexingCase(shared / "indexing" / (name + ".txt"), error);
    ASSERT_TRUE(c) << error;
    test::TempDir tmp;
    TreorJob job;
    job.peakFile = name + ".pks";
    job.wavelength = c->wavelength;
    std::string file;
    for (const std::string& line : treorJobLines(job, c->twoTheta)) file += line + "\n";
    test::writeText(tmp / "treor90.tre", file);
    RecordingShell shell;
    ASSERT_TRUE(runTreor90(shell, tmp / "treor90.tre", tmp / "treor.out"));
    const auto got = readLines(tmp / "treor.out");
    ASSERT_TRUE(got);
    std::string normalisedReport;
    for (const std::string& line : *got) normalisedReport += normalised(line) + "\n";
    const auto reference = test::testDataDir() / "treor" / (name + ".normalised.out");
    if (std::getenv("QUARVEL_WRITE_GOLDEN")) test::writeText(reference, normalisedReport);
    const auto expected = readLines(reference);
    ASSERT_TRUE(expected) << reference;
    for (std::size_t i = 0; i < std::min(got->size(), expected->size()); ++i)
      ASSERT_EQ(normalised((*got)[i]), (*expected)[i]) << "line " << i + 1;
    EXPECT_EQ(got->size(), expected->size());
  }
}

}  // namespace
}  // namespace quarvel
