#include "core/index/lattice/metric_refinement.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "core/index/lattice/normal_equations.h"
#include "core/index/lattice/units.h"

namespace quarvel {

namespace {

// Relative change of Σ w r² that ends the cycles; with honest weights Σ w r² is about the number
// of lines, which serves as the scale when exact data drive it towards zero.
constexpr double kResidualSettled = 1e-6;

struct ObservedSet {
  std::vector<double> q, tolerance, weight, slope;  // slope: dq/d(2θ) per radian
};

ObservedSet observe(std::span<const double> twoTheta, double zero, const MetricRefinementOptions& o) {
  ObservedSet s;
  for (const double t : twoTheta) {
    const double corrected = t - zero;
    const double slope = qSlopePerRadian(corrected, o.wavelength);
    const double sigmaQ = std::max(slope * o.sigmaTwoTheta * kDegree, 1e-12);
    s.q.push_back(qFromTwoTheta(corrected, o.wavelength));
    s.tolerance.push_back(slope * o.toleranceTwoTheta * kDegree);
    s.weight.push_back(1.0 / (sigmaQ * sigmaQ));
    s.slope.push_back(slope);
  }
  return s;
}

std::vector<LineAssignment> assign(const ObservedSet& s, const ReciprocalMetric& metric, Centring centring) {
  return assignLines(s.q, s.tolerance, metric, centring);
}

double residual(const ObservedSet& s, const std::vector<LineAssignment>& lines, CrystalSystem system,
                const ReciprocalMetric& metric) {
  double sum = 0.0;
  const int m = freeParameterCount(system);
  const MetricParameters p = parametersFromMetric(system, metric);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!lines[i].indexed) continue;
    const MetricParameters x = designRow(system, lines[i].h, lines[i].k, lines[i].l);
    double calc = 0.0;
    for (int j = 0; j < m; ++j) calc += x[static_cast<std::size_t>(j)] * p[static_cast<std::size_t>(j)];
    const double r = s.q[i] - calc;
    sum += s.weight[i] * r * r;
  }
  return sum;
}

// One weighted solve with the current assignments. With the zero column the solve returns the
// change of the zero (radians) as its last parameter.
std::optional<NormalEquations::Solution> solveCycle(const ObservedSet& s, const std::vector<LineAssignment>& lines,
                                                    CrystalSystem system, bool withZero) {
  const int m = freeParameterCount(system);
  NormalEquations equations(m + (withZero ? 1 : 0));
  std::vector<double> row(static_cast<std::size_t>(equations.parameters()));
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!lines[i].indexed) continue;
    const MetricParameters x = designRow(system, lines[i].h, lines[i].k, lines[i].l);
    std::copy_n(x.begin(), m, row.begin());
    if (withZero) row[static_cast<std::size_t>(m)] = s.slope[i];
    equations.add(row, s.q[i], s.weight[i]);
  }
  return equations.solve();
}

int countIndexed(const std::vector<LineAssignment>& lines) {
  return static_cast<int>(std::count_if(lines.begin(), lines.end(), [](const LineAssignment& a) { return a.indexed; }));
}

struct DirectValues {
  std::array<double, 7> v{};  // a, b, c, α, β, γ, V
};

std::optional<DirectValues> directValues(CrystalSystem system, const MetricParameters& p) {
  const auto cell = cellFromMetric(metricFromParameters(system, p));
  if (!cell) return std::nullopt;
  return DirectValues{{cell->a, cell->b, cell->c, cell->alpha, cell->beta, cell->gamma, cellVolume(*cell)}};
}

// Propagates the covariance of the free coefficients to the direct cell by central differences.
void directSigmas(MetricRefinement& r, CrystalSystem system, const std::vector<double>& covariance, int stride) {
  const int m = freeParameterCount(system);
  std::array<std::array<double, kMaxMetricParameters>, 7> jacobian{};
  for (int j = 0; j < m; ++j) {
    MetricParameters up = r.parameters, down = r.parameters;
    const double step = 1e-6 * std::max(std::abs(r.parameters[static_cast<std::size_t>(j)]), 1e-8);
    up[static_cast<std::size_t>(j)] += step;
    down[static_cast<std::size_t>(j)] -= step;
    const auto vu = directValues(system, up), vd = directValues(system, down);
    if (!vu || !vd) return;
    for (std::size_t k = 0; k < 7; ++k) jacobian[k][static_cast<std::size_t>(j)] = (vu->v[k] - vd->v[k]) / (2.0 * step);
  }
  std::array<double, 7> sigma{};
  for (std::size_t k = 0; k < 7; ++k) {
    double var = 0.0;
    for (int i = 0; i < m; ++i)
      for (int j = 0; j < m; ++j)
        var += jacobian[k][static_cast<std::size_t>(i)] * covariance[static_cast<std::size_t>(i * stride + j)] *
               jacobian[k][static_cast<std::size_t>(j)];
    sigma[k] = std::sqrt(std::max(var, 0.0));
  }
  r.cellSigmas = {sigma[0], sigma[1], sigma[2], sigma[3], sigma[4], sigma[5]};
  r.volumeSigma = sigma[6];
}

// Where the cycles of a refinement stand: the cell, the zero and the last solve.
struct RefinementState {
  ReciprocalMetric metric;
  double zero = 0.0;
  std::optional<NormalEquations::Solution> last;
  bool lastWithZero = false;
  int cycles = 0;
  bool converged = false;
};

// The refinement's result for a state: the final assignment of every line, the cell and, with
// more indexed lines than parameters, the standard deviations.
MetricRefinement finish(const RefinementState& state, std::span<const double> twoThetaObserved,
                        const MetricRefinementOptions& options) {
  MetricRefinement r;
  const CrystalSystem system = options.system;
  const int m = freeParameterCount(system);
  r.cycles = state.cycles;
  r.converged = state.converged;
  const ObservedSet s = observe(twoThetaObserved, state.zero, options);
  r.lines = assign(s, state.metric, options.centring);
  r.indexedLines = countIndexed(r.lines);
  r.metric = state.metric;
  r.parameters = parametersFromMetric(system, state.metric);
  r.zero = state.zero;
  r.weightedResidual = residual(s, r.lines, system, state.metric);
  const auto cell = cellFromMetric(state.metric);
  if (!cell) return r;
  r.cell = *cell;
  r.volume = cellVolume(*cell);
  r.solved = true;

  const int unknowns = m + (state.lastWithZero ? 1 : 0);
  r.esdsAvailable = r.indexedLines > unknowns;
  if (r.esdsAvailable && state.last) {
    const double s2 = r.weightedResidual / (r.indexedLines - unknowns);
    std::vector<double> covariance(state.last->inverse);
    for (double& c : covariance) c *= s2;
    for (int j = 0; j < m; ++j)
      r.parameterSigmas[static_cast<std::size_t>(j)] = std::sqrt(covariance[static_cast<std::size_t>(j * unknowns + j)]);
    if (state.lastWithZero) r.zeroSigma = std::sqrt(covariance[static_cast<std::size_t>(m * unknowns + m)]) / kDegree;
    directSigmas(r, system, covariance, unknowns);
  }
  return r;
}

}  // namespace

MetricRefinement refineMetric(std::span<const double> twoThetaObserved, const ReciprocalMetric& start,
                              const MetricRefinementOptions& options) {
  const CrystalSystem system = options.system;
  const int m = freeParameterCount(system);
  RefinementState state;
  state.metric = metricFromParameters(system, parametersFromMetric(system, start));

  // A start cell a few tenths of a per cent off assigns the high-angle lines wrongly, so the
  // first pass uses the low-angle half of the lines only. Then all lines settle the assignments
  // with the zero fixed; the last pass adds the zero, because a zero refined together with wrong
  // early assignments drifts far.
  std::vector<double> sorted(twoThetaObserved.begin(), twoThetaObserved.end());
  std::sort(sorted.begin(), sorted.end());
  const std::size_t lowHalf = std::max<std::size_t>(sorted.size() / 2, static_cast<std::size_t>(m + 4));
  struct Pass {
    std::span<const double> lines;
    bool withZero;
    bool optional;  // may fail (too few or too special lines) without ending the refinement
    bool allLines;
  };
  std::vector<Pass> passes;
  if (lowHalf < sorted.size()) passes.push_back({std::span<const double>(sorted).first(lowHalf), false, true, false});
  // With a zero to refine, a large zero error (short wavelengths put every line at small angles)
  // can defeat the pass that holds it fixed; the zero pass then starts from the start cell.
  passes.push_back({twoThetaObserved, false, options.refineZero, true});
  if (options.refineZero) passes.push_back({twoThetaObserved, true, false, true});
  const ReciprocalMetric startMetric = state.metric;
  // The state before the zero pass is the refinement without a zero, kept in case the zero
  // turns out insignificant (failedWithoutZero: that refinement would have failed there).
  RefinementState withoutZero;
  bool failedWithoutZero = false, singularWithoutZero = false;
  MetricRefinement failure;
  for (const Pass& pass : passes) {
    const bool withZero = pass.withZero;
    if (withZero) withoutZero = state;
    const std::span<const double> used = pass.lines;
    // True when the refinement ends here (a pass that may fail starts the next from the start).
    auto failed = [&](bool singular) {
      if (pass.optional) {
        if (!withZero && pass.allLines) {
          failedWithoutZero = true;
          singularWithoutZero = singular;
        }
        state.metric = startMetric;
        state.zero = 0.0;
        return false;
      }
      failure.singular = singular;
      failure.cycles = state.cycles;
      return true;
    };
    bool skipped = false;
    std::vector<LineAssignment> previous;
    double previousResidual = -1.0;
    bool settled = false;
    for (int cycle = 0; cycle < options.maxCycles; ++cycle) {
      ++state.cycles;
      const ObservedSet s = observe(used, state.zero, options);
      const auto lines = assign(s, state.metric, options.centring);
      auto solution = countIndexed(lines) < m + (withZero ? 1 : 0) ? std::nullopt : solveCycle(s, lines, system, withZero);
      if (!solution) {
        if (failed(countIndexed(lines) >= m + (withZero ? 1 : 0))) return failure;
        skipped = true;
        break;
      }
      state.metric = metricFromParameters(system, solution->p);
      if (withZero) {
        state.zero += solution->p[static_cast<std::size_t>(m)] / kDegree;
        if (std::abs(state.zero) > options.zeroBound) {
          // Hold the zero at its bound and fit the cell alone with it.
          state.zero = std::clamp(state.zero, -options.zeroBound, options.zeroBound);
          const ObservedSet held = observe(used, state.zero, options);
          solution = solveCycle(held, lines, system, false);
          if (!solution) {
            failure.singular = true;
            failure.cycles = state.cycles;
            return failure;
          }
          state.metric = metricFromParameters(system, solution->p);
        }
      }
      state.last = solution;
      state.lastWithZero = withZero && solution->p.size() > static_cast<std::size_t>(m);
      const double res = residual(observe(used, state.zero, options), lines, system, state.metric);
      settled = !previous.empty() && sameAssignments(previous, lines, system) &&
                std::abs(res - previousResidual) <= kResidualSettled * std::max(res, double(lines.size()));
      previous = lines;
      previousResidual = res;
      if (settled) break;
    }
    if (!skipped) state.converged = settled;
  }

  MetricRefinement r = finish(state, twoThetaObserved, options);
  if (!options.refineZero || options.zeroSignificance <= 0.0 || !r.solved ||
      (r.esdsAvailable && std::abs(r.zero) > options.zeroSignificance * r.zeroSigma))
    return r;
  // The zero is within its significance limit of nothing: it would only take up misfit, so the
  // result is the refinement without it, as it stood before the zero pass.
  const double triedSigma = r.esdsAvailable ? r.zeroSigma : -1.0;
  if (failedWithoutZero) {
    r = MetricRefinement{};
    r.singular = singularWithoutZero;
    r.cycles = withoutZero.cycles;
  } else {
    r = finish(withoutZero, twoThetaObserved, options);
  }
  r.zeroDropped = true;
  r.droppedZeroSigma = triedSigma;
  return r;
}

}  // namespace quarvel
