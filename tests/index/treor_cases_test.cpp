#include <gtest/gtest.h>

#include <chrono>

#include "core/index/benchmark/indexing_matrix.h"
#include "core/index/treor/treor_run.h"
#include "core/app/recording_shell.h"
#include "tests/support/test_support.h"

namespace quarvel {
namespace {

TreorInput inputForCase(const IndexingCase& c) {
  TreorInput input;
  input.title = c.name;
  input.values = c.twoTheta;
  input.keywords.wave = c.wavelength;
  return input;
}

std::vector<CandidateCell> acceptedCandidates(const TreorResult& result) {
  std::vector<CandidateCell> out;
  for (const TreorCell& cell : result.cells)
    if (cell.accepted) out.push_back({cell.cell, cell.centring, cell.m20});
  std::stable_sort(out.begin(), out.end(), [](const auto& a, const auto& b) { return a.m20 > b.m20; });
  return out;
}

struct TimingShell : RecordingShell {
  std::chrono::steady_clock::time_point t0 = std::chrono::steady_clock::now();
  void progress(double, std::string_view text) override {
    std::printf("   %.2fs %s\n", std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count(),
                std::string(text).c_str());
  }
};

TEST(TreorCases, Explore) {
  const auto dir = test::sharedDataDir();
  if (dir.empty()) GTEST_SKIP() << "shared data absent";
  std::vector<std::string> errors;
  for (const IndexingCase& c : readIndexingCases(dir / "indexing", errors)) {
    if (c.system == CrystalSystem::Triclinic || c.system == CrystalSystem::Monoclinic) continue;
    TimingShell shell;
    const auto start = std::chrono::steady_clock::now();
    TreorInput input = inputForCase(c);
    if (const char* p = std::getenv("TREOR_IPRINT")) input.keywords.printIq = std::atoi(p);
    const TreorResult result = runTreor(input, &shell);
    if (const char* dump = std::getenv("TREOR_DUMP"); dump && c.name == dump) {
      FILE* f = std::fopen("/tmp/treor_dump.out", "w");
      for (const auto& line : result.report) std::fprintf(f, "%s\n", line.c_str());
      std::fclose(f);
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const auto accepted = acceptedCandidates(result);
    std::printf("%-45s %-12s found=%d accepted=%zu refined=%zu %.2fs best=%.1f\n", c.name.c_str(),
                std::string(crystalSystemName(c.system)).c_str(), knownCellFound(c, accepted, 4), accepted.size(),
                result.cells.size(), seconds, accepted.empty() ? 0.0 : accepted.front().m20);
  }
}

}  // namespace
}  // namespace quarvel
