#include "core/index/lattice/metric_refinement.h"

#include <algorithm>
#include <cmath>

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
  double qMax = 0.0;
  for (std::size_t i = 0; i < s.q.size(); ++i) qMax = std::max(qMax, s.q[i] + s.tolerance[i]);
  const auto calc = calculatedLines(metric, centring, qMax);
  return assignLines(s.q, s.tolerance, calc);
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

}  // namespace

MetricRefinement refineMetric(std::span<const double> twoThetaObserved, const ReciprocalMetric& start,
                              const MetricRefinementOptions& options) {
  MetricRefinement r;
  const CrystalSystem system = options.system;
  const int m = freeParameterCount(system);
  ReciprocalMetric metric = metricFromParameters(system, parametersFromMetric(system, start));
  double zero = 0.0;
  std::optional<NormalEquations::Solution> last;
  bool lastWithZero = false;

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
  };
  std::vector<Pass> passes;
  if (lowHalf < sorted.size()) passes.push_back({std::span<const double>(sorted).first(lowHalf), false, true});
  // With a zero to refine, a large zero error (short wavelengths put every line at small angles)
  // can defeat the pass that holds it fixed; the zero pass then starts from the start cell.
  passes.push_back({twoThetaObserved, false, options.refineZero});
  if (options.refineZero) passes.push_back({twoThetaObserved, true, false});
  const ReciprocalMetric startMetric = metric;
  for (const Pass& pass : passes) {
    const bool withZero = pass.withZero;
    const std::span<const double> used = pass.lines;
    auto failed = [&](bool singular) {
      if (pass.optional) {
        metric = startMetric;
        zero = 0.0;
        return false;
      }
      r.singular = singular;
      return true;
    };
    bool skipped = false;
    std::vector<LineAssignment> previous;
    double previousResidual = -1.0;
    bool settled = false;
    for (int cycle = 0; cycle < options.maxCycles; ++cycle) {
      ++r.cycles;
      const ObservedSet s = observe(used, zero, options);
      const auto lines = assign(s, metric, options.centring);
      auto solution = countIndexed(lines) < m + (withZero ? 1 : 0) ? std::nullopt : solveCycle(s, lines, system, withZero);
      if (!solution) {
        if (failed(countIndexed(lines) >= m + (withZero ? 1 : 0))) return r;
        skipped = true;
        break;
      }
      metric = metricFromParameters(system, solution->p);
      if (withZero) {
        zero += solution->p[static_cast<std::size_t>(m)] / kDegree;
        if (std::abs(zero) > options.zeroBound) {
          // Hold the zero at its bound and fit the cell alone with it.
          zero = std::clamp(zero, -options.zeroBound, options.zeroBound);
          const ObservedSet held = observe(used, zero, options);
          solution = solveCycle(held, lines, system, false);
          if (!solution) {
            r.singular = true;
            return r;
          }
          metric = metricFromParameters(system, solution->p);
        }
      }
      last = solution;
      lastWithZero = withZero && solution->p.size() > static_cast<std::size_t>(m);
      const double res = residual(observe(used, zero, options), lines, system, metric);
      settled = !previous.empty() && sameAssignments(previous, lines) &&
                std::abs(res - previousResidual) <= kResidualSettled * std::max(res, double(lines.size()));
      previous = lines;
      previousResidual = res;
      if (settled) break;
    }
    if (!skipped) r.converged = settled;
  }

  const ObservedSet s = observe(twoThetaObserved, zero, options);
  r.lines = assign(s, metric, options.centring);
  r.indexedLines = countIndexed(r.lines);
  r.metric = metric;
  r.parameters = parametersFromMetric(system, metric);
  r.zero = zero;
  r.weightedResidual = residual(s, r.lines, system, metric);
  const auto cell = cellFromMetric(metric);
  if (!cell) return r;
  r.cell = *cell;
  r.volume = cellVolume(*cell);
  r.solved = true;

  const int unknowns = m + (lastWithZero ? 1 : 0);
  r.esdsAvailable = r.indexedLines > unknowns;
  if (r.esdsAvailable && last) {
    const double s2 = r.weightedResidual / (r.indexedLines - unknowns);
    std::vector<double> covariance(last->inverse);
    for (double& c : covariance) c *= s2;
    for (int j = 0; j < m; ++j)
      r.parameterSigmas[static_cast<std::size_t>(j)] = std::sqrt(covariance[static_cast<std::size_t>(j * unknowns + j)]);
    if (lastWithZero) r.zeroSigma = std::sqrt(covariance[static_cast<std::size_t>(m * unknowns + m)]) / kDegree;
    directSigmas(r, system, covariance, unknowns);
  }
  return r;
}

}  // namespace quarvel
