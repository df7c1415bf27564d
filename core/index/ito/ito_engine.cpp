#include "core/index/ito/ito_engine.h"

#include <algorithm>
#include <cmath>

#include "core/app/shell.h"
#include "core/common/numbers.h"
#include "core/common/text_file.h"
#include "core/index/ito/ito_manual.h"
#include "core/index/ito/ito_report.h"
#include "core/index/lattice/units.h"

namespace quarvel {
namespace {

using Report = std::vector<std::string>;

constexpr int kItoPrintedSolutions = 10;

bool testOutput(const ItoParameters& p) { return p.jtest >= 1; }

void stageHeader(Report& report, const ItoParameters& p, std::string_view stage) {
  if (testOutput(p)) report.push_back(" test output " + std::string(stage));
}

void echoParameters(Report& report, const ItoProblem& problem) {
  const ItoParameters& p = problem.parameters;
  report.push_back("");
  report.push_back(" " + problem.title);
  report.push_back("");
  report.push_back(" nsolmx" + formatI(p.nsolmx, 4) + "   nsyst" + formatI(p.nsyst[0], 3) + formatI(p.nsyst[1], 3) +
                   formatI(p.nsyst[2], 3) + "   tol2" + formatF(p.tol2, 6, 2) + "   tol3" + formatF(p.tol3, 6, 2) +
                   "   wavel" + formatF(p.wavel, 9, 5));
  report.push_back(" linco" + formatI(p.linco, 3) + "   lzerck" + formatI(p.lzerck, 2) + "   k" + formatI(p.enl, 2) +
                   "   nq1,nq2" + formatI(p.nq1, 3) + formatI(p.nq2, 3) + "   nz1,nz2" + formatI(p.nz1, 3) +
                   formatI(p.nz2, 3) + "   nr" + formatI(p.nr, 3) + "   list" + formatI(p.list, 3) + "   j(test)" +
                   formatI(p.jtest, 3));
  report.push_back(" wmol" + formatF(p.wmol, 10, 3) + "   dobs" + formatF(p.dobs, 8, 4) + "   tolg" + formatF(p.tolg, 7, 2) +
                   "   zercor" + formatF(p.zercor, 8, 4) + "   prntmr" + formatF(p.prntmr, 6, 1) + "   prntln" +
                   formatI(p.prntln, 4));
  report.push_back("");
  report.push_back(" input values (negative values are not used)");
  std::string row;
  for (std::size_t i = 0; i < problem.values.size(); ++i) {
    row += formatF(problem.values[i], 10, 4);
    if (i % 8 == 7 || i + 1 == problem.values.size()) {
      report.push_back(row);
      row.clear();
    }
  }
}

std::string kindName(ItoInputKind kind) {
  switch (kind) {
    case ItoInputKind::TwoTheta: return "2-theta";
    case ItoInputKind::QUnits: return "q";
    case ItoInputKind::Spacing: return "d";
  }
  return "2-theta";
}

// reader: messages and the line table. False when the problem is skipped.
bool printLines(Report& report, const ItoLines& lines, const ItoParameters& p) {
  stageHeader(report, p, "reader");
  report.push_back(" the input values are taken as " + kindName(lines.kind) + " values");
  for (double v : lines.duplicates) {
    report.push_back(" the input value" + formatF(v, 10, 4) + " appears twice");
    report.push_back(" check your input");
  }
  report.push_back(" q-values will be considered to be equal when they differ less than" + formatF(lines.equalityLimit, 8, 2));
  if (lines.count() < kItoMinLines) {
    report.push_back(" warning: only " + std::to_string(lines.count()) +
                     " useful lines. the program needs 20 lines and cannot be expected to give reliable results");
    report.push_back(" this problem is skipped");
    return false;
  }
  if (lines.given > kItoMaxLines)
    report.push_back(" only the first 40 of " + std::to_string(lines.given) + " lines are used");
  report.push_back("");
  report.push_back("  nr   2-theta         q    q-tolg    q+tolg");
  for (int i = 0; i < lines.count(); ++i) {
    const auto k = static_cast<std::size_t>(i);
    report.push_back(formatI(i + 1, 4) + formatF(lines.twoTheta[k], 10, 3) + formatF(lines.q[k], 10, 2) +
                     formatF(lines.q[k] - lines.tolerance[k], 10, 2) + formatF(lines.q[k] + lines.tolerance[k], 10, 2));
  }
  report.push_back(" mean delta q" + formatF(lines.meanTolerance, 10, 3));
  const double q20 = lines.q[static_cast<std::size_t>(lines.indexingCount() - 1)];
  report.push_back(" to pass the test m20 > 10 when n20 = 50 the mean error must be below" +
                   formatF(q20 / (2.0 * 10.0 * 50.0), 8, 3) + " q-units");
  return true;
}

void printZones(Report& report, const ZoneSearch& search, const ItoParameters& p) {
  stageHeader(report, p, "finzon");
  if (search.storageFull) {
    report.push_back(" search for zones terminated - storage for " + std::to_string(kItoZoneStorage) + " zones maximum");
    report.push_back(" the remaining line pairs may be submitted as own line combinations (linco, col. 31-32)");
  }
  stageHeader(report, p, "evalu8");
  stageHeader(report, p, "rear");
  for (int i = 0; i < search.reformulated; ++i) report.push_back(" a centered skew zone has been reformulated");
  report.push_back("");
  report.push_back(" zones, best first");
  report.push_back("  nr        qa        qb         r  lines  beyond chance  quality  from lines");
  for (std::size_t i = 0; i < search.zones.size(); ++i) {
    const ItoZone& z = search.zones[i];
    report.push_back(formatI(static_cast<long>(i + 1), 4) + formatF(z.qa, 10, 2) + formatF(z.qb, 10, 2) + formatF(z.r, 10, 2) +
                     formatI(z.indexed, 7) + formatF(z.excess, 15, 1) + formatF(z.quality, 9, 1) +
                     (z.given ? std::string("  given") : "  " + formatI(z.baseLine1, 3) + formatI(z.baseLine2, 3)));
  }
}

void printLattices(Report& report, const std::vector<ItoLattice>& lattices, const ItoParameters& p, std::string_view stage) {
  stageHeader(report, p, stage);
  if (!testOutput(p) && p.enl < 1) return;
  for (std::size_t i = 0; i < lattices.size(); ++i) {
    const ItoLattice& l = lattices[i];
    report.push_back(formatI(static_cast<long>(i + 1), 4) + formatF(l.metric.A, 9, 2) + formatF(l.metric.B, 9, 2) +
                     formatF(l.metric.C, 9, 2) + formatF(l.metric.D, 9, 2) + formatF(l.metric.E, 9, 2) +
                     formatF(l.metric.F, 9, 2) + "  " + l.pedigree);
  }
}

void progress(const ItoHooks& hooks, double fraction, std::string_view stage) {
  if (hooks.progress) hooks.progress(fraction, stage);
}
bool interrupted(const ItoHooks& hooks) { return hooks.interrupted && hooks.interrupted(); }

}  // namespace

ItoProblemResult solveItoProblem(const ItoProblem& problem, Report& report, const ItoHooks& hooks) {
  ItoProblemResult result;
  const ItoParameters& p = problem.parameters;
  if (p.printSpecialFeatures)
    for (const auto& line : itoSpecialFeatures()) report.push_back(line);
  echoParameters(report, problem);

  progress(hooks, 0.0, "reader");
  result.lines = prepareLines(problem.values, p);
  if (!printLines(report, result.lines, p)) {
    result.skipped = true;
    return result;
  }
  const ItoLines& lines = result.lines;

  std::vector<ItoLattice> trial;
  if (p.nr > 0) {
    for (const auto& card : problem.trialLattices)
      if (auto lattice = latticeFromCard(card)) trial.push_back(*lattice);
  } else {
    progress(hooks, 0.1, "finzon");
    const ZoneSearch zones = findZones(lines, p, problem.zoneCards);
    result.zones = zones.zones;
    printZones(report, zones, p);
    if (interrupted(hooks)) {
      result.interrupted = true;
      report.push_back(" interrupted by the user");
      return result;
    }
    progress(hooks, 0.3, "threed");
    stageHeader(report, p, "threed");
    const LatticeSearch search = combineZones(zones.zones, lines, p, hooks.interrupted);
    if (interrupted(hooks)) {
      result.interrupted = true;
      report.push_back(" interrupted by the user");
      return result;
    }
    trial = search.lattices;
  }
  if (trial.empty()) {
    report.push_back(" no lattices have been found. try again with e.g.");
    report.push_back(" larger tol3 (col. 16-20). this problem is skipped");
    result.skipped = true;
    return result;
  }
  printLattices(report, trial, p, "norm3");

  progress(hooks, 0.7, "refpar");
  std::vector<std::string> notes;
  stageHeader(report, p, "refpar");
  result.solutions = refineLattices(trial, lines, p, notes);
  const std::size_t printed = static_cast<std::size_t>(std::max(kItoPrintedSolutions, p.nsolmx));
  if (result.solutions.size() > printed) result.solutions.resize(printed);
  stageHeader(report, p, "refpar2");
  for (const auto& note : notes) report.push_back(note);

  progress(hooks, 0.9, "untcel");
  stageHeader(report, p, "untcel");
  if (result.solutions.empty()) {
    report.push_back(" no lattice reaches " + std::to_string(p.prntln) + " lines indexed and a figure of merit of" +
                     formatF(p.prntmr, 5, 1));
  } else {
    printSolutions(report, result.solutions, p);
    const int listed = std::min<int>(p.list, static_cast<int>(result.solutions.size()));
    for (int i = 0; i < listed; ++i) printLineList(report, result.solutions[static_cast<std::size_t>(i)], lines, p);
  }
  if (p.lzerck > 0) {
    stageHeader(report, p, "zerchk");
    printZeroCheck(report, lines, p);
  }
  progress(hooks, 1.0, "done");
  return result;
}

std::vector<std::string> runItoDeck(const std::vector<std::string>& cards, const ItoHooks& hooks,
                                    std::vector<ItoProblemResult>* results) {
  Report report;
  const ItoDeck deck = readItoDeck(cards);
  bool manualPrinted = false;
  for (const auto& problem : deck.problems) {
    if (problem.parameters.printManual && !manualPrinted) {
      for (const auto& line : itoManual()) report.push_back(line);
      manualPrinted = true;
    }
    ItoProblemResult result = solveItoProblem(problem, report, hooks);
    const bool stop = result.interrupted;
    if (results) results->push_back(std::move(result));
    report.push_back("");
    if (stop) break;
  }
  for (const auto& note : deck.notes) report.push_back(" " + note);
  if (!deck.endCardSeen) report.push_back(" the deck has no \"end\" card");
  return report;
}

bool runIto(const std::filesystem::path& input, const std::filesystem::path& output, Shell& shell) {
  const auto cards = readLines(input);
  if (!cards) {
    shell.showMessage("File Error", "Error opening ito input file " + input.string());
    return false;
  }
  const ItoHooks hooks{[&shell] { return shell.interruptRequested(); },
                       [&shell](double fraction, std::string_view text) { shell.progress(fraction, text); }};
  const auto report = runItoDeck(*cards, hooks);
  AtomicFile file(output);
  bool ok = file.open();
  for (const auto& line : report) ok = ok && file.writeLine(line);
  ok = ok && file.commit();
  if (!ok) {
    shell.showMessage("File Error", "Error writing ito output file " + output.string());
    return false;
  }
  return true;
}

}  // namespace quarvel
