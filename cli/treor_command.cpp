#include "cli/treor_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>

#include "cli/console_shell.h"
#include "core/index/peak_positions.h"
#include "core/common/text_file.h"
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
  ConsoleShell shell(out, err);
  std::string input = r.input;
  if (!r.peaks.empty()) {
    const auto records = readLines(r.peaks);
    if (!records) {
      shell.showMessage("File Error", "Error opening peak file");
      return 1;
    }
    TreorJob job = withJobDefaults(r.job);
    job.peakFile = r.peaks;
    if (input.empty()) input = "treor90.tre";
    std::string text;
    for (const std::string& line : treorJobLines(job, readPeakPositions(*records))) text += line + "\n";
    if (!writeFileAtomically(input, text)) {
      shell.showMessage("File Error", "Error opening TREOR input file");
      return 1;
    }
  }
  if (input.empty()) {
    err << "treor90: an input file or --peaks is needed\n";
    return 1;
  }
  if (!runTreor90(shell, input, r.output)) return 1;
  out << "report written to " << r.output << '\n';
  return 0;
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
