// indexing-matrix: runs an indexing engine over the real case files and the synthetic matrix
// and prints, per crystal system, the success rate (the known lattice among the top cells after
// reduction) and the median and worst time.
//
//   indexing-matrix [--engine NAME] [--cases DIR] [--only cases|synthetic] [--top N] [--list-failures]
//                   [--each] [--filter TEXT] [--seed N] [--cells N] [--cu] [--write-jobs DIR]
//
// --filter keeps the problems whose name contains TEXT (e.g. "mP " or "σ0.01"); --seed draws
// other cells for the synthetic matrix (one cell per Bravais lattice and seed; --cells N draws N,
// the later ones named with " #2", " #3", ...). --cu keeps the
// synthetic problems at Cu Kα1 with one impurity and one missing line (all noise and zero
// levels): 84 of the 1512 problems, for engines that take seconds per problem. --each prints
// every problem with its outcome and time, to find where the time goes. --write-jobs writes each
// problem kept as a TREOR90 input file (VOL −3000, the known cell in the title, the angles at
// full precision) into DIR, to run one problem with `quarvel-cli treor90` and read its report.
//
// Engines register in engineTable() below; "refine-known" is a reference that starts from the
// known cell and only checks the harness and the shared lattice library.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include <fmt/format.h>

#include "core/index/benchmark/indexing_matrix.h"
#include "core/index/ito/ito_candidates.h"
#include "core/index/treor/treor_candidates.h"
#include "core/index/treor/treor_job_file.h"

namespace {

using namespace quarvel;

// treor90 runs the benchmark's job (VOL −3000, as the synthetic cells go up to 3000 Å³);
// treor90-default the job the dialog writes by default (VOL −2000); treor90-wide raises the volume
// and edge limits (VOL −5000, CEM 35) to tell the cells the defaults exclude from those the
// method misses.
std::vector<CandidateCell> indexWithTreorDefaultJob(const IndexingCase& problem) {
  return acceptedCandidates(runTreor(treorInputFor(problem), nullptr));
}

std::vector<CandidateCell> indexWithTreorWideLimits(const IndexingCase& problem) {
  TreorInput input = treorInputFor(problem);
  input.keywords.vol = -5000;
  input.keywords.cem = 35;
  return acceptedCandidates(runTreor(input, nullptr));
}

std::map<std::string, IndexingEngine> engineTable() {
  return {{"refine-known", refineKnownCell},
          {"ito", itoCandidates},
          {"treor90", indexWithTreor},
          {"treor90-default", indexWithTreorDefaultJob},
          {"treor90-wide", indexWithTreorWideLimits}};
}

struct Listing {
  bool failures = false;
  bool each = false;
};

void printSummary(const std::string& title, const std::vector<CaseResult>& results, Listing listing) {
  fmt::print("\n{} ({} problems)\n", title, results.size());
  if (listing.each)
    for (const CaseResult& r : results)
      fmt::print("  {:>10.1f} ms  {:<9} {}{}{}\n", 1e3 * r.seconds, r.found ? "found" : "not found", r.name,
                 r.determinable ? "" : " (not determinable)", r.sameLines ? " (same lines)" : "");
  // "determinable": the cases whose lines fix the known cell (refined from itself it is found);
  // "of those" is the success rate among them, "+ same" the rate when an engine's first cell that
  // gives the known cell's line positions (another lattice the lines cannot tell from it) counts.
  fmt::print("{:<14} {:>6} {:>6} {:>9} {:>12} {:>12} {:>7} {:>9} {:>8}\n", "system", "cases", "found", "success",
             "median (ms)", "worst (ms)", "determ.", "of those", "+ same");
  int cases = 0, found = 0, determinable = 0, foundDeterminable = 0, sameLines = 0;
  const auto rate = [](int n, int of) { return of > 0 ? 100.0 * n / of : 0.0; };
  for (const SystemSummary& s : summariseBySystem(results)) {
    fmt::print("{:<14} {:>6} {:>6} {:>8.1f}% {:>12.3f} {:>12.3f} {:>7} {:>8.1f}% {:>7.1f}%\n", crystalSystemName(s.system),
               s.cases, s.found, rate(s.found, s.cases), 1e3 * s.medianSeconds, 1e3 * s.worstSeconds, s.determinable,
               rate(s.foundDeterminable, s.determinable),
               rate(s.foundDeterminable + s.sameLinesDeterminable, s.determinable));
    cases += s.cases;
    found += s.found;
    determinable += s.determinable;
    foundDeterminable += s.foundDeterminable;
    sameLines += s.sameLinesDeterminable;
  }
  if (cases > 0)
    fmt::print("{:<14} {:>6} {:>6} {:>8.1f}% {:>25} {:>7} {:>8.1f}% {:>7.1f}%\n", "all", cases, found, rate(found, cases),
               "", determinable, rate(foundDeterminable, determinable), rate(foundDeterminable + sameLines, determinable));
  if (listing.failures)
    for (const CaseResult& r : results)
      if (!r.found)
        fmt::print("  not found: {}{}{}\n", r.name, r.determinable ? "" : " (not determinable)",
                   r.sameLines ? " (same lines)" : "");
}

void keepMatching(std::vector<IndexingCase>& cases, const std::string& filter) {
  if (filter.empty()) return;
  std::erase_if(cases, [&](const IndexingCase& c) { return c.name.find(filter) == std::string::npos; });
}

// One input file per problem, named after it with the spaces and Greek letters left out.
void writeJobs(const std::vector<IndexingCase>& problems, const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  for (const IndexingCase& p : problems) {
    std::string fileName;
    for (const char c : p.name)
      if (std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '_') fileName += c;
    TreorJob job;
    const CellParameters& k = p.knownCell;
    job.peakFile = fmt::format("{} known {:.4f} {:.4f} {:.4f} {:.2f} {:.2f} {:.2f} {}", p.name, k.a, k.b, k.c,
                               k.alpha, k.beta, k.gamma, centringLetter(p.centring));
    job.wavelength = p.wavelength;
    job.maxVolume = kBenchmarkVolumeLimit;
    // The angles at full precision (a job file rounds them to 0.0001°): the run then repeats the
    // benchmark's own, also for the noise-free problems.
    std::vector<std::string> lines = treorJobLines(job, p.twoTheta);
    for (std::size_t i = 0; i < p.twoTheta.size(); ++i) lines[1 + i] = fmt::format("{:.17g}", p.twoTheta[i]);
    std::ofstream out(folder / (fileName + ".tre"));
    for (const std::string& line : lines) out << line << '\n';
  }
  fmt::print("wrote {} input files to {}\n", problems.size(), folder.string());
}

int usage() {
  std::fprintf(stderr,
               "usage: indexing-matrix [--engine NAME] [--cases DIR] [--only cases|synthetic] [--top N] [--list-failures] "
               "[--each] [--filter TEXT] [--seed N] [--cells N] [--cu] [--write-jobs DIR]\n");
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  std::string engineName = "refine-known", only, filter, jobsDir, casesDir = QUARVEL_SHARED_DATA_DEFAULT "/indexing";
  if (const char* env = std::getenv("QUARVEL_SHARED_DATA")) casesDir = std::string(env) + "/indexing";
  int top = 4;
  Listing listing;
  SyntheticMatrixOptions matrix;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    auto value = [&]() -> std::string { return i + 1 < argc ? argv[++i] : ""; };
    if (arg == "--engine") engineName = value();
    else if (arg == "--cases") casesDir = value();
    else if (arg == "--only") only = value();
    else if (arg == "--top") top = std::atoi(value().c_str());
    else if (arg == "--list-failures") listing.failures = true;
    else if (arg == "--each") listing.each = true;
    else if (arg == "--write-jobs") jobsDir = value();
    else if (arg == "--filter") filter = value();
    else if (arg == "--seed") matrix.seed = static_cast<std::uint32_t>(std::atol(value().c_str()));
    else if (arg == "--cells") matrix.cellsPerLattice = std::max(1, std::atoi(value().c_str()));
    else if (arg == "--cu") {
      matrix.wavelengths = {1.5406};
      matrix.impurities = {1};
      matrix.missing = {1};
    }
    else return usage();
  }
  const auto engines = engineTable();
  const auto engine = engines.find(engineName);
  if (engine == engines.end()) {
    std::fprintf(stderr, "unknown engine \"%s\"; known:", engineName.c_str());
    for (const auto& [name, _] : engines) std::fprintf(stderr, " %s", name.c_str());
    std::fprintf(stderr, "\n");
    return 2;
  }
  fmt::print("engine: {}, success = known lattice among the first {} cells\n", engineName, top);

  if (only != "synthetic") {
    std::vector<std::string> errors;
    std::vector<IndexingCase> cases;
    if (std::filesystem::is_directory(casesDir)) cases = readIndexingCases(casesDir, errors);
    for (const auto& e : errors) fmt::print("skipped: {}\n", e);
    keepMatching(cases, filter);
    if (!jobsDir.empty()) writeJobs(cases, jobsDir);
    else if (cases.empty()) fmt::print("\nno case files in {}\n", casesDir);
    else printSummary("Case files in " + casesDir, runIndexingMatrix(engine->second, cases, top), listing);
  }
  if (only != "cases") {
    auto synthetic = syntheticMatrix(matrix);
    keepMatching(synthetic, filter);
    if (!jobsDir.empty()) {
      writeJobs(synthetic, jobsDir);
      return 0;
    }
    printSummary("Synthetic matrix", runIndexingMatrix(engine->second, synthetic, top), listing);
  }
  return 0;
}
