#include "cli/treor_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>

#include "cli/console_shell.h"
#include "cli/indexing_job.h"
#include "core/index/treor/treor_engine.h"
#include "core/index/treor/treor_job_file.h"

namespace quarvel {
namespace {

struct TreorRequest {
  std::string input;
  std::string output = "treor.out";
  std::string peaks;
  TreorJob job;
};

int runRequest(const TreorRequest& r, std::ostream& out, std::ostream& err) {
  TreorJob job = withJobDefaults(r.job);
  job.peakFile = r.peaks;
  return runIndexingJob({"treor90", r.input, "treor90.tre", r.output, r.peaks, "Error opening TREOR input file"},
                        [&job](const std::vector<double>& peaks) { return treorJobLines(job, peaks); },
                        [](ConsoleShell& shell, const std::string& input, const std::string& output) {
                          return runTreor90(shell, input, output);
                        },
                        out, err);
}

}  // namespace

void addTreorCommand(CLI::App& app, std::ostream& out, std::ostream& err, int& exitCode) {
  auto r = std::make_shared<TreorRequest>();
  auto* sub = app.add_subcommand("treor90", "Index a line list by trial and error (TREOR90 engine)");
  sub->add_option("input", r->input, "keyword input file (written from --peaks when given; default treor90.tre)");
  sub->add_option("output", r->output, "report file (default treor.out)");
  sub->add_option("--peaks", r->peaks, "peak file: positions in columns 1-15; writes the input file first");
  sub->add_option("--choice", r->job.choice, "unit of the positions: 0 sin2th, 1 1/d2, 2 theta, 3 2theta, 4 d (3)");
  sub->add_option("--wave", r->job.wavelength, "wavelength (Angstrom, 1.54056)");
  sub->add_option("--vol", r->job.maxVolume, "largest cell volume (A^3, -2000: every crystal system)");
  sub->add_option("--nix", r->job.unindexed, "unindexed lines allowed in the figure-of-merit test (1)");
  sub->add_option("--merit", r->job.merit, "figure of merit M20 required (10)");
  sub->add_option("--d1", r->job.d1, "sin2th tolerance of the trials (0.0002)");
  sub->add_option("--d2", r->job.d2, "sin2th tolerance of the refinement (0.0004)");
  sub->callback([r, &out, &err, &exitCode] { exitCode = runRequest(*r, out, err); });
}

}  // namespace quarvel
