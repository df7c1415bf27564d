#include "core/index/index_commands.h"

#include <string>

#include "core/app/command_dispatcher.h"
#include "core/app/command_ids.h"
#include "core/app/file_dialogs.h"
#include "core/app/messages.h"
#include "core/app/session.h"
#include "core/common/numbers.h"
#include "core/common/text_file.h"
#include "core/index/index_job_dialogs.h"
#include "core/index/indexing_input.h"
#include "core/index/ito/ito_engine.h"
#include "core/index/ito/ito_solutions.h"
#include "core/index/reflection_markers.h"
#include "core/index/solution_choice.h"
#include "core/index/treor/treor_engine.h"
#include "core/index/treor/treor_solutions.h"

namespace quarvel {
namespace {

std::filesystem::path inputPathOr(const Session& s, const std::string& name, const char* fallback) {
  return s.resolve(name.empty() ? std::string(fallback) : name);
}

// Steps shared by both jobs after the dialog: write the input file; on "Run" run the engine into
// its fixed report and show the report.
template <typename Engine>
void runJob(Session& s, int action, const std::filesystem::path& peakFile, const std::filesystem::path& input,
            const IndexingInputLines& lines, const char* inputError, const char* report, Engine engine) {
  if (!writeIndexingInput(s.shell(), peakFile, input, lines, inputError)) return;
  if (action != kRunJob) return;
  const std::filesystem::path output = s.resolve(report);
  if (!engine(input, output)) return;
  s.indexing.outputFile = output.string();
  s.shell().openTextViewer(output.string());
}

void treorJob(Session& s) {
  TreorJobSettings& settings = s.indexing.treor;
  settings = withTreorDefaults(settings);
  DialogModel dialog = treorJobDialog(settings);
  const int action = s.shell().runDialog(dialog);
  if (action == DialogModel::kCancel) return;
  readTreorJobDialog(dialog, settings);
  const TreorJob job = withJobDefaults(settings.job);
  runJob(s, action, s.resolve(job.peakFile), inputPathOr(s, settings.inputFile, "treor90.tre"),
         [&job](const std::vector<double>& peaks) { return treorJobLines(job, peaks); }, "Error opening TREOR input file",
         "treor.out", [&s](const auto& in, const auto& out) { return runTreor90(s.shell(), in, out); });
}

void itoJob(Session& s) {
  ItoJobSettings& settings = s.indexing.ito;
  settings = withItoDefaults(settings, s.store().wavelength.alpha1);
  DialogModel dialog = itoJobDialog(settings);
  const int action = s.shell().runDialog(dialog);
  if (action == DialogModel::kCancel) return;
  readItoJobDialog(dialog, settings);
  const ItoJob job = withItoDefaults(settings, s.store().wavelength.alpha1).job;
  runJob(s, action, s.resolve(job.peakFile), inputPathOr(s, settings.inputFile, "ito.inp"),
         [&job](const std::vector<double>& peaks) { return itoInputCards(job, peaks); }, "Error opening ito input file",
         "ito.out", [&s](const auto& in, const auto& out) { return runIto(in, out, s.shell()); });
}

// The remembered report, or the one the user picks; nullopt after "Invalid file selection".
std::optional<std::string> indexingOutputFile(Session& s) {
  if (!trim(s.indexing.outputFile).empty()) return s.indexing.outputFile;
  const FileRequest request{"Open Indexing Output File", {"Indexing Output File (*.out)"}, "out", false};
  auto path = chooseFileToOpen(s, request, CancelChoice::IsInvalid);
  if (!path) return std::nullopt;
  s.indexing.outputFile = *path;
  return path;
}

void viewOutput(Session& s) {
  if (auto path = indexingOutputFile(s)) s.shell().openTextViewer(*path);
}

enum class Engine { Treor, Ito };

void plotSolutions(Session& s, Engine engine) {
  const auto path = indexingOutputFile(s);
  if (!path) return;
  auto fail = [&s](const char* text) {
    s.indexing.outputFile.assign(1, ' ');  // a single blank: the next command asks again
    s.message(msg::kFileError, text);
  };
  const auto lines = readLines(*path);
  if (!lines) return fail("Error opening index output file");
  SolutionTableRead read = engine == Engine::Treor ? readTreorSolutions(*lines) : readItoSolutions(*lines);
  s.indexing.solutions = std::move(read.solutions);
  if (read.error) return fail(read.error->c_str());
  if (const auto chosen = chooseSolution(s.shell(), s.indexing.solutions)) {
    const IndexingSolution& x = s.indexing.solutions[*chosen];
    s.indexing.cell = UnitCell{x.a, x.b, x.c, x.alpha, x.beta, x.gamma};
    markReflections(s, s.indexing.cell, kLaueClassTriclinic, Centring::P);
    s.refreshView();
  }
}

}  // namespace

void registerIndexCommands(CommandDispatcher& d) {
  d.on(cmd::kTreor90, treorJob);
  d.on(cmd::kIto, itoJob);
  d.on(cmd::kViewOutput, viewOutput);
  d.on(cmd::kPlotTreorSolutions, [](Session& s) { plotSolutions(s, Engine::Treor); });
  d.on(cmd::kPlotItoSolutions, [](Session& s) { plotSolutions(s, Engine::Ito); });
}

}  // namespace quarvel
