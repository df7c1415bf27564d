#include "core/index/lattice/figures_of_merit.h"

#include <algorithm>
#include <cmath>

#include "core/index/lattice/line_assignment.h"
#include "core/index/lattice/units.h"

namespace quarvel {

namespace {
// A mean discrepancy of exactly zero (exact lines) would give an infinite figure.
constexpr double kSmallestRelativeDiscrepancy = 1e-9;
}  // namespace

DeWolffFigure deWolffFigure(std::span<const double> qObserved, std::span<const double> tolerance,
                            const ReciprocalMetric& metric, Centring centring, const FigureOfMeritOptions& options) {
  std::vector<CalculatedLine> scratch;
  return deWolffFigure(qObserved, tolerance, metric, centring, options, scratch);
}

DeWolffFigure deWolffFigure(std::span<const double> qObserved, std::span<const double> tolerance,
                            const ReciprocalMetric& metric, Centring centring, const FigureOfMeritOptions& options,
                            std::vector<CalculatedLine>& scratch) {
  DeWolffFigure fom;
  const std::size_t n = std::min<std::size_t>(qObserved.size(), static_cast<std::size_t>(std::max(options.lines, 0)));
  if (n == 0) return fom;
  fom.lines = static_cast<int>(n);
  fom.qLast = qObserved[n - 1];
  const double countLimit = fom.qLast * options.countLimitFactor + (options.addLastTolerance ? tolerance[n - 1] : 0.0);
  const double generateLimit = std::max(countLimit, fom.qLast + tolerance[n - 1]);

  std::vector<CalculatedLine>& calc = scratch;
  calculatedLines(metric, centring, generateLimit, calc);
  const auto assignments = assignLines(qObserved.first(n), tolerance.first(n), calc);

  double sum = 0.0;
  int indexed = 0;
  for (std::size_t i = 0; i < n; ++i) {
    if (!assignments[i].indexed) continue;
    sum += std::abs(qObserved[i] - assignments[i].qCalc);
    ++indexed;
  }
  fom.unindexed = static_cast<int>(n) - indexed;
  fom.calculated = countDistinct(calc, countLimit);
  if (indexed == 0 || fom.calculated == 0) return fom;
  fom.meanDiscrepancy = sum / indexed;
  const double epsilon = std::max(fom.meanDiscrepancy, kSmallestRelativeDiscrepancy * fom.qLast);
  fom.m = fom.qLast / (2.0 * epsilon * fom.calculated);
  return fom;
}

SmithSnyderFigure smithSnyderFigure(std::span<const double> twoThetaObserved, double toleranceDegrees,
                                    const ReciprocalMetric& metric, Centring centring, double wavelength, int lines) {
  SmithSnyderFigure fom;
  const std::size_t n = std::min<std::size_t>(twoThetaObserved.size(), static_cast<std::size_t>(std::max(lines, 0)));
  if (n == 0) return fom;
  fom.lines = static_cast<int>(n);
  const double twoThetaLast = twoThetaObserved[n - 1];
  const double qLimit = qFromTwoTheta(twoThetaLast + toleranceDegrees, wavelength);
  const auto calc = calculatedLines(metric, centring, qLimit);
  std::vector<double> twoThetaCalc;
  for (const double q : distinctValues(calc)) twoThetaCalc.push_back(twoThetaFromQ(q, wavelength));

  double sum = 0.0;
  int indexed = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const double t = twoThetaObserved[i];
    auto it = std::lower_bound(twoThetaCalc.begin(), twoThetaCalc.end(), t);
    double miss = toleranceDegrees * (1.0 + 1e-12);
    bool found = false;
    if (it != twoThetaCalc.end() && std::abs(*it - t) <= miss) miss = std::abs(*it - t), found = true;
    if (it != twoThetaCalc.begin() && std::abs(*(it - 1) - t) <= miss) miss = std::abs(*(it - 1) - t), found = true;
    if (!found) continue;
    sum += miss;
    ++indexed;
  }
  fom.possible = static_cast<int>(
      std::count_if(twoThetaCalc.begin(), twoThetaCalc.end(), [&](double t) { return t <= twoThetaLast; }));
  if (indexed == 0 || fom.possible == 0) return fom;
  fom.meanDeltaTwoTheta = sum / indexed;
  fom.f = static_cast<double>(n) / (std::max(fom.meanDeltaTwoTheta, 1e-9) * fom.possible);
  return fom;
}

}  // namespace quarvel
