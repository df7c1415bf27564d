#include "core/index/benchmark/indexing_matrix.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <random>

#include <fmt/format.h>

#include "core/index/lattice/calculated_lines.h"
#include "core/index/lattice/figures_of_merit.h"
#include "core/index/lattice/lattice_relations.h"
#include "core/index/lattice/metric_refinement.h"
#include "core/index/lattice/synthetic_lines.h"
#include "core/index/lattice/units.h"

namespace quarvel {

namespace {

struct Bravais {
  const char* symbol;
  CrystalSystem system;
  Centring centring;
};

constexpr Bravais kLattices[] = {
    {"cP", CrystalSystem::Cubic, Centring::P},        {"cI", CrystalSystem::Cubic, Centring::I},
    {"cF", CrystalSystem::Cubic, Centring::F},        {"tP", CrystalSystem::Tetragonal, Centring::P},
    {"tI", CrystalSystem::Tetragonal, Centring::I},   {"hP", CrystalSystem::Hexagonal, Centring::P},
    {"hR", CrystalSystem::Hexagonal, Centring::R},    {"oP", CrystalSystem::Orthorhombic, Centring::P},
    {"oC", CrystalSystem::Orthorhombic, Centring::C}, {"oI", CrystalSystem::Orthorhombic, Centring::I},
    {"oF", CrystalSystem::Orthorhombic, Centring::F}, {"mP", CrystalSystem::Monoclinic, Centring::P},
    {"mC", CrystalSystem::Monoclinic, Centring::C},   {"aP", CrystalSystem::Triclinic, Centring::P},
};

// Edges 2.5-25 Å log-uniform, volume 50-3000 Å³, monoclinic β 90-120°, triclinic angles
// reduced; the first line must lie below d = 30 Å.
CellParameters drawCell(const Bravais& lattice, double dMin, int minLines, std::mt19937& random) {
  std::uniform_real_distribution<double> logEdge(std::log(2.5), std::log(25.0));
  std::uniform_real_distribution<double> angle(60.0, 120.0), beta(90.0, 120.0);
  for (;;) {
    CellParameters c{std::exp(logEdge(random)), std::exp(logEdge(random)), std::exp(logEdge(random)), 90, 90, 90};
    if (lattice.system == CrystalSystem::Monoclinic) c.beta = beta(random);
    if (lattice.system == CrystalSystem::Triclinic) {
      c.alpha = angle(random), c.beta = angle(random), c.gamma = angle(random);
      if (cellVolume(c) <= 0) continue;
      c = niggliReduce(c, Centring::P).cell;
    }
    if (lattice.system == CrystalSystem::Hexagonal) c.gamma = 120.0;
    c = constrainCell(lattice.system, c);
    const double v = cellVolume(c);
    if (v < 50 || v > 3000) continue;
    const ReciprocalMetric m = metricFromCell(c);
    if (!calculatedLines(m, lattice.centring, 1.0 / (30.0 * 30.0)).empty()) continue;  // a line beyond d = 30 Å
    // Enough lines to make an indexing problem of 20-30 lines.
    if (countDistinct(calculatedLines(m, lattice.centring, 1.0 / (dMin * dMin)), 1e9) < minLines) continue;
    return c;
  }
}

double toleranceFor(double wavelength) { return wavelength < 1.0 ? 0.03 : 0.05; }

}  // namespace

std::vector<IndexingCase> syntheticMatrix(const SyntheticMatrixOptions& o) {
  std::mt19937 random(o.seed);
  std::vector<IndexingCase> cases;
  for (const Bravais& lattice : kLattices)
    for (int drawn = 1; drawn <= o.cellsPerLattice; ++drawn) {
      const CellParameters cell = drawCell(lattice, o.dMin, o.lines + 5, random);
      for (const double lambda : o.wavelengths)
        for (const double noise : o.noise)
          for (const double zero : o.zero)
            for (const int impurities : o.impurities)
              for (const int missing : o.missing) {
                SyntheticLineOptions s;
                s.wavelength = lambda;
                s.maxTwoTheta = 2.0 * std::asin(std::min(1.0, lambda / (2.0 * o.dMin))) / kDegree;
                s.noise = noise;
                s.zero = zero;
                s.impurities = impurities;
                s.drop = missing;
                s.resolution = lambda < 1.0 ? 0.005 : 0.02;
                s.maxLines = o.lines + missing;
                s.seed = static_cast<std::uint32_t>(random());
                IndexingCase c;
                c.name = fmt::format("{} λ{:.4f} σ{:.2f} z{:.2f} imp{} miss{}", lattice.symbol, lambda, noise, zero,
                                     impurities, missing);
                if (drawn > 1) c.name += fmt::format(" #{}", drawn);
                c.wavelength = lambda;
                c.knownCell = cell;
                c.centring = lattice.centring;
                c.system = lattice.system;
                c.twoTheta = syntheticLines(cell, lattice.centring, s);
                cases.push_back(std::move(c));
              }
    }
  return cases;
}

bool knownCellFound(const IndexingCase& problem, const std::vector<CandidateCell>& candidates, int top,
                    double tolerance) {
  const int n = std::min<int>(top, static_cast<int>(candidates.size()));
  for (int i = 0; i < n; ++i) {
    const CandidateCell& c = candidates[static_cast<std::size_t>(i)];
    if (sameLattice(c.cell, c.centring, problem.knownCell, problem.centring, tolerance, MetricMatch::EachElement))
      return true;
  }
  return false;
}

namespace {

// The distinct line positions (2θ) of a lattice up to a limit, ascending.
std::vector<double> linePositions(const CellParameters& cell, Centring centring, double wavelength, double qMax) {
  std::vector<double> twoTheta;
  for (const double q : distinctValues(calculatedLines(metricFromCell(cell), centring, qMax)))
    twoTheta.push_back(twoThetaFromQ(q, wavelength));
  return twoTheta;
}

// Every value of `a` up to `last` within the tolerance of a value of `b` (both ascending).
bool everyLineMatched(const std::vector<double>& a, const std::vector<double>& b, double last, double tolerance) {
  return std::all_of(a.begin(), std::upper_bound(a.begin(), a.end(), last), [&](double t) {
    const auto near = std::lower_bound(b.begin(), b.end(), t - tolerance);
    return near != b.end() && *near <= t + tolerance;
  });
}

}  // namespace

bool sameLinePositions(const IndexingCase& problem, const CandidateCell& candidate, double toleranceTwoTheta) {
  if (problem.twoTheta.empty()) return false;
  // Up to the last observed line; each list a tolerance further, so that a line just above the
  // limit still answers one just below it.
  const double last = problem.twoTheta.back();
  const double qMax = qFromTwoTheta(last + toleranceTwoTheta, problem.wavelength);
  const auto known = linePositions(problem.knownCell, problem.centring, problem.wavelength, qMax);
  const auto other = linePositions(candidate.cell, candidate.centring, problem.wavelength, qMax);
  return everyLineMatched(known, other, last, toleranceTwoTheta) && everyLineMatched(other, known, last, toleranceTwoTheta);
}

std::vector<CaseResult> runIndexingMatrix(const IndexingEngine& engine, const std::vector<IndexingCase>& cases, int top) {
  std::vector<CaseResult> results;
  for (const IndexingCase& c : cases) {
    const auto start = std::chrono::steady_clock::now();
    const auto candidates = engine(c);
    const auto stop = std::chrono::steady_clock::now();
    CaseResult r{c.name, c.system, knownCellFound(c, candidates, top),
                 std::chrono::duration<double>(stop - start).count(), knownCellFound(c, refineKnownCell(c), 1)};
    r.sameLines = !r.found && !candidates.empty() && sameLinePositions(c, candidates.front());
    results.push_back(r);
  }
  return results;
}

std::vector<SystemSummary> summariseBySystem(const std::vector<CaseResult>& results) {
  std::vector<SystemSummary> summaries;
  for (const CrystalSystem system : {CrystalSystem::Cubic, CrystalSystem::Tetragonal, CrystalSystem::Hexagonal,
                                     CrystalSystem::Orthorhombic, CrystalSystem::Monoclinic, CrystalSystem::Triclinic}) {
    std::vector<double> times;
    SystemSummary s{system};
    for (const CaseResult& r : results) {
      if (r.system != system) continue;
      ++s.cases;
      s.found += r.found;
      s.determinable += r.determinable;
      s.foundDeterminable += r.found && r.determinable;
      s.sameLinesDeterminable += r.sameLines && r.determinable;
      times.push_back(r.seconds);
    }
    if (times.empty()) continue;
    std::sort(times.begin(), times.end());
    s.medianSeconds = times[times.size() / 2];
    s.worstSeconds = times.back();
    summaries.push_back(s);
  }
  return summaries;
}

std::vector<CandidateCell> refineKnownCell(const IndexingCase& problem) {
  CellParameters start = problem.knownCell;
  start.a *= 1.001;
  start.b *= 0.999;
  start.c *= 1.001;
  MetricRefinementOptions o;
  o.system = problem.system;
  o.centring = problem.centring;
  o.wavelength = problem.wavelength;
  o.toleranceTwoTheta = toleranceFor(problem.wavelength) + 0.05;  // room for the zero shift
  o.refineZero = true;
  const MetricRefinement r = refineMetric(problem.twoTheta, metricFromCell(start), o);
  if (!r.solved) return {};
  std::vector<double> q, tol;
  for (const double t : problem.twoTheta) {
    q.push_back(qFromTwoTheta(t - r.zero, problem.wavelength));
    tol.push_back(qToleranceFromTwoTheta(t, toleranceFor(problem.wavelength), problem.wavelength));
  }
  const DeWolffFigure m20 = deWolffFigure(q, tol, r.metric, problem.centring, {20, 1.0, true});
  return {{niggliReduce(r.cell, problem.centring).cell, Centring::P, m20.m}};
}

}  // namespace quarvel
