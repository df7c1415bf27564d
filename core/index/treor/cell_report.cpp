#include "core/index/treor/cell_report.h"

#include <algorithm>
#include <cmath>

#include "core/common/numbers.h"
#include "core/index/lattice/calculated_lines.h"
#include "core/index/lattice/lattice_symmetry.h"
#include "core/index/lattice/niggli_reduction.h"
#include "core/index/lattice/reduced_form.h"
#include "core/index/lattice/units.h"

namespace quarvel {

namespace {

// The refinement assigns lines in 2θ; the D2 window in sin²θ is widest at low angle, so the
// window of the line two thirds up the list is a fair single value.
double refineToleranceTwoTheta(const ObservedLines& lines) {
  const int n = std::min<int>(lines.refineLines, static_cast<int>(lines.q.size()));
  if (n == 0) return 0.05;
  const double twoTheta = lines.twoTheta[std::max(0, 2 * n / 3)];
  const double dSst = sinSquaredTheta(lines.refineTolerance, lines.wavelength);
  return 2.0 * dSst / std::sin(twoTheta * kDegree) / kDegree;
}

std::vector<double> firstLines(const std::vector<double>& v, int n) {
  return {v.begin(), v.begin() + std::min<int>(n, static_cast<int>(v.size()))};
}

bool nearlyEqual(double x, double sx, double y, double sy) {
  return std::abs(x - y) <= std::max(3.0 * std::hypot(sx, sy), 1e-3 * std::max(x, y));
}

// Every indexed line with an even index in one position: the cell may be a super-cell.
bool commonFactor(const std::vector<LineAssignment>& assigned) {
  for (int axis = 0; axis < 3; ++axis) {
    bool allEven = true, any = false;
    for (const LineAssignment& a : assigned) {
      if (!a.indexed) continue;
      any = true;
      const int index = axis == 0 ? a.h : axis == 1 ? a.k : a.l;
      allEven = allEven && index % 2 == 0;
    }
    if (any && allEven) return true;
  }
  return false;
}

std::string cellLine(const CellParameters& c) {
  return "   " + formatF(c.a, 10, 5) + formatF(c.b, 10, 5) + formatF(c.c, 10, 5) + formatF(c.alpha, 10, 3) +
         formatF(c.beta, 10, 3) + formatF(c.gamma, 10, 3) + "   VOL=" + formatF(cellVolume(c), 10, 2);
}

// A triclinic trial comes in whatever basis its base lines or a sub-lattice gave it, often with
// angles far from 90° (a basis of 7.4, 4.0, 14.2 Å at 104°, 75°, 158° for a cell of 3.99, 3.99,
// 13.8 Å). Its lines then have large, nearly proportional indices, and the normal equations of
// the six coefficients are too ill-conditioned to solve: the trial would stay unrefined and be
// judged by the M20 of its start values. The reduced basis of the same lattice refines well.
ReciprocalMetric reducedSetting(const ReciprocalMetric& metric) {
  if (!cellFromMetric(metric)) return metric;
  const NiggliReduction reduction = niggliReduce(inverse(metric.tensor()));
  if (!reduction.reduced) return metric;
  return ReciprocalMetric::fromTensor(inverse(reduction.metric));
}

}  // namespace

std::vector<double> zeroCorrectedQ(const ObservedLines& lines, double zero) {
  if (zero == 0) return lines.q;
  std::vector<double> q;
  for (const double value : lines.q) q.push_back(qFromTwoTheta(twoThetaFromQ(value, lines.wavelength) - zero, lines.wavelength));
  return q;
}

RefinedTrial refineTrial(const ObservedLines& lines, CrystalSystem system, const ReciprocalMetric& start,
                         int maxCycles) {
  RefinedTrial result;
  MetricRefinementOptions options;
  options.system = system;
  options.wavelength = lines.wavelength;
  options.toleranceTwoTheta = refineToleranceTwoTheta(lines);
  options.sigmaTwoTheta = 0.01;
  options.maxCycles = maxCycles;
  options.refineZero = true;
  options.zeroBound = kRefinedZeroBound;
  // A zero within kSignificantZero standard deviations of nothing only takes up misfit (with a
  // large cell and all lines at low angles the zero and the cell edges are nearly one parameter).
  options.zeroSignificance = kSignificantZero;
  const auto twoTheta = firstLines(lines.twoTheta, lines.refineLines);
  const ReciprocalMetric setting = system == CrystalSystem::Triclinic ? reducedSetting(start) : start;
  result.refinement = refineMetric(twoTheta, setting, options);
  const MetricRefinement& r = result.refinement;
  const double sigma = r.zeroDropped ? r.droppedZeroSigma : (r.esdsAvailable ? r.zeroSigma : -1.0);
  result.zeroSigma = sigma >= 0.0 ? sigma : kRefinedZeroBound;
  result.solved = result.refinement.solved;
  const ReciprocalMetric& metric = result.solved ? result.refinement.metric : setting;
  const auto q = firstLines(zeroCorrectedQ(lines, result.solved ? result.refinement.zero : 0.0), 20);
  const std::vector<double> tolerance(q.size(), lines.refineTolerance);
  result.figure = deWolffFigure(q, tolerance, metric, Centring::P);
  return result;
}

void printCellBlock(std::vector<std::string>& out, const CellParameters& c, const CellParameters& s, double volume) {
  out.push_back("");
  out.push_back("   A =" + formatF(c.a, 10, 6) + formatF(s.a, 10, 6) + " A   ALFA =" + formatF(c.alpha, 10, 6) +
                formatF(s.alpha, 10, 6) + " DEG");
  out.push_back("   B =" + formatF(c.b, 10, 6) + formatF(s.b, 10, 6) + " A   BETA =" + formatF(c.beta, 10, 6) +
                formatF(s.beta, 10, 6) + " DEG");
  out.push_back("   C =" + formatF(c.c, 10, 6) + formatF(s.c, 10, 6) + " A  GAMMA =" + formatF(c.gamma, 10, 6) +
                formatF(s.gamma, 10, 6) + " DEG");
  out.push_back("   UNIT CELL VOLUME =" + formatF(volume, 10, 2) + " A**3");
}

std::string zeroLine(double zero, double sigma) {
  return "   ZERO =" + formatF(zero, 10, 6) + formatF(sigma, 10, 6) + " DEG 2THETA (TRUE ANGLE = OBSERVED - ZERO)";
}

std::string meritLine(double m20, int unindexed) {
  return " M-TEST=" + formatI(nint(std::min(m20, 99999.0)), 5) + " UNINDEXED IN THE TEST=" + formatI(unindexed, 5);
}

void printRefinement(std::vector<std::string>& out, const ObservedLines& lines, CrystalSystem system,
                     const ReciprocalMetric* start, const RefinedTrial& result, Centring centring) {
  const MetricRefinement& r = result.refinement;
  if (!result.solved && !start) return;  // nothing to tabulate
  if (start) {
    out.push_back("");
    out.push_back(" NOT REFINED UNIT CELL");
    if (const auto cell = cellFromMetric(*start)) out.push_back(cellLine(*cell));
  }
  out.push_back(" REFINEMENT CYCLES =" + formatI(r.cycles, 3) + "   INDEXED LINES IN THE REFINEMENT =" +
                formatI(r.indexedLines, 4));
  const ReciprocalMetric& metric = result.solved ? r.metric : *start;
  const double zero = result.solved ? r.zero : 0.0;
  const std::vector<double> corrected = zeroCorrectedQ(lines, zero);
  // The line table covers every observed line, each given its nearest calculated line in D2;
  // SST-OBS and DELTA are taken after the zero correction, 2TH-OBS is the angle measured.
  out.push_back("");
  out.push_back("    M   H   K   L    SST-OBS   SST-CALC     DELTA   2TH-OBS  2TH-CALC    D-OBS  FREE PARAM.");
  int single = 0, indexed = 0;
  double sumEps = 0;
  const double lambda = lines.wavelength;
  for (std::size_t i = 0; i < lines.q.size(); ++i) {
    const double q = corrected[i];
    const auto nearest = nearestLineWithin(metric, Centring::P, q, lines.refineTolerance);
    std::string row;
    if (nearest) {
      // The number of calculated lines inside the window tells single from multiple indexing.
      const auto [hb, kb, lb] = indexBounds(metric, q + lines.refineTolerance);
      int count = 0;
      for (int h = 0; h <= hb; ++h)
        for (int k = -kb; k <= kb; ++k)
          for (int l = -lb; l <= lb; ++l) {
            if (h == 0 && (k < 0 || (k == 0 && l <= 0))) continue;
            if (std::abs(metric.q(h, k, l) - q) <= lines.refineTolerance) ++count;
          }
      const int distinct = std::max(1, count);
      if (distinct == 1) ++single;
      ++indexed;
      const double sstObs = sinSquaredTheta(q, lambda), sstCalc = sinSquaredTheta(nearest->q, lambda);
      sumEps += std::abs(sstObs - sstCalc);
      row = formatI(distinct, 5) + formatI(nearest->h, 4) + formatI(nearest->k, 4) + formatI(nearest->l, 4) +
            formatF(sstObs, 11, 6) + formatF(sstCalc, 11, 6) + formatF(sstObs - sstCalc, 10, 6) +
            formatF(lines.twoTheta[i] + lines.correction, 10, 3) +
            formatF(twoThetaFromQ(nearest->q, lambda) + zero + lines.correction, 10, 3) +
            formatF(dFromQ(q), 9, 5) + formatF(lines.given[i], 12, 4);
    } else {
      const double sstObs = sinSquaredTheta(q, lambda);
      row = std::string(17, ' ') + formatF(sstObs, 11, 6) + std::string(21, ' ') + formatF(lines.twoTheta[i] + lines.correction, 10, 3) +
            std::string(10, ' ') + formatF(dFromQ(q), 9, 5) + formatF(lines.given[i], 12, 4);
    }
    out.push_back(row);
  }
  std::vector<CalculatedLine> calculated;
  if (!lines.q.empty()) calculatedLines(metric, Centring::P, lines.q.back() + lines.refineTolerance, calculated);
  out.push_back("");
  out.push_back(" NUMBER OF OBS. LINES =" + formatI(static_cast<long>(lines.q.size()), 4));
  out.push_back(" NUMBER OF CALC. LINES =" + formatI(countDistinct(calculated, lines.q.empty() ? 0 : lines.q.back()), 4));
  out.push_back(" AV.EPS.=" + formatF(indexed ? sumEps / indexed : 0.0, 10, 7));
  const auto cell = cellFromMetric(metric);
  if (cell) printCellBlock(out, *cell, r.cellSigmas, cellVolume(*cell));
  // The zero is printed when the lines were corrected or a significant zero was refined.
  if (result.solved && lines.correction + r.zero != 0) out.push_back(zeroLine(lines.correction + r.zero, r.zeroSigma));
  out.push_back("");
  out.push_back(" NUMBER OF SINGLE INDEXED LINES =" + formatI(single, 4));
  out.push_back(" TOTAL NUMBER OF LINES =" + formatI(static_cast<long>(lines.q.size()), 4));
  out.push_back("");
  if (centring != Centring::P)
    out.push_back(std::string(" THE LINES OBEY LATTICE CENTRING ") + centringLetter(centring) +
                  ": M20 COUNTS THE REFLECTIONS OF THAT LATTICE");
  out.push_back(meritLine(result.figure.m, result.figure.unindexed));
  // Warnings on the refined cell.
  if (r.indexedLines <= freeParameterCount(system)) out.push_back(" NUMBER OF EQ LESS THAN NUMBER OF PARAMETERS");
  if (cell) {
    const CellParameters& s = r.cellSigmas;
    const bool twoEqual = (system == CrystalSystem::Orthorhombic || system == CrystalSystem::Monoclinic ||
                           system == CrystalSystem::Triclinic) &&
                          (nearlyEqual(cell->a, s.a, cell->b, s.b) || nearlyEqual(cell->a, s.a, cell->c, s.c) ||
                           nearlyEqual(cell->b, s.b, cell->c, s.c));
    const bool tetragonalLike = system == CrystalSystem::Tetragonal && nearlyEqual(cell->a, s.a, cell->c, s.c);
    const bool rightBeta = system == CrystalSystem::Monoclinic && std::abs(cell->beta - 90.0) <= std::max(3 * s.beta, 0.05);
    if (twoEqual || tetragonalLike) out.push_back(" TWO ALMOST IDENTICAL PARAMETERS ?");
    if (twoEqual || tetragonalLike || rightBeta) out.push_back(" MAY INDICATE A HIGHER SYMMETRY");
  }
  if (commonFactor(r.lines)) out.push_back(" ANY COMMON FACTOR IN THE QUADRATIC FORMS ? ?");
  if (result.solved && !r.converged) out.push_back(" CHECK CONVERGENCE IN THE REFINEMENT");
}

void printCellAnalysis(std::vector<std::string>& out, const ObservedLines& lines, const CellParameters& cell,
                       double m20) {
  const LatticeSymmetry symmetry = latticeSymmetry(cell, Centring::P);
  // The higher systems the metric allows, each refined under its constraints.
  const std::pair<CrystalSystem, const char*> tests[] = {{CrystalSystem::Cubic, " TEST OF CUBIC SYMMETRY"},
                                                         {CrystalSystem::Tetragonal, " TEST OF TETRAGONAL SYMMETRY"},
                                                         {CrystalSystem::Hexagonal, " TEST OF HEXAGONAL SYMMETRY"}};
  for (const auto& [system, heading] : tests) {
    if (symmetry.system != system) continue;
    out.push_back("");
    out.push_back(heading);
    const CellParameters conventional = constrainCell(system, symmetry.conventional);
    const RefinedTrial constrained = refineTrial(lines, system, metricFromCell(conventional));
    out.push_back(" CONSTRAINED CELL M20 =" + formatF(constrained.figure.m, 8, 1) + "   UNCONSTRAINED M20 =" +
                  formatF(m20, 8, 1));
  }
  out.push_back("");
  out.push_back(" SPACE DIAGONAL TEST");
  const Mat3 g = directMetric(cell);
  const double longest = std::max({g(0, 0), g(1, 1), g(2, 2)});
  bool shorter = false;
  for (int s1 : {-1, 0, 1})
    for (int s2 : {-1, 0, 1})
      for (int s3 : {-1, 0, 1}) {
        if (std::abs(s1) + std::abs(s2) + std::abs(s3) < 2) continue;
        const Vec3 v{double(s1), double(s2), double(s3)};
        if (dot(v, g * v) < longest * (1 - 1e-6)) shorter = true;
      }
  out.push_back(shorter ? " A SHORTER SPACE DIAGONAL EXISTS: THE CELL IS NOT REDUCED"
                        : " NO SHORTER SPACE DIAGONAL");
  out.push_back("");
  out.push_back(" THE REDUCTION IS ONLY VALID IF THE CELL FOUND IS PRIMITIVE (NO SYSTEMATIC EXTINCTIONS)");
  out.push_back(" *** INPUT CELL ***");
  out.push_back(cellLine(cell));
  const NiggliReduction reduced = niggliReduce(cell, Centring::P, kClassificationTolerance);
  if (!reduced.reduced || !isPositiveDefinite(g)) {
    out.push_back(" WARNING IMPOSSIBLE DATA");
    return;
  }
  out.push_back(" *** REDUCED-CELL ***");
  out.push_back(cellLine(reduced.cell));
  out.push_back(" REDUCED FORM NUMBER =" + formatI(reducedForm(reduced.metric).number, 3));
  out.push_back(" *** CONVENTIONAL CELL (METRIC SYMMETRY) ***");
  std::string name = toUpper(crystalSystemName(symmetry.system));
  if (symmetry.system == CrystalSystem::Hexagonal && symmetry.centring == Centring::R) name = "RHOMBOHEDRAL";
  out.push_back(" " + name + "   " + symmetry.bravaisSymbol());
  out.push_back(cellLine(symmetry.conventional));
}

}  // namespace quarvel
