#include "cli/lines_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>

#include "core/common/numbers.h"
#include "core/index/lattice/calculated_lines.h"
#include "core/index/lattice/synthetic_lines.h"
#include "core/structure/reflection_generator.h"

namespace quarvel {

namespace {

std::string checkRequest(const LinesRequest& r) {
  const auto& c = r.cell;
  if (c[0] <= 0 || c[1] <= 0 || c[2] <= 0) return "cell edges must be positive";
  if (!isPositiveDefinite(directMetric({c[0], c[1], c[2], c[3], c[4], c[5]}))) return "the cell angles do not make a cell";
  if (!isValidLaueClass(r.laue)) return "Laue class must be 1 to 16";
  if (r.centring.size() != 1 || std::string("PABCFIRpabcfir").find(r.centring[0]) == std::string::npos)
    return "centring must be one of P, A, B, C, F, I, R";
  if (r.wavelength <= 0) return "wavelength must be positive";
  if (r.maxTwoTheta <= 0 || r.maxTwoTheta >= 180) return "max 2-theta must lie between 0 and 180 degrees";
  if (r.noise < 0 || r.drop < 0 || r.impurities < 0) return "noise, drop and impurities must not be negative";
  return {};
}

}  // namespace

std::string printLines(std::ostream& out, const LinesRequest& r) {
  if (std::string problem = checkRequest(r); !problem.empty()) return problem;
  const CellParameters cell{r.cell[0], r.cell[1], r.cell[2], r.cell[3], r.cell[4], r.cell[5]};
  const auto reflections = generateReflections(cell, r.laue, centringFromLetter(r.centring[0]),
                                               {r.wavelength, 0.0, r.maxTwoTheta});
  // Reflections of different classes at one q (cubic 300 and 221) are one observed line.
  std::vector<double> q;
  for (const GeneratedReflection& g : reflections)
    if (q.empty() || g.q - q.back() > kDistinctRelativeGap * g.q) q.push_back(g.q);
  SyntheticLineOptions options;
  options.wavelength = r.wavelength;
  options.maxTwoTheta = r.maxTwoTheta;
  options.noise = r.noise;
  options.zero = r.zero;
  options.drop = r.drop;
  options.impurities = r.impurities;
  options.seed = r.seed;
  for (const double t : syntheticLinesFromQ(q, options)) out << formatF(t, 15, 4) << '\n';
  return {};
}

void addLinesCommand(CLI::App& app, std::ostream& out) {
  auto request = std::make_shared<LinesRequest>();
  auto* sub = app.add_subcommand("lines", "Print the lines of a cell as a peak file (2-theta in columns 1-15)");
  sub->add_option("--cell", request->cell, "a b c alpha beta gamma (Angstrom, degrees)")->required();
  sub->add_option("--centring", request->centring, "lattice centring: P, A, B, C, F, I or R");
  sub->add_option("--laue", request->laue, "Laue class 1-16 (1bar ... m3m)");
  sub->add_option("--lambda", request->wavelength, "wavelength (Angstrom)");
  sub->add_option("--max2th", request->maxTwoTheta, "last 2-theta (degrees)");
  sub->add_option("--noise", request->noise, "sigma of Gaussian 2-theta noise (degrees)");
  sub->add_option("--zero", request->zero, "zero shift added to every 2-theta (degrees)");
  sub->add_option("--drop", request->drop, "number of lines removed at random (never one of the first three)");
  sub->add_option("--impurities", request->impurities, "number of impurity lines added");
  sub->add_option("--seed", request->seed, "seed of the random faults");
  sub->callback([request, &out] {
    if (std::string problem = printLines(out, *request); !problem.empty()) throw CLI::ValidationError("lines", problem);
  });
}

}  // namespace quarvel
