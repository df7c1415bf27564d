#include "cli/ito_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>

#include "cli/console_shell.h"
#include "cli/indexing_job.h"
#include "core/index/ito/ito_engine.h"
#include "core/index/ito/ito_input_file.h"

namespace quarvel {
namespace {

struct ItoRequest {
  std::string input;
  std::string output = "ito.out";
  std::string peaks;
  ItoJob job;
};

int runRequest(const ItoRequest& r, std::ostream& out, std::ostream& err) {
  ItoJob job = r.job;
  job.peakFile = r.peaks;
  return runIndexingJob({"ito", r.input, "ito.inp", r.output, r.peaks, "Error opening ito input file"},
                        [&job](const std::vector<double>& peaks) { return itoInputCards(job, peaks); },
                        [](ConsoleShell& shell, const std::string& input, const std::string& output) {
                          return runIto(input, output, shell);
                        },
                        out, err);
}

}  // namespace

void addItoCommand(CLI::App& app, std::ostream& out, std::ostream& err, int& exitCode) {
  auto r = std::make_shared<ItoRequest>();
  auto* sub = app.add_subcommand("ito", "Index a line list by the zone method (ITO engine)");
  sub->add_option("input", r->input, "input deck (written from --peaks when given; default ito.inp)");
  sub->add_option("output", r->output, "report file (default ito.out)");
  sub->add_option("--peaks", r->peaks, "peak file: positions in columns 1-15; writes the input deck first");
  sub->add_option("--wave", r->job.wavelength, "wavelength (Angstrom)");
  sub->add_option("--zero", r->job.zeroShift, "zero shift (degrees 2-theta)");
  sub->add_option("--max-lines", r->job.maxLines, "peaks written to the deck (30)");
  sub->add_option("--tol2", r->job.tol2, "zone-search tolerance, q-units (3.0)");
  sub->add_option("--tol3", r->job.tol3, "lattice-search tolerance, q-units (4.5)");
  sub->add_option("--lines", r->job.indexedLines, "fewest lines indexed printed (14)");
  sub->add_option("--fom", r->job.requiredMerit, "lowest figure of merit printed (4.0)");
  sub->callback([r, &out, &err, &exitCode] { exitCode = runRequest(*r, out, err); });
}

}  // namespace quarvel
