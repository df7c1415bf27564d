#include "core/index/ito/ito_lattices.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <set>

#include "core/index/lattice/calculated_lines.h"
#include "core/index/lattice/figures_of_merit.h"
#include "core/index/lattice/lattice_relations.h"
#include "core/index/lattice/lattice_symmetry.h"
#include "core/index/lattice/metric_refinement.h"
#include "core/index/lattice/niggli_reduction.h"
#include "core/index/lattice/units.h"

namespace quarvel {
namespace {

constexpr int kMaxRowIndex = 2;         // |h|, |k| of the rows tried as the common row
constexpr int kMaxCrossIndex = 2;       // |i|, |j|, |l| of the triples that fix the cross term
constexpr int kClustersPerRowPair = 3;  // trial lattices kept per pair of common rows
// Cross terms of a zone row with a line outside the zone: one or two lines support each, so the
// true one competes with many chance clusters of the same support.
constexpr int kClustersPerAxis = 3;
// Second cross terms kept per first one, and the largest zone index tried in their search.
constexpr int kSecondCrossTerms = 2;
constexpr int kMaxThirdAxisIndex = 8;
constexpr int kRefinedLattices = 60;
constexpr int kRefinedOnLinesIndexed = 40;  // of them, the ones taken on lines indexed first
constexpr int kScreenedByCount = 400;  // the best by lines indexed whose calculated lines are counted    // the best screened lattices go on to refinement
constexpr double kMaxVolume = 10000.0;  // Å³
constexpr int kRefinementCycles = 4;
// A higher metric symmetry is taken when it indexes as many lines and keeps at least this share
// of the free cell's figure: fewer parameters fit noise less well, a false symmetry much worse.
constexpr double kComparableMerit = 0.7;
constexpr double kTiedConstantWeight = 1.2;
constexpr int kMaxSuperCellIndex = 3;
// A refined zero within three standard deviations of nothing only takes up the misfit of the cell
// (with all lines at low angles the zero and the cell edges are nearly the same parameter).
constexpr double kSignificantZero = 3.0;
constexpr double kSmallestErrorShare = 0.01;  // of the mean line tolerance, in the figure of merit

struct Row {
  int h, k;
  double qc;     // q of the row
  double qu;     // q of the vector u completing the zone basis
  double p;      // 2 u·c
};

// The 2D metric of a zone applied to integer vectors.
double zoneDot(const ItoZone& z, int h1, int k1, int h2, int k2) {
  return h1 * h2 * z.qa + k1 * k2 * z.qb + 0.5 * (h1 * k2 + k1 * h2) * z.r;
}

// u = (p, q) with h·q − k·p = 1, so that (row, u) is a primitive basis of the zone.
std::pair<int, int> completeBasis(int h, int k) {
  for (int p = -kMaxRowIndex * 2; p <= kMaxRowIndex * 2; ++p)
    for (int q = -kMaxRowIndex * 2; q <= kMaxRowIndex * 2; ++q)
      if (h * q - k * p == 1) return {p, q};
  return {0, 0};
}

std::vector<Row> zoneRows(const ItoZone& zone, double qLimit) {
  std::vector<Row> rows;
  for (int h = 0; h <= kMaxRowIndex; ++h)
    for (int k = -kMaxRowIndex; k <= kMaxRowIndex; ++k) {
      if (h == 0 && k <= 0) continue;
      if (std::gcd(h, k) != 1) continue;
      const double qc = zoneDot(zone, h, k, h, k);
      if (qc > qLimit) continue;
      const auto [up, uq] = completeBasis(h, k);
      // keep u short: subtract the row as often as it shortens u
      int ph = up, pk = uq;
      const double t = std::round(zoneDot(zone, ph, pk, h, k) / qc);
      ph -= static_cast<int>(t) * h;
      pk -= static_cast<int>(t) * k;
      rows.push_back({h, k, qc, zoneDot(zone, ph, pk, ph, pk), 2.0 * zoneDot(zone, ph, pk, h, k)});
    }
  return rows;
}

bool zoneIndexes(const ItoZone& zone, double q, double tol) {
  const double det = 4.0 * zone.qa * zone.qb - zone.r * zone.r;
  if (det <= 0.0) return false;
  const int hMax = static_cast<int>(std::sqrt((q + tol) * 4.0 * zone.qb / det)) + 1;
  const int kMax = static_cast<int>(std::sqrt((q + tol) * 4.0 * zone.qa / det)) + 1;
  for (int h = 0; h <= hMax; ++h)
    for (int k = -kMax; k <= kMax; ++k)
      if (!(h == 0 && k <= 0) && std::abs(zone.q(h, k) - q) <= tol) return true;
  return false;
}

struct CrossValue {
  double x, tol;
  int line;
};

struct Cluster {
  double x;
  int support;
};

// Clusters of the cross term X = 2 u1·u2 from the lines that need all three basis vectors.
std::vector<Cluster> crossTermClusters(double qu1, double qu2, double qc, double p1, double p2, const ItoLines& lines,
                                       double tol3) {
  const int n = lines.indexingCount();
  const double xMax = 2.0 * std::sqrt(qu1 * qu2);
  std::vector<CrossValue> values;
  for (int line = 0; line < n; ++line) {
    const double q = lines.q[static_cast<std::size_t>(line)];
    for (int i = 1; i <= kMaxCrossIndex; ++i)
      for (int j = -kMaxCrossIndex; j <= kMaxCrossIndex; ++j) {
        if (j == 0) continue;
        for (int l = -kMaxCrossIndex; l <= kMaxCrossIndex; ++l) {
          const double ij = i * j;
          const double x = (q - i * i * qu1 - j * j * qu2 - l * l * qc - i * l * p1 - j * l * p2) / ij;
          const double tol = tol3 / std::abs(ij);
          if (std::abs(x) <= xMax) values.push_back({x, tol, line});
        }
      }
  }
  std::sort(values.begin(), values.end(), [](const CrossValue& a, const CrossValue& b) { return a.x < b.x; });
  const double widest = tol3;
  std::vector<Cluster> found;
  std::vector<bool> taken(values.size(), false);
  for (int round = 0; round < kClustersPerRowPair; ++round) {
    int bestSupport = 1;
    double bestX = 0.0;
    std::size_t lo = 0;
    for (std::size_t a = 0; a < values.size(); ++a) {
      if (taken[a]) continue;
      while (values[lo].x < values[a].x - values[a].tol - widest) ++lo;
      std::set<int> support;
      double sw = 0.0, swx = 0.0;
      for (std::size_t b = lo; b < values.size() && values[b].x <= values[a].x + values[a].tol + widest; ++b) {
        if (taken[b] || std::abs(values[b].x - values[a].x) > values[a].tol + values[b].tol) continue;
        support.insert(values[b].line);
        const double w = 1.0 / (values[b].tol * values[b].tol);
        sw += w;
        swx += w * values[b].x;
      }
      if (static_cast<int>(support.size()) > bestSupport) {
        bestSupport = static_cast<int>(support.size());
        bestX = swx / sw;
      }
    }
    if (bestSupport < 2) break;
    found.push_back({bestX, bestSupport});
    for (std::size_t b = 0; b < values.size(); ++b)
      if (std::abs(values[b].x - bestX) <= 2.0 * values[b].tol) taken[b] = true;
  }
  return found;
}

// Clusters of a cross term P = 2 a·c of one zone vector a (q = qa) with the new vector c (q = qc)
// from lines indexed as i·a + l·c: P = (q − i²qa − l²qc)/(il). One supporting line is enough
// here: the second cross term and the screening that follows check the trial anyway.
std::vector<Cluster> axisCrossTerms(double qa, double qc, const ItoLines& lines, double tol3, bool shortest) {
  // every line: with a dominant zone the lines that fix the third axis may all lie beyond the 20th
  const int n = lines.count();
  // When c is the shortest vector outside the zone, c ± a is no shorter: |P| ≤ q(a); when the
  // shortest line of its coset is missing c may be the second, c ± a the shortest: |P| ≤ 3 q(a).
  // Without such a bound the flat, near-degenerate values win on support.
  const double pMax = shortest ? std::min(2.0 * std::sqrt(qa * qc), 3.0 * qa + tol3) : 2.0 * std::sqrt(qa * qc);
  std::vector<CrossValue> values;
  for (int line = 0; line < n; ++line)
    for (int i = 1; i <= kMaxCrossIndex; ++i)
      for (int l = -kMaxCrossIndex; l <= kMaxCrossIndex; ++l) {
        if (l == 0) continue;
        const double il = i * l;
        const double p = (lines.q[static_cast<std::size_t>(line)] - i * i * qa - l * l * qc) / il;
        // c and −c are one axis: only the size of P is known until the second cross term fixes
        // their relative sign
        if (std::abs(p) <= pMax) values.push_back({std::abs(p), tol3 / std::abs(il), line});
      }
  // An axis at right angles to the zone row (P = 0) is always tried, as the rectangular zone is:
  // it is the common case, and its one or two supporting lines are easily outnumbered by chance.
  std::vector<Cluster> found{{0.0, 0}};
  std::vector<bool> taken(values.size(), false);
  for (std::size_t b = 0; b < values.size(); ++b) {
    if (values[b].x > 2.0 * values[b].tol) continue;
    taken[b] = true;
    ++found.front().support;
  }
  for (int round = 0; round < kClustersPerAxis; ++round) {
    int bestSupport = 0;
    double bestX = 0.0;
    for (std::size_t a = 0; a < values.size(); ++a) {
      if (taken[a]) continue;
      std::set<int> support;
      for (std::size_t b = 0; b < values.size(); ++b)
        if (!taken[b] && std::abs(values[b].x - values[a].x) <= values[a].tol + values[b].tol) support.insert(values[b].line);
      if (static_cast<int>(support.size()) > bestSupport) {
        bestSupport = static_cast<int>(support.size());
        bestX = values[a].x;
      }
    }
    if (bestSupport < 1) break;
    found.push_back({bestX, bestSupport});
    for (std::size_t b = 0; b < values.size(); ++b)
      if (std::abs(values[b].x - bestX) <= 2.0 * values[b].tol) taken[b] = true;
  }
  return found;
}

// Clusters of the second cross term of a third axis c once the first is fixed: P2 = 2 b·c from
// every line indexed as i·a + j·b + l·c with j, l ≠ 0, P1 = 2 a·c given. With a dominant zone
// the lines on a single zone axis and c are few (often one), while the lines that need all
// three vectors are most of the pattern: they fix the second cross term where the two-index
// lines alone leave it among chance clusters of equal support.
std::vector<Cluster> secondCrossTerm(double qa, double qb, double r, double qc, double p1, const ItoLines& lines,
                                     double tol3, int keep) {
  const double det = 4.0 * qa * qb - r * r;
  if (det <= 0.0) return {};
  const double pMax = qb + tol3;  // c is the shortest vector of its coset: |2 b·c| ≤ q(b)
  std::vector<CrossValue> values;
  for (int line = 0; line < lines.count(); ++line) {
    const double q = lines.q[static_cast<std::size_t>(line)];
    for (int l = 1; l <= kMaxCrossIndex; ++l) {
      // the zone part of the vector is no longer than the whole line plus the c part
      const double reach = q + l * l * qc;
      const int iMax = std::min(kMaxThirdAxisIndex, static_cast<int>(std::sqrt(reach * 4.0 * qb / det)) + 1);
      const int jMax = std::min(kMaxThirdAxisIndex, static_cast<int>(std::sqrt(reach * 4.0 * qa / det)) + 1);
      for (int j = 1; j <= jMax; ++j)
        for (int sj : {1, -1})
          for (int i = -iMax; i <= iMax; ++i) {
            const double jl = sj * j * l;
            const double x = (q - i * i * qa - j * j * qb - sj * i * j * r - l * l * qc - i * l * p1) / jl;
            if (std::abs(x) <= pMax) values.push_back({x, tol3 / std::abs(jl), line});
          }
    }
  }
  std::sort(values.begin(), values.end(), [](const CrossValue& a, const CrossValue& b) { return a.x < b.x; });
  // windows of width tol3 slid over the sorted values, support counted in distinct lines: the
  // values are many (every line with every index triple), so a pairwise clustering is too slow
  std::vector<Cluster> found;
  std::vector<bool> taken(values.size(), false);
  std::vector<int> perLine(static_cast<std::size_t>(lines.count()), 0);
  for (int round = 0; round < keep; ++round) {
    std::fill(perLine.begin(), perLine.end(), 0);
    int distinct = 0, bestSupport = 1;
    std::size_t bestLo = 0, bestHi = 0;
    std::size_t lo = 0;
    for (std::size_t hi = 0; hi < values.size(); ++hi) {
      if (taken[hi]) continue;
      if (perLine[static_cast<std::size_t>(values[hi].line)]++ == 0) ++distinct;
      while (values[hi].x - values[lo].x > tol3) {
        if (!taken[lo] && --perLine[static_cast<std::size_t>(values[lo].line)] == 0) --distinct;
        ++lo;
      }
      if (distinct > bestSupport) {
        bestSupport = distinct;
        bestLo = lo;
        bestHi = hi;
      }
    }
    if (bestSupport < 2) break;
    double sw = 0.0, swx = 0.0;
    for (std::size_t b = bestLo; b <= bestHi; ++b) {
      if (taken[b]) continue;
      const double w = 1.0 / (values[b].tol * values[b].tol);
      sw += w;
      swx += w * values[b].x;
      taken[b] = true;
    }
    found.push_back({swx / sw, bestSupport});
  }
  return found;
}

struct Screened {
  ItoLattice lattice;
  int quickIndexed = 0;
  int calculated = 0;  // distinct lines up to the 20th observed one
};

int calculatedCount(const ItoLattice& lattice, const ItoLines& lines, std::vector<CalculatedLine>& scratch) {
  const double qLast = qFromQUnits(lines.q[static_cast<std::size_t>(lines.indexingCount() - 1)]);
  calculatedLines(toAngstrom(lattice.metric), Centring::P, 1.003 * qLast, scratch);
  // a trial is not exact: values closer than a quarter of the mean line tolerance are one line
  // (the metric degeneracies of a high-symmetry cell are only near-equalities in its trial)
  const double gap = 0.25 * qFromQUnits(lines.meanTolerance);
  int count = 0;
  double previous = -1.0;
  for (const CalculatedLine& line : scratch) {
    if (line.q - previous > gap) ++count;
    previous = line.q;
  }
  return count;
}

int quickIndexedCount(const ReciprocalMetric& metricAngstrom, const ItoLines& lines) {
  int count = 0;
  const NearestLineFinder calculated(metricAngstrom, Centring::P);
  for (int i = 0; i < lines.indexingCount(); ++i)
    if (calculated.hasLine(qFromQUnits(lines.q[static_cast<std::size_t>(i)]),
                           qFromQUnits(lines.tolerance[static_cast<std::size_t>(i)])))
      ++count;
  return count;
}

// norm3: the Niggli-reduced cell of a trial metric (q-units), or nothing for an impossible one.
std::optional<ItoLattice> normalise(const ReciprocalMetric& qUnits, const ItoLines& lines) {
  const ReciprocalMetric metric = toAngstrom(qUnits);
  if (!isPositiveDefinite(metric)) return std::nullopt;
  const auto cell = cellFromMetric(metric);
  if (!cell) return std::nullopt;
  const double volume = cellVolume(*cell);
  if (!(volume > 0.0) || volume > kMaxVolume) return std::nullopt;
  const NiggliReduction reduced = niggliReduce(*cell, Centring::P, kClassificationTolerance);
  if (!reduced.reduced) return std::nullopt;
  ItoLattice lattice;
  lattice.cell = reduced.cell;
  lattice.volume = cellVolume(reduced.cell);
  lattice.metric = toQUnits(metricFromCell(reduced.cell));
  // a reciprocal edge far below the first line: a long axis none of whose orders is seen
  const double shortest = std::min({lattice.metric.A, lattice.metric.B, lattice.metric.C});
  if (shortest < lines.q.front() / 16.0) return std::nullopt;
  return lattice;
}

bool nearlySameCell(const CellParameters& a, const CellParameters& b) {
  const double rel = 2e-3;
  auto close = [rel](double x, double y) { return std::abs(x - y) <= rel * std::max(std::abs(x), std::abs(y)); };
  return close(a.a, b.a) && close(a.b, b.b) && close(a.c, b.c) && std::abs(a.alpha - b.alpha) < 0.2 &&
         std::abs(a.beta - b.beta) < 0.2 && std::abs(a.gamma - b.gamma) < 0.2;
}

// Ranking: the figure of merit weighted by the fourth power of the share of lines indexed. On
// lines indexed first, a large cell that indexes everything with a poor figure would beat the true
// cell leaving one impurity line out; on the figure alone a sub-cell indexing three quarters of
// the lines would win.
//
// Each constant a higher symmetry ties weighs the figure by kTiedConstantWeight: a cell with more
// free constants fits the noise of the lines better, so among figures of about the same size the
// crystallographer's choice, the higher symmetry, comes first (a cubic pattern is indexed about
// as well by orthorhombic and monoclinic cells of a half or a quarter of its volume, and a
// lower-symmetry cell of the true one fits the noise better than the true metric).
double rankingFigure(const ItoLattice& lattice) {
  const double share = static_cast<double>(lattice.indexed) / kItoIndexingLines;
  const int tied = kMaxMetricParameters - freeParameterCount(lattice.system);
  return lattice.merit * share * share * share * share * std::pow(kTiedConstantWeight, tied);
}

bool better(const ItoLattice& a, const ItoLattice& b) {
  const double ra = rankingFigure(a), rb = rankingFigure(b);
  if (ra != rb) return ra > rb;
  return a.indexed > b.indexed;
}

// A sub-cell indexes the strong lines with a high figure and leaves the weak superstructure lines
// out (corundum: the cell with half the c axis leaves three of the first 20). A super-cell of
// index n that indexes more lines and keeps a comparable share of the figure, at least
// kComparableMerit/n of it (n times the calculated lines would divide it by n), goes before it.
void preferSuperCellsThatIndexMore(std::vector<ItoLattice>& ranked) {
  for (std::size_t i = 0; i < ranked.size(); ++i) {
    for (std::size_t j = i + 1; j < ranked.size(); ++j) {
      const ItoLattice& sub = ranked[i];
      const ItoLattice& super = ranked[j];
      if (super.indexed <= sub.indexed) continue;
      const int index = superCellIndex(sub.cell, sub.centring, super.cell, super.centring, kMaxSuperCellIndex, 5e-3);
      if (index < 2 || super.merit < kComparableMerit * sub.merit / index) continue;
      std::rotate(ranked.begin() + static_cast<std::ptrdiff_t>(i), ranked.begin() + static_cast<std::ptrdiff_t>(j),
                  ranked.begin() + static_cast<std::ptrdiff_t>(j + 1));
      break;
    }
  }
}

// One refinement in a given system and centring; the metric in Å⁻².
MetricRefinement refineIn(CrystalSystem system, Centring centring, const ReciprocalMetric& start, const ItoLines& lines,
                          const ItoParameters& parameters, double toleranceFactor) {
  MetricRefinementOptions options;
  options.system = system;
  options.centring = centring;
  options.wavelength = parameters.wavel;
  options.toleranceTwoTheta = toleranceFactor * parameters.tolg / 100.0;
  options.sigmaTwoTheta = parameters.tolg / 300.0;
  options.maxCycles = kRefinementCycles;
  // every line read (up to 40), not only the 20 that are scored: with a dominant zone the lines
  // that fix the third axis and its cross terms lie mostly beyond the 20th
  return refineWithSignificantZero(lines.twoTheta, start, options, lines);
}

bool systemWanted(CrystalSystem system, const ItoParameters& parameters) {
  auto flag = [&](CrystalSystem s) -> int {
    switch (s) {
      case CrystalSystem::Orthorhombic: return parameters.nsyst[0];
      case CrystalSystem::Monoclinic:
      case CrystalSystem::MonoclinicA:
      case CrystalSystem::MonoclinicC: return parameters.nsyst[1];
      case CrystalSystem::Triclinic: return parameters.nsyst[2];
      default: return 0;
    }
  };
  return flag(system) >= 0;
}

int preferenceOf(CrystalSystem system, const ItoParameters& parameters) {
  switch (system) {
    case CrystalSystem::Orthorhombic: return parameters.nsyst[0];
    case CrystalSystem::Monoclinic: return parameters.nsyst[1];
    case CrystalSystem::Triclinic: return parameters.nsyst[2];
    default: return 0;
  }
}

// Refines a reduced lattice, recognises its metric symmetry and refines again in that system.
ItoLattice refineOne(const ItoLattice& start, const ItoLines& lines, const ItoParameters& parameters,
                     double toleranceFactor, double axisDeviation, bool forceSymmetry) {
  ItoLattice result = start;
  const MetricRefinement free =
      refineIn(CrystalSystem::Triclinic, Centring::P, toAngstrom(start.metric), lines, parameters, toleranceFactor);
  if (free.singular) result.singular = true;
  if (free.solved) {
    result.zero = free.zero;
    result.zeroSigma = free.zeroSigma;
  }
  ReciprocalMetric metric = free.solved ? free.metric : toAngstrom(start.metric);
  auto cell = cellFromMetric(metric);
  if (!cell) return result;
  const NiggliReduction reduced = niggliReduce(*cell, Centring::P, kClassificationTolerance);
  result.cell = reduced.cell;
  result.metric = toQUnits(metricFromCell(reduced.cell));
  result.system = CrystalSystem::Triclinic;
  result.centring = Centring::P;
  result.bravais = "aP";

  // The highest metric symmetry within the axis deviation, refined in its system. A pseudo-
  // symmetry the lines do not bear (the figure falls well below the free one's) gives way to the
  // symmetry found with a tighter deviation, down to the free cell.
  scoreLattice(result, lines);
  const ItoLattice unconstrained = result;
  for (double deviation = axisDeviation; deviation >= axisDeviation / 16.0; deviation /= 4.0) {
    const LatticeSymmetry symmetry = latticeSymmetry(reduced.cell, Centring::P, deviation);
    if (symmetry.system == CrystalSystem::Triclinic) break;
    const MetricRefinement constrained = refineIn(symmetry.system, symmetry.centring, metricFromCell(symmetry.conventional),
                                                  lines, parameters, toleranceFactor);
    if (!constrained.solved) continue;
    ItoLattice candidate = unconstrained;
    candidate.metric = toQUnits(constrained.metric);
    candidate.cell = constrained.cell;
    candidate.system = symmetry.system;
    candidate.centring = symmetry.centring;
    candidate.bravais = symmetry.bravaisSymbol();
    candidate.zero = constrained.zero;
    candidate.zeroSigma = constrained.zeroSigma;
    scoreLattice(candidate, lines);
    if (candidate.indexed < unconstrained.indexed) continue;
    if (!forceSymmetry && candidate.merit < kComparableMerit * unconstrained.merit) continue;
    result = candidate;
    break;
  }
  result.volume = cellVolume(result.cell);
  scoreLattice(result, lines);
  // a refinement that lets an axis run away (no line fixes it) has not found a lattice
  if (!(result.volume > 0.0) || result.volume > kMaxVolume) result.indexed = 0;
  return result;
}

}  // namespace

ReciprocalMetric toAngstrom(const ReciprocalMetric& m) {
  return {qFromQUnits(m.A), qFromQUnits(m.B), qFromQUnits(m.C), qFromQUnits(m.D), qFromQUnits(m.E), qFromQUnits(m.F)};
}
ReciprocalMetric toQUnits(const ReciprocalMetric& m) {
  return {qUnitsFromQ(m.A), qUnitsFromQ(m.B), qUnitsFromQ(m.C), qUnitsFromQ(m.D), qUnitsFromQ(m.E), qUnitsFromQ(m.F)};
}

MetricRefinement refineWithSignificantZero(std::span<const double> twoTheta, const ReciprocalMetric& start,
                                           MetricRefinementOptions options, const ItoLines& lines) {
  // spacings and q-units given directly carry no goniometer zero
  options.refineZero = lines.kind == ItoInputKind::TwoTheta;
  options.zeroSignificance = kSignificantZero;
  return refineMetric(twoTheta, start, options);
}

void scoreLattice(ItoLattice& lattice, const ItoLines& lines) {
  const int n = lines.indexingCount();
  std::vector<double> q(static_cast<std::size_t>(n)), tol(static_cast<std::size_t>(n));
  const bool shifted = lattice.zero != 0.0 && lines.wavelength > 0.0;
  for (int i = 0; i < n; ++i) {
    const auto k = static_cast<std::size_t>(i);
    q[k] = shifted ? qFromTwoTheta(lines.twoTheta[k] - lattice.zero, lines.wavelength) : qFromQUnits(lines.q[k]);
    tol[static_cast<std::size_t>(i)] = qFromQUnits(lines.tolerance[static_cast<std::size_t>(i)]);
  }
  FigureOfMeritOptions options;
  options.lines = kItoIndexingLines;
  options.countLimitFactor = 1.003;
  const DeWolffFigure figure = deWolffFigure(q, tol, toAngstrom(lattice.metric), lattice.centring, options);
  lattice.indexed = figure.lines - figure.unindexed;
  // Exact positions would make the figure infinite, and a cell that fits 19 lines exactly would
  // beat the true one, whose fit of all 20 is held off by lines that merge two reflections:
  // errors below a hundredth of the tolerance (a few ten-thousandths of a degree) count as that.
  const double smallestError = qFromQUnits(kSmallestErrorShare * lines.meanTolerance);
  lattice.merit = lattice.indexed > 0 && figure.calculated > 0 && figure.meanDiscrepancy < smallestError
                      ? figure.qLast / (2.0 * smallestError * figure.calculated)
                      : figure.m;
  lattice.meanDelta = qUnitsFromQ(figure.meanDiscrepancy);
  lattice.calculated = figure.calculated;
}

LatticeSearch combineZones(const std::vector<ItoZone>& zones, const ItoLines& lines, const ItoParameters& parameters,
                           const std::function<bool()>& interrupted) {
  LatticeSearch search;
  const int nz = static_cast<int>(zones.size());
  const double qLimit = lines.q[static_cast<std::size_t>(lines.indexingCount() - 1)];
  std::vector<Screened> screened;

  auto addLattice = [&](const ReciprocalMetric& trial, int support, const std::string& pedigree) {
    auto lattice = normalise(trial, lines);
    if (!lattice) return;
    lattice->support = support;
    lattice->pedigree = pedigree;
    const int quick = quickIndexedCount(toAngstrom(lattice->metric), lines);
    auto same = std::find_if(screened.begin(), screened.end(),
                             [&](const Screened& s) { return nearlySameCell(s.lattice.cell, lattice->cell); });
    if (same == screened.end()) {
      screened.push_back({*lattice, quick});
    } else if (quick > same->quickIndexed) {
      *same = {*lattice, quick};
    }
  };
  auto addTrial = [&](double qu1, double qu2, double qc, double p1, double p2, const std::string& pedigree) {
    for (const Cluster& cluster : crossTermClusters(qu1, qu2, qc, p1, p2, lines, parameters.tol3)) {
      // basis (u1, u2, c): A = u1², B = u2², C = c², D = 2u2·c, E = 2u1·c, F = 2u1·u2
      addLattice(ReciprocalMetric{qu1, qu2, qc, p2, p1, cluster.x}, cluster.support, pedigree);
    }
  };

  for (int z1 = 0; z1 < std::min(parameters.nz1, nz); ++z1) {
    if (interrupted && interrupted()) break;
    for (int z2 = z1; z2 < std::min(parameters.nz2, nz); ++z2) {
      const auto rows1 = zoneRows(zones[static_cast<std::size_t>(z1)], qLimit);
      const auto rows2 = zoneRows(zones[static_cast<std::size_t>(z2)], qLimit);
      const std::string pedigree = std::to_string(z1 + 1) + "x" + std::to_string(z2 + 1);
      for (const Row& r1 : rows1) {
        if (z1 == z2) {
          // the zone and its image by a mirror (same sign) or a twofold axis (opposite sign)
          const std::string p = pedigree + "/" + std::to_string(r1.h) + std::to_string(r1.k);
          addTrial(r1.qu, r1.qu, r1.qc, r1.p, r1.p, p);
          addTrial(r1.qu, r1.qu, r1.qc, r1.p, -r1.p, p);
          continue;
        }
        for (const Row& r2 : rows2) {
          if (std::abs(r1.qc - r2.qc) > parameters.tol3) continue;
          const double qc = 0.5 * (r1.qc + r2.qc);
          const std::string p = pedigree + "/" + std::to_string(r1.h) + std::to_string(r1.k);
          addTrial(r1.qu, r2.qu, qc, r1.p, r2.p, p);
          addTrial(r1.qu, r2.qu, qc, r1.p, -r2.p, p);
        }
      }
    }
  }

  // A zone and a line outside it: when the first lines fill only one or two zones (a dominant
  // zone), no second zone with a common row exists; the third axis is then taken from a line the
  // zone does not index (or its second order), and its two cross terms from the lines that need it.
  for (int z = 0; z < std::min(parameters.nz1, nz); ++z) {
    if (interrupted && interrupted()) break;
    const ItoZone& zone = zones[static_cast<std::size_t>(z)];
    int outside = 0;
    for (int k = 0; k < lines.count(); ++k) {
      // beyond the 20th line only while no line outside the zone has been seen (a dominant zone)
      if (k >= lines.indexingCount() && outside >= 2) break;
      const double qk = lines.q[static_cast<std::size_t>(k)];
      if (zoneIndexes(zone, qk, lines.tolerance[static_cast<std::size_t>(k)])) continue;
      // the first lines outside the zone are the likely shortest vectors out of its plane
      const bool shortest = ++outside <= 2;
      for (double qc : {qk, qk / 4.0}) {
        if (qc < lines.q.front() / 4.0) continue;
        const auto p1 = axisCrossTerms(zone.qa, qc, lines, parameters.tol3, shortest);
        const auto p2 = axisCrossTerms(zone.qb, qc, lines, parameters.tol3, shortest);
        const std::string pedigree = std::to_string(z + 1) + "+" + std::to_string(k + 1);
        for (const Cluster& c1 : p1)
          for (const Cluster& c2 : p2)
            for (double sign : {1.0, -1.0}) {
              // basis (a, b, c) with a, b the zone basis: D = 2b·c, E = 2a·c, F = 2a·b
              const ReciprocalMetric trial{zone.qa, zone.qb, qc, sign * c2.x, c1.x, zone.r};
              addLattice(trial, c1.support + c2.support, pedigree);
            }
        // one cross term from the lines on a zone axis, the other from all lines that need it
        // The cross term found from all lines is then held and the first one sought again the same
        // way: when neither zone axis has its true cross term among the few lines on it, the pass
        // from the right angle finds the second, the next pass the first. Beyond the first two
        // lines off the zone only from the right angle: from every value a problem takes 40 % longer.
        for (const Cluster& c1 : p1)
          for (const Cluster& c2 : secondCrossTerm(zone.qa, zone.qb, zone.r, qc, c1.x, lines, parameters.tol3, kSecondCrossTerms)) {
            addLattice(ReciprocalMetric{zone.qa, zone.qb, qc, c2.x, c1.x, zone.r}, c1.support + c2.support, pedigree);
            if (!shortest && c1.x != 0.0) continue;
            for (const Cluster& again : secondCrossTerm(zone.qb, zone.qa, zone.r, qc, c2.x, lines, parameters.tol3, 1))
              addLattice(ReciprocalMetric{zone.qa, zone.qb, qc, c2.x, again.x, zone.r}, again.support + c2.support, pedigree);
          }
        for (const Cluster& c2 : p2)
          for (const Cluster& c1 : secondCrossTerm(zone.qb, zone.qa, zone.r, qc, c2.x, lines, parameters.tol3, kSecondCrossTerms)) {
            addLattice(ReciprocalMetric{zone.qa, zone.qb, qc, c2.x, c1.x, zone.r}, c1.support + c2.support, pedigree);
            if (!shortest && c2.x != 0.0) continue;
            for (const Cluster& again : secondCrossTerm(zone.qa, zone.qb, zone.r, qc, c1.x, lines, parameters.tol3, 1))
              addLattice(ReciprocalMetric{zone.qa, zone.qb, qc, again.x, c1.x, zone.r}, c1.support + again.support, pedigree);
          }
      }
    }
  }

  std::stable_sort(screened.begin(), screened.end(), [](const Screened& a, const Screened& b) {
    if (a.quickIndexed != b.quickIndexed) return a.quickIndexed > b.quickIndexed;
    if (a.lattice.volume != b.lattice.volume) return a.lattice.volume < b.lattice.volume;
    return a.lattice.support > b.lattice.support;
  });
  // Among the lattices that index as many lines, fewer calculated lines first: the smallest
  // volume alone prefers the low-symmetry cells of about the true volume whose extra lines
  // happen to fall on the observed ones (a cubic pattern is indexed by a dozen such cells, the
  // cubic one with the fewest distinct lines).
  if (screened.size() > static_cast<std::size_t>(kScreenedByCount)) screened.resize(kScreenedByCount);
  std::vector<CalculatedLine> scratch;
  for (Screened& s : screened) s.calculated = calculatedCount(s.lattice, lines, scratch);
  std::stable_sort(screened.begin(), screened.end(), [](const Screened& a, const Screened& b) {
    if (a.quickIndexed != b.quickIndexed) return a.quickIndexed > b.quickIndexed;
    return a.calculated < b.calculated;
  });
  // The last places go on the share of lines indexed to the fourth power (as in the final
  // ranking) over the calculated lines: a trial that leaves an impurity line out then still goes
  // before the many oblique cells of several times the volume that index all 20 lines. On that
  // figure alone, small cells that miss one line of a cubic pattern push the cubic cell out.
  auto screenFigure = [](const Screened& s) {
    const double share = s.quickIndexed / static_cast<double>(kItoIndexingLines);
    return share * share * share * share / std::max(s.calculated, 1);
  };
  const auto firstPlaces = std::min<std::ptrdiff_t>(kRefinedOnLinesIndexed, static_cast<std::ptrdiff_t>(screened.size()));
  std::stable_sort(screened.begin() + firstPlaces, screened.end(),
                   [&](const Screened& a, const Screened& b) { return screenFigure(a) > screenFigure(b); });
  for (const Screened& s : screened) {
    if (static_cast<int>(search.lattices.size()) >= kRefinedLattices) break;
    search.lattices.push_back(s.lattice);
  }
  return search;
}

std::optional<ItoLattice> latticeFromCard(const std::array<double, 6>& v) {
  ItoLattice lattice;
  lattice.pedigree = "given";
  const bool direct = v[3] >= 30.0 && v[3] <= 150.0 && v[4] >= 30.0 && v[4] <= 150.0 && v[5] >= 30.0 && v[5] <= 150.0;
  ReciprocalMetric metric;
  if (direct) {
    metric = metricFromCell(CellParameters{v[0], v[1], v[2], v[3], v[4], v[5]});
  } else {
    metric = toAngstrom(ReciprocalMetric{v[0], v[1], v[2], v[3], v[4], v[5]});
  }
  if (!isPositiveDefinite(metric)) return std::nullopt;
  const auto cell = cellFromMetric(metric);
  if (!cell) return std::nullopt;
  const NiggliReduction reduced = niggliReduce(*cell, Centring::P, kClassificationTolerance);
  lattice.cell = reduced.cell;
  lattice.metric = toQUnits(metricFromCell(reduced.cell));
  lattice.volume = cellVolume(reduced.cell);
  return lattice;
}

std::vector<ItoLattice> refineLattices(const std::vector<ItoLattice>& lattices, const ItoLines& lines,
                                       const ItoParameters& parameters, std::vector<std::string>& notes) {
  std::vector<ItoLattice> kept;
  for (std::size_t n = 0; n < lattices.size(); ++n) {
    ItoLattice refined = refineOne(lattices[n], lines, parameters, 1.0, kDefaultAxisDeviation, false);
    const std::string name = " lattice " + std::to_string(n + 1) + ": ";
    if (refined.singular) notes.push_back(name + "matrix is singular");
    // refpar2: a system marked +1 gets a second chance with twice the tolerance
    if (preferenceOf(refined.system, parameters) <= 0) {
      for (CrystalSystem preferred : {CrystalSystem::Orthorhombic, CrystalSystem::Monoclinic, CrystalSystem::Triclinic}) {
        if (preferenceOf(preferred, parameters) <= 0) continue;
        ItoLattice second = refineOne(lattices[n], lines, parameters, 2.0, 3.0, true);
        if (second.system == preferred) {
          second.preferred = true;
          if (second.indexed >= parameters.prntln && second.merit >= parameters.prntmr) kept.push_back(second);
        }
      }
    }
    if (refined.indexed < parameters.prntln) {
      notes.push_back(name + "not enough lines indexed");
      continue;
    }
    if (refined.merit < parameters.prntmr) {
      notes.push_back(name + "figure of merit is too low.");
      continue;
    }
    if (!systemWanted(refined.system, parameters)) continue;
    kept.push_back(refined);
  }
  std::stable_sort(kept.begin(), kept.end(), better);
  std::vector<ItoLattice> distinct;
  for (const auto& lattice : kept) {
    bool duplicate = false;
    for (std::size_t k = 0; k < distinct.size(); ++k) {
      if (sameLattice(lattice.cell, lattice.centring, distinct[k].cell, distinct[k].centring, 5e-3)) {
        notes.push_back(" lattice " + lattice.pedigree + " is the same as lattice " + std::to_string(k + 1));
        duplicate = true;
        break;
      }
    }
    if (!duplicate) distinct.push_back(lattice);
  }
  preferSuperCellsThatIndexMore(distinct);
  return distinct;
}

}  // namespace quarvel
