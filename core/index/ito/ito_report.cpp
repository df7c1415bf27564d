#include "core/index/ito/ito_report.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/common/numbers.h"
#include "core/index/lattice/calculated_lines.h"
#include "core/index/lattice/metric_refinement.h"
#include "core/index/lattice/units.h"

namespace quarvel {
namespace {

constexpr int kMaxListedLines = 100;
constexpr int kZeroShiftRange = 20;  // hundredths of a degree each way

bool close(double x, double y, double rel = 1e-3) { return std::abs(x - y) <= rel * std::max(x, y); }
bool right(double angle) { return std::abs(angle - 90.0) < 0.05; }

std::string trimmed(const std::string& field) { return field.substr(std::min(field.find_first_not_of(' '), field.size())); }

}  // namespace

std::string solutionRow(int number, const ItoLattice& lattice) {
  const ReciprocalMetric& m = lattice.metric;
  std::string row = formatI(number, 4);
  for (double v : {m.A, m.B, m.C, m.D, m.E, m.F}) row += formatF(v, 9, 2);
  // an exact fit has an unbounded figure; the column holds at most 9999.9
  // (built by appending: GCC 12 warns falsely on a literal + string)
  row += ' ';
  row += formatI(lattice.indexed, 5);
  row += "   ";
  row += formatF(std::min(lattice.merit, 9999.9), 6, 1);
  row += "  ";
  row += padRight(lattice.pedigree, 10);
  row += ' ';
  row += lattice.bravais;
  return row;
}

std::string directConstantsRow(const ItoLattice& lattice) {
  const CellParameters& c = lattice.cell;
  std::string row(1, ' ');
  for (double v : {c.a, c.b, c.c}) row += formatF(v, 9, 4);
  for (double v : {c.alpha, c.beta, c.gamma}) row += formatF(v, 9, 3);
  row += formatF(lattice.volume, 12, 2);
  return row;
}

std::string specialMetric(const ItoLattice& lattice) {
  switch (lattice.system) {
    case CrystalSystem::Cubic: return "cubic";
    case CrystalSystem::Tetragonal: return "tetragonal";
    case CrystalSystem::Hexagonal: return lattice.centring == Centring::R ? "rhombohedral" : "hexagonal";
    case CrystalSystem::Rhombohedral: return "rhombohedral";
    default: break;
  }
  const CellParameters& c = lattice.cell;
  const bool equalEdges = close(c.a, c.b) || close(c.b, c.c) || close(c.a, c.c);
  const bool rightAngles = right(c.alpha) && right(c.beta) && right(c.gamma);
  // equal edges that no twofold axis explains: a metric coincidence, not a symmetry
  if (equalEdges && !rightAngles && lattice.system == CrystalSystem::Triclinic) return "a freak";
  return "";
}

void printSolutions(ReportLines& report, const std::vector<ItoLattice>& solutions, const ItoParameters& parameters) {
  report.push_back("");
  report.push_back(" most probable solutions          q=h*h*a+k*k*b+l*l*c+k*l*d+l*h*e+h*k*f   (q-units)");
  report.push_back("  nr     q(a)     q(b)     q(c)     q(d)     q(e)     q(f)  lines   merit  pedigree   lattice");
  for (std::size_t i = 0; i < solutions.size(); ++i) report.push_back(solutionRow(static_cast<int>(i + 1), solutions[i]));
  report.push_back("");
  report.push_back(" direct constants (angstrom, degrees, cubic angstrom)");
  std::string heads(1, ' ');
  for (const char* head : {"a", "b", "c", "alfa", "beta", "gamma"}) heads += padLeft(head, 9);
  heads += padLeft("volume", 12);
  report.push_back(heads);
  for (const auto& s : solutions) report.push_back(directConstantsRow(s));
  report.push_back("");
  for (std::size_t i = 0; i < solutions.size(); ++i) {
    const std::string metric = specialMetric(solutions[i]);
    if (metric.empty()) continue;
    report.push_back(" solution " + std::to_string(i + 1) + (metric == "a freak" ? " is a freak" : " has a " + metric + " metric"));
  }
  report.push_back(" lines indexed counts the first 20 observed lines (20 is complete success).");
  report.push_back(" figure of merit = q(20)/(2*mean delta q*number of calculated lines).");
  report.push_back(" any solution with a figure of merit below 4.0 is worthless; one above 10.0 that leaves more");
  report.push_back(" than two very weak lines unexplained deserves a closer look.");
  (void)parameters;
}

void printLineList(ReportLines& report, const ItoLattice& lattice, const ItoLines& lines, const ItoParameters& parameters) {
  MetricRefinementOptions options;
  options.system = lattice.system;
  options.centring = lattice.centring;
  options.wavelength = parameters.wavel;
  options.toleranceTwoTheta = parameters.tolg / 100.0;
  options.sigmaTwoTheta = parameters.tolg / 300.0;
  options.maxCycles = 2;
  const MetricRefinement refined = refineWithSignificantZero(lines.twoTheta, toAngstrom(lattice.metric), options, lines);
  const ReciprocalMetric metric = refined.solved ? refined.metric : toAngstrom(lattice.metric);
  report.push_back("");
  report.push_back(" all lines indexed with solution 1 after two further cycles of refinement");
  if (refined.singular) report.push_back(" matrix is singular");
  if (auto cell = cellFromMetric(metric)) {
    report.push_back("   a =" + formatF(cell->a, 10, 5) + "  b =" + formatF(cell->b, 10, 5) + "  c =" + formatF(cell->c, 10, 5));
    report.push_back(" alfa=" + formatF(cell->alpha, 10, 3) + " beta=" + formatF(cell->beta, 10, 3) +
                     " gamma=" + formatF(cell->gamma, 10, 3) + "  volume =" + formatF(cellVolume(*cell), 11, 2));
  }
  const bool shifted = refined.solved && refined.zero != 0.0;
  if (shifted)
    report.push_back(" zero shift refined: " + trimmed(formatF(refined.zero, 12, 3)) + " +- " + trimmed(formatF(refined.zeroSigma, 12, 3)) +
                     " deg 2theta (true angle = observed - zero; delta is taken on the true angle)");
  const double qLast = qFromQUnits(lines.q.back() + lines.tolerance.back());
  const auto calculated = calculatedLines(metric, lattice.centring, qLast);
  if (static_cast<int>(calculated.size()) > kMaxListedLines) {
    report.push_back(" more than 100 calculated lines: the line list is not printed");
    return;
  }
  struct Row {
    double twoTheta;
    std::string text;
  };
  std::vector<Row> rows;
  std::vector<bool> observedHit(calculated.size(), false);
  std::vector<std::array<int, 3>> used;
  auto observedQ = [&](std::size_t i) {
    return shifted ? qUnitsAt(lines.twoTheta[i] - refined.zero, parameters.wavel) : lines.q[i];
  };
  for (std::size_t i = 0; i < lines.q.size(); ++i) {
    const auto& a = i < refined.lines.size() ? refined.lines[i] : LineAssignment{};
    std::string text = formatI(static_cast<long>(i + 1), 4) + formatF(lines.twoTheta[i], 10, 3) + formatF(lines.q[i], 10, 2);
    if (a.indexed) {
      text += formatF(twoThetaFromQ(a.qCalc, parameters.wavel), 10, 3) + formatF(qUnitsFromQ(a.qCalc), 10, 2) +
              formatF(observedQ(i) - qUnitsFromQ(a.qCalc), 8, 2) + formatI(a.h, 4) + formatI(a.k, 4) + formatI(a.l, 4);
      // two observed lines on one calculated line: one of them belongs elsewhere
      const std::array<int, 3> hkl{a.h, a.k, a.l};
      if (std::find(used.begin(), used.end(), hkl) != used.end()) text += "  hkl-combination was used before";
      used.push_back(hkl);
      for (std::size_t c = 0; c < calculated.size(); ++c)
        if (std::abs(calculated[c].q - a.qCalc) < 1e-12) observedHit[c] = true;
    } else {
      text += "    not indexed";
    }
    rows.push_back({lines.twoTheta[i], text});
  }
  for (std::size_t c = 0; c < calculated.size(); ++c) {
    if (observedHit[c]) continue;
    const double tt = twoThetaFromQ(calculated[c].q, parameters.wavel);
    rows.push_back({tt, std::string(24, ' ') + formatF(tt, 10, 3) + formatF(qUnitsFromQ(calculated[c].q), 10, 2) +
                            std::string(8, ' ') + formatI(calculated[c].h, 4) + formatI(calculated[c].k, 4) +
                            formatI(calculated[c].l, 4)});
  }
  std::stable_sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) { return a.twoTheta < b.twoTheta; });
  report.push_back("  nr  2th obs    q obs  2th calc   q calc   delta   h   k   l");
  for (const auto& r : rows) report.push_back(r.text);
}

std::vector<ZeroCheckRow> zeroCheck(const ItoLines& lines, const ItoParameters& parameters) {
  std::vector<ZeroCheckRow> table;
  const int n = lines.indexingCount();
  for (int s = -kZeroShiftRange; s <= kZeroShiftRange; ++s) {
    ZeroCheckRow row;
    row.shift = s;
    std::vector<double> q(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) q[static_cast<std::size_t>(i)] = qUnitsAt(lines.twoTheta[static_cast<std::size_t>(i)] + 0.01 * s, parameters.wavel);
    double sum = 0.0;
    // a true zero error makes q(nh) = n²·q(h) exact at one shift: the count of such pairs peaks there
    for (int i = 0; i < n; ++i)
      for (int j = i + 1; j < n; ++j)
        for (int order = 2; order <= 4; ++order) {
          const double delta = q[static_cast<std::size_t>(j)] - order * order * q[static_cast<std::size_t>(i)];
          if (std::abs(delta) <= lines.tolerance[static_cast<std::size_t>(j)]) {
            ++row.fits;
            sum += std::abs(delta);
          }
        }
    row.meanDelta = row.fits > 0 ? sum / row.fits : 0.0;
    table.push_back(row);
  }
  return table;
}

void printZeroCheck(ReportLines& report, const ItoLines& lines, const ItoParameters& parameters) {
  report.push_back("");
  report.push_back(" zero-error check: second- and higher-order lines among the first 20 for shifts of 2-theta");
  report.push_back(" shifts (x0.01)  nr of fits  mean delta q");
  for (const auto& row : zeroCheck(lines, parameters))
    report.push_back(formatI(row.shift, 15) + formatI(row.fits, 12) + formatF(row.meanDelta, 14, 3));
  report.push_back(" the correction is not applied: give it as zero correction on the second parameter card.");
}

}  // namespace quarvel
